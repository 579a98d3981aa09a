// A core description that changes on disk while its project is open, in the real main window.

#include "projectwindow.h"

#include <project/descriptionwatch.h>
#include <project/reloadbanner.h>
#include <shell/analyzer.h>

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

#include <algorithm>

using namespace KEO;

class tst_DescriptionWatch : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void reload();
    void removal();
    void changeDuringCapture_data();
    void changeDuringCapture();
    void holdsBackWhatIsBeingWritten();
    void reloadWithoutFile();
    void reloadOfNoDesign();
    void slotsWithoutButton();
};

namespace {

constexpr int kQuiet = 500; // ms in which a change would have been told

/// The main window with a file open, and what shows in it.
struct Session
{
    explicit Session(const Bench &bench) : path(bench.file()), window(std::make_unique<Analyzer>())
    {
        window->resize(1200, 700);
        window->show();
        window->openFile(path, {}, bench.design.device, {});
        if (tabs()->count() != 1)
            qFatal("cannot open %s", qPrintable(path));
    }

    QTabWidget *tabs() const { return window->findChild<QTabWidget *>("tabWidget"); }
    QTreeWidget *tree() const { return window->findChild<QTreeWidget *>("coreTree"); }
    DescriptionWatch *watch() const { return window->findChild<DescriptionWatch *>(); }
    /// The banners that show, from the top.
    QList<ReloadBanner *> banners() const
    {
        QList<ReloadBanner *> shown;
        for (ReloadBanner *banner : window->findChildren<ReloadBanner *>()) {
            if (banner->isVisible())
                shown.append(banner);
        }
        QCoreApplication::processEvents(); // lay out
        std::sort(shown.begin(), shown.end(), [](auto *a, auto *b) { return a->y() < b->y(); });
        return shown;
    }
    /// Their words: what they say of the file, and their button.
    QStringList words() const
    {
        QStringList all;
        for (const ReloadBanner *banner : banners()) {
            QString text = banner->findChild<QLabel *>("labelFile")->text();
            all.append(text.replace(path, QStringLiteral("F")) + u'|' +
                       banner->findChild<QPushButton *>("btnA")->text());
        }
        return all;
    }
    void pressTop() const
    {
        QTest::mouseClick(banners().first()->findChild<QPushButton *>("btnA"), Qt::LeftButton);
    }
    void key(Qt::Key key) const
    {
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        QTest::keyClick(window.get(), key);
    }
    bool isBusy() const { return window->findChild<KeoStandardAnalyzerProject *>()->isBusy(); }

    QString path;
    BoxWatcher boxes;
    std::unique_ptr<Analyzer> window;
};

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

/// The tool flow has built the design anew, now with so many cores.
void rebuild(const Bench &bench, int cores)
{
    TestDesign design = bench.design;
    design.cores = cores;
    const QTemporaryDir directory;
    design.write(directory.path());
    QFile file(directory.filePath("design." + design.extension));
    QVERIFY(file.open(QIODevice::ReadOnly));
    write(bench.file(), file.readAll());
}

const QString kChanged = QStringLiteral("Keo file 'F' has been changed on disk.|Reload");
const QString kRemoved = QStringLiteral("Keo file 'F' has been removed on disk.|Close");

} // namespace

void tst_DescriptionWatch::reload()
{
    TestDesign design;
    design.amount = 32;
    const Bench bench(design);
    const Session s(bench);
    s.key(Qt::Key_F1);
    QTRY_COMPARE_WITH_TIMEOUT(s.tabs()->count(), 2, kCaptureTime);
    QTRY_VERIFY_WITH_TIMEOUT(!s.isBusy(), kCaptureTime);
    s.tabs()->setCurrentIndex(0);
    QSignalSpy reloaded(s.watch(), &DescriptionWatch::reloaded);
    for (int cores = 2; cores < 4; ++cores) { // and once more: the watch goes on
        rebuild(bench, cores);
        QTRY_COMPARE(s.words(), QStringList(kChanged));
        rebuild(bench, cores);
        QTest::qWait(kQuiet);
        QCOMPARE(s.words(), QStringList(kChanged)); // one banner
        QCOMPARE(s.tree()->topLevelItemCount(), cores - 1);
        s.pressTop();
        QCOMPARE(s.tree()->topLevelItemCount(), cores);
        QCOMPARE(s.tabs()->count(), 1); // the waves belonged to the old design
        QCOMPARE(s.words(), QStringList());
        QCOMPARE(reloaded.size(), cores - 1);
    }
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList());

    // Nothing is told of a file that is not open.
    QVERIFY(s.window->closeCurrentProject());
    rebuild(bench, 1);
    QTest::qWait(kQuiet);
    s.window->reopen(s.path);
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList());
    QVERIFY(s.boxes.seen.isEmpty());
}

