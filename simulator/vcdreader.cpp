#include "vcdreader.h"

#include <QIODevice>
#include <QRegularExpression>

#include <algorithm>
#include <vector>

namespace Sim {

namespace {

constexpr qsizetype kChunk = 64 * 1024;
constexpr qsizetype kMaxToken = 256 * 1024;
constexpr qsizetype kMaxNets = 1'000'000;
constexpr int kMaxWidth = 65536;
constexpr int kMaxScopes = 256;
constexpr qsizetype kMaxScopeText = 4096;

/// A name with its index or range taken off: "top/data[7:0]" gives "top.data", 7 and 0.
struct NetName
{
    QString path;
    int first = 0;
    int last = 0;
    bool hasRange = false;
};

NetName parseNetName(const QString &text)
{
    static const QRegularExpression kRange(
        QStringLiteral("^(.+)\\[(-?\\d{1,9})(?::(-?\\d{1,9}))?\\]$"));
    NetName name;
    name.path = text;
    name.path.remove(u'\\').remove(u' ').replace(u'/', u'.');
    const QRegularExpressionMatch match = kRange.match(name.path);
    if (match.hasMatch()) {
        name.path = match.captured(1);
        name.first = match.captured(2).toInt();
        name.last = match.captured(3).isEmpty() ? name.first : match.captured(3).toInt();
        name.hasRange = true;
    }
    while (name.path.startsWith(u'.'))
        name.path.remove(0, 1);
    return name;
}

QString leafOf(const QString &path)
{
    return path.mid(path.lastIndexOf(u'.') + 1);
}

bool endsWithPath(const QString &path, const QString &end)
{
    return path.endsWith(end) &&
           (path.size() == end.size() || path.at(path.size() - end.size() - 1) == u'.');
}

/// Distance of \a index from the least significant bit, or nothing when it is out of range.
std::optional<int> bitOf(const VcdNet &net, int index)
{
    const int bit = net.first >= net.last ? index - net.last : net.last - index;
    if (!net.hasRange || bit < 0 || bit >= net.width)
        return std::nullopt;
    return bit;
}

/// Cuts a device's bytes at white space, a chunk in memory at a time.
class Tokens final
{
public:
    explicit Tokens(QIODevice &device) : m_device(device) {}

    /// The next token; empty at the end. A token beyond the limit sets tooLong(). Valid until the
    /// next call.
    QByteArrayView next()
    {
        m_token.resize(0);
        while (fill()) {
            const char *begin = m_chunk.constData() + m_at;
            const char *end = m_chunk.constData() + m_chunk.size();
            const char *stop = std::find_if(begin, end, isBlank);
            if (stop != begin && m_token.size() + (stop - begin) > kMaxToken) {
                m_tooLong = true;
                return {};
            }
            m_at += stop - begin;
            if (stop != end && stop != begin && m_token.isEmpty())
                return {begin, stop}; // the blank stays for the next call, as for the line number
            m_token.append(begin, stop - begin);
            if (stop == end)
                continue;
            if (!m_token.isEmpty())
                break;
            if (*stop == '\n')
                ++m_line;
            ++m_at;
        }
        return m_token;
    }

    [[nodiscard]] qint64 line() const { return m_line; }
    [[nodiscard]] bool tooLong() const { return m_tooLong; }

private:
    static bool isBlank(char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; }

    bool fill()
    {
        if (m_at < m_chunk.size())
            return true;
        m_chunk = m_device.read(kChunk);
        m_at = 0;
        return !m_chunk.isEmpty();
    }

    QIODevice &m_device;
    QByteArray m_chunk;
    qsizetype m_at = 0;
    QByteArray m_token;
    qint64 m_line = 1;
    bool m_tooLong = false;
};

/// Numbers for the codes of nets, counted from 0 as they come. Most codes have one or two
/// characters; these take no hash.
class CodeTable final
{
public:
    [[nodiscard]] int size() const { return m_size; }

    int add(QByteArrayView code)
    {
        if (const int known = find(code); known >= 0)
            return known;
        if (isShort(code))
            m_short[place(code)] = m_size;
        else
            m_long.insert(code.toByteArray(), m_size);
        return m_size++;
    }

