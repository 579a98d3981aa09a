#include "portcore.h"
#include "widgettest.h"

#include <trigger/dynamicconfigwidget.h>
#include <trigger/matchunitdialog.h>
#include <trigger/muexpressiondialog.h>

#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTableView>

#include <functional>

using namespace KEO;

namespace {

const QString kBadExpression = QStringLiteral("Error: Please input the right expression");

/// Calls \a act once, as soon as a modal \a Dialog takes keys.
template <typename Dialog>
void whenShown(QObject *context, std::function<void(Dialog *)> act)
{
    auto *timer = new QTimer(context);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act = std::move(act)] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        if (dialog && dialog->isActiveWindow()) {
            timer->deleteLater();
            timer->stop();
            act(dialog);
        }
    });
    timer->start(5);
}

/// The page on a core, with short ways to its widgets.
struct Page
{
    CoreConfig core;
    DynamicConfigWidget widget;
    QComboBox *windows = widget.findChild<QComboBox *>(QStringLiteral("comboBoxWindow"));
    QComboBox *amount = widget.findChild<QComboBox *>(QStringLiteral("comboBoxAmount"));
    QSpinBox *position = widget.findChild<QSpinBox *>(QStringLiteral("spinBoxTrPos"));
    QListWidget *expressions = widget.findChild<QListWidget *>(QStringLiteral("listExpressions"));
    QTableView *units = widget.findChild<QTableView *>(QStringLiteral("tableUnit"));

    Page()
    {
        core.dynamic = 1;
        core.expressions = QStringList{QStringLiteral("M0"), QStringLiteral("match[1]&match[10]")};
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

    QString amounts() const
    {
        QStringList texts;
        for (int i = 0; i < amount->count(); ++i)
            texts += amount->itemText(i);
        return texts.join(u' ');
    }

    /// Walks through the list as a user at the keyboard does.
    static void choose(QComboBox *box, const QString &text)
    {
        const int wanted = box->findText(text);
        QVERIFY(wanted >= 0);
        while (box->currentIndex() != wanted)
            QTest::keyClick(box, box->currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
    }

    static void pressReturn(QAbstractItemView *view)
    {
        view->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(view));
        view->setFocus();
        QVERIFY(view->hasFocus()); // or its shortcut is out of reach
        QTest::keyClick(view, Qt::Key_Return);
    }

    void doubleClick(QAbstractItemView *view, int row) const
    {
        const QModelIndex index = view->model()->index(row, view == units ? 2 : 0);
        const QPoint place = view->visualRect(index).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(view->viewport(), Qt::LeftButton, {}, place);
    }
};

} // namespace

class tst_ConfigPage : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void amountsFollowStorageAndWindows_data();
    void amountsFollowStorageAndWindows();
    void amountFallsToWhatFits();
    void triggerPositionStaysInTheWindow();
    void settingsReachTheCoreWhenSaved();
    void settingsOutsideTheLists();
    void showingACoreIsNoChange();
    void emptyPage();
    void expressionsOfAStaticCore();
    void expressionIsEdited_data();
    void expressionIsEdited();
    void wrongExpressionStaysOpen();
    void unitIsEdited();
    void leavingTheCoreCancelsDialogs();
};

void tst_ConfigPage::amountsFollowStorageAndWindows_data()
{
    QTest::addColumn<int>("storage");
    QTest::addColumn<int>("windows");
    QTest::addColumn<QString>("amounts");

    const auto row = [](int storage, int windows, const char *amounts) {
        QTest::addRow("%d in %d", storage, windows)
            << storage << windows << QString::fromLatin1(amounts);
    };
    row(1024, 1, "32 64 128 256 512 1024");
    row(1024, 2, "32 64 128 256 512");
    row(1024, 3, "32 64 128 256");
    row(1024, 4, "32 64 128 256");
    row(1024, 8, "32 64 128");
    row(1000, 1, "32 64 128 256 512");
    row(32, 1, "32");
    row(16, 1, "");
    row(128, 5, "");
    row(-1, 1, "");
}

