#pragma once

#include <export/exportfiles.h>

namespace KEO {

struct CoreConfig;
struct LiteCoreConfig;

/// What an export tells of a standard core.
[[nodiscard]] ExportCore exportCore(const CoreConfig &core);
/// The same of a lite core, whose trigger is its first sample.
[[nodiscard]] ExportCore exportCore(const LiteCoreConfig &core);

} // namespace KEO
