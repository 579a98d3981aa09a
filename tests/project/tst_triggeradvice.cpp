// Why a core did not trigger, and a trigger made of what the waves show, as the user sees them.

#include "unittableuser.h"

#include <wave/common/viewergeometry.h>
#include <wave/tree/signaltreeview.h>
#include <wave/view/waveview.h>
#include <wave_data/windowcontents.h>

#include <QComboBox>
#include <QDialog>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTimer>
#include <QToolButton>

#include <bit>

using namespace WaveMonitor;

namespace {

QDialog *dialogOf(const Desktop &d, const char *name)
{
    auto *dialog = d.window->findChild<QDialog *>(QLatin1String(name));
    if (dialog && dialog->isVisible()) {
        dialog->activateWindow(); // its mnemonics work then
        [[maybe_unused]] const bool isActive = QTest::qWaitForWindowActive(dialog);
    }
    return dialog;
}

QStringList linesOf(const QDialog &panel)
{
    QStringList lines;
    const auto *list = panel.findChild<QListWidget *>("whyLines");
    for (int row = 0; row < list->count(); ++row)
        lines.append(list->item(row)->text());
    return lines;
}

/// Makes the line that holds \a text the current one, by the keyboard; gives it.
QString goToLine(const QDialog &panel, const QString &text)
{
    auto *list = panel.findChild<QListWidget *>("whyLines");
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Home);
    for (int row = 0; row < list->count() && !list->currentItem()->text().contains(text); ++row)
        QTest::keyClick(list, Qt::Key_Down);
    return list->currentItem()->text();
}

void waitForOffer(const Desktop &d)
{
    QTRY_VERIFY_WITH_TIMEOUT(d.window->findChild<QPushButton *>("whyOffer"), kCaptureTime);
}

QString bits(int value)
{
    return QStringLiteral("%1").arg(value, 16, 2, QLatin1Char('0'));
}

} // namespace

class tst_TriggerAdvice : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhy();
    void offersItselfWhileARunWaits();
    void tellsWhyOfFewerWindows();
    void tellsWhyOfTheCoreThatWaits();
    void givesTheKeyboardBack();
    void triggersOnAValue();
    void triggersWhereTheMenuCameUp();
};

