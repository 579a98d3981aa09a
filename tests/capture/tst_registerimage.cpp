#include <capture/bits.h>
#include <capture/registerimage.h>
#include <capture/shiftword.h>

#include <support/testmain.h>

#include <limits>

using namespace KEO;

namespace {

QList<SignalEntry> singles(int count)
{
    QList<SignalEntry> entries;
    for (int i = 0; i < count; ++i)
        entries.append({QStringLiteral("s%1").arg(i), {}, {}});
    return entries;
}

/// Gives unit and port \a index a width, a function and values, and enables the unit.
MatchUnit &useUnit(CoreConfig &core, int index, int width, int func, const QString &value0,
                   const QString &value1 = {})
{
    core.triggers[size_t(index)]->signals = singles(width);
    MatchUnit &unit = *core.matchUnits[size_t(index)];
    unit.enabled = true;
    unit.trigger = core.triggers[size_t(index)].get();
    unit.func = func;
    unit.value0 = value0;
    unit.value1 = value1;
    return unit;
}

QString textOf(const QBitArray &bits)
{
    QString text;
    for (qsizetype i = 0; i < bits.size(); ++i)
        text += bits.testBit(i) ? u'1' : u'0';
    return text;
}

QStringList textsOf(const QList<QBitArray> &words)
{
    QStringList texts;
    for (const QBitArray &word : words)
        texts += textOf(word);
    return texts;
}

/// The words written by hand, without the blanks between their fields.
QStringList words(const QStringList &written)
{
    QStringList texts;
    for (QString word : written)
        texts += word.remove(u' ');
    return texts;
}

/// Input numbers that the image sets in the table of slot \a slot, as written to its second port.
QList<int> firingInputs(const QList<QBitArray> &image, int slot)
{
    QList<int> inputs;
    const QBitArray port = writeRegisterWord(0xAB01 + 16 * slot, {});
    for (const QBitArray &word : image) {
        if (sliceBits(word, 0, 21) == port)
            inputs += textOf(sliceBits(word, word.size() - 16)).toInt(nullptr, 2);
    }
    return inputs;
}

} // namespace

class tst_RegisterImage : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void staticCore();
    void dynamicCore();
    void triggerOffset_data();
    void triggerOffset();
    void matchUnitValues_data();
    void matchUnitValues();
    void truthTables_data();
    void truthTables();
    void wideRegister();
    void hostileNumbers();
    void imageIsBounded();
    void bitHelpers();
};

void tst_RegisterImage::staticCore()
{
    CoreConfig core(5);
    core.signals = singles(4);
    core.window_num = 2;
    core.expressions = {"M3"};
    useUnit(core, 3, 8, 1, "1X0RFBN");            // one character short: "0" in front
    useUnit(core, 6, 2, 0, "11").enabled = false; // not in use
    core.matchUnits[7]->enabled = true;           // no port
    core.matchUnits[8]->enabled = true;           // a port that the design leaves unconnected
    core.matchUnits[8]->trigger = core.triggers[8].get();

    // All registers are 16 bits wide: no port, counter or row needs more.
    QCOMPARE(textsOf(buildRegisterImage(core, "KR-A", false)),
             words({
                 "1 0101",                                  // select core 5
                 "01001 0000000000100000 0000000000000000", // 0x0020: 1 expression - 1
                 "01001 0000000000100001 0000001111111111", // 0x0021: 1024 - 1
                 "01001 0000000000100010 0000001111111100", // 0x0022: 1024 - 0 - 3 - 1 = 1020
                 "01001 0000000000100011 0000000000000001", // 0x0023: 2 windows - 1
                 "01001 0000000100110000 0000000001000101", // 0x0130: of 0 1 X 0 R F B N: 1 F N
                 "01001 0000000100110001 0000000011010011", // 0x0131: 0 1 0 B N
                 "01001 0000000100110010 0000000000001111", // 0x0132: R F B N
                 "01001 0000000100110011 0000000000000001", // 0x0133: no counter, function 001
             }));
    QCOMPARE(buildExpressionImage(core), QList<QBitArray>());
}

