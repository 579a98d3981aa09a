#pragma once

#include <QWidget>

class QCheckBox;
class QSpinBox;

namespace KEO {

/// The settings of a lite core, which has no trigger to set: when a capture begins after Start. It
/// stays usable during a capture; what it says then counts for the next one.
class KeoLiteTriggerOptionWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit KeoLiteTriggerOptionWidget(QWidget *parent = nullptr);

    /// From Start to the capture, in ms; -1 if the capture waits for Force Trigger.
    [[nodiscard]] int delay() const;
    void setDelay(int delay);
    /// The delay in the field, in ms, also while it does not count.
    [[nodiscard]] int shownDelay() const;
    void showDelay(int delay);
    /// Captures begin by themselves.
    void checkAutoTrigger();
    /// As at first: captures begin by themselves, and at once.
    void reset();

private:
    QCheckBox *m_checkAutoTrigger; // child
    QSpinBox *m_spinTriggerDelay;  // child
};

} // namespace KEO
