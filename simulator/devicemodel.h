#pragma once

#include "coremodel.h"

#include <memory>
#include <vector>

namespace Sim {

/// The analyzer side of one programmed device: its cores, of which a core select word picks the
/// one that all following words are for.
class DeviceModel final
{
public:
    explicit DeviceModel(CoreModel::Report report) : m_report(std::move(report)) {}

    void addCore(std::unique_ptr<CoreModel> core) { m_cores.push_back(std::move(core)); }
    [[nodiscard]] const std::vector<std::unique_ptr<CoreModel>> &cores() const { return m_cores; }

    void shiftIn(const QBitArray &bits);
    /// Shifts out of the selected core; nothing when none is selected.
    QBitArray shiftOut(qsizetype size);

    [[nodiscard]] bool isArmed() const;
    /// Lets as many samples pass in every core that is armed.
    void advance(qint64 samples);

private:
    void select(int index);

    CoreModel::Report m_report;
    std::vector<std::unique_ptr<CoreModel>> m_cores;
    CoreModel *m_selected = nullptr; // borrowed from m_cores
};

} // namespace Sim
