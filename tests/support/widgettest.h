#pragma once

#include "testmain.h"

#include <QApplication>
#include <QMessageBox>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <utility>

class QAbstractItemView;
class QComboBox;
class QImage;
class QModelIndex;

/// Base of the tests with windows. Fails on warnings, but for what the toolkit says when there is
/// no window system and when a view has no use for a click.
class WidgetTest : public QuietTest
{
    Q_OBJECT

protected Q_SLOTS:
    void init();
};

/// Hands the next modal widget of type Box to \a act, once it is active and from within the event
/// loop that shows it. Ask for it before the call that brings the box up.
template <typename Box>
class OnModal final : public QObject
{
public:
    explicit OnModal(std::function<void(Box *)> act) : m_act(std::move(act))
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            auto *const box = qobject_cast<Box *>(QApplication::activeModalWidget());
            if (!box || !box->isActiveWindow() || m_seen)
                return;
            m_seen = true;
            m_act(box);
        });
        m_timer.start(5);
    }
    [[nodiscard]] bool seen() const { return m_seen; }

private:
    QTimer m_timer;
    std::function<void(Box *)> m_act;
    bool m_seen = false;
};

/// Closes every message box that comes up and writes it down as "title: text". A test that hangs in
/// a box would tell nothing.
class BoxWatcher final : public QObject
{
    Q_OBJECT

public:
    explicit BoxWatcher(QMessageBox::StandardButton button = QMessageBox::NoButton);

    QStringList seen;
    /// Pressed by the keyboard; a box without that button gets the Enter key.
    QMessageBox::StandardButton answer;
    /// Runs while the next box is open, before it is closed.
    std::function<void(const QMessageBox &)> whileOpen;
    /// Leaves boxes open, so that others may come up over them.
    bool isPassive = false;
    /// Number of message boxes that show.
    [[nodiscard]] static int openBoxes();

private:
    void look();

    QTimer m_timer;
};

/// What a widget shows, an upper left device pixel for each of its pixels: so a test reads colours
/// at the places that it clicks, whatever the screen.
[[nodiscard]] QImage pixelsOf(QWidget *widget);

/// What a tool tip with the text \a tip shows.
[[nodiscard]] QString shownTip(const QString &tip);

/// Opens the context menu of a view's \a viewport at \a position, as a right click does, and gives
/// the texts of its entries: none when no menu came up. Chooses the entry \a choice by the
/// keyboard, or leaves the menu.
QStringList driveContextMenu(QWidget *viewport, const QPoint &position, const QString &choice = {});

/// Checks or unchecks a box, or chooses a radio button, by a click on its mark.
void clickMark(QWidget *button);

/// Walks through a list as a user at the keyboard does.
void chooseByKeys(QComboBox *box, const QString &text);

/// A click and a double click on a cell, which opens its editor.
void doubleClick(QAbstractItemView *view, const QModelIndex &index);

template <typename Test>
int runWidgetTest(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    return runTest<Test, QApplication>(argc, argv);
}

/// The main function of a test class with windows. End the file with `#include "tst_name.moc"`.
#define KEO_WIDGET_TEST_MAIN(Test) KEO_OWN_TEST_MAIN(runWidgetTest<Test>)
