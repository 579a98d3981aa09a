#include "recoverystore.h"

#include "datafilewriter.h"
#include "projectfile.h"

#include <base/userfolder.h>
#include <base/wholefile.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QUuid>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace KEO {

namespace {

constexpr qint64 kMaxNoteSize = 1024 * 1024;
constexpr qsizetype kPiece = 1024 * 1024;
constexpr int kPartLife = 3600; // seconds; nobody writes for so long

const QString kNote = QStringLiteral("recovery.json");
const QString kPart = QStringLiteral(".part-"); // hidden while it is being written or taken away
const QString kProjectSuffix = QStringLiteral(".analyzer_prj");

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::RecoveryStore)
};

QString uniqueNumber()
{
    return QUuid::createUuid().toString(QUuid::Id128).first(12);
}

/// Names sort as the captures came.
QString entryName(const QDateTime &time)
{
    return time.toUTC().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz-")) + uniqueNumber();
}

/// Newest first.
QStringList entryNames(const QString &folder)
{
    static const QRegularExpression pattern(
        QStringLiteral("^[0-9]{8}-[0-9]{6}-[0-9]{3}-[0-9a-f]{12}$"));
    QStringList names = QDir(folder).entryList(QDir::Dirs | QDir::NoSymLinks | QDir::NoDotAndDotDot,
                                               QDir::Name | QDir::Reversed);
    names.removeIf([](const QString &name) { return !pattern.match(name).hasMatch(); });
    return names;
}

qint64 sizeOf(const QString &entry)
{
    qint64 size = 0;
    for (const QFileInfo &file : QDir(entry).entryInfoList(QDir::Files | QDir::Hidden))
        size += file.size();
    return size;
}

QString baseNameFor(const QString &description)
{
    const QString name = QFileInfo(description).completeBaseName();
    return name.isEmpty() ? QStringLiteral("capture") : name;
}

QByteArray noteText(const Recovery &about)
{
    QJsonArray windows;
    for (const WindowPlace &place : about.windows)
        windows.append(QJsonArray{place.core, place.window});
    const QJsonObject note{
        {"description", about.description},
        {"descriptionState", QString::fromLatin1(about.descriptionState.toHex())},
        {"savedAs", about.savedAs},
        {"device", about.deviceModel},
        {"time", about.time.toUTC().toString(Qt::ISODateWithMs)},
        {"namesCores", about.namesCores},
        {"windows", windows}};
    return QJsonDocument(note).toJson();
}

/// Nothing if the entry is damaged or being taken away.
std::optional<Recovery> readEntry(const QString &entry)
{
    const Result<QByteArray> note =
        readWholeFile(entry + u'/' + kNote, kMaxNoteSize, LineEnds::AsTheyAre);
    const QJsonObject values = note ? QJsonDocument::fromJson(*note).object() : QJsonObject();
    Recovery recovery;
    recovery.description = values["description"].toString();
    recovery.project = entry + u'/' + baseNameFor(recovery.description) + kProjectSuffix;
    recovery.descriptionState =
        QByteArray::fromHex(values["descriptionState"].toString().toLatin1());
    recovery.savedAs = values["savedAs"].toString();
    recovery.deviceModel = values["device"].toString();
    recovery.time =
        QDateTime::fromString(values["time"].toString(), Qt::ISODateWithMs).toLocalTime();
    recovery.namesCores = values["namesCores"].toBool(true);
    for (const QJsonValue window : values["windows"].toArray()) {
        const QJsonArray place = window.toArray();
        recovery.windows.append({place.at(0).toInt(), place.at(1).toInt()});
    }
    if (!QDir::isAbsolutePath(recovery.description) || !recovery.time.isValid() ||
        !QFileInfo(recovery.project).isFile())
        return std::nullopt;
    return recovery;
}

/// Out of sight at once, and then file by file.
void removeEntry(const QString &folder, const QString &name)
{
    const QString part = folder + u'/' + kPart + uniqueNumber();
    if (QDir().rename(folder + u'/' + name, part))
        QDir(part).removeRecursively();
}

/// What killed programs left.
void removeOldParts(const QString &folder)
{
    const QFileInfoList parts = QDir(folder).entryInfoList(
        {kPart + u'*'}, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot);
    for (const QFileInfo &part : parts) {
        if (part.lastModified().secsTo(QDateTime::currentDateTime()) > kPartLife)
            QDir(part.filePath()).removeRecursively();
    }
}

} // namespace

QString Recovery::windowText() const
{
    QStringList cores;
    for (qsizetype i = 0; i < windows.size();) {
        const int core = windows[i].core;
        QStringList numbers;
        for (; i < windows.size() && windows[i].core == core; ++i)
            numbers.append(QString::number(windows[i].window));
        const QString list = numbers.join(QStringLiteral(", "));
        cores.append(namesCores ? Text::tr("core %1 window %2").arg(QString::number(core), list)
                                : Text::tr("window %1").arg(list));
    }
    return cores.join(QStringLiteral("; "));
}

QList<WindowPlace> placesOf(const QList<WindowToSave> &windows)
{
    QList<WindowPlace> places;
    for (const WindowToSave &window : windows)
        places.append({window.core.value_or(0), window.index});
    return places;
}

