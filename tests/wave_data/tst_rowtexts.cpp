#include <support/bittext.h>
#include <support/testmain.h>
#include <wave_data/busnames.h>
#include <wave_data/dataformat.h>

#include <QRandomGenerator>

#include <algorithm>

using WaveMonitor::DataFormat;

namespace {

QString textOf(DataFormat::Type type, const QByteArray &digits)
{
    return DataFormat(type).toText(bitsOf(QString::fromLatin1(digits)));
}

/// A digit for so many bits, counted from the last.
QString grouped(QByteArray digits, int bits)
{
    digits.prepend(QByteArray((bits - digits.size() % bits) % bits, '0'));
    QString text;
    for (qsizetype i = 0; i < digits.size(); i += bits)
        text += QString::number(digits.mid(i, bits).toUInt(nullptr, 2), 16).toUpper();
    return text;
}

/// Decimal text by doubling on paper, one bit at a time.
QString doubled(const QByteArray &bits)
{
    QByteArray digits("0"); // last digit first
    for (const char bit : bits) {
        int carry = bit - '0';
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

QByteArray negated(QByteArray bits)
{
    for (qsizetype i = bits.lastIndexOf('1') - 1; i >= 0; --i)
        bits[i] = bits[i] == '1' ? '0' : '1';
    return bits;
}

} // namespace

/// What rows are called and how their values read.
class tst_RowTexts final : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void valueOfAnyWidth();
    void valueWithoutARadix();
    void keys();
    void busName_data();
    void busName();
    void groupName();
};

void tst_RowTexts::valueOfAnyWidth()
{
    QRandomGenerator random(3);
    const auto verify = [](const QByteArray &bits) {
        QCOMPARE(textOf(DataFormat::Binary, bits), bits);
        QCOMPARE(textOf(DataFormat::Octal, bits), grouped(bits, 3));
        QCOMPARE(textOf(DataFormat::Hexadecimal, bits), grouped(bits, 4));
        QCOMPARE(textOf(DataFormat::UnsignedDecimal, bits), doubled(bits));
        QCOMPARE(textOf(DataFormat::SignedDecimal, bits),
                 bits[0] == '1' ? '-' + doubled(negated(bits)) : doubled(bits));
    };
    for (int width = 2; width < 300; ++width) {
        QByteArray bits;
        while (bits.size() < width)
            bits += random.bounded(2) ? '1' : '0';
        for (const QByteArray &each : {bits, QByteArray(width, '0'), QByteArray(width, '1'),
                                       '1' + QByteArray(width - 1, '0')})
            verify(each);
    }
    verify(QByteArray(10, '0') + QByteArray::number(1000000000000000000, 2)); // inner zeros
}

void tst_RowTexts::valueWithoutARadix()
{
    for (const auto type : {DataFormat::Binary, DataFormat::SignedDecimal, DataFormat::Ascii}) {
        QCOMPARE(textOf(type, {}), "null");
        QCOMPARE(textOf(type, "1"), "1");
    }
    QCOMPARE(textOf(DataFormat::Ascii, "01"), "");
    QCOMPARE(textOf(DataFormat::Type(77), "01"), "");
}

// Files of others hold the keys.
void tst_RowTexts::keys()
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

void tst_RowTexts::busName_data()
{
    const auto row = addColumns<QString, QString>({"names", "expected"});
    row("falling", "d[2] d[1] d[0]", "d[2:0]");
    row("rising", "d[9] d[10]", "d[9:10]");
    row("two brackets", "m[3][1] m[3][0]", "m[3][1:0]");
    row("line end in the base", "a\nb[1] a\nb[0]", "a\nb[1:0]");
    row("beyond 32 bits", "a[4294967296] a[4294967297]", "a[4294967296:4294967297]");
    row("beyond 64 bits", "a[99999999999999999999] a[99999999999999999998]", "");
    row("gap", "a[1] a[2] a[4]", "");
    row("step of two throughout", "a[0] a[2] a[4]", "");
    row("turns round", "a[1] a[2] a[1]", "");
    row("other base", "a[2] b[1]", "");
    row("other case", "a[2] A[1]", "");
    row("no index", "x x[1]", "");
    row("leading zero", "a[01] a[00]", "");
    row("no base", "[1] [0]", "");
    row("text behind", "a[1]\n a[0]\n", "");
    row("only one", "a[1]", "");
}

void tst_RowTexts::busName()
{
    QFETCH(QString, names);
    QTEST(WaveMonitor::defaultBusName(names.split(u' ')), "expected");
}

void tst_RowTexts::groupName()
{
    using WaveMonitor::groupBusName;
    QCOMPARE(WaveMonitor::defaultBusName({}), "");
    QCOMPARE(groupBusName({}, 4), "group_0[3:0]");
    QCOMPARE(groupBusName({"group_0[3:0]", "group_2[1:0]"}, 4), "group_1[3:0]");
    QCOMPARE(groupBusName({"group_1[0:0]", "group_0[1:0]", "group_1[3:0]"}, 4), "group_2[3:0]");
    QCOMPARE(groupBusName({"group_00[3:0]", "group_0", "my group_0[1:0]", "group_0[01:0]"}, 4),
             "group_0[3:0]");
}

KEO_TEST_MAIN(tst_RowTexts)
#include "tst_rowtexts.moc"
