// The programmer page by keys and clicks, with a script in the place of the tool.

#include <programmer/devicedatabase.h>
#include <programmer_ui/keoprogrammermodel.h>
#include <programmer_ui/keoprogrammerwidget.h>
#include <programmer_ui/legiblecolor.h>
#include <programmer_ui/programmerlog.h>
#include <support/files.h>
#include <support/widgettest.h>

#include "../programmer/scripttool.h"

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableView>
#include <QTableWidget>
#include <QTextBlock>
#include <QToolButton>

using namespace KEO;

class tst_ProgrammerPage : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void scans();
    void downloads();
    void editsBySelectorsAndFields();
    void takesWhatIsTyped();
    void checksFilesBeforeTheyRun();
    void cancels();
    void lookingChangesNothing();
    void rowsComeGoAndMove();
    void validates();
    void asksWhichDevice();
    void configuresTheOperation();
    void fileChanges();
    void endsAnywhere();
    void logIsBoundedAndLegible();
};

namespace {

using Column = KeoProgrammerModel::Column;

const char kOneDevice[] = "printf 'Scan\\nDevice Info:\\n Family: KR\\n Name: KR-C\\n"
                          " ID: 0x1100381B\\ndone'";

std::shared_ptr<const DeviceDatabase> makeDatabase()
{
    return std::make_shared<const DeviceDatabase>(DeviceDatabase::fromJson(R"({
        "ALL_MODES": [
            { "MODE": "SRAM", "OPERATIONS": [
                { "OPERATION": "Erase", "CMD_INDEX": 1 },
                { "OPERATION": "Write", "CMD_INDEX": 2, "DESCRIPATION": "fast",
                  "OPTIONS": ["Programming"] }] },
            { "MODE": "Flash", "OPERATIONS": [
                { "OPERATION": "Burn", "CMD_INDEX": 3, "OPTIONS": ["Programming"] },
                { "OPERATION": "Burn, verify", "CMD_INDEX": 4, "DESCRIPATION": "slow",
                  "OPTIONS": ["Programming"] }] },
            { "MODE": "Wipe", "OPERATIONS": [{ "OPERATION": "Wipe", "CMD_INDEX": 5 }] }],
        "DEVICE_CONFIG": [
            { "DEVICE": "NOP", "IDCODE": "0" },
            { "DEVICE": "KR-A", "IDCODE": "0x1100281B", "ACCESS_MODES": ["SRAM"] },
            { "DEVICE": "KR-C", "IDCODE": "0x1100381B", "ACCESS_MODES": ["SRAM", "Flash", "Wipe"] },
            { "DEVICE": "MR-1", "IDCODE": "0x2200001B", "ACCESS_MODES": ["SRAM"] },
            { "DEVICE": "MR-1X", "IDCODE": "0x2200001B", "ACCESS_MODES": ["Flash"] }],
        "ALL_SERIES": [
            { "SERIES": "JTAG", "DEVICES": ["NOP"] },
            { "SERIES": "KR", "DEVICES": ["KR-A", "KR-C"] },
            { "SERIES": "MR", "DEVICES": ["MR-1", "MR-1X"] }] })"));
}

/// The page on the screen, with its check box checked.
struct Page
{
    Page()
    {
        model->setDatabase(makeDatabase());
        setTool("exit 1");
        widget.resize(1000, 600);
        widget.setEnabledByUser(true);
        widget.show();
        widget.activateWindow();
        if (!QTest::qWaitForWindowActive(&widget))
            qFatal("no window");
        QObject::connect(&widget, &KeoProgrammerWidget::programStatusChanged, &widget,
                         [this](bool ready, const QString &text) {
                             statusTexts.append((ready ? u'+' : u'-') + text);
                         });
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        return widget.findChild<Widget *>(QLatin1String(name));
    }
    void click(const char *button) const
    {
        QTest::mouseClick(find<QToolButton>(button), Qt::LeftButton);
    }
    /// Are all buttons on, or all off?
    bool tools(bool on) const
    {
        for (const char *name :
             {"searchDevice", "downLoad", "addDevice", "rmDevice", "moveUp", "moveDown"}) {
            if (find<QToolButton>(name)->isEnabled() != on)
                return false;
        }
        return true;
    }
    void setTool(const QByteArray &script)
    {
        model->setTool(writeTool(directory.filePath("tool"), script));
    }
    QString writeFile(const QString &name, const QByteArray &text) const
    {
        return putFile(directory.filePath(name), text);
    }
    /// Lines of the log without their times and without blank ones.
    QStringList log() const
    {
        QStringList lines;
        for (const QString &line : find<QTextBrowser>("textBrowser")->toPlainText().split(u'\n')) {
            static const QRegularExpression time("^\\[\\d\\d:\\d\\d:\\d\\d\\]");
            if (!line.isEmpty() && time.match(line).hasMatch())
                lines.append(line.mid(10));
            else if (!line.isEmpty())
                lines.append("no time: " + line);
        }
        return lines;
    }
    void tick(int row) const
    {
        const QRect cell = table->visualRect(model->index(row, Column::Enable));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          QPoint(cell.left() + 10, cell.center().y()));
    }
    /// Opens the editor of a cell by a double click; null if there is none.
    template <typename Editor>
    Editor *edit(int row, Column column) const
    {
        doubleClick(table, model->index(row, column));
        return table->viewport()->findChild<Editor *>();
    }
    template <typename Editor>
    void type(int row, Column column, const QString &text) const
    {
        auto *editor = edit<Editor>(row, column);
        QVERIFY(editor);
        editor->selectAll();
        QTest::keyClicks(editor, text);
        QTest::keyClick(editor, Qt::Key_Return);
        closeEditor();
    }
    void choose(int row, Column column, const QString &text) const
    {
        auto *combo = edit<QComboBox>(row, column);
        QVERIFY(combo);
        chooseByKeys(combo, text);
        QTest::keyClick(combo, Qt::Key_Return);
        closeEditor();
    }
    void closeEditor() const
    {
        QCoreApplication::processEvents();
        table->setFocus(); // as a click beside the editor does
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
    /// Texts of a row from Series on.
    QString row(int row) const
    {
        QStringList cells;
        for (int column = Column::Series; column < Column::ColumnCount; ++column)
            cells.append(model->index(row, column).data().toString());
        return cells.join(u'|');
    }
    /// Enabled rows.
    QList<int> targets() const
    {
        QList<int> rows;
        for (int i = 0; i < model->rowCount(); ++i) {
            if (model->index(i, 0).data(Qt::CheckStateRole).toInt() == Qt::Checked)
                rows.append(i);
        }
        return rows;
    }

    QTemporaryDir directory;
    BoxWatcher boxes;
    QStringList statusTexts;
    KeoProgrammerWidget widget;
    KeoProgrammerModel *model = widget.model();
    QTableView *table = find<QTableView>("tableView");
    QAbstractItemModelTester tester{model};
    QSignalSpy running{&widget, &KeoProgrammerWidget::toolRunning};
};

} // namespace

