// From a device without bitstream to its waves, through the main window by keys and clicks, with
// the example's boards, database and bitstreams and the simulated programmer.

#include <link/jtagsession.h>
#include <programmer/devicedatabase.h>
#include <programmer_ui/keoprogrammermodel.h>
#include <programmer_ui/keoprogrammerwidget.h>
#include <servers/serverlauncher.h>
#include <support/desktop.h>
#include <support/files.h>

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QTableView>
#include <QTableWidget>
#include <QTextEdit>
#include <QToolButton>

using namespace KEO;

class tst_ProgramRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void fromEmptyDeviceToWaves_data();
    void fromEmptyDeviceToWaves();
    void leavesDuringADownload();
};

namespace {

using Column = KeoProgrammerModel::Column;

const QString kExample = QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo/");

/// A user at the main window, with two of the example's cables and its design open.
class Desk final : public UserWindow
{
public:
    explicit Desk(const QString &board)
    {
        qputenv("SIGNALSCOPE_BOARD", QDir(kExample).filePath(board).toLocal8Bit());
        JtagSession::instance()->connectServers(
            launchServers(m_servers, QStringLiteral(KEO_BURNER_DIR), serverTable().mid(0, 2)));
        window->openFile(kExample + "uart_fifo.keo", {}, {}, {}); // as from the Open dialog
        page = window->findChild<KeoProgrammerWidget *>();
        page->model()->setTool(QStringLiteral(KEO_BURNER_DIR "/burner_cli"));
        page->model()->setDatabase(std::make_shared<const DeviceDatabase>(
            DeviceDatabase::fromFile(QStringLiteral(KEO_SOURCE_DIR "/examples/burner.json"))));
        table = find<QTableView>("tableView");
    }
    ~Desk()
    {
        window.reset();
        JtagSession::instance()->disconnectAll();
        killServers(m_servers);
    }

    void chooseCable(int index) const
    {
        auto *cables = find<QComboBox>("cableCombo");
        if (index >= cables->count())
            qFatal("no cable %d", index);
        while (cables->currentIndex() < index)
            QTest::keyClick(cables, Qt::Key_Down);
    }
    void pressButton(const char *button) const
    {
        QTest::mouseClick(find<QToolButton>(button), Qt::LeftButton);
    }
    /// Runs the tool by a button; true when it has ended and the tip with it.
    bool run(const char *button) const
    {
        pressButton(button);
        if (!waitingTip() || find<QToolButton>(button)->isEnabled())
            return false;
        return QTest::qWaitFor([&] { return !waitingTip(); }, kCaptureTime) &&
               find<QToolButton>(button)->isEnabled();
    }
    void tick(int row) const
    {
        const QRect cell = table->visualRect(table->model()->index(row, Column::Enable));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          QPoint(cell.left() + 10, cell.center().y()));
    }
    void typeFile(int row, const QString &path) const
    {
        doubleClick(table, table->model()->index(row, Column::FsFile));
        auto *field = table->viewport()->findChild<QLineEdit *>();
        QVERIFY(field);
        field->selectAll();
        QTest::keyClicks(field, path);
        QTest::keyClick(field, Qt::Key_Return);
        QTest::qWait(0);
    }
    QString cell(int row, Column column) const
    {
        return table->model()->index(row, column).data().toString();
    }
    QString log() const { return find<QTextEdit>("textBrowser")->toPlainText(); }
    QLabel *status() const { return find<QLabel>("programStatusLabel"); }

    KeoProgrammerWidget *page = nullptr;
    QTableView *table = nullptr;

private:
    ServerProcesses m_servers;
};

/// The example's first board, whose downloads take longer than any test, as a file in \a directory.
QString slowBoard(const QTemporaryDir &directory)
{
    return putFile(directory.filePath("board.json"),
                   contentOf(kExample + "board.json")
                       .replace("\"uart_fifo.", '"' + kExample.toUtf8() + "uart_fifo.")
                       .replace("\"download_ms\": 3000", "\"download_ms\": 600000"));
}

} // namespace

