#pragma once

#include <QString>

namespace KEO {

/// The program's version, "0.1.0", and behind it the commit that it was built from, if the build
/// could tell: "0.1.0 (61bd734)", "0.1.0 (61bd734, changed)" when the sources were not that
/// commit's.
[[nodiscard]] QString versionText();

} // namespace KEO