void tst_ProgrammerPage::scans()
{
    const QString failed = "Error: Scan Device Failed, No device found!";
    const QByteArray two =
        "printf 'Device Info:\\nFamily: XX\\nName: X\\nID: 0xAB\\nDevice Info:\\n"
        "Family: MR\\nName: KR-C\\nID: 0x1'";
    // A scan that fails says why, and the rows of before come back.
    const QString before = "KR|KR-C|Write|FILE|7||1100381B|8";
    using enum ProgrammerStatus;
    const std::tuple<QByteArray, QString, QString, ProgrammerStatus> scans[] = {
        {kOneDevice, "KR|KR-C|Write||||1100381B|8", "Info: Scan;Info: done", DeviceFound},
        {two, "JTAG|NOP|Bypass||||AB|8;MR|NOP|Bypass||||1|8", "", DeviceFound},
        {"echo slow >&2; echo Warn: no cable", "", "Info: slow;Warn: no cable", NoDevice},
        {"echo busy; echo Error: no cable >&2; exit 1", before,
         "Info: busy;Error: no cable;" + failed, NoDevice},
        {"echo busy; kill -9 $$", before,
         "Info: busy;Error: TOOL: Process crashed;Error: Call Programmer failed!", Failed},
        {"", before,
         "Error: TOOL can't be started: No such file or directory;"
         "Error: Call Programmer failed!",
         Failed}};
    for (const auto &[script, rows, log, status] : scans) {
        Page page;
        page.setTool(script);
        if (script.isEmpty())
            page.model->setTool(page.directory.filePath("missing"));
        const QString file = page.writeFile("a.fs", "//CheckSum: 7\n");
        page.widget.setDevice("KR", "KR-C", file);
        page.click("searchDevice"); // takes the rows away at once
        QVERIFY(page.tools(false) && page.model->rowCount() == 0);
        QTRY_COMPARE(page.running.size(), 2);
        QVERIFY(page.tools(true));
        QCOMPARE(page.targets().isEmpty(), rows != before);
        QStringList found;
        for (int row = 0; row < page.model->rowCount(); ++row)
            found.append(page.row(row));
        QCOMPARE(found.join(u';').replace(file, "FILE"), rows);
        const QString tool = page.directory.filePath(script.isEmpty() ? "missing" : "tool");
        static const QRegularExpression call("exec\\w+: "); // of the system, in its own words
        QCOMPARE(page.log().join(u';').replace(tool, "TOOL").remove(call), log);
        QCOMPARE(page.widget.status(), status);
        page.writeFile("a.fs", "//CheckSum: 8\n"); // still watched
        if (rows == before)
            QTRY_COMPARE(page.row(0).section(u'|', 4, 4), "8");
    }
}

