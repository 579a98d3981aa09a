#include "treecontextmenu.h"

#include "rowhistory.h"
#include "signaltreemodel.h"

#include <wave/common/popupmenu.h>
#include <wave_data/dataformat.h>

#include <QIcon>
#include <QPixmap>
#include <QPointer>

#include <algorithm>
#include <array>
#include <utility>

namespace WaveMonitor {

namespace {

constexpr std::array<int, 10> kColors{0x00FF00, 0x90EE90, 0xCE0000, 0xFF0000, 0xFFA500,
                                      0xFFFF00, 0x87CEFA, 0x0000FF, 0x00008B, 0x800080};

QString colorName(int color)
{
    switch (color) {
    case 0x00FF00:
        return SignalTreeView::tr("Green");
    case 0x90EE90:
        return SignalTreeView::tr("Light Green");
    case 0xCE0000:
        return SignalTreeView::tr("Dark Red");
    case 0xFF0000:
        return SignalTreeView::tr("Red");
    case 0xFFA500:
        return SignalTreeView::tr("Orange");
    case 0xFFFF00:
        return SignalTreeView::tr("Yellow");
    case 0x87CEFA:
        return SignalTreeView::tr("Light Blue");
    case 0x0000FF:
        return SignalTreeView::tr("Blue");
    case 0x00008B:
        return SignalTreeView::tr("Dark Blue");
    case 0x800080:
        return SignalTreeView::tr("Purple");
    default:
        return SignalTreeView::tr("Strange color");
    }
}

/// Checks the action of \a value, or none when no action has it.
void checkValue(const QActionGroup &group, int value)
{
    const QList<QAction *> actions = group.actions();
    for (QAction *action : actions)
        action->setChecked(action->data().toInt() == value);
}

} // namespace

SignalTreeView::ContextMenuDelegate::ContextMenuDelegate(SignalTreeView *view)
    : m_view(view),
      m_groupAction(tr("Group")),
      m_ungroupAction(tr("Ungroup")),
      m_renameAction(tr("Rename")),
      m_restoreAction(tr("Restore Original Name")),
      m_reverseAction(tr("Reverse")),
      m_separator(nullptr),
      m_stepSeparator(nullptr),
      m_hideSeparator(nullptr),
      m_hideAction(tr("Hide")),
      m_showAllAction(tr("Show All")),
      m_moveUpAction(tr("Move Up")),
      m_moveDownAction(tr("Move Down")),
      m_formatMenu(tr("Format")),
      m_formatGroup(nullptr),
      m_colorMenu(tr("Color")),
      m_colorGroup(nullptr)
{
    for (QAction *separator : {&m_separator, &m_stepSeparator, &m_hideSeparator})
        separator->setSeparator(true);
    connect(&m_groupAction, &QAction::triggered, view, &SignalTreeView::onGroupBus);
    connect(&m_ungroupAction, &QAction::triggered, view, &SignalTreeView::onUngroupBus);
    connect(&m_renameAction, &QAction::triggered, view, &SignalTreeView::onRename);
    connect(&m_restoreAction, &QAction::triggered, view, &SignalTreeView::onRestoreOrgName);
    connect(&m_reverseAction, &QAction::triggered, view, &SignalTreeView::onReverse);
    connect(&m_hideAction, &QAction::triggered, view, &SignalTreeView::onHide);
    connect(&m_showAllAction, &QAction::triggered, view, &SignalTreeView::onShowAll);
    connect(&m_moveUpAction, &QAction::triggered, view, &SignalTreeView::onMoveUp);
    connect(&m_moveDownAction, &QAction::triggered, view, &SignalTreeView::onMoveDown);
    m_hideAction.setShortcut(Qt::Key_Delete);
    m_moveUpAction.setShortcut(Qt::ALT | Qt::Key_Up);
    m_moveDownAction.setShortcut(Qt::ALT | Qt::Key_Down);

    for (int format = DataFormat::Binary; format <= DataFormat::Hexadecimal; ++format)
        addChoice(m_formatMenu, m_formatGroup, DataFormat::typeName(DataFormat::Type(format)),
                  format);
    connect(&m_formatGroup, &QActionGroup::triggered, view,
            [view](const QAction *action) { view->onDataFormatSetted(action->data().toInt()); });

    for (const int color : kColors) {
        QPixmap icon(15, 10);
        icon.fill(QColor::fromRgb(QRgb(color)));
        addChoice(m_colorMenu, m_colorGroup, colorName(color), color)->setIcon(icon);
    }
    connect(&m_colorGroup, &QActionGroup::triggered, view,
            [view](const QAction *action) { view->onWaveColorSetted(action->data().toInt()); });
}

QList<QAction *> SignalTreeView::ContextMenuDelegate::keyActions()
{
    return {m_view->m_history->undoAction(), m_view->m_history->redoAction(), &m_hideAction,
            &m_moveUpAction, &m_moveDownAction};
}

QAction *SignalTreeView::ContextMenuDelegate::addChoice(QMenu &menu, QActionGroup &group,
                                                        const QString &text, int value)
{
    QAction *action = menu.addAction(text);
    action->setCheckable(true);
    action->setData(value);
    return group.addAction(action);
}

void SignalTreeView::ContextMenuDelegate::run(const QPoint &globalPosition)
{
    const QModelIndexList selected = m_view->selectedRows();
    checkChosen(selected);
    enableActions(selected);

    const QPointer<SignalTreeView> alive = m_view;
    QList<QAction *> entries{&m_ungroupAction,
                             &m_groupAction,
                             &m_renameAction,
                             &m_restoreAction,
                             &m_reverseAction,
                             &m_separator,
                             m_formatMenu.menuAction(),
                             m_colorMenu.menuAction(),
                             &m_stepSeparator,
                             m_view->m_history->undoAction(),
                             m_view->m_history->redoAction(),
                             &m_hideSeparator,
                             &m_hideAction,
                             &m_showAllAction,
                             &m_moveUpAction,
                             &m_moveDownAction};
    QAction othersSeparator;
    othersSeparator.setSeparator(true);
    entries.append(&othersSeparator); // shows only with something behind it
    for (const QPointer<QAction> &action : std::as_const(m_view->m_menuActions)) {
        if (action)
            entries.append(action);
    }
    runMenu(m_view, entries, globalPosition);
    if (!alive)
        return;
    // Their keys work whatever was selected when the menu came up last.
    for (QAction *action : {&m_hideAction, &m_moveUpAction, &m_moveDownAction})
        action->setEnabled(true);
}

void SignalTreeView::ContextMenuDelegate::checkChosen(const QModelIndexList &selected)
{
    const SignalTreeModel *model = m_view->signalModel();
    checkValue(m_formatGroup, selected.size() == 1 ? model->node(selected.first())->format->type()
                                                   : model->defaultFormat());
    if (!selected.isEmpty())
        checkValue(m_colorGroup, model->node(selected.first())->color);
}

void SignalTreeView::ContextMenuDelegate::enableActions(const QModelIndexList &selected)
{
    const SignalTreeModel *model = m_view->signalModel();
    const qsizetype rows = selected.size();
    const auto buses = std::count_if(selected.cbegin(), selected.cend(),
                                     [model](const auto &row) { return model->hasChildren(row); });
    const auto members = std::count_if(selected.cbegin(), selected.cend(),
                                       [](const auto &row) { return row.parent().isValid(); });
    m_groupAction.setEnabled(rows >= 2 && members == 0);
    m_ungroupAction.setEnabled(buses > 0);
    m_renameAction.setEnabled(rows == 1);
    m_restoreAction.setEnabled(rows > 0);
    m_reverseAction.setEnabled(rows == 1 && buses == 1);
    m_colorMenu.setEnabled(rows > 0);
    m_hideAction.setEnabled(rows > 0);
    m_showAllAction.setEnabled(model->contents().hasHidden());
    const bool moves = rows > 0 && haveOneParent(selected);
    m_moveUpAction.setEnabled(moves);
    m_moveDownAction.setEnabled(moves);
}

} // namespace WaveMonitor
