// Two windows under one another, as the user sees and moves them.

#include "viewertest.h"

#include <wave/compare/comparedpage.h>
#include <wave/view/waveview.h>
#include <wave_data/windowcontents.h>

#include <QLabel>
#include <QPointer>
#include <QScrollBar>
#include <QSignalSpy>
#include <QVBoxLayout>

using namespace WaveMonitor;

namespace {

constexpr QRgb kMark = qRgb(255, 80, 170);

/// A bus of three counting bits and one single row, 100 samples, trigger at 30, above the same
/// window cut or lengthened so that its trigger stands elsewhere, with bits of its own.
struct Page
{
    explicit Page(int triggerBelow = 30, const QList<std::pair<int, int>> &flipped = {})
        : upper(new WaveMonitorWidget(160, nullptr)), offset(triggerBelow - 30)
    {
        addRows(*upper, "B(b2 b1 b0) single");
        upper->showStrips(nullptr);
        upper->setTriggerPosition(30);
        WindowSamples other{upper->signalMap(), triggerBelow};
        for (SignalElement &element : other.elements) {
            QBitArray samples(kRowSamples + std::max(offset, 0));
            for (int i = 0; i < samples.size(); ++i) {
                const int above = i - offset;
                if (above >= 0 && above < kRowSamples)
                    samples.setBit(i, element.data.testBit(above));
            }
            for (const auto &[id, sample] : flipped) {
                if (id == element.id)
                    samples.toggleBit(sample + offset);
            }
            element.data = samples;
        }
        page = std::make_unique<ComparedPage>(upper, nullptr);
        page->resize(900, 700);
        page->compareWith("the other", other);
        page->show();
        QApplication::processEvents();
        settle();
    }

    void settle() const { QTest::qWait(20); }
    WaveMonitorWidget *lower() const
    {
        for (WaveMonitorWidget *viewer : page->findChildren<WaveMonitorWidget *>()) {
            if (viewer != upper)
                return viewer;
        }
        return nullptr;
    }
    QString line() const
    {
        return page->findChild<QWidget *>("comparisonLine")->findChild<QLabel *>()->text();
    }
    bool isAligned() const
    {
        return upper->zoomRate() == lower()->zoomRate() &&
               std::abs(upper->firstShownSample() + offset - lower()->firstShownSample()) *
                       CLOCK_PITCH * upper->zoomRate() <=
                   1.01;
    }

    QPointer<WaveMonitorWidget> upper;
    int offset;
    std::unique_ptr<ComparedPage> page;
};

QScrollBar *bar(const WaveMonitorWidget *viewer)
{
    return viewer->findChild<WaveView *>()->horizontalScrollBar();
}

QString valueOf(const WaveMonitorWidget *viewer, int row)
{
    const auto *tree = viewer->findChild<SignalTreeView *>();
    return tree->model()->index(row, SignalTreeModel::ValueColumn).data().toString();
}

/// Are there marks in row \a row at the middle of \a sample?
bool isMarked(WaveMonitorWidget *viewer, int row, qreal sample)
{
    QWidget *viewport = viewer->findChild<WaveView *>()->viewport();
    const qreal x = (sample + 0.5 - viewer->firstShownSample()) * CLOCK_PITCH * viewer->zoomRate();
    const QPointF place(x, (row + 1) * ROW_HEIGHT - 2.0); // the bar below the row
    return pixelsOf(viewport).pixel(place.toPoint()) == kMark;
}

QIcon signOf(const WaveMonitorWidget *viewer, int row)
{
    const auto *tree = viewer->findChild<SignalTreeView *>();
    return tree->model()->index(row, 0).data(Qt::DecorationRole).value<QIcon>();
}

} // namespace

class tst_ComparedPage : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void movesTogether_data();
    void movesTogether();
    void marksWhatDiffers_data();
    void marksWhatDiffers();
    void goesFromDifferenceToDifference();
    void givesTheViewerBack();
};

void tst_ComparedPage::movesTogether_data()
{
    addColumns<int>({"triggerBelow"});
    addRow("as many before the trigger", 30);
    addRow("fewer below", 7);
    addRow("more below", 83);
}

void tst_ComparedPage::movesTogether()
{
    QFETCH(const int, triggerBelow);
    const Page shown(triggerBelow);
    QVERIFY(shown.isAligned());
    for (WaveMonitorWidget *moved : {shown.upper.data(), shown.lower()}) {
        for (const double zoom : {1.0, 4.0, 0.25, 2.0}) {
            moved->setZoom(zoom);
            shown.settle();
            QTRY_COMPARE(shown.upper->zoomRate(), zoom);
            QTRY_VERIFY2(shown.isAligned(), qPrintable(QString::number(zoom)));
            for (const double part : {0.0, 1.0, 0.37, 0.8}) {
                const int place = bar(moved)->minimum() +
                                  int(part * (bar(moved)->maximum() - bar(moved)->minimum()));
                bar(moved)->setValue(place);
                shown.settle();
                QVERIFY(std::abs(bar(moved)->value() - place) <= 1); // and is left there
                QTRY_VERIFY2(shown.isAligned(), qPrintable(QString::number(part)));
            }
        }
    }
    // Values below are those of the same time.
    shown.upper->showValuesAt(30);
    shown.upper->setTriggerPosition(30);
    auto *ruler = shown.upper->findChild<RulerView *>();
    shown.upper->setZoom(1.0);
    shown.upper->showSample(50);
    shown.settle();
    const int x = int((48 - shown.upper->firstShownSample()) * CLOCK_PITCH);
    QCOMPARE(driveContextMenu(ruler->viewport(), QPoint(x, 10), "Create Marker at Clock Period: 48")
                 .size(),
             1);
    shown.settle();
    QCOMPARE(valueOf(shown.upper, 0), "0"); // the low three bits of 48, turned round
    QCOMPARE(valueOf(shown.lower(), 0), "0");
    ruler->moveActiveMarker(51);
    shown.settle();
    QCOMPARE(valueOf(shown.upper, 0), valueOf(shown.lower(), 0));
    QVERIFY(valueOf(shown.upper, 0) != "0");
    // The tree is as wide below.
    shown.lower()->setTreeWidth(250);
    Q_EMIT shown.lower()->treeWidthChanged();
    QCOMPARE(shown.upper->treeWidth(), shown.lower()->treeWidth());
}

