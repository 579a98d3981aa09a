// A core description that changes on disk while its project is open, in the real main window.

#include <project/descriptionwatch.h>
#include <project/reloadbanner.h>
#include <support/desktop.h>
#include <support/files.h>

#include <QClipboard>
#include <QFile>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>

#include <algorithm>

using namespace KEO;

class tst_DescriptionWatch : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void reload();
    void tellsWhatHasChanged();
    void changeWhileABoxShows();
    void timePutBack();
    void removal();
    void buttonsWaitForTheRun();
    void changeDuringCapture_data();
    void changeDuringCapture();
    void holdsBackWhatIsBeingWritten();
    void reloadOfNoDesign();
};

namespace {

constexpr int kQuiet = 400; // ms in which a change would have been told

/// A user with a project open, and what shows of the watch.
struct Session : Desktop
{
    explicit Session(const TestDesign &board) : Desktop(board) { open(); }

    DescriptionWatch *watch() const { return window->findChild<DescriptionWatch *>(); }
    int cores() const { return find<QTreeWidget>("coreTree")->topLevelItemCount(); }
    /// The banners that show, from the top.
    QList<ReloadBanner *> banners() const
    {
        QList<ReloadBanner *> shown = window->findChildren<ReloadBanner *>();
        shown.removeIf([](const ReloadBanner *banner) { return !banner->isVisible(); });
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
            all.append(text.replace(file(), QStringLiteral("F")) + u'|' +
                       banner->findChild<QPushButton *>("btnA")->text());
        }
        return all;
    }
    void pressTop() const
    {
        QTest::mouseClick(banners().first()->findChild<QPushButton *>("btnA"), Qt::LeftButton);
    }
    QString details() const
    {
        return banners().first()->findChild<QLabel *>("labelDetails")->text();
    }
    QWidget *changeList() const
    {
        const QList<QWidget *> lists = window->findChildren<QWidget *>("changeList");
        for (QWidget *list : lists) {
            if (list->isVisible())
                return list;
        }
        return nullptr;
    }
    /// The tool flow has built the design anew, now with so many cores.
    void rebuild(int cores) const
    {
        TestDesign built = design;
        built.cores = cores;
        built.amount = 64;
        write(built);
    }
    void write(const TestDesign &built) const
    {
        const QTemporaryDir folder;
        built.write(folder.path());
        putFile(file(), contentOf(folder.filePath("design." + design.extension)));
    }
};

const QString kChanged = QStringLiteral("Keo file 'F' has been changed on disk.|Reload");
const QString kRemoved = QStringLiteral("Keo file 'F' has been removed on disk.|Close");

} // namespace

void tst_DescriptionWatch::reload()
{
    TestDesign design;
    design.amount = 32;
    Session s(design);
    s.capture();
    s.tabs()->setCurrentIndex(0);
    QSignalSpy reloaded(s.watch(), &DescriptionWatch::reloaded);
    for (int cores = 2; cores < 4; ++cores) { // and once more: the watch goes on
        s.rebuild(cores);
        QTRY_COMPARE(s.words(), QStringList(kChanged));
        s.rebuild(cores);
        QTest::qWait(kQuiet);
        QCOMPARE(s.words(), QStringList(kChanged)); // one banner
        QCOMPARE(s.cores(), cores - 1);
        s.pressTop();
        QCOMPARE(s.cores(), cores);
        QCOMPARE(s.tabs()->count(), 1); // the waves belonged to the old design
        QCOMPARE(s.words(), QStringList());
        QCOMPARE(reloaded.size(), cores - 1);
    }
    // The other two ways to be rid of a banner.
    for (void (DescriptionWatch::*slot)() :
         {&DescriptionWatch::onBannerCancel, &DescriptionWatch::onBannerKeep}) {
        s.rebuild(2);
        QTRY_COMPARE(s.words(), QStringList(kChanged));
        (s.watch()->*slot)();
        QCOMPARE(s.words(), QStringList());
    }
    s.rebuild(3);
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList()); // the file is kept as it was

    // Nothing is told of a file that is not open.
    QVERIFY(s.window->closeCurrentProject());
    s.rebuild(1);
    QTest::qWait(kQuiet);
    s.window->reopen(s.file());
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList());
    QVERIFY(s.boxes.seen.isEmpty());
}

