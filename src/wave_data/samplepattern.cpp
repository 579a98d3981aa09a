#include "samplepattern.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringView>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <optional>

namespace WaveMonitor {

using KEO::Error;
using KEO::Result;

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(WaveMonitor::SamplePattern)
};

constexpr qsizetype kLongestText = 10'000;

Error usage(const QString &message)
{
    return Error{Error::Usage, message};
}

enum class Sign { Equal, NotEqual, Less, LessEqual, Greater, GreaterEqual };

struct SignText
{
    QStringView text;
    Sign sign;
};

// A longer one before the one that it begins with.
constexpr std::array<SignText, 11> kSigns{{{u"==", Sign::Equal},
                                           {u"!=", Sign::NotEqual},
                                           {u"<>", Sign::NotEqual},
                                           {u"<=", Sign::LessEqual},
                                           {u">=", Sign::GreaterEqual},
                                           {u"=", Sign::Equal},
                                           {u"<", Sign::Less},
                                           {u">", Sign::Greater},
                                           {u"\u2264", Sign::LessEqual},
                                           {u"\u2265", Sign::GreaterEqual},
                                           {u"\u2260", Sign::NotEqual}}};

std::optional<SignText> signAt(QStringView text)
{
    const auto *found = std::find_if(kSigns.begin(), kSigns.end(), [text](const SignText &each) {
        return text.startsWith(each.text);
    });
    return found == kSigns.end() ? std::nullopt : std::optional(*found);
}

/// A number as it was typed.
struct Number
{
    int base = 16;
    bool isNegative = false;
    QByteArray digits{}; ///< upper case, X for any
};

int baseOf(DataFormat::Type radix)
{
    switch (radix) {
    case DataFormat::Binary:
        return 2;
    case DataFormat::Octal:
        return 8;
    case DataFormat::SignedDecimal:
    case DataFormat::UnsignedDecimal:
        return 10;
    default:
        return 16;
    }
}

int digitValue(char digit)
{
    return digit <= '9' ? digit - '0' : digit - 'A' + 10;
}

QString baseName(int base)
{
    switch (base) {
    case 2:
        return Text::tr("binary");
    case 8:
        return Text::tr("octal");
    case 10:
        return Text::tr("decimal");
    default:
        return Text::tr("hexadecimal");
    }
}

Result<Number> readNumber(const QString &typed, DataFormat::Type radix)
{
    static const QRegularExpression blanks(QStringLiteral("[\\s_]"));
    // A large X is always a digit, or "0X00" could be either.
    static const QRegularExpression prefix(
        QStringLiteral("^(?:0([xoO])|0([bB])(?=[01xX])|[0-9]*'([hHdDoObB]))"));
    QString text = QString(typed).remove(blanks);
    Number number{.base = baseOf(radix)};
    if (text.startsWith(u'-') && radix == DataFormat::SignedDecimal) {
        number.isNegative = true;
        text.remove(0, 1);
    }
    const auto found = prefix.match(text);
    const bool isDigits = number.base == 16 && found.capturedLength(2) > 0;
    if (found.hasMatch() && !isDigits) {
        const QString letter =
            (found.captured(1) + found.captured(2) + found.captured(3)).toLower();
        number.base = letter == u'b' ? 2 : letter == u'o' ? 8 : letter == u'd' ? 10 : 16;
        text.remove(0, found.capturedLength());
    }
    text = text.toUpper();
    number.digits = text.toLatin1();
    if (text.isEmpty())
        return usage(Text::tr("Type a value, such as 3F, or 3X for any last digit."));
    const bool fits =
        text.size() <= kLongestText && std::all_of(text.cbegin(), text.cend(), [&](QChar each) {
            const char digit = each.toLatin1();
            return digit == 'X' ||
                   (((digit >= '0' && digit <= '9') || (digit >= 'A' && digit <= 'F')) &&
                    digitValue(digit) < number.base);
        });
    if (!fits)
        return usage(Text::tr("\"%1\" is no %2 value.").arg(typed.left(40), baseName(number.base)));
    return number;
}

/// The low bits of a number.
struct Bits
{
    QBitArray value;
    QBitArray known;
};

std::optional<Bits> bitsOfDigits(const Number &number, qsizetype bits)
{
    const int perDigit = number.base == 2 ? 1 : number.base == 8 ? 3 : 4;
    Bits result{QBitArray(bits), QBitArray(bits, true)};
    qsizetype weight = 0;
    for (auto digit = number.digits.crbegin(); digit != number.digits.crend(); ++digit) {
        for (int bit = 0; bit < perDigit; ++bit, ++weight) {
            const bool isAny = *digit == 'X';
            const bool isSet = !isAny && (digitValue(*digit) >> bit & 1) != 0;
            if (weight >= bits) {
                if (isSet)
                    return {};
                continue;
            }
            result.value.setBit(bits - 1 - weight, isSet);
            result.known.setBit(bits - 1 - weight, !isAny);
        }
    }
    return result;
}

/// A decimal magnitude as bits, or nothing if it needs more of them.
std::optional<QBitArray> bitsOfDecimal(const QByteArray &digits, qsizetype bits)
{
    QVarLengthArray<quint32, 16> limbs((bits + 31) / 32, 0);
    for (const char digit : digits) {
        quint64 carry = quint64(digitValue(digit));
        for (quint32 &limb : limbs) {
            carry += quint64(limb) * 10;
            limb = quint32(carry);
            carry >>= 32;
        }
        if (carry)
            return {};
    }
    QBitArray value(bits);
    for (qsizetype weight = 0; weight < limbs.size() * 32; ++weight) {
        if (!(limbs[weight / 32] >> (weight % 32) & 1))
            continue;
        if (weight >= bits)
            return {};
        value.setBit(bits - 1 - weight);
    }
    return value;
}

