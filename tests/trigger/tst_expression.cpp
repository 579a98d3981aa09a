#include "naivetable.h"

#include <trigger/expression.h>

#include <support/testmain.h>

#include <QRandomGenerator>

class tst_Expression : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void check_data();
    void check();
    void unmatchedBrackets();
    void tables_data();
    void tables();
    void sixteenUnits();
    void randomTextsAgreeWithNaiveEvaluation();
    void hostileTexts_data();
    void hostileTexts();
};

void tst_Expression::check_data()
{
    QTest::addColumn<QString>("tokens");
    QTest::addColumn<bool>("valid");

    const auto row = [](const char *tokens, bool valid) {
        QTest::newRow(tokens) << QString::fromLatin1(tokens) << valid;
    };
    row("", false);
    row("M0", true);
    row("m7", true);
    row("! M0", true);
    row("! ( M0 & M1 )", true);
    row("M0 & ! M1", true);
    row("M0 ^ M1 | M2 & M15", true);
    row("( ( M0 | M1 ) & ( M2 ^ M3 ) )", true);
    row("! ! M0", false); // the first "!" has no operand
    row("! ( ! M0 )", true);
    row("M0 M1", false);     // units side by side
    row("( M0 ) M1", false); // two values stay
    row("M0 ( M1 )", false);
    row("( M0 ) ( M1 )", false);
    row("M0 ! M1", false);
    row("M0 &", false);
    row("M0 |", false);
    row("M0 ^", false);
    row("M0 !", false);
    row("M0 & & M1", false);
    row("M0 & ) M1", false);
    row("( )", false);
    row("( ! )", false);
    row("( & M0 )", false);
    row("! & M0", false);
    row("& M0", false);
    row("!", false);
}

void tst_Expression::check()
{
    QFETCH(const QString, tokens);
    QFETCH(const bool, valid);
    if (tokens == u"M0 & ) M1")
        QTest::ignoreMessage(QtCriticalMsg, "bracket unmatched");
    QCOMPARE(KEO::isExpressionValid(tokens.split(u' ', Qt::SkipEmptyParts)), valid);
}

void tst_Expression::unmatchedBrackets()
{
    QTest::ignoreMessage(QtCriticalMsg, "bracket unmatched");
    QVERIFY(!KEO::isExpressionValid({"M0", ")"}));
    QTest::ignoreMessage(QtCriticalMsg, " bracket unmatched");
    QVERIFY(!KEO::isExpressionValid({"(", "M0"}));
    QCOMPARE(KEO::infixToPostfix({"M0", "|", "M1", "&", "!", "(", "M2", "^", "M3", ")"}).join(u' '),
             QStringLiteral("M0 M1 M2 M3 ^ ! & |"));
}

void tst_Expression::tables_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("table");

    const auto row = [](const char *text, const char *table) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(table);
    };
    row("M0", "01");
    row("!M3", "10");
    row("M0^M1", "0110");
    row("M2&!M0", "0010"); // bit 1 is M2, bit 0 is M0
    row("M0&!M2", "0100");
    row("M0&!M10", "0100"); // M1 is not seen in M10
    row("M1|M10", "0111");
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
    row("M0&", "xx");
    row("M0 M1", "xxxx");
    row("M1 & M0", "xxxx");
    row("M0)", "01"); // stored like an operator, and does nothing
    row("M0&M1)", "xxxx");
    row("M1&(M0", "0001");
    row("()", "x");
    row("M16", "01");  // M1 and a character without meaning
    row("m0", "0");    // no unit, but a digit
    row("A&M0", "01"); // the text's own "A" is the same variable as the first unit
    row("A&B", "0001");
    row("B", "xx"); // stands for no unit
    row("MATCH[3]", "xxxxx"
                    "xxxxx"
                    "xxxxx"
                    "xxxxx"
                    "xxxxx"
                    "xxxxx"
                    "xx");
}

