#include "portcore.h"

#include <config/matchtext.h>
#include <support/widgettest.h>
#include <trigger_ui/matchunitdialog.h>
#include <trigger_ui/matchunitmodel.h>

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QColor>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTreeWidget>

using namespace KEO;

namespace {

const QString kTooWide = "Value Invalid: value is more than effective width.";
const QString kSwapped = "Value Invalid: Maximum value is less than minimum value.";

const char Bin[] = "rbtnBin"; // the buttons of the radixes
const char Oct[] = "rbtnOct";
const char Dec[] = "rbtnDec";
const char Hex[] = "rbtnHex";

/// A core whose unit 3 compares port 2, and the dialog on that unit.
struct Opened
{
    enum Mode { Free, ReadOnly };

    CoreConfig core;
    MatchUnit *unit = core.matchUnitByIndex(3);
    std::unique_ptr<MatchUnitDialog> dialog;

    Opened(int bits, int type, int func, const QString &value0 = {}, const QString &value1 = {})
    {
        connectPort(*core.triggerByIndex(2), bits);
        connectPort(*core.triggerByIndex(5), 4);
        unit->trigger = core.triggerByIndex(2);
        unit->match_type = type;
        unit->func = func;
        unit->value0 = value0;
        unit->value1 = value1;
    }

    void open(Mode mode = Free)
    {
        dialog = std::make_unique<MatchUnitDialog>(unit, mode == ReadOnly);
        dialog->show();
    }

    template <typename Widget = QLineEdit>
    Widget *find(const QString &name) const
    {
        return dialog->findChild<Widget *>(name);
    }

    QString shown(const char *field = "lineEditValue0") const { return find(field)->displayText(); }

    void chooseRadix(const QString &radix) const
    {
        auto *button = find<QRadioButton>(radix);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }

    void choose(const char *combo, const QString &text) const
    {
        chooseByKeys(find<QComboBox>(combo), text);
    }

    void type(const char *field, const QString &keys) const
    {
        find(field)->selectAll();
        QTest::keyClick(find(field), Qt::Key_Delete);
        QTest::keyClick(find(field), Qt::Key_Home);
        QTest::keyClicks(find(field), keys);
    }

    /// Presses Enter in the first value field.
    void confirm() const { QTest::keyClick(find("lineEditValue0"), Qt::Key_Return); }
};

} // namespace

class tst_MatchUnits : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void table();
    void typedValues_data();
    void typedValues();
    void typedRanges();
    void radixConvertsTheField_data();
    void radixConvertsTheField();
    void typeAndFunctionNarrow();
    void otherPort();
    void readOnlyKeepsTheStructure();
    void counterWidthBoundsTheCount();
    void valuesFromAFile();
    void goneInsideABox();
};

void tst_MatchUnits::table()
{
    CoreConfig core;
    MatchUnit *pattern = core.matchUnitByIndex(1);
    pattern->enabled = true;
    pattern->value0 = "1X";
    pattern->counter = 7;
    MatchUnit *range = core.matchUnitByIndex(12);
    range->trigger = core.triggerByIndex(4);
    range->match_type = 5;
    range->func = 7;
    range->counter_enable = true;
    range->counter = 9;
    range->value0 = "001";
    range->value1 = "100";

    MatchUnitModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setUnits({pattern, range});
    QCOMPARE(model.unitOfIndex(model.index(1, 3)), range);
    const auto row = [&model](int number) {
        QStringList texts;
        for (int column = 0; column < model.columnCount(); ++column)
            texts += model.index(number, column).data().toString();
        return texts.join(u'|');
    };
    QCOMPARE(row(0), "M1|M1|NONE|Basic|==|Disabled|1X");
    QCOMPARE(row(1), "M12|M12|Trigger 4|Range w/edges|not in range|9|001 : 100");
    QVERIFY(!model.index(0, 2).data(Qt::ForegroundRole).isValid());
    QCOMPARE(model.index(1, 2).data(Qt::ForegroundRole).value<QColor>(), QColor(Qt::gray));

    // The check column alone switches units.
    QSignalSpy changed(&model, &MatchUnitModel::dataChanged);
    QSignalSpy modified(&model, &MatchUnitModel::modified);
    QVERIFY(!model.setData(model.index(1, 1), Qt::Checked, Qt::CheckStateRole));
    QVERIFY(!range->enabled && changed.isEmpty() && modified.isEmpty());
    QVERIFY(model.setData(model.index(1, 0), Qt::Checked, Qt::CheckStateRole));
    QVERIFY(range->enabled);
    QCOMPARE(changed.value(0).value(0).toModelIndex(), model.index(1, 0));
    QCOMPARE(changed.value(0).value(1).toModelIndex(), model.index(1, 6));
    QCOMPARE(modified.size(), 1);
}

