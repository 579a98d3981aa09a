#include "portcore.h"
#include "widgettest.h"

#include <config/matchtext.h>
#include <trigger/matchunitdialog.h>
#include <trigger/matchunitmodel.h>

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QColor>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTreeWidget>

using namespace KEO;

namespace {

const QString kTooWide = QStringLiteral("Value Invalid: value is more than effective width.");
const QString kSwapped = QStringLiteral("Value Invalid: Maximum value is less than minimum value.");

enum Radix { Bin = 2, Oct = 8, Dec = 10, Hex = 16 };

QString buttonOf(int radix)
{
    switch (radix) {
    case Oct:
        return QStringLiteral("rbtnOct");
    case Dec:
        return QStringLiteral("rbtnDec");
    case Hex:
        return QStringLiteral("rbtnHex");
    default:
        return QStringLiteral("rbtnBin");
    }
}

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
    Widget *find(const char *name) const
    {
        Widget *widget = dialog->findChild<Widget *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }

    QString shown(const char *field = "lineEditValue0") const { return find(field)->displayText(); }

    void chooseRadix(int radix) const
    {
        auto *button = find<QRadioButton>(buttonOf(radix).toLatin1());
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }

    void choose(const char *combo, const QString &text) const
    {
        auto *box = find<QComboBox>(combo);
        const int wanted = box->findText(text);
        QVERIFY(wanted >= 0);
        while (box->currentIndex() != wanted)
            QTest::keyClick(box, box->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
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
    void tableShowsTheUnits();
    void checkColumnEnablesUnits();
    void typedValues_data();
    void typedValues();
    void typedRanges_data();
    void typedRanges();
    void refusedValueKeepsTheDialogOpen();
    void radixConvertsTheField_data();
    void radixConvertsTheField();
    void functionKeepsWhatItAllows();
    void typeNarrowsTheFunctions();
    void narrowerPortKeepsTheLastDigits();
    void unitWithoutPort();
    void cancelChangesNothing();
    void readOnlyKeepsTheStructure();
    void counterWidthBoundsTheCount();
    void valuesFromAFile_data();
    void valuesFromAFile();
};

void tst_MatchUnits::tableShowsTheUnits()
{
    CoreConfig core;
    MatchUnit *pattern = core.matchUnitByIndex(1);
    pattern->enabled = true;
    pattern->value0 = QStringLiteral("1X");
    pattern->counter = 7;
    MatchUnit *range = core.matchUnitByIndex(12);
    range->trigger = core.triggerByIndex(4);
    range->match_type = 5;
    range->func = 7;
    range->counter_enable = true;
    range->counter = 9;
    range->value0 = QStringLiteral("001");
    range->value1 = QStringLiteral("100");

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
    QCOMPARE(row(0), QStringLiteral("M1|M1|NONE|Basic|==|Disabled|1X"));
    QCOMPARE(row(1), QStringLiteral("M12|M12|Trigger 4|Range w/edges|not in range|9|001 : 100"));
    QVERIFY(!model.index(0, 2).data(Qt::ForegroundRole).isValid());
    QCOMPARE(model.index(1, 2).data(Qt::ForegroundRole).value<QColor>(), QColor(Qt::gray));
    QCOMPARE(model.index(1, 6).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
    QCOMPARE(model.headerData(6, Qt::Horizontal, Qt::DisplayRole).toString(),
             QStringLiteral("Value"));
    QCOMPARE(model.headerData(1, Qt::Vertical, Qt::DisplayRole).toString(), QStringLiteral("1"));
    QVERIFY(!model.headerData(7, Qt::Horizontal, Qt::DisplayRole).isValid());
    model.clear();
    QCOMPARE(model.rowCount(), 0);
}

void tst_MatchUnits::checkColumnEnablesUnits()
{
    CoreConfig core;
    MatchUnitModel model;
    model.setUnits({core.matchUnitByIndex(0), core.matchUnitByIndex(1)});
    QSignalSpy changed(&model, &MatchUnitModel::dataChanged);
    QSignalSpy modified(&model, &MatchUnitModel::modified);
    QVERIFY(!model.setData(model.index(1, 1), Qt::Checked, Qt::CheckStateRole));
    QVERIFY(!model.setData(model.index(1, 0), Qt::Checked, Qt::EditRole));
    QVERIFY(!model.setData({}, Qt::Checked, Qt::CheckStateRole));
    QVERIFY(changed.isEmpty() && modified.isEmpty());

    QVERIFY(model.setData(model.index(1, 0), Qt::Checked, Qt::CheckStateRole));
    QVERIFY(core.matchUnitByIndex(1)->enabled && !core.matchUnitByIndex(0)->enabled);
    QCOMPARE(model.index(1, 0).data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
    QCOMPARE(changed.value(0).value(0).toModelIndex(), model.index(1, 0));
    QCOMPARE(changed.value(0).value(1).toModelIndex(), model.index(1, 6));
    QCOMPARE(modified.size(), 1);
    QVERIFY(model.setData(model.index(1, 0), Qt::Unchecked, Qt::CheckStateRole));
    QVERIFY(!core.matchUnitByIndex(1)->enabled);
}

void tst_MatchUnits::typedValues_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("func");
    QTest::addColumn<int>("radix");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("stored"); // empty: refused as too wide

    const auto row = [](const char *name, int bits, int type, int func, int radix,
                        const char *typed, const QString &stored) {
        QTest::newRow(name) << bits << type << func << radix << QString::fromLatin1(typed)
                            << stored;
    };
    const auto text = [](const char *latin) { return QString::fromLatin1(latin); };
    const QString refused;

    row("pattern", 4, 0, 0, Bin, "10X1", text("10X1"));
    row("letters turn to capitals", 4, 1, 1, Bin, "rfbn", text("RFBN"));
    row("no edges without the type", 4, 2, 0, Bin, "1R0X", text("10X0"));
    row("an order takes digits only", 4, 3, 2, Bin, "1XR1", text("1100"));
    row("zeros behind what was typed", 8, 0, 0, Bin, "101", text("10100000"));
    row("typed zeros stay", 8, 0, 0, Bin, "00101", text("00101000"));
    row("nothing beyond the width", 4, 0, 0, Bin, "10111", text("1011"));
    row("nothing typed", 4, 0, 0, Bin, "", text("0000"));
    row("one bit", 1, 0, 0, Bin, "1", text("1"));

    row("hex greatest", 10, 2, 2, Hex, "3ff", QString(10, u'1'));
    row("hex over the port", 10, 2, 2, Hex, "fff", refused);
    row("hex zeros behind", 10, 2, 2, Hex, "3", text("1100000000"));
    row("hex leading zeros", 10, 2, 2, Hex, "003", text("0000000011"));
    row("hex refuses other letters", 10, 1, 0, Hex, "0g1x0r", text("0000010000"));
    row("oct greatest", 10, 0, 0, Oct, "1777", QString(10, u'1'));
    row("oct over the port", 10, 0, 0, Oct, "2000", refused);
    row("oct refuses 8 and 9", 10, 0, 0, Oct, "891", text("1000000000"));
    row("dec greatest", 10, 2, 5, Dec, "1023", QString(10, u'1'));
    row("dec over the port", 10, 2, 5, Dec, "9999", refused);
    row("dec one over", 10, 2, 5, Dec, "1024", refused);
    row("dec zeros behind", 10, 2, 5, Dec, "07", text("1010111100"));

    row("dec 64 bits", 64, 2, 2, Dec, "18446744073709551615", QString(64, u'1'));
    row("dec beyond 64 bits is zero", 64, 2, 2, Dec, "18446744073709551616", QString(64, u'0'));
    row("hex 64 of 68 bits", 68, 2, 2, Hex, "0ffffffffffffffff",
        QString(4, u'0') + QString(64, u'1'));
    row("hex beyond 64 bits is zero", 68, 2, 2, Hex, "10000000000000000", QString(68, u'0'));
    row("bin beyond 64 bits", 68, 1, 0, Bin, "1X", text("1X") + QString(66, u'0'));
}

void tst_MatchUnits::typedValues()
{
    QFETCH(const int, bits);
    QFETCH(const int, type);
    QFETCH(const int, func);
    QFETCH(const int, radix);
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
    QCOMPARE(boxes.seen(), refused ? QStringList{kTooWide} : QStringList());
    QCOMPARE(opened.unit->value0, refused ? QString(bits, u'0') : stored);
    // The second value goes through the same conversions, and is stored unseen.
    const QString second(bits, bits > 64 && radix != Bin ? u'0' : u'1');
    QCOMPARE(opened.unit->value1, refused ? QString(bits, u'1') : second);
}

void tst_MatchUnits::typedRanges_data()
{
    QTest::addColumn<int>("func");
    QTest::addColumn<int>("radix");
    QTest::addColumn<QString>("minimum");
    QTest::addColumn<QString>("maximum");
    QTest::addColumn<QString>("warning"); // empty: stored as below
    QTest::addColumn<QString>("stored");

    const auto text = [](const char *latin) { return QString::fromLatin1(latin); };
    QTest::newRow("bin") << 6 << int(Bin) << text("0000000011") << text("0100") << QString()
                         << text("0000000011:0100000000");
    QTest::newRow("equal") << 7 << int(Hex) << text("1FF") << text("1ff") << QString()
                           << text("0111111111:0111111111");
    QTest::newRow("dec by number") << 7 << int(Dec) << text("0009") << text("0010") << QString()
                                   << text("0000001001:0000001010");
    QTest::newRow("swapped") << 6 << int(Oct) << text("0010") << text("0007") << kSwapped
                             << QString();
    QTest::newRow("maximum too wide")
        << 6 << int(Hex) << text("000") << text("400") << kTooWide << QString();
    QTest::newRow("minimum too wide")
        << 6 << int(Dec) << text("9999") << text("0001") << kTooWide << QString();
}

void tst_MatchUnits::typedRanges()
{
    QFETCH(const int, func);
    QFETCH(const int, radix);
    QFETCH(const QString, minimum);
    QFETCH(const QString, maximum);
    QFETCH(const QString, warning);
    QFETCH(const QString, stored);

    const BoxWatcher boxes;
    Opened opened(10, 4, 0);
    opened.open();
    QVERIFY(!opened.find("lineEditValue1")->isVisible());
    opened.choose("comboBoxFunc", matchFunctionText(func));
    QVERIFY(opened.find("lineEditValue1")->isVisible());
    QVERIFY(opened.find<QLabel>("lbValue0")->isVisible());
    opened.chooseRadix(radix);
    opened.type("lineEditValue0", minimum);
    opened.type("lineEditValue1", maximum);
    opened.confirm();
    QCOMPARE(boxes.seen().join(u'|'), warning);
    const MatchUnit &unit = *opened.unit;
    QCOMPARE(warning.isEmpty() ? unit.value0 + u':' + unit.value1 : QString(), stored);
    QCOMPARE(unit.func, warning.isEmpty() ? func : 0);
}

void tst_MatchUnits::refusedValueKeepsTheDialogOpen()
{
    const BoxWatcher boxes;
    Opened opened(10, 0, 0, QStringLiteral("0000000001"));
    opened.open();
    opened.chooseRadix(Hex);
    opened.type("lineEditValue0", QStringLiteral("abc"));
    opened.confirm();
    QCOMPARE(opened.shown(), QStringLiteral("ABC")); // to be mended, not typed again
    opened.type("lineEditValue0", QStringLiteral("2bc"));
    opened.confirm();
    QCOMPARE(boxes.seen(), QStringList{kTooWide});
    QCOMPARE(opened.unit->value0, QStringLiteral("1010111100"));
}

void tst_MatchUnits::radixConvertsTheField_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QList<int>>("radixes"); // chosen one after the other
    QTest::addColumn<QStringList>("shown");  // after each
    QTest::addColumn<QString>("toolTip");    // after the last

    const auto row = [](const char *name, const QString &value, const QList<int> &radixes,
                        const QStringList &shown, const QString &toolTip) {
        QTest::newRow(name) << value << radixes << shown << toolTip;
    };
    const auto text = [](const char *latin) { return QString::fromLatin1(latin); };
    row("round trip", text("1010111100"), {Hex, Dec, Oct, Bin},
        {"2BC", "0700", "1274", "1010111100"}, text("0000000000~1111111111"));
    row("small number", text("0000000101"), {Dec, Hex}, {"0005", "005"}, text("000~3FF"));
    row("an X is lost", text("10X1"), {Dec, Bin}, {"00", "0000"}, text("0000~1111"));
    row("B is no prefix", text("0B11"), {Hex, Bin}, {"0", "0000"}, text("0000~1111"));
    row("dec range", text("0000000101"), {Dec}, {"0005"}, text("0000~1023"));
    row("oct range", text("0000000101"), {Oct}, {"0005"}, text("0000~1777"));
    row("64 bits", QString(64, u'1'), {Dec, Bin}, {"18446744073709551615", QString(64, u'1')},
        QString(64, u'0') + u'~' + QString(64, u'1'));
    row("beyond 64 bits", QString(70, u'1'), {Hex, Bin}, {QString(18, u'0'), QString(70, u'0')},
        QString(70, u'0') + u'~' + QString(70, u'1'));
}

void tst_MatchUnits::radixConvertsTheField()
{
    QFETCH(const QString, value);
    QFETCH(const QList<int>, radixes);
    QFETCH(const QStringList, shown);
    QFETCH(const QString, toolTip);

    Opened opened(int(value.size()), 1, 0, value, value);
    opened.open();
    QCOMPARE(opened.shown(), value);
    for (qsizetype i = 0; i < radixes.size(); ++i) {
        opened.chooseRadix(radixes[i]);
        QCOMPARE(opened.shown(), shown[i]);
        QCOMPARE(opened.shown("lineEditValue1"), shown[i]);
    }
    QCOMPARE(opened.find("lineEditValue0")->toolTip(), toolTip);
    QCOMPARE(opened.find("lineEditValue1")->toolTip(), toolTip);
}

void tst_MatchUnits::functionKeepsWhatItAllows()
{
    Opened opened(4, 3, 0, QStringLiteral("1X01"), QStringLiteral("0110"));
    opened.open();
    opened.choose("comboBoxFunc", QStringLiteral("!="));
    QCOMPARE(opened.shown(), QStringLiteral("1X01"));
    opened.choose("comboBoxFunc", QStringLiteral(">"));
    QCOMPARE(opened.shown(), QStringLiteral("0000"));
    QCOMPARE(opened.shown("lineEditValue1"), QStringLiteral("0110"));
    opened.type("lineEditValue0", QStringLiteral("0010"));
    opened.choose("comboBoxFunc", QStringLiteral("<="));
    QCOMPARE(opened.shown(), QStringLiteral("0010"));
}

void tst_MatchUnits::typeNarrowsTheFunctions()
{
    Opened opened(4, 5, 7, QStringLiteral("0001"), QStringLiteral("0110"));
    opened.open();
    opened.choose("comboBoxType", QStringLiteral("Range"));
    QCOMPARE(opened.find<QComboBox>("comboBoxFunc")->currentText(), QStringLiteral("not in range"));
    QVERIFY(opened.find("lineEditValue1")->isVisible());
    opened.choose("comboBoxType", QStringLiteral("Basic w/edges"));
    QCOMPARE(opened.find<QComboBox>("comboBoxFunc")->currentText(), QStringLiteral("=="));
    QVERIFY(!opened.find("lineEditValue1")->isVisible());
    QVERIFY(!opened.find<QLabel>("lbValue0")->isVisible());
    QCOMPARE(opened.shown(), QStringLiteral("0001"));
    opened.type("lineEditValue0", QStringLiteral("0R10"));
    opened.choose("comboBoxType", QStringLiteral("Basic"));
    QCOMPARE(opened.shown(), QStringLiteral("0000")); // no edges any more
    opened.choose("comboBoxType", QStringLiteral("Extended"));
    QCOMPARE(opened.find<QComboBox>("comboBoxFunc")->currentText(), QStringLiteral("=="));
    QCOMPARE(opened.find<QComboBox>("comboBoxFunc")->count(), 6);
    opened.confirm();
    QCOMPARE(opened.unit->match_type, 2);
    QCOMPARE(opened.unit->func, 0);
    QCOMPARE(opened.unit->value1, QStringLiteral("0110"));
}

void tst_MatchUnits::narrowerPortKeepsTheLastDigits()
{
    Opened opened(10, 1, 0, QStringLiteral("0000001X0R"), QStringLiteral("1111110001"));
    opened.open();
    auto *tree = opened.find<QTreeWidget>("treeSignals");
    QCOMPARE(tree->topLevelItemCount(), 2);
    QCOMPARE(tree->topLevelItem(0)->text(0), QStringLiteral("bus"));
    QCOMPARE(tree->topLevelItem(0)->child(0)->text(0), QStringLiteral("bus[8]"));
    QCOMPARE(tree->topLevelItem(1)->text(0), QStringLiteral("Last"));

    opened.choose("comboBoxTrigger", QStringLiteral("Trigger Port 5"));
    QCOMPARE(opened.shown(), QStringLiteral("1X0R"));
    QCOMPARE(opened.shown("lineEditValue1"), QStringLiteral("0001"));
    QCOMPARE(tree->topLevelItem(0)->childCount(), 3);
    opened.choose("comboBoxTrigger", QStringLiteral("Trigger Port 2"));
    QCOMPARE(opened.shown(), QStringLiteral("0000001X0R"));
    opened.choose("comboBoxTrigger", QStringLiteral("Trigger Port 5"));
    opened.confirm();
    QCOMPARE(opened.unit->trigger, opened.core.triggerByIndex(5));
    QCOMPARE(opened.unit->value0, QStringLiteral("1X0R"));
}

void tst_MatchUnits::unitWithoutPort()
{
    Opened opened(4, 0, 0, QStringLiteral("1010"));
    opened.unit->trigger = opened.core.triggerByIndex(0); // not connected
    opened.open();
    QCOMPARE(opened.find<QComboBox>("comboBoxTrigger")->currentIndex(), -1);
    QVERIFY(!opened.find<QWidget>("widgetRight")->isEnabled());
    QTest::keyClick(opened.dialog.get(), Qt::Key_Return);
    QVERIFY(!opened.dialog->isVisible());
    QCOMPARE(opened.unit->value0, QStringLiteral("1010"));
    QCOMPARE(opened.unit->trigger, opened.core.triggerByIndex(0));

    opened.open();
    opened.choose("comboBoxTrigger", QStringLiteral("Trigger Port 2"));
    QVERIFY(opened.find<QWidget>("widgetRight")->isEnabled());
    opened.type("lineEditValue0", QStringLiteral("1X"));
    opened.confirm();
    QCOMPARE(opened.unit->trigger, opened.core.triggerByIndex(2));
    QCOMPARE(opened.unit->value0, QStringLiteral("1X00"));
}

void tst_MatchUnits::cancelChangesNothing()
{
    Opened opened(4, 2, 0, QStringLiteral("1010"), QStringLiteral("1111"));
    opened.unit->counter = 5;
    opened.unit->counter_width = 4;
    opened.open();
    opened.choose("comboBoxTrigger", QStringLiteral("Trigger Port 5"));
    opened.choose("comboBoxFunc", QStringLiteral("<"));
    opened.type("lineEditValue0", QStringLiteral("0001"));
    opened.find<QSpinBox>("spinBoxCounterWidth")->setValue(1);
    QTest::keyClick(opened.dialog.get(), Qt::Key_Escape);
    QVERIFY(!opened.dialog->isVisible());
    const MatchUnit &unit = *opened.unit;
    QCOMPARE(unit.trigger, opened.core.triggerByIndex(2));
    QCOMPARE(unit.func, 0);
    QCOMPARE(unit.value0 + unit.value1, QStringLiteral("10101111"));
    QCOMPARE(unit.counter, 5);
    QCOMPARE(unit.counter_width, 4);
}

void tst_MatchUnits::readOnlyKeepsTheStructure()
{
    Opened opened(4, 4, 0, QStringLiteral("0000"));
    opened.unit->counter_enable = true;
    opened.unit->counter_width = 40; // more than the dialog can show
    opened.open(Opened::ReadOnly);
    for (const char *name : {"comboBoxTrigger", "comboBoxType", "spinBoxCounterWidth"})
        QVERIFY2(!opened.find<QWidget>(name)->isEnabled(), name);
    QVERIFY(!opened.find<QGroupBox>("groupBoxCounter")->isCheckable());
    opened.choose("comboBoxFunc", QStringLiteral(">="));
    opened.type("lineEditValue0", QStringLiteral("0110"));
    opened.find<QSpinBox>("spinBoxCounter")->setValue(12);
    QTest::keyClick(opened.find<QCheckBox>("checkBoxContinuous"), Qt::Key_Space);
    opened.confirm();
    const MatchUnit &unit = *opened.unit;
    QCOMPARE(unit.func, 4);
    QCOMPARE(unit.value0, QStringLiteral("0110"));
    QCOMPARE(unit.counter, 12);
    QVERIFY(unit.countinuous && unit.counter_enable);
    QCOMPARE(unit.counter_width, 40);

    opened.unit->counter_enable = false;
    opened.open(Opened::ReadOnly);
    QVERIFY(!opened.find<QSpinBox>("spinBoxCounter")->isEnabled());
    opened.confirm();
    QVERIFY(!unit.counter_enable);
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
    QCOMPARE(count->maximum(), 65536);
    count->setValue(65536);
    opened.find<QSpinBox>("spinBoxCounterWidth")->setValue(3);
    opened.confirm();
    QCOMPARE(opened.unit->counter, 8);
    QCOMPARE(opened.unit->counter_width, 3);
    QVERIFY(opened.unit->counter_enable);
}

void tst_MatchUnits::valuesFromAFile_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("stored"); // after OK without an edit

    QTest::newRow("none") << QString() << QStringLiteral("00000000");
    QTest::newRow("short: the core gets its number") << "101"
                                                     << "00000101";
    QTest::newRow("long: the core gets its front") << "1100110011"
                                                   << "11001100";
    QTest::newRow("small letters") << "xxxx10rf"
                                   << "XXXX10RF";
}

void tst_MatchUnits::valuesFromAFile()
{
    QFETCH(const QString, value);
    QFETCH(const QString, stored);
    Opened opened(8, 0, 4, value); // a function that the type does not offer
    opened.unit->counter_width = std::numeric_limits<int>::max();
    opened.open();
    opened.confirm();
    QCOMPARE(opened.unit->value0, stored);
    QCOMPARE(opened.unit->func, 4);
}

int main(int argc, char **argv)
{
    return runTest<tst_MatchUnits, QApplication>(argc, argv);
}

#include "tst_matchunits.moc"
