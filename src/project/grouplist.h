#pragma once

#include "sidewindow.h"

#include <QList>
#include <QString>
#include <QStringList>

class QTreeWidget;
class QVBoxLayout;

namespace KEO {

/// Lines in groups, for people to read. The user takes selected lines, or all of them, to the
/// clipboard as text. Acts on nothing, and is deleted when it is closed.
class GroupList : public SideWindow
{
    Q_OBJECT

public:
    struct Line
    {
        QStringList cells; ///< one a column
        QString text;      ///< of the line, on the clipboard
    };
    struct Group
    {
        QString title;
        QList<Line> lines;
        bool isExpanded = true;
    };

    /// \a name as of a SideWindow; its tree is called "tree", its button "copy".
    GroupList(const QString &name, const QString &title, const QStringList &columns,
              QWidget *parent);

    /// Replaces what the list shows.
    void setGroups(const QList<Group> &groups);

protected:
    /// A sentence above the list.
    void setHead(const QString &text);
    /// Opens so wide, in characters of its font, and as high as suits that, within the screen.
    void setFirstWidth(int characters);

    /// Looks at the size of the tree.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fitColumns();
    void copy() const;

    QTreeWidget *m_tree;   // child
    QVBoxLayout *m_layout; // the window's
};

} // namespace KEO
