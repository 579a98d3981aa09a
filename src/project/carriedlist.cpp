#include "carriedlist.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

namespace KEO {

namespace {

constexpr int kFirstWidth = 130; // characters

qsizetype count(const CarriedSettings &account, CarryOutcome outcome)
{
    return std::ranges::count(account, outcome, &CarriedSetting::outcome);
}

/// What it is, and was if that differs.
QString valueOf(const CarriedSetting &entry)
{
    if (entry.after.isEmpty() || entry.before == entry.after)
        return entry.before;
    return QStringLiteral("%1 \u2192 %2").arg(entry.before, entry.after).trimmed();
}

GroupList::Group groupOf(const CarriedSettings &account, CarryOutcome outcome, const QString &title)
{
    GroupList::Group group;
    group.title = CarriedList::tr("%1 (%2)").arg(title).arg(count(account, outcome));
    group.isExpanded = outcome != CarryOutcome::Kept;
    for (const CarriedSetting &entry : account) {
        if (entry.outcome != outcome)
            continue;
        const QString setting = CarriedList::tr("%1: %2").arg(entry.place, entry.setting);
        const QStringList text{title, setting, entry.before, entry.after, entry.reason};
        group.lines.append({{setting, valueOf(entry), entry.reason}, text.join(u'\t')});
    }
    return group;
}

} // namespace

QString countsOf(const CarriedSettings &account)
{
    return CarriedList::tr("%1 kept, %2 adapted, %3 lost")
        .arg(count(account, CarryOutcome::Kept))
        .arg(count(account, CarryOutcome::Adapted))
        .arg(count(account, CarryOutcome::Lost));
}

CarriedList::CarriedList(const CarriedSettings &account, QWidget *parent)
    : GroupList(QStringLiteral("carriedList"), tr("Settings in the New Design"),
                {tr("Setting"), tr("Value"), tr("Reason")}, parent)
{
    setHead(tr("Reloaded. Of the settings: %1. Where one was lost, the new description counts.")
                .arg(countsOf(account)));
    QList<Group> groups;
    for (const auto &[outcome, title] : std::initializer_list<std::pair<CarryOutcome, QString>>{
             {CarryOutcome::Lost, tr("Lost")},
             {CarryOutcome::Adapted, tr("Adapted")},
             {CarryOutcome::Kept, tr("Kept")}}) {
        if (count(account, outcome) > 0)
            groups.append(groupOf(account, outcome, title));
    }
    setGroups(groups);
    setFirstWidth(kFirstWidth);
}

} // namespace KEO
