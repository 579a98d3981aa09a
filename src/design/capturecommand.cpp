#include "capturecommand.h"

#include <QRegularExpression>

namespace KEO {

namespace {

/// Adds --option value; nothing for an empty text.
void add(QStringList &arguments, const char *option, const QString &value)
{
    if (!value.isEmpty())
        arguments << QLatin1String("--") + QLatin1String(option) << value;
}

void add(QStringList &arguments, const char *option, std::optional<int> value)
{
    if (value)
        add(arguments, option, QString::number(*value));
}

QString chainText(const QList<int> &chain)
{
    QStringList codes;
    for (const int code : chain)
        codes.append(QString::number(code));
    return codes.join(u',');
}

/// A setting reads best with its name before the quotes: M0='==RX01'.
QString quoted(const QString &argument)
{
    static const QRegularExpression plain(QStringLiteral("\\A[A-Za-z0-9_@%+:,./-]+\\z"));
    static const QRegularExpression named(QStringLiteral("\\A[A-Za-z0-9_]+="));
    const QString name = named.match(argument).captured();
    QString value = argument.mid(name.size());
    if (!plain.match(value).hasMatch())
        value = u'\'' + value.replace(u'\'', QStringLiteral("'\\''")) + u'\'';
    return name + value;
}

} // namespace

QStringList captureArguments(const RunSettings &settings, const CommandPlace &place)
{
    QStringList arguments{place.program};
    add(arguments, "device", settings.device);
    add(arguments, "cable", place.cable);
    if (place.chain != QList<int>{0})
        add(arguments, "chain", chainText(place.chain));
    if (place.pace > 0)
        add(arguments, "pace", place.pace);
    if (settings.delay > 0)
        add(arguments, "delay", settings.delay);
    for (const TriggerOptions &core : settings.cores) {
        add(arguments, "core", core.core);
        add(arguments, "windows", core.windows);
        add(arguments, "amount", core.amount);
        add(arguments, "position", core.position);
        for (const QString &unit : core.units)
            add(arguments, "set", unit);
        for (const QString &expression : core.expressions)
            arguments << QStringLiteral("--expression") << expression; // even one that is empty
    }
    arguments.append(place.description);
    return arguments;
}

QString shellCommand(const QStringList &arguments)
{
    QStringList words;
    for (const QString &argument : arguments)
        words.append(quoted(argument));
    return words.join(u' ');
}

} // namespace KEO
