#include <capture/samplecutter.h>

#include <config/coreconfig.h>
#include <config/litecoreconfig.h>

#include <support/testmain.h>

#include <QRandomGenerator>

#include <limits>

using namespace KEO;

namespace {

/// The same, one bit after the other.
QList<QBitArray> cutBitByBit(const QList<QBitArray> &sections, const CaptureGeometry &geometry)
{
    std::vector<bool> raw;
    for (const QBitArray &section : sections) {
        for (qsizetype i = 0; i < section.size(); ++i)
            raw.push_back(section.testBit(i));
    }
    const qint64 width = geometry.columns + 1;
    std::vector<std::vector<bool>> rows;
    for (qint64 top = qint64(raw.size()) - 1;
         top >= 0 && qint64(rows.size()) < geometry.captureAmount; top -= geometry.registerWidth) {
        std::vector<bool> row;
        for (qint64 i = top - width + 1; i <= top; ++i)
            row.push_back(i >= 0 && raw[size_t(i)]);
        rows.push_back(row);
    }
    const qint64 n = qint64(rows.size());
    if (n == 0)
        return {};
    qint64 p = 0;
    while (p < n && !rows[size_t(p)][0])
        ++p;
    if (p == 0)
        p = n;
    p -= 1;
    for (int steps = geometry.dynamic ? 2 : 1; steps > 0; --steps) {
        if (p == 0)
            p = n;
        p -= 1;
    }
    qint64 start = p - geometry.triggerPosition;
    while (start < 0)
        start += n;
    QList<QBitArray> samples;
    for (qint64 column = 1; column < width; ++column) {
        QBitArray bits(n);
        for (qint64 i = 0; i < n; ++i)
            bits.setBit(i, rows[size_t((start + i) % n)][size_t(column)]);
        samples.append(bits);
    }
    return samples;
}

/// Random bits in sections as a core delivers them, with markers only in the rows given.
QList<QBitArray> randomSections(const CaptureGeometry &geometry, const QList<qint64> &marked,
                                QRandomGenerator &random)
{
    const qint64 rows = geometry.captureAmount;
    const qint64 total = rows * geometry.registerWidth;
    std::vector<quint32> noise(size_t(total / 32 + 1));
    random.fillRange(noise.data(), qsizetype(noise.size()));
    QBitArray raw = QBitArray::fromBits(reinterpret_cast<const char *>(noise.data()), total);
    for (qint64 row = 0; row < rows; ++row)
        raw.clearBit(total - row * geometry.registerWidth - geometry.columns - 1);
    for (const qint64 row : marked)
        raw.setBit(total - row * geometry.registerWidth - geometry.columns - 1);

    QList<QBitArray> sections;
    const qint64 sectionBits = std::min<qint64>(rows, 128) * geometry.registerWidth;
    for (qint64 first = 0; first < total; first += sectionBits) {
        QBitArray section(std::min(sectionBits, total - first));
        for (qint64 i = 0; i < section.size(); ++i)
            section.setBit(i, raw.testBit(first + i));
        sections.append(section);
    }
    return sections;
}

} // namespace

class tst_SampleCutter : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void rowsInOrder();
    void randomShapes();
    void hostileGeometry();
    void plainRows();
    void whichFirstRow();
};

/// Eight rows of three columns in 16 bits whose columns count 0 to 7, as a core wrote them: the
/// trigger in memory row 5, the marker two rows on in row 7, three samples before the trigger.
void tst_SampleCutter::rowsInOrder()
{
    QBitArray raw(8 * 16);
    for (int row = 0; row < 8; ++row) {
        const int end = (8 - row) * 16; // row 0 stands last
        for (int column = 0; column < 3; ++column)
            raw.setBit(end - 3 + column, (row >> column) & 1);
        raw.setBit(end - 4, row == 7);
    }
    const QList<QBitArray> samples = cutSamples({raw}, {3, 16, 8, 3, false});
    QCOMPARE(samples.size(), 3);
    QList<int> values;
    for (int i = 0; i < 8; ++i)
        values += samples[0].testBit(i) + 2 * samples[1].testBit(i) + 4 * samples[2].testBit(i);
    QCOMPARE(values, QList<int>({2, 3, 4, 5, 6, 7, 0, 1})); // 5 is sample 3
}

