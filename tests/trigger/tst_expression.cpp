#include "naivetable.h"

#include <trigger/expression.h>
#include <trigger/truthtable.h>

#include <support/testmain.h>

#include <QRandomGenerator>

class tst_Expression : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void check();
    void tables();
    void randomTexts();
    void hostileTexts();
};

void tst_Expression::check()
{
    const QStringList accepted = {"M0",
                                  "m7",
                                  "! M0",
                                  "! ( M0 & M1 )",
                                  "M0 & ! M1",
                                  "M0 ^ M1 | M2 & M15",
                                  "( ( M0 | M1 ) & ( M2 ^ M3 ) )",
                                  "! ( ! M0 )"};
    for (const QString &tokens : accepted)
        QVERIFY2(KEO::isExpressionValid(tokens.split(u' ')), qPrintable(tokens));

    // "! ! M0": equal ranks group from the left, and the first "!" has no operand.
    const QStringList refused = {
        "! ! M0", "M0 M1", "( M0 ) M1", "M0 ( M1 )", "( M0 ) ( M1 )", "M0 ! M1", "M0 &", "M0 |",
        "M0 ^", "M0 !", "M0 & & M1", "M0 & ) M1", "( )", "( ! )", "( & M0 )", "! & M0", "& M0", "!",
        "M0 )", "( M0",
        // One value is left in postfix order, yet they don't say what they would mean.
        "M0 & ! ! M1", "& M2 ! M3", "M0 | ! ! ( M1 & M2 )"};
    QTest::ignoreMessage(QtCriticalMsg, "bracket unmatched"); // of "M0 & ) M1"
    QTest::ignoreMessage(QtCriticalMsg, "bracket unmatched"); // of "M0 )"
    QTest::ignoreMessage(QtCriticalMsg, " bracket unmatched");
    for (const QString &tokens : refused)
        QVERIFY2(!KEO::isExpressionValid(tokens.split(u' ')), qPrintable(tokens));
    QVERIFY(!KEO::isExpressionValid({}));
}

// What the slow way is held against by hand; the random texts go on from here.
void tst_Expression::tables()
{
    const std::pair<const char *, const char *> rows[] = {
        {"M0", "01"},
        {"M2&!M0", "0010"},  // bit 1 is M2, bit 0 is M0
        {"M0&!M10", "0100"}, // M1 is not seen in M10
        {"!(M0&M1)", "1110"},
        {"M0|M1&M2", "01010111"}, // and binds tighter than or
        {"M0|M1^M1", "0101"},
        {"M5&M5", "01"}, // one unit, however often it is named
        // Texts that the dialog would refuse.
        {"", "x"},
        {"10", "x"},
        {"!0", "x"}, // a digit goes the way of an operator, so "!" comes out first
        {"M0&&M1", "xxxx"},
        {"M0)", "01"}, // stored like an operator, and does nothing
        {"M1&(M0", "0001"},
        {"A&M0", "01"}}; // the text's own "A" is the same variable as the first unit
    for (const auto &[text, table] : rows) {
        QCOMPARE(KEO::expressionTruthTable(text), table);
        QCOMPARE(NaiveTable::of(text), table);
    }
}

void tst_Expression::randomTexts()
{
    // Half of the pieces make sense, so that texts of both kinds arise.
    const QStringList pieces = {"M0", "M1",  "M2",  "M7",   "M9",       "M10",  "M15", "(", ")",
                                "!",  "&",   "|",   "^",    "0",        "1",    "A",   "C", "M",
                                " ",  "&M0", "|M1", "^M11", "&(M4|M5)", "^!M6", "3",   "é"};
    QRandomGenerator random(20);
    // With 13 units the letter of one is "M": it must not turn into a name.
    QStringList texts = {"(M0^M1^M2)&(M3|M4|!M5)^(M6&M7|M8)&!(M9^M10)|(M11&M12)"};
    for (int round = 0; round < 4000; ++round) {
        texts += round % 2 ? QStringLiteral("M3") : QString();
        for (int i = random.bounded(9); i > 0; --i)
            texts.last() += pieces[random.bounded(pieces.size())];
    }
    int evaluated = 0;
    for (const QString &text : std::as_const(texts)) {
        const QString table = KEO::expressionTruthTable(text);
        QVERIFY2(table == NaiveTable::of(text), qPrintable(text));
        evaluated += !table.contains(u'x');
    }
    QVERIFY2(evaluated > 500, "too few of the random texts can be evaluated");
}

void tst_Expression::hostileTexts()
{
    const QString all = "M0&M1&M2&M3&M4&M5&M6&M7&M8&M9&M10&M11&M12&M13&M14&M15";
    const auto check = [](const QString &text, qsizetype length, QChar first, QChar last) {
        const QString table = KEO::expressionTruthTable(text);
        QCOMPARE(table.size(), length);
        QCOMPARE(table[0], first);
        QCOMPARE(table.back(), last);
    };
    check(QString("M15").repeated(350'000), 2, u'x', u'x');
    check(QString(1 << 20, u'('), 1, u'x', u'x');
    check("A&B&C&D&E&F&G&H&I&J&K&L&M&N&O&P&Q", 65536, u'x', u'x'); // more letters than units
    check(all + QString("|M1").repeated(40'000), 65536, u'0', u'1');
    check(QString("M0&(").repeated(100'000) + all + QString(100'000, u')'), 65536, u'0', u'1');
}

KEO_TEST_MAIN(tst_Expression)
#include "tst_expression.moc"
