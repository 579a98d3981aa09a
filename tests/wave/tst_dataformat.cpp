#include <support/testmain.h>
#include <wave/dataformat.h>

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
QByteArray doubledDigits(const QBitArray &bits, qsizetype from)
{
    QByteArray digits("0"); // last digit first
    for (qsizetype i = from; i < bits.size(); ++i) {
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
    void namesAndKeys();
};

void tst_DataFormat::text_data()
{
    QTest::addColumn<DataFormat::Type>("type");
    QTest::addColumn<QByteArray>("bits");
    QTest::addColumn<QString>("expected");
    const QByteArray ones(64, '1');
    const QByteArray minimum = '1' + QByteArray(63, '0');

    for (const auto type : {DataFormat::Binary, DataFormat::SignedDecimal, DataFormat::Ascii}) {
        QTest::addRow("no bits, type %d", type) << type << QByteArray() << "null";
        QTest::addRow("one set bit, type %d", type) << type << QByteArray("1") << "1";
        QTest::addRow("one clear bit, type %d", type) << type << QByteArray("0") << "0";
    }
    QTest::newRow("binary keeps zeros") << DataFormat::Binary << QByteArray("0010110") << "0010110";
    QTest::newRow("octal pads") << DataFormat::Octal << QByteArray("10000") << "20";
    QTest::newRow("octal over a word border")
        << DataFormat::Octal << QByteArray(65, '1') << "3" + QString(21, '7');
    QTest::newRow("hex of five bits") << DataFormat::Hexadecimal << QByteArray("10000") << "10";
    QTest::newRow("hex of three bits") << DataFormat::Hexadecimal << QByteArray("111") << "7";
    QTest::newRow("hex letters") << DataFormat::Hexadecimal
                                 << QByteArray("101010111100110111101111") << "ABCDEF";
    QTest::newRow("hex of 128 bits")
        << DataFormat::Hexadecimal << minimum + ones << "8000000000000000FFFFFFFFFFFFFFFF";
    QTest::newRow("unsigned byte") << DataFormat::UnsignedDecimal << QByteArray(8, '1') << "255";
    QTest::newRow("signed byte") << DataFormat::SignedDecimal << QByteArray(8, '1') << "-1";
    QTest::newRow("two-bit minimum") << DataFormat::SignedDecimal << QByteArray("10") << "-2";
    QTest::newRow("signed, positive") << DataFormat::SignedDecimal << QByteArray("0101") << "5";
    QTest::newRow("53 bits") << DataFormat::UnsignedDecimal << ones.left(53) << "9007199254740991";
    QTest::newRow("53 bits minimum")
        << DataFormat::SignedDecimal << minimum.left(53) << "-4503599627370496";
    QTest::newRow("54 bits") << DataFormat::UnsignedDecimal << ones.left(54) << "18014398509481983";
    QTest::newRow("54 bits minimum")
        << DataFormat::SignedDecimal << minimum.left(54) << "-9007199254740992";
    QTest::newRow("64 bits") << DataFormat::UnsignedDecimal << ones << "18446744073709551615";
    QTest::newRow("64 bits, minus one") << DataFormat::SignedDecimal << ones << "-1";
    QTest::newRow("64 bits minimum")
        << DataFormat::SignedDecimal << minimum << "-9223372036854775808";
    QTest::newRow("128 bits") << DataFormat::UnsignedDecimal << ones + ones
                              << "340282366920938463463374607431768211455";
    QTest::newRow("128 bits minimum") << DataFormat::SignedDecimal << minimum + QByteArray(64, '0')
                                      << "-170141183460469231731687303715884105728";
    QTest::newRow("128 zeros") << DataFormat::UnsignedDecimal << QByteArray(128, '0') << "0";
    QTest::newRow("inner zeros kept")
        << DataFormat::UnsignedDecimal // 10^18 in 70 bits
        << QByteArray(10, '0') + QByteArray::number(1000000000000000000, 2)
        << "1000000000000000000";
    QTest::newRow("Ascii shows nothing") << DataFormat::Ascii << QByteArray(64, '1') << "";
    QTest::newRow("unknown type") << DataFormat::Type(77) << QByteArray("01") << "";
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
        QCOMPARE(DataFormat(DataFormat::UnsignedDecimal).toText(bits), doubledDigits(bits, 0));
        const QByteArray magnitude = doubledDigits(bits.testBit(0) ? negated(bits) : bits, 0);
        QCOMPARE(DataFormat(DataFormat::SignedDecimal).toText(bits),
                 (bits.testBit(0) ? "-" : "") + magnitude);
        QString binary;
        for (int i = 0; i < width; ++i)
            binary += bits.testBit(i) ? u'1' : u'0';
        QCOMPARE(DataFormat(DataFormat::Binary).toText(bits), binary);
    }
}

void tst_DataFormat::namesAndKeys()
{
    const QStringList names{"Binary",           "Octal",       "Signed Decimal",
                            "Unsigned Decimal", "Hexadecimal", "Ascii"};
    const QStringList keys{"binary", "octal", "signed decimal", "unsigned decimal", "hex", "ASCII"};
    for (int i = 0; i < keys.size(); ++i) {
        const auto type = DataFormat::Type(i);
        QCOMPARE(DataFormat::typeName(type), names[i]);
        QCOMPARE(DataFormat::typeKey(type), keys[i]);
        QCOMPARE(DataFormat::typeFromKey(keys[i]), type);
    }
    for (const auto outside : {DataFormat::Type(-1), DataFormat::Type(6)})
        QCOMPARE(DataFormat::typeName(outside) + DataFormat::typeKey(outside), QString());
    for (const char *unknown : {"", "decimal", "HEX", "ascii", "octal "})
        QCOMPARE(DataFormat::typeFromKey(QString(unknown)), DataFormat::Hexadecimal);
}

KEO_TEST_MAIN(tst_DataFormat)
#include "tst_dataformat.moc"
