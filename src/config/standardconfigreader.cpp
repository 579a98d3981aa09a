#include "standardconfig.h"

#include "descriptionelement.h"
#include "signallist.h"
#include "versioncompare.h"

#include <base/boundedxml.h>

#include <QCoreApplication>
#include <QDomDocument>
#include <QRegularExpression>
#include <QStringConverter>

#include <optional>
#include <utility>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::StandardConfig)
};

using StandardDescription = Description<CoreList>;

void readAttributes(const QDomElement &element, CoreConfig &core)
{
    core.index = numberAttribute(element, u"index"_s);
    core.sample_clock = element.attribute(u"sample_clock"_s);
    core.trig_type = numberAttribute(element, u"trig_type"_s);
    core.storage_depth = numberAttribute(element, u"storage_depth"_s);
    core.window_num = numberAttribute(element, u"window_num"_s);
    core.capture_amount = numberAttribute(element, u"capture_amount"_s);
    core.trigger_pos = numberAttribute(element, u"trigger_pos"_s);
    core.module_name = element.attribute(u"module_name"_s, core.module_name);
}

/// Fills the ports and gives the signals of all `Trigger` elements one after the other; a port that
/// several elements name counts each time. Stops soon after kMaxCapturedBits.
QList<SignalEntry> readTriggers(const QDomElement &triggers, CoreConfig &core)
{
    QList<SignalEntry> concatenated;
    qsizetype bits = 0;
    forEachChild(triggers, u"Trigger"_s, [&](const QDomElement &element) {
        TriggerPort *port = core.triggerByIndex(numberAttribute(element, u"index"_s));
        if (!port)
            return;
        const QDomElement signalList = element.firstChildElement(u"SignalList"_s);
        if (!signalList.isNull())
            port->signals = readSignalList(signalList);
        if (bits > kMaxCapturedBits)
            return;
        concatenated += port->signals;
        bits += signalBits(port->signals);
    });
    return concatenated;
}

void readMatchUnit(const QDomElement &element, const CoreConfig &core)
{
    MatchUnit *unit = core.matchUnitByIndex(numberAttribute(element, u"index"_s));
    if (!unit)
        return;
    unit->enabled = flagAttribute(element, u"enabled"_s);
    unit->match_type = MatchType(numberAttribute(element, u"match_type"_s));
    unit->counter_enable = flagAttribute(element, u"counter_enable"_s);
    unit->counter_width = numberAttribute(element, u"counter_width"_s);
    unit->counter = numberAttribute(element, u"counter"_s);
    unit->countinuous = flagAttribute(element, u"countinuous"_s);
    unit->func = MatchFunction(numberAttribute(element, u"func"_s));
    unit->value0 = element.attribute(u"value0"_s);
    unit->value1 = element.attribute(u"value1"_s);
    const QString port = element.attribute(u"trigger"_s);
    unit->trigger = port.isEmpty() ? nullptr : core.triggerByIndex(port.toInt());
}

/// "Match[3]", as the tool flow writes a unit, becomes "M3".
QString normalizedExpression(QString text)
{
    return text.remove(u"atch["_s).remove(u']').toUpper();
}

void readExpressions(const QDomElement &expressions, CoreConfig &core)
{
    core.dynamic = expressions.attribute(u"type"_s) == u"Dynamic" ? 1 : 0;
    forEachChild(expressions, u"Expression"_s, [&](const QDomElement &element) {
        core.expressions += normalizedExpression(element.text());
    });
}

std::unique_ptr<CoreConfig> readCore(const QDomElement &element)
{
    auto core = std::make_unique<CoreConfig>(0);
    readAttributes(element, *core);
    const QList<SignalEntry> ports = readTriggers(element.firstChildElement(u"Triggers"_s), *core);
    const int captureFromTrigger = numberAttribute(element, u"capture_from_trigger"_s);
    if (captureFromTrigger == 0)
        core->signals = readSignalList(element.firstChildElement(u"SignalList"_s));
    else if (captureFromTrigger == 1)
        core->signals = ports;
    forEachChild(element.firstChildElement(u"MatchUnits"_s), u"MatchUnit"_s,
                 [&](const QDomElement &unit) { readMatchUnit(unit, *core); });
    readExpressions(element.firstChildElement(u"Expressions"_s), *core);
    return core;
}

