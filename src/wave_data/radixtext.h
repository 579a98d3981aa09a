#pragma once

#include "dataformat.h"

namespace WaveMonitor {

/// Bytes that radixText may write for a value of \a bits bits, whatever the type.
constexpr qsizetype radixTextCapacity(qsizetype bits)
{
    return bits + 4; // binary is the longest; "null" and a sign besides
}

/// Writes the text of a value of \a bits bits, as told at DataFormat::toText, to \a out and returns
/// its length; no terminator. The value stands in (bits + 63) / 64 words, least significant word
/// first, and the unused high bits of the last word are 0. For callers that hold many values in
/// packed form; all others call DataFormat::toText.
qsizetype radixText(DataFormat::Type type, const quint64 *words, qsizetype bits, char *out);

} // namespace WaveMonitor
