#include <support/testmain.h>

#include <boardcheck.h>
#include <boardfile.h>
#include <description.h>

#include <QTextStream>

using namespace Sim;

namespace {

/// A description with one core; \a attributes and \a inside complete its KoCore element.
QByteArray description(const char *attributes, const char *inside)
{
    return QByteArray("<KEO_CONFIG><Version>3.0</Version><KoCore sample_clock=\"clk\" ") +
           attributes + ">" + inside + "</KoCore><KEO_ID>77</KEO_ID></KEO_CONFIG>";
}

} // namespace

class tst_SimBoardFile : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void boardErrors_data();
    void boardErrors();
    void descriptions_data();
    void descriptions();
    void descriptionErrors_data();
    void descriptionErrors();
    void checksTheExample();
};

void tst_SimBoardFile::boardErrors_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error"); // empty: the file is fine
    const auto fault = [](const char *text) {
        return QByteArray("{\"cables\": {\"keo1\": {\"faults\": [{") + text + "}]}}}";
    };
    const auto device = [](const char *text) {
        return QByteArray("{\"cables\": {\"keo1\": {\"chain\": [{}, {") + text + "}]}}}";
    };
    QTest::newRow("nothing on any cable") << QByteArray("{}") << "";
    QTest::newRow("comment") << QByteArray("{\"// why\": \"so\"}") << "";
    QTest::newRow("no JSON") << QByteArray("{\n  \"log\": }") << "/tmp/b.json:2:";
    QTest::newRow("no object") << QByteArray("[]") << "must hold an object";
    QTest::newRow("misspelt key") << QByteArray("{\"cabels\": {}}") << "\"cabels\" is unknown";
    QTest::newRow("newer version") << QByteArray("{\"version\": 2}") << "version: only version 1";
    QTest::newRow("rate 0") << QByteArray("{\"samples_per_second\": 0}")
                            << "samples_per_second: must be a number from 1 to";
    QTest::newRow("chain is no array") << QByteArray("{\"cables\": {\"keo\": {\"chain\": 1}}}")
                                       << "cables.keo.chain: must be an array";
    QTest::newRow("ID code") << device("\"idcode\": \"0x11G\"")
                             << "cables.keo1.chain[1].idcode: must be a text of up to 8";
    QTest::newRow("instruction 0 marks the analyzer")
        << device("\"instruction\": 0") << "chain[1].instruction: ";
    QTest::newRow("half a code") << device("\"instruction\": 8.5") << "must be a whole number";
    QTest::newRow("description alone")
        << device("\"description\": \"a.keo\"") << "a description needs a stimulus";
    QTest::newRow("fault without a place")
        << fault("\"do\": \"lost\"") << "faults[0].at: must be one";
    QTest::newRow("unknown fault") << fault("\"do\": \"slow\", \"at\": \"OPEN\"")
                                   << "faults[0].do: must be one of result, lost";
    QTest::newRow("nth 0") << fault("\"do\": \"lost\", \"at\": \"OPEN\", \"nth\": 0")
                           << "must be a number from 1 or";
    QTest::newRow("reply of a write")
        << fault("\"do\": \"lost\", \"at\": \"BRUST_READ\"") << "BRUST_READ has no reply";
    QTest::newRow("result of a read")
        << fault("\"do\": \"result\", \"at\": \"READ_RAM\"") << "only OPEN has a result";
    QTest::newRow("detail of another fault")
        << fault("\"do\": \"lost\", \"at\": \"OPEN\", \"ms\": 5") << "\"ms\" is unknown";
    QTest::newRow("odd hex") << fault("\"do\": \"garbage\", \"at\": \"OPEN\", \"hex\": \"abc\"")
                             << "pairs of hexadecimal digits";
    QTest::newRow("garbage of no kind")
        << fault("\"do\": \"garbage\", \"at\": \"OPEN\"") << "either \"hex\" or \"kind\"";
    QTest::newRow("every kind of fault is known")
        << QByteArray(
               "{\"cables\": {\"keo1\": {\"faults\": ["
               "{\"at\": \"OPEN\", \"do\": \"result\", \"value\": -20},"
               "{\"at\": \"READ_RAM\", \"nth\": 3, \"do\": \"late\", \"ms\": 300},"
               "{\"at\": \"READ_RAM\", \"nth\": \"every\", \"do\": \"pieces\", \"bytes\": 7},"
               "{\"at\": \"CLOSE\", \"do\": \"garbage\", \"hex\": \"00 ff\"},"
               "{\"at\": \"any\", \"do\": \"garbage\", \"kind\": \"deep nesting\"},"
               "{\"at\": \"any\", \"do\": \"doubled\"}, {\"at\": \"any\", \"do\": \"swapped\"},"
               "{\"at\": \"any\", \"do\": \"glued\"}, {\"at\": \"any\", \"do\": \"lost\"},"
               "{\"at\": \"WRITE_REGISTOR\", \"do\": \"hang\"},"
               "{\"at\": \"any\", \"nth\": 9, \"do\": \"die\", \"status\": 3}]}}}")
        << "";
}

