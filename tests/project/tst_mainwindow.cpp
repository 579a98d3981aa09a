// What the main window tells and keeps around a run, with both kinds of project in it and a
// simulated board behind it.

#include <capture/fakeserver.h>
#include <support/desktop.h>
#include <support/files.h>

#include <QComboBox>
#include <QLabel>

using namespace KEO;

class tst_MainWindow : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void tellsTheRun();
    void refusedFiles_data();
    void refusedFiles();
    void tellsWhyNoWavesShow_data();
    void tellsWhyNoWavesShow();
    void tellsOfAServerThatIsGone();
    void keepsTheCable();
    void keepsTheTabInFront();
    void minimizedDuringARun();
    void closesWhileReading_data();
    void closesWhileReading();
    void goneDuringARun_data();
    void goneDuringARun();
    void answersWithoutBits_data();
    void answersWithoutBits();
};

namespace {

/// A user with the design open.
struct Session : Desktop
{
    explicit Session(const TestDesign &board) : Desktop(board)
    {
        window->resize(1000, 700);
        show(file());
    }

    void show(const QString &path)
    {
        open(path);
        QApplication::processEvents(); // a tool bar shows its widgets later
    }
    /// What the status bar tells under that name; of the project that is in the window.
    [[nodiscard]] QString status(const char *name = "runStatus") const
    {
        const auto *label = window->findChild<QLabel *>(QLatin1String(name));
        return label && label->isVisible() ? label->text() : QString();
    }
    /// The list of cables that shows.
    [[nodiscard]] QComboBox *cables() const
    {
        for (QComboBox *list : window->findChildren<QComboBox *>("cableCombo")) {
            if (list->isVisible())
                return list;
        }
        return nullptr;
    }
    [[nodiscard]] bool isRunning() const { return !cables()->isEnabled(); }
};

} // namespace

void tst_MainWindow::tellsTheRun()
{
    TestDesign design;
    design.windows = 2;
    Session s(design);
    QCOMPARE(s.window->windowTitle(), "design.keo – Tarno Signal Scope");
    QCOMPARE(s.status(), "Ready");
    const QString cable = s.cables()->currentText();
    QCOMPARE(s.status("deviceStatus"), "KR-A on " + cable);

    QStringList told;
    QTimer reader;
    connect(&reader, &QTimer::timeout, this, [&] {
        const QString text = s.status().replace(QRegularExpression("\\d\\d:\\d\\d:\\d\\d"), "T");
        if (told.isEmpty() || told.last() != text)
            told.append(text);
    });
    reader.start(1);
    s.press(Qt::Key_F1);
    QVERIFY(s.isRunning()); // another cable has to wait
    QTRY_VERIFY_WITH_TIMEOUT(!s.isRunning(), kCaptureTime);
    QTRY_COMPARE(told.last(), "Run ended at T, windows captured: 2");
    for (const char *step :
         {"Waiting for the trigger of core 0 since T", "Reading core 0 window 0: 1 of 2 sections",
          "Reading core 0 window 1: 2 of 2 sections"})
        QVERIFY2(told.contains(step), qPrintable(told.join('\n')));

    s.press(Qt::Key_F1);
    s.press(Qt::Key_F4); // its box still has the program's name alone
    QTRY_COMPARE(s.boxes.seen, QStringList("Tarno Signal Scope: Capture Stopped!"));
    QVERIFY(s.window->closeCurrentProject());
    QCOMPARE(s.window->windowTitle(), "Tarno Signal Scope");
    QCOMPARE(s.status(), "");
}

void tst_MainWindow::refusedFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content"); // no file for null
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing") << "a.keo" << QByteArray() << "no such file";
    QTest::newRow("no XML") << "a.keo" << QByteArray("<Config>") << "1:";
    QTest::newRow("other mode") << "a.keo" << QByteArray("<C><Mode>Huge</Mode></C>") << "'Huge'";
    QTest::newRow("no cores") << "a.keo" << QByteArray("<C/>") << "a.keo can not be used: ";
    QTest::newRow("capital letters") << "a.KEO" << QByteArray("<C/>") << "small letters";
    QTest::newRow("project of nothing")
        << "a.analyzer_prj" << QByteArray("[General]\n") << "no core description";
    QTest::newRow("project of a lost description")
        << "a.analyzer_prj" << QByteArray("KEO_FILE=/nowhere/b.keo\n") << "/nowhere/b.keo";
}

void tst_MainWindow::refusedFiles()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(QString, reason);
    Session s({});
    const auto *told = s.window->findChild<QLabel *>("refusedFile");
    QVERIFY(!told->isVisible());
    const QString path = s.directory.filePath(name);
    if (!content.isNull())
        putFile(path, content);
    s.show(path);
    QCOMPARE(s.tabs()->count(), 0);
    QVERIFY(told->isVisible());
    QVERIFY2(told->text().contains(path) && told->text().contains(reason),
             qPrintable(told->text()));
    s.show(s.file());
    QVERIFY(s.window->closeCurrentProject());
    QVERIFY(!told->isVisible());
}

