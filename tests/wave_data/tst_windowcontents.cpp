#include <support/testmain.h>
#include <wave_data/windowcontents.h>

#include <QDomDocument>
#include <QRandomGenerator>
#include <QXmlStreamReader>

using namespace WaveMonitor;

namespace {

QBitArray samples(const char *digits)
{
    QBitArray bits(qsizetype(qstrlen(digits)));
    for (qsizetype i = 0; i < bits.size(); ++i)
        bits.setBit(i, digits[i] == '1');
    return bits;
}

QDomElement parse(QDomDocument &document, const QString &xml)
{
    return document.setContent(xml) ? document.documentElement() : QDomElement();
}

QString xmlOf(const WindowContents &contents)
{
    QDomDocument document;
    document.appendChild(contents.writeWindow(document));
    return document.toString(-1);
}

/// The elements of a text on lines of their own, with their attributes by name: a document keeps
/// them in an order that changes from run to run.
QString inOrder(const QString &xml)
{
    QStringList parts;
    for (QXmlStreamReader reader(xml); !reader.atEnd(); reader.readNext()) {
        QStringList attributes;
        for (const QXmlStreamAttribute &attribute : reader.attributes())
            attributes += QStringLiteral("%1=%2").arg(attribute.name(), attribute.value());
        attributes.sort();
        if (!reader.isWhitespace())
            parts += reader.tokenString() +
                     QStringLiteral(" %1%2 ").arg(reader.name(), reader.text()) +
                     attributes.join(u' ');
    }
    return parts.join(u'\n');
}

const SignalLayoutNode &signalRow(const LayoutNode &parent, int position)
{
    return static_cast<const SignalLayoutNode &>(*parent.child(position));
}

const BusLayoutNode &busRow(const LayoutNode &parent, int position)
{
    return static_cast<const BusLayoutNode &>(*parent.child(position));
}

/// The rows in short: a signal's id and names, a bus with its members in brackets.
QString rowsOf(const WindowContents &contents, const LayoutNode &parent)
{
    QStringList rows;
    for (const auto &row : parent.children) {
        if (row->parent != &parent)
            return QStringLiteral("wrong parent");
        if (row->type == LayoutNode::Signal) {
            const auto &signal = static_cast<const SignalLayoutNode &>(*row);
            rows += QStringLiteral("%1=%2").arg(signal.id).arg(contents.displayName(signal));
        } else {
            const auto &bus = static_cast<const BusLayoutNode &>(*row);
            rows += bus.name + u'(' + rowsOf(contents, bus) + u')';
        }
    }
    return rows.join(u' ');
}

} // namespace

class tst_WindowContents : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void writesAndReadsEverything();
    void readsWhatIsWrong_data();
    void readsWhatIsWrong();
    void otherElementChangesNothing();
    void samplesOfAnyLength();
    void dropsWhatNoFileCanHold();
};

void tst_WindowContents::writesAndReadsEverything()
{
    SignalElement clk{.id = 7, .name = "clk", .text = "", .data = samples("0101")};
    SignalElement high{.id = 1, .name = "d[1]", .text = "mine", .data = samples("1100")};
    SignalElement low{.id = 0, .name = "d[0]", .text = "", .data = samples("1010")};
    WindowContents contents;
    contents.addSignal(clk).color = 0xFF0000;
    BusLayoutNode &bus =
        contents.addBus({.name = "d[1:0]", .text = "a <b>", .signals = {&high, &low}});
    bus.format->setType(DataFormat::SignedDecimal);
    static_cast<SignalLayoutNode &>(*bus.child(1)).text = "row name";
    contents.addBus({.name = "empty", .text = "", .signals = {}});
    contents.setTriggerPosition(2);

    const QString xml = xmlOf(contents);
    const QString expected = QStringLiteral(R"(<Window><TriggerPosition>2</TriggerPosition><Signals>
        <Signal id="0" name="d[0]" text="">1010</Signal>
        <Signal id="1" name="d[1]" text="mine">1100</Signal>
        <Signal id="7" name="clk" text="">0101</Signal></Signals><Layout>
        <Node color="16711680" id="7" text="" type="sig"/>
        <Node color="65280" format="signed decimal" name="d[1:0]" text="a &lt;b>" type="bus">
            <Node color="65280" id="1" text="" type="sig"/>
            <Node color="65280" id="0" text="row name" type="sig"/></Node>
        <Node color="65280" format="hex" name="empty" text="" type="bus"/></Layout></Window>)");
    QCOMPARE(inOrder(xml), inOrder(expected));

    WindowContents again;
    QDomDocument document;
    QVERIFY(again.readWindow(parse(document, xml)));
    QCOMPARE(inOrder(xmlOf(again)), inOrder(xml));
    QCOMPARE(again.signalMap(), contents.signalMap());
    QCOMPARE(again.shownSample(), 2);
    QCOMPARE(rowsOf(again, again.layout()), "7=clk d[1:0](1=mine 0=row name) empty()");
    QCOMPARE(again.layout().child(0)->color, 0xFF0000);
    QCOMPARE(busRow(again.layout(), 1).format->type(), DataFormat::SignedDecimal);
}

