// What the tests with a window don't reach: saving, and runs that already show waves.

#include <project/runcontrols.h>
#include <support/testmain.h>

using namespace KEO;

class tst_RunControls : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void wavesAreSavedWhileIdle();
};

void tst_RunControls::wavesAreSavedWhileIdle()
{
    const RunControls oneCore = runControls({false, true, true, -1, true});
    QVERIFY(oneCore == (RunControls{true, true, true, false, false, true, true}));
    const RunControls noCore = runControls({false, false, false, -1, true});
    QVERIFY(noCore == (RunControls{true, false, false, false, false, true, true}));
    const RunControls firstWindow = runControls({true, true, true, -1, true});
    QVERIFY(firstWindow == (RunControls{false, false, false, true, true, false, false}));
    const RunControls autoRun = runControls({true, true, true, 5, true});
    QVERIFY(autoRun == (RunControls{false, false, false, true, false, false, false}));
}

KEO_TEST_MAIN(tst_RunControls)
#include "tst_runcontrols.moc"
