#include "randomunit.h"

#include <support/testmain.h>
#include <trigger/unitsetting.h>

using namespace KEO;

class tst_UnitSetting : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void writtenAndRead();
    void radixes();
    void parts();
    void refuses_data();
    void refuses();
    void writesNothingOfBrokenUnits();
};

namespace {

/// A core with one unit, M3, on a port of \a bits signals.
struct OneUnit
{
    OneUnit(int bits, MatchType type)
    {
        for (int bit = 0; bit < bits; ++bit)
            core.triggers[5]->signals.append({QString::number(bit), {}, {}});
        unit.trigger = core.triggers[5].get();
        unit.enabled = true;
        unit.match_type = type;
    }
    std::optional<Error> apply(const QString &text) { return applyUnitSetting(text, core); }

    CoreConfig core{1};
    MatchUnit &unit = *core.matchUnits[3];
};

} // namespace

// What is written of a unit gives any other setting of it the same.
void tst_UnitSetting::writtenAndRead()
{
    QRandomGenerator random(13);
    for (int round = 0; round < 3000; ++round) {
        const MatchType type = MatchType(random.bounded(6));
        OneUnit source(random.bounded(1, 80), type);
        OneUnit target(int(source.unit.trigger->signals.size()), type);
        for (MatchUnit *unit : {&source.unit, &target.unit}) {
            unit->counter_enable = round % 2;
            unit->counter_width = 1 + round % 16;
            setRandomly(*unit, random);
        }
        const std::optional<QString> text = unitSettingText(source.unit);
        QVERIFY(text);
        const std::optional<Error> error = target.apply(*text);
        QVERIFY2(!error, qPrintable(error ? error->message : QString()));
        QCOMPARE(int(target.unit.func), int(source.unit.func));
        QCOMPARE(target.unit.value0, source.unit.value0);
        if (isRangeFunction(source.unit.func))
            QCOMPARE(target.unit.value1, source.unit.value1);
        if (source.unit.counter_enable) {
            QCOMPARE(target.unit.counter, source.unit.counter);
            QCOMPARE(target.unit.countinuous, source.unit.countinuous);
        }
    }
}

// The same number in every radix.
void tst_UnitSetting::radixes()
{
    QRandomGenerator random(7);
    for (int round = 0; round < 500; ++round) {
        const int bits = random.bounded(1, 65);
        const quint64 number = random.generate64() >> (64 - bits);
        const QString binary = QString::number(number, 2);
        for (const QString &text :
             {binary, "0x" + QString::number(number, 16), "0x00" + QString::number(number, 16),
              "0o" + QString::number(number, 8), "0d" + QString::number(number)}) {
            OneUnit core(bits, MatchType::Range);
            const std::optional<Error> error = core.apply(" m3 = >= " + text + " ");
            QVERIFY2(!error, qPrintable(text));
            QCOMPARE(core.unit.value0, binary.rightJustified(bits, u'0'));
        }
    }
}

// What is not named stays, and a count without "continuous" counts all matches.
void tst_UnitSetting::parts()
{
    OneUnit core(4, MatchType::RangeWithEdges);
    core.unit.counter_enable = true;
    core.unit.counter_width = 4;
    const auto state = [&] {
        return QStringList{matchFunctionText(core.unit.func), core.unit.value0, core.unit.value1,
                           QString::number(core.unit.counter),
                           QString::number(core.unit.countinuous)}
            .join(u' ');
    };
    for (const auto &[text, expected] :
         {std::pair("M3=in 0x1..0d12", "in range 0001 1100 2 0"),
          std::pair("M3= count = 16 , continuous", "in range 0001 1100 16 1"),
          std::pair("M3===rx01", "== RX01 1100 16 1"), std::pair("M3=count=5", "== RX01 1100 5 0"),
          std::pair("M3=continuous", "== RX01 1100 5 1"),
          // A capital X is a letter and no prefix.
          std::pair("M3=!=0X01", "!= 0X01 1100 5 1"),
          std::pair("M03=not  in 0 .. 1,count=1", "not in range 0000 0001 1 0")}) {
        const std::optional<Error> error = core.apply(text);
        QVERIFY2(!error, text);
        QCOMPARE(state(), QLatin1String(expected));
    }
}

