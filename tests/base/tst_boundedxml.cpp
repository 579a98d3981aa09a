#include <base/boundedxml.h>
#include <base/xmltext.h>

#include <support/testmain.h>

#include <QXmlStreamWriter>

using namespace KEO;

class tst_BoundedXml : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void accepted_data();
    void accepted();
    void refused_data();
    void refused();
    void writtenTextComesBack_data();
    void writtenTextComesBack();
};

namespace {

constexpr XmlLimits kTight{.maxSize = 4096, .maxDepth = 3, .maxAttributes = 2, .maxNodes = 12};

QByteArray nested(int depth)
{
    return QByteArray("<a>").repeated(depth) + QByteArray("</a>").repeated(depth);
}

QByteArray withAttributes(int count)
{
    QByteArray tag = "<r";
    for (int i = 0; i < count; ++i)
        tag += " a" + QByteArray::number(i) + "='>'";
    return tag + "/>";
}

/// Declared texts that refer to one another: a few lines that would expand to gigabytes.
QByteArray entityBomb()
{
    QByteArray text = "<!DOCTYPE r [<!ENTITY e0 \"xxxxxxxxxx\">";
    for (int i = 1; i < 10; ++i) {
        const QByteArray inner = "&e" + QByteArray::number(i - 1) + ";";
        text += "<!ENTITY e" + QByteArray::number(i) + " \"" + inner.repeated(10) + "\">";
    }
    return text + "]><r>&e9;</r>";
}

/// The same growth inside the declarations, which no limit on the content would see.
QByteArray defaultAttributeBomb()
{
    QByteArray text = "<!DOCTYPE r [<!ENTITY e \"" + QByteArray(1000, 'x') + "\"><!ATTLIST r";
    text += " a CDATA \"" + QByteArray("&e;").repeated(100'000) + "\"";
    return text + ">]><r/>";
}

} // namespace

void tst_BoundedXml::accepted_data()
{
    addColumns<QByteArray, QString>({"bytes", "text"});
    const auto row = [](const char *name, const QByteArray &bytes, const QString &text) {
        addRow(name, bytes, text);
    };
    row("depth at the limit", nested(3), "");
    row("attributes at the limit, with markup in quotes", withAttributes(2), "");
    row("markup in comments, data and instructions is none",
        "<r><!-- <x a='' b='' c=''> --><?p <x a='' b='' c=''>?><![CDATA[<!DOCTYPE [= = =]]></r>",
        "<!DOCTYPE [= = =");
    row("bare document type", "<!DOCTYPE r SYSTEM \"[\"><r>x</r>", "x");
    row("declaration of our own files", "<?xml version=\"1\"?><r>x</r>", "x");
    row("utf-8 by default", "<r>\xC3\xA4</r>", QChar(0xE4));
    row("utf-8 with mark", "\xEF\xBB\xBF<?xml version='1.0'?><r>x</r>", "x");
    row("declared latin-1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>\xE4</r>",
        QChar(0xE4));
    row("utf-16 without mark", QByteArray::fromRawData("<\0r\0>\0x\0<\0/\0r\0>\0", 16), "x");
}

void tst_BoundedXml::accepted()
{
    QFETCH(QByteArray, bytes);
    const Result<QDomDocument> document = parseBoundedXml(bytes, kTight);
    QVERIFY2(document, document ? "" : qPrintable(document.error().message));
    QTEST(document->documentElement().text(), "text");
}

void tst_BoundedXml::refused_data()
{
    addColumns<QByteArray, XmlLimits, int, QString>({"bytes", "limits", "kind", "message"});
    const auto wrong = [](const char *name, const QByteArray &bytes, const char *pattern) {
        addRow(name, bytes, XmlLimits(), int(Error::Format), pattern);
    };
    wrong("broken tag, place behind the declaration", "<?xml version=\"1\"?>\n<a>\n<b></a>",
          "^Opening and ending tag mismatch\\. at 3:7$");
    wrong("zeros", QByteArray(100'000, '\0'), " at \\d+:\\d+$");
    wrong("not utf-8", "<r>\xE4</r>", "not valid UTF-8 at 0:0$");
    wrong("unknown encoding", "<?xml version='1.0' encoding='Klingon'?><r/>", "Klingon");
    wrong("malformed declaration", "<?xml version=1?><r/>", " at 1:\\d+$");
    const auto large = [](const char *name, const XmlLimits &limits, const QByteArray &bytes,
                          const char *pattern) {
        addRow(name, bytes, limits, int(Error::Limit), pattern);
    };
    large("too large", kTight, "<r>" + QByteArray(5000, 'x') + "</r>",
          "larger than 4096 bytes at 0:0$");
    large("too deep", kTight, nested(4), "more than 3 deep at 1:12$");
    large("far too deep", {}, nested(100'000), "more than 256 deep");
    large("too many attributes", kTight, "<a>\n" + withAttributes(3) + "</a>",
          "more than 2 attributes at 2:\\d+$");
    large("far too many attributes", {}, withAttributes(100'000), "more than 256 attributes");
    large("too many nodes", kTight, "<r>" + QByteArray("<a b='1'/>").repeated(6) + "</r>",
          "more than 12 elements");
    large("entity bomb", {}, entityBomb(), "must not declare anything at 1:13$");
    large("default attribute bomb", {}, defaultAttributeBomb(), "must not declare anything");
}

void tst_BoundedXml::refused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(XmlLimits, limits);
    QFETCH(QString, message);
    const Result<QDomDocument> document = parseBoundedXml(bytes, limits);
    QVERIFY(!document);
    QVERIFY2(QRegularExpression(message).match(document.error().message).hasMatch(),
             qPrintable(document.error().message));
    QTEST(int(document.error().kind), "kind");
}

void tst_BoundedXml::writtenTextComesBack_data()
{
    addColumns<QString, QString>({"text", "expected"});
    for (const QString text :
         {"a<b>&\"'c]]>", "\ta\r\nb\rc\n", " \n ", "\u00e4\u00ff\u0085\u007f", "\u20ac\U0001F600"})
        QTest::addRow("as it is, %d", int(text.size())) << text << text;
    const QString replacement(QChar::ReplacementCharacter);
    addRow("control character", "a\x01z", "a" + replacement + "z");
    addRow("half a pair", "a" + QString(QChar(0xD83D)), "a" + replacement);
    addRow("no character", QString(QChar(0xFFFE)), replacement);
}

// As attribute and as content, through the bytes of a Latin-1 file.
void tst_BoundedXml::writtenTextComesBack()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QString written;
    QXmlStreamWriter xml(&written);
    xml.writeStartElement(QStringLiteral("r"));
    xml.writeAttribute(QStringLiteral("a"), xmlSafeText(text));
    writeXmlContent(xml, text);
    xml.writeEndElement();
    const QByteArray file = latin1XmlDocument(written).toLatin1();
    const Result<QDomDocument> document = parseBoundedXml(QString::fromLatin1(file));
    QVERIFY2(document, document ? "" : qPrintable(document.error().message));
    QCOMPARE(document->documentElement().attribute(QStringLiteral("a")), expected);
    QCOMPARE(document->documentElement().text(), expected);
}

KEO_TEST_MAIN(tst_BoundedXml)
#include "tst_boundedxml.moc"
