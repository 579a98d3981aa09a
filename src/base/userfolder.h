#pragma once

#include <QString>

namespace KEO {

/// Where both programs keep what they remember for the user from one start to the next. Need not
/// exist yet. On Unix it moves with the variable `XDG_DATA_HOME`.
[[nodiscard]] QString userDataFolder();

} // namespace KEO