void tst_MainWindow::tellsWhyNoWavesShow_data()
{
    QTest::addColumn<bool>("lite"); // opens nothing without waves
    QTest::addColumn<QString>("dataFile");
    QTest::addColumn<QString>("reason");
    QTest::addColumn<bool>("hasBox");
    for (const bool lite : {false, true}) {
        const char *kind = lite ? "lite" : "standard";
        QTest::addRow("%s, unreadable", kind) << lite << "."
                                              << "is not a file" << false;
        QTest::addRow("%s, missing", kind) << lite << "no.xml"
                                           << "/no.xml is not there" << true;
        QTest::addRow("%s, damaged", kind) << lite << "board.json"
                                           << "data file. line: 1" << true;
    }
    QTest::newRow("standard, other design") << false << "other.xml"
                                            << "another design" << true;
}

void tst_MainWindow::tellsWhyNoWavesShow()
{
    QFETCH(bool, lite);
    QFETCH(QString, dataFile);
    QFETCH(QString, reason);
    QFETCH(bool, hasBox);
    TestDesign design;
    design.lite = lite;
    Session s(design);
    const QString project = s.directory.filePath("p.analyzer_prj");
    putFile(s.directory.filePath("other.xml"),
            "<WaveData><Window index=\"0\" core=\"7\"/></WaveData>");
    putFile(project, "[General]\nKEO_FILE=design.keo\nDATA_FILE=" + dataFile.toUtf8());
    s.show(project);
    QCOMPARE(s.tabs()->count(), lite ? 0 : 1);
    const auto *refused = s.window->findChild<QLabel *>("refusedFile");
    const QString text = lite ? refused->text() : s.status("toldStatus");
    QVERIFY2(text.contains(reason), qPrintable(text));
    QCOMPARE(s.boxes.seen.size(), hasBox ? 1 : 0);
}

void tst_MainWindow::tellsOfAServerThatIsGone()
{
    for (const bool isWaiting : {false, true}) {
        TestDesign design;
        design.fires = false;
        Session s(design);
        if (isWaiting) {
            s.press(Qt::Key_F1);
            QTRY_VERIFY(s.status().startsWith("Waiting"));
        }
        QVERIFY(s.cables()->itemIcon(0).isNull());
        killServers(s.server->servers);
        s.server->servers.clear();
        QTRY_VERIFY2(s.status("deviceStatus").endsWith(": server is gone"),
                     qPrintable(s.status("deviceStatus")));
        QVERIFY(!s.cables()->itemIcon(0).isNull());
        QVERIFY(s.cables()->itemData(0, Qt::ToolTipRole).toString().contains("gone"));
        if (isWaiting) // and the run that waits says so as well
            QTRY_VERIFY2(s.status().endsWith("The cable server went away."),
                         qPrintable(s.status()));
        QCOMPARE(s.isRunning(), isWaiting); // nothing but Stop ends a run
        QVERIFY(s.boxes.seen.isEmpty());
        if (isWaiting)
            s.press(Qt::Key_F4);
    }
}

// Through a reload, a project of the other kind and a list that was closed meanwhile.
void tst_MainWindow::keepsTheCable()
{
    Session s({});
    TestDesign liteDesign;
    liteDesign.lite = true;
    const QTemporaryDir lite;
    liteDesign.write(lite.path());
    const FakeServer other;
    QVERIFY(JtagSession::instance()->connectServer({"Other", other.name()}, 1000));
    s.show(s.file());
    QVERIFY(s.cables()->currentText() != "Other");
    QTest::keyClick(s.cables(), Qt::Key_Down);
    QCOMPARE(s.cables()->currentText(), "Other");
    for (const QString &file : {s.file(), lite.filePath("design.keo"), s.file()}) {
        s.show(file);
        QCOMPARE(s.cables()->currentText(), "Other");
        QVERIFY(s.status("deviceStatus").endsWith("Other"));
    }
}

void tst_MainWindow::keepsTheTabInFront()
{
    TestDesign design;
    design.windows = 3;
    Session s(design);
    QString front = "core 0 window 0"; // where the page was in front
    for (const int next : {2, 3, 1}) {
        s.press(Qt::Key_F1);
        QTRY_COMPARE_WITH_TIMEOUT(s.tabs()->count(), 4, kCaptureTime);
        QTRY_VERIFY_WITH_TIMEOUT(!s.isRunning(), kCaptureTime);
        QCOMPARE(s.tabs()->tabText(s.tabs()->currentIndex()), front);
        s.tabs()->setCurrentIndex(next);
        front = s.tabs()->tabText(next);
    }
}

// The tip doesn't stay on the desktop alone.
void tst_MainWindow::minimizedDuringARun()
{
    TestDesign design;
    design.fires = false;
    const Session s(design);
    s.press(Qt::Key_F1);
    QVERIFY(waitingTip());
    s.window->showMinimized();
    QTRY_VERIFY(!waitingTip());
    s.window->showNormal();
    QTRY_VERIFY(waitingTip());
    s.press(Qt::Key_F4);
    QVERIFY(!waitingTip());
}

