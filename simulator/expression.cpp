#include "expression.h"

namespace Sim {

namespace {

constexpr int kMaxNesting = 100;

/// Recursive descent over one text; every rule gives the column of its part of the table.
class TableParser final
{
public:
    TableParser(const QString &text, const QList<int> &units) : m_text(text), m_units(units) {}

    Outcome<QBitArray> parse()
    {
        QBitArray table = disjunction();
        skipBlanks();
        if (m_error.isEmpty() && m_at < m_text.size())
            fail(QStringLiteral("\"%1\" stands where an operator is expected").arg(m_text[m_at]));
        if (!m_error.isEmpty())
            return Failure{QStringLiteral("trigger expression \"%1\", column %2: %3")
                               .arg(m_text)
                               .arg(m_at + 1)
                               .arg(m_error)};
        return table;
    }

private:
    QBitArray disjunction()
    {
        QBitArray table = exclusive();
        while (take(u'|'))
            table |= exclusive();
        return table;
    }

    QBitArray exclusive()
    {
        QBitArray table = conjunction();
        while (take(u'^'))
            table ^= conjunction();
        return table;
    }

    QBitArray conjunction()
    {
        QBitArray table = unary();
        while (take(u'&'))
            table &= unary();
        return table;
    }

    QBitArray unary()
    {
        bool inverted = false;
        while (take(u'!'))
            inverted = !inverted;
        QBitArray table = operand();
        return inverted ? ~table : table;
    }

    QBitArray operand()
    {
        if (take(u'('))
            return group();
        if (take(u'M') && m_at < m_text.size() && m_text[m_at].isDigit())
            return unitColumn(number());
        fail(QStringLiteral("a match unit or \"(\" is expected"));
        return QBitArray(tableSize());
    }

    QBitArray group()
    {
        if (++m_nesting > kMaxNesting) {
            fail(QStringLiteral("the brackets are nested too deep"));
            return QBitArray(tableSize());
        }
        QBitArray table = disjunction();
        if (!take(u')'))
            fail(QStringLiteral("\")\" is expected"));
        --m_nesting;
        return table;
    }

    int number()
    {
        int value = 0;
        while (m_at < m_text.size() && m_text[m_at].isDigit() && value < 1000)
            value = value * 10 + m_text[m_at++].digitValue();
        return value;
    }

    QBitArray unitColumn(int unit)
    {
        QBitArray table(tableSize());
        const qsizetype slot = m_units.indexOf(unit);
        if (slot < 0)
            return table;
        for (qsizetype input = 0; input < table.size(); ++input)
            table.setBit(input, (input >> slot) & 1);
        return table;
    }

    bool take(char16_t wanted)
    {
        skipBlanks();
        if (!m_error.isEmpty() || m_at >= m_text.size() || m_text[m_at] != wanted)
            return false;
        ++m_at;
        return true;
    }

    void skipBlanks()
    {
        while (m_at < m_text.size() && m_text[m_at].isSpace())
            ++m_at;
    }

    void fail(const QString &error)
    {
        if (m_error.isEmpty())
            m_error = error;
    }

    [[nodiscard]] qsizetype tableSize() const { return qsizetype(1) << m_units.size(); }

    const QString &m_text;
    const QList<int> &m_units;
    qsizetype m_at = 0;
    int m_nesting = 0;
    QString m_error;
};

} // namespace

Outcome<QBitArray> expressionTable(const QString &text, const QList<int> &units)
{
    return TableParser(text, units).parse();
}

} // namespace Sim
