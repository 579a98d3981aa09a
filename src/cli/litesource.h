#pragma once

#include "capturesource.h"

#include <capture/litedatamanager.h>

namespace KEO {

/// Captures on the lite core of a design, after the delay that was asked for.
class LiteSource final : public CaptureSource
{
    Q_OBJECT

public:
    LiteSource();

    CaptureManager &manager() override { return m_manager; }
    std::optional<Error> prepare(const CaptureOptions &options) override;
    [[nodiscard]] int windowCount() const override { return 1; }
    void start() override;
    /// Cuts the delay short.
    void forceTrigger() override;
    [[nodiscard]] QString waitingFor() const override;
    CapturedWindow take(int core, int window) override;

private:
    KeoLiteDataManager m_manager;
    int m_delay = 0; // ms
};

} // namespace KEO
