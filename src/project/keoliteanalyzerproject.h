#pragma once

#include "captureproject.h"

#include <memory>

namespace KEO {

class KeoLiteDataManager;
class KeoLiteTriggerOptionWidget;

/// A design with one lite analyzer core in the main window: the form that says when a capture
/// begins, the runs, and one wave tab. Owns the data manager and with it the core record.
class KeoLiteAnalyzerProject final : public CaptureProject
{
    Q_OBJECT

public:
    explicit KeoLiteAnalyzerProject(QObject *parent = nullptr);
    ~KeoLiteAnalyzerProject() override;

public Q_SLOTS:
    void drawSignalView();

protected:
    [[nodiscard]] CaptureManager &manager() const override;
    QWidget *buildPage() override;
    [[nodiscard]] QString pageTitle() const override;
    void resetPage() override;
    /// The form may be used at any time.
    void setPageEnabled(bool) override {}
    [[nodiscard]] bool canStart() const override;
    [[nodiscard]] bool canAuto() const override { return canStart(); }
    void startRun() override;
    void forceTrigger() override;
    [[nodiscard]] QString stoppedText() const override;
    [[nodiscard]] QString forcedText() const override;
    void keepNames(int core, const QMap<int, SignalNames> &names) override;
    void leaveDesign() override;
    [[nodiscard]] QString unknownErrorText(int resultID) const override;
    [[nodiscard]] ExportMode exportMode() const override { return ExportMode::Lite; }
    [[nodiscard]] QList<ExportCore>
    exportCores(const QList<WaveMonitor::WaveMonitorWidget *> &monitors) const override;
    [[nodiscard]] bool loadDesign(const QString &path, QString &id) override;
    [[nodiscard]] QString invalidSessionText() const override;
    /// There is nothing to set in a lite session but its waves.
    [[nodiscard]] bool needsWaves() const override { return true; }
    [[nodiscard]] SaveTargets saveTargets(const QString &projectFile,
                                          const QString &dataFile) const override;
    [[nodiscard]] bool saveDescription(const QString &path) override;
    [[nodiscard]] WindowToSave numbersOf(const WaveMonitor::WaveMonitorWidget &wave,
                                         int position) const override;
    [[nodiscard]] bool fitsDesign(const LoadedWindows &windows) const override;
    [[nodiscard]] std::optional<SavedTab> tabOf(const LoadedWindow &window) const override;

private:
    std::unique_ptr<KeoLiteDataManager> m_dataManager;
    QPointer<KeoLiteTriggerOptionWidget> m_triggerOptionForm; // part of the page
};

} // namespace KEO
