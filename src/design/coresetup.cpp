#include "coresetup.h"

#include <QCoreApplication>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::CoreSetup)
};

} // namespace

QList<SignalEntry> capturedSignals(const CoreSetup &setup, int core)
{
    if (setup.lite)
        return setup.lite->signals;
    const auto found =
        std::ranges::find(setup.standard, core, [](const auto &record) { return record->index; });
    return found == setup.standard.end() ? QList<SignalEntry>() : (*found)->signals;
}

SettingsCarry lostSetup(const CoreSetup &before)
{
    if (!before.lite)
        return {lostSettings(before.standard), {}};
    return {delayEntry(before, CarryOutcome::Lost) + lostSettings(*before.lite), {}};
}

CarriedSettings delayEntry(const CoreSetup &before, CarryOutcome outcome)
{
    if (!before.lite || before.delay == 0)
        return {};
    const QString text =
        before.delay < 0 ? Text::tr("on Force Trigger") : Text::tr("%1 ms").arg(before.delay);
    const bool isLost = outcome == CarryOutcome::Lost;
    return {{outcome, Text::tr("Core %1").arg(before.lite->index), Text::tr("Trigger delay"), text,
             isLost ? QString() : text,
             isLost ? Text::tr("The new design has no lite core.") : QString()}};
}

} // namespace KEO
