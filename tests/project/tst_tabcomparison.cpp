// Another window below that of a tab, as the user asks for it.

#include <support/desktop.h>
#include <wave/common/viewergeometry.h>
#include <wave/compare/comparedpage.h>
#include <wave_data/windowcontents.h>

#include <QLabel>
#include <QMenu>

using namespace WaveMonitor;

namespace {

/// The viewer above in a tab, compared or not.
WaveMonitorWidget *viewerOf(const Desktop &shown, int tab)
{
    if (auto *page = qobject_cast<ComparedPage *>(shown.tabs()->widget(tab)))
        return page->upper();
    return shown.wave(tab);
}

ComparedPage *pageOf(const Desktop &shown, int tab)
{
    return qobject_cast<ComparedPage *>(shown.tabs()->widget(tab));
}

QString lineOf(const ComparedPage *page)
{
    return page->findChild<QWidget *>("comparisonLine")->findChild<QLabel *>()->text();
}

/// Opens the menu of a tab by its key, gives its entries and chooses one by the keyboard.
QStringList choose(const Desktop &shown, int tab, const QString &choice)
{
    shown.tabs()->setCurrentIndex(tab);
    WaveMonitorWidget *viewer = viewerOf(shown, tab);
    shown.activate();
    viewer->findChild<QAbstractItemView *>()->setFocus();
    QTest::keyClick(viewer->focusWidget(), Qt::Key_D, Qt::ControlModifier);
    auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    if (!menu)
        return {};
    QStringList texts;
    QAction *chosen = nullptr;
    for (QAction *action : menu->actions()) {
        if (action->isSeparator())
            continue;
        texts.append(action->text());
        if (action->text() == choice)
            chosen = action;
    }
    menu->setActiveAction(chosen);
    QTest::keyClick(menu, chosen ? Qt::Key_Return : Qt::Key_Escape);
    QTest::qWait(50);
    return texts;
}

QList<QBitArray> samplesOf(const WindowContents &contents)
{
    QList<QBitArray> samples;
    for (const SignalElement &element : contents.signalMap())
        samples.append(element.data);
    return samples;
}

/// The first sample at which two captures of as many samples differ.
int firstDifference(const QList<QBitArray> &a, const QList<QBitArray> &b)
{
    for (int sample = 0; sample < a.first().size(); ++sample) {
        for (qsizetype id = 0; id < a.size(); ++id) {
            if (a[id].testBit(sample) != b[id].testBit(sample))
                return sample;
        }
    }
    return -1;
}

WaveMonitorWidget *below(const ComparedPage *page)
{
    for (WaveMonitorWidget *viewer : page->findChildren<WaveMonitorWidget *>()) {
        if (viewer != page->upper())
            return viewer;
    }
    return nullptr;
}

} // namespace

class tst_TabComparison : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void comparesWindowsOfACore();
    void followsTheLastCapture();
    void staysInAuto();
};

