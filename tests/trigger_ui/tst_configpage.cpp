#include "portcore.h"

#include <support/widgettest.h>
#include <trigger_ui/dynamicconfigwidget.h>
#include <trigger_ui/matchunitdialog.h>
#include <trigger_ui/muexpressiondialog.h>

#include <QClipboard>
#include <QComboBox>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableView>
#include <QToolTip>

using namespace KEO;

namespace {

const QString kBadExpression = "Error: Please input the right expression";

/// The page on a core, with short ways to its widgets.
struct Page
{
    CoreConfig core;
    DynamicConfigWidget widget;
    QComboBox *windows = widget.findChild<QComboBox *>("comboBoxWindow");
    QComboBox *amount = widget.findChild<QComboBox *>("comboBoxAmount");
    QSpinBox *position = widget.findChild<QSpinBox *>("spinBoxTrPos");
    QListWidget *expressions = widget.findChild<QListWidget *>("listExpressions");
    QTableView *units = widget.findChild<QTableView *>("tableUnit");
    QListWidget *strip = widget.findChild<QListWidget *>("triggerCheck");

    Page()
    {
        core.dynamic = 1;
        core.expressions = QStringList{"M0", "match[1]&match[10]"};
        connectPort(*core.triggerByIndex(0), 4);
        for (int index : {0, 1, 10}) {
            core.matchUnitByIndex(index)->enabled = true;
            core.matchUnitByIndex(index)->trigger = core.triggerByIndex(0);
        }
    }

    void show()
    {
        widget.setCore(&core);
        widget.setEnabled(true);
        widget.resize(900, 500);
        widget.show();
    }

    QString told() const
    {
        QStringList lines;
        for (int row = 0; row < strip->count(); ++row)
            lines.append(strip->item(row)->text());
        return lines.join(u'\n');
    }

    static void pressReturn(QAbstractItemView *view)
    {
        view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(view));
        view->setFocus();
        QVERIFY(view->hasFocus()); // or its shortcut is out of reach
        QTest::keyClick(view, Qt::Key_Return);
    }
};

} // namespace

class tst_ConfigPage : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void amountsFollowStorageAndWindows();
    void settingsFallToWhatFits();
    void tellsWhatTheCoreCantCapture();
    void settingsReachTheCoreWhenSaved();
    void showingACoreIsNoChange();
    void expressionsOfAStaticCore();
    void expressionIsEdited();
    void quickClicksOnACheckBox();
    void typedExpressions();
    void unitIsEdited();
    void findingsLeadToTheirPlaces();
    void stripShowsWholeRows();
    void valuesAreCopied();
    void expressionsAreCopied();
    void cellsShowWhole();
    void leavingTheCoreCancelsDialogs();
};

void tst_ConfigPage::amountsFollowStorageAndWindows()
{
    // A part of 250 samples; too little; more windows than the page offers.
    const std::tuple<int, int, int> rows[] = {{1024, 1, 6}, {1024, 2, 5}, {1024, 3, 4},
                                              {1024, 8, 3}, {1000, 3, 3}, {32, 1, 1},
                                              {16, 1, 0},   {-1, 1, 0},   {1024, 9, 0}};
    for (const auto &[storage, windows, count] : rows) {
        Page page;
        page.core.storage_depth = storage;
        page.core.window_num = windows;
        page.show();
        QCOMPARE(page.amount->count(), count);
        for (int i = 0; i < count; ++i)
            QCOMPARE(page.amount->itemText(i), QString::number(32 << i));
        QCOMPARE(page.windows->currentIndex(), windows > 8 ? -1 : windows - 1);
    }
}

void tst_ConfigPage::settingsFallToWhatFits()
{
    Page page;
    page.core.capture_amount = 256;
    page.core.trigger_pos = 200;
    page.show();
    QSignalSpy changed(&page.widget, &DynamicConfigWidget::windowNumChanged);
    const auto shown = [&] {
        return QPoint(page.amount->currentText().toInt(), page.position->value());
    };
    for (const auto &[windows, fits] :
         {std::pair("4", QPoint(256, 200)), std::pair("8", QPoint(128, 119)),
          std::pair("1", QPoint(128, 119))}) {
        chooseByKeys(page.windows, windows);
        QCOMPARE(shown(), fits);
    }
    chooseByKeys(page.amount, "32");
    QCOMPARE(shown(), QPoint(32, 23));
    QCOMPARE(changed.size(), 14);

    page.core.capture_amount = 4; // not in the list, and leaves the trigger no room at all
    page.widget.setCore(&page.core);
    QCOMPARE(page.amount->currentIndex(), -1);
    QCOMPARE(page.position->maximum(), 0);
    page.widget.saveToCore();
    QCOMPARE(page.core.capture_amount, 0);
}

