#pragma once

class QWidget;

namespace KEO {

/// Tells the log category "signalscope.startup" that a part of the start has been done, and how
/// much processor time the program has taken until then: "window made, 61.2 ms of processor time".
/// Off unless QT_LOGGING_RULES asks for it; see benchmarks/shell/startup.py, which reads these.
void markStartup(const char *done);
/// The same once \a window has been painted for the first time.
void markFirstPaint(QWidget &window);

} // namespace KEO
