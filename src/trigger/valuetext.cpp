#include "valuetext.h"

#include "matchvalue.h"

#include <config/coreconfig.h>

#include <QCoreApplication>
#include <QList>
#include <QRegularExpression>

#include <algorithm>

namespace KEO {

namespace {

constexpr int kMaxWritten = 16'384; // characters; a clipboard may hold a book

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ValueText)
};

Error refusal(const QString &text)
{
    return {Error::Usage, text};
}

/// A number of any size, least significant digit of 10^9 first.
using Number = QList<quint32>;
constexpr quint32 kLimb = 1'000'000'000;
constexpr int kLimbDigits = 9;

void multiplyAndAdd(Number &number, quint32 factor, quint32 added)
{
    quint64 carry = added;
    for (quint32 &limb : number) {
        carry += quint64(limb) * factor;
        limb = quint32(carry % kLimb);
        carry /= kLimb;
    }
    if (carry > 0)
        number.append(quint32(carry));
}

bool halve(Number &number) // true: it was odd
{
    quint64 rest = 0;
    for (auto limb = number.rbegin(); limb != number.rend(); ++limb) {
        rest = rest * kLimb + *limb;
        *limb = quint32(rest / 2);
        rest %= 2;
    }
    while (!number.isEmpty() && number.last() == 0)
        number.removeLast();
    return rest != 0;
}

bool hasLetters(const QString &binary)
{
    return std::any_of(binary.cbegin(), binary.cend(),
                       [](QChar c) { return c != u'0' && c != u'1'; });
}

QString withoutLeadingZeros(const QString &digits)
{
    qsizetype zeros = 0;
    while (zeros < digits.size() && digits[zeros] == u'0')
        ++zeros;
    return digits.mid(zeros);
}

QString binaryOfDecimal(const QString &digits)
{
    Number number;
    for (const QChar digit : digits)
        multiplyAndAdd(number, 10, quint32(digit.digitValue()));
    QString binary;
    while (!number.isEmpty())
        binary += halve(number) ? u'1' : u'0';
    std::reverse(binary.begin(), binary.end());
    return binary;
}

/// Each digit in so many bits; an X in any radix leaves all of its bits open.
QString binaryOfDigits(const QString &digits, int bitsPerDigit)
{
    QString binary;
    for (const QChar digit : digits) {
        if (digit == u'X')
            binary += QString(bitsPerDigit, u'X');
        else
            binary += QString::number(QString(digit).toInt(nullptr, 16), 2)
                          .rightJustified(bitsPerDigit, u'0');
    }
    return binary;
}

struct Written
{
    QString digits; // capitals
    int base = 2;
    bool hasPrefix = false;
};

Written withoutPrefix(const QString &text, int base)
{
    QString plain = text;
    plain.remove(QRegularExpression(QStringLiteral("[_\\s]")));
    static const QRegularExpression verilog(QStringLiteral("^[0-9]*'[sS]?([bBoOdDhH])(.*)$"));
    static const QRegularExpression vhdl(QStringLiteral("^([bBoOxX])\"(.*)\"$"));
    static const QRegularExpression small(QStringLiteral("^0([box])(.*)$"));
    static const QRegularExpression capital(QStringLiteral("^0([BOX])(.*)$"));
    for (const QRegularExpression *form : {&verilog, &vhdl, &small, &capital}) {
        const auto match = form->match(plain);
        const QString letter = match.captured(1).toLower();
        const bool isDigits =
            (form == &capital && base == 2) ||
            (base == 16 && letter == u"b" && (form == &small || form == &capital));
        if (!match.hasMatch() || isDigits)
            continue;
        const int named = letter == u"b" ? 2 : letter == u"o" ? 8 : letter == u"d" ? 10 : 16;
        return {match.captured(2).toUpper(), named, true};
    }
    return {plain.toUpper(), base, false};
}

} // namespace

QString digitText(const QString &binary, int bitsPerDigit)
{
    QString text;
    for (qsizetype begin = 0, end = 0; begin < binary.size(); begin = end) {
        const qsizetype rest = (binary.size() - begin) % bitsPerDigit; // of the first digit
        end = begin + (rest > 0 ? rest : bitsPerDigit);
        const QString part = binary.mid(begin, end - begin);
        if (part == QString(part.size(), u'X'))
            text += u'X';
        else if (hasLetters(part))
            text += u'[' + part + u']';
        else
            text += QString::number(part.toInt(nullptr, 2), 16).toUpper();
    }
    return text;
}

