#pragma once

#include "design.h"

#include <capture/standarddatamanager.h>

namespace KEO {

/// Standard cores. Those whose `active` is not 0 run, all their windows, each on its trigger.
class StandardDesign final : public Design
{
    Q_OBJECT

public:
    explicit StandardDesign(JtagSession &session);

    [[nodiscard]] KeoStandardDataManager &manager() override { return m_manager; }
    [[nodiscard]] const CoreList &cores() const { return m_manager.cores(); }

    [[nodiscard]] QByteArray descriptionText() const override;
    /// Stops a run and lets the cores go.
    void leave() override;
    [[nodiscard]] std::optional<Error> choose(const QList<int> &cores) override;
    [[nodiscard]] std::optional<Error> apply(const QList<TriggerOptions> &options) override;
    [[nodiscard]] CoreSetup setup() const override;
    SettingsCarry carry(const CoreSetup &before) override;
    [[nodiscard]] Result<RunSettings> runSettings(const QString &deviceModel) const override;
    [[nodiscard]] QString deviceOfRun(const QString &deviceModel) const override;
    [[nodiscard]] bool goesByTarget() const override { return false; }
    [[nodiscard]] bool canStart() const override;
    /// An Auto run reads one window of one core.
    [[nodiscard]] bool canAuto() const override;
    [[nodiscard]] int windowCount() const override;
    void start() override;
    [[nodiscard]] QList<QBitArray> startWords() const override;
    [[nodiscard]] QList<CoreFinding> findings() const override;
    [[nodiscard]] std::optional<Rehearsal>
    rehearse(int core, const WaveMonitor::WindowContents &contents) override;
    void forceTrigger() override;
    [[nodiscard]] QString waitingFor() const override;
    [[nodiscard]] std::optional<CapturedWindow> take(int core, int window,
                                                     const QString &deviceModel) override;
    [[nodiscard]] const CoreConfig *triggerCore(int core) const override;
    [[nodiscard]] CoreConfig *triggerCore(int core) override;
    [[nodiscard]] ExportCore exportCore(int core) const override;
    void keepNames(int core, const QMap<int, SignalNames> &names) override;

protected:
    bool loadCores(const QString &path, QString &id, QString &reason) override;
    [[nodiscard]] bool fits(const LoadedWindows &windows, TriggerPosition position) const override;
    [[nodiscard]] std::optional<WindowPlace> placeOf(const LoadedWindow &window) const override;
    [[nodiscard]] bool dependsOnDevice() const override;

private:
    [[nodiscard]] QList<int> chosenPositions() const;

    KeoStandardDataManager m_manager;
};

} // namespace KEO
