#include "versioncompare.h"

#include <QCoreApplication>
#include <QStringTokenizer>

namespace KEO {
namespace {

int partNumber(QStringView part)
{
    bool ok = false;
    const int number = part.toInt(&ok);
    if (!ok)
        throw CompareException(
            QCoreApplication::translate("KEO::CompareException", "Invalid Keo config file."));
    return number;
}

} // namespace

// Walks both texts without lists of their parts: a hostile one may have millions.
VersionOrders compareVersions(const QString &a, const QString &b)
{
    const auto partsA = qTokenize(QStringView(a), u'.', Qt::SkipEmptyParts);
    const auto partsB = qTokenize(QStringView(b), u'.', Qt::SkipEmptyParts);
    auto partA = partsA.begin();
    auto partB = partsB.begin();
    while (partA != partsA.end() || partB != partsB.end()) {
        const QStringView textA = partA != partsA.end() ? *partA++ : QStringView(u"0");
        const QStringView textB = partB != partsB.end() ? *partB++ : QStringView(u"0");
        const int numberA = partNumber(textA);
        const int numberB = partNumber(textB);
        if (numberA != numberB)
            return numberA < numberB ? LowerVersion : HigherVersion;
    }
    return EqualVersion;
}

bool isAtMost(const QString &version, const QString &newest)
{
    return (compareVersions(version, newest) & (LowerVersion | EqualVersion)) != 0;
}

} // namespace KEO
