#include "startupoptions.h"

namespace KEO {

namespace {

/// The field that \a argument gives a value to, or null.
QString *fieldOf(StartupOptions &options, const QString &argument)
{
    if (argument == QLatin1String("-keo"))
        return &options.keoFile;
    if (argument == QLatin1String("-dir"))
        return &options.startDir;
    if (argument == QLatin1String("-family"))
        return &options.family;
    if (argument == QLatin1String("-device"))
        return &options.device;
    if (argument == QLatin1String("-fs"))
        return &options.fsFile;
    if (argument == QLatin1String("-open"))
        return &options.openFile;
    if (argument == QLatin1String("-transcript"))
        return &options.transcript;
    return nullptr;
}

void readPace(StartupOptions &options, const QString &text)
{
    bool isNumber = false;
    const int pause = text.toInt(&isNumber);
    if (isNumber && pause >= 0 && pause <= CapturePace::kMaxSectionPause)
        options.sectionPause = pause;
}

} // namespace

StartupOptions parseStartupOptions(const QStringList &arguments)
{
    StartupOptions options;
    for (qsizetype i = 1; i + 1 < arguments.size(); ++i) {
        if (QString *field = fieldOf(options, arguments.at(i)))
            *field = arguments.at(i + 1);
        else if (arguments.at(i) == QLatin1String("-pace"))
            readPace(options, arguments.at(i + 1));
    }
    return options;
}

bool wantsDebugMessages(const QStringList &arguments)
{
    return arguments.contains(QLatin1String("-debug"));
}

} // namespace KEO