void tst_ComparedPage::marksWhatDiffers_data()
{
    addColumns<int>({"triggerBelow"});
    addRow("level", 30);
    addRow("more below", 77);
}

void tst_ComparedPage::marksWhatDiffers()
{
    QFETCH(const int, triggerBelow);
    const int offset = triggerBelow - 30;
    const Page shown(triggerBelow, {{1, 33}}); // b1, a member of the bus
    shown.upper->showSample(33);
    shown.settle();
    for (auto [viewer, shift] :
         {std::pair(shown.upper.data(), 0), std::pair(shown.lower(), offset)}) {
        QVERIFY(isMarked(viewer, 0, 33 + shift));
        QVERIFY(!isMarked(viewer, 0, 34 + shift));
        QVERIFY(!isMarked(viewer, 0, 32 + shift));
        QVERIFY(!isMarked(viewer, 1, 33 + shift));
        QVERIFY(!signOf(viewer, 0).isNull());
        QVERIFY(signOf(viewer, 1).isNull());
        auto *tree = viewer->findChild<SignalTreeView *>();
        tree->expandAll();
        shown.settle();
        for (const int row : {0, 1, 2, 3, 4}) // the bus, b2, b1, b0 and the single one
            QCOMPARE(isMarked(viewer, row, 33 + shift), row == 0 || row == 2);
    }
    QVERIFY2(shown.line().contains("1 of 4 signals differ, the first at sample 33 (trigger +3)"),
             qPrintable(shown.line()));
    // One sample is seen at the lowest zoom too.
    shown.upper->setZoom(kMinimumZoom);
    QTRY_COMPARE(shown.lower()->zoomRate(), kMinimumZoom);
    shown.settle();
    QVERIFY(isMarked(shown.upper, 2, 33 + 1 / (CLOCK_PITCH * kMinimumZoom)));
}

void tst_ComparedPage::goesFromDifferenceToDifference()
{
    const Page shown(30, {{0, 5}, {3, 5}, {3, 6}, {2, 6}, {1, 98}});
    shown.upper->setZoom(2.0);
    QTRY_COMPARE(shown.lower()->zoomRate(), 2.0);
    const auto press = [&shown](Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(shown.upper->findChild<WaveView *>(), Qt::Key_F9, modifiers);
        shown.settle();
        return shown.line().section("Here, at sample ", 1).section(u'.', 0, 0);
    };
    shown.page->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(shown.page.get()));
    QCOMPARE(press({}), "5 (trigger -25): b2, single");
    QCOMPARE(press({}), "6 (trigger -24): b0");
    QCOMPARE(press({}), "98 (trigger +68): b1");
    QVERIFY(shown.upper->firstShownSample() < 98 && shown.upper->lastShownSample() > 98);
    QTRY_VERIFY(shown.isAligned());
    press({});
    QVERIFY(shown.line().startsWith("No further difference."));
    // From where the user has scrolled to.
    shown.upper->showSample(50);
    shown.settle();
    QCOMPARE(press(Qt::ShiftModifier), "6 (trigger -24): b0");
    QCOMPARE(press(Qt::ShiftModifier), "5 (trigger -25): b2, single");
}

void tst_ComparedPage::givesTheViewerBack()
{
    Page shown(60, {{0, 5}});
    QSignalSpy asked(shown.page.get(), &ComparedPage::closeAsked);
    QTest::keyClick(shown.upper->findChild<WaveView *>(), Qt::Key_Escape);
    QTRY_COMPARE(asked.size(), 1);
    auto *tree = shown.lower()->findChild<SignalTreeView *>();
    tree->setFocus();
    shown.page->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(shown.page.get()));
    QTest::keyClick(tree, Qt::Key_Escape);
    QTRY_COMPARE(asked.size(), 2);
    // The one find bar comes up from below too, and gives the keyboard back.
    QTest::keyClick(tree, Qt::Key_F, Qt::ControlModifier);
    QTRY_VERIFY(shown.upper->findChild<QWidget *>("findBar")->isVisible());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    QVERIFY(tree->hasFocus());
    QCOMPARE(asked.size(), 2);
    const std::unique_ptr<WaveMonitorWidget> viewer(shown.page->takeUpper());
    shown.page.reset();
    QCOMPARE(viewer.get(), shown.upper.data());
    viewer->resize(900, 300);
    viewer->show();
    shown.settle();
    QVERIFY(signOf(viewer.get(), 0).isNull());
    bar(viewer.get())->setValue(0);
    QVERIFY(!isMarked(viewer.get(), 0, 5));
    QCOMPARE(bar(viewer.get())->minimum(), 0);
}

KEO_WIDGET_TEST_MAIN(tst_ComparedPage)
#include "tst_comparedpage.moc"
