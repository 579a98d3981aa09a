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

CoreStimulus formulaStimulus(const CoreDescription &core)
{
    CoreStimulus stimulus;
    stimulus.captured = BitMatrix(int(core.captured.size()));
    stimulus.ports[0] = BitMatrix(8);
    for (int sample = 0; sample < kStimulus; ++sample) {
        stimulus.captured.appendRow();
        stimulus.ports[0].appendRow();
        for (int signal = 0; signal < core.captured.size(); ++signal) {
            if (level(signal, sample))
                stimulus.captured.setInLastRow(signal);
        }
        for (int bit = 0; bit < 8; ++bit) {
            if (portValue(sample) & (0x80 >> bit))
                stimulus.ports[0].setInLastRow(bit);
        }
    }
    return stimulus;
}

/// One-bit port that follows a text of 0 and 1; the captured signal is the same.
CoreStimulus textStimulus(const QString &levels)
{
    CoreStimulus stimulus;
    stimulus.captured = BitMatrix(1);
    stimulus.ports[0] = BitMatrix(1);
    for (const QChar level : levels) {
        stimulus.captured.appendRow();
        stimulus.ports[0].appendRow();
        if (level == u'1') {
            stimulus.captured.setInLastRow(0);
            stimulus.ports[0].setInLastRow(0);
        }
    }
    return stimulus;
}

/// Drives a core by words made of binary text.
class Bench
{
public:
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

/// Sample number of the trigger in a one-window capture of 32 rows, found by its marker; -1 when
/// the core did not fire within \a samples.
int triggerAfter(Bench &bench, int samples)
{
    bench.model.advance(samples);
    if (!bench.isIdle())
        return -1;
    const QStringList rows = bench.rows(0, 32);
    const int lead = bench.model.description().dynamic ? 3 : 2;
    for (int row = 0; row < rows.size(); ++row) {
        if (rows.at(row).startsWith(u'1'))
            return (row - lead + 32) % 32;
    }
    return -2;
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
    void countersStartAgainAtEachWindow();
    void waitsForEver();
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

        Bench bench(core, formulaStimulus(core), extraRow);
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
                for (qint64 sample = trigger - position; sample < trigger - position + amount;
                     ++sample) {
                    const QString expected = expectedRow(core, sample, sample == trigger + lead);
                    if (rows.at((sample - start) % amount) != expected)
                        QFAIL(qPrintable(QStringLiteral("round %1 run %2 window %3 sample %4 + %5")
                                             .arg(round)
                                             .arg(run)
                                             .arg(window)
                                             .arg(trigger)
                                             .arg(sample - trigger)));
                }
                start = trigger - position + amount;
            }
        }
        QCOMPARE(bench.reports, QStringList());
    }
}

void tst_SimCoreModel::forced()
{
    CoreDescription core = description(8, 1); // no expression: it never fires by itself
    Bench bench(core, formulaStimulus(core));
    bench.configure(64, 40, 3, 0);
    bench.write(0, 1);
    bench.model.advance(5000);
    QVERIFY(!bench.isIdle());

    // Rows enough stand before it in the first window; the others have to fill up first.
    bench.write(0, 3);
    bench.model.advance(24 + 64);
    QVERIFY(!bench.isIdle());
    bench.model.advance(64);
    QVERIFY(bench.isIdle());
    const QStringList last = bench.rows(2 * 256, 64);
    QCOMPARE(last.at(40 + 2), expectedRow(core, 5000 + 24 + 64 + 42, true));
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
    CoreDescription core = description(4, 0, 8);
    core.dynamic = true;
    core.units[1] = {true, false, 0, 0};
    core.units[2] = {true, false, 0, -1}; // enabled but without a port: takes no input bit
    core.units[4] = {true, false, 0, 0};
    Bench bench(core, formulaStimulus(core));
    bench.setUnitEqual(1, 0x80, 0x80); // bit 7 set
    bench.setUnitEqual(4, 0x01, 0x01); // bit 0 set

    const auto firstWith = [&bench](int mask, int value) {
        // Samples go on where the last capture ended; each of these takes the same detour.
        bench.write(0, 1);
        bench.model.advance(4 * kStimulus);
        if (!bench.isIdle())
            return false;
        const QStringList rows = bench.rows(0, 32);
        for (int sample = 0; sample < kStimulus; ++sample) {
            if ((portValue(sample) & mask) != value)
                continue;
            for (int row = 0; row < 32; ++row) {
                if (rows.at(row) == expectedRow(bench.model.description(), sample + 3, true))
                    return true;
            }
        }
        return false;
    };

    // Expression 0: bit 1 of the input and not bit 0, so unit 4 without unit 1.
    bench.configure(32, 0, 1);
    for (int input = 0; input < 4; ++input)
        bench.write(input == 2 ? 0xab01 : 0xab00, quint64(input));
    QVERIFY(firstWith(0x81, 0x01));
    bench.configure(32, 0, 1); // tables stay when only the registers are written again
    QVERIFY(firstWith(0x81, 0x01));

    // Expression 1 fires on everything, but only once two are in force.
    bench.write(0xab00, 2);
    for (int input = 0; input < 4; ++input)
        bench.write(0xab11, quint64(input));
    QVERIFY(!firstWith(0, 0));
    bench.write(0, 0);
    bench.write(0x20, 1);
    QVERIFY(firstWith(0, 0));
    QCOMPARE(bench.reports, QStringList());
}

