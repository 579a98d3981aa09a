#include "scrollpage.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QVBoxLayout>

namespace KEO {

namespace {

/// Keeps the wheel from what it passes over.
class WheelGuard final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *field = static_cast<QWidget *>(watched);
        if (event->type() != QEvent::Wheel || field->hasFocus())
            return QObject::eventFilter(watched, event);
        event->ignore(); // and so it goes on to the page
        return true;
    }
};

void guard(QWidget *field, QObject *guard)
{
    field->installEventFilter(guard);
    if (field->focusPolicy() == Qt::WheelFocus)
        field->setFocusPolicy(Qt::StrongFocus); // or the wheel takes the focus before it is asked
}

} // namespace

QWidget *makeScrollPage(QWidget *content)
{
    auto *page = new QWidget;
    auto *area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setWidget(content);
    auto *wheelGuard = new WheelGuard(page);
    for (QWidget *field : content->findChildren<QAbstractSpinBox *>())
        guard(field, wheelGuard);
    for (QWidget *field : content->findChildren<QComboBox *>())
        guard(field, wheelGuard);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(area);
    return page;
}

int scrollPlaceOf(const QWidget &page)
{
    const auto *area = page.findChild<QScrollArea *>();
    return area ? area->verticalScrollBar()->value() : 0;
}

void setScrollPlace(const QWidget &page, int place)
{
    if (auto *area = page.findChild<QScrollArea *>())
        QTimer::singleShot(0, area, [area, place] { area->verticalScrollBar()->setValue(place); });
}

} // namespace KEO
