#include "bittext.h"

#include <support/testmain.h>

#include <coremodel.h>
#include <expression.h>
#include <matchunit.h>

#include <QRandomGenerator>

#include <memory>

using namespace Sim;

namespace {

constexpr int kStimulus = 997; // samples; prime, so that laps and rings don't fall in step

/// Level of a captured signal at a sample.
bool level(int signal, qint64 sample)
{
    const quint32 mixed = quint32(sample) * 2654435761u ^ quint32(signal + 1) * 40503u * 65537u;
    return ((mixed >> 7) ^ (mixed >> 18)) & 1;
}

/// Value of the 8-bit trigger port 0 at a sample.
int portValue(qint64 sample)
{
    return int((sample * 37 + sample * sample % 101) & 0xff);
}

/// A core with \a captured signals and \a units match units, all on port 0.
CoreDescription description(int captured, int units, int portWidth = 8)
{
    CoreDescription core;
    core.sampleClock = QStringLiteral("clk");
    core.storageDepth = 1024;
    for (int i = 0; i < captured; ++i)
        core.captured.append(QStringLiteral("s%1").arg(i));
    for (int i = 0; i < portWidth; ++i)
        core.ports[0].append(QStringLiteral("p%1").arg(i));
    for (int i = 0; i < units; ++i)
        core.units[size_t(i)] = {true, false, 0, 0};
    return core;
}

/// \a samples of \a core, whose captured signals and port 0 follow formulas.
template <typename Level, typename Value>
CoreStimulus stimulusOf(const CoreDescription &core, qint64 samples, Level level, Value value)
{
    const int portWidth = int(core.ports[0].size());
    CoreStimulus stimulus;
    stimulus.captured = BitMatrix(int(core.captured.size()));
    stimulus.ports[0] = BitMatrix(portWidth);
    for (qint64 sample = 0; sample < samples; ++sample) {
        stimulus.captured.appendRow();
        stimulus.ports[0].appendRow();
        for (int signal = 0; signal < core.captured.size(); ++signal) {
            if (level(signal, sample))
                stimulus.captured.setInLastRow(signal);
        }
        for (int bit = 0; bit < portWidth; ++bit) {
            if (value(sample) >> (portWidth - 1 - bit) & 1)
                stimulus.ports[0].setInLastRow(bit);
        }
    }
    return stimulus;
}

/// Drives a core by words made of binary text.
class Bench
{
public:
    explicit Bench(const CoreDescription &core, bool extraRow = false)
        : Bench(core, stimulusOf(core, kStimulus, level, portValue), extraRow)
    {
    }
    Bench(const CoreDescription &core, const CoreStimulus &stimulus, bool extraRow = false)
        : model(core, stimulus, extraRow, [this](const QString &text) { reports.append(text); })
    {
    }

    void shift(const QString &bits) { model.shiftIn(parseShiftWord(bitsOf(bits))); }

    void write(int address, quint64 value)
    {
        shift(QStringLiteral("01001") + binary(quint64(address), 16) +
              binary(value, model.registerWidth()));
    }

    /// Capture settings as the register map wants them, for a trigger at row \a position.
    void configure(int amount, int position, int windows, int expressions = 1, int extraRow = 0)
    {
        const int lead = model.description().dynamic ? 3 : 2;
        write(0x20, quint64(expressions - 1));
        write(0x21, quint64(amount - 1));
        write(0x22, quint64(amount - position - 1 - lead - extraRow));
        write(0x23, quint64(windows - 1));
    }

    void setUnitEqual(int unit, quint64 value, quint64 mask)
    {
        write(0x100 + 16 * unit, value);
        write(0x101 + 16 * unit, mask);
        write(0x102 + 16 * unit, 0);
        write(0x103 + 16 * unit, 0);
    }

    bool isIdle()
    {
        shift(QStringLiteral("01101") + binary(0, 16));
        return model.shiftOut(model.registerWidth()).count(true) == 0;
    }

