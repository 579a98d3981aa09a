#pragma once

#include <design/savedcapture.h>
#include <wave_data/windowcompare.h>

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QStringList>

namespace KEO {

/// What differs in the samples of two projects, A and B, told to a person or to a script. Windows
/// meet by core and number, their signals and samples as told at WindowComparison.
class ProjectComparison final
{
public:
    /// Of the cores \a cores, or of all if there are none.
    ProjectComparison(const SavedProject &a, const SavedProject &b, const QList<int> &cores);

    /// Neither project has a window of these cores.
    [[nodiscard]] bool isEmpty() const { return m_windows.isEmpty(); }
    /// The same windows with equal samples.
    [[nodiscard]] bool isEqual() const;

    /// One line a window, followed by an indented one for each thing in which the two differ.
    [[nodiscard]] QStringList lines() const;
    /// One object a window: `core`, `window`, `equal` and, if only one project has it, `only_in`
    /// ("a" or "b"). Else `trigger_position` (`a`, `b`), `compared`, `only_in_a`, `only_in_b`
    /// (samples), `signals_only_in_a`, `signals_only_in_b` (names) and `differences`, one object a
    /// signal that differs: `name`, `first` (sample of A), `from_trigger`, `samples`, `places`.
    [[nodiscard]] QJsonArray json() const;

private:
    enum class Found { InBoth, OnlyInA, OnlyInB };
    struct Window
    {
        int core = 0;
        int window = 0;
        Found found = Found::InBoth;
        int triggerInA = 0;
        WaveMonitor::WindowComparison samples;

        [[nodiscard]] bool isEqual() const;
    };

    [[nodiscard]] static QStringList linesOf(const Window &window);
    [[nodiscard]] static QJsonObject jsonOf(const Window &window);

    QList<Window> m_windows;
};

} // namespace KEO
