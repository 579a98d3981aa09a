#include "clockperiod.h"

#include <QRegularExpression>

#include <array>
#include <cmath>
#include <cstdlib>

namespace WaveMonitor {

namespace {

struct Unit
{
    const char *name;
    double size;
};

constexpr std::array<Unit, 5> kTimes{
    {{"s", 1e12}, {"ms", 1e9}, {"us", 1e6}, {"ns", 1e3}, {"ps", 1}}};
constexpr std::array<Unit, 5> kFrequencies{
    {{"THz", 1e12}, {"GHz", 1e9}, {"MHz", 1e6}, {"kHz", 1e3}, {"Hz", 1}}};
constexpr qint64 kMaxNumber = 9'999'999;
constexpr int kDigits = 6;

/// In the greatest unit of which it is at least one, or else in the least.
QString inUnits(double value, const std::array<Unit, 5> &units)
{
    const Unit *unit = &units.back();
    for (const Unit &each : units) {
        // What rounds up to one unit is one.
        if (std::abs(value) >= each.size * (1 - 0.5e-6)) {
            unit = &each;
            break;
        }
    }
    return QStringLiteral("%1 %2").arg(QString::number(value / unit->size, 'g', kDigits),
                                       QString::fromLatin1(unit->name));
}

template <size_t count>
double sizeOf(const QString &name, const std::array<Unit, count> &units)
{
    for (const Unit &unit : units) {
        if (name.compare(QLatin1String(unit.name), Qt::CaseInsensitive) == 0)
            return unit.size;
    }
    return 0.0;
}

} // namespace

qint64 ClockPeriod::picoseconds() const
{
    if (unit == QLatin1String("us"))
        return qint64(number) * 1'000'000;
    return unit == QLatin1String("ns") ? qint64(number) * 1'000 : number;
}

std::optional<ClockPeriod> readClockPeriod(const QString &text)
{
    static const QRegularExpression pattern(
        QStringLiteral("^\\s*([0-9]{1,12}(?:[.,][0-9]{1,12})?)\\s*([a-zA-Z\u00b5\u03bc]+)\\s*$"));
    const auto match = pattern.match(text);
    if (!match.hasMatch())
        return {};
    const double number = match.captured(1).replace(u',', u'.').toDouble();
    QString unit = match.captured(2);
    if (unit.startsWith(u'\u00b5') || unit.startsWith(u'\u03bc'))
        unit[0] = u'u';
    double picoseconds = number * sizeOf(unit, kTimes);
    if (const double frequency = number * sizeOf(unit, kFrequencies); frequency > 0)
        picoseconds = 1e12 / frequency;
    if (picoseconds < 0.5 || picoseconds > double(kMaxNumber) * 1e6)
        return {};
    const qint64 whole = std::llround(picoseconds);
    // In the largest unit that holds it whole, or else in the finest in which there is room.
    for (const auto &[name, size] : {std::pair("us", 1'000'000), std::pair("ns", 1'000)}) {
        if (whole % size == 0)
            return ClockPeriod{int(whole / size), QString::fromLatin1(name)};
    }
    for (const auto &[name, size] : {std::pair("ps", 1), std::pair("ns", 1'000)}) {
        if (const qint64 rounded = std::llround(picoseconds / size); rounded <= kMaxNumber)
            return ClockPeriod{int(rounded), QString::fromLatin1(name)};
    }
    return ClockPeriod{int(std::llround(picoseconds / 1e6)), QStringLiteral("us")};
}

QString timeText(qint64 samples, const ClockPeriod &period)
{
    return inUnits(double(samples) * double(period.picoseconds()), kTimes);
}

QString frequencyText(qint64 samples, const ClockPeriod &period)
{
    if (samples == 0)
        return {};
    return inUnits(1e12 / (double(std::llabs(samples)) * double(period.picoseconds())),
                   kFrequencies);
}

} // namespace WaveMonitor
