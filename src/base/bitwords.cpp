#include "bitwords.h"

namespace KEO {

void transposeBits(BitSquare &square)
{
    // Swap the off-diagonal quarters of squares of 64, 32, ... 2 bits.
    quint64 mask = 0x00000000FFFFFFFFU;
    for (size_t half = 32; half != 0; half >>= 1, mask ^= mask << half) {
        for (size_t r = 0; r < square.size(); r = (r + half + 1) & ~half) {
            const quint64 swapped = (square[r] >> half ^ square[r + half]) & mask;
            square[r] ^= swapped << half;
            square[r + half] ^= swapped;
        }
    }
}

} // namespace KEO
