#include "portcore.h"

#include <config/matchtype.h>
#include <support/widgettest.h>
#include <trigger_ui/matchunitdialog.h>
#include <trigger_ui/matchunitmodel.h>

#include <QAbstractItemModelTester>
#include <QCheckBox>
#include <QClipboard>
#include <QColor>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRadioButton>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSpinBox>
#include <QStyleOptionComboBox>
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
        unit->match_type = MatchType(type);
        unit->func = MatchFunction(func);
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

    void chooseRadix(const QString &radix) const { clickMark(find<QRadioButton>(radix)); }

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
    void typedValues();
    void rangesLikeOnPaper();
    void typeAndFunctionNarrow();
    void otherPort();
    void readOnlyKeepsTheStructure();
    void counterWidthBoundsTheCount();
    void valuesFromAFile();
    void namesAreNoMarkup();
    void readoutTellsWhatOkStores();
    void textsHaveRoom();
    void pastedValues_data();
    void pastedValues();
    void goneInsideABox();
};

void tst_MatchUnits::table()
{
    CoreConfig core;
    MatchUnit *pattern = core.matchUnitByIndex(1);
    pattern->value0 = "1X";
    MatchUnit *range = core.matchUnitByIndex(12);
    range->trigger = core.triggerByIndex(4);
    range->match_type = MatchType::RangeWithEdges;
    range->func = MatchFunction::NotInRange;
    range->counter_enable = true;
    range->counter = 9;
    range->value0 = "001";
    range->value1 = "100";
    pattern->enabled = true;

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

void tst_MatchUnits::typedValues()
{
    const QString ones(64, u'1');
    const std::tuple<int, int, int, QString, QString, QString> rows[] = {
        // bits, type, function, radix, typed, stored
        {4, 1, 1, Bin, "rfbn", "RFBN"},
        {4, 2, 0, Bin, "1R0X", "10X0"}, // no edges without the type
        {4, 3, 2, Bin, "1XR1", "1100"}, // an order takes digits only
        {4, 5, 0, Bin, "1RX0", "1RX0"},
        {4, 0, 0, Bin, "10111", "1011"},
        {10, 1, 0, Hex, "0g1x0r", "0000010000"},
        {10, 0, 0, Oct, "891", "1000000000"},
        {64, 2, 2, Dec, "18446744073709551615", ones},
        {64, 2, 2, Dec, "18446744073709551616", QString(64, u'0')}, // beyond 64 bits is zero
        {68, 2, 2, Hex, "10000000000000000", QString(68, u'0')},
        {68, 1, 0, Bin, "1X", "1X" + QString(66, u'0')}};
    for (const auto &[bits, type, func, radix, typed, stored] : rows) {
        Opened opened(bits, type, func, QString(bits, u'0'), QString(bits, u'1'));
        opened.open();
        opened.chooseRadix(radix);
        opened.type("lineEditValue0", typed);
        opened.confirm();
        QVERIFY(!opened.dialog->isVisible());
        QCOMPARE(opened.unit->value0, stored);
        // The second value goes through the same conversions, and is stored unseen.
        QCOMPARE(opened.unit->value1, QString(bits, bits > 64 && radix != Bin ? u'0' : u'1'));
    }
    for (const QString &value : {QString("10X1"), QString(70, u'1')}) { // what no number holds
        Opened opened(int(value.size()), 1, 0, value);
        opened.open();
        for (const char *radix : {Hex, Bin}) {
            opened.chooseRadix(radix);
            QCOMPARE(opened.shown().count(u'0'), opened.shown().size());
        }
    }
}

// Random values in random radixes, converted by the standard library.
void tst_MatchUnits::rangesLikeOnPaper()
{
    const std::pair<const char *, int> radixes[] = {{Bin, 2}, {Oct, 8}, {Dec, 10}, {Hex, 16}};
    const char *const fields[] = {"lineEditValue0", "lineEditValue1"};
    QRandomGenerator random(6);
    for (int round = 0; round < 60; ++round) {
        const int bits = random.bounded(2, 50);
        const quint64 greatest = (quint64(1) << bits) - 1;
        const auto text = [&](quint64 value, int base) {
            const auto width = QString::number(greatest, base).size();
            return QString::number(value, base).toUpper().rightJustified(width, u'0');
        };
        quint64 values[] = {random.generate64() & greatest, random.generate64() & greatest};
        const QString before = text(values[0], 2) + u':' + text(values[1], 2);
        Opened opened(bits, 4, 7, text(values[0], 2), text(values[1], 2));
        opened.open();
        int base = 0;
        for (int i = 0; i < 3; ++i) {
            const char *radix = nullptr;
            std::tie(radix, base) = radixes[random.bounded(4)];
            opened.chooseRadix(radix);
            QCOMPARE(opened.shown(), text(values[0], base));
            QCOMPARE(opened.shown(fields[1]), text(values[1], base));
        }
        QCOMPARE(opened.find(fields[0])->toolTip(), text(0, base) + u'~' + text(greatest, base));
        const auto width = int(text(0, base).size());
        for (const int i : {0, 1}) {
            QString typed;
            for (int digits = random.bounded(width + 1); digits > 0; --digits)
                typed += QString::number(random.bounded(i ? base : std::min(base, 4)), base);
            if (round % 5 == 0 && i == 1) // a range of one value
                typed = opened.shown();
            opened.type(fields[i], typed);
            values[i] = typed.leftJustified(width, u'0').toULongLong(nullptr, base);
        }
        const BoxWatcher boxes;
        opened.confirm();
        const bool isTooWide = std::max(values[0], values[1]) > greatest;
        const bool isRefused = isTooWide || values[1] < values[0];
        const QStringList faults{isTooWide ? kTooWide : kSwapped};
        QCOMPARE(boxes.seen, isRefused ? faults : QStringList());
        QCOMPARE(opened.dialog->isVisible(), isRefused); // to be mended, not typed again
        QCOMPARE(opened.unit->value0 + u':' + opened.unit->value1,
                 isRefused ? before : text(values[0], 2) + u':' + text(values[1], 2));
    }
}

// What a new type or function does not allow goes, the rest stays.
void tst_MatchUnits::typeAndFunctionNarrow()
{
    Opened opened(4, 5, 7, "0001", "0110");
    opened.open();
    const auto *function = opened.find<QComboBox>("comboBoxFunc");
    const auto state = [&](const char *type) {
        if (*type)
            opened.choose("comboBoxType", type);
        return function->currentText() + u' ' + opened.shown() +
               (opened.find("lineEditValue1")->isVisible() ? "~" : "");
    };
    QCOMPARE(state("Range"), "not in range 0001~");
    QCOMPARE(state("Basic w/edges"), "== 0001");
    opened.type("lineEditValue0", "0R10");
    QCOMPARE(state("Basic"), "== 0000"); // no edges any more
    QCOMPARE(state("Extended"), "== 0000");
    QCOMPARE(function->count(), 6);
    opened.type("lineEditValue0", "1X01");
    opened.choose("comboBoxFunc", "!=");
    QCOMPARE(state(""), "!= 1X01");
    opened.choose("comboBoxFunc", ">");
    QCOMPARE(state(""), "> 0000"); // an order takes digits only
    opened.type("lineEditValue0", "0010");
    opened.choose("comboBoxFunc", "<=");
    opened.confirm();
    QCOMPARE(opened.unit->match_type, MatchType::Extended);
    QCOMPARE(matchFunctionText(opened.unit->func), "<=");
    QCOMPARE(opened.unit->value0 + opened.unit->value1, "00100110");
}

void tst_MatchUnits::otherPort()
{
    Opened opened(10, 1, 0, "0000001X0R", "1111110001");
    opened.unit->trigger = opened.core.triggerByIndex(0); // not connected
    opened.open();
    QCOMPARE(opened.find<QComboBox>("comboBoxTrigger")->currentIndex(), -1);
    QVERIFY(!opened.find<QWidget>("widgetRight")->isEnabled());
    QTest::keyClick(opened.dialog.get(), Qt::Key_Return);
    QCOMPARE(opened.unit->value0, "0000001X0R");
    QCOMPARE(opened.unit->trigger, opened.core.triggerByIndex(0));

    opened.unit->trigger = opened.core.triggerByIndex(2);
    opened.open();
    auto *tree = opened.find<QTreeWidget>("treeSignals");
    QCOMPARE(tree->topLevelItem(0)->child(0)->text(0), "bus[8]");
    QCOMPARE(tree->topLevelItem(1)->text(0), "Last");
    for (const auto &[port, value] : {std::pair("5", "1X0R"), std::pair("2", "0000001X0R"),
                                      std::pair("5", "1X0R")}) { // narrower: the last digits
        opened.choose("comboBoxTrigger", QString("Trigger Port ") + port);
        QCOMPARE(opened.shown(), value);
    }
    QCOMPARE(opened.shown("lineEditValue1"), "0001");
    QCOMPARE(tree->topLevelItem(0)->childCount(), 3);
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
    QCOMPARE(QPoint(unit.counter, unit.counter_width), QPoint(12, 40));
    QVERIFY(unit.countinuous && unit.counter_enable);
}

void tst_MatchUnits::counterWidthBoundsTheCount()
{
    Opened opened(4, 0, 0);
    opened.unit->counter_width = 5;
    opened.unit->counter = 40;
    opened.open();
    auto *count = opened.find<QSpinBox>("spinBoxCounter");
    QCOMPARE(count->value(), 32);
    QCOMPARE(count->minimum(), 1);
    opened.find<QGroupBox>("groupBoxCounter")->setChecked(true);
    opened.find<QSpinBox>("spinBoxCounterWidth")->setValue(16);
    count->setValue(65536);
    QCOMPARE(count->value(), 65536);
    opened.find<QSpinBox>("spinBoxCounterWidth")->setValue(3);
    opened.confirm();
    QCOMPARE(QPoint(opened.unit->counter, opened.unit->counter_width), QPoint(8, 3));
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
        QCOMPARE(opened.unit->func, MatchFunction::GreaterOrEqual);
    }
}

