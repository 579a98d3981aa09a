#include "descriptionfile.h"

namespace KEO {

Q_LOGGING_CATEGORY(lcConfig, "keo.config")

} // namespace KEO