void tst_MatchUnits::typedValues_data()
{
    // stored: empty if refused as too wide
    const auto row = addColumns<int, int, int, QString, QString, QString>(
        {"bits", "type", "func", "radix", "typed", "stored"});
    row("letters turn to capitals", 4, 1, 1, Bin, "rfbn", "RFBN");
    row("no edges without the type", 4, 2, 0, Bin, "1R0X", "10X0");
    row("an order takes digits only", 4, 3, 2, Bin, "1XR1", "1100");
    row("zeros behind what was typed", 8, 0, 0, Bin, "00101", "00101000");
    row("nothing beyond the width", 4, 0, 0, Bin, "10111", "1011");
    row("nothing typed", 4, 0, 0, Bin, "", "0000");

    row("hex greatest", 10, 2, 2, Hex, "3ff", QString(10, u'1'));
    row("hex over the port", 10, 2, 2, Hex, "fff", {});
    row("hex zeros behind", 10, 2, 2, Hex, "3", "1100000000");
    row("hex refuses other letters", 10, 1, 0, Hex, "0g1x0r", "0000010000");
    row("oct over the port", 10, 0, 0, Oct, "2000", {});
    row("oct refuses 8 and 9", 10, 0, 0, Oct, "891", "1000000000");
    row("dec greatest", 10, 2, 5, Dec, "1023", QString(10, u'1'));
    row("dec one over", 10, 2, 5, Dec, "1024", {});
    row("dec zeros behind", 10, 2, 5, Dec, "07", "1010111100");

    row("dec 64 bits", 64, 2, 2, Dec, "18446744073709551615", QString(64, u'1'));
    row("dec beyond 64 bits is zero", 64, 2, 2, Dec, "18446744073709551616", QString(64, u'0'));
    row("hex beyond 64 bits is zero", 68, 2, 2, Hex, "10000000000000000", QString(68, u'0'));
    row("bin beyond 64 bits", 68, 1, 0, Bin, "1X", "1X" + QString(66, u'0'));
}

void tst_MatchUnits::typedValues()
{
    QFETCH(const int, bits);
    QFETCH(const int, type);
    QFETCH(const int, func);
    QFETCH(const QString, radix);
    QFETCH(const QString, typed);
    QFETCH(const QString, stored);

    const BoxWatcher boxes;
    Opened opened(bits, type, func, QString(bits, u'0'), QString(bits, u'1'));
    opened.open();
    opened.chooseRadix(radix);
    opened.type("lineEditValue0", typed);
    opened.confirm();

    const bool refused = stored.isEmpty();
    QCOMPARE(opened.dialog->isVisible(), refused);
    QCOMPARE(boxes.seen, refused ? QStringList{kTooWide} : QStringList());
    QCOMPARE(opened.unit->value0, refused ? QString(bits, u'0') : stored);
    if (refused)
        QCOMPARE(opened.shown(), typed.toUpper()); // to be mended, not typed again
    // The second value goes through the same conversions, and is stored unseen.
    const QString second(bits, bits > 64 && radix != Bin ? u'0' : u'1');
    QCOMPARE(opened.unit->value1, refused ? QString(bits, u'1') : second);
}

void tst_MatchUnits::typedRanges()
{
    const BoxWatcher boxes;
    Opened opened(10, 4, 0);
    opened.open();
    QVERIFY(!opened.find("lineEditValue1")->isVisible());
    opened.choose("comboBoxFunc", matchFunctionText(7));
    QVERIFY(opened.find("lineEditValue1")->isVisible());
    const auto stored = [&](const QString &radix, const QString &minimum, const QString &maximum) {
        opened.dialog->show();
        opened.chooseRadix(radix);
        opened.type("lineEditValue0", minimum);
        opened.type("lineEditValue1", maximum);
        opened.confirm();
        return opened.unit->value0 + u':' + opened.unit->value1;
    };
    QCOMPARE(stored(Hex, "000", "400"), ":");
    QCOMPARE(stored(Oct, "0010", "0007"), ":");
    QCOMPARE(boxes.seen, (QStringList{kTooWide, kSwapped}));
    QVERIFY(opened.dialog->isVisible());
    QCOMPARE(stored(Bin, "0000000011", "0100"), "0000000011:0100000000");
    QVERIFY(!opened.dialog->isVisible());
    QCOMPARE(stored(Hex, "1FF", "1ff"), "0111111111:0111111111");
    QCOMPARE(stored(Dec, "0009", "0010"), "0000001001:0000001010");
    QCOMPARE(opened.unit->func, 7);
    QCOMPARE(boxes.seen.size(), 2);
}

