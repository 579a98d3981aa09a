// What became of each signal from one list of names to another.

#include <config/signalmatching.h>

#include <support/testmain.h>

#include <QRandomGenerator>

#include <algorithm>
#include <vector>

using namespace KEO;

class tst_SignalMatching : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void examples_data();
    void examples();
    void randomLists();
    void hugeLists();
};

namespace {

/// Such as "=a >b c~x -d +e": kept, moved, renamed, removed, added.
QString text(const QList<SignalMatch> &matches, const QStringList &before, const QStringList &after)
{
    QStringList words;
    for (const auto &[kind, from, to] : matches) {
        switch (kind) {
        case SignalMatch::Kept:
            words += '=' + after[to];
            break;
        case SignalMatch::Moved:
            words += '>' + after[to];
            break;
        case SignalMatch::Renamed:
            words += before[from] + '~' + after[to];
            break;
        case SignalMatch::Removed:
            words += '-' + before[from];
            break;
        case SignalMatch::Added:
            words += '+' + after[to];
            break;
        }
    }
    return words.join(u' ');
}

/// The length of a longest common subsequence, by the table of all prefixes.
int commonLength(const QStringList &a, const QStringList &b)
{
    std::vector<std::vector<int>> length(a.size() + 1, std::vector<int>(b.size() + 1));
    for (qsizetype i = 1; i <= a.size(); ++i) {
        for (qsizetype j = 1; j <= b.size(); ++j)
            length[i][j] = a[i - 1] == b[j - 1] ? length[i - 1][j - 1] + 1
                                                : std::max(length[i - 1][j], length[i][j - 1]);
    }
    return length[a.size()][b.size()];
}

} // namespace

void tst_SignalMatching::examples_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one put in") << "a b c"
                                << "x a b c"
                                << "+x =a =b =c";
    QTest::newRow("one to the end") << "a b c d"
                                    << "b c d a"
                                    << "=b =c =d >a";
    QTest::newRow("renamed") << "a b c"
                             << "a x c"
                             << "=a b~x =c";
    QTest::newRow("two for two") << "a b c d"
                                 << "a x y d"
                                 << "=a +x +y =d -b -c";
    QTest::newRow("one elsewhere") << "a b c"
                                   << "x a c"
                                   << "+x =a =c -b";
    QTest::newRow("renamed beside a moved one") << "a k b c d"
                                                << "c a k x d"
                                                << ">c =a =k b~x =d";
    QTest::newRow("a twin renamed") << "a a"
                                    << "x a"
                                    << "a~x =a";
    QTest::newRow("twins") << "p a b a q"
                           << "r b a s"
                           << "+r =b =a q~s -p -a";
    QTest::newRow("nothing left") << "a"
                                  << ""
                                  << "-a";
}

void tst_SignalMatching::examples()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    const QStringList from = before.split(u' ', Qt::SkipEmptyParts);
    const QStringList to = after.split(u' ', Qt::SkipEmptyParts);
    QTEST(text(matchSignals(from, to), from, to), "expected");
}

void tst_SignalMatching::randomLists()
{
    QRandomGenerator random(16);
    for (int round = 0; round < 3000; ++round) {
        const int letters = 1 + random.bounded(12); // few: many twins
        QStringList before;
        QStringList after;
        for (QStringList *list : {&before, &after}) {
            for (int i = random.bounded(12); i > 0; --i)
                *list += QString(QChar('a' + random.bounded(letters)));
        }
        const QList<SignalMatch> matches = matchSignals(before, after);
        const QString told = text(matches, before, after);
        QList<int> from;
        QList<int> to;
        int kept = 0;
        int lastBefore = -1;
        int lastAfter = -1;
        QStringList removed;
        QStringList added;
        for (const auto &[kind, i, j] : matches) {
            if (i >= 0)
                from += i;
            if (j >= 0)
                to += j;
            QCOMPARE(kind == SignalMatch::Removed, j < 0);
            QCOMPARE(kind == SignalMatch::Added, i < 0);
            if (kind == SignalMatch::Kept || kind == SignalMatch::Moved)
                QCOMPARE(before[i], after[j]);
            if (kind == SignalMatch::Kept) {
                QVERIFY2(i > lastBefore && j > lastAfter, qPrintable(told));
                lastBefore = i;
                lastAfter = j;
                ++kept;
            }
            if (kind == SignalMatch::Removed || kind == SignalMatch::Renamed)
                removed += before[i];
            if (kind == SignalMatch::Added || kind == SignalMatch::Renamed)
                added += after[j];
        }
        QVERIFY2(kept == commonLength(before, after), qPrintable(told));
        for (const QString &name : removed)
            QVERIFY2(!added.contains(name), qPrintable(told));
        std::ranges::sort(from);
        for (const auto &[positions, size] :
             {std::pair(&from, before.size()), std::pair(&to, after.size())}) {
            QCOMPARE(positions->size(), size);
            for (qsizetype i = 0; i < size; ++i)
                QCOMPARE((*positions)[i], i);
        }
    }
}

/// The worst lists that a description may hold come to an end.
void tst_SignalMatching::hugeLists()
{
    constexpr int kLength = 65'536;
    QStringList names;
    for (int i = 0; i < kLength; ++i)
        names += QString::number(i);
    QStringList reversed(names.crbegin(), names.crend());
    const auto kept = [](const QList<SignalMatch> &matches) {
        return std::ranges::count(matches, SignalMatch::Kept, &SignalMatch::kind);
    };
    QCOMPARE(kept(matchSignals(names, reversed)), 1);
    const QStringList twins(kLength, "a");
    QCOMPARE(kept(matchSignals(QStringList("x") + twins, twins + QStringList("y"))), kLength);
}

KEO_TEST_MAIN(tst_SignalMatching)
#include "tst_signalmatching.moc"
