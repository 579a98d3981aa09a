#pragma once

#include "captureoptions.h"

#include <base/result.h>
#include <export/exportfiles.h>

#include <QStringList>

namespace WaveMonitor {
class WindowContents;
}

namespace KEO {

/// Where one captured window belongs.
struct CaptureLabel
{
    int core = 0; ///< as the data manager counts
    int window = 0;
    int round = 0; ///< 1 and up in an Auto run, else 0
    ExportMode mode = ExportMode::Standard;
};

/// Makes the export folder if it is missing and checks that files can be made in it.
Result<QString> prepareDirectory(const QString &path);

/// Path of an export: `<directory>/<base>[_<round>]_core<core>_window<window>.<format>`. A lite
/// core has one window, so its files carry no core and window; but its PRN does.
QString exportPath(const CaptureOptions &options, const CaptureLabel &label, ExportFormat format);

/// Path of a picture: the one asked for if it is the \a only one, else with the parts of a VCD
/// export's name before its extension.
QString picturePath(const CaptureOptions &options, const CaptureLabel &label, bool only);

/// How the options want a window in \a format.
[[nodiscard]] ExportSettings exportSettings(const CaptureOptions &options, ExportFormat format);

/// Writes one window in each format asked for and returns the paths; stops at the first file that
/// cannot be written. An existing file is overwritten.
Result<QStringList> writeCapture(const CaptureOptions &options, const CaptureLabel &label,
                                 const ExportCore &core,
                                 const WaveMonitor::WindowContents &contents);

} // namespace KEO
