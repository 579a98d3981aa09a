#pragma once

class QIcon;

namespace KEO {

/// The program's icon, in all sizes that a window system asks for.
[[nodiscard]] QIcon programIcon();

} // namespace KEO
