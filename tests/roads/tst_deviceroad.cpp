// Some models of device write a row late under a .keo description. Whichever model is on the board,
// kind of core, extension and way in, what both programs export is the board's stimulus; unless
// nobody has named the model, which they then tell. The window lets it be named.

#include <support/desktop.h>
#include <support/exportedsamples.h>

#include <export_ui/exportdialog.h>
#include <programmer/devicedatabase.h>
#include <programmer_ui/keoprogrammermodel.h>
#include <programmer_ui/keoprogrammerwidget.h>

#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QInputDialog>
#include <QMenu>
#include <QSpinBox>
#include <QToolButton>

using namespace KEO;

Q_DECLARE_METATYPE(TestDesign)

class tst_DeviceRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void samplesOfEachDevice_data();
    void samplesOfEachDevice();
    void tellsOfAMistypedDevice_data();
    void tellsOfAMistypedDevice();
    void takesTheDeviceInTheWindow_data();
    void takesTheDeviceInTheWindow();
    void keepsTheTableOfTheProgrammer();
};

namespace {

/// What --quiet leaves on standard error.
QString runProgram(const QStringList &options, int expectedStatus = 0)
{
    QProcess process;
    process.start(KEO_BIN_DIR "/signalscope-capture",
                  QStringList{"--quiet", "--timeout", "20"} + options);
    if (!process.waitForFinished(60'000))
        process.kill();
    const QString errors = QString::fromUtf8(process.readAllStandardError());
    return process.exitCode() == expectedStatus ? errors : "failed: " + errors;
}

void exportFromWindow(const UserWindow &user, const QString &name)
{
    const OnModal<ExportDialog> dialog([&](ExportDialog *box) {
        box->findChild<QComboBox *>("comBoxFormat")->setCurrentIndex(0);
        auto *base = box->findChild<QLineEdit *>("editName");
        base->clear();
        QTest::keyClicks(base, name);
        QTest::keyClick(box, Qt::Key_Return);
    });
    user.click("Export");
    QVERIFY(dialog.seen());
}

QMenu *deviceMenu()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        auto *menu = qobject_cast<QMenu *>(widget);
        if (menu && menu->isVisible() && menu->objectName() == QLatin1String("deviceMenu"))
            return menu;
    }
    return nullptr;
}

/// Walks down \a menu to \a text, by keyboard, and presses \a key there.
void chooseInMenu(QMenu *menu, const QString &text, Qt::Key key = Qt::Key_Return)
{
    QVERIFY(menu);
    for (qsizetype step = menu->actions().size(); step > 0; --step) {
        if (menu->activeAction() && menu->activeAction()->text() == text)
            break;
        QTest::keyClick(menu, Qt::Key_Down);
    }
    QVERIFY2(menu->activeAction() && menu->activeAction()->text() == text, qPrintable(text));
    QTest::keyClick(menu, key);
}

KeoProgrammerWidget *useDatabase(const UserWindow &user)
{
    auto *page = user.window->findChild<KeoProgrammerWidget *>();
    page->model()->setDatabase(std::make_shared<const DeviceDatabase>(
        DeviceDatabase::fromFile(QStringLiteral(KEO_SOURCE_DIR "/examples/burner.json"))));
    return page;
}

} // namespace

void tst_DeviceRoad::samplesOfEachDevice_data()
{
    addColumns<TestDesign, QString>({"design", "named"});
    struct Kind
    {
        const char *name;
        TestDesign design;
    };
    const Kind kinds[] = {{"static", {}},
                          {"dynamic", {.dynamic = true}},
                          {"lite", {.lite = true}},
                          {"lite, another form", {.lite = true, .implementation = 2}}};
    for (const auto &[name, shape] : kinds) {
        for (const char *extension : {"keo", "zeo"}) {
            for (const char *model : {"KR-A", "KX-1"}) {
                for (const char *named : {model, ""}) {
                    TestDesign design = shape;
                    design.extension = extension;
                    design.device = model;
                    design.amount = 32;
                    design.position = 0;
                    design.noise = 3;
                    QTest::addRow("%s, .%s, %s, %s", name, extension, model,
                                  *named ? "named" : "not named")
                        << design << QString(named);
                }
            }
        }
    }
}

