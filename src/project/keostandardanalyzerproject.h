#pragma once

#include "captureproject.h"

#include <memory>

class QDockWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace KEO {

struct CoreConfig;
class DynamicConfigWidget;
class KeoStandardDataManager;

/// A design with standard analyzer cores in the main window: the tree of cores, the trigger page,
/// the runs, and a wave tab for each captured core and window. Owns the data manager and with it
/// the core records.
class KeoStandardAnalyzerProject final : public CaptureProject
{
    Q_OBJECT

public:
    explicit KeoStandardAnalyzerProject(QObject *parent = nullptr);
    ~KeoStandardAnalyzerProject() override;

public Q_SLOTS:
    /// \a coreIdx is CoreConfig::index.
    void drawSignalView(int coreIdx, int winIdx);
    void onWindowNumChanged();
    /// Shows the core of \a item on the trigger page and takes it into or out of the run.
    void onKoChanged(QTreeWidgetItem *item);

protected:
    [[nodiscard]] CaptureManager &manager() const override;
    QWidget *buildPage() override;
    [[nodiscard]] QString pageTitle() const override;
    void resetPage() override;
    void setPageEnabled(bool enabled) override;
    [[nodiscard]] bool canStart() const override;
    [[nodiscard]] bool canAuto() const override;
    void startRun() override;
    void forceTrigger() override;
    [[nodiscard]] QString stoppedText() const override;
    [[nodiscard]] QString forcedText() const override;
    void keepNames(int core, const QMap<int, SignalNames> &names) override;
    void leaveDesign() override;
    [[nodiscard]] QString unknownErrorText(int resultID) const override;
    [[nodiscard]] ExportMode exportMode() const override { return ExportMode::Standard; }
    [[nodiscard]] QList<ExportCore>
    exportCores(const QList<WaveMonitor::WaveMonitorWidget *> &monitors) const override;
    [[nodiscard]] bool loadDesign(const QString &path, QString &id) override;
    [[nodiscard]] QString invalidSessionText() const override;
    /// The trigger settings are worth it.
    [[nodiscard]] bool needsWaves() const override { return false; }
    [[nodiscard]] SaveTargets saveTargets(const QString &projectFile,
                                          const QString &dataFile) const override;
    [[nodiscard]] bool saveDescription(const QString &path) override;
    [[nodiscard]] WindowToSave numbersOf(const WaveMonitor::WaveMonitorWidget &wave,
                                         int position) const override;
    [[nodiscard]] bool fitsDesign(const LoadedWindows &windows) const override;
    [[nodiscard]] std::optional<SavedTab> tabOf(const LoadedWindow &window) const override;

private:
    void updateCoreTree();
    /// Shows the core at that position of the tree; a clear page if there is none.
    void showCore(int position);
    [[nodiscard]] CoreConfig *coreAt(int position) const; ///< null if there is none

    std::unique_ptr<KeoStandardDataManager> m_dataManager;
    // Parts of the page, null until it is built and when its window took it along.
    QPointer<DynamicConfigWidget> m_dynamicConfigWidget;
    QPointer<QDockWidget> m_configDock;
    QPointer<QTreeWidget> m_coreTree;
};

} // namespace KEO