void tst_SimBoardFile::boardErrors()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    const auto board = readBoard(json, QStringLiteral("/tmp/b.json"));
    QCOMPARE(bool(board), error.isEmpty());
    QVERIFY2(board.error().contains(error), qPrintable(board.error()));
}

void tst_SimBoardFile::descriptions_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("captured");
    QTest::addColumn<QString>("units"); // in use
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("expressions");

    const char *lists =
        "<SignalList><Signal>a</Signal><Bus name=\"b\"><Signal>b[1]</Signal>"
        "<Signal>b[0]</Signal></Bus><Bus name=\"c\"/></SignalList>"
        "<Triggers><Trigger index=\"2\"><SignalList><Signal>t</Signal></SignalList>"
        "</Trigger><Trigger index=\"1\"><SignalList><Signal>u</Signal></SignalList>"
        "</Trigger><Trigger index=\"16\"><SignalList><Signal>v</Signal></SignalList>"
        "</Trigger></Triggers><MatchUnits>"
        "<MatchUnit index=\"0\" enabled=\"1\" trigger=\"1\"/>"
        "<MatchUnit index=\"1\" enabled=\"0\" trigger=\"1\"/>"
        "<MatchUnit index=\"2\" enabled=\"1\" trigger=\"3\"/>"
        "<MatchUnit index=\"3\" enabled=\"1\"/>"
        "<MatchUnit index=\"4\" enabled=\"2\" trigger=\"2\" counter_enable=\"1\""
        " counter_width=\"20\"/></MatchUnits>"
        "<Expressions type=\"Static\"><Expression>match[4]&amp;!match[0]"
        "</Expression></Expressions>";
    QTest::newRow("lists") << description("storage_depth=\"64\"", lists) << "a,b[1],b[0],c"
                           << "0,4" << 20 << "M4&!M0";
    QTest::newRow("captures the ports")
        << description("storage_depth=\"64\" capture_from_trigger=\"1\"", lists) << "t,u"
        << "0,4" << 20 << "M4&!M0";
    QTest::newRow("captures nothing")
        << description("storage_depth=\"64\" capture_from_trigger=\"2\"", lists) << ""
        << "0,4" << 20 << "M4&!M0";
    QTest::newRow("saved form: odd declaration, restored names")
        << "<?xml version=\"1\"?>\n" +
               description("storage_depth=\"64\"",
                           "<SignalList><Bus name=\"shown\" restorename=\"net\"/></SignalList>"
                           "<Expressions type=\"Dynamic\"><Expression>(</Expression>"
                           "</Expressions>")
        << "net"
        << "" << 16 << "(";
    QByteArray wide = "<SignalList>";
    for (int i = 0; i < 16; ++i)
        wide += "<Signal>s</Signal>";
    QTest::newRow("marker needs a bit of its own")
        << description("storage_depth=\"64\"", wide + "</SignalList>")
        << QStringList(16, QStringLiteral("s")).join(u',') << "" << 17 << "";
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

void tst_SimBoardFile::descriptionErrors_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    const QByteArray good = description("storage_depth=\"64\"", "");
    QTest::newRow("empty") << QByteArray() << "x.zeo:1:0: ";
    QTest::newRow("cut") << good.left(100) << "x.zeo:1:";
    QTest::newRow("no core") << QByteArray("<KEO_CONFIG/>") << "no core";
    QTest::newRow("lite") << QByteArray("<KEO_CONFIG><Mode>Lite</Mode></KEO_CONFIG>")
                          << "lite core";
    QTest::newRow("no depth") << description("", "") << "storage_depth";
    QTest::newRow("index") << description("storage_depth=\"64\" index=\"16\"", "") << "index";
    QTest::newRow("twins") << QByteArray(good).replace(
                                  "<KEO_ID>",
                                  "<KoCore sample_clock=\"c\" storage_depth=\"1\"/><KEO_ID>")
                           << "two cores have the index 0";
    QTest::newRow("counter width")
        << description("storage_depth=\"64\"", "<MatchUnits><MatchUnit enabled=\"1\" "
                                               "counter_enable=\"1\" counter_width=\"2000000000\"/>"
                                               "</MatchUnits>")
        << "counter_width";
    QTest::newRow("expression of a static core")
        << description("storage_depth=\"64\"",
                       "<Expressions><Expression>M0&amp;</Expression></Expressions>")
        << "core 0: trigger expression \"M0&\", column 4";
}

void tst_SimBoardFile::descriptionErrors()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    const auto design = readDescription(content, QStringLiteral("x.zeo"));
    QVERIFY(!design);
    QVERIFY2(design.error().contains(error), qPrintable(design.error()));
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