// The line in the banner and the list behind it follow the file, and go with what they tell of.
void tst_DescriptionWatch::tellsWhatHasChanged()
{
    Session s({});
    s.window->resize(800, 600);
    TestDesign built = s.design;
    built.storageDepth = 8192;
    built.noise = 40;
    built.position = 20;
    s.write(built);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QCOMPARE(s.details(), QString("core 0: signals: 32 added, memory 4096 \u2192 8192; "
                                  "settings in the file: 1 changed"));
    QCOMPARE(s.window->size(), QSize(800, 600));
    auto *field = s.find<QSpinBox>("spinBoxTrPos");
    field->setFocus();
    const auto ask = [&s] {
        s.press(Qt::Key_W, Qt::AltModifier);
        QTRY_VERIFY(s.changeList() && s.changeList()->isActiveWindow());
    };
    ask();
    QVERIFY(s.changeList() && !s.changeList()->isModal());
    const auto copied = [&s] {
        QTest::mouseClick(s.changeList()->findChild<QPushButton *>("copy"), Qt::LeftButton);
        return QGuiApplication::clipboard()->text().split(u'\n');
    };
    QCOMPARE(copied().size(), 34);
    QCOMPARE(copied().first(), QString("Core 0: memory 4096 \u2192 8192"));
    QCOMPARE(copied().last(), QString("Core 0, setting: trigger position 16 \u2192 20"));

    built.noise = 9; // and once more, while the list is open and the user is in it
    auto *tree = s.changeList()->findChild<QTreeWidget *>("tree");
    tree->setCurrentItem(tree->topLevelItem(0)->child(1));
    tree->topLevelItem(1)->setExpanded(false);
    s.write(built);
    QTRY_COMPARE(tree->topLevelItem(0)->childCount(), 2);
    QCOMPARE(tree->selectedItems(), QList({tree->topLevelItem(0)->child(1)}));
    QCOMPARE(tree->currentItem(), tree->topLevelItem(0)->child(1));
    QVERIFY(tree->topLevelItem(0)->isExpanded() && !tree->topLevelItem(1)->isExpanded());
    QTest::keyClick(tree, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), "Core 0: signal added: noise_8");
    QTest::keyClick(tree, Qt::Key_Escape);
    QVERIFY(!s.changeList());
    QTRY_COMPARE(QApplication::focusWidget(), field);
    QCOMPARE(s.words(), QStringList(kChanged));
    ask();
    QVERIFY(s.changeList());
    s.pressTop();
    QVERIFY(!s.changeList());

    s.write(built); // now it is what is open
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QCOMPARE(s.details(), "The design is the same");
    QVERIFY(!s.banners().first()->findChild<QPushButton *>("buttonDetails")->isVisible());
    built.noise = 10;
    s.write(built);
    QTRY_COMPARE(s.details(), "core 0: signals: 1 added");
    ask();
    putFile(s.file(), "<KEO_CONFIG><Version>9</Version><KoCore/></KEO_CONFIG>");
    QTRY_COMPARE(s.details(), "It can't be loaded: The version of Keo config file is too high.");
    QVERIFY(!s.changeList()); // it has nothing to tell, and no button leads there
    QTRY_VERIFY(s.window->isActiveWindow());
}

// A project asks first, and the tools go on meanwhile.
void tst_DescriptionWatch::changeWhileABoxShows()
{
    Session s({});
    s.capture();
    s.saveAs(s.directory.filePath("run"));
    QVERIFY(QFile::remove(s.directory.filePath("run.xml")));
    TestDesign built = s.design;
    built.storageDepth = 8192;
    s.boxes.whileOpen = [&](const QMessageBox &) { s.write(built); };
    s.open(s.directory.filePath("run.analyzer_prj"));
    QCOMPARE(s.boxes.seen.size(), 1);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QVERIFY2(s.details().startsWith("core 0: memory 4096"), qPrintable(s.details()));
}

// By their size and time, some tools' files are all the same. An attribute is no news.
void tst_DescriptionWatch::timePutBack()
{
    TestDesign design;
    Session s(design);
    const QDateTime longAgo = QDateTime::currentDateTime().addDays(-1);
    const auto write = [&](const QByteArray &content) {
        QFile file(s.file());
        QVERIFY(file.open(QIODevice::ReadWrite));
        QCOMPARE(file.write(content), file.size());
        QVERIFY(file.flush() && file.setFileTime(longAgo, QFileDevice::FileModificationTime));
    };
    const QByteArray content = contentOf(s.file());
    write(content);
    s.window->reopen(s.file());
    QVERIFY(QFile::setPermissions(s.file(), QFile::ReadOwner | QFile::WriteOwner));
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList());
    QByteArray built = content;
    write(built.replace("noise_0<", "fresh_0<"));
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QCOMPARE(s.details(), "core 0: signals: 1 renamed");
    write(content);
    QTRY_COMPARE(s.details(), "The design is the same");
}

void tst_DescriptionWatch::removal()
{
    Session s({});
    QSignalSpy reloaded(s.watch(), &DescriptionWatch::reloaded);
    s.rebuild(2);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    const QString away = s.file() + ".away";
    for (int time = 0; time < 2; ++time) { // it comes back, and goes again
        QVERIFY(time == 0 || QFile::rename(away, s.file()));
        QTRY_COMPARE(s.words(), QStringList(kChanged));
        QVERIFY(QFile::rename(s.file(), away));
        QTRY_COMPARE(s.words(), (QStringList{kRemoved, kChanged}));
        QVERIFY(!s.banners().last()->findChild<QPushButton *>("btnKeep")->isEnabled());
    }
    // Close takes the topmost away, and the project with it.
    const auto page = s.banners().first()->parentWidget();
    s.pressTop();
    QCOMPARE(s.tabs()->count(), 0);
    QTest::qWait(0);
    QCOMPARE(page->findChildren<ReloadBanner *>().size(), 1);

    // The next project begins without. A removal that is not yet told finds the cores still there.
    QVERIFY(QFile::rename(away, s.file()));
    s.window->reopen(s.file());
    QCOMPARE(s.tabs()->count(), 1);
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList());
    s.rebuild(3);
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    QVERIFY(QFile::remove(s.file()));
    s.pressTop();
    QCOMPARE(s.words(), QStringList());
    QCOMPARE(s.tabs()->count(), 1);
    QCOMPARE(s.cores(), 2);
    QCOMPARE(reloaded.size(), 1);
    QTRY_COMPARE(s.words(), QStringList(kRemoved));
    QVERIFY(s.boxes.seen.isEmpty());
}