void tst_MatchUnits::radixConvertsTheField_data()
{
    // radixes: chosen one after the other
    // shown: after each
    // toolTip: after the last
    const auto row = addColumns<QString, QStringList, QStringList, QString>(
        {"value", "radixes", "shown", "toolTip"});
    row("round trip", "1010111100", {Hex, Dec, Oct, Bin}, {"2BC", "0700", "1274", "1010111100"},
        "0000000000~1111111111");
    row("dec to hex", "0000000101", {Dec, Hex}, {"0005", "005"}, "000~3FF");
    row("dec range", "0000000101", {Dec}, {"0005"}, "0000~1023");
    row("an X is lost", "10X1", {Dec, Bin}, {"00", "0000"}, "0000~1111");
    row("B is no prefix", "0B11", {Hex, Bin}, {"0", "0000"}, "0000~1111");
    row("64 bits", QString(64, u'1'), {Dec, Bin}, {"18446744073709551615", QString(64, u'1')},
        QString(64, u'0') + u'~' + QString(64, u'1'));
    row("beyond 64 bits", QString(70, u'1'), {Hex, Bin}, {QString(18, u'0'), QString(70, u'0')},
        QString(70, u'0') + u'~' + QString(70, u'1'));
}

void tst_MatchUnits::radixConvertsTheField()
{
    QFETCH(const QString, value);
    QFETCH(const QStringList, radixes);
    QFETCH(const QStringList, shown);

    Opened opened(int(value.size()), 1, 0, value, value);
    opened.open();
    for (qsizetype i = 0; i < radixes.size(); ++i) {
        opened.chooseRadix(radixes[i]);
        QCOMPARE(opened.shown(), shown[i]);
        QCOMPARE(opened.shown("lineEditValue1"), shown[i]);
    }
    QTEST(opened.find("lineEditValue0")->toolTip(), "toolTip");
}

// What a new type or function does not allow goes, the rest stays.
void tst_MatchUnits::typeAndFunctionNarrow()
{
    Opened opened(4, 5, 7, "0001", "0110");
    opened.open();
    const auto *function = opened.find<QComboBox>("comboBoxFunc");
    opened.choose("comboBoxType", "Range");
    QCOMPARE(function->currentText(), "not in range");
    QVERIFY(opened.find("lineEditValue1")->isVisible());
    opened.choose("comboBoxType", "Basic w/edges");
    QCOMPARE(function->currentText(), "==");
    QVERIFY(!opened.find("lineEditValue1")->isVisible());
    QCOMPARE(opened.shown(), "0001");
    opened.type("lineEditValue0", "0R10");
    opened.choose("comboBoxType", "Basic");
    QCOMPARE(opened.shown(), "0000"); // no edges any more
    opened.choose("comboBoxType", "Extended");
    QCOMPARE(function->count(), 6);
    opened.type("lineEditValue0", "1X01");
    opened.choose("comboBoxFunc", "!=");
    QCOMPARE(opened.shown(), "1X01");
    opened.choose("comboBoxFunc", ">");
    QCOMPARE(opened.shown(), "0000"); // an order takes digits only
    opened.type("lineEditValue0", "0010");
    opened.choose("comboBoxFunc", "<=");
    opened.confirm();
    const MatchUnit &unit = *opened.unit;
    QCOMPARE(unit.match_type, 2);
    QCOMPARE(matchFunctionText(unit.func), "<=");
    QCOMPARE(unit.value0 + unit.value1, "00100110");
}

