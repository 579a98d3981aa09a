// The export dialog, driven by keys and clicks, with files on the disk.

#include <export/csvwriter.h>
#include <export/prnwriter.h>
#include <export/vcdwriter.h>
#include <export_ui/exportdialog.h>
#include <support/widgettest.h>
#include <wave/wavemonitorwidget.h>
#include <wave_data/windowcontents.h>

#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QDomDocument>
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

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

/// A viewer of one bus of two bits and one signal, whose samples say which window they belong to.
std::unique_ptr<WaveMonitorWidget> monitorOf(int core, int window)
{
    auto monitor = std::make_unique<WaveMonitorWidget>(quint64(core * 8 + window) * 16, nullptr);
    std::vector<SignalElement> elements;
    for (int i = 0; i < 3; ++i) {
        QBitArray data(16);
        for (int sample = 0; sample < data.size(); ++sample)
            data[sample] = (core * 37 + window * 11 + i * 5 + sample * 7) % 16 < 6;
        elements.push_back({.id = i,
                            .name = QStringLiteral("c%1[%2]").arg(core).arg(i),
                            .text = {},
                            .data = data});
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
    explicit Form(ExportMode mode = ExportMode::Standard)
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
        auto *widget = dialog->findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
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
    QByteArray content(const char *name) const
    {
        return contentOf(directory.filePath(QLatin1String(name)));
    }
    /// What a viewer's saved form gives, read the long way round.
    ExportWindow saved(int monitor) const
    {
        QDomDocument document;
        return ExportWindow(monitors[size_t(monitor)]->saveWindow(document));
    }
    QByteArray written(const std::function<bool(const QString &)> &write) const
    {
        const QTemporaryDir other;
        return write(other.filePath("x")) ? contentOf(other.filePath("x")) : QByteArray("failed");
    }

    QTemporaryDir directory;
    std::vector<std::unique_ptr<WaveMonitorWidget>> monitors;
    std::unique_ptr<ExportDialog> dialog;
};

QByteArray undated(QByteArray vcd)
{
    const qsizetype begin = vcd.indexOf("$date\n  ") + 8;
    return begin < 8 ? vcd : vcd.replace(begin, 19, "date");
}

enum Format { Csv, Vcd, Prn };
enum Unit { Us, Ns, Ps };

} // namespace

class tst_ExportDialog : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void opening();
    void files_data();
    void files();
    void contents();
    void periodOfVcd();
    void busList();
    void nothingChosen();
    void unwritable();
    void browse();
    void parentGoes();
};