void tst_TabComparison::comparesWindowsOfACore()
{
    TestDesign design;
    design.windows = 3;
    design.cores = 2;
    Desktop shown(design);
    shown.open();
    for (int core = 0; core < 2; ++core)
        shown.find<QTreeWidget>("coreTree")->topLevelItem(core)->setCheckState(0, Qt::Checked);
    shown.capture();
    QCOMPARE(shown.tabs()->count(), 7);
    const QStringList titles = shown.titles();
    const QPointer<WaveMonitorWidget> viewer = shown.wave(1);
    const auto first = samplesOf(viewer->contents());
    const auto third = samplesOf(shown.wave(3)->contents());

    // The windows of the same core.
    QCOMPARE(choose(shown, 1, titles[3]), (QStringList{titles[2], titles[3]}));
    ComparedPage *page = pageOf(shown, 1);
    QVERIFY(page && page->upper() == viewer);
    QCOMPARE(shown.titles(), titles);
    QCOMPARE(shown.tabs()->currentIndex(), 1);
    const int difference = firstDifference(first, third);
    QVERIFY(difference >= 0);
    QVERIFY2(lineOf(page).contains(QStringLiteral("the first at sample %1 (").arg(difference)),
             qPrintable(lineOf(page)));
    shown.activate();
    QVERIFY(viewer->findChild<QAbstractItemView *>()->hasFocus());
    // The tool bar works on the tab's own window, and the other one goes along.
    shown.press(Qt::Key_F8);
    QTRY_COMPARE(below(page)->zoomRate(), viewer->zoomRate());
    QCOMPARE(viewer->zoomRate(), 2.0);
    // Another one instead, then none.
    QCOMPARE(choose(shown, 1, titles[2]), (QStringList{titles[2], titles[3], "Nothing"}));
    QCOMPARE(page->otherTitle(), titles[2]);
    QCOMPARE(samplesOf(below(page)->contents()), samplesOf(shown.wave(2)->contents()));
    QTest::keyClick(viewer->focusWidget(), Qt::Key_Escape);
    QTRY_COMPARE(shown.wave(1), viewer.data());
    QCOMPARE(shown.titles(), titles);

    // What is below is gone with the next Start.
    choose(shown, 1, titles[2]);
    QVERIFY(pageOf(shown, 1));
    shown.capture();
    QCOMPARE(shown.titles(), titles);
    for (int tab = 1; tab < 7; ++tab)
        QVERIFY(shown.wave(tab));
    QVERIFY(!viewer);
    // It is not saved, and goes with the project.
    choose(shown, 2, titles[1]);
    QVERIFY(pageOf(shown, 2));
    shown.saveAs(shown.directory.filePath("saved.analyzer_prj"));
    QFile data(shown.directory.filePath("saved.xml"));
    QVERIFY(data.open(QIODevice::ReadOnly));
    QCOMPARE(data.readAll().count("<Window "), 6);
    shown.open();
    QCOMPARE(shown.tabs()->count(), 1);
    QVERIFY(shown.window->findChildren<WaveMonitorWidget *>().isEmpty());
}

void tst_TabComparison::followsTheLastCapture()
{
    TestDesign design;
    design.windows = 2;
    Desktop shown(design);
    shown.open();
    shown.capture();
    const QStringList titles = shown.titles();
    QCOMPARE(choose(shown, 1, {}), QStringList{titles[2]}); // there is no capture before
    auto before = samplesOf(shown.wave(1)->contents());
    shown.capture();
    QCOMPARE(choose(shown, 1, "Last Capture"), (QStringList{"Last Capture", titles[2]}));
    for (int round = 0; round < 3; ++round) {
        QTRY_VERIFY(pageOf(shown, 1));
        QCOMPARE(samplesOf(below(pageOf(shown, 1))->contents()), before);
        before = samplesOf(viewerOf(shown, 1)->contents());
        QCOMPARE(shown.titles(), titles);
        QVERIFY(shown.wave(2)); // where it was not asked for
        QVERIFY(lineOf(pageOf(shown, 1)).contains("Last capture"));
        shown.capture();
    }
    // A run that was stopped leaves it for the next one.
    choose(shown, 1, "Nothing");
    QVERIFY(shown.wave(1));
    before = samplesOf(shown.wave(1)->contents());
    shown.capture();
    QVERIFY(shown.wave(1));
    choose(shown, 1, "Last Capture");
    QCOMPARE(samplesOf(below(pageOf(shown, 1))->contents()), before);
}

void tst_TabComparison::staysInAuto()
{
    Desktop shown({});
    shown.open();
    shown.press(Qt::Key_F2);
    const auto rounds = [&shown] { return counterText(*shown.tabs()).section(u' ', -1).toInt(); };
    QTRY_VERIFY_WITH_TIMEOUT(rounds() >= 2, kCaptureTime);
    choose(shown, 1, "Last Capture");
    QTRY_VERIFY(pageOf(shown, 1));
    const QPointer<WaveMonitorWidget> other = below(pageOf(shown, 1));
    const int opened = rounds();
    QTRY_VERIFY_WITH_TIMEOUT(rounds() >= opened + 3, kCaptureTime);
    QVERIFY(other); // with its rows as the user has them
    shown.press(Qt::Key_F4);
    QTRY_VERIFY_WITH_TIMEOUT(!shown.isBusy(), kCaptureTime);
    QCOMPARE(other->contents().maxDataLength(), viewerOf(shown, 1)->contents().maxDataLength());
}

KEO_WIDGET_TEST_MAIN(tst_TabComparison)
#include "tst_tabcomparison.moc"
