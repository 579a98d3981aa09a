// Some models of device write a row late under a .keo description. Whichever model is on the board,
// kind of core, extension and way in, what both programs export is the board's stimulus; unless
// nobody has named the model, which they then tell.

#include <support/desktop.h>
#include <support/exportedsamples.h>

#include <export_ui/exportdialog.h>

#include <QComboBox>
#include <QDir>
#include <QSpinBox>

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

KEO_WIDGET_TEST_MAIN(tst_DeviceRoad)
#include "tst_deviceroad.moc"
