#include "matchtext.h"

#include <QStringList>

#include <numeric>

namespace KEO {

QString matchTypeText(int type)
{
    static const QStringList texts{QStringLiteral("Basic"),    QStringLiteral("Basic w/edges"),
                                   QStringLiteral("Extended"), QStringLiteral("Extended w/edges"),
                                   QStringLiteral("Range"),    QStringLiteral("Range w/edges")};
    return texts.value(type);
}

QString matchFunctionText(int function)
{
    static const QStringList texts{QStringLiteral("=="),       QStringLiteral("!="),
                                   QStringLiteral(">"),        QStringLiteral("<"),
                                   QStringLiteral(">="),       QStringLiteral("<="),
                                   QStringLiteral("in range"), QStringLiteral("not in range")};
    return texts.value(function);
}

QList<int> functionsForMatchType(int type)
{
    static const QList<int> counts{2, 2, 6, 6, 8, 8};
    QList<int> functions(counts.value(type));
    std::iota(functions.begin(), functions.end(), 0);
    return functions;
}

} // namespace KEO
