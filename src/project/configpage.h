#pragma once

#include <QObject>
#include <QString>

#include <functional>

class QWidget;

namespace KEO {

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
    /// The design has been loaded.
    virtual void showDesign() = 0;
    /// The design's cores are about to go.
    virtual void leaveDesign() = 0;

Q_SIGNALS:
    /// The user has changed what decides whether a run may start.
    void changed();
    /// The user has changed some setting, see withSettings.
    void edited();
};

} // namespace KEO