void tst_ProgrammerPage::downloads()
{
    const QString failed = "Error: Fs file download failed!";
    const std::tuple<QByteArray, QString, bool> downloads[] = {
        {"echo $*; printf '[#   ]\\r[####]\\r\\n'; echo ok",
         "Info: --device KR-C --fsFile FILE --operation_index 2 --cable-index 1 --channel 1 "
         "--chain_size 2 --chain_index 1 --chain_ir 5,8;Info: ok",
         true},
        {"echo ok; echo 'Warn: cold' >&2; exit 1", "Info: ok;Warn: cold;" + failed, false},
        {"echo 'Warn: hot'; printf 'verify error'", "Warn: hot;Info: verify error", false}};
    for (const auto &[script, log, isWell] : downloads) {
        Page page;
        page.setTool(script);
        const QString file = page.writeFile("a.fs", "//CheckSum: 77\n");
        page.widget.updateCable(1);
        page.widget.updateChannel(1);
        page.click("downLoad"); // without a target, then without a file
        page.widget.setDevice("KR", "KR-C", {});
        page.click("downLoad");
        QCOMPARE(page.log(), (QStringList{"Error: Program Failed, No target device!",
                                          "Error: Program Failed, No fs file!"}));
        QVERIFY(page.tools(true) && page.widget.status() == ProgrammerStatus::Failed);
        page.find<QTextBrowser>("textBrowser")->clear();
        page.statusTexts.clear();

        page.widget.setDevice("KR", "KR-C", file);
        QCOMPARE(page.row(0), "KR|KR-C|Write|" + file + "|77||1100381B|8");
        page.click("addDevice");
        page.click("moveUp");
        page.type<QSpinBox>(0, Column::IrCode, "5");
        QCOMPARE(page.targets(), QList<int>{1});
        page.click("downLoad");
        QVERIFY(page.tools(false) && !page.table->isEnabled());
        QCOMPARE(page.widget.status(), ProgrammerStatus::Downloading);
        QTRY_VERIFY(page.widget.status() != ProgrammerStatus::Downloading);
        QVERIFY(page.tools(true) && page.table->isEnabled());
        QCOMPARE(page.log().join(u';').replace(file, "FILE"), log);
        QCOMPARE(page.statusTexts, (QStringList{"- Waiting download ",
                                                isWell ? "+ Ready to acquire "
                                                       : "- Please program the device first "}));
        QCOMPARE(page.running.size(), 6);
    }
}