void tst_UnitSetting::refuses_data()
{
    addColumns<QString, QString>({"text", "words"}); // what the message must name
    addRow("no unit", "==1", "M0='==RX01'");
    addRow("one equals sign", "M3=1", "\"1\" is no comparison");
    addRow("unit that is off", "M4===1", "no match unit M4");
    addRow("unit beyond the last", "M16===1", "no match unit M16");
    addRow("unit without port", "M2===1", "M2 of core 1");
    addRow("nothing", "M3=", "\"\" is no comparison");
    addRow("no value", "M3=>", "> takes a binary value");
    addRow("no value of an equality", "M3===", "== takes a binary value");
    addRow("unknown function", "M3=~1", "\"~1\"");
    addRow("two comparisons", "M3=>1,<0", "\"<0\"");
    addRow("letter of a number", "M3=>1X", "0 1)");
    addRow("edge without edges", "M3===R001", "0 1 X)");
    addRow("digit of another radix", "M3===0x1G", "\"0x1G\"");
    addRow("sign", "M3===0d-1", "\"==0d-1\"");
    addRow("short, with letters", "M3===X1", "4 signals");
    addRow("long", "M3===00001", "more than effective width");
    addRow("large", "M3===0x10", "more than effective width");
    addRow("large end of a range", "M3=in 0..0d16", "more than effective width");
    addRow("beyond 64 bits", "M3===0x10000000000000000", "64 bits");
    addRow("range turned round", "M3=in 0d9..0d3", "Maximum value is less than minimum value.");
    addRow("half a range", "M3=in 1", "\"in 1\"");
    addRow("no such function", "M0=>1", "Basic");
    addRow("no counter", "M0=count=2", "count=2");
    addRow("continuous without counter", "M0=continuous", "continuous");
    addRow("count of zero", "M3=count=0", "1 to 16");
    addRow("count too large", "M3===1,count=17", "1 to 16");
}

void tst_UnitSetting::refuses()
{
    QFETCH(const QString, text);
    QFETCH(const QString, words);
    OneUnit core(4, MatchType::Range);
    core.unit.counter_enable = true;
    core.unit.counter_width = 4;
    core.unit.value0 = "0110";
    core.core.matchUnits[2]->enabled = true;
    core.core.matchUnits[0]->enabled = true;
    core.core.matchUnits[0]->trigger = core.unit.trigger;
    const std::optional<Error> error = core.apply(text);
    QVERIFY(error);
    QCOMPARE(error->kind, Error::Usage);
    QVERIFY2(error->message.contains(words), qPrintable(error->message));
    QVERIFY(core.unit.value0 == "0110" && core.unit.counter == 2); // untouched
}

void tst_UnitSetting::writesNothingOfBrokenUnits()
{
    const auto text = [](auto change) {
        OneUnit core(4, MatchType::Range);
        core.unit.counter_enable = true;
        core.unit.counter_width = 4;
        core.unit.value0 = "11";
        change(core.unit);
        return unitSettingText(core.unit).value_or("nothing");
    };
    QCOMPARE(text([](MatchUnit &) {}), "M3===0011,count=2"); // short: the core gets the number
    QCOMPARE(text([](MatchUnit &unit) { unit.value0 = "x000"; }), "nothing");
    QCOMPARE(text([](MatchUnit &unit) { unit.value0 = "00000"; }), "nothing");
    QCOMPARE(text([](MatchUnit &unit) { unit.counter = 70000; }), "nothing");
    QCOMPARE(text([](MatchUnit &unit) { unit.func = MatchFunction(8); }), "nothing");
    QCOMPARE(text([](MatchUnit &unit) { unit.match_type = MatchType(9); }), "nothing");
    QCOMPARE(text([](MatchUnit &unit) { unit.func = MatchFunction::InRange; }), "nothing");
    QCOMPARE(text([](MatchUnit &unit) { unit.trigger = nullptr; }), "nothing");
}

KEO_TEST_MAIN(tst_UnitSetting)
#include "tst_unitsetting.moc"
