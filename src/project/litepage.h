#pragma once

#include "configpage.h"

#include <QPointer>

namespace KEO {

class Design;
class KeoLiteTriggerOptionWidget;

/// The form that says when a capture with a lite core begins. It may be used at any time.
class LitePage final : public ConfigPage
{
    Q_OBJECT

public:
    /// \a design is borrowed and outlives the page.
    explicit LitePage(Design &design) : m_design(design) {}

    [[nodiscard]] QWidget *build(QWidget *programmer) override;
    [[nodiscard]] QString title() const override { return tr("Trigger"); }
    void reset() override;
    void setEnabled(bool) override {}
    void saveSettings() override;
    void withSettings(const std::function<void()> &use) override;
    void showDesign() override;
    [[nodiscard]] PageState state() const override;
    void setState(const PageState &state) override;
    void leaveDesign() override;

private:
    Design &m_design;
    QPointer<KeoLiteTriggerOptionWidget> m_triggerOptionForm; // part of the tab
};

} // namespace KEO