void tst_ProgrammerPage::editsBySelectorsAndFields()
{
    Page page;
    page.click("addDevice");
    page.click("addDevice");
    QCOMPARE(page.row(0), "JTAG|NOP|Bypass||||00000000|8");
    page.tick(0); // a device that nobody knows is no target, and takes no file
    QVERIFY(page.targets().isEmpty());
    QVERIFY(!page.edit<QLineEdit>(0, Column::FsFile));

    page.type<QSpinBox>(0, Column::IrCode, "5");
    page.choose(0, Column::Series, "MR");
    QCOMPARE(page.row(0), "MR|MR-1|Write||||2200001B|8");
    page.choose(0, Column::Device, "MR-1X");
    QCOMPARE(page.row(0), "MR|MR-1X|Burn||||2200001B|8");
    page.choose(1, Column::Series, "KR");
    QVERIFY(!page.edit<QSpinBox>(0, Column::IrCode));
    page.tick(0);
    QCOMPARE(page.targets(), QList<int>{0});
    page.tick(1); // one target at most
    QCOMPARE(page.targets(), QList<int>{1});
    page.tick(1);
    QVERIFY(page.targets().isEmpty());

    // A file by its dialog, then a wrong one by typing.
    const QString file = page.writeFile("<b>a.fs", "//UserCode:\n//CheckSum: 9\n"
                                                   "//UserCode:\n//Device-package: MR-1X-Q48\n");
    OnModal<QFileDialog> dialog([&](QFileDialog *box) {
        QCOMPARE(box->windowTitle(), "Open Fs File...");
        QCOMPARE(box->nameFilters(), QStringList("TARNO Fs File (*.fs)"));
        QTest::keyClicks(box->findChild<QLineEdit *>("fileNameEdit"), file);
        QTest::keyClick(box->findChild<QLineEdit *>("fileNameEdit"), Qt::Key_Return);
    });
    page.edit<QLineEdit>(0, Column::FsFile);
    QTest::mouseClick(page.find<QToolButton>("browseFsFile"), Qt::LeftButton);
    QTRY_COMPARE(page.row(0), "MR|MR-1X|Burn|" + file + "|9|9|2200001B|8");
    QCOMPARE(shownTip(page.model->index(0, Column::FsFile).data(Qt::ToolTipRole).toString()), file);
    page.closeEditor();
    const QString other = page.writeFile("b.fs", "//CheckSum: 9\n//Device-package: KR-A-Q48\n");
    for (const QString &path : {other, page.directory.filePath("none.fs")})
        page.type<QLineEdit>(0, Column::FsFile, path);
    QCOMPARE(page.log(),
             (QStringList{"Warn: " + other + " and current series or device do not match.",
                          "Warn: " + page.directory.filePath("none.fs") + " Invalid."}));

    page.choose(0, Column::Device, "MR-1"); // the file was the other's
    QCOMPARE(page.row(0), "MR|MR-1|Write||||2200001B|8");

    // The first series takes everything away.
    page.choose(0, Column::Series, "JTAG");
    QCOMPARE(page.row(0), "JTAG|NOP|Bypass||||00000000|8");
    QVERIFY(page.boxes.seen.isEmpty());
}

// However the field is left, the tool gets what stands in it; only Escape takes it back.
void tst_ProgrammerPage::takesWhatIsTyped()
{
    enum Way { Run, Move, Tab, Log, Start, Escape, Rewrite };
    for (const Way way : {Run, Move, Tab, Log, Start, Escape, Rewrite}) {
        Page page;
        page.setTool("echo $4"); // the file
        const QString old = page.writeFile("old.fs", "//CheckSum: 1\n");
        const QString typed = page.writeFile("new.fs", "//CheckSum: 2\n");
        page.widget.setDevice("KR", "KR-C", old);
        auto *editor = page.edit<QLineEdit>(0, Column::FsFile);
        QVERIFY(editor);
        editor->selectAll();
        QTest::keyClicks(editor, typed);
        if (way == Move)
            page.click("moveUp");
        else if (way == Tab) // by way of its button
            for (int i = 0; i < 2; ++i)
                QTest::keyClick(page.widget.window()->focusWidget(), Qt::Key_Tab);
        else if (way == Log)
            page.find<QTextBrowser>("textBrowser")->setFocus();
        else if (way == Start)
            QVERIFY(page.widget.validate());
        else if (way == Escape)
            QTest::keyClick(editor, Qt::Key_Escape);
        if (way == Rewrite) { // the tool flow, meanwhile
            page.writeFile("old.fs", "//CheckSum: 3\n");
            QTRY_COMPARE(page.row(0).section(u'|', 4, 4), "3");
            QCOMPARE(editor->text(), typed);
            page.click("moveUp");
        }
        const QString file = way == Escape ? old : typed;
        if (way != Run)
            QCOMPARE(page.row(0).section(u'|', 3, 4), file + (way == Escape ? "|1" : "|2"));
        page.click("downLoad");
        QTRY_COMPARE(page.log().value(way == Rewrite), "Info: " + file);
        QCOMPARE(page.row(0).section(u'|', 3, 3), file);
    }
    // So does a choice.
    Page page;
    page.widget.setDevice("KR", "KR-C", page.writeFile("a.fs", "//CheckSum: 1\n"));
    auto *combo = page.edit<QComboBox>(0, Column::Device);
    QVERIFY(combo);
    QTest::keyClick(combo, Qt::Key_Up);
    page.writeFile("a.fs", "//CheckSum: 3\n");
    QTRY_COMPARE(page.row(0).section(u'|', 4, 4), "3");
    QVERIFY(page.widget.validate());
    QVERIFY2(page.row(0).startsWith("KR|KR-A|"), qPrintable(page.row(0)));
}

