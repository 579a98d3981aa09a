#pragma once

#include "captureoptions.h"

#include <base/result.h>
#include <design/design.h>

#include <memory>
#include <optional>

namespace KEO {

class ProgressReport;

/// The design that the description of \a options is for, still without cores.
[[nodiscard]] std::unique_ptr<Design> makeDesign(const CaptureOptions &options);
/// Loads the description and sets the cores as the options ask.
[[nodiscard]] std::optional<Error> setUp(Design &design, const CaptureOptions &options);
/// Warns in \a report if the samples of a run may be shifted for lack of the right device.
void warnOfDevice(const Design &design, const CaptureOptions &options, ProgressReport &report);

} // namespace KEO