/// M0 wants a high byte of 0xFF, which the board never has.
void tst_TriggerAdvice::tellsWhy()
{
    TestDesign design;
    design.fires = false;
    Desktop d(design);
    d.open();
    d.press(Qt::Key_F1);
    QTRY_VERIFY_WITH_TIMEOUT(d.isEnabled("Force Trigger"), kCaptureTime);
    d.press(Qt::Key_F3);
    QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
    WaveMonitorWidget &wave = *d.wave(1);
    d.press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    QDialog *panel = dialogOf(d, "whyNoTrigger");
    QVERIFY(panel && panel->isVisible());
    QCOMPARE(linesOf(*panel).first(), "As it is set now, it triggers at none of 256 samples.");
    QVERIFY(linesOf(*panel).filter("exp0 fails by M0 alone, which never reports").size() == 1);

    // The nearest sample, to which Enter takes the waves.
    const QString line = goToLine(*panel, "Nearest was sample");
    const auto match =
        QRegularExpression("^M0 never matched. Nearest was sample (\\d+): ").match(line);
    QVERIFY2(match.hasMatch(), qPrintable(line));
    const int sample = match.captured(1).toInt();
    const auto ones = [&](int s) { return std::popcount(unsigned(countAt(wave, s) >> 8)); };
    for (int other = 0; other < design.amount; ++other)
        QVERIFY(ones(other) < ones(sample) || (ones(other) == ones(sample) && other >= sample));
    d.tabs()->setCurrentIndex(0);
    QTest::keyClick(panel->findChild<QListWidget *>("whyLines"), Qt::Key_Return);
    QCOMPARE(d.tabs()->currentIndex(), 1);
    QCOMPARE(wave.contents().shownSample(), sample);

    // To the unit on the page; an edit there is followed.
    QTest::mouseClick(panel->findChild<QPushButton *>("whySetting"), Qt::LeftButton);
    QCOMPARE(d.tabs()->currentIndex(), 0);
    auto *units = d.find<QTableView>("tableUnit");
    QCOMPARE(units->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(units->selectionModel()->selectedRows().first().row(), 0);
    pasteIntoUnit(d, 0, bits(countAt(wave, 100)));
    QTRY_COMPARE(linesOf(*panel).first(),
                 "As it is set now, it triggers at 1 of 256 samples, first at 100.");
    QTest::keyClick(panel, Qt::Key_Escape);
    QVERIFY(!panel->isVisible());
    QVERIFY(d.boxes.seen.isEmpty());
}

void tst_TriggerAdvice::offersItselfWhileARunWaits()
{
    TestDesign design;
    design.fires = false;
    Desktop d(design);
    d.open();
    d.window->findChild<QTimer *>("whyPatience")->setInterval(50);
    const auto startFromWindow = [&] {
        d.window->activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), d.window.get()); // and not the list left open
        d.press(Qt::Key_F1);
    };
    for (int run = 0; run < 2; ++run) {
        startFromWindow();
        waitForOffer(d);
        if (run > 0)
            QCOMPARE(d.find<QComboBox>("whyCaptures")->currentText(),
                     "core 0 window 0 of the last run");
        auto *offer = d.find<QPushButton>("whyOffer");
        QVERIFY(offer->isVisible() && waitingTip());
        const QRect tip(d.window->mapFromGlobal(waitingTip()->geometry().topLeft()),
                        waitingTip()->size());
        QVERIFY(d.window->rect().contains(offer->geometry()) && !offer->geometry().intersects(tip));
        QTest::mouseClick(offer, Qt::LeftButton);
        QDialog *panel = dialogOf(d, "whyNoTrigger");
        QVERIFY(panel && panel->isVisible());
        if (run == 0) {
            QVERIFY(linesOf(*panel).first().startsWith("There is no capture to look at yet."));
        } else {
            goToLine(*panel, "Nearest was sample");
            QVERIFY(!panel->findChild<QPushButton *>("whySample")->isEnabled()); // no waves
            QVERIFY(panel->findChild<QPushButton *>("whySetting")->isEnabled());
        }
        QTRY_VERIFY(QApplication::activeWindow() == panel);
        QTest::keyClick(panel, Qt::Key_F3); // which the list itself proposes
        QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
        QTRY_VERIFY(!d.window->findChild<QPushButton *>("whyOffer"));
        QCOMPARE(linesOf(*panel).first(), "As it is set now, it triggers at none of 256 samples.");
        QCOMPARE(panel->findChild<QComboBox *>("whyCaptures")->currentText(), "core 0 window 0");
    }
    startFromWindow();
    waitForOffer(d);
    d.press(Qt::Key_F4);
    QTRY_VERIFY(!d.window->findChild<QPushButton *>("whyOffer"));
}

/// The list is of the last of many windows; then, while it is closed, of fewer ones.
void tst_TriggerAdvice::tellsWhyOfFewerWindows()
{
    TestDesign design;
    design.windows = 4;
    Desktop d(design);
    d.open();
    d.capture();
    d.tabs()->setCurrentIndex(4);
    d.press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    QDialog *panel = dialogOf(d, "whyNoTrigger");
    QVERIFY(panel);
    QTest::keyClick(panel, Qt::Key_Escape);
    auto *windows = d.find<QComboBox>("comboBoxWindow");
    windows->setCurrentText("1");
    Q_EMIT windows->activated(windows->currentIndex());
    d.capture();
    d.capture();
    QCOMPARE(d.tabs()->count(), 2);
    d.press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(panel->findChild<QComboBox *>("whyCaptures")->count(), 1);
    QVERIFY(linesOf(*panel).first().startsWith("As it is set now, it triggers at 1 of 256"));
}

