// What the simulated board reads: board files, core descriptions, value change dumps.

#include <support/testmain.h>

#include <boardcheck.h>
#include <boardfile.h>
#include <description.h>
#include <stimulus.h>

#include <QBuffer>
#include <QTextStream>

using namespace Sim;

namespace {

/// A description with one core; \a attributes and \a inside complete its KoCore element.
QByteArray description(const QByteArray &attributes, const QByteArray &inside = {})
{
    return "<KEO_CONFIG><Version>3.0</Version><KoCore sample_clock=\"clk\" " + attributes + ">" +
           inside + "</KoCore><KEO_ID>77</KEO_ID></KEO_CONFIG>";
}

const QByteArray kDepth = "storage_depth=\"64\"";

/// Rows of the nets sampled on the clock "clk", one text of 0 and 1 a row, and what is missing; or
/// "error: ...".
QString sampled(const QByteArray &dump, const QStringList &nets, bool fallingEdge = false,
                const SamplingLimits &limits = {})
{
    QBuffer buffer;
    buffer.setData(dump);
    buffer.open(QIODevice::ReadOnly);
    const auto result = sampleNets(buffer, {{QStringLiteral("clk"), fallingEdge, {nets}}}, limits);
    if (!result)
        return QStringLiteral("error: ") + result.error();
    QStringList rows;
    const BitMatrix &table = result->first().tables.first();
    for (qint64 row = 0; row < table.rows(); ++row) {
        QString text;
        for (int column = 0; column < table.width(); ++column)
            text.append(table.bit(row, column) ? u'1' : u'0');
        rows.append(text);
    }
    return (rows + result->first().missing).join(u' ');
}

const QByteArray kHeader = "$timescale 1ns $end\n$scope module top $end\n"
                           "$var wire 1 ! clk $end\n$var wire 4 \" data [3:0] $end\n"
                           "$scope module sub $end\n$var reg 1 # q $end\n$var wire 1 ! clk $end\n"
                           "$upscope $end\n$upscope $end\n$enddefinitions $end\n";

} // namespace

class tst_SimInputs : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void boardErrors();
    void descriptionErrors();
    void descriptions();
    void checksTheExample();
    void dumps_data();
    void dumps();
    void names_data();
    void names();
    void hostileDumps();
    void limits();
};

void tst_SimInputs::boardErrors()
{
    const auto board = [](const QByteArray &json, const char *error) {
        const QString told = readBoard(json, QStringLiteral("/tmp/b.json")).error();
        QVERIFY2(told.isEmpty() == !*error && told.contains(error), qPrintable(json + told));
    };
    const auto cable = [&](const QByteArray &keys, const char *error) {
        board(R"({"cables": {"k": {)" + keys + "}}}", error);
    };
    const auto device = [&](const QByteArray &keys, const char *error) {
        cable(R"("chain": [{}, {)" + keys + "}]", error);
    };
    const auto fault = [&](const QByteArray &keys, const char *error) {
        cable(R"("faults": [{)" + keys + "}]", error);
    };
    const auto programmer = [&](const QByteArray &keys, const char *error) {
        cable(R"("programmer": {)" + keys + "}", error);
    };
    board("{\"// why\": \"so\"}", "");
    board("{\n  \"log\": }", "/tmp/b.json:2:");
    board("[]", "must hold an object");
    board(R"({"cabels": {}})", "\"cabels\" is unknown");
    board(R"({"samples_per_second": 0})", "samples_per_second: must be a number from 1");
    board(R"({"scan": "keo2"})", "scan: there is no cable \"keo2\"");
    device(R"("idcode": "0x11G")", "cables.k.chain[1].idcode: must be a text of up to");
    device(R"("instruction": 0)", "chain[1].instruction: "); // 0 marks the analyzer
    device(R"("instruction": 8.5)", "must be a whole number");
    device(R"("description": "a.keo")", "a description needs a stimulus");
    fault(R"("do": "lost")", "faults[0].at: must be one");
    fault(R"("do": "slow", "at": "OPEN")", "faults[0].do: must be one of result, lost");
    fault(R"("do": "lost", "at": "BRUST_READ")", "BRUST_READ has no reply");
    fault(R"("do": "result", "at": "READ_RAM")", "only OPEN has a result");
    fault(R"("do": "garbage", "at": "OPEN", "hex": "abc")", "pairs of hexadecimal");
    fault(R"("do": "garbage", "at": "OPEN")", "either \"hex\" or \"kind\"");
    fault(R"("at": "any", "nth": 9, "do": "die", "status": 3)", "");
    programmer(R"("faults": [{"at": "download", "do": "late"}])",
               "programmer.faults[0].do: must be one of exit, error, killed");
    programmer(R"("faults": [{"at": "scan", "do": "exit", "status": 0}])",
               "faults[0].status: must be a number from 1");
}

