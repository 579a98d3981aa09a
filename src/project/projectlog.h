#pragma once

#include <QLoggingCategory>

namespace KEO {

/// Debug log of the projects; silent unless the category is enabled.
Q_DECLARE_LOGGING_CATEGORY(keoProject)

} // namespace KEO
