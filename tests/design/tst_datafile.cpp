// The data file of a project: what the writer gives, what the reader takes, and what it refuses.

#include "randomwindow.h"

#include <design/datafilecheck.h>
#include <design/datafilereader.h>
#include <design/datafilewriter.h>
#include <support/files.h>
#include <support/testmain.h>

#include <QStringConverter>

using namespace KEO;
using WaveMonitor::WindowContents;

class tst_DataFile : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void looks();
    void comesBack();
    void sameInTwoEncodings();
    void refuses_data();
    void refuses();
    void replacesItsOwnAlone_data();
    void replacesItsOwnAlone();
    void survivesBeingCutOff();
    void fitsTheDesign_data();
    void fitsTheDesign();
    void places();
};

namespace {

constexpr int kRounds = 60;

QByteArray root(const QByteArray &content)
{
    return "<WaveData>" + content + "</WaveData>";
}

struct SavedCase
{
    explicit SavedCase(quint32 seed)
    {
        QRandomGenerator random(seed);
        for (int window = random.bounded(4); window > 0; --window) {
            QStringList names;
            for (int i = random.bounded(9); i > 0; --i)
                names.append(randomName(random));
            contents.emplace_back();
            arrangeRandomly(contents.back(), random, names, random.bounded(200));
            contents.back().setTriggerPosition(random.bounded(300));
        }
        for (const WindowContents &each : contents) {
            const int position = int(windows.size());
            windows.append({seed % 2 ? std::optional<int>() : position / 2, position, &each});
        }
    }

    std::vector<WindowContents> contents;
    QList<WindowToSave> windows;
};

} // namespace

void tst_DataFile::comesBack()
{
    for (quint32 seed = 0; seed < kRounds; ++seed) {
        const SavedCase saved(seed);
        const QByteArray text = dataFileText(saved.windows);
        const auto loaded = readDataFile(text);
        QVERIFY2(loaded, text);
        QCOMPARE(loaded->size(), saved.contents.size());
        QList<WindowToSave> again;
        for (size_t i = 0; i < loaded->size(); ++i) {
            const LoadedWindow &window = (*loaded)[i];
            QCOMPARE(textOf(window.contents), textOf(saved.contents[i]));
            QCOMPARE(window.contents.signalMap(), saved.contents[i].signalMap());
            QCOMPARE(window.index.toInt(), saved.windows[qsizetype(i)].index);
            QCOMPARE(window.core.isNull(), !saved.windows[qsizetype(i)].core);
            again.append(
                {saved.windows[qsizetype(i)].core, window.index.toInt(), &window.contents});
        }
        QCOMPARE(dataFileText(again), text);
    }
}

// Long samples in UTF-8 go past the parser, in UTF-16 through it: whatever was done to the text,
// both must tell the same, the place of the fault included.
void tst_DataFile::sameInTwoEncodings()
{
    const QStringList pieces{"<",         ">",   "</",        "/>",    "0",        "1",
                             "2",         " ",   "\n",        "&#49;", "<!-- -->", "\"",
                             "'",         "=",   "<Signal>",  "-->",   "]",        "<Signal/",
                             "<![CDATA[", "]]>", "</Signal>", "<?",    "<a b='>",  "é"};
    int taken = 0;
    for (quint32 seed = 0; seed < 800; ++seed) {
        QRandomGenerator random(seed);
        WindowContents contents;
        for (int id = random.bounded(5); id >= 0; --id)
            contents.addSignal({id, "é", {}, QBitArray(random.bounded(400), random.bounded(2))});
        QString text = QString::fromUtf8(dataFileText({{0, 0, &contents}}));
        text.remove(0, text.indexOf('\n') + 1); // the declaration, which names one encoding
        if (random.bounded(2))
            text.remove(QRegularExpression("\n *")); // columns count on behind the samples
        for (int change = random.bounded(4); change > 0; --change)
            text.replace(random.bounded(text.size()), random.bounded(3),
                         pieces[random.bounded(pieces.size())]);
        const auto loaded = readDataFile(text.toUtf8());
        QStringEncoder utf16(QStringConverter::Utf16LE, QStringConverter::Flag::WriteBom);
        const QByteArray encoded = utf16(text);
        const auto decoded = readDataFile(encoded);
        QCOMPARE(bool(loaded), bool(decoded));
        if (!loaded) {
            QVERIFY2(loaded.error().message == decoded.error().message,
                     qPrintable(loaded.error().message + decoded.error().message + text));
            continue;
        }
        ++taken;
        QCOMPARE(loaded->size(), decoded->size());
        for (size_t i = 0; i < loaded->size(); ++i) {
            QCOMPARE(loaded->at(i).contents.signalMap(), decoded->at(i).contents.signalMap());
            QCOMPARE(loaded->at(i).signalNames, decoded->at(i).signalNames);
        }
    }
    QVERIFY(taken > 200);
}

