// The calls of the command-line programmer: what it is told, what it prints, how it is ended.

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
    void scans();
    void outputInPieces_data();
    void outputInPieces();
    void endlessOutputIsBounded();
    void stopEndsTheChildren();
};

void tst_ProgrammerTool::scans()
{
    const QStringList one{"  Device Info:", "  Family: KR", "  Name: KR-C ", "  ID: 0x1100381B"};
    const auto check = [](const QStringList &lines, const QString &expected) {
        const ScanReport report = parseScan(lines);
        QStringList found;
        for (const ScannedDevice &device : report.devices)
            found += device.family + ',' + device.name + ',' + device.idCode;
        QCOMPARE((found + report.messages).join(u';'), expected);
    };
    check({"", " "}, "");
    check(QStringList{" Scan  chain"} + one + QStringList{"", "done"},
          "KR,KR-C,1100381B;Scan chain;done");
    check(one + QStringList{one[0], one[3], one[2], one[1]}, "KR,KR-C,1100381B;KR,KR-C,1100381B");
    check(one + one.first(3), "KR,KR-C,1100381B;KR,KR-C,");
    check({one[0], one[1], one[2], one[0], one[3]}, "KR,KR-C,;ID: 0x1100381B");
}

void tst_ProgrammerTool::outputInPieces_data()
{
    // lines: those of a download
    const auto row = addColumns<QByteArray, QStringList, bool>({"output", "lines", "error"});
    row("line ends of both kinds", "a\r\n\r\nb\nc", {"a", "", "b", "c"}, false);
    row("a bar that grows", "go\r[#  ] 9%\r[## ] 50%\r[###] 100%\r\nok\n", {"go", "ok"}, false);
    row("bars as lines", "[#   ]\n[###]\n[## ]\n[#  #]\n[]\n", {"[#   ]", "[#  #]", "[]"}, false);
    row("cut off in a bar", "go\n[#  ]\r[##", {"go", "[##"}, false);
    row("text before a return", "one\rtwo\r\r\nthree\r", {"one", "two", "three"}, false);
    row("error beside a bar", "[###] Error 7\n", {"[###] Error 7"}, true);
    row("small error", "an error", {"an error"}, true);
    row("no error", "Er\nror, terror, ERROR", {"Er", "ror, terror, ERROR"},
        true); // "terror" holds the word
    row("error in what a bar overwrites", "[## ] error\r[###]\n", {"[## ] error"}, true);
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