// What stands beside a file is the file's own, and what the tool gets has been checked.
void tst_ProgrammerPage::checksFilesBeforeTheyRun()
{
    Page page;
    page.setTool("echo ok");
    page.widget.setDevice("KR", "KR-C", page.writeFile("a.fs", "//CheckSum: 1\n//UserCode: 2\n"));
    const QString late = page.directory.filePath("late.fs");
    const QString invalid = "Warn: " + late + " Invalid.";
    page.type<QLineEdit>(0, Column::FsFile, late);
    QCOMPARE(page.row(0), "KR|KR-C|Write|" + late + "|||1100381B|8");
    page.writeFile("late.fs", "//CheckSum: 3\n");
    page.click("downLoad");
    QCOMPARE(page.row(0), "KR|KR-C|Write|" + late + "|3||1100381B|8");
    QTRY_COMPARE(page.log(), (QStringList{invalid, "Info: ok"}));

    QFile::remove(late); // the tool may be using it: the checksum goes
    QTRY_COMPARE(page.row(0), "KR|KR-C|Write|" + late + "|||1100381B|8");
    page.type<QLineEdit>(0, Column::FsFile, page.directory.filePath("other.fs"));
    page.writeFile("other.fs", "//Device-package: MR-1-Q48\n");
    page.find<QTextBrowser>("textBrowser")->clear();
    page.click("downLoad");
    QCOMPARE(page.log().size(), 2);
    QVERIFY(page.log().first().endsWith(" and current series or device do not match."));
    QCOMPARE(page.log().last(), "Error: Program Failed, No fs file!");
}

// A scan ends at once, a download after a question; both say so and leave the rows.
void tst_ProgrammerPage::cancels()
{
    Page page;
    page.setTool("echo begun; sleep 100");
    page.widget.setDevice("KR", "KR-C", page.writeFile("a.fs", "//CheckSum: 1\n"));
    const QString row = page.row(0);
    auto *cancel = page.find<QToolButton>("cancelRun");
    QVERIFY(!cancel->isEnabled());
    const QStringList log{"Info: begun", "Warn: Scan cancelled.", "Info: begun",
                          "Warn: Download cancelled, what it was programming is incomplete."};
    for (const char *button : {"searchDevice", "downLoad"}) {
        const bool isScan = button[0] == 's';
        page.click(button);
        QTest::qWait(300); // it has begun
        if (!isScan) {
            page.boxes.answer = QMessageBox::No;
            page.click("cancelRun");
            QVERIFY(page.boxes.seen.size() == 1 && page.model->isRunning() && page.tools(false));
            page.boxes.answer = QMessageBox::Yes;
        }
        page.click("cancelRun");
        QVERIFY(!page.model->isRunning() && page.tools(true) && !cancel->isEnabled());
        QCOMPARE(page.widget.status(), ProgrammerStatus::DeviceFound);
        QCOMPARE(page.row(0), row);
        QCOMPARE(page.targets(), QList<int>{0});
        QCOMPARE(page.log(), log.mid(0, isScan ? 2 : 4));
        QCOMPARE(page.boxes.seen.size(), isScan ? 0 : 2);
    }
    // It runs again, and when it ends while the user is asked, the question goes.
    page.setTool("sleep 0.5; echo ok");
    page.click("downLoad");
    page.boxes.isPassive = true;
    page.click("cancelRun");
    QCOMPARE(page.widget.status(), ProgrammerStatus::Downloaded);
    QCOMPARE(page.log().last(), "Info: ok");
}

