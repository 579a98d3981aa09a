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
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    QTest::newRow("depth at the limit") << nested(3) << QString();
    QTest::newRow("attributes at the limit, with markup in quotes")
        << withAttributes(2) << QString();
    QTest::newRow("markup in comments, data and instructions is none")
        << QByteArray("<r><!-- <x a='' b='' c=''> --><?p <x a='' b='' c=''>?>"
                      "<![CDATA[<!DOCTYPE [= = =]]></r>")
        << "<!DOCTYPE [= = =";
    QTest::newRow("bare document type") << QByteArray("<!DOCTYPE r SYSTEM \"[\"><r>x</r>") << "x";
    QTest::newRow("declaration of our own files")
        << QByteArray("<?xml version=\"1\"?><r>x</r>") << "x";
    QTest::newRow("utf-8 by default") << QByteArray("<r>\xC3\xA4</r>") << QString(QChar(0xE4));
    QTest::newRow("utf-8 with mark")
        << QByteArray("\xEF\xBB\xBF<?xml version='1.0'?><r>x</r>") << "x";
    QTest::newRow("declared latin-1")
        << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>\xE4</r>")
        << QString(QChar(0xE4));
    QTest::newRow("utf-16 without mark")
        << QByteArray::fromRawData("<\0r\0>\0x\0<\0/\0r\0>\0", 16) << "x";
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
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<XmlLimits>("limits");
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("message"); // a pattern
    const XmlLimits wide;
    QTest::newRow("broken tag, place behind the declaration")
        << QByteArray("<?xml version=\"1\"?>\n<a>\n<b></a>") << wide << int(Error::Format)
        << "^Opening and ending tag mismatch\\. at 3:7$";
    QTest::newRow("zeros") << QByteArray(100'000, '\0') << wide << int(Error::Format)
                           << " at \\d+:\\d+$";
    QTest::newRow("not utf-8") << QByteArray("<r>\xE4</r>") << wide << int(Error::Format)
                               << "not valid UTF-8 at 0:0$";
    QTest::newRow("unknown encoding") << QByteArray("<?xml version='1.0' encoding='Klingon'?><r/>")
                                      << wide << int(Error::Format) << "Klingon";
    QTest::newRow("malformed declaration")
        << QByteArray("<?xml version=1?><r/>") << wide << int(Error::Format) << " at 1:\\d+$";
    QTest::newRow("too large") << QByteArray("<r>" + QByteArray(5000, 'x') + "</r>") << kTight
                               << int(Error::Limit) << "larger than 4096 bytes at 0:0$";
    QTest::newRow("too deep") << nested(4) << kTight << int(Error::Limit)
                              << "more than 3 deep at 1:12$";
    QTest::newRow("far too deep") << nested(100'000) << wide << int(Error::Limit)
                                  << "more than 256 deep";
    QTest::newRow("too many attributes")
        << "<a>\n" + withAttributes(3) + "</a>" << kTight << int(Error::Limit)
        << "more than 2 attributes at 2:\\d+$";
    QTest::newRow("far too many attributes")
        << withAttributes(100'000) << wide << int(Error::Limit) << "more than 256 attributes";
    QTest::newRow("too many nodes") << "<r>" + QByteArray("<a b='1'/>").repeated(6) + "</r>"
                                    << kTight << int(Error::Limit) << "more than 12 elements";
    QTest::newRow("entity bomb") << entityBomb() << wide << int(Error::Limit)
                                 << "must not declare anything at 1:13$";
    QTest::newRow("default attribute bomb")
        << defaultAttributeBomb() << wide << int(Error::Limit) << "must not declare anything";
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
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto same = [](const char *name, const QString &text) {
        QTest::newRow(name) << text << text;
    };
    const QString replacement(QChar::ReplacementCharacter);
    same("markup", QStringLiteral("a<b>&\"'c]]>"));
    same("line ends and tabs", QStringLiteral("\ta\r\nb\rc\n"));
    same("blanks alone", QStringLiteral(" \n "));
    same("latin-1 with its controls", QStringLiteral("\u00e4\u00ff\u0085\u007f"));
    same("beyond latin-1", QStringLiteral("\u20ac\U0001F600"));
    QTest::newRow("control character") << QStringLiteral("a\x01z") << "a" + replacement + "z";
    QTest::newRow("half a pair") << "a" + QString(QChar(0xD83D)) << "a" + replacement;
    QTest::newRow("no character") << QString(QChar(0xFFFE)) << replacement;
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
