// The export dialog, driven by keys and clicks, with files on the disk.

#include <export_ui/exportdialog.h>
#include <support/files.h>
#include <support/widgettest.h>
#include <wave/common/clockperiods.h>
#include <wave/wavemonitorwidget.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>

#include <functional>
#include <memory>
#include <vector>

#include <sys/stat.h>

using namespace KEO;
using WaveMonitor::BusElement;
using WaveMonitor::SignalElement;
using WaveMonitor::WaveMonitorWidget;

namespace {

/// A viewer of one bus of two bits and one signal, whose names say which window they belong to.
std::unique_ptr<WaveMonitorWidget> monitorOf(int core, int window)
{
    auto monitor = std::make_unique<WaveMonitorWidget>(quint64(core * 8 + window) * 16, nullptr);
    std::vector<SignalElement> elements;
    for (int i = 0; i < 3; ++i) {
        elements.push_back({.id = i,
                            .name = QStringLiteral("c%1w%2[%3]").arg(core).arg(window).arg(i),
                            .text = {},
                            .data = QBitArray(16, i == 2)});
    }
    monitor->addBus({.name = QStringLiteral("bus%1").arg(core),
                     .text = {},
                     .signals = {&elements[0], &elements[1]}});
    monitor->addBus(
        {.name = QStringLiteral("single%1").arg(core), .text = {}, .signals = {&elements[2]}});
    monitor->setTitle(window, core);
    return monitor;
}

/// The dialog over three windows of two cores, shown, writing to a folder of its own.
struct Form
{
    explicit Form(ExportMode mode = ExportMode::Standard,
                  WaveMonitor::ClockPeriods *clockPeriods = nullptr)
    {
        for (const auto &[core, window] : {std::pair(3, 0), std::pair(3, 1), std::pair(5, 0)})
            monitors.push_back(monitorOf(core, window));
        ExportSource source{
            .mode = mode,
            .directory = directory.path(),
            .cores = {{3, QStringLiteral("top"), QStringLiteral("clk_a"), true, 4},
                      {5, QStringLiteral("sub"), QStringLiteral("clk_b"), false, 9}}};
        for (const auto &monitor : monitors)
            source.waveMonitors.append(monitor.get());
        source.clockPeriods = clockPeriods;
        if (mode == ExportMode::Lite)
            source.cores.removeLast();
        dialog = std::make_unique<ExportDialog>(source);
        dialog->show();
        dialog->activateWindow();
        if (!QTest::qWaitForWindowActive(dialog.get()))
            qFatal("the dialog does not show");
    }

    template <typename Widget>
    Widget *find(const char *name) const
    {
        return dialog->findChild<Widget *>(QLatin1String(name));
    }
    /// By the keyboard.
    void choose(const char *name, int index) const
    {
        auto *box = find<QComboBox>(name);
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            QTest::keyClick(box, Qt::Key_Down);
        QCOMPARE(box->currentIndex(), index);
    }
    void type(const QString &name) const { QTest::keyClicks(find<QLineEdit>("editName"), name); }
    void setPeriod(int period) const
    {
        auto *box = find<QSpinBox>("spinPeriod");
        box->setFocus();
        box->selectAll();
        QTest::keyClicks(box, QString::number(period));
    }
    /// Presses Enter and gives the names of the files that came of it; "open" while the dialog
    /// stays.
    QStringList files() const
    {
        QTest::keyClick(dialog.get(), Qt::Key_Return);
        if (dialog->isVisible())
            return {QStringLiteral("open")};
        return QDir(directory.path()).entryList(QDir::Files | QDir::System, QDir::Name);
    }
    QTemporaryDir directory;
    std::vector<std::unique_ptr<WaveMonitorWidget>> monitors;
    std::unique_ptr<ExportDialog> dialog;
};

enum Format { Csv, Vcd, Prn, VcdPlain, CsvPlain, Fst };
enum Unit { Us, Ns, Ps };

} // namespace

class tst_ExportDialog : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void opening();
    void files_data();
    void files();
    void periodOfVcd();
    void disarmsFormulas();
    void lacksAConverter();
    void knowsThePeriodAgain();
    void nothingChosen();
    void unwritable();
    void browse();
    void parentGoes();
};

