#pragma once

#include "projectparts.h"

#include <QObject>
#include <QPointer>

class QAction;
class QWidget;

namespace KEO {

/// Copy as Command: puts the command line on the clipboard that captures as Start would now. Stands
/// in the context menu of the page, and its key works in the whole window.
class CommandCopy final : public QObject
{
    Q_OBJECT

public:
    CommandCopy(const ProjectParts &parts, QObject *parent);

    /// Not connected; the project does so.
    [[nodiscard]] QAction *action() const { return m_action; }
    /// Puts the action into \a page and \a window, which may be null. Both are borrowed.
    void enter(QWidget &page, QWidget *window);
    /// Takes it out of the window again.
    void leave();

    /// Copies what the page's fields hold and tells so in the status line, or why there is nothing
    /// to copy.
    void copy(const QString &description, const QString &cable);

private:
    void copySettings(const QString &description, const QString &cable);

    const ProjectParts m_parts;
    QAction *m_action; // child
    QPointer<QWidget> m_window;
};

} // namespace KEO
