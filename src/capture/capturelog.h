#pragma once

#include <QLoggingCategory>

/// Why something from outside was dropped or left out without a message to the user.
Q_DECLARE_LOGGING_CATEGORY(keoCapture)
