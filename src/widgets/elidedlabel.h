#pragma once

#include <QLabel>

namespace KEO {

/// One line of plain text that gives way: where there is no room for it all, it ends in dots, and
/// the tool tip has the whole, unless one is set. What text() returns is whole as well.
class ElidedLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    [[nodiscard]] QSize minimumSizeHint() const override;
    /// Room for the text, or less.
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
};

} // namespace KEO
