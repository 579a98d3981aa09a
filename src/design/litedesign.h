#pragma once

#include "design.h"

#include <capture/litedatamanager.h>

namespace KEO {

/// A lite core, which captures one window after a delay; Force Trigger cuts the delay short.
class LiteDesign final : public Design
{
    Q_OBJECT

public:
    explicit LiteDesign(JtagSession &session);

    [[nodiscard]] KeoLiteDataManager &manager() override { return m_manager; }

    [[nodiscard]] QByteArray descriptionText() const override;
    /// A run is not stopped and the core not let go. Only the end of the program leaves during a
    /// run; it drops the connections right after, and with them whatever a stop would have sent. A
    /// core that is not in use costs nothing, and the next file replaces it.
    void leave() override {}
    [[nodiscard]] std::optional<Error> choose(const QList<int> &cores) override;
    [[nodiscard]] std::optional<Error> apply(const QList<TriggerOptions> &options) override;
    [[nodiscard]] CoreSetup setup() const override;
    SettingsCarry carry(const CoreSetup &before) override;
    [[nodiscard]] Result<RunSettings> runSettings(const QString &deviceModel) const override;
    [[nodiscard]] QString deviceOfRun(const QString &deviceModel) const override;
    [[nodiscard]] bool goesByTarget() const override { return true; }
    [[nodiscard]] bool canStart() const override { return m_manager.core() != nullptr; }
    [[nodiscard]] bool canAuto() const override { return canStart(); }
    [[nodiscard]] int windowCount() const override { return 1; }
    void start() override;
    [[nodiscard]] QList<QBitArray> startWords() const override;
    void forceTrigger() override;
    [[nodiscard]] QString waitingFor() const override;
    [[nodiscard]] std::optional<CapturedWindow> take(int core, int window,
                                                     const QString &deviceModel) override;
    [[nodiscard]] ExportCore exportCore(int core) const override;
    void keepNames(int core, const QMap<int, SignalNames> &names) override;

protected:
    bool loadCores(const QString &path, QString &id, QString &reason) override;
    [[nodiscard]] bool fits(const LoadedWindows &windows, TriggerPosition position) const override;
    [[nodiscard]] std::optional<WindowPlace> placeOf(const LoadedWindow &window) const override;
    [[nodiscard]] bool dependsOnDevice() const override;

private:
    KeoLiteDataManager m_manager;
};

} // namespace KEO
