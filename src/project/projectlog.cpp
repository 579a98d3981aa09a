#include "projectlog.h"

namespace KEO {

Q_LOGGING_CATEGORY(keoProject, "keo.project")

} // namespace KEO
