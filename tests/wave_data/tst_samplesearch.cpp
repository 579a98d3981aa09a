#include <support/testmain.h>
#include <wave_data/samplesearch.h>

#include <QRandomGenerator>

#include <algorithm>

using namespace WaveMonitor;

namespace {

using Kind = SamplePattern::Kind;

/// A row, and the plain way to look at it: sample by sample, by the text that it shows.
struct Row
{
    Row(QRandomGenerator &random, int bits, int samples) : type(DataFormat::Type(random.bounded(5)))
    {
        // Values stay for a while, come again, and differ in few places.
        const bool isCalm = random.bounded(2);
        for (int bit = 0; bit < bits; ++bit) {
            QBitArray data(samples);
            bool level = random.bounded(2);
            for (int k = 0; k < samples; ++k) {
                level ^= random.bounded(isCalm ? 200 : 3 * bits / 2 + 1) == 0;
                data.setBit(k, level);
            }
            members.append(data);
        }
    }

    QBitArray bitsAt(int sample) const
    {
        QBitArray bits(members.size());
        for (qsizetype i = 0; i < members.size(); ++i)
            bits.setBit(i, members[i].testBit(sample));
        return bits;
    }
    QString textAt(int sample) const { return DataFormat(type).toText(bitsAt(sample)); }
    /// Stands in the alphabet where the value stands among the numbers.
    QString orderAt(int sample) const
    {
        QString bits = DataFormat(DataFormat::Binary).toText(bitsAt(sample));
        if (type == DataFormat::SignedDecimal && members.size() > 1)
            bits[0] = bits[0] == '1' ? '0' : '1';
        return bits;
    }

    QList<QBitArray> members;
    DataFormat::Type type;
};

bool looksLike(QString shown, QString wanted)
{
    if (shown.startsWith('-') != wanted.startsWith('-'))
        return false;
    shown.remove('-');
    wanted.remove('-');
    const qsizetype width = std::max(shown.size(), wanted.size());
    shown = shown.rightJustified(width, '0');
    wanted = wanted.rightJustified(width, '0');
    return std::equal(shown.cbegin(), shown.cend(), wanted.cbegin(),
                      [](QChar a, QChar b) { return b == 'X' || a == b; });
}

void compare(const SampleSearch &search, const QList<int> &hits, QRandomGenerator &random)
{
    const int samples = int(search.samples());
    const SampleHits all = search.all();
    QCOMPARE(all.count(), hits.size());
    for (int step = 0; step < 40; ++step) {
        const int from = random.bounded(-1, samples + 2);
        const auto after = std::upper_bound(hits.cbegin(), hits.cend(), from);
        const auto before = std::lower_bound(hits.cbegin(), hits.cend(), from);
        const int next = after == hits.cend() ? -1 : *after;
        const int previous = before == hits.cbegin() ? -1 : *(before - 1);
        QCOMPARE(int(search.next(from).value_or(-1)), next);
        QCOMPARE(int(all.next(from).value_or(-1)), next);
        QCOMPARE(int(search.previous(from).value_or(-1)), previous);
        QCOMPARE(int(all.previous(from).value_or(-1)), previous);
        QCOMPARE(all.countUpTo(from), after - hits.cbegin());
        const int to = from + random.bounded(300);
        QCOMPARE(search.count(from, to), std::upper_bound(hits.cbegin(), hits.cend(), to) - after);
    }
}

} // namespace

class tst_SampleSearch final : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void findsWhatTheTextsShow();
    void findsEdges();
    void readsPatterns_data();
    void readsPatterns();
    void refusesInWords_data();
    void refusesInWords();
};

void tst_SampleSearch::findsWhatTheTextsShow()
{
    QRandomGenerator random(14);
    const QStringList signs{"", "=", "!=", "<", "<= ", ">", ">="};
    int found = 0;
    for (int round = 0; round < 600; ++round) {
        const int bits = random.bounded(4) ? random.bounded(1, 12) : random.bounded(12, 80);
        const Row row(random, bits, random.bounded(1, 300));
        const int samples = int(row.members.first().size());
        const int chosen = random.bounded(samples);
        QString wanted = row.textAt(chosen);
        const int sign = random.bounded(int(signs.size()));
        for (QChar &digit : wanted) {
            if (sign < 3 && digit != '-' && random.bounded(4) == 0)
                digit = 'X';
        }
        const QString limit = row.orderAt(chosen);
        const auto holds = [&](int sample) {
            const QString number = row.orderAt(sample);
            switch (sign) {
            case 3:
                return number < limit;
            case 4:
                return number <= limit;
            case 5:
                return number > limit;
            case 6:
                return number >= limit;
            default:
                return looksLike(row.textAt(sample), wanted) != (sign == 2);
            }
        };
        QList<int> hits;
        bool before = false;
        for (int sample = 0; sample < samples; ++sample) {
            const bool now = holds(sample);
            if (now && !before)
                hits.append(sample);
            before = now;
        }
        found += int(hits.size());
        const QString typed =
            signs[sign] +
            (random.bounded(2) || wanted.startsWith("0X") ? wanted : wanted.toLower());
        const auto pattern = parsePattern(typed, bits, row.type);
        QVERIFY2(pattern, qPrintable(typed));
        compare(SampleSearch(row.members, *pattern), hits, random);
        if (QTest::currentTestFailed())
            QFAIL(qPrintable(QStringLiteral("%1 in %2 bits, %3")
                                 .arg(typed)
                                 .arg(bits)
                                 .arg(DataFormat::typeName(row.type))));
    }
    QVERIFY(found > 2000);
}

