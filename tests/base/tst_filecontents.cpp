// Whole files, and XML from outside, within limits.

#include <base/boundedxml.h>
#include <base/wholefile.h>
#include <base/xmltext.h>

#include <support/fulldisk.h>
#include <support/testmain.h>

#include <QXmlStreamWriter>

#include <cerrno>
#include <sys/stat.h>

using namespace KEO;

class tst_FileContents : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void refusesToRead();
    void takesMemoryForTheFileAlone();
    void replacesFilesAlone();
    void lineEnds();
    void keepsTheOldFileWhenTheDiskIsFull();
    void acceptedXml_data();
    void acceptedXml();
    void refusedXml_data();
    void refusedXml();
    void writtenTextComesBack();

private:
    QString path(const char *name) const { return m_directory.filePath(QLatin1String(name)); }
    QTemporaryDir m_directory;
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
        tag += " a" + QByteArray::number(i) + "='>\"'";
    return tag + "/>";
}

} // namespace

void tst_FileContents::refusesToRead()
{
    QVERIFY(!writeWholeFile(path("large"), QByteArray(11, 'x'), LineEnds::AsTheyAre));
    QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
    for (const QString &file :
         {path("missing"), m_directory.path(), path("large"), path("pipe"), QString("/dev/zero")}) {
        const Result<QByteArray> content = readWholeFile(file, 10, LineEnds::AsTheyAre);
        QVERIFY2(!content, qPrintable(file));
        QCOMPARE(content.error().kind, file.endsWith("large") ? Error::Limit : Error::File);
        QVERIFY2(content.error().message.contains(file), qPrintable(content.error().message));
    }
}

void tst_FileContents::takesMemoryForTheFileAlone()
{
    QVERIFY(!writeWholeFile(path("small"), "x", LineEnds::AsTheyAre));
    const qint64 allowed = qint64(1) << 40; // more than there is
    const auto content = readWholeFile(path("small"), allowed, LineEnds::AsTheyAre);
    QVERIFY(content && *content == "x");
}

void tst_FileContents::replacesFilesAlone()
{
    QCOMPARE(mkfifo(qPrintable(path("fifo")), 0600), 0);
    for (const QString &special : {path("fifo"), m_directory.path()}) {
        const auto error = writeWholeFile(special, "x", LineEnds::AsTheyAre);
        QVERIFY2(error && error->message.contains(special), qPrintable(special));
    }
    struct stat present = {};
    QVERIFY(stat(qPrintable(path("fifo")), &present) == 0 && S_ISFIFO(present.st_mode));
}

void tst_FileContents::lineEnds()
{
    QVERIFY(!writeWholeFile(path("f"), "a\r\nb\n", LineEnds::AsTheyAre));
    QCOMPARE(*readWholeFile(path("f"), 5, LineEnds::AsTheyAre), QByteArray("a\r\nb\n"));
    QCOMPARE(*readWholeFile(path("f"), 5, LineEnds::Native), QByteArray("a\nb\n"));
}

void tst_FileContents::keepsTheOldFileWhenTheDiskIsFull()
{
    QVERIFY(!writeWholeFile(path("kept"), "old", LineEnds::AsTheyAre));
    std::optional<Error> small;
    std::optional<Error> large;
    {
        const FullDisk disk(1000);
        small = writeWholeFile(path("kept"), QByteArray(2000, 'x'), LineEnds::AsTheyAre);
        large = writeWholeFile(path("kept"), QByteArray(200'000, 'x'), LineEnds::AsTheyAre);
    }
    for (const auto &error : {small, large})
        QVERIFY2(error && error->message.endsWith(qt_error_string(EFBIG)), "the reason is told");
    QCOMPARE(*readWholeFile(path("kept"), 10, LineEnds::AsTheyAre), QByteArray("old"));
    QCOMPARE(QDir(m_directory.path()).entryList({QStringLiteral("kept*")}).size(), 1);
}

void tst_FileContents::acceptedXml_data()
{
    const auto row = addColumns<QByteArray, QString>({"bytes", "text"});
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

void tst_FileContents::acceptedXml()
{
    QFETCH(QByteArray, bytes);
    const Result<QDomDocument> document = parseBoundedXml(bytes, kTight);
    QVERIFY2(document, document ? "" : qPrintable(document.error().message));
    QTEST(document->documentElement().text(), "text");
}

void tst_FileContents::refusedXml_data()
{
    addColumns<QByteArray, XmlLimits, int, QString>({"bytes", "limits", "kind", "message"});
    const auto wrong = [](const char *name, const QByteArray &bytes, const char *pattern) {
        addRow(name, bytes, XmlLimits(), int(Error::Format), pattern);
    };
    wrong("broken tag, place behind the declaration", "<?xml version=\"1\"?>\n<a>\n<b></a>",
          "^Opening and ending tag mismatch at 3:7$");
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
    // What refers to one another makes gigabytes of a few lines.
    large("entities", {}, "<!DOCTYPE r [<!ENTITY e \"x\">]><r>&e;</r>",
          "must not declare anything at 1:13$");
}

void tst_FileContents::refusedXml()
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

// As attribute and as content, through the bytes of a Latin-1 file.
void tst_FileContents::writtenTextComesBack()
{
    const QString none(QChar::ReplacementCharacter);
    const std::pair<QString, QString> rows[] = {{"a<b>&\"'c]]>", {}},
                                                {"\ta\r\nb\rc\n", {}},
                                                {" \n ", {}},
                                                {"\u00e4\u00ff\u0085\u007f", {}},
                                                {"\u20ac\U0001F600", {}},
                                                {"a\x01z", "a" + none + "z"},
                                                {"a" + QString(QChar(0xD83D)), "a" + none},
                                                {QString(QChar(0xFFFE)), none}};
    for (const auto &[text, changed] : rows) {
        QString written;
        QXmlStreamWriter xml(&written);
        xml.writeStartElement(QStringLiteral("r"));
        xml.writeAttribute(QStringLiteral("a"), xmlSafeText(text));
        writeXmlContent(xml, text);
        xml.writeEndElement();
        const QByteArray file = latin1XmlDocument(written).toLatin1();
        const Result<QDomDocument> document = parseBoundedXml(QString::fromLatin1(file));
        QVERIFY2(document, document ? "" : qPrintable(document.error().message));
        const QString expected = changed.isEmpty() ? text : changed;
        QCOMPARE(document->documentElement().attribute(QStringLiteral("a")), expected);
        QCOMPARE(document->documentElement().text(), expected);
    }
}

KEO_TEST_MAIN(tst_FileContents)
#include "tst_filecontents.moc"
