#pragma once

#include <QLoggingCategory>

namespace KEO {

/// Debug log of the programmer; silent unless the category is enabled.
Q_DECLARE_LOGGING_CATEGORY(keoProgrammer)

} // namespace KEO
