#include "descriptionchange.h"

#include <QCoreApplication>
#include <QMap>
#include <QStringList>

#include <algorithm>
#include <array>
#include <tuple>

namespace KEO {

namespace {

using Subject = DescriptionChange::Subject;
using Action = DescriptionChange::Action;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DescriptionChange)
};

struct SubjectRow
{
    Subject subject;
    const char *name; // for scripts
    const char *text; // not yet translated
};

constexpr std::array kSubjects{
    SubjectRow{Subject::Kind, "kind", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "kind of cores")},
    SubjectRow{Subject::Version, "version",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "version of the file")},
    SubjectRow{Subject::CheckValue, "check_value",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "check value")},
    SubjectRow{Subject::CoreOrder, "core_order",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "order of the cores")},
    SubjectRow{Subject::Core, "core", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "core")},
    SubjectRow{Subject::ModuleName, "module_name",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "module")},
    SubjectRow{Subject::SampleClock, "sample_clock",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "sample clock")},
    SubjectRow{Subject::TrigType, "trig_type",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "trigger type")},
    SubjectRow{Subject::StorageDepth, "storage_depth",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "memory")},
    SubjectRow{Subject::LiteAmount, "capture_amount",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "memory")},
    SubjectRow{Subject::Implementation, "implementation",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "implementation")},
    SubjectRow{Subject::InputRegister, "input_register",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "input register")},
    SubjectRow{Subject::InitData, "init_data",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "capture of initial data")},
    SubjectRow{Subject::ExpressionType, "expression_type",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "expressions")},
    SubjectRow{Subject::Expression, "expression",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "expression")},
    SubjectRow{Subject::Windows, "windows", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "windows")},
    SubjectRow{Subject::Amount, "amount",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "samples in a window")},
    SubjectRow{Subject::Position, "position",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "trigger position")},
    SubjectRow{Subject::Signal, "signal", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "signal")},
    SubjectRow{Subject::SignalText, "signal_text",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "shown name of signal")},
    SubjectRow{Subject::Bus, "bus", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "bus")},
    SubjectRow{Subject::BusText, "bus_text",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "shown name of bus")},
    SubjectRow{Subject::BusMembers, "bus_members",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "members of bus")},
    SubjectRow{Subject::Unit, "unit", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "match unit")},
    SubjectRow{Subject::UnitPort, "unit_port", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "port")},
    SubjectRow{Subject::MatchType, "match_type",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "match type")},
    SubjectRow{Subject::HasCounter, "has_counter",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "counter")},
    SubjectRow{Subject::CounterWidth, "counter_width",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "counter width")},
    SubjectRow{Subject::Function, "function",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "function")},
    SubjectRow{Subject::Value, "value", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "value")},
    SubjectRow{Subject::Maximum, "maximum", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "maximum")},
    SubjectRow{Subject::Count, "count", QT_TRANSLATE_NOOP("KEO::DescriptionChange", "matches")},
    SubjectRow{Subject::Continuous, "continuous",
               QT_TRANSLATE_NOOP("KEO::DescriptionChange", "continuous")},
};

const SubjectRow &rowOf(Subject subject)
{
    return *std::ranges::find(kSubjects, subject, &SubjectRow::subject);
}

QString wordOf(Action action)
{
    switch (action) {
    case Action::Changed:
        return Text::tr("changed");
    case Action::Added:
        return Text::tr("added");
    case Action::Removed:
        return Text::tr("removed");
    case Action::Moved:
        return Text::tr("moved");
    case Action::Renamed:
        return Text::tr("renamed");
    case Action::Formed:
        return Text::tr("formed");
    case Action::Dissolved:
        return Text::tr("dissolved");
    }
    return {};
}

/// A name of the file between quotes, one line of it.
QString quoted(const QString &name)
{
    return u'\'' + name.simplified() + u'\'';
}

QString valueText(const QString &value)
{
    return value.isEmpty() ? Text::tr("none") : value.simplified();
}

/// "port 0: ", "M3: " or nothing.
QString ownerPrefix(const DescriptionChange &change)
{
    if (change.port >= 0)
        return Text::tr("port %1: ").arg(change.port);
    if (change.unit >= 0)
        return QStringLiteral("M%1: ").arg(change.unit);
    return {};
}

/// Signals that came, went, moved or were renamed: they are many, so the summary counts them.
bool isCounted(const DescriptionChange &change)
{
    switch (change.action) {
    case Action::Added:
    case Action::Removed:
    case Action::Moved:
        return change.subject == Subject::Signal || change.subject == Subject::Bus;
    case Action::Renamed:
        return change.subject == Subject::Signal;
    default:
        return false;
    }
}

