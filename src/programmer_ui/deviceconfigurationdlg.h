#pragma once

#include <QDialog>

class QComboBox;
class QPlainTextEdit;
class QPushButton;

namespace KEO {

struct DeviceEntry;
struct DeviceOperation;
struct DeviceRow;

/// Lets the user choose what the programmer does with a device. The fs file and the external flash
/// are shown for information; the file is set in the table.
class DeviceConfigurationDlg final : public QDialog
{
    Q_OBJECT

public:
    /// \a device, null if the database does not have it, is borrowed. Both tell what \a row is.
    DeviceConfigurationDlg(const DeviceRow &row, const DeviceEntry *device,
                           QWidget *parent = nullptr);

    /// The operation when the dialog was accepted.
    [[nodiscard]] const DeviceOperation *operation() const { return m_operation; }

private Q_SLOTS:
    void onAccessModeChanged();
    void onOperationChanged();
    void onSave();

private:
    QWidget *buildOperationGroup();
    QWidget *buildFileGroup(const DeviceRow &row);
    QWidget *buildFlashGroup();
    void updateDeviceCfg();
    void select(const DeviceOperation *operation);
    /// The operation that the combo boxes name, or null.
    [[nodiscard]] const DeviceOperation *chosen() const;

    const DeviceEntry *m_device;        // borrowed
    const DeviceOperation *m_operation; // borrowed
    QComboBox *m_comBoxAccessMode;      // this and the others are children
    QComboBox *m_comBoxOperation;
    QPlainTextEdit *m_editDescription;
    QPushButton *m_save = nullptr; // off while there is no operation to save
};

} // namespace KEO
