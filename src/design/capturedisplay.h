#pragma once

#include <config/coreconfig.h>
#include <config/litecoreconfig.h>
#include <export/exportfiles.h>
#include <wave_data/signalelement.h>
#include <wave_data/windowcontents.h>

#include <QBitArray>
#include <QList>

namespace KEO {

/// One capture window on its way to a viewer or a file.
struct CapturedWindow
{
    ExportCore core;            ///< what is told of its core, the trigger's sample included
    int window = 0;             ///< number within the core
    QList<SignalEntry> signals; ///< rows to make; buses take one element for each member
    /// In flat order of `signals`; empty if no row has arrived.
    QList<WaveMonitor::SignalElement> elements;

    /// As a viewer shows it at first. The samples are shared, so asking twice costs little.
    [[nodiscard]] WaveMonitor::WindowContents contents() const;
};

/// What a viewer shows at first of a capture of \a signals, samples apart.
[[nodiscard]] WaveMonitor::WindowContents contentsWithoutSamples(const QList<SignalEntry> &signals);

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

} // namespace KEO
