#pragma once

#include <QString>

namespace KEO {

/// \a text for a tool tip that shows it letter by letter. The toolkit takes a tip that looks like
/// markup for markup, and a name from a file must not load pictures.
[[nodiscard]] QString plainTip(const QString &text);

} // namespace KEO
