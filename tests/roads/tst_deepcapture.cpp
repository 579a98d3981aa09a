#include "captureroad.h"

#include <support/testmain.h>

/// The road from a description to its samples, for the deepest core.
class tst_DeepCapture : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void samplesAreTheStimulus();
};

void tst_DeepCapture::samplesAreTheStimulus()
{
    compareWithStimulus({.dynamic = true,
                         .device = "KR-R",
                         .storageDepth = 65536,
                         .amount = 65536,
                         .position = 30000});
}

KEO_TEST_MAIN(tst_DeepCapture)
#include "tst_deepcapture.moc"
