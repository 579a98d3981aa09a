#include "deviceconfigurationdlg.h"

#include "fsfileedit.h"

#include <programmer/devicechain.h>
#include <programmer/devicedatabase.h>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace KEO {

namespace {

constexpr int kDescriptionLines = 4;
constexpr int kCharacters = 48; // of a description's line, about

/// Gives the labels of all forms one width, so that the fields stand in a line across the groups.
void alignFields(const QList<QFormLayout *> &forms)
{
    QList<QWidget *> labels;
    for (const QFormLayout *form : forms) {
        for (int row = 0; row < form->rowCount(); ++row) {
            if (const QLayoutItem *item = form->itemAt(row, QFormLayout::LabelRole))
                labels.append(item->widget());
        }
    }
    int widest = 0;
    for (const QWidget *label : labels)
        widest = std::max(widest, label->sizeHint().width());
    for (QWidget *label : labels)
        label->setMinimumWidth(widest);
}

} // namespace

DeviceConfigurationDlg::DeviceConfigurationDlg(const DeviceRow &row, const DeviceEntry *device,
                                               QWidget *parent)
    : QDialog(parent),
      m_device(device),
      m_operation(row.operation),
      m_comBoxAccessMode(new QComboBox),
      m_comBoxOperation(new QComboBox),
      m_editDescription(new QPlainTextEdit)
{
    setObjectName(QStringLiteral("deviceConfigurationDlg"));
    setWindowTitle(tr("Device Configuration"));
    m_comBoxAccessMode->setObjectName(QStringLiteral("comBoxAccessMode"));
    m_comBoxOperation->setObjectName(QStringLiteral("comBoxOperation"));
    m_editDescription->setObjectName(QStringLiteral("editDescription"));

    auto *buttons = new QDialogButtonBox;
    m_save = buttons->addButton(tr("save"), QDialogButtonBox::AcceptRole);
    m_save->setObjectName(QStringLiteral("btnSave"));
    QPushButton *cancel = buttons->addButton(tr("cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("btnCancel"));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(buildOperationGroup());
    layout->addWidget(buildFileGroup(row));
    layout->addWidget(buildFlashGroup());
    layout->addWidget(buttons);
    m_save->setDefault(true); // the dialog knows its buttons only now
    alignFields(findChildren<QFormLayout *>());

    if (device) {
        for (const AccessMode *mode : device->modes)
            m_comBoxAccessMode->addItem(mode->name);
    }
    select(row.operation);
    connect(m_comBoxAccessMode, &QComboBox::currentIndexChanged, this,
            &DeviceConfigurationDlg::onAccessModeChanged);
    connect(m_comBoxOperation, &QComboBox::currentIndexChanged, this,
            &DeviceConfigurationDlg::onOperationChanged);
    connect(buttons, &QDialogButtonBox::accepted, this, &DeviceConfigurationDlg::onSave);
    connect(buttons, &QDialogButtonBox::rejected, this, &DeviceConfigurationDlg::reject);
}

QWidget *DeviceConfigurationDlg::buildOperationGroup()
{
    auto *group = new QGroupBox(tr("Device Operation"));
    m_editDescription->setReadOnly(true);
    m_editDescription->setTabChangesFocus(true);
    m_editDescription->setAccessibleName(tr("Description"));
    m_editDescription->setPlaceholderText(tr("No operation of this mode programs the device."));
    m_editDescription->setMinimumWidth(kCharacters *
                                       m_editDescription->fontMetrics().averageCharWidth());
    m_editDescription->setFixedHeight(kDescriptionLines *
                                          m_editDescription->fontMetrics().lineSpacing() +
                                      2 * int(m_editDescription->document()->documentMargin()) +
                                      2 * m_editDescription->frameWidth());
    auto *form = new QFormLayout(group);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Access Mode:"), m_comBoxAccessMode);
    form->addRow(tr("Operation:"), m_comBoxOperation);
    form->addRow(m_editDescription);
    return group;
}

QWidget *DeviceConfigurationDlg::buildFileGroup(const DeviceRow &row)
{
    auto *group = new QGroupBox(tr("Programming Options"));
    auto *file = new FsFileEdit;
    file->setPath(row.fsFile);
    file->setReadOnly(true);
    file->setToolTip(tr("The file is set in the table."));
    auto *form = new QFormLayout(group);
    form->addRow(tr("File Name:"), file);
    return group;
}

QWidget *DeviceConfigurationDlg::buildFlashGroup()
{
    auto *group = new QGroupBox(tr("External Flash Options"));
    auto *flash = new QComboBox;
    flash->setObjectName(QStringLiteral("comBoxFlash"));
    flash->addItem(QStringLiteral("Winbond W25Q64"));
    auto *address = new QLineEdit(QStringLiteral("0x000000"));
    address->setObjectName(QStringLiteral("editStartAddress"));
    address->setReadOnly(true);
    auto *form = new QFormLayout(group);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(tr("Device:"), flash);
    form->addRow(tr("Start Address:"), address);
    return group;
}

void DeviceConfigurationDlg::select(const DeviceOperation *operation)
{
    const QList<const AccessMode *> modes =
        m_device ? m_device->modes : QList<const AccessMode *>();
    const auto holds = [&](const AccessMode *mode) {
        return mode->programmingOperations().contains(operation);
    };
    const auto mode = std::find_if(modes.begin(), modes.end(), holds);
    if (mode != modes.end())
        m_comBoxAccessMode->setCurrentIndex(int(mode - modes.begin()));
    onAccessModeChanged();
    if (mode == modes.end())
        return;
    m_comBoxOperation->setCurrentIndex(int((*mode)->programmingOperations().indexOf(operation)));
    updateDeviceCfg();
}

void DeviceConfigurationDlg::onAccessModeChanged()
{
    {
        const QSignalBlocker blocker(m_comBoxOperation);
        m_comBoxOperation->clear();
        const int mode = m_comBoxAccessMode->currentIndex();
        if (m_device && mode >= 0) {
            for (const DeviceOperation *entry : m_device->modes.at(mode)->programmingOperations())
                m_comBoxOperation->addItem(entry->name);
        }
    }
    updateDeviceCfg();
}

void DeviceConfigurationDlg::onOperationChanged()
{
    updateDeviceCfg();
}

void DeviceConfigurationDlg::updateDeviceCfg()
{
    const DeviceOperation *entry = chosen();
    m_editDescription->setPlainText(entry ? entry->description : QString());
    m_save->setEnabled(entry);
}

void DeviceConfigurationDlg::onSave()
{
    m_operation = chosen();
    accept();
}

const DeviceOperation *DeviceConfigurationDlg::chosen() const
{
    const int mode = m_comBoxAccessMode->currentIndex();
    if (!m_device || mode < 0)
        return nullptr;
    return m_device->modes.at(mode)->programmingOperations().value(
        m_comBoxOperation->currentIndex());
}

} // namespace KEO
