#include "valuepaste.h"

#include "valuestory.h"

#include <trigger/matchvalue.h>
#include <trigger/valuetext.h>

#include <QCoreApplication>
#include <QRegularExpression>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ValuePaste)
};

} // namespace

PastedValue pastedWhole(const QString &text, const ValueRules &rules)
{
    const auto refusal = [](const QString &reason) {
        return PastedValue{{}, Text::tr("Not pasted: %1").arg(reason)};
    };
    const Result<QString> binary = binaryOfText(text, rules.base);
    if (!binary)
        return refusal(binary.error().message);
    const QString value = fitDigits(*binary, rules.bits);
    const QString shown = fieldText(value, rules.base);
    if (shown.isEmpty())
        return refusal(Text::tr("Letters go with BIN only."));
    const QRegularExpression allowed(
        QRegularExpression::anchoredPattern(valuePattern(2, rules.function, rules.type)));
    if (!allowed.match(value).hasMatch())
        return refusal(Text::tr("The function does not take these letters."));
    if (binary->size() <= rules.bits)
        return {shown, {}};
    return {shown, Text::tr("What was pasted has %1 bits, the port %2: the leading ones are cut.")
                       .arg(QString::number(binary->size()), QString::number(rules.bits))};
}

PastedValue pastedDigits(const QString &text, qsizetype room, const ValueRules &rules)
{
    QString digits = text;
    digits.remove(QRegularExpression(QStringLiteral("[_\\s]")));
    const QRegularExpression allowed(
        QRegularExpression::anchoredPattern(valuePattern(rules.base, rules.function, rules.type)),
        QRegularExpression::CaseInsensitiveOption);
    if (!allowed.match(digits).hasMatch())
        return {{},
                Text::tr("Not pasted: “%1” has characters that do not belong here.")
                    .arg(shortened(text))};
    const QString taken = digits.left(room).toUpper();
    if (digits.size() <= room)
        return {taken, {}};
    return {taken, Text::tr("There was room for %1 of %2 digits pasted: the rest is cut.")
                       .arg(QString::number(room), QString::number(digits.size()))};
}

} // namespace KEO
