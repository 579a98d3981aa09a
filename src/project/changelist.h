#pragma once

#include <config/descriptionchange.h>

#include <QDialog>

class QTreeWidget;

namespace KEO {

/// A window of its own with the changes of a description, grouped by core; what saving a project
/// writes stands apart from the design. It does not hold up the window it belongs to. The user
/// takes selected lines, or all of them, to the clipboard as text. Acts on nothing.
class ChangeList final : public QDialog
{
    Q_OBJECT

public:
    explicit ChangeList(QWidget *parent = nullptr);

    /// Replaces what the list shows.
    void setChanges(const QList<DescriptionChange> &changes);

private:
    void copy() const;

    QTreeWidget *m_tree; // child
};

} // namespace KEO
