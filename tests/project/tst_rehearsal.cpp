// The trigger of the page over the waves, as the user sees it.

#include "unittableuser.h"

#include <export_ui/exportdialog.h>
#include <wave/common/viewergeometry.h>
#include <wave/ruler/rulerview.h>
#include <wave/view/waveview.h>
#include <wave_data/windowcontents.h>

#include <QFile>
#include <QRadioButton>

using namespace WaveMonitor;
using KEO::ExportDialog;

namespace {

/// What the bar above the waves says; nothing while there is none.
QString said(const QWidget *wave)
{
    const auto *label = wave->findChild<QLabel *>("aidText");
    return label && label->isVisibleTo(wave) ? label->text() : QString();
}

/// What it should say of the samples of which the bus has one of these bits set as in \a value,
/// when a sample is shown.
QString expected(const WaveMonitorWidget &wave, int mask, int value, int place)
{
    int hits = 0;
    int hit = 0;
    bool before = false;
    for (int k = 0; k < wave.contents().maxDataLength(); ++k) {
        const bool holds = (countAt(wave, k) & mask) == value;
        hits += holds && !before ? 1 : 0;
        before = holds;
        if (holds && k == place)
            hit = hits;
    }
    return hit > 0     ? QStringLiteral("Trigger: hit %1 of %2").arg(hit).arg(hits)
           : hits == 1 ? QStringLiteral("Trigger: 1 hit")
                       : QStringLiteral("Trigger: %1 hits").arg(hits);
}

/// Opens the first unit by the keyboard and types a value.
void setUnit(const Desktop &d, const QString &value)
{
    d.tabs()->setCurrentIndex(0);
    QTableView *units = goToUnit(d, 0);
    const OnModal<QDialog> dialog([&](QDialog *box) {
        clickMark(box->findChild<QRadioButton *>("rbtnBin"));
        auto *field = box->findChild<QLineEdit *>("lineEditValue0");
        QTest::keyClick(field, Qt::Key_Home);
        QTest::keyClicks(field, value);
        QTest::keyClick(field, Qt::Key_Return);
    });
    QTest::keyClick(units, Qt::Key_Return);
    QVERIFY(dialog.seen());
    QCoreApplication::processEvents();
}

QAction *rehearseAction(const Desktop &d)
{
    for (QAction *action : d.window->actions()) {
        if (action->objectName() == "rehearseAction")
            return action;
    }
    qFatal("no action");
}

bool hasTick(const WaveMonitorWidget &wave, int sample)
{
    const auto *ruler = wave.findChild<RulerView *>();
    const QImage image = pixelsOf(ruler->viewport());
    const int x = ruler->mapFromScene(sample * CLOCK_PITCH, 0).x();
    for (const int column : {x - 1, x}) {
        if (image.pixelColor(column, 32) == QColor(0x50, 0xE0, 0x70))
            return true;
    }
    return false;
}

/// The files of an export under that name.
QByteArray exported(const Desktop &d)
{
    const OnModal<ExportDialog> dialog([](ExportDialog *box) {
        box->findChild<QLineEdit *>("editName")->setText("out");
        QTest::keyClick(box, Qt::Key_Return);
    });
    d.click("Export");
    QFile file(d.directory.filePath("out_core0_window0.csv"));
    const QByteArray content = contentOf(file.fileName());
    file.remove();
    return content;
}

} // namespace

class tst_Rehearsal : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void followsThePage();
    void followsTheRounds();
    void overASavedProject();
    void liteCoresHaveNone();
};