// Opening an editor and leaving it is no choice: the first series would take the row apart.
void tst_ProgrammerPage::lookingChangesNothing()
{
    Page page;
    page.setTool("printf 'Device Info:\\nFamily: JTAG\\nName: NOP\\nID: 0x77'");
    page.click("searchDevice");
    QTRY_COMPARE(page.model->rowCount(), 1);
    for (const Column column : {Column::Series, Column::Device}) {
        QVERIFY(page.edit<QComboBox>(0, column));
        page.closeEditor();
        QCOMPARE(page.row(0), "JTAG|NOP|Bypass||||77|8");
        QCOMPARE(page.model->rows().first().kind, DeviceRow::kKnown);
    }
    page.widget.setDevice("XX", "X-9", {}); // not in the database, but the tool may know it
    QVERIFY(page.edit<QComboBox>(0, Column::Series));
    page.closeEditor();
    QCOMPARE(page.row(0), "XX|X-9|Bypass||||00000000|8");
    page.model->setDatabase(std::make_shared<const DeviceDatabase>());
    page.click("addDevice");
    auto *combo = page.edit<QComboBox>(0, Column::Device);
    QVERIFY(combo && combo->currentIndex() == -1);
    QCOMPARE(combo->itemText(0), "JTAG_NOP");
}

void tst_ProgrammerPage::rowsComeGoAndMove()
{
    Page page;
    page.click("rmDevice"); // nothing selected
    page.click("moveUp");
    for (int i = 0; i < 18; ++i)
        page.click("addDevice");
    QCOMPARE(page.model->rowCount(), 17);
    QCOMPARE(page.boxes.seen, QStringList("Warning: Exceeding the maximum number of devices."));
    page.choose(2, Column::Series, "KR");
    QTest::mouseClick(page.table->viewport(), Qt::LeftButton, {},
                      page.table->visualRect(page.model->index(2, Column::Series)).center());
    // Keeps its selection, and stops at the edge.
    for (const auto &[button, place] :
         {std::pair("moveUp", 1), std::pair("moveUp", 0), std::pair("moveUp", 0),
          std::pair("moveDown", 1), std::pair("rmDevice", -1)}) {
        page.click(button);
        for (int row = 0; row < page.model->rowCount(); ++row)
            QCOMPARE(page.model->rows().at(row).kind == DeviceRow::kKnown, row == place);
    }
    for (int i = 0; i < 20; ++i)
        page.click("rmDevice");
    QCOMPARE(page.model->rowCount(), 0);
    QVERIFY(!page.widget.validate());
    QCOMPARE(page.boxes.seen.last(), "Error: No available device.");
}

// k is a known device, b a bypassed one, 0 one with code 0; a capital is the target.
void tst_ProgrammerPage::validates()
{
    const QString none = "No target device.";
    const std::pair<QString, QString> rows[] = {
        {"", "No available device."},
        {"K", ""},
        {"bKkb", ""},
        {"kb", none},
        {"Bk", none},
        {"KkK", "Only one device can be set as target device."},
        {"Kb00", "Device (3) has wrong IRCode."},
        {"0", "Device (1) has wrong IRCode."}};
    for (const auto &[letters, fault] : rows) {
        DeviceChain chain;
        for (const QChar letter : letters) {
            DeviceRow row;
            row.enabled = letter.isUpper();
            row.kind = letter.toLower() == 'k' ? DeviceRow::kKnown : DeviceRow::kBypassed;
            row.irCode = letter == '0' ? 0 : 6;
            chain.append(row);
        }
        QCOMPARE(chainFault(chain).value_or(QString()), fault);
        if (letters == "bKkb")
            QCOMPARE(chainCodes(chain), (QList<int>{6, 0, 6, 6}));
    }
}