// Markup could name a pipe for a picture, and the window would wait for it.
void tst_MatchUnits::namesAreNoMarkup()
{
    const QString name = "<img src=/pipe> & <b>";
    Opened opened(2, 0, 0);
    opened.unit->trigger->signals = {{"bus", {}, {{name, {}, {}}}}, {"a", name, {}}};
    opened.open();
    const auto *tree = opened.find<QTreeWidget>("treeSignals");
    for (const QTreeWidgetItem *item : {tree->topLevelItem(0)->child(0), tree->topLevelItem(1)})
        QCOMPARE(shownTip(item->toolTip(0)), name);
}

void tst_MatchUnits::textsHaveRoom()
{
    const QFont before = QApplication::font();
    const auto restore = qScopeGuard([&] { QApplication::setFont(before); });
    for (const int points : {9, 15}) {
        QFont font = before;
        font.setPointSize(points);
        QApplication::setFont(font);
        Opened o(128, 3, 0, QString(128, u'1'));
        o.open();
        const auto *type = o.find<QComboBox>("comboBoxType");
        QStyleOptionComboBox option;
        option.initFrom(type);
        const QRect room = type->style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                         QStyle::SC_ComboBoxEditField, type);
        QCOMPARE(type->currentText(), "Extended w/edges");
        QVERIFY(type->fontMetrics().horizontalAdvance(type->currentText()) <= room.width());
        // One value has the width of both.
        const auto *value = o.find<QLabel>("lbStored00");
        QVERIFY(value->width() > value->parentWidget()->width() / 2);
        o.choose("comboBoxType", "Range w/edges");
        o.choose("comboBoxFunc", "in range");
        QTRY_VERIFY(value->width() <= value->parentWidget()->width() / 2);
    }
}

