#include "exampledesign.h"

#include "serverlauncher.h"

#include <base/wholefile.h>

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace KEO {

namespace {

constexpr qint64 kMaxSize = 64 * 1024;

} // namespace

std::optional<ExampleDesign> exampleDesign(const QString &directory)
{
    for (const char *other : {"SIGNALSCOPE_BOARD", "SIGNALSCOPE_REPLAY"}) {
        if (!qEnvironmentVariableIsEmpty(other))
            return {};
    }
    const QDir folder(directory);
    const Result<QByteArray> board =
        readWholeFile(folder.filePath(QStringLiteral("board.json")), kMaxSize, LineEnds::AsTheyAre);
    if (!board)
        return {};
    const QString cable = serverTable().first().connection.serverName;
    const QJsonValue devices =
        QJsonDocument::fromJson(*board)[QLatin1String("cables")][cable][QLatin1String("chain")];
    for (const QJsonValue device : devices.toArray()) {
        const QString description = device[QLatin1String("description")].toString();
        if (description.isEmpty())
            continue;
        const QString model = device[QLatin1String("model")].toString();
        const QString path = QDir::cleanPath(folder.absoluteFilePath(description));
        if (QFileInfo(path).isFile())
            return ExampleDesign{path, model.section(u'-', 0, 0), model};
    }
    return {};
}

} // namespace KEO
