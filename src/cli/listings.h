#pragma once

#include "captureoptions.h"
#include "resultoutput.h"

namespace KEO {

/// --list-cables: starts or reaches every server, and tells which cables answer.
TaskResult listCables(const CaptureOptions &options, ResultOutput &output);
/// --list-recovery: the captures of the recovery store by the names that --open takes.
TaskResult listRecovery(ResultOutput &output);

} // namespace KEO