// As the description has it, although the fields show only what is possible; then as the fields do.
void tst_ConfigPage::tellsWhatTheCoreCantCapture()
{
    Page page;
    page.core.signals = page.core.triggerByIndex(0)->signals;
    page.core.storage_depth = 1024;
    page.core.window_num = 1;
    page.core.capture_amount = 1024;
    page.core.trigger_pos = 2000;
    page.show();
    QVERIFY2(page.told().contains("2000 of 1024"), qPrintable(page.told()));
    page.core.trigger_pos = 100;
    page.core.capture_amount = 1000; // not offered
    page.widget.setCore(&page.core);
    QVERIFY2(page.told().contains("1000"), qPrintable(page.told()));
    QTest::mouseClick(page.strip->viewport(), Qt::LeftButton, {},
                      page.strip->visualItemRect(page.strip->item(0)).center());
    QCOMPARE(page.widget.focusWidget(), page.amount);
    chooseByKeys(page.amount, "512");
    QTRY_VERIFY2(!page.told().contains("1000"), qPrintable(page.told()));
    page.core.storage_depth = 1 << 20;
    page.widget.saveToCore();
    QTRY_VERIFY(page.told().contains("1048576"));
    // The fields are lent to the check alone.
    chooseByKeys(page.windows, "2");
    QTest::qWait(0);
    QCOMPARE(page.core.window_num, 1);
    page.widget.setCore(nullptr);
    QVERIFY(page.strip->isHidden());
}

void tst_ConfigPage::settingsReachTheCoreWhenSaved()
{
    Page page;
    page.show();
    chooseByKeys(page.windows, "3");
    chooseByKeys(page.amount, "64");
    page.position->selectAll();
    QTest::keyClicks(page.position, "17");
    page.expressions->setCurrentRow(1);
    QTest::keyClick(page.expressions, Qt::Key_Space);
    QCOMPARE(page.core.window_num, 1);
    QCOMPARE(page.core.capture_amount, 1024);
    page.widget.saveToCore();
    QCOMPARE(page.core.window_num, 3);
    QCOMPARE(page.core.capture_amount, 64);
    QCOMPARE(page.core.trigger_pos, 17);
    QCOMPARE(page.core.expressionEnabled, (QList<bool>{true, false}));

    // Another core that is gone meanwhile is not touched any more.
    auto other = std::make_unique<CoreConfig>();
    page.widget.setCore(other.get());
    other.reset();
    page.widget.setCore(&page.core);
    QCOMPARE(page.position->value(), 17);
    QCOMPARE(page.expressions->item(1)->checkState(), Qt::Unchecked);
}

void tst_ConfigPage::showingACoreIsNoChange()
{
    Page page;
    QSignalSpy changed(&page.widget, &DynamicConfigWidget::windowNumChanged);
    const auto settings = [&] {
        return std::tuple(page.core.window_num, page.core.capture_amount, page.core.trigger_pos);
    };
    std::tie(page.core.window_num, page.core.capture_amount, page.core.trigger_pos) =
        std::tuple(4, 64, 50);
    const auto before = settings();
    page.show();
    page.widget.setCore(nullptr);
    QVERIFY(changed.isEmpty() && !page.widget.core());
    QCOMPARE(page.amount->count() + page.expressions->count(), 0);
    QCOMPARE(page.units->model()->rowCount(), 0);
    page.widget.saveToCore(); // of no core
    QVERIFY(settings() == before);
}

void tst_ConfigPage::expressionsOfAStaticCore()
{
    Page page;
    page.core.dynamic = 0;
    page.show();
    QCOMPARE(page.expressions->item(1)->text(), "exp1:  M1&M10");
    QVERIFY(!page.expressions->item(0)->data(Qt::CheckStateRole).isValid());
    doubleClick(page.expressions, page.expressions->model()->index(1, 0)); // would hang in a dialog
    page.widget.saveToCore();
    QCOMPARE(page.core.expressionEnabled, (QList<bool>{false, false}));
}