// A banner that was there before Start outlasts the run, and so does the watch.
void tst_DescriptionWatch::buttonsWaitForTheRun()
{
    TestDesign design;
    design.fires = false;
    for (const bool isRemoved : {false, true}) {
        Session s(design);
        if (isRemoved)
            QVERIFY(QFile::remove(s.file()));
        else
            s.rebuild(2);
        const QStringList told{isRemoved ? kRemoved : kChanged};
        QTRY_COMPARE(s.words(), told);
        s.press(Qt::Key_F1);
        QVERIFY(s.isBusy());
        s.pressTop();
        QVERIFY(s.isBusy());
        QCOMPARE(s.words(), told);
        s.press(Qt::Key_F4);
        QTRY_VERIFY(!s.isBusy());
        QCOMPARE(s.words(), told);
        s.pressTop();
        QCOMPARE(s.words(), QStringList());
        QCOMPARE(s.tabs()->count(), isRemoved ? 0 : 1);
    }
}

void tst_DescriptionWatch::changeDuringCapture_data()
{
    addColumns<bool, Qt::Key, bool>({"lite", "end", "removes"});
    addRow("the trigger comes", false, Qt::Key_F3, false);
    addRow("the user stops a lite core", true, Qt::Key_F4, false);
    addRow("the file goes", false, Qt::Key_F3, true);
}

void tst_DescriptionWatch::changeDuringCapture()
{
    QFETCH(bool, lite);
    QFETCH(Qt::Key, end);
    QFETCH(bool, removes);
    TestDesign design;
    design.lite = lite;
    design.samplesPerSecond = lite ? 1 : design.samplesPerSecond;
    design.fires = false;
    design.amount = 32;
    Session s(design);
    s.press(Qt::Key_F1);
    QTest::qWait(600); // past the first poll
    s.rebuild(2);
    if (removes)
        QVERIFY(QFile::remove(s.file()));
    QTest::qWait(kQuiet);
    QVERIFY(s.isBusy());
    QCOMPARE(s.words(), QStringList());
    s.press(end);
    QTRY_VERIFY_WITH_TIMEOUT(!s.isBusy(), kCaptureTime);
    s.tabs()->setCurrentIndex(0);
    QTRY_COMPARE(s.words(), QStringList(removes ? kRemoved : kChanged));
    if (removes)
        return;
    s.pressTop();
    QCOMPARE(s.titles().size(), 1);
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList()); // told once
}

// A Reload in the middle of a slow write would close everything.
void tst_DescriptionWatch::holdsBackWhatIsBeingWritten()
{
    Session s({});
    const QByteArray whole = contentOf(s.file());
    const auto isMarked = [&] { return !s.tabs()->tabIcon(0).isNull(); };
    putFile(s.file(), whole.first(whole.size() / 2));
    QTest::qWait(3 * kQuiet);
    QCOMPARE(s.words(), QStringList());
    QVERIFY(!isMarked());
    putFile(s.file(), whole);
    QTRY_VERIFY(isMarked());
    QTest::qWait(kQuiet); // the watch may tell it once more, which makes the banner anew
    QCOMPARE(s.words(), QStringList(kChanged));
    // Once more, and the banner is pressed before the watch has seen it.
    putFile(s.file(), whole.first(whole.size() / 3));
    s.pressTop();
    QCOMPARE(s.tabs()->count(), 1);
    QVERIFY(!isMarked());
    s.rebuild(2);
    QTRY_VERIFY(isMarked());
    QTest::qWait(kQuiet);
    QCOMPARE(s.words(), QStringList(kChanged));
    s.pressTop();
    QCOMPARE(s.cores(), 2);
    QVERIFY(!isMarked());
    QVERIFY(s.boxes.seen.isEmpty());
}

// What takes the description's place has no cores. The user learns it and may open something else.
void tst_DescriptionWatch::reloadOfNoDesign()
{
    Session s({});
    putFile(s.file(), "<KEO_CONFIG></KEO_CONFIG>");
    QTRY_COMPARE(s.words(), QStringList(kChanged));
    s.pressTop();
    QCOMPARE(s.boxes.seen, QStringList("Error: Invalid KEO file specified in project."));
    QCOMPARE(s.tabs()->count(), 0);
    s.rebuild(2);
    s.window->reopen(s.file());
    QCOMPARE(s.cores(), 2);
    QCOMPARE(s.words(), QStringList());
}

KEO_WIDGET_TEST_MAIN(tst_DescriptionWatch)
#include "tst_descriptionwatch.moc"