void tst_ProgrammerPage::asksWhichDevice()
{
    Page page;
    page.setTool("printf 'Device Info:\\nFamily: KR\\nName: ?\\nID: 0x2200001B\\n'");
    for (const int key : {0, int(Qt::Key_Return), int(Qt::Key_Escape)}) { // 0 is a double click
        OnModal<QDialog> chooser([&](QDialog *dialog) {
            QCOMPARE(dialog->windowTitle(), "Device Chooser");
            auto *table = dialog->findChild<QTableWidget *>();
            QCOMPARE(table->rowCount(), 2);
            const QPoint second = table->visualItemRect(table->item(1, 0)).center();
            if (key == 0) {
                QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, second);
                QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, second);
            } else {
                QTest::keyClick(table, Qt::Key_Down);
                QTest::keyClick(table, Qt::Key(key));
            }
        });
        const qsizetype told = page.running.size();
        page.click("searchDevice");
        QTRY_COMPARE(page.running.size(), told + 2);
        QTRY_COMPARE(page.model->rowCount(), 1);
        QVERIFY(chooser.seen());
        QCOMPARE(page.row(0), key == Qt::Key_Escape ? "KR|NOP|Bypass||||2200001B|8"
                                                    : "MR|MR-1X|Burn||||2200001B|8");
    }
}

void tst_ProgrammerPage::configuresTheOperation()
{
    Page page;
    page.widget.setDevice("KR", "KR-C", {});
    page.click("addDevice");
    page.edit<QWidget>(1, Column::Operation); // a bypassed device has nothing to configure
    // Left, then taken, then opened again by the keyboard: the dialog finds what was chosen.
    for (const int round : {0, 1, 2}) {
        OnModal<QDialog> dialog([&](QDialog *box) {
            auto *operation = box->findChild<QComboBox *>("comBoxOperation");
            auto *text = box->findChild<QPlainTextEdit *>("editDescription");
            if (round < 2) {
                QCOMPARE(operation->count(), 1); // what does not program is left out
                QCOMPARE(text->toPlainText(), "fast");
                QTest::keyClick(box->findChild<QComboBox *>("comBoxAccessMode"), Qt::Key_Down);
                QCOMPARE(operation->currentText(), "Burn");
                QTest::keyClick(operation, Qt::Key_Down);
            }
            QCOMPARE(operation->currentText(), "Burn, verify");
            QCOMPARE(text->toPlainText(), "slow");
            if (round == 2) { // a mode that programs nothing can't be saved
                auto *mode = box->findChild<QComboBox *>("comBoxAccessMode");
                QTest::keyClick(mode, Qt::Key_Down);
                QTest::keyClick(mode, Qt::Key_Return);
                QVERIFY(box->isVisible() && operation->count() == 0);
                QTest::keyClick(mode, Qt::Key_Up);
                QTest::keyClick(operation, Qt::Key_Down);
            }
            auto *cancel = box->findChild<QPushButton *>("btnCancel");
            for (int i = 0; i < 20 && !cancel->hasFocus(); ++i)
                QTest::keyClick(box->focusWidget(), Qt::Key_Tab);
            QVERIFY(cancel->hasFocus());
            QTest::keyClick(cancel, Qt::Key_Tab); // Enter is for save again
            QTest::keyClick(box->focusWidget(), round ? Qt::Key_Return : Qt::Key_Escape);
        });
        page.widget.activateWindow(); // after a box the offscreen window system activates nothing
        QVERIFY(QTest::qWaitForWindowActive(&page.widget));
        if (round < 2)
            page.edit<QWidget>(0, Column::Operation);
        else
            QTest::keyClick(page.table, Qt::Key_Return);
        QVERIFY(dialog.seen());
        QCOMPARE(page.row(0).section(u'|', 2, 2), round ? "Burn, verify" : "Write");
    }
}