void tst_ExportDialog::opening()
{
    const Form form;
    QCOMPARE(form.find<QLineEdit>("editDir")->text(), form.directory.path());
    QCOMPARE(form.find<QLineEdit>("editClk")->text(), "clk_a");
    QVERIFY(!form.find<QComboBox>("comboBoxForPRN")->isVisible());
    QVERIFY(!form.find<QListWidget>("listWidgetForBus")->isVisible());
    QCOMPARE(form.dialog->size(), QSize(500, 330));
    form.choose("comBoxKo", 1);
    QCOMPARE(form.find<QComboBox>("comBoxKo")->currentText(), "Core 5");
    QCOMPARE(form.find<QLineEdit>("editClk")->text(), "clk_b");

    // Only what makes a word in some script reaches the name.
    auto *name = form.find<QLineEdit>("editName");
    form.type("a.b/c d-e");
    QCOMPARE(name->text(), "abcde");
    name->clear();
    const QString foreign = QString::fromUtf8("\u00e4\u6ce2_1");
    QApplication::clipboard()->setText(foreign);
    QTest::keyClick(name, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(name->text(), foreign);
}

void tst_ExportDialog::files_data()
{
    QTest::addColumn<ExportMode>("mode");
    QTest::addColumn<int>("core");
    QTest::addColumn<int>("format");
    QTest::addColumn<QStringList>("names");
    const auto standard = ExportMode::Standard;
    const auto lite = ExportMode::Lite;
    QTest::newRow("csv of a core with two windows")
        << standard << 0 << int(Csv) << QStringList{"x_core3_window0.csv", "x_core3_window1.csv"};
    QTest::newRow("vcd of a core with two windows")
        << standard << 0 << int(Vcd) << QStringList{"x_core3_window0.vcd", "x_core3_window1.vcd"};
    QTest::newRow("prn of the other core")
        << standard << 1 << int(Prn) << QStringList{"x_core5_window0.prn"};
    QTest::newRow("csv of a lite core") << lite << 0 << int(Csv) << QStringList{"x.csv"};
    QTest::newRow("vcd of a lite core") << lite << 0 << int(Vcd) << QStringList{"x.vcd"};
    QTest::newRow("prn of a lite core")
        << lite << 0 << int(Prn) << QStringList{"x_core3_window0.prn"};
}

void tst_ExportDialog::files()
{
    QFETCH(ExportMode, mode);
    QFETCH(int, core);
    QFETCH(int, format);
    const Form form(mode);
    form.choose("comBoxKo", core);
    form.choose("comBoxFormat", format);
    form.type("x");
    QTEST(form.files(), "names");
}

// Each format against the writer of it, fed with the saved form of the viewer; a file that stood
// there before is replaced.
void tst_ExportDialog::contents()
{
    {
        const Form form;
        QFile old(form.directory.filePath("x_core3_window1.csv"));
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write(QByteArray(100'000, 'x')) > 0);
        old.close();
        form.setPeriod(25);
        form.choose("comBoxPeriod", Ns);
        form.type("x");
        QCOMPARE(form.files().size(), 2);
        QCOMPARE(form.content("x_core3_window1.csv"), form.written([&](const QString &path) {
            return writeCsv(path, "ns", 25, form.saved(1));
        }));
        QVERIFY(form.content("x_core3_window0.csv") != form.content("x_core3_window1.csv"));
    }
    for (const ExportMode mode : {ExportMode::Standard, ExportMode::Lite}) {
        const Form form(mode);
        const bool isLite = mode == ExportMode::Lite;
        form.choose("comBoxFormat", Vcd);
        form.setPeriod(5);
        form.type("x");
        form.files();
        const QByteArray vcd = form.content(isLite ? "x.vcd" : "x_core3_window0.vcd");
        QCOMPARE(undated(vcd), undated(form.written([&](const QString &path) {
                     return writeVcd(path, "top", "clk_a", true, "ps", 5'000'000, isLite ? 0 : 4,
                                     form.saved(0));
                 })));
        QVERIFY(vcd.contains("$timescale\n  1 ps\n") && vcd.contains("\n#2500000\n"));
        QVERIFY(vcd.contains(isLite ? "Sample 0 (Trigger)" : "Sample 4 (Trigger)"));
    }
    for (const int type : {0, 1, 2}) {
        const Form form;
        form.choose("comBoxKo", 1);
        form.choose("comBoxFormat", Prn);
        form.choose("comboBoxForPRN", type);
        if (type == 2)
            form.find<QListWidget>("listWidgetForBus")->item(0)->setCheckState(Qt::Unchecked);
        form.type("x");
        form.files();
        QCOMPARE(form.content("x_core5_window0.prn"), form.written([&](const QString &path) {
            return type == 2 ? writePrnBuses(path, "us", 1, form.saved(2), {1})
                             : writePrn(path, "us", 1, form.saved(2), type);
        }));
    }
}

// Half a period must be a whole number of picoseconds.
void tst_ExportDialog::periodOfVcd()
{
    const Form form;
    auto *period = form.find<QSpinBox>("spinPeriod");
    const auto least = [&](Format format, Unit unit) {
        form.choose("comBoxFormat", format);
        form.choose("comBoxPeriod", unit);
        return period->minimum();
    };
    QCOMPARE(least(Vcd, Ns), 1);
    QCOMPARE(period->value(), 1);
    QCOMPARE(least(Vcd, Ps), 2);
    QCOMPARE(period->value(), 2);
    QCOMPARE(least(Vcd, Us), 1);
    QCOMPARE(least(Csv, Ps), 1);
    QCOMPARE(least(Prn, Ps), 1);
    QCOMPARE(least(Vcd, Ps), 2);
}

void tst_ExportDialog::busList()
{
    const Form form;
    auto *buses = form.find<QListWidget>("listWidgetForBus");
    const auto texts = [&] {
        QStringList all;
        for (int i = 0; i < buses->count(); ++i)
            all.append(buses->item(i)->text());
        return all;
    };
    form.choose("comBoxFormat", Prn);
    QVERIFY(form.find<QComboBox>("comboBoxForPRN")->isVisible() && !buses->isVisible());
    form.choose("comboBoxForPRN", 2);
    QVERIFY(buses->isVisible());
    QCOMPARE(form.dialog->size(), QSize(500, 478));
    QCOMPARE(texts(), (QStringList{"bus3", "single3"}));
    // The list follows the type and the format, but not the core alone.
    form.choose("comBoxKo", 1);
    QCOMPARE(texts(), (QStringList{"bus3", "single3"}));
    form.choose("comboBoxForPRN", 1);
    form.choose("comboBoxForPRN", 2);
    QCOMPARE(texts(), (QStringList{"bus5", "single5"}));

    // Nothing is checked: nothing is written. The mouse unchecks.
    BoxWatcher boxes;
    for (int i = 0; i < buses->count(); ++i) {
        const QRect row = buses->visualItemRect(buses->item(i));
        QTest::mouseClick(buses->viewport(), Qt::LeftButton, {},
                          QPoint(row.left() + 10, row.center().y()));
    }
    form.type("x");
    QCOMPARE(form.files(), QStringList("open"));
    QTRY_COMPARE(boxes.seen, QStringList("Error: Selected bus can not be empty."));
    QTRY_VERIFY(!QApplication::activeModalWidget());

    // With another format the hidden choice means nothing.
    form.choose("comBoxFormat", Csv);
    QVERIFY(!buses->isVisible());
    QCOMPARE(form.dialog->size(), QSize(500, 330));
    QCOMPARE(form.files(), QStringList("x_core5_window0.csv"));
    QCOMPARE(boxes.seen.size(), 1);
}

void tst_ExportDialog::nothingChosen()
{
    {
        BoxWatcher boxes;
        const Form form;
        QCOMPARE(form.files(), QStringList("open"));
        QTRY_COMPARE(boxes.seen, QStringList("Error: File name can not be empty."));
        QTRY_VERIFY(!QApplication::activeModalWidget());
        form.type("x");
        QCOMPARE(form.files().size(), 2);
    }
    // The chosen core has no waves any more: OK closes the dialog and writes nothing.
    Form form;
    form.monitors.clear();
    form.choose("comBoxFormat", Prn);
    form.choose("comboBoxForPRN", 2);
    form.type("x");
    QCOMPARE(form.files(), QStringList());
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
    QVERIFY(other.content("x_core3_window1.csv").startsWith("Groups:"));
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
