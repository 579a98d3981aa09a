#pragma once

#include <QPointer>
#include <QWidget>

namespace KEO {

/// The busy indicator of a capture: a small bar over the middle of the window, at most one at a
/// time. It never takes the focus by itself; a user who clicks on it still reaches the capture,
/// because it hands plain F3 and F4 presses to its parent. A child of its parent. GUI thread.
class WaitingTip final : public QWidget
{
    Q_OBJECT

public:
    /// Does nothing while a tip shows. With a null \a parent the tip stands in the middle of the
    /// screen.
    static void show(QWidget *parent);
    /// Takes the tip away, if there is one. The object itself goes with the next turn of the event
    /// loop, since this may run inside one of its own events.
    static void close();

    [[nodiscard]] QSize sizeHint() const override;
    /// Follows the parent's moves, and hides with it.
    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    explicit WaitingTip(QWidget *parent);
    void centre();

    static QPointer<WaitingTip> s_tip; ///< the one that shows
};

} // namespace KEO
