#include "clockcarry.h"

#include <QCoreApplication>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ClockCarry)
};

QString clockOf(const CoreSetup &setup, int core)
{
    if (setup.lite)
        return setup.lite->sample_clock;
    const auto found =
        std::ranges::find(setup.standard, core, [](const auto &record) { return record->index; });
    return found == setup.standard.end() ? QString() : (*found)->sample_clock;
}

/// Why the period of \a core means nothing any more; empty if it does.
QString lossOf(int core, const CoreSetup &before, const CoreSetup &now,
               const QHash<int, int> &cores)
{
    if (!cores.contains(core))
        return Text::tr("The new design has no such core.");
    const QString clock = clockOf(now, cores[core]);
    return clock == clockOf(before, core) ? QString()
                                          : Text::tr("The core samples with %1 now.").arg(clock);
}

} // namespace

ClockCarry carryClocks(const QMap<int, WaveMonitor::ClockPeriod> &periods, const CoreSetup &before,
                       const CoreSetup &now, const QHash<int, int> &cores)
{
    ClockCarry carry;
    for (auto period = periods.begin(); period != periods.end(); ++period) {
        if (period.key() < 0) {
            carry.periods.insert(period.key(), *period);
            continue;
        }
        const QString loss = lossOf(period.key(), before, now, cores);
        if (loss.isEmpty())
            carry.periods.insert(cores[period.key()], *period);
        const QString text = QStringLiteral("%1 %2").arg(period->number).arg(period->unit);
        carry.account.append({loss.isEmpty() ? CarryOutcome::Kept : CarryOutcome::Lost,
                              Text::tr("Core %1").arg(period.key()), Text::tr("Clock period"), text,
                              loss.isEmpty() ? text : QString(), loss});
    }
    return carry;
}

} // namespace KEO
