#pragma once

#include "signalentry.h"

#include <QList>
#include <QString>
#include <QStringList>

namespace KEO {

/// One lite analyzer core of a design: it captures its signals from the moment it is started, with
/// no trigger to set. The field names are those of the core description's attributes.
struct LiteCoreConfig
{
    explicit LiteCoreConfig(int coreIndex = 0) : index(coreIndex) {}

    int index = 0;             ///< number of the core in the chip
    int active = 0;            ///< 0 not in a run, 1 armed, 2 triggered or stopped; never stored
    QString sample_clock;      ///< net name, for display
    int trig_type = 0;         ///< tool flow's number; 1 inverts the clock of a VCD export
    int implemention = 0;      ///< tool flow's number of the core's form, spelled as in the file
    int capture_amount = 1024; ///< samples
    bool input_register_enabled = false;    ///< kept for the tool flow
    bool capture_init_data_enabled = false; ///< kept for the tool flow
    QList<SignalEntry> signals;             ///< captured signals
    QString module_name = QStringLiteral("dut");

    /// Its length is the number of captured bits, and with it the width of the core's registers and
    /// of a row of its capture memory.
    [[nodiscard]] QStringList flatSignalNames() const { return KEO::flatSignalNames(signals); }
    [[nodiscard]] QStringList flatSignalTexts() const { return KEO::flatSignalTexts(signals); }
    /// See KEO::applySignalNames.
    bool applySignalNames(const QMap<int, SignalNames> &table)
    {
        return KEO::applySignalNames(signals, table);
    }

    bool operator==(const LiteCoreConfig &other) const = default;
};

} // namespace KEO
