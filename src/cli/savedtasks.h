#pragma once

#include "captureoptions.h"
#include "resultoutput.h"

namespace KEO {

class WindowExport;

/// --open: exports the windows of a saved project.
TaskResult exportSaved(const CaptureOptions &options, WindowExport &windows);
/// --compare: tells what differs in the samples of two saved projects.
TaskResult compareSaved(const CaptureOptions &options, ResultOutput &output);
/// --rehearse: tells where a trigger would come in the windows of a saved project.
TaskResult rehearseSaved(const CaptureOptions &options, ResultOutput &output);

} // namespace KEO
