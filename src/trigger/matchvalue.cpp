#include "matchvalue.h"

#include <base/logging.h>

#include <algorithm>
#include <cmath>

namespace KEO {

namespace {

/// Qt's number parser also takes blanks, signs and prefixes ("0B1"), none of which is a digit here.
bool hasOnlyDigits(const QString &text, int base)
{
    return std::all_of(text.cbegin(), text.cend(), [base](QChar c) {
        const ushort letter = c.toUpper().unicode();
        if (letter >= '0' && letter <= '9')
            return letter - '0' < base;
        return letter >= 'A' && letter - 'A' + 10 < base;
    });
}

} // namespace

int valueDigits(int bits, int base)
{
    switch (base) {
    case 16:
        return (bits + 3) / 4;
    case 8:
        return (bits + 2) / 3;
    case 10:
        return bits > 0 ? int(bits * std::log10(2.0) + 1) : 0;
    default:
        return bits;
    }
}

QString valueMask(int digits)
{
    return QStringLiteral(">%1;0").arg(QString(digits, u'N'));
}

QString valuePattern(int base, MatchFunction func, MatchType matchType)
{
    switch (base) {
    case 8:
        return QStringLiteral("[0-7]*");
    case 10:
        return QStringLiteral("[0-9]*");
    case 16:
        return QStringLiteral("[A-F0-9]*");
    default:
        break;
    }
    if (!isEqualityFunction(func))
        return QStringLiteral("[01]*");
    return hasEdges(matchType) ? QStringLiteral("[01XRFBN]*") : QStringLiteral("[01X]*");
}

QString baseConvert(const QString &text, int from, int to, int width)
{
    bool ok = hasOnlyDigits(text, from);
    const quint64 number = ok ? text.toULongLong(&ok, from) : 0;
    if (ok)
        return QString::number(number, to).toUpper();
    constexpr int kShown = 80; // ports may have thousands of bits
    qCDebug(lcTrigger, "\"%s\" is no number of radix %d within 64 bits; taken as zero",
            qUtf8Printable(text.left(kShown)), from);
    return QString(width, u'0');
}

bool isConvertible(const QString &text, int base)
{
    bool ok = hasOnlyDigits(text, base);
    if (ok)
        text.toULongLong(&ok, base);
    return ok;
}

QString fitDigits(const QString &text, int width)
{
    return text.right(width).rightJustified(width, u'0');
}

QString valueRange(int bits, int base)
{
    const int digits = valueDigits(bits, base);
    const QString ones(bits, u'1');
    const QString greatest = base == 2 ? ones : baseConvert(ones, 2, base, digits);
    return QString(digits, u'0') + u'~' + fitDigits(greatest, digits);
}

BinaryValues binaryValues(const QString &text0, const QString &text1, int base, int bits,
                          MatchFunction func)
{
    const QString binary0 = base == 2 ? text0 : baseConvert(text0, base, 2, bits);
    const QString binary1 = base == 2 ? text1 : baseConvert(text1, base, 2, bits);
    BinaryValues values{fitDigits(binary0, bits), fitDigits(binary1, bits)};
    const bool range = isRangeFunction(func);
    if (binary0.size() > bits || (range && binary1.size() > bits))
        values.problem = ValueProblem::TooWide;
    else if (range && values.value0 > values.value1)
        values.problem = ValueProblem::MaximumBelowMinimum; // equal lengths: text order is number's
    return values;
}

} // namespace KEO