void tst_ConfigPage::expressionIsEdited()
{
    const std::tuple<QString, QString, QString> rows[] = {
        // buttons, keys, the result or refused
        {"NOT LeftBracket M0 AND M1 RightBracket XOR M10 OR M0", "", "!(M0&M1)^M10|M0"},
        {"M0 OR M10 Backspace M1", "", "M0|M1"}, // a whole token goes at once
        {"Backspace M0 AND Clear M10", "", "M10"},
        {"", "!(m0&M1)^10|0", "!(M0&M1)^M10|M0"},
        {"M0", "&1\b10", "M0&M10"},
        {"M0 AND", "\r!1", "M0&!M1"}, // mended after it was refused
        {"M2 M0", "&M15\b", ""},      // units that are off
        {"M0", "2M15", ""},
        {"", "0&!m12", ""},                    // off, and not M1
        {"M10", " & (M0| 1 )", "M10&(M0|M1)"}, // a blank presses no button
        {"", "", ""}};
    for (const auto &[buttons, keys, result] : rows) {
        Page page;
        page.show();
        const BoxWatcher boxes;
        const OnModal<MuExpressionDialog> edit([&](MuExpressionDialog *dialog) {
            for (const QString &name : buttons.split(u' ', Qt::SkipEmptyParts))
                QTest::mouseClick(dialog->findChild<QPushButton *>("btn" + name), Qt::LeftButton);
            for (const QChar key : keys)
                QTest::keyClick(dialog->focusWidget(), key.toLatin1());
            QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
            if (dialog->isVisible())
                QTest::keyClick(dialog, Qt::Key_Escape);
        });
        page.expressions->setCurrentRow(1);
        if (buttons.isEmpty())
            Page::pressReturn(page.expressions);
        else
            doubleClick(page.expressions, page.expressions->model()->index(1, 0));
        QVERIFY(edit.seen());
        const qsizetype refusals = keys.count(u'\r') + (result.isEmpty() ? 1 : 0);
        QCOMPARE(boxes.seen, QStringList(refusals, kBadExpression));
        QCOMPARE(page.core.expressions[1], result.isEmpty() ? "match[1]&match[10]" : result);
        QCOMPARE(page.expressions->item(1)->text(),
                 "exp1:  " + (result.isEmpty() ? "M1&M10" : result));
        QCOMPARE(page.expressions->item(1)->checkState(), Qt::Checked);
    }
}

// Random texts, typed or pasted, against the grammar as text replacement says it.
void tst_ConfigPage::quickClicksOnACheckBox()
{
    Page page;
    page.show();
    bool opened = false;
    const OnModal<MuExpressionDialog> edit([&](MuExpressionDialog *dialog) {
        opened = true;
        dialog->reject();
    });
    QWidget *viewport = page.expressions->viewport();
    const QRect row = page.expressions->visualItemRect(page.expressions->item(0));
    const QPoint mark(row.left() + row.height() / 2, row.center().y());
    QTest::mouseClick(viewport, Qt::LeftButton, {}, mark);
    QCOMPARE(page.expressions->item(0)->checkState(), Qt::Unchecked);
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, mark);
    QTest::mouseRelease(viewport, Qt::LeftButton, {}, mark);
    QCOMPARE(page.expressions->item(0)->checkState(), Qt::Checked);
    QVERIFY(!opened);
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, row.center());
    QVERIFY(opened);
}