void tst_RegisterImage::dynamicCore()
{
    CoreConfig core(18);
    core.dynamic = 1;
    core.signals = singles(17); // with the marker 18 bits
    core.capture_amount = 32;
    core.trigger_pos = 10;
    core.window_num = 4;
    core.expressions = {"M2&!M0", "M0"};
    core.expressionEnabled = {true, false};
    MatchUnit &counted = useUnit(core, 0, 2, 0, "1");
    counted.counter_enable = true;
    counted.countinuous = true;
    counted.counter = 5;
    useUnit(core, 2, 4, 6, "0010", "1001");
    MatchUnit &edge = useUnit(core, 4, 1, 0, "R");
    edge.counter_enable = true;
    edge.counter = 1;

    QCOMPARE(textsOf(buildRegisterImage(core, "KR-A", true)),
             words({
                 "1 0010",                                    // 18 is 1 0010: the low 4 bits
                 "01001 0000000000100000 000000000000000000", // 1 expression in force - 1
                 "01001 0000000000100001 000000000000011111", // 32 - 1
                 "01001 0000000000100010 000000000000010010", // 32 - 10 - 4 = 18
                 "01001 0000000000100011 000000000000000011", // 4 - 1
                 "01001 0000000100000000 000000000000000001", // M0: "01" compares to 01
                 "01001 0000000100000001 000000000000000011", // both bits count
                 "01001 0000000100000010 000000000000000000",
                 "01001 0000000100000011 000000000000001000", // continuous, function 000
                 "01001 0000000100000100 000000000000000100", // 5 - 1
                 "01001 0000000100100000 000000000000000010", // M2: minimum 0010
                 "01001 0000000100100001 000000000000001001", // maximum 1001
                 "01001 0000000100100010 000000000000000000",
                 "01001 0000000100100011 000000000000000110", // function 110
                 "01001 0000000101000000 000000000000000000", // M4: a rising edge
                 "01001 0000000101000001 000000000000000000",
                 "01001 0000000101000010 000000000000000001",
                 "01001 0000000101000011 000000000000000000", // counts, but not in a row
                 "01001 0000000101000100 000000000000000000", // 1 - 1
             }));

    // Input bit 0 is M0, bit 1 M2, bit 2 M4. M2&!M0 holds for the inputs 010 and 110, which go to
    // port 0xAB01 instead of 0xAB00.
    QCOMPARE(textsOf(buildExpressionImage(core)), words({
                                                      "01001 1010101100000000 000000000000000000",
                                                      "01001 1010101100000000 000000000000000001",
                                                      "01001 1010101100000001 000000000000000010",
                                                      "01001 1010101100000000 000000000000000011",
                                                      "01001 1010101100000000 000000000000000100",
                                                      "01001 1010101100000000 000000000000000101",
                                                      "01001 1010101100000001 000000000000000110",
                                                      "01001 1010101100000000 000000000000000111",
                                                  }));
}

void tst_RegisterImage::triggerOffset_data()
{
    QTest::addColumn<int>("dynamic");
    QTest::addColumn<QString>("device");
    QTest::addColumn<bool>("isZeo");
    QTest::addColumn<int>("offset");

    QTest::newRow("static keo, first model") << 0 << "KR-A" << false << 1020;
    QTest::newRow("static keo, last model") << 0 << "KR-R" << false << 1020;
    QTest::newRow("static keo, other model") << 0 << "KR-S" << false << 1021;
    QTest::newRow("static keo, other case") << 0 << "kr-a" << false << 1021;
    QTest::newRow("static keo, longer name") << 0 << "KR-AB" << false << 1021;
    QTest::newRow("static keo, no model") << 0 << "" << false << 1021;
    QTest::newRow("static zeo") << 0 << "KR-A" << true << 1021;
    QTest::newRow("dynamic keo") << 1 << "KR-A" << false << 1019;
    QTest::newRow("dynamic zeo") << 1 << "KR-A" << true << 1020;
}

void tst_RegisterImage::triggerOffset()
{
    QFETCH(const QString, device);
    QFETCH(const bool, isZeo);
    QFETCH(const int, offset);
    CoreConfig core;
    QFETCH(const int, dynamic);
    core.dynamic = dynamic;
    const QBitArray word = buildRegisterImage(core, device, isZeo)[3];
    QCOMPARE(textOf(word), textOf(writeRegisterWord(0x22, bitsOfInt16(offset))));
}

