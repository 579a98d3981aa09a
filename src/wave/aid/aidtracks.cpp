#include "aidtracks.h"

#include "aidgeometry.h"

#include <wave/common/viewercolors.h>
#include <widgets/plaintip.h>

#include <QHelpEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace WaveMonitor {

namespace {

constexpr int kHighTop = 4;  // of a trace in a row of the least height, pixels
constexpr int kLowTop = 14;  // the same
constexpr int kWholeTop = 2; // of a hit that fills its row
constexpr int kWholeHeight = 15;
constexpr qreal kLineShift = 0.0004; // samples, as the lines across the waves have it
constexpr QColor kSeparatorColor(0x55, 0x55, 0x55);
constexpr QColor kTraceColor(0xB8, 0xC8, 0xE0);
constexpr QColor kUnknownColor(0x90, 0x90, 0x90);

/// A trace in device pixels, \a ratio of them a pixel, from \a top on.
void drawTrace(QPainter &painter, const std::vector<AidColumn> &columns, int top, qreal ratio,
               bool isHits)
{
    const int line = std::max(1, int(ratio));
    const int high = top + qRound(kHighTop * ratio);
    const int low = top + qRound(kLowTop * ratio);
    for (size_t from = 0; from < columns.size();) {
        const AidColumn &column = columns[from];
        const auto other = std::find_if(columns.begin() + qptrdiff(from), columns.end(),
                                        [&](const AidColumn &each) { return each != column; });
        const auto end = size_t(other - columns.begin());
        const auto fill = [&](int y, int height, const QBrush &brush) {
            painter.fillRect(QRect(int(from), y, int(end - from), height), brush);
        };
        if (column.isUnknown)
            fill(high, low + line - high, QBrush(kUnknownColor, Qt::BDiagPattern));
        if (isHits && column.holds)
            fill(top + qRound(kWholeTop * ratio), qRound(kWholeHeight * ratio), kAidHitColor);
        else if (column.holds && column.fails)
            fill(high, low + line - high, kTraceColor);
        else if (column.holds)
            fill(high, line, kTraceColor);
        else if (column.fails)
            fill(low, line, isHits ? kAidHitColor : kTraceColor);
        from = end;
    }
}

QString levelText(AidLevel level)
{
    switch (level) {
    case AidLevel::Holds:
        return AidTracks::tr("%1 is true at sample %2");
    case AidLevel::Fails:
        return AidTracks::tr("%1 is false at sample %2");
    default:
        return AidTracks::tr("Whether %1 is true at sample %2 is not known");
    }
}

} // namespace

AidTracks::AidTracks(QWidget *parent) : QAbstractScrollArea(parent)
{
    setObjectName(QStringLiteral("aidTracks"));
    setFrameShape(NoFrame);
    setFocusPolicy(Qt::NoFocus);
    // The vertical bar's place stays, so that the traces are as wide as the waves below.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    verticalScrollBar()->setSingleStep(aidRowHeight());
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

void AidTracks::setRows(const AidRows &rows)
{
    m_rows = rows;
    fitBar();
    redraw();
}

void AidTracks::setSamples(qsizetype samples)
{
    if (m_samples == samples)
        return;
    m_samples = samples;
    redraw();
}

void AidTracks::setSpan(const Span &span)
{
    if (m_span == span)
        return;
    m_span = span;
    redraw();
}

void AidTracks::setLines(int trigger, const QList<int> &markers)
{
    m_trigger = trigger;
    m_markers = markers;
    viewport()->update();
}

int AidTracks::fullHeight() const
{
    return int(m_rows.rows.size()) * aidRowHeight();
}

bool AidTracks::scrolls() const
{
    return verticalScrollBar()->maximum() > 0;
}

void AidTracks::redraw()
{
    m_picture = {};
    viewport()->update();
}

void AidTracks::fitBar()
{
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setMaximum(std::max(0, fullHeight() - viewport()->height()));
}

void AidTracks::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    fitBar();
    redraw();
}

void AidTracks::scrollContentsBy(int, int)
{
    redraw();
}

void AidTracks::drawTraces()
{
    const qreal ratio = devicePixelRatioF();
    m_picture = QPixmap(viewport()->size() * ratio);
    m_picture.fill(Qt::black);
    QPainter painter(&m_picture);
    const int top = verticalScrollBar()->value();
    const int rowHeight = aidRowHeight();
    const int middle = (rowHeight - kAidLeastRowHeight) / 2; // where a trace is, in a higher row
    for (qsizetype row = top / rowHeight; row < m_rows.rows.size(); ++row) {
        const int y = qRound((qreal(row) * rowHeight - top) * ratio);
        if (y >= m_picture.height())
            break;
        drawTrace(painter,
                  aidColumns(m_rows.rows[row], m_samples, m_span.left * ratio, m_span.pitch * ratio,
                             m_picture.width()),
                  y + qRound(middle * ratio), ratio, m_rows.hitRow == row);
        painter.fillRect(0, y + qRound(rowHeight * ratio) - 1, m_picture.width(), 1,
                         kSeparatorColor);
    }
    painter.end();
    m_picture.setDevicePixelRatio(ratio);
}

void AidTracks::paintEvent(QPaintEvent *)
{
    if (m_picture.isNull())
        drawTraces();
    QPainter painter(viewport());
    painter.drawPixmap(0, 0, m_picture);
    const auto drawLine = [&](int sample, const QColor &color) {
        const int x = qRound(m_span.left + (sample - kLineShift) * m_span.pitch);
        painter.setPen(color);
        painter.drawLine(x, 0, x, viewport()->height());
    };
    drawLine(m_trigger, Qt::yellow);
    for (const int marker : m_markers)
        drawLine(marker, Qt::red);
}

bool AidTracks::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        showTip(*static_cast<QHelpEvent *>(event));
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void AidTracks::showTip(const QHelpEvent &event)
{
    const int row = (event.pos().y() + verticalScrollBar()->value()) / aidRowHeight();
    const auto sample = qsizetype(std::floor((event.pos().x() - m_span.left) / m_span.pitch));
    if (row >= m_rows.rows.size() || sample < 0 || sample >= m_samples) {
        QToolTip::hideText();
        return;
    }
    const AidRow &shown = m_rows.rows[row];
    QString text = levelText(aidLevel(shown, sample)).arg(shown.name, QString::number(sample));
    if (!shown.toolTip.isEmpty())
        text += u'\n' + shown.toolTip;
    QToolTip::showText(event.globalPos(), KEO::plainTip(text), viewport(),
                       QRect(event.pos() - QPoint(1, 2), QSize(3, 5)));
}

} // namespace WaveMonitor
