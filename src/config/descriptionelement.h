#pragma once

#include <QDomElement>
#include <QString>

class QXmlStreamWriter;

namespace KEO {

// Attributes and children of a core description's elements, the same in every kind of description.

/// An absent or malformed number is 0.
int numberAttribute(const QDomElement &element, const QString &attribute);
/// Any number but 0.
bool flagAttribute(const QDomElement &element, const QString &attribute);

/// Calls \a read with each child element of that name, in document order.
template <typename Read>
void forEachChild(const QDomElement &parent, const QString &name, Read read)
{
    for (QDomElement child = parent.firstChildElement(name); !child.isNull();
         child = child.nextSiblingElement(name))
        read(child);
}

void writeNumber(QXmlStreamWriter &xml, const QString &name, int value);
/// As "1" or "0".
void writeFlag(QXmlStreamWriter &xml, const QString &name, bool value);
void writeText(QXmlStreamWriter &xml, const QString &name, const QString &value);

} // namespace KEO