RecoveryStore::RecoveryStore(QString folder, RecoveryLimits limits)
    : m_folder(std::move(folder)), m_limits(limits)
{
}

QString RecoveryStore::standardFolder()
{
    return userDataFolder() + QStringLiteral("/recovery");
}

QList<Recovery> RecoveryStore::entries() const
{
    QList<Recovery> found;
    const QStringList names = entryNames(m_folder);
    for (const QString &name : names) {
        if (std::optional<Recovery> entry = readEntry(m_folder + u'/' + name))
            found.append(std::move(*entry));
    }
    return found;
}

std::optional<Recovery> RecoveryStore::entryOf(const QString &project) const
{
    const QFileInfo file(project);
    const QFileInfo folder(file.absolutePath());
    if (QFileInfo(folder.path()) != QFileInfo(m_folder) ||
        !entryNames(m_folder).contains(folder.fileName()))
        return std::nullopt;
    std::optional<Recovery> entry = readEntry(folder.filePath());
    return entry && QFileInfo(entry->project) == file ? entry : std::nullopt;
}

void RecoveryStore::remove(const QString &project) const
{
    const QString name = QFileInfo(QFileInfo(project).absolutePath()).fileName();
    if (!project.isEmpty() && entryNames(m_folder).contains(name))
        removeEntry(m_folder, name);
}

void RecoveryStore::prune() const
{
    removeOldParts(m_folder);
    qint64 bytes = 0;
    int count = 0;
    const QStringList names = entryNames(m_folder);
    for (const QString &name : names) {
        bytes += sizeOf(m_folder + u'/' + name);
        if (++count > m_limits.count || bytes > m_limits.bytes)
            removeEntry(m_folder, name);
    }
}

RecoveryWriter::RecoveryWriter(RecoveryStore store, Recovery about, QByteArray description,
                               QByteArray dataFile)
    : m_store(std::move(store)),
      m_about(std::move(about)),
      m_description(std::move(description)),
      m_dataFile(std::move(dataFile))
{
}

RecoveryWriter::~RecoveryWriter()
{
    m_file.close();
    if (!m_part.isEmpty())
        QDir(m_part).removeRecursively();
}

QString RecoveryWriter::baseName() const
{
    return baseNameFor(m_about.description);
}

bool RecoveryWriter::step()
{
    if (m_isDone || m_error)
        return false;
    errno = 0;
    if (m_part.isEmpty())
        m_error = begin();
    else if (m_written < m_dataFile.size())
        m_error = writePiece();
    else
        m_error = complete();
    return !m_isDone && !m_error;
}

Result<QString> RecoveryWriter::finish()
{
    while (step()) {
    }
    if (m_error)
        return *m_error;
    return m_about.project;
}

std::optional<Error> RecoveryWriter::begin()
{
    if (m_dataFile.size() + m_description.size() + kMaxNoteSize > m_store.m_limits.bytes)
        return Error{Error::Limit, Text::tr("it is larger than the %1 MB for all of them")
                                       .arg(m_store.m_limits.bytes / 1024 / 1024)};
    const QString part = m_store.m_folder + u'/' + kPart + uniqueNumber();
    if (!QDir().mkpath(part))
        return Error{Error::File, Text::tr("the folder %1 can't be made").arg(part)};
    m_part = part;
    QFile description(part + u'/' + QFileInfo(m_about.description).fileName());
    if (!description.open(QIODevice::WriteOnly) ||
        description.write(m_description) != m_description.size() || !description.flush())
        return Error{Error::File, writeFault(description.errorString())};
    m_file.setFileName(part + u'/' + baseName() + QStringLiteral(".xml"));
    if (!m_file.open(QIODevice::WriteOnly))
        return Error{Error::File, writeFault(m_file.errorString())};
    return {};
}

std::optional<Error> RecoveryWriter::writePiece()
{
    const qsizetype size = std::min(kPiece, m_dataFile.size() - m_written);
    if (m_file.write(m_dataFile.constData() + m_written, size) != size || !m_file.flush())
        return Error{Error::File, writeFault(m_file.errorString())};
    m_written += size;
    return {};
}

std::optional<Error> RecoveryWriter::complete()
{
    m_file.close();
    const ProjectFile project{QFileInfo(m_about.description).fileName(),
                              QFileInfo(m_file.fileName()).fileName()};
    for (const auto &[name, content] :
         {std::pair(baseName() + kProjectSuffix, projectFileText({}, project)),
          std::pair(kNote, noteText(m_about))}) {
        QFile file(m_part + u'/' + name);
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() ||
            !file.flush())
            return Error{Error::File, writeFault(file.errorString())};
    }
    const QString entry = m_store.m_folder + u'/' + entryName(m_about.time);
    if (!QDir().rename(m_part, entry))
        return Error{Error::File, Text::tr("the folder %1 can't be made").arg(entry)};
    m_part.clear();
    m_about.project = entry + u'/' + baseName() + kProjectSuffix;
    m_isDone = true;
    m_store.prune();
    return {};
}

} // namespace KEO
