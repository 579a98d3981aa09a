// The busy indicator as the user meets it: one at a time, in the middle, and with keys that reach
// the window even though the tip is a window of its own.

#include <project/waitingtip.h>
#include <support/widgettest.h>

#include <QKeyEvent>
#include <QMainWindow>

using namespace KEO;

class tst_WaitingTip : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void standsInTheMiddleOnce();
    void handsKeysToItsParent();
    void goesWithItsParent();
};

namespace {

QList<WaitingTip *> tips()
{
    QList<WaitingTip *> found;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *tip = qobject_cast<WaitingTip *>(widget); tip && tip->isVisible())
            found.append(tip);
    }
    return found;
}

/// Writes down the keys that reach it and closes the tip inside the event, as a stop does.
class KeyWindow : public QMainWindow
{
public:
    QList<int> keys;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        keys.append(event->key());
        WaitingTip::close();
    }
};

} // namespace

void tst_WaitingTip::standsInTheMiddleOnce()
{
    QMainWindow window;
    window.setGeometry(100, 100, 500, 400);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));

    WaitingTip::show(&window);
    WaitingTip::show(&window);
    QCOMPARE(tips().size(), 1);
    constexpr int kFrame = 4; // pixels that the offscreen window system shifts a window by
    const WaitingTip *tip = tips().first();
    QCOMPARE(tip->width(), 200);
    QVERIFY(tip->height() >= 15);
    const auto offCentre = [&] {
        return (tip->geometry().center() - window.geometry().center()).manhattanLength();
    };
    QVERIFY(offCentre() <= kFrame);
    QTRY_VERIFY(window.isActiveWindow() && window.hasFocus());
    window.setGeometry(160, 130, 700, 300);
    QTRY_VERIFY(offCentre() <= kFrame);

    WaitingTip::close();
    QVERIFY(tips().isEmpty());
    WaitingTip::close();
}

void tst_WaitingTip::handsKeysToItsParent()
{
    KeyWindow window;
    window.show();
    for (const Qt::Key key : {Qt::Key_F3, Qt::Key_F4}) {
        WaitingTip::show(&window);
        QTest::keyClick(tips().first(), key);
        QVERIFY(tips().isEmpty());
    }
    QCOMPARE(window.keys, (QList<int>{Qt::Key_F3, Qt::Key_F4}));
    WaitingTip::show(&window);
    QTest::keyClick(tips().first(), Qt::Key_F2);
    QCOMPARE(window.keys.size(), 2);
    QCOMPARE(tips().size(), 1);
    WaitingTip::close();
}

void tst_WaitingTip::goesWithItsParent()
{
    auto window = std::make_unique<QMainWindow>();
    window->show();
    WaitingTip::show(window.get());
    window.reset();
    QVERIFY(tips().isEmpty());
    WaitingTip::show(nullptr);
    QCOMPARE(tips().size(), 1);
    WaitingTip::close();
}

KEO_WIDGET_TEST_MAIN(tst_WaitingTip)
#include "tst_waitingtip.moc"
