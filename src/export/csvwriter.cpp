#include "csvwriter.h"

#include "tablewriter.h"

namespace KEO {

namespace {

constexpr TableStyle kCsvStyle{.separator = ", ", .lineEnd = ",\n"};

void writeGroups(ByteSink &out, const ExportWindow &window)
{
    const QList<BusGroup> groups = readBusGroups(window);
    if (groups.isEmpty())
        return;
    out.append("Groups:\n");
    for (const BusGroup &group : groups) {
        out.appendText(group.name);
        out.append(" =, ");
        out.appendText(group.members.join(QStringLiteral(", ")));
        out.append(", ");
        out.appendText(window.format);
        out.append(",\n");
    }
    out.append("\n");
}

void writeHead(ByteSink &out, const QString &timeUnit, const ExportColumns &columns)
{
    out.append("Data:\ntime unit: ");
    out.appendText(timeUnit);
    for (const auto &column : columns) {
        out.append(kCsvStyle.separator);
        out.appendText(column->name());
    }
    out.append(kCsvStyle.lineEnd);
    out.append("0");
    for (size_t i = 0; i < columns.size(); ++i)
        out.append(", X");
    out.append(kCsvStyle.lineEnd);
}

} // namespace

bool writeCsv(QIODevice &device, const QString &timeUnit, int period, const ExportWindow &window)
{
    const ExportColumns columns = readExportColumns(window, /*includeMembers=*/true);
    ByteSink out(device);
    writeGroups(out, window);
    writeHead(out, timeUnit, columns);
    writeTableRows(out, columns, kCsvStyle,
                   {.count = firstColumnSize(columns), .firstTime = period, .period = period});
    return out.finish();
}

} // namespace KEO
