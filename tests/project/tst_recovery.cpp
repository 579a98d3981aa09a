// What becomes of captures that were never saved, and of the files that were open last: from the
// run to the page without a design, the command line and the next save.

#include <base/userfolder.h>
#include <design/projectfile.h>
#include <design/recoverystore.h>
#include <design/savedcapture.h>
#include <support/desktop.h>
#include <support/files.h>
#include <support/fulldisk.h>

#include <QDir>
#include <QFileDialog>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListWidget>
#include <QProcess>
#include <QRandomGenerator>

#include <cerrno>
#include <cstring>
#include <functional>

using namespace KEO;

class tst_Recovery : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        WidgetTest::init();
        QVERIFY(userDataFolder().startsWith(qEnvironmentVariable("TMPDIR")));
        QDir(userDataFolder()).removeRecursively();
    }
    void keepsWhatGoes_data();
    void keepsWhatGoes();
    void recoveredIsSavedElsewhere_data();
    void recoveredIsSavedElsewhere();
    void writesInIdleTime();
    void writesWhileTheRunWaits();
    void autoRunWritesSeldom();
    void commandLine();
    void severalProgramsAndKills();
    void limitsAndFaults();
    void recentFiles();
};

namespace {

using Entries = QList<Recovery>;

Entries entries()
{
    return RecoveryStore().entries();
}

/// The samples of all tabs.
QList<QBitArray> samplesOf(const UserWindow &user)
{
    QList<QBitArray> samples;
    for (int tab = 1; tab < user.tabs()->count(); ++tab) {
        for (const auto &element : user.wave(tab)->signalMap())
            samples.append(element.data);
    }
    return samples;
}

QListWidget *list(const UserWindow &user, const char *name)
{
    return user.find<QListWidget>(name);
}

void clickFirst(QListWidget *list)
{
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(0)).center());
}

using Drop = std::function<void(const Desktop &)>;

} // namespace
Q_DECLARE_METATYPE(Drop)

void tst_Recovery::keepsWhatGoes_data()
{
    QTest::addColumn<bool>("lite");
    QTest::addColumn<Drop>("drop");
    for (const bool lite : {false, true}) {
        const char *kind = lite ? "lite" : "standard";
        QTest::addRow("%s, next capture", kind) << lite << Drop([](const Desktop &d) {
            d.press(Qt::Key_F1);
            d.press(Qt::Key_F4);
            QTRY_VERIFY(d.isIdle());
            QVERIFY(d.window->closeCurrentProject());
        });
        QTest::addRow("%s, reload", kind) << lite << Drop([](const Desktop &d) {
            d.window->reopen(d.file());
            QVERIFY(d.window->closeCurrentProject());
        });
        QTest::addRow("%s, program ends", kind)
            << lite << Drop([](const Desktop &d) { QVERIFY(d.window->close()); });
    }
}

// Dropped at once, before there was any idle time, and opened again by a click.
void tst_Recovery::keepsWhatGoes()
{
    QFETCH(bool, lite);
    QFETCH(Drop, drop);
    TestDesign design;
    design.lite = lite;
    design.windows = lite ? 1 : 2;
    design.coreIndex = 3;
    Desktop d(design);
    d.open();
    d.capture();
    const QList<QBitArray> samples = samplesOf(d);
    QCOMPARE(samples.size(), design.signalCount() * design.windows);
    drop(d);
    QVERIFY(!entries().isEmpty());

    // The tool flow builds another design meanwhile.
    putFile(d.file(), "<C/>");
    const UserWindow later;
    auto *offered = list(later, "recoveryList");
    QVERIFY(offered->isVisible());
    const QString text = offered->item(offered->count() - 1)->text(); // the oldest
    QVERIFY2(text.endsWith(lite ? "   design.keo, window 0" : "   design.keo, core 3 window 0, 1"),
             qPrintable(text));
    offered->setCurrentRow(offered->count() - 1);
    later.activate();
    offered->setFocus();
    QTest::keyClick(offered, Qt::Key_Return);
    QTRY_COMPARE(later.tabs()->count(), 1 + design.windows);
    QCOMPARE(samplesOf(later), samples);
    QCOMPARE(later.window->windowTitle(), "design.keo (recovered) – Tarno Signal Scope");
    QVERIFY(later.boxes.seen.isEmpty());
    QVERIFY(later.window->close());
    QVERIFY(!entries().isEmpty()); // still not saved
}

