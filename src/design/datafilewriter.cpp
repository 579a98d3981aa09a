#include "datafilewriter.h"

#include <base/wholefile.h>
#include <wave_data/windowcontents.h>
#include <wave_data/windowxml.h>
#include <wave_data/xmltext.h>

#include <QByteArrayView>

namespace KEO {

using WaveMonitor::Attributes;
using WaveMonitor::LayoutNode;
using WaveMonitor::SignalElement;
using WaveMonitor::WindowContents;

namespace {

constexpr int kIndent = 4;
// Room for a tag with names of the usual length. Longer ones only make the text grow.
constexpr qsizetype kTagRoom = 256;

qsizetype expectedSize(const QList<WindowToSave> &windows)
{
    qsizetype size = kTagRoom;
    for (const WindowToSave &window : windows) {
        size += kTagRoom;
        for (const SignalElement &signal : window.contents->signalMap())
            size += signal.data.size() + 2 * kTagRoom; // its row as well
    }
    return size;
}

/// Text with references for what would not come back from an attribute as it is.
QByteArray attributeText(const QString &value)
{
    QByteArray text;
    for (const char c : value.toUtf8()) {
        switch (c) {
        case '&':
            text += "&amp;";
            break;
        case '<':
            text += "&lt;";
            break;
        case '>':
            text += "&gt;";
            break;
        case '"':
            text += "&quot;";
            break;
        case '\t':
        case '\n':
        case '\r':
            text += "&#" + QByteArray::number(int(c)) + ';';
            break;
        default:
            text += c;
        }
    }
    return text;
}

class Writer final
{
public:
    explicit Writer(qsizetype expected) { m_text.reserve(expected); }

    void line(int depth, QByteArrayView text)
    {
        indent(depth);
        m_text.append(text).append('\n');
    }

    /// A line that holds an element, or its start.
    void tag(int depth, QByteArrayView name, const Attributes &attributes, QByteArrayView end)
    {
        indent(depth);
        m_text.append('<').append(name);
        // Not by way of the toolkit's tree, which writes attributes in an order that changes from
        // run to run.
        for (const auto &[key, value] : attributes)
            m_text.append(' ')
                .append(key.toLatin1())
                .append("=\"")
                .append(attributeText(value))
                .append('"');
        m_text.append(end);
    }

    void signal(int depth, const SignalElement &signal)
    {
        tag(depth, "Signal", WaveMonitor::signalAttributes(signal), ">");
        m_text.append(WaveMonitor::sampleText(signal.data).toLatin1()).append("</Signal>\n");
    }

    void row(int depth, const LayoutNode &row)
    {
        const Attributes attributes = WaveMonitor::rowAttributes(row);
        if (row.children.empty()) {
            tag(depth, "Node", attributes, "/>\n");
            return;
        }
        tag(depth, "Node", attributes, ">\n");
        for (const auto &member : row.children)
            this->row(depth + 1, *member);
        line(depth, "</Node>");
    }

    [[nodiscard]] QByteArray text() const { return m_text; }

private:
    void indent(int depth) { m_text.append(depth * kIndent, ' '); }

    QByteArray m_text;
};

Attributes windowAttributes(const WindowToSave &window)
{
    Attributes attributes{{QStringLiteral("index"), QString::number(window.index)}};
    if (window.core)
        attributes.append({QStringLiteral("core"), QString::number(*window.core)});
    return attributes;
}

void writeWindow(Writer &out, const WindowToSave &window)
{
    const WindowContents &contents = *window.contents;
    out.tag(1, "Window", windowAttributes(window), ">\n");
    out.line(2, "<TriggerPosition>" + QByteArray::number(contents.triggerPosition()) +
                    "</TriggerPosition>");
    out.line(2, "<Signals>");
    for (const SignalElement &signal : contents.signalMap())
        out.signal(3, signal);
    out.line(2, "</Signals>");
    out.line(2, "<Layout>");
    for (const auto &row : contents.layout().children)
        out.row(3, *row);
    out.line(2, "</Layout>");
    out.line(1, "</Window>");
}

} // namespace

QByteArray dataFileText(const QList<WindowToSave> &windows)
{
    Writer out(expectedSize(windows));
    out.line(0, R"(<?xml version="1.0" encoding="UTF-8"?>)");
    out.line(0, "<WaveData>");
    for (const WindowToSave &window : windows)
        writeWindow(out, window);
    out.line(0, "</WaveData>");
    return out.text();
}

std::optional<Error> writeDataFile(const QString &path, const QList<WindowToSave> &windows)
{
    return writeWholeFile(path, dataFileText(windows), LineEnds::Native);
}

} // namespace KEO
