#include "signalentry.h"

#include <algorithm>

namespace KEO {
namespace {

qsizetype bitsOf(const SignalEntry &entry)
{
    return std::max<qsizetype>(1, entry.members.size());
}

/// Calls \a visit with each single signal and each member of a bus, in flat order.
template <typename Entries, typename Visit>
void forEachBit(Entries &entries, Visit visit)
{
    for (auto &entry : entries) {
        if (entry.members.isEmpty())
            visit(entry);
        for (auto &member : entry.members)
            visit(member);
    }
}

} // namespace

// Written out, since a list of the type that is being defined can't be compared yet where the
// compiler would write it.
bool SignalEntry::operator==(const SignalEntry &other) const
{
    return name == other.name && text == other.text && members == other.members;
}

QStringList flatSignalNames(const QList<SignalEntry> &signals)
{
    QStringList names;
    forEachBit(signals, [&names](const SignalEntry &bit) { names += bit.name; });
    return names;
}

QStringList flatSignalTexts(const QList<SignalEntry> &signals)
{
    QStringList texts;
    forEachBit(signals, [&texts](const SignalEntry &bit) { texts += bit.text; });
    return texts;
}

qsizetype signalBits(const QList<SignalEntry> &signals)
{
    qsizetype bits = 0;
    for (const SignalEntry &entry : signals)
        bits += bitsOf(entry);
    return bits;
}

SignalEntry signalAtPosition(const QList<SignalEntry> &signals, int position)
{
    if (position < 0)
        return {};
    qsizetype left = position;
    for (const SignalEntry &entry : signals) {
        if (left < bitsOf(entry))
            return entry.members.isEmpty() ? entry : entry.members[left];
        left -= bitsOf(entry);
    }
    return {};
}

bool applySignalNames(QList<SignalEntry> &signals, const QMap<int, SignalNames> &table)
{
    if (table.size() != signalBits(signals))
        return false;
    int position = 0;
    forEachBit(signals, [&](SignalEntry &bit) {
        const SignalNames names = table.value(position++);
        bit.name = names.name;
        bit.text = names.text;
    });
    return true;
}

} // namespace KEO
