#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace KEO {

/// One line of a signal list: a single signal, or a bus when `members` is not empty. Members are
/// single signals; nothing looks at members of members.
struct SignalEntry
{
    QString name;               ///< name given by the tool flow
    QString text;               ///< display name; empty means `name`
    QList<SignalEntry> members; ///< of a bus, in file order

    bool operator==(const SignalEntry &other) const;
};

/// A new name and display text for one captured bit, see applySignalNames.
struct SignalNames
{
    QString name;
    QString text;
};

// A signal list in flat order: a single signal, or the members of a bus one after the other.

/// The names. The length of the list is the number of bits that the signals take.
QStringList flatSignalNames(const QList<SignalEntry> &signals);
/// The display names; empty where there is none.
QStringList flatSignalTexts(const QList<SignalEntry> &signals);
/// The length of those lists, without the list.
qsizetype signalBits(const QList<SignalEntry> &signals);
/// The signal or bus member at \a position; an empty entry outside the list.
SignalEntry signalAtPosition(const QList<SignalEntry> &signals, int position);
/// Takes names and texts by flat position. False, and no change, unless the table has exactly one
/// entry for each bit; a position that it lacks gives empty strings.
bool applySignalNames(QList<SignalEntry> &signals, const QMap<int, SignalNames> &table);

} // namespace KEO
