#include <support/testmain.h>

#include <boardcheck.h>
#include <boardfile.h>
#include <description.h>

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

} // namespace

class tst_SimBoardFile : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void errors_data();
    void errors();
    void descriptions_data();
    void descriptions();
    void checksTheExample();
};

void tst_SimBoardFile::errors_data()
{
    // error: empty if the file is fine
    const auto row = addColumns<QString, QByteArray, QString>({"path", "content", "error"});

    const auto board = [&](const char *name, const QByteArray &json, const char *error) {
        row(name, "/tmp/b.json", json, error);
    };
    const auto device = [&](const char *name, const char *keys, const char *error) {
        board(name, QByteArray(R"({"cables": {"k": {"chain": [{}, {)") + keys + "}]}}}", error);
    };
    const auto fault = [&](const char *name, const char *keys, const char *error) {
        board(name, QByteArray(R"({"cables": {"k": {"faults": [{)") + keys + "}]}}}", error);
    };
    board("nothing on any cable", "{\"// why\": \"so\"}", "");
    board("no JSON", "{\n  \"log\": }", "/tmp/b.json:2:");
    board("no object", "[]", "must hold an object");
    board("misspelt key", R"({"cabels": {}})", "\"cabels\" is unknown");
    board("newer version", R"({"version": 2})", "version: only version 1");
    board("rate 0", R"({"samples_per_second": 0})", "samples_per_second: must be a number from 1");
    board("chain is no array", R"({"cables": {"k": {"chain": 1}}})", "k.chain: must be an array");
    device("ID code", R"("idcode": "0x11G")", "cables.k.chain[1].idcode: must be a text of up to");
    device("instruction 0 marks the analyzer", R"("instruction": 0)", "chain[1].instruction: ");
    device("half a code", R"("instruction": 8.5)", "must be a whole number");
    device("description alone", R"("description": "a.keo")", "a description needs a stimulus");
    fault("no place", R"("do": "lost")", "faults[0].at: must be one");
    fault("unknown", R"("do": "slow", "at": "OPEN")", "faults[0].do: must be one of result, lost");
    fault("nth 0", R"("do": "lost", "at": "OPEN", "nth": 0)", "must be a number from 1 or");
    fault("reply of a write", R"("do": "lost", "at": "BRUST_READ")", "BRUST_READ has no reply");
    fault("result of a read", R"("do": "result", "at": "READ_RAM")", "only OPEN has a result");
    fault("key of another", R"("do": "lost", "at": "OPEN", "ms": 5)", "\"ms\" is unknown");
    fault("odd hex", R"("do": "garbage", "at": "OPEN", "hex": "abc")", "pairs of hexadecimal");
    fault("garbage of no kind", R"("do": "garbage", "at": "OPEN")", "either \"hex\" or \"kind\"");
    board("scan of no cable", R"({"scan": "keo2"})", "scan: there is no cable \"keo2\"");
    const auto programmer = [&](const char *name, const char *keys, const char *error) {
        board(name, QByteArray(R"({"cables": {"k": {"programmer": {)") + keys + "}}}}", error);
    };
    programmer("endless download", R"("download_ms": -1)", "k.programmer.download_ms: must be");
    programmer("fault of a server", R"("faults": [{"at": "download", "do": "late"}])",
               "programmer.faults[0].do: must be one of exit, error, killed");
    programmer("exit that is none", R"("faults": [{"at": "scan", "do": "exit", "status": 0}])",
               "faults[0].status: must be a number from 1");
    fault("every kind is known", R"("at": "OPEN", "do": "result", "value": -20},
        {"at": "READ_RAM", "nth": 3, "do": "late", "ms": 300},
        {"at": "READ_RAM", "nth": "every", "do": "pieces", "bytes": 7},
        {"at": "CLOSE", "do": "garbage", "hex": "00 ff"},
        {"at": "any", "do": "garbage", "kind": "deep nesting"},
        {"at": "any", "do": "doubled"}, {"at": "any", "do": "swapped"},
        {"at": "any", "do": "glued"}, {"at": "any", "do": "lost"},
        {"at": "WRITE_REGISTOR", "do": "hang"},
        {"at": "any", "nth": 9, "do": "die", "status": 3)",
          "");

    const auto core = [&](const char *name, const QByteArray &content, const char *error) {
        row(name, "x.zeo", content, error);
    };
    const QByteArray good = description(kDepth);
    core("cut", good.left(100), "x.zeo:1:");
    core("no core", "<KEO_CONFIG/>", "no core");
    const QByteArray lite = "<KoCore_Lite sample_clock=\"c\" capture_amount=\"8\"><SignalList>"
                            "<Signal>a</Signal></SignalList></KoCore_Lite>";
    const auto liteCore = [&core](const char *name, const QByteArray &content, const char *error) {
        core(name, "<KEO_CONFIG><Mode>Lite</Mode>" + content + "</KEO_CONFIG>", error);
    };
    liteCore("lite", lite, "");
    liteCore("lite without a core", good, "no core");
    liteCore("two lite cores", lite + lite, "a second lite core");
    liteCore("lite without rows", QByteArray(lite).replace("8", "0"), "capture_amount");
    liteCore("lite without signals", QByteArray(lite).replace("Signal>", "Other>"), "no signal");
    core("no depth", description(""), "storage_depth");
    core("index", description(kDepth + " index=\"16\""), "index");
    core("twins",
         QByteArray(good).replace("<KEO_ID>",
                                  "<KoCore sample_clock=\"c\" storage_depth=\"1\"/><KEO_ID>"),
         "two cores have the index 0");
    core("counter width",
         description(kDepth, "<MatchUnits><MatchUnit enabled=\"1\" counter_enable=\"1\" "
                             "counter_width=\"2000000000\"/></MatchUnits>"),
         "counter_width");
    core("expression of a static core",
         description(kDepth, "<Expressions><Expression>M0&amp;</Expression></Expressions>"),
         "core 0: trigger expression \"M0&\", column 4");
}

