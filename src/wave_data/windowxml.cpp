#include "windowxml.h"

#include <base/xmltext.h>

#include <QDomDocument>

namespace WaveMonitor {

namespace {

const QString kId = QStringLiteral("id");
const QString kName = QStringLiteral("name");
const QString kText = QStringLiteral("text");
const QString kColor = QStringLiteral("color");
const QString kFormat = QStringLiteral("format");
const QString kType = QStringLiteral("type");
const QString kSignal = QStringLiteral("sig");
const QString kBus = QStringLiteral("bus");

/// Windows leave out what XML can't hold.
QString storableText(const QString &text)
{
    return KEO::xmlSafeText(text, KEO::Unstorable::Dropped);
}

int readColor(const AttributeReader &attribute)
{
    const QString color = attribute(kColor);
    return color.isEmpty() ? LayoutNode::kDefaultColor : color.toInt();
}

std::unique_ptr<LayoutNode> readBusTag(const AttributeReader &attribute)
{
    auto node = std::make_unique<BusLayoutNode>();
    node->name = attribute(kName);
    node->text = attribute(kText);
    node->format->setType(DataFormat::typeFromKey(attribute(kFormat)));
    node->color = readColor(attribute);
    return node;
}

} // namespace

AttributeReader attributesOf(const QDomElement &element)
{
    return [element](const QString &name) { return element.attribute(name); };
}

Attributes signalAttributes(const SignalElement &signal)
{
    return {{kName, storableText(signal.name)},
            {kId, QString::number(signal.id)},
            {kText, storableText(signal.text)}};
}

Attributes rowAttributes(const LayoutNode &row)
{
    const QPair<QString, QString> color(kColor, QString::number(row.color));
    if (row.type == LayoutNode::Bus) {
        const auto &bus = static_cast<const BusLayoutNode &>(row);
        return {{kType, kBus},
                {kName, storableText(bus.name)},
                {kText, storableText(bus.text)},
                {kFormat, DataFormat::typeKey(bus.format->type())},
                color};
    }
    const auto &signal = static_cast<const SignalLayoutNode &>(row);
    return {{kType, kSignal},
            {kId, QString::number(signal.id)},
            {kText, storableText(signal.text)},
            color};
}

QDomElement newElement(QDomDocument &document, const QString &tag, const Attributes &attributes)
{
    QDomElement element = document.createElement(tag);
    for (const auto &[name, value] : attributes)
        element.setAttribute(name, value);
    return element;
}

SignalElement readSignalTag(const AttributeReader &attribute)
{
    return {.id = attribute(kId).toInt(),
            .name = attribute(kName),
            .text = attribute(kText),
            .data = {}};
}

std::unique_ptr<LayoutNode> readRowTag(const AttributeReader &attribute)
{
    const QString type = attribute(kType);
    if (type == kSignal)
        return readMemberTag(attribute);
    return type == kBus ? readBusTag(attribute) : nullptr;
}

std::unique_ptr<LayoutNode> readMemberTag(const AttributeReader &attribute)
{
    auto node = std::make_unique<SignalLayoutNode>(attribute(kId).toInt());
    node->text = attribute(kText);
    node->color = readColor(attribute);
    return node;
}

} // namespace WaveMonitor
