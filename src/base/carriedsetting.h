#pragma once

#include <QList>
#include <QString>

namespace KEO {

/// What became of a user's setting when a design was built anew.
enum class CarryOutcome {
    Kept,    ///< as it was
    Adapted, ///< as much of it as the new design holds
    Lost     ///< what the new design brings stands in its place
};

/// One line of the account that is given of them.
struct CarriedSetting
{
    CarryOutcome outcome = CarryOutcome::Kept;
    QString place;   ///< whose it is, such as "Core 0"
    QString setting; ///< which one of its place, such as "Trigger position"
    QString before;  ///< what it was, for people to read
    QString after;   ///< what stands there now; empty if there is no such place any more
    QString reason;  ///< whole sentences; empty if there is nothing to explain

    bool operator==(const CarriedSetting &other) const = default;
};

using CarriedSettings = QList<CarriedSetting>;

} // namespace KEO
