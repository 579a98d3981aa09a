#pragma once

#include <QLineEdit>

namespace KEO {

/// A masked field of digits that leaves to its owner what a paste or drop means: the toolkit would
/// drop what does not fit the mask without a word.
class ValueField final : public QLineEdit
{
    Q_OBJECT

public:
    using QLineEdit::QLineEdit;

    /// A paste now replaces the whole value: all of it is selected, or nothing and the cursor
    /// stands before it.
    [[nodiscard]] bool takesWhole() const;

Q_SIGNALS:
    void pasteAsked(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void dropEvent(QDropEvent *event) override;
};

} // namespace KEO