void tst_MatchUnits::readoutTellsWhatOkStores()
{
    const auto faults = [](const Opened &o) {
        return o.find<QPlainTextEdit>("lbFaults")->toPlainText();
    };
    const auto said = [](const Opened &o, int value) {
        QStringList texts;
        for (int row = 0; row < 3; ++row)
            texts += o.find<QLabel>(QString("lbStored%1%2").arg(row).arg(value))->text();
        return texts.join(u' ');
    };
    const auto atCursor = [](const Opened &o) { return o.find<QLabel>("lbSignal")->text(); };

    Opened range(10, 4, 6, "0000000011", "1111111110");
    range.open();
    QCOMPARE(said(range, 0) + u'|' + said(range, 1), "0000000011 003 3|1111111110 3FE 1022");
    QCOMPARE(faults(range), QString());
    auto *maximum = range.find("lineEditValue1");
    range.dialog->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(range.dialog.get())); // or shortcuts are out of reach
    maximum->setFocus();
    QTest::keyClick(maximum, Qt::Key_Home);
    QTest::keyClick(maximum, Qt::Key_Right);
    QCOMPARE(atCursor(range), "bus[7]");
    QTest::keyClick(maximum, Qt::Key_H, Qt::AltModifier); // the key of the radix, cursor and all
    QVERIFY(maximum->hasFocus() && range.shown("lineEditValue1") == "3FE");
    QCOMPARE(atCursor(range), "bus[8] to bus[7]");
    QTest::keyClick(maximum, Qt::Key_Right);
    QTest::keyClick(maximum, Qt::Key_Right);
    QCOMPARE(atCursor(range), "bus[2] to Last");
    range.type("lineEditValue1", "FFF");
    QVERIFY2(faults(range).contains("refuse"), qPrintable(faults(range)));

    // Digits behind what was typed are there to fill the field, until all of it is typed.
    range.type("lineEditValue0", "12");
    QVERIFY2(faults(range).contains("“12” was typed"), qPrintable(faults(range)));
    QTest::keyClicks(range.find("lineEditValue0"), "0");
    range.type("lineEditValue1", "3FF");
    QCOMPARE(faults(range), QString());
    QCOMPARE(said(range, 0), "0100100000 120 288");

    // Letters go with the radix, and the dialog says so until there is another value.
    Opened letters(8, 1, 0, "1X0RXXXX");
    letters.open();
    QCOMPARE(said(letters, 0), "1X0RXXXX [1X0R]X no number");
    letters.chooseRadix(Hex);
    QVERIFY2(faults(letters).contains("1X0RXXXX"), qPrintable(faults(letters)));
    letters.chooseRadix(Bin);
    QVERIFY(!faults(letters).isEmpty());
    letters.type("lineEditValue0", "11110000");
    QCOMPARE(faults(letters), QString());

    Opened wide(68, 2, 2, QString(68, u'1'));
    wide.open();
    QCOMPARE(said(wide, 0).section(u' ', 1), "FFFFFFFFFFFFFFFFF 295147905179352825855");
    wide.chooseRadix(Hex);
    wide.type("lineEditValue0", "10000000000000000");
    QVERIFY2(faults(wide).contains("64 bits"), qPrintable(faults(wide)));
    QCOMPARE(said(wide, 0), QString(68, u'0') + ' ' + QString(17, u'0') + " 0");

    // What the core makes of a description's value and count, before OK makes something else of it.
    Opened odd(4, 1, 0, "rfbn");
    odd.unit->counter_enable = true;
    odd.unit->counter_width = 40;
    odd.unit->counter = 70000;
    odd.open(Opened::ReadOnly);
    for (const char *part : {"“rfbn” counts as XXXX", "70000 counts 4464"})
        QVERIFY2(faults(odd).contains(part), qPrintable(faults(odd)));
    QCOMPARE(said(odd, 0), "RFBN [RFBN] no number");
}