    /// Rows of the memory by address, each as text with its marker first, after checks of what
    /// stands around them.
    QStringList rows(int address, int count)
    {
        shift(QStringLiteral("00111") + binary(quint64(address), 16) + binary(quint64(count), 16));
        const int width = model.registerWidth();
        const QBitArray raw = model.shiftOut(qsizetype(width) * count + 33);
        const int used = int(model.description().captured.size()) + 1;
        QStringList result;
        bool clear = !raw.testBit(raw.size() - 1) && numberAt(raw, 0, 32) != 0;
        for (int row = count - 1; row >= 0; --row) {
            QString text;
            for (int bit = 0; bit < width; ++bit) {
                const bool isSet = raw.testBit(32 + qsizetype(row) * width + bit);
                if (bit >= width - used)
                    text.append(isSet ? u'1' : u'0');
                else
                    clear = clear && !isSet;
            }
            result.append(text);
        }
        if (!clear)
            result.clear();
        return result;
    }

    QStringList reports;
    CoreModel model;
};

QString expectedRow(const CoreDescription &core, qint64 sample, bool marker)
{
    QString text(marker ? u'1' : u'0');
    for (int signal = 0; signal < core.captured.size(); ++signal)
        text.append(level(signal, sample % kStimulus) ? u'1' : u'0');
    return text;
}

} // namespace

class tst_SimCoreModel : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void rings();
    void forced();
    void dynamicTables();
    void counters_data();
    void counters();
    void matches_data();
    void matches();
    void expressions_data();
    void expressions();
    void badWords_data();
    void badWords();
};

/// Captures of many shapes: each window's ring holds exactly the samples around its trigger, the
/// next window goes on with the next sample, and nothing of an older capture stays.
void tst_SimCoreModel::rings()
{
    QRandomGenerator random(20240607);
    for (int round = 0; round < 200; ++round) {
        const int captured = QList<int>{1, 15, 16, 40, 63, 64, 130}.at(random.bounded(7));
        CoreDescription core = description(captured, 1);
        core.dynamic = random.bounded(2) == 1;
        core.expressions.append(QStringLiteral("M0"));
        const bool extraRow = random.bounded(2) == 1;
        const int windows = random.bounded(1, 9);
        const int amount = 32 << random.bounded(windows > 4 ? 3 : windows > 1 ? 4 : 6);
        // The ends of the range are where the ring goes wrong first.
        const int position = random.bounded(4) == 0   ? amount - 9
                             : random.bounded(4) == 0 ? 0
                                                      : random.bounded(amount - 8);
        const int wanted = portValue(random.bounded(kStimulus));

        Bench bench(core, extraRow);
        bench.configure(amount, position, windows, 1, extraRow);
        bench.setUnitEqual(0, quint64(wanted), 0xff);
        bench.write(core.dynamic ? 0xab01 : 0x20, core.dynamic ? 1 : 0);

        qint64 start = 0;
        for (int run = 0; run < 2; ++run) {
            bench.write(0, 1);
            QVERIFY(!bench.isIdle());
            for (int guard = 0; guard < 100000 && !bench.isIdle(); ++guard)
                bench.model.advance(random.bounded(1, 300));
            QVERIFY(bench.isIdle());

            const int lead = core.dynamic ? 3 : 2;
            int stride = 1024;
            for (int share = 1; share < windows; share *= 2)
                stride /= 2;
            for (int window = 0; window < windows; ++window) {
                qint64 trigger = start + position;
                while (portValue(trigger % kStimulus) != wanted)
                    ++trigger;
                const QStringList rows = bench.rows(window * stride, amount);
                QCOMPARE(rows.size(), amount);
                for (int i = 0; i < amount; ++i) {
                    const qint64 sample = trigger - position + i;
                    const QString &row = rows.at((sample - start) % amount);
                    QVERIFY2(row == expectedRow(core, sample, sample == trigger + lead),
                             qPrintable(QStringLiteral("round %1, run %2, window %3, row %4")
                                            .arg(round)
                                            .arg(run)
                                            .arg(window)
                                            .arg(i)));
                }
                start = trigger - position + amount;
            }
        }
        QCOMPARE(bench.reports, QStringList());
    }
}

