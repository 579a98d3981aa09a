#pragma once

namespace WaveMonitor {

class RulerView;
class SignalTreeModel;
class SignalTreeView;
class WaveView;

/// The panes of one viewer and the model behind them, for the parts that work across them. All are
/// borrowed and outlive those.
struct ViewerPanes
{
    SignalTreeModel *model;
    SignalTreeView *tree;
    WaveView *waves;
    RulerView *ruler;
};

} // namespace WaveMonitor
