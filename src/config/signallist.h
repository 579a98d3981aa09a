#pragma once

#include "signalentry.h"

class QDomElement;
class QXmlStreamWriter;

namespace KEO {

/// Which elements inside a `Bus` are its members.
enum class BusMembers { Signals, AnyElement };

/// The `Signal` and `Bus` children of a `SignalList` element, in document order. A bus from the
/// tool flow has its name in the attribute `name`; one that we wrote has it in `restorename`, and
/// `name` is its display text.
QList<SignalEntry> readSignalList(const QDomElement &signalList,
                                  BusMembers members = BusMembers::Signals);

/// Writes a `SignalList` element, also for no signals.
void writeSignalList(QXmlStreamWriter &xml, const QList<SignalEntry> &signals);

} // namespace KEO
