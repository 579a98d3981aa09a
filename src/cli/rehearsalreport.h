#pragma once

#include <capture/diagnosistext.h>
#include <design/rehearsal.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QStringList>

namespace KEO {

/// What the trigger of a core makes of one window, told to a person or to a script. A hit is a
/// sample at which the core would trigger if it had been armed long enough before.
class RehearsalReport final
{
public:
    /// \a triggerSample is where the window was triggered; \a why tells what was missing for a hit.
    RehearsalReport(int core, int window, int triggerSample, Rehearsal rehearsal,
                    QList<DiagnosisLine> why);

    [[nodiscard]] bool hasHit() const;

    /// One line on the window, followed by indented ones: one for each run of hits and of samples
    /// of which nothing is known, each unit and each expression, and without a hit, why.
    [[nodiscard]] QStringList lines() const;
    /// `core`, `window`, `trigger_position`, `samples`, `hits` and `unknown` (samples), `hit_runs`
    /// and `unknown_runs` (objects of `first`, `last`, `from_trigger`), `any_input`, and a list
    /// each of `units` (`unit`, `matches`, `reports`, `unknown`) and `expressions` (`expression`,
    /// `hits`, `unknown`). `matches` are before the counter, all else behind it. Without a hit also
    /// `why`, a list of `text`, which names the sample `sample` if that is there.
    [[nodiscard]] QJsonObject json() const;

private:
    [[nodiscard]] std::vector<quint64> unknownIn(const ConditionTrack &track) const;
    [[nodiscard]] QString runText(const SampleRun &run) const;
    [[nodiscard]] QJsonArray jsonOf(const std::vector<SampleRun> &runs) const;

    int m_core;
    int m_window;
    qsizetype m_triggerSample;
    Rehearsal m_rehearsal;
    QList<DiagnosisLine> m_why; ///< empty with a hit
};

} // namespace KEO
