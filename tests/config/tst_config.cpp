// Core descriptions of both kinds: read, written, refused, and what their records answer.

#include "coretext.h"

#include <config/capturelimits.h>
#include <config/liteconfig.h>
#include <config/loadeddescription.h>
#include <config/matchtype.h>
#include <config/poweroftwo.h>
#include <config/standardconfig.h>

#include <support/files.h>
#include <support/testmain.h>

#include <QRandomGenerator>
#include <QStringConverter>

#include <functional>
#include <optional>

using namespace KEO;

class tst_Config : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void registerWidth();
    void namesFromATable();
    void numbersOutsideTheTables();
    void numbersThatCannotBeCaptured_data();
    void numbersThatCannotBeCaptured();
    void readsAToolFlowFile();
    void readsAndWritesASavedFile();
    void encodings_data();
    void encodings();
    void keepsEveryByte();
    void readerRules_data();
    void readerRules();
    void versions();
    void refused_data();
    void refused();
    void filesThatCannotBeRead();
    void liteFile();
    void liteRules_data();
    void liteRules();

private:
    QTemporaryDir m_directory;
};

namespace {

using Change = std::function<void(CoreConfig &, MatchUnit &)>;

const QString kSeeds = QStringLiteral(KEO_SOURCE_DIR "/fuzz/corpus/config/");

QString document(const QString &cores, const QString &version = "3.0")
{
    return QString("<KEO_CONFIG><Version>%1</Version>%2</KEO_CONFIG>").arg(version, cores);
}

QString liteCore(const QString &signalList)
{
    return "<KoCore_Lite><SignalList>" + signalList + "</SignalList></KoCore_Lite>";
}

SignalEntry single(const QString &name)
{
    return {name, QString(), {}};
}

/// A bus of \a bits and a single signal.
QList<SignalEntry> busAndSignal(int bits)
{
    SignalEntry bus{"bus", "the bus", {}};
    for (int i = 0; i < bits; ++i)
        bus.members += single(QString("bus[%1]").arg(i));
    return {bus, single("ready")};
}

} // namespace

void tst_Config::registerWidth()
{
    struct Row
    {
        int captured, port, counter;
        bool enabled;
        int width;
    };
    const Row rows[] = {
        {0, 0, 0, true, 16},   {15, 2, 16, true, 16}, // and the marker
        {16, 2, 16, true, 17}, {8, 40, 16, true, 40},          {8, 8, 20, true, 20},
        {8, 8, 20, false, 16}, {8, 8, 10'000'000, true, 1024}, {8, 8, -5, true, 16}};
    for (const Row &row : rows) {
        CoreConfig core;
        if (row.captured > 0)
            core.signals = busAndSignal(row.captured - 1);
        if (row.port > 0)
            core.triggers[5]->signals = busAndSignal(row.port - 1);
        MatchUnit &unit = *core.matchUnits[15];
        unit.counter_width = row.counter;
        unit.counter_enable = true;
        unit.enabled = row.enabled;
        QCOMPARE(core.requiredRegisterWidth(), row.width);
        unit.enabled = true;
        unit.counter_enable = false; // then the counter's width is of no consequence
        QVERIFY(core.requiredRegisterWidth() <= std::max(17, row.port));
    }
}

