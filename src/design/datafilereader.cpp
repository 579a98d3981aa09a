#include "datafilereader.h"

#include <base/wholefile.h>
#include <wave_data/sampletext.h>
#include <wave_data/windowxml.h>

#include <QCoreApplication>

#include <memory>
#include <utility>

namespace KEO {

using WaveMonitor::AttributeReader;
using WaveMonitor::LayoutNode;
using WaveMonitor::SignalElement;

namespace {

using namespace Qt::StringLiterals;

/// XML nodes that a window, a signal or a row takes, with blanks and twice the attributes it has.
constexpr int kNodesOfRecord = 32;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DataFile)
};

Error userError(const XmlFault &fault)
{
    return {fault.kind,
            Text::tr("Error when reading data file.\n line: %1 column: %2, %3")
                .arg(QString::number(fault.line), QString::number(fault.column), fault.message)};
}

Error tooLarge()
{
    return userError({Error::Limit,
                      Text::tr("The document is larger than %1 bytes").arg(kMaxDataFileSize), 0,
                      0});
}

class DataFileParser final
{
public:
    explicit DataFileParser(const QByteArray &bytes) : m_reader(bytes, kDataFileLimits, "Signal") {}

    Result<LoadedWindows> parse()
    {
        while (m_reader.next()) {
            if (m_reader.token().isStartElement())
                readBeyond(m_reader.depth());
        }
        if (m_reader.fault())
            return userError(*m_reader.fault());
        return std::move(m_windows);
    }

private:
    /// Moves to the next node that stands directly inside the element that opened at \a depth;
    /// false at its end. What stands deeper must have been read.
    bool nextInside(int depth)
    {
        if (!m_reader.next())
            return false;
        const QXmlStreamReader &token = m_reader.token();
        return !(token.isEndElement() && m_reader.depth() == depth);
    }

    bool isElement(QStringView name) const
    {
        return m_reader.token().isStartElement() && m_reader.token().name() == name;
    }

    /// Indentation is no text, not even when it is written as character references.
    bool isText() const
    {
        const QXmlStreamReader &token = m_reader.token();
        return token.isCDATA() || (token.isCharacters() && !token.text().trimmed().isEmpty());
    }

    QString attribute(QLatin1StringView name) const
    {
        const QXmlStreamAttributes attributes = m_reader.token().attributes();
        if (!attributes.hasAttribute(name))
            return {};
        const QStringView value = attributes.value(name);
        return value.isEmpty() ? u""_s : value.toString();
    }

    static AttributeReader readerOf(const QXmlStreamAttributes &attributes)
    {
        return [&attributes](const QString &name) { return attributes.value(name).toString(); };
    }

    /// Counts one more record, with the texts of its tag; false when it is too much.
    bool takesRecord()
    {
        ++m_records;
        if (m_reader.token().isStartElement()) {
            for (const QXmlStreamAttribute &attribute : m_reader.token().attributes())
                m_characters += attribute.value().size();
        }
        m_reader.allowNodes(kNodesOfRecord);
        return staysBelow(m_records, kMaxDataRecords,
                          Text::tr("The file has more than %1 windows, signals and rows")) &&
               staysBelow(m_characters, kMaxDataText,
                          Text::tr("The names in the file have more than %1 characters"));
    }

    /// Refuses the file if not; \a message has "%1" for the bound.
    bool staysBelow(qsizetype count, qsizetype bound, const QString &message)
    {
        if (count > bound)
            m_reader.refuse(Error::Limit, message.arg(bound));
        return count <= bound;
    }

    /// Reads to the end of the present element, which means nothing here itself. Windows count
    /// wherever they stand.
    void readBeyond(int depth)
    {
        while (nextInside(depth))
            readUnknown();
    }

    /// The present node, if it is an element.
    void readUnknown()
    {
        if (!m_reader.token().isStartElement())
            return;
        if (isElement(u"Window"))
            readWindow();
        else
            readBeyond(m_reader.depth());
    }

