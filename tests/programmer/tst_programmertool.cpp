// The calls of the command-line programmer: what it is told, what it prints, how it fails.

#include "scripttool.h"

#include <programmer/devicedatabase.h>
#include <programmer/programmertool.h>
#include <support/testmain.h>

#include <QSignalSpy>

#include <csignal>

using namespace KEO;

class tst_ProgrammerTool : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void downloadArgumentsOfAChain_data();
    void downloadArgumentsOfAChain();
    void scans_data();
    void scans();
    void outputInPieces_data();
    void outputInPieces();
    void endlessOutputIsBounded();
    void faults_data();
    void faults();
    void stopEndsTheChildren();
};

void tst_ProgrammerTool::downloadArgumentsOfAChain_data()
{
    QTest::addColumn<int>("devices");
    QTest::addColumn<int>("target");
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("arguments");
    const QString start = "--device KR-C --fsFile /a b/x.fs --operation_index 4 --cable-index 2";
    QTest::newRow("alone") << 1 << 0 << 0 << start;
    QTest::newRow("second of two")
        << 2 << 1 << 0 << start + " --chain_size 2 --chain_index 1 --chain_ir 8,9";
    QTest::newRow("first of three, channel")
        << 3 << 0 << 1 << start + " --channel 1 --chain_size 3 --chain_index 0 --chain_ir 8,9,10";
}

void tst_ProgrammerTool::downloadArgumentsOfAChain()
{
    QFETCH(int, devices);
    QFETCH(int, target);
    QFETCH(int, channel);
    QFETCH(QString, arguments);
    const DeviceOperation operation{"Write", {}, 4, {}};
    DeviceChain chain(devices);
    for (int i = 0; i < devices; ++i)
        chain[i].irCode = 8 + i;
    chain[target].enabled = true;
    chain[target].device = "KR-C";
    chain[target].fsFile = "/a b/x.fs";
    chain[target].operation = &operation;
    const QStringList list = downloadArguments(chain, 2, channel);
    QCOMPARE(list.join(' '), arguments);
    QVERIFY(list.contains("/a b/x.fs"));
}

void tst_ProgrammerTool::scans_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("devices"); // family,name,code;
    QTest::addColumn<QStringList>("messages");
    const QStringList one{"  Device Info:", "  Family: KR", "  Name: KR-C ", "  ID: 0x1100381B"};
    QTest::newRow("nothing") << QStringList{"", " "} << "" << QStringList();
    QTest::newRow("between messages")
        << QStringList{" Scan  chain", one[0], one[1], one[2], one[3], "", "done"}
        << "KR,KR-C,1100381B;" << QStringList{"Scan chain", "done"};
    QTest::newRow("two, in another order") << one + QStringList{one[0], one[3], one[2], one[1]}
                                           << "KR,KR-C,1100381B;KR,KR-C,1100381B;" << QStringList();
    QTest::newRow("cut off") << one + one.mid(0, 3) << "KR,KR-C,1100381B;KR,KR-C,;"
                             << QStringList();
    QTest::newRow("a line too few") << QStringList{one[0], one[1], one[2], one[0], one[3]}
                                    << "KR,KR-C,;" << QStringList("ID: 0x1100381B");
}

void tst_ProgrammerTool::scans()
{
    QFETCH(QStringList, lines);
    const ScanReport report = parseScan(lines);
    QString devices;
    for (const ScannedDevice &device : report.devices)
        devices += device.family + ',' + device.name + ',' + device.idCode + ';';
    QTEST(devices, "devices");
    QTEST(report.messages, "messages");
}

void tst_ProgrammerTool::outputInPieces_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QStringList>("lines"); // of a download
    QTest::addColumn<bool>("error");
    QTest::newRow("line ends of both kinds")
        << QByteArray("a\r\n\r\nb\nc") << QStringList{"a", "", "b", "c"} << false;
    QTest::newRow("a bar that grows") << QByteArray("go\r[#  ] 9%\r[## ] 50%\r[###] 100%\r\nok\n")
                                      << QStringList{"go", "ok"} << false;
    QTest::newRow("bars as lines") << QByteArray("[#   ]\n[###]\n[## ]\n[#  #]\n[]\n")
                                   << QStringList{"[#   ]", "[#  #]", "[]"} << false;
    QTest::newRow("cut off in a bar")
        << QByteArray("go\n[#  ]\r[##") << QStringList{"go", "[##"} << false;
    QTest::newRow("text before a return")
        << QByteArray("one\rtwo\r\r\nthree\r") << QStringList{"one", "two", "three"} << false;
    QTest::newRow("error beside a bar")
        << QByteArray("[###] Error 7\n") << QStringList("[###] Error 7") << true;
    QTest::newRow("small error") << QByteArray("an error") << QStringList("an error") << true;
    QTest::newRow("no error") << QByteArray("Er\nror, terror, ERROR")
                              << QStringList{"Er", "ror, terror, ERROR"}
                              << true; // "terror" holds the word
    QTest::newRow("error in what a bar overwrites")
        << QByteArray("[## ] error\r[###]\n") << QStringList("[## ] error") << true;
}

