// Copy as Command: what a user sets on the page, the copied command captures from the same
// stimulus, through a shell, and both export the same bytes.

#include <support/desktop.h>
#include <support/files.h>

#include <export_ui/exportdialog.h>
#include <trigger/randomunit.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>

using namespace KEO;

class tst_CommandRoad : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void standardCores_data();
    void standardCores();
    void sendsTheSame_data();
    void sendsTheSame();
    void liteCore();
    void tellsWhatItCanNotCopy();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_directory->filePath(name); }
    void board(const QString &file);
    /// Runs the command and compares what both exported.
    void compareWith(const QString &command, int leastFiles) const;
    /// The files in a folder by their names, without the date of a VCD file.
    [[nodiscard]] QMap<QString, QByteArray> exports(const QString &folder) const;

    std::unique_ptr<QTemporaryDir> m_directory;
};

namespace {

const QString kExamples = QStringLiteral(KEO_SOURCE_DIR "/examples/");

/// Whatever a user may set, by the widgets of the page.
class RandomUser final
{
public:
    RandomUser(const UserWindow &user, quint32 seed) : m_user(user), m_random(seed) {}

    void setEverything()
    {
        auto *tree = m_user.find<QTreeWidget>("coreTree");
        const int chosen = any(3);
        for (int core = 0; core < 2; ++core) {
            tree->setCurrentItem(tree->topLevelItem(core));
            tree->topLevelItem(core)->setCheckState(0,
                                                    chosen == core ? Qt::Unchecked : Qt::Checked);
            setNumbers();
            setUnits();
            setExpressions();
        }
        tree->setCurrentItem(tree->topLevelItem(any(2)));
    }

private:
    int any(int count) { return m_random.bounded(count); }
    void pressReturn(QWidget &widget) const
    {
        m_user.activate();
        widget.setFocus();
        QTest::keyClick(&widget, Qt::Key_Return);
    }

    void setNumbers()
    {
        m_user.find<QComboBox>("comboBoxWindow")->setCurrentIndex(any(4));
        auto *amounts = m_user.find<QComboBox>("comboBoxAmount");
        amounts->setCurrentIndex(any(amounts->count() - 2));
        auto *position = m_user.find<QSpinBox>("spinBoxTrPos");
        position->setValue(any(position->maximum() + 1));
    }
    void setUnits()
    {
        auto *units = m_user.find<QTableView>("tableUnit");
        for (int row = 0; row < units->model()->rowCount(); ++row) {
            if (any(2) == 0)
                continue;
            units->selectRow(row);
            const OnModal<QDialog> dialog([this](QDialog *box) { setUnit(*box); });
            pressReturn(*units);
            QVERIFY(dialog.seen());
        }
    }
    void setUnit(QDialog &box)
    {
        const auto find = [&box]<typename Widget>(Widget *&widget, const char *name) {
            widget = box.findChild<Widget *>(QLatin1String(name));
        };
        QComboBox *function = nullptr;
        find(function, "comboBoxFunc");
        function->setCurrentIndex(any(2) ? any(function->count()) : 0);
        QLineEdit *low = nullptr;
        QLineEdit *high = nullptr;
        find(low, "lineEditValue0");
        find(high, "lineEditValue1");
        // Wide ranges and open bits, so that there often is a trigger in the stimulus.
        const bool isRange = high->isVisible();
        type(*low, isRange ? "0" : "XXXX01RFB");
        if (isRange)
            type(*high, "1");
        QSpinBox *count = nullptr;
        find(count, "spinBoxCounter");
        if (count->isEnabled())
            count->setValue(any(4) + 1);
        QCheckBox *continuous = nullptr;
        find(continuous, "checkBoxContinuous");
        if (continuous->isEnabled())
            continuous->setChecked(any(2));
        QTest::keyClick(low, Qt::Key_Return);
    }
    /// Letters that the field refuses leave what stood there.
    void type(QLineEdit &field, const QString &characters)
    {
        QTest::keyClick(&field, Qt::Key_Home);
        QTest::keyClicks(&field,
                         randomText(m_random, characters, int(field.displayText().size()) - 1));
    }
    void setExpressions()
    {
        auto *list = m_user.find<QListWidget>("listExpressions");
        for (int row = 0; row < list->count(); ++row) {
            QListWidgetItem *item = list->item(row);
            if (!(item->flags() & Qt::ItemIsUserCheckable) ||
                item->data(Qt::CheckStateRole).isNull())
                return; // a static core
            item->setCheckState(any(2) ? Qt::Checked : Qt::Unchecked);
            if (any(2) == 0)
                continue;
            list->setCurrentRow(row);
            const OnModal<QDialog> dialog([this](QDialog *box) {
                for (const QString &name : expression())
                    QTest::mouseClick(box->findChild<QPushButton *>("btn" + name), Qt::LeftButton);
                QTest::keyClick(box, Qt::Key_Return);
            });
            pressReturn(*list);
            QVERIFY(dialog.seen());
        }
    }
    /// Names of buttons: a unit, or two with an operator, perhaps turned round.
    QStringList expression()
    {
        const auto unit = [this] { return QStringLiteral("M%1").arg(any(4)); };
        QStringList names{unit()};
        if (any(3))
            names << QStringList{"AND", "AND", "OR", "XOR"}[any(4)] << unit();
        if (any(3) == 0)
            names = QStringList{"NOT", "LeftBracket"} + names + QStringList{"RightBracket"};
        return names;
    }

