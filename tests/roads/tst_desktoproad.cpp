// The whole way of a user through the main window, by keys and clicks, against a simulated board:
// open, set the trigger, capture, look, arrange, capture again.

#include "desktop.h"

#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>

#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>
#include <QTreeWidget>

using namespace KEO;
using WaveMonitor::SignalTreeView;

class tst_DesktopRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void fromFileToArrangedWaves();
    void autoRoundsAndForcedTriggers();
    void windowGoesWithTheQuestion();
};

namespace {

template <typename View>
void doubleClick(View *view, const QModelIndex &index)
{
    const QPoint place = view->visualRect(index).center();
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, place);
}

void choose(QComboBox *box, const QString &text)
{
    const int wanted = box->findText(text);
    QVERIFY(wanted >= 0);
    while (box->currentIndex() != wanted)
        QTest::keyClick(box, box->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
}

int countAt(const WaveMonitor::WaveMonitorWidget &wave, int sample)
{
    const auto elements = wave.signalMap();
    int count = 0;
    for (int bit = 0; bit < 16; ++bit)
        count = count << 1 | int(elements[bit].data.testBit(sample));
    return count;
}

/// All signals over all samples are the design's, in a window with the trigger at \a trigger.
bool isStimulus(const WaveMonitor::WaveMonitorWidget &wave, const TestDesign &design, int trigger)
{
    const auto elements = wave.signalMap();
    for (int signal = 0; signal < design.signalCount(); ++signal) {
        if (elements[signal].data.size() != design.amount)
            return false;
        for (int sample = 0; sample < design.amount; ++sample) {
            const qint64 at = trigger - design.position + sample + TestDesign::kLength;
            if (elements[signal].data.testBit(sample) != design.level(signal, at))
                return false;
        }
    }
    return elements.size() == design.signalCount();
}

QStringList rowNames(const SignalTreeView &tree)
{
    QStringList names;
    for (int row = 0; row < tree.model()->rowCount(); ++row)
        names.append(tree.model()->index(row, 0).data().toString());
    return names;
}

QString counterText(const QWidget &wave)
{
    for (const QLabel *label : wave.findChildren<QLabel *>()) {
        if (label->text().contains(QLatin1String("Autorun")))
            return label->text().trimmed();
    }
    return {};
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

    // Its first match unit, once in each radix; the last one compares the low byte only.
    auto *units = d.find<QTableView>("tableUnit");
    const std::tuple<const char *, const char *, const char *> values[] = {
        {"rbtnHex", "0155", "0000000101010101"},
        {"rbtnOct", "000526", "0000000101010110"},
        {"rbtnDec", "00343", "0000000101010111"},
        {"rbtnBin", "XXXXXXXX01010101", "XXXXXXXX01010101"}};
    for (const auto &[radix, typed, stored] : values) {
        const OnModal<QDialog> unitDialog([radix = radix, typed = typed](QDialog *dialog) {
            auto *button = dialog->findChild<QRadioButton *>(radix);
            QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
            auto *value = dialog->findChild<QLineEdit *>("lineEditValue0");
            QTest::keyClick(value, Qt::Key_Home);
            QTest::keyClicks(value, QLatin1String(typed));
            QTest::keyClick(value, Qt::Key_Return);
        });
        doubleClick(units, units->model()->index(0, 3));
        const int last = units->model()->columnCount() - 1;
        QVERIFY2(units->model()->index(0, last).data().toString().contains(QLatin1String(stored)),
                 qPrintable(units->model()->index(0, last).data().toString()));
    }

    // Its expression: in place of M0&M1, where M1 is the range from 0x100 to 0xEFF.
    auto *expressions = d.find<QListWidget>("listExpressions");
    const OnModal<QDialog> expressionDialog([](QDialog *dialog) {
        for (const char *name : {"btnClear", "btnM0", "btnAND", "btnNOT", "btnM1"})
            QTest::mouseClick(dialog->findChild<QPushButton *>(name), Qt::LeftButton);
        QTest::keyClick(dialog, Qt::Key_Return);
    });
    doubleClick(expressions, expressions->model()->index(0, 0));
    QCOMPARE(expressions->item(0)->text(), "exp0:  M0&!M1");

    choose(d.find<QComboBox>("comboBoxWindow"), "2");
    choose(d.find<QComboBox>("comboBoxAmount"), "128");

    // The first core is as it was, the second one as set.
    d.press(Qt::Key_F1);
    QVERIFY(d.isBusy() && waitingTip());
    QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
    QVERIFY(!waitingTip());
    QCOMPARE(d.tabs()->count(), 4);
    QVERIFY(isStimulus(*d.wave(1), design, int(design.firstTrigger(design.position))));
    TestDesign changed = design;
    changed.amount = 128;
    QVERIFY(isStimulus(*d.wave(2), changed, 0x55));
    QVERIFY(isStimulus(*d.wave(3), changed, 0xF55)); // the next one outside of the range
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
    QVERIFY(isStimulus(*d.wave(2), changed, countAt(*d.wave(2), design.position)));
    QCOMPARE(countAt(*d.wave(2), design.position) & 0xFF, 0x55);
    QVERIFY(rowNames(*d.wave(1)->findChild<SignalTreeView *>()) != arranged);

    QVERIFY(d.window->closeCurrentProject());
    QVERIFY(hint->isVisible());
}

void tst_DesktopRoad::autoRoundsAndForcedTriggers()
{
    TestDesign design;
    design.amount = 32;
    {
        Desktop d(design);
        d.open();
        d.click("Auto");
        QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
        const QPointer<WaveMonitor::WaveMonitorWidget> wave = d.wave(1);
        const int first = countAt(*wave, design.position);
        QTRY_COMPARE_WITH_TIMEOUT(counterText(*wave), "Autorun Counter: 3", kCaptureTime);
        const int third = countAt(*wave, design.position);
        QVERIFY(third != first && design.isTrigger(third) && isStimulus(*wave, design, third));
        d.click("Stop");
        QCOMPARE(d.boxes.seen, QStringList("Tarno Signal Scope: Capture Stopped!"));
        QVERIFY(wave && d.isIdle());
    }
    design.fires = false;
    Desktop d(design);
    d.open();
    for (const bool byButton : {true, false}) {
        d.click("Start");
        QTest::qWait(700); // past the first poll
        QVERIFY(d.isBusy() && waitingTip());
        if (byButton)
            d.click("Force Trigger");
        else
            QTest::keyClick(waitingTip(), Qt::Key_F3);
        QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
        QVERIFY(!waitingTip());
        QCOMPARE(d.tabs()->count(), 2);
        QVERIFY(isStimulus(*d.wave(1), design, countAt(*d.wave(1), design.position)));
    }
    QVERIFY(d.boxes.seen.isEmpty());
}

void tst_DesktopRoad::windowGoesWithTheQuestion()
{
    TestDesign design;
    design.fires = false;
    Desktop d(design);
    d.open();
    d.press(Qt::Key_F1);
    d.boxes.whileOpen = [&](const QMessageBox &) { d.window.reset(); };
    d.window->close();
    QVERIFY(!d.window && !waitingTip());
    QCOMPARE(d.boxes.seen.size(), 1);
}

KEO_WIDGET_TEST_MAIN(tst_DesktopRoad)
#include "tst_desktoproad.moc"
