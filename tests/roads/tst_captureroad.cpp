#include "captureroad.h"

#include <support/testmain.h>

/// The road from a description to its samples, for all shapes of cores.
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
    const QString listed = "KR-R"; // a model with a rule of its own
    const QString other = "KX-1";
    const auto row = [](const QString &name, const TestDesign &design) {
        QTest::newRow(qPrintable(name)) << design;
    };
    for (const bool dynamic : {false, true}) {
        const QString kind = dynamic ? "dynamic, " : "static, ";
        for (const char *extension : {"keo", "zeo"}) {
            for (const QString &device : {listed, other})
                row(kind + extension + ", " + device,
                    {.dynamic = dynamic, .extension = extension, .device = device});
        }
        row(kind + "32 samples, position 0",
            {.dynamic = dynamic, .device = other, .amount = 32, .position = 0});
        row(kind + "32 samples, largest position", {.dynamic = dynamic,
                                                    .extension = "zeo",
                                                    .device = listed,
                                                    .amount = 32,
                                                    .position = 23});
        row(kind + "largest position on a listed model",
            {.dynamic = dynamic, .device = listed, .noise = 20, .amount = 1024, .position = 1015});
        row(kind + "position 0 on a listed model",
            {.dynamic = dynamic, .device = listed, .noise = 20, .amount = 512, .position = 0});
        row(kind + "three windows", {.dynamic = dynamic,
                                     .device = listed,
                                     .noise = 90,
                                     .storageDepth = 1024,
                                     .windows = 3,
                                     .position = 100});
        row(kind + "eight windows", {.dynamic = dynamic,
                                     .device = other,
                                     .noise = 0,
                                     .storageDepth = 1024,
                                     .windows = 8,
                                     .amount = 128,
                                     .position = 119});
    }
    row("255 signals", {.dynamic = true,
                        .extension = "zeo",
                        .device = other,
                        .noise = 239,
                        .amount = 1024,
                        .position = 512});
}

void tst_CaptureRoad::samplesAreTheStimulus()
{
    QFETCH(TestDesign, design);
    compareWithStimulus(design);
}

KEO_TEST_MAIN(tst_CaptureRoad)
#include "tst_captureroad.moc"