    const UserWindow &m_user;
    QRandomGenerator m_random;
};

/// Calls \a act with each check mark that no file keeps: of the cores and of their expressions.
template <typename Act>
void forEachCheck(const UserWindow &user, const Act &act)
{
    auto *tree = user.find<QTreeWidget>("coreTree");
    for (int core = 0; core < tree->topLevelItemCount(); ++core) {
        QTreeWidgetItem *item = tree->topLevelItem(core);
        tree->setCurrentItem(item);
        act([item] { return item->checkState(0); },
            [item](Qt::CheckState state) { item->setCheckState(0, state); });
        auto *list = user.find<QListWidget>("listExpressions");
        for (int row = 0; row < list->count(); ++row)
            act([list, row] { return list->item(row)->checkState(); },
                [list, row](Qt::CheckState state) { list->item(row)->setCheckState(state); });
    }
}

QList<Qt::CheckState> checksOf(const UserWindow &user)
{
    QList<Qt::CheckState> checks;
    forEachCheck(user, [&](const auto &get, const auto &) { checks.append(get()); });
    return checks;
}

void setChecks(const UserWindow &user, QList<Qt::CheckState> checks)
{
    forEachCheck(user, [&](const auto &get, const auto &set) {
        const Qt::CheckState check = checks.takeFirst();
        if (check != get())
            set(check);
    });
}

/// Exports all windows of each core by the dialog, as CSV and as VCD, beside the description.
void exportAll(const UserWindow &user, int cores)
{
    for (int core = 0; core < cores; ++core) {
        for (const int format : {0, 1}) {
            const OnModal<ExportDialog> dialog([&](ExportDialog *box) {
                box->findChild<QComboBox *>("comBoxKo")->setCurrentIndex(core);
                box->findChild<QComboBox *>("comBoxFormat")->setCurrentIndex(format);
                QTest::keyClicks(box->findChild<QLineEdit *>("editName"), "w");
                QTest::keyClick(box, Qt::Key_Return);
            });
            user.click("Export");
            QVERIFY(dialog.seen());
        }
    }
}

/// Copies the command, by its key.
QString copied(const UserWindow &user)
{
    QGuiApplication::clipboard()->clear();
    user.press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    return QGuiApplication::clipboard()->text();
}

/// Runs it as a user would who has the program in the path; gives what it says on errors.
QString runInShell(const QString &command, const QString &folder, const QString &more = {})
{
    QProcess shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("PATH", QStringLiteral(KEO_BIN_DIR ":") + environment.value("PATH"));
    shell.setProcessEnvironment(environment);
    shell.setWorkingDirectory(folder);
    shell.start(
        "sh", {"-c", command + " --quiet --timeout 20 --name w --format csv --format vcd" + more});
    if (!shell.waitForFinished(60000))
        shell.kill();
    const QString errors = QString::fromUtf8(shell.readAllStandardError());
    return shell.exitCode() == 0 ? QString() : "failed: " + errors;
}

/// The orders in each run that a server's log tells of, from the chain to the first poll.
QList<QByteArrayList> ordersIn(const QByteArray &log)
{
    QList<QByteArrayList> runs;
    bool isArming = false;
    for (const QByteArray &line : log.split('\n')) {
        const qsizetype mark = line.indexOf(" > ");
        const QByteArray order = mark < 0 ? QByteArray() : line.mid(mark + 3);
        if (order.startsWith("OPEN")) {
            runs.emplaceBack();
            isArming = true;
        }
        isArming = isArming && !order.contains("for reading");
        if (isArming && !order.isEmpty())
            runs.last().append(order.left(order.indexOf(" request_id")));
    }
    return runs;
}

} // namespace