QBitArray negative(const QBitArray &magnitude)
{
    QBitArray value = ~magnitude;
    for (qsizetype i = value.size() - 1; i >= 0; --i) {
        value.toggleBit(i);
        if (value.testBit(i))
            break;
    }
    return value;
}

/// Decimal \a digits of a row, or nothing if they do not fit into it.
std::optional<QBitArray> bitsOfDecimal(const QByteArray &digits, bool isNegative, bool isSigned,
                                       qsizetype bits)
{
    const std::optional<QBitArray> magnitude = bitsOfDecimal(digits, bits);
    if (!magnitude || !isSigned)
        return magnitude;
    if (!isNegative)
        return magnitude->testBit(0) ? std::nullopt : magnitude;
    const bool isZero = magnitude->count(true) == 0;
    const QBitArray value = isZero ? *magnitude : negative(*magnitude);
    return isZero || value.testBit(0) ? std::optional(value) : std::nullopt;
}

QBitArray smallest(qsizetype bits, bool isSigned)
{
    QBitArray value(bits);
    value.setBit(0, isSigned);
    return value;
}

QBitArray greatest(qsizetype bits, bool isSigned)
{
    QBitArray value(bits, true);
    value.setBit(0, !isSigned);
    return value;
}

/// With X in decimal digits: a range if they stand at the end, else digit by digit within one.
SamplePattern decimalPattern(const Number &number, qsizetype bits, bool isSigned)
{
    SamplePattern pattern{.kind = SamplePattern::Range, .isSigned = isSigned};
    QByteArray least = number.digits;
    QByteArray most = number.digits;
    least.replace('X', '0');
    most.replace('X', '9');
    if (number.isNegative) {
        pattern.low = bitsOfDecimal(most, true, isSigned, bits).value_or(smallest(bits, isSigned));
        pattern.high = *bitsOfDecimal(least, true, isSigned, bits);
    } else {
        pattern.low = *bitsOfDecimal(least, false, isSigned, bits);
        pattern.high =
            bitsOfDecimal(most, false, isSigned, bits).value_or(greatest(bits, isSigned));
    }
    // The range of -X would have the 0 in it, which has no sign.
    const bool areLast = number.digits.mid(number.digits.indexOf('X')).count('X') ==
                         number.digits.size() - number.digits.indexOf('X');
    if (number.isNegative || !areLast) {
        pattern.kind = SamplePattern::Decimals;
        pattern.digits = (number.isNegative ? "-" : "") + number.digits;
    }
    return pattern;
}

Result<SamplePattern> valuePattern(const QString &typed, qsizetype bits, DataFormat::Type radix)
{
    const Result<Number> number = readNumber(typed, radix);
    if (!number)
        return number.error();
    const Error tooLarge = usage(Text::tr("%1 needs more bits than the row has (%2).")
                                     .arg(typed.left(40).trimmed(), QString::number(bits)));
    const bool isSigned = radix == DataFormat::SignedDecimal;
    SamplePattern pattern{.kind = SamplePattern::Value};
    pattern.known = QBitArray(bits, true);
    if (number->base == 10) {
        const bool hasAny = number->digits.contains('X');
        QByteArray least = number->digits;
        least.replace('X', '0');
        const auto value = bitsOfDecimal(least, number->isNegative, isSigned, bits);
        if (!value)
            return tooLarge;
        if (hasAny)
            return decimalPattern(*number, bits, isSigned);
        pattern.low = *value;
        return pattern;
    }
    const std::optional<Bits> value = bitsOfDigits(*number, bits);
    if (!value)
        return tooLarge;
    pattern.low = number->isNegative ? negative(value->value) : value->value;
    pattern.known = value->known;
    if (number->isNegative && value->known.count(false) > 0)
        return usage(Text::tr("X can't stand in a negative value with a prefix."));
    return pattern;
}

} // namespace

bool isComparison(const QString &text)
{
    return signAt(QStringView(text).trimmed()).has_value();
}

Result<SamplePattern> parsePattern(const QString &text, qsizetype bits, DataFormat::Type radix)
{
    if (bits < 1)
        return usage(Text::tr("The row has no samples."));
    // A single bit reads 0 or 1 in every radix.
    const DataFormat::Type shown = bits == 1 ? DataFormat::Binary : radix;
    QString rest = text.trimmed();
    const std::optional<SignText> sign = signAt(rest);
    if (sign)
        rest.remove(0, sign->text.size());
    Result<SamplePattern> value = valuePattern(rest, bits, shown);
    if (!value || !sign || sign->sign == Sign::Equal)
        return value;
    SamplePattern pattern = *value;
    if (sign->sign == Sign::NotEqual) {
        pattern.isNegated = true;
        return pattern;
    }
    if (pattern.kind != SamplePattern::Value || pattern.known.count(false) > 0)
        return usage(Text::tr("X for any digit goes with = and != alone."));
    const bool isSigned = shown == DataFormat::SignedDecimal;
    SamplePattern range{.kind = SamplePattern::Range, .isSigned = isSigned};
    const bool isAbove = sign->sign == Sign::Less || sign->sign == Sign::GreaterEqual;
    range.low = isAbove ? pattern.low : smallest(bits, isSigned);
    range.high = isAbove ? greatest(bits, isSigned) : pattern.low;
    range.isNegated = sign->sign == Sign::Less || sign->sign == Sign::Greater;
    return range;
}

} // namespace WaveMonitor
