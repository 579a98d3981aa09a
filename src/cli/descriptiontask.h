#pragma once

#include "captureoptions.h"
#include "resultoutput.h"

namespace KEO {

/// --diff: tells what differs between two core descriptions, a line for each change.
TaskResult diffDescriptions(const CaptureOptions &options, ResultOutput &output);

} // namespace KEO
