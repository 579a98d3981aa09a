#pragma once

#include <QDialog>
#include <QPointer>

class QShortcut;

namespace KEO {

/// A window beside the one it belongs to, for reading while the user goes on there. The keyboard
/// stays in the window unless the user asks for this one; then Escape closes it and gives the
/// keyboard back. Ctrl+F6 goes round from the window through all that stand beside it. Keys of the
/// window, such as F1, work here too.
class SideWindow : public QDialog
{
    Q_OBJECT

public:
    /// \a name is its object name.
    SideWindow(const QString &name, const QString &title, QWidget *parent);
    ~SideWindow() override;

    /// The user asked for it: it comes to the front and takes the keyboard.
    void reach();
    /// It comes of something else that the user did: the keyboard stays where it is.
    void showBeside();
    /// Gives the keyboard back to the window and stays open; false if it hasn't got it. So the key
    /// that asks for it leads back, too.
    bool giveBack();

    void setVisible(bool isVisible) override;

private:
    void goRound();

    QPointer<QShortcut> m_round; ///< the window's
};

} // namespace KEO
