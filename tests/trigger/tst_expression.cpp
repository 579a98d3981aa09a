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
    void tables_data();
    void tables();
    void randomTexts();
    void hostileTexts_data();
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
        "! ! M0",   "M0 M1",  "( M0 ) M1", "M0 ( M1 )", "( M0 ) ( M1 )", "M0 ! M1", "M0 &",
        "M0 |",     "M0 ^",   "M0 !",      "M0 & & M1", "M0 & ) M1",     "( )",     "( ! )",
        "( & M0 )", "! & M0", "& M0",      "!",         "M0 )",          "( M0"};
    QTest::ignoreMessage(QtCriticalMsg, "bracket unmatched"); // of "M0 & ) M1"
    QTest::ignoreMessage(QtCriticalMsg, "bracket unmatched"); // of "M0 )"
    QTest::ignoreMessage(QtCriticalMsg, " bracket unmatched");
    for (const QString &tokens : refused)
        QVERIFY2(!KEO::isExpressionValid(tokens.split(u' ')), qPrintable(tokens));
    QVERIFY(!KEO::isExpressionValid({}));
}

void tst_Expression::tables_data()
{
    addColumns<QString>({"table"});
    const auto row = [](const char *text, const char *table) {
        QTest::newRow(text) << QString::fromLatin1(table);
    };
    row("M0", "01");
    row("M0^M1", "0110");
    row("M2&!M0", "0010");  // bit 1 is M2, bit 0 is M0
    row("M0&!M10", "0100"); // M1 is not seen in M10
    row("!(M0&M1)", "1110");
    row("M0|M1&M2", "01010111"); // and binds tighter than or
    row("(M0|M1)&M2", "00000111");
    row("M0|M1^M1", "0101");
    row("M5&M5", "01"); // one unit, however often it is named
    // Texts that the dialog would refuse.
    row("", "x");
    row("1", "1"); // digits stand for themselves
    row("10", "x");
    row("!0", "x"); // a digit goes the way of an operator, so "!" comes out first
    row("M0&&M1", "xxxx");
    row("!!M0", "xx");
    row("M0!", "10");
    row("M1 & M0", "xxxx");
    row("M0)", "01"); // stored like an operator, and does nothing
    row("M0&M1)", "xxxx");
    row("M1&(M0", "0001");
    row("M16", "01");  // M1 and a character without meaning
    row("A&M0", "01"); // the text's own "A" is the same variable as the first unit
    row("B", "xx");    // stands for no unit
}

void tst_Expression::tables()
{
    QFETCH(const QString, table);
    const QString text = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(KEO::expressionTruthTable(text), table);
    QCOMPARE(NaiveTable::of(text), table);
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

void tst_Expression::hostileTexts_data()
{
    addColumns<QString, qsizetype, QChar>({"text", "length", "first"});
    const QString all = "M0&M1&M2&M3&M4&M5&M6&M7&M8&M9&M10&M11&M12&M13&M14&M15";
    const auto row = [](const char *name, const QString &text, qsizetype length, QChar first) {
        addRow(name, text, length, first);
    };
    row("a megabyte of names", QString("M15").repeated(350'000), 2, u'x');
    row("a megabyte of brackets", QString(1 << 20, u'('), 1, u'x');
    row("more letters than units", "A&B&C&D&E&F&G&H&I&J&K&L&M&N&O&P&Q", 65536, u'x');
    row("long and evaluated", all + QString("|M1").repeated(40'000), 65536, u'0');
    row("100,000 values at once", QString("M0&(").repeated(100'000) + all + QString(100'000, u')'),
        65536, u'0');
}

void tst_Expression::hostileTexts()
{
    QFETCH(const QString, text);
    const QString table = KEO::expressionTruthTable(text);
    QTEST(table.size(), "length");
    QTEST(table[0], "first");
    QCOMPARE(table.back(), table[0] == u'x' ? u'x' : u'1');
}

KEO_TEST_MAIN(tst_Expression)
#include "tst_expression.moc"
