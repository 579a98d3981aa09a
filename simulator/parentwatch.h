#pragma once

namespace Sim {

/// Ends the application's event loop when standard input ends: whoever started the server is gone
/// then, however it went. Call once, from main, when the application object exists.
void quitWhenInputEnds();

} // namespace Sim
