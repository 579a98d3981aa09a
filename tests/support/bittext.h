#pragma once

#include <QBitArray>
#include <QString>

// Bits as text of 0 and 1, first bit first: the tests' own way, apart from the program's and the
// board's.

inline QBitArray bitsOf(const QString &text)
{
    QBitArray bits(text.size());
    for (qsizetype i = 0; i < text.size(); ++i)
        bits.setBit(i, text.at(i) == u'1');
    return bits;
}

inline QString textOf(const QBitArray &bits)
{
    QString text;
    for (qsizetype i = 0; i < bits.size(); ++i)
        text.append(bits.testBit(i) ? u'1' : u'0');
    return text;
}

/// The last \a width binary digits of \a value.
inline QString binary(quint64 value, int width)
{
    return QStringLiteral("%1").arg(value, width, 2, QLatin1Char('0')).right(width);
}
