#include "valuestory.h"

#include <trigger/matchvalue.h>
#include <trigger/valuetext.h>

#include <QCoreApplication>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ValueStory)
};

/// Place after the last digit that is no "0".
int endOfDigits(const QString &value)
{
    qsizetype end = value.size();
    while (end > 0 && value[end - 1] == u'0')
        --end;
    return int(end);
}

} // namespace

QString shortened(const QString &value)
{
    constexpr int kShown = 24;
    return value.size() <= kShown ? value : value.left(kShown) + QStringLiteral("…");
}

void ValueStory::begin(const QString &stored)
{
    *this = {};
    m_stored = stored;
}

void ValueStory::replaced(const QString &told)
{
    *this = {};
    m_told = told;
}

void ValueStory::typed(const QString &text, int cursor)
{
    const bool wasEmpty = !m_before.isEmpty() && endOfDigits(m_before) == 0;
    if (m_typedDigits < 0)
        m_typedDigits = wasEmpty ? cursor : -1;
    else if (text.mid(cursor) != m_before.mid(cursor)) // digits were taken away
        m_typedDigits = std::max(cursor, endOfDigits(text));
    else
        m_typedDigits = std::max(cursor, m_typedDigits);
    m_stored.clear();
    m_told.clear();
}

QStringList ValueStory::faults(const QString &text, const QString &stored, int base, int bits) const
{
    QStringList faults;
    if (!m_told.isEmpty())
        faults += m_told;
    if (const QString seen = valueInCore(m_stored, bits); !m_stored.isEmpty() && seen != stored)
        faults += Text::tr("The description's “%1” counts as %2 in the core.")
                      .arg(shortened(m_stored), shortened(seen));
    if (base != 2 && !isConvertible(text, base))
        faults += Text::tr("More than 64 bits can only be said in BIN: OK stores zeros.");
    else if (valueInCore(stored, bits) != stored)
        faults += Text::tr("“%1” has letters that count as X.").arg(shortened(stored));
    const int end = endOfDigits(text);
    if (end > 0 && end <= m_typedDigits && m_typedDigits < text.size())
        faults += Text::tr("“%1” was typed; the zeros behind it only fill the field.")
                      .arg(shortened(text.left(m_typedDigits)));
    return faults;
}

} // namespace KEO
