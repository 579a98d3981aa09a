#include "datafilewriter.h"

#include <base/wholefile.h>
#include <wave/windowcontents.h>
#include <wave/windowxml.h>
#include <wave/xmltext.h>

#include <QByteArrayView>
#include <QDomDocument>
#include <QTextStream>

namespace KEO {

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

class Writer final
{
public:
    explicit Writer(qsizetype expected) { m_text.reserve(expected); }

    void line(int depth, QByteArrayView text)
    {
        indent(depth);
        m_text.append(text).append('\n');
    }

    /// An element and what is in it, as the toolkit writes a tree.
    void element(int depth, const QDomElement &element)
    {
        for (const QByteArray &text : linesOf(element))
            line(depth - 1, text);
    }

    void signal(int depth, const SignalElement &signal)
    {
        QDomDocument document;
        const QByteArray tag = linesOf(WaveMonitor::writeSignalTag(document, signal)).first();
        indent(depth);
        m_text
            .append(QByteArrayView(tag.trimmed()).chopped(2)) // "/>"
            .append('>')
            .append(WaveMonitor::sampleText(signal.data).toLatin1())
            .append("</Signal>\n");
    }

    [[nodiscard]] QByteArray text() const { return m_text; }

private:
    void indent(int depth) { m_text.append(depth * kIndent, ' '); }

    /// The toolkit indents the element itself by one level.
    static QByteArrayList linesOf(const QDomElement &element)
    {
        QString text;
        QTextStream stream(&text);
        element.save(stream, kIndent);
        stream.flush();
        QByteArrayList lines = text.toUtf8().split('\n');
        lines.removeLast(); // behind the last line end
        return lines;
    }

    QByteArray m_text;
};

QByteArray windowTag(const WindowToSave &window)
{
    QByteArray tag = "<Window";
    if (window.core)
        tag += " core=\"" + QByteArray::number(*window.core) + '"';
    return tag + " index=\"" + QByteArray::number(window.index) + "\">";
}

void writeWindow(Writer &out, const WindowToSave &window)
{
    const WindowContents &contents = *window.contents;
    out.line(1, windowTag(window));
    out.line(2, "<TriggerPosition>" + QByteArray::number(contents.triggerPosition()) +
                    "</TriggerPosition>");
    if (contents.signalMap().isEmpty()) {
        out.line(2, "<Signals/>");
    } else {
        out.line(2, "<Signals>");
        for (const SignalElement &signal : contents.signalMap())
            out.signal(3, signal);
        out.line(2, "</Signals>");
    }
    QDomDocument document;
    out.element(2, contents.writeLayout(document));
    out.line(1, "</Window>");
}

} // namespace

QByteArray dataFileText(const QList<WindowToSave> &windows)
{
    Writer out(expectedSize(windows));
    out.line(0, R"(<?xml version="1.0" encoding="UTF-8"?>)");
    if (windows.isEmpty()) {
        out.line(0, "<WaveData/>");
        return out.text();
    }
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
