#include "changelist.h"

#include <QHash>

namespace KEO {

namespace {

QString groupOf(const DescriptionChange &change)
{
    return change.origin == DescriptionChange::Origin::Saved
               ? ChangeList::tr("%1, settings in the file").arg(placeOf(change))
               : placeOf(change);
}

QString capitalized(const QString &text)
{
    return text.left(1).toUpper() + text.mid(1);
}

GroupList::Line listLineOf(const DescriptionChange &change)
{
    return {{capitalized(titleOf(change)), change.before, change.after}, wholeLineOf(change)};
}

} // namespace

ChangeList::ChangeList(QWidget *parent)
    : GroupList(QStringLiteral("changeList"), tr("What Changed"),
                {tr("Change"), tr("Before"), tr("Now")}, parent)
{
}

void ChangeList::setChanges(const QList<DescriptionChange> &changes)
{
    QList<Group> groups; // settings below the designs
    for (const auto origin :
         {DescriptionChange::Origin::Design, DescriptionChange::Origin::Saved}) {
        QHash<QString, qsizetype> places;
        for (const DescriptionChange &change : changes) {
            if (change.origin != origin)
                continue;
            const QString title = groupOf(change);
            if (!places.contains(title)) {
                places.insert(title, groups.size());
                groups.append({title, {}});
            }
            groups[places[title]].lines.append(listLineOf(change));
        }
    }
    setGroups(groups);
}

} // namespace KEO
