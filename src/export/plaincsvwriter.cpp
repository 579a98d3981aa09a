#include "plaincsvwriter.h"

#include "plainnames.h"
#include "tablewriter.h"

#include <algorithm>

using WaveMonitor::DataFormat;

namespace KEO {

QString csvField(QString text, Formulas formulas)
{
    text.replace(u'\n', u' ').replace(u'\r', u' ');
    if (formulas == Formulas::Disarmed && !text.isEmpty() &&
        QStringView(u"=+-@\t").contains(text.front()))
        text.prepend(u'\'');
    const bool isPlain = !text.contains(u',') && !text.contains(u'"') && text == text.trimmed();
    return isPlain ? text : u'"' + text.replace(u'"', QLatin1String("\"\"")) + u'"';
}

bool writePlainCsv(QIODevice &device, const QString &timeUnit, int period, int triggerSample,
                   Formulas formulas, ExportWindow window)
{
    for (ExportRow &row : window.rows) {
        if (row.format == DataFormat::Ascii)
            row.format = DataFormat::Hexadecimal;
    }
    const ExportColumns columns = readExportColumns(window, /*includeMembers=*/false);
    ByteSink out(device);
    UniqueTitles titles;
    const QString time = QStringLiteral("time_") + timeUnit;
    out.appendText(QStringList{titles.take(QStringLiteral("sample")), titles.take(time),
                               titles.take(QStringLiteral("trigger"))}
                       .join(u','));
    qsizetype samples = 0;
    for (const auto &column : columns) {
        samples = std::max<qsizetype>(samples, column->size());
        out.append(",");
        out.appendText(csvField(titles.take(column->name()), formulas));
    }
    out.append("\n");
    const TableStyle style{.separator = ",",
                           .lineEnd = "\n",
                           .lead = TableStyle::Lead::SampleTimeTrigger,
                           .triggerSample = triggerSample};
    writeTableRows(out, columns, style, {.count = samples, .firstTime = 0, .period = period});
    return out.finish();
}

} // namespace KEO
