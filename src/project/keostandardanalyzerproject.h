#pragma once

#include "captureproject.h"

#include <memory>

class QDockWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace KEO {

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

    [[nodiscard]] bool isBusy() const override;
    /// Takes ".keo" and ".zeo" descriptions and ".analyzer_prj" project files. False during a
    /// capture, for any other extension (letter case counts), and after an error in the
    /// description, which it has then shown. Without usable samples a project opens all the same.
    bool openFile(const QString &path) override;

public Q_SLOTS:
    void onStop() override;
    void onForceTrigger() override;
    /// \a coreIdx is CoreConfig::index.
    void drawSignalView(int coreIdx, int winIdx);
    void onWindowNumChanged();
    /// Shows the core of \a item on the trigger page and takes it into or out of the run.
    void onKoChanged(QTreeWidgetItem *item);

protected:
    QWidget *buildPage() override;
    [[nodiscard]] QString pageTitle() const override;
    void resetPage() override;
    void setPageEnabled(bool enabled) override;
    [[nodiscard]] bool canStart() const override;
    [[nodiscard]] bool canAuto() const override;
    [[nodiscard]] int autorun() const override;
    void setAutorun(int rounds) override;
    void setDeviceName(const QString &name) override;
    void openDevice(const QVariantList &chain) override;
    void startRun() override;
    void keepNames(const WaveMonitor::WaveMonitorWidget &wave) override;
    void leaveDesign() override;
    [[nodiscard]] QString unknownErrorText(int resultID) const override;
    [[nodiscard]] ExportMode exportMode() const override { return ExportMode::Standard; }
    [[nodiscard]] QList<ExportCore>
    exportCores(const QList<WaveMonitor::WaveMonitorWidget *> &monitors) const override;
    [[nodiscard]] bool saveDescription(const QString &path) override;
    [[nodiscard]] WindowToSave numbersOf(const WaveMonitor::WaveMonitorWidget &wave,
                                         int position) const override;
    [[nodiscard]] bool fitsDesign(const LoadedWindows &windows) const override;
    [[nodiscard]] std::optional<SavedTab> tabOf(const LoadedWindow &window) const override;

private:
    bool openKeoFile(const QString &path);
    bool openProjectFile(const QString &path);
    /// Loads the description; the page shows the old one on when that fails.
    bool loadCores(const QString &path);
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
