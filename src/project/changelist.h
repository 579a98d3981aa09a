#pragma once

#include "grouplist.h"

#include <config/descriptionchange.h>

namespace KEO {

/// The changes of a description, grouped by core; what saving a project writes stands apart from
/// the design.
class ChangeList final : public GroupList
{
    Q_OBJECT

public:
    explicit ChangeList(QWidget *parent = nullptr);

    /// Replaces what the list shows.
    void setChanges(const QList<DescriptionChange> &changes);
};

} // namespace KEO
