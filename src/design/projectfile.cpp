#include "projectfile.h"

#include <base/wholefile.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QTemporaryDir>

namespace KEO {

namespace {

constexpr qint64 kMaxProjectFileSize = 1024 * 1024;

int digitValue(char c, int base)
{
    const char *const digits = "0123456789abcdef";
    const char lower = c >= 'A' && c <= 'F' ? char(c - 'A' + 'a') : c;
    for (int value = 0; value < base; ++value) {
        if (digits[value] == lower)
            return value;
    }
    return -1;
}

/// Reads the digits of an escaped character from \a at on, as many as there are, as the INI reader
/// does; a character beyond ASCII becomes '?'.
char escapedCharacter(QByteArrayView text, qsizetype &at, int base)
{
    ushort code = 0;
    for (int digit; at < text.size() && (digit = digitValue(text[at], base)) >= 0; ++at)
        code = ushort(code * base + digit);
    return code < 128 ? char(code) : '?';
}

/// \a ini as its values look once quotes and escapes are resolved. What the INI reader leaves out
/// is left out here too, so that nothing can hide behind it; the line structure is lost.
QByteArray resolved(QByteArrayView ini)
{
    QByteArray plain;
    for (qsizetype i = 0; i < ini.size();) {
        const char c = ini[i++];
        if (c == '"')
            continue;
        if (c != '\\' || i == ini.size()) {
            plain += c;
            continue;
        }
        const char escape = ini[i];
        if (escape == 'x') {
            ++i;
            if (i < ini.size() && digitValue(ini[i], 16) >= 0)
                plain += escapedCharacter(ini, i, 16);
        } else if (digitValue(escape, 8) >= 0) {
            plain += escapedCharacter(ini, i, 8);
        } else {
            ++i;
            if (QByteArrayView("abfnrtv'?\\").contains(escape))
                plain += '?';
            else if (escape == '\r' && i < ini.size() && ini[i] == '\n')
                ++i;
        }
    }
    return plain;
}

const QString kKeoFile = QStringLiteral("KEO_FILE");
const QString kDataFile = QStringLiteral("DATA_FILE");

bool holdsSerialisedObject(QByteArrayView ini)
{
    const QByteArray plain = resolved(ini);
    return plain.contains("@Variant(") || plain.contains("@DateTime(");
}

QString plainText(const QSettings &settings, const QString &key)
{
    const QVariant value = settings.value(key);
    return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ProjectFile)
};

/// The toolkit's INI code works on a private copy of the file. On the file itself it would read
/// something else than what was checked, wait for locks of other hosts, take what it remembers of a
/// path for what is there now, and on a full disk leave half a file.
class IniCopy final
{
public:
    explicit IniCopy(const QByteArray &ini)
    {
        QFile file(path());
        // Not writeWholeFile, which waits for the disk.
        if (!m_directory.isValid() || !file.open(QIODevice::WriteOnly) ||
            file.write(ini) != ini.size() || !file.flush())
            m_fault = Error{Error::File,
                            Text::tr("No temporary file can be made in %1.").arg(QDir::tempPath())};
    }

    [[nodiscard]] QString path() const { return m_directory.filePath(QStringLiteral("copy.ini")); }
    [[nodiscard]] const std::optional<Error> &fault() const { return m_fault; }

private:
    QTemporaryDir m_directory;
    std::optional<Error> m_fault;
};

bool isIniText(const QByteArray &bytes)
{
    const IniCopy copy(bytes);
    if (copy.fault())
        return false;
    const QSettings settings(copy.path(), QSettings::IniFormat);
    (void)settings.allKeys(); // only now it looks at the lines
    return settings.status() == QSettings::NoError;
}

/// What is to stay of the file at \a path: nothing if it is none of ours.
QByteArray presentContent(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxProjectFileSize, LineEnds::AsTheyAre);
    const bool isOurs = bytes && !holdsSerialisedObject(*bytes) && isIniText(*bytes);
    return isOurs ? *bytes : QByteArray();
}

} // namespace

Result<ProjectFile> readProjectFile(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxProjectFileSize, LineEnds::AsTheyAre);
    if (!bytes)
        return bytes.error();
    Result<ProjectFile> project = parseProjectFile(*bytes);
    if (!project)
        return Error{project.error().kind, path + QStringLiteral(": ") + project.error().message};
    return project;
}

Result<ProjectFile> parseProjectFile(const QByteArray &ini)
{
    if (holdsSerialisedObject(ini))
        return Error{Error::Format, Text::tr("The project file holds a value that is no text.")};
    const IniCopy copy(ini);
    if (copy.fault())
        return *copy.fault();
    const QSettings settings(copy.path(), QSettings::IniFormat);
    return ProjectFile{plainText(settings, kKeoFile), plainText(settings, kDataFile)};
}

std::optional<Error> writeProjectFile(const QString &path, const ProjectFile &project)
{
    const IniCopy copy(presentContent(path));
    if (copy.fault())
        return copy.fault();
    {
        QSettings settings(copy.path(), QSettings::IniFormat);
        settings.setValue(kKeoFile, QDir::toNativeSeparators(project.keoFile));
        settings.setValue(kDataFile, QDir::toNativeSeparators(project.dataFile));
        settings.sync();
        if (settings.status() != QSettings::NoError)
            return Error{Error::File, Text::tr("The text of %1 can't be made.").arg(path)};
    }
    const Result<QByteArray> ini =
        readWholeFile(copy.path(), 2 * kMaxProjectFileSize, LineEnds::AsTheyAre);
    if (!ini)
        return ini.error();
    return writeWholeFile(path, *ini, LineEnds::AsTheyAre);
}

QString dataFileBeside(const QString &projectPath)
{
    const QFileInfo info(projectPath);
    return QStringLiteral("%1/%2.xml").arg(info.path(), info.baseName());
}

} // namespace KEO
