#pragma once

#include <QLoggingCategory>

namespace KEO {

/// The reasons behind what the link passes over in silence. Its debug messages are off unless the
/// rule `keo.link.debug=true` asks for them.
Q_DECLARE_LOGGING_CATEGORY(lcLink)

} // namespace KEO