/// Positions at both ends and between, first in the window, then by the command line, all on a
/// stimulus that goes on.
void tst_DeviceRoad::samplesOfEachDevice()
{
    QFETCH(const TestDesign, design);
    QFETCH(const QString, named);
    const bool depends = design.extension == "keo" && design.implementation == 0;
    const bool isShifted = depends && named.isEmpty() && design.device.startsWith("KR-");
    Desktop d(design);
    d.window = std::make_unique<Analyzer>(nullptr, projectFactories(kEagerPace));
    d.window->show();
    d.window->openFile(d.file(), {}, named, {});
    const QString words =
        depends && named.isEmpty() ? "Unknown device: on KR-A to KR-R the first sample" : "";
    QCOMPARE(d.find<QLabel>("deviceStatus")->text().startsWith("unknown device on"),
             !words.isEmpty());

    qint64 earliest = 0; // sample at which the next window may begin
    const auto compare = [&](const QString &name, int position) {
        const QStringList files = QDir(d.directory.path()).entryList({name + "*.csv"});
        QCOMPARE(files.size(), 1);
        qint64 first = design.lite ? earliest : design.firstTrigger(earliest + position) - position;
        if (isShifted && design.lite)
            --first;
        compareExport(d.directory.filePath(files.first()), design, first,
                      isShifted ? first + design.amount : first);
        earliest = first + design.amount + int(isShifted);
    };
    for (const int position : {0, 12, 23}) {
        if (!design.lite)
            d.find<QSpinBox>("spinBoxTrPos")->setValue(position);
        d.capture();
        QCOMPARE(d.find<QLabel>("toldStatus")->text().contains("Unknown device"), !words.isEmpty());
        const QString name = QStringLiteral("window%1").arg(position);
        exportFromWindow(d, name);
        compare(name, position);
    }
    for (const int position : {0, 12, 23}) {
        const QString name = QStringLiteral("command%1").arg(position);
        QStringList options{"--format", "csv", "--name", name, "--out", d.directory.path()};
        if (!named.isEmpty())
            options << "--device" << named;
        if (!design.lite)
            options << "--position" << QString::number(position);
        const QString errors = runProgram(options << d.file());
        QVERIFY2(words.isEmpty() ? errors.isEmpty()
                                 : errors.startsWith("signalscope-capture: " + words),
                 qPrintable(errors));
        compare(name, position);
    }
}

void tst_DeviceRoad::tellsOfAMistypedDevice_data()
{
    addColumns<QString, bool>({"named", "isTold"});
    addRow("small letters", "kr-c", true);
    addRow("blank", "KR-C ", true);
    addRow("part number", "KR-C-Q48", true);
    addRow("exact", "KR-C", false);
    addRow("another one", "KR-S", false);
    addRow("a longer name", "KR-C2", false);
}

void tst_DeviceRoad::tellsOfAMistypedDevice()
{
    QFETCH(const QString, named);
    QFETCH(const bool, isTold);
    Desktop d(TestDesign{.device = "KR-C"});
    const QString words = QStringLiteral("\"%1\" does not count as KR-C").arg(named);
    d.window->openFile(d.file(), {}, named, {});
    QCOMPARE(d.find<QLabel>("deviceStatus")->toolTip().contains("does not count as KR-C"), isTold);
    QCOMPARE(runProgram({"--dry-run", "--device", named, d.file()}).contains(words), isTold);
}

void tst_DeviceRoad::takesTheDeviceInTheWindow_data()
{
    addColumns<bool, bool>({"isLite", "hasDatabase"});
    for (const bool isLite : {false, true}) {
        for (const bool hasDatabase : {false, true})
            QTest::addRow("%s, %s", isLite ? "lite" : "standard",
                          hasDatabase ? "with a database" : "without")
                << isLite << hasDatabase;
    }
}

