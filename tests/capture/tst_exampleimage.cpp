// The words that arm the two cores of the example design, against a table worked out by hand from
// its description.

#include <capture/registerimage.h>
#include <config/standardconfig.h>

#include <support/testmain.h>

using namespace KEO;

namespace {

QStringList textsOf(const QList<QBitArray> &words)
{
    QStringList texts;
    for (const QBitArray &word : words) {
        QString text;
        for (qsizetype i = 0; i < word.size(); ++i)
            text += word.testBit(i) ? u'1' : u'0';
        texts += text;
    }
    return texts;
}

QStringList withoutBlanks(QStringList words)
{
    return words.replaceInStrings(QStringLiteral(" "), QString());
}

} // namespace

class tst_ExampleImage : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void staticCore();
    void dynamicCore();
    void dynamicCoreExpressions();

private:
    CoreList m_cores;
};

void tst_ExampleImage::initTestCase()
{
    m_cores =
        loadStandardConfigFile(QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo/uart_fifo.keo"));
    QCOMPARE(m_cores.size(), size_t(2));
    m_cores[1]->ensureExpressionFlags();
}

// 15 captured bits and the marker: registers of 16 bits.
void tst_ExampleImage::staticCore()
{
    QCOMPARE(textsOf(buildRegisterImage(*m_cores[0], "KR-C", false)),
             withoutBlanks({
                 "1 0000",                                  // select core 0
                 "01001 0000000000100000 0000000000000000", // 0x0020: 1 expression - 1
                 "01001 0000000000100001 0000001111111111", // 0x0021: 1024 - 1
                 "01001 0000000000100010 0000001101111100", // 0x0022: 1024 - 128 - 3 - 1 = 892
                 "01001 0000000000100011 0000000000000000", // 0x0023: 1 window - 1
                 "01001 0000000100000000 0000000000000001", // M0 == 1, compare
                 "01001 0000000100000001 0000000000000001", // mask
                 "01001 0000000100000010 0000000000000000", // edge
                 "01001 0000000100000011 0000000000000000", // function 0
                 "01001 0000000100010000 0000000001001000", // M1 == 01001000 ("H"), compare
                 "01001 0000000100010001 0000000011111111", // mask
                 "01001 0000000100010010 0000000000000000", // edge
                 "01001 0000000100010011 0000000000000000", // function 0
             }));
    QCOMPARE(buildExpressionImage(*m_cores[0]), QList<QBitArray>());
}

// 18 captured bits and the marker: registers of 19 bits.
void tst_ExampleImage::dynamicCore()
{
    QCOMPARE(textsOf(buildRegisterImage(*m_cores[1], "KR-C", false)),
             withoutBlanks({
                 "1 0001",                                     // select core 1
                 "01001 0000000000100000 0000000000000000010", // 0x0020: 3 expressions - 1
                 "01001 0000000000100001 0000000000011111111", // 0x0021: 256 - 1
                 "01001 0000000000100010 0000000000010111011", // 0x0022: 256 - 64 - 4 - 1 = 187
                 "01001 0000000000100011 0000000000000000011", // 0x0023: 4 windows - 1
                 "01001 0000000100000000 0000000000000000011", // M0 in 00011 to 01111: minimum
                 "01001 0000000100000001 0000000000000001111", // maximum
                 "01001 0000000100000010 0000000000000000000", // edge
                 "01001 0000000100000011 0000000000000000110", // function 6
                 "01001 0000000100010000 0000000000000000000", // M1 == RX, compare
                 "01001 0000000100010001 0000000000000000000", // mask
                 "01001 0000000100010010 0000000000000000010", // edge
                 "01001 0000000100010011 0000000000000000000", // function 0
                 "01001 0000000100100000 0000000000000000001", // M2 == 1, compare
                 "01001 0000000100100001 0000000000000000001", // mask
                 "01001 0000000100100010 0000000000000000000", // edge
                 "01001 0000000100100011 0000000000000000000", // function 0, not continuous
                 "01001 0000000100100100 0000000000000000100", // counter: 5 - 1
                 "01001 0000000100110000 0000000000000000000", // M3 == XR, compare
                 "01001 0000000100110001 0000000000000000000", // mask
                 "01001 0000000100110010 0000000000000000001", // edge
                 "01001 0000000100110011 0000000000000000000", // function 0
             }));
}

// Four units in use: 16 input numbers a table, M0 in the lowest bit.
void tst_ExampleImage::dynamicCoreExpressions()
{
    const QStringList tables = {
        "0001000100010001", // M0&M1: inputs 3, 7, 11, 15
        "0000010100000101", // M2&M0: inputs 5, 7, 13, 15
        "0000000011111111", // M3: inputs from 8
    };
    // Port of slot e: 0xAB00 + 16 e clears the entry of the input number, the next one sets it.
    const QStringList clears = {"1010101100000000", "1010101100010000", "1010101100100000"};
    const QStringList sets = {"1010101100000001", "1010101100010001", "1010101100100001"};
    const QStringList inputs = {"0000", "0001", "0010", "0011", "0100", "0101", "0110", "0111",
                                "1000", "1001", "1010", "1011", "1100", "1101", "1110", "1111"};
    QStringList expected;
    for (int slot = 0; slot < 3; ++slot) {
        for (int input = 0; input < 16; ++input)
            expected += "01001" + (tables[slot][input] == u'1' ? sets : clears)[slot] +
                        "000000000000000" + inputs[input];
    }
    QCOMPARE(textsOf(buildExpressionImage(*m_cores[1])), expected);
}

KEO_TEST_MAIN(tst_ExampleImage)
#include "tst_exampleimage.moc"