void tst_SimCoreModel::counters_data()
{
    QTest::addColumn<QString>("levels");
    QTest::addColumn<int>("count");
    QTest::addColumn<bool>("continuous");
    QTest::addColumn<int>("trigger");

    const QString levels = QStringLiteral("0110111010111100000000000000000000000000");
    QTest::newRow("first hit") << levels << 1 << false << 1;
    QTest::newRow("third hit in all") << levels << 3 << false << 4;
    QTest::newRow("tenth hit in all") << levels << 10 << false << 13;
    QTest::newRow("more hits than a lap has") << levels << 11 << false << 41 % 32;
    QTest::newRow("two in a row") << levels << 2 << true << 2;
    QTest::newRow("three in a row") << levels << 3 << true << 6;
    QTest::newRow("four in a row") << levels << 4 << true << 13;
    QTest::newRow("five in a row never come") << levels << 5 << true << -1;
}

void tst_SimCoreModel::counters()
{
    QFETCH(QString, levels);
    QFETCH(int, count);
    QFETCH(bool, continuous);
    CoreDescription core = description(1, 1, 1);
    core.units[0].hasCounter = true;
    core.units[0].counterWidth = 4;
    core.expressions.append(QStringLiteral("M0"));
    Bench bench(core, textStimulus(levels));
    bench.configure(32, 0, 1);
    bench.setUnitEqual(0, 1, 1);
    bench.write(0x103, continuous ? 8 : 0);
    bench.write(0x104, quint64(count - 1));
    bench.write(0, 1);
    QTEST(triggerAfter(bench, 400), "trigger");
}

void tst_SimCoreModel::countersStartAgainAtEachWindow()
{
    CoreDescription core = description(1, 1, 1);
    core.units[0].hasCounter = true;
    core.expressions.append(QStringLiteral("M0"));
    // Two hits, then 40 quiet samples, then two more: a count that went on would fire at the third.
    const QString levels =
        QStringLiteral("11") + QString(40, u'0') + QStringLiteral("1000100000") + QString(40, u'0');
    Bench bench(core, textStimulus(levels));
    bench.configure(32, 0, 2);
    bench.setUnitEqual(0, 1, 1);
    bench.write(0x104, 1);
    bench.write(0, 1);
    bench.model.advance(levels.size());
    QVERIFY(bench.isIdle());
    // The second window begins at sample 33 and fires at sample 46; its marker is two rows on.
    QVERIFY(bench.rows(512, 32).at((46 - 33 + 2) % 32).startsWith(u'1'));
}