void tst_ExportDialog::opening()
{
    const Form form;
    QCOMPARE(form.find<QLineEdit>("editDir")->text(), form.directory.path());
    for (const int core : {0, 1}) {
        form.choose("comBoxKo", core);
        QCOMPARE(form.find<QComboBox>("comBoxKo")->currentText(), core ? "Core 5" : "Core 3");
        QCOMPARE(form.find<QLineEdit>("editClk")->text(), core ? "clk_b" : "clk_a");
    }
    // Only what makes a word in some script reaches the name.
    form.type("a.b/c d-e");
    QApplication::clipboard()->setText(QString::fromUtf8("\u00e4\u6ce2_1"));
    QTest::keyClick(form.find<QLineEdit>("editName"), Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(form.find<QLineEdit>("editName")->text(), QString::fromUtf8("abcde\u00e4\u6ce2_1"));
}

// What the writers are told is read off the heads and times that they write.
void tst_ExportDialog::files_data()
{
    const auto row = addColumns<ExportMode, int, int, int, int, QStringList, QByteArrayList>(
        {"mode", "core", "format", "type", "unit", "names", "texts"});
    const auto standard = ExportMode::Standard;
    const auto lite = ExportMode::Lite;
    row("csv of two windows", standard, 0, Csv, 0, Ns,
        {"x_core3_window0.csv", "x_core3_window1.csv"},
        {"bus3 =, c3w1[0], c3w1[1], ,", "time unit: ns, bus3, c3w1[0], ", "\n25, 0,", "\n50, 0,"});
    row("vcd of two windows", standard, 0, Vcd, 0, Us,
        {"x_core3_window0.vcd", "x_core3_window1.vcd"},
        {"$timescale\n  1 ps\n", "module top\n", " clk_a\n", "c3w1", "#0\n$dumpvars\n1!",
         "\n#12500000\n", "Sample 4 (Trigger)"});
    row("vcd of a rising clock", standard, 1, Vcd, 0, Ns, {"x_core5_window0.vcd"},
        {"module sub\n", " clk_b\n", "#0\n$dumpvars\n0!", "\n#12500\n", "Sample 9 (Trigger)"});
    row("prn of the other core", standard, 1, Prn, 0, Us, {"x_core5_window0.prn"},
        {"time unit: us\tbus5\t/c5w0[0]\t", "\n25\t"});
    row("prn without members", standard, 1, Prn, 1, Us, {"x_core5_window0.prn"},
        {"time unit: us\tbus5\tsingle5"});
    row("prn of one bus", standard, 1, Prn, 2, Us, {"x_core5_window0.prn"},
        {"time unit: us\tsingle5"});
    row("csv of a lite core", lite, 0, Csv, 0, Ps, {"x.csv"}, {"time unit: ps,"});
    row("vcd of a lite core", lite, 0, Vcd, 0, Ns, {"x.vcd"}, {"Sample 0 (Trigger)"});
    row("plain vcd of two windows", standard, 0, VcdPlain, 0, Ns,
        {"x_core3_window0.plain.vcd", "x_core3_window1.plain.vcd"},
        {"$timescale 1 ns $end", "module top $end", "$var wire 2 \" bus3 [1:0] $end", "#100\n1!\n",
         "#125\n0!\n", "\n#400\n"});
    row("plain csv of a lite core", lite, 0, CsvPlain, 0, Us, {"x.plain.csv"},
        {"sample,time_us,trigger,bus3,single3\n0,0,1,0,1\n1,25,0,"});
    row("prn of a lite core", lite, 0, Prn, 0, Us, {"x_core3_window0.prn"}, {});
}

void tst_ExportDialog::files()
{
    QFETCH(ExportMode, mode);
    QFETCH(int, core);
    QFETCH(int, format);
    QFETCH(int, type);
    QFETCH(int, unit);
    QFETCH(QStringList, names);
    QFETCH(QByteArrayList, texts);
    const Form form(mode);
    form.choose("comBoxKo", core);
    form.choose("comBoxFormat", format);
    form.choose("comBoxPeriod", unit);
    form.setPeriod(25);
    if (type > 0)
        form.choose("comboBoxForPRN", type);
    if (type == 2)
        form.find<QListWidget>("listWidgetForBus")->item(0)->setCheckState(Qt::Unchecked);
    form.type("x");
    QCOMPARE(form.files(), names);
    const QByteArray content = contentOf(form.directory.filePath(names.last()));
    for (const QByteArray &text : texts)
        QVERIFY2(content.contains(text), content + "\nholds no\n" + text);
}

// Half a period must be a whole number of picoseconds.
void tst_ExportDialog::periodOfVcd()
{
    const Form form;
    auto *period = form.find<QSpinBox>("spinPeriod");
    const std::tuple<Format, Unit, int> rows[] = {{Vcd, Ns, 1},     {Vcd, Ps, 2}, {Vcd, Us, 1},
                                                  {Csv, Ps, 1},     {Prn, Ps, 1}, {Vcd, Ps, 2},
                                                  {VcdPlain, Ps, 1}};
    for (const auto &[format, unit, least] : rows) {
        form.choose("comBoxFormat", format);
        form.choose("comBoxPeriod", unit);
        QCOMPARE(period->minimum(), least);
        period->stepBy(-3);
        QCOMPARE(period->value(), least);
    }
}

void tst_ExportDialog::disarmsFormulas()
{
    const Form form;
    auto *box = form.find<QCheckBox>("checkFormulas");
    QVERIFY(!box->isVisible());
    SignalElement member{.id = 9, .name = "m", .text = {}, .data = QBitArray(16)};
    form.monitors.back()->addBus({.name = "=1,2", .text = {}, .signals = {&member}});
    form.choose("comBoxKo", 1);
    form.choose("comBoxFormat", CsvPlain);
    QCOMPARE(form.dialog->size(), QSize(500, 330));
    QTest::keyClick(box, Qt::Key_Space);
    form.type("x");
    QCOMPARE(form.files(), QStringList("x_core5_window0.plain.csv"));
    const QByteArray table = contentOf(form.directory.filePath("x_core5_window0.plain.csv"));
    QVERIFY2(table.startsWith("sample,time_us,trigger,bus5,single5,\"'=1,2\"\n"), table);
}

void tst_ExportDialog::lacksAConverter()
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "");
    const Form form;
    qputenv("PATH", path);
    auto *formats = form.find<QComboBox>("comBoxFormat");
    formats->setFocus();
    QTest::keyClick(formats, Qt::Key_End);
    QCOMPARE(formats->currentIndex(), int(CsvPlain));
    QVERIFY(formats->itemData(Fst, Qt::ToolTipRole).toString().contains("gtkwave"));
}

