#include "activity.h"

#include <wave_data/samplesearch.h>

namespace WaveMonitor {

QList<Activity> activityOf(const QList<QBitArray> &members, int samples, int columns)
{
    QList<Activity> activity(columns);
    if (members.isEmpty() || samples < 1 || columns < 1)
        return activity;
    const QBitArray &first = members.first();
    for (int column = 0; column < columns; ++column) {
        const qint64 sample = qint64(column) * samples / columns;
        activity[column].level = sample < first.size() && first.testBit(sample);
    }
    const SampleHits changes = SampleSearch(members, {.kind = SamplePattern::Change}).all();
    for (auto change = changes.next(-1); change && *change < samples;) {
        const qint64 column = *change * columns / samples;
        activity[column].changes = true;
        // The last sample of the column; the way goes on after it.
        change = changes.next(std::max(*change, ((column + 1) * samples - 1) / columns));
    }
    return activity;
}

} // namespace WaveMonitor