void tst_ConfigPage::typedExpressions()
{
    QList<bool> flags(16);
    for (const int unit : {0, 1, 3, 10})
        flags[unit] = true;
    const QStringList operands = {"M0", "m1 ", "10", " 3", "!M0", "(M 1)", "! (3|!0)"};
    const QStringList others = {"2",  "!!", "x", "M", "11", "&&", "(", ")",  "M012",
                                "M3", " ",  "!", "&", "|",  "^",  "",  "1 0"};
    const auto stands = [](QString text) {
        static const QRegularExpression blanks("(?<![0-9]) +| +(?![0-9])");
        static const QRegularExpression units("(?<![0-9])M?(0|10|1|3)(?![0-9])");
        static const QRegularExpression group("\\(!?u([&^|]!?u)*\\)");
        static const QRegularExpression whole("^!?u([&^|]!?u)*$");
        text = text.toUpper().remove(blanks).replace(units, "u");
        while (text.contains(group))
            text.replace(group, "u");
        return text.contains(whole);
    };
    const auto unitsNamed = [](QString text) { // as stored
        static const QRegularExpression bare("(?<![M0-9])([0-9]+)");
        static const QRegularExpression split("M +");
        return text.replace('m', 'M').replace(split, "M").replace(bare, "M\\1").remove(' ');
    };
    QRandomGenerator random(13);
    const BoxWatcher boxes;
    int accepted = 0;
    for (int round = 0; round < 300; ++round) {
        QString text;
        for (int i = random.bounded(1, 5); i > 0; --i) {
            text += text.isEmpty() ? QString() : QString("&|^ "[random.bounded(4)]);
            text += operands[random.bounded(operands.size())];
            text += random.bounded(4) ? QString() : others[random.bounded(others.size())];
        }
        MuExpressionDialog dialog;
        dialog.setUnitButtons(flags);
        dialog.show();
        const auto *display = dialog.findChild<QLineEdit *>("editDisplay");
        const auto *reason = dialog.findChild<QLabel *>("lbReason");
        if (round % 2) {
            QTest::keyClicks(dialog.focusWidget(), text);
        } else {
            QGuiApplication::clipboard()->setText(text);
            QTest::keySequence(dialog.focusWidget(), QKeySequence::Paste);
        }
        const qsizetype refusals = boxes.seen.size();
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Return);
        QVERIFY2(dialog.isVisible() == !stands(text), qPrintable(text));
        QCOMPARE(boxes.seen.size() - refusals, dialog.isVisible() ? 1 : 0);
        QVERIFY2(reason->text().isEmpty() != dialog.isVisible(), qPrintable(text));
        QCOMPARE(display->text(), unitsNamed(text));
        accepted += !dialog.isVisible();
    }
    QVERIFY2(accepted > 60, "too few of the random texts are expressions");
}

