#include "bittext.h"

#include <support/testmain.h>

#include <coremodel.h>
#include <expression.h>
#include <litecoremodel.h>
#include <matchunit.h>

#include <QRandomGenerator>

#include <memory>

using namespace Sim;

namespace {

constexpr int kStimulus = 997; // samples; prime, so that laps and rings don't fall in step

/// Level of a captured signal at a sample of the endless stimulus.
bool level(int signal, qint64 sample)
{
    const quint32 mixed =
        quint32(sample % kStimulus) * 2654435761u ^ quint32(signal + 1) * 40503u * 65537u;
    return ((mixed >> 7) ^ (mixed >> 18)) & 1;
}

/// Value of the 8-bit trigger port.
int portValue(qint64 sample)
{
    sample %= kStimulus;
    return int((sample * 37 + sample * sample % 101 + 0x95) & 0xff);
}

bool portLevel(int signal, qint64 sample)
{
    return portValue(sample) >> (7 - signal) & 1;
}

BitMatrix stimulusOf(int columns, bool (*levelOf)(int, qint64))
{
    BitMatrix rows(columns);
    for (int sample = 0; sample < kStimulus; ++sample) {
        rows.appendRow();
        for (int column = 0; column < columns; ++column) {
            if (levelOf(column, sample))
                rows.setInLastRow(column);
        }
    }
    return rows;
}

QString rowOf(int captured, qint64 sample)
{
    QString text;
    for (int signal = 0; signal < captured; ++signal)
        text.append(level(signal, sample) ? u'1' : u'0');
    return text;
}

/// A core with two match units in use, whose numbers are not their places in a truth table.
CoreDescription description(int captured)
{
    CoreDescription core;
    core.storageDepth = 1024;
    core.captured = QStringList(captured, QStringLiteral("s"));
    core.ports[0] = QStringList(8, QStringLiteral("p"));
    core.units[1] = {true, false, 0, 0};
    core.units[2] = {true, false, 0, -1}; // enabled but without a port: takes no input bit
    core.units[4] = {true, true, 4, 0};
    return core;
}

/// Drives a core of either kind by words made of binary text.
struct Bench
{
    explicit Bench(const CoreDescription &core, bool extraRow = false) : width(core.registerWidth())
    {
        CoreStimulus stimulus;
        stimulus.captured = stimulusOf(int(core.captured.size()), level);
        stimulus.ports[0] = stimulusOf(8, portLevel);
        model = std::make_unique<CoreModel>(core, stimulus, extraRow, report);
    }
    Bench(const LiteCoreDescription &core, LiteCoreModel::FirstSample first)
        : width(int(core.captured.size()))
    {
        model = std::make_unique<LiteCoreModel>(core, stimulusOf(width, level), first, report);
    }

    void shift(const QString &bits) { model->shiftIn(parseShiftWord(bitsOf(bits))); }
    void write(int address, quint64 value)
    {
        shift("01001" + binary(quint64(address), 16) + binary(value, width));
    }
    quint64 read(int address)
    {
        shift("01101" + binary(quint64(address), 16));
        return textOf(model->shiftOut(width)).toULongLong(nullptr, 2);
    }
    bool isIdle() { return read(0) == 0; }

    int width;
    QStringList reports;
    Core::Report report = [this](const QString &text) { reports.append(text); };
    std::unique_ptr<Core> model;
};

/// A match unit as its registers set it up, and what it says of the port.
struct Unit
{
    enum Kind { Masked, Differs, Rising, InRange };

    [[nodiscard]] bool hits(int now, int before) const
    {
        const bool results[] = {(now & mask) == (compare & mask), (now & mask) != (compare & mask),
                                (now & ~before & mask) == mask, now >= compare && now <= mask};
        return results[kind];
    }
    void writeTo(Bench &bench, int unit) const
    {
        const int functions[] = {0, 1, 0, 6};
        bench.write(0x100 + 16 * unit, quint64(kind == Rising ? 0 : compare));
        bench.write(0x101 + 16 * unit, quint64(kind == Rising ? 0 : mask));
        bench.write(0x102 + 16 * unit, quint64(kind == Rising ? mask : 0));
        bench.write(0x103 + 16 * unit, quint64(functions[kind] + 8 * continuous));
    }

