#include "chainstate.h"

#include "fileread.h"
#include "ownership.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace Sim {

namespace {

constexpr qint64 kMaxFileSize = 64 * 1024;

const QString kBoard = QStringLiteral("board");
const QString kScans = QStringLiteral("scans");
const QString kDownloads = QStringLiteral("downloads");
const QString kDevices = QStringLiteral("devices");
const QString kPosition = QStringLiteral("position");
const QString kProgrammed = QStringLiteral("programmed");
const QString kLoads = QStringLiteral("loads");

} // namespace

ChainStateFile::ChainStateFile(const QString &socket, const QString &board)
    : m_board(QFileInfo(board).canonicalFilePath())
{
    const QByteArray tag = QCryptographicHash::hash(m_board.toUtf8(), QCryptographicHash::Sha256);
    m_path = QDir(QDir::tempPath())
                 .filePath(QStringLiteral("%1-%2.chain").arg(socket, tag.left(8).toHex()));
}

ChainState ChainStateFile::read() const
{
    const auto json = QFileInfo::exists(m_path) && isOursToUse(m_path)
                          ? readWholeFile(m_path, kMaxFileSize)
                          : Outcome<QByteArray>(QByteArray());
    const QJsonObject object = json ? QJsonDocument::fromJson(*json).object() : QJsonObject();
    ChainState state;
    state.scans = object.value(kScans).toInt();
    state.downloads = object.value(kDownloads).toInt();
    for (const QJsonValue device : object.value(kDevices).toArray())
        state.devices.insert(device[kPosition].toInt(-1),
                             {device[kProgrammed].toBool(), device[kLoads].toInt()});
    return state;
}

bool ChainStateFile::write(const ChainState &state) const
{
    QJsonArray devices;
    for (auto device = state.devices.begin(); device != state.devices.end(); ++device)
        devices.append(QJsonObject{{kPosition, device.key()},
                                   {kProgrammed, device->isProgrammed},
                                   {kLoads, device->loads}});
    const QJsonObject object{{kBoard, m_board},
                             {kScans, state.scans},
                             {kDownloads, state.downloads},
                             {kDevices, devices}};
    const QByteArray json = QJsonDocument(object).toJson();
    QSaveFile file(m_path);
    return isOursToUse(m_path) && file.open(QIODevice::WriteOnly) &&
           file.write(json) == json.size() && file.flush() && file.commit();
}

bool ChainStateFile::clear() const
{
    return !isOursToUse(m_path) || !QFileInfo::exists(m_path) || QFile::remove(m_path);
}

} // namespace Sim
