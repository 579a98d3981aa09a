#pragma once

#include <QListWidget>

namespace KEO {

/// The trigger expressions of a core. Quick clicks on a check box switch it each time, and are no
/// double click on the expression.
class ExpressionList final : public QListWidget
{
    Q_OBJECT

public:
    using QListWidget::QListWidget;

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    [[nodiscard]] bool isOnCheckBox(const QPoint &place) const;
};

} // namespace KEO
