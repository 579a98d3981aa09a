#include "plainnames.h"

#include <QRegularExpression>

#include <cstdlib>

namespace KEO {

namespace {

const QString kUnnamed = QStringLiteral("unnamed");
constexpr qsizetype kMaxDepth = 64; // of scopes; no design is as deep, a hostile name may be

bool endsName(QChar c)
{
    return c.isSpace() || c.category() == QChar::Other_Control ||
           QStringView(u"[]./\\").contains(c);
}

/// Does "[first:last]" (or "[first]", then both are equal) name as many bits?
bool fits(const QRegularExpressionMatch &index, qsizetype width)
{
    const int first = index.captured(2).toInt();
    const bool isRange = index.hasCaptured(3);
    const int last = isRange ? index.captured(3).toInt() : first;
    return width == 1 ? !isRange : isRange && std::abs(first - last) + 1 == width;
}

} // namespace

QString NumberedNames::firstFree(const QString &name,
                                 const std::function<bool(const QString &)> &isFree)
{
    if (isFree(name))
        return name;
    int &next = m_next.insert(name, m_next.value(name, 2)).value();
    for (;;) {
        const QString candidate = name + u'_' + QString::number(next);
        if (isFree(candidate))
            return candidate;
        ++next;
    }
}

QString UniqueTitles::take(const QString &title)
{
    const QString wanted = title.isEmpty() ? kUnnamed : title;
    const QString given = m_numbers.firstFree(
        wanted, [this](const QString &name) { return !m_taken.contains(name); });
    m_taken.insert(given);
    return given;
}

QString vcdWord(const QString &text)
{
    QString word = text;
    for (QChar &c : word) {
        if (endsName(c))
            c = u'_';
    }
    if (word.startsWith(u'$'))
        word[0] = u'_';
    return word.isEmpty() ? kUnnamed : word;
}

VcdName vcdName(const QString &title, qsizetype width)
{
    static const QRegularExpression pattern(
        QStringLiteral("\\s*(\\[([0-9]{1,9})(?::([0-9]{1,9}))?\\])$"));
    VcdName name;
    name.scopes = title.split(u'/', Qt::SkipEmptyParts);
    name.base = name.scopes.isEmpty() ? QString() : name.scopes.takeLast();
    if (name.scopes.size() > kMaxDepth) {
        name.base = name.scopes.mid(kMaxDepth).join(u'_') + u'_' + name.base;
        name.scopes.resize(kMaxDepth);
    }
    const QRegularExpressionMatch match = pattern.match(name.base);
    if (match.hasMatch() && fits(match, width)) {
        name.index = match.captured(1);
        name.base.truncate(match.capturedStart());
    } else if (width > 1) {
        name.index = QStringLiteral("[%1:0]").arg(width - 1);
    }
    for (QString &scope : name.scopes)
        scope = vcdWord(scope);
    name.base = vcdWord(name.base);
    return name;
}

void VcdScopeNames::makeUnique(VcdName &name, qsizetype width)
{
    const bool isBit = width == 1 && !name.index.isEmpty();
    const auto isFree = [&](const QString &base) {
        if (m_whole.contains(base))
            return false;
        return isBit ? !m_taken.contains(base + name.index) : !m_bits.contains(base);
    };
    name.base = m_numbers.firstFree(name.base, isFree);
    (isBit ? m_bits : m_whole).insert(name.base);
    if (isBit)
        m_taken.insert(name.base + name.index);
}

} // namespace KEO
