#include "capturelimits.h"

#include "coreconfig.h"
#include "litecoreconfig.h"
#include "poweroftwo.h"

#include <QCoreApplication>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::CaptureLimits)
};

template <typename... Numbers>
Error refusal(const QString &text, Numbers... numbers)
{
    return {Error::Format, text.arg(QString::number(numbers)...)};
}

} // namespace

QList<int> offeredAmounts(int depth, int windows)
{
    constexpr int kLeast = 32;
    const qint64 parts = roundUpToPowerOfTwo(windows);
    QList<int> amounts;
    for (qint64 amount = kLeast; parts > 0 && amount <= depth / parts; amount *= 2)
        amounts.append(int(amount));
    return amounts;
}

std::optional<Error> captureObstacle(const CoreConfig &core)
{
    return captureObstacle(core, {core.window_num, core.capture_amount, core.trigger_pos});
}

std::optional<Error> captureObstacle(const CoreConfig &core, const CaptureNumbers &asked)
{
    if (core.index < 0 || core.index >= kMaxChipCores)
        return refusal(Text::tr("Core %1: a chip has only cores 0 to %2."), core.index,
                       kMaxChipCores - 1);
    if (std::optional<Error> obstacle = memoryObstacle(core, asked))
        return obstacle;
    for (const auto &unit : core.matchUnits) {
        if (std::optional<Error> obstacle = counterObstacle(*unit))
            return obstacle;
    }
    return {};
}

std::optional<Error> memoryObstacle(const CoreConfig &core, const CaptureNumbers &asked)
{
    const auto [windows, amount, position] = asked;
    if (core.signals.isEmpty() || amount < 1 || windows < 1)
        return refusal(Text::tr("Core %1 captures %2 samples of %3 signals in %4 windows: nothing "
                                "to read."),
                       core.index, amount, signalBits(core.signals), windows);
    if (amount > kBlockRows && amount % kBlockRows != 0)
        return refusal(Text::tr("Core %1 captures %2 samples; above %3 only multiples of %3 can be "
                                "read."),
                       core.index, amount, kBlockRows);
    if (core.storage_depth < 1 || core.storage_depth > kMaxRows)
        return refusal(Text::tr("Core %1 has room for %2 samples; 1 to %3 are possible."),
                       core.index, core.storage_depth, kMaxRows);
    const qint64 room = core.storage_depth / roundUpToPowerOfTwo(windows);
    if (amount > room)
        return refusal(Text::tr("Core %1 captures %2 samples in each of %3 windows; its memory has "
                                "room for %4."),
                       core.index, amount, windows, room);
    if (position < 0 || position > amount - kMinRowsFromTrigger)
        return refusal(Text::tr("Core %1 has its trigger at sample %2 of %3; it has to leave %4 to "
                                "the end."),
                       core.index, position, amount, kMinRowsFromTrigger);
    return {};
}

std::optional<Error> captureObstacle(const LiteCoreConfig &core)
{
    if (core.capture_amount < 1 || core.signals.isEmpty())
        return refusal(Text::tr("Core %1 captures %2 samples of %3 signals: nothing to read."),
                       core.index, core.capture_amount, signalBits(core.signals));
    if (core.capture_amount > kMaxRows)
        return refusal(Text::tr("Core %1 captures %2 samples; 1 to %3 are possible."), core.index,
                       core.capture_amount, kMaxRows);
    return {};
}

std::optional<Error> counterObstacle(const MatchUnit &unit)
{
    if (!unit.isInUse() || !unit.counter_enable)
        return {};
    if (unit.counter_width < 0 || unit.counter_width > kMaxCounterBits)
        return refusal(Text::tr("Core %1: the counter of match unit %2 has %3 bits; 1 to %4 are "
                                "possible."),
                       unit.core->index, unit.index, unit.counter_width, kMaxCounterBits);
    const int most = greatestCount(unit.counter_width);
    if (unit.counter < 1 || unit.counter > most)
        return refusal(Text::tr("Core %1: match unit %2 counts %3 matches; 1 to %4 are possible."),
                       unit.core->index, unit.index, unit.counter, most);
    return {};
}

int greatestCount(int width)
{
    return 1 << (width > 0 ? std::min(width, kMaxCounterBits) : kMaxCounterBits);
}

} // namespace KEO
