#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <functional>

class QAction;
class QPoint;
class QStatusBar;
class QToolButton;
class QWidget;

namespace KEO {

class DeviceField;
class ElidedLabel;

/// What goes on in a project, in the status bar of its window: what the run does, what was done
/// last, and at the right the device and the cable. Tells without a box, and never takes the focus.
class StatusLine final : public QObject
{
    Q_OBJECT

public:
    explicit StatusLine(QObject *parent);
    ~StatusLine() override;

    /// Moves into \a bar, which is borrowed and may go first; or into none, for null.
    void enter(QStatusBar *bar);
    /// Moves out, and forgets what was told.
    void leave();

    /// Tells, with the time, what was done, such as "Saved a.analyzer_prj". Stands until the next.
    void tell(const QString &text);
    /// Tells so as well, with a button beside it that does something about it. It goes with the
    /// text.
    void offer(const QString &text, const QString &button, const std::function<void()> &act);
    /// May what is offered be done now? Holds for offers to come as well.
    void setOfferEnabled(bool isEnabled);
    void showRun(const QString &text);
    /// With a warning sign if \a isWarning; \a why, which may be empty, is told by a tool tip.
    void showDevice(const QString &text, bool isWarning, const QString &why);
    /// What a click on the device does. Borrowed; outlives this.
    void setDeviceAction(QAction *action);
    /// The lower right corner of a menu over the device, on the screen.
    [[nodiscard]] QPoint deviceCorner() const;

private:
    QPointer<QStatusBar> m_bar;
    QPointer<QWidget> m_widget; // its parts are the widgets below
    ElidedLabel *m_run;
    ElidedLabel *m_told;
    QToolButton *m_act;
    DeviceField *m_device;
};

} // namespace KEO
