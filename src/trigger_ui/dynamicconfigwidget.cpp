#include "dynamicconfigwidget.h"

#include "expressionlist.h"
#include "matchunitdialog.h"
#include "matchunitmodel.h"
#include "muexpressiondialog.h"
#include "triggercheckstrip.h"
#include "triggerclipboard.h"
#include "unittable.h"

#include <capture/triggercheck.h>
#include <config/capturelimits.h>
#include <config/coreconfig.h>
#include <trigger/expression.h>
#include <widgets/formwidgets.h>

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QScrollArea>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <limits>
#include <utility>

namespace KEO {

namespace {

constexpr int kSightMargin = 20; // pixels around what is brought into sight

QString itemText(int row, const QString &expression)
{
    return QStringLiteral("exp%1:  %2").arg(QString::number(row), withUnitNames(expression));
}

/// An entry of \a view's context menu, whose key works in the view alone.
QAction *addEntry(QWidget *view, const QString &text, QKeySequence::StandardKey key)
{
    auto *action = new QAction(text, view);
    action->setShortcut(key);
    action->setShortcutContext(Qt::WidgetShortcut);
    view->addAction(action);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    return action;
}

QShortcut *shortcutOf(QWidget *widget, Qt::Key key)
{
    auto *shortcut = new QShortcut(key, widget);
    shortcut->setContext(Qt::WidgetShortcut);
    shortcut->setAutoRepeat(false);
    return shortcut;
}

} // namespace

DynamicConfigWidget::DynamicConfigWidget(QWidget *parent)
    : QWidget(parent), m_model(new MatchUnitModel(this))
{
    setWindowTitle(tr("Configuration"));
    auto *left = new QVBoxLayout;
    left->addWidget(makeCaptureGroup());
    left->addWidget(makeExpressionGroup(), 1);
    auto *sides = new QHBoxLayout;
    // The table needs the room: its last column must not fall off in a middling window.
    sides->addLayout(left, 1);
    sides->addWidget(makeUnitGroup(), 3);
    m_strip = named(new TriggerCheckStrip, "triggerCheck");
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(sides, 1);
    layout->addWidget(m_strip); // in its whole sentences, it needs the whole width
    // Flush with what stands beside the page, above and below.
    layout->setContentsMargins(layout->contentsMargins().left(), layout->contentsMargins().top(), 0,
                               0);
    m_checkTimer.setSingleShot(true);
    connectSlots();
    addClipboardActions();
    clearPage();
    setEnabled(false);
}

QGroupBox *DynamicConfigWidget::makeCaptureGroup()
{
    m_lineEditStorage = named(new QLineEdit, "lineEditStorage");
    m_lineEditStorage->setReadOnly(true);
    m_comboBoxWindow = named(new QComboBox, "comboBoxWindow");
    m_comboBoxAmount = named(new QComboBox, "comboBoxAmount");
    m_spinBoxTrPos = named(new QSpinBox, "spinBoxTrPos");

    m_groupBox = named(new QGroupBox(tr("Capture")), "groupBox");
    auto *form = new QFormLayout(m_groupBox);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->addRow(labelFor(m_lineEditStorage, tr("Storage Size:")), m_lineEditStorage);
    form->addRow(labelFor(m_comboBoxWindow, tr("Windows Number:")), m_comboBoxWindow);
    form->addRow(labelFor(m_comboBoxAmount, tr("Capture Amount:")), m_comboBoxAmount);
    form->addRow(labelFor(m_spinBoxTrPos, tr("Trigger Position:")), m_spinBoxTrPos);
    return m_groupBox;
}

QGroupBox *DynamicConfigWidget::makeExpressionGroup()
{
    m_listExpressions = named(new ExpressionList, "listExpressions");
    m_listExpressions->setAccessibleName(tr("Trigger Expressions"));
    m_listExpressions->setUniformItemSizes(true);
    auto *group = new QGroupBox(tr("Trigger Expressions"));
    auto *layout = new QVBoxLayout(group);
    layout->addWidget(m_listExpressions);
    return group;
}

QGroupBox *DynamicConfigWidget::makeUnitGroup()
{
    m_tableUnit = named(new UnitTable(m_model), "tableUnit");
    m_tableUnit->setAccessibleName(tr("Match Units"));
    auto *group = new QGroupBox(tr("Match Units"));
    auto *layout = new QVBoxLayout(group);
    layout->addWidget(m_tableUnit);
    return group;
}

void DynamicConfigWidget::connectSlots()
{
    connect(m_comboBoxWindow, &QComboBox::currentIndexChanged, this,
            &DynamicConfigWidget::onWindowNumChanged);
    connect(m_comboBoxAmount, &QComboBox::currentIndexChanged, this,
            &DynamicConfigWidget::onCaptureAmountChanged);
    connect(m_tableUnit, &UnitTable::doubleClicked, this, &DynamicConfigWidget::editMu);
    connect(m_listExpressions, &QListWidget::itemDoubleClicked, this,
            &DynamicConfigWidget::editExpression);
    connect(m_spinBoxTrPos, &QSpinBox::valueChanged, this, &DynamicConfigWidget::fieldsEdited);
    connect(m_listExpressions, &QListWidget::itemChanged, this, &DynamicConfigWidget::fieldsEdited);
    connect(m_model, &MatchUnitModel::modified, this, &DynamicConfigWidget::scheduleCheck);
    connect(&m_checkTimer, &QTimer::timeout, this, &DynamicConfigWidget::checkSettings);
    connect(&m_checkTimer, &QTimer::timeout, this, &DynamicConfigWidget::edited);
    connect(m_strip, &TriggerCheckStrip::chosen, this, &DynamicConfigWidget::lead);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter}) {
        connect(shortcutOf(m_tableUnit, key), &QShortcut::activated, this,
                &DynamicConfigWidget::editMu);
        connect(shortcutOf(m_listExpressions, key), &QShortcut::activated, this,
                [this] { editExpression(m_listExpressions->currentItem()); });
    }
}