void tst_Config::namesFromATable()
{
    CoreConfig core;
    core.signals = busAndSignal(2);
    const QList<SignalEntry> before = core.signals;
    const SignalNames a{"a", "A"};
    QVERIFY(!core.applySignalNames({{0, a}, {1, a}, {2, a}, {3, a}}));
    QVERIFY(!core.applySignalNames({{0, a}, {1, a}}));
    QCOMPARE(core.signals, before);
    QVERIFY(core.applySignalNames({{0, a}, {2, {"r", QString()}}, {7, a}}));
    QCOMPARE(coretext::value(core.signals), R"("bus"/"the bus"{"a"/"A" ""/""} "r"/"")");

    core.signals = busAndSignal(2) + busAndSignal(1);
    const QStringList names = core.flatSignalNames();
    QCOMPARE(names.join(u' '), "bus[0] bus[1] ready bus[0] ready");
    for (int i = 0; i < names.size(); ++i)
        QCOMPARE(core.signalAtPosition(i).name, names[i]);
    QCOMPARE(core.signalAtPosition(int(names.size())), SignalEntry());
    QCOMPARE(core.signalAtPosition(-1), SignalEntry());

    LiteCoreConfig lite;
    lite.signals = before;
    QCOMPARE(lite.flatSignalTexts(), QStringList({"", "", ""})); // names don't stand in
    QVERIFY(!lite.applySignalNames({{0, a}, {1, a}, {2, a}, {3, a}}) && lite.signals == before);
    QVERIFY(lite.applySignalNames({{0, a}, {1, {"y", ""}}, {2, {"z", "Z"}}}));
    QCOMPARE(lite.flatSignalNames(), QStringList({"a", "y", "z"}));
    QCOMPARE(lite.flatSignalTexts(), QStringList({"A", "", "Z"}));
}

void tst_Config::numbersOutsideTheTables()
{
    CoreConfig core;
    core.expressions = QStringList{"M0"};
    for (int number : {-1, 16}) {
        QVERIFY(functionsForMatchType(MatchType(number)).isEmpty());
        QVERIFY(matchTypeText(MatchType(number)).isEmpty());
        QVERIFY(matchFunctionText(MatchFunction(number)).isEmpty());
        QVERIFY(!core.triggerByIndex(number) && !core.matchUnitByIndex(number));
        core.setExpression("M1", number);
    }
    QCOMPARE(core.expressions, QStringList{"M0"});
    using enum MatchFunction;
    QCOMPARE(functionsForMatchType(MatchType::ExtendedWithEdges),
             (QList{Equal, NotEqual, Greater, Less, GreaterOrEqual, LessOrEqual}));
    for (const auto &[n, power] : {std::pair(-1, 0LL),
                                   {0, 0},
                                   {1, 1},
                                   {3, 4},
                                   {1024, 1024},
                                   {1025, 2048},
                                   {2'147'483'647, 2'147'483'648}})
        QCOMPARE(roundUpToPowerOfTwo(n), power);
}

void tst_Config::readsAToolFlowFile()
{
    QString id;
    QString error = "left over";
    bool ok = false;
    const QString marked = putFile(m_directory.filePath("marked.keo"),
                                   "\xEF\xBB\xBF" + contentOf(kSeeds + "toolflow.keo"));
    const CoreList cores = loadStandardConfigFile(marked, &id, &ok, &error);
    QVERIFY2(ok && error.isEmpty(), qPrintable(error));
    QCOMPARE(id, "0x5A3C");
    QCOMPARE(cores.size(), 2);
    const CoreConfig &core = *cores[0];
    QCOMPARE(core.signals[2].text, QString::fromUtf8("Z\xC3\xA4hler"));
    QCOMPARE(core.portsWithSignals().size(), 2); // port 16 is skipped
    QCOMPARE(core.expressions.join(u' '), "M0&!M3 M0|M3");
    QCOMPARE(core.matchUnitByIndex(0)->counter_width, 0); // absent is 0, not the default
    QCOMPARE(core.matchUnitByIndex(4)->match_type, MatchType::Basic);
    QVERIFY(!core.matchUnitByIndex(4)->trigger && !core.matchUnitByIndex(5)->trigger);
    QCOMPARE(cores[1]->flatSignalNames().join(u' '), "b a");
}

