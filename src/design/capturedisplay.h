#pragma once

#include <config/coreconfig.h>
#include <config/litecoreconfig.h>
#include <wave_data/signalelement.h>
#include <wave_data/windowcontents.h>

#include <QBitArray>
#include <QList>

namespace KEO {

/// Cuts the raw sections of one capture window, in the order in which the data manager hands them
/// out, into one element for each captured bit of \a core: ids from 0 in flat signal order, sample
/// 0 the oldest. Empty if there is no core or no whole row in the sections.
QList<WaveMonitor::SignalElement> extractSignalData(const CoreConfig *core,
                                                    const QList<QBitArray> &sections);

/// The same for a lite core, in a chip of the model \a deviceModel (empty: not known) and described
/// by a .keo or a .zeo file. Both decide on the order in which the core stores its rows.
QList<WaveMonitor::SignalElement> extractSignalData(const LiteCoreConfig *core,
                                                    const QList<QBitArray> &sections,
                                                    const QString &deviceModel, bool isZeo);

/// Hands the rows of a capture to \a receiver in the order of the description: addSignal for a
/// plain signal, addBus for a bus, which takes one of \a elements for each member. Stops at a row
/// that lacks elements.
template <typename Receiver>
void addCapturedRows(Receiver &receiver, const QList<SignalEntry> &rows,
                     QList<WaveMonitor::SignalElement> elements)
{
    qsizetype next = 0;
    for (const SignalEntry &row : rows) {
        const qsizetype width = qMax<qsizetype>(1, row.members.size());
        if (next + width > elements.size())
            return;
        if (row.members.isEmpty()) {
            receiver.addSignal(elements.at(next));
        } else {
            WaveMonitor::BusElement bus{row.name, row.text, {}};
            for (qsizetype member = next; member < next + width; ++member)
                bus.signals.append(&elements[member]);
            receiver.addBus(bus);
        }
        next += width;
    }
}

/// Fills \a contents as a fresh capture shows them: the core's signals and buses as rows in the
/// order of the description, and its trigger position. \a elements are those of extractSignalData;
/// the samples are shared, not copied.
void fillWindow(WaveMonitor::WindowContents &contents, const CoreConfig &core,
                QList<WaveMonitor::SignalElement> elements);
/// The same for rows and a trigger position of any kind of core.
void fillWindow(WaveMonitor::WindowContents &contents, const QList<SignalEntry> &rows,
                int triggerPosition, QList<WaveMonitor::SignalElement> elements);

} // namespace KEO