// One core's period, from dialog to dialog. A field that was never touched tells nothing.
void tst_ExportDialog::knowsThePeriodAgain()
{
    WaveMonitor::ClockPeriods periods;
    const auto shown = [](const Form &form) {
        return std::pair(form.find<QSpinBox>("spinPeriod")->value(),
                         form.find<QComboBox>("comBoxPeriod")->currentText());
    };
    for (const bool isTold : {false, true}) {
        Form form(ExportMode::Standard, &periods);
        QCOMPARE(shown(form), std::pair(1, QString("us")));
        form.choose("comBoxKo", 1);
        if (isTold) {
            form.setPeriod(20);
            form.choose("comBoxPeriod", Ns);
        }
        form.type("waves");
        QVERIFY(!form.files().isEmpty());
        QVERIFY(!periods.ofCore(3));
        QCOMPARE(periods.ofCore(5).has_value(), isTold);
    }
    const Form form(ExportMode::Standard, &periods);
    QCOMPARE(shown(form), std::pair(1, QString("us")));
    form.choose("comBoxKo", 1);
    QCOMPARE(shown(form), std::pair(20, QString("ns")));
}

void tst_ExportDialog::nothingChosen()
{
    BoxWatcher boxes;
    Form form;
    const auto refusal = [&] {
        const QStringList files = form.files();
        (void)QTest::qWaitFor(
            [&] { return !boxes.seen.isEmpty() && !QApplication::activeModalWidget(); });
        return std::exchange(boxes.seen, {}).join(u';') + files.join(u';');
    };
    QCOMPARE(refusal(), "Error: File name can not be empty.open");
    auto *buses = form.find<QListWidget>("listWidgetForBus");
    const auto texts = [&] {
        QString all;
        for (int i = 0; i < buses->count(); ++i)
            all += buses->item(i)->text();
        return buses->isVisible() ? all : "hidden";
    };
    form.choose("comBoxFormat", Prn);
    QVERIFY(form.find<QComboBox>("comboBoxForPRN")->isVisible());
    QCOMPARE(texts(), "hidden");
    form.choose("comboBoxForPRN", 2);
    QCOMPARE(form.dialog->size(), QSize(500, 478));
    // The list follows the type and the format, but not the core alone.
    form.choose("comBoxKo", 1);
    QCOMPARE(texts(), "bus3single3");
    form.choose("comboBoxForPRN", 1);
    form.choose("comboBoxForPRN", 2);
    QCOMPARE(texts(), "bus5single5");
    for (int i = 0; i < buses->count(); ++i) { // the mouse unchecks
        const QRect row = buses->visualItemRect(buses->item(i));
        QTest::mouseClick(buses->viewport(), Qt::LeftButton, {},
                          QPoint(row.left() + 10, row.center().y()));
    }
    form.type("x");
    QCOMPARE(refusal(), "Error: Selected bus can not be empty.open");

    // With another format the hidden choice means nothing.
    form.choose("comBoxFormat", Csv);
    QCOMPARE(texts(), "hidden");
    QCOMPARE(form.dialog->size(), QSize(500, 330));
    QCOMPARE(form.files(), QStringList("x_core5_window0.csv"));

    // The chosen core has no waves any more: OK closes the dialog and writes nothing.
    Form empty;
    empty.monitors.clear();
    empty.type("x");
    QCOMPARE(empty.files(), QStringList());
    QVERIFY(boxes.seen.isEmpty());
}

