#include "signallist.h"

#include <base/xmltext.h>

#include <QDomElement>
#include <QXmlStreamWriter>

namespace KEO {
namespace {

using namespace Qt::StringLiterals;

SignalEntry readSignal(const QDomElement &element)
{
    return {element.text(), element.attribute(u"text"_s), {}};
}

SignalEntry readBus(const QDomElement &element, BusMembers members)
{
    SignalEntry bus;
    bus.name = element.attribute(u"restorename"_s);
    if (bus.name.isEmpty())
        bus.name = element.attribute(u"name"_s);
    else
        bus.text = element.attribute(u"name"_s);
    const QString name = members == BusMembers::Signals ? u"Signal"_s : QString(); // empty: any
    for (QDomElement member = element.firstChildElement(name); !member.isNull();
         member = member.nextSiblingElement(name))
        bus.members += readSignal(member);
    return bus;
}

void writeSignal(QXmlStreamWriter &xml, const SignalEntry &signal)
{
    xml.writeStartElement(u"Signal"_s);
    if (!signal.text.isEmpty())
        xml.writeAttribute(u"text"_s, xmlSafeText(signal.text));
    writeXmlContent(xml, signal.name);
    xml.writeEndElement();
}

void writeBus(QXmlStreamWriter &xml, const SignalEntry &bus)
{
    xml.writeStartElement(u"Bus"_s);
    if (!bus.text.isEmpty())
        xml.writeAttribute(u"name"_s, xmlSafeText(bus.text));
    xml.writeAttribute(u"restorename"_s, xmlSafeText(bus.name));
    for (const SignalEntry &member : bus.members)
        writeSignal(xml, member);
    xml.writeEndElement();
}

} // namespace

QList<SignalEntry> readSignalList(const QDomElement &signalList, BusMembers members)
{
    QList<SignalEntry> signals;
    for (QDomElement element = signalList.firstChildElement(); !element.isNull();
         element = element.nextSiblingElement()) {
        if (element.tagName() == u"Signal")
            signals += readSignal(element);
        else if (element.tagName() == u"Bus")
            signals += readBus(element, members);
    }
    return signals;
}

void writeSignalList(QXmlStreamWriter &xml, const QList<SignalEntry> &signals)
{
    xml.writeStartElement(u"SignalList"_s);
    for (const SignalEntry &entry : signals) {
        if (entry.members.isEmpty())
            writeSignal(xml, entry);
        else
            writeBus(xml, entry);
    }
    xml.writeEndElement();
}

} // namespace KEO
