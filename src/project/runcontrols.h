#pragma once

#include <QList>

namespace KEO {

struct CoreConfig;

/// What the user may do in a project depends on this and nothing else.
struct RunSituation
{
    bool busy = false;             ///< a run is going on
    bool canStart = false;         ///< the design is ready for a single run
    bool canAuto = false;          ///< the design is ready for an Auto run
    int autorun = -1;              ///< finished rounds of an Auto run, -1 outside of one
    bool hasWaves = false;         ///< at least one capture window shows
    bool needsProgramming = false; ///< the programmer is in use and the bitstream not in the device
};

/// Which controls are enabled.
struct RunControls
{
    bool open = false;
    bool start = false;
    bool autoRun = false;
    bool stop = false;
    bool forceTrigger = false;
    bool save = false; ///< and export
    bool settings = false;

    bool operator==(const RunControls &other) const = default;
};

[[nodiscard]] RunControls runControls(const RunSituation &situation);

/// May an Auto run take the cores that are selected? It reads one window of one core.
[[nodiscard]] bool suitsAuto(const QList<CoreConfig *> &selected);

} // namespace KEO
