#include "keoprogrammerwidget.h"

#include "deviceconfigurationdlg.h"
#include "keoprogrammeritemdelegate.h"
#include "keoprogrammermodel.h"
#include "programmerlog.h"

#include <programmer/devicedatabase.h>
#include <widgets/messagebox.h>

#include <QCheckBox>
#include <QDockWidget>
#include <QEvent>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QScrollBar>
#include <QShortcut>
#include <QSplitter>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

#include <utility>

namespace KEO {

namespace {

// That show at least, on a screen with no room for more.
constexpr int kTableRows = 1;
constexpr int kLogLines = 2; // the last one is blank
// In pixels.
constexpr int kSpacing = 2;    // around the buttons, which have margins of their own
constexpr int kCellMargin = 3; // above and below a row's text

} // namespace

KeoProgrammerWidget::KeoProgrammerWidget(QWidget *parent)
    : QWidget(parent), m_model(new KeoProgrammerModel(this))
{
    auto *groupBox = new QGroupBox(tr("Programmer"));
    groupBox->setObjectName(QStringLiteral("groupBox"));
    m_checkBox = new QCheckBox(tr("Enable Programmer"));
    m_checkBox->setObjectName(QStringLiteral("checkBox"));
    m_body = new QWidget;
    m_body->setObjectName(QStringLiteral("widget_3"));
    m_body->hide();

    auto *splitter = new QSplitter(Qt::Vertical);
    splitter->setObjectName(QStringLiteral("splitter"));
    splitter->setChildrenCollapsible(false);
    auto *bodyLayout = new QVBoxLayout(m_body);
    bodyLayout->setContentsMargins(0, 0, 0, 0);
    bodyLayout->setSpacing(kSpacing);
    bodyLayout->addWidget(buildTools());
    bodyLayout->addWidget(splitter);
    splitter->addWidget(buildTable());
    splitter->addWidget(buildLog());

    fitToFont();
    connect(m_tableView->horizontalScrollBar(), &QScrollBar::rangeChanged, this,
            &KeoProgrammerWidget::fitToFont);

    auto *groupLayout = new QVBoxLayout(groupBox);
    groupLayout->setSpacing(kSpacing);
    groupLayout->addWidget(m_checkBox);
    groupLayout->addWidget(m_body);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(groupBox);

    connect(m_checkBox, &QCheckBox::stateChanged, this, &KeoProgrammerWidget::onEnableChange);
    connect(
        m_model,
        qOverload<ProgrammerStatus, const QStringList &>(&KeoProgrammerModel::statusChanged), this,
        qOverload<ProgrammerStatus, const QStringList &>(&KeoProgrammerWidget::onStatusChanged));
    connect(m_model, &KeoProgrammerModel::modelReset, this, &KeoProgrammerWidget::rowsChanged);
    connect(m_model, &KeoProgrammerModel::dataChanged, this, &KeoProgrammerWidget::rowsChanged);
    connect(m_model, qOverload<ProgrammerStatus>(&KeoProgrammerModel::statusChanged), this,
            qOverload<ProgrammerStatus>(&KeoProgrammerWidget::onStatusChanged));
    connect(m_model, &KeoProgrammerModel::programPrint, this,
            &KeoProgrammerWidget::createProgrammerOutput);
    connect(m_model, &KeoProgrammerModel::toolSaid, this,
            [this](const QStringList &lines) { m_log->addMessages(lines); });
}

KeoProgrammerWidget::~KeoProgrammerWidget() = default;

QWidget *KeoProgrammerWidget::buildTools()
{
    auto *tools = new QWidget;
    auto *layout = new QHBoxLayout(tools);
    layout->setContentsMargins(0, 0, 0, 0);
    addTool(tools, "searchDevice", "programmer_scan", tr("scan"),
            &KeoProgrammerWidget::on_searchDevice_clicked);
    addTool(tools, "addDevice", "add", tr("Add a device"),
            &KeoProgrammerWidget::on_addDevice_clicked);
    addTool(tools, "rmDevice", "delete", tr("Remove the device"),
            &KeoProgrammerWidget::on_rmDevice_clicked);
    addTool(tools, "moveUp", "up", tr("Move the device up"),
            &KeoProgrammerWidget::on_moveUp_clicked);
    addTool(tools, "moveDown", "down", tr("Move the device down"),
            &KeoProgrammerWidget::on_moveDown_clicked);
    addTool(tools, "downLoad", "programmer_run", tr("run"),
            &KeoProgrammerWidget::on_downLoad_clicked);
    m_cancel = addTool(tools, "cancelRun", "control_stop_red", tr("cancel"),
                       &KeoProgrammerWidget::on_cancelRun_clicked);
    m_tools.removeOne(m_cancel);
    m_cancel->setEnabled(false);
    layout->addStretch();
    return tools;
}

QToolButton *KeoProgrammerWidget::addTool(QWidget *tools, const char *name, const char *icon,
                                          const QString &tip, void (KeoProgrammerWidget::*slot)())
{
    auto *button = new QToolButton;
    button->setObjectName(QLatin1String(name));
    button->setIcon(QIcon(QStringLiteral(":/keo/image/%1.png").arg(QLatin1String(icon))));
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::StrongFocus);
    connect(button, &QToolButton::clicked, this, [this, slot] {
        commitEditors();
        (this->*slot)();
    });
    tools->layout()->addWidget(button);
    m_tools.append(button);
    return button;
}

