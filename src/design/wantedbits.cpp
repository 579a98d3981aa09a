#include "wantedbits.h"

#include <wave_data/windowcontents.h>

#include <QSet>

namespace KEO {

QList<WantedBit> wantedBits(const WaveMonitor::WindowContents &contents, const QList<int> &ids,
                            qsizetype sample, Wanted wanted)
{
    QList<WantedBit> bits;
    QSet<QString> seen;
    for (const int id : ids) {
        const WaveMonitor::SignalElement *signal = contents.signal(id);
        if (!signal || sample < 0 || sample >= signal->data.size() || seen.contains(signal->name))
            continue;
        seen.insert(signal->name);
        const bool now = signal->data.testBit(sample);
        const bool changes = sample > 0 && signal->data.testBit(sample - 1) != now;
        if (changes && wanted == Wanted::Edge)
            bits.append({signal->name, now ? u'R' : u'F'});
        else
            bits.append({signal->name, now ? u'1' : u'0'});
    }
    return bits;
}

} // namespace KEO
