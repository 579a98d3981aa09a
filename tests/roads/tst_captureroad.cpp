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
        for (const Shape &shape : shapes) { // each on two of the four kinds
            const QString device = next & 1 ? listed : other;
            const QString extension = next & 2 ? "zeo" : "keo";
            ++next;
            row(QStringLiteral("%1, .%2, %3, %4 windows of %5 samples, %6 before the trigger")
                    .arg(dynamic ? "dynamic" : "static", extension, device)
                    .arg(shape.windows)
                    .arg(shape.amount)
                    .arg(shape.position),
                {.dynamic = dynamic,
                 .extension = extension,
                 .device = device,
                 .noise = shape.noise,
                 .storageDepth = shape.depth,
                 .windows = shape.windows,
                 .amount = shape.amount,
                 .position = shape.position});
        }
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
