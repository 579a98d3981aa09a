#include "capturelog.h"

Q_LOGGING_CATEGORY(keoCapture, "keo.capture", QtInfoMsg)
