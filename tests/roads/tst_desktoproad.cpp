// The whole way of a user through the main window, by keys and clicks, against a simulated board:
// open, set the trigger, capture, look, arrange, capture again.

#include <support/desktop.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>

#include <QComboBox>
#include <QDialog>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>

using namespace KEO;
using WaveMonitor::SignalTreeView;

class tst_DesktopRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void fromFileToArrangedWaves();
    void autoRounds_data();
    void autoRounds();
};

namespace {

QStringList rowNames(const SignalTreeView &tree)
{
    QStringList names;
    for (int row = 0; row < tree.model()->rowCount(); ++row)
        names.append(tree.model()->index(row, 0).data().toString());
    return names;
}

} // namespace

void tst_DesktopRoad::fromFileToArrangedWaves()
{
    TestDesign design;
    design.dynamic = true;
    design.cores = 2;
    design.device = "KX-1"; // a file opened by hand names no device, so none with a rule of its own
    Desktop d(design);

    auto *hint = d.find<QWidget>("emptyHint");
    QVERIFY(hint->isVisible() && d.tabs()->rect().contains(hint->geometry()));

    // Open by the file dialog.
    const OnModal<QFileDialog> fileDialog([&](QFileDialog *dialog) {
        auto *name = dialog->findChild<QLineEdit *>("fileNameEdit");
        name->setText(d.file());
        QTest::keyClick(name, Qt::Key_Return);
    });
    d.press(Qt::Key_O, Qt::ControlModifier);
    QCOMPARE(d.tabs()->count(), 1);
    QVERIFY(!hint->isVisible());

    // Select the second core, which shows its settings.
    auto *cores = d.find<QTreeWidget>("coreTree");
    const QRect second = cores->visualItemRect(cores->topLevelItem(1));
    QTest::mouseClick(cores->viewport(), Qt::LeftButton, {},
                      QPoint(second.left() + 10, second.center().y()));
    QCOMPARE(cores->topLevelItem(1)->checkState(0), Qt::Checked);

    // Its first match unit, which compares the low byte only.
    auto *units = d.find<QTableView>("tableUnit");
    const OnModal<QDialog> unitDialog([](QDialog *dialog) {
        clickMark(dialog->findChild<QRadioButton *>("rbtnBin"));
        auto *value = dialog->findChild<QLineEdit *>("lineEditValue0");
        QTest::keyClick(value, Qt::Key_Home);
        QTest::keyClicks(value, "XXXXXXXX01010101");
        QTest::keyClick(value, Qt::Key_Return);
    });
    doubleClick(units, units->model()->index(0, 3));

    // Its expression: in place of M0&M1, where M1 is the range from 0x100 to 0xEFF.
    auto *expressions = d.find<QListWidget>("listExpressions");
    const OnModal<QDialog> expressionDialog([](QDialog *dialog) {
        for (const char *name : {"btnClear", "btnM0", "btnAND", "btnNOT", "btnM1"})
            QTest::mouseClick(dialog->findChild<QPushButton *>(name), Qt::LeftButton);
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    doubleClick(expressions, expressions->model()->index(0, 0));
    QCOMPARE(expressions->item(0)->text(), "exp0:  M0&!M1");

    chooseByKeys(d.find<QComboBox>("comboBoxWindow"), "2");
    chooseByKeys(d.find<QComboBox>("comboBoxAmount"), "128");

    // The first core is as it was, the second one as set.
    d.press(Qt::Key_F1);
    QVERIFY(d.isBusy() && waitingTip());
    QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
    QVERIFY(!waitingTip());
    QCOMPARE(d.tabs()->count(), 4);
    QVERIFY(isStimulus(d.wave(1), design, design.firstTrigger(design.position) - design.position));
    TestDesign changed = design;
    changed.amount = 128;
    QVERIFY(isStimulus(d.wave(2), changed, 0x55 - design.position));
    QVERIFY(isStimulus(d.wave(3), changed,
                       0xF55 - design.position)); // the next one outside of the range
    QCOMPARE(d.tabs()->tabText(3), "core 1 window 1");

    // The value at the trigger stands beside its row, the line in the picture.
    d.tabs()->setCurrentIndex(2);
    auto *tree = d.wave(2)->findChild<SignalTreeView *>();
    QVERIFY(tree->model()->index(0, 1).data().toString().contains("0055"));
    auto *view = d.wave(2)->findChild<WaveMonitor::WaveView *>();
    const QImage picture = view->viewport()->grab().toImage();
    QList<int> yellow;
    for (int x = 0; x < picture.width(); ++x) {
        if (picture.pixelColor(x, picture.height() - 2) == QColor(Qt::yellow))
            yellow.append(x);
    }
    const int sampleWidth = 50; // pixels, not zoomed
    QCOMPARE(yellow,
             QList<int>{design.position * sampleWidth - view->horizontalScrollBar()->value()});

    // Rename a row, and group two others.
    const auto clickRow = [&](int row, Qt::KeyboardModifiers modifiers = {}) {
        const QPoint place = tree->visualRect(tree->model()->index(row, 0)).center();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, modifiers, place);
        return place;
    };
    d.activate();
    driveContextMenu(tree->viewport(), clickRow(1), "Rename");
    auto *editor = tree->findChild<QLineEdit *>("editName");
    QVERIFY(editor && editor->hasFocus());
    QTest::keyClicks(editor, "hush");
    QTest::keyClick(editor, Qt::Key_Return);
    QTRY_COMPARE(rowNames(*tree)[1], "hush");
    clickRow(2);
    driveContextMenu(tree->viewport(), clickRow(3, Qt::ControlModifier), "Group");
    const QStringList arranged = rowNames(*tree);
    QCOMPARE(arranged.size(), 1 + design.noise - 1);

    // The next capture goes on in the stimulus and keeps the arrangement.
    d.capture();
    QCOMPARE(d.tabs()->count(), 4);
    QCOMPARE(rowNames(*d.wave(2)->findChild<SignalTreeView *>()), arranged);
    QVERIFY(isStimulus(d.wave(2), changed, countAt(*d.wave(2), 0)));
    QCOMPARE(countAt(*d.wave(2), design.position) & 0xFF, 0x55);
    QVERIFY(rowNames(*d.wave(1)->findChild<SignalTreeView *>()) != arranged);

    QVERIFY(d.window->closeCurrentProject());
    QVERIFY(hint->isVisible());
}

void tst_DesktopRoad::autoRounds_data()
{
    addColumns<bool>({"lite"});
    addRow("standard", false);
    addRow("lite", true);
}

void tst_DesktopRoad::autoRounds()
{
    QFETCH(bool, lite);
    TestDesign design;
    design.lite = lite;
    design.amount = 32;
    Desktop d(design);
    d.open();
    d.click("Auto");
    QVERIFY(waitingTip());
    QCOMPARE(d.enabled(), "---X----");
    QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
    QVERIFY(!waitingTip());
    const QPointer<WaveMonitorWidget> wave = d.wave(1);
    QCOMPARE(counterText(*wave), "Autorun Counter: 1");
    const int first = countAt(*wave, 0);
    QVERIFY(isStimulus(wave, design,
                       lite ? 0 : design.firstTrigger(design.position) - design.position));
    QTRY_COMPARE_WITH_TIMEOUT(counterText(*wave), "Autorun Counter: 3", kCaptureTime);
    const int third = countAt(*wave, 0);
    QVERIFY(third != first && isStimulus(wave, design, third));
    QVERIFY(lite || design.isTrigger(third + design.position));
    QCOMPARE(d.enabled(), "---X----");
    d.click("Stop");
    QVERIFY(wave && d.isIdle() && d.isEnabled("Save..."));
    QCOMPARE(d.boxes.seen, QStringList(lite ? 0 : 1, "Tarno Signal Scope: Capture Stopped!"));
    d.capture(); // and nothing of Auto is left
    QCOMPARE(counterText(*d.wave(1)), QString());
}

KEO_WIDGET_TEST_MAIN(tst_DesktopRoad)
#include "tst_desktoproad.moc"
