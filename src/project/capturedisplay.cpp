#include "capturedisplay.h"

#include <capture/samplecutter.h>

#include <utility>

namespace KEO {

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
    addCapturedRows(contents, core.signals, std::move(elements));
    contents.setTriggerPosition(core.trigger_pos);
}

} // namespace KEO
