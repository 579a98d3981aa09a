#include <support/testmain.h>
#include <wave_data/windowcompare.h>
#include <wave_data/windowcontents.h>

#include <random>

using namespace WaveMonitor;

namespace {

/// A window as the naive way sees it: names in order of ids, and texts of 0 and 1.
struct PlainWindow
{
    int trigger = 0;
    QStringList names;
    QList<QByteArray> samples;

    [[nodiscard]] WindowContents contents() const
    {
        WindowContents contents;
        for (int id = 0; id < names.size(); ++id) {
            QBitArray bits(samples.at(id).size());
            for (qsizetype i = 0; i < bits.size(); ++i)
                bits.setBit(i, samples.at(id).at(i) == '1');
            contents.addSignal({.id = id, .name = names.at(id), .text = {}, .data = bits});
        }
        contents.setTriggerPosition(trigger);
        return contents;
    }
};

using Marks = QList<QByteArray>; // of each signal of A that has a partner: 'd' where it differs

class tst_WindowCompare : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithTheNaiveWay();
    void findsOneFlippedBit();
};

PlainWindow randomWindow(std::mt19937 &random)
{
    const auto below = [&](int limit) { return int(random() % unsigned(limit)); };
    PlainWindow window;
    window.trigger = below(400) - (below(8) == 0 ? 500 : 0);
    const int length = below(400);
    for (int i = below(5); i >= 0; --i) {
        window.names.append(QString(QChar(u'a' + below(3)))); // duplicates, and some in one alone
        QByteArray samples(below(4) == 0 ? below(400) : length, '0');
        for (char &sample : samples)
            sample = below(40) == 0 ? '1' : '0';
        window.samples.append(samples);
    }
    return window;
}

/// Walks sample by sample, and checks all that a comparison tells of one signal.
void checkSignal(const ComparedSignal &signal, QByteArray a, QByteArray b, int offset,
                 const WindowComparison &comparison, qsizetype position, Marks &marks)
{
    ComparedSignal naive{.name = signal.name, .idInA = signal.idInA, .idInB = signal.idInB};
    QByteArray mark(a.size(), '.');
    qsizetype pairs = 0;
    for (qsizetype i = 0; i < a.size(); ++i) {
        const qsizetype other = i + offset;
        if (other < 0 || other >= b.size())
            continue;
        ++pairs;
        if (a.at(i) != b.at(other))
            mark[i] = 'd';
    }
    naive.onlyInA = a.size() - pairs;
    naive.onlyInB = b.size() - pairs;
    naive.compared = signal.compared; // compared with the number of pairs below
    QCOMPARE(signal.compared.size(), pairs);
    naive.differing = mark.count('d');
    if (mark.contains('d'))
        naive.firstDifference = mark.indexOf('d');
    qsizetype from = -5;
    while (const auto run = comparison.differenceWithin(position, {from, 500})) {
        ++naive.places;
        QVERIFY(!mark.left(run->first).mid(std::max<qsizetype>(from, 0)).contains('d'));
        QCOMPARE(mark.mid(run->first, run->size()), QByteArray(run->size(), 'd'));
        QVERIFY(run->end == mark.size() || mark.at(run->end) == '.');
        from = run->end;
    }
    QVERIFY(!mark.mid(std::max<qsizetype>(from, 0)).contains('d'));
    const SampleRange part{pairs / 3, pairs / 2};
    const auto run = comparison.differenceWithin(position, part);
    QCOMPARE(bool(run), mark.mid(part.first, part.size()).contains('d'));
    QVERIFY(!run || (run->first >= part.first && run->end <= part.end));
    QCOMPARE(signal, naive);
    marks.append(mark);
}

void tst_WindowCompare::agreesWithTheNaiveWay()
{
    std::mt19937 random(14);
    for (int round = 0; round < 600; ++round) {
        const PlainWindow a = randomWindow(random);
        PlainWindow b = round % 2 == 0 ? randomWindow(random) : a;
        if (round % 3 == 0) // of the same length, elsewhere
            b.trigger += 1 + int(random() % 130);
        const int offset = b.trigger - a.trigger;
        const WindowComparison comparison(a.contents(), b.contents());
        QCOMPARE(comparison.offset(), offset);
        QCOMPARE(comparison.isEqual(),
                 a.trigger == b.trigger && a.names == b.names && a.samples == b.samples);

        QList<int> free; // ids of B
        for (int id = 0; id < b.names.size(); ++id)
            free.append(id);
        QStringList onlyInA;
        Marks marks;
        for (int id = 0; id < a.names.size(); ++id) {
            const auto partner = std::ranges::find_if(
                free, [&](int other) { return b.names[other] == a.names[id]; });
            if (partner == free.end()) {
                onlyInA.append(a.names.at(id));
                continue;
            }
            const qsizetype position = marks.size();
            const ComparedSignal &signal = comparison.compared().at(position);
            QCOMPARE(signal.idInA, id);
            QCOMPARE(signal.idInB, *partner);
            checkSignal(signal, a.samples[id], b.samples[*partner], offset, comparison, position,
                        marks);
            if (QTest::currentTestFailed())
                return;
            free.erase(partner);
        }
        QCOMPARE(comparison.compared().size(), marks.size());
        QCOMPARE(comparison.signalsOnlyInA(), onlyInA);
        QCOMPARE(comparison.signalsOnlyInB().size(), free.size());

        // Where a signal begins to differ, forward and backward.
        QList<qsizetype> begins;
        for (qsizetype i = 0; i < 400; ++i) {
            if (std::ranges::any_of(marks, [i](const QByteArray &mark) {
                    return i < mark.size() && mark[i] == 'd' && (i == 0 || mark[i - 1] == '.');
                }))
                begins.append(i);
        }
        QList<qsizetype> forward;
        for (auto at = comparison.nextDifference(-1); at; at = comparison.nextDifference(*at))
            forward.append(*at);
        QCOMPARE(forward, begins);
        QList<qsizetype> backward;
        for (auto at = comparison.previousDifference(1000); at;
             at = comparison.previousDifference(*at))
            backward.prepend(*at);
        QCOMPARE(backward, begins);
    }
}

void tst_WindowCompare::findsOneFlippedBit()
{
    std::mt19937 random(1);
    const auto bitOf = [&random] { return random() % 2 == 0 ? '0' : '1'; };
    PlainWindow a{100, {"p", "q", "r"}, {}};
    for (int i = 0; i < 3; ++i) {
        QByteArray samples(200, '0');
        std::ranges::generate(samples, bitOf);
        a.samples.append(samples);
    }
    // The same run, captured with some samples fewer or more before the trigger.
    for (const int moved : {-70, -64, -3, 0, 1, 63, 64, 65}) {
        PlainWindow same = a;
        same.trigger += moved;
        for (QByteArray &samples : same.samples)
            samples = moved > 0 ? QByteArray(moved, '1') + samples : samples.mid(-moved);
        for (int place = std::max(0, -moved); place < 200; ++place) {
            PlainWindow b = same;
            char &bit = b.samples[place % 3][place + moved];
            bit = bit == '0' ? '1' : '0';
            const WindowComparison comparison(a.contents(), b.contents());
            QVERIFY(!comparison.isEqual());
            QCOMPARE(comparison.differingSignals(), 1);
            QCOMPARE(comparison.firstDifference(), place);
            QCOMPARE(comparison.previousDifference(place + 1), place);
            QCOMPARE(comparison.compared().at(place % 3).differing, 1);
        }
    }
}

} // namespace

KEO_TEST_MAIN(tst_WindowCompare)
#include "tst_windowcompare.moc"
