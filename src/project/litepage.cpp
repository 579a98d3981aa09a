#include "litepage.h"

#include "keolitetriggeroptionwidget.h"

#include <design/design.h>

#include <QVBoxLayout>

namespace KEO {

QWidget *LitePage::build(QWidget *programmer)
{
    m_triggerOptionForm = new KeoLiteTriggerOptionWidget;
    m_triggerOptionForm->setObjectName(QStringLiteral("triggerOptionForm"));
    auto *triggerTab = new QWidget;
    triggerTab->setObjectName(QStringLiteral("triggerTab"));
    auto *layout = new QVBoxLayout(triggerTab);
    layout->addWidget(programmer);
    layout->addWidget(m_triggerOptionForm);
    layout->addStretch();
    return triggerTab;
}

void LitePage::reset()
{
    m_triggerOptionForm->checkAutoTrigger();
}

void LitePage::saveSettings()
{
    if (m_triggerOptionForm)
        m_design.setDelay(m_triggerOptionForm->delay());
}

void LitePage::leaveDesign()
{
    if (m_triggerOptionForm)
        m_triggerOptionForm->reset();
}

} // namespace KEO
