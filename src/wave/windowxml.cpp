#include "windowxml.h"

#include "xmltext.h"

#include <QDomDocument>

namespace WaveMonitor {

namespace {

const QString kId = QStringLiteral("id");
const QString kName = QStringLiteral("name");
const QString kText = QStringLiteral("text");

int readColor(const AttributeReader &attribute)
{
    const QString color = attribute(QStringLiteral("color"));
    return color.isEmpty() ? LayoutNode::kDefaultColor : color.toInt();
}

std::unique_ptr<LayoutNode> readBusTag(const AttributeReader &attribute)
{
    auto node = std::make_unique<BusLayoutNode>();
    node->name = attribute(kName);
    node->text = attribute(kText);
    node->format->setType(DataFormat::typeFromKey(attribute(QStringLiteral("format"))));
    node->color = readColor(attribute);
    return node;
}

} // namespace

AttributeReader attributesOf(const QDomElement &element)
{
    return [element](const QString &name) { return element.attribute(name); };
}

QDomElement writeSignalTag(QDomDocument &document, const SignalElement &signal)
{
    QDomElement element = document.createElement(QStringLiteral("Signal"));
    element.setAttribute(kName, storableText(signal.name));
    element.setAttribute(kId, signal.id);
    element.setAttribute(kText, storableText(signal.text));
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
    const QString type = attribute(QStringLiteral("type"));
    if (type == QLatin1String("sig"))
        return readMemberTag(attribute);
    return type == QLatin1String("bus") ? readBusTag(attribute) : nullptr;
}

std::unique_ptr<LayoutNode> readMemberTag(const AttributeReader &attribute)
{
    auto node = std::make_unique<SignalLayoutNode>(attribute(kId).toInt());
    node->text = attribute(kText);
    node->color = readColor(attribute);
    return node;
}

} // namespace WaveMonitor
