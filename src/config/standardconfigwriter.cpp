#include "standardconfig.h"

#include "descriptionelement.h"
#include "signallist.h"

#include <base/xmltext.h>

#include <QXmlStreamWriter>

#include <algorithm>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

void writeTrigger(QXmlStreamWriter &xml, const TriggerPort &port)
{
    xml.writeStartElement(u"Trigger"_s);
    writeNumber(xml, u"index"_s, port.index);
    if (!port.signals.isEmpty())
        writeSignalList(xml, port.signals);
    xml.writeEndElement();
}

void writeMatchUnit(QXmlStreamWriter &xml, const MatchUnit &unit)
{
    xml.writeStartElement(u"MatchUnit"_s);
    writeNumber(xml, u"index"_s, unit.index);
    writeFlag(xml, u"enabled"_s, unit.enabled);
    writeNumber(xml, u"match_type"_s, int(unit.match_type));
    writeFlag(xml, u"counter_enable"_s, unit.counter_enable);
    writeNumber(xml, u"counter_width"_s, unit.counter_width);
    writeNumber(xml, u"counter"_s, unit.counter);
    writeFlag(xml, u"countinuous"_s, unit.countinuous);
    writeNumber(xml, u"func"_s, int(unit.func));
    writeText(xml, u"value0"_s, unit.value0);
    writeText(xml, u"value1"_s, unit.value1);
    if (unit.trigger)
        writeNumber(xml, u"trigger"_s, unit.trigger->index);
    xml.writeEndElement();
}

void writeExpressions(QXmlStreamWriter &xml, const CoreConfig &core)
{
    xml.writeStartElement(u"Expressions"_s);
    xml.writeAttribute(u"type"_s, core.dynamic ? u"Dynamic"_s : u"Static"_s);
    for (const QString &expression : core.expressions) {
        xml.writeStartElement(u"Expression"_s);
        writeXmlContent(xml, expression);
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

void writeCore(QXmlStreamWriter &xml, const CoreConfig &core)
{
    xml.writeStartElement(u"KoCore"_s);
    writeNumber(xml, u"index"_s, core.index);
    writeText(xml, u"sample_clock"_s, core.sample_clock);
    writeNumber(xml, u"trig_type"_s, core.trig_type);
    writeNumber(xml, u"storage_depth"_s, core.storage_depth);
    writeNumber(xml, u"window_num"_s, core.window_num);
    writeNumber(xml, u"capture_amount"_s, core.capture_amount);
    writeNumber(xml, u"trigger_pos"_s, core.trigger_pos);
    writeText(xml, u"module_name"_s, core.module_name);
    writeSignalList(xml, core.signals);
    xml.writeStartElement(u"Triggers"_s);
    for (const auto &port : core.triggers)
        writeTrigger(xml, *port);
    xml.writeEndElement();
    xml.writeStartElement(u"MatchUnits"_s);
    for (const auto &unit : core.matchUnits)
        writeMatchUnit(xml, *unit);
    xml.writeEndElement();
    writeExpressions(xml, core);
    xml.writeEndElement();
}

/// The document with its characters as they are.
QString documentOf(const CoreList &cores)
{
    QString document;
    QXmlStreamWriter xml(&document);
    beginDescription(xml, u"1"_s, u"Standard"_s);
    for (const auto &core : cores)
        writeCore(xml, *core);
    xml.writeEndElement();
    xml.writeEndDocument();
    return document;
}

bool isAscii(QStringView text)
{
    return std::ranges::all_of(text, [](QChar c) { return c.unicode() < 0x80; });
}

} // namespace

QString saveStandardConfig(const CoreList &cores)
{
    return latin1XmlDocument(documentOf(cores));
}

QByteArray standardConfigBytes(const CoreList &cores, DescriptionEncoding encoding)
{
    QString document = documentOf(cores);
    if (encoding == DescriptionEncoding::Latin1 || isAscii(document))
        return latin1XmlDocument(document).toLatin1();
    document.replace(u'\r', u"&#xd;"_s); // as in Latin-1: it would come back as a line feed
    document.insert(document.indexOf("?>"_L1), u" encoding=\"UTF-8\""_s);
    return document.toUtf8();
}

bool saveStandardConfigFile(const CoreList &cores, const QString &path,
                            DescriptionEncoding encoding)
{
    return writeDescriptionFile(path, standardConfigBytes(cores, encoding));
}

} // namespace KEO
