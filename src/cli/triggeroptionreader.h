#pragma once

#include <base/result.h>
#include <design/triggeroptions.h>

#include <QList>

class QCommandLineParser;

namespace KEO {

/// The options that count for the core that the last --core before them names, or for the first
/// core if there is no --core at all: --set, --expression, --windows, --amount, --position. \a
/// parser has parsed the command line. One entry for each core that such an option is given for.
Result<QList<TriggerOptions>> readTriggerOptions(const QCommandLineParser &parser);

} // namespace KEO
