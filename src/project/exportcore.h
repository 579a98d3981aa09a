#pragma once

#include <export/exportfiles.h>

namespace KEO {

struct CoreConfig;

/// What an export tells of a standard core.
[[nodiscard]] ExportCore exportCore(const CoreConfig &core);

} // namespace KEO
