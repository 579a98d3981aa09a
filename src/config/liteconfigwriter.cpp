#include "liteconfig.h"

#include "descriptionelement.h"
#include "descriptionfile.h"
#include "signallist.h"

#include <QXmlStreamWriter>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

void writeCore(QXmlStreamWriter &xml, const LiteCoreConfig &core)
{
    xml.writeStartElement(u"KoCore_Lite"_s);
    writeNumber(xml, u"index"_s, core.index);
    writeText(xml, u"sample_clock"_s, core.sample_clock);
    writeNumber(xml, u"trig_type"_s, core.trig_type);
    writeNumber(xml, u"capture_amount"_s, core.capture_amount);
    writeNumber(xml, u"implemention"_s, core.implemention);
    writeFlag(xml, u"input_register_enabled"_s, core.input_register_enabled);
    writeFlag(xml, u"capture_init_data_enabled"_s, core.capture_init_data_enabled);
    writeText(xml, u"module_name"_s, core.module_name);
    writeSignalList(xml, core.signals);
    xml.writeEndElement();
}

} // namespace

QByteArray saveLiteConfig(const QList<LiteCoreConfig> &cores)
{
    QByteArray document;
    QXmlStreamWriter xml(&document);
    beginDescription(xml, u"1.0"_s, u"Lite"_s);
    for (const LiteCoreConfig &core : cores)
        writeCore(xml, core);
    xml.writeEndElement();
    xml.writeEndDocument();
    return document.replace('\r', "&#13;"); // as it is, text mode would drop it on reading
}

bool saveLiteConfigFile(const QList<LiteCoreConfig> &cores, const QString &path)
{
    return writeDescriptionFile(path, saveLiteConfig(cores));
}

} // namespace KEO