/// One of two cores has captured again; what the other one lacks is asked.
void tst_TriggerAdvice::tellsWhyOfTheCoreThatWaits()
{
    TestDesign design;
    design.cores = 2;
    Desktop d(design);
    d.open();
    auto *cores = d.find<QTreeWidget>("coreTree");
    cores->topLevelItem(1)->setCheckState(0, Qt::Checked);
    d.capture();
    QCOMPARE(d.tabs()->count(), 3);
    d.tabs()->setCurrentIndex(0);
    cores->setCurrentItem(cores->topLevelItem(1));
    auto *units = d.find<QTableView>("tableUnit");
    QApplication::clipboard()->setText("11111111XXXXXXXX");
    d.activate();
    units->setFocus();
    units->selectRow(0);
    QTest::keyClick(units, Qt::Key_V, Qt::ControlModifier);
    d.press(Qt::Key_F1);
    QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
    QTRY_VERIFY(
        d.find<QLabel>("runStatus")->text().startsWith("Waiting for the trigger of core 1"));
    d.press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    QDialog *panel = dialogOf(d, "whyNoTrigger");
    QVERIFY(panel);
    const auto *captures = panel->findChild<QComboBox *>("whyCaptures");
    QCOMPARE(captures->currentText(), "core 1 window 0 of the last run");
    QCOMPARE(captures->itemText(0), "core 0 window 0");
    QCOMPARE(linesOf(*panel).first(), "As it is set now, it triggers at none of 256 samples.");
    QTest::keyClick(panel, Qt::Key_F4);
    QTRY_VERIFY(!d.isBusy());
}

/// The list has the keyboard when its key was pressed, and the page's field before and afterwards.
void tst_TriggerAdvice::givesTheKeyboardBack()
{
    Desktop d{TestDesign{}};
    d.open();
    auto *position = d.find<QSpinBox>("spinBoxTrPos");
    d.activate();
    position->setFocus();
    const auto press = [](int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), modifiers);
    };
    const auto ask = [&] { press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier); };
    const auto goRound = [&] { press(Qt::Key_F6, Qt::ControlModifier); };
    const auto inList = [] {
        const QWidget *focus = QApplication::focusWidget();
        return focus && focus->objectName() == "whyLines";
    };
    ask();
    QTRY_VERIFY(inList());
    ask();
    QTRY_COMPARE(QApplication::focusWidget(), position);
    goRound();
    QTRY_VERIFY(inList());
    goRound();
    QTRY_COMPARE(QApplication::focusWidget(), position);
    ask();
    QTRY_VERIFY(inList());
    press(Qt::Key_F1); // the window's
    QTRY_VERIFY_WITH_TIMEOUT(d.tabs()->count() == 2 && d.isIdle(), kCaptureTime);
    d.tabs()->setCurrentIndex(0);
    position->setFocus();
    ask();
    QTRY_VERIFY(inList());
    press(Qt::Key_Escape);
    QTRY_COMPARE(QApplication::focusWidget(), position);
    QVERIFY(!d.window->findChild<QDialog *>("whyNoTrigger")->isVisible());
}

