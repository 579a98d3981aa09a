#pragma once

#include <wave/common/notificationcenter.h>

#include <QAction>
#include <QObject>

#include <deque>

namespace WaveMonitor {

class WaveView;

/// The zooms that one wave view had before, each with its place, and the way back to them.
class ZoomHistory final : public QObject
{
    Q_OBJECT

public:
    /// Borrowed; outlives it.
    explicit ZoomHistory(WaveView *waves);
    ~ZoomHistory() override;

    /// Goes one zoom back. Invisible when there is none.
    [[nodiscard]] QAction *action() { return &m_back; }

    Q_INVOKABLE void handleEvents(Notification *e);

private:
    struct Zoom
    {
        qreal rate;
        int bar; ///< value of the horizontal bar
    };

    void goBack();

    WaveView *m_waves;
    QAction m_back;
    std::deque<Zoom> m_before; ///< the last one last
    bool m_isGoingBack = false;
};

} // namespace WaveMonitor
