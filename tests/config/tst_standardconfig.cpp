#include "coretext.h"

#include <config/standardconfig.h>

#include <support/testmain.h>

#include <QDomDocument>
#include <QFile>

using namespace KEO;

class tst_StandardConfig : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void readsAToolFlowFile();
    void readerRules_data();
    void readerRules();
    void versions_data();
    void versions();
    void saveAndLoad();
    void bytesSurvive();
    void refused_data();
    void refused();
    void filesThatCannotBeRead();

private:
    QTemporaryDir m_directory;
};

namespace {

/// One core element inside a document of \a version.
QString document(const QString &core, const QString &version = "3.0")
{
    return QString("<KEO_CONFIG><Version>%1</Version>%2</KEO_CONFIG>").arg(version, core);
}

SignalEntry single(const char *name, const char *text = "")
{
    return {QString::fromUtf8(name), QString::fromUtf8(text), {}};
}

/// A core whose every field differs from its default and from its neighbours.
std::unique_ptr<CoreConfig> fullCore()
{
    auto core = std::make_unique<CoreConfig>(3);
    core->sample_clock = "clk & \"more\"";
    core->trig_type = 1;
    core->dynamic = 1;
    core->storage_depth = 4096;
    core->window_num = 4;
    core->capture_amount = 256;
    core->trigger_pos = -7;
    core->module_name = "caf\u00e9 \u20ac";
    SignalEntry bus = single("data[1:0]", "Data");
    bus.members = {single("data[1]"), single("data[0]", "low")};
    core->signals = {single("a<0>", "a\tb"), bus, single("  "), single("\r\nx")};
    core->triggers[0]->signals = {bus};
    core->triggers[15]->signals = {single("z")};
    MatchUnit &unit = *core->matchUnits[2];
    unit.enabled = true;
    unit.match_type = MatchType::RangeWithEdges;
    unit.func = MatchFunction::NotInRange;
    unit.counter_enable = true;
    unit.counter_width = 12;
    unit.counter = 345;
    unit.countinuous = true;
    unit.value0 = "0X";
    unit.value1 = "RF";
    unit.trigger = core->triggers[15].get();
    core->expressions = QStringList{"M0&!M2", QString(), "M1|M2"};
    core->expressionEnabled = {true, false, true};
    core->active = 1;
    return core;
}

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void tst_StandardConfig::readsAToolFlowFile()
{
    QString id;
    QString error = "left over";
    bool ok = false;
    const CoreList cores = loadStandardConfigFile(
        QStringLiteral(KEO_SOURCE_DIR "/fuzz/corpus/config/toolflow.keo"), &id, &ok, &error);
    QVERIFY2(ok, qPrintable(error));
    QCOMPARE(error, QString());
    QCOMPARE(id, "0x5A3C");
    QCOMPARE(cores.size(), 2);

    const CoreConfig &core = *cores[0];
    QCOMPARE(core.signals.size(), 3);
    QCOMPARE(core.signals[1].name, "rx_data[7:0]");
    QCOMPARE(core.signals[1].members.size(), 8);
    // The bytes of another encoding stay single characters.
    QCOMPARE(core.signals[2].text, QString::fromLatin1("Z\xC3\xA4hler"));
    QCOMPARE(core.portsWithSignals().size(), 2); // port 16 is skipped
    QCOMPARE(core.expressions.join(u' '), "M0&!M3 M0|M3");
    QCOMPARE(core.dynamic, 1);
    const MatchUnit *range = core.matchUnitByIndex(3);
    QVERIFY(range->enabled);
    QCOMPARE(range->trigger, core.triggerByIndex(3));
    QCOMPARE(range->value1, "10");
    QCOMPARE(core.matchUnitByIndex(0)->counter_width, 0); // absent is 0, not the default
    QCOMPARE(core.matchUnitByIndex(4)->match_type, MatchType::Basic);
    QCOMPARE(core.matchUnitByIndex(4)->trigger, nullptr);
    QCOMPARE(core.matchUnitByIndex(5)->trigger, nullptr);

    QCOMPARE(cores[1]->module_name, "dut");
    QCOMPARE(cores[1]->flatSignalNames().join(u' '), "b a");
    QCOMPARE(cores[1]->dynamic, 0);
}

void tst_StandardConfig::readerRules_data()
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

void tst_StandardConfig::readerRules()
{
    QFETCH(QString, core);
    QFETCH(QString, expected);
    const CoreList cores = loadStandardConfig(document(core));
    QCOMPARE(cores.size(), 1);
    const QStringList text = coreText(cores);
    QVERIFY2(text.contains(expected), qPrintable(text.join(u'\n') + "\nlacks\n" + expected));
}

void tst_StandardConfig::versions_data()
{
    addColumns<QString, QString>({"version", "error"});
    const auto rows = [](const QString &error, const QStringList &versions) {
        for (const QString &version : versions)
            QTest::addRow("'%s'", qPrintable(version)) << version << error;
    };
    rows("", {"", "1", "2.0", "2.5", "2.10", "3", ".3..0.", "3.0.0", "-1.x", " 3.0 "});
    rows("The version of Keo config file is too high.", {"3.0.1", "10.0", "4.x"});
    rows("Invalid Keo config file.", {"three", "3.x", "3.0.x", "0x2", "99999999999"});
}

void tst_StandardConfig::versions()
{
    QFETCH(QString, version);
    QFETCH(QString, error);
    bool ok = false;
    QString message;
    const CoreList cores =
        loadStandardConfig(document("<KoCore/>", version), nullptr, &ok, &message);
    QCOMPARE(message, error);
    QCOMPARE(ok, error.isEmpty());
    QCOMPARE(cores.size(), error.isEmpty() ? 1 : 0);
}

// Other programs read the file too: names, order and layout are compared with a file in hand.
void tst_StandardConfig::saveAndLoad()
{
    CoreList cores;
    cores.push_back(fullCore());
    const QString path = m_directory.filePath("saved.keo");
    QVERIFY(saveStandardConfigFile(cores, path));
    const QString golden = QStringLiteral(KEO_SOURCE_DIR "/fuzz/corpus/config/saved.keo");
    QCOMPARE(fileBytes(path).split('\n'), fileBytes(golden).split('\n'));

    bool ok = false;
    QString id = "left over";
    const CoreList loaded = loadStandardConfigFile(path, &id, &ok);
    QVERIFY(ok);
    QCOMPARE(id, QString());
    QCOMPARE(coreText(loaded), coreText(cores));
    QVERIFY(loaded[0]->expressionEnabled.isEmpty());
    QVERIFY(!saveStandardConfigFile(cores, m_directory.path()));
}

void tst_StandardConfig::bytesSurvive()
{
    QByteArray name;
    for (int byte = 0x20; byte < 0x100; ++byte)
        name += char(byte);
    name.replace('&', "").replace('<', "");
    const QString path = m_directory.filePath("bytes.keo");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\r\n"
               "<KEO_CONFIG><Version>3.0</Version><KoCore><SignalList><Signal>" +
               name + "</Signal></SignalList></KoCore></KEO_CONFIG>");
    file.close();
    const CoreList cores = loadStandardConfigFile(path);
    QCOMPARE(cores.size(), 1);
    QCOMPARE(cores[0]->flatSignalNames(), QStringList{QString::fromLatin1(name)});
    QVERIFY(saveStandardConfigFile(cores, path));
    QVERIFY(fileBytes(path).contains(name.mid(name.indexOf('?'))));
}