QString decimalText(const QString &binary)
{
    if (binary.isEmpty() || hasLetters(binary))
        return {};
    Number number;
    for (const QChar bit : binary)
        multiplyAndAdd(number, 2, bit == u'1' ? 1 : 0);
    QString text = number.isEmpty() ? QStringLiteral("0") : QString::number(number.last());
    for (qsizetype limb = number.size() - 2; limb >= 0; --limb)
        text += QString::number(number[limb]).rightJustified(kLimbDigits, u'0');
    return text;
}

QString fieldText(const QString &binary, int base)
{
    if (base == 2)
        return binary;
    if (hasLetters(binary))
        return {};
    const int digits = valueDigits(int(binary.size()), base);
    return fitDigits(base == 10 ? decimalText(binary) : digitText(binary, base == 8 ? 3 : 4),
                     digits);
}

bool hasRadixPrefix(const QString &text, int base)
{
    return withoutPrefix(text.left(kMaxWritten), base).hasPrefix;
}

Result<QString> binaryOfText(const QString &text, int base)
{
    if (text.size() > kMaxWritten)
        return refusal(Text::tr("%1 characters are too many for a value.").arg(text.size()));
    const Written written = withoutPrefix(text, base);
    const QString allowed = written.base == 16   ? QStringLiteral("0123456789ABCDEFX")
                            : written.base == 10 ? QStringLiteral("0123456789")
                            : written.base == 8  ? QStringLiteral("01234567X")
                                                 : QStringLiteral("01XRFBN");
    if (written.digits.isEmpty())
        return refusal(Text::tr("There is no value."));
    for (const QChar digit : written.digits) {
        if (!allowed.contains(digit))
            return refusal(Text::tr("“%1” is no digit of radix %2.")
                               .arg(QString(digit), QString::number(written.base)));
    }
    if (written.base == 10)
        return binaryOfDecimal(written.digits);
    return withoutLeadingZeros(written.base == 2
                                   ? written.digits
                                   : binaryOfDigits(written.digits, written.base == 8 ? 3 : 4));
}

QString valueText(const MatchUnit &unit)
{
    if (!isRangeFunction(unit.func))
        return unit.value0;
    return QStringLiteral("%1 : %2").arg(unit.value0, unit.value1);
}

Result<UnitValues> valuesFor(const MatchUnit &unit, const QString &text)
{
    const int bits = unit.trigger ? int(signalBits(unit.trigger->signals)) : 0;
    const auto refused = [&unit](const QString &reason) {
        return refusal(Text::tr("M%1: %2").arg(QString::number(unit.index), reason));
    };
    const QStringList parts = text.split(u':');
    const bool isRange = isRangeFunction(unit.func);
    if (parts.size() == (isRange ? 2 : 1) && parts.join(QString()).trimmed().isEmpty())
        return UnitValues{{}, isRange ? QString() : unit.value1};
    if (bits == 0)
        return refused(Text::tr("the unit has no port."));
    if (isRange && parts.size() != 2)
        return refused(Text::tr("the function needs a minimum and a maximum, as in “01 : 10”."));
    if (!isRange && parts.size() != 1)
        return refused(Text::tr("the function takes one value and no range."));
    const QRegularExpression allowed(
        QRegularExpression::anchoredPattern(valuePattern(2, unit.func, unit.match_type)));
    QStringList values;
    for (const QString &part : parts) {
        const Result<QString> binary = binaryOfText(part, 2);
        if (!binary)
            return refused(binary.error().message);
        if (!allowed.match(*binary).hasMatch())
            return refused(Text::tr("“%1” has letters that type and function do not take.")
                               .arg(part.trimmed()));
        values.append(*binary);
    }
    // As in the dialog, which has two fields in any case.
    const BinaryValues checked =
        binaryValues(values.first(), isRange ? values.last() : unit.value1, 2, bits, unit.func);
    switch (checked.problem) {
    case ValueProblem::TooWide:
        return refused(Text::tr("the value is more than the port's %n bit(s).", nullptr, bits));
    case ValueProblem::MaximumBelowMinimum:
        return refused(Text::tr("the maximum is less than the minimum."));
    case ValueProblem::None:
        break;
    }
    return UnitValues{checked.value0, isRange ? checked.value1 : unit.value1};
}

QString valueInCore(const QString &value, int bits)
{
    QString seen = value.left(bits).rightJustified(bits, u'0');
    for (QChar &c : seen) {
        if (!QStringLiteral("01XRFBN").contains(c))
            c = u'X';
    }
    return seen;
}

} // namespace KEO
