#include "descriptionelement.h"

#include <base/xmltext.h>

#include <QXmlStreamWriter>

namespace KEO {

int numberAttribute(const QDomElement &element, const QString &attribute)
{
    return element.attribute(attribute).toInt();
}

bool flagAttribute(const QDomElement &element, const QString &attribute)
{
    return numberAttribute(element, attribute) != 0;
}

void writeNumber(QXmlStreamWriter &xml, const QString &name, int value)
{
    xml.writeAttribute(name, QString::number(value));
}

void writeFlag(QXmlStreamWriter &xml, const QString &name, bool value)
{
    xml.writeAttribute(name, value ? QStringLiteral("1") : QStringLiteral("0"));
}

void writeText(QXmlStreamWriter &xml, const QString &name, const QString &value)
{
    xml.writeAttribute(name, xmlSafeText(value));
}

} // namespace KEO