void tst_ConfigPage::unitIsEdited()
{
    Page page;
    page.show();
    QVERIFY(page.units->isColumnHidden(0));
    QCOMPARE(page.units->model()->rowCount(), 3);
    Page::pressReturn(page.units); // nothing is selected: would hang in a dialog
    page.units->clearFocus();
    page.units->setFocus(Qt::TabFocusReason);
    QCOMPARE(page.units->selectionModel()->selectedRows(), {page.units->model()->index(0, 0)});
    const OnModal<MatchUnitDialog> accept([](MatchUnitDialog *dialog) {
        QVERIFY(!dialog->findChild<QComboBox *>("comboBoxType")->isEnabled());
        QTest::keyClicks(dialog->focusWidget(), "10X1"); // the value has the focus
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    });
    doubleClick(page.units, page.units->model()->index(2, 2));
    QCOMPARE(page.core.matchUnitByIndex(10)->value0, "10X1");
    QCOMPARE(page.units->model()->index(2, 6).data().toString(), "10X1");
    const OnModal<MatchUnitDialog> cancel([](MatchUnitDialog *dialog) {
        QTest::keyClicks(dialog->focusWidget(), "0");
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    Page::pressReturn(page.units);
    QVERIFY(cancel.seen());
    QCOMPARE(page.core.matchUnitByIndex(10)->value0, "10X1");
}

// Each edit at once, and a line leads to what it speaks of, by mouse and by keyboard.
void tst_ConfigPage::findingsLeadToTheirPlaces()
{
    Page page;
    page.core.signals = page.core.triggerByIndex(0)->signals;
    page.core.expressions = QStringList{"M0|M1", "M1&!M1&M10"};
    page.core.capture_amount = 256;
    page.show();
    const auto line = [&](const QString &part) {
        return page.strip->findItems(part, Qt::MatchContains).value(0);
    };
    QVERIFY2(line("exp1"), qPrintable(page.told()));
    QTest::mouseClick(page.strip->viewport(), Qt::LeftButton, {},
                      page.strip->visualItemRect(line("exp1")).center());
    QCOMPARE(page.widget.focusWidget(), page.expressions);
    QCOMPARE(page.expressions->currentRow(), 1);
    QTest::keyClick(page.expressions, Qt::Key_Space); // off: then nothing uses M10
    QTRY_VERIFY2(!line("exp1") && line("M10"), qPrintable(page.told()));
    page.strip->setFocus();
    page.strip->setCurrentItem(line("M10"));
    QTest::keyClick(page.strip, Qt::Key_Return);
    QCOMPARE(page.widget.focusWidget(), page.units);
    QCOMPARE(page.units->selectionModel()->selectedRows().value(0).row(), 2);
    page.units->model()->setData(page.units->model()->index(2, 0), Qt::Unchecked,
                                 Qt::CheckStateRole);
    QTRY_VERIFY2(!line("M10"), qPrintable(page.told()));
    QVERIFY2(page.strip->isHidden() == page.told().isEmpty(), qPrintable(page.told()));
}

void tst_ConfigPage::stripShowsWholeRows()
{
    for (const int width : {900, 450, 300}) {
        Page page;
        page.core.expressions = QStringList{"M0&!M0", "M0&&", "M9", "M1|!M1", "!M10&M10", "M8"};
        page.show();
        page.widget.resize(width, 500);
        QCoreApplication::processEvents();
        QStringList whole;
        const QRect seen = page.strip->viewport()->rect();
        for (int row = 0; row < page.strip->count(); ++row) {
            const QRect place = page.strip->visualItemRect(page.strip->item(row));
            if (seen.intersects(place))
                QVERIFY2(seen.top() <= place.top() && place.bottom() <= seen.bottom(),
                         qPrintable(page.strip->item(row)->text()));
            if (seen.intersects(place))
                whole.append(page.strip->item(row)->text());
        }
        QVERIFY(!whole.isEmpty() && whole.size() < page.strip->count()); // the others scroll
        QVERIFY(width < 900 || whole.size() == 4);
    }
}

void tst_ConfigPage::valuesAreCopied()
{
    Page page;
    connectPort(*page.core.triggerByIndex(3), 6);
    MatchUnit &m0 = *page.core.matchUnitByIndex(0);
    MatchUnit &m1 = *page.core.matchUnitByIndex(1);
    MatchUnit &m10 = *page.core.matchUnitByIndex(10);
    m0.value0 = "10X1";
    m1.trigger = page.core.triggerByIndex(3);
    m1.value0 = "000000";
    m10.match_type = MatchType::Range;
    m10.func = MatchFunction::InRange;
    m10.value0 = "0001";
    m10.value1 = "0100";
    page.show();
    QClipboard *clipboard = QGuiApplication::clipboard();
    const auto select = [&](int first, int last) {
        const QAbstractItemModel *model = page.units->model();
        page.units->selectionModel()->select({model->index(first, 1), model->index(last, 1)},
                                             QItemSelectionModel::ClearAndSelect |
                                                 QItemSelectionModel::Rows);
    };
    const auto press = [&](QKeySequence::StandardKey key) {
        page.units->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&page.widget));
        page.units->setFocus();
        QTest::keySequence(page.units, key);
    };
    const auto values = [&] {
        return QStringList{m0.value0, m1.value0, m10.value0 + u':' + m10.value1}.join(u' ');
    };
    select(0, 2);
    press(QKeySequence::Copy);
    QCOMPARE(clipboard->text(), "10X1\n000000\n0001 : 0100");
    select(0, 0);
    press(QKeySequence::Copy);
    select(1, 1);
    press(QKeySequence::Paste);
    QCOMPARE(values(), "10X1 0010X1 0001:0100");

    // Refused as the dialog would, and all rows or none.
    const std::tuple<int, int, QString, QString> refused[] = {
        {0, 1, "0x1F", "4 bit"},    {0, 2, "1", "minimum"},       {2, 2, "0111 : 0011", "less"},
        {0, 0, "1R", "letters"},    {0, 0, "01 : 10", "range"},   {0, 0, "nothing", "digit"},
        {0, 2, "1\n0", "2 values"}, {2, 2, "0X : 11", "letters"}, {0, 0, "", "0 values"}};
    for (const auto &[first, last, text, reason] : refused) {
        clipboard->setText(text);
        select(first, last);
        press(QKeySequence::Paste);
        QCOMPARE(values(), "10X1 0010X1 0001:0100");
        QVERIFY2(page.strip->item(0)->text().contains(reason), qPrintable(page.told()));
        QCOMPARE(page.told().count("Not pasted"), 1); // the last one alone
    }
    clipboard->setText("4'hC\n6'd33\n0b1 : 0xF\n");
    select(0, 2);
    const QStringList entries =
        driveContextMenu(page.units->viewport(), QPoint(20, 10), QStringLiteral("&Paste"));
    QCOMPARE(entries.mid(0, 2), (QStringList{"&Copy", "&Paste"}));
    QCOMPARE(values(), "1100 100001 0001:1111");
    QTRY_VERIFY2(!page.told().contains("Not pasted"), qPrintable(page.told()));

    // Units without a value, wherever they stand.
    const std::tuple<int, QString, QString> unset[] = {
        {2, "", "000011"}, {1, "1010", ""}, {2, "1010", ""}, {2, "", ""}};
    for (const auto &[last, first, second] : unset) {
        m0.value0 = first;
        m1.value0 = second;
        m10.value0 = m10.value1 = QString();
        const QString before = values();
        select(0, last);
        press(QKeySequence::Copy);
        m0.value0 = m10.value0 = m10.value1 = "0111";
        m1.value0 = "011100";
        press(QKeySequence::Paste);
        QCOMPARE(values(), last == 2 ? before : QString(before).replace(" :", " 0111:0111"));
    }
}

