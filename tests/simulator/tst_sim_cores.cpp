#include <support/bittext.h>
#include <support/testmain.h>

#include <coremodel.h>
#include <expression.h>
#include <litecoremodel.h>

#include <QMap>
#include <QRandomGenerator>

#include <memory>

using namespace Sim;

namespace {

constexpr qint64 kLong = 1'000'000'000'000; // samples; nothing waits so long
constexpr int kMaxCount = 40;               // hits
constexpr int kStimulus = 997; // samples; prime, so that laps and rings don't fall in step

/// Level of a captured signal at a sample of the endless stimulus.
bool level(int signal, qint64 sample)
{
    const quint32 mixed =
        quint32(sample % kStimulus) * 2654435761u ^ quint32(signal + 1) * 40503u * 65537u;
    return ((mixed >> 7) ^ (mixed >> 18)) & 1;
}

/// Value of the trigger port, which its last 8 bits hold.
int portValue(qint64 sample)
{
    sample %= kStimulus;
    if (sample == 0 || sample == kStimulus - 1) // everything rises when the stimulus starts again
        return sample == 0 ? 0xff : 0;
    return int((sample * 37 + sample * sample % 101) & 0xff);
}

template <typename Level>
BitMatrix stimulusOf(qsizetype columns, Level levelOf)
{
    BitMatrix rows{int(columns)};
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
CoreDescription description(int captured, int portWidth = 8)
{
    CoreDescription core;
    core.storageDepth = 1024;
    core.captured = QStringList(captured, QStringLiteral("s"));
    core.ports[0] = QStringList(portWidth, QStringLiteral("p"));
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
        stimulus.captured = stimulusOf(core.captured.size(), level);
        const qsizetype last = core.ports[0].size() - 1;
        stimulus.ports[0] = stimulusOf(last + 1, [last](qsizetype signal, qint64 sample) {
            return last - signal < 8 && (portValue(sample) >> (last - signal) & 1);
        });
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
    explicit Unit(QRandomGenerator &random)
        : function(random.bounded(3) == 0 ? 0 : random.bounded(8)),
          low(random.bounded(2) ? random.bounded(256) : 250 + random.bounded(6)),
          high(random.bounded(2) ? std::min(low + random.bounded(3), 255) : random.bounded(6))
    {
        const QString seldom[] = {QString(8, u'R'),
                                  binary(quint64(portValue(random.bounded(kStimulus))), 8)};
        pattern = random.bounded(2) ? seldom[random.bounded(2)] : QString();
        while (pattern.size() < 8)
            pattern += QStringLiteral("01RFBNXXXXXX").at(random.bounded(12));
    }

    [[nodiscard]] bool hits(int now, int before) const
    {
        const bool orders[] = {now > low,
                               now < high,
                               now >= low,
                               now <= high,
                               now >= low && now <= high,
                               now < low || now > high};
        if (function >= 2)
            return orders[function - 2];
        // By 2 * now + before.
        static const QMap<QChar, QString> kLetters = {
            {u'0', "1100"}, {u'1', "0011"}, {u'X', "1111"}, {u'R', "0010"},
            {u'F', "0100"}, {u'B', "0110"}, {u'N', "1001"}};
        bool all = true;
        for (int i = 0; i < 8; ++i) {
            const int levels = 2 * (now >> (7 - i) & 1) + (before >> (7 - i) & 1);
            all = all && kLetters[pattern.at(i)].at(levels) == u'1';
        }
        return all == (function == 0);
    }
    [[nodiscard]] QBitArray hitsOfStimulus() const
    {
        QBitArray bits(kStimulus);
        for (int sample = 0; sample < kStimulus; ++sample)
            bits.setBit(sample, hits(portValue(sample), portValue(sample + kStimulus - 1)));
        return bits;
    }
    void writeTo(Bench &bench, int unit) const
    {
        const auto bitsIn = [this](const char *letters) { // which register bits a letter sets
            quint64 bits = 0;
            for (const QChar letter : pattern)
                bits = 2 * bits + QLatin1String(letters).contains(letter);
            return bits;
        };
        bench.write(0x100 + 16 * unit, function < 2 ? bitsIn("1FN") : quint64(low));
        bench.write(0x101 + 16 * unit, function < 2 ? bitsIn("01BN") : quint64(high));
        bench.write(0x102 + 16 * unit, bitsIn("RFBN"));
        bench.write(0x103 + 16 * unit, quint64(function + 8 * continuous));
    }

    int function; ///< as the control register numbers them
    int low;
    int high;
    QString pattern; ///< of functions 0 and 1
    int count = 1;
    bool continuous = false;
};

/// One capture: a core as it was built, and its settings.
struct Shape
{
    explicit Shape(QRandomGenerator &random)
        : core(description(QList<int>{1, 15, 16, 40, 63, 64, 130}.at(random.bounded(7)),
                           QList<int>{8, 66, 130}.at(random.bounded(3)))),
          extraRow(random.bounded(2)),
          windows(random.bounded(3) == 0 ? 1 : random.bounded(1, 9)),
          amount(
              32 << (windows == 1 && random.bounded(2) ? 5 : random.bounded(windows > 4 ? 3 : 4))),
          inForce(random.bounded(1, 3)),
          tables{random.bounded(1, 15), random.bounded(16), 0b1111}
    {
        // The ends of the range are where the ring goes wrong first.
        const int ends[] = {amount - 9, 0, random.bounded(amount - 8), random.bounded(amount - 8)};
        position = ends[random.bounded(4)];
        core.dynamic = random.bounded(2) == 1;
        core.units[4].hasCounter = random.bounded(2) == 1;
        if (random.bounded(2) == 0) // one unit alone makes a core wait
            tables[0] = tables[1] = random.bounded(2) ? 0b1010 : 0b1100;
        for (int e = 0; e < 2; ++e) {
            core.expressions += QStringLiteral("M1&!M1");
            for (int input = 0; input < 4; ++input) {
                if (tables[e] >> input & 1)
                    core.expressions[e] +=
                        QStringList{"|!M1&!M4", "|M1&!M4", "|!M1&M4", "|M1&M4"}[input];
            }
        }
    }

    void writeTo(Bench &bench) const
    {
        // Dynamic tables are set first, then as wanted.
        for (int write = 0; core.dynamic && write < 2 * 3 * 4; ++write) {
            const int e = write / 4 % 3;
            const bool isSet = write < 12 || tables[e] >> write % 4 & 1;
            bench.write(0xab00 + 16 * e + isSet, quint64(write % 4));
        }
        bench.write(0x20, quint64(inForce - 1));
        bench.write(0x21, quint64(amount - 1));
        bench.write(0x22, quint64(amount - position - 1 - lead() - extraRow));
        bench.write(0x23, quint64(windows - 1));
    }

    [[nodiscard]] int lead() const { return core.dynamic ? 3 : 2; }
    /// What fires, by input number.
    [[nodiscard]] int fires() const
    {
        return inForce == 1 && core.dynamic ? tables[0] : tables[0] | tables[1];
    }
    [[nodiscard]] qint64 begin(int window, const QList<qint64> &triggers, qint64 start) const
    {
        return window == 0 ? start : triggers[window - 1] - position + amount;
    }

    /// The sample of each window's trigger when the first window begins at \a start. From \a forced
    /// on a force is in, which is put off until nothing else can come.
    QList<qint64> triggers(const Unit (&units)[2], qint64 start, qint64 &forced) const
    {
        const QBitArray hits[]{units[0].hitsOfStimulus(), units[1].hitsOfStimulus()};
        QList<qint64> triggers;
        while (triggers.size() < windows) {
            const qint64 first = begin(int(triggers.size()), triggers, start);
            int counted = 0;
            for (qint64 at = first;; ++at) {
                const bool hit = hits[1].testBit(at % kStimulus);
                counted = hit ? counted + 1 : units[1].continuous ? 0 : counted;
                const bool reports = core.units[4].hasCounter ? counted >= units[1].count : hit;
                const int input = hits[0].testBit(at % kStimulus) + 2 * reports;
                if (at - first >= position && (fires() >> input & 1 || at >= forced)) {
                    triggers += at;
                    break;
                }
                if (at - first == (kMaxCount + 1) * kStimulus)
                    forced = (at += kLong) + 1;
            }
        }
        return triggers;
    }

    CoreDescription core;
    int extraRow;
    int windows;
    int amount;
    int position = 0;
    int inForce;   ///< expressions
    int tables[3]; ///< by input number, of one expression more than may be in force
};

} // namespace

class tst_SimCores : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void rings();
    void expressions();
    void badWords();
    void liteCore();
    void badWordsOfLite();

private:
    static void drive(Bench &bench, qint64 start, qint64 forced, qint64 end,
                      QRandomGenerator &random);
    static void checkWindow(Bench &bench, const Shape &shape, int window, qint64 trigger,
                            qint64 first);
};