void tst_MainWindow::closesWhileReading_data()
{
    QTest::addColumn<bool>("lite");
    QTest::newRow("standard") << false;
    QTest::newRow("lite") << true;
}

// The run triggers while the question shows, so it reads inside the question's event loop.
void tst_MainWindow::closesWhileReading()
{
    QFETCH(bool, lite);
    TestDesign design;
    design.lite = lite;
    design.storageDepth = 16384;
    design.amount = 16384;
    Session s(design);
    s.boxes.isPassive = true;
    s.press(Qt::Key_F1);
    QVERIFY(s.isRunning());
    QTimer answers;
    connect(&answers, &QTimer::timeout, this, [&] {
        if (BoxWatcher::openBoxes() > 0 && s.status().startsWith("Reading"))
            s.boxes.isPassive = false;
    });
    answers.start(5);
    QVERIFY(s.window->close());
    QCOMPARE(s.boxes.seen, QStringList("Exit: Task is still running, do you want to exit?"));
    const qsizetype sections = design.amount / 128;
    QVERIFY2(s.requests("READ_RAM") < sections / 2,
             qPrintable(QString::number(s.requests("READ_RAM"))));
}

void tst_MainWindow::goneDuringARun_data()
{
    addColumns<bool, int, bool>({"lite", "ms", "inQuestion"}); // after the start
    for (const bool lite : {false, true}) {
        for (const int ms : {0, 700}) { // before and behind the first poll
            for (const bool inQuestion : {false, true})
                QTest::addRow("%s after %d ms%s", lite ? "lite" : "standard", ms,
                              inQuestion ? ", in the question" : "")
                    << lite << ms << inQuestion;
        }
    }
}

// Nothing of the run outlives the window, not even the tip.
void tst_MainWindow::goneDuringARun()
{
    QFETCH(bool, lite);
    QFETCH(int, ms);
    QFETCH(bool, inQuestion);
    TestDesign design;
    design.lite = lite;
    design.fires = false;
    design.samplesPerSecond = lite ? 1 : design.samplesPerSecond;
    Session s(design);
    s.press(Qt::Key_F1);
    QTest::qWait(ms);
    QVERIFY(s.isRunning() && waitingTip());
    s.boxes.whileOpen = [&](const QMessageBox &) { s.window.reset(); };
    if (inQuestion)
        s.window->close();
    else
        s.window.reset();
    QTest::qWait(50); // late replies and ticks
    QVERIFY(!s.window && !waitingTip() && !QApplication::activeModalWidget());
    if (lite)
        QCOMPARE(s.requests("CLOSE"), 0); // its run is left to the connection
}

void tst_MainWindow::answersWithoutBits_data()
{
    addColumns<bool, Qt::Key, QString>({"lite", "key", "text"});
    addRow("Auto of a standard core", false, Qt::Key_F2, "No data in core 0 window 0");
    addRow("lite core", true, Qt::Key_F1, "No data.");
}

// A server that answers each read with nothing: one box at a time, however many rounds pass.
void tst_MainWindow::answersWithoutBits()
{
    QFETCH(bool, lite);
    QFETCH(Qt::Key, key);
    QFETCH(QString, text);
    FakeServer server;
    server.leadingBits = lite ? 0 : server.leadingBits;
    server.answer = [lite](const QVariantMap &request, QVariantMap reply) {
        const QString operation = request["OPRATE"].toString();
        if (operation == "READ_RAM")
            reply["DATA"] = QBitArray(lite ? 0 : 33);
        if (lite && operation == "READ_START_REG")
            reply["DATA"] = QBitArray(); // counts as done
        return FakeServer::Replies{reply};
    };
    TestDesign design;
    design.lite = lite;
    Desktop d(design);
    JtagSession::instance()->disconnectAll();
    QVERIFY(JtagSession::instance()->connectServer({"fake", server.name()}, 1000));
    d.open();

    // The box keeps the test waiting as well, so a timer looks on from inside its event loop.
    d.boxes.isPassive = true;
    int mostBoxes = 0;
    qsizetype readsAtFirst = 0;
    QTimer onlooker;
    connect(&onlooker, &QTimer::timeout, this, [&] {
        const qsizetype reads = server.logged("READ_RAM").size();
        if (d.boxes.openBoxes() > 0 && mostBoxes == 0)
            readsAtFirst = reads;
        mostBoxes = qMax(mostBoxes, d.boxes.openBoxes());
        if (mostBoxes > 0 && (lite || reads >= readsAtFirst + 4)) // two more rounds
            d.boxes.isPassive = false;
    });
    onlooker.start(10);
    d.press(key);
    QTRY_COMPARE_WITH_TIMEOUT(d.boxes.seen.value(0), "Error: " + text, kCaptureTime);
    QCOMPARE(mostBoxes, 1);
    if (!lite)
        d.press(Qt::Key_F4);
    QTRY_VERIFY(d.boxes.openBoxes() == 0 && d.isIdle());
    QCOMPARE(d.tabs()->count(), 1);
    const QString end = d.find<QLabel>("runStatus")->text();
    QVERIFY2(end.contains("windows captured: 0"), qPrintable(end));
}

KEO_WIDGET_TEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
