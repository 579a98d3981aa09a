#include "litepage.h"

#include "keolitetriggeroptionwidget.h"

#include <design/design.h>
#include <widgets/formwidgets.h>
#include <widgets/scrollpage.h>

#include <QVBoxLayout>

namespace KEO {

QWidget *LitePage::build(QWidget *programmer)
{
    m_triggerOptionForm = new KeoLiteTriggerOptionWidget;
    m_triggerOptionForm->setObjectName(QStringLiteral("triggerOptionForm"));
    auto *content = new QWidget;
    auto *layout = new QVBoxLayout(content);
    layout->addWidget(programmer);
    layout->addWidget(m_triggerOptionForm);
    layout->addStretch();
    return named(makeScrollPage(content), "triggerTab");
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

void LitePage::withSettings(const std::function<void()> &use)
{
    saveSettings(); // which are none of the core's
    use();
}

void LitePage::showDesign()
{
    if (m_triggerOptionForm)
        m_triggerOptionForm->setDelay(m_design.delay());
}

PageState LitePage::state() const
{
    return {.delay = m_triggerOptionForm ? m_triggerOptionForm->shownDelay() : 0};
}

void LitePage::setState(const PageState &state)
{
    if (m_triggerOptionForm)
        m_triggerOptionForm->showDelay(state.delay);
}

void LitePage::leaveDesign()
{
    m_design.setDelay(0);
    if (m_triggerOptionForm)
        m_triggerOptionForm->reset();
}

} // namespace KEO