// A core whose every field differs from its default and from its neighbours. Other programs read
// the file too: its names, order and layout stay.
void tst_Config::readsAndWritesASavedFile()
{
    bool ok = false;
    QString id = "left over";
    const CoreList cores = loadStandardConfigFile(kSeeds + "saved.keo", &id, &ok);
    QVERIFY(ok);
    QCOMPARE(id, QString());
    const QStringList text = coreText(cores);
    QCOMPARE(cores[0]->expressions, QStringList({"M0&!M2", "", "M1|M2"}));
    for (
        const QString line :
        {"core 3 \"clk & \\\"more\\\"\" 1 1 4096 256 -7 4 \"caf\u00e9 \u20ac\"",
         R"(captured "a<0>"/"a\tb" "data[1:0]"/"Data"{"data[1]"/"" "data[0]"/"low"} "  "/"" "\r\nx"/"")",
         R"(port 0 1 "data[1:0]"/"Data"{"data[1]"/"" "data[0]"/"low"})", R"(port 15 1 "z"/"")",
         R"(unit 2 1 1 5 7 1 12 345 0 "0X" "RF" 15)", R"(unit 3 1 0 0 0 0 2 2 1 "" "" -1)"})
        QVERIFY2(text.contains(line), qPrintable(text.join(u'\n') + "\nlacks\n" + line));
    const QString path = m_directory.filePath("saved.keo");
    QVERIFY(saveStandardConfigFile(cores, path));
    QCOMPARE(contentOf(path).split('\n'), contentOf(kSeeds + "saved.keo").split('\n'));
    QVERIFY(!saveStandardConfigFile(cores, m_directory.path()));
}

void tst_Config::encodings_data()
{
    addColumns<QByteArray, QString, QString>({"file", "name", "error"});
    const auto row = [](const char *title, const QByteArray &declaration, const QByteArray &name,
                        const QString &shown) {
        const QString core = "<KoCore><SignalList><Signal>%1</Signal></SignalList></KoCore>";
        addRow(title, declaration + document(core).toLatin1().replace("%1", name), shown,
               QString());
    };
    const QByteArray utf8 = "\xC3\xA9t\xC3\xA9";
    const QString bytewise = QString::fromLatin1(utf8);
    const QByteArray declared = "<?xml version='1.0' encoding='utf-8' standalone='yes'?>";
    row("declared", declared, utf8, "\u00e9t\u00e9");
    row("marked", "\xEF\xBB\xBF", utf8, "\u00e9t\u00e9");
    row("marked and declared otherwise", "\xEF\xBB\xBF<?xml version='1.0' encoding='latin1'?>",
        utf8, "\u00e9t\u00e9");
    row("not declared", "<?xml version='1'?>", utf8, bytewise);
    row("declared otherwise", "<?xml version='1.0' encoding='windows-1252'?>", utf8, bytewise);
    row("declared UTF-16 in single bytes", "<?xml version='1.0' encoding='UTF-16'?>", utf8,
        bytewise);
    row("one byte that is not UTF-8", declared, utf8 + '\xE9', bytewise + QChar(0xE9));
    row("no character", declared, "\xEF\xBF\xBE", QString::fromLatin1("\xEF\xBF\xBE"));

    const auto wide = [](const char *title, QStringConverter::Encoding encoding,
                         QStringConverter::Flag mark, const char *name) {
        QStringEncoder encoder(encoding, mark);
        const QByteArray bytes = encoder.encode(document("<KoCore/>"));
        addRow(title, bytes, QString(), QString("encoding is %1,").arg(name));
    };
    using enum QStringConverter::Encoding;
    using enum QStringConverter::Flag;
    wide("marked UTF-16", Utf16LE, WriteBom, "UTF-16LE");
    wide("UTF-16 without a mark", Utf16BE, Default, "UTF-16BE");
    wide("UTF-32", Utf32LE, WriteBom, "UTF-32LE");
}

void tst_Config::encodings()
{
    QFETCH(const QByteArray, file);
    const QString path = putFile(m_directory.filePath("encoded.keo"), file);
    QString message;
    const CoreList cores = loadStandardConfigFile(path, nullptr, nullptr, &message);
    const Result<LoadedDescription> description = loadDescription(file); // as two are compared
    QFETCH(const QString, error);
    QVERIFY2(message.contains(error), qPrintable(message));
    QCOMPARE(description ? QString() : description.error().message, message);
    if (!error.isEmpty())
        return;
    QVERIFY2(message.isEmpty(), qPrintable(message));
    QTEST(cores.front()->flatSignalNames().first(), "name");
    QCOMPARE(coreText(description->standard), coreText(cores));
}

