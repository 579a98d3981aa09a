#include "bittext.h"

#include <support/testmain.h>

#include <litecoremodel.h>

using namespace Sim;

namespace {

constexpr int kStimulus = 97; // samples

/// Bit \a column of a sample: something that no shift by rows or columns maps onto itself.
bool level(int column, qint64 sample)
{
    return ((sample % kStimulus) * 37 + column * 11) % 13 < 6;
}

/// A core of five signals, driven by words made of binary text.
struct Bench
{
    explicit Bench(int amount, LiteCoreModel::FirstSample first, bool initData = false)
        : model(description(amount, initData), stimulus(), first,
                [this](const QString &text) { reports.append(text); })
    {
    }

    static LiteCoreDescription description(int amount, bool initData)
    {
        LiteCoreDescription core;
        core.captureAmount = amount;
        core.capturesInitData = initData;
        for (int i = 0; i < 5; ++i)
            core.captured.append(QStringLiteral("s%1").arg(i));
        return core;
    }
    static BitMatrix stimulus()
    {
        BitMatrix rows(5);
        for (int sample = 0; sample < kStimulus; ++sample) {
            rows.appendRow();
            for (int column = 0; column < 5; ++column) {
                if (level(column, sample))
                    rows.setInLastRow(column);
            }
        }
        return rows;
    }

    void shiftIn(const QString &word) { model.shiftIn(parseShiftWord(bitsOf(word))); }
    void writeStart(const QString &value) { shiftIn("01001" + binary(0, 16) + value); }
    QString reg(int address)
    {
        shiftIn("01101" + binary(quint64(address), 16));
        return text(model.shiftOut(5));
    }
    QString block(int address, int rows, int more = 1)
    {
        shiftIn("00111" + binary(quint64(address), 16) + "00000");
        return text(model.shiftOut(rows * 5 + more));
    }
    static QString text(const QBitArray &bits)
    {
        QString text;
        for (qsizetype i = 0; i < bits.size(); ++i)
            text += bits.testBit(i) ? u'1' : u'0';
        return text;
    }
    /// A block that holds these samples, from the lowest address up.
    static QString rowsOf(const QList<int> &samples)
    {
        QString text;
        for (qsizetype i = samples.size() - 1; i >= 0; --i) {
            for (int column = 0; column < 5; ++column)
                text += samples[i] >= 0 && level(column, samples[i]) ? u'1' : u'0';
        }
        return text + u'0';
    }

    QStringList reports;
    LiteCoreModel model;
};

constexpr auto kFirst = LiteCoreModel::FirstSample::FirstRow;
constexpr auto kSecond = LiteCoreModel::FirstSample::SecondRow;

} // namespace

class tst_SimLiteCoreModel : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void aCapture();
    void lastRowComesRound();
    void initData();
    void wordsNoCoreUnderstands();
};

void tst_SimLiteCoreModel::aCapture()
{
    Bench bench(6, kFirst);
    bench.model.advance(10); // not started: time passes by
    QCOMPARE(bench.reg(2), "00001");
    bench.writeStart("00001");
    bench.model.advance(5);
    QVERIFY(bench.model.isArmed());
    QCOMPARE(bench.reg(0), "00001");
    bench.model.advance(100);
    QCOMPARE(bench.reg(0), "00000");
    QCOMPARE(bench.block(0, 4), Bench::rowsOf({0, 1, 2, 3}));
    QCOMPARE(bench.block(4, 4), Bench::rowsOf({4, 5, -1, -1})); // beyond the memory

    bench.writeStart("00001"); // goes on in the stimulus; ended early, the rest stays
    bench.model.advance(2);
    bench.writeStart("00000");
    bench.model.advance(2);
    QCOMPARE(bench.reg(0), "00000");
    QCOMPARE(bench.block(0, 6), Bench::rowsOf({6, 7, 2, 3, 4, 5}));
    QCOMPARE(bench.reports, QStringList());
}

void tst_SimLiteCoreModel::lastRowComesRound()
{
    Bench bench(4, kSecond);
    bench.writeStart("00001");
    bench.model.advance(4);
    QCOMPARE(bench.block(0, 4), Bench::rowsOf({3, 0, 1, 2}));
}

void tst_SimLiteCoreModel::initData()
{
    Bench bench(4, kFirst, true);
    QVERIFY(!bench.model.isArmed());
    QCOMPARE(bench.reg(2), "00000");
    QCOMPARE(bench.block(0, 2), Bench::rowsOf({0, 1}));
    QCOMPARE(bench.reg(2), "00000"); // not read to the end
    QCOMPARE(bench.block(2, 2), Bench::rowsOf({2, 3}));
    QCOMPARE(bench.reg(2), "00001");
    bench.writeStart("00001");
    bench.model.advance(4);
    QCOMPARE(bench.block(0, 4), Bench::rowsOf({4, 5, 6, 7}));
}

void tst_SimLiteCoreModel::wordsNoCoreUnderstands()
{
    Bench bench(4, kFirst);
    bench.model.shiftOut(5);
    bench.writeStart("0001");  // too narrow
    bench.writeStart("00011"); // no value of the register
    bench.writeStart("10000");
    bench.shiftIn("01001" + binary(2, 16) + "00000");
    bench.reg(1); // twice: the select, and the read that it leaves without
    bench.shiftIn("00111" + binary(0, 16) + binary(4, 16)); // a standard core's block read
    bench.model.shiftOut(21);
    bench.block(0, 2, 3);
    bench.shiftIn("10000"); // a core select is not for the core
    QCOMPARE(bench.reports.size(), 11);
    QVERIFY(!bench.model.isArmed());
}

KEO_TEST_MAIN(tst_SimLiteCoreModel)
#include "tst_sim_litecoremodel.moc"
