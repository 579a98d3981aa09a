#include "listings.h"

#include "cableaccess.h"

#include <design/recoverystore.h>

#include <QCoreApplication>
#include <QJsonArray>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::Listings)
};

QJsonObject jsonOf(const QString &name, const Recovery &entry)
{
    QJsonArray windows;
    for (const WindowPlace &place : entry.windows)
        windows.append(QJsonObject{{"core", place.core}, {"window", place.window}});
    return {{"open", name},
            {"time", entry.time.toUTC().toString(Qt::ISODate)},
            {"description", entry.description},
            {"project", entry.project},
            {"windows", windows}};
}

} // namespace

TaskResult listCables(const CaptureOptions &options, ResultOutput &output)
{
    CableAccess access(options);
    const QStringList cables = access.reachAll();
    for (const QString &cable : cables)
        output.line(cable);
    TaskResult result;
    result.hasEnvelope = false;
    result.document = {{"cables", QJsonArray::fromStringList(cables)}};
    if (cables.isEmpty()) {
        result.status = ExitStatus::NoServer;
        result.message = Text::tr("No cable server could be started or reached.");
    }
    return result;
}

TaskResult listRecovery(ResultOutput &output)
{
    QJsonArray captures;
    int number = 0;
    for (const Recovery &entry : RecoveryStore().entries()) {
        const QString name = QStringLiteral("recovery:%1").arg(++number);
        output.line(QStringList{name, entry.time.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                                entry.description, entry.windowText()}
                        .join(u'\t'));
        captures.append(jsonOf(name, entry));
    }
    TaskResult result;
    result.hasEnvelope = false;
    result.document = {{"recovery", captures}};
    return result;
}

} // namespace KEO