    /// Below 0 for a code that was never added.
    [[nodiscard]] int find(QByteArrayView code) const
    {
        return isShort(code) ? m_short[place(code)]
                             : m_long.value(QByteArray::fromRawData(code.data(), code.size()), -1);
    }

private:
    static bool isShort(QByteArrayView code) { return code.size() == 1 || code.size() == 2; }
    static size_t place(QByteArrayView code)
    {
        return uchar(code.front()) + (code.size() == 2 ? size_t(256) * (1 + uchar(code[1])) : 0);
    }

    std::vector<int> m_short = std::vector<int>(size_t(256) * 257, -1);
    QHash<QByteArray, int> m_long;
    int m_size = 0;
};

class VcdParser final
{
public:
    VcdParser(QIODevice &device, VcdListener &listener) : m_tokens(device), m_listener(listener) {}

    QString parse()
    {
        readHeader();
        if (m_error.isEmpty())
            readChanges();
        if (m_tokens.tooLong())
            fail(QStringLiteral("a word is longer than %1 characters").arg(kMaxToken));
        return m_error;
    }

private:
    void fail(const QString &error)
    {
        if (m_error.isEmpty() || m_tokens.tooLong())
            m_error = QStringLiteral("line %1: %2").arg(m_tokens.line()).arg(error);
    }

    void readHeader()
    {
        while (m_error.isEmpty()) {
            const QByteArray word = m_tokens.next().toByteArray();
            if (word.isEmpty())
                return fail(QStringLiteral("the file ends before $enddefinitions"));
            if (word == "$enddefinitions") {
                skipSection();
                const QString error = m_listener.netsKnown(m_nets, m_codes.size());
                if (!error.isEmpty())
                    m_error = error;
                return;
            }
            if (word == "$scope")
                openScope();
            else if (word == "$upscope")
                closeScope();
            else if (word == "$var")
                readNet();
            else if (word.startsWith('$'))
                skipSection();
            else
                fail(QStringLiteral("\"%1\" is no part of a value change dump's header")
                         .arg(QString::fromLatin1(word.left(20))));
        }
    }

    void skipSection()
    {
        QByteArrayView word;
        do {
            word = m_tokens.next();
        } while (!word.isEmpty() && word != "$end");
    }

    /// The words up to $end.
    QList<QByteArray> section()
    {
        QList<QByteArray> words;
        for (QByteArrayView word = m_tokens.next(); !word.isEmpty() && word != "$end";
             word = m_tokens.next()) {
            if (words.size() == 16) {
                fail(QStringLiteral("a declaration has too many words"));
                return words;
            }
            words.append(word.toByteArray());
        }
        return words;
    }

    void openScope()
    {
        const QList<QByteArray> words = section();
        const QString name = words.size() > 1 ? QString::fromLatin1(words.at(1)) : QString();
        const QString scope = m_scopes.isEmpty() ? name : m_scopes.last() + u'.' + name;
        if (m_scopes.size() >= kMaxScopes || scope.size() > kMaxScopeText)
            return fail(QStringLiteral("the scopes are nested too deep"));
        m_scopes.append(scope);
    }

    void closeScope()
    {
        skipSection();
        if (m_scopes.isEmpty())
            return fail(QStringLiteral("$upscope closes a scope that wasn't opened"));
        m_scopes.removeLast();
    }

    /// $var type width code reference $end; the reference's range may be a word of its own.
    void readNet()
    {
        const QList<QByteArray> words = section();
        if (words.size() < 4)
            return fail(QStringLiteral("a $var needs a type, a width, a code and a name"));
        bool ok = false;
        VcdNet net;
        net.width = words.at(1).toInt(&ok);
        if (words.at(0) == "real" || words.at(0) == "realtime" || words.at(0) == "string")
            return; // no bits to look at, and some write odd widths here
        if (!ok || net.width < 1 || net.width > kMaxWidth)
            return fail(
                QStringLiteral("the width of a $var must be between 1 and %1").arg(kMaxWidth));
        if (m_nets.size() >= kMaxNets)
            return fail(QStringLiteral("more than %1 variables").arg(kMaxNets));

        const NetName name = parseNetName(QString::fromLatin1(words.mid(3).join()));
        net.scope = m_scopes.isEmpty() ? QString() : m_scopes.last();
        net.name = name.path;
        net.first = name.first;
        net.last = name.last;
        net.hasRange = name.hasRange;
        if (!net.hasRange && net.width > 1) {
            net.first = net.width - 1;
            net.hasRange = true;
        }
        net.code = m_codes.add(words.at(2));
        m_nets.add(net);
    }

