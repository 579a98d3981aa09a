#include "overviewstrip.h"

#include "activity.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPolygonF>

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

namespace {

constexpr int kHeight = 28; // pixels
constexpr int kTop = 7;     // of the row's drawing
constexpr int kBottom = 22; // of the row's drawing
constexpr qreal kLeastFrame = 4.0;

} // namespace

OverviewStrip::OverviewStrip(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("overview"));
    setAccessibleName(tr("Overview of the window"));
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setToolTip(tr("The whole window. Click or drag to move the waves."));
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize OverviewStrip::sizeHint() const
{
    return {200, kHeight};
}

void OverviewStrip::setRow(const QList<QBitArray> &members, int samples, const QColor &color)
{
    m_members = members;
    m_samples = samples;
    m_color = color;
    m_picture = {};
    update();
}

void OverviewStrip::setTrigger(int sample)
{
    m_trigger = sample;
    update();
}

void OverviewStrip::setMarkers(const QList<int> &samples)
{
    m_markers = samples;
    update();
}

void OverviewStrip::setView(qreal first, qreal last)
{
    m_first = first;
    m_last = last;
    update();
}

qreal OverviewStrip::xOf(qreal sample) const
{
    return m_samples > 0 ? sample * width() / m_samples : 0.0;
}

QRectF OverviewStrip::viewFrame() const
{
    const qreal left = xOf(std::max(m_first, 0.0));
    const qreal right = xOf(std::min(m_last, qreal(m_samples)));
    const qreal missing = std::max(0.0, kLeastFrame - (right - left));
    return QRectF(left - missing / 2, 0.5, right - left + missing, height() - 1.0);
}

void OverviewStrip::drawRow()
{
    const qreal ratio = devicePixelRatioF();
    m_picture = QPixmap(size() * ratio);
    m_picture.setDevicePixelRatio(ratio);
    m_picture.fill(Qt::black);
    const QList<Activity> activity = activityOf(m_members, m_samples, m_picture.width());
    if (m_members.isEmpty() || m_samples < 1)
        return;
    QList<QLineF> lines;
    for (qsizetype column = 0; column < activity.size(); ++column) {
        const qreal x = (qreal(column) + 0.5) / ratio;
        const Activity &each = activity[column];
        if (each.changes) {
            lines.append({x, kTop, x, kBottom});
            continue;
        }
        const qreal dot = 0.5 / ratio;
        if (m_members.size() > 1 || each.level)
            lines.append({x - dot, kTop, x + dot, kTop});
        if (m_members.size() > 1 || !each.level)
            lines.append({x - dot, kBottom, x + dot, kBottom});
    }
    QPainter painter(&m_picture);
    painter.setPen(QPen(m_color, 0));
    painter.drawLines(lines);
}

void OverviewStrip::paintEvent(QPaintEvent *)
{
    const QSize pixels = size() * devicePixelRatioF();
    if (m_picture.size() != pixels)
        drawRow();
    QPainter painter(this);
    painter.drawPixmap(0, 0, m_picture);
    if (m_samples < 1)
        return;
    painter.fillRect(viewFrame(), QColor(255, 255, 255, 50));
    painter.setPen(QPen(Qt::white, 0));
    painter.drawRect(viewFrame().adjusted(0.5, 0, -0.5, 0));
    painter.setRenderHint(QPainter::Antialiasing);
    // The trigger's arrow stands at the top, the markers' at the bottom.
    for (auto marker = m_markers.crbegin(); marker != m_markers.crend(); ++marker) {
        const qreal x = xOf(*marker);
        const bool isActive = marker + 1 == m_markers.crend();
        painter.setPen(QPen(Qt::red, 0));
        painter.setBrush(isActive ? Qt::red : Qt::darkGray);
        painter.drawLine(QPointF(x, 0), QPointF(x, kHeight));
        painter.drawPolygon(
            QPolygonF({{x, kHeight - 7.0}, {x + 4, qreal(kHeight)}, {x - 4, qreal(kHeight)}}));
    }
    const qreal x = xOf(m_trigger);
    painter.setPen(QPen(Qt::yellow, 0));
    painter.setBrush(Qt::yellow);
    painter.drawLine(QPointF(x, 0), QPointF(x, kHeight));
    painter.drawPolygon(QPolygonF({{x, 6.0}, {x + 4, 0.0}, {x - 4, 0.0}}));
}

void OverviewStrip::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const qreal x = event->position().x();
    const QRectF frame = viewFrame();
    const bool takesFrame = x >= frame.left() && x <= frame.right();
    m_grip = takesFrame ? x - frame.center().x() : 0.0;
    if (!takesFrame)
        ask(x);
}

void OverviewStrip::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        ask(event->position().x() - m_grip);
}

void OverviewStrip::ask(qreal x)
{
    if (m_samples < 1 || width() < 1)
        return;
    Q_EMIT asked(std::clamp(int(std::floor(x * m_samples / width())), 0, m_samples - 1));
}

} // namespace WaveMonitor
