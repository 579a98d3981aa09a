#include "spansync.h"

#include <wave/common/viewergeometry.h>

#include <algorithm>
#include <limits>

namespace WaveMonitor {

SpanSync::SpanSync(WaveMonitorWidget &first, WaveMonitorWidget &second, qsizetype offset)
    : m_first(first), m_second(second), m_offset(offset)
{
    NotificationCenter::instance()->subscribe(this, {EvAfterZoom, EvViewScrolled});
    for (WaveMonitorWidget *viewer : {&first, &second})
        connect(viewer, &WaveMonitorWidget::scrollRangeChanged, this, &SpanSync::followRange,
                Qt::QueuedConnection);
    align();
}

SpanSync::~SpanSync()
{
    NotificationCenter::instance()->unsubscribe(this);
}

void SpanSync::align()
{
    follow(m_first, m_second, m_offset);
}

/// A viewer that is laid out, or gets its rows, may scroll where it could not before. A zoom of the
/// second one changes its range too, before the event tells of it.
void SpanSync::followRange()
{
    if (m_second.shownSpan().zoomRate != m_known[1].zoomRate)
        follow(m_second, m_first, -m_offset);
    else
        align();
}

void SpanSync::handleEvents(Notification *e)
{
    if (concerns(*e, m_first.domain()) && m_first.shownSpan() != m_known[0])
        follow(m_first, m_second, m_offset);
    else if (concerns(*e, m_second.domain()) && m_second.shownSpan() != m_known[1])
        follow(m_second, m_first, -m_offset);
}

void SpanSync::follow(WaveMonitorWidget &leader, WaveMonitorWidget &follower, qsizetype offset)
{
    const WaveMonitorWidget::Span span = leader.shownSpan();
    const double left = span.left + double(qRound64(double(offset) * CLOCK_PITCH * span.zoomRate));
    follower.showSpan({span.zoomRate, int(std::clamp(left, double(std::numeric_limits<int>::min()),
                                                     double(std::numeric_limits<int>::max())))});
    m_known[0] = m_first.shownSpan();
    m_known[1] = m_second.shownSpan();
}

} // namespace WaveMonitor