    void readWindow()
    {
        const int depth = m_reader.depth();
        if (!takesRecord() || !staysBelow(++m_windowCount, kMaxDataWindows,
                                          Text::tr("The file has more than %1 windows")))
            return;
        LoadedWindow window;
        window.core = attribute("core"_L1);
        window.index = attribute("index"_L1);
        window.isTopLevel = depth == 2;
        bool hasTrigger = false;
        bool hasSignals = false;
        bool hasLayout = false;
        std::vector<std::unique_ptr<LayoutNode>> rows;
        while (nextInside(depth)) {
            if (isElement(u"TriggerPosition") && !std::exchange(hasTrigger, true))
                window.triggerText = readText();
            else if (isElement(u"Signals") && !std::exchange(hasSignals, true))
                readSignals(window);
            else if (isElement(u"Layout") && !std::exchange(hasLayout, true))
                rows = readRows();
            else
                readUnknown();
        }
        window.contents.setTriggerPosition(window.triggerText.toInt());
        if (hasLayout) {
            window.contents.clearLayout();
            for (auto &row : rows)
                window.contents.layout().appendChild(std::move(row));
        }
        m_windows.push_back(std::move(window));
    }

    /// Text directly inside the present element, in the pieces in which it stands.
    QStringList readTexts()
    {
        QStringList texts;
        const int depth = m_reader.depth();
        while (nextInside(depth)) {
            if (isText())
                texts.append(m_reader.token().text().toString());
            else
                readUnknown();
        }
        return texts;
    }

    QString readText() { return readTexts().join(QString()); }

    void readSignals(LoadedWindow &window)
    {
        const int depth = m_reader.depth();
        while (nextInside(depth)) {
            const QXmlStreamReader &token = m_reader.token();
            const bool isNode = token.isStartElement() || isText() || token.isComment() ||
                                token.isProcessingInstruction();
            if (!isNode)
                continue;
            if (!takesRecord() || !staysBelow(window.signalNames.size() + 1, kMaxWindowSignals,
                                              Text::tr("A window has more than %1 signals")))
                return;
            window.signalNames.append(token.isStartElement() ? attribute("name"_L1) : QString());
            if (!isElement(u"Signal")) {
                readUnknown();
                continue;
            }
            const QXmlStreamAttributes attributes = token.attributes();
            SignalElement signal = WaveMonitor::readSignalTag(readerOf(attributes));
            signal.name = window.signalNames.last(); // one text for both
            const QByteArrayView digits = m_reader.digits();
            signal.data = WaveMonitor::readSamples(digits, readTexts());
            window.contents.addSignal(signal);
        }
    }

    std::vector<std::unique_ptr<LayoutNode>> readRows()
    {
        std::vector<std::unique_ptr<LayoutNode>> rows;
        const int depth = m_reader.depth();
        while (nextInside(depth)) {
            if (!isElement(u"Node")) {
                readUnknown();
                continue;
            }
            const QXmlStreamAttributes attributes = m_reader.token().attributes();
            std::unique_ptr<LayoutNode> row = WaveMonitor::readRowTag(readerOf(attributes));
            if (row && !takesRecord())
                return {};
            if (row && row->type == LayoutNode::Bus)
                readMembers(*row);
            else
                readBeyond(m_reader.depth());
            if (row)
                rows.push_back(std::move(row));
        }
        return rows;
    }

    void readMembers(LayoutNode &bus)
    {
        const int depth = m_reader.depth();
        while (nextInside(depth)) {
            if (!isElement(u"Node")) {
                readUnknown();
                continue;
            }
            if (!takesRecord())
                return;
            const QXmlStreamAttributes attributes = m_reader.token().attributes();
            bus.appendChild(WaveMonitor::readMemberTag(readerOf(attributes)));
            readBeyond(m_reader.depth());
        }
    }

    BoundedXmlReader m_reader;
    LoadedWindows m_windows;
    qsizetype m_records = 0;
    qsizetype m_windowCount = 0;
    qsizetype m_characters = 0; ///< of names and texts so far
};

} // namespace

Result<LoadedWindows> readDataFile(const QByteArray &bytes)
{
    return DataFileParser(bytes).parse();
}

Result<LoadedWindows> loadDataFile(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxDataFileSize, LineEnds::Native);
    if (bytes)
        return readDataFile(*bytes);
    return bytes.error().kind == Error::Limit ? tooLarge() : bytes.error();
}

} // namespace KEO
