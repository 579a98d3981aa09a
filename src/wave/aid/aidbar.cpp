#include "aidbar.h"

#include "aidgeometry.h"

#include <widgets/plaintip.h>

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QToolButton>

namespace WaveMonitor {

namespace {

QToolButton *newButton(QAction *action, Qt::ArrowType arrow, const char *name)
{
    auto *button = new QToolButton;
    button->setObjectName(QLatin1String(name));
    button->setDefaultAction(action);
    button->setToolButtonStyle(Qt::ToolButtonIconOnly);
    button->setArrowType(arrow);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAccessibleName(action->text());
    button->setCursor(Qt::ArrowCursor);
    button->setFixedSize(kAidBarHeight, kAidBarHeight);
    return button;
}

} // namespace

AidBar::AidBar(QAction *previous, QAction *next, QWidget *parent)
    : QWidget(parent), m_label(new QLabel)
{
    setObjectName(QStringLiteral("aidBar"));
    setFixedHeight(kAidBarHeight);
    setCursor(Qt::SplitVCursor);
    m_label->setObjectName(QStringLiteral("aidText"));
    m_label->setTextFormat(Qt::PlainText);
    // A long sentence must not widen the window.
    m_label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 4, 0);
    layout->setSpacing(2);
    layout->addWidget(newButton(previous, Qt::LeftArrow, "aidPrevious"));
    layout->addWidget(newButton(next, Qt::RightArrow, "aidNext"));
    layout->addWidget(m_label, 1);
}

void AidBar::setText(const QString &text)
{
    if (m_text == text)
        return;
    m_text = text;
    setToolTip(KEO::plainTip(text));
    m_label->setAccessibleDescription(text);
    showText();
}

void AidBar::showText()
{
    m_label->setText(
        m_label->fontMetrics().elidedText(m_text, Qt::ElideRight, m_label->contentsRect().width()));
}

void AidBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layout()->activate(); // or the text still has the width before
    showText();
}

void AidBar::mousePressEvent(QMouseEvent *event)
{
    m_grip = event->position().toPoint().y();
}

void AidBar::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        Q_EMIT dragged(event->position().toPoint().y() - m_grip);
}

} // namespace WaveMonitor