/// Captures of many shapes against a model without a ring: each window's memory holds exactly the
/// samples around its trigger, the next window goes on with the next sample, a force comes when it
/// comes, and nothing of an older capture stays.
void tst_SimCores::rings()
{
    QRandomGenerator random(20240607);
    int forcedRuns = 0;
    int countedRuns = 0;
    for (int run = 0; run < 250; ++run) {
        const Shape shape(random);
        Bench bench(shape.core, shape.extraRow);
        shape.writeTo(bench);
        qint64 start = 0;
        for (int capture = 0; capture < 2; ++capture) {
            Unit units[]{Unit(random), Unit(random)};
            if (shape.core.units[4].hasCounter) {
                units[1].count = random.bounded(1, random.bounded(3) == 0 ? kMaxCount : 4);
                units[1].continuous = random.bounded(2) == 1;
                bench.write(0x144, quint64(units[1].count - 1));
            }
            units[0].writeTo(bench, 1);
            units[1].writeTo(bench, 4);
            qint64 forced = start + (random.bounded(4) == 0 ? random.bounded(600) : 4 * kLong);
            const QList<qint64> triggers = shape.triggers(units, start, forced);
            const qint64 end = shape.begin(shape.windows, triggers, start);
            forcedRuns += forced < end;
            countedRuns += units[1].count > 1 && forced >= end;
            drive(bench, start, std::min(forced, end), end, random);
            for (int window = 0; window < shape.windows && !QTest::currentTestFailed(); ++window)
                checkWindow(bench, shape, window, triggers[window],
                            shape.begin(window, triggers, start));
            QVERIFY2(!QTest::currentTestFailed(), qPrintable(QString::number(run)));
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

/// Lets a capture run from sample \a start to \a end in steps, with a force at sample \a forced.
void tst_SimCores::drive(Bench &bench, qint64 start, qint64 forced, qint64 end,
                         QRandomGenerator &random)
{
    bench.write(0, forced == start ? 3 : 1);
    for (qint64 now = start; now < end;) {
        if (now == forced)
            bench.write(0, 3);
        QVERIFY(!bench.isIdle());
        const qint64 left = (now < forced ? forced : end) - now;
        const qint64 step =
            left > kLong / 2 ? left : std::min<qint64>(left, random.bounded(1, 300));
        bench.model->advance(step);
        now += step;
    }
    QVERIFY(bench.isIdle());
}

/// \a first is the window's first sample.
void tst_SimCores::checkWindow(Bench &bench, const Shape &shape, int window, qint64 trigger,
                               qint64 first)
{
    int stride = 1024;
    for (int share = 1; share < shape.windows; share *= 2)
        stride /= 2;
    bench.shift("00111" + binary(quint64(window * stride), 16) + binary(quint64(shape.amount), 16));
    // 32 leading bits, rows from the highest address down, one trailing bit.
    const QString block = textOf(bench.model->shiftOut(bench.width * shape.amount + 33));
    QVERIFY(block.first(32).contains(u'1') && block.endsWith(u'0'));
    for (int i = 0; i < shape.amount; ++i) {
        const qint64 sample = trigger - shape.position + i;
        const qint64 address = (sample - first) % shape.amount;
        const QString row = (sample == trigger + shape.lead() ? u'1' : u'0') +
                            rowOf(int(shape.core.captured.size()), sample);
        QCOMPARE(block.mid(32 + (shape.amount - 1 - address) * bench.width, bench.width),
                 row.rightJustified(bench.width, u'0'));
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