void tst_Recovery::recoveredIsSavedElsewhere_data()
{
    QTest::addColumn<QByteArray>("onDisk"); // meanwhile; null: as it was, empty: gone
    QTest::addColumn<QString>("description");
    QTest::newRow("description as it was") << QByteArray() << "design.keo";
    QTest::newRow("description written anew") << QByteArray("<C/>") << "kept.keo";
    QTest::newRow("description gone") << QByteArray("") << "kept.keo";
}

void tst_Recovery::recoveredIsSavedElsewhere()
{
    QFETCH(QByteArray, onDisk);
    QFETCH(QString, description);
    Desktop d({});
    d.open();
    d.capture();
    const QList<QBitArray> samples = samplesOf(d);
    QVERIFY(d.window->closeCurrentProject());
    if (!onDisk.isNull())
        QVERIFY(QFile::remove(d.file()));
    if (!onDisk.isEmpty())
        putFile(d.file(), onDisk);
    const Entries before = entries();
    QCOMPARE(before.size(), 1);
    const QDir entry = QFileInfo(before[0].project).dir();

    clickFirst(list(d, "recoveryList"));
    QTRY_COMPARE(d.tabs()->count(), 2);
    QString suggested;
    const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
        auto *name = box->findChild<QLineEdit *>();
        suggested = box->directory().path() + u'/' + name->text();
        name->setText("kept");
        QTest::keyClick(box, Qt::Key_Return);
    });
    d.press(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(dialog.seen());
    QCOMPARE(suggested, d.directory.filePath("design"));
    QVERIFY(!entry.exists()); // saved is saved
    QCOMPARE(d.window->windowTitle(), "kept.analyzer_prj – Tarno Signal Scope");
    const auto paths = readProjectFile(d.directory.filePath("kept.analyzer_prj"));
    QVERIFY(paths);
    QCOMPARE(*paths,
             (ProjectFile{d.directory.filePath(description), d.directory.filePath("kept.xml")}));
    if (description != QLatin1String("design.keo"))
        QCOMPARE(contentOf(d.file()), onDisk); // not ours to replace
    d.open(d.directory.filePath("kept.analyzer_prj"));
    QCOMPARE(samplesOf(d), samples);
    QVERIFY(d.boxes.seen.isEmpty());
    QVERIFY(d.window->closeCurrentProject());
    QVERIFY(entries().isEmpty());
}

void tst_Recovery::writesInIdleTime()
{
    TestDesign design;
    design.windows = 2;
    Desktop d(design);
    d.open();
    d.capture();
    QTRY_COMPARE(entries().size(), 1);
    const QString first = entries()[0].project;
    QCOMPARE(entries()[0].windows, (QList<WindowPlace>{{0, 0}, {0, 1}}));

    // Nothing is written twice; what the user has changed since is.
    QVERIFY(d.window->closeCurrentProject());
    QCOMPARE(entries()[0].project, first);
    clickFirst(list(d, "recoveryList"));
    QTRY_COMPARE(d.tabs()->count(), 3);
    d.wave(1)->setTriggerPosition(5);
    QVERIFY(d.window->closeCurrentProject());
    QCOMPARE(entries().size(), 1);
    QVERIFY(entries()[0].project != first);

    // What is saved needs no entry.
    d.open();
    d.capture();
    QTRY_COMPARE(entries().size(), 2);
    d.saveAs(d.directory.filePath("run.analyzer_prj"));
    QCOMPARE(entries().size(), 1);
}

