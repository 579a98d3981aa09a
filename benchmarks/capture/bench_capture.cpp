#include <capture/bits.h>
#include <capture/registerimage.h>
#include <capture/samplecutter.h>
#include <capture/triggercheck.h>
#include <capture/triggerdiagnosis.h>
#include <capture/triggerevaluation.h>
#include <trigger/truthtable.h>

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

using namespace KEO;

namespace {

/// A dynamic core with all 16 units in use and one expression over them.
void useAllUnits(CoreConfig &core)
{
    core.dynamic = 1;
    for (size_t i = 0; i < CoreConfig::kUnits; ++i) {
        core.triggers[i]->signals = {{QStringLiteral("s"), {}, {}}};
        core.matchUnits[i]->enabled = true;
        core.matchUnits[i]->trigger = core.triggers[i].get();
    }
    core.expressions = QStringList{QStringLiteral("(M0^M1^M2)&(M3|M4|!M5)^(M6&M7|M8)&!(M9^M10)|"
                                                  "(M11&M12&M13)^(M14|M15)")};
    core.expressionEnabled = {true};
}

/// The same expression as the compiler evaluates it.
bool fires(int input)
{
    const auto m = [input](int unit) { return (input >> unit) & 1; };
    const int first = (m(0) ^ m(1) ^ m(2)) & (m(3) | m(4) | !m(5));
    const int second = ((m(6) & m(7)) | m(8)) & !(m(9) ^ m(10));
    const int third = (m(11) & m(12) & m(13)) ^ (m(14) | m(15));
    return (first ^ second) | third;
}

/// Truth table, image and words of one expression over 16 units, for registers of range(0) bits:
/// what a user waits for after Start.
void expressionImage(benchmark::State &state)
{
    CoreConfig core;
    useAllUnits(core);
    core.signals = QList<SignalEntry>(state.range(0) - 1, {QStringLiteral("s"), {}, {}});
    QList<QBitArray> image;
    for (auto _ : state) {
        image = buildExpressionImage(core);
        benchmark::DoNotOptimize(image.constData());
    }
    for (int i = 0; i < 65536; ++i) {
        const QBitArray &word = image[i];
        const bool isNumber = sliceBits(word, word.size() - 16) == bitsOfInt16(i);
        if (!isNumber || word.size() != 21 + state.range(0) || word.testBit(20) != fires(i)) {
            state.SkipWithError("wrong word");
            return;
        }
    }
}
BENCHMARK(expressionImage)->Arg(16)->Arg(256)->Unit(benchmark::kMillisecond);

/// A megabyte of text over 16 units that can be evaluated: flat, or with 200,000 values stacked up.
void hugeExpression(benchmark::State &state)
{
    QString text = QStringLiteral("M0&M1&M2&M3&M4&M5&M6&M7&M8&M9&M10&M11&M12&M13&M14&M15");
    if (state.range(0) == 0)
        text += QStringLiteral("|M1").repeated(333'000);
    else
        text = QStringLiteral("M0&(").repeated(200'000) + text + QString(200'000, u')');
    QString table;
    for (auto _ : state)
        table = expressionTruthTable(text);
    if (table.size() != 65536 || table.front() != u'0' || table.back() != u'1')
        state.SkipWithError("wrong table");
}
BENCHMARK(hugeExpression)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

/// The check of 16 units and 16 expressions over all of them, as after each edit on the page. The
/// units compare ports of 64 bits, each one of its own, or, range(0), all the same one with
/// patterns that have little in common.
void triggerCheck(benchmark::State &state)
{
    CoreConfig core;
    useAllUnits(core);
    core.signals = {{QStringLiteral("s"), {}, {}}};
    std::mt19937 random(7);
    for (size_t i = 0; i < CoreConfig::kUnits; ++i) {
        core.triggers[i]->signals = QList<SignalEntry>(64, {QStringLiteral("s"), {}, {}});
        MatchUnit &unit = *core.matchUnits[i];
        if (state.range(0) == 1)
            unit.trigger = core.triggers[0].get();
        unit.match_type = MatchType::RangeWithEdges;
        for (int bit = 0; bit < 64; ++bit)
            unit.value0 += QStringLiteral("01XR")[random() % 4];
    }
    core.expressions = QStringList(16, core.expressions.first());
    core.expressionEnabled = QList<bool>(16, true);
    QList<TriggerFinding> findings;
    for (auto _ : state)
        findings = checkTrigger(core);
    if (!findings.isEmpty())
        state.SkipWithError("found what is not there");
}
BENCHMARK(triggerCheck)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

constexpr qsizetype kRows = 65'536;

/// 256 signals of random samples, each called by its number.
QList<QBitArray> randomSignals(CoreConfig &core)
{
    std::mt19937_64 random(7);
    std::vector<quint64> noise(kRows / 64);
    QList<QBitArray> samples;
    for (int i = 0; i < 256; ++i) {
        core.signals.append({QString::number(i), {}, {}});
        for (quint64 &word : noise)
            word = random();
        samples.append(QBitArray::fromBits(reinterpret_cast<const char *>(noise.data()), kRows));
    }
    return samples;
}

/// 16 units and 16 expressions over all of them, 65,536 samples of 256 signals. The ports have 16
/// signals each, or, with \a isWide, are all the same with 256, compared with patterns, orders and
/// ranges in turn. With \a isPartial, the last 64 signals were not captured.
struct FullSetup
{
    FullSetup(bool isWide, bool isPartial)
    {
        useAllUnits(core);
        samples = randomSignals(core);
        names = core.flatSignalNames();
        std::mt19937 random(7);
        for (int i = 0; i < CoreConfig::kUnits; ++i) {
            core.triggers[size_t(i)]->signals =
                isWide ? core.signals : core.signals.mid(i * 16, 16);
            MatchUnit &unit = *core.matchUnits[size_t(i)];
            unit.match_type = MatchType::RangeWithEdges;
            unit.func = MatchFunction(i % 8);
            unit.counter_enable = true;
            unit.counter = i + 1;
            unit.countinuous = i % 3 == 0;
            const qsizetype width = core.triggers[size_t(i)]->signals.size();
            for (qsizetype bit = 0; bit < width; ++bit) {
                unit.value0 += isEqualityFunction(unit.func)
                                   ? QStringLiteral("XXXXXR01")[random() % 8]
                                   : QStringLiteral("01")[random() % 2];
                unit.value1 += u'1';
            }
        }
        core.expressions = QStringList(16, core.expressions.first());
        core.expressionEnabled = QList<bool>(16, true);
        for (qsizetype i = 192; isPartial && i < names.size(); ++i)
            names[i].clear();
    }

    CoreConfig core;
    QStringList names;
    QList<QBitArray> samples;
};

/// What a set-up would have triggered on.
void triggerEvaluation(benchmark::State &state)
{
    const FullSetup setup(state.range(0), state.range(1));
    TriggerEvaluation evaluation;
    for (auto _ : state) {
        const PortSamples ports(setup.core, setup.names, setup.samples);
        evaluation = evaluateTrigger(triggerProgram(setup.core), ports);
    }
    const qsizetype known = setSamples(evaluation.trigger.known);
    if (evaluation.expressions.size() != 16 || known == 0 || known == kRows)
        state.SkipWithError("nothing, or all, is known");
}
BENCHMARK(triggerEvaluation)->ArgsProduct({{0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);

/// Why it did not: once evaluated. With range(2), no counter keeps the units' reports steady.
void triggerDiagnosis(benchmark::State &state)
{
    FullSetup setup(state.range(0), state.range(1));
    for (const auto &unit : setup.core.matchUnits)
        unit->counter_enable = !state.range(2);
    QStringList terms; // that are never all true
    for (int i = 0; i < CoreConfig::kUnits; ++i)
        terms.append((i % 2 ? QStringLiteral("!M%1") : QStringLiteral("M%1")).arg(i));
    setup.core.expressions.fill(terms.join(u'&'));
    const PortSamples ports(setup.core, setup.names, setup.samples);
    const TriggerProgram program = triggerProgram(setup.core);
    const TriggerEvaluation evaluation = evaluateTrigger(program, ports);
    TriggerDiagnosis diagnosis;
    for (auto _ : state)
        diagnosis = diagnoseTrigger(program, ports, evaluation);
    if (diagnosis.expressions.size() != 16 || diagnosis.hits != 0 || !diagnosis.units[0].nearest)
        state.SkipWithError("found no nearest sample");
}
BENCHMARK(triggerDiagnosis)->ArgsProduct({{0, 1}, {0, 1}, {0, 1}})->Unit(benchmark::kMillisecond);

/// The position of a bit of row \a row (row 0 is the last one) in sections of 128 rows.
struct BitPlace
{
    qsizetype section;
    qsizetype bit;

    BitPlace(const CaptureGeometry &geometry, qsizetype row, qsizetype column)
    {
        const qsizetype fromFront = kRows - 1 - row;
        section = fromFront / 128;
        bit = (fromFront % 128 + 1) * geometry.registerWidth - geometry.columns - 1 + column;
    }
};

/// Random bits with the marker in row \a marked only.
QList<QBitArray> randomSections(const CaptureGeometry &geometry, qsizetype marked)
{
    std::mt19937 random(7);
    const qsizetype bits = geometry.registerWidth * 128;
    std::vector<quint32> noise(size_t(bits / 32 + 1));
    QList<QBitArray> sections;
    for (qsizetype section = 0; section < kRows / 128; ++section) {
        for (quint32 &word : noise)
            word = quint32(random());
        sections += QBitArray::fromBits(reinterpret_cast<const char *>(noise.data()), bits);
    }
    for (qsizetype row = 0; row < kRows; ++row) {
        const BitPlace place(geometry, row, 0);
        sections[place.section].setBit(place.bit, row == marked);
    }
    return sections;
}

/// Cuts a window of 65,536 samples out of its 512 sections: range(0) signals in registers of
/// range(1) bits.
void cutWindow(benchmark::State &state)
{
    const CaptureGeometry geometry{state.range(0), state.range(1), kRows, 1000, true};
    constexpr qsizetype kMarked = 40'000;
    const QList<QBitArray> sections = randomSections(geometry, kMarked);
    QList<QBitArray> samples;
    for (auto _ : state) {
        samples = cutSamples(sections, geometry);
        benchmark::DoNotOptimize(samples.constData());
    }
    // The trigger stands three rows before the mark of a dynamic core.
    const qsizetype oldest = kMarked - 3 - geometry.triggerPosition;
    for (qsizetype column = 0; column < geometry.columns; ++column) {
        for (qsizetype i = 0; i < kRows; i += 97) {
            const BitPlace place(geometry, (oldest + i) % kRows, column + 1);
            if (samples[column].testBit(i) != sections[place.section].testBit(place.bit)) {
                state.SkipWithError("wrong sample");
                return;
            }
        }
    }
}
BENCHMARK(cutWindow)
    ->Args({255, 256})
    ->Args({255, 261})
    ->Args({16, 17})
    ->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
