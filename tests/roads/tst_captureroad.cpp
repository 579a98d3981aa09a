#include <support/exportedsamples.h>
#include <support/testdesign.h>
#include <support/testmain.h>

#include <QProcess>

Q_DECLARE_METATYPE(TestDesign)

/// The road from a description to its samples, for all shapes of cores: the capture program and the
/// simulated board as processes, and files with the samples at the end.
class tst_CaptureRoad : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void samplesAreTheStimulus_data();
    void samplesAreTheStimulus();
};

void tst_CaptureRoad::samplesAreTheStimulus_data()
{
    addColumns<TestDesign>({"design"});
    if (qEnvironmentVariableIsSet("SIGNALSCOPE_DEEP")) {
        addRow("deepest", TestDesign{.dynamic = true,
                                     .device = "KR-R",
                                     .storageDepth = 65536,
                                     .amount = 65536,
                                     .position = 30000});
        return;
    }
    const QString listed = "KR-R"; // a model with a rule of its own
    const QString other = "KX-1";
    struct Shape
    {
        int noise, depth, windows, amount, position;
    };
    const Shape shapes[] = {{8, 4096, 1, 256, 16}, {8, 4096, 1, 32, 0},
                            {8, 4096, 1, 32, 23},  {20, 4096, 1, 1024, 1015},
                            {20, 4096, 1, 512, 0}, {90, 1024, 3, 256, 100},
                            {0, 1024, 8, 128, 119}};
    int next = 0;
    for (const bool dynamic : {false, true}) {
        for (const auto &[noise, depth, windows, amount, position] : shapes) {
            const QString device = next & 1 ? listed : other; // each on two of the four kinds
            const QString extension = next & 2 ? "zeo" : "keo";
            ++next;
            QTest::addRow("%s, .%s, %s, %d windows of %d samples, %d before the trigger",
                          dynamic ? "dynamic" : "static", qPrintable(extension), qPrintable(device),
                          windows, amount, position)
                << TestDesign{.dynamic = dynamic,
                              .extension = extension,
                              .device = device,
                              .noise = noise,
                              .storageDepth = depth,
                              .windows = windows,
                              .amount = amount,
                              .position = position};
        }
    }
    addRow("255 signals", TestDesign{.dynamic = true,
                                     .extension = "zeo",
                                     .device = other,
                                     .noise = 239,
                                     .amount = 1024,
                                     .position = 512});
    const auto lite = [](const char *name, const char *extension, int implementation, bool initData,
                         int amount) {
        addRow(name, TestDesign{.lite = true,
                                .implementation = implementation,
                                .initData = initData,
                                .extension = extension,
                                .device = "KR-H", // in the list
                                .noise = 70,      // rows of more than 64 bits
                                .amount = amount});
    };
    lite("lite", "keo", 0, false, 300);
    lite("lite, .zeo", "zeo", 0, false, 300);
    lite("lite, another implementation", "keo", 2, false, 256);
    lite("lite, data is there already", "keo", 0, true, 129);
    lite("lite, one sample", "keo", 0, false, 1);
}

/// Each window takes the first trigger that has enough samples before it. A lite core captures
/// round after round without a gap.
void tst_CaptureRoad::samplesAreTheStimulus()
{
    QFETCH(TestDesign, design);
    const QTemporaryDir directory;
    design.write(directory.path());
    qputenv("SIGNALSCOPE_BOARD", directory.filePath("board.json").toLocal8Bit());
    QProcess process;
    process.setWorkingDirectory(directory.path());
    process.start(KEO_BIN_DIR "/signalscope-capture",
                  QStringList{"--quiet", "--device", design.device, "--format", "csv"} +
                      (design.lite ? QStringList{"--auto", "2"} : QStringList()) +
                      QStringList{"design." + design.extension});
    QVERIFY(process.waitForFinished(120'000));
    QVERIFY2(process.exitCode() == 0, process.readAllStandardError());
    const QStringList files =
        QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    QCOMPARE(files.size(), design.lite ? 2 : design.windows);
    if (design.lite) // the rounds are numbered from the first one on
        QCOMPARE(files.first(), directory.filePath("design_1.csv"));
    qint64 earliest = 0; // sample at which the window may begin
    for (const QString &file : files) {
        const qint64 first =
            design.lite ? earliest
                        : design.firstTrigger(earliest + design.position) - design.position;
        compareExport(file, design, first);
        earliest = first + design.amount;
    }
}

KEO_TEST_MAIN(tst_CaptureRoad)
#include "tst_captureroad.moc"
