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
};

void tst_SimStimulus::rows_data()
{
    // expected: data[3], data[0], q
    const auto table =
        addColumns<QByteArray, bool, QString>({"changes", "fallingEdge", "expected"});

    const auto row = [&](const char *name, const QByteArray &changes, const char *expected,
                         bool fallingEdge = false) { table(name, changes, fallingEdge, expected); };
    row("value just before the edge",
        "#0 0! b0 \" 0#\n#5 1! b1001 \" 1#\n#10 0!\n#15 1! b0 \"\n#20 0!\n", "000 111");
    row("falling edge", "#0 0! b0 \" 0#\n#5 1! b1001 \"\n#10 0! 1#\n#15 1! b0 \"\n#20 0!\n",
        "110 001", true);
    row("change told before the clock at the same time",
        "#0 0! b0 \" 0#\n#5 1# 1!\n#10 0!\n#15 1!\n", "000 001");
    row("same time told twice", "#0 0! b0 \" 0#\n#1 1#\n#1 1!\n#2 0!\n#3 1!\n", "000 001");
    row("first value is no edge", "$dumpvars 1! b1111 \" 1# $end\n#5 0!\n#10 1!\n", "111");
    row("X and Z are 0, also in front of short values",
        "#0 0! bx \" z#\n#1 1!\n#2 0! bx1 \" 1#\n#3 1!\n#4 0! bz00Z \" x#\n#5 1!\n", "000 011 000");
    row("short value is filled with 0, long value is cut",
        "#0 0! b1 \" 0#\n#1 1!\n#2 0! b0101000 \"\n#3 1!\n", "010 100");
    row("X to 1 is an edge", "#0 x! b0 \" 1#\n#1 1!\n", "001");
    row("glitch within one time is none", "#0 0! b0 \" 1#\n#1 1! 0!\n#2 1!\n", "001");
    row("upper case, tabs, carriage returns, comments, reals, strings, dump off and on",
        "#0\r\n0!\r\nB1001\t\"\r\n0#\r\n$comment clk 1! $end r1.5 % sIDLE &\r\n"
        "#1 1!\n#2 0! $dumpoff x# bX \" $end\n#3 $dumpon 1# b1 \" $end\n#4 1!\n",
        "110 011");
    row("VHDL levels", "#0 L! bHLLU \" H#\n#1 H!\n", "101");
    row("cut off in the middle", "#0 0! b1 \" 1#\n#1 1!\n#2 0! b11", "011");
}

void tst_SimStimulus::rows()
{
    QFETCH(QByteArray, changes);
    QFETCH(bool, fallingEdge);
    const QStringList rows = sampled(kHeader + changes, {"data[3]", "data[0]", "q"}, fallingEdge);
    QTEST(rows.join(u' '), "expected");
}

void tst_SimStimulus::names_data()
{
    // expected: a is 1, b is 0, v is 0010 and w is 1
    const auto table = addColumns<QByteArray, QString, QString>({"nets", "wanted", "expected"});

    const auto row = [&](const char *name, const QByteArray &nets, const char *wanted,
                         const char *expected = "1") { table(name, nets, wanted, expected); };
    const QByteArray deep = "$scope module tb $end $scope module u1 $end $var wire 1 b x $end "
                            "$upscope $end $var wire 1 a x $end $upscope $end";
    row("nearest to the top", deep, "x");
    row("by a longer end", deep, "u1.x", "0");
    row("by the whole path, slashes", deep, "/tb/u1/x", "0");
    row("end in the middle of a name", deep, "1.x", "the net 1.x is not in the dump");
    row("case counts", deep, "X", "the net X is not in the dump");

    row("upward range", "$var wire 4 v n [0:3] $end", "n[2]");
    row("range not at 0", "$var wire 4 v n [11:8] $end", "n[9]");
    row("negative range", "$var wire 4 v n [1:-2] $end", "n[-1]");
    row("range without a blank", "$var wire 4 v n[3:0] $end", "n[1]");
    row("no range told", "$var integer 4 v n $end", "n[1]");
    row("bits one by one", "$var wire 1 b n [1] $end $var wire 1 a n [0] $end", "n[0]");
    row("word of a memory", "$var reg 4 v m[5][3:0] $end", "m[5][1]");
    row("escaped name", "$var wire 1 a \\n-1 $end", "n-1");
    row("one bit with range", "$var wire 1 a n [0:0] $end", "n");
    row("two names of one wire", "$var wire 1 a m $end $var port 1 a n $end", "n");
    const char *noBit = "the net n[4] has no such bit in the dump";
    row("bit out of range", "$var wire 4 v n [3:0] $end", "n[4]", noBit);
    row("bit of a scalar", "$var wire 1 a n $end", "n[4]", noBit);
    row("vector", "$var wire 4 v n [3:0] $end", "n", "the net n is a vector of 4 bits");
}

void tst_SimStimulus::names()
{
    QFETCH(QByteArray, nets);
    QFETCH(QString, wanted);
    QFETCH(QString, expected);
    const QStringList result = sampled(nets + " $var wire 1 ! clk $end $enddefinitions $end\n"
                                              "#0 0! 1a 0b b0010 v\n#1 1!\n",
                                       {wanted});
    if (expected.size() == 1)
        QCOMPARE(result, QStringList{expected});
    else
        QCOMPARE(result, (QStringList{QStringLiteral("0"), expected})); // reads as 0, and says so
}

void tst_SimStimulus::hostile_data()
{
    const auto row = addColumns<QByteArray, QString>({"dump", "error"});
    row("empty", "", "line 1: the file ends before");
    row("no dump", QByteArray("ELF\0\1\2", 6), "line 1: \"ELF");
    row("no clock", "$enddefinitions $end\n#0\n", "the clock can't be found");
    row("clock stands still", kHeader + "#0 0!\n#9 0!\n", "has no rising edge");
    row("time backwards", kHeader + "#5 0!\n#4 1!\n", "line 12: time runs backwards");
    row("time is no number", kHeader + "#0\n#x\n", "no time");
    row("no value change", kHeader + "#0 0!\n?1\n", "line 12: ");
    row("width 0", "$var wire 0 ! clk $end", "width");
    row("huge width", "$var wire 4000000000 ! clk $end", "width");
    row("var without name", "$var wire 1 ! $end", "a $var needs");
    row("var without end", "$var wire 1 ! " + QByteArray("a ").repeated(50), "too many words");
    row("upscope too often", "$upscope $end", "$upscope");
    row("scopes for ever", QByteArray("$scope module a $end ").repeated(100000), "too deep");
    row("word for ever", kHeader + "#0 b" + QByteArray(3'000'000, '1'), "longer than");
}

void tst_SimStimulus::hostile()
{
    QFETCH(QByteArray, dump);
    QFETCH(QString, error);
    const QString result = sampled(dump, {QStringLiteral("q")}).join(u' ');
    QVERIFY2(result.startsWith(QStringLiteral("error: ")) && result.contains(error),
             qPrintable(result));
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

KEO_TEST_MAIN(tst_SimStimulus)
#include "tst_sim_stimulus.moc"
