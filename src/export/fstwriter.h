#pragma once

#include "plainvcdwriter.h"

#include <optional>

namespace KEO {

/// Why there can be no FST file on this computer, a sentence for people; nothing if there can be.
[[nodiscard]] std::optional<QString> fstObstacle();

/// Writes what writePlainVcd does in GTKWave's own binary format, by way of a file in the folder
/// for temporary files and of GTKWave's converter, which gets half a minute and a second for each
/// megabyte. Nothing on success, else the reason, in words for people.
[[nodiscard]] std::optional<QString> writeFst(QIODevice &out, const PlainVcdHead &head,
                                              const ExportWindow &window);

} // namespace KEO