/// By keys alone: the selected row at the shown sample, in one of two expressions; then the board
/// triggers there, and a click takes it back.
void tst_TriggerAdvice::triggersOnAValue()
{
    TestDesign design;
    design.dynamic = true;
    Desktop d(design);
    d.open();
    d.capture();
    WaveMonitorWidget &wave = *d.wave(1);
    const int value = countAt(wave, 77);
    const QString before = unitText(d, 0);
    wave.showValuesAt(77);
    auto *tree = wave.findChild<SignalTreeView *>();
    d.press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(!dialogOf(d, "proposalDialog")); // nothing is selected
    QVERIFY(d.find<QLabel>("toldStatus")->text().contains("select its rows first"));
    tree->selectOnly({tree->model()->index(0, 0)});
    d.press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QDialog *dialog = dialogOf(d, "proposalDialog");
    QVERIFY(dialog && dialog->isVisible());
    QVERIFY(dialog->findChild<QLabel *>("proposalAbout")
                ->text()
                .contains("At sample 77: count[15:0] = "));
    const QString text = dialog->findChild<QLabel *>("proposalText")->text();
    QVERIFY2(text.contains("M0, port 2: == " + bits(value)), qPrintable(text));
    QVERIFY2(text.contains("exp0: M0 in place of M0&amp;M1, checked"), qPrintable(text));
    QVERIFY2(text.contains("what it triggered at is lost"), qPrintable(text));
    QTest::keyClick(dialog, Qt::Key_Return);
    QTRY_VERIFY(!dialogOf(d, "proposalDialog"));
    QCOMPARE(unitText(d, 0), bits(value));
    QCOMPARE(d.find<QListWidget>("listExpressions")->item(0)->text(), "exp0:  M0");
    d.capture();
    QCOMPARE(countAt(*d.wave(1), design.position), value);

    tree = d.wave(1)->findChild<SignalTreeView *>();
    tree->selectOnly({tree->model()->index(0, 0)});
    d.wave(1)->showValuesAt(0);
    d.press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(!dialogOf(d, "proposalDialog")->findChild<QRadioButton *>("rbtnEdge")->isEnabled());
    QTest::keyClick(dialogOf(d, "proposalDialog"), Qt::Key_Return);
    QVERIFY(unitText(d, 0) != bits(value));
    d.press(Qt::Key_F1);
    QVERIFY(d.isBusy() && !d.find<QToolButton>("toldAction")->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(!d.isBusy(), kCaptureTime);
    QTest::mouseClick(d.find<QToolButton>("toldAction"), Qt::LeftButton);
    QCOMPARE(unitText(d, 0), bits(value));
    QVERIFY(!d.find<QToolButton>("toldAction")->isVisible());
    QVERIFY(before != unitText(d, 0));
}

/// The row and the sample under the pointer count, not those that are selected and shown.
void tst_TriggerAdvice::triggersWhereTheMenuCameUp()
{
    TestDesign design;
    Desktop d(design);
    d.open();
    d.capture();
    WaveMonitorWidget &wave = *d.wave(1);
    wave.setZoom(1);
    QTest::qWait(20);
    auto *waves = wave.findChild<WaveView *>();
    auto *tree = wave.findChild<SignalTreeView *>();
    tree->selectOnly({tree->model()->index(2, 0)});
    const int sample = waves->middleSample() + 2;
    const QPoint place(waves->mapFromScene((sample + 0.5) * CLOCK_PITCH, 0).x(), 15);
    const QString entry = "Trigger on This...";
    QVERIFY(driveContextMenu(tree->viewport(), {20, 20}).contains(entry));
    QVERIFY(driveContextMenu(waves->viewport(), place, entry).contains(entry));
    QDialog *dialog = dialogOf(d, "proposalDialog");
    QVERIFY(dialog);
    const QString about = dialog->findChild<QLabel *>("proposalAbout")->text();
    QVERIFY2(about.contains(QStringLiteral("At sample %1: count[15:0] = ").arg(sample)),
             qPrintable(about));
    // No unit sees edges here.
    clickMark(dialog->findChild<QRadioButton *>("rbtnEdge"));
    const QString edge = dialog->findChild<QLabel *>("proposalText")->text();
    QVERIFY2(edge.contains("sees edges compares"), qPrintable(edge));
    QTest::keyClick(dialog->findChild<QRadioButton *>("rbtnEdge"), Qt::Key_Left);
    QTest::mouseClick(dialog->findChild<QPushButton *>("btnApply"), Qt::LeftButton);
    QCOMPARE(unitText(d, 0), bits(countAt(wave, sample)));

    // What no port has is refused.
    QTRY_VERIFY(!dialogOf(d, "proposalDialog"));
    driveContextMenu(waves->viewport(), {place.x(), 15 + 3 * int(ROW_HEIGHT)}, entry);
    dialog = dialogOf(d, "proposalDialog");
    QVERIFY(dialog && !dialog->findChild<QPushButton *>("btnApply")->isEnabled());
    QVERIFY(dialog->findChild<QLabel *>("proposalText")
                ->text()
                .contains("No trigger port has noise_2."));
    QTest::keyClick(dialog, Qt::Key_Escape);
    QVERIFY(d.boxes.seen.isEmpty());
}

KEO_WIDGET_TEST_MAIN(tst_TriggerAdvice)
#include "tst_triggeradvice.moc"
