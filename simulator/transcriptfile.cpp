#include "transcriptfile.h"

#include <QBitArray>

#include <algorithm>
#include <utility>

namespace Sim {

namespace {

constexpr char kFirstLine[] = "# Signal Scope transcript 1";
constexpr int kMaxListLevels = 4;

/// Reads one line from its front. After the first flaw nothing is read any more.
class LineReader final
{
public:
    explicit LineReader(QByteArrayView line) : m_rest(line), m_size(line.size()) {}

    [[nodiscard]] bool isAtEnd() const { return m_rest.isEmpty(); }
    [[nodiscard]] bool isFlawed() const { return m_isFlawed; }
    [[nodiscard]] QByteArrayView rest() const { return m_rest; }
    /// Where the flaw is, from 1.
    [[nodiscard]] qsizetype column() const { return m_size - m_flawed + 1; }

    bool skip(QByteArrayView text)
    {
        if (!m_rest.startsWith(text))
            return false;
        m_rest = m_rest.sliced(text.size());
        return true;
    }
    void expect(QByteArrayView text)
    {
        if (!skip(text))
            flaw();
    }
    void expectEnd()
    {
        if (!isAtEnd())
            flaw();
    }

    void time()
    {
        while (skip(" ")) {
        }
        if (digits().isEmpty())
            flaw();
        expect(".");
        digits();
    }

    QString name()
    {
        if (m_rest.startsWith('"') || m_rest.startsWith("null"))
            return text();
        const QByteArrayView letters = run([](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                   c == '_' || c == '-' || c == '.';
        });
        if (letters.isEmpty())
            flaw();
        return QString::fromLatin1(letters.data(), letters.size());
    }

    /// The entries up to the end of the line. Of a key that stands twice the first one counts.
    Packet packet()
    {
        Packet packet;
        while (!isAtEnd() && !m_isFlawed) {
            expect(" ");
            const QString key = name();
            expect("=");
            const QVariant found = value(0);
            if (!packet.contains(key))
                packet.insert(key, found);
        }
        return packet;
    }

    QByteArray hex(qsizetype bytes)
    {
        if (bytes * 2 > m_rest.size()) {
            flaw();
            return {};
        }
        QByteArray raw(bytes, '\0');
        for (qsizetype i = 0; i < bytes * 2 && !m_isFlawed; ++i) {
            const int digit = hexDigit(m_rest.front());
            if (digit < 0)
                flaw();
            else
                m_rest = m_rest.sliced(1);
            raw[i / 2] = char(raw[i / 2] << 4 | digit);
        }
        return raw;
    }

private:
    void flaw()
    {
        if (!std::exchange(m_isFlawed, true))
            m_flawed = m_rest.size();
        m_rest = {};
    }

    template <typename Test>
    QByteArrayView run(Test belongs)
    {
        const auto *const end = std::find_if_not(m_rest.begin(), m_rest.end(), belongs);
        const QByteArrayView found(m_rest.begin(), end);
        m_rest = m_rest.sliced(found.size());
        return found;
    }

    QByteArrayView digits()
    {
        return run([](char c) { return c >= '0' && c <= '9'; });
    }

    static int hexDigit(char c)
    {
        if (c >= '0' && c <= '9')
            return c - '0';
        return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    }

    QString text()
    {
        if (skip("null"))
            return {};
        expect("\"");
        QString text = QStringLiteral("");
        while (!m_isFlawed && !skip("\"")) {
            if (isAtEnd()) {
                flaw();
            } else if (skip("\\u")) {
                const QByteArray unit = hex(2);
                if (!m_isFlawed)
                    text.append(QChar(uchar(unit[1]), uchar(unit[0])));
            } else {
                skip("\\");
                const QByteArrayView letter = m_rest.first(std::min<qsizetype>(1, m_rest.size()));
                text.append(QLatin1String(letter.data(), letter.size()));
                m_rest = m_rest.sliced(letter.size());
            }
        }
        return text;
    }

    QVariant value(int level)
    {
        if (m_rest.startsWith('"') || m_rest.startsWith("null"))
            return text();
        if (skip("bits("))
            return bits();
        if (skip("["))
            return list(level + 1);
        return number();
    }

    QVariant number()
    {
        const bool isNegative = skip("-");
        bool isNumber = false;
        const qint64 value = digits().toByteArray().toLongLong(&isNumber);
        const qint64 number = isNegative ? -value : value;
        if (skip("u")) {
            if (!isNumber || isNegative || number > 0xffffffffll)
                flaw();
            return quint32(number);
        }
        if (!isNumber || number != qint32(number))
            flaw();
        return qint32(number);
    }

    QBitArray bits()
    {
        bool isNumber = false;
        const quint32 size = digits().toByteArray().toUInt(&isNumber);
        if (!isNumber)
            flaw();
        expect(":");
        const QByteArray bytes = hex(qsizetype((quint64(size) + 7) / 8));
        expect(")");
        return m_isFlawed ? QBitArray() : QBitArray::fromBits(bytes.constData(), qsizetype(size));
    }

    QVariantList list(int level)
    {
        QVariantList values;
        if (level > kMaxListLevels)
            flaw();
        if (skip("]"))
            return values;
        do {
            values.append(value(level));
        } while (!m_isFlawed && skip(","));
        expect("]");
        return values;
    }

    QByteArrayView m_rest;
    qsizetype m_size;       ///< of the line
    qsizetype m_flawed = 0; ///< bytes from the flaw on
    bool m_isFlawed = false;
};

/// Reads what stands behind the name of the server; nothing if it is an event.
std::optional<TranscriptLine> readRest(LineReader &reader)
{
    using Kind = TranscriptLine::Kind;
    TranscriptLine line;
    if (reader.skip(" * "))
        return std::nullopt;
    if (reader.skip(" !")) {
        line.kind = Kind::Malformed;
        reader.skip(" "); // an editor may have taken it from a line without bytes
        line.payload = reader.hex(reader.rest().size() / 2);
        reader.expectEnd();
        return line;
    }
    line.kind = reader.skip(" >") ? Kind::ToServer : Kind::FromServer;
    if (line.kind == Kind::FromServer)
        reader.expect(" <");
    line.packet = reader.packet();
    return line;
}

} // namespace

Outcome<QList<TranscriptLine>> readTranscript(QByteArrayView text, const QString &server)
{
    QList<TranscriptLine> lines;
    const Failure other{QStringLiteral("line 1: it is no transcript of Signal Scope")};
    if (text.startsWith("\xef\xbb\xbf")) // by an editor, as the carriage returns below are by mail
        text = text.sliced(3);
    int number = 0;
    while (!text.isEmpty()) {
        const qsizetype found = text.indexOf('\n');
        const bool isWhole = found >= 0;
        QByteArrayView line = isWhole ? text.first(found) : text;
        text = text.sliced(isWhole ? found + 1 : text.size());
        if (line.endsWith('\r'))
            line.chop(1);
        ++number;
        if (number == 1 && line != QByteArrayView(kFirstLine))
            return other;
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        LineReader reader(line);
        reader.time();
        reader.expect(" ");
        const bool isWanted = reader.name() == server;
        std::optional<TranscriptLine> entry;
        if (isWanted && !reader.isFlawed())
            entry = readRest(reader);
        if (reader.isFlawed()) {
            if (!isWhole)
                break;
            return Failure{QStringLiteral("line %1, column %2: this is no line of a transcript")
                               .arg(number)
                               .arg(reader.column())};
        }
        if (entry) {
            entry->number = number;
            lines.append(*entry);
        }
    }
    if (number == 0)
        return other;
    return lines;
}

} // namespace Sim
