#include "expression.h"

#include <QtDebug>

namespace KEO {

namespace {

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
    return !postfix.isEmpty() && leavesOneValue(postfix);
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

} // namespace KEO
