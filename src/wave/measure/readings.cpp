#include "readings.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdlib>

namespace WaveMonitor {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(WaveMonitor::MeasureLine)
};

/// "+25 (250 ns, 4 MHz)"
QString distance(const QString &samples, qint64 count, const Readings &readings, Detail detail)
{
    if (!readings.period || detail == Detail::Samples)
        return samples;
    const QString time = timeText(std::llabs(count), *readings.period);
    const QString frequency =
        detail == Detail::Frequency ? frequencyText(count, *readings.period) : QString();
    return frequency.isEmpty() ? QStringLiteral("%1 (%2)").arg(samples, time)
                               : QStringLiteral("%1 (%2, %3)").arg(samples, time, frequency);
}

QString between(int from, int to, const Readings &readings, Detail detail)
{
    const qint64 count = qint64(to) - from;
    const QString sign = count > 0 ? QStringLiteral("+") : QString();
    return distance(sign + QString::number(count), count, readings, detail);
}

} // namespace

QString readOut(const Readings &r, Detail detail)
{
    QStringList parts;
    if (r.pointer) {
        parts.append(Text::tr("Sample %1").arg(*r.pointer));
        parts.append(Text::tr("trigger %1").arg(between(r.trigger, *r.pointer, r, detail)));
        if (r.marker)
            parts.append(Text::tr("marker %1").arg(between(*r.marker, *r.pointer, r, detail)));
    } else if (r.marker) {
        parts.append(Text::tr("Marker %1").arg(*r.marker));
        parts.append(Text::tr("trigger %1").arg(between(r.trigger, *r.marker, r, detail)));
    }
    if (r.marker && r.markerBefore) {
        const qint64 count = std::llabs(qint64(*r.marker) - *r.markerBefore);
        parts.append(
            Text::tr("markers %1").arg(distance(QString::number(count), count, r, detail)));
        if (r.edges)
            parts.append(Text::tr("edges of %1: %2").arg(r.row, QString::number(*r.edges)));
    }
    return parts.join(QStringLiteral("   "));
}

} // namespace WaveMonitor