void tst_RegisterImage::matchUnitValues_data()
{
    QTest::addColumn<int>("func");
    QTest::addColumn<QString>("value0");
    QTest::addColumn<QString>("value1");
    QTest::addColumn<QString>("compare");
    QTest::addColumn<QString>("mask");
    QTest::addColumn<QString>("edge");

    QTest::newRow("short") << 0 << "101"
                           << ""
                           << "00000101"
                           << "11111111"
                           << "00000000";
    QTest::newRow("long") << 0 << "1111000010101"
                          << ""
                          << "11110000"
                          << "11111111"
                          << "00000000";
    QTest::newRow("unknown letters") << 1 << "1?x r0XN"
                                     << ""
                                     << "10000001"
                                     << "10000101"
                                     << "00000001";
    QTest::newRow("greater") << 2 << "00001001"
                             << "1"
                             << "00001001"
                             << "00000000"
                             << "00000000";
    QTest::newRow("less") << 3 << "00001001"
                          << "1"
                          << "00000000"
                          << "00001001"
                          << "00000000";
    QTest::newRow("greater or equal") << 4 << "1"
                                      << ""
                                      << "00000001"
                                      << "00000000"
                                      << "00000000";
    QTest::newRow("less or equal") << 5 << "RN1"
                                   << ""
                                   << "00000000"
                                   << "00000001"
                                   << "00000000";
    QTest::newRow("range") << 6 << "10"
                           << "11"
                           << "00000010"
                           << "00000011"
                           << "00000000";
    QTest::newRow("outside of range") << 7 << "10"
                                      << "11"
                                      << "00000010"
                                      << "00000011"
                                      << "00000000";
    QTest::newRow("unknown function") << 9 << "10"
                                      << "11"
                                      << "00000010"
                                      << "00000011"
                                      << "00000000";
}

void tst_RegisterImage::matchUnitValues()
{
    QFETCH(const int, func);
    QFETCH(const QString, value0);
    QFETCH(const QString, value1);
    CoreConfig core;
    const MatchUnit &unit = useUnit(core, 0, 8, func, value0, value1);
    const MatchUnitWords encoded = encodeMatchUnitValue(unit);
    QTEST(textOf(encoded.compareWord), "compare");
    QTEST(textOf(encoded.maskWord), "mask");
    QTEST(textOf(encoded.edgeWord), "edge");
    QCOMPARE(textOf(encodeMatchUnitControl(unit)),
             func > 7 ? QStringLiteral("0000")
                      : u'0' + QString::number(func, 2).rightJustified(3, u'0'));
}

void tst_RegisterImage::truthTables_data()
{
    QTest::addColumn<QStringList>("expressions");
    QTest::addColumn<QList<bool>>("flags");
    QTest::addColumn<QList<QList<int>>>("firing"); // of each slot, of the inputs M0, M1, M10

    using Flags = QList<bool>;
    using Inputs = QList<QList<int>>;
    QTest::newRow("one of three units") << QStringList{"M1"} << Flags{true} << Inputs{{2, 3, 6, 7}};
    QTest::newRow("M1 is not in M10") << QStringList{"M10&!M0"} << Flags{true} << Inputs{{4, 6}};
    QTest::newRow("second slot takes the second in force")
        << QStringList{"M0", "M1", "M10"} << Flags{true, false, true}
        << Inputs{{1, 3, 5, 7}, {4, 5, 6, 7}};
    QTest::newRow("flags of another length: all")
        << QStringList{"M0", "M10"} << Flags{} << Inputs{{1, 3, 5, 7}, {4, 5, 6, 7}};
    QTest::newRow("none in force: any input")
        << QStringList{"M0"} << Flags{false} << Inputs{{0, 1, 2, 3, 4, 5, 6, 7}};
    QTest::newRow("none at all: any input")
        << QStringList{} << Flags{} << Inputs{{0, 1, 2, 3, 4, 5, 6, 7}};
    QTest::newRow("malformed: never") << QStringList{"M0&&M1"} << Flags{true} << Inputs{{}};
    // M5 is the table's higher variable, which then always reads 0.
    QTest::newRow("a unit without a slot")
        << QStringList{"M0|M5"} << Flags{true} << Inputs{{1, 3, 5, 7}};
    // M5 is the table's lowest variable, and the packed input has no second bit to reach "11".
    QTest::newRow("a lower unit without a slot")
        << QStringList{"M5&M10"} << Flags{true} << Inputs{{}};
    QTest::newRow("M16") << QStringList{"M16"} << Flags{true} << Inputs{{}};
}

void tst_RegisterImage::truthTables()
{
    QFETCH(const QStringList, expressions);
    QFETCH(const QList<bool>, flags);
    QFETCH(const QList<QList<int>>, firing);
    CoreConfig core;
    core.dynamic = 1;
    for (const int unit : {0, 1, 10})
        useUnit(core, unit, 1, 0, "1");
    core.matchUnits[4]->enabled = true; // takes no slot: it has no port
    core.expressions = expressions;
    core.expressionEnabled = flags;

    const QList<QBitArray> image = buildExpressionImage(core);
    const bool any = expressions.isEmpty() || flags == QList<bool>{false};
    QCOMPARE(image.size(), any ? 8 : firing.size() * 8);
    for (int slot = 0; slot < firing.size(); ++slot)
        QCOMPARE(firingInputs(image, slot), firing[slot]);
}