void DynamicConfigWidget::setCore(CoreConfig *core)
{
    if (!core) {
        clearPage();
        return;
    }
    closeOpenDialogs();
    m_core = core;
    const QSignalBlocker windowBlocker(m_comboBoxWindow);
    const QSignalBlocker amountBlocker(m_comboBoxAmount);
    const QSignalBlocker positionBlocker(m_spinBoxTrPos);
    const QSignalBlocker expressionsBlocker(m_listExpressions);
    m_lineEditStorage->setText(QString::number(core->storage_depth));
    m_comboBoxWindow->setCurrentIndex(
        m_comboBoxWindow->findText(QString::number(core->window_num), Qt::MatchFixedString));
    fillAmounts();
    m_comboBoxAmount->setCurrentIndex(
        m_comboBoxAmount->findText(QString::number(core->capture_amount), Qt::MatchFixedString));
    limitTriggerPosition(core->capture_amount);
    m_spinBoxTrPos->setValue(core->trigger_pos);
    m_model->setUnits(core->enabledUnits());
    m_tableUnit->redraw();
    fillExpressions();
    m_fieldsCount = false;
    checkSettings();
}

void DynamicConfigWidget::clearPage()
{
    closeOpenDialogs();
    m_core = nullptr;
    const QSignalBlocker windowBlocker(m_comboBoxWindow);
    const QSignalBlocker amountBlocker(m_comboBoxAmount);
    m_lineEditStorage->clear();
    fillWindowNumbers();
    m_comboBoxAmount->clear();
    m_spinBoxTrPos->setRange(0, std::numeric_limits<int>::max());
    m_spinBoxTrPos->setValue(0);
    m_listExpressions->clear();
    m_model->clear();
    checkSettings();
}

void DynamicConfigWidget::saveToCore()
{
    if (!m_core)
        return;
    put(settingsOfFields(), *m_core);
    fieldsEdited();
}

void DynamicConfigWidget::withFields(const std::function<void()> &use)
{
    if (!m_core) {
        use();
        return;
    }
    const Settings stored = settingsOf(*m_core);
    put(settingsOfFields(), *m_core);
    use();
    put(stored, *m_core);
}

void DynamicConfigWidget::onWindowNumChanged()
{
    const QString amount = m_comboBoxAmount->currentText();
    {
        const QSignalBlocker blocker(m_comboBoxAmount);
        fillAmounts();
        m_comboBoxAmount->setCurrentIndex(m_comboBoxAmount->findText(amount, Qt::MatchFixedString));
    }
    if (m_comboBoxAmount->currentIndex() < 0) {
        {
            const QSignalBlocker blocker(m_comboBoxAmount);
            m_comboBoxAmount->setCurrentIndex(m_comboBoxAmount->count() - 1);
        }
        onCaptureAmountChanged();
    }
    fieldsEdited();
    Q_EMIT windowNumChanged();
}

void DynamicConfigWidget::onCaptureAmountChanged()
{
    limitTriggerPosition(m_comboBoxAmount->currentText().toInt());
    fieldsEdited();
}