void tst_WindowContents::readsWhatIsWrong_data()
{
    addColumns<QString, QString, QString>({"xml", "rows", "signals"});
    const QString two = "<Signals><Signal id='3' name='c'>1</Signal>"
                        "<Signal id='2' name='b' text='B'>01</Signal></Signals>";
    addRow("nothing inside", "", "", "");
    addRow("no layout: rows in file order", two, "3=c 2=B", "2:01 3:1");
    addRow("empty layout: no rows", two + "<Layout/>", "", "2:01 3:1");
    addRow("rows without a signal",
           two + "<Layout><Node type='sig' id='9'/><Node type='sig' id='3'/></Layout>", "9= 3=c",
           "2:01 3:1");
    addRow("unknown rows skipped, members of any type kept",
           two + "<Layout><Node id='3'/><Node type='bus' name='n'><Node type='bus' id='3'>"
                 "<Node type='sig' id='2'/></Node><Other id='2'/></Node></Layout>",
           "n(3=c)", "2:01 3:1");
    addRow(
        "id twice: later samples, both rows",
        "<Signals><Signal id='1' name='a'>0</Signal><Signal id='1' name='b'>1</Signal></Signals>",
        "1=b 1=b", "1:1");
    addRow("id missing, bad, negative, huge",
           "<Signals><Signal>1</Signal><Signal id='x'>11</Signal><Signal id='-5'/>"
           "<Signal id='99999999999'>111</Signal></Signals>",
           "0= 0= -5= 0=", "-5: 0:111");
    addRow("foreign characters count as 0",
           QString("<Signals><Signal id='1'>1x1 \u00b9\U0001F600\uff111</Signal></Signals>"),
           "1=", "1:101000001");
    addRow("samples in pieces of text and CDATA",
           "<Signals><Signal id='1'>111<!-- x --><![CDATA[0000011]]><b>111</b>110000000010"
           "</Signal></Signals>",
           "1=", "1:1110000011110000000010");
}

void tst_WindowContents::readsWhatIsWrong()
{
    QFETCH(QString, xml);
    WindowContents contents;
    contents.addSignal({.id = 42, .name = "old", .text = "", .data = samples("1")});
    QDomDocument document;
    QVERIFY(contents.readWindow(parse(document, "<Window>" + xml + "</Window>")));
    QTEST(rowsOf(contents, contents.layout()), "rows");
    QStringList read;
    for (const SignalElement &signal : contents.signalMap()) {
        QString digits;
        for (qsizetype i = 0; i < signal.data.size(); ++i)
            digits += signal.data.testBit(i) ? u'1' : u'0';
        read += QString::number(signal.id) + u':' + digits;
    }
    QTEST(read.join(u' '), "signals");
}

void tst_WindowContents::otherElementChangesNothing()
{
    WindowContents contents;
    contents.addSignal({.id = 42, .name = "old", .text = "", .data = samples("1")});
    contents.setTriggerPosition(5);
    contents.setShownSample(9);
    const QString before = xmlOf(contents);
    QDomDocument document;
    QVERIFY(!contents.readWindow(parse(document, "<window><Signals/></window>")));
    QVERIFY(!contents.readWindow(QDomElement()));
    QCOMPARE(xmlOf(contents), before);

    const auto positions = [&](const char *inside) {
        contents.readWindow(parse(document, QString("<Window>%1</Window>").arg(inside)));
        return QPoint(contents.triggerPosition(), contents.shownSample());
    };
    QCOMPARE(positions(""), QPoint(5, 9));
    QCOMPARE(positions("<TriggerPosition>-3</TriggerPosition>"), QPoint(-3, -3));
    QCOMPARE(positions("<TriggerPosition/>"), QPoint(0, 0));
}

void tst_WindowContents::samplesOfAnyLength()
{
    QRandomGenerator random(1);
    WindowContents contents;
    for (int length = 0; length < 150; ++length) {
        QBitArray bits(length);
        for (int i = 0; i < length; ++i)
            bits.setBit(i, random.bounded(2));
        contents.addSignal({.id = length, .name = "s", .text = "", .data = bits});
    }
    WindowContents again;
    QDomDocument document;
    QVERIFY(again.readWindow(parse(document, xmlOf(contents))));
    QCOMPARE(again.signalMap(), contents.signalMap());
    QCOMPARE(again.maxDataLength(), 149);
}

void tst_WindowContents::dropsWhatNoFileCanHold()
{
    const QString name = QString("a\x01"
                                 "b\tc\n") +
                         QChar(0xD800) + "d" + QChar(0xFFFF) + "\U0001F600" + QChar(0xDC00);
    const QString kept = "ab\tc\nd\U0001F600";
    WindowContents contents;
    SignalElement signal{.id = 0, .name = name, .text = "\x02", .data = {}};
    contents.addBus({.name = name, .text = name, .signals = {&signal}});
    static_cast<SignalLayoutNode &>(*contents.layout().child(0)->child(0)).text = name;
    WindowContents again;
    QDomDocument document;
    QVERIFY(again.readWindow(parse(document, xmlOf(contents))));
    QCOMPARE(again.signalMap().first().name, kept);
    QCOMPARE(again.signalMap().first().text, QString());
    QCOMPARE(busRow(again.layout(), 0).name, kept);
    QCOMPARE(busRow(again.layout(), 0).text, kept);
    QCOMPARE(signalRow(busRow(again.layout(), 0), 0).text, kept);
}

KEO_TEST_MAIN(tst_WindowContents)
#include "tst_windowcontents.moc"