/// Few rows, so that the marker comes to stand in each, and many. Raw bits that were cut short give
/// fewer rows, and a last row of which only the end is there.
void tst_SampleCutter::randomShapes()
{
    QRandomGenerator random(8);
    for (int round = 0; round < 1000; ++round) {
        const bool isSmall = round % 10 != 0;
        CaptureGeometry geometry;
        geometry.registerWidth = random.bounded(16, isSmall ? 70 : 301);
        geometry.columns = random.bounded(1, int(geometry.registerWidth));
        geometry.captureAmount = isSmall      ? random.bounded(1, 40)
                                 : round == 0 ? 65'536
                                              : random.bounded(32, 700);
        geometry.triggerPosition = random.bounded(0, int(geometry.captureAmount) + 1);
        geometry.dynamic = round % 2;
        QList<qint64> marked;
        for (int i = random.bounded(3); i > 0; --i)
            marked.append(random.bounded(int(geometry.captureAmount)));
        QList<QBitArray> sections = randomSections(geometry, marked, random);
        if (random.bounded(4) == 0)
            sections.first().truncate(random.bounded(int(sections.first().size())));
        QCOMPARE(cutSamples(sections, geometry), cutBitByBit(sections, geometry));
    }
}

void tst_SampleCutter::hostileGeometry()
{
    constexpr qint64 kMost = std::numeric_limits<int>::max();
    constexpr qint64 kLeast = std::numeric_limits<int>::min();
    const QList<QBitArray> raw = {QBitArray(96, true)};
    for (const CaptureGeometry &geometry :
         {CaptureGeometry{0, 16, 32, 0, true}, CaptureGeometry{3, 0, 32, 0, true},
          CaptureGeometry{16, 16, 32, 0, true}, CaptureGeometry{3, 16, 0, 0, true},
          CaptureGeometry{3, 16, kLeast, 0, true}})
        QVERIFY(cutSamples(raw, geometry).isEmpty());
    for (const qint64 position : {kMost, kLeast, qint64(-1), qint64(7)}) {
        const QList<QBitArray> whole(3, QBitArray(6, true)); // 96 bits are six rows
        QCOMPARE(cutSamples(raw, {3, 16, kMost, position, true}), whole);
    }
}

/// Rows of a lite core: the first one ends the last section, and nothing stands between them.
void tst_SampleCutter::plainRows()
{
    QRandomGenerator random(4);
    const auto oldest = PlainGeometry::FirstRow::Oldest;
    const auto newest = PlainGeometry::FirstRow::Newest;
    for (const int columns : {1, 3, 64, 65, 200}) {
        for (const int rows : {1, 2, 63, 200}) {
            QList<QBitArray> stored(rows, QBitArray(columns));
            QBitArray raw((rows + 3) * columns); // with rows behind the capture
            for (int row = 0; row < rows; ++row) {
                for (int column = 0; column < columns; ++column) {
                    const bool level = random.bounded(2);
                    stored[row].setBit(column, level);
                    raw.setBit((rows + 2 - row) * columns + column, level);
                }
            }
            QBitArray front = raw;
            front.truncate(raw.size() / 3);
            QBitArray back(raw.size() - front.size());
            for (qsizetype i = 0; i < back.size(); ++i)
                back.setBit(i, raw.testBit(front.size() + i));
            for (const auto first : {oldest, newest}) {
                const auto samples = cutPlainSamples({front, back}, {columns, rows, first});
                QCOMPARE(samples.size(), columns);
                for (int column = 0; column < columns; ++column) {
                    QCOMPARE(samples[column].size(), rows);
                    for (int i = 0; i < rows; ++i) {
                        const int row = first == oldest ? i : (i + 1) % rows; // a b c: b c a
                        QCOMPARE(samples[column].testBit(i), stored[row].testBit(column));
                    }
                }
            }
        }
    }
    QVERIFY(cutPlainSamples({}, {3, 8, newest}).isEmpty());
    QVERIFY(cutPlainSamples({QBitArray(9)}, {0, 8, newest}).isEmpty());
    QVERIFY(
        cutPlainSamples({QBitArray(9)}, {3, std::numeric_limits<int>::min(), newest}).isEmpty());
}

void tst_SampleCutter::whichFirstRow()
{
    struct Row
    {
        const char *device;
        bool isZeo;
        int implementation;
        bool isNewest;
    };
    for (const Row &row :
         {Row{"KR-R", false, 0, true}, Row{"KR-S", false, 0, false}, Row{"kr-a", false, 0, false},
          Row{"", false, 0, false}, Row{"KR-A", true, 0, false}, Row{"KR-A", false, 1, false}}) {
        LiteCoreConfig core;
        core.implemention = row.implementation;
        core.capture_amount = 77;
        core.signals = QList<SignalEntry>(5);
        const auto first =
            row.isNewest ? PlainGeometry::FirstRow::Newest : PlainGeometry::FirstRow::Oldest;
        QVERIFY(plainGeometry(core, row.device, row.isZeo) == (PlainGeometry{5, 77, first}));
    }
}

KEO_TEST_MAIN(tst_SampleCutter)
#include "tst_samplecutter.moc"
