#include "exportwindow.h"

#include <base/xmltext.h>
#include <wave_data/sampletext.h>
#include <wave_data/windowcontents.h>

#include <QDomElement>
#include <QHash>

using WaveMonitor::BusLayoutNode;
using WaveMonitor::DataFormat;
using WaveMonitor::LayoutNode;
using WaveMonitor::SignalElement;
using WaveMonitor::SignalLayoutNode;
using WaveMonitor::WindowContents;

namespace KEO {

namespace {

/// Exports leave out what a saved window does.
QString storableText(const QString &text)
{
    return xmlSafeText(text, Unstorable::Dropped);
}

QString firstNonEmpty(const QString &text, const QString &name)
{
    return text.isEmpty() ? name : text;
}

QString attribute(const QDomElement &element, const char *name)
{
    return element.attribute(QLatin1String(name));
}

ExportRow signalRow(const QDomElement &node)
{
    ExportRow row;
    row.id = attribute(node, "id");
    row.text = attribute(node, "text");
    return row;
}

ExportRow busRow(const QDomElement &node)
{
    ExportRow row{.kind = ExportRow::Kind::Bus,
                  .id = {},
                  .name = attribute(node, "name"),
                  .text = attribute(node, "text"),
                  .format = DataFormat::typeFromKey(attribute(node, "format")),
                  .members = {}};
    const QString tag = QStringLiteral("Node");
    for (QDomElement member = node.firstChildElement(tag); !member.isNull();
         member = member.nextSiblingElement(tag))
        row.members.push_back(signalRow(member));
    return row;
}

ExportRow exportRow(const LayoutNode &node)
{
    ExportRow row;
    if (node.type == LayoutNode::Signal) {
        const auto &signal = static_cast<const SignalLayoutNode &>(node);
        row.id = QString::number(signal.id);
        row.text = storableText(signal.text);
        return row;
    }
    const auto &bus = static_cast<const BusLayoutNode &>(node);
    row.kind = ExportRow::Kind::Bus;
    row.name = storableText(bus.name);
    row.text = storableText(bus.text);
    row.format = bus.format->type();
    row.members.reserve(bus.children.size());
    for (const auto &member : bus.children)
        row.members.push_back(exportRow(*member));
    return row;
}

/// Finds records by id; of two with the same id the later one counts.
class RecordIndex final
{
public:
    explicit RecordIndex(const QList<ExportRecord> &records)
    {
        m_positions.reserve(records.size());
        for (qsizetype i = 0; i < records.size(); ++i)
            m_positions.insert(records[i].id, i);
    }

    /// Position of the record, or -1.
    [[nodiscard]] qsizetype position(const QString &id) const { return m_positions.value(id, -1); }

private:
    QHash<QString, qsizetype> m_positions;
};

ExportRecord recordAt(const QList<ExportRecord> &records, qsizetype position)
{
    return position < 0 ? ExportRecord() : records[position];
}

QString busTitle(const ExportRow &row)
{
    return firstNonEmpty(row.text, row.name);
}

} // namespace

ExportWindow::ExportWindow(const QDomElement &window)
    : format(WaveMonitor::ownText(window.firstChildElement(QStringLiteral("Format"))))
{
    const QString signalTag = QStringLiteral("Signal");
    const QDomElement list = window.firstChildElement(QStringLiteral("Signals"));
    for (QDomElement signal = list.firstChildElement(signalTag); !signal.isNull();
         signal = signal.nextSiblingElement(signalTag))
        records.append({.name = firstNonEmpty(attribute(signal, "text"), attribute(signal, "name")),
                        .id = attribute(signal, "id"),
                        .data = WaveMonitor::readSamples(signal)});

    const QString nodeTag = QStringLiteral("Node");
    const QDomElement layout = window.firstChildElement(QStringLiteral("Layout"));
    for (QDomElement node = layout.firstChildElement(nodeTag); !node.isNull();
         node = node.nextSiblingElement(nodeTag)) {
        const QString type = attribute(node, "type");
        if (type == QLatin1String("sig"))
            rows.push_back(signalRow(node));
        else if (type == QLatin1String("bus"))
            rows.push_back(busRow(node));
    }
}

ExportWindow::ExportWindow(const WindowContents &window)
{
    records.reserve(window.signalMap().size());
    for (const SignalElement &signal : window.signalMap())
        records.append({.name = firstNonEmpty(storableText(signal.text), storableText(signal.name)),
                        .id = QString::number(signal.id),
                        .data = signal.data});
    rows.reserve(window.layout().children.size());
    for (const auto &node : window.layout().children)
        rows.push_back(exportRow(*node));
}

QList<ExportRecord> readSignalRecords(const ExportWindow &window)
{
    return window.records;
}

ExportColumns readExportColumns(const ExportWindow &window, bool includeMembers)
{
    const RecordIndex index(window.records);
    const auto signalColumn = [&](const ExportRow &row) {
        const ExportRecord record = recordAt(window.records, index.position(row.id));
        return std::make_unique<_Signal>(firstNonEmpty(row.text, record.name), record.data);
    };
    ExportColumns columns;
    for (const ExportRow &row : window.rows) {
        if (row.kind == ExportRow::Kind::Signal) {
            columns.push_back(signalColumn(row));
            continue;
        }
        QList<QBitArray> bits;
        for (const ExportRow &member : row.members)
            bits.append(recordAt(window.records, index.position(member.id)).data);
        columns.push_back(std::make_unique<_Bus>(busTitle(row), row.format, std::move(bits)));
        if (!includeMembers)
            continue;
        for (const ExportRow &member : row.members)
            columns.push_back(signalColumn(member));
    }
    return columns;
}

QList<ExportRecord> readNamedRecords(const ExportWindow &window)
{
    QList<ExportRecord> records = window.records;
    const RecordIndex index(records);
    const auto rename = [&](const ExportRow &row) {
        const qsizetype position = index.position(row.id);
        if (position >= 0 && !row.text.isEmpty())
            records[position].name = row.text;
    };
    for (const ExportRow &row : window.rows) {
        if (row.kind == ExportRow::Kind::Signal)
            rename(row);
        for (const ExportRow &member : row.members)
            rename(member);
    }
    return records;
}

QList<BusGroup> readBusGroups(const ExportWindow &window)
{
    const RecordIndex index(window.records);
    QList<BusGroup> groups;
    for (const ExportRow &row : window.rows) {
        if (row.kind != ExportRow::Kind::Bus)
            continue;
        BusGroup group{.name = row.name, .members = {}};
        for (const ExportRow &member : row.members)
            group.members.append(recordAt(window.records, index.position(member.id)).name);
        groups.append(std::move(group));
    }
    return groups;
}

QStringList readBusNames(const ExportWindow &window)
{
    QStringList names;
    for (const ExportRow &row : window.rows) {
        if (row.kind == ExportRow::Kind::Bus)
            names.append(busTitle(row));
    }
    return names;
}

} // namespace KEO
