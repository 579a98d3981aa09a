#pragma once

#include "captureproject.h"

class QTreeWidgetItem;

namespace KEO {

/// A design with standard analyzer cores in the main window: the tree of cores, the trigger page,
/// the runs, and a wave tab for each captured core and window.
class KeoStandardAnalyzerProject final : public CaptureProject
{
    Q_OBJECT

public:
    explicit KeoStandardAnalyzerProject(QObject *parent = nullptr);

public Q_SLOTS:
    /// \a coreIdx is CoreConfig::index.
    void drawSignalView(int coreIdx, int winIdx);
    void onWindowNumChanged();
    /// Shows the core of \a item on the trigger page and takes it into or out of the run.
    void onKoChanged(QTreeWidgetItem *item);
};

} // namespace KEO