/// A trigger that can't come leaves the core waiting at no cost, and a force still gets through.
void tst_SimCoreModel::forced()
{
    CoreDescription core = description(8, 2);
    core.units[1].hasCounter = true;
    core.expressions = QStringList{QStringLiteral("M0&M1"), QStringLiteral("M0&!M0")};
    Bench bench(core);
    bench.configure(64, 40, 3, 2);
    bench.write(0x103, 1); // unit 0: differs from anything
    bench.setUnitEqual(1, 1, 1);
    bench.write(0x114, 2000);
    bench.write(0, 1);
    constexpr qint64 kLong = 1'000'000'000'000;
    bench.model.advance(kLong);
    QVERIFY(!bench.isIdle());

    // Rows enough stand before it in the first window; the others have to fill up first.
    bench.write(0, 3);
    bench.model.advance(24 + 64);
    QVERIFY(!bench.isIdle());
    bench.model.advance(64);
    QVERIFY(bench.isIdle());
    const QStringList last = bench.rows(2 * 256, 64);
    QCOMPARE(last.at(40 + 2), expectedRow(core, kLong + 24 + 64 + 42, true));
    QCOMPARE(last.filter(QRegularExpression(QStringLiteral("^1"))).size(), 1);

    bench.write(0, 3); // arms an idle core
    QVERIFY(!bench.isIdle());
    bench.write(0, 0); // disarms it
    QVERIFY(bench.isIdle());
    bench.write(0, 1); // an ordinary run is not forced by what came before
    bench.model.advance(5000);
    QVERIFY(!bench.isIdle());
    QCOMPARE(bench.reports, QStringList());
}

/// Two units in use, numbers 1 and 4, so that input bits and unit numbers differ.
void tst_SimCoreModel::dynamicTables()
{
    CoreDescription core = description(4, 0);
    core.dynamic = true;
    core.units[1] = {true, false, 0, 0};
    core.units[2] = {true, false, 0, -1}; // enabled but without a port: takes no input bit
    core.units[4] = {true, false, 0, 0};
    Bench bench(core);
    bench.setUnitEqual(1, 0x80, 0x80); // bit 7 set
    bench.setUnitEqual(4, 0x01, 0x01); // bit 0 set

    qint64 start = 0; // samples go on where the last capture ended
    const auto firesFirstWith = [&](int mask, int value) {
        qint64 trigger = start;
        while ((portValue(trigger % kStimulus) & mask) != value)
            ++trigger;
        bench.write(0, 1);
        bench.model.advance(4 * kStimulus);
        const QString row = bench.rows(0, 32).value((trigger + 3 - start) % 32);
        start = trigger + 32;
        return bench.isIdle() && row == expectedRow(core, trigger + 3, true);
    };

    // Expression 0: bit 1 of the input and not bit 0, so unit 4 without unit 1.
    bench.configure(32, 0, 1);
    for (int input = 0; input < 4; ++input)
        bench.write(input == 2 ? 0xab01 : 0xab00, quint64(input));
    QVERIFY(firesFirstWith(0x81, 0x01));
    bench.configure(32, 0, 1); // tables stay when only the registers are written again
    QVERIFY(firesFirstWith(0x81, 0x01));

    // Expression 1 fires on everything, but only once two are in force.
    bench.write(0xab00, 2);
    for (int input = 0; input < 4; ++input)
        bench.write(0xab11, quint64(input));
    bench.write(0, 1);
    bench.model.advance(4 * kStimulus);
    QVERIFY(!bench.isIdle());
    bench.write(0x20, 1);
    QVERIFY(firesFirstWith(0, 0));
    QCOMPARE(bench.reports, QStringList());
}

