#include "aidnames.h"

#include "aidgeometry.h"

#include <widgets/plaintip.h>

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace WaveMonitor {

namespace {

constexpr int kMargin = 4; // pixels between a column's border and its text

} // namespace

AidNames::AidNames(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("aidNames"));
    setBackgroundRole(QPalette::Base);
    setAutoFillBackground(true);
}

void AidNames::setRows(const AidRows &rows)
{
    m_rows = rows;
    setAccessibleName(rows.title);
    update();
}

void AidNames::setSample(qsizetype sample, qsizetype samples)
{
    if (m_sample == sample && m_samples == samples)
        return;
    m_sample = sample;
    m_samples = samples;
    update();
}

void AidNames::setColumns(const Columns &columns)
{
    if (m_columns == columns)
        return;
    m_columns = columns;
    update();
}

void AidNames::setTop(int top)
{
    m_top = top;
    update();
}

QString AidNames::valueOf(const AidRow &row) const
{
    if (m_sample < 0 || m_sample >= m_samples)
        return {};
    switch (aidLevel(row, m_sample)) {
    case AidLevel::Holds:
        return QStringLiteral("1");
    case AidLevel::Fails:
        return QStringLiteral("0");
    default:
        return QStringLiteral("?");
    }
}

void AidNames::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect heading(0, 0, width(), kAidBarHeight);
    const QRect body(0, kAidBarHeight, width(), height() - kAidBarHeight);
    const int rowHeight = aidRowHeight();
    painter.setClipRect(body);
    for (qsizetype row = m_top / rowHeight; row < m_rows.rows.size(); ++row) {
        const int y = kAidBarHeight + int(row) * rowHeight - m_top;
        if (y >= height())
            break;
        const AidRow &shown = m_rows.rows[row];
        QFont rowFont = font();
        rowFont.setBold(m_rows.hitRow == row);
        painter.setFont(rowFont);
        painter.setPen(palette().color(QPalette::Text));
        const int nameWidth = m_columns.value - m_columns.name - 2 * kMargin;
        painter.drawText(QRect(m_columns.name + kMargin, y, nameWidth, rowHeight), Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(shown.name, Qt::ElideRight, nameWidth));
        painter.drawText(QRect(m_columns.value + kMargin, y, width() - m_columns.value, rowHeight),
                         Qt::AlignVCenter, valueOf(shown));
        painter.setPen(palette().color(QPalette::Midlight));
        painter.drawLine(0, y + rowHeight - 1, width(), y + rowHeight - 1);
    }
    painter.setClipping(false);
    painter.setFont(font());
    painter.fillRect(heading, palette().color(QPalette::Button));
    painter.setPen(palette().color(QPalette::ButtonText));
    painter.drawText(
        heading.adjusted(kMargin, 0, -kMargin, 0), Qt::AlignVCenter,
        painter.fontMetrics().elidedText(m_rows.title, Qt::ElideRight, width() - 2 * kMargin));
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawLine(heading.bottomLeft(), heading.bottomRight());
}

bool AidNames::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const int y = help->pos().y() - kAidBarHeight;
    const int row = (y + m_top) / aidRowHeight();
    if (y < 0 || row >= m_rows.rows.size()) {
        QToolTip::showText(help->globalPos(), KEO::plainTip(m_rows.title), this);
        return true;
    }
    const AidRow &shown = m_rows.rows[row];
    const QString text = shown.toolTip.isEmpty() ? shown.name : shown.name + u'\n' + shown.toolTip;
    QToolTip::showText(
        help->globalPos(), KEO::plainTip(text), this,
        QRect(0, kAidBarHeight + row * aidRowHeight() - m_top, width(), aidRowHeight()));
    return true;
}

} // namespace WaveMonitor