void tst_SimBoardFile::errors()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    const QString told = path.endsWith(QStringLiteral("json"))
                             ? readBoard(content, path).error()
                             : readDescription(content, path).error();
    QCOMPARE(told.isEmpty(), error.isEmpty());
    QVERIFY2(told.contains(error), qPrintable(told));
}

void tst_SimBoardFile::descriptions_data()
{
    // units: in use
    const auto row = addColumns<QByteArray, QString, QString, int, QString>(
        {"content", "captured", "units", "width", "expressions"});

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
    const auto listed = [&](const char *name, const QByteArray &attribute, const char *captured) {
        row(name, description(kDepth + attribute, lists), captured, "0,4", 20, "M4&!M0");
    };
    listed("captures the signals", "", "a,b[1],b[0],c");
    listed("captures the ports", " capture_from_trigger=\"1\"", "t,u");
    listed("captures nothing", " capture_from_trigger=\"2\"", "");
    row("saved form: odd declaration, restored names",
        "<?xml version=\"1\"?>\n" +
            description(kDepth, "<SignalList><Bus name=\"shown\" restorename=\"net\"/>"
                                "</SignalList><Expressions type=\"Dynamic\"><Expression>("
                                "</Expression></Expressions>"),
        "net", {}, 16, "(");
    row("marker needs a bit of its own",
        description(kDepth, "<SignalList>" + QByteArray("<Signal>s</Signal>").repeated(16) +
                                "</SignalList>"),
        QStringList(16, QStringLiteral("s")).join(u','), {}, 17, {});
}

void tst_SimBoardFile::descriptions()
{
    QFETCH(QByteArray, content);
    const auto design = readDescription(content, QStringLiteral("x.keo"));
    QVERIFY2(design, qPrintable(design.error()));
    QVERIFY(design->isKeo);
    QCOMPARE(design->id, QStringLiteral("77"));
    const CoreDescription &core = design->cores.first();
    QTEST(core.captured.join(u','), "captured");
    QTEST(core.expressions.join(u','), "expressions");
    QTEST(core.registerWidth(), "width");
    QStringList units;
    for (const int unit : core.unitsInUse())
        units.append(QString::number(unit));
    QTEST(units.join(u','), "units");
}

void tst_SimBoardFile::checksTheExample()
{
    const QString directory = QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo/");
    for (const char *name : {"board.json", "board_zeo.json"}) {
        QString text;
        QTextStream out(&text);
        QVERIFY2(checkBoard(directory + QLatin1String(name), out), qPrintable(text));
        QVERIFY(text.contains(QStringLiteral("core 1: dynamic")));
    }
}

KEO_TEST_MAIN(tst_SimBoardFile)
#include "tst_sim_boardfile.moc"
