// Saving and opening projects of both kinds in the main window, with real files, keys and dialogs.

#include "savedproject.h"

#include <design/recoverystore.h>
#include <support/fulldisk.h>
#include <wave/tree/signaltreeview.h>

#include <QComboBox>
#include <QDir>

#include <optional>

using namespace KEO;

class tst_ProjectFiles : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void captureComesBack();
    void asksWhere_data();
    void asksWhere();
    void asksForAnotherPlace_data();
    void asksForAnotherPlace();
    void savesWhatIsBeingTyped();
    void opensWhatItCan_data();
    void opensWhatItCan();
    void writesWhatItCan();
    void fullDiskTakesNothing();
};

void tst_ProjectFiles::captureComesBack()
{
    TestDesign design;
    design.windows = 2;
    design.coreIndex = 3;
    design.cores = 2;
    Desktop d(design);
    const QDir folder(d.directory.path());
    const QString name = QStringLiteral("\u00fc 'y' 100%1 a,b;c=d[e] \u4fe1\U0001F600.1");
    const QString project = folder.filePath(name + ".analyzer_prj");
    const QString dataFile = dataFileBeside(project);
    d.open();
    QCOMPARE(d.enabled(), "OS-----P");
    d.find<QTreeWidget>("coreTree")->topLevelItem(1)->setCheckState(0, Qt::Checked);
    d.capture();
    QCOMPARE(d.tabs()->count(), 5);
    // The user arranges one window, and renames.
    d.wave(2)->loadWindow(arrangement(design, 5));
    // Of core 4, which was checked last; both of its windows still exist.
    d.find<QComboBox>("comboBoxWindow")->setCurrentText("4");
    d.saveAs(project);
    const auto windows = [&] {
        QStringList texts;
        for (int tab = 1; tab < d.tabs()->count(); ++tab)
            texts.append(textOf(d.wave(tab)->contents()));
        return texts;
    };
    const QStringList saved = windows();
    const auto files = [&] {
        return QByteArrayList{contentOf(d.file()), contentOf(dataFile), contentOf(project)};
    };
    const QByteArrayList written = files();

    d.open(project);
    QCOMPARE(d.titles(), (QStringList{"Configuration", "core 3 Window 0", "core 3 Window 1",
                                      "core 4 Window 0", "core 4 Window 1"}));
    QCOMPARE(windows(), saved);
    QCOMPARE(d.wave(4)->windowTitle(), "core 4 window 1");
    QCOMPARE(d.wave(4)->property("domain").toULongLong(), 16u);
    // Saving asks nothing now and changes no byte.
    d.press(Qt::Key_S, Qt::ControlModifier);
    QCOMPARE(files(), written);
    // The capture program opens it as well.
    QProcess process;
    process.setWorkingDirectory(folder.path());
    process.start(QStringLiteral(KEO_BIN_DIR "/signalscope-capture"), {"--open", project});
    QVERIFY(process.waitForFinished(60000));
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(folder.entryList({"*_core?_window?.vcd"}).size(), 4);
    auto *cores = d.find<QTreeWidget>("coreTree");
    cores->setCurrentItem(cores->topLevelItem(1));
    QCOMPARE(d.find<QComboBox>("comboBoxWindow")->currentText(), "4");
    // The arrangement outlives a new capture.
    d.capture();
    QCOMPARE(d.titles(), (QStringList{"Configuration", "core 3 window 0", "core 3 window 1"}));
    const auto rowsOf = [](const QString &window) { return window.section("<Layout", 1); };
    QCOMPARE(rowsOf(windows()[1]), rowsOf(saved[1]));
    // It does not outlive the project, and neither does the path.
    d.open();
    QVERIFY(!d.isEnabled("Save..."));
    d.capture();
    QVERIFY(rowsOf(windows()[1]) != rowsOf(saved[1]));
    d.saveAs(folder.filePath("other"));
    QCOMPARE(contentOf(dataFile), written[1]);
    QVERIFY(d.boxes.seen.isEmpty());
}

void tst_ProjectFiles::asksWhere_data()
{
    addColumns<QString, QStringList>({"name", "files"});
    addRow("no suffix", "b", QStringList{"b.analyzer_prj", "b.xml"});
    addRow("other suffix", "b.txt", QStringList{"b.txt", "b.xml"});
    addRow("dots", "run.1.analyzer_prj", QStringList{"run.1.analyzer_prj", "run.xml"});
    addRow("given up", "", QStringList());
}

