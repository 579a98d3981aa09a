#include "rehearsal.h"

#include <wave_data/windowcontents.h>

namespace KEO {

PortSamples portSamplesOf(const CoreConfig &core, const WaveMonitor::WindowContents &contents)
{
    QStringList names;
    QList<QBitArray> samples;
    for (const WaveMonitor::SignalElement &signal : contents.signalMap()) {
        names.append(signal.name);
        samples.append(signal.data);
    }
    return PortSamples(core, names, samples);
}

Rehearsal rehearse(const CoreConfig &core, const PortSamples &ports)
{
    Rehearsal rehearsal;
    rehearsal.program = triggerProgram(core);
    rehearsal.evaluation = evaluateTrigger(rehearsal.program, ports);
    return rehearsal;
}

QList<DiagnosisLine> whyNoTrigger(const CoreConfig &core, const PortSamples &ports,
                                  const Rehearsal &rehearsal)
{
    const auto &[program, evaluation] = rehearsal;
    return diagnosisLines(core, program, diagnoseTrigger(program, ports, evaluation));
}

} // namespace KEO