// The next window may take for ever.
void tst_Recovery::writesWhileTheRunWaits()
{
    TestDesign design;
    design.windows = 2;
    design.faults = R"([{"at": "READ_RAM", "nth": 3, "do": "hang"}])";
    Desktop d(design);
    d.open();
    d.press(Qt::Key_F1);
    QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
    QTRY_COMPARE(entries().size(), 1);
    QVERIFY(d.isBusy());
    QCOMPARE(entries()[0].windowText(), "core 0 window 0");
    d.press(Qt::Key_F4);
    const QList<QBitArray> samples = samplesOf(d);
    QVERIFY(d.window->closeCurrentProject());
    clickFirst(list(d, "recoveryList"));
    QTRY_COMPARE(d.tabs()->count(), 2);
    QCOMPARE(samplesOf(d), samples);
}

void tst_Recovery::autoRunWritesSeldom()
{
    Desktop d({});
    d.open();
    QSet<QString> seen;
    QTimer reader;
    connect(&reader, &QTimer::timeout, this, [&] {
        for (const Recovery &entry : entries())
            seen.insert(entry.project);
    });
    d.press(Qt::Key_F2);
    QTRY_COMPARE_WITH_TIMEOUT(d.tabs()->count(), 2, kCaptureTime);
    const qsizetype rounds = d.requests("READ_RAM");
    reader.start(5);
    QTest::qWait(1500); // longer than a window waits for the next
    QTRY_VERIFY_WITH_TIMEOUT(d.requests("READ_RAM") > rounds + 6, kCaptureTime);
    QVERIFY2(seen.isEmpty(), qPrintable(seen.values().join('\n')));
    d.press(Qt::Key_F4);
    QTRY_VERIFY(d.isIdle());
    const QList<QBitArray> last = samplesOf(d);
    QTRY_COMPARE(seen.size(), 1);
    const auto project = openProject(*seen.begin());
    QVERIFY(project);
    QCOMPARE(project->captures[0].contents.signalMap()[0].data, last[0]);
}

