#pragma once

#include <QtGlobal>

namespace KEO {

/// The lowest power of two that is not below \a n; 0 for 0 and below. Capture windows share the
/// memory as if there were that many of them.
qint64 roundUpToPowerOfTwo(int n);

} // namespace KEO
