#include "poweroftwo.h"

#include <bit>

namespace KEO {

qint64 roundUpToPowerOfTwo(int n)
{
    return n <= 0 ? 0 : qint64(std::bit_ceil(quint32(n)));
}

} // namespace KEO
