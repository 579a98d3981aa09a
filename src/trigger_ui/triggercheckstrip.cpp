#include "triggercheckstrip.h"

#include <QEvent>
#include <QKeyEvent>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr int kMaxRows = 4; // of one line of text each, before it scrolls

} // namespace

TriggerCheckStrip::TriggerCheckStrip(QWidget *parent) : QListWidget(parent)
{
    setAccessibleName(tr("Trigger check"));
    setFrameShape(QFrame::NoFrame);
    setWordWrap(true);
    setTextElideMode(Qt::ElideNone);
    setResizeMode(QListView::Adjust);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false); // as quiet as a label
    const int side = fontMetrics().height();
    setIconSize({side, side});
    hide();
    connect(this, &QListWidget::itemClicked, this, &TriggerCheckStrip::choose);
}

void TriggerCheckStrip::tell(const QList<TriggerFinding> &findings)
{
    m_isRefusing = false;
    if (std::exchange(m_findings, findings) != findings)
        fill();
}

void TriggerCheckStrip::refuse(const TriggerFinding &finding)
{
    if (std::exchange(m_isRefusing, true))
        m_findings.removeFirst();
    m_findings.prepend(finding);
    fill();
    scrollToTop();
}

void TriggerCheckStrip::fill()
{
    const QString current = currentItem() ? currentItem()->text() : QString();
    clear();
    for (const TriggerFinding &finding : std::as_const(m_findings)) {
        const bool isObstacle = finding.weight == TriggerFinding::Weight::Obstacle;
        auto *item = new QListWidgetItem(
            style()->standardIcon(isObstacle ? QStyle::SP_MessageBoxWarning
                                             : QStyle::SP_MessageBoxInformation),
            finding.text, this);
        item->setData(Qt::AccessibleTextRole,
                      (isObstacle ? tr("Obstacle: %1") : tr("Note: %1")).arg(finding.text));
        if (finding.text == current)
            setCurrentItem(item, QItemSelectionModel::NoUpdate);
    }
    setVisible(count() > 0);
    fitHeight();
}

void TriggerCheckStrip::fitHeight()
{
    if (count() == 0)
        return;      // out of sight, and without contents it has no size
    doItemsLayout(); // the lines wrap by the width that the strip has now
    // A row of one line, with what the style puts around it, unless all rows have more.
    int line = 3 * std::max(fontMetrics().lineSpacing(), iconSize().height()) / 2;
    for (int row = 0; row < count(); ++row)
        line = std::min(line, visualItemRect(item(row)).height());
    // Whole rows: one that is cut can't be read.
    const int top = visualItemRect(item(0)).top();
    int height = 0;
    for (int row = 0; row < count(); ++row) {
        const int bottom = visualItemRect(item(row)).bottom() + 1 - top;
        if (row > 0 && bottom > kMaxRows * line)
            break;
        height = bottom;
    }
    setFixedHeight(height);
}

void TriggerCheckStrip::resizeEvent(QResizeEvent *event)
{
    QListWidget::resizeEvent(event);
    if (event->size().width() != event->oldSize().width())
        fitHeight();
}

void TriggerCheckStrip::changeEvent(QEvent *event)
{
    QListWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitHeight();
}

void TriggerCheckStrip::keyPressEvent(QKeyEvent *event)
{
    // Not itemActivated: where one click activates, a click would choose twice.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        choose(currentItem());
    else
        QListWidget::keyPressEvent(event);
}

void TriggerCheckStrip::choose(const QListWidgetItem *item)
{
    if (item)
        Q_EMIT chosen(m_findings[row(item)]);
}

} // namespace KEO