/// A trigger that can't come leaves the core waiting at no cost, and a force still gets through.
void tst_SimCoreModel::waitsForEver()
{
    CoreDescription core = description(4, 2);
    core.units[1].hasCounter = true;
    core.expressions = QStringList{QStringLiteral("M0&M1"), QStringLiteral("M0&!M0")};
    Bench bench(core, formulaStimulus(core));
    bench.configure(32, 8, 1, 2);
    bench.setUnitEqual(0, 0, 0);
    bench.write(0x103, 1); // unit 0: differs from anything
    bench.setUnitEqual(1, 1, 1);
    bench.write(0x114, 2000);
    bench.write(0, 1);
    bench.model.advance(1'000'000'000'000);
    QVERIFY(!bench.isIdle());
    bench.write(0, 3);
    bench.model.advance(1);
    QVERIFY(!bench.isIdle());
    bench.model.advance(31);
    QVERIFY(bench.isIdle());
    QVERIFY(!bench.rows(0, 32).isEmpty());
}

void tst_SimCoreModel::matches_data()
{
    QTest::addColumn<int>("function");
    QTest::addColumn<QString>("value0");
    QTest::addColumn<QString>("value1");
    const QString none;
    for (const char *pattern : {"1010", "10XX", "XXXX", "R0X1", "FXXX", "XBXN", "RFBN"}) {
        QTest::addRow("equals %s", pattern) << 0 << QString::fromLatin1(pattern) << none;
        QTest::addRow("differs from %s", pattern) << 1 << QString::fromLatin1(pattern) << none;
    }
    for (int function = 2; function < 6; ++function)
        QTest::addRow("order %d", function) << function << QStringLiteral("0110") << none;
    for (int function = 6; function < 8; ++function)
        QTest::addRow("range %d", function)
            << function << QStringLiteral("0011") << QStringLiteral("1010");
    QTest::newRow("empty range") << 6 << QStringLiteral("1000") << QStringLiteral("0111");
}

/// All pairs of a 4-bit value and its predecessor, in ports that lie on both sides of a word.
void tst_SimCoreModel::matches()
{
    QFETCH(int, function);
    QFETCH(QString, value0);
    QFETCH(QString, value1);

    const auto letterHolds = [](QChar letter, bool now, bool before) {
        switch (letter.unicode()) {
        case u'0':
            return !now;
        case u'1':
            return now;
        case u'R':
            return now && !before;
        case u'F':
            return !now && before;
        case u'B':
            return now != before;
        case u'N':
            return now == before;
        default:
            return true;
        }
    };
    const auto holds = [&](int now, int before) {
        if (function >= 2) {
            const int bound = value0.toInt(nullptr, 2);
            const int upper = value1.toInt(nullptr, 2);
            const bool results[] = {now > bound,
                                    now < bound,
                                    now >= bound,
                                    now <= bound,
                                    now >= bound && now <= upper,
                                    now < bound || now > upper};
            return results[function - 2];
        }
        bool all = true;
        for (int i = 0; i < 4; ++i)
            all = all && letterHolds(value0.at(i), now & (8 >> i), before & (8 >> i));
        return all == (function == 0);
    };

    // Which register bits a letter sets, and which of the two bounds goes where.
    const auto registerText = [&](const QString &letters, const QString &from) {
        QString text;
        for (const QChar letter : from)
            text.append(letters.contains(letter) ? u'1' : u'0');
        return text;
    };
    QString compare = registerText(QStringLiteral("1FN"), value0);
    QString mask = registerText(QStringLiteral("01BN"), value0);
    const QString edge = registerText(QStringLiteral("RFBN"), value0);
    if (function >= 2) {
        compare = function == 3 || function == 5 ? QStringLiteral("0000") : value0;
        mask = function >= 6 ? value1 : compare == value0 ? QStringLiteral("0000") : value0;
    }

    for (const int width : {4, 66, 130}) { // the pattern is the port's end, the rest stays clear
        MatchUnit unit(width);
        unit.setCompare(bitsOf(QString(7, u'0') + compare.rightJustified(width, u'0')));
        unit.setMask(bitsOf(mask.rightJustified(width, u'0')));
        unit.setEdge(bitsOf(edge.rightJustified(width, u'0')));
        unit.setControl(bitsOf(binary(quint64(function), 16)));
        for (int pair = 0; pair < 256; ++pair) {
            const auto now =
                packLast(bitsOf(binary(quint64(pair >> 4), 4).rightJustified(width, u'0')), width);
            const auto before =
                packLast(bitsOf(binary(quint64(pair & 15), 4).rightJustified(width, u'0')), width);
            if (unit.hits(now.data(), before.data()) != holds(pair >> 4, pair & 15))
                QFAIL(qPrintable(QStringLiteral("width %1: %2 after %3")
                                     .arg(width)
                                     .arg(pair >> 4)
                                     .arg(pair & 15)));
        }
    }
}

