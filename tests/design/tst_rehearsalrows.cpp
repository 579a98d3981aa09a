// What the user reads of a rehearsal: names, levels and remarks.

#include <config/coreconfig.h>
#include <design/rehearsalrows.h>
#include <support/testmain.h>
#include <wave_data/windowcontents.h>

using namespace KEO;
using namespace WaveMonitor;

class tst_RehearsalRows : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void tellsWhatIsKnown_data();
    void tellsWhatIsKnown();
};

void tst_RehearsalRows::tellsWhatIsKnown_data()
{
    addColumns<QStringList, QString, QStringList, QString>(
        {"captured", "checked", "rows", "remark"});
    // Two samples: a is 0 1, b is 1 1. M0 looks at a, M1 at b, twice.
    addRow("all captured", QStringList{"a", "b"}, QString("both"),
           QStringList{"Trigger 01", "exp0: M0&M1 01", "M0 == 1 01", "M1 == 1, 2 times ?1"},
           QString());
    addRow("a port is missing", QStringList{"a"}, QString("both"),
           QStringList{"Trigger 0?", "exp0: M0&M1 0?", "M0 == 1 01", "M1 == 1, 2 times ??"},
           QString("Not captured: Trigger 1."));
    addRow("none captured", QStringList{"c"}, QString("both"),
           QStringList{"Trigger ??", "exp0: M0&M1 ??", "M0 == 1 ??", "M1 == 1, 2 times ??"},
           QString("No signal that the match units compare was captured."));
    addRow("no expression", QStringList{"a", "b"}, QString("none"),
           QStringList{"Trigger 11", "M0 == 1 01", "M1 == 1, 2 times ?1"},
           QString("No expression is checked, so any sample triggers."));
}

void tst_RehearsalRows::tellsWhatIsKnown()
{
    QFETCH(QStringList, captured);
    QFETCH(QString, checked);
    QFETCH(QStringList, rows);
    QFETCH(QString, remark);
    CoreConfig core;
    core.dynamic = 1;
    core.expressions = {QStringLiteral("M0&M1")};
    core.expressionEnabled = {checked == "both"};
    for (int port = 0; port < 2; ++port) {
        core.triggers[size_t(port)]->signals.append({port == 0 ? "a" : "b", {}, {}});
        MatchUnit &unit = *core.matchUnits[size_t(port)];
        unit.enabled = true;
        unit.trigger = core.triggers[size_t(port)].get();
        unit.value0 = QStringLiteral("1");
    }
    core.matchUnits[1]->counter_enable = true;
    core.matchUnits[1]->counter = 2;
    WindowContents contents;
    for (const QString &name : captured) {
        QBitArray samples(2, true);
        samples.setBit(0, name != "a");
        contents.addSignal({int(contents.signalMap().size()), name, {}, samples});
    }

    const PortSamples ports = portSamplesOf(core, contents);
    const AidRows shown = rehearsalRows(core, ports, rehearse(core, ports));
    QStringList texts;
    for (const AidRow &row : shown.rows) {
        texts.append(row.name + u' ');
        for (int sample = 0; sample < 2; ++sample) {
            const AidLevel level = aidLevel(row, sample);
            texts.last() += level == AidLevel::Unknown ? u'?'
                            : level == AidLevel::Holds ? u'1'
                                                       : u'0';
        }
    }
    QCOMPARE(texts, rows);
    QCOMPARE(shown.remark, remark);
    QCOMPARE(shown.hitRow, 0);
}

KEO_TEST_MAIN(tst_RehearsalRows)
#include "tst_rehearsalrows.moc"
