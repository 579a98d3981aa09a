#include <capture/bits.h>
#include <capture/registerimage.h>
#include <capture/shiftword.h>

#include <support/bittext.h>
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
    unit.func = MatchFunction(func);
    unit.value0 = value0;
    unit.value1 = value1;
    return unit;
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
    void dynamicCore();
    void matchUnitValues();
    void truthTables();
    void imageIsBounded();
};

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

void tst_RegisterImage::matchUnitValues()
{
    struct Row
    {
        int func;
        const char *value0;
        const char *value1;
        const char *words; // compare, mask, edge, control
    };
    for (const Row &row : {Row{0, "101", "", "00000101 11111111 00000000 0000"},
                           Row{0, "1111000010101", "", "11110000 11111111 00000000 0000"},
                           Row{1, "1?x r0XN", "", "10000001 10000101 00000001 0001"},
                           Row{2, "00001001", "1", "00001001 00000000 00000000 0010"},
                           Row{3, "00001001", "1", "00000000 00001001 00000000 0011"},
                           Row{4, "1", "", "00000001 00000000 00000000 0100"},
                           Row{5, "RN1", "", "00000000 00000001 00000000 0101"},
                           Row{7, "10", "11", "00000010 00000011 00000000 0111"},
                           Row{9, "10", "11", "00000010 00000011 00000000 0000"}}) {
        CoreConfig core;
        const MatchUnit &unit = useUnit(core, 0, 8, row.func, row.value0, row.value1);
        const MatchUnitWords words = encodeMatchUnitValue(unit);
        const QBitArray control = encodeMatchUnitControl(unit);
        QCOMPARE(textsOf({words.compareWord, words.maskWord, words.edgeWord, control}).join(u' '),
                 QString::fromLatin1(row.words));
    }
}

void tst_RegisterImage::truthTables()
{
    struct Row
    {
        QStringList expressions;
        QList<bool> flags;
        QList<QList<int>> firing; // in the table of each slot, of the inputs M0, M1, M10
    };
    const QList<int> any = {0, 1, 2, 3, 4, 5, 6, 7};
    const QList<Row> rows = {
        {{"M1"}, {true}, {{2, 3, 6, 7}}},
        {{"M10&!M0"}, {true}, {{4, 6}}}, // M1 is not in M10
        {{"M0", "M1", "M10"}, {true, false, true}, {{1, 3, 5, 7}, {4, 5, 6, 7}}},
        {{"M0", "M10"}, {}, {{1, 3, 5, 7}, {4, 5, 6, 7}}}, // flags of another length: all
        {{"M0"}, {false}, {any}},                          // none in force: any input fires
        {{}, {}, {any}},
        {{"M0&&M1"}, {true}, {{}}},
        // M5 has no slot. As the table's higher variable it always reads 0; as the lower one it
        // takes the other's place.
        {{"M0|M5"}, {true}, {{1, 3, 5, 7}}},
        {{"M5&M10"}, {true}, {{}}},
        {{"M16"}, {true}, {{}}}};
    for (const Row &row : rows) {
        CoreConfig core;
        core.dynamic = 1;
        for (const int unit : {0, 1, 10})
            useUnit(core, unit, 1, 0, "1");
        core.matchUnits[4]->enabled = true; // takes no slot: it has no port
        core.expressions = row.expressions;
        core.expressionEnabled = row.flags;
        const QList<QBitArray> image = buildExpressionImage(core);
        QCOMPARE(image.size(), row.firing.size() * 8);
        for (int slot = 0; slot < row.firing.size(); ++slot)
            QCOMPARE(firingInputs(image, slot), row.firing[slot]);
    }
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

KEO_TEST_MAIN(tst_RegisterImage)
#include "tst_registerimage.moc"
