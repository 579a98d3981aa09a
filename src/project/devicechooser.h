#pragma once

#include "projectparts.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>

class QAction;
class QInputDialog;
class QMenu;
class QWidget;

namespace KEO {

/// Choose Device: a menu of the models that the programmer knows, or else of those that make a
/// difference, over the device in the status line. Opens by a click there, by a key of the window
/// and from the context menu of the page; never during a run.
class DeviceChooser final : public QObject
{
    Q_OBJECT

public:
    DeviceChooser(const ProjectParts &parts, QObject *parent);

    /// Puts the action into \a page and \a window, which may be null. Both are borrowed.
    void enter(QWidget &page, QWidget *window);
    void leave();
    void setEnabled(bool isEnabled);

Q_SIGNALS:
    /// The user names the device of the runs to come; both empty: it is not known.
    void chosen(const QString &family, const QString &device);

private:
    /// Models under the name of their family; without one they stand in the menu itself.
    struct Group
    {
        QString family;
        QStringList models;
        QString title;
    };
    [[nodiscard]] QList<Group> groups() const;
    void open();
    QAction *addGroups(QMenu &menu, const QString &current);
    void askOther(const QString &current);

    const ProjectParts m_parts;
    QAction *m_action; // child
    QPointer<QWidget> m_window;
    QPointer<QMenu> m_menu;          // of the window
    QPointer<QInputDialog> m_dialog; // of the window
};

} // namespace KEO
