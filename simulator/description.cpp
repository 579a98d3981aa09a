#include "description.h"

#include "expression.h"
#include "fileread.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <utility>

namespace Sim {

namespace {

constexpr qint64 kMaxFileSize = 64 * 1024 * 1024;
constexpr int kMaxDepth = 65536;   // rows have 16-bit addresses
constexpr int kMaxSignals = 65536; // of one list
constexpr int kMinRegisterWidth = 16;
constexpr int kMaxCoreIndex = 15;
constexpr int kMaxCounterWidth = 64;

/// The text without its XML declaration: saved descriptions say version="1", which the parser
/// refuses, and the encoding is known.
QString withoutDeclaration(const QByteArray &content)
{
    QString text = QString::fromLatin1(content);
    if (!text.startsWith(QStringLiteral("<?xml")))
        return text;
    const qsizetype end = text.indexOf(QStringLiteral("?>"));
    return end < 0 ? text : text.mid(end + 2).prepend(QString(text.left(end).count(u'\n'), u'\n'));
}

/// The `Mode` of the design is "Lite".
bool isLite(const QByteArray &content)
{
    QXmlStreamReader xml(withoutDeclaration(content));
    xml.readNextStartElement();
    while (xml.readNextStartElement()) {
        if (xml.name() == u"Mode")
            return xml.readElementText(QXmlStreamReader::SkipChildElements) == u"Lite";
        xml.skipCurrentElement();
    }
    return false;
}

class DescriptionReader final
{
public:
    explicit DescriptionReader(const QByteArray &content) : m_isLite(isLite(content))
    {
        if (m_isLite)
            m_xml.addData(content);
        else
            m_xml.addData(withoutDeclaration(content));
    }

    Outcome<DesignDescription> read(const QString &fileName)
    {
        DesignDescription design;
        design.isKeo = fileName.endsWith(QStringLiteral(".keo"));
        if (!m_xml.readNextStartElement())
            return failure(fileName);
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == u"KoCore" && !m_isLite)
                design.cores.append(readCore());
            else if (m_xml.name() == u"KoCore_Lite" && m_isLite)
                readLiteCore(design);
            else if (m_xml.name() == u"KEO_ID")
                design.id = readText();
            else
                m_xml.skipCurrentElement();
        }
        if (m_xml.hasError())
            return failure(fileName);
        return design;
    }

private:
    Failure failure(const QString &fileName) const
    {
        return Failure{QStringLiteral("%1:%2:%3: %4")
                           .arg(fileName)
                           .arg(m_xml.lineNumber())
                           .arg(m_xml.columnNumber())
                           .arg(m_xml.errorString())};
    }

    QString readText() { return m_xml.readElementText(QXmlStreamReader::SkipChildElements); }

    int number(const char *attribute) const
    {
        return m_xml.attributes().value(QLatin1String(attribute)).toInt();
    }

    QString text(const char *attribute) const
    {
        return m_xml.attributes().value(QLatin1String(attribute)).toString();
    }

    void readLiteCore(DesignDescription &design)
    {
        if (design.lite) {
            m_xml.raiseError(QStringLiteral("a second lite core"));
            return;
        }
        LiteCoreDescription core;
        core.index = number("index");
        core.sampleClock = text("sample_clock");
        core.fallingEdge = number("trig_type") == 1;
        core.implementation = number("implemention");
        core.captureAmount = number("capture_amount");
        core.capturesInitData = number("capture_init_data_enabled") != 0;
        bool isFirst = true;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == u"SignalList" && std::exchange(isFirst, false))
                core.captured = readNets();
            else
                m_xml.skipCurrentElement();
        }
        design.lite = core;
    }

    CoreDescription readCore()
    {
        CoreDescription core;
        core.index = number("index");
        core.sampleClock = text("sample_clock");
        core.fallingEdge = number("trig_type") == 1;
        core.storageDepth = number("storage_depth");
        const int captureFromTrigger = number("capture_from_trigger");
        bool ownList = captureFromTrigger == 0; // only the first list counts
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == u"SignalList" && ownList) {
                core.captured = readNets();
                ownList = false;
            } else if (m_xml.name() == u"Triggers") {
                readPorts(core, captureFromTrigger == 1);
            } else if (m_xml.name() == u"MatchUnits") {
                readUnits(core);
            } else if (m_xml.name() == u"Expressions") {
                readExpressions(core);
            } else {
                m_xml.skipCurrentElement();
            }
        }
        return core;
    }

    /// Flat: a bus stands for its members.
    QStringList readNets()
    {
        QStringList nets;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == u"Signal")
                nets.append(readText());
            else if (m_xml.name() == u"Bus")
                nets.append(readBus());
            else
                m_xml.skipCurrentElement();
            if (nets.size() > kMaxSignals)
                m_xml.raiseError(QStringLiteral("more than %1 signals in a list").arg(kMaxSignals));
        }
        return nets;
    }

    QStringList readBus()
    {
        QString name = text("restorename");
        if (name.isEmpty())
            name = text("name");
        QStringList members;
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() == u"Signal" || m_isLite)
                members.append(readText());
            else
                m_xml.skipCurrentElement();
        }
        return members.isEmpty() ? QStringList{name} : members;
    }

    void readPorts(CoreDescription &core, bool capturesPorts)
    {
        while (m_xml.readNextStartElement()) {
            const int index = number("index");
            if (m_xml.name() != u"Trigger" || index < 0 || index >= kPorts) {
                m_xml.skipCurrentElement();
                continue;
            }
            QStringList &port = core.ports[size_t(index)];
            while (m_xml.readNextStartElement()) {
                if (m_xml.name() == u"SignalList")
                    port = readNets();
                else
                    m_xml.skipCurrentElement();
            }
            if (capturesPorts)
                core.captured.append(port);
        }
    }

    void readUnits(CoreDescription &core)
    {
        while (m_xml.readNextStartElement()) {
            const int index = number("index");
            if (m_xml.name() == u"MatchUnit" && index >= 0 && index < kUnits) {
                UnitDescription &unit = core.units[size_t(index)];
                unit.enabled = number("enabled") != 0;
                unit.hasCounter = number("counter_enable") != 0;
                unit.counterWidth = number("counter_width");
                const auto port = m_xml.attributes().value(QLatin1String("trigger"));
                const int portIndex = port.toInt();
                unit.port =
                    !port.isEmpty() && portIndex >= 0 && portIndex < kPorts ? portIndex : -1;
            }
            m_xml.skipCurrentElement();
        }
    }

    void readExpressions(CoreDescription &core)
    {
        core.dynamic = m_xml.attributes().value(QLatin1String("type")) == u"Dynamic";
        while (m_xml.readNextStartElement()) {
            if (m_xml.name() != u"Expression") {
                m_xml.skipCurrentElement();
                continue;
            }
            // The tool flow writes a unit as the word match and its number in square brackets.
            QString text = readText();
            text.remove(QStringLiteral("atch[")).remove(u']');
            core.expressions.append(text.toUpper());
        }
    }

    QXmlStreamReader m_xml;
    bool m_isLite;
};