    Kind kind;
    int compare;
    int mask;
    int count = 1;
    bool continuous = false;
};

} // namespace

class tst_SimCores : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void rings();
    void matches_data();
    void matches();
    void expressions();
    void badWords();
    void liteCore();
    void badWordsOfLite();
};

/// Captures of many shapes against a model without a ring: each window's memory holds exactly the
/// samples around its trigger, the next window goes on with the next sample, a force comes when it
/// comes, and nothing of an older capture stays.
void tst_SimCores::rings()
{
    QRandomGenerator random(20240607);
    int forcedRuns = 0;
    int countedRuns = 0;
    for (int round = 0; round < 150; ++round) {
        const int captured = QList<int>{1, 15, 16, 40, 63, 64, 130}.at(random.bounded(7));
        CoreDescription core = description(captured);
        core.dynamic = random.bounded(2) == 1;
        core.units[4].hasCounter = random.bounded(2) == 1;
        const bool extraRow = random.bounded(2) == 1;
        const int windows = random.bounded(1, 9);
        const int amount = 32 << random.bounded(windows > 4 ? 3 : windows > 1 ? 4 : 6);
        // The ends of the range are where the ring goes wrong first.
        const int position = random.bounded(4) == 0   ? amount - 9
                             : random.bounded(4) == 0 ? 0
                                                      : random.bounded(amount - 8);
        const int lead = core.dynamic ? 3 : 2;
        // By input number, the sums of the expressions in force. One more is not.
        // A rare M1 alone makes a core wait.
        const bool isRare = random.bounded(3) == 0;
        const QList<int> tables{isRare ? 0b1010 : random.bounded(1, 15),
                                isRare ? 0b1010 : random.bounded(16), 0b1111};
        const int inForce = random.bounded(1, 3);
        const int fires = inForce == 1 && core.dynamic ? tables[0] : tables[0] | tables[1];
        const QStringList products{"!M1&!M4", "M1&!M4", "!M1&M4", "M1&M4"};
        for (int e = 0; e < 2; ++e) {
            QStringList sum{"M1&!M1"};
            for (int input = 0; input < 4; ++input) {
                if (tables[e] >> input & 1)
                    sum += products[input];
            }
            core.expressions += sum.join(u'|');
        }

        Bench bench(core, extraRow);
        for (int write = 0; core.dynamic && write < 2 * 3 * 4;
             ++write) { // set first, then as wanted
            const int e = write / 4 % 3;
            const bool isSet = write < 12 || tables[e] >> write % 4 & 1;
            bench.write(0xab00 + 16 * e + isSet, quint64(write % 4));
        }
        bench.write(0x20, quint64(inForce - 1));
        bench.write(0x21, quint64(amount - 1));
        bench.write(0x22, quint64(amount - position - 1 - lead - extraRow));
        bench.write(0x23, quint64(windows - 1));

        qint64 start = 0;
        for (int run = 0; run < 2; ++run) {
            constexpr qint64 kNever = 4'000'000'000'000'000;
            qint64 forced = random.bounded(4) == 0 ? start + random.bounded(600) : kNever;
            Unit units[2];
            for (Unit &unit : units) {
                unit = {Unit::Kind(random.bounded(4)), random.bounded(256), 1 << random.bounded(8)};
                if (random.bounded(2) == 0)
                    unit = {Unit::Masked, portValue(random.bounded(kStimulus)), 0xff};
            }
            units[0].writeTo(bench, 1);
            if (core.units[4].hasCounter) {
                units[1].count = random.bounded(1, random.bounded(3) == 0 ? 40 : 4);
                units[1].continuous = random.bounded(2) == 1;
                bench.write(0x144, quint64(units[1].count - 1));
            }
            units[1].writeTo(bench, 4);
            QList<qint64> triggers;
            qint64 end = start;
            for (int window = 0; window < windows; ++window) {
                const qint64 begin = end;
                int counted = 0;
                for (qint64 at = begin; triggers.size() == window; ++at) {
                    const auto hits = [&](const Unit &unit) {
                        return unit.hits(portValue(at), portValue(at + kStimulus - 1));
                    };
                    const bool hit = hits(units[1]);
                    counted = hit ? counted + 1 : units[1].continuous ? 0 : counted;
                    const bool reports = core.units[4].hasCounter ? counted >= units[1].count : hit;
                    const int input = hits(units[0]) + 2 * reports;
                    if (at - begin >= position && (fires >> input & 1 || at >= forced))
                        triggers += at;
                    else if (at - begin == 41 * kStimulus) // it can't come; a force still gets in
                        forced = (at += kNever / 4000) + 1;
                }
                end = triggers.last() - position + amount;
            }
            forcedRuns += forced < end;
            countedRuns += units[1].count > 1 && forced >= end;

            bench.write(0, forced == start ? 3 : 1);
            for (qint64 now = start; now < end;) {
                if (now == forced)
                    bench.write(0, 3);
                QVERIFY(!bench.isIdle());
                const qint64 left = (now < forced && forced < end ? forced : end) - now;
                const qint64 step = left > 1'000'000 ? left : random.bounded(1, 300);
                bench.model->advance(std::min(left, step));
                now += std::min(left, step);
            }
            QVERIFY(bench.isIdle());

            int stride = 1024;
            for (int share = 1; share < windows; share *= 2)
                stride /= 2;
            for (int window = 0; window < windows; ++window) {
                // 32 leading bits, rows from the highest address down, one trailing bit.
                bench.shift("00111" + binary(quint64(window * stride), 16) +
                            binary(quint64(amount), 16));
                const QString block = textOf(bench.model->shiftOut(bench.width * amount + 33));
                QVERIFY(block.first(32).contains(u'1') && block.endsWith(u'0'));
                const qint64 trigger = triggers[window];
                const qint64 first = window == 0 ? start : triggers[window - 1] - position + amount;
                for (int i = 0; i < amount; ++i) {
                    const qint64 sample = trigger - position + i;
                    const qint64 address = (sample - first) % amount;
                    const QString row =
                        (sample == trigger + lead ? u'1' : u'0') + rowOf(captured, sample);
                    const QString seen =
                        block.mid(32 + (amount - 1 - address) * bench.width, bench.width);
                    QVERIFY2(seen == row.rightJustified(bench.width, u'0'),
                             qPrintable(QStringLiteral("round %1, run %2, window %3, row %4")
                                            .arg(round)
                                            .arg(run)
                                            .arg(window)
                                            .arg(i)));
                }
            }
            start = end;
            if (random.bounded(3) == 0) { // started, forced even, and given up
                bench.write(0, 3);
                bench.model->advance(5);
                bench.write(0, 0);
                QVERIFY(bench.isIdle());
                start += 5;
            }
        }
        QCOMPARE(bench.reports, QStringList());
    }
    QVERIFY(forcedRuns > 30 && countedRuns > 30);
}

