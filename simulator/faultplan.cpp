#include "faultplan.h"

#include <QStringList>
#include <QtEndian>

namespace Sim {

namespace {

QByteArray bigEndian32(quint32 value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian(value, bytes.data());
    return bytes;
}

QByteArray framed(const QByteArray &payload)
{
    return bigEndian32(quint32(payload.size())) + payload;
}

/// A frame with one entry, "DATA", whose value is \a value from its type number on.
QByteArray frameWithValue(const QByteArray &value)
{
    return framed(bigEndian32(1) + bigEndian32(8) + QByteArray("\0D\0A\0T\0A", 8) + value);
}

QByteArray typeHead(quint32 type)
{
    return bigEndian32(type) + '\0';
}

QByteArray deepNesting()
{
    constexpr int kLevels = 20000;
    QByteArray value;
    for (int i = 0; i < kLevels; ++i)
        value += typeHead(9) + bigEndian32(1);
    return frameWithValue(value + typeHead(2) + bigEndian32(0));
}

} // namespace

QList<Fault> FaultPlan::due(const QString &operation)
{
    const int number = ++m_seen[operation];
    const int numberOfAny = ++m_seen[QLatin1String(Fault::kAnyOperation)];
    QList<Fault> due;
    for (const Fault &fault : std::as_const(m_faults)) {
        const bool isAny = fault.operation == QLatin1String(Fault::kAnyOperation);
        if (!isAny && fault.operation != operation)
            continue;
        if (fault.nth == Fault::kEvery || fault.nth == (isAny ? numberOfAny : number))
            due.append(fault);
    }
    return due;
}

QByteArray garbageNamed(const QString &name)
{
    if (name == QStringLiteral("wrong length"))
        return bigEndian32(0xffffffff);
    if (name == QStringLiteral("huge length"))
        return bigEndian32(0x7fffffff) + QByteArray(64, 'x');
    if (name == QStringLiteral("unknown type"))
        return frameWithValue(typeHead(4215) + bigEndian32(0x7fffffff));
    if (name == QStringLiteral("huge count"))
        return frameWithValue(typeHead(13) + bigEndian32(0xfffffff0) + QByteArray(4, '\xff'));
    if (name == QStringLiteral("deep nesting"))
        return deepNesting();
    if (name == QStringLiteral("empty"))
        return framed(bigEndian32(0));
    return {};
}

QStringList garbageNames()
{
    return {QStringLiteral("wrong length"), QStringLiteral("huge length"),
            QStringLiteral("unknown type"), QStringLiteral("huge count"),
            QStringLiteral("deep nesting"), QStringLiteral("empty")};
}

} // namespace Sim
