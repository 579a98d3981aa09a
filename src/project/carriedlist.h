#pragma once

#include <base/carriedsetting.h>

#include <QDialog>

class QTreeWidget;

namespace KEO {

/// How many settings of \a account were kept, adapted and lost, in words.
[[nodiscard]] QString countsOf(const CarriedSettings &account);

/// Shows what became of a user's settings, what was lost first. Not modal. Its rows go to the
/// clipboard as lines of tab separated texts.
class CarriedList final : public QDialog
{
    Q_OBJECT

public:
    CarriedList(const CarriedSettings &account, QWidget *parent);

private:
    void addGroup(CarryOutcome outcome, const QString &title, const CarriedSettings &account);
    void fitColumns();
    void copyRows() const;

    QTreeWidget *m_tree; // child
};

} // namespace KEO
