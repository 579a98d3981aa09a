#pragma once

#include "captureoptions.h"
#include "exitstatus.h"
#include "windowexport.h"

namespace KEO {

/// Does what the command line asks for. Results go to standard output, as lines while they come or
/// all together as one JSON document; progress and errors go to standard error. \a drawPicture is
/// needed when the options ask for a picture.
[[nodiscard]] ExitStatus runCaptureProgram(const CaptureOptions &options,
                                           const PictureWriter &drawPicture);

/// Tells that a command line is refused, in a JSON document as well where it asks for one.
[[nodiscard]] ExitStatus refuseArguments(const Error &error, const QStringList &arguments);

} // namespace KEO
