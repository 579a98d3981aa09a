#include <capture/randomtrigger.h>
#include <config/standardconfig.h>
#include <support/files.h>
#include <support/testmain.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>

namespace {

constexpr int kLength = 1499; // samples of the stimulus

/// The description, the stimulus and the board in \a directory.
void putBoard(RandomTrigger &design, const QString &directory)
{
    putFile(directory + "/design.zeo", KEO::saveStandardConfig(design.cores).toLatin1());
    QString vcd = "$timescale 1ns $end\n$scope module top $end\n$var wire 1 ! clk $end\n";
    for (int net = 0; net < int(design.nets.size()); ++net)
        vcd += QStringLiteral("$var wire 1 v%1 %2 $end\n")
                   .arg(QString::number(net), RandomTrigger::netName(net));
    vcd += "$upscope $end\n$enddefinitions $end\n";
    for (int sample = 0; sample < kLength; ++sample) {
        vcd += QStringLiteral("#%1\n0!\n").arg(10 * sample);
        for (size_t net = 0; net < design.nets.size(); ++net) {
            const bool level = design.nets[net].testBit(sample);
            if (sample == 0 || level != design.nets[net].testBit(sample - 1))
                vcd += QStringLiteral("%1v%2\n").arg(int(level)).arg(net);
        }
        vcd += QStringLiteral("#%1\n1!\n").arg(10 * sample + 5);
    }
    putFile(directory + "/design.vcd", vcd.toUtf8());
    putFile(directory + "/board.json", R"({ "samples_per_second": 2000000, "cables": { "keo1": {
        "chain": [ { "model": "KX-1", "idcode": "0x1100381B", "description": "design.zeo",
                     "stimulus": "design.vcd", "programmed": true } ] } } })");
}

/// Whether runs of samples, as a rehearsal gives them, hold \a sample.
bool holds(const QJsonValue &runs, int sample)
{
    const QJsonArray all = runs.toArray();
    return std::any_of(all.begin(), all.end(), [sample](const QJsonValue &run) {
        return run["first"].toInt() <= sample && sample <= run["last"].toInt();
    });
}

} // namespace

/// The road from a random set-up to a trigger of the simulated board, and back through the saved
/// capture to a rehearsal of the set-up: the trigger's sample can't be one that does not trigger.
class tst_RehearsalRoad : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void triggersWereNoMisses();

private:
    QByteArray run(const QStringList &arguments, int &status) const;

    QTemporaryDir m_directory;
};

QByteArray tst_RehearsalRoad::run(const QStringList &arguments, int &status) const
{
    QProcess process;
    process.setWorkingDirectory(m_directory.path());
    process.start(KEO_BIN_DIR "/signalscope-capture", arguments);
    status = process.waitForFinished(60'000) ? process.exitCode() : -1;
    return process.readAllStandardOutput();
}

void tst_RehearsalRoad::triggersWereNoMisses()
{
    bool isNumber = false;
    const int asked = qEnvironmentVariableIntValue("SIGNALSCOPE_REHEARSAL_SEEDS", &isNumber);
    const int seeds = isNumber ? asked : 8;
    qputenv("SIGNALSCOPE_BOARD", m_directory.filePath("board.json").toLocal8Bit());
    int triggered = 0;
    int windows = 0;
    int known = 0;
    for (int seed = 1; seed <= seeds; ++seed) {
        QRandomGenerator random{quint32(seed)};
        RandomTrigger design(random, kLength);
        putBoard(design, m_directory.path());
        const auto fail = [seed](const QByteArray &text) {
            return qPrintable(QStringLiteral("seed %1: %2").arg(seed).arg(QString::fromUtf8(text)));
        };
        int status = 0;
        const QByteArray saved = run({"--device", "KX-1", "--quiet", "--timeout", "3", "--save",
                                      "run.analyzer_prj", "design.zeo"},
                                     status);
        if (status == 4) // nothing triggers
            continue;
        QVERIFY2(status == 0, fail(saved));
        ++triggered;
        const QByteArray rehearsed = run({"--rehearse", "run.analyzer_prj", "--json"}, status);
        QVERIFY2(status == 0 || status == 1, fail(rehearsed));
        const QJsonArray found = QJsonDocument::fromJson(rehearsed)["windows"].toArray();
        QCOMPARE(found.size(), design.core().window_num);
        for (const QJsonValue window : found) {
            const int trigger = window["trigger_position"].toInt(-1);
            QCOMPARE(trigger, design.core().trigger_pos);
            const bool isHit = holds(window["hit_runs"], trigger);
            QVERIFY2(isHit || holds(window["unknown_runs"], trigger), fail(rehearsed));
            known += isHit;
            ++windows;
        }
    }
    qInfo("%d of %d set-ups triggered, %d of %d windows have their trigger as a hit", triggered,
          seeds, known, windows);
    QVERIFY(triggered > seeds / 2 && known > windows / 3);
}

KEO_TEST_MAIN(tst_RehearsalRoad)
#include "tst_rehearsalroad.moc"
