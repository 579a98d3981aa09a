#pragma once

#include <QString>

namespace KEO {

/// A script that makes bash complete the options of the capture program and what they take: files
/// by their ending, folders, the names of formats. All from the table that the program itself reads
/// its command line by.
[[nodiscard]] QString bashCompletion();

} // namespace KEO
