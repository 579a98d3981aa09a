#include "initext.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

#ifdef Q_OS_WIN
const QByteArray kLineEnd = "\r\n";
#else
const QByteArray kLineEnd = "\n";
#endif
constexpr QByteArrayView kByteOrderMark = "\xEF\xBB\xBF";
constexpr QByteArrayView kEscapes = "abfnrtv\"?'\\";
constexpr QByteArrayView kEscaped = "\a\b\f\n\r\t\v\"?'\\";

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

bool endsLine(char c)
{
    return c == '\n' || c == '\r';
}

int digitValue(char c, int base)
{
    const int value = c >= '0' && c <= '9'   ? c - '0'
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10
                      : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                             : base;
    return value < base ? value : -1;
}

qsizetype skipBlanks(QByteArrayView text, qsizetype at)
{
    while (at < text.size() && isBlank(text[at]))
        ++at;
    return at;
}

/// The end of the line that starts at \a at, before its line end or the comment behind it, and the
/// first '=' outside of quotes, or -1.
qsizetype lineEnd(QByteArrayView text, qsizetype at, qsizetype *equals)
{
    bool inQuotes = false;
    *equals = -1;
    for (; at < text.size(); ++at) {
        const char c = text[at];
        if (c == '\\') {
            ++at; // a line that ends in it goes on
            if (at + 1 < text.size() && endsLine(text[at]) && endsLine(text[at + 1]) &&
                text[at] != text[at + 1])
                ++at;
        } else if (c == '"') {
            inQuotes = !inQuotes;
        } else if (!inQuotes && (endsLine(c) || c == ';')) {
            return at;
        } else if (!inQuotes && c == '=' && *equals < 0) {
            *equals = at;
        }
    }
    return text.size();
}

/// Undoes quotes and escapes of a value.
class ValueReader final
{
public:
    explicit ValueReader(QByteArrayView text) : m_text(text) {}

    /// One text, or the several of a list.
    QStringList read()
    {
        QStringList texts;
        do {
            texts.append(readText());
        } while (m_at < m_text.size() || m_isSeparated);
        return texts;
    }

private:
    QString readText()
    {
        m_text = m_text.sliced(std::exchange(m_at, 0));
        m_result.clear();
        m_kept = 0;
        bool isQuoted = false;
        bool inQuotes = false;
        m_isSeparated = false;
        m_at = skipBlanks(m_text, m_at);
        while (m_at < m_text.size() && !m_isSeparated) {
            const char c = m_text[m_at++];
            if (c == '\\') {
                readEscape();
            } else if (c == '"') {
                isQuoted = true;
                inQuotes = !inQuotes;
                if (!inQuotes)
                    m_at = skipBlanks(m_text, m_at);
            } else if (c == ',' && !inQuotes) {
                m_isSeparated = true;
            } else {
                readPlain(m_at - 1);
            }
        }
        while (!isQuoted && m_result.size() > m_kept && isBlank(m_result.back().toLatin1()))
            m_result.chop(1);
        return m_result;
    }

    void readPlain(qsizetype start)
    {
        while (m_at < m_text.size() && !QByteArrayView("\\\",").contains(m_text[m_at]))
            ++m_at;
        m_result += QString::fromUtf8(m_text.sliced(start, m_at - start));
    }

    void readEscape()
    {
        if (m_at == m_text.size())
            return;
        const char c = m_text[m_at++];
        if (const qsizetype known = kEscapes.indexOf(c); known >= 0) {
            m_result += QLatin1Char(kEscaped[known]);
        } else if (c == 'x') {
            readNumber(16);
        } else if (digitValue(c, 8) >= 0) {
            --m_at;
            readNumber(8);
        } else if (endsLine(c) && m_at < m_text.size() && endsLine(m_text[m_at]) &&
                   m_text[m_at] != c) {
            ++m_at;
        }
        m_kept = m_result.size(); // blanks that were escaped stay
    }

    void readNumber(int base)
    {
        char16_t unit = 0;
        int digit = -1;
        const qsizetype start = m_at;
        for (; m_at < m_text.size() && (digit = digitValue(m_text[m_at], base)) >= 0; ++m_at)
            unit = char16_t(unit * base + digit);
        if (m_at > start)
            m_result += QChar(unit);
    }

    QByteArrayView m_text;
    QString m_result;
    qsizetype m_at = 0;
    qsizetype m_kept = 0;       ///< length of the result up to which nothing is trimmed
    bool m_isSeparated = false; ///< another text of the list follows
};

