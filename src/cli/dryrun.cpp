#include "dryrun.h"

#include "designsetup.h"
#include "progressreport.h"

#include <capture/registerpreview.h>
#include <capture/triggercheck.h>

#include <QCoreApplication>
#include <QJsonArray>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DryRun)
};

QJsonObject jsonOf(int core, const TriggerFinding &finding)
{
    QJsonObject object{{"core", core},
                       {"obstacle", finding.weight == TriggerFinding::Weight::Obstacle},
                       {"text", finding.text}};
    if (finding.subject == TriggerFinding::Subject::Unit)
        object.insert("unit", finding.index);
    else if (finding.subject == TriggerFinding::Subject::Expression)
        object.insert("expression", finding.index);
    return object;
}

} // namespace

TaskResult previewRun(const CaptureOptions &options, ResultOutput &output, ProgressReport &report)
{
    const std::unique_ptr<Design> design = makeDesign(options);
    if (const std::optional<Error> error = setUp(*design, options))
        return {statusOf(error->kind), error->message, {{"file", options.file}}};

    warnOfDevice(*design, options, report);
    const QList<QBitArray> words = design->startWords();
    const QList<RegisterPreviewLine> lines = previewOf(words);
    QJsonArray findings;
    for (const auto &[core, finding] : design->findings()) {
        report.say(Text::tr("Core %1: %2").arg(QString::number(core), finding.text));
        findings.append(jsonOf(core, finding));
    }
    output.line(previewText(lines));
    TaskResult result;
    result.document = {{"file", options.file},
                       {"words", words.size()},
                       {"registers", previewJson(lines)},
                       {"findings", findings}};
    return result;
}

} // namespace KEO