void tst_SimInputs::descriptionErrors()
{
    const auto core = [](const QByteArray &content, const char *error) {
        const QString told = readDescription(content, QStringLiteral("x.zeo")).error();
        QVERIFY2(told.isEmpty() == !*error && told.contains(error), qPrintable(content + told));
    };
    const auto liteCore = [&](const QByteArray &content, const char *error) {
        core("<KEO_CONFIG><Mode>Lite</Mode>" + content + "</KEO_CONFIG>", error);
    };
    const QByteArray good = description(kDepth);
    core(good.left(100), "x.zeo:1:");
    core("<KEO_CONFIG/>", "no core");
    core(description(""), "storage_depth");
    core(description(kDepth + " index=\"16\""), "index");
    core(QByteArray(good).replace("<KEO_ID>",
                                  "<KoCore sample_clock=\"c\" storage_depth=\"1\"/><KEO_ID>"),
         "two cores have the index 0");
    core(description(kDepth, "<MatchUnits><MatchUnit enabled=\"1\" counter_enable=\"1\" "
                             "counter_width=\"2000000000\"/></MatchUnits>"),
         "counter_width");
    core(description(kDepth, "<Expressions><Expression>M0&amp;</Expression></Expressions>"),
         "core 0: trigger expression \"M0&\", column 4");
    const QByteArray lite = "<KoCore_Lite sample_clock=\"c\" capture_amount=\"8\"><SignalList>"
                            "<Signal>a</Signal></SignalList></KoCore_Lite>";
    liteCore(lite, "");
    liteCore(good, "no core");
    liteCore(lite + lite, "a second lite core");
    liteCore(QByteArray(lite).replace("8", "0"), "capture_amount");
    liteCore(QByteArray(lite).replace("Signal>", "Other>"), "no signal");
}

void tst_SimInputs::descriptions()
{
    // Captured; units in use; width; expressions.
    const auto reads = [](const QByteArray &content, const QString &expected) {
        const auto design = readDescription(content, QStringLiteral("x.keo"));
        QVERIFY2(design, qPrintable(design.error()));
        QVERIFY(design->isKeo);
        QCOMPARE(design->id, QStringLiteral("77"));
        const CoreDescription &core = design->cores.first();
        QStringList units;
        for (const int unit : core.unitsInUse())
            units.append(QString::number(unit));
        QCOMPARE((QStringList{core.captured.join(u','), units.join(u','),
                              QString::number(core.registerWidth()), core.expressions.join(u',')}
                      .join(u';')),
                 expected);
    };
    const QByteArray lists = R"(<SignalList><Signal>a</Signal>
        <Bus name="b"><Signal>b[1]</Signal><Signal>b[0]</Signal></Bus><Bus name="c"/></SignalList>
        <Triggers><Trigger index="2"><SignalList><Signal>t</Signal></SignalList></Trigger>
        <Trigger index="1"><SignalList><Signal>u</Signal></SignalList></Trigger>
        <Trigger index="16"><SignalList><Signal>v</Signal></SignalList></Trigger></Triggers>
        <MatchUnits><MatchUnit index="0" enabled="1" trigger="1"/>
        <MatchUnit index="1" enabled="0" trigger="1"/>
        <MatchUnit index="2" enabled="1" trigger="3"/><MatchUnit index="3" enabled="1"/>
        <MatchUnit index="4" enabled="2" trigger="2" counter_enable="1" counter_width="20"/>
        </MatchUnits><Expressions type="Static"><Expression>match[4]&amp;!match[0]</Expression>
        </Expressions>)";
    reads(description(kDepth, lists), "a,b[1],b[0],c;0,4;20;M4&!M0");
    reads(description(kDepth + " capture_from_trigger=\"1\"", lists), "t,u;0,4;20;M4&!M0");
    reads(description(kDepth + " capture_from_trigger=\"2\"", lists), ";0,4;20;M4&!M0");
    // As saved: odd declaration, restored names.
    reads("<?xml version=\"1\"?>\n" +
              description(kDepth, "<SignalList><Bus name=\"shown\" restorename=\"net\"/>"
                                  "</SignalList><Expressions type=\"Dynamic\"><Expression>("
                                  "</Expression></Expressions>"),
          "net;;16;(");
}

void tst_SimInputs::checksTheExample()
{
    const QString directory = QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo/");
    for (const char *name : {"board.json", "board_zeo.json"}) {
        QString text;
        QTextStream out(&text);
        QVERIFY2(checkBoard(directory + QLatin1String(name), out), qPrintable(text));
        QVERIFY(text.contains(QStringLiteral("core 1: dynamic")));
    }
}

