#pragma once

#include <QBitArray>

namespace KEO {

// Words that are shifted into a core: a 5-bit opcode, a 16-bit address, and what belongs to it.
// Addresses are cut to their low 16 bits, as the core does.

/// Selects the core that all following words are for: "1" and the low 4 bits of \a coreIndex.
QBitArray coreSelectWord(int coreIndex);
/// Writes \a data, which has the core's register width, to a register.
QBitArray writeRegisterWord(qint64 address, const QBitArray &data);
/// Selects a register for reading.
QBitArray readRegisterWord(qint64 address);
/// Asks for \a count rows of capture memory from row \a address on.
QBitArray readBlockWord(qint64 address, int count);
/// Clocks \a bits bits out of a block.
QBitArray shiftOutWord(qint64 address, int bits);

} // namespace KEO
