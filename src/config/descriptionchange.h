#pragma once

#include <QList>
#include <QString>

namespace KEO {

/// One thing in which two core descriptions differ.
struct DescriptionChange
{
    enum class Subject {
        // of the description
        Kind,
        Version,
        CheckValue,
        CoreOrder,
        // of a core
        Core,
        ModuleName,
        SampleClock,
        TrigType,
        StorageDepth,
        LiteAmount,
        Implementation,
        InputRegister,
        InitData,
        ExpressionType,
        Expression,
        Windows,
        Amount,
        Position,
        // of its signals, or of those of a port
        Signal,
        SignalText,
        Bus,
        BusText,
        BusMembers,
        // of a match unit
        Unit,
        UnitPort,
        MatchType,
        HasCounter,
        CounterWidth,
        Function,
        Value,
        Maximum,
        Count,
        Continuous
    };
    enum class Action {
        Changed,
        Added,
        Removed,
        Moved,
        Renamed,
        Formed,   ///< a bus of signals that were there
        Dissolved ///< a bus whose signals stay
    };
    enum class Origin {
        Design, ///< the tool flow alone sets it
        Saved   ///< saving a project writes it too: a user's setting, or the form of the file
    };

    Subject subject = Subject::Core;
    Action action = Action::Changed;
    Origin origin = Origin::Design;
    int core = -1;       ///< number of the core; -1: of the description
    int port = -1;       ///< of a port's signals; -1: of the captured ones
    int unit = -1;       ///< of a match unit
    QString name = {};   ///< of the signal or bus, unless `before` or `after` is
    QString before = {}; ///< a value, or the name of what went; the flat position of what was moved
    QString after = {};
    int signalCount = 1; ///< signals that came, went or moved with a bus

    bool operator==(const DescriptionChange &other) const = default;
};

/// What a script calls the subject and the action, such as "storage_depth", "added".
[[nodiscard]] QString nameOf(DescriptionChange::Subject subject);
[[nodiscard]] QString nameOf(DescriptionChange::Action action);

/// What has changed, without its core and its values, such as "M3: match type".
[[nodiscard]] QString titleOf(const DescriptionChange &change);
/// The same with the values, such as "M3: match type Basic → Range".
[[nodiscard]] QString lineOf(const DescriptionChange &change);
/// "Core 1", or "Design" of what concerns the whole, such as a core that was added.
[[nodiscard]] QString placeOf(const DescriptionChange &change);

/// The same with the place before it, such as "Core 1, setting: trigger position 16 → 20".
[[nodiscard]] QString wholeLineOf(const DescriptionChange &change);

/// All in a line, the design's changes first and core by core; signals and settings are counted,
/// and so is what makes it long.
[[nodiscard]] QString summaryOf(const QList<DescriptionChange> &changes);

} // namespace KEO