void tst_SimInputs::dumps_data()
{
    // expected: data[3], data[0], q
    const auto row = addColumns<QByteArray, QString>({"changes", "expected"});
    row("value just before the edge",
        "#0 0! b0 \" 0#\n#5 1! b1001 \" 1#\n#10 0!\n#15 1! b0 \"\n#20 0!\n", "000 111");
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

void tst_SimInputs::dumps()
{
    QFETCH(QByteArray, changes);
    const QStringList nets{"data[3]", "data[0]", "q"};
    QTEST(sampled(kHeader + changes, nets), "expected");
    // The same with the clock turned round; X counts as 0.
    changes.replace("x!", "0!");
    changes.replace("0!", "\1").replace("1!", "0!").replace('\1', "1!");
    changes.replace("L!", "\1").replace("H!", "L!").replace('\1', "H!");
    QTEST(sampled(kHeader + changes, nets, true), "expected");
}

void tst_SimInputs::names_data()
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
    row("end in the middle of a name", deep, "1.x", "0 the net 1.x is not in the dump");
    row("case counts", deep, "X", "0 the net X is not in the dump");

    row("upward range", "$var wire 4 v n [0:3] $end", "n[2]");
    row("range not at 0", "$var wire 4 v n [11:8] $end", "n[9]");
    row("negative range", "$var wire 4 v n [1:-2] $end", "n[-1]");
    row("range without a blank", "$var wire 4 v n[3:0] $end", "n[1]");
    const QByteArray noRange = "$var integer 4 v n $end";
    row("no range told", noRange, "n[1]");
    row("no range told, two bits", "$var wire 2 v n $end", "n[1]");
    row("bits one by one", "$var wire 1 b n [1] $end $var wire 1 a n [0] $end", "n[0]");
    row("word of a memory", "$var reg 4 v m[5][3:0] $end", "m[5][1]");
    row("escaped name", "$var wire 1 a \\n-1 $end", "n-1");
    row("one bit with range", "$var wire 1 a n [0:0] $end", "n");
    row("one bit of a longer range", "$var wire 1 a n [3:3] $end", "n",
        "0 the net n is a vector of 1 bits");
    row("two names of one wire", "$var wire 1 a m $end $var port 1 a n $end", "n");
    const char *noBit = "0 the net n[4] has no such bit in the dump";
    row("bit out of range", "$var wire 4 v n [3:0] $end", "n[4]", noBit);
    row("bit out of a range not told", noRange, "n[4]", noBit);
    row("bit of a scalar", "$var wire 1 a n $end", "n[4]", noBit);
    row("bit 0 of a scalar", "$var wire 1 a n $end", "n[0]",
        "0 the net n[0] has no such bit in the dump");
    row("vector", "$var wire 4 v n [3:0] $end", "n", "0 the net n is a vector of 4 bits");
    row("vector without a range", noRange, "n", "0 the net n is a vector of 4 bits");
}

void tst_SimInputs::names()
{
    QFETCH(QByteArray, nets);
    QFETCH(QString, wanted);
    QTEST(sampled(nets + " $var wire 1 ! clk $end $enddefinitions $end\n"
                         "#0 0! 1a 0b b0010 v\n#1 1!\n",
                  {wanted}),
          "expected");
}

void tst_SimInputs::hostileDumps()
{
    const std::pair<QByteArray, const char *> rows[] = {
        {QByteArray("ELF\0\1\2", 6), "line 1: \"ELF"},
        {"$enddefinitions $end\n#0\n", "the clock can't be found"},
        {kHeader + "#0 0!\n#9 0!\n", "has no rising edge"},
        {kHeader + "#5 0!\n#4 1!\n", "line 12: time runs backwards"},
        {kHeader + "#0\n#x\n", "no time"},
        {kHeader + "#0 0!\n?1\n", "line 12: "},
        {"$var wire 4000000000 ! clk $end", "width"},
        {"$var wire 1 ! $end", "a $var needs"},
        {"$var wire 1 ! " + QByteArray("a ").repeated(50), "too many words"},
        {"$upscope $end", "$upscope"},
        {QByteArray("$scope module a $end ").repeated(100000), "too deep"},
        {kHeader + "#0 b" + QByteArray(3'000'000, '1'), "longer than"}};
    for (const auto &[dump, error] : rows) {
        const QString result = sampled(dump, {QStringLiteral("q")});
        QVERIFY2(result.startsWith("error: ") && result.contains(error), qPrintable(result));
    }
}

void tst_SimInputs::limits()
{
    QByteArray dump = kHeader + "#0 0! 1#\n";
    for (int i = 1; i < 200; ++i)
        dump += "#" + QByteArray::number(i) + (i % 2 ? " 1!\n" : " 0!\n");
    SamplingLimits limits;
    limits.samples = 7;
    QCOMPARE(sampled(dump, {QStringLiteral("q")}, false, limits).count(u'1'), 7);
    limits = {.bits = 650};
    QCOMPARE(sampled(dump, {QStringLiteral("q")}, false, limits).count(u'1'), 10);
}

KEO_TEST_MAIN(tst_SimInputs)
#include "tst_sim_inputs.moc"
