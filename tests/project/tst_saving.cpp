// What a save keeps: other generations, other files, other programs' work.

#include "savedproject.h"

#include <config/standardconfig.h>
#include <design/savedcapture.h>
#include <project/keostandardanalyzerproject.h>

#include <QDir>
#include <QProcess>
#include <QScopeGuard>
#include <QSet>
#include <QSpinBox>

#include <cstring>
#include <optional>

using namespace KEO;

class tst_Saving : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void asksBeforeItReplaces_data();
    void asksBeforeItReplaces();
    void keepsWhatTheToolWrote_data();
    void keepsWhatTheToolWrote();
    void pathsHoldAnywhere();
    void killedWhileSaving();
};

void tst_Saving::asksBeforeItReplaces_data()
{
    addColumns<QMessageBox::StandardButton>({"answer"});
    addRow("yes", QMessageBox::Yes);
    addRow("no", QMessageBox::No);
}

// Named without its suffix, a project is not seen by the dialog, which asks for any other file.
void tst_Saving::asksBeforeItReplaces()
{
    QFETCH(QMessageBox::StandardButton, answer);
    const ProjectOnDisk saved;
    const QByteArray before = contentOf(saved.project());
    ProjectInWindow w(saved.keo());
    w.boxes.answer = answer;
    w.tool("Save...")->setEnabled(true);
    std::optional<OnModal<QFileDialog>> again;
    const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
        again.emplace([](QFileDialog *second) { QTest::keyClick(second, Qt::Key_Escape); });
        box->findChild<QLineEdit *>()->setText(saved.directory.path() + "/saved");
        QTest::keyClick(box, Qt::Key_Return);
    });
    w.save();
    QVERIFY(dialog.seen());
    QCOMPARE(w.boxes.seen, QStringList("Warning: " + saved.project() +
                                       " already exists. Do you want to replace it?"));
    QCOMPARE(again->seen(), answer == QMessageBox::No); // it asks for another name
    QCOMPARE(contentOf(saved.data()).contains("<Window"), answer == QMessageBox::No);
    QCOMPARE(contentOf(saved.project()), before); // the same paths in either case
}

void tst_Saving::keepsWhatTheToolWrote_data()
{
    QTest::addColumn<QByteArray>("onDisk"); // meanwhile; null: nothing
    QTest::addColumn<QStringList>("kept");
    const QStringList one("design.kept-1.keo");
    QTest::newRow("untouched") << QByteArray() << QStringList();
    QTest::newRow("written anew") << QByteArray("<KEO_CONFIG><KEO_ID>1</KEO_ID></KEO_CONFIG>")
                                  << one;
    QTest::newRow("half written") << QByteArray("<KEO_CONFIG>") << one;
}

void tst_Saving::keepsWhatTheToolWrote()
{
    QFETCH(QByteArray, onDisk);
    QFETCH(QStringList, kept);
    const ProjectOnDisk saved;
    const ProjectInWindow w(saved.project());
    QStringList told;
    connect(w.window->findChild<KeoStandardAnalyzerProject *>(), &CaptureProject::told, &w.boxes,
            [&](const QString &text) { told.append(text); });
    if (!onDisk.isNull())
        putFile(saved.keo(), onDisk);
    w.save();
    const QDir folder(saved.directory.path());
    QCOMPARE(folder.entryList({"*kept*"}), kept);
    QCOMPARE(told.size(), 1);
    QVERIFY2(told[0].contains("Saved " + saved.project()), qPrintable(told[0]));
    for (const QString &copy : kept) {
        QCOMPARE(contentOf(folder.filePath(copy)), onDisk);
        QVERIFY2(told[0].contains(folder.filePath(copy)), qPrintable(told[0]));
    }
    w.save(); // our own file is no news
    QCOMPARE(folder.entryList({"*kept*"}), kept);
    QVERIFY(w.boxes.seen.isEmpty());
}

