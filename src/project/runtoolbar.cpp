#include "runtoolbar.h"

#include <QAction>
#include <QComboBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeySequence>
#include <QLabel>
#include <QToolBar>
#include <QWidgetAction>

#include <utility>

namespace KEO {

namespace {

/// Property of the tool bar, which outlives the projects and serves both kinds of them.
constexpr char kChosenCable[] = "chosenCable";

QAction *makeAction(QObject *parent, const char *name, const QString &text, const char *icon,
                    const QKeySequence &shortcut = {})
{
    auto *action = new QAction(QIcon(QStringLiteral(":/keo/image/%1.png").arg(QLatin1String(icon))),
                               text, parent);
    action->setObjectName(QLatin1String(name));
    action->setShortcut(shortcut);
    return action;
}

QString tipWithKey(const QAction &action)
{
    return QStringLiteral("<nobr>%1 <span style=\"color: gray; font-size: small\">%2</span></nobr>")
        .arg(action.text(), action.shortcut().toString(QKeySequence::NativeText));
}

} // namespace

RunToolBar::RunToolBar(QObject *parent)
    : QObject(parent),
      m_cableCombo(new QComboBox),
      m_cableWidget(new QWidget),
      m_cableAction(new QWidgetAction(this))
{
    RunActions &a = m_actions;
    a.saveAction = makeAction(this, "saveAction", tr("Save..."), "save", QKeySequence::Save);
    a.startAction = makeAction(this, "startAction", tr("Start"), "control_play_blue", Qt::Key_F1);
    a.autoAction = makeAction(this, "autoAction", tr("Auto"), "auto", Qt::Key_F2);
    a.stopAction = makeAction(this, "stopAction", tr("Stop"), "control_stop_red", Qt::Key_F4);
    a.forceTriggerAction = makeAction(this, "forceTriggerAction", tr("Force Trigger"),
                                      "control_cursor_blue", Qt::Key_F3);
    a.zoomInAction = makeAction(this, "zoomInAction", tr("Zoom In"), "zoom_in", Qt::Key_F8);
    a.zoomOutAction = makeAction(this, "zoomOutAction", tr("Zoom Out"), "zoom_out", Qt::Key_F7);
    a.zoomFitAction = makeAction(this, "zoomFitAction", tr("Zoom Fit"), "zoom_fit", Qt::Key_F6);
    a.exportAction = makeAction(this, "exportAction", tr("Export"), "document_export");

    a.saveAction->setToolTip(tr("Save"));
    for (QAction *action : {a.startAction, a.autoAction, a.stopAction, a.forceTriggerAction,
                            a.zoomInAction, a.zoomOutAction, a.zoomFitAction})
        action->setToolTip(tipWithKey(*action));

    m_cableWidget->setObjectName(QStringLiteral("cableWidget"));
    m_cableCombo->setObjectName(QStringLiteral("cableCombo"));
    m_cableCombo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_cableCombo->setMinimumContentsLength(10);
    auto *label = new QLabel(tr("Cable: "));
    label->setBuddy(m_cableCombo);
    auto *layout = new QHBoxLayout(m_cableWidget);
    layout->setSpacing(0);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(m_cableCombo);
    m_cableAction->setDefaultWidget(m_cableWidget);
    connect(m_cableCombo, &QComboBox::currentIndexChanged, this, &RunToolBar::cableIndexChanged);
}

RunToolBar::~RunToolBar() = default;

void RunToolBar::setCables(const QList<QPair<QString, int>> &cables, const QToolBar &toolBar)
{
    if (!m_cableCombo)
        return;
    m_cableCombo->clear();
    for (const auto &[name, number] : cables)
        m_cableCombo->addItem(name, number);
    // Another one than the user left is another board.
    const int chosen = m_cableCombo->findText(toolBar.property(kChosenCable).toString());
    if (chosen > 0)
        m_cableCombo->setCurrentIndex(chosen);
}

void RunToolBar::markCables(const std::function<bool(const QString &)> &isConnected)
{
    if (!m_cableCombo)
        return;
    for (int i = 0; i < m_cableCombo->count(); ++i) {
        const bool isGone = !isConnected(m_cableCombo->itemText(i));
        m_cableCombo->setItemIcon(i, isGone ? QIcon(QStringLiteral(":/keo/image/warning.png"))
                                            : QIcon());
        m_cableCombo->setItemData(i,
                                  isGone ? tr("The server of this cable is gone. To reach it "
                                              "again, start the program again.")
                                         : QVariant(),
                                  Qt::ToolTipRole);
    }
}

void RunToolBar::setCablesEnabled(bool isEnabled)
{
    if (m_cableCombo)
        m_cableCombo->setEnabled(isEnabled);
}

QString RunToolBar::cableName() const
{
    return m_cableCombo ? m_cableCombo->currentText() : QString();
}

int RunToolBar::cableNumber(int index) const
{
    return m_cableCombo ? m_cableCombo->itemData(index).toInt() : 0;
}

void RunToolBar::attach(QToolBar &toolBar)
{
    const RunActions &a = m_actions;
    toolBar.addAction(m_cableAction);
    addSeparator(toolBar);
    if (m_statusAction)
        toolBar.addAction(m_statusAction);
    toolBar.addActions({a.startAction, a.autoAction, a.forceTriggerAction, a.stopAction});
    addSeparator(toolBar);
    toolBar.addActions({a.zoomInAction, a.zoomOutAction, a.zoomFitAction});
    addSeparator(toolBar);
    toolBar.addActions({a.saveAction, a.exportAction});
}

void RunToolBar::detach(QToolBar &toolBar)
{
    if (const QString cable = cableName(); !cable.isEmpty())
        toolBar.setProperty(kChosenCable, cable);
    const RunActions &a = m_actions;
    for (QAction *action : std::initializer_list<QAction *>{
             m_cableAction, a.startAction, a.autoAction, a.forceTriggerAction, a.stopAction,
             a.zoomInAction, a.zoomOutAction, a.zoomFitAction, a.saveAction, a.exportAction})
        toolBar.removeAction(action);
    if (m_statusAction)
        toolBar.removeAction(m_statusAction);
    for (const QPointer<QAction> &separator : std::exchange(m_separators, {}))
        delete separator;
}

void RunToolBar::addSeparator(QToolBar &toolBar)
{
    m_separators.append(toolBar.addSeparator());
}

} // namespace KEO