void tst_MatchUnits::pastedValues_data()
{
    QTest::addColumn<QString>("radix");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("told");
    // The field has 12 bits: 0000 0000 1111 or 00F.
    QTest::newRow("prefix, another radix") << QString(Bin) << 0 << "0xA5"
                                           << "000010100101"
                                           << "";
    QTest::newRow("size and underscores") << QString(Hex) << 0 << "12'h0A_5\n"
                                          << "0A5"
                                          << "";
    QTest::newRow("prefix in the middle") << QString(Hex) << 1 << "12'd165"
                                          << "0A5"
                                          << "";
    QTest::newRow("plain number") << QString(Dec) << 0 << "17"
                                  << "0017"
                                  << "";
    QTest::newRow("digits into the middle") << QString(Bin) << 4 << "1_1"
                                            << "000011001111"
                                            << "";
    QTest::newRow("cut behind") << QString(Hex) << 1 << "ABC"
                                << "0AB"
                                << "room for 2 of 3";
    QTest::newRow("cut in front") << QString(Hex) << 0
                                  << "0x1A_BC"
                                     "D"
                                  << "BCD"
                                  << "17 bits";
    QTest::newRow("letters in HEX") << QString(Hex) << 0 << "12'b1X"
                                    << "00F"
                                    << "BIN only";
    QTest::newRow("edges without the type") << QString(Bin) << 0 << "1R"
                                            << "000000001111"
                                            << "not take";
    QTest::newRow("no digits") << QString(Bin) << 0 << "hello"
                               << "000000001111"
                               << "Not pasted";
}

void tst_MatchUnits::pastedValues()
{
    QFETCH(QString, radix);
    QFETCH(int, cursor);
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QFETCH(QString, told);
    Opened opened(12, 0, 0, "000000001111");
    opened.open();
    opened.chooseRadix(radix);
    opened.find("lineEditValue0")->setCursorPosition(cursor);
    QGuiApplication::clipboard()->setText(text);
    QTest::keySequence(opened.find("lineEditValue0"), QKeySequence::Paste);
    QCOMPARE(opened.shown(), shown);
    const QString faults = opened.find<QPlainTextEdit>("lbFaults")->toPlainText();
    QVERIFY2(told.isEmpty() ? faults.isEmpty() : faults.contains(told), qPrintable(faults));
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
