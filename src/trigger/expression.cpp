#include "expression.h"

#include <QCoreApplication>
#include <QtDebug>

namespace KEO {

namespace {

constexpr int kUnits = 16;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::Expression)
};

bool isUnit(const QString &token)
{
    return token.startsWith(u'M', Qt::CaseInsensitive);
}

bool isBinary(const QString &token)
{
    return token == u"&" || token == u"|" || token == u"^";
}

int rankOf(const QString &token)
{
    if (token == u"!")
        return 4;
    if (token == u"&")
        return 3;
    if (token == u"^")
        return 2;
    return token == u"|" ? 1 : 0;
}

/// What may stand next to each other. The forms that pass here and still make no sense, such as a
/// unit after ")", leave a wrong number of values and are found by leavesOneValue.
bool mayFollow(const QString &previous, const QString &token)
{
    if (token == u"!")
        return true;
    if (isUnit(token))
        return !isUnit(previous);
    if (isBinary(token))
        return !isBinary(previous) && previous != u"(" && previous != u"!";
    if (token == u")")
        return previous != u"(" && previous != u"!";
    return true;
}

bool leavesOneValue(const QStringList &postfix)
{
    qsizetype values = 0;
    for (const QString &token : postfix) {
        if (isUnit(token)) {
            ++values;
        } else if (token == u"!") {
            if (values < 1)
                return false;
        } else if (isBinary(token)) {
            if (values < 2)
                return false;
            --values;
        }
    }
    return values == 1;
}

/// The number of the unit with that name, or -1.
int unitOfName(const QString &token)
{
    const int unit = token.mid(1).toInt();
    return unit >= 0 && unit < kUnits && token == QStringLiteral("M%1").arg(unit) ? unit : -1;
}

QString faultOf(const QString &token, const QList<bool> &units)
{
    if (isBinary(token) || token == u"!" || token == u"(" || token == u")")
        return {};
    if (token == u"M")
        return Text::tr("An M lacks the number of its unit.");
    const int unit = unitOfName(token);
    if (unit >= 0)
        return units.value(unit, true) ? QString()
                                       : Text::tr("The core has no unit %1.").arg(token);
    if (isUnit(token))
        return Text::tr("There is no unit %1, only M0 to M%2.")
            .arg(token, QString::number(kUnits - 1));
    return Text::tr("“%1” belongs to no expression.").arg(token);
}

/// Walks through the plain grammar: operands, each behind at most one "!", with an operator between
/// any two. The ranks have no part in it.
QString grammarFault(const QStringList &tokens)
{
    bool wantsOperand = true;
    qsizetype open = 0;
    QString previous;
    for (const QString &token : tokens) {
        if (token == u"!" && previous == u"!")
            return Text::tr("Two “!” in a row: write brackets, !(!M0).");
        if (wantsOperand && (isBinary(token) || token == u")"))
            return Text::tr("A unit or a bracket is missing before “%1”.").arg(token);
        if (!wantsOperand && !isBinary(token) && token != u")")
            return Text::tr("An operator is missing before “%1”.").arg(token);
        open += token == u"(" ? 1 : token == u")" ? -1 : 0;
        if (open < 0)
            return Text::tr("A “)” has no “(”.");
        wantsOperand = !isUnit(token) && token != u")";
        previous = token;
    }
    if (wantsOperand)
        return tokens.isEmpty() ? Text::tr("There is no expression.")
                                : Text::tr("A unit is missing at the end.");
    return open > 0 ? Text::tr("A “(” has no “)”.") : QString();
}

} // namespace

bool isExpressionValid(const QStringList &tokens)
{
    if (tokens.isEmpty() || isBinary(tokens.last()) || tokens.last() == u"!")
        return false;
    for (qsizetype i = 1; i < tokens.size(); ++i) {
        if (!mayFollow(tokens[i - 1], tokens[i]))
            return false;
    }
    const QStringList postfix = infixToPostfix(tokens);
    // Postfix order hides where a token stood: "& M2 ! M3" and "M0 & ! ! M1" leave one value too.
    return !postfix.isEmpty() && leavesOneValue(postfix) && grammarFault(tokens).isEmpty();
}

QString tokenFault(const QStringList &tokens, const QList<bool> &units)
{
    for (const QString &token : tokens) {
        if (const QString fault = faultOf(token, units); !fault.isEmpty())
            return fault;
    }
    return {};
}

QString expressionFault(const QStringList &tokens, const QList<bool> &units)
{
    const QString fault = tokenFault(tokens, units);
    return fault.isEmpty() ? grammarFault(tokens) : fault;
}

QString withUnitNames(const QString &expression)
{
    QString names = expression;
    return names.replace(QStringLiteral("match"), QStringLiteral("M")).remove(u'[').remove(u']');
}

QStringList infixToPostfix(const QStringList &tokens)
{
    QStringList output;
    QStringList stack;
    for (const QString &token : tokens) {
        if (isUnit(token)) {
            output.append(token);
        } else if (token == u"(") {
            stack.append(token);
        } else if (token == u")") {
            while (!stack.isEmpty() && stack.last() != u"(")
                output.append(stack.takeLast());
            if (stack.isEmpty()) {
                qCritical("bracket unmatched");
                return {};
            }
            stack.removeLast();
        } else {
            while (!stack.isEmpty() && stack.last() != u"(" &&
                   rankOf(stack.last()) >= rankOf(token))
                output.append(stack.takeLast());
            stack.append(token);
        }
    }
    while (!stack.isEmpty())
        output.append(stack.takeLast());
    if (output.contains(u"(")) {
        qCritical(" bracket unmatched");
        return {};
    }
    return output;
}

bool ExpressionInput::isNameBegun() const
{
    return m_isNameOpen && m_tokens.last() == u"M";
}

void ExpressionInput::append(const QString &token)
{
    m_tokens.append(token);
    m_isNameOpen = false;
}

void ExpressionInput::type(QChar character)
{
    const bool isDigit = character >= u'0' && character <= u'9';
    if (isDigit && m_isNameOpen) {
        m_tokens.last() += character;
    } else if (isDigit) {
        append(u'M' + QString(character));
        m_isNameOpen = true;
    } else if (character == u'M' || character == u'm') {
        append(QStringLiteral("M"));
        m_isNameOpen = true;
    } else if (character.isSpace()) {
        // "M 1" is said as "M1"; "M1 2" are two units.
        m_isNameOpen = isNameBegun();
    } else {
        append(character);
    }
}

void ExpressionInput::type(const QString &text)
{
    for (const QChar character : text)
        type(character);
}

void ExpressionInput::removeLast()
{
    if (!m_tokens.isEmpty())
        m_tokens.removeLast();
    m_isNameOpen = false;
}

void ExpressionInput::clear()
{
    m_tokens.clear();
    m_isNameOpen = false;
}

} // namespace KEO