// Whatever the names are made of, what is saved has the bytes that reading every file as Latin-1
// gives, and reads the same again.
void tst_Config::keepsEveryByte()
{
    QRandomGenerator random(18);
    const QByteArrayList pieces{"a",
                                " ",
                                "&#13;",
                                "&#xE9;",
                                "&lt;",
                                "\xC3\xA9",
                                "\xC2\x85",
                                "\xC2\xA0",
                                "\xE2\x82\xAC",
                                "\xEF\xBB\xBF",
                                "\xF0\x9F\x98\x80",
                                "\xE2\x80\xA8"};
    const QByteArray declaration = "<?xml version=\"1\" encoding=\"UTF-8\"?>\n";
    int asUtf8 = 0;
    for (int round = 0; round < 400; ++round) {
        const auto name = [&] {
            QByteArray bytes;
            for (int count = random.bounded(6); count > 0; --count)
                bytes += pieces[random.bounded(pieces.size())];
            if (random.bounded(20) == 0)
                bytes.insert(random.bounded(bytes.size() + 1), char(128 + random.bounded(128)));
            return bytes;
        };
        const QByteArray content =
            document("<KoCore module_name='%1' sample_clock='%2'><SignalList>"
                     "<Signal text='%3'>%4</Signal></SignalList></KoCore>")
                .toLatin1()
                .replace("%1", name())
                .replace("%2", name())
                .replace("%3", name())
                .replace("%4", name());
        const Result<StandardText> text = standardConfigText(declaration + content);
        QVERIFY(text);
        const CoreList cores = loadStandardConfig(text->text);
        const QByteArray saved = standardConfigBytes(cores, text->encoding);
        const bool isDeclared = saved.startsWith(declaration.chopped(1));
        asUtf8 += isDeclared;
        if (!content.contains("&#xE9;") || !isDeclared) { // as Latin-1 a single byte
            const CoreList bytewise = loadStandardConfig(QString::fromLatin1(content));
            QCOMPARE(QByteArray(saved).replace(" encoding=\"UTF-8\"", ""),
                     saveStandardConfig(bytewise).toLatin1());
        }
        QCOMPARE(coreText(loadStandardConfig(standardConfigText(saved)->text)), coreText(cores));
    }
    QVERIFY(asUtf8 > 100);
}