/// "signals: 2 added, 1 removed" of the changes of one core, and of each of its ports.
QStringList countedParts(const QList<DescriptionChange> &changes)
{
    QMap<int, QMap<Action, int>> counts; // by port
    for (const DescriptionChange &change : changes) {
        if (isCounted(change))
            counts[change.port][change.action] += change.signalCount;
    }
    QStringList parts;
    for (auto port = counts.cbegin(); port != counts.cend(); ++port) {
        QStringList words;
        for (auto count = port->cbegin(); count != port->cend(); ++count)
            words.append(QStringLiteral("%1 %2").arg(QString::number(*count), wordOf(count.key())));
        const QString joined = words.join(QLatin1String(", "));
        parts.append(port.key() < 0
                         ? Text::tr("signals: %1").arg(joined)
                         : Text::tr("port %1: %2").arg(QString::number(port.key()), joined));
    }
    return parts;
}

// Of one place in the summary. What is more, or longer, is for the list.
constexpr qsizetype kMaxParts = 6;
constexpr qsizetype kMaxPartLength = 60;

QString summaryPart(const DescriptionChange &change)
{
    const QString line = lineOf(change);
    return line.size() > kMaxPartLength ? titleOf(change) : line;
}

} // namespace

QString nameOf(Subject subject)
{
    return QLatin1String(rowOf(subject).name);
}

QString nameOf(Action action)
{
    static const QMap<Action, QString> names{
        {Action::Changed, "changed"},    {Action::Added, "added"},     {Action::Removed, "removed"},
        {Action::Moved, "moved"},        {Action::Renamed, "renamed"}, {Action::Formed, "formed"},
        {Action::Dissolved, "dissolved"}};
    return names.value(action);
}

QString titleOf(const DescriptionChange &change)
{
    QString title = ownerPrefix(change) + Text::tr(rowOf(change.subject).text);
    if (change.subject == Subject::Core)
        title += u' ' + QString::number(change.core);
    if (!change.name.isEmpty())
        title += u' ' + quoted(change.name);
    if (change.subject == Subject::Bus && change.signalCount > 1)
        title += Text::tr(" with %1 signals").arg(change.signalCount);
    if (change.action != Action::Changed)
        title += u' ' + wordOf(change.action);
    return title;
}

QString lineOf(const DescriptionChange &change)
{
    const QString title = titleOf(change);
    switch (change.action) {
    case Action::Added:
        return change.after.isEmpty() ? title
                                      : title + QLatin1String(": ") + valueText(change.after);
    case Action::Removed:
        return change.before.isEmpty() ? title
                                       : title + QLatin1String(": ") + valueText(change.before);
    case Action::Formed:
    case Action::Dissolved:
        return title;
    case Action::Changed:
    case Action::Moved:
    case Action::Renamed:
        break;
    }
    return title + u' ' + valueText(change.before) + QStringLiteral(" \u2192 ") +
           valueText(change.after);
}

QString placeOf(const DescriptionChange &change)
{
    return change.core < 0 || change.subject == Subject::Core
               ? Text::tr("Design")
               : Text::tr("Core %1").arg(change.core);
}

QString wholeLineOf(const DescriptionChange &change)
{
    const bool isSetting = change.origin == DescriptionChange::Origin::Saved;
    const QString place =
        isSetting ? Text::tr("%1, setting").arg(placeOf(change)) : placeOf(change);
    return place + QLatin1String(": ") + lineOf(change);
}

QString summaryOf(const QList<DescriptionChange> &changes)
{
    QMap<int, QList<DescriptionChange>> byCore;
    qsizetype saved = 0;
    for (const DescriptionChange &change : changes) {
        if (change.origin == DescriptionChange::Origin::Saved)
            ++saved;
        else
            byCore[change.subject == Subject::Core ? -1 : change.core].append(change);
    }
    QStringList places;
    for (auto core = byCore.cbegin(); core != byCore.cend(); ++core) {
        QStringList parts = countedParts(*core);
        for (const DescriptionChange &change : *core) {
            if (!isCounted(change))
                parts.append(summaryPart(change));
        }
        if (const qsizetype more = parts.size() - kMaxParts; more > 0) {
            parts.resize(kMaxParts);
            parts.append(Text::tr("%1 more").arg(more));
        }
        const QString joined = parts.join(QLatin1String(", "));
        places.append(core.key() < 0
                          ? joined
                          : Text::tr("core %1: %2").arg(QString::number(core.key()), joined));
    }
    if (places.isEmpty())
        places.append(Text::tr("The design is the same"));
    if (saved > 0)
        places.append(Text::tr("settings in the file: %1 changed").arg(saved));
    return places.join(QLatin1String("; "));
}

} // namespace KEO