QWidget *KeoProgrammerWidget::buildTable()
{
    m_tableView = new QTableView;
    m_tableView->setObjectName(QStringLiteral("tableView"));
    m_tableView->setModel(m_model);
    m_tableView->setItemDelegate(new KeoProgrammerItemDelegate(m_tableView));
    m_tableView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_tableView->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tableView->setTabKeyNavigation(false);
    m_tableView->setWordWrap(false);
    m_tableView->verticalHeader()->hide();
    QHeaderView *header = m_tableView->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(KeoProgrammerModel::FsFile, QHeaderView::Stretch);
    connect(m_tableView, &QTableView::doubleClicked, this,
            &KeoProgrammerWidget::onTableViewDoubleClkiced);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto *shortcut = new QShortcut(key, m_tableView, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this,
                [this] { onTableViewDoubleClkiced(m_tableView->currentIndex()); });
    }
    return m_tableView;
}

QWidget *KeoProgrammerWidget::buildLog()
{
    m_log = new ProgrammerLog;
    m_log->setObjectName(QStringLiteral("textBrowser"));
    auto *dock = new QDockWidget(tr("Output"));
    dock->setObjectName(QStringLiteral("dockWidget"));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(m_log);
    return dock;
}

void KeoProgrammerWidget::fitToFont()
{
    const int rowHeight = fontMetrics().height() + 2 * kCellMargin;
    m_tableView->verticalHeader()->setDefaultSectionSize(rowHeight);
    const QScrollBar *bar = m_tableView->horizontalScrollBar(); // which would cover the only row
    const int barHeight = bar->maximum() > bar->minimum() ? bar->sizeHint().height() : 0;
    m_tableView->setMinimumHeight(barHeight + m_tableView->horizontalHeader()->sizeHint().height() +
                                  2 * m_tableView->frameWidth() + kTableRows * rowHeight);
    m_log->setMinimumHeight(kLogLines * fontMetrics().lineSpacing() +
                            2 * int(m_log->document()->documentMargin()) + 2 * m_log->frameWidth());
}

void KeoProgrammerWidget::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && m_log)
        fitToFont();
}

void KeoProgrammerWidget::setDevice(const QString &family, const QString &device,
                                    const QString &fsFile)
{
    m_model->setDevice(family, device, fsFile);
}

void KeoProgrammerWidget::nameDevice(const QString &family, const QString &device)
{
    if (isTableKept())
        return;
    const DeviceRow *target = m_model->targetRow();
    setDevice(family, device, target ? target->fsFile : QString());
}

bool KeoProgrammerWidget::isTableKept() const
{
    return rows().size() > 1 || (isEnabledByUser() && !rows().isEmpty());
}

std::shared_ptr<const DeviceDatabase> KeoProgrammerWidget::database() const
{
    return m_model->sharedDatabase();
}

void KeoProgrammerWidget::setDesignId(const QString &id)
{
    m_model->setDesignId(id);
}

bool KeoProgrammerWidget::isEnabledByUser() const
{
    return m_checkBox->isChecked();
}

void KeoProgrammerWidget::setEnabledByUser(bool enabled)
{
    m_checkBox->setChecked(enabled);
}

bool KeoProgrammerWidget::validate()
{
    commitEditors();
    return m_model->validate();
}

const DeviceChain &KeoProgrammerWidget::rows() const
{
    return m_model->rows();
}

bool KeoProgrammerWidget::hasTarget() const
{
    return m_model->targetRow() != nullptr;
}

QString KeoProgrammerWidget::targetName() const
{
    const DeviceRow *target = m_model->targetRow();
    return target ? target->device : QString();
}

bool KeoProgrammerWidget::mayEndRun(QWidget *parent) const
{
    return !m_isRunning || m_status != ProgrammerStatus::Downloading ||
           showBox(QMessageBox::Warning, parent, tr("Warning"),
                   tr("The programmer is still writing to the device, which is left incomplete if "
                      "you stop it now. Stop it?"),
                   QMessageBox::Yes | QMessageBox::No, QMessageBox::No,
                   [this](QMessageBox *box) { // nothing to ask any more when it has ended by itself
                       connect(this, &KeoProgrammerWidget::toolRunning, box,
                               [box] { box->done(QMessageBox::Yes); });
                   }) == QMessageBox::Yes;
}

void KeoProgrammerWidget::commitEditors()
{
    auto *delegate = static_cast<KeoProgrammerItemDelegate *>(m_tableView->itemDelegate());
    const auto editors =
        m_tableView->viewport()->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget *editor : editors) {
        if (!editor->isHidden()) // one that is closed already waits for its end
            delegate->finish(editor);
    }
}

