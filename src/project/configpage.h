#pragma once

#include <capture/triggercheck.h>
#include <capture/triggerproposal.h>
#include <trigger_ui/dynamicconfigwidget.h>

#include <QObject>
#include <QString>

#include <functional>
#include <optional>

class QWidget;

namespace KEO {

/// What a page shows beside the settings of the design.
struct PageState
{
    int core = -1;                       ///< number of the one that shows; -1 for none
    DynamicConfigWidget::Rows rows = {}; ///< of that core
    int delay = 0; ///< ms; of a lite core, which may be waiting for Force Trigger instead
};

/// The tab on which a kind of project shows and takes the settings of its design.
class ConfigPage : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// A new tab with \a programmer on top, which the caller owns. Not while the one before lives.
    [[nodiscard]] virtual QWidget *build(QWidget *programmer) = 0;
    [[nodiscard]] virtual QString title() const = 0;
    /// The project has been put into a window, as at first or anew.
    virtual void reset() = 0;
    virtual void setEnabled(bool isEnabled) = 0;
    /// Hands what the fields hold to the design.
    virtual void saveSettings() = 0;
    /// Calls \a use, which must not run the event loop, while the design has what the fields hold,
    /// and leaves no trace of that in the design's cores.
    virtual void withSettings(const std::function<void()> &use) { use(); }
    /// Brings up the core with that number and sets its trigger as an edit of the user's would.
    /// Gives the changes that take it back; nothing if there is no such core.
    virtual std::optional<TriggerChanges> setTrigger(int, const TriggerChanges &) { return {}; }
    /// Brings up the core with that number and selects what \a finding speaks of.
    virtual void showFinding(int, const TriggerFinding &) {}
    /// The design has been loaded.
    virtual void showDesign() = 0;
    [[nodiscard]] virtual PageState state() const { return {}; }
    /// Shows that of the design, as far as it has it. Changes no setting. After showDesign.
    virtual void setState(const PageState &) {}
    /// The design's cores are about to go.
    virtual void leaveDesign() = 0;

Q_SIGNALS:
    /// The user has changed what decides whether a run may start.
    void changed();
    /// The user has changed some setting, see withSettings.
    void edited();
};

} // namespace KEO