void tst_ProgramRoad::fromEmptyDeviceToWaves_data()
{
    QTest::addColumn<QString>("board");
    QTest::addColumn<int>("cable");
    QTest::addColumn<int>("target");
    QTest::addColumn<bool>("failsFirst");
    QTest::newRow("alone on the second cable") << "board.json" << 1 << 0 << false;
    QTest::newRow("second of two, fails at first") << "board_chain.json" << 0 << 1 << true;
}

void tst_ProgramRoad::fromEmptyDeviceToWaves()
{
    QFETCH(QString, board);
    QFETCH(int, cable);
    QFETCH(int, target);
    QFETCH(bool, failsFirst);
    Desk desk(board);
    desk.chooseCable(cable);
    const int chain = target + 1;

    // The device is empty, and unless there are two, says so itself.
    desk.press(Qt::Key_F1);
    QTRY_COMPARE_WITH_TIMEOUT(desk.boxes.seen.size(), 1, kCaptureTime);
    QCOMPARE(desk.boxes.seen.takeFirst(), chain == 1 ? "Error: Device does not load fs file yet."
                                                     : "Error: Open device failed.");
    QTRY_VERIFY(!BoxWatcher::openBoxes());

    // Enable the programmer: no capture before the device is programmed.
    QVERIFY(!desk.status()->isVisible());
    auto *checkBox = desk.find<QCheckBox>("checkBox");
    clickMark(checkBox);
    QVERIFY(desk.status()->isVisible() && !desk.isEnabled("Start") && !desk.isEnabled("Auto"));
    QCOMPARE(desk.status()->text(), " Please Program fs file first ");
    desk.press(Qt::Key_F1);
    QVERIFY(!desk.isEnabled("Stop"));

    // Scan: the ID codes are shared, so the chooser asks for each device.
    int asked = 0;
    QTimer chooser;
    connect(&chooser, &QTimer::timeout, this, [&] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isActiveWindow() || dialog->windowTitle() != "Device Chooser")
            return;
        ++asked;
        QTest::keyClick(dialog->findChild<QTableWidget *>(), Qt::Key_Return);
    });
    chooser.start(5);
    QVERIFY(desk.run("searchDevice"));
    chooser.stop();
    QCOMPARE(asked, chain);
    QVERIFY(desk.log().contains("Info: Devices found: " + QString::number(chain)));
    QCOMPARE(desk.table->model()->rowCount(), chain);
    QCOMPARE(desk.cell(target, Column::Series) + desk.cell(target, Column::Device), "KRKR-C");
    QCOMPARE(desk.status()->text(), " Please Program fs file first ");

    // A file that does not fit is refused, the right one is taken.
    desk.tick(target);
    const QString files = kExample + "bitstreams/";
    desk.typeFile(target, files + "other_design.fs");
    QVERIFY(desk.cell(target, Column::FsFile).isEmpty());
    desk.typeFile(target, files + "uart_fifo.fs");
    QCOMPARE(desk.cell(target, Column::Checksum), "0x5F47");
    QCOMPARE(desk.cell(target, Column::UserCode), "0x0000F1F0");

    // Another device by hand counts until the download; the table stays.
    desk.press(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
    for (const Qt::Key key : {Qt::Key_Up, Qt::Key_Up, Qt::Key_Right, Qt::Key_Return})
        QTest::keyClick(QApplication::activePopupWidget(), key);
    QVERIFY(desk.find<QLabel>("deviceStatus")->text().startsWith("KR-B on "));
    QCOMPARE(desk.cell(target, Column::Checksum), "0x5F47");

    if (failsFirst) {
        QVERIFY(desk.run("downLoad"));
        QVERIFY(desk.log().contains("Error: the device did not take row 412."));
        QCOMPARE(desk.status()->text(), " Please program the device first ");
        QVERIFY(desk.status()->styleSheet().contains("background-color:red"));
        QVERIFY(!desk.isEnabled("Start"));
    }
    QVERIFY(desk.run("downLoad"));
    QCOMPARE(desk.status()->text(), " Ready to acquire ");
    QVERIFY(desk.find<QLabel>("deviceStatus")->text().startsWith("KR-C on "));
    QVERIFY(desk.status()->styleSheet().contains("background-color:rgb(0,205,102)"));
    QVERIFY(desk.log().contains("Info: Finished.") && !desk.log().contains("[#"));
    QVERIFY(desk.isEnabled("Start") && desk.isEnabled("Auto"));

    // Waves.
    desk.press(Qt::Key_F1);
    QVERIFY(desk.isEnabled("Stop") && !desk.page->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(!desk.isEnabled("Stop"), kCaptureTime);
    QCOMPARE(desk.boxes.seen, QStringList());
    QCOMPARE(desk.tabs()->count(), 2);
    QVERIFY(!desk.wave(1)->signalMap().isEmpty());
    QVERIFY(desk.page->isEnabled() && desk.isEnabled("Start"));

    // Another file of a design starts from the beginning.
    desk.window->openFile(kExample + "uart_fifo.keo", "KR", "KR-C", files + "no_header.fs");
    QVERIFY(!checkBox->isChecked() && !desk.status()->isVisible());
    QCOMPARE(desk.table->model()->rowCount(), 1);
    QCOMPARE(desk.cell(0, Column::FsFile), files + "no_header.fs");
    QVERIFY(desk.isEnabled("Start"));
}

// The tool holds the cable, box or no box. Neither an opened file nor the end of the window waits
// for it, but they ask.
void tst_ProgramRoad::leavesDuringADownload()
{
    const QTemporaryDir directory;
    for (const bool isClosed : {false, true}) {
        Desk desk(slowBoard(directory));
        desk.window->openFile(kExample + "uart_fifo.keo", "KR", "KR-C",
                              kExample + "bitstreams/uart_fifo.fs");
        desk.chooseCable(1);
        desk.page->setEnabledByUser(true);
        desk.pressButton("downLoad");
        QVERIFY(waitingTip());
        QTest::qWait(300);
        const auto leave = [&] {
            if (isClosed)
                return desk.window->close();
            desk.window->openFile(kExample + "uart_fifo.keo", "KR", "KR-A", {});
            return !desk.page->model()->isRunning();
        };
        desk.page->setEnabledByUser(false);
        desk.press(Qt::Key_F1);
        QVERIFY(!desk.isEnabled("Start") && !desk.isEnabled("Auto") && !desk.isEnabled("Stop"));
        desk.boxes.answer = QMessageBox::No;
        QVERIFY(!leave());
        QVERIFY(desk.page->model()->isRunning() && waitingTip());
        QCOMPARE(desk.cell(0, Column::FsFile), kExample + "bitstreams/uart_fifo.fs");
        desk.boxes.answer = QMessageBox::Yes;
        if (isClosed) {
            QVERIFY(desk.window->close());
        } else { // for the device of the file that stayed open
            desk.window->reopen(kExample + "uart_fifo.keo");
            QCOMPARE(desk.cell(0, Column::FsFile), kExample + "bitstreams/uart_fifo.fs");
        }
        QCOMPARE(desk.boxes.seen.size(), 2);
        QVERIFY(desk.boxes.seen.takeFirst().contains("left incomplete"));
        QCOMPARE(desk.boxes.seen.takeFirst().left(9), "Warning: ");
        if (isClosed) {
            QVERIFY(!desk.page->model()->isRunning());
            desk.window.reset();
            continue;
        }
        QVERIFY(!waitingTip() && !desk.page->model()->isRunning());
        QVERIFY(desk.isEnabled("Start") && desk.find<QToolButton>("downLoad")->isEnabled());
        desk.chooseCable(1);
        desk.press(Qt::Key_F1); // the download had begun, so the device is empty
        QTRY_COMPARE_WITH_TIMEOUT(
            desk.boxes.seen, QStringList("Error: Device does not load fs file yet."), kCaptureTime);
    }
}

KEO_WIDGET_TEST_MAIN(tst_ProgramRoad)
#include "tst_programroad.moc"
