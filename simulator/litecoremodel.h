#pragma once

#include "bits.h"
#include "core.h"
#include "description.h"

#include <optional>
#include <vector>

namespace Sim {

/// A lite core: once started it takes one sample after the other until its memory is full.
///
/// Registers, as wide as a row, values right-aligned:
///
///     0x0000   start: 1 starts a capture, 0 ends it; reads 1 while one goes on, else 0
///     0x0002   capture init: reads 0 while the memory holds the samples that the core took by
///              itself when the device was configured, and nobody has read them to the end; else 1
///
/// A block word has a row of clear bits behind its address. What follows is read from there: rows
/// from the highest address down, without filling, and one trailing bit.
class LiteCoreModel final : public Core
{
public:
    /// Where the first sample of a capture goes.
    enum class FirstSample {
        FirstRow,
        SecondRow ///< the last one comes round to the first row
    };

    /// \a stimulus has at least one row; after the last one the first follows.
    LiteCoreModel(LiteCoreDescription description, BitMatrix stimulus, FirstSample firstSample,
                  Report report);

    [[nodiscard]] const LiteCoreDescription &description() const { return m_description; }
    [[nodiscard]] qint64 stimulusSamples() const { return m_stimulus.rows(); }

    void shiftIn(const ShiftWord &word) override;
    QBitArray shiftOut(qsizetype size) override;
    [[nodiscard]] bool isArmed() const override { return m_armed; }
    void advance(qint64 samples) override;

private:
    void writeRegister(quint16 address, const QBitArray &value);
    void select(const ShiftWord &word);
    void start();
    QBitArray readBlock(quint16 address, qsizetype size);

    LiteCoreDescription m_description;
    BitMatrix m_stimulus;
    int m_width = 0;
    qint64 m_firstRow = 0; ///< of the memory, for the first sample
    Report m_report;

    std::vector<qint64> m_memory; ///< stimulus row by memory row; -1: never written
    qint64 m_next = 0;            ///< stimulus row of the next sample
    qint64 m_taken = 0;           ///< samples of this capture
    bool m_armed = false;
    bool m_holdsInitData = false;
    std::optional<quint16> m_register; ///< selected for reading
    std::optional<quint16> m_block;    ///< address of the block selected for reading
};

} // namespace Sim