void tst_ConfigPage::expressionsAreCopied()
{
    Page page;
    page.show();
    QClipboard *clipboard = QGuiApplication::clipboard();
    const auto press = [&](QKeySequence::StandardKey key) {
        page.expressions->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&page.widget));
        page.expressions->setFocus();
        QTest::keySequence(page.expressions, key);
    };
    page.expressions->setCurrentRow(1);
    press(QKeySequence::Copy);
    QCOMPARE(clipboard->text(), "M1&M10");
    page.expressions->setCurrentRow(0);
    press(QKeySequence::Paste);
    QCOMPARE(page.core.expressions[0], "M1&M10");
    QCOMPARE(page.expressions->item(0)->text(), "exp0:  M1&M10");
    for (const auto &[text, reason] :
         {std::pair("M0&M2", "M2"), std::pair("M0&!!M1", "Two"), std::pair("", "no expression")}) {
        clipboard->setText(text);
        press(QKeySequence::Paste);
        QCOMPARE(page.core.expressions[0], "M1&M10");
        QVERIFY2(page.strip->item(0)->text().contains(reason), qPrintable(page.told()));
    }
    page.core.dynamic = 0;
    clipboard->setText("M0");
    press(QKeySequence::Paste);
    QCOMPARE(page.core.expressions[0], "M1&M10");
}

void tst_ConfigPage::cellsShowWhole()
{
    Page page;
    connectPort(*page.core.triggerByIndex(0), 200);
    MatchUnit &unit = *page.core.matchUnitByIndex(0);
    unit.value0 = QString(200, u'1');
    unit.counter_enable = true;
    unit.countinuous = true;
    page.show();
    const QModelIndex cell = page.units->model()->index(0, 6);
    QHelpEvent help(QEvent::ToolTip, page.units->visualRect(cell).topLeft() + QPoint(5, 5), {});
    QCoreApplication::sendEvent(page.units->viewport(), &help);
    QTRY_COMPARE(QToolTip::text(), unit.value0);
    const auto counterWidth = [&] {
        page.widget.setCore(&page.core);
        return page.units->columnWidth(5);
    };
    const int wide = counterWidth();
    unit.countinuous = false;
    QVERIFY(counterWidth() < wide); // "2, continuous" is longer
    page.widget.resize(2000, 500);
    QCoreApplication::processEvents();
    QCOMPARE(page.units->horizontalHeader()->length(), page.units->viewport()->width());
    page.widget.resize(400, 500);
    QCoreApplication::processEvents();
    QCOMPARE(page.units->columnWidth(6), 300);
}

void tst_ConfigPage::leavingTheCoreCancelsDialogs()
{
    Page page;
    page.show();
    CoreConfig other;
    const auto leave = [&](QDialog *) { page.widget.setCore(&other); };
    const OnModal<MatchUnitDialog> fromUnit(leave);
    doubleClick(page.units, page.units->model()->index(0, 2));
    QVERIFY(fromUnit.seen() && !QApplication::activeModalWidget());

    page.widget.setCore(&page.core);
    const OnModal<QMessageBox> fromBox(leave); // above the dialog
    const OnModal<MuExpressionDialog> confirm(
        [](MuExpressionDialog *dialog) { QTest::keyClick(dialog, Qt::Key_Return); });
    doubleClick(page.expressions, page.expressions->model()->index(0, 0));
    QVERIFY(fromBox.seen() && !QApplication::activeModalWidget());
    QCOMPARE(page.core.expressions[0], "M0");
    QCOMPARE(page.widget.core(), &other);
}

KEO_WIDGET_TEST_MAIN(tst_ConfigPage)
#include "tst_configpage.moc"