void tst_Rehearsal::followsThePage()
{
    TestDesign design;
    Desktop d(design);
    d.open();
    d.capture();
    d.saveAs(d.directory.filePath("run.analyzer_prj"));
    const QStringList files{d.file(), d.directory.filePath("run.analyzer_prj"),
                            d.directory.filePath("run.xml")};
    QList<QByteArray> before;
    for (const QString &file : files)
        before.append(contentOf(file));
    const QByteArray export1 = exported(d);
    QVERIFY(export1.size() > 1000);
    const WaveMonitorWidget &wave = *d.wave(1);
    QCOMPARE(said(&wave), QString());

    // The sample that has triggered is a hit.
    d.press(Qt::Key_R, Qt::ControlModifier);
    d.activate();
    d.wave(1)->focusWaves();
    QTest::keyClick(d.window->focusWidget(), Qt::Key_T);
    QTest::qWait(20);
    QCOMPARE(said(&wave), expected(wave, 0xFF, 0x37, design.position));
    QVERIFY(said(&wave).contains("hit "));
    QVERIFY(hasTick(wave, design.position) && !hasTick(wave, design.position + 1));

    // Nothing of it is saved or exported.
    d.press(Qt::Key_S, Qt::ControlModifier);
    for (qsizetype i = 0; i < files.size(); ++i)
        QCOMPARE(contentOf(files[i]), before[i]);
    QCOMPARE(exported(d), export1);

    // An edit shows as soon as the waves do, and the keys go along the new hits.
    setUnit(d, "XXXXXXXXXXXX1001");
    d.tabs()->setCurrentIndex(1);
    QCOMPARE(said(&wave), expected(wave, 0xF, 9, -1));
    QVERIFY(!hasTick(wave, design.position) && hasTick(wave, design.position + 2));
    d.press(Qt::Key_F5);
    QCOMPARE(said(&wave), expected(wave, 0xF, 9, design.position + 2));
    d.press(Qt::Key_F5, Qt::ShiftModifier);
    QCOMPARE(said(&wave), expected(wave, 0xF, 9, design.position - 14));

    // A new capture finds it switched on.
    d.capture();
    d.wave(1)->focusWaves();
    QTest::keyClick(d.window->focusWidget(), Qt::Key_T);
    QCOMPARE(said(d.wave(1)), expected(*d.wave(1), 0xF, 9, design.position));
    d.press(Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(said(d.wave(1)), QString());
    QVERIFY(d.boxes.seen.isEmpty());
}

/// The board gives the same samples each round, so others stand in between.
void tst_Rehearsal::followsTheRounds()
{
    TestDesign design;
    design.amount = 64;
    Desktop d(design);
    d.open();
    d.press(Qt::Key_R, Qt::ControlModifier);
    d.press(Qt::Key_F2);
    QTRY_VERIFY_WITH_TIMEOUT(d.tabs()->count() == 2, kCaptureTime);
    d.tabs()->setCurrentIndex(1);
    WaveMonitorWidget &wave = *d.wave(1);
    for (int round = 0; round < 2; ++round) {
        QAction *action = rehearseAction(d);
        action->setChecked(false);
        wave.updateData(QList<QBitArray>(design.signalCount(), QBitArray(design.amount)));
        action->setChecked(true);
        QCOMPARE(said(&wave), "Trigger: no hit");
        const QString counter = counterText(wave);
        QTRY_VERIFY_WITH_TIMEOUT(counterText(wave) != counter, kCaptureTime);
        QVERIFY2(said(&wave).endsWith(": 1 hit") || said(&wave).endsWith("hit 1 of 1"),
                 qPrintable(said(&wave)));
        QVERIFY(hasTick(wave, design.position));
    }
    d.press(Qt::Key_F4);
}

void tst_Rehearsal::overASavedProject()
{
    TestDesign design;
    design.cores = 2;
    design.windows = 2;
    Desktop d(design);
    d.open();
    d.find<QTreeWidget>("coreTree")->topLevelItem(1)->setCheckState(0, Qt::Checked);
    d.capture();
    const QString project = d.directory.filePath("run.analyzer_prj");
    d.saveAs(project);
    d.press(Qt::Key_R, Qt::ControlModifier);
    d.open(project);
    QCOMPARE(d.tabs()->count(), 5);
    for (int tab = 1; tab < 5; ++tab) {
        d.tabs()->setCurrentIndex(tab);
        QCOMPARE(said(d.wave(tab)), QString()); // another project begins without
    }
    d.press(Qt::Key_R, Qt::ControlModifier);
    for (int tab = 1; tab < 5; ++tab) {
        d.tabs()->setCurrentIndex(tab);
        d.wave(tab)->showTrigger();
        QTest::qWait(10);
        QVERIFY2(said(d.wave(tab)).startsWith("Trigger: "), qPrintable(said(d.wave(tab))));
        QVERIFY(hasTick(*d.wave(tab), design.position));
    }
}

void tst_Rehearsal::liteCoresHaveNone()
{
    TestDesign design;
    design.lite = true;
    design.amount = 32;
    Desktop d(design);
    d.open();
    d.capture();
    const QAction *action = rehearseAction(d);
    QVERIFY(action && !action->isEnabled());
    QVERIFY(action->toolTip().contains("lite core"));
    d.press(Qt::Key_R, Qt::ControlModifier);
    QCOMPARE(said(d.wave(1)), QString());
    // Nor a reason why there was none, and none to propose.
    d.press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
    d.press(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(d.window->findChildren<QDialog *>().isEmpty());
}

KEO_WIDGET_TEST_MAIN(tst_Rehearsal)
#include "tst_rehearsal.moc"