void DynamicConfigWidget::editMu()
{
    const QModelIndexList rows = m_tableUnit->selectionModel()->selectedRows();
    if (rows.isEmpty() || hasOpenDialog())
        return;
    // On the heap: page and dialog may be gone when exec returns.
    const QPointer<DynamicConfigWidget> page = this;
    const QPointer<MatchUnitDialog> dialog =
        new MatchUnitDialog(MatchUnitModel::unitOfIndex(rows.first()), true, this);
    dialog->exec();
    delete dialog;
    if (!page)
        return;
    m_tableUnit->redraw();
    scheduleCheck();
}

void DynamicConfigWidget::editExpression(QListWidgetItem *item)
{
    if (!m_core || m_core->dynamic == 0 || !item || hasOpenDialog())
        return;
    const int row = m_listExpressions->currentRow();
    // A page that leaves the core meanwhile cancels the dialog: then nothing is touched any more.
    const QString expression = MuExpressionDialog::editExpressionText(unitFlags(*m_core), this);
    if (expression.isEmpty())
        return;
    setExpression(row, expression);
}

void DynamicConfigWidget::setExpression(int row, const QString &expression)
{
    m_listExpressions->item(row)->setText(itemText(row, expression));
    m_core->setExpression(expression, row);
    scheduleCheck();
}

TriggerChanges DynamicConfigWidget::setTrigger(const TriggerChanges &changes)
{
    closeOpenDialogs();
    TriggerChanges before = applyChanges({changes.units, {}}, *m_core);
    if (const auto &change = changes.expression) {
        QListWidgetItem *item = m_listExpressions->item(change->row);
        before.expression = ExpressionChange{change->row, m_core->expressions[change->row],
                                             item->checkState() == Qt::Checked};
        setExpression(change->row, change->text);
        item->setCheckState(change->isEnabled ? Qt::Checked : Qt::Unchecked);
    }
    m_tableUnit->redraw();
    scheduleCheck();
    return before;
}

void DynamicConfigWidget::addClipboardActions()
{
    connect(addEntry(m_tableUnit, tr("&Copy"), QKeySequence::Copy), &QAction::triggered, this,
            [this] { copyValues(m_tableUnit->selectedUnits()); });
    connect(addEntry(m_tableUnit, tr("&Paste"), QKeySequence::Paste), &QAction::triggered, this,
            &DynamicConfigWidget::pasteIntoUnits);
    connect(addEntry(m_listExpressions, tr("&Copy"), QKeySequence::Copy), &QAction::triggered, this,
            [this] {
                if (m_core && m_listExpressions->currentRow() >= 0)
                    copyExpression(m_core->expressions.value(m_listExpressions->currentRow()));
            });
    connect(addEntry(m_listExpressions, tr("&Paste"), QKeySequence::Paste), &QAction::triggered,
            this, &DynamicConfigWidget::pasteIntoExpression);
}

void DynamicConfigWidget::pasteIntoUnits()
{
    if (hasOpenDialog())
        return;
    if (const auto refusal = pasteValues(m_tableUnit->selectedUnits())) {
        refuse(*refusal);
        return;
    }
    m_tableUnit->redraw();
    scheduleCheck();
}

void DynamicConfigWidget::pasteIntoExpression()
{
    const int row = m_listExpressions->currentRow();
    if (!m_core || row < 0 || hasOpenDialog())
        return;
    if (const Result<QString> expression = pastedExpression(*m_core))
        setExpression(row, *expression);
    else
        refuse({TriggerFinding::Subject::Expression, row, TriggerFinding::Weight::Obstacle,
                expression.error().message});
}

bool DynamicConfigWidget::hasOpenDialog() const
{
    // A second Enter may still reach the page before the window system has activated the dialog.
    return findChild<QDialog *>() != nullptr;
}

void DynamicConfigWidget::closeOpenDialogs()
{
    for (QDialog *dialog : findChildren<QDialog *>())
        dialog->reject();
}

void DynamicConfigWidget::fillWindowNumbers()
{
    m_comboBoxWindow->clear();
    for (int windows = 1; windows <= kMaxOfferedWindows; ++windows)
        m_comboBoxWindow->addItem(QString::number(windows));
}

void DynamicConfigWidget::fillAmounts()
{
    m_comboBoxAmount->clear();
    if (!m_core)
        return;
    const int windows = m_comboBoxWindow->currentText().toInt();
    for (const int amount : offeredAmounts(m_core->storage_depth, windows))
        m_comboBoxAmount->addItem(QString::number(amount));
}

void DynamicConfigWidget::fillExpressions()
{
    m_listExpressions->clear();
    if (m_core->expressionEnabled.isEmpty())
        m_core->expressionEnabled.fill(true, m_core->expressions.size());
    for (int row = 0; row < m_core->expressions.size(); ++row) {
        auto *item = new QListWidgetItem(itemText(row, m_core->expressions[row]));
        if (m_core->dynamic != 0)
            item->setCheckState(m_core->expressionEnabled.value(row) ? Qt::Checked : Qt::Unchecked);
        m_listExpressions->addItem(item);
    }
}