void tst_SimCoreModel::counters_data()
{
    // marked: row of the last window, two after the trigger's, or -1
    const auto row = addColumns<QString, int, bool, int, int>(
        {"levels", "count", "continuous", "windows", "marked"});

    const QString levels = QStringLiteral("0110111010111100000000000000000000000000");
    row("first hit", levels, 1, false, 1, 1 + 2);
    row("third hit in all", levels, 3, false, 1, 4 + 2);
    row("more hits than a lap has", levels, 11, false, 1, (41 + 2) % 32);
    row("two in a row", levels, 2, true, 1, 2 + 2);
    row("four in a row", levels, 4, true, 1, 13 + 2);
    row("five in a row never come", levels, 5, true, 1, -1);
    // The second window begins at sample 33. A count that went on would fire at the third hit.
    row("starts again at each window", "11" + QString(40, u'0') + "1000100000" + QString(40, u'0'),
        2, false, 2, (46 + 2 - 33) % 32);
}

void tst_SimCoreModel::counters()
{
    QFETCH(QString, levels);
    QFETCH(int, count);
    QFETCH(bool, continuous);
    QFETCH(int, windows);
    QFETCH(int, marked);
    CoreDescription core = description(1, 1, 1);
    core.units[0].hasCounter = true;
    core.units[0].counterWidth = 4;
    core.expressions.append(QStringLiteral("M0"));
    const auto value = [&](qint64 sample) { return levels.at(sample).digitValue(); };
    Bench bench(core, stimulusOf(
                          core, levels.size(), [](int, qint64) { return false; }, value));
    bench.configure(32, 0, windows);
    bench.setUnitEqual(0, 1, 1);
    bench.write(0x103, continuous ? 8 : 0);
    bench.write(0x104, quint64(count - 1));
    bench.write(0, 1);
    bench.model.advance(400);
    QCOMPARE(bench.isIdle(), marked >= 0);
    QCOMPARE(bench.rows(windows == 2 ? 512 : 0, 32).indexOf(QStringLiteral("10")), marked);
}

void tst_SimCoreModel::matches_data()
{
    const auto row = addColumns<int, QString, QString>({"function", "value0", "value1"});
    for (const char *pattern : {"1010", "10XX", "XXXX", "R0X1", "FXXX", "XBXN", "RFBN"}) {
        QTest::addRow("equals %s", pattern) << 0 << pattern << QString();
        QTest::addRow("differs from %s", pattern) << 1 << pattern << QString();
    }
    for (int function = 2; function < 6; ++function)
        QTest::addRow("order %d", function) << function << "0110" << QString();
    row("in range", 6, "0011", "1010");
    row("not in range", 7, "0011", "1010");
    row("empty range", 6, "1000", "0111");
}

/// All pairs of a 4-bit value and its predecessor, in ports that lie on both sides of a word.
void tst_SimCoreModel::matches()
{
    QFETCH(int, function);
    QFETCH(QString, value0);
    QFETCH(QString, value1);

    // By 2 * now + before.
    static const QMap<QChar, QString> kLetters = {{u'0', "1100"}, {u'1', "0011"}, {u'X', "1111"},
                                                  {u'R', "0010"}, {u'F', "0100"}, {u'B', "0110"},
                                                  {u'N', "1001"}};
    const int bound = value0.toInt(nullptr, 2);
    const int upper = value1.toInt(nullptr, 2);
    const auto holds = [&](int now, int before) {
        const bool orders[] = {now > bound,
                               now < bound,
                               now >= bound,
                               now <= bound,
                               now >= bound && now <= upper,
                               now < bound || now > upper};
        if (function >= 2)
            return orders[function - 2];
        bool all = true;
        for (int i = 0; i < 4; ++i) {
            const int levels = 2 * (now >> (3 - i) & 1) + (before >> (3 - i) & 1);
            all = all && kLetters[value0.at(i)].at(levels) == u'1';
        }
        return all == (function == 0);
    };

    // Which register bits a letter sets, and which of the two bounds goes where.
    const auto bitsIn = [&](const char *letters) {
        QString text;
        for (const QChar letter : value0)
            text.append(QLatin1String(letters).contains(letter) ? u'1' : u'0');
        return text;
    };
    QString compare = bitsIn("1FN");
    QString mask = bitsIn("01BN");
    if (function >= 6)
        mask = value1;
    else if (function == 3 || function == 5)
        mask = std::exchange(compare, QStringLiteral("0000"));

    for (const int width : {4, 66, 130}) { // the pattern is the port's end, the rest stays clear
        const auto field = [width](const QString &end) {
            return bitsOf(end.rightJustified(width, u'0'));
        };
        MatchUnit unit(width);
        unit.setCompare(bitsOf(QString(7, u'0') + compare.rightJustified(width, u'0')));
        unit.setMask(field(mask));
        unit.setEdge(field(bitsIn("RFBN")));
        unit.setControl(bitsOf(binary(quint64(function), 16)));
        for (int pair = 0; pair < 256; ++pair) {
            const auto now = packLast(field(binary(quint64(pair >> 4), 4)), width);
            const auto before = packLast(field(binary(quint64(pair & 15), 4)), width);
            QVERIFY2(unit.hits(now.data(), before.data()) == holds(pair >> 4, pair & 15),
                     qPrintable(QStringLiteral("width %1, pair %2").arg(width).arg(pair)));
        }
    }
}

