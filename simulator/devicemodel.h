#pragma once

#include "coremodel.h"
#include "litecoremodel.h"

#include <memory>
#include <vector>

namespace Sim {

/// The analyzer side of one programmed device: its cores, of which a core select word picks the
/// one that all following words are for. A lite core stands alone in its device and gets all words.
class DeviceModel final
{
public:
    explicit DeviceModel(Core::Report report) : m_report(std::move(report)) {}

    void addCore(std::unique_ptr<CoreModel> core) { m_cores.push_back(std::move(core)); }
    void setLiteCore(std::unique_ptr<LiteCoreModel> core) { m_lite = std::move(core); }
    [[nodiscard]] const std::vector<std::unique_ptr<CoreModel>> &cores() const { return m_cores; }
    /// Null when the device has standard cores.
    [[nodiscard]] const LiteCoreModel *liteCore() const { return m_lite.get(); }

    void shiftIn(const QBitArray &bits);
    /// Shifts out of the selected core; nothing when none is selected.
    QBitArray shiftOut(qsizetype size);

    [[nodiscard]] bool isArmed() const;
    /// Lets as many samples pass in every core that is armed.
    void advance(qint64 samples);

private:
    void select(int index);
    /// The core that words are for, or null.
    [[nodiscard]] Core *addressed() const;

    Core::Report m_report;
    std::vector<std::unique_ptr<CoreModel>> m_cores;
    std::unique_ptr<LiteCoreModel> m_lite;
    CoreModel *m_selected = nullptr; // borrowed from m_cores
};

} // namespace Sim
