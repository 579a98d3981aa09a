#pragma once

#include "captureoptions.h"
#include "resultoutput.h"

namespace KEO {

class ProgressReport;

/// --dry-run: what a run would send to the cores, and what the trigger check says of them.
TaskResult previewRun(const CaptureOptions &options, ResultOutput &output, ProgressReport &report);

} // namespace KEO
