#include <support/testmain.h>

#include <stimulus.h>
#include <vcdreader.h>

#include <QBuffer>

using namespace Sim;

namespace {

/// Rows of the nets sampled on the clock "clk", one text of 0 and 1 a row; or "error: ...".
QStringList sampled(const QByteArray &dump, const QStringList &nets, bool fallingEdge = false,
                    const SamplingLimits &limits = {})
{
    QBuffer buffer;
    buffer.setData(dump);
    buffer.open(QIODevice::ReadOnly);
    const auto result = sampleNets(buffer, {{QStringLiteral("clk"), fallingEdge, {nets}}}, limits);
    if (!result)
        return {QStringLiteral("error: ") + result.error()};
    QStringList rows;
    const BitMatrix &table = result->first().tables.first();
    for (qint64 row = 0; row < table.rows(); ++row) {
        QString text;
        for (int column = 0; column < table.width(); ++column)
            text.append(table.bit(row, column) ? u'1' : u'0');
        rows.append(text);
    }
    return rows + result->first().missing;
}

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
}

const QByteArray kHeader = "$timescale 1ns $end\n$scope module top $end\n"
                           "$var wire 1 ! clk $end\n$var wire 4 \" data [3:0] $end\n"
                           "$scope module sub $end\n$var reg 1 # q $end\n$var wire 1 ! clk $end\n"
                           "$upscope $end\n$upscope $end\n$enddefinitions $end\n";

} // namespace

class tst_SimStimulus : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void rows_data();
    void rows();
    void names_data();
    void names();
    void hostile_data();
    void hostile();
    void limits();
    void example();
};

void tst_SimStimulus::rows_data()
{
    QTest::addColumn<QByteArray>("changes");
    QTest::addColumn<bool>("fallingEdge");
    QTest::addColumn<QStringList>("expected"); // data[3], data[0], q

    QTest::newRow("value just before the edge")
        << QByteArray("#0 0! b0 \" 0#\n#5 1! b1001 \" 1#\n#10 0!\n#15 1! b0 \"\n#20 0!\n") << false
        << words("000 111");
    QTest::newRow("falling edge")
        << QByteArray("#0 0! b0 \" 0#\n#5 1! b1001 \"\n#10 0! 1#\n#15 1! b0 \"\n#20 0!\n") << true
        << words("110 001");
    QTest::newRow("change told before the clock at the same time")
        << QByteArray("#0 0! b0 \" 0#\n#5 1# 1!\n#10 0!\n#15 1!\n") << false << words("000 001");
    QTest::newRow("first value is no edge")
        << QByteArray("$dumpvars 1! b1111 \" 1# $end\n#5 0!\n#10 1!\n") << false << words("111");
    QTest::newRow("clock without net change between")
        << QByteArray("#0 0! 1# b0 \"\n#1 1!\n#2 0!\n#3 1!\n") << false << words("001 001");
    QTest::newRow("X and Z are 0, also in front of short values")
        << QByteArray("#0 0! bx \" z#\n#1 1!\n#2 0! bx1 \" 1#\n#3 1!\n#4 0! bz00Z \" x#\n#5 1!\n")
        << false << words("000 011 000");
    QTest::newRow("short value is filled with 0, long value is cut")
        << QByteArray("#0 0! b1 \" 0#\n#1 1!\n#2 0! b0101000 \"\n#3 1!\n") << false
        << words("010 100");
    QTest::newRow("X to 1 is an edge")
        << QByteArray("#0 x! b0 \" 1#\n#1 1!\n") << false << words("001");
    QTest::newRow("glitch within one time is none")
        << QByteArray("#0 0! b0 \" 1#\n#1 1! 0!\n#2 1!\n") << false << words("001");
    QTest::newRow("upper case, tabs, carriage returns, comments, reals, strings, dump off and on")
        << QByteArray("#0\r\n0!\r\nB1001\t\"\r\n0#\r\n$comment clk 1! $end r1.5 % sIDLE &\r\n"
                      "#1 1!\n#2 0! $dumpoff x# bX \" $end\n#3 $dumpon 1# b1 \" $end\n#4 1!\n")
        << false << words("110 011");
    QTest::newRow("VHDL levels") << QByteArray("#0 L! bHLLU \" H#\n#1 H!\n") << false
                                 << words("101");
    QTest::newRow("cut off in the middle")
        << QByteArray("#0 0! b1 \" 1#\n#1 1!\n#2 0! b11") << false << words("011");
    QTest::newRow("same time told twice")
        << QByteArray("#0 0! b0 \" 0#\n#1 1#\n#1 1!\n#2 0!\n#3 1!\n") << false << words("000 001");
}

