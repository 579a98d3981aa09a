#pragma once

#include "signaltreeview.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>

namespace WaveMonitor {

/// The tree's context menu: its actions and submenus, which entries the selection allows, and which
/// radix and colour it shows as chosen. What an entry does stands in the view.
class SignalTreeView::ContextMenuDelegate final
{
public:
    explicit ContextMenuDelegate(SignalTreeView *view);
    ContextMenuDelegate(const ContextMenuDelegate &) = delete;
    ContextMenuDelegate &operator=(const ContextMenuDelegate &) = delete;

    /// What has a key of its own, also while the menu is closed.
    [[nodiscard]] QList<QAction *> keyActions();
    /// Shows the menu until it is closed. The view may be gone afterwards.
    void run(const QPoint &globalPosition);

private:
    static QAction *addChoice(QMenu &menu, QActionGroup &group, const QString &text, int value);
    void enableActions(const QModelIndexList &selected);
    void checkChosen(const QModelIndexList &selected);

    SignalTreeView *m_view; // owns this object
    QAction m_groupAction;
    QAction m_ungroupAction;
    QAction m_renameAction;
    QAction m_restoreAction;
    QAction m_reverseAction;
    QAction m_separator;
    QAction m_stepSeparator;
    QAction m_hideSeparator;
    QAction m_hideAction;
    QAction m_showAllAction;
    QAction m_moveUpAction;
    QAction m_moveDownAction;
    QMenu m_formatMenu;
    QActionGroup m_formatGroup; ///< data of an action: DataFormat::Type
    QMenu m_colorMenu;
    QActionGroup m_colorGroup; ///< data of an action: 0xRRGGBB
};

} // namespace WaveMonitor
