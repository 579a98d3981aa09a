#include "statusline.h"

#include "devicefield.h"

#include <widgets/elidedlabel.h>
#include <widgets/formwidgets.h>

#include <QHBoxLayout>
#include <QPoint>
#include <QStatusBar>
#include <QTime>
#include <QToolButton>

namespace KEO {

namespace {

constexpr int kGap = 16; // pixels between what is told

} // namespace

StatusLine::StatusLine(QObject *parent)
    : QObject(parent),
      m_widget(named(new QWidget, "statusLine")),
      m_run(named(new ElidedLabel, "runStatus")),
      m_told(named(new ElidedLabel, "toldStatus")),
      m_act(named(new QToolButton, "toldAction")),
      m_device(new DeviceField)
{
    m_act->setAutoRaise(true);
    m_act->setFocusPolicy(Qt::TabFocus);
    m_act->hide();
    auto *layout = new QHBoxLayout(m_widget);
    layout->setContentsMargins(4, 0, 4, 0);
    layout->setSpacing(kGap);
    layout->addWidget(m_run);
    auto *told = new QHBoxLayout;
    told->setSpacing(4);
    told->addWidget(m_told);
    told->addWidget(m_act);
    layout->addLayout(told);
    layout->addStretch(1);
    layout->addWidget(m_device);
}

StatusLine::~StatusLine()
{
    delete m_widget;
}

void StatusLine::enter(QStatusBar *bar)
{
    m_bar = bar;
    if (!m_bar || !m_widget)
        return;
    m_bar->addWidget(m_widget, 1);
    m_widget->show();
}

void StatusLine::leave()
{
    if (!m_widget)
        return;
    m_told->clear();
    m_act->hide();
    m_run->clear();
    if (QStatusBar *bar = m_bar) {
        bar->removeWidget(m_widget);
        m_widget->setParent(nullptr); // or a closed project would go on in a window
    }
    m_bar = nullptr;
}

void StatusLine::tell(const QString &text)
{
    if (m_widget) {
        m_act->hide();
        m_told->setText(tr("%1  %2").arg(
            QLocale().toString(QTime::currentTime(), QStringLiteral("HH:mm:ss")), text));
    }
}

void StatusLine::offer(const QString &text, const QString &button, const std::function<void()> &act)
{
    tell(text);
    if (!m_widget)
        return;
    m_act->disconnect(this);
    m_act->setText(button);
    m_act->show();
    connect(m_act, &QToolButton::clicked, this, act);
}

void StatusLine::setOfferEnabled(bool isEnabled)
{
    if (m_widget)
        m_act->setEnabled(isEnabled);
}

void StatusLine::showRun(const QString &text)
{
    if (m_widget)
        m_run->setText(text);
}

void StatusLine::showDevice(const QString &text, bool isWarning, const QString &why)
{
    if (!m_widget)
        return;
    m_device->showState(text, isWarning, why);
}

void StatusLine::setDeviceAction(QAction *action)
{
    if (m_widget)
        m_device->setClickAction(action);
}

QPoint StatusLine::deviceCorner() const
{
    return m_widget ? m_device->mapToGlobal(m_device->rect().topRight()) : QPoint();
}

} // namespace KEO
