#pragma once

#include <wave/common/notificationcenter.h>

#include <QAction>
#include <QList>
#include <QObject>

namespace WaveMonitor {

class RulerView;
class WaveView;

/// What keys do with the markers of one viewer, and the zoom to the two that were used last.
class MarkerActions final : public QObject
{
    Q_OBJECT

public:
    /// Both are borrowed and outlive it.
    MarkerActions(RulerView *ruler, WaveView *waves);
    ~MarkerActions() override;

    /// All of them; each has a key.
    [[nodiscard]] QList<QAction *> actions();
    /// Invisible while there are fewer than two markers.
    [[nodiscard]] QAction *zoomAction() { return &m_zoom; }

    Q_INVOKABLE void handleEvents(Notification *e);

private:
    void plant();
    void remove();
    void move(int samples);
    void zoom();

    RulerView *m_ruler;
    WaveView *m_waves;
    QAction m_plant;
    QAction m_remove;
    QAction m_moveLeft;
    QAction m_moveRight;
    QAction m_zoom;
};

} // namespace WaveMonitor
