#include "prnwriter.h"

#include "tablewriter.h"

namespace KEO {

namespace {

constexpr TableStyle kPrnStyle{.separator = "\t", .lineEnd = " \n"};

ExportColumns selectColumns(const ExportWindow &window, int selector)
{
    if (selector != 0 && selector != 1)
        return {};
    return readExportColumns(window, /*includeMembers=*/selector == 0);
}

ExportColumns selectBuses(const ExportWindow &window, const QList<int> &buses)
{
    ExportColumns kept;
    int ordinal = -1;
    for (auto &column : readExportColumns(window, /*includeMembers=*/false)) {
        if (qsizetype(kept.size()) == buses.size())
            break;
        if (column->isBus() && ++ordinal == buses[qsizetype(kept.size())])
            kept.push_back(std::move(column));
    }
    return kept;
}

bool writeTable(QIODevice &device, const QString &timeUnit, int period,
                const ExportColumns &columns)
{
    ByteSink out(device);
    out.append("time unit: ");
    out.appendText(timeUnit);
    out.append(kPrnStyle.separator);
    for (const auto &column : columns) {
        if (!column->isBus())
            out.append("/");
        out.appendText(column->name());
        out.append(column == columns.back() ? QByteArrayView("\n") : kPrnStyle.separator);
    }
    writeTableRows(out, columns, kPrnStyle,
                   {.count = firstColumnSize(columns), .firstTime = 0, .period = period});
    return out.finish();
}

} // namespace

bool writePrn(QIODevice &out, const QString &timeUnit, int period, const ExportWindow &window,
              int selector)
{
    return writeTable(out, timeUnit, period, selectColumns(window, selector));
}

bool writePrnBuses(QIODevice &out, const QString &timeUnit, int period, const ExportWindow &window,
                   const QList<int> &buses)
{
    return writeTable(out, timeUnit, period, selectBuses(window, buses));
}

} // namespace KEO
