#include "waitingtip.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QProgressBar>
#include <QScreen>
#include <QVBoxLayout>

namespace KEO {

namespace {

constexpr int kBarHeight = 15; // pixels
constexpr int kWidth = 200;    // pixels
constexpr float kFrameStrength = 0.5f;

} // namespace

QPointer<WaitingTip> WaitingTip::s_tip;

WaitingTip::WaitingTip(QWidget *parent) : QWidget(parent, Qt::SplashScreen)
{
    setObjectName(QStringLiteral("waitingTip"));
    setAccessibleName(tr("Capture is running"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    auto *bar = new QProgressBar;
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    bar->setMaximumHeight(kBarHeight);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(bar);
    if (parent)
        parent->installEventFilter(this);
}

void WaitingTip::show(QWidget *parent)
{
    if (s_tip)
        return;
    const bool wasActive = parent && parent->isActiveWindow();
    s_tip = new WaitingTip(parent);
    s_tip->QWidget::show();
    if (wasActive)
        parent->activateWindow(); // some window systems activate whatever is shown
}

void WaitingTip::close()
{
    if (!s_tip)
        return;
    WaitingTip *tip = s_tip;
    s_tip.clear();
    if (tip->isActiveWindow() && tip->parentWidget())
        tip->parentWidget()->activateWindow();
    tip->QWidget::close();
    tip->deleteLater();
}

QSize WaitingTip::sizeHint() const
{
    return QSize(kWidth, 0);
}

bool WaitingTip::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != parent())
        return QWidget::eventFilter(watched, event);
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        centre();
    // Not every window system takes it away with a minimized window.
    if (event->type() == QEvent::WindowStateChange || event->type() == QEvent::Show ||
        event->type() == QEvent::Hide)
        setVisible(this == s_tip && parentWidget()->isVisible() && !parentWidget()->isMinimized());
    return QWidget::eventFilter(watched, event);
}

void WaitingTip::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    centre();
    if (parentWidget())
        parentWidget()->setFocus(Qt::OtherFocusReason);
}

/// A frame, or the tip would blend into the page behind it: it has no shadow everywhere.
void WaitingTip::paintEvent(QPaintEvent *)
{
    QColor line = palette().color(QPalette::WindowText);
    line.setAlphaF(kFrameStrength);
    QPainter painter(this);
    painter.setPen(QPen(line, 0));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void WaitingTip::centre()
{
    QRect place = rect();
    if (const QWidget *window = parentWidget())
        place.moveCenter(window->mapToGlobal(window->rect().center()));
    else
        place.moveCenter(screen()->geometry().center());
    move(place.topLeft());
}

void WaitingTip::keyPressEvent(QKeyEvent *event)
{
    if (parent() && (event->key() == Qt::Key_F3 || event->key() == Qt::Key_F4))
        QCoreApplication::sendEvent(parent(), event);
    else
        QWidget::keyPressEvent(event);
}

} // namespace KEO
