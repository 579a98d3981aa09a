#pragma once

#include <QListWidget>

namespace KEO {

/// A list as high as its entries, or lower where there is no room, of which one click or the Enter
/// key chooses. Lies on its page without a frame.
class ChoiceList final : public QListWidget
{
    Q_OBJECT

public:
    explicit ChoiceList(QWidget *parent = nullptr);

    /// Appends an entry; one that can't be chosen now is grey. \a tip is plain text.
    void addChoice(const QString &text, const QString &value, const QString &tip, bool isThere);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The value of an entry.
    void chosen(const QString &value);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;

private:
    [[nodiscard]] int heightOf(int rows) const;
    void choose(const QListWidgetItem *item);
};

} // namespace KEO