void tst_CommandRoad::init()
{
    WidgetTest::init();
    m_directory = std::make_unique<QTemporaryDir>(QDir::tempPath() + "/it's here-XXXXXX");
    QVERIFY(QDir(m_directory->path()).mkdir("command"));
}

void tst_CommandRoad::board(const QString &file)
{
    qputenv("SIGNALSCOPE_BOARD", file.toLocal8Bit());
}

QMap<QString, QByteArray> tst_CommandRoad::exports(const QString &folder) const
{
    QMap<QString, QByteArray> files;
    const QDir directory(folder);
    for (const QString &name : directory.entryList({"w*"}, QDir::Files)) {
        QByteArray bytes = contentOf(directory.filePath(name));
        if (const qsizetype date = bytes.indexOf("$date\n"); date >= 0)
            bytes.remove(date, bytes.indexOf("$end", date) - date);
        files.insert(name, bytes);
    }
    return files;
}

void tst_CommandRoad::standardCores_data()
{
    addColumns<uint>({"seed"});
    // Set-ups that have their triggers in the stimulus, and few of them.
    for (const uint seed : {3, 12, 15, 26, 30, 46, 47, 48, 59})
        addRow(qPrintable(QString::number(seed)), seed);
}

void tst_CommandRoad::standardCores()
{
    QFETCH(const uint, seed);
    board(kExamples + "uart_fifo/board.json");
    const QString description = path("uart fifo.keo");
    QVERIFY(QFile::copy(kExamples + "uart_fifo/uart_fifo.keo", description));
    QString command;
    {
        const BenchServer server;
        const UserWindow user;
        user.window->openFile(description, {}, "KR-C", {});
        RandomUser(user, seed).setEverything();
        command = copied(user);
        QVERIFY(command.startsWith("signalscope-capture --device KR-C"));
        user.capture();
        QVERIFY(user.isIdle() && user.tabs()->count() > 1);
        exportAll(user, 2);
    }
    compareWith(command, 2);
}

void tst_CommandRoad::sendsTheSame_data()
{
    addColumns<uint>({"seed"});
    const int seeds = qEnvironmentVariableIntValue("SIGNALSCOPE_COMMAND_SEEDS");
    for (uint seed = 1; seed <= uint(seeds > 0 ? seeds : 12); ++seed)
        addRow(qPrintable(QString::number(seed)), seed);
}

/// Whether the trigger comes or not: a first run, a second one, the copied command and the saved
/// project send the same orders.
void tst_CommandRoad::sendsTheSame()
{
    QFETCH(const uint, seed);
    QRandomGenerator random(seed);
    const auto any = [&random](int count) { return random.bounded(count); };
    const QString device = QStringList{"KR-C", "KX-1", ""}[any(3)];
    const int pace = QList<int>{CapturePace().sectionPause, 0, 7}[any(3)];
    TestDesign design{.extension = QStringList{"keo", "zeo"}[any(2)],
                      .storageDepth = 512,
                      .cores = 2,
                      .logs = true};
    design.write(m_directory->path());
    QString description = path("design." + design.extension);
    if (any(3) > 0) { // dynamic cores
        putFile(path("board.json"),
                contentOf(kExamples + "uart_fifo/board.json")
                    .replace("\"version\": 1,", "\"version\": 1, \"log\": \"packets.log\","));
        description = path("uart_fifo.keo");
        for (const char *name : {"uart_fifo.keo", "uart_fifo.vcd"})
            QVERIFY(QFile::copy(kExamples + "uart_fifo/" + name, path(name)));
    }
    board(path("board.json"));
    const FreshServer server;
    UserWindow user;
    user.window = std::make_unique<Analyzer>(
        nullptr, projectFactories({.sectionPause = pace, .pollInterval = 20}));
    user.window->show();
    user.window->openFile(description, {}, device, {});
    const auto polls = [this] { return contentOf(path("packets.log")).count("for reading"); };
    const auto capture = [&] {
        const qsizetype before = polls();
        user.press(Qt::Key_F1);
        QTRY_VERIFY(polls() > before);
        for (int second = 0; user.isBusy() && second < 20 * 10; ++second) {
            user.click("Force Trigger"); // does nothing while a window is read
            QTest::qWait(100);
        }
        QVERIFY(user.isIdle());
    };
    RandomUser(user, seed).setEverything();
    const QString command = copied(user);
    QCOMPARE(command.contains(" --pace 7 "), pace == 7);
    const QList<Qt::CheckState> checks = checksOf(user);
    capture();
    capture();
    QCOMPARE(runInShell(command, path("command"), " --force-after 0.05"), QString());
    user.saveAs(path("run"));
    user.window->openFile(path("run.analyzer_prj"), {}, device, {});
    setChecks(user, checks);
    capture();

    const QList<QByteArrayList> runs = ordersIn(contentOf(path("packets.log")));
    QCOMPARE(runs.size(), 4);
    QVERIFY(runs.first().size() > 6);
    QCOMPARE(runs[1], runs[0]);
    QVERIFY2(runs[2] == runs[0], qPrintable(command));
    QCOMPARE(runs[3], runs[0]);
}