void tst_StandardConfig::refused_data()
{
    addColumns<QString, QString>({"text", "error"}); // a pattern
    const auto repeated = [](const char *text, int times) { return QString(text).repeated(times); };
    addRow("no version", "<KEO_CONFIG><KoCore/></KEO_CONFIG>", "^Unknown Keo Version\\.$");
    addRow("cut off behind a core", document("<KoCore/>").chopped(5), "^.+ at 1:\\d+$");
    addRow("100,000 nested elements", repeated("<KoCore>", 100'000), "64 deep at 1:\\d+");
    addRow("a million elements", document(repeated("<a/>", 1'000'000)),
           "more than 500000 elements");
    addRow("257 cores", document(repeated("<KoCore/>", 257)), "more than 256 cores");
    addRow("few elements for many signals",
           document("<KoCore capture_from_trigger='1'><Triggers><Trigger><SignalList>" +
                    repeated("<Signal/>", 100'000) + "</SignalList></Trigger>" +
                    repeated("<Trigger/>", 100'000) + "</Triggers></KoCore>"),
           "capture more than 65536 signals");
    const QString core =
        "<KoCore><SignalList>" + repeated("<Signal/>", 20'000) + "</SignalList></KoCore>";
    addRow("many signals over all cores", document(core.repeated(4)),
           "capture more than 65536 signals");
}

void tst_StandardConfig::refused()
{
    QFETCH(QString, text);
    QFETCH(QString, error);
    QString id = "left over";
    QString message;
    bool ok = true;
    QVERIFY(loadStandardConfig(text, &id, &ok, &message).empty());
    QVERIFY(!ok);
    QCOMPARE(id, QString());
    QVERIFY2(QRegularExpression(error).match(message).hasMatch(), qPrintable(message));
}

void tst_StandardConfig::filesThatCannotBeRead()
{
    bool ok = true;
    QString message;
    QVERIFY(loadStandardConfigFile(m_directory.path(), nullptr, &ok, &message).empty());
    QVERIFY(!ok);
    QCOMPARE(message, "Open file failed.");

    QFile file(m_directory.filePath("f.keo"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(loadStandardConfigFile(file.fileName(), nullptr, &ok, &message).empty());
    QVERIFY(ok); // an empty file is no error
    QCOMPARE(message, QString());
}

KEO_TEST_MAIN(tst_StandardConfig)
#include "tst_standardconfig.moc"