void KeoProgrammerWidget::reset()
{
    m_model->stopTool();
    m_hasPending = false;
    m_pendingMessages.clear();
    m_status = ProgrammerStatus::DeviceFound;
    setRunning(false);
    m_checkBox->setChecked(false);
}

void KeoProgrammerWidget::applyPending()
{
    if (std::exchange(m_hasPending, false))
        onStatusChanged(m_pendingStatus, std::exchange(m_pendingMessages, {}));
}

void KeoProgrammerWidget::on_searchDevice_clicked()
{
    setRunning(true);
    m_model->scan();
}

void KeoProgrammerWidget::on_downLoad_clicked()
{
    setRunning(true);
    m_model->download(m_cable, m_channel);
}

void KeoProgrammerWidget::on_cancelRun_clicked()
{
    const QPointer<KeoProgrammerWidget> self(this);
    if (mayEndRun(window()) && self)
        m_model->cancelRun();
}

void KeoProgrammerWidget::setRunning(bool isRunning)
{
    // The table as well: rows that change under the tool would not be the ones it programs.
    m_tableView->setEnabled(!isRunning);
    for (QToolButton *tool : std::as_const(m_tools))
        tool->setEnabled(!isRunning);
    m_cancel->setEnabled(isRunning);
    if (std::exchange(m_isRunning, isRunning) != isRunning)
        Q_EMIT toolRunning(isRunning);
}

void KeoProgrammerWidget::onEnableChange(int status)
{
    m_body->setVisible(status == Qt::Checked);
    Q_EMIT enableChange(status == Qt::Checked);
}

void KeoProgrammerWidget::on_addDevice_clicked()
{
    m_model->onAddNewDevice();
    selectRow(m_model->rowCount() - 1);
}

void KeoProgrammerWidget::on_rmDevice_clicked()
{
    const QModelIndex index = selectedIndex();
    if (!index.isValid())
        return;
    const int row = index.row();
    m_model->onRemoveDevice(index);
    selectRow(qMin(row, m_model->rowCount() - 1));
}

void KeoProgrammerWidget::on_moveUp_clicked()
{
    moveSelected(&KeoProgrammerModel::onMoveUp, -1);
}

void KeoProgrammerWidget::on_moveDown_clicked()
{
    moveSelected(&KeoProgrammerModel::onMoveDown, 1);
}

void KeoProgrammerWidget::moveSelected(void (KeoProgrammerModel::*moveRow)(const QModelIndex &),
                                       int by)
{
    const QModelIndex index = selectedIndex();
    if (!index.isValid())
        return;
    const int row = qBound(0, index.row() + by, m_model->rowCount() - 1);
    (m_model->*moveRow)(index);
    selectRow(row);
}

QModelIndex KeoProgrammerWidget::selectedIndex() const
{
    return m_tableView->selectionModel()->selectedIndexes().value(0);
}

/// By a cell that can be selected in every row.
void KeoProgrammerWidget::selectRow(int row)
{
    m_tableView->setCurrentIndex(m_model->index(row, KeoProgrammerModel::Series));
}

void KeoProgrammerWidget::onStatusChanged(ProgrammerStatus status)
{
    onStatusChanged(status, {});
}

void KeoProgrammerWidget::onStatusChanged(ProgrammerStatus status, const QStringList &msgs)
{
    if (m_isBusy) {
        m_pendingStatus = status;
        m_pendingMessages = msgs;
        m_hasPending = true;
        return;
    }
    const bool isNews = std::exchange(m_status, status) != status;
    m_model->setTargetStatus(status);
    if (!msgs.isEmpty())
        m_log->addMessages(msgs);
    const QPointer<KeoProgrammerWidget> self(this);
    setRunning(status == ProgrammerStatus::Downloading);
    if (!self || !isNews)
        return;
    const QString text = statusText(status);
    if (!text.isEmpty())
        Q_EMIT programStatusChanged(status == ProgrammerStatus::Downloaded, text);
}

void KeoProgrammerWidget::onTableViewDoubleClkiced(const QModelIndex &index)
{
    if (!index.isValid() || index.column() != KeoProgrammerModel::Operation)
        return;
    const int position = index.row();
    const DeviceRow row = m_model->rows().at(position);
    if (!row.operation)
        return;
    const QPointer<KeoProgrammerWidget> self(this);
    const QPointer<DeviceConfigurationDlg> dialog =
        new DeviceConfigurationDlg(row, m_model->database().device(row.device), this);
    const bool isAccepted = dialog->exec() == QDialog::Accepted && dialog;
    // The rows may be others by now.
    if (self && isAccepted && m_model->rows().value(position).device == row.device)
        m_model->setOperation(position, dialog->operation());
    delete dialog;
}

void KeoProgrammerWidget::updateIsBusy(bool isBusy)
{
    m_isBusy = isBusy;
}

void KeoProgrammerWidget::updateCable(int cable)
{
    m_cable = cable;
}

void KeoProgrammerWidget::updateChannel(int channel)
{
    m_channel = channel;
}

void KeoProgrammerWidget::createProgrammerOutput(const QString &msg)
{
    m_log->addMessages({msg});
}

} // namespace KEO