void tst_ProgrammerPage::fileChanges()
{
    enum When { Idle, DuringDownload, DuringCapture };
    for (const When when : {Idle, DuringDownload, DuringCapture}) {
        Page page;
        const QString file = page.writeFile("a.fs", "//CheckSum: 1\n");
        page.widget.setDevice("KR", "KR-C", file);
        page.click("addDevice"); // changes to the rows leave the file watched
        page.click("rmDevice");
        const QByteArray go = page.directory.filePath("go").toLocal8Bit();
        page.setTool(when == DuringDownload ? "while [ ! -e " + go + " ]; do sleep 0.05; done"
                                            : QByteArray("true"));
        page.click("downLoad");
        if (when != DuringDownload)
            QTRY_COMPARE(page.widget.status(), ProgrammerStatus::Downloaded);
        page.widget.updateIsBusy(when == DuringCapture);
        if (when == Idle) { // replaced, else written
            page.writeFile("b.fs", "//CheckSum: 2\n");
            QFile::remove(file);
            QVERIFY(QFile::rename(page.directory.filePath("b.fs"), file));
        } else {
            page.writeFile("a.fs", "//CheckSum: 2\n");
        }
        if (when == DuringDownload) {
            QTest::qWait(1000);
            QVERIFY(page.log().isEmpty() && page.tools(false));
            page.writeFile("go", "");
        }
        const auto checkSum = [&] { return page.row(0).section(u'|', 4, 4); };
        if (when == DuringCapture) {
            QTRY_COMPARE(checkSum(), "2");
            QVERIFY(page.log().isEmpty());
            QCOMPARE(page.widget.status(), ProgrammerStatus::Downloaded);
            page.widget.updateIsBusy(false);
            page.widget.applyPending();
            page.widget.applyPending(); // tells once
        }
        QTRY_COMPARE(page.log(), QStringList("Warn: File updated,checksum:2."));
        QCOMPARE(page.widget.status(), ProgrammerStatus::DeviceFound);
        QCOMPARE(checkSum(), "2");
        QCOMPARE(page.statusTexts, (QStringList{"- Waiting download ", "+ Ready to acquire ",
                                                "- Please program the device first "}));
        // A file that no longer fits goes, and the watch with it.
        page.writeFile("a.fs", "//Device-package: MR-1-Q48\n");
        QTRY_COMPARE(page.log().size(), 3);
        QVERIFY(page.log().at(1).endsWith(" and current series or device do not match."));
        QVERIFY(page.row(0).section(u'|', 3, 3).isEmpty());
    }
}

// The project may be closed, or its window destroyed, whatever the page is at: in a run, or in the
// chooser that comes after it.
void tst_ProgrammerPage::endsAnywhere()
{
    for (const bool inDialog : {false, true}) {
        for (const bool isDestroyed : {false, true}) {
            auto page = std::make_unique<Page>();
            page->setTool(inDialog ? "printf 'Device Info:\\nFamily: MR\\nName: MR-1\\n"
                                     "ID: 0x2200001B\\n'"
                                   : "sleep 100");
            bool hasEnded = false;
            const auto end = [&] {
                hasEnded = true;
                if (isDestroyed)
                    page.reset();
                else
                    page->widget.reset();
            };
            OnModal<QDialog> chooser([&](QDialog *dialog) {
                const QPointer<QDialog> open = dialog;
                end();
                if (open)
                    QTest::keyClick(open, Qt::Key_Escape);
            });
            page->click("searchDevice");
            QTest::qWait(50);
            if (!inDialog)
                end();
            QTRY_VERIFY(hasEnded);
            QTest::qWait(50);
            if (!isDestroyed) {
                QVERIFY(page->tools(true) && page->model->rowCount() <= 1);
                QVERIFY(!page->widget.isEnabledByUser() && !page->model->isRunning());
            }
        }
    }
}

void tst_ProgrammerPage::logIsBoundedAndLegible()
{
    Page page;
    auto *log = page.find<ProgrammerLog>("textBrowser");
    log->addMessages({"<b>Error: </b>  a\n", " ", "Warn: b", "c %1"});
    QCOMPARE(page.log(), (QStringList{"<b>Error: </b> a", "Warn: b", "Info: c %1"}));
    for (const QRgb base : {0xFFFFFFFF, 0xFF202024, 0xFF808080}) {
        QPalette palette = log->palette();
        palette.setColor(QPalette::Base, base);
        log->setPalette(palette);
        QTextBlock line = log->document()->begin();
        for (const QColor hue : {Qt::red, Qt::yellow, Qt::blue}) {
            const QColor color = line.begin().fragment().charFormat().foreground().color();
            QVERIFY(contrast(color, base) >= 4.5);
            if (base != 0xFF808080) // on middle grey only black or white can be read
                QCOMPARE(color.hslHue(), hue.hslHue());
            line = line.next();
        }
    }
    QVERIFY(QTest::qWaitForWindowExposed(&page.widget));
    QStringList many;
    for (int i = 0; i < ProgrammerLog::kMaxLines; ++i)
        many.append(QStringLiteral("message %1").arg(i));
    log->addMessages(many);
    QCOMPARE(log->document()->blockCount(), ProgrammerLog::kMaxLines);
    QCOMPARE(page.log().last(), "Info: " + many.last());
}

KEO_WIDGET_TEST_MAIN(tst_ProgrammerPage)
#include "tst_programmerpage.moc"