void tst_Config::readerRules_data()
{
    addColumns<QString, QString>({"core", "expected"}); // one line of coreText
    const QString bus = "<KoCore><SignalList><Bus %1><Signal>m</Signal><Other/></Bus><Odd/>"
                        "<Signal>s</Signal></SignalList></KoCore>";
    addRow("bus of the tool flow", bus.arg("name='n'"), R"(captured "n"/""{"m"/""} "s"/"")");
    addRow("bus with both names", bus.arg("name='n' restorename='r'"),
           R"(captured "r"/"n"{"m"/""} "s"/"")");
    addRow("bus with an empty old name", bus.arg("name='n' restorename=''"),
           R"(captured "n"/""{"m"/""} "s"/"")");
    const QString source =
        "<KoCore capture_from_trigger='%1'><SignalList><Signal>own</Signal></SignalList><Triggers>"
        "<Trigger index='1'><SignalList><Signal>p</Signal></SignalList></Trigger>"
        "<Trigger index='1'/></Triggers></KoCore>";
    addRow("captures its own list", source.arg(0), R"(captured "own"/"")");
    addRow("captures what triggers, each time it is named", source.arg(1),
           R"(captured "p"/"" "p"/"")");
    addRow("captures nothing", source.arg(2), "captured ");
    addRow("absent numbers are 0", "<KoCore index='-1'/>", R"(core -1 "" 0 0 0 0 0 0 "dut")");
    addRow("malformed numbers are 0, an empty module name counts",
           "<KoCore index='16' storage_depth='1e3' window_num='0x2' capture_amount='99999999999' "
           "module_name=''/>",
           R"(core 16 "" 0 0 0 0 0 0 "")");
    addRow("only the bracket form is rewritten",
           "<KoCore><Expressions type='dynamic'><Expression>Match[1] &amp; MATCH[2]</Expression>"
           "<Odd>M9</Odd></Expressions></KoCore>",
           R"(expression "M1 & MATCH[2")");
}

void tst_Config::readerRules()
{
    QFETCH(QString, core);
    QFETCH(QString, expected);
    const CoreList cores = loadStandardConfig(document(core));
    QCOMPARE(cores.size(), 1);
    const QStringList text = coreText(cores);
    QVERIFY2(text.contains(expected), qPrintable(text.join(u'\n') + "\nlacks\n" + expected));
}

void tst_Config::versions()
{
    const auto rows = [](const char *error, const QStringList &versions) {
        for (const QString &version : versions) {
            bool ok = false;
            QString message;
            const CoreList cores =
                loadStandardConfig(document("<KoCore/>", version), nullptr, &ok, &message);
            QVERIFY2(message == error && ok == !*error && cores.size() == ok, qPrintable(version));
        }
    };
    rows("", {"", "1", "2.0", "2.5", "2.10", "3", ".3..0.", "3.0.0", "-1.x", " 3.0 "});
    rows("The version of Keo config file is too high.", {"3.0.1", "10.0", "4.x"});
    rows("Invalid Keo config file.", {"three", "3.x", "3.0.x", "0x2", "99999999999"});
}

void tst_Config::refused_data()
{
    addColumns<bool, QString, QString>({"isLite", "text", "error"}); // a pattern
    const auto row = [](const char *name, const QString &text, const char *error) {
        addRow(name, QByteArrayView(name).startsWith("lite"), text, QString(error));
    };
    const auto repeated = [](const char *text, int times) { return QString(text).repeated(times); };
    row("no version", "<KEO_CONFIG><KoCore/></KEO_CONFIG>", "^Unknown Keo Version\\.$");
    row("cut off behind a core", document("<KoCore/>").chopped(5), "^.+ at 1:\\d+$");
    row("100,000 nested elements", repeated("<KoCore>", 100'000), "64 deep at 1:\\d+");
    row("a million elements", document(repeated("<a/>", 1'000'000)), "more than 500000 elements");
    row("257 cores", document(repeated("<KoCore/>", 257)), "more than 256 cores");
    row("few elements for many signals",
        document("<KoCore capture_from_trigger='1'><Triggers><Trigger><SignalList>" +
                 repeated("<Signal/>", 100'000) + "</SignalList></Trigger>" +
                 repeated("<Trigger/>", 100'000) + "</Triggers></KoCore>"),
        "capture more than 65536 signals");
    const QString core =
        "<KoCore><SignalList>" + repeated("<Signal/>", 20'000) + "</SignalList></KoCore>";
    row("many signals over all cores", document(core.repeated(4)),
        "capture more than 65536 signals");
    row("lite, no version", "<KEO_CONFIG/>", "^Unknown Keo version\\.$");
    row("lite, version too high", document("", "3.0.1"),
        "^The version of Keo config file is too high\\.$");
    row("lite, version is no number", document("", "3.x"), "^Invalid Keo config file\\.$");
    row("lite, cut off", document(liteCore("")).left(60), " at 1:");
    row("lite, too many signals", document(liteCore(repeated("<Signal/>", 65'537))), "65536");
}

void tst_Config::refused()
{
    QFETCH(bool, isLite);
    QFETCH(QString, text);
    QFETCH(QString, error);
    QString id = "left over";
    QString message;
    bool ok = true;
    if (isLite)
        QVERIFY(loadLiteConfig(text.toUtf8(), &id, &ok, &message).isEmpty());
    else
        QVERIFY(loadStandardConfig(text, &id, &ok, &message).empty());
    QVERIFY(!ok);
    QCOMPARE(id, QString());
    QVERIFY2(QRegularExpression(error).match(message).hasMatch(), qPrintable(message));
}

void tst_Config::filesThatCannotBeRead()
{
    bool ok = true;
    QString message;
    QVERIFY(loadStandardConfigFile(m_directory.path(), nullptr, &ok, &message).empty());
    QVERIFY(!ok);
    QCOMPARE(message, "Open file failed.");
    QVERIFY(loadLiteConfigFile("/nowhere", nullptr, nullptr, &message).isEmpty());
    QCOMPARE(message, "Open file failed");

    const QString empty = putFile(m_directory.filePath("f.keo"), {});
    QVERIFY(loadStandardConfigFile(empty, nullptr, &ok, &message).empty());
    QVERIFY(ok); // an empty file is no error
    QCOMPARE(message, QString());
}

/// The Mode is not looked at: by then it has been.
void tst_Config::liteFile()
{
    const QByteArray file =
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KEO_CONFIG><Version>3.0</Version>"
        "<Mode>?</Mode><KoCore_Lite index=\"5\" sample_clock=\"\xC3\xA9 &amp; &quot;\" "
        "trig_type=\"1\" capture_amount=\"200\" implemention=\"2\" input_register_enabled=\"1\" "
        "module_name=\"top\"><SignalList>"
        "<Signal text=\"\xE2\x82\xAC\">a&lt;</Signal></SignalList></KoCore_Lite>"
        "<KoCore_Lite capture_amount=\"1024\" "
        "capture_init_data_enabled=\"-3\"/><KEO_ID>1A2B</KEO_ID></KEO_CONFIG>";
    QString id;
    bool ok = false;
    const auto cores = loadLiteConfig(file, &id, &ok);
    LiteCoreConfig expected(5);
    expected.sample_clock = QStringLiteral("\u00e9 & \"");
    expected.trig_type = 1;
    expected.capture_amount = 200;
    expected.implemention = 2;
    expected.input_register_enabled = true;
    expected.signals = {{QStringLiteral("a<"), QStringLiteral("\u20ac"), {}}};
    expected.module_name = QStringLiteral("top");
    LiteCoreConfig second;
    second.capture_init_data_enabled = true;
    QVERIFY(ok && cores == (QList{expected, second}));
    QCOMPARE(id, QStringLiteral("1A2B"));

    const QString path = m_directory.filePath(QStringLiteral("lite.keo"));
    QVERIFY(saveLiteConfigFile(cores, path));
    QVERIFY(contentOf(path).startsWith(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<KEO_CONFIG>\n    <Version>3.0</Version>\n"
        "    <Mode>Lite</Mode>\n    <KoCore_Lite index=\"5\" sample_clock="));
    QVERIFY(loadLiteConfigFile(path) == cores);
    QVERIFY(!saveLiteConfigFile(cores, m_directory.path()));
}

void tst_Config::liteRules_data()
{
    addColumns<QByteArray, QString>({"file", "expected"}); // amount, module, signals of each core
    const auto row = [](const char *name, const QString &cores, const char *expected) {
        addRow(name, document(cores, "2.0").toUtf8(), QString::fromUtf8(expected));
    };
    addRow("empty file", QByteArray(), QString());
    row("nothing given", "<KoCore_Lite/>", "0 \"dut\" ");
    row("two cores, and a standard one that is not looked at",
        liteCore("<Signal>a</Signal>") + "<KoCore/>" + liteCore(""),
        "0 \"dut\" \"a\"/\"\"; 0 \"dut\" ");
    row("every element of a bus is a member",
        liteCore("<Bus name=\"b\"><Signal>x</Signal><Wire text=\"Y\">y</Wire><!-- --></Bus>"
                 "<Wire>z</Wire>"),
        "0 \"dut\" \"b\"/\"\"{\"x\"/\"\" \"y\"/\"Y\"}");
    row("renamed bus", liteCore("<Bus name=\"new\" restorename=\"old\"><Signal/></Bus>"),
        "0 \"dut\" \"old\"/\"new\"{\"\"/\"\"}");
    addRow("own encoding",
           "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" +
               document(liteCore(QStringLiteral("<Signal>\u00e9</Signal>"))).toLatin1(),
           QStringLiteral("0 \"dut\" \"\u00e9\"/\"\""));
}

void tst_Config::liteRules()
{
    QFETCH(const QByteArray, file);
    bool ok = false;
    QStringList texts;
    for (const LiteCoreConfig &core : loadLiteConfig(file, nullptr, &ok))
        texts += coretext::line("", core.capture_amount, core.module_name, core.signals).mid(1);
    QVERIFY(ok);
    QTEST(texts.join(QStringLiteral("; ")), "expected");
}

void tst_Config::numbersThatCannotBeCaptured_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("words"); // of the refusal; empty: can be captured
    const auto row = [](const char *name, const QString &words, const Change &change) {
        QTest::newRow(name) << change << words;
    };
    row("as it is", "", [](CoreConfig &, MatchUnit &) {});
    row("the last core", "", [](CoreConfig &core, MatchUnit &) { core.index = 15; });
    row("one core more", "16", [](CoreConfig &core, MatchUnit &) { core.index = 16; });
    row("no sample", "nothing", [](CoreConfig &core, MatchUnit &) { core.capture_amount = 0; });
    row("no window", "nothing", [](CoreConfig &core, MatchUnit &) { core.window_num = -1; });
    row("no signal", "nothing", [](CoreConfig &core, MatchUnit &) { core.signals = {}; });
    row("half a block", "192", [](CoreConfig &core, MatchUnit &) { core.capture_amount = 192; });
    row("more than the memory", "2048",
        [](CoreConfig &core, MatchUnit &) { core.capture_amount = 2048; });
    row("windows that fill the memory", "",
        [](CoreConfig &core, MatchUnit &) { core.window_num = 4, core.capture_amount = 256; });
    row("a fifth window", "256",
        [](CoreConfig &core, MatchUnit &) { core.window_num = 5, core.capture_amount = 256; });
    row("memory beyond the addresses", "131072",
        [](CoreConfig &core, MatchUnit &) { core.storage_depth = 131072; });
    row("trigger as late as can be", "",
        [](CoreConfig &core, MatchUnit &) { core.trigger_pos = 1015; });
    row("trigger later", "1016", [](CoreConfig &core, MatchUnit &) { core.trigger_pos = 1016; });
    row("trigger behind the end", "2000",
        [](CoreConfig &core, MatchUnit &) { core.trigger_pos = 2000; });
    row("trigger before all", "-1", [](CoreConfig &core, MatchUnit &) { core.trigger_pos = -1; });
    row("count that fits", "", [](CoreConfig &, MatchUnit &unit) { unit.counter = 16; });
    row("count too large", "17", [](CoreConfig &, MatchUnit &unit) { unit.counter = 17; });
    row("count of none", " 0 ", [](CoreConfig &, MatchUnit &unit) { unit.counter = 0; });
    row("counter too wide", "17", [](CoreConfig &, MatchUnit &unit) { unit.counter_width = 17; });
    row("count of a unit not in use", "",
        [](CoreConfig &, MatchUnit &unit) { unit.counter = 17, unit.enabled = false; });
}

void tst_Config::numbersThatCannotBeCaptured()
{
    QFETCH(Change, change);
    CoreConfig core;
    core.signals = busAndSignal(2);
    core.triggers[1]->signals = busAndSignal(2);
    MatchUnit &unit = *core.matchUnits[3];
    unit.enabled = unit.counter_enable = true;
    unit.trigger = core.triggers[1].get();
    unit.counter_width = 4;
    change(core, unit);
    QFETCH(QString, words);
    const std::optional<Error> obstacle = captureObstacle(core);
    QCOMPARE(obstacle.has_value(), !words.isEmpty());
    QVERIFY2(!obstacle || obstacle->message.contains(words), qPrintable(obstacle->message));

    LiteCoreConfig lite;
    lite.signals = busAndSignal(2);
    for (const auto &[amount, isPossible] :
         {std::pair(0, false), {1, true}, {65'536, true}, {65'537, false}}) {
        lite.capture_amount = amount;
        QCOMPARE(!captureObstacle(lite).has_value(), isPossible);
    }
}

KEO_TEST_MAIN(tst_Config)
#include "tst_config.moc"
