#include "linklog.h"

namespace KEO {

Q_LOGGING_CATEGORY(lcLink, "keo.link", QtInfoMsg)

} // namespace KEO
