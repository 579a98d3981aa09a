#include "designsetup.h"

#include "progressreport.h"

#include <link/jtagsession.h>

#include <QCoreApplication>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DesignSetup)
};

} // namespace

std::unique_ptr<Design> makeDesign(const CaptureOptions &options)
{
    return Design::make(descriptionKind(options.file), *JtagSession::instance());
}

std::optional<Error> setUp(Design &design, const CaptureOptions &options)
{
    if (options.delay && !design.traits().hasDelay)
        return Error{Error::Usage,
                     Text::tr("--delay goes with a lite core; these wait for a trigger.")};
    if (const Result<QString> id = design.load(options.file); !id)
        return id.error();
    if (descriptionKind(options.file) == DescriptionKind::Unknown)
        return Error{Error::Format,
                     Text::tr("%1 can not be used: its mode is neither Standard nor Lite.")
                         .arg(options.file)};
    design.manager().setDeviceName(options.device);
    design.setDelay(options.delay.value_or(0));
    if (const std::optional<Error> error = design.apply(options.triggers))
        return error;
    if (const std::optional<Error> error = design.choose(options.cores))
        return error;
    if (options.autoRounds && !design.canAuto())
        return Error{Error::Usage, Text::tr("--auto takes one core with one window.")};
    return {};
}

void warnOfDevice(const Design &design, const CaptureOptions &options, ProgressReport &report)
{
    const QString doubt = design.deviceDoubt(design.deviceOfRun(options.device));
    if (!doubt.isEmpty())
        report.warn(Text::tr("%1 --device names it.").arg(doubt));
}

} // namespace KEO
