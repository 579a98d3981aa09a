#pragma once

#include <config/coreconfig.h>

#include <QDebug>

namespace coretext {

inline QString value(const QString &text)
{
    return QDebug::toString(text); // quoted, every other character escaped
}

inline QString value(int number)
{
    return QString::number(number);
}

inline QString value(const QList<KEO::SignalEntry> &signals)
{
    QStringList entries;
    for (const KEO::SignalEntry &entry : signals) {
        entries += value(entry.name) + '/' + value(entry.text);
        if (!entry.members.isEmpty())
            entries.back() += '{' + value(entry.members) + '}';
    }
    return entries.join(u' ');
}

template <typename... Values>
QString line(const char *name, const Values &...values)
{
    return QLatin1String(name) + ((u' ' + value(values)) + ...);
}

} // namespace coretext

/// Everything of a core that a description keeps, one record a line, so that two cores compare with
/// a readable difference.
inline QStringList coreText(const KEO::CoreConfig &core)
{
    using coretext::line;
    QStringList lines;
    lines += line("core", core.index, core.sample_clock, core.trig_type, core.dynamic,
                  core.storage_depth, core.capture_amount, core.trigger_pos, core.window_num,
                  core.module_name);
    lines += line("captured", core.signals);
    for (const auto &port : core.triggers)
        lines += line("port", port->index, port->core == &core, port->signals);
    for (const auto &unit : core.matchUnits)
        lines += line("unit", unit->index, unit->core == &core, unit->enabled,
                      int(unit->match_type), int(unit->func), unit->counter_enable,
                      unit->counter_width, unit->counter, unit->countinuous, unit->value0,
                      unit->value1, unit->trigger ? unit->trigger->index : -1);
    for (const QString &expression : core.expressions)
        lines += line("expression", expression);
    return lines;
}

inline QStringList coreText(const KEO::CoreList &cores)
{
    QStringList lines;
    for (const auto &core : cores)
        lines += coreText(*core);
    return lines;
}
