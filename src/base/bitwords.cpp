#include "bitwords.h"

namespace KEO {

namespace {

/// Swaps the off-diagonal quarters of squares of 2 * \a Half bits. The inner loop has neighbours
/// of which the compiler takes several at once.
template <size_t Half>
void swapQuarters(BitSquare &square)
{
    constexpr quint64 mask = ~quint64(0) / ((quint64(1) << Half) + 1);
    for (size_t first = 0; first < square.size(); first += 2 * Half) {
        for (size_t r = first; r < first + Half; ++r) {
            const quint64 swapped = (square[r] >> Half ^ square[r + Half]) & mask;
            square[r] ^= swapped << Half;
            square[r + Half] ^= swapped;
        }
    }
}

} // namespace

void transposeBits(BitSquare &square)
{
    swapQuarters<32>(square);
    swapQuarters<16>(square);
    swapQuarters<8>(square);
    swapQuarters<4>(square);
    swapQuarters<2>(square);
    swapQuarters<1>(square);
}

} // namespace KEO
