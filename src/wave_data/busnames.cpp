#include "busnames.h"

#include <QRegularExpression>

#include <algorithm>
#include <optional>

namespace WaveMonitor {

namespace {

struct IndexedName
{
    QString base;
    qint64 index = 0;
};

/// Splits `base[index]`; an index has no leading zeros.
std::optional<IndexedName> indexedName(const QString &name)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QStringLiteral(R"((.+)\[([1-9][0-9]*|0)\])")),
        QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpressionMatch match = pattern.match(name);
    if (!match.hasMatch())
        return std::nullopt;
    bool fits = false;
    const qint64 index = match.capturedView(2).toLongLong(&fits);
    if (!fits)
        return std::nullopt;
    return IndexedName{match.captured(1), index};
}

} // namespace

QString defaultBusName(const QStringList &names)
{
    if (names.size() < 2)
        return {};
    const std::optional<IndexedName> first = indexedName(names.first());
    if (!first)
        return {};
    std::optional<qint64> step;
    qint64 last = first->index;
    for (qsizetype i = 1; i < names.size(); ++i) {
        const std::optional<IndexedName> name = indexedName(names[i]);
        if (!name || name->base != first->base)
            return {};
        const qint64 distance = name->index - last;
        if (distance != step.value_or(distance) || (distance != 1 && distance != -1))
            return {};
        step = distance;
        last = name->index;
    }
    return QStringLiteral("%1[%2:%3]")
        .arg(first->base, QString::number(first->index), QString::number(last));
}

QString nextGroupName(const QStringList &busNames)
{
    static const QRegularExpression pattern(QRegularExpression::anchoredPattern(
        QStringLiteral(R"(group_(0|[1-9][0-9]*)\[(?:0|[1-9][0-9]*):(?:0|[1-9][0-9]*)\])")));
    QList<qint64> used;
    for (const QString &name : busNames) {
        bool fits = false;
        const qint64 number = pattern.match(name).capturedView(1).toLongLong(&fits);
        if (fits)
            used.append(number);
    }
    std::sort(used.begin(), used.end());
    qint64 next = 0;
    for (const qint64 number : used) {
        if (number > next)
            break;
        if (number == next)
            ++next;
    }
    return QStringLiteral("group_%1").arg(next);
}

QString groupBusName(const QStringList &busNames, int signalCount)
{
    return QStringLiteral("%1[%2:0]")
        .arg(nextGroupName(busNames), QString::number(signalCount - 1));
}

} // namespace WaveMonitor
