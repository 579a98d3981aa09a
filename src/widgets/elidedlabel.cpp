#include "elidedlabel.h"

#include "plaintip.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace KEO {

ElidedLabel::ElidedLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {text().isEmpty() ? 0 : metrics.horizontalAdvance(QStringLiteral("MMM…")),
            metrics.height()};
}

QSize ElidedLabel::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(text()) + metrics.averageCharWidth(), metrics.height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    style()->drawItemText(&painter, rect(), int(Qt::AlignVCenter | Qt::AlignLeading), palette(),
                          isEnabled(), fontMetrics().elidedText(text(), Qt::ElideRight, width()),
                          foregroundRole());
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty() ||
        fontMetrics().horizontalAdvance(text()) <= width())
        return QLabel::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    QToolTip::showText(help->globalPos(), plainTip(text()), this);
    return true;
}

} // namespace KEO