Result<StandardDescription> readDescription(const QDomDocument &document)
{
    const QDomElement root = document.documentElement();
    StandardDescription description;
    CoreCount count;
    for (QDomElement element = root.firstChildElement(u"KoCore"_s); !element.isNull();
         element = element.nextSiblingElement(u"KoCore"_s)) {
        description.cores.push_back(readCore(element));
        if (const std::optional<Error> error = count.add(description.cores.back()->signals))
            return *error;
    }
    description.id = root.firstChildElement(u"KEO_ID"_s).text();
    return description;
}

/// Throws CompareException at a version that is not made of numbers.
Result<StandardDescription> readVersioned(const QDomDocument &document)
{
    const QDomElement version = document.documentElement().firstChildElement(u"Version"_s);
    if (version.isNull())
        return Error{Error::Format, Text::tr("Unknown Keo Version.")};
    if (isAtMost(version.text(), u"2.0"_s))
        return readDescription(document);
    if (isAtMost(version.text(), u"3.0"_s)) // the place where 3.0 would part from 2.0
        return readDescription(document);
    return Error{Error::Format, Text::tr("The version of Keo config file is too high.")};
}

Result<StandardDescription> parseDescription(const QString &text)
{
    if (text.isEmpty())
        return StandardDescription{};
    const Result<QDomDocument> document = parseBoundedXml(text, kDescriptionLimits);
    if (!document)
        return document.error();
    try {
        return readVersioned(*document);
    } catch (const CompareException &exception) {
        return Error{Error::Format, exception.message()};
    }
}

/// A byte order mark is no content, and as Latin-1 it would be text before the document.
QByteArrayView withoutMark(QByteArrayView bytes)
{
    constexpr QByteArrayView mark("\xEF\xBB\xBF");
    return bytes.startsWith(mark) ? bytes.sliced(mark.size()) : bytes;
}

/// A character that XML does not know, for which the file would be refused, or a text of blanks
/// that only Unicode calls so, which the parser drops.
bool losesCharacters(const QString &text)
{
    static const QRegularExpression blankText(uR"(>(?=[^<]*[^\x00-\x7F])(?:\s|&#\w+;)+<)"_s,
                                              QRegularExpression::UseUnicodePropertiesOption);
    return text.contains(QChar(0xFFFE)) || text.contains(QChar(0xFFFF)) || text.contains(blankText);
}

/// Nothing for bytes that are not UTF-8, or that only Latin-1 keeps.
std::optional<QString> fromUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(withoutMark(bytes));
    if (decoder.hasError() || losesCharacters(text))
        return std::nullopt;
    return text;
}

} // namespace

Result<StandardText> standardConfigText(const QByteArray &bytes)
{
    using enum DescriptionEncoding;
    if (const auto wide = QStringConverter::encodingForData(bytes, u'<');
        wide && wide != QStringConverter::Utf8)
        return Error{Error::Format,
                     Text::tr("Its encoding is %1, and it must be UTF-8 or Latin-1.")
                         .arg(QLatin1StringView(QStringConverter::nameForEncoding(*wide)))};
    if (QStringConverter::encodingForName(claimedXmlEncoding(bytes)) == QStringConverter::Utf8) {
        if (std::optional<QString> text = fromUtf8(bytes))
            return StandardText{std::move(*text), Utf8};
        qCDebug(lcConfig) << "The description is not all of UTF-8, as it says: read as Latin-1";
    }
    return StandardText{QString::fromLatin1(withoutMark(bytes)), Latin1};
}

CoreList loadStandardConfigFile(const QString &path, QString *idOut, bool *okOut, QString *errorOut,
                                DescriptionEncoding *encodingOut)
{
    const Result<QByteArray> bytes = readDescriptionFile(path, Text::tr("Open file failed."));
    if (!bytes)
        return deliver<CoreList>(bytes.error(), idOut, okOut, errorOut);
    const Result<StandardText> text = standardConfigText(*bytes);
    if (!text)
        return deliver<CoreList>(text.error(), idOut, okOut, errorOut);
    if (encodingOut)
        *encodingOut = text->encoding;
    return loadStandardConfig(text->text, idOut, okOut, errorOut);
}

CoreList loadStandardConfig(const QString &text, QString *idOut, bool *okOut, QString *errorOut)
{
    return deliver(parseDescription(text), idOut, okOut, errorOut);
}

CoreList readCoreElements(const QDomDocument &document, QString *idOut)
{
    return deliver(readDescription(document), idOut, nullptr, nullptr);
}

} // namespace KEO