void tst_MatchUnits::otherPort()
{
    Opened opened(10, 1, 0, "0000001X0R", "1111110001");
    opened.unit->trigger = opened.core.triggerByIndex(0); // not connected
    opened.open();
    QCOMPARE(opened.find<QComboBox>("comboBoxTrigger")->currentIndex(), -1);
    QVERIFY(!opened.find<QWidget>("widgetRight")->isEnabled());
    QTest::keyClick(opened.dialog.get(), Qt::Key_Return);
    QVERIFY(!opened.dialog->isVisible());
    QCOMPARE(opened.unit->value0, "0000001X0R");
    QCOMPARE(opened.unit->trigger, opened.core.triggerByIndex(0));

    opened.unit->trigger = opened.core.triggerByIndex(2);
    opened.open();
    auto *tree = opened.find<QTreeWidget>("treeSignals");
    QCOMPARE(tree->topLevelItem(0)->child(0)->text(0), "bus[8]");
    QCOMPARE(tree->topLevelItem(1)->text(0), "Last");
    opened.choose("comboBoxTrigger", "Trigger Port 5"); // narrower: keeps the last digits
    QCOMPARE(opened.shown(), "1X0R");
    QCOMPARE(opened.shown("lineEditValue1"), "0001");
    QCOMPARE(tree->topLevelItem(0)->childCount(), 3);
    opened.choose("comboBoxTrigger", "Trigger Port 2");
    QCOMPARE(opened.shown(), "0000001X0R");
    opened.choose("comboBoxTrigger", "Trigger Port 5");
    opened.confirm();
    QCOMPARE(opened.unit->trigger, opened.core.triggerByIndex(5));
    QCOMPARE(opened.unit->value0, "1X0R");
}

void tst_MatchUnits::readOnlyKeepsTheStructure()
{
    Opened opened(4, 4, 0, "0000");
    opened.unit->counter_enable = true;
    opened.unit->counter_width = 40; // more than the dialog can show
    opened.open(Opened::ReadOnly);
    for (const char *name : {"comboBoxTrigger", "comboBoxType", "spinBoxCounterWidth"})
        QVERIFY2(!opened.find<QWidget>(name)->isEnabled(), name);
    QVERIFY(!opened.find<QGroupBox>("groupBoxCounter")->isCheckable());
    opened.choose("comboBoxFunc", ">=");
    opened.find<QSpinBox>("spinBoxCounter")->setValue(12);
    QTest::keyClick(opened.find<QCheckBox>("checkBoxContinuous"), Qt::Key_Space);
    opened.confirm();
    const MatchUnit &unit = *opened.unit;
    QCOMPARE(matchFunctionText(unit.func), ">=");
    QCOMPARE(unit.counter, 12);
    QVERIFY(unit.countinuous && unit.counter_enable);
    QCOMPARE(unit.counter_width, 40);
}

void tst_MatchUnits::counterWidthBoundsTheCount()
{
    Opened opened(4, 0, 0);
    opened.unit->counter_width = 5;
    opened.unit->counter = 40;
    opened.open();
    auto *count = opened.find<QSpinBox>("spinBoxCounter");
    QCOMPARE(count->value(), 32);
    opened.find<QGroupBox>("groupBoxCounter")->setChecked(true);
    opened.find<QSpinBox>("spinBoxCounterWidth")->setValue(16);
    count->setValue(65536);
    QCOMPARE(count->value(), 65536);
    opened.find<QSpinBox>("spinBoxCounterWidth")->setValue(3);
    opened.confirm();
    QCOMPARE(opened.unit->counter, 8);
    QCOMPARE(opened.unit->counter_width, 3);
    QVERIFY(opened.unit->counter_enable);
}

// What a file may hold and no dialog writes, after OK without an edit.
void tst_MatchUnits::valuesFromAFile()
{
    const QMap<QString, QString> stored{
        {"", "00000000"}, {"101", "00000101"}, {"1100110011", "11001100"}, {"xx10rf", "00XX10RF"}};
    for (const QString &value : stored.keys()) {
        Opened opened(8, 0, 4, value); // a function that the type does not offer
        opened.unit->counter_width = std::numeric_limits<int>::max();
        opened.open();
        opened.confirm();
        QCOMPARE(opened.unit->value0, stored[value]);
        QCOMPARE(opened.unit->func, 4);
    }
}

// The box belongs to the dialog, and both go with the window below them.
void tst_MatchUnits::goneInsideABox()
{
    Opened opened(10, 0, 0, QString(10, u'0'));
    opened.open();
    opened.chooseRadix(Hex);
    opened.type("lineEditValue0", "FFF");
    const OnModal<QMessageBox> box([&](QMessageBox *) { opened.dialog.reset(); });
    opened.confirm();
    QVERIFY(box.seen() && !opened.dialog);
    QCOMPARE(opened.unit->value0, QString(10, u'0'));
}

KEO_WIDGET_TEST_MAIN(tst_MatchUnits)
#include "tst_matchunits.moc"
