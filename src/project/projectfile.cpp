#include "projectfile.h"

#include <base/wholefile.h>

#include <QCoreApplication>
#include <QSettings>

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

} // namespace

Result<ProjectFile> readProjectFile(const QString &path)
{
    const Result<QByteArray> bytes = readWholeFile(path, kMaxProjectFileSize, LineEnds::AsTheyAre);
    if (!bytes)
        return bytes.error();
    if (holdsSerialisedObject(*bytes))
        return Error{Error::Format,
                     QCoreApplication::translate(
                         "KEO::ProjectFile", "The project file %1 holds a value that is no text.")
                         .arg(path)};
    const QSettings settings(path, QSettings::IniFormat);
    return ProjectFile{plainText(settings, QStringLiteral("KEO_FILE")),
                       plainText(settings, QStringLiteral("DATA_FILE"))};
}

} // namespace KEO
