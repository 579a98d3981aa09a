#include "capturesource.h"

#include "litesource.h"
#include "standardsource.h"

#include <config/descriptionkind.h>
#include <design/capturedisplay.h>

namespace KEO {

WaveMonitor::WindowContents CapturedWindow::contents() const
{
    WaveMonitor::WindowContents contents;
    fillWindow(contents, rows, core.triggerSample, elements);
    return contents;
}

std::unique_ptr<CaptureSource> CaptureSource::forOptions(const CaptureOptions &options)
{
    if (options.task == CaptureOptions::Task::Capture &&
        descriptionKind(options.file) == DescriptionKind::Lite)
        return std::make_unique<LiteSource>();
    return std::make_unique<StandardSource>();
}

} // namespace KEO
