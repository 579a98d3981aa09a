#include "datafilewriter.h"

#include "ownfile.h"

#include <base/wholefile.h>
#include <wave_data/sampletext.h>
#include <wave_data/windowcontents.h>
#include <wave_data/windowxml.h>

#include <QCoreApplication>
#include <QXmlStreamWriter>

namespace KEO {

using WaveMonitor::Attributes;
using WaveMonitor::LayoutNode;
using WaveMonitor::SignalElement;
using WaveMonitor::WindowContents;

namespace {

using namespace Qt::StringLiterals;

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

/// Text that holds no mark-up, past the writer, which would look at every character.
void writePlain(QXmlStreamWriter &xml, const QByteArray &text)
{
    xml.writeCharacters(QString()); // ends the start tag
    xml.device()->write(text);
}

void writeAttributes(QXmlStreamWriter &xml, const Attributes &attributes)
{
    for (const auto &[name, value] : attributes)
        xml.writeAttribute(name, value);
}

void writeSignal(QXmlStreamWriter &xml, const SignalElement &signal)
{
    xml.writeStartElement(u"Signal"_s);
    writeAttributes(xml, WaveMonitor::signalAttributes(signal));
    writePlain(xml, WaveMonitor::sampleText(signal.data).toLatin1());
    xml.writeEndElement();
}

void writeRow(QXmlStreamWriter &xml, const LayoutNode &row)
{
    xml.writeStartElement(u"Node"_s);
    writeAttributes(xml, WaveMonitor::rowAttributes(row));
    for (const auto &member : row.children)
        writeRow(xml, *member);
    xml.writeEndElement();
}

/// The end of an element that takes two lines, whatever it holds.
void endList(QXmlStreamWriter &xml, bool isEmpty, int depth)
{
    if (isEmpty)
        writePlain(xml, '\n' + QByteArray(depth * xml.autoFormattingIndent(), ' '));
    xml.writeEndElement();
}

void writeWindow(QXmlStreamWriter &xml, const WindowToSave &window)
{
    const WindowContents &contents = *window.contents;
    xml.writeStartElement(u"Window"_s);
    xml.writeAttribute(u"index"_s, QString::number(window.index));
    if (window.core)
        xml.writeAttribute(u"core"_s, QString::number(*window.core));
    xml.writeTextElement(u"TriggerPosition"_s, QString::number(contents.triggerPosition()));
    xml.writeStartElement(u"Signals"_s);
    for (const SignalElement &signal : contents.signalMap())
        writeSignal(xml, signal);
    endList(xml, contents.signalMap().isEmpty(), 2);
    xml.writeStartElement(u"Layout"_s);
    for (const auto &row : contents.layout().children)
        writeRow(xml, *row);
    endList(xml, contents.layout().children.empty(), 2);
    xml.writeEndElement();
}

} // namespace

QByteArray dataFileText(const QList<WindowToSave> &windows)
{
    QByteArray text;
    text.reserve(expectedSize(windows));
    QXmlStreamWriter xml(&text);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(u"WaveData"_s);
    for (const WindowToSave &window : windows)
        writeWindow(xml, window);
    endList(xml, windows.isEmpty(), 0);
    xml.writeEndDocument();
    return text;
}

std::optional<Error> addDataFile(FileSet &files, const QString &path,
                                 const QList<WindowToSave> &windows, const QString &mayReplace)
{
    if (path != mayReplace && !isFreeForFile(path) && !isDataFile(path))
        return Error{Error::File, QCoreApplication::translate(
                                      "KEO::DataFile", "%1 is no data file and is not replaced.")
                                      .arg(path)};
    return files.add(path, dataFileText(windows), LineEnds::Native);
}

std::optional<Error> writeDataFile(const QString &path, const QList<WindowToSave> &windows,
                                   const QString &mayReplace)
{
    FileSet files;
    if (const std::optional<Error> error = addDataFile(files, path, windows, mayReplace))
        return error;
    const QList<FileSet::Fault> faults = files.commit();
    return faults.isEmpty() ? std::nullopt : std::optional(faults.first().error);
}

} // namespace KEO