void DynamicConfigWidget::limitTriggerPosition(int amount)
{
    m_spinBoxTrPos->setRange(0, std::max(0, amount - kMinRowsFromTrigger));
}

DynamicConfigWidget::Settings DynamicConfigWidget::settingsOf(const CoreConfig &core)
{
    return {core.window_num, core.capture_amount, core.trigger_pos, core.expressionEnabled};
}

void DynamicConfigWidget::put(const Settings &settings, CoreConfig &core)
{
    core.window_num = settings.windows;
    core.capture_amount = settings.amount;
    core.trigger_pos = settings.position;
    core.expressionEnabled = settings.expressions;
}

DynamicConfigWidget::Settings DynamicConfigWidget::settingsOfFields() const
{
    Settings settings{m_comboBoxWindow->currentText().toInt(),
                      m_comboBoxAmount->currentText().toInt(),
                      m_spinBoxTrPos->value(),
                      {}};
    for (int row = 0; row < m_listExpressions->count(); ++row)
        settings.expressions.append(m_listExpressions->item(row)->checkState() == Qt::Checked);
    return settings;
}

void DynamicConfigWidget::fieldsEdited()
{
    m_fieldsCount = true;
    scheduleCheck();
}

void DynamicConfigWidget::scheduleCheck()
{
    m_checkTimer.start(0);
}

void DynamicConfigWidget::checkSettings()
{
    m_checkTimer.stop();
    if (!m_core) {
        m_strip->tell({});
        return;
    }
    // The check takes a core, and a core can't be copied: it is lent what the fields hold.
    const Settings stored = settingsOf(*m_core);
    if (m_fieldsCount) {
        Settings asked = settingsOfFields();
        // An empty field is a number that it does not offer. To name that one tells more.
        if (m_comboBoxWindow->currentIndex() < 0)
            asked.windows = stored.windows;
        if (m_comboBoxAmount->currentIndex() < 0)
            asked.amount = stored.amount;
        put(asked, *m_core);
    }
    const QList<TriggerFinding> findings = checkTrigger(*m_core);
    put(stored, *m_core);
    m_strip->tell(findings);
}

DynamicConfigWidget::Rows DynamicConfigWidget::rows() const
{
    Rows rows{.unit = m_tableUnit->currentUnit(), .expression = m_listExpressions->currentRow()};
    for (const MatchUnit *unit : m_tableUnit->selectedUnits())
        rows.selectedUnits.append(unit->index);
    return rows;
}

void DynamicConfigWidget::setRows(const Rows &rows)
{
    m_tableUnit->restoreRows(rows.unit, rows.selectedUnits);
    if (rows.expression < m_listExpressions->count())
        m_listExpressions->setCurrentRow(rows.expression);
}

void DynamicConfigWidget::lead(const TriggerFinding &finding)
{
    using Subject = TriggerFinding::Subject;
    QWidget *place = m_comboBoxAmount;
    if (finding.subject == Subject::Unit) {
        place = m_tableUnit;
        m_tableUnit->selectUnit(finding.index);
    } else if (finding.subject == Subject::Expression) {
        place = m_listExpressions;
        m_listExpressions->setCurrentRow(finding.index);
    } else if (finding.subject == Subject::Core && finding.weight == TriggerFinding::Weight::Note) {
        place = m_listExpressions; // nothing is wrong with the numbers: it is about what triggers
    }
    place->setFocus(Qt::OtherFocusReason);
    bringIntoSight(place);
}

void DynamicConfigWidget::bringIntoSight(QWidget *place)
{
    for (QWidget *ancestor = parentWidget(); ancestor; ancestor = ancestor->parentWidget()) {
        auto *page = qobject_cast<QScrollArea *>(ancestor);
        if (!page)
            continue;
        // Its beginning last: where there is no room for all of it, that says most.
        for (const QPoint corner : {place->rect().bottomLeft(), place->rect().topLeft()}) {
            const QPoint point = place->mapTo(page->widget(), corner);
            page->ensureVisible(point.x(), point.y(), kSightMargin, kSightMargin);
        }
    }
}

void DynamicConfigWidget::refuse(const TriggerFinding &finding)
{
    m_strip->refuse(finding);
    // On a small screen the strip may be below what shows; it has its place when the layout is
    // done.
    QTimer::singleShot(0, m_strip, [this] { bringIntoSight(m_strip); });
}

} // namespace KEO
