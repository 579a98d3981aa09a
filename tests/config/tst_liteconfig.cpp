#include "coretext.h"

#include <config/liteconfig.h>

#include <support/testmain.h>

#include <QFile>

using namespace KEO;

class tst_LiteConfig : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void readsAToolFlowFile();
    void readerRules_data();
    void readerRules();
    void refused_data();
    void refused();
    void saveAndLoad();
    void names();
};

namespace {

QByteArray document(const QByteArray &cores, const QByteArray &version = "3.0")
{
    return "<KEO_CONFIG><Version>" + version + "</Version>" + cores + "</KEO_CONFIG>";
}

QByteArray core(const QByteArray &signalList, const QByteArray &attributes = {})
{
    return "<KoCore_Lite " + attributes + "><SignalList>" + signalList +
           "</SignalList></KoCore_Lite>";
}

} // namespace

/// The Mode is not looked at: by then it has been.
void tst_LiteConfig::readsAToolFlowFile()
{
    const QByteArray file =
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KEO_CONFIG><Version>3.0</Version>"
        "<Mode>?</Mode><KoCore_Lite index=\"5\" sample_clock=\"\xC3\xA9\" trig_type=\"1\" "
        "capture_amount=\"200\" implemention=\"2\" input_register_enabled=\"1\" "
        "capture_init_data_enabled=\"-3\" module_name=\"top\"><SignalList><Signal text=\"A\">a"
        "</Signal></SignalList></KoCore_Lite><KEO_ID>1A2B</KEO_ID></KEO_CONFIG>";
    QString id;
    bool ok = false;
    const auto cores = loadLiteConfig(file, &id, &ok);
    LiteCoreConfig expected(5);
    expected.sample_clock = QStringLiteral("\u00e9");
    expected.trig_type = 1;
    expected.capture_amount = 200;
    expected.implemention = 2;
    expected.input_register_enabled = true;
    expected.capture_init_data_enabled = true;
    expected.signals = {{QStringLiteral("a"), QStringLiteral("A"), {}}};
    expected.module_name = QStringLiteral("top");
    QVERIFY(ok);
    QCOMPARE(id, QStringLiteral("1A2B"));
    QVERIFY(cores == QList{expected});
}

void tst_LiteConfig::readerRules_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("expected"); // amount, module and signals of each core
    const auto row = [](const char *name, const QByteArray &file, const char *expected) {
        QTest::newRow(name) << file << QString::fromUtf8(expected);
    };
    row("empty file", "", "");
    row("no core", document(""), "");
    row("nothing given", document("<KoCore_Lite/>"), "0 \"dut\" ");
    row("two cores", document(core("<Signal>a</Signal>") + core("<Signal>b</Signal>")),
        "0 \"dut\" \"a\"/\"\"; 0 \"dut\" \"b\"/\"\"");
    row("standard cores are not looked at", document("<KoCore/>" + core("")), "0 \"dut\" ");
    row("every element of a bus is a member",
        document(core("<Bus name=\"b\"><Signal>x</Signal><Wire text=\"Y\">y</Wire><!-- --></Bus>"
                      "<Wire>z</Wire>")),
        "0 \"dut\" \"b\"/\"\"{\"x\"/\"\" \"y\"/\"Y\"}");
    row("renamed bus", document(core("<Bus name=\"new\" restorename=\"old\"><Signal/></Bus>")),
        "0 \"dut\" \"old\"/\"new\"{\"\"/\"\"}");
    row("low version", document(core(""), "2.0"), "0 \"dut\" ");
    row("own encoding",
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + document(core("<Signal>\xE9</Signal>")),
        "0 \"dut\" \"\u00e9\"/\"\"");
}

void tst_LiteConfig::readerRules()
{
    QFETCH(const QByteArray, file);
    QFETCH(const QString, expected);
    bool ok = false;
    QStringList texts;
    for (const LiteCoreConfig &core : loadLiteConfig(file, nullptr, &ok))
        texts += coretext::line("", core.capture_amount, core.module_name, core.signals).mid(1);
    QVERIFY(ok);
    // QDebug writes what is no ASCII as escapes.
    QCOMPARE(texts.join(QStringLiteral("; ")).replace("\\u00E9", "\u00e9"), expected);
}

void tst_LiteConfig::refused_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QByteArray &file, const char *error) {
        QTest::newRow(name) << file << QString::fromLatin1(error);
    };
    row("no version", "<KEO_CONFIG/>", "Unknown Keo version.");
    row("version too high", document("", "3.0.1"), "The version of Keo config file is too high.");
    row("version is no number", document("", "3.x"), "Invalid Keo config file.");
    row("cut off", document(core("")).left(60), " at 1:");
    row("bytes that are no UTF-8", document(core("<Signal>\xE9</Signal>")), " at ");
    row("too many signals", document(core(QByteArray("<Signal/>").repeated(65'537))), "65536");
}

void tst_LiteConfig::refused()
{
    QFETCH(const QByteArray, file);
    QFETCH(const QString, error);
    bool ok = true;
    QString message;
    QVERIFY(loadLiteConfig(file, nullptr, &ok, &message).isEmpty());
    QVERIFY(!ok);
    QVERIFY2(message.contains(error), qPrintable(message));
}

void tst_LiteConfig::saveAndLoad()
{
    LiteCoreConfig first(7);
    first.sample_clock = QStringLiteral("clk & \"more\" \u20ac");
    first.trig_type = 1;
    first.implemention = 3;
    first.capture_amount = -1;
    first.input_register_enabled = true;
    first.module_name = QStringLiteral("top");
    const SignalEntry single{QStringLiteral("a<0>\r\n"), QStringLiteral("caf\u00e9\t"), {}};
    first.signals = {single, {QStringLiteral("b"), QStringLiteral("B"), {single, single}}};
    LiteCoreConfig second;
    second.capture_init_data_enabled = true;

    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("a.keo"));
    QVERIFY(saveLiteConfigFile({first, second}, path));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().startsWith(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KEO_CONFIG>\n    <Version>3.0</Version>\n"
        "    <Mode>Lite</Mode>\n    <KoCore_Lite index=\"7\" sample_clock="));
    const auto loaded = loadLiteConfigFile(path);
    QVERIFY(loaded == (QList{first, second}));

    QString error;
    QVERIFY(loadLiteConfigFile(path + u'x', nullptr, nullptr, &error).isEmpty());
    QCOMPARE(error, QStringLiteral("Open file failed"));
    QVERIFY(!saveLiteConfigFile({first}, directory.path())); // a folder
}

void tst_LiteConfig::names()
{
    LiteCoreConfig core;
    core.signals = {{QStringLiteral("a"), QStringLiteral("A"), {}},
                    {QStringLiteral("b"),
                     QStringLiteral("B"),
                     {{QStringLiteral("b1"), {}, {}}, {QStringLiteral("b0"), {}, {}}}}};
    QCOMPARE(core.flatSignalTexts(), QStringList({"A", "", ""})); // names don't stand in
    const LiteCoreConfig before = core;
    QMap<int, SignalNames> table{{0, {"x", "X"}}, {1, {"y", ""}}, {2, {"z", "Z"}}, {3, {"", ""}}};
    QVERIFY(!core.applySignalNames(table) && core == before);
    table.remove(3);
    QVERIFY(core.applySignalNames(table));
    QCOMPARE(core.flatSignalNames(), QStringList({"x", "y", "z"}));
    QCOMPARE(core.flatSignalTexts(), QStringList({"X", "", "Z"}));
}

KEO_TEST_MAIN(tst_LiteConfig)
#include "tst_liteconfig.moc"