/// Empty when a core can be built from \a core.
QString flawOf(const CoreDescription &core)
{
    if (core.index < 0 || core.index > kMaxCoreIndex)
        return QStringLiteral("its index must be between 0 and %1").arg(kMaxCoreIndex);
    if (core.storageDepth < 1 || core.storageDepth > kMaxDepth)
        return QStringLiteral("its storage_depth must be between 1 and %1").arg(kMaxDepth);
    if (core.sampleClock.isEmpty())
        return QStringLiteral("it names no sample_clock");
    for (const UnitDescription &unit : core.units) {
        if (unit.enabled && unit.hasCounter && unit.counterWidth > kMaxCounterWidth)
            return QStringLiteral("a counter_width is above %1").arg(kMaxCounterWidth);
    }
    if (core.dynamic)
        return {};
    for (const QString &expression : core.expressions) {
        if (const auto table = expressionTable(expression, core.unitsInUse()); !table)
            return table.error();
    }
    return {};
}

QString flawOf(const LiteCoreDescription &core)
{
    if (core.captureAmount < 1 || core.captureAmount > kMaxDepth)
        return QStringLiteral("its capture_amount must be between 1 and %1").arg(kMaxDepth);
    if (core.sampleClock.isEmpty())
        return QStringLiteral("it names no sample_clock");
    return core.captured.isEmpty() ? QStringLiteral("it captures no signal") : QString();
}

QString flawOf(const DesignDescription &design)
{
    if (design.lite) {
        const QString flaw = flawOf(*design.lite);
        return flaw.isEmpty() ? flaw : QStringLiteral("the lite core: ") + flaw;
    }
    if (design.cores.isEmpty())
        return QStringLiteral("it describes no core");
    for (qsizetype i = 0; i < design.cores.size(); ++i) {
        const CoreDescription &core = design.cores.at(i);
        if (const QString flaw = flawOf(core); !flaw.isEmpty())
            return QStringLiteral("core %1: %2").arg(core.index).arg(flaw);
        for (qsizetype other = 0; other < i; ++other) {
            if (design.cores.at(other).index == core.index)
                return QStringLiteral("two cores have the index %1").arg(core.index);
        }
    }
    return {};
}

} // namespace

QList<int> CoreDescription::unitsInUse() const
{
    QList<int> inUse;
    for (int i = 0; i < kUnits; ++i) {
        const UnitDescription &unit = units[size_t(i)];
        if (unit.enabled && unit.port >= 0 && !ports[size_t(unit.port)].isEmpty())
            inUse.append(i);
    }
    return inUse;
}

int CoreDescription::registerWidth() const
{
    qsizetype width = std::max<qsizetype>(kMinRegisterWidth, captured.size() + 1);
    for (const QStringList &port : ports)
        width = std::max(width, port.size());
    for (const UnitDescription &unit : units) {
        if (unit.enabled && unit.hasCounter)
            width = std::max<qsizetype>(width, unit.counterWidth);
    }
    return int(width);
}

Outcome<DesignDescription> readDescription(const QByteArray &content, const QString &fileName)
{
    auto design = DescriptionReader(content).read(fileName);
    if (!design)
        return design;
    if (const QString flaw = flawOf(*design); !flaw.isEmpty())
        return Failure{QStringLiteral("%1: %2").arg(fileName, flaw)};
    return design;
}

Outcome<DesignDescription> readDescriptionFile(const QString &path)
{
    const auto content = readWholeFile(path, kMaxFileSize);
    if (!content)
        return Failure{content.error()};
    return readDescription(*content, path);
}

} // namespace Sim
