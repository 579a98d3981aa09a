#include <support/bittext.h>
#include <support/testmain.h>
#include <wave_data/windowcontents.h>

#include <QDomDocument>

using namespace WaveMonitor;

namespace {

bool read(WindowContents &contents, const QString &xml)
{
    QDomDocument document;
    return document.setContent(xml) && contents.readWindow(document.documentElement());
}

QString xmlOf(const WindowContents &contents)
{
    QDomDocument document;
    document.appendChild(contents.writeWindow(document));
    return document.toString(-1);
}

/// The rows: a signal's id and names, a bus with its radix and its members in brackets.
QString rowsOf(const WindowContents &contents, const LayoutNode &parent)
{
    QStringList rows;
    for (const auto &row : parent.children) {
        QString text;
        if (row->type == LayoutNode::Signal) {
            const auto &signal = static_cast<const SignalLayoutNode &>(*row);
            text = QStringLiteral("%1=%2").arg(signal.id).arg(contents.displayName(signal));
        } else {
            const auto &bus = static_cast<const BusLayoutNode &>(*row);
            text = bus.name + u'/' + bus.text + u'/' + DataFormat::typeKey(bus.format->type()) +
                   u'(' + rowsOf(contents, bus) + u')';
        }
        rows += row->parent == &parent ? text : "wrong parent";
        if (row->color != 0x00FF00)
            rows.last() += QStringLiteral("#%1").arg(row->color, 6, 16, QLatin1Char('0'));
    }
    return rows.join(u' ');
}

/// Trigger, rows and signals.
QString textOf(const WindowContents &contents)
{
    QString text = QString::number(contents.triggerPosition()) + ": " +
                   rowsOf(contents, contents.layout()) + u';';
    for (const SignalElement &signal : contents.signalMap()) {
        text += QStringLiteral(" %1=%2/%3:").arg(signal.id).arg(signal.name, signal.text);
        text += ::textOf(signal.data);
    }
    return text;
}

} // namespace

class tst_WindowContents final : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void writesAndReadsEverything();
    void readsWhatIsWrong();
    void otherElementChangesNothing();
    void dropsWhatNoFileCanHold();
};

void tst_WindowContents::writesAndReadsEverything()
{
    SignalElement clk{.id = 7, .name = "clk", .text = "", .data = bitsOf("0101")};
    SignalElement high{.id = 1, .name = "d[1]", .text = "mine", .data = bitsOf("1100")};
    SignalElement low{.id = 0, .name = "d[0]", .text = "", .data = bitsOf("1010")};
    WindowContents contents;
    contents.addSignal(clk).color = 0xFF0000;
    BusLayoutNode &bus =
        contents.addBus({.name = "d[1:0]", .text = "a <b>", .signals = {&high, &low}});
    bus.format->setType(DataFormat::SignedDecimal);
    static_cast<SignalLayoutNode &>(*bus.child(1)).text = "row name";
    contents.addBus({.name = "empty", .text = "", .signals = {}});
    contents.setTriggerPosition(2);
    const QString expected = "2: 7=clk#ff0000 d[1:0]/a <b>/signed decimal(1=mine 0=row name) "
                             "empty//hex(); 0=d[0]/:1010 1=d[1]/mine:1100 7=clk/:0101";
    QCOMPARE(textOf(contents), expected);

    // What was written, and what files of others hold.
    const QString file = R"(<Window><TriggerPosition>2</TriggerPosition><Signals>
        <Signal id="0" name="d[0]" text="">1010</Signal>
        <Signal id="1" name="d[1]" text="mine">1100</Signal>
        <Signal id="7" name="clk" text="">0101</Signal></Signals><Layout>
        <Node color="16711680" id="7" text="" type="sig"/>
        <Node color="65280" format="signed decimal" name="d[1:0]" text="a &lt;b>" type="bus">
            <Node color="65280" id="1" text="" type="sig"/>
            <Node color="65280" id="0" text="row name" type="sig"/></Node>
        <Node color="65280" format="hex" name="empty" text="" type="bus"/></Layout></Window>)";
    for (const QString &xml : {xmlOf(contents), file}) {
        WindowContents again;
        QVERIFY(read(again, xml));
        QCOMPARE(textOf(again), expected);
        QCOMPARE(again.shownSample(), 2);
    }
}