void tst_ProjectFiles::asksWhere()
{
    QFETCH(QString, name);
    QFETCH(QStringList, files);
    TestDesign design;
    design.amount = 32;
    Desktop d(design);
    d.open();
    d.capture();
    const QByteArray before = contentOf(d.file());
    QVERIFY(QDir(d.directory.path()).mkdir("new"));
    const QDir folder(d.directory.filePath("new"));
    d.saveAs(name.isEmpty() ? name : folder.filePath(name));
    QCOMPARE(folder.entryList(QDir::Files, QDir::Name), files);
    QCOMPARE(contentOf(d.file()) == before, files.isEmpty()); // Save rewrites the description
    if (files.isEmpty()) {
        d.saveAs(folder.filePath("x")); // it asks again
        return;
    }
    const auto project = readProjectFile(folder.filePath(files.first()));
    QVERIFY(project && *project == (ProjectFile{d.file(), folder.filePath(files.last())}));
    for (const QString &file : files)
        QFile::remove(folder.filePath(file));
    d.press(Qt::Key_S, Qt::ControlModifier); // from now on it asks nothing
    QCOMPARE(folder.entryList(QDir::Files, QDir::Name), files);
    QVERIFY(d.boxes.seen.isEmpty());
}

void tst_ProjectFiles::asksForAnotherPlace_data()
{
    addColumns<QString, QString>({"name", "box"});
    addRow("the description", "design.keo", "Warning: %1 is the core description");
    addRow("its own data file", "run.xml", "Warning: Save writes the samples to %1.");
    addRow("no such folder", "none/run", "");
    addRow("a data file that is none", "foreign", "");
}

// Where a session can't stand it is not saved, and the next Save is not bound to that place.
void tst_ProjectFiles::asksForAnotherPlace()
{
    QFETCH(QString, name);
    QFETCH(QString, box);
    TestDesign design;
    design.amount = 32;
    Desktop d(design);
    const QDir folder(d.directory.path());
    putFile(folder.filePath("foreign.xml"), "<other/>");
    d.open();
    d.capture();
    std::optional<OnModal<QFileDialog>> again;
    const OnModal<QFileDialog> dialog([&](QFileDialog *files) {
        again.emplace([](QFileDialog *second) { QTest::keyClick(second, Qt::Key_Escape); });
        files->findChild<QLineEdit *>()->setText(folder.filePath(name));
        QTest::keyClick(files, Qt::Key_Return);
    });
    d.press(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(dialog.seen());
    QCOMPARE(again->seen(), !box.isEmpty());
    again.reset();
    QVERIFY(box.isEmpty() ? d.boxes.seen.isEmpty()
                          : d.boxes.seen.last().startsWith(box.arg(folder.filePath(name))));
    QVERIFY(d.window->windowTitle().startsWith("design.keo"));
    QVERIFY(contentOf(d.file()).startsWith("<?xml"));
    d.saveAs(folder.filePath("good"));
    QVERIFY(d.window->windowTitle().startsWith("good.analyzer_prj"));
    QVERIFY(contentOf(d.file()).startsWith("<?xml"));
    QVERIFY(contentOf(folder.filePath("good.xml")).contains("<WaveData"));
    QCOMPARE(contentOf(folder.filePath("foreign.xml")), "<other/>");
}

// A shortcut takes the keyboard from no field, and some of them save or take the waves away.
void tst_ProjectFiles::savesWhatIsBeingTyped()
{
    TestDesign design;
    design.amount = 32;
    Desktop d(design);
    d.open();
    d.capture();
    const QString project = d.directory.filePath("run");
    d.saveAs(project);
    const auto tree = [&] { return d.wave(1)->findChild<WaveMonitor::SignalTreeView *>(); };
    const auto typeName = [&](const QString &name) {
        tree()->setFocus();
        tree()->pickOnly(tree()->model()->index(0, 0));
        d.activate(); // the menu would leave the window inactive
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); // the editor before
        QMetaObject::invokeMethod(tree(), "onRename");
        auto *editor = tree()->findChild<QLineEdit *>("editName");
        QTRY_VERIFY(editor->hasFocus());
        editor->selectAll();
        QTest::keyClicks(editor, name);
    };
    typeName("first");
    d.press(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(contentOf(project + ".xml").contains("\"first\""));
    typeName("second");
    d.capture();
    QCOMPARE(tree()->model()->index(0, 0).data(), "second");
    const auto period = [&] { return d.wave(1)->findChild<QLineEdit *>("clockPeriod"); };
    period()->setFocus();
    QTest::keyClicks(period(), "7 ns");
    d.capture();
    QCOMPARE(period()->text(), "7 ns");
    typeName("third");
    d.window->close();
    const auto kept = readProjectFile(RecoveryStore().entries().first().project);
    QVERIFY(contentOf(kept->dataFile).contains("\"third\""));
}

void tst_ProjectFiles::opensWhatItCan_data()
{
    // data, keo: what becomes of the data file and the description
    addColumns<bool, QByteArray, QByteArray, QString, QStringList>(
        {"lite", "data", "keo", "box", "tabs"});
    for (const bool lite : {false, true}) {
        const auto row = [lite](const char *name, const QByteArray &data, const QByteArray &keo,
                                const QString &box, const QStringList &tabs) {
            addRow(qPrintable(QLatin1String(lite ? "lite: " : "standard: ") + name), lite, data,
                   keo, box, tabs);
        };
        const QStringList page(lite ? "Trigger" : "Configuration");
        // A lite session is its waves: what has none to show is not opened.
        const QStringList noWaves = lite ? QStringList() : page;
        row("as saved", "as saved", "", "",
            page + QStringList(lite ? "Window 0" : "core 0 Window 0"));
        row("description without cores", "<WaveData/>",
            lite ? "<KEO_CONFIG><Mode>Lite</Mode></KEO_CONFIG>" : "<KEO_CONFIG/>",
            "Error: Invalid KEO file specified in project", {});
        row("no data file", "gone", "",
            "Warning: Cached data file specified in project file is missing.", noWaves);
        row("data file cut off", "<WaveData>\n<Window>", "",
            "Error: Error when reading data file.\n line: 2 column: 8, Premature end of document.",
            noWaves);
        row("of another design", "<WaveData><Window index='0'/></WaveData>", "",
            "Warning: Data file miss match the project", page);
        row("no windows", "<WaveData/>", "", "", page);
    }
}

void tst_ProjectFiles::opensWhatItCan()
{
    QFETCH(bool, lite);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, keo);
    QFETCH(QString, box);
    QFETCH(QStringList, tabs);
    const ProjectOnDisk saved(lite);
    const auto change = [](const QString &path, const QByteArray &content) {
        if (content == "gone")
            QFile::remove(path);
        else
            putFile(path, content);
    };
    if (data != "as saved")
        change(saved.data(), data);
    if (!keo.isEmpty())
        change(saved.keo(), keo);
    const ProjectInWindow w(saved.project());
    QCOMPARE(w.titles(), tabs);
    QVERIFY(w.boxes.seen.size() == (box.isEmpty() ? 0 : 1));
    QVERIFY2(box.isEmpty() || w.boxes.seen[0].startsWith(box), qPrintable(w.boxes.seen.value(0)));
    QCOMPARE(w.isEnabled("Start"), !tabs.isEmpty());
    w.window->openFile(saved.keo(), {}, {}, {}); // and there is a way on
    QCOMPARE(w.titles().size(), keo.isEmpty() ? 1 : 0);
}