    void readChanges()
    {
        while (m_error.isEmpty()) {
            const QByteArrayView word = m_tokens.next();
            if (word.isEmpty())
                break;
            switch (word.at(0)) {
            case '#':
                if (!readTime(word))
                    return;
                break;
            case '$':
                readCommand(word);
                break;
            case 'b':
            case 'B': {
                const QByteArray bits = word.sliced(1).toByteArray();
                tell(m_tokens.next(), bits);
                break;
            }
            case 'r':
            case 'R':
            case 's':
            case 'S':
                m_tokens.next(); // the code; no bits
                break;
            default:
                readScalar(word);
            }
        }
        if (m_error.isEmpty())
            m_listener.timePassed();
    }

    /// False when the listener has had enough.
    bool readTime(QByteArrayView word)
    {
        bool ok = false;
        const quint64 time = word.sliced(1).toULongLong(&ok);
        if (!ok || time < m_time) {
            fail(ok ? QStringLiteral("time runs backwards")
                    : QStringLiteral("\"%1\" is no time").arg(shown(word)));
            return false;
        }
        const bool isLater = time > m_time;
        m_time = time;
        return !isLater || m_listener.timePassed();
    }

    void readCommand(QByteArrayView word)
    {
        // The dump sections hold plain changes and end with a bare $end.
        if (word != "$end" && !word.startsWith("$dump"))
            skipSection();
    }

    void readScalar(QByteArrayView word)
    {
        const char level = word.front();
        if (!QByteArrayView("01xXzZuUwWlLhH-").contains(level))
            return fail(QStringLiteral("\"%1\" is no value change").arg(shown(word)));
        tell(word.size() > 1 ? word.sliced(1) : m_tokens.next(), QByteArrayView(&level, 1));
    }

    static QString shown(QByteArrayView word)
    {
        return QString::fromLatin1(word.first(std::min<qsizetype>(word.size(), 20)));
    }

    void tell(QByteArrayView code, QByteArrayView bits)
    {
        const int known = m_codes.find(code); // if not: of a variable without bits
        if (known >= 0 && m_listener.wants(known))
            m_listener.change(known, bits);
    }

    Tokens m_tokens;
    VcdListener &m_listener;
    VcdNets m_nets;
    CodeTable m_codes;
    QStringList m_scopes;
    quint64 m_time = 0;
    QString m_error;
};

} // namespace

void VcdNets::add(VcdNet net)
{
    m_byLeaf.insert(leafOf(net.name), m_nets.size());
    m_nets.append(std::move(net));
}

Outcome<VcdNets::Bit> VcdNets::find(const QString &wanted) const
{
    const NetName name = parseNetName(wanted);
    std::optional<Bit> found;
    qsizetype foundDepth = 0;
    qsizetype foundNet = 0;
    QString reason = QStringLiteral("is not in the dump");
    const auto [begin, end] = m_byLeaf.equal_range(leafOf(name.path));
    for (auto at = begin; at != end; ++at) {
        const VcdNet &net = m_nets.at(*at);
        const QString path = net.scope.isEmpty() ? net.name : net.scope + u'.' + net.name;
        if (!endsWithPath(path, name.path))
            continue;
        std::optional<int> bit;
        if (name.hasRange)
            bit = name.first == name.last ? bitOf(net, name.first) : std::nullopt;
        else if (net.width == 1 && net.first == 0 && net.last == 0) // not bit 3 of a vector
            bit = 0;
        if (!bit) {
            reason = name.hasRange ? QStringLiteral("has no such bit in the dump")
                                   : QStringLiteral("is a vector of %1 bits").arg(net.width);
            continue;
        }
        const qsizetype depth = path.count(u'.');
        if (!found || depth < foundDepth || (depth == foundDepth && *at < foundNet)) {
            found = Bit{net.code, *bit};
            foundDepth = depth;
            foundNet = *at;
        }
    }
    if (!found)
        return Failure{QStringLiteral("the net %1 %2").arg(wanted, reason)};
    return *found;
}

QString readVcd(QIODevice &device, VcdListener &listener)
{
    return VcdParser(device, listener).parse();
}

} // namespace Sim
