#pragma once

#include "bits.h"
#include "core.h"
#include "description.h"
#include "matchunit.h"

#include <QBitArray>
#include <QMap>

#include <array>
#include <optional>
#include <vector>

namespace Sim {

/// What the nets of one core do, sample by sample: tables of the same number of rows, at least one.
/// After the last sample the first follows.
struct CoreStimulus
{
    BitMatrix captured;                  ///< columns in the order of a captured row
    std::array<BitMatrix, kPorts> ports; ///< columns from the most significant bit
};

/// One standard core.
///
/// Registers, each registerWidth() bits wide, values right-aligned:
///
///     0x0000              start: 1 arms, 3 arms and forces, 0 disarms; reads 0 when idle
///     0x0020              expressions in force, minus 1
///     0x0021              capture amount of a window, minus 1
///     0x0022              rows that follow the marker
///     0x0023              windows, minus 1
///     0x0100 + 16 * unit  compare; then mask, edge, control, counter load
///     0xab00 + 16 * e     clears the entry of truth table e whose input number is written
///     0xab01 + 16 * e     sets it
///
/// Settings count from the next arming on; truth tables keep their content between runs.
class CoreModel final : public Core
{
public:
    /// \a extraRow: the core writes one row more after the marker than its register says.
    CoreModel(CoreDescription description, CoreStimulus stimulus, bool extraRow, Report report);

    [[nodiscard]] const CoreDescription &description() const { return m_description; }
    [[nodiscard]] int registerWidth() const { return m_width; }
    [[nodiscard]] qint64 stimulusSamples() const { return m_stimulus.captured.rows(); }

    void shiftIn(const ShiftWord &word) override;
    QBitArray shiftOut(qsizetype size) override;

    /// The value of a register, or nothing when there is none to read at that address.
    [[nodiscard]] std::optional<QBitArray> readRegister(quint16 address) const;
    /// A block as it leaves the core: 32 leading bits, \a rows rows from the highest address down,
    /// each right-aligned in the register width with its marker in front, and one trailing bit.
    [[nodiscard]] QBitArray readBlock(quint16 address, int rows) const;

    [[nodiscard]] bool isArmed() const override { return m_armed; }
    void advance(qint64 samples) override;

private:
    struct StoredRow
    {
        qint64 sample = -1; ///< row of the stimulus; -1: never written
        bool marker = false;
    };

    /// Settings of a run, taken from the registers when the core is armed.
    struct Run
    {
        qint64 amount = 1;    ///< rows of the ring
        qint64 position = 0;  ///< rows that must stand before the trigger
        qint64 rowsAfter = 0; ///< rows written after the trigger's
        qint64 windows = 1;
        qint64 stride = 0;            ///< rows from one window to the next
        QBitArray fires;              ///< by input number
        std::vector<MatchUnit> units; ///< those in use
        bool counts = false;          ///< a unit has a counter
    };

    void writeRegister(quint16 address, const QBitArray &value);
    void writeUnitRegister(quint16 address, const QBitArray &value);
    void writeTable(quint16 address, const QBitArray &value);
    void writeStart(const QBitArray &value);
    void arm();
    void disarm();
    [[nodiscard]] Run runFromRegisters() const;
    [[nodiscard]] QBitArray firesFromTables() const;
    [[nodiscard]] quint64 registerNumber(quint16 address) const;

    void startWindow();
    void advanceOneWaiting();
    bool firesAt(qint64 sample);
    quint32 hitsAt(qint64 sample);
    void noteLap();
    void closeWindow();
    void storeRows(qint64 end);
    [[nodiscard]] qint64 sampleBefore(qint64 sample) const;
    [[nodiscard]] std::vector<quint32> counterStates() const;

    CoreDescription m_description;
    CoreStimulus m_stimulus;
    int m_width = 0;
    int m_extraRows = 0;
    Report m_report;

    QList<int> m_inUse;             ///< unit numbers by input bit
    std::vector<MatchUnit> m_units; ///< by input bit, as the registers stand
    QBitArray m_staticFires;        ///< of a static core
    QMap<int, QBitArray> m_tables;  ///< of a dynamic core, by expression
    QMap<quint16, QBitArray> m_registers;
    std::vector<StoredRow> m_memory;

    std::optional<quint16> m_readSelect;
    std::optional<std::pair<quint16, int>> m_blockSelect; ///< address, rows

    Run m_run;
    bool m_armed = false;
    bool m_forced = false; ///< for all windows that are left
    qint64 m_next = 0;     ///< stimulus row of the next sample
    qint64 m_window = 0;
    qint64 m_seen = 0;               ///< samples of this window so far
    std::optional<qint64> m_trigger; ///< its number in this window
    std::vector<quint32> m_hits;     ///< comparisons by stimulus row, found when first needed
    qint64 m_lapLeft = 0;            ///< samples until the counters are compared again
    std::vector<quint32> m_lapCounters;
    bool m_hopeless = false; ///< nothing in the stimulus can fire any more
};

} // namespace Sim
