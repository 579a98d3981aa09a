#pragma once

#include <wave/common/notificationcenter.h>
#include <wave/wavemonitorwidget.h>

#include <QObject>

namespace WaveMonitor {

/// Keeps the waves of two viewers at the same zoom and the same place, whichever of them the user
/// moves, so that sample s of the first stands above sample s + offset of the second.
class SpanSync final : public QObject
{
    Q_OBJECT

public:
    /// Both are borrowed and have domains of their own.
    SpanSync(WaveMonitorWidget &first, WaveMonitorWidget &second, qsizetype offset);
    ~SpanSync() override;

    /// The second one takes the place of the first.
    void align();

    Q_INVOKABLE void handleEvents(Notification *e);

private:
    void followRange();
    void follow(WaveMonitorWidget &leader, WaveMonitorWidget &follower, qsizetype offset);

    WaveMonitorWidget &m_first;
    WaveMonitorWidget &m_second;
    const qsizetype m_offset;
    // What each shows as far as has been dealt with; moves of the follower echo in events.
    WaveMonitorWidget::Span m_known[2];
};

} // namespace WaveMonitor
