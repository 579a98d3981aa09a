#pragma once

#include "boundedxml.h"

#include <QByteArrayView>
#include <QCoreApplication>
#include <QStringView>

#include <optional>

/// The part of BoundedXmlReader that looks at markup before the parser does.
namespace KEO::MarkupCheck {

using namespace Qt::StringLiterals;

struct MarkupText
{
    Q_DECLARE_TR_FUNCTIONS(KEO::BoundedXml)
};

// Text is UTF-16 or bytes of UTF-8; what markup is made of looks the same in both.
inline qsizetype find(QStringView text, QLatin1StringView wanted, qsizetype from)
{
    return text.indexOf(wanted, from);
}

inline qsizetype find(QByteArrayView text, QLatin1StringView wanted, qsizetype from)
{
    return text.indexOf(QByteArrayView(wanted.data(), wanted.size()), from);
}

inline qsizetype findTag(QStringView text, qsizetype from)
{
    return text.indexOf(u'<', from);
}

inline qsizetype findTag(QByteArrayView text, qsizetype from)
{
    return text.indexOf('<', from);
}

inline bool begins(QStringView text, QLatin1StringView wanted)
{
    return text.startsWith(wanted);
}

inline bool begins(QByteArrayView text, QLatin1StringView wanted)
{
    return text.startsWith(QByteArrayView(wanted.data(), wanted.size()));
}

inline char16_t unit(QChar c)
{
    return c.unicode();
}

inline char16_t unit(char c)
{
    return uchar(c);
}

template <typename View>
XmlFault faultAt(View text, qsizetype position, const QString &message)
{
    XmlFault fault{Error::Limit, message, 1, 1};
    for (qsizetype i = 0; i < position; ++i) {
        const bool endsLine = unit(text[i]) == u'\n';
        fault.line += endsLine ? 1 : 0;
        fault.column = endsLine ? 1 : fault.column + 1;
    }
    return fault;
}

/// First of \a wanted in \a text from \a position on that no quotes enclose; the end if there is
/// none.
template <typename View, typename Wanted>
qsizetype findUnquoted(View text, qsizetype position, Wanted wanted)
{
    char16_t quote = 0;
    for (; position < text.size(); ++position) {
        const char16_t c = unit(text[position]);
        if (quote != 0)
            quote = c == quote ? 0 : quote;
        else if (c == u'"' || c == u'\'')
            quote = c;
        else if (wanted(c))
            break;
    }
    return position;
}

template <typename View>
qsizetype behind(View text, QLatin1StringView terminator, qsizetype position)
{
    const qsizetype found = find(text, terminator, position);
    return found < 0 ? text.size() : found + terminator.size();
}

/// Refuses what already costs the stream parser too much: it compares every attribute of a tag with
/// every other, and expands entities while it reads the declarations of a DOCTYPE. Follows markup
/// only as far as well-formed text needs; in other text the parser stops first. Goes on from
/// \a position until that is behind \a until. Calls \a startTag with the places of the brackets of
/// each start tag; it returns where to go on.
template <typename View, typename StartTag>
std::optional<XmlFault> checkMarkup(View text, const XmlLimits &limits, qsizetype &position,
                                    qsizetype until, StartTag startTag)
{
    while (position <= until) {
        position = findTag(text, position);
        if (position < 0) {
            position = text.size() + 1;
            break;
        }
        const View rest = text.sliced(position);
        if (begins(rest, "<!--"_L1)) {
            position = behind(text, "-->"_L1, position + 4);
        } else if (begins(rest, "<![CDATA["_L1)) {
            position = behind(text, "]]>"_L1, position);
        } else if (begins(rest, "<?"_L1)) {
            position = behind(text, "?>"_L1, position);
        } else if (begins(rest, "<!"_L1)) {
            position =
                findUnquoted(text, position, [](char16_t c) { return c == u'[' || c == u'>'; });
            if (position < text.size() && unit(text[position]) == u'[')
                return faultAt(text, position,
                               MarkupText::tr("A DOCTYPE must not declare anything"));
        } else {
            const qsizetype begin = position;
            int attributes = 0;
            const auto endsTag = [&](char16_t c) {
                attributes += c == u'=' ? 1 : 0;
                return c == u'>' || attributes > limits.maxAttributes;
            };
            position = findUnquoted(text, position, endsTag);
            if (attributes > limits.maxAttributes)
                return faultAt(
                    text, position,
                    MarkupText::tr("A tag has more than %1 attributes").arg(limits.maxAttributes));
            if (position < text.size() && !begins(rest, "</"_L1))
                position = startTag(begin, position);
        }
    }
    return std::nullopt;
}

} // namespace KEO::MarkupCheck
