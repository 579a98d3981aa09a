#include "keolitetriggeroptionwidget.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

namespace KEO {

namespace {

constexpr int kLongestDelay = 60 * 60 * 1000; // ms
constexpr int kWaitsForUser = -1;

} // namespace

KeoLiteTriggerOptionWidget::KeoLiteTriggerOptionWidget(QWidget *parent)
    : QWidget(parent),
      m_checkAutoTrigger(new QCheckBox(tr("Auto Trigger"))),
      m_spinTriggerDelay(new QSpinBox)
{
    setWindowTitle(tr("Form"));
    auto *groupBox = new QGroupBox(tr("Trigger"));
    groupBox->setObjectName(QStringLiteral("groupBox"));

    m_checkAutoTrigger->setObjectName(QStringLiteral("checkAutoTrigger"));
    m_checkAutoTrigger->setToolTip(
        tr("The capture begins by itself after the delay. Otherwise it waits for Force Trigger."));
    m_spinTriggerDelay->setObjectName(QStringLiteral("spinTriggerDelay"));
    m_spinTriggerDelay->setSuffix(tr("ms"));
    m_spinTriggerDelay->setRange(0, kLongestDelay);
    m_spinTriggerDelay->setToolTip(
        tr("From Start to the capture. In Auto, of the first one only."));
    auto *label = new QLabel(tr("Delay:"));
    label->setObjectName(QStringLiteral("label"));
    label->setBuddy(m_spinTriggerDelay);
    // Without Auto Trigger there is nothing to delay.
    connect(m_checkAutoTrigger, &QCheckBox::toggled, label, &QWidget::setEnabled);
    connect(m_checkAutoTrigger, &QCheckBox::toggled, m_spinTriggerDelay, &QWidget::setEnabled);
    m_checkAutoTrigger->setChecked(true);

    auto *row = new QHBoxLayout(groupBox);
    row->addWidget(m_checkAutoTrigger);
    row->addSpacing(row->spacing() > 0 ? 2 * row->spacing() : fontMetrics().averageCharWidth());
    row->addWidget(label);
    row->addWidget(m_spinTriggerDelay);
    row->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(groupBox);
}

int KeoLiteTriggerOptionWidget::delay() const
{
    return m_checkAutoTrigger->isChecked() ? m_spinTriggerDelay->value() : kWaitsForUser;
}

void KeoLiteTriggerOptionWidget::setDelay(int delay)
{
    m_checkAutoTrigger->setChecked(delay != kWaitsForUser);
    if (delay != kWaitsForUser)
        m_spinTriggerDelay->setValue(delay);
}

int KeoLiteTriggerOptionWidget::shownDelay() const
{
    return m_spinTriggerDelay->value();
}

void KeoLiteTriggerOptionWidget::showDelay(int delay)
{
    m_spinTriggerDelay->setValue(delay);
}

void KeoLiteTriggerOptionWidget::checkAutoTrigger()
{
    m_checkAutoTrigger->setChecked(true);
}

void KeoLiteTriggerOptionWidget::reset()
{
    checkAutoTrigger();
    m_spinTriggerDelay->setValue(0);
}

} // namespace KEO
