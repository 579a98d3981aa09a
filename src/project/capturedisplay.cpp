#include "capturedisplay.h"

#include <capture/samplecutter.h>
#include <config/coreconfig.h>

namespace KEO {

using WaveMonitor::BusElement;
using WaveMonitor::SignalElement;
using WaveMonitor::WindowContents;

namespace {

void appendFlat(QList<SignalElement> &elements, const SignalEntry &entry,
                const QList<QBitArray> &samples)
{
    if (elements.size() >= samples.size())
        return;
    SignalElement element;
    element.id = int(elements.size());
    element.name = entry.name;
    element.text = entry.text;
    element.data = samples.at(elements.size());
    elements.append(element);
}

} // namespace

QList<SignalElement> extractSignalData(const CoreConfig *core, const QList<QBitArray> &sections)
{
    if (!core)
        return {};
    const QList<QBitArray> samples = cutSamples(sections, captureGeometry(*core));
    QList<SignalElement> elements;
    elements.reserve(samples.size());
    for (const SignalEntry &entry : core->signals) {
        if (entry.members.isEmpty())
            appendFlat(elements, entry, samples);
        for (const SignalEntry &member : entry.members)
            appendFlat(elements, member, samples);
    }
    return elements;
}

void fillWindow(WindowContents &contents, const CoreConfig &core, QList<SignalElement> elements)
{
    contents.clear();
    qsizetype next = 0;
    for (const SignalEntry &entry : core.signals) {
        const qsizetype width = qMax<qsizetype>(1, entry.members.size());
        if (next + width > elements.size())
            break;
        if (entry.members.isEmpty()) {
            contents.addSignal(elements.at(next));
        } else {
            BusElement bus{entry.name, entry.text, {}};
            for (qsizetype member = next; member < next + width; ++member)
                bus.signals.append(&elements[member]);
            contents.addBus(bus);
        }
        next += width;
    }
    contents.setTriggerPosition(core.trigger_pos);
}

} // namespace KEO