void tst_SampleSearch::findsEdges()
{
    QRandomGenerator random(15);
    for (int round = 0; round < 200; ++round) {
        const Row row(random, random.bounded(3) ? 1 : random.bounded(2, 70),
                      random.bounded(1, 300));
        const auto kind = row.members.size() > 1 ? Kind::Change : Kind(random.bounded(3));
        QList<int> hits;
        for (int sample = 1; sample < row.members.first().size(); ++sample) {
            const bool isUp = row.members.first().testBit(sample);
            if (row.bitsAt(sample) != row.bitsAt(sample - 1) &&
                (kind == Kind::Change || isUp == (kind == Kind::Rise)))
                hits.append(sample);
        }
        compare(SampleSearch(row.members, {.kind = kind}), hits, random);
    }
    const SampleSearch nothing({}, {});
    QVERIFY(!nothing.next(-1) && !nothing.previous(5) && nothing.all().count() == 0);
}

void tst_SampleSearch::readsPatterns_data()
{
    const auto row = addColumns<QString, int, int, QString>({"typed", "bits", "radix", "same"});
    row("prefix", "0x3f", 8, DataFormat::UnsignedDecimal, "63");
    row("prefix and X", "0x3x", 8, DataFormat::Binary, "0011XXXX");
    row("a large X, no prefix", "0X10", 4, DataFormat::Binary, "0b0x10");
    row("X, no prefix", "x3", 8, DataFormat::Hexadecimal, "X3");
    row("binary prefix", "0b11", 8, DataFormat::Octal, "3");
    row("a hexadecimal number, no prefix", "0b1", 12, DataFormat::Hexadecimal, "0B1");
    row("as in a source", "8'hff", 8, DataFormat::SignedDecimal, "-1");
    row("decimal in a hexadecimal row", " > 'd 100", 8, DataFormat::Hexadecimal, ">64");
    row("grouped", "1111_0000", 8, DataFormat::Binary, "0b11110000");
    row("leading zeros", "007", 3, DataFormat::Hexadecimal, "7");
    row("a single bit reads the same everywhere", "1", 1, DataFormat::SignedDecimal, "0b1");
    row("signs from a text", "\u2265 5", 4, DataFormat::UnsignedDecimal, ">=5");
    row("inequality of another language", "<>5", 4, DataFormat::UnsignedDecimal, "!=5");
}

void tst_SampleSearch::readsPatterns()
{
    QFETCH(QString, typed);
    QFETCH(int, bits);
    QFETCH(int, radix);
    QFETCH(QString, same);
    const auto pattern = parsePattern(typed, bits, DataFormat::Type(radix));
    const auto expected = parsePattern(same, bits, DataFormat::Type(radix));
    QVERIFY(pattern && expected);
    QCOMPARE(*pattern, *expected);
}

void tst_SampleSearch::refusesInWords_data()
{
    const auto row = addColumns<QString, int, int, QString>({"typed", "bits", "radix", "says"});
    row("nothing", "", 8, DataFormat::Hexadecimal, "Type a value");
    row("a sign alone", ">", 8, DataFormat::Hexadecimal, "Type a value");
    row("no digit", "3G", 8, DataFormat::Hexadecimal, "\"3G\" is no hexadecimal value");
    row("digit of another radix", "9", 8, DataFormat::Octal, "octal");
    row("other script", "\u0663", 8, DataFormat::UnsignedDecimal, "decimal");
    row("too wide", "100", 8, DataFormat::Hexadecimal, "100 needs more bits than the row has (8)");
    row("too wide, decimal", "256", 8, DataFormat::UnsignedDecimal, "more bits");
    row("past the greatest", "128", 8, DataFormat::SignedDecimal, "more bits");
    row("past the least", "-129", 8, DataFormat::SignedDecimal, "more bits");
    row("a bit has two values", "2", 1, DataFormat::Hexadecimal, "binary");
    row("no sign in this radix", "-1", 8, DataFormat::Hexadecimal, "hexadecimal");
    row("order of X", ">3X", 8, DataFormat::Hexadecimal, "X for any digit");
    row("order of a decimal X", ">3X", 8, DataFormat::UnsignedDecimal, "X for any digit");
    row("very long", QString(20'000, '1'), 8, DataFormat::UnsignedDecimal, "decimal");
    row("no members", "1", 0, DataFormat::Hexadecimal, "no samples");
}

void tst_SampleSearch::refusesInWords()
{
    QFETCH(QString, typed);
    QFETCH(int, bits);
    QFETCH(int, radix);
    QFETCH(QString, says);
    const auto pattern = parsePattern(typed, bits, DataFormat::Type(radix));
    QVERIFY(!pattern);
    QVERIFY2(pattern.error().message.contains(says), qPrintable(pattern.error().message));
}

KEO_TEST_MAIN(tst_SampleSearch)
#include "tst_samplesearch.moc"