QByteArray escaped(QString value)
{
    if (value.startsWith(u'@'))
        value.prepend(u'@'); // else it would be an object's
    QByteArray text;
    bool needsQuotes = value.startsWith(u' ') || value.endsWith(u' ');
    bool isAfterNumber = false; // a digit would go on with it
    for (const char c : value.toUtf8()) {
        needsQuotes = needsQuotes || QByteArrayView(";,=").contains(c);
        const qsizetype known = kEscaped.indexOf(c);
        const bool isNumber =
            (uchar(c) < 0x20 && known < 0) || (isAfterNumber && digitValue(c, 16) >= 0);
        if (isNumber)
            text += "\\x" + QByteArray::number(uchar(c), 16);
        else if (known >= 0 && c != '?' && c != '\'')
            (text += '\\') += kEscapes[known];
        else
            text += c;
        isAfterNumber = isNumber;
    }
    return needsQuotes ? '"' + text + '"' : text;
}

bool isSerialised(const QString &value)
{
    return value.startsWith(QLatin1String("@Variant(")) ||
           value.startsWith(QLatin1String("@DateTime("));
}

/// The text that a value stands for; empty if it stands for anything else.
QString plainText(const QString &value)
{
    static const QLatin1String kText("@String(");
    if (value.startsWith(QLatin1String("@@")))
        return value.sliced(1);
    if (!value.startsWith(u'@') || !value.endsWith(u')'))
        return value;
    return value.startsWith(kText) ? value.sliced(kText.size()).chopped(1) : QString();
}

} // namespace

IniText::IniText(const QByteArray &bytes) : m_bytes(bytes)
{
    bool inDefault = true;
    qsizetype at = bytes.startsWith(kByteOrderMark) ? kByteOrderMark.size() : 0;
    while (at < bytes.size()) {
        if (isBlank(bytes[at]) || endsLine(bytes[at])) {
            ++at;
            continue;
        }
        qsizetype equals = -1;
        qsizetype end = at;
        if (bytes[at] == ';') {
            while (end < bytes.size() && !endsLine(bytes[end]))
                ++end;
        } else {
            end = lineEnd(bytes, at, &equals);
            readLine(at, end, equals, &inDefault);
        }
        at = end;
    }
}

void IniText::readLine(qsizetype start, qsizetype end, qsizetype equals, bool *inDefault)
{
    qsizetype next = end; // behind the line end
    if (next < m_bytes.size() && m_bytes[next] == '\r')
        ++next;
    if (next < m_bytes.size() && m_bytes[next] == '\n')
        ++next;
    const QByteArray line = m_bytes.mid(start, end - start);
    if (line.startsWith('[')) {
        const qsizetype close = line.indexOf(']');
        m_isWellFormed = m_isWellFormed && close > 0;
        *inDefault = line.mid(1, close - 1).trimmed().compare("general", Qt::CaseInsensitive) == 0;
        const qsizetype newLine = m_bytes.indexOf('\n', end); // behind a comment
        if (*inDefault && m_defaultStart < 0 && newLine >= 0)
            m_defaultStart = newLine + 1;
        return;
    }
    if (equals < 0) {
        m_isWellFormed = false;
        return;
    }
    const Entry entry{start, next, m_bytes.mid(start, equals - start).trimmed(),
                      m_bytes.mid(equals + 1, end - equals - 1), *inDefault};
    m_holdsObject =
        m_holdsObject || std::ranges::any_of(ValueReader(entry.value).read(), isSerialised);
    m_entries.append(entry);
}

QString IniText::value(const QString &key) const
{
    const auto entry =
        std::find_if(m_entries.crbegin(), m_entries.crend(), [&](const Entry &candidate) {
            return candidate.isDefault && candidate.key == key.toUtf8();
        });
    if (entry == m_entries.crend())
        return {};
    const QStringList texts = ValueReader(entry->value).read();
    return texts.size() == 1 ? plainText(texts.first()) : QString();
}

QByteArray IniText::with(const QList<QPair<QString, QString>> &values) const
{
    QByteArray lines;
    for (const auto &[key, value] : values)
        lines += key.toUtf8() + '=' + escaped(value) + kLineEnd;
    const bool hasHeader = m_defaultStart >= 0;
    const auto isReplaced = [&](const Entry &entry) {
        return entry.isDefault && std::ranges::any_of(values, [&](const auto &value) {
                   return value.first.toUtf8() == entry.key;
               });
    };
    QByteArray rest;      // from behind the header on
    QByteArray beforeIt;  // up to the header
    qsizetype copied = 0; // bytes that are dealt with
    const auto copyTo = [&](qsizetype end) {
        const qsizetype head = std::clamp(m_defaultStart, copied, end);
        beforeIt += m_bytes.mid(copied, hasHeader ? head - copied : 0);
        const qsizetype from = hasHeader ? head : copied;
        rest += m_bytes.mid(from, end - from);
    };
    for (const Entry &entry : m_entries) {
        if (!isReplaced(entry))
            continue;
        copyTo(entry.start);
        copied = entry.end;
    }
    copyTo(m_bytes.size());
    if (hasHeader)
        return beforeIt + lines + rest;
    if (rest.startsWith(kByteOrderMark))
        rest.remove(0, kByteOrderMark.size());
    return "[General]" + kLineEnd + lines + (rest.startsWith('[') ? kLineEnd : QByteArray()) + rest;
}

} // namespace KEO