void tst_SimStimulus::rows()
{
    QFETCH(QByteArray, changes);
    QFETCH(bool, fallingEdge);
    QTEST(sampled(kHeader + changes, {"data[3]", "data[0]", "q"}, fallingEdge), "expected");
}

void tst_SimStimulus::names_data()
{
    QTest::addColumn<QByteArray>("nets");
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("expected"); // a is 1, b is 0, v is 0010 and w is 1
    const QByteArray deep = "$scope module tb $end $scope module u1 $end $var wire 1 b x $end "
                            "$upscope $end $var wire 1 a x $end $upscope $end";
    QTest::newRow("nearest to the top") << deep << "x"
                                        << "1";
    QTest::newRow("by a longer end") << deep << "u1.x"
                                     << "0";
    QTest::newRow("by the whole path, slashes") << deep << "/tb/u1/x"
                                                << "0";
    QTest::newRow("end in the middle of a name") << deep << "1.x"
                                                 << "the net 1.x is not in the dump";
    QTest::newRow("case counts") << deep << "X"
                                 << "the net X is not in the dump";

    QTest::newRow("downward range") << QByteArray("$var wire 4 v n [3:0] $end") << "n[1]"
                                    << "1";
    QTest::newRow("upward range") << QByteArray("$var wire 4 v n [0:3] $end") << "n[2]"
                                  << "1";
    QTest::newRow("range not at 0") << QByteArray("$var wire 4 v n [11:8] $end") << "n[9]"
                                    << "1";
    QTest::newRow("negative range") << QByteArray("$var wire 4 v n [1:-2] $end") << "n[-1]"
                                    << "1";
    QTest::newRow("range without a blank") << QByteArray("$var wire 4 v n[3:0] $end") << "n[1]"
                                           << "1";
    QTest::newRow("no range told") << QByteArray("$var integer 4 v n $end") << "n[1]"
                                   << "1";
    QTest::newRow("bits one by one")
        << QByteArray("$var wire 1 b n [1] $end $var wire 1 a n [0] $end") << "n[0]"
        << "1";
    QTest::newRow("word of a memory") << QByteArray("$var reg 4 v m[5][3:0] $end") << "m[5][1]"
                                      << "1";
    QTest::newRow("escaped name") << QByteArray("$var wire 1 a \\n-1 $end") << "n-1"
                                  << "1";
    QTest::newRow("one bit with range") << QByteArray("$var wire 1 a n [0:0] $end") << "n"
                                        << "1";
    QTest::newRow("bit out of range") << QByteArray("$var wire 4 v n [3:0] $end") << "n[4]"
                                      << "the net n[4] has no such bit in the dump";
    QTest::newRow("vector without bit") << QByteArray("$var wire 4 v n [3:0] $end") << "n"
                                        << "the net n is a vector of 4 bits";
    QTest::newRow("bit of a scalar") << QByteArray("$var wire 1 a n $end") << "n[0]"
                                     << "the net n[0] has no such bit in the dump";
    QTest::newRow("two names of one wire")
        << QByteArray("$var wire 1 a m $end $var port 1 a n $end") << "n"
        << "1";
}

void tst_SimStimulus::names()
{
    QFETCH(QByteArray, nets);
    QFETCH(QString, wanted);
    QFETCH(QString, expected);
    const QByteArray dump = nets + " $var wire 1 ! clk $end $enddefinitions $end\n"
                                   "#0 0! 1a 0b b0010 v\n#1 1!\n";
    const QStringList result = sampled(dump, {wanted});
    if (expected.size() == 1)
        QCOMPARE(result, QStringList{expected});
    else
        QCOMPARE(result, (QStringList{QStringLiteral("0"), expected})); // reads as 0, and says so
}

