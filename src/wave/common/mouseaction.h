#pragma once

class QMouseEvent;

namespace WaveMonitor {

/// What the mouse does in a view between a press and its release; one object a press, owned by the
/// view, which hands it the events.
template <typename View>
class MouseAction
{
public:
    explicit MouseAction(View *view) : m_view(view) {}
    MouseAction(const MouseAction &) = delete;
    MouseAction &operator=(const MouseAction &) = delete;
    virtual ~MouseAction() = default;
    virtual void moved(QMouseEvent *event) = 0;
    virtual void released(QMouseEvent *) {}

protected:
    View *m_view;
};

} // namespace WaveMonitor