void tst_RegisterImage::wideRegister()
{
    CoreConfig core;
    core.expressions.clear();
    useUnit(core, 0, 40, 0, "1");
    const QList<QBitArray> image = buildRegisterImage(core, "", false);
    for (qsizetype i = 1; i < image.size(); ++i)
        QCOMPARE(image[i].size(), 5 + 16 + 40);
    // No expression: -1 as a number of 32 bits.
    QCOMPARE(textOf(image[1]).right(40), QString(8, u'0') + QString(32, u'1'));
}

void tst_RegisterImage::hostileNumbers()
{
    constexpr int kLowest = std::numeric_limits<int>::min();
    CoreConfig core(kLowest);
    core.dynamic = 1;
    core.capture_amount = kLowest;
    core.trigger_pos = std::numeric_limits<int>::max();
    core.window_num = kLowest;
    MatchUnit &unit = useUnit(core, 0, 1, kLowest, QString(100'000, u'N'));
    unit.counter_enable = true;
    unit.counter = kLowest;
    const QList<QBitArray> image = buildRegisterImage(core, "KR-A", false);
    QCOMPARE(image.size(), 10);
    QCOMPARE(textOf(image[9]).right(16), QString(16, u'1')); // the low bits of -2147483649
}

/// A file may ask for any number of tables of 65,536 entries.
void tst_RegisterImage::imageIsBounded()
{
    CoreConfig core;
    core.dynamic = 1;
    useUnit(core, 0, 1, 0, "1");
    core.expressions = QStringList(100'000, QStringLiteral("M0"));
    // 16 addresses for each table from 0xAB00 up to 0xFFFF.
    QCOMPARE(buildExpressionImage(core).size(), 0x550 * 2);

    for (int unit = 1; unit < 16; ++unit)
        useUnit(core, unit, 1, 0, "1");
    core.signals = singles(80'000); // 65,536 words of 10 kB
    QVERIFY(buildExpressionImage(core).isEmpty());
}

void tst_RegisterImage::bitHelpers()
{
    const QBitArray bits = bitsOfString("1011001110001");
    QCOMPARE(textOf(bitsOfString("10xA")), QStringLiteral("1011"));
    QCOMPARE(textOf(bitsOfBytes(QByteArray::fromHex("a50f"), 3)), QStringLiteral("0010100001111"));
    QCOMPARE(textOf(bitsOfBytes(QByteArray::fromHex("a50f"), 6, 4)), QStringLiteral("0100"));
    QVERIFY(bitsOfBytes({}, 0, 8).isEmpty());
    QCOMPARE(textOf(bitsOfInt32(5)), QString(29, u'0') + QStringLiteral("101"));
    QCOMPARE(textOf(bitsOfInt16(0x18001)), QStringLiteral("1000000000000001"));
    QCOMPARE(textOf(alignBits(bits, 5)), QStringLiteral("10001"));
    QCOMPARE(textOf(alignBits(bits, 15)), QStringLiteral("001011001110001"));
    QVERIFY(alignBits(bits, -1).isEmpty());
    QCOMPARE(textOf(sliceBits(bits, 3, 9)), QStringLiteral("100111000"));
    QCOMPARE(textOf(sliceBits(bits, 8)), QStringLiteral("10001"));
    QCOMPARE(textOf(dropFrontBits(bits, 9)), QStringLiteral("0001"));
    QCOMPARE(textOf(dropBackBits(bits, 9)), QStringLiteral("1011"));
    for (const qsizetype n : {13, 14, 1'000'000}) {
        QVERIFY(dropFrontBits(bits, n).isEmpty());
        QVERIFY(dropBackBits(bits, n).isEmpty());
        QVERIFY(sliceBits(bits, n, 4).isEmpty());
    }
    QVERIFY(isZeroBits({}) && isZeroBits(QBitArray(9)) && !isZeroBits(bits));
    QCOMPARE(packMaskedBits(0b101101, bitsOfString("0101100000000000")), 0b010u | 0b100u >> 1);
    QCOMPARE(textOf(readBlockWord(0x12345, 128)),
             words({"00111 0010001101000101 0000000010000000"})[0]);
    QCOMPARE(textOf(shiftOutWord(1, 3)), words({"00111 0000000000000001 000"})[0]);
    QCOMPARE(textOf(readRegisterWord(0)), words({"01101 0000000000000000"})[0]);
}

KEO_TEST_MAIN(tst_RegisterImage)
#include "tst_registerimage.moc"
