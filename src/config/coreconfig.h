#pragma once

#include "matchtype.h"
#include "signalentry.h"

#include <QList>
#include <QString>

#include <array>
#include <memory>
#include <vector>

namespace KEO {

struct CoreConfig;

/// A trigger port: the signals that a match unit compares. No signals means that the design leaves
/// the port unconnected.
struct TriggerPort
{
    CoreConfig *core = nullptr; ///< owner
    int index = 0;              ///< 0 to 15
    QList<SignalEntry> signals;

    /// Its length is the port's width in bits.
    [[nodiscard]] QStringList flatSignalNames() const;
};

/// Sets one condition on a trigger port; `M0` to `M15` in trigger expressions.
struct MatchUnit
{
    CoreConfig *core = nullptr; ///< owner
    int index = 0;              ///< 0 to 15
    bool enabled = false;       ///< the unit takes part in triggering
    MatchType match_type = MatchType::Basic;
    MatchFunction func = MatchFunction::Equal;
    bool counter_enable = false;    ///< the core has a match counter for this unit
    int counter_width = 2;          ///< bits
    int counter = 2;                ///< matches
    bool countinuous = false;       ///< matches must follow one another (spelled as in the file)
    QString value0;                 ///< one character a port bit: 0 1 X R F B N; minimum of a range
    QString value1;                 ///< maximum of a range
    TriggerPort *trigger = nullptr; ///< a port of the same core, borrowed; may be null

    /// The unit is enabled and compares a port that has signals: it takes a place in the core.
    [[nodiscard]] bool isInUse() const;
};

/// One standard analyzer core of a design with its trigger settings. Owns its ports and units; the
/// field names are those of the core description's attributes.
struct CoreConfig
{
    static constexpr int kPorts = 16;
    static constexpr int kUnits = 16;
    static constexpr int kMinRegisterWidth = 16;
    static constexpr int kMaxCounterWidth = 1024;

    explicit CoreConfig(int coreIndex = 0);
    CoreConfig(const CoreConfig &) = delete; // ports and units point back here
    CoreConfig &operator=(const CoreConfig &) = delete;
    ~CoreConfig();

    int index = 0;             ///< number of the core in the chip, 4 bits reach the hardware
    int active = 0;            ///< 0 not in the run, 1 armed, 2 triggered or stopped; never stored
    QString sample_clock;      ///< net name, for display
    int trig_type = 0;         ///< tool flow's number; 1 inverts the clock of a VCD export
    int dynamic = 0;           ///< 1: expressions are chosen at run time; 0: fixed in the design
    int storage_depth = 1024;  ///< samples
    int capture_amount = 1024; ///< samples in a window
    int trigger_pos = 0;       ///< samples before the trigger in a window
    int window_num = 1;        ///< windows
    std::vector<std::unique_ptr<TriggerPort>> triggers; ///< kPorts records, record i has index i
    std::vector<std::unique_ptr<MatchUnit>> matchUnits; ///< kUnits records, record i has index i
    QStringList expressions;       ///< tokens M0 to M15 ! & ^ | ( ) without blanks
    QList<bool> expressionEnabled; ///< empty, or a flag for each expression; never stored
    QList<SignalEntry> signals;    ///< captured signals
    QString module_name = QStringLiteral("dut");

    /// Its length is the number of captured bits.
    [[nodiscard]] QStringList flatSignalNames() const;
    /// Ports that the design connects, in index order. Borrowed.
    [[nodiscard]] QList<TriggerPort *> portsWithSignals() const;
    /// Units with `enabled` set, in index order. Borrowed.
    [[nodiscard]] QList<MatchUnit *> enabledUnits() const;
    /// The record with that `index`, or null. Borrowed.
    [[nodiscard]] TriggerPort *triggerByIndex(int portIndex) const;
    [[nodiscard]] MatchUnit *matchUnitByIndex(int unitIndex) const;
    /// Puts every expression in force if none has a flag yet, as after a load.
    void ensureExpressionFlags();
    /// Replaces expression \a position; does nothing outside the list.
    void setExpression(const QString &expression, int position);
    /// The signal or bus member at \a position of the flat order; an empty entry past the end.
    [[nodiscard]] SignalEntry signalAtPosition(int position) const;
    /// Takes names and texts by flat position. False, and no change, unless the table has exactly
    /// one entry for each captured bit; a position that it lacks gives empty strings.
    bool applySignalNames(const QMap<int, SignalNames> &table);
    /// Width in bits of the core's registers, which is also the distance in bits from one row of
    /// the capture memory to the next: at least 16, and enough for every counter in use, every
    /// port, and a captured row with its marker bit. A counter is loaded with 32 bits at most; a
    /// width beyond kMaxCounterWidth is a broken description and counts as kMaxCounterWidth, so
    /// that one number in a file can't make every register word megabytes long. Signals are bounded
    /// where a description is read.
    [[nodiscard]] int requiredRegisterWidth() const;
};

/// A core of its own with everything that \a core has.
[[nodiscard]] std::unique_ptr<CoreConfig> copyOf(const CoreConfig &core);

using CoreList = std::vector<std::unique_ptr<CoreConfig>>;

} // namespace KEO
