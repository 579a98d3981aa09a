#pragma once

#include "configpage.h"
#include "projectparts.h"

#include <design/coresetup.h>
#include <wave/windowstate.h>
#include <wave_data/clockperiod.h>

#include <QHash>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <vector>

namespace KEO {

class CarriedList;

/// What the user of a project has set and arranged. Outlives the project's closing.
struct ProjectSetup
{
    CoreSetup cores;
    PageState page;
    QMap<int, WaveMonitor::ClockPeriod> clocks;    ///< by core
    bool isRehearsed = false;                      ///< by TriggerRehearsal
    std::vector<WaveMonitor::WindowState> windows; ///< the arrangement of each
};

/// Takes what the user has set and arranged out of a project that is about to be reopened, gives it
/// to the new build of its design, and tells what became of it: how many settings in the status
/// line, and which in a list, unless all of them are as they were.
class SetupCarrier final : public QObject
{
    Q_OBJECT

public:
    /// \a parts is borrowed and outlives every use.
    SetupCarrier(const ProjectParts &parts, QObject *parent);
    ~SetupCarrier() override;

    [[nodiscard]] std::shared_ptr<ProjectSetup> take() const;
    /// The new build is open, and no wave tab yet.
    void give(const ProjectSetup &setup);
    /// The project is closed: its list goes, and nothing of it is left to take.
    void leave();

Q_SIGNALS:
    void told(const QString &text);

private:
    void tell(const CarriedSettings &account);

    const ProjectParts m_parts;
    QPointer<CarriedList> m_list;        ///< the window's
    QHash<int, CaptureNumbers> m_unheld; ///< of the open design, see SettingsCarry
};

} // namespace KEO