void tst_SimCoreModel::expressions_data()
{
    // table: by input number, M2 is bit 0, M10 bit 1, M1 bit 2
    const auto row = addColumns<QString, QString>({"text", "table"});
    row("unit", "M10", "00110011");
    row("not the longer number", "M1", "00001111");
    row("and before exclusive or before or", "M2|M10^M1&M2", "01110111");
    row("brackets", "(M2|M10)&M1", "00000111");
    row("not", "!M2&!(M10|M1)", "10000000");
    row("not twice, blanks", " ! !M2 ", "01010101");
    row("a unit not in use never matches", "M2|M5", "01010101");
    row("operator at the end", "M2&", "");
    row("two units", "M2 M1", "");
    row("open bracket", "(M2", "");
    row("no number", "M", "");
    row("nested for ever", QString(100000, u'('), "");
}

void tst_SimCoreModel::expressions()
{
    QFETCH(QString, text);
    QFETCH(QString, table);
    const auto result = expressionTable(text, {2, 10, 1});
    QCOMPARE(bool(result), !table.isEmpty());
    QCOMPARE(result.error().isEmpty(), !table.isEmpty());
    if (result)
        QCOMPARE(*result, bitsOf(table));
}

void tst_SimCoreModel::badWords_data()
{
    // report: the core has registers of 16 bits
    const auto row = addColumns<QString, QString>({"word", "report"});

    row("15 bits", "01001 0000000000100001 000000000000000", "15 bits");
    row("17 bits", "01001 0000000000100001 00000000000000000", "17 bits");
    row("register 0x0024", "01001 0000000000100100 0000000000000000", "register 0x0024");
    row("match unit 1", "01001 0000000100010000 0000000000000000", "match unit 1");
    row("no counter", "01001 0000000100000100 0000000000000000", "no counter");
    row("register 0x0105", "01001 0000000100000101 0000000000000000", "register 0x0105");
    row("register 0xab01", "01001 1010101100000001 0000000000000000",
        "register 0xab01"); // of a static core
    row("not 2", "01001 0000000000000000 0000000000000010", "not 2");
    row("register 0x0099", "01101 0000000010011001", "register 0x0099");
    row("1 bits follow", "01101 0000000000000000 0", "1 bits follow");
    row("8 bits", "00111 0000000000000000 00000000", "8 bits");
    row("opcode 11111", "11111 0000000000000000 0000000000000000", "opcode 11111");
    row("6 bits", "010010", "6 bits");
}

void tst_SimCoreModel::badWords()
{
    QFETCH(QString, word);
    QFETCH(QString, report);
    CoreDescription core = description(8, 1);
    Bench bench(core);
    bench.configure(64, 0, 1);
    bench.write(0, 1);
    bench.shift(word.remove(u' '));
    QCOMPARE(bench.reports.size(), 1);
    QVERIFY2(bench.reports.first().contains(report), qPrintable(bench.reports.first()));
    QVERIFY(!bench.isIdle()); // and it had no effect
    QCOMPARE(*bench.model.readRegister(0x21), bitsOf(binary(63, 16)));
}

KEO_TEST_MAIN(tst_SimCoreModel)
#include "tst_sim_coremodel.moc"
