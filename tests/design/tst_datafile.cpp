// The data file of a project: what the writer gives, what the reader takes, and what it refuses.

#include "randomwindow.h"

#include <design/datafilecheck.h>
#include <design/datafilereader.h>
#include <design/datafilewriter.h>
#include <support/testmain.h>
#include <wave_data/sampletext.h>

#include <QFile>

using namespace KEO;
using WaveMonitor::WindowContents;

class tst_DataFile : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void looks();
    void comesBack();
    void readsLikeTheTree_data();
    void readsLikeTheTree();
    void refuses_data();
    void refuses();
    void replacesItsOwnAlone_data();
    void replacesItsOwnAlone();
    void survivesBeingCutOff();
    void takesALongSampleText();
    void fitsTheDesign_data();
    void fitsTheDesign();
    void places_data();
    void places();
};

namespace {

constexpr int kRounds = 60;

QByteArray root(const QByteArray &content)
{
    return "<WaveData>" + content + "</WaveData>";
}

/// An element with everything in it; attributes by name, since a tree knows no order.
QString dump(const QDomElement &element)
{
    QMap<QString, QString> attributes;
    for (int i = 0; i < element.attributes().size(); ++i) {
        const QDomAttr attribute = element.attributes().item(i).toAttr();
        attributes.insert(attribute.name(), attribute.value());
    }
    QString text = u'<' + element.tagName();
    for (auto attribute = attributes.begin(); attribute != attributes.end(); ++attribute)
        text += u'|' + attribute.key() + u'=' + attribute.value();
    text += u'>' + WaveMonitor::ownText(element);
    for (QDomElement child = element.firstChildElement(); !child.isNull();
         child = child.nextSiblingElement())
        text += dump(child);
    return text + u'/';
}

/// The data file by way of the toolkit's tree.
QDomElement treeOf(QDomDocument &document, const QList<WindowToSave> &windows)
{
    QDomElement data = document.createElement("WaveData");
    document.appendChild(data);
    for (const WindowToSave &window : windows) {
        QDomElement element = window.contents->writeWindow(document);
        if (window.core)
            element.setAttribute("core", *window.core);
        element.setAttribute("index", window.index);
        data.appendChild(element);
    }
    return data;
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
        QDomDocument expected;
        QDomDocument written;
        QVERIFY(written.setContent(text));
        QCOMPARE(dump(written.documentElement()), dump(treeOf(expected, saved.windows)));
    }
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

void tst_DataFile::readsLikeTheTree_data()
{
    const auto row = addColumns<QByteArray>({"content"});
    row("no layout", "<Window><Signals><Signal id='3' name='c'>1</Signal><Signal id='2'>01</Signal>"
                     "</Signals></Window>");
    row("everything twice: the first counts",
        "<Window><TriggerPosition>1</TriggerPosition><TriggerPosition>2</TriggerPosition><Signals>"
        "<Signal id='1'>1</Signal></Signals><Signals><Signal id='2'>1</Signal></Signals><Layout/>"
        "<Layout><Node type='sig' id='1'/></Layout></Window>");
    row("ids repeated, missing, negative, huge",
        "<Window><Signals><Signal id='1' name='a'>0</Signal><Signal id='1' name='b'>1</Signal>"
        "<Signal>1</Signal><Signal id='-5'/><Signal id='99999999999'>111</Signal></Signals>"
        "</Window>");
    row("samples in pieces",
        "<Window><Signals><Signal id='1'>11<!-- x -->00<![CDATA[ 11]]><b>111</b>&#49; 1"
        "</Signal><Signal id='2'>  \n </Signal><Signal id='3'><![CDATA[  ]]></Signal>"
        "<Signal id='4'>1<b/>&#9;&#10;<b/>1</Signal></Signals></Window>");
    row("nodes that are no signals",
        "<Window><Signals>text<!-- comment --><Other name='o'><Signal id='9'/></Other><?pi ?>"
        "<Signal id='1' name='s'/><![CDATA[ ]]></Signals></Window>");
    row("rows of all kinds",
        "<Window><Signals><Signal id='1'/></Signals><Layout><Node id='1'/><Other type='sig'/>"
        "<Node type='bus' name='n' format='octal' color='7'><Node type='bus' id='1'>"
        "<Node type='sig' id='2'/></Node><Other id='2'/><Node id='x' color=''/></Node>"
        "<Node type='sig' id='1' text='t' color='9'><Node id='3'/></Node></Layout></Window>");
    row("windows inside others",
        "<Window index='1'><TriggerPosition>5<Window index='2'/></TriggerPosition><Signals><Signal>"
        "<Window index='3'/></Signal></Signals><Layout><Node type='sig'><Window index='4'/></Node>"
        "<Node type='bus'><Node><Window index='5'/></Node></Node></Layout></Window>"
        "<Group><Window index='6'/></Group>");
    row("attributes empty", "<Window core='' index=''/><Window core='-1' index='-1'/>");
    row("byte order mark in the middle", "<Window index='\xEF\xBB\xBF'/>");
}

// The tree's reader is the measure of what a file means.
void tst_DataFile::readsLikeTheTree()
{
    QFETCH(QByteArray, content);
    const QByteArray text = root(content);
    QDomDocument document;
    QVERIFY(document.setContent(text));
    auto loaded = readDataFile(text);
    QVERIFY(loaded);
    const QDomNodeList elements = document.documentElement().elementsByTagName("Window");
    QCOMPARE(qsizetype(loaded->size()), elements.size());
    for (int i = 0; i < elements.size(); ++i) {
        const QDomElement element = elements.at(i).toElement();
        const auto found = std::ranges::find_if(*loaded, [&](const LoadedWindow &window) {
            return window.index == element.attribute("index");
        });
        QVERIFY(found != loaded->end());
        WindowContents expected;
        expected.readWindow(element);
        QCOMPARE(textOf(found->contents), textOf(expected));
        QCOMPARE(found->isTopLevel, element.parentNode() == document.documentElement());
        QCOMPARE(found->core.isNull(), !element.hasAttribute("core"));
        QStringList names;
        const QDomNodeList nodes = element.firstChildElement("Signals").childNodes();
        for (int node = 0; node < nodes.size(); ++node)
            names.append(nodes.at(node).toElement().attribute("name"));
        QCOMPARE(found->signalNames, names);
    }
}

void tst_DataFile::refuses_data()
{
    // place: pattern of "line: ... column: ..."
    const auto row = addColumns<QByteArray, int, QString>({"text", "kind", "place"});
    row("empty", "", Error::Format, "line: 1 column: 0");
    row("no XML", "hello", Error::Format, "line: 1 column: \\d+");
    row("binary", QByteArray("\0\x01\xff\xfe", 4), Error::Format, "line: \\d+ column: \\d+");
    row("not UTF-8", root("<Window core='\xe9'/>"), Error::Format, "line: 1 column: \\d+");
    row("tag on line 3", "<WaveData>\n<Window>\n</Signals></WaveData>", Error::Format,
        "line: 3 column: \\d+");
    row("two roots", root("") + root(""), Error::Format, "line: 1 column: \\d+");
    row("100,000 nested elements",
        root(QByteArray("<a>").repeated(100'000) + QByteArray("</a>").repeated(100'000)),
        Error::Limit, "line: 1 column: \\d+");
    row("100,000 nested windows",
        root(QByteArray("<Window>").repeated(100'000) + QByteArray("</Window>").repeated(100'000)),
        Error::Limit, "line: 1 column: \\d+");
    QByteArray attributes;
    for (int i = 0; i < 100'000; ++i)
        attributes += " a" + QByteArray::number(i) + "=''";
    row("100,000 attributes", root("<Window" + attributes + "/>"), Error::Limit,
        "line: 1 column: \\d+");
    row("entity bomb",
        "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;\"><!ENTITY c "
        "\"&b;&b;&b;&b;\">]><WaveData>&c;&c;</WaveData>",
        Error::Limit, "line: 1 column: 13");
    row("external entity", "<!DOCTYPE x [<!ENTITY a SYSTEM \"file:///etc/passwd\">]><WaveData/>",
        Error::Limit, "line: 1 column: 13");
    row("undeclared entity", root("&a;"), Error::Format, "line: 1 column: \\d+");
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
    const auto content = [&] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    const auto put = [&] {
        QFile file(path);
        QVERIFY(present.isNull() ||
                (file.open(QIODevice::WriteOnly) && file.write(present) == present.size()));
    };
    put();
    QCOMPARE(!writeDataFile(path, {}), isReplaced);
    QCOMPARE(content(), isReplaced ? dataFileText({}) : present);
    put();
    QVERIFY(!writeDataFile(path, {}, path)); // the user's own choice
    QCOMPARE(content(), dataFileText({}));
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

void tst_DataFile::takesALongSampleText()
{
    constexpr int kSamples = 100'000'000;
    QByteArray text = root("<Window><Signals><Signal id='0'>#</Signal></Signals></Window>");
    QByteArray samples(kSamples, '0');
    samples.back() = '1';
    text.replace('#', samples);
    const auto loaded = readDataFile(text);
    QVERIFY(loaded);
    const QBitArray data = loaded->front().contents.signalMap().first().data;
    QCOMPARE(data.size(), kSamples);
    QVERIFY(data.testBit(kSamples - 1));
    QCOMPARE(data.count(true), 1);
}

void tst_DataFile::fitsTheDesign_data()
{
    const auto row = addColumns<QByteArray, bool>({"content", "fits"});
    const auto window = [](const char *attributes, const char *trigger = "16",
                           const char *signals = "<Signal name='a'/><Signal name='b'/>") {
        return QByteArray("<Window ") + attributes + "><TriggerPosition>" + trigger +
               "</TriggerPosition><Signals>" + signals + "</Signals></Window>";
    };
    row("no windows", {}, true);
    row("both windows", window("core='3' index='0'") + window("core='3' index='1'"), true);
    row("the same window twice", window("core='3' index='0'") + window("core='3' index='0'"), true);
    row("no such core", window("core='4' index='0'"), false);
    row("core missing, and there is no core 0", window("index='0'"), false);
    row("index missing", window("core='3'"), true);
    row("index past the last", window("core='3' index='2'"), false);
    row("index none", window("core='3' index='-1'"), true);
    row("index negative", window("core='3' index='-2'"), false);
    row("index far negative", window("core='3' index='-2147483648'"), false);
    row("trigger", window("core='3'", "17"), false);
    row("trigger missing", "<Window core='3'/>", false);
    row("a signal less", window("core='3'", "16", "<Signal name='a'/>"), false);
    row("other name", window("core='3'", "16", "<Signal name='a'/><Signal name='B'/>"), false);
    row("other order", window("core='3'", "16", "<Signal name='b'/><Signal name='a'/>"), false);
    row("a comment counts",
        window("core='3'", "16", "<Signal name='a'/><!-- --><Signal name='b'/>"), false);
    row("deeper down", "<Group>" + window("core='4'") + "</Group>", false);
}

void tst_DataFile::fitsTheDesign()
{
    QFETCH(QByteArray, content);
    CoreList cores;
    cores.push_back(std::make_unique<CoreConfig>(3));
    cores.back()->window_num = 2;
    cores.back()->trigger_pos = 16;
    cores.back()->signals = {{"bus", {}, {{"a", {}, {}}, {"b", {}, {}}}}};
    const auto loaded = readDataFile(root(content));
    QVERIFY(loaded);
    QTEST(fitsCores(*loaded, cores), "fits");
}

void tst_DataFile::places_data()
{
    const auto row = addColumns<QByteArray, QString>({"content", "place"});
    row("both", "<Window core='1' index='2'/>", "1/2");
    row("core no number", "<Window core='x' index='2'/>", "0/2");
    row("core missing", "<Window index='2'/>", "");
    row("index no number", "<Window core='1' index='x'/>", "");
    row("index huge", "<Window core='1' index='99999999999'/>", "");
    row("no core", "<Window core='-1' index='2'/>", "");
    row("no window", "<Window core='1' index='-1'/>", "");
    row("deeper down", "<a><Window core='1' index='2'/></a>", "");
}

void tst_DataFile::places()
{
    QFETCH(QByteArray, content);
    const auto loaded = readDataFile(root(content));
    QVERIFY(loaded);
    const auto place = placeOf(loaded->front());
    const QString text =
        place ? QStringLiteral("%1/%2").arg(place->core).arg(place->window) : QString();
    QTEST(text, "place");
}

KEO_TEST_MAIN(tst_DataFile)
#include "tst_datafile.moc"