void tst_SimCoreModel::expressions_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("table"); // by input number, M2 is bit 0, M10 bit 1, M1 bit 2
    QTest::newRow("unit") << "M10"
                          << "00110011";
    QTest::newRow("not the longer number") << "M1"
                                           << "00001111";
    QTest::newRow("and before exclusive or before or") << "M2|M10^M1&M2"
                                                       << "01110111";
    QTest::newRow("brackets") << "(M2|M10)&M1"
                              << "00000111";
    QTest::newRow("not") << "!M2&!(M10|M1)"
                         << "10000000";
    QTest::newRow("not twice, blanks") << " ! !M2 "
                                       << "01010101";
    QTest::newRow("a unit not in use never matches") << "M2|M5"
                                                     << "01010101";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("operator at the end") << "M2&"
                                         << "";
    QTest::newRow("two units") << "M2 M1"
                               << "";
    QTest::newRow("open bracket") << "(M2"
                                  << "";
    QTest::newRow("closing bracket") << "M2)"
                                     << "";
    QTest::newRow("no number") << "M"
                               << "";
    QTest::newRow("nested for ever") << QString(100000, u'(') << "";
}

void tst_SimCoreModel::expressions()
{
    QFETCH(QString, text);
    QFETCH(QString, table);
    const auto result = expressionTable(text, {2, 10, 1});
    QCOMPARE(bool(result), !table.isEmpty());
    if (result)
        QCOMPARE(*result, bitsOf(table));
    else
        QVERIFY(!result.error().isEmpty());
}

void tst_SimCoreModel::badWords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("report"); // the core has registers of 16 bits
    const QString write = QStringLiteral("01001");
    const QString value(16, u'0');
    QTest::newRow("write too short") << write + binary(0x21, 16) + value.left(15) << "15 bits";
    QTest::newRow("write too long") << write + binary(0x21, 16) + value + u'0' << "17 bits";
    QTest::newRow("no such register") << write + binary(0x24, 16) + value << "0x0024";
    QTest::newRow("no such unit") << write + binary(0x110, 16) + value << "match unit 1";
    QTest::newRow("no counter") << write + binary(0x104, 16) + value << "no counter";
    QTest::newRow("no such unit register") << write + binary(0x105, 16) + value << "0x0105";
    QTest::newRow("table of a static core") << write + binary(0xab01, 16) + value << "0xab01";
    QTest::newRow("start value") << write + binary(0, 16) + binary(2, 16) << "not 2";
    QTest::newRow("select of no register") << "01101" + binary(0x99, 16) << "0x0099";
    QTest::newRow("select with a tail") << "01101" + binary(0, 16) + u'0' << "1 bits follow";
    QTest::newRow("block without count") << "00111" + binary(0, 16) + value.left(8) << "8 bits";
    QTest::newRow("unknown opcode") << "11111" + binary(0, 16) + value << "opcode 11111";
    QTest::newRow("cut word") << QStringLiteral("010010") << "6 bits";
    QTest::newRow("empty word") << QString() << "0 bits";
}

void tst_SimCoreModel::badWords()
{
    QFETCH(QString, word);
    QFETCH(QString, report);
    CoreDescription core = description(8, 1);
    Bench bench(core, formulaStimulus(core));
    bench.configure(64, 0, 1);
    bench.write(0, 1);
    bench.shift(word);
    QCOMPARE(bench.reports.size(), 1);
    QVERIFY2(bench.reports.first().contains(report), qPrintable(bench.reports.first()));
    QVERIFY(!bench.isIdle()); // and it had no effect
    QCOMPARE(*bench.model.readRegister(0x21), bitsOf(binary(63, 16)));
}

KEO_TEST_MAIN(tst_SimCoreModel)
#include "tst_sim_coremodel.moc"