void tst_DescriptionWatch::removal()
{
    const Bench bench({});
    const Session s(bench);
    rebuild(bench, 2);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QVERIFY(QFile::rename(s.path, s.path + ".away"));
    QTRY_COMPARE(s.words(), (QStringList{kRemoved, kChanged}));

    // It comes back.
    QVERIFY(QFile::rename(s.path + ".away", s.path));
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QVERIFY(QFile::rename(s.path, s.path + ".away"));
    QTRY_COMPARE(s.words(), (QStringList{kRemoved, kChanged}));

    // Close takes the topmost away, and the project with it.
    const auto page = s.banners().first()->parentWidget();
    s.pressTop();
    QCOMPARE(s.tabs()->count(), 0);
    QTest::qWait(0);
    QCOMPARE(page->findChildren<ReloadBanner *>().size(), 1);

    // The next project begins without.
    QVERIFY(QFile::rename(s.path + ".away", s.path));
    s.window->reopen(s.path);
    QCOMPARE(s.tabs()->count(), 1);
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList());
    QVERIFY(s.boxes.seen.isEmpty());
}

void tst_DescriptionWatch::changeDuringCapture_data()
{
    QTest::addColumn<Qt::Key>("end");
    QTest::addColumn<bool>("removes");
    QTest::newRow("the trigger comes") << Qt::Key_F3 << false;
    QTest::newRow("the user stops") << Qt::Key_F4 << false;
    QTest::newRow("the file goes") << Qt::Key_F3 << true;
}

void tst_DescriptionWatch::changeDuringCapture()
{
    QFETCH(Qt::Key, end);
    QFETCH(bool, removes);
    TestDesign design;
    design.fires = false;
    design.amount = 32;
    const Bench bench(design);
    const Session s(bench);
    s.key(Qt::Key_F1);
    QTest::qWait(700); // past the first poll
    QVERIFY(s.isBusy());
    rebuild(bench, 2);
    if (removes)
        QVERIFY(QFile::remove(s.path));
    QTest::qWait(kQuiet);
    QVERIFY(s.isBusy());
    QCOMPARE(s.words(), QStringList());
    s.key(end);
    QTRY_VERIFY_WITH_TIMEOUT(!s.isBusy(), kCaptureTime);
    s.tabs()->setCurrentIndex(0);
    QTRY_COMPARE(s.words(), QStringList(removes ? kRemoved : kChanged));
    if (removes)
        return;
    s.pressTop();
    QCOMPARE(s.tree()->topLevelItemCount(), 2);
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList()); // told once
}

// A Reload in the middle of a slow write would close everything.
void tst_DescriptionWatch::holdsBackWhatIsBeingWritten()
{
    const Bench bench({});
    const Session s(bench);
    QFile file(s.path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    const auto isMarked = [&] { return !s.tabs()->tabIcon(0).isNull(); };
    write(s.path, whole.first(whole.size() / 2));
    QTest::qWait(3 * kQuiet);
    QCOMPARE(s.words(), QStringList());
    QVERIFY(!isMarked());
    write(s.path, whole);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QVERIFY(isMarked());
    // Once more, and the banner is pressed before the watch has seen it.
    write(s.path, whole.first(whole.size() / 3));
    s.pressTop();
    QCOMPARE(s.tabs()->count(), 1);
    QVERIFY(!isMarked());
    rebuild(bench, 2);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    s.pressTop();
    QCOMPARE(s.tree()->topLevelItemCount(), 2);
    QVERIFY(!isMarked());
    QVERIFY(s.boxes.seen.isEmpty());
}

void tst_DescriptionWatch::reloadWithoutFile()
{
    const Bench bench({});
    const Session s(bench);
    QSignalSpy reloaded(s.watch(), &DescriptionWatch::reloaded);
    rebuild(bench, 2);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QVERIFY(QFile::remove(s.path));
    s.pressTop(); // before the removal is told
    QCOMPARE(s.words(), QStringList());
    QCOMPARE(s.tabs()->count(), 1);
    QCOMPARE(s.tree()->topLevelItemCount(), 1);
    QCOMPARE(reloaded.size(), 1);
    QTRY_COMPARE(s.words(), QStringList(kRemoved));
}

// What takes the description's place has no cores. The user learns it and may open something else.
void tst_DescriptionWatch::reloadOfNoDesign()
{
    const Bench bench({});
    const Session s(bench);
    write(s.path, "<KEO_CONFIG></KEO_CONFIG>");
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    s.pressTop();
    QCOMPARE(s.boxes.seen, QStringList("Error: Invalid KEO file specified in project."));
    QCOMPARE(s.tabs()->count(), 0);
    rebuild(bench, 2);
    QTest::qWait(kQuiet);
    s.window->reopen(s.path);
    QCOMPARE(s.tree()->topLevelItemCount(), 2);
    QCOMPARE(s.words(), QStringList());
}

void tst_DescriptionWatch::slotsWithoutButton()
{
    const Bench bench({});
    const Session s(bench);
    for (int round = 0; round < 2; ++round) {
        rebuild(bench, 2);
        QTRY_COMPARE(s.words(), QStringList(kChanged));
        s.watch()->onBannerCancel();
        QCOMPARE(s.words(), QStringList());
    }
    rebuild(bench, 2);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    s.watch()->onBannerKeep();
    rebuild(bench, 2);
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList());
}

KEO_WIDGET_TEST_MAIN(tst_DescriptionWatch)
#include "tst_descriptionwatch.moc"