void tst_SimCores::matches_data()
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
void tst_SimCores::matches()
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

void tst_SimCores::expressions()
{
    // By input number; M2 is bit 0, M10 bit 1, M1 bit 2. No table: refused.
    const std::pair<QString, QString> rows[] = {
        {"M10", "00110011"},
        {"M2^M10", "01100110"},
        {"M1", "00001111"},
        {"M2|M10^M1&M2", "01110111"},
        {"(M2|M10)&M1", "00000111"},
        {" ! !M2 ", "01010101"},
        {"!M2&!(M10|M1)", "10000000"},
        {"M2|M5", "01010101"}, // a unit not in use never matches
        {"M2&", ""},
        {"M2 M1", ""},
        {"(M2", ""},
        {"M", ""},
        {QString(100000, u'('), ""}};
    for (const auto &[text, table] : rows) {
        const auto result = expressionTable(text, {2, 10, 1});
        QVERIFY2(result.error().isEmpty() == bool(result), qPrintable(text.left(50)));
        QVERIFY2((result ? textOf(*result) : QString()) == table, qPrintable(text.left(50)));
    }
}

void tst_SimCores::badWords()
{
    // The core has registers of 16 bits.
    const std::pair<QString, const char *> rows[] = {
        {"01001 0000000000100001 000000000000000", "15 bits"},
        {"01001 0000000000100001 00000000000000000", "17 bits"},
        {"01001 0000000000100100 0000000000000000", "register 0x0024"},
        {"01001 0000000100100000 0000000000000000", "match unit 2"},
        {"01001 0000000100010100 0000000000000000", "no counter"},
        {"01001 0000000101000101 0000000000000000", "register 0x0145"},
        {"01001 1010101100000001 0000000000000000", "register 0xab01"}, // of a static core
        {"01001 0000000000000000 0000000000000010", "not 2"},
        {"01101 0000000010011001", "register 0x0099"},
        {"01101 0000000000000000 0", "1 bits follow"},
        {"00111 0000000000000000 00000000", "8 bits"},
        {"11111 0000000000000000 0000000000000000", "opcode 11111"},
        {"010010", "6 bits"}};
    Bench bench(description(8));
    bench.write(0x21, 63);
    bench.write(0x22, 61);
    bench.write(0, 1);
    for (auto [word, report] : rows) {
        bench.reports.clear();
        bench.shift(word.remove(u' '));
        QCOMPARE(bench.reports.size(), 1);
        QVERIFY2(bench.reports.first().contains(report), qPrintable(bench.reports.first()));
        QVERIFY(!bench.isIdle()); // and it had no effect
        QCOMPARE(bench.read(0x21), 63u);
    }
}