void tst_Expression::tables()
{
    QFETCH(const QString, text);
    QFETCH(const QString, table);
    QCOMPARE(KEO::expressionTruthTable(text), table);
    QCOMPARE(NaiveTable::of(text), table);
}

/// With all units named, the letter of M3 is "M": it must not turn into a unit's name.
void tst_Expression::sixteenUnits()
{
    const QString text =
        QStringLiteral("(M0^M1^M2)&(M3|M4|!M5)^(M6&M7|M8)&!(M9^M10)|(M11&M12&M13)^(M14|M15)");
    const QString table = KEO::expressionTruthTable(text);
    QCOMPARE(table.size(), 65536);
    for (int i = 0; i < 65536; ++i) {
        const auto m = [i](int unit) { return (i >> unit) & 1; };
        const int conjunction = (m(0) ^ m(1) ^ m(2)) & (m(3) | m(4) | !m(5));
        const int other = ((m(6) & m(7)) | m(8)) & !(m(9) ^ m(10));
        const int last = (m(11) & m(12) & m(13)) ^ (m(14) | m(15));
        QCOMPARE(table[i], QChar((conjunction ^ other) | last ? u'1' : u'0'));
    }
}

void tst_Expression::randomTextsAgreeWithNaiveEvaluation()
{
    // Half of the pieces make sense, so that texts of both kinds arise.
    const QStringList pieces = {"M0", "M1",  "M2",  "M7",   "M9",       "M10",  "M15", "(", ")",
                                "!",  "&",   "|",   "^",    "0",        "1",    "A",   "C", "M",
                                " ",  "&M0", "|M1", "^M11", "&(M4|M5)", "^!M6", "3",   "é"};
    QRandomGenerator random(20);
    int evaluated = 0;
    for (int round = 0; round < 4000; ++round) {
        QString text = round % 2 ? QStringLiteral("M3") : QString();
        for (int i = random.bounded(9); i > 0; --i)
            text += pieces[random.bounded(pieces.size())];
        const QString table = KEO::expressionTruthTable(text);
        QVERIFY2(table == NaiveTable::of(text), qPrintable(text));
        evaluated += !table.contains(u'x');
    }
    QVERIFY2(evaluated > 500, "too few of the random texts can be evaluated");
}

void tst_Expression::hostileTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qsizetype>("length");
    QTest::addColumn<QChar>("first");

    const QString all = QStringLiteral("M0&M1&M2&M3&M4&M5&M6&M7&M8&M9&M10&M11&M12&M13&M14&M15");
    QTest::newRow("a megabyte of names")
        << QStringLiteral("M15").repeated(350'000) << qsizetype(2) << QChar(u'x');
    QTest::newRow("a megabyte of brackets")
        << QStringLiteral("(").repeated(1 << 20) << qsizetype(1) << QChar(u'x');
    QTest::newRow("all letters") << QStringLiteral(
                                        "A&B&C&D&E&F&G&H&I&J&K&L&M&N&O&P&Q&R&S&T&U&V&W&X")
                                 << qsizetype(65536) << QChar(u'x');
    QTest::newRow("long and evaluated")
        << all + QStringLiteral("|M1").repeated(40'000) << qsizetype(65536) << QChar(u'0');
    // Each bracket leaves another value on the stack.
    QTest::newRow("100,000 values at once")
        << QStringLiteral("M0&(").repeated(100'000) + all + QStringLiteral(")").repeated(100'000)
        << qsizetype(65536) << QChar(u'0');
}

void tst_Expression::hostileTexts()
{
    QFETCH(const QString, text);
    const QString table = KEO::expressionTruthTable(text);
    QTEST(table.size(), "length");
    QTEST(table[0], "first");
    if (table[0] != u'x')
        QCOMPARE(table.back(), u'1');
}

KEO_TEST_MAIN(tst_Expression)
#include "tst_expression.moc"
