#include "devicefield.h"

#include <widgets/elidedlabel.h>
#include <widgets/formwidgets.h>
#include <widgets/plaintip.h>

#include <QAction>
#include <QHBoxLayout>
#include <QIcon>
#include <QKeySequence>
#include <QStyle>
#include <QStyleOption>
#include <QStylePainter>

namespace KEO {

namespace {

constexpr int kArrow = 8; // pixels
constexpr int kMargin = 4;

} // namespace

/// What the labels show is the button's, and so are the clicks on them.
DeviceField::DeviceField(QWidget *parent)
    : QToolButton(parent), m_sign(new QLabel), m_text(named(new ElidedLabel, "deviceStatus"))
{
    setObjectName(QStringLiteral("deviceField"));
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    const int size = style()->pixelMetric(QStyle::PM_SmallIconSize);
    m_sign->setPixmap(QIcon(QStringLiteral(":/keo/image/warning.png")).pixmap(size));
    m_sign->hide();
    m_sign->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_text->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(kMargin, 1, kMargin, 1);
    layout->setSpacing(kMargin);
    layout->addWidget(m_sign);
    layout->addWidget(m_text);
    layout->addSpacing(kArrow);
}

void DeviceField::setClickAction(QAction *action)
{
    m_action = action;
    connect(this, &DeviceField::clicked, action, &QAction::trigger);
    connect(action, &QAction::changed, this, &DeviceField::updateTip);
    updateTip();
}

void DeviceField::showState(const QString &text, bool isWarning, const QString &why)
{
    m_text->setText(text);
    m_sign->setVisible(isWarning);
    m_why = why;
    updateTip();
}

void DeviceField::updateTip()
{
    QStringList lines{m_text->text()};
    if (!m_why.isEmpty())
        lines.append(m_why);
    if (m_action && m_action->isEnabled())
        lines.append(tr("Click to choose the device (%1).")
                         .arg(m_action->shortcut().toString(QKeySequence::NativeText)));
    const QString tip = plainTip(lines.join(u'\n'));
    setToolTip(tip);
    m_text->setToolTip(tip);
    setAccessibleName(m_text->text());
    setAccessibleDescription(m_why);
}

QSize DeviceField::sizeHint() const
{
    return layout()->totalSizeHint();
}

QSize DeviceField::minimumSizeHint() const
{
    return layout()->totalMinimumSize();
}

void DeviceField::paintEvent(QPaintEvent *event)
{
    QToolButton::paintEvent(event);
    QStyleOption arrow;
    arrow.initFrom(this);
    const QRect place(width() - kMargin - kArrow, (height() - kArrow) / 2, kArrow, kArrow);
    arrow.rect = QStyle::visualRect(layoutDirection(), rect(), place);
    QStylePainter(this).drawPrimitive(QStyle::PE_IndicatorArrowDown, arrow);
}

} // namespace KEO