// A folder in the place of a file refuses everybody, even those whom permissions don't stop.
void tst_ProjectFiles::writesWhatItCan()
{
    for (int blocked = 0; blocked < 3; ++blocked) {
        const ProjectOnDisk saved;
        const QStringList paths{saved.keo(), saved.data(), saved.project()};
        const ProjectInWindow w(saved.project());
        const QByteArrayList before = saved.files();
        for (int i = 0; i < 3; ++i) {
            QFile::remove(paths[i]);
            if (i == blocked)
                QVERIFY(QDir().mkdir(paths[i]));
        }
        w.save();
        QCOMPARE(w.boxes.seen, blocked == 0 ? QStringList("Error: Can not save to " + saved.keo())
                                            : QStringList());
        for (int i = 0; i < 3; ++i)
            QCOMPARE(QFileInfo(paths[i]).isFile(), i != blocked);
        QVERIFY(QDir(paths[blocked]).isEmpty());
        QVERIFY(QDir().rmdir(paths[blocked]));
        w.save();
        QVERIFY(!saved.files()[0].isEmpty());
        QCOMPARE(saved.files().mid(1), before.mid(1));
    }
}

void tst_ProjectFiles::fullDiskTakesNothing()
{
    const ProjectOnDisk saved;
    const ProjectInWindow w(saved.project());
    const QByteArrayList before = saved.files();
    w.wave(1)->loadWindow(arrangement(saved.design, 99));
    {
        const FullDisk disk(20);
        w.save();
    }
    QCOMPARE(saved.files(), before);
    QCOMPARE(w.boxes.seen, QStringList("Error: Can not save to " + saved.keo()));
    w.save();
    QVERIFY(saved.files()[1] != before[1]);
}

KEO_WIDGET_TEST_MAIN(tst_ProjectFiles)
#include "tst_projectfiles.moc"