namespace {

struct Output
{
    int status = -1;
    QByteArray out;
    QByteArray err;
};

Output runCapture(const QStringList &arguments)
{
    QProcess process;
    process.start(KEO_BIN_DIR "/signalscope-capture", arguments);
    if (!process.waitForFinished(30000))
        qFatal("the program does not end");
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace

void tst_Recovery::commandLine()
{
    QCOMPARE(runCapture({"--list-recovery"}).out, "");
    Desktop d({});
    d.open();
    for (int capture = 0; capture < 2; ++capture)
        d.capture();
    const QList<QBitArray> samples = samplesOf(d);
    QVERIFY(d.window->closeCurrentProject());
    const Entries kept = entries();
    QCOMPARE(kept.size(), 2);
    const auto last = openProject(kept[0].project);
    QVERIFY(last);
    QCOMPARE(last->captures[0].contents.signalMap()[0].data, samples[0]);

    const QByteArrayList lines = runCapture({"--list-recovery"}).out.trimmed().split('\n');
    QCOMPARE(lines.size(), 2);
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QByteArrayList cells = lines[i].split('\t');
        QCOMPARE(cells[0], "recovery:" + QByteArray::number(i + 1));
        QCOMPARE(cells.mid(2), (QByteArrayList{d.file().toUtf8(), "core 0 window 0"}));
    }
    const auto json =
        QJsonDocument::fromJson(runCapture({"--list-recovery", "--json"}).out).object();
    QCOMPARE(json["recovery"][1]["project"].toString(), kept[1].project);

    const QString out = d.directory.filePath("out");
    for (const char *name : {"recovery", "recovery:1"}) {
        const Output exported = runCapture({"--open", name, "--format", "csv", "--out", out});
        QCOMPARE(exported.status, 0);
        QCOMPARE(exported.out.trimmed(), out.toUtf8() + "/design_core0_window0.csv");
    }
    const QByteArray newest = contentOf(out + "/design_core0_window0.csv");
    QCOMPARE(runCapture({"--open", "recovery:2", "--format", "csv", "--out", out}).status, 0);
    QVERIFY(contentOf(out + "/design_core0_window0.csv") != newest);
    QCOMPARE(runCapture({"--compare", "recovery", "recovery:1"}).status, 0);
    QCOMPARE(runCapture({"--compare", "recovery", "recovery:2"}).status, 1);
    for (const char *name : {"recovery:3", "recovery:0", "recovery:"}) {
        const Output none = runCapture({"--open", name});
        QCOMPARE(none.status, 2);
        QVERIFY2(none.err.contains(name), none.err);
    }
}

namespace {

const char *const kWriteForEver = "--write-for-ever";
constexpr int kFew = 5;

/// A project of one window, big enough to be written in several pieces.
struct StoredCapture
{
    explicit StoredCapture(int amount = 60'000)
    {
        design.amount = amount;
        design.write(directory.path());
        for (int signal = 0; signal < design.signalCount(); ++signal) {
            WaveMonitor::SignalElement element;
            element.id = signal;
            element.name = design.name(signal);
            element.data = QBitArray(amount, signal % 2 == 1);
            contents.addSignal(element);
        }
        about.description = directory.filePath("design.keo");
        about.time = QDateTime::currentDateTime();
        about.windows = {{0, 0}};
    }
    [[nodiscard]] RecoveryWriter writer(const RecoveryStore &store) const
    {
        return {store, about, contentOf(about.description),
                dataFileText({WindowToSave{0, 0, &contents}})};
    }

    TestDesign design;
    QTemporaryDir directory;
    WaveMonitor::WindowContents contents;
    Recovery about;
};

RecoveryStore smallStore(const QString &folder)
{
    return RecoveryStore(folder, {.count = kFew});
}

qsizetype entriesIn(const QTemporaryDir &folder)
{
    return QDir(folder.path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size();
}

int writeForEver(const QString &folder)
{
    StoredCapture capture;
    for (;;) {
        capture.about.time = QDateTime::currentDateTime();
        if (!capture.writer(smallStore(folder)).finish())
            return 1;
        std::puts("written");
        std::fflush(stdout);
    }
}

} // namespace

// Whatever one of two programs is killed in, each entry is whole and the store stays small.
void tst_Recovery::severalProgramsAndKills()
{
    const QTemporaryDir folder;
    const RecoveryStore store = smallStore(folder.path());
    QRandomGenerator random(3);
    for (int round = 0; round < 6; ++round) {
        QProcess programs[2];
        for (QProcess &program : programs)
            program.start(QCoreApplication::applicationFilePath(),
                          {"tst_recovery", kWriteForEver, folder.path()});
        for (QProcess &program : programs)
            QVERIFY(program.waitForReadyRead(30000));
        QTest::qWait(random.bounded(60));
        for (QProcess &program : programs) {
            program.kill();
            QVERIFY(program.waitForFinished(30000));
            QCOMPARE(program.exitStatus(), QProcess::CrashExit);
        }
        QVERIFY(!store.entries().isEmpty());
        QCOMPARE(store.entries().size(), entriesIn(folder));
        for (const Recovery &entry : store.entries())
            QVERIFY2(openProject(entry.project), qPrintable(entry.project));
    }
    const StoredCapture last;
    QVERIFY(last.writer(store).finish());
    QCOMPARE(entriesIn(folder), kFew);
}

void tst_Recovery::limitsAndFaults()
{
    const QTemporaryDir folder;
    StoredCapture capture;
    const auto count = [&] {
        return QDir(folder.path())
            .entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot)
            .size();
    };
    const RecoveryStore twoFit(folder.path(), {.count = 100, .bytes = 4'000'000});
    for (int written = 1; written <= 3; ++written) {
        capture.about.time = capture.about.time.addSecs(1);
        const auto project = capture.writer(twoFit).finish();
        QVERIFY(project);
        QCOMPARE(twoFit.entries().first().project, *project);
        QCOMPARE(count(), std::min(written, 2));
    }
    const auto tooLarge = capture.writer(RecoveryStore(folder.path(), {.bytes = 100'000})).finish();
    QVERIFY(!tooLarge);
    QCOMPARE(tooLarge.error().kind, Error::Limit);
    {
        const FullDisk disk(20'000);
        const auto cut = capture.writer(twoFit).finish();
        QVERIFY(!cut);
        QCOMPARE(cut.error().message, qt_error_string(EFBIG));
    }
    QCOMPARE(count(), 2);
    { // given up half-way
        RecoveryWriter writer = capture.writer(twoFit);
        QVERIFY(writer.step() && writer.step());
        QCOMPARE(count(), 3);
        QCOMPARE(twoFit.entries().size(), 2);
    }
    QCOMPARE(count(), 2);
    putFile(QFileInfo(twoFit.entries()[0].project).path() + "/recovery.json", "{}");
    QCOMPARE(twoFit.entries().size(), 1);

    // A folder that is none: told once, and no hindrance.
    QVERIFY(!QDir(userDataFolder()).exists());
    QVERIFY(QDir().mkpath(userDataFolder()));
    putFile(RecoveryStore::standardFolder(), "x");
    Desktop d({});
    d.open();
    d.capture();
    d.capture();
    const auto *told = d.window->findChild<QLabel *>("toldStatus");
    QVERIFY2(told->text().contains("is not kept for recovery"), qPrintable(told->text()));
    QVERIFY(d.boxes.seen.isEmpty());
}

void tst_Recovery::recentFiles()
{
    Desktop d({});
    QVERIFY(!list(d, "recentList")->isVisible());
    for (const char *copy : {"b.keo", "<i>c.zeo"}) {
        QVERIFY(QFile::copy(d.file(), d.directory.filePath(copy)));
        d.open(d.directory.filePath(copy));
    }
    d.open();
    d.capture();
    d.saveAs(d.directory.filePath("run.analyzer_prj"));
    d.open(d.directory.filePath("nothing.keo")); // was never open
    QVERIFY(QFile::remove(d.directory.filePath("b.keo")));

    const UserWindow later;
    auto *recent = list(later, "recentList");
    QStringList shown;
    for (int row = 0; row < recent->count(); ++row)
        shown.append(recent->item(row)->text());
    const QString folder = "   " + d.directory.path();
    QCOMPARE(shown, QStringList({"run.analyzer_prj" + folder, "design.keo" + folder,
                                 "<i>c.zeo" + folder, "b.keo" + folder}));
    QVERIFY(!(recent->item(3)->flags() & Qt::ItemIsEnabled));
    QCOMPARE(shownTip(recent->item(2)->toolTip()), d.directory.filePath("<i>c.zeo"));
    later.activate();
    for (int tab = 0; tab < 10 && !recent->hasFocus(); ++tab)
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget()
                                                    : later.window.get(),
                        Qt::Key_Tab);
    QVERIFY(recent->hasFocus());
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Return})
        QTest::keyClick(recent, key);
    QTRY_COMPARE(later.window->windowTitle(), "design.keo – Tarno Signal Scope");
    QVERIFY(!recent->isVisible());
    QVERIFY(later.window->closeCurrentProject());
    QCOMPARE(recent->item(0)->text(), "design.keo" + folder);

    // What was there when the page came up, and is gone.
    QVERIFY(QFile::remove(d.file()));
    later.activate();
    recent->setFocus();
    recent->setCurrentRow(0);
    QTest::keyClick(recent, Qt::Key_Return);
    QTRY_VERIFY(!(recent->item(0)->flags() & Qt::ItemIsEnabled));
    QCOMPARE(recent->currentRow(), 0);
    QVERIFY(recent->hasFocus());
}

static int testOrWriteForEver(int argc, char **argv)
{
    if (argc == 3 && std::strcmp(argv[1], kWriteForEver) == 0)
        return writeForEver(QString::fromLocal8Bit(argv[2]));
    return runWidgetTest<tst_Recovery>(argc, argv);
}

KEO_OWN_TEST_MAIN(testOrWriteForEver)
#include "tst_recovery.moc"
