#pragma once

#include <QBitArray>
#include <QString>

namespace Sim {

/// One word that was shifted into the device, taken apart. Element 0 of a word is shifted first and
/// all numbers stand most significant bit first:
///
///     core select     1 cccc                         5 bits
///     register write  01001 aaaaaaaaaaaaaaaa data    data as wide as the core's registers
///     read select     01101 aaaaaaaaaaaaaaaa         21 bits
///     block           00111 aaaaaaaaaaaaaaaa tail    tail: the row count in 16 bits
///
/// How wide data and tail must be depends on the core that is selected, so the core checks them.
struct ShiftWord
{
    enum class Kind { CoreSelect, RegisterWrite, ReadSelect, Block, Malformed };

    Kind kind = Kind::Malformed;
    int core = 0;        ///< of a core select
    quint16 address = 0; ///< of all others: register, or row of the capture memory
    QBitArray data;      ///< what follows the address
    QString flaw;        ///< of a malformed word: what is wrong with it
};

ShiftWord parseShiftWord(const QBitArray &word);

/// The word in one line for the log, such as "write 0x0021 = 0x3ff (17 bits)".
QString describe(const ShiftWord &word);

} // namespace Sim