void tst_WindowContents::readsWhatIsWrong()
{
    WindowContents contents;
    contents.addSignal({.id = 42, .name = "old", .text = "", .data = bitsOf("1")});
    const QString twice = "<Signals><Signal id='3' name='c'>0</Signal><Signal id='3' name='b'>1"
                          "</Signal><Signal id='2' text='B'>01</Signal></Signals>";
    const std::pair<QString, QString> rows[] = {
        {twice, "3=b 3=b 2=B; 2=/B:01 3=b/:1"}, // without a layout in the order of the file
        {twice + "<Layout/>", "; 2=/B:01 3=b/:1"},
        {"<Signals/><Layout><Node type='sig' id='9'/><Node id='3'/><Node type='bus' name='n'>"
         "<Node type='bus' id='3'><Node type='sig' id='2'/></Node><Other id='2'/></Node></Layout>",
         "9= n//hex(3=);"},
        {"<Signals><Signal>1</Signal><Signal id='x'>11</Signal><Signal id='-5'/>"
         "<Signal id='99999999999'>111</Signal></Signals>",
         "0= 0= -5= 0=; -5=/: 0=/:111"},
        {QString("<Signals><Signal id='1'>1x1 \u00b9\U0001F600\uff111</Signal><Signal id='2'>111"
                 "<!-- x --><![CDATA[0000011]]><b>111</b>110000000010</Signal></Signals>"),
         "1= 2=; 1=/:101000001 2=/:1110000011110000000010"}};
    for (const auto &[xml, expected] : rows) {
        QVERIFY(read(contents, "<Window>" + xml + "</Window>"));
        QCOMPARE(textOf(contents), "0: " + expected);
    }
}

void tst_WindowContents::otherElementChangesNothing()
{
    WindowContents contents;
    contents.addSignal({.id = 42, .name = "old", .text = "", .data = bitsOf("1")});
    contents.setTriggerPosition(5);
    contents.setShownSample(9);
    const QString before = textOf(contents);
    QVERIFY(!read(contents, "<window><Signals/></window>"));
    QVERIFY(!contents.readWindow(QDomElement()));
    QCOMPARE(textOf(contents), before);

    const auto positions = [&](const QString &inside) {
        read(contents, "<Window>" + inside + "</Window>");
        return QPoint(contents.triggerPosition(), contents.shownSample());
    };
    QCOMPARE(positions(""), QPoint(5, 9));
    QCOMPARE(positions("<TriggerPosition>-3</TriggerPosition>"), QPoint(-3, -3));
    QCOMPARE(positions("<TriggerPosition/>"), QPoint(0, 0));
}

void tst_WindowContents::dropsWhatNoFileCanHold()
{
    const QString name = QString("a\x01"
                                 "b\tc\n") +
                         QChar(0xD800) + QChar(0xFFFE) + "d" + QChar(0xFFFF) + "\U0001F600" +
                         QChar(0xDC00);
    WindowContents contents;
    SignalElement signal{.id = 0, .name = name, .text = "\x02", .data = {}};
    contents.addBus({.name = name, .text = name, .signals = {&signal}});
    static_cast<SignalLayoutNode &>(*contents.layout().child(0)->child(0)).text = name;
    WindowContents again;
    QVERIFY(read(again, xmlOf(contents)));
    const QString kept = "ab\tc\nd\U0001F600";
    QCOMPARE(textOf(again), QString("0: %1/%1/hex(0=%1); 0=%1/:").arg(kept));
}

KEO_TEST_MAIN(tst_WindowContents)
#include "tst_windowcontents.moc"
