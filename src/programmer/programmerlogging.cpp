#include "programmerlogging.h"

namespace KEO {

Q_LOGGING_CATEGORY(keoProgrammer, "keo.programmer", QtInfoMsg)

} // namespace KEO