void tst_Saving::pathsHoldAnywhere()
{
    const ProjectOnDisk saved;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(saved.directory.path()));
    const auto restore = qScopeGuard([&] { QDir::setCurrent(before); });
    // In a project they count from its folder.
    putFile(saved.project(), "[General]\nDATA_FILE=saved.xml\nKEO_FILE=design.keo\n");
    QVERIFY(QDir::setCurrent("/"));
    {
        const ProjectInWindow w(saved.project());
        QCOMPARE(w.tabs()->count(), 2);
    }
    QVERIFY(QDir::setCurrent(saved.directory.path()));
    const ProjectInWindow w("design.keo");
    w.tool("Save...")->setEnabled(true);
    QString suggested;
    {
        const OnModal<QFileDialog> dialog([&](QFileDialog *box) {
            auto *name = box->findChild<QLineEdit *>("fileNameEdit");
            suggested = box->directory().path() + u'/' + name->text();
            name->setText("new");
            QVERIFY(QDir::setCurrent("/"));
            QTest::keyClick(box, Qt::Key_Return);
        });
        w.save();
        QVERIFY(dialog.seen());
    }
    QCOMPARE(suggested, saved.directory.path() + "/design");
    const auto project = readProjectFile(saved.directory.path() + "/new.analyzer_prj");
    QVERIFY(project);
    QCOMPARE(*project, (ProjectFile{saved.keo(), saved.directory.path() + "/new.xml"}));
}

namespace {

const char *const kSaveForEver = "--save-for-ever";

constexpr quint32 kPositions = 200; // of the trigger, one a save

/// The life of the process that gets killed: opens the project and saves one trigger position after
/// the other, as if each came with a new capture.
int saveForEver(const QString &project)
{
    TestDesign design;
    ProjectInWindow w(project);
    auto *position = w.find<QSpinBox>("spinBoxTrPos");
    for (quint32 save = QRandomGenerator::global()->generate();; ++save) {
        design.position = int(save % kPositions);
        position->setValue(design.position);
        w.wave(1)->loadWindow(arrangement(design, 1));
        QCoreApplication::processEvents();
        w.tool("Save...")->trigger();
        std::puts("saved");
        std::fflush(stdout);
    }
}

/// What KEO::openProject shows, and the position that the description has.
struct Generation
{
    int described = -1;
    int captured = -1;
};

Generation generationOf(const ProjectOnDisk &saved)
{
    Generation generation;
    const CoreList cores = loadStandardConfigFile(saved.keo());
    if (!cores.empty())
        generation.described = cores.front()->trigger_pos;
    const auto project = openProject(saved.project());
    if (project && project->captures.front().contents.maxDataLength() == saved.design.amount)
        generation.captured = project->captures.front().core.triggerSample;
    return generation;
}

} // namespace

// KEO_TEST_KILLS=300 tries for longer. A set can be caught between two renames, but hardly ever,
// which few kills on a busy machine can't tell.
void tst_Saving::killedWhileSaving()
{
    const ProjectOnDisk saved;
    const QByteArrayList before = saved.files();
    const int rounds = qEnvironmentVariable("KEO_TEST_KILLS", "8").toInt();
    QRandomGenerator random(1);
    QSet<int> seen;
    int mixed = 0;
    for (int round = 0; round < rounds; ++round) {
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(),
                      {"tst_saving", kSaveForEver, saved.project()});
        for (int saves = 1 + round % 2; saves > 0;) {
            QVERIFY(process.waitForReadyRead(30000));
            saves -= int(process.readAllStandardOutput().count('\n'));
        }
        QTest::qWait(random.bounded(40));
        process.kill();
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::CrashExit); // it did not end by itself
        const Generation generation = generationOf(saved);
        QVERIFY2(generation.captured >= 0, "it no longer opens with waves");
        if (generation.captured != generation.described) {
            ++mixed;
            putFile(saved.keo(), before[0]); // a window shows no such waves
            putFile(saved.data(), before[1]);
        }
        seen.insert(generation.captured);
    }
    qInfo("%d of %d kills fell between two renames", mixed, rounds);
    QVERIFY(rounds < 100 || mixed <= 1 + rounds / 100);
    QVERIFY(seen.size() > 2); // it was at work
}

static int testOrSaveForEver(int argc, char **argv)
{
    if (argc == 3 && std::strcmp(argv[1], kSaveForEver) == 0) {
        const QApplication application(argc, argv);
        return saveForEver(QString::fromLocal8Bit(argv[2]));
    }
    return runWidgetTest<tst_Saving>(argc, argv);
}

KEO_OWN_TEST_MAIN(testOrSaveForEver)
#include "tst_saving.moc"
