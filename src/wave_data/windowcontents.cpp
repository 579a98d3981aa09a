#include "windowcontents.h"

#include "busnames.h"
#include "sampletext.h"
#include "windowxml.h"

#include <QDomDocument>
#include <QDomElement>
#include <QSet>

#include <algorithm>

namespace WaveMonitor {

namespace {

const QString kNode = QStringLiteral("Node");
const QString kSignal = QStringLiteral("Signal");

QDomElement writeSignal(QDomDocument &document, const SignalElement &signal)
{
    QDomElement element = newElement(document, kSignal, signalAttributes(signal));
    element.appendChild(document.createTextNode(sampleText(signal.data)));
    return element;
}

SignalElement readSignal(const QDomElement &element)
{
    SignalElement signal = readSignalTag(attributesOf(element));
    signal.data = readSamples(element);
    return signal;
}

} // namespace

WindowContents::WindowContents() : m_layout(std::make_unique<LayoutNode>())
{
}

WindowContents::~WindowContents() = default;
WindowContents::WindowContents(WindowContents &&other) noexcept = default;
WindowContents &WindowContents::operator=(WindowContents &&other) noexcept = default;

const SignalElement *WindowContents::signal(int id) const
{
    const auto found = m_signals.constFind(id);
    return found == m_signals.constEnd() ? nullptr : &*found;
}

void WindowContents::clearSignalText(int id)
{
    const auto found = m_signals.find(id);
    if (found != m_signals.end())
        found->text.clear();
}

qsizetype WindowContents::maxDataLength() const
{
    qsizetype longest = 0;
    for (const SignalElement &signal : m_signals)
        longest = std::max(longest, signal.data.size());
    return longest;
}

QString WindowContents::displayName(const SignalLayoutNode &row) const
{
    if (!row.text.isEmpty())
        return row.text;
    const SignalElement *element = signal(row.id);
    if (!element)
        return {};
    return element->text.isEmpty() ? element->name : element->text;
}

void WindowContents::setTriggerPosition(int sample)
{
    m_triggerPosition = sample;
    m_shownSample = sample;
}

SignalLayoutNode &WindowContents::addSignal(const SignalElement &signal)
{
    m_signals.insert(signal.id, signal);
    LayoutNode *row = m_layout->appendChild(std::make_unique<SignalLayoutNode>(signal.id));
    return *static_cast<SignalLayoutNode *>(row);
}

BusLayoutNode &WindowContents::addBus(const BusElement &bus)
{
    auto row = std::make_unique<BusLayoutNode>();
    if (!bus.name.isEmpty())
        row->name = bus.name;
    row->text = bus.text;
    for (const SignalElement *signal : bus.signals) {
        m_signals.insert(signal->id, *signal);
        row->appendChild(std::make_unique<SignalLayoutNode>(signal->id));
    }
    return *static_cast<BusLayoutNode *>(m_layout->appendChild(std::move(row)));
}

bool WindowContents::updateData(const QList<QBitArray> &data)
{
    if (data.size() != m_signals.size())
        return false;
    for (auto signal = m_signals.begin(); signal != m_signals.end(); ++signal) {
        if (signal.key() >= 0 && signal.key() < data.size())
            signal->data = data[signal.key()];
    }
    return true;
}

void WindowContents::clear()
{
    m_signals.clear();
    clearLayout();
}

void WindowContents::clearLayout()
{
    m_layout->children.clear();
    m_hidden.clear();
}

LayoutSnapshot WindowContents::snapshot() const
{
    LayoutSnapshot snapshot;
    snapshot.rows = recordRow(*m_layout).members;
    snapshot.hidden = m_hidden;
    for (const SignalElement &signal : m_signals) {
        if (!signal.text.isEmpty())
            snapshot.signalTexts.insert(signal.id, signal.text);
    }
    return snapshot;
}

LayoutNode::List WindowContents::restore(const LayoutSnapshot &snapshot)
{
    m_hidden = snapshot.hidden;
    for (SignalElement &signal : m_signals)
        signal.text = snapshot.signalTexts.value(signal.id);
    return restoreRows(*m_layout, snapshot.rows);
}

bool WindowContents::hasHidden() const
{
    if (!m_hidden.empty())
        return true;
    const QSet<int> shown = shownSignals(snapshot());
    return std::ranges::any_of(m_signals.keyBegin(), m_signals.keyEnd(),
                               [&](int id) { return !shown.contains(id); });
}

LayoutSnapshot WindowContents::withAllShown() const
{
    return withRowsShown(snapshot(), m_signals.keys());
}

QString WindowContents::newBusName(const QList<const LayoutNode *> &selected) const
{
    QStringList names;
    qsizetype leaves = 0;
    for (const LayoutNode *node : selected) {
        if (node->type == LayoutNode::Signal)
            names.append(displayName(static_cast<const SignalLayoutNode &>(*node)));
        leaves += node->type == LayoutNode::Signal ? 1 : qsizetype(node->children.size());
    }
    if (names.size() == selected.size()) {
        const QString name = defaultBusName(names);
        if (!name.isEmpty())
            return name;
    }
    QStringList remaining;
    for (const auto &node : m_layout->children) {
        if (node->type == LayoutNode::Bus && !selected.contains(node.get()))
            remaining.append(static_cast<const BusLayoutNode &>(*node).name);
    }
    return groupBusName(remaining, int(leaves));
}

QDomElement WindowContents::writeWindow(QDomDocument &document) const
{
    QDomElement window = document.createElement(QStringLiteral("Window"));
    QDomElement trigger = document.createElement(QStringLiteral("TriggerPosition"));
    trigger.appendChild(document.createTextNode(QString::number(m_triggerPosition)));
    window.appendChild(trigger);
    QDomElement list = document.createElement(QStringLiteral("Signals"));
    for (const SignalElement &signal : m_signals)
        list.appendChild(writeSignal(document, signal));
    window.appendChild(list);
    window.appendChild(writeLayout(document));
    return window;
}

bool WindowContents::readWindow(const QDomElement &window)
{
    if (window.tagName() != QLatin1String("Window"))
        return false;
    clear();
    const QDomElement trigger = window.firstChildElement(QStringLiteral("TriggerPosition"));
    if (!trigger.isNull())
        setTriggerPosition(ownText(trigger).toInt());
    const QDomElement list = window.firstChildElement(QStringLiteral("Signals"));
    for (QDomElement element = list.firstChildElement(kSignal); !element.isNull();
         element = element.nextSiblingElement(kSignal))
        addSignal(readSignal(element));
    const QDomElement layout = window.firstChildElement(QStringLiteral("Layout"));
    if (!layout.isNull())
        readLayout(layout);
    return true;
}

QDomElement WindowContents::writeLayout(QDomDocument &document) const
{
    QDomElement layout = m_layout->toElement(document);
    for (const auto &row : m_layout->children) {
        QDomElement element = row->toElement(document);
        for (const auto &member : row->children)
            element.appendChild(member->toElement(document));
        layout.appendChild(element);
    }
    return layout;
}

void WindowContents::readLayout(const QDomElement &layout)
{
    clearLayout();
    for (QDomElement element = layout.firstChildElement(kNode); !element.isNull();
         element = element.nextSiblingElement(kNode)) {
        std::unique_ptr<LayoutNode> row = readRowTag(attributesOf(element));
        if (!row)
            continue;
        if (row->type == LayoutNode::Bus) {
            for (QDomElement member = element.firstChildElement(kNode); !member.isNull();
                 member = member.nextSiblingElement(kNode))
                row->appendChild(readMemberTag(attributesOf(member)));
        }
        m_layout->appendChild(std::move(row));
    }
}

} // namespace WaveMonitor