/// Starts, stops and reads in any order, against a list.
void tst_SimCores::liteCore()
{
    constexpr int kSignals = 5;
    QRandomGenerator random(3);
    for (int round = 0; round < 100; ++round) {
        LiteCoreDescription core;
        core.captureAmount = random.bounded(1, 12);
        core.capturesInitData = random.bounded(2) == 1;
        core.captured = QStringList(kSignals, QStringLiteral("s"));
        const int firstRow = random.bounded(2);
        Bench bench(core, firstRow == 1 ? LiteCoreModel::FirstSample::SecondRow
                                        : LiteCoreModel::FirstSample::FirstRow);
        const int amount = core.captureAmount;
        QList<int> memory(amount, -1);
        int sample = 0;
        int left = core.capturesInitData ? amount : 0;
        bool holdsInitData = core.capturesInitData;
        const auto take = [&](int samples) {
            for (; left > 0 && samples > 0; --left, --samples)
                memory[(amount - left + firstRow) % amount] = sample++;
        };
        take(left);
        for (int step = 0; step < 60; ++step) {
            const int action = random.bounded(4);
            if (action == 0) {
                bench.write(0, quint64(left = random.bounded(2) * amount) > 0);
                holdsInitData = holdsInitData && left == 0;
            } else if (action < 3) {
                const int samples = random.bounded(1, 9);
                bench.model->advance(samples);
                take(samples);
            } else {
                const int address = random.bounded(amount);
                const int rows = random.bounded(1, amount + 2);
                bench.shift("00111" + binary(quint64(address), 16) + binary(0, kSignals));
                QString block;
                for (int row = address + rows - 1; row >= address; --row) {
                    const int at = memory.value(row, -1); // beyond the memory there is nothing
                    block += at < 0 ? QString(kSignals, u'0') : rowOf(kSignals, at);
                }
                QCOMPARE(textOf(bench.model->shiftOut(rows * kSignals + 1)), block + u'0');
                holdsInitData = holdsInitData && address + rows < amount;
            }
            QCOMPARE(bench.read(0), quint64(left > 0));
            QCOMPARE(bench.read(2), quint64(!holdsInitData));
        }
        QCOMPARE(bench.reports, QStringList());
    }
}

void tst_SimCores::badWordsOfLite()
{
    LiteCoreDescription core;
    core.captureAmount = 4;
    core.captured = QStringList(5, QStringLiteral("s"));
    Bench bench(core, LiteCoreModel::FirstSample::FirstRow);
    bench.model->shiftOut(5);
    for (const char *value : {"0001", "00011", "10000"}) // too narrow, or no value
        bench.shift("01001" + binary(0, 16) + value);
    bench.write(2, 0);
    bench.read(1); // twice: the select, and the read that it leaves without
    bench.shift("00111" + binary(0, 16) + binary(4, 16)); // a standard core's block read
    bench.model->shiftOut(21);
    bench.shift("00111" + binary(0, 16) + "00000");
    bench.model->shiftOut(13);
    bench.shift("10000"); // a core select is not for the core
    QCOMPARE(bench.reports.size(), 11);
    QVERIFY(!bench.model->isArmed());
}

KEO_TEST_MAIN(tst_SimCores)
#include "tst_sim_cores.moc"