// Whatever stands in the way, the dialog closes without a word, and the other files are written.
void tst_ExportDialog::unwritable()
{
    const Form form;
    QVERIFY(QDir(form.directory.path()).mkdir("x_core3_window0.csv"));
    form.type("x");
    QCOMPARE(form.files(), QStringList("x_core3_window1.csv"));

    const Form other; // a pipe that nobody reads
    const QByteArray pipe = QFile::encodeName(other.directory.filePath("x_core3_window0.csv"));
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    other.type("x");
    QCOMPARE(other.files(), (QStringList{"x_core3_window0.csv", "x_core3_window1.csv"}));
}

void tst_ExportDialog::browse()
{
    const QTemporaryDir target;
    const Form form;
    auto *button = form.find<QPushButton>("btnBrowse");
    OnModal<QFileDialog> cancelled([](QFileDialog *dialog) { dialog->reject(); });
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(cancelled.seen());
    QCOMPARE(form.find<QLineEdit>("editDir")->text(), form.directory.path());

    OnModal<QFileDialog> chosen([&](QFileDialog *dialog) {
        QCOMPARE(dialog->windowTitle(), "Export To...");
        QCOMPARE(dialog->directory().path(), form.directory.path());
        auto *name = dialog->findChild<QLineEdit *>("fileNameEdit");
        name->setText(target.path());
        QTest::keyClick(name, Qt::Key_Return);
    });
    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(chosen.seen());
    QCOMPARE(form.find<QLineEdit>("editDir")->text(), target.path());
    form.type("x");
    QCOMPARE(form.files(), QStringList());
    QVERIFY(QFile::exists(target.filePath("x_core3_window0.csv")));
}

void tst_ExportDialog::parentGoes()
{
    auto parent = std::make_unique<QWidget>();
    OnModal<ExportDialog> dialog([&](ExportDialog *shown) {
        QTest::keyClick(shown, Qt::Key_Return); // a box comes up over it
        parent.reset();
    });
    ExportDialog::run({.directory = QDir::tempPath(), .cores = {}}, parent.get());
    QVERIFY(dialog.seen() && !parent);
}

KEO_WIDGET_TEST_MAIN(tst_ExportDialog)
#include "tst_exportdialog.moc"
