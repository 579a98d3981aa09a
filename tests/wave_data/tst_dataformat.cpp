#include <support/testmain.h>
#include <wave_data/dataformat.h>

#include <QBitArray>
#include <QRandomGenerator>

#include <algorithm>

using WaveMonitor::DataFormat;

namespace {

QBitArray bitsOf(const QByteArray &digits)
{
    QBitArray bits(digits.size());
    for (qsizetype i = 0; i < digits.size(); ++i)
        bits.setBit(i, digits[i] == '1');
    return bits;
}

/// Decimal text by doubling on paper, one bit at a time.
QByteArray doubledDigits(const QBitArray &bits)
{
    QByteArray digits("0"); // last digit first
    for (qsizetype i = 0; i < bits.size(); ++i) {
        int carry = bits.testBit(i) ? 1 : 0;
        for (char &digit : digits) {
            const int sum = (digit - '0') * 2 + carry;
            digit = char('0' + sum % 10);
            carry = sum / 10;
        }
        if (carry)
            digits.append('1');
    }
    std::reverse(digits.begin(), digits.end());
    return digits;
}

QBitArray negated(QBitArray bits)
{
    qsizetype i = bits.size() - 1;
    while (i > 0 && !bits.testBit(i))
        --i;
    while (--i >= 0)
        bits.toggleBit(i);
    return bits;
}

} // namespace

class tst_DataFormat : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void text_data();
    void text();
    void anyWidth();
    void keys();
};

void tst_DataFormat::text_data()
{
    addColumns<DataFormat::Type, QByteArray, QString>({"type", "bits", "expected"});
    const auto row = [](const char *name, DataFormat::Type type, const QByteArray &bits,
                        const QString &text) { addRow(name, type, bits, text); };
    const QByteArray ones(64, '1');
    const QByteArray minimum = '1' + QByteArray(63, '0');
    for (const auto type : {DataFormat::Binary, DataFormat::SignedDecimal, DataFormat::Ascii}) {
        QTest::addRow("no bits, type %d", type) << type << QByteArray() << "null";
        QTest::addRow("one set bit, type %d", type) << type << QByteArray("1") << "1";
    }
    row("binary keeps zeros", DataFormat::Binary, "0010110", "0010110");
    row("octal pads", DataFormat::Octal, "10000", "20");
    row("octal over a word border", DataFormat::Octal, QByteArray(65, '1'), "3" + QString(21, '7'));
    row("hex of five bits", DataFormat::Hexadecimal, "10000", "10");
    row("hex of three bits", DataFormat::Hexadecimal, "111", "7");
    row("hex letters", DataFormat::Hexadecimal, "101010111100110111101111", "ABCDEF");
    row("hex of 128 bits", DataFormat::Hexadecimal, minimum + ones,
        "8000000000000000FFFFFFFFFFFFFFFF");
    row("unsigned byte", DataFormat::UnsignedDecimal, "11111111", "255");
    row("signed byte", DataFormat::SignedDecimal, "11111111", "-1");
    row("two-bit minimum", DataFormat::SignedDecimal, "10", "-2");
    row("signed, positive", DataFormat::SignedDecimal, "0101", "5");
    row("54 bits", DataFormat::UnsignedDecimal, ones.left(54), "18014398509481983");
    row("54 bits minimum", DataFormat::SignedDecimal, minimum.left(54), "-9007199254740992");
    row("64 bits", DataFormat::UnsignedDecimal, ones, "18446744073709551615");
    row("64 bits minimum", DataFormat::SignedDecimal, minimum, "-9223372036854775808");
    row("128 bits", DataFormat::UnsignedDecimal, ones + ones,
        "340282366920938463463374607431768211455");
    row("128 bits minimum", DataFormat::SignedDecimal, minimum + QByteArray(64, '0'),
        "-170141183460469231731687303715884105728");
    row("128 zeros", DataFormat::UnsignedDecimal, QByteArray(128, '0'), "0");
    const QByteArray quintillion = QByteArray::number(1000000000000000000, 2);
    row("inner zeros kept", DataFormat::UnsignedDecimal, QByteArray(10, '0') + quintillion,
        "1000000000000000000");
    row("Ascii shows nothing", DataFormat::Ascii, ones, "");
    row("unknown type", DataFormat::Type(77), "01", "");
}

void tst_DataFormat::text()
{
    QFETCH(DataFormat::Type, type);
    QFETCH(QByteArray, bits);
    QTEST(DataFormat(type).toText(bitsOf(bits)), "expected");
}

void tst_DataFormat::anyWidth()
{
    QRandomGenerator random(3);
    for (int width = 2; width < 300; ++width) {
        QBitArray bits(width);
        for (int i = 0; i < width; ++i)
            bits.setBit(i, random.bounded(2));
        QCOMPARE(DataFormat(DataFormat::UnsignedDecimal).toText(bits), doubledDigits(bits));
        const QByteArray magnitude = doubledDigits(bits.testBit(0) ? negated(bits) : bits);
        QCOMPARE(DataFormat(DataFormat::SignedDecimal).toText(bits),
                 (bits.testBit(0) ? "-" : "") + magnitude);
    }
}

// Files of others hold the keys.
void tst_DataFormat::keys()
{
    const QStringList keys{"binary", "octal", "signed decimal", "unsigned decimal", "hex", "ASCII"};
    for (int i = 0; i < keys.size(); ++i) {
        QCOMPARE(DataFormat::typeKey(DataFormat::Type(i)), keys[i]);
        QCOMPARE(DataFormat::typeFromKey(keys[i]), DataFormat::Type(i));
    }
    QCOMPARE(DataFormat::typeKey(DataFormat::Type(6)), QString());
    for (const char *unknown : {"", "decimal", "HEX", "ascii", "octal "})
        QCOMPARE(DataFormat::typeFromKey(QString(unknown)), DataFormat::Hexadecimal);
}

KEO_TEST_MAIN(tst_DataFormat)
#include "tst_dataformat.moc"
