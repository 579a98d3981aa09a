// The busy indicator as the user meets it: one at a time, and in the middle.

#include <project/waitingtip.h>
#include <support/widgettest.h>

#include <QMainWindow>

using namespace KEO;

class tst_WaitingTip : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void onceInTheMiddle();
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

} // namespace

void tst_WaitingTip::onceInTheMiddle()
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
    auto parent = std::make_unique<QMainWindow>();
    WaitingTip::show(parent.get());
    parent.reset(); // takes its tip along
    QVERIFY(tips().isEmpty());
    WaitingTip::show(nullptr);
    QCOMPARE(tips().size(), 1);
    WaitingTip::close();
}

KEO_WIDGET_TEST_MAIN(tst_WaitingTip)
#include "tst_waitingtip.moc"
