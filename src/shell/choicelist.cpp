#include "choicelist.h"

#include <widgets/plaintip.h>

#include <QKeyEvent>

#include <algorithm>

namespace KEO {

namespace {

constexpr int kLeastRows = 2;
constexpr int kGap = 2; // pixels above and below a row

} // namespace

ChoiceList::ChoiceList(QWidget *parent) : QListWidget(parent)
{
    setFrameShape(QFrame::NoFrame);
    viewport()->setAutoFillBackground(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Maximum);
    setTabKeyNavigation(false);
    setSpacing(kGap);
    connect(this, &QListWidget::itemClicked, this, &ChoiceList::choose);
}

void ChoiceList::addChoice(const QString &text, const QString &value, const QString &tip,
                           bool isThere)
{
    auto *item = new QListWidgetItem(text, this);
    item->setData(Qt::UserRole, value);
    item->setToolTip(plainTip(tip));
    if (!isThere)
        item->setFlags(Qt::NoItemFlags);
    updateGeometry();
}

int ChoiceList::heightOf(int rows) const
{
    return 2 * frameWidth() + rows * (std::max(sizeHintForRow(0), 1) + 2 * kGap);
}

QSize ChoiceList::sizeHint() const
{
    return {sizeHintForColumn(0) + 2 * (kGap + frameWidth()), heightOf(count())};
}

QSize ChoiceList::minimumSizeHint() const
{
    return {0, heightOf(std::min(count(), kLeastRows))};
}

void ChoiceList::keyPressEvent(QKeyEvent *event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isEnter || event->key() == Qt::Key_Space)
        choose(currentItem());
    else
        QListWidget::keyPressEvent(event);
}

void ChoiceList::focusInEvent(QFocusEvent *event)
{
    QListWidget::focusInEvent(event);
    for (int row = 0; row < count() && !currentItem(); ++row) {
        if (item(row)->flags() & Qt::ItemIsEnabled)
            setCurrentRow(row);
    }
}

void ChoiceList::choose(const QListWidgetItem *item)
{
    if (item && item->flags() & Qt::ItemIsEnabled)
        Q_EMIT chosen(item->data(Qt::UserRole).toString());
}

} // namespace KEO