void tst_ConfigPage::amountsFollowStorageAndWindows()
{
    QFETCH(const int, storage);
    QFETCH(const int, windows);
    Page page;
    page.core.storage_depth = storage;
    page.core.window_num = windows;
    page.show();
    QTEST(page.amounts(), "amounts");
    QCOMPARE(page.windows->currentText(), QString::number(windows));
    QCOMPARE(page.widget.findChild<QLineEdit *>(QStringLiteral("lineEditStorage"))->text(),
             QString::number(storage));
}

void tst_ConfigPage::amountFallsToWhatFits()
{
    Page page;
    page.core.capture_amount = 256;
    page.core.trigger_pos = 200;
    page.show();
    QSignalSpy changed(&page.widget, &DynamicConfigWidget::windowNumChanged);
    Page::choose(page.windows, QStringLiteral("4"));
    QCOMPARE(page.amount->currentText(), QStringLiteral("256"));
    QCOMPARE(page.position->value(), 200);
    QCOMPARE(changed.size(), 3);
    Page::choose(page.windows, QStringLiteral("8"));
    QCOMPARE(page.amount->currentText(), QStringLiteral("128"));
    QCOMPARE(page.position->value(), 119);
    Page::choose(page.windows, QStringLiteral("1"));
    QCOMPARE(page.amount->currentText(), QStringLiteral("128"));
    QCOMPARE(changed.size(), 14);

    page.core.storage_depth = 16;
    page.widget.setCore(&page.core);
    Page::choose(page.windows, QStringLiteral("2"));
    QCOMPARE(page.amount->currentIndex(), -1);
    QCOMPARE(changed.size(), 15);
}

void tst_ConfigPage::triggerPositionStaysInTheWindow()
{
    Page page;
    page.core.trigger_pos = 5000;
    page.show();
    QCOMPARE(page.position->value(), 1015);
    Page::choose(page.amount, QStringLiteral("32"));
    QCOMPARE(page.position->maximum(), 23);
    QCOMPARE(page.position->value(), 23);
    page.core.capture_amount = 4; // leaves no room at all
    page.widget.setCore(&page.core);
    QCOMPARE(page.position->minimum(), 0);
    QCOMPARE(page.position->maximum(), 0);
}

void tst_ConfigPage::settingsReachTheCoreWhenSaved()
{
    Page page;
    page.show();
    QCOMPARE(page.core.expressionEnabled, (QList<bool>{true, true}));
    Page::choose(page.windows, QStringLiteral("3"));
    Page::choose(page.amount, QStringLiteral("64"));
    page.position->selectAll();
    QTest::keyClicks(page.position, QStringLiteral("17"));
    page.expressions->setCurrentRow(1);
    QTest::keyClick(page.expressions, Qt::Key_Space);
    QCOMPARE(page.core.window_num, 1);
    QCOMPARE(page.core.capture_amount, 1024);
    page.widget.saveToCore();
    QCOMPARE(page.core.window_num, 3);
    QCOMPARE(page.core.capture_amount, 64);
    QCOMPARE(page.core.trigger_pos, 17);
    QCOMPARE(page.core.expressionEnabled, (QList<bool>{true, false}));

    CoreConfig other;
    page.widget.setCore(&other);
    page.widget.setCore(&page.core);
    QCOMPARE(page.position->value(), 17);
    QCOMPARE(page.expressions->item(1)->checkState(), Qt::Unchecked);
}

void tst_ConfigPage::settingsOutsideTheLists()
{
    Page page;
    page.core.window_num = 9;
    page.show();
    QCOMPARE(page.windows->currentIndex(), -1);
    QVERIFY(page.amounts().isEmpty());
    page.core.window_num = 1;
    page.core.capture_amount = 100;
    page.widget.setCore(&page.core);
    QCOMPARE(page.amount->currentIndex(), -1);
    QCOMPARE(page.position->maximum(), 91);
    page.widget.saveToCore();
    QCOMPARE(page.core.capture_amount, 0);
}