void tst_DataFile::looks()
{
    WaveMonitor::SignalElement high{1, "d[1]", "", QBitArray(3)};
    WaveMonitor::SignalElement low{0, "d<0>", "\u00fc\n", QBitArray(2, true)};
    WindowContents contents;
    contents.addBus({"d", "", {&high, &low}});
    contents.setTriggerPosition(1);
    const WindowContents empty;
    QCOMPARE(dataFileText({{2, 5, &contents}, {std::nullopt, 0, &empty}}),
             QByteArray(R"(<?xml version="1.0" encoding="UTF-8"?>
<WaveData>
    <Window index="5" core="2">
        <TriggerPosition>1</TriggerPosition>
        <Signals>
            <Signal name="d&lt;0&gt;" id="0" text="ü&#10;">11</Signal>
            <Signal name="d[1]" id="1" text="">000</Signal>
        </Signals>
        <Layout>
            <Node type="bus" name="d" text="" format="hex" color="65280">
                <Node type="sig" id="1" text="" color="65280"/>
                <Node type="sig" id="0" text="" color="65280"/>
            </Node>
        </Layout>
    </Window>
    <Window index="0">
        <TriggerPosition>0</TriggerPosition>
        <Signals>
        </Signals>
        <Layout>
        </Layout>
    </Window>
</WaveData>
)"));
}

void tst_DataFile::refuses_data()
{
    // place: pattern of "line: ... column: ..."
    const auto row = addColumns<QByteArray, int, QString>({"text", "kind", "place"});
    row("no XML", "hello", Error::Format, "line: 1 column: \\d+");
    row("binary", QByteArray("\0\x01\xff\xfe", 4), Error::Format, "line: \\d+ column: \\d+");
    row("not UTF-8", root("<Window core='\xe9'/>"), Error::Format, "line: 1 column: \\d+");
    row("tag on line 3", "<WaveData>\n<Window>\n</Signals></WaveData>", Error::Format,
        "line: 3 column: \\d+");
    row("100,000 nested windows",
        root(QByteArray("<Window>").repeated(100'000) + QByteArray("</Window>").repeated(100'000)),
        Error::Limit, "line: 1 column: \\d+");
    row("external entity", "<!DOCTYPE x [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><WaveData/>",
        Error::Limit, "line: 1 column: 13");
    row("too many signals",
        root("<Window><Signals>" + QByteArray("<Signal/>").repeated(65'537) +
             "</Signals></Window>"),
        Error::Limit, "line: 1 column: \\d+");
    row("too many rows",
        root("<Window><Layout>" + QByteArray("<Node type='sig'/>").repeated(kMaxDataRecords) +
             "</Layout></Window>"),
        Error::Limit, "line: 1 column: \\d+");
    row("too many windows", root(QByteArray("<Window/>").repeated(65'537)), Error::Limit,
        "line: 1 column: \\d+");
    row("too many tags", root(QByteArray("<a/>").repeated(1'000'000)), Error::Limit,
        "line: 1 column: \\d+");
    row("too much text",
        root("<Window><Layout>" +
             ("<Node type='bus' name='" + QByteArray(1024 * 1024, 'x') + "'/>").repeated(65) +
             "</Layout></Window>"),
        Error::Limit, "line: 1 column: \\d+");
}

void tst_DataFile::refuses()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, place);
    const auto loaded = readDataFile(text);
    QVERIFY(!loaded);
    QTEST(int(loaded.error().kind), "kind");
    const QRegularExpression pattern("^Error when reading data file.\n " + place + ", .+$");
    QVERIFY2(pattern.match(loaded.error().message).hasMatch(), qPrintable(loaded.error().message));
}

void tst_DataFile::replacesItsOwnAlone_data()
{
    const auto row = addColumns<QByteArray, bool>({"present", "isReplaced"});
    row("none", QByteArray(), true);
    row("empty", "", true);
    row("data file", "\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- c -->\n<WaveData><cut off", true);
    row("other XML", "<Config><WaveData/></Config>", false);
    row("text", "WaveData", false);
    row("project file", "[General]\nKEO_FILE=/a.keo\n", false);
}

// A foreign project file can name any path for the samples.
void tst_DataFile::replacesItsOwnAlone()
{
    QFETCH(QByteArray, present);
    QFETCH(bool, isReplaced);
    const QTemporaryDir folder;
    const QString path = folder.filePath("data");
    if (!present.isNull())
        putFile(path, present);
    QCOMPARE(!writeDataFile(path, {}), isReplaced);
    QCOMPARE(contentOf(path), isReplaced ? dataFileText({}) : present);
    putFile(path, present);
    QVERIFY(!writeDataFile(path, {}, path)); // the user's own choice
    QCOMPARE(contentOf(path), dataFileText({}));
}

void tst_DataFile::survivesBeingCutOff()
{
    const SavedCase saved(2);
    QVERIFY(!saved.windows.isEmpty());
    const QByteArray text = dataFileText(saved.windows);
    // Behind the root nothing is missing but the line end.
    for (qsizetype length = 0; length < text.size() - 1; ++length) {
        const auto loaded = readDataFile(text.first(length));
        QVERIFY2(!loaded && loaded.error().kind == Error::Format, text.first(length));
    }
}

void tst_DataFile::fitsTheDesign_data()
{
    const auto row = addColumns<QByteArray, bool>({"content", "fits"});
    const auto window = [](const char *attributes, const char *trigger = "16",
                           const char *signals = "<Signal name='a'/><Signal name='é'/>") {
        return QByteArray("<Window ") + attributes + "><TriggerPosition>" + trigger +
               "</TriggerPosition><Signals>" + signals + "</Signals></Window>";
    };
    row("both windows", window("core='3' index='0'") + window("core='3' index='1'"), true);
    row("the same window twice", window("core='3' index='0'") + window("core='3' index='0'"), true);
    row("no such core", window("core='4' index='0'"), false);
    row("core missing, and there is no core 0", window("index='0'"), false);
    row("index missing", window("core='3'"), true);
    row("index past the last", window("core='3' index='2'"), false);
    row("index none", window("core='3' index='-1'"), true);
    row("index negative", window("core='3' index='-2'"), false);
    row("trigger", window("core='3'", "17"), false);
    row("trigger missing", "<Window core='3'/>", false);
    row("a signal less", window("core='3'", "16", "<Signal name='a'/>"), false);
    row("other name", window("core='3'", "16", "<Signal name='a'/><Signal name='B'/>"), false);
    row("name of a program that took UTF-8 for Latin-1",
        window("core='3'", "16", "<Signal name='a'/><Signal name='Ã©'/>"), true);
    row("other order", window("core='3'", "16", "<Signal name='é'/><Signal name='a'/>"), false);
    row("a comment counts",
        window("core='3'", "16", "<Signal name='a'/><!-- --><Signal name='é'/>"), false);
    row("deeper down", "<Group>" + window("core='4'") + "</Group>", false);
}

void tst_DataFile::fitsTheDesign()
{
    QFETCH(QByteArray, content);
    CoreList cores;
    cores.push_back(std::make_unique<CoreConfig>(3));
    cores.back()->window_num = 2;
    cores.back()->trigger_pos = 16;
    cores.back()->signals = {{"bus", {}, {{"a", {}, {}}, {"é", {}, {}}}}};
    const auto loaded = readDataFile(root(content));
    QVERIFY(loaded);
    QTEST(fitsCores(*loaded, cores, TriggerPosition::AsDescribed), "fits");
}

void tst_DataFile::places()
{
    for (const auto &[attributes, expected] :
         std::initializer_list<std::pair<const char *, const char *>>{
             {"core='1' index='2'", "1/2"},
             {"core='x' index='2'", "0/2"},
             {"index='2'", ""},
             {"core='1' index='x'", ""},
             {"core='1' index='99999999999'", ""},
             {"core='-1' index='2'", ""},
             {"core='1' index='-1'", ""}}) {
        const auto loaded = readDataFile(root("<Window " + QByteArray(attributes) + "/>"));
        QVERIFY(loaded);
        const auto place = placeOf(loaded->front());
        QCOMPARE(place ? QStringLiteral("%1/%2").arg(place->core).arg(place->window) : QString(),
                 expected);
    }
}

KEO_TEST_MAIN(tst_DataFile)
#include "tst_datafile.moc"