void tst_SimStimulus::hostile_data()
{
    QTest::addColumn<QByteArray>("dump");
    QTest::addColumn<QString>("error");
    QTest::newRow("empty") << QByteArray() << "line 1: the file ends before";
    QTest::newRow("no dump") << QByteArray("\x7f"
                                           "ELF\0\1\2",
                                           7)
                             << "line 1: \"\x7f"
                                "ELF";
    QTest::newRow("no clock") << QByteArray("$enddefinitions $end\n#0\n")
                              << "the clock can't be found";
    QTest::newRow("clock stands still") << kHeader + "#0 0!\n#9 0!\n"
                                        << "has no rising edge";
    QTest::newRow("time backwards") << kHeader + "#5 0!\n#4 1!\n"
                                    << "line 12: time runs backwards";
    QTest::newRow("time is no number") << kHeader + "#0\n#x\n"
                                       << "no time";
    QTest::newRow("no value change") << kHeader + "#0 0!\n?1\n"
                                     << "line 12: ";
    QTest::newRow("width 0") << QByteArray("$var wire 0 ! clk $end") << "width";
    QTest::newRow("huge width") << QByteArray("$var wire 4000000000 ! clk $end") << "width";
    QTest::newRow("var without name") << QByteArray("$var wire 1 ! $end") << "a $var needs";
    QTest::newRow("var without end")
        << QByteArray("$var wire 1 ! ") + QByteArray("a ").repeated(50) << "too many words";
    QTest::newRow("upscope too often") << QByteArray("$upscope $end") << "$upscope";
    QTest::newRow("scopes for ever")
        << QByteArray("$scope module a $end ").repeated(100000) << "nested too deep";
    QTest::newRow("word for ever")
        << kHeader + "#0 b" + QByteArray(3'000'000, '1') << "longer than";
}

void tst_SimStimulus::hostile()
{
    QFETCH(QByteArray, dump);
    QFETCH(QString, error);
    const QStringList result = sampled(dump, {QStringLiteral("q")});
    QCOMPARE(result.size(), 1);
    QVERIFY2(result.first().startsWith(QStringLiteral("error: ")) && result.first().contains(error),
             qPrintable(result.first()));
}

void tst_SimStimulus::limits()
{
    QByteArray dump = kHeader + "#0 0! 1#\n";
    for (int i = 1; i < 200; ++i)
        dump += "#" + QByteArray::number(i) + (i % 2 ? " 1!\n" : " 0!\n");
    SamplingLimits few;
    few.samples = 7;
    QCOMPARE(sampled(dump, {QStringLiteral("q")}, false, few).size(), 7);
    SamplingLimits narrow;
    narrow.bits = 650;
    QCOMPARE(sampled(dump, {QStringLiteral("q")}, false, narrow).size(), 10);
}

/// The dump of the example as Icarus Verilog wrote it: the text on the line is found in the bytes
/// that the receiver takes, and the overrun happens once.
void tst_SimStimulus::example()
{
    QFile file(QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo/uart_fifo.vcd"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QStringList nets{QStringLiteral("dut/rx_valid"), QStringLiteral("dut/overrun")};
    for (int bit = 7; bit >= 0; --bit)
        nets.append(QStringLiteral("dut/rx_data[%1]").arg(bit));
    const QStringList rows = sampled(file.readAll(), nets);
    QByteArray text;
    int overruns = 0;
    for (const QString &row : rows) {
        if (row.startsWith(u'1'))
            text.append(char(row.mid(2).toInt(nullptr, 2)));
        overruns += row.at(1) == u'1';
    }
    QCOMPARE(text, QByteArray("HELLO FPGA\r\nHELLO FIFO\r\nABCDEFGHIJ\r\n12345HELLO FPGA\r\n"
                              "0123456789\r\n"));
    QCOMPARE(overruns, 1);
}

KEO_TEST_MAIN(tst_SimStimulus)
#include "tst_sim_stimulus.moc"