void tst_ProgrammerTool::outputInPieces()
{
    QFETCH(QByteArray, output);
    for (const qsizetype size : {qsizetype(1), qsizetype(3), output.size()}) {
        ToolOutput tool;
        for (qsizetype at = 0; at < output.size(); at += size)
            tool.append(QByteArrayView(output).sliced(at, qMin(size, output.size() - at)));
        tool.finish();
        QTEST(withoutProgressBars(tool.lines()), "lines");
        QTEST(tool.saysError(), "error");
    }
}

void tst_ProgrammerTool::endlessOutputIsBounded()
{
    ToolOutput tool;
    for (int i = 0; i < 100000; ++i)
        tool.append(QByteArray("line ") + QByteArray::number(i) + '\n');
    QVERIFY(tool.lines().size() < 2 * ToolOutput::kMaxLines);
    QCOMPARE(tool.lines().last(), "line 99999");
    QCOMPARE(tool.droppedLines() + tool.lines().size(), 100000);
    const QByteArray piece(1000, 'x');
    for (int i = 0; i < 10000; ++i)
        tool.append(piece);
    tool.append("error");
    tool.finish();
    QCOMPARE(tool.lines().last().size(), ToolOutput::kMaxLine);
    QVERIFY(tool.saysError());
}

void tst_ProgrammerTool::faults_data()
{
    QTest::addColumn<QByteArray>("script"); // none if empty
    QTest::addColumn<QString>("end");       // exit code, or "failed"
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("well") << QByteArray("echo $1; echo on stderr >&2; printf cut") << "0"
                          << QStringList{"--scan", "cut"};
    QTest::newRow("bad exit") << QByteArray("echo a; exit 3") << "3" << QStringList("a");
    QTest::newRow("killed") << QByteArray("kill -9 $$") << "failed" << QStringList();
    QTest::newRow("never there") << QByteArray() << "failed" << QStringList();
}

void tst_ProgrammerTool::faults()
{
    QFETCH(QByteArray, script);
    QTemporaryDir directory;
    const QString path = directory.filePath("tool with blank");
    if (!script.isEmpty())
        writeTool(path, script);
    ProgrammerTool tool;
    QStringList ends;
    connect(&tool, &ProgrammerTool::finished, this, [&](int code) {
        QVERIFY(!tool.isRunning());
        ends.append(QString::number(code));
    });
    connect(&tool, &ProgrammerTool::failed, this, [&] {
        QVERIFY(!tool.isRunning());
        ends.append("failed");
    });
    for (int run = 1; run <= 2; ++run) { // the second as the first
        tool.start(path, scanArguments());
        QTRY_COMPARE(ends.size(), run);
        QTest::qWait(20); // for a second end
        QCOMPARE(ends.size(), run);
        QTEST(ends.last(), "end");
        QTEST(tool.output().lines(), "lines");
    }
}

void tst_ProgrammerTool::stopEndsTheChildren()
{
    QTemporaryDir directory;
    const QString path =
        writeTool(directory.filePath("tool"), "sleep 100 & echo $!; trap '' TERM; wait");
    for (const bool byStop : {true, false}) {
        auto tool = std::make_unique<ProgrammerTool>();
        QSignalSpy finished(tool.get(), &ProgrammerTool::finished);
        QSignalSpy failed(tool.get(), &ProgrammerTool::failed);
        tool->start(path, {});
        QTRY_VERIFY(!tool->output().lines().isEmpty());
        const int child = tool->output().lines().first().toInt();
        QCOMPARE(::kill(child, 0), 0);
        if (byStop)
            tool->stop();
        QCOMPARE(finished.size() + failed.size(), 0);
        tool.reset();
        // An orphan may wait a moment for somebody to collect it.
        QTRY_VERIFY(::kill(child, 0) != 0 || [&] {
            QFile status(QStringLiteral("/proc/%1/stat").arg(child));
            return status.open(QIODevice::ReadOnly) && status.readAll().contains(") Z");
        }());
    }
}

KEO_TEST_MAIN(tst_ProgrammerTool)
#include "tst_programmertool.moc"
