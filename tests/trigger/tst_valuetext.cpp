#include <trigger/valuetext.h>

#include <support/testmain.h>

#include <QRandomGenerator>

using namespace KEO;

class tst_ValueText : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void anyWidth();
    void writtenForms_data();
    void writtenForms();
};

// Decimal digits doubled by hand, hexadecimal ones of the standard library, four bits each.
void tst_ValueText::anyWidth()
{
    QRandomGenerator random(31);
    for (int round = 0; round < 300; ++round) {
        QString bits;
        QString decimal = "0"; // last digit first
        for (int i = random.bounded(1, 300); i > 0; --i) {
            int carry = random.bounded(2);
            bits += QString::number(carry);
            for (QChar &digit : decimal) {
                carry += 2 * digit.digitValue();
                digit = QChar(u'0' + carry % 10);
                carry /= 10;
            }
            if (carry > 0)
                decimal += QString::number(carry);
        }
        std::reverse(decimal.begin(), decimal.end());
        QCOMPARE(decimalText(bits), decimal);
        const QString significant = bits.mid(std::max<qsizetype>(bits.indexOf(u'1'), 0));
        const QString expected = bits.contains(u'1') ? significant : QString();
        const QString hex = digitText(bits, 4);
        QString nibbles;
        for (const QChar digit : hex)
            nibbles +=
                QString::number(QString(digit).toInt(nullptr, 16), 2).rightJustified(4, u'0');
        QCOMPARE(nibbles.right(bits.size()), bits);
        for (const QString &text : {decimal + "/10", hex + "/16", digitText(bits, 3) + "/8",
                                    "0x" + hex.toLower() + "/2", "9'd" + decimal + "/16"})
            QCOMPARE(*binaryOfText(text.section(u'/', 0, 0), text.section(u'/', 1).toInt()),
                     expected);
    }
}

void tst_ValueText::writtenForms_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("base");
    QTest::addColumn<QString>("binary"); // null: refused
    const std::tuple<const char *, int, const char *> rows[] = {
        {"0x1F", 2, "11111"},
        {"0X1F", 2, "X1F"}, // capitals are a don't-care and an edge
        {"0b10", 2, "10"},
        {"0B10", 2, "B10"},
        {"0b10", 16, "101100010000"}, // digits all of them
        {"32'hDE_ad", 10, "1101111010101101"},
        {"8'sb1x_0R", 16, "1X0R"},
        {"'o17", 2, "1111"},
        {"x\"a_5\"", 2, "10100101"},
        {" 1 0 _1\n", 2, "101"},
        {"0xX1", 2, "XXXX0001"},
        {"0000", 2, ""},
        {"0x1G", 2, nullptr},
        {"-5", 10, nullptr},
        {"0x", 16, nullptr},
        {"", 2, nullptr},
        {"12", 2, nullptr},
        {"8'd1X", 2, nullptr}};
    for (const auto &[text, base, binary] : rows)
        QTest::addRow("%s in radix %d", qPrintable(QString(text).simplified()), base)
            << text << base << QString(binary);
}

void tst_ValueText::writtenForms()
{
    QFETCH(QString, text);
    QFETCH(int, base);
    QFETCH(QString, binary);
    const Result<QString> read = binaryOfText(text, base);
    QCOMPARE(bool(read), !binary.isNull());
    if (read)
        QCOMPARE(*read, binary);
    QVERIFY(read || !read.error().message.isEmpty());
}

KEO_TEST_MAIN(tst_ValueText)
#include "tst_valuetext.moc"
