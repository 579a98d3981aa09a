#include "expressiontokens.h"

#include <config/coreconfig.h>

#include <QRegularExpression>

namespace KEO {

std::optional<QStringList> expressionTokens(const QString &text)
{
    static const QRegularExpression token(QStringLiteral("\\G\\s*([Mm]([0-9]+)|[!&^|()])"));
    const QString whole = text.trimmed();
    QStringList tokens;
    for (qsizetype read = 0; read < whole.size();) {
        const auto match = token.match(whole, read);
        if (!match.hasMatch())
            return {};
        bool isNumber = true;
        const int unit = match.captured(2).isEmpty() ? 0 : match.captured(2).toInt(&isNumber);
        if (!isNumber || unit >= CoreConfig::kUnits)
            return {};
        tokens.append(match.captured(2).isEmpty() ? match.captured(1)
                                                  : QStringLiteral("M%1").arg(unit));
        read = match.capturedEnd();
    }
    return tokens;
}

std::optional<int> unitOfToken(const QString &token)
{
    if (!token.startsWith(u'M'))
        return {};
    return token.mid(1).toInt();
}

} // namespace KEO