void tst_ConfigPage::showingACoreIsNoChange()
{
    Page page;
    QVERIFY(!page.widget.isEnabled());
    QSignalSpy changed(&page.widget, &DynamicConfigWidget::windowNumChanged);
    page.core.window_num = 4;
    page.core.capture_amount = 64;
    page.core.trigger_pos = 50;
    // Whoever saves on the signal must not find a page that is half filled.
    QObject::connect(&page.widget, &DynamicConfigWidget::windowNumChanged, &page.widget,
                     &DynamicConfigWidget::saveToCore);
    page.show();
    page.widget.saveToCore();
    QCOMPARE(page.core.window_num, 4);
    QCOMPARE(page.core.capture_amount, 64);
    QCOMPARE(page.core.trigger_pos, 50);
    page.widget.setCore(nullptr);
    QVERIFY(changed.isEmpty());
}

void tst_ConfigPage::emptyPage()
{
    Page page;
    page.show();
    page.widget.setCore(nullptr);
    QCOMPARE(page.windows->count(), 8);
    QCOMPARE(page.amount->count(), 0);
    QCOMPARE(page.position->maximum(), 2147483647);
    QCOMPARE(page.expressions->count(), 0);
    QCOMPARE(page.units->model()->rowCount(), 0);
    QCOMPARE(page.widget.core(), nullptr);
    page.core.window_num = 6;
    page.widget.saveToCore();
    QCOMPARE(page.core.window_num, 6);
}

void tst_ConfigPage::expressionsOfAStaticCore()
{
    Page page;
    page.core.dynamic = 0;
    page.show();
    QCOMPARE(page.expressions->item(0)->text(), QStringLiteral("exp0:  M0"));
    QCOMPARE(page.expressions->item(1)->text(), QStringLiteral("exp1:  M1&M10"));
    QVERIFY(!page.expressions->item(0)->data(Qt::CheckStateRole).isValid());
    page.doubleClick(page.expressions, 1); // would hang in a dialog
    page.widget.saveToCore();
    QCOMPARE(page.core.expressionEnabled, (QList<bool>{false, false}));
}

void tst_ConfigPage::expressionIsEdited_data()
{
    QTest::addColumn<QString>("buttons"); // pressed one after the other
    QTest::addColumn<QString>("keys");    // typed thereafter
    QTest::addColumn<QString>("result");  // empty: refused

    const auto row = [](const char *name, const char *buttons, const char *keys,
                        const char *result) {
        QTest::newRow(name) << QString::fromLatin1(buttons) << QString::fromLatin1(keys)
                            << QString::fromLatin1(result);
    };
    row("buttons", "NOT LeftBracket M0 AND M1 RightBracket XOR M10 OR M0", "", "!(M0&M1)^M10|M0");
    row("whole token goes at once", "M0 OR M10 Backspace M1", "", "M0|M1");
    row("clear", "Backspace M0 AND Clear M10", "", "M10");
    row("keys", "", "!(m0&M1)^10|0", "!(M0&M1)^M10|M0");
    row("typed one and zero", "", "M1|0&10", "M1|M0&M10");
    row("Backspace key", "M0", "&1\b10", "M0&M10");
    row("units that are off", "M2 M0", "&M15\b", "");
    row("unit that is off, typed", "M0", "2M15", ""); // leaves M0M1
    row("nothing", "", "", "");
    row("no operand", "M0 AND", "", "");
}

