#pragma once

#include <QDialog>
#include <QList>

class QModelIndex;
class QTableWidget;

namespace KEO {

struct DeviceEntry;

/// Asks which device a scan has really found, where several share an ID code. A double click or the
/// Enter key chooses; leaving the dialog chooses nothing.
class DeviceSelector final : public QDialog
{
    Q_OBJECT

public:
    /// \a candidates are borrowed. The one named \a proposal is selected, else the first.
    DeviceSelector(const QList<const DeviceEntry *> &candidates, const QString &proposal,
                   QWidget *parent = nullptr);

    /// The chosen device, or null.
    [[nodiscard]] const DeviceEntry *device() const { return m_device; }
    [[nodiscard]] QSize sizeHint() const override;

public Q_SLOTS:
    void onDoubeClicked(const QModelIndex &index);

private:
    QList<const DeviceEntry *> m_candidates;
    QTableWidget *m_table; // child
    const DeviceEntry *m_device = nullptr;
};

} // namespace KEO
