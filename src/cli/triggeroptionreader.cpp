#include "triggeroptionreader.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QHash>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::CaptureOptions)
};

using Read = std::optional<Error> (*)(TriggerOptions &options, const QString &value);

template <auto member>
std::optional<Error> appendText(TriggerOptions &options, const QString &value)
{
    (options.*member).append(value);
    return {};
}

template <auto member>
std::optional<Error> readNumber(TriggerOptions &options, const QString &value)
{
    bool ok = false;
    options.*member = value.toInt(&ok);
    if (ok)
        return {};
    return Error{Error::Usage, Text::tr("\"%1\" is no number.").arg(value)};
}

const QHash<QString, Read> &readers()
{
    using O = TriggerOptions;
    static const QHash<QString, Read> table{
        {QStringLiteral("set"), appendText<&O::units>},
        {QStringLiteral("expression"), appendText<&O::expressions>},
        {QStringLiteral("windows"), readNumber<&O::windows>},
        {QStringLiteral("amount"), readNumber<&O::amount>},
        {QStringLiteral("position"), readNumber<&O::position>},
    };
    return table;
}

TriggerOptions &entryOf(std::optional<int> core, QList<TriggerOptions> &all)
{
    const auto found = std::ranges::find(all, core, &TriggerOptions::core);
    if (found != all.end())
        return *found;
    all.append({.core = core});
    return all.last();
}

} // namespace

Result<QList<TriggerOptions>> readTriggerOptions(const QCommandLineParser &parser)
{
    const QString coreOption = QStringLiteral("core");
    QList<TriggerOptions> all;
    std::optional<int> core;
    QHash<QString, int> seen; // how often each option has come so far
    for (const QString &name : parser.optionNames()) {
        const Read read = readers().value(name);
        if (name != coreOption && !read)
            continue;
        const QString value = parser.values(name).value(seen[name]++);
        if (name == coreOption) {
            core = value.toInt();
            continue;
        }
        if (!core && parser.isSet(coreOption))
            return Error{Error::Usage,
                         Text::tr("--%1 stands before the --core that it is for.").arg(name)};
        if (const auto error = read(entryOf(core, all), value))
            return Error{Error::Usage, Text::tr("--%1: %2").arg(name, error->message)};
    }
    return all;
}

} // namespace KEO
