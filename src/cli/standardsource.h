#pragma once

#include "capturesource.h"

#include <capture/standarddatamanager.h>

namespace KEO {

/// Captures on standard cores: those asked for, all their windows.
class StandardSource final : public CaptureSource
{
    Q_OBJECT

public:
    StandardSource();

    CaptureManager &manager() override { return m_manager; }
    std::optional<Error> prepare(const CaptureOptions &options) override;
    [[nodiscard]] int windowCount() const override;
    void start() override;
    void forceTrigger() override;
    [[nodiscard]] QString waitingFor() const override;
    CapturedWindow take(int core, int window) override;

private:
    std::optional<Error> load(const QString &file);
    std::optional<Error> chooseCores(const CaptureOptions &options);

    KeoStandardDataManager m_manager;
    QList<int> m_positions; // of the chosen cores
};

} // namespace KEO
