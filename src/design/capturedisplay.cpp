#include "capturedisplay.h"

#include <capture/samplecutter.h>

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

/// One element for each bit of \a signals, as far as there are samples.
QList<SignalElement> elementsOf(const QList<SignalEntry> &signals, const QList<QBitArray> &samples)
{
    QList<SignalElement> elements;
    elements.reserve(samples.size());
    for (const SignalEntry &entry : signals) {
        if (entry.members.isEmpty())
            appendFlat(elements, entry, samples);
        for (const SignalEntry &member : entry.members)
            appendFlat(elements, member, samples);
    }
    return elements;
}

} // namespace

WindowContents CapturedWindow::contents() const
{
    WindowContents contents;
    addCapturedRows(contents, signals, elements);
    contents.setTriggerPosition(core.triggerSample);
    return contents;
}

WindowContents contentsWithoutSamples(const QList<SignalEntry> &signals)
{
    WindowContents contents;
    addCapturedRows(contents, signals, elementsOf(signals, QList<QBitArray>(signalBits(signals))));
    return contents;
}

QList<SignalElement> extractSignalData(const CoreConfig *core, const QList<QBitArray> &sections)
{
    if (!core)
        return {};
    return elementsOf(core->signals, cutSamples(sections, captureGeometry(*core)));
}

QList<SignalElement> extractSignalData(const LiteCoreConfig *core, const QList<QBitArray> &sections,
                                       const QString &deviceModel, bool isZeo)
{
    if (!core)
        return {};
    return elementsOf(core->signals,
                      cutPlainSamples(sections, plainGeometry(*core, deviceModel, isZeo)));
}

} // namespace KEO