void tst_ConfigPage::expressionIsEdited()
{
    QFETCH(const QString, buttons);
    QFETCH(const QString, keys);
    QFETCH(const QString, result);

    Page page;
    page.show();
    const BoxWatcher boxes;
    whenShown<MuExpressionDialog>(&page.widget, [&](MuExpressionDialog *dialog) {
        for (const QString &name : buttons.split(u' ', Qt::SkipEmptyParts))
            QTest::mouseClick(dialog->findChild<QPushButton *>(QStringLiteral("btn") + name),
                              Qt::LeftButton);
        for (const QChar key : keys)
            QTest::keyClick(dialog->focusWidget(), key.toLatin1());
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        if (dialog->isVisible())
            QTest::keyClick(dialog, Qt::Key_Escape);
    });
    page.doubleClick(page.expressions, 1);

    QCOMPARE(boxes.seen().join(u'|'), result.isEmpty() ? kBadExpression : QString());
    const QString before = QStringLiteral("match[1]&match[10]");
    QCOMPARE(page.core.expressions[1], result.isEmpty() ? before : result);
    QCOMPARE(page.expressions->item(1)->text(),
             QStringLiteral("exp1:  ") + (result.isEmpty() ? QStringLiteral("M1&M10") : result));
    QCOMPARE(page.core.expressions[0], QStringLiteral("M0"));
}

void tst_ConfigPage::wrongExpressionStaysOpen()
{
    Page page;
    page.show();
    const BoxWatcher boxes;
    whenShown<MuExpressionDialog>(&page.widget, [](MuExpressionDialog *dialog) {
        QTest::keyClicks(dialog->focusWidget(), QStringLiteral("M0&"));
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
        QTest::keyClicks(dialog->focusWidget(), QStringLiteral("!M1"));
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    });
    page.expressions->setCurrentRow(0);
    Page::pressReturn(page.expressions);
    QCOMPARE(boxes.seen(), QStringList{kBadExpression});
    QCOMPARE(page.core.expressions[0], QStringLiteral("M0&!M1"));
    QCOMPARE(page.expressions->item(0)->checkState(), Qt::Checked);
}

void tst_ConfigPage::unitIsEdited()
{
    Page page;
    page.show();
    QVERIFY(page.units->isColumnHidden(0));
    QCOMPARE(page.units->model()->rowCount(), 3);
    Page::pressReturn(page.units); // nothing is selected: would hang in a dialog
    whenShown<MatchUnitDialog>(&page.widget, [](MatchUnitDialog *dialog) {
        QVERIFY(!dialog->findChild<QComboBox *>(QStringLiteral("comboBoxType"))->isEnabled());
        QTest::keyClicks(dialog->focusWidget(), QStringLiteral("10X1")); // the value has the focus
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    });
    page.doubleClick(page.units, 2);
    QCOMPARE(page.core.matchUnitByIndex(10)->value0, QStringLiteral("10X1"));
    QCOMPARE(page.units->model()->index(2, 6).data().toString(), QStringLiteral("10X1"));
    whenShown<MatchUnitDialog>(&page.widget, [](MatchUnitDialog *dialog) {
        QTest::keyClicks(dialog->focusWidget(), QStringLiteral("0"));
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    Page::pressReturn(page.units);
    QCOMPARE(page.core.matchUnitByIndex(10)->value0, QStringLiteral("10X1"));
}

void tst_ConfigPage::leavingTheCoreCancelsDialogs()
{
    Page page;
    page.show();
    CoreConfig other;
    const auto leave = [&](QDialog *) { page.widget.setCore(&other); };
    whenShown<MatchUnitDialog>(&page.widget, leave);
    page.doubleClick(page.units, 0);
    QVERIFY(!QApplication::activeModalWidget());

    page.widget.setCore(&page.core);
    whenShown<MuExpressionDialog>(&page.widget, [&](MuExpressionDialog *dialog) {
        whenShown<QMessageBox>(&page.widget, leave);
        QTest::keyClick(dialog, Qt::Key_Return); // a box above the dialog
    });
    page.doubleClick(page.expressions, 0);
    QVERIFY(!QApplication::activeModalWidget());
    QCOMPARE(page.core.expressions[0], QStringLiteral("M0"));
    QCOMPARE(page.widget.core(), &other);
}

int main(int argc, char **argv)
{
    return runTest<tst_ConfigPage, QApplication>(argc, argv);
}

#include "tst_configpage.moc"
