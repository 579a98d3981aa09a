#pragma once

#include "jsonwalk.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

namespace Sim {

/// Something that goes wrong when a certain packet arrives.
struct Fault
{
    enum class Kind {
        Result,  ///< "OPEN" is answered with `value`
        Lost,    ///< no reply
        Late,    ///< the reply comes `ms` later; others may overtake it
        Doubled, ///< the reply comes twice
        Swapped, ///< the reply comes after the next one
        Pieces,  ///< the reply comes in pieces of `value` bytes, `ms` apart
        Glued,   ///< the reply waits and leaves in one write with the next one
        Garbage, ///< `bytes` come before the reply, if there is one
        Hang,    ///< the server reads and answers nothing any more
        Die,     ///< the process ends at once with the exit status `value`
    };
    static constexpr int kEvery = JsonWalk::kEvery;
    static constexpr const char *kAnyOperation = "any";

    Kind kind = Kind::Lost;
    QString operation; ///< see operationOf in cable.h, or kAnyOperation
    int nth = kEvery;  ///< which packet of the operation since the server started, from 1
    int value = 0;
    int ms = 0;
    QByteArray bytes;
    QString name; ///< as in the board file, for the log
};

/// Counts the packets of each operation and tells which faults are due.
class FaultPlan final
{
public:
    explicit FaultPlan(QList<Fault> faults = {}) : m_faults(std::move(faults)) {}

    /// The faults of a packet that just arrived, in the order of the board file.
    QList<Fault> due(const QString &operation);
    [[nodiscard]] const QList<Fault> &all() const { return m_faults; }

private:
    QList<Fault> m_faults;
    QHash<QString, int> m_seen;
};

/// Bytes that no client should trip over, by name: "wrong length" (-1), "huge length" (2^31 - 1),
/// "unknown type", "huge count", "deep nesting", "empty". Empty for any other name.
QByteArray garbageNamed(const QString &name);
QStringList garbageNames();

} // namespace Sim