/// A file opened by hand: warned of and shifted first, right once the user has named the device.
void tst_DeviceRoad::takesTheDeviceInTheWindow()
{
    QFETCH(const bool, isLite);
    QFETCH(const bool, hasDatabase);
    TestDesign design{.device = "KR-C"};
    design.lite = isLite;
    design.amount = 32;
    design.position = 12;
    design.noise = 3;
    Desktop d(design);
    d.window = std::make_unique<Analyzer>(nullptr, projectFactories(kEagerPace));
    d.window->show();
    d.window->openFile(d.file(), {}, {}, {});
    if (hasDatabase)
        useDatabase(d);
    const auto device = [&] { return d.find<QLabel>("deviceStatus")->text(); };
    const auto chooseKey = [&] { d.press(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier); };
    qint64 earliest = 0; // sample at which the next window may begin
    const auto firstSample = [&] {
        return isLite ? earliest
                      : design.firstTrigger(earliest + design.position) - design.position;
    };
    QVERIFY(device().startsWith("unknown device on "));
    d.capture();
    QVERIFY(d.wave(1) && !isStimulus(d.wave(1), design, firstSample()));
    earliest = firstSample() + design.amount + int(!isLite);

    chooseKey();
    QVERIFY(deviceMenu());
    QCOMPARE(deviceMenu()->activeAction()->text(), "Not Known"); // and that is the one checked
    QVERIFY(deviceMenu()->activeAction()->isChecked());
    if (hasDatabase) {
        QMenu *models = nullptr;
        for (const QAction *family : deviceMenu()->actions()) {
            QVERIFY(family->text() != "JTAG");
            models = family->text() == "KR" ? family->menu() : models;
        }
        chooseInMenu(deviceMenu(), "KR", Qt::Key_Right);
        chooseInMenu(models, "KR-C");
    } else {
        chooseInMenu(deviceMenu(), "KR-C");
    }
    QVERIFY2(device().startsWith("KR-C on "), qPrintable(device()));
    QVERIFY(d.find<QLabel>("toldStatus")->text().endsWith("KR-C from the next capture on."));
    bool wasOff = false;
    const QAction *choose = nullptr; // of the two projects in the window
    for (const QAction *action : d.window->actions())
        choose = action->objectName() == "chooseDeviceAction" ? action : choose;
    QVERIFY(choose && choose->isEnabled());
    connect(choose, &QAction::changed, this, [&] { wasOff |= !choose->isEnabled(); });
    d.capture();
    disconnect(choose, nullptr, this, nullptr);
    QVERIFY(wasOff && choose->isEnabled());
    QVERIFY(isStimulus(d.wave(1), design, firstSample()));
    d.press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    QVERIFY(QGuiApplication::clipboard()->text().contains(" --device KR-C "));
    d.window->reopen(d.file());
    QVERIFY(device().startsWith("KR-C on "));

    QTest::mouseClick(d.find<QToolButton>("deviceField"), Qt::LeftButton);
    const auto *current = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(current && current->activeAction()->isChecked());
    QCOMPARE(current->activeAction()->text(), "KR-C");
    QCOMPARE(current != deviceMenu(), hasDatabase); // that of the family, opened
    {
        const OnModal<QInputDialog> dialog([](QInputDialog *box) {
            box->setTextValue("kr-c");
            QTest::keyClick(box, Qt::Key_Return);
        });
        chooseInMenu(deviceMenu(), "Other…");
        QTRY_VERIFY(dialog.seen());
    }
    QTRY_VERIFY2(device().startsWith("kr-c on "), qPrintable(device()));
    QVERIFY(d.find<QLabel>("toldStatus")->text().contains("does not count as KR-C"));
    chooseKey();
    QCOMPARE(deviceMenu()->activeAction()->text(), "Other (kr-c)…");
    chooseInMenu(deviceMenu(), "Not Known");
    QVERIFY(device().startsWith("unknown device on "));

    chooseKey();
    chooseInMenu(deviceMenu(), hasDatabase ? "KR" : "KR-C", Qt::Key_Escape);
    d.window->openFile(d.file(), {}, {}, {});
    QVERIFY(device().startsWith("unknown device on "));
}

/// Rows that the user has put together for his chain are not lost to a name.
void tst_DeviceRoad::keepsTheTableOfTheProgrammer()
{
    for (const bool isLite : {false, true}) {
        TestDesign design{.device = "KR-C"};
        design.lite = isLite;
        Desktop d(design);
        d.window->openFile(d.file(), {}, {}, {});
        KeoProgrammerWidget *page = useDatabase(d);
        page->on_addDevice_clicked();
        page->on_addDevice_clicked();
        d.press(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
        QMenu *menu = deviceMenu();
        QVERIFY(menu);
        if (isLite) { // goes by the table
            QCOMPARE(menu->actions().size(), 1);
            QVERIFY(!menu->actions().first()->isEnabled());
            menu->close();
        } else {
            chooseInMenu(menu, "More", Qt::Key_Right);
            QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Return);
            QVERIFY(d.find<QLabel>("deviceStatus")->text().startsWith("KR-B on "));
        }
        QCOMPARE(page->rows().size(), 2);
    }
}

KEO_WIDGET_TEST_MAIN(tst_DeviceRoad)
#include "tst_deviceroad.moc"