void tst_CommandRoad::compareWith(const QString &command, int leastFiles) const
{
    QCOMPARE(runInShell(command, path("command")), QString());
    const QMap<QString, QByteArray> expected = exports(m_directory->path());
    const QMap<QString, QByteArray> got = exports(path("command"));
    QVERIFY2(expected.size() >= leastFiles, qPrintable(command));
    QCOMPARE(got.keys(), expected.keys());
    QVERIFY2(got == expected, qPrintable(command));
}

void tst_CommandRoad::liteCore()
{
    board(kExamples + "spi_adc/board.json");
    const QString description = path("spi.keo");
    QVERIFY(QFile::copy(kExamples + "spi_adc/spi_adc.keo", description));
    QString command;
    {
        const BenchServer server;
        const UserWindow user;
        user.window->openFile(description, {}, "KR-H", {});
        user.find<QSpinBox>("spinTriggerDelay")->setValue(40);
        command = copied(user);
        QVERIFY2(command.contains(" --delay 40 "), qPrintable(command));
        user.capture();
        exportAll(user, 1);
    }
    compareWith(command, 2);
}

// The menu of the page does the same, and the status line says what is left out and why there is no
// command.
void tst_CommandRoad::tellsWhatItCanNotCopy()
{
    board(kExamples + "uart_fifo/board.json");
    const QString description =
        putFile(path("odd.keo"), contentOf(kExamples + "uart_fifo/uart_fifo.keo")
                                     .replace("value0=\"01001000\"", "value0=\"0100100x\""));
    const BenchServer server;
    const UserWindow user;
    user.window->openFile(description, {}, {}, {});
    const auto told = [&user] { return user.find<QLabel>("toldStatus")->text(); };
    auto *tree = user.find<QTreeWidget>("coreTree");
    QGuiApplication::clipboard()->clear();
    QVERIFY(
        driveContextMenu(tree->viewport(), {5, 5}, "Copy as Command").contains("Copy as Command"));
    const QString command = QGuiApplication::clipboard()->text();
    QVERIFY2(command.contains("--set M0='==1' ") && !command.contains("M1"), qPrintable(command));
    QVERIFY2(told().contains("M1 of core 0 is left to the description."), qPrintable(told()));
    tree->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    QCOMPARE(copied(user), QString());
    QVERIFY2(told().contains("No core is checked."), qPrintable(told()));

    // An amount that is not offered is not lost for the asking.
    user.window->openFile(
        putFile(path("amount.keo"),
                contentOf(kExamples + "uart_fifo/uart_fifo.keo")
                    .replace("capture_amount=\"1024\"", "capture_amount=\"384\"")),
        {}, {}, {});
    const auto *strip = user.find<QListWidget>("triggerCheck");
    QTRY_VERIFY(strip->count() > 0 && strip->item(0)->text().contains("384"));
    QCOMPARE(copied(user), QString());
    QVERIFY2(told().contains("nothing to read"), qPrintable(told()));
    user.find<QSpinBox>("spinBoxTrPos")->stepUp();
    QTest::qWait(0);
    QVERIFY2(strip->item(0)->text().contains("384"), qPrintable(strip->item(0)->text()));
}

KEO_WIDGET_TEST_MAIN(tst_CommandRoad)
#include "tst_commandroad.moc"
