// A design that is built anew while its project is open, and a user who goes on as before.

#include "unittableuser.h"

#include <base/userfolder.h>
#include <design/recoverystore.h>
#include <support/files.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QTableView>
#include <QTreeView>

#include <algorithm>
#include <functional>

using namespace KEO;

class tst_ReloadAndKeep : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void triggerAndWaves();
    void allIsKept();
    void liteDelay();
    void otherKind();
    void againWithoutCapture();
    void openEditors_data();
    void openEditors();
    void openWindows();
    void unusable_data();
    void unusable();
    void staysWhereTheUserIs();
    void clockGoesWithItsCore();
    void recovered();
};

namespace {

struct Session : Desktop
{
    explicit Session(const TestDesign &board) : Desktop(board) { open(); }

    /// What the tool flow has written now; waits for the banner.
    void rebuild(const QByteArray &content) const
    {
        tabs()->setCurrentIndex(0);
        putFile(file(), content);
        QTRY_VERIFY(keepButton());
    }
    /// The same again, while the user is anywhere.
    void rebuildSame() const
    {
        putFile(file(), contentOf(file()) + '\n');
        QTRY_VERIFY(!tabs()->tabIcon(0).isNull());
    }
    QPushButton *keepButton() const
    {
        for (auto *button : window->findChildren<QPushButton *>(QStringLiteral("btnKeep"))) {
            if (button->isVisible())
                return button;
        }
        return nullptr;
    }
    void reloadAndKeep() const
    {
        press(Qt::Key_K, Qt::AltModifier);
        QTRY_VERIFY(!keepButton()); // a key presses it for a moment
    }
    QDialog *list() const
    {
        auto *list = window->findChild<QDialog *>(QStringLiteral("carriedList"));
        return list && list->isVisible() ? list : nullptr;
    }
    /// The lines of the list that are about \a setting, as the clipboard gets them.
    QStringList lines(const QString &setting) const
    {
        QTest::mouseClick(list()->findChild<QPushButton *>("copy"), Qt::LeftButton);
        QStringList found = QGuiApplication::clipboard()->text().split(u'\n');
        found.removeIf([&](const QString &line) { return !line.contains(setting); });
        return found;
    }
    QString told() const
    {
        const QString text = find<QLabel>("toldStatus")->text();
        return text.mid(text.indexOf(QStringLiteral("Reloaded")));
    }
    QTreeView *tree(int tab) const
    {
        for (auto *view : wave(tab)->findChildren<QTreeView *>()) {
            if (view->model() && view->isVisibleTo(wave(tab)))
                return view;
        }
        return nullptr;
    }
    QStringList rows(int tab) const
    {
        QStringList names;
        const QAbstractItemModel *model = tree(tab)->model();
        for (int row = 0; row < model->rowCount(); ++row)
            names.append(model->index(row, 0).data().toString());
        return names;
    }
    void pressInTree(int tab, const QString &row, Qt::Key key) const
    {
        tabs()->setCurrentIndex(tab);
        const int number = int(rows(tab).indexOf(row));
        tree(tab)->setCurrentIndex(tree(tab)->model()->index(number, 0));
        tree(tab)->setFocus();
        QTest::keyClick(tree(tab), key);
    }
};

using Step = std::function<void(Session &)>;

QByteArray replaced(QByteArray text, const char *before, const char *after)
{
    if (!text.contains(before))
        qFatal("nothing to replace");
    return text.replace(before, after);
}

} // namespace
Q_DECLARE_METATYPE(Step)

void tst_ReloadAndKeep::triggerAndWaves()
{
    TestDesign design;
    design.dynamic = true;
    design.amount = 64;
    design.noise = 4;
    Session s(design);
    auto *windows = s.find<QComboBox>("comboBoxWindow");
    auto *amount = s.find<QComboBox>("comboBoxAmount");
    auto *position = s.find<QSpinBox>("spinBoxTrPos");
    windows->setCurrentText("2");
    position->setValue(30);
    pasteIntoUnit(s, 0, "XXXXXXXX01010XXX");
    s.capture();
    QCOMPARE(s.tabs()->count(), 3);
    const QStringList plain = s.rows(1);
    QCOMPARE(plain, (QStringList{"count[15:0]", "noise_0", "noise_1", "noise_2", "noise_3"}));
    s.tree(1)->model()->setData(s.tree(1)->model()->index(1, 0), "valid", Qt::EditRole);
    s.pressInTree(1, "noise_3", Qt::Key_Delete);
    s.pressInTree(1, "count[15:0]", Qt::Key_Right);
    s.tree(2)->model()->setData(s.tree(2)->model()->index(3, 0), "gone", Qt::EditRole);

    // Two signals change places, one is new in place of another, and the memory is smaller.
    QByteArray built = contentOf(s.file());
    built = replaced(built, "noise_1</Signal>", "x</Signal>");
    built = replaced(built, "noise_0</Signal>", "noise_1</Signal>");
    built = replaced(built, "x</Signal>", "noise_0</Signal>");
    built = replaced(built, "noise_2</Signal>", "fresh</Signal>");
    built = replaced(built, "storage_depth=\"4096\"", "storage_depth=\"64\"");
    s.rebuild(built);
    s.press(Qt::Key_W, Qt::AltModifier);
    QDialog *changes = nullptr;
    QTRY_VERIFY(changes = s.window->findChild<QDialog *>("changeList"));
    QTRY_VERIFY(changes->isActiveWindow());
    QTest::keyClick(changes, Qt::Key_K, Qt::AltModifier); // the keys of the window work there too
    QTRY_VERIFY(!s.keepButton());
    QCOMPARE(s.tabs()->count(), 1);
    QCOMPARE(windows->currentText(), "2");
    QCOMPARE(amount->currentText(), "32");
    QCOMPARE(position->value(), 23);
    QCOMPARE(unitText(s, 0), "XXXXXXXX01010XXX");

    QVERIFY(s.list() && !s.list()->isModal());
    QCoreApplication::processEvents();
    QVERIFY(s.window->isActiveWindow() && s.window->focusWidget()); // the user goes on there
    s.press(Qt::Key_F6, Qt::ControlModifier);
    QTRY_VERIFY(s.list()->isActiveWindow());
    QVERIFY2(s.told().startsWith("Reloaded; settings: "), qPrintable(s.told()));
    QVERIFY2(s.told().endsWith(" 2 adapted, 1 lost"), qPrintable(s.told()));
    QCOMPARE(s.lines("Capture amount"),
             QStringList("Adapted\tCore 0: Capture amount\t64\t32\tThe new core has memory for 64 "
                         "samples."));
    QCOMPARE(s.lines("Row noise_2"),
             QStringList("Lost\tCore 0, window 1: Row noise_2\tname \"gone\"\t\tThe core does not "
                         "capture it any more."));
    QCOMPARE(s.lines("Row noise_3"),
             QStringList("Kept\tCore 0, window 0: Row noise_3\thidden\thidden\t"));
    QTest::keyClick(s.list(), Qt::Key_Escape);
    QVERIFY(!s.list());

    s.capture();
    QCOMPARE(s.rows(1), (QStringList{"count[15:0]", "noise_1", "valid", "fresh"}));
    QVERIFY(s.tree(1)->isExpanded(s.tree(1)->model()->index(0, 0)));
    QCOMPARE(s.rows(2), (QStringList{"count[15:0]", "noise_1", "noise_0", "fresh", "noise_3"}));
    QCOMPARE(countAt(*s.wave(1), 23) & 0xF8, 0x50); // the pasted value triggers
    QVERIFY((countAt(*s.wave(1), 22) & 0xF8) != 0x50);
    QVERIFY(s.boxes.seen.isEmpty());

    // The other button forgets it all, the arrangement too.
    s.rebuild(built);
    for (auto *button : s.window->findChildren<QPushButton *>("btnA")) {
        if (button->isVisible())
            QTest::mouseClick(button, Qt::LeftButton);
    }
    QCOMPARE(windows->currentText(), "1");
    QVERIFY(!s.list());
}

void tst_ReloadAndKeep::allIsKept()
{
    TestDesign design;
    design.cores = 2;
    Session s(design);
    const QByteArray content = contentOf(s.file());
    s.rebuild(content + '\n');
    s.reloadAndKeep();
    const QString before = s.told();
    QVERIFY(!s.list());
    s.find<QSpinBox>("spinBoxTrPos")->setValue(100);
    auto *cores = s.find<QTreeWidget>("coreTree");
    cores->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    cores->topLevelItem(1)->setCheckState(0, Qt::Checked);
    s.rebuild(content);
    s.reloadAndKeep();
    QVERIFY(!s.list());
    QVERIFY2(s.told() != before && s.told().endsWith("kept, 0 adapted, 0 lost"),
             qPrintable(s.told()));
    QCOMPARE(cores->topLevelItem(0)->checkState(0), Qt::Unchecked);
    QCOMPARE(cores->topLevelItem(1)->checkState(0), Qt::Checked);
    cores->setCurrentItem(cores->topLevelItem(0));
    QCOMPARE(s.find<QSpinBox>("spinBoxTrPos")->value(), 100);
}

void tst_ReloadAndKeep::liteDelay()
{
    TestDesign design;
    design.lite = true;
    design.amount = 32;
    Session s(design);
    s.find<QSpinBox>("spinTriggerDelay")->setValue(70);
    s.capture();
    s.pressInTree(1, "noise_1", Qt::Key_Delete);
    const QByteArray content = contentOf(s.file());
    s.rebuild(content + '\n');
    s.reloadAndKeep();
    QCOMPARE(s.find<QSpinBox>("spinTriggerDelay")->value(), 70);
    QVERIFY(!s.list());
    s.capture();
    QCOMPARE(s.rows(1).size(), design.noise);
    QVERIFY(!s.rows(1).contains("noise_1"));
    // Also one that does not count for the moment.
    s.find<QCheckBox>("checkAutoTrigger")->setChecked(false);
    s.rebuild(content);
    s.reloadAndKeep();
    QVERIFY(!s.find<QCheckBox>("checkAutoTrigger")->isChecked());
    QCOMPARE(s.find<QSpinBox>("spinTriggerDelay")->value(), 70);
    s.find<QCheckBox>("checkAutoTrigger")->setChecked(true);
    // Not once more than the user wants it.
    s.window->reopen(s.file());
    QCOMPARE(s.find<QSpinBox>("spinTriggerDelay")->value(), 0);
    s.capture();
    QVERIFY(s.rows(1).contains("noise_1"));
}

void tst_ReloadAndKeep::otherKind()
{
    TestDesign design;
    design.lite = true;
    Session s(design);
    s.find<QCheckBox>("checkAutoTrigger")->setChecked(false);
    TestDesign built;
    const QTemporaryDir folder;
    built.write(folder.path());
    s.rebuild(contentOf(folder.filePath("design.keo")));
    s.reloadAndKeep();
    QVERIFY(s.list());
    QCOMPARE(s.lines("Core"), QStringList("Lost\tCore 0: Trigger delay\ton Force Trigger\t\t"
                                          "The new design has no lite core."));
    QVERIFY(s.window->closeCurrentProject());
    QVERIFY(!s.list());
}

// What no capture has shown yet is carried on, and the list of before goes.
void tst_ReloadAndKeep::againWithoutCapture()
{
    TestDesign design;
    design.noise = 4;
    Session s(design);
    s.find<QSpinBox>("spinBoxTrPos")->setValue(40);
    s.capture();
    s.tree(1)->model()->setData(s.tree(1)->model()->index(1, 0), "valid", Qt::EditRole);
    s.tree(1)->model()->setData(s.tree(1)->model()->index(3, 0), "gone", Qt::EditRole);
    s.pressInTree(1, "noise_3", Qt::Key_Delete);
    s.pressInTree(1, "count[15:0]", Qt::Key_Right);

    QByteArray built = contentOf(s.file());
    built = replaced(built, "storage_depth=\"4096\"", "storage_depth=\"64\"");
    s.rebuild(built);
    s.reloadAndKeep();
    const QPointer<QDialog> first = s.list();
    QVERIFY(first);
    built = replaced(built, "noise_2</Signal>", "fresh</Signal>");
    s.rebuild(built);
    s.reloadAndKeep();
    QVERIFY(!first);
    QVERIFY2(s.told().endsWith(" 0 adapted, 1 lost"), qPrintable(s.told()));
    QCOMPARE(s.lines("Row noise_2"),
             QStringList("Lost\tCore 0, window 0: Row noise_2\tname \"gone\"\t\tThe core does not "
                         "capture it any more."));
    QCOMPARE(s.lines("Row noise_3"),
             QStringList("Kept\tCore 0, window 0: Row noise_3\thidden\thidden\t"));
    s.capture();
    QCOMPARE(s.rows(1), (QStringList{"count[15:0]", "valid", "noise_1", "fresh"}));
    QVERIFY(s.tree(1)->isExpanded(s.tree(1)->model()->index(0, 0)));
}

void tst_ReloadAndKeep::openEditors_data()
{
    QTest::addColumn<Step>("edit");
    QTest::addColumn<Step>("check");
    const auto nameEditor = [](Session &s) {
        s.capture();
        s.tabs()->setCurrentIndex(1);
        s.activate();
        s.tree(1)->edit(s.tree(1)->model()->index(2, 0));
        QTest::keyClicks(QApplication::focusWidget(), "half");
        s.rebuildSame();
        QTabBar *bar = s.tabs()->tabBar();
        QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(0).center());
    };
    QTest::newRow("half a name") << Step(nameEditor) << Step([](Session &s) {
        s.capture();
        QCOMPARE(s.rows(1).at(2), "half");
    });
    const auto position = [](const QString &text) {
        return Step([text](Session &s) {
            auto *field = s.find<QSpinBox>("spinBoxTrPos");
            s.activate();
            field->setFocus();
            field->setValue(33);
            field->selectAll();
            QTest::keyClick(field, Qt::Key_Backspace);
            QTest::keyClicks(field, text);
            s.rebuildSame();
        });
    };
    const auto holds = [](const QString &text) {
        return Step([text](Session &s) {
            QCOMPARE(s.find<QSpinBox>("spinBoxTrPos")->text(), text);
            QVERIFY(s.find<QSpinBox>("spinBoxTrPos")->hasFocus());
        });
    };
    QTest::newRow("a position without Enter") << position("77") << holds("77");
    QTest::newRow("an emptied position") << position({}) << holds("33");
    const auto list = [](Session &s) {
        s.find<QComboBox>("comboBoxAmount")->setCurrentText("512");
        s.find<QComboBox>("comboBoxAmount")->showPopup();
        s.rebuildSame();
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    };
    QTest::newRow("an open list") << Step(list) << Step([](Session &s) {
        QCOMPARE(s.find<QComboBox>("comboBoxAmount")->currentText(), "512");
    });
    const auto unit = [](Session &s) {
        const OnModal<QDialog> dialog([&s](QDialog *box) {
            auto *value = box->findChild<QLineEdit *>("lineEditValue0");
            value->setFocus();
            value->selectAll();
            QTest::keyClicks(value, "0101XXXX10101010");
            s.rebuildSame();
            QTest::keyClick(box, Qt::Key_Return);
        });
        QTest::keyClick(goToUnit(s, 0), Qt::Key_Return);
        QVERIFY(dialog.seen());
    };
    QTest::newRow("a match unit") << Step(unit) << Step([](Session &s) {
        QCOMPARE(unitText(s, 0), "0101XXXX10101010");
    });
}

// What was typed counts as it would if the user had gone on to another field.
void tst_ReloadAndKeep::openEditors()
{
    QFETCH(Step, edit);
    QFETCH(Step, check);
    for (const bool byMouse : {false, true}) {
        Session s({});
        edit(s);
        QTRY_VERIFY(s.keepButton());
        if (byMouse)
            QTest::mouseClick(s.keepButton(), Qt::LeftButton);
        else
            s.reloadAndKeep();
        QTRY_VERIFY(!s.keepButton());
        check(s);
        QVERIFY2(s.told().endsWith(" 0 adapted, 0 lost"), qPrintable(s.told()));
        QVERIFY(s.boxes.seen.isEmpty());
    }
}

// Windows of the program that stand beside the main window, and what shows above the waves.
void tst_ReloadAndKeep::openWindows()
{
    TestDesign design;
    design.windows = 2;
    Session s(design);
    const QByteArray content = contentOf(s.file());
    auto *rehearse = s.window->findChild<QAction *>("rehearseAction");
    for (const bool keeps : {true, false}) {
        s.capture();
        s.tabs()->setCurrentIndex(1);
        QVERIFY(rehearse->isChecked() != keeps);
        rehearse->setChecked(true);
        s.press(Qt::Key_W, Qt::ControlModifier | Qt::ShiftModifier);
        const QPointer<QDialog> why = s.window->findChild<QDialog *>("whyNoTrigger");
        QVERIFY(why && why->isVisible());
        s.activate();
        s.tree(1)->setFocus();
        QTest::keyClick(s.tree(1), Qt::Key_F, Qt::ControlModifier);
        s.rebuild(keeps ? replaced(content, "noise_0</Signal>", "fresh</Signal>") : content);
        s.press(Qt::Key_W, Qt::AltModifier);
        QPointer<QDialog> changes;
        QTRY_VERIFY(changes = s.window->findChild<QDialog *>("changeList"));
        if (keeps)
            s.reloadAndKeep();
        else
            s.window->reopen(s.file());
        QCOMPARE(s.tabs()->count(), 1);
        QTRY_VERIFY(!changes && (!why || !why->isVisible()));
        QCOMPARE(rehearse->isChecked(), keeps);
        s.capture();
        QCOMPARE(s.tabs()->count(), 3);
        rehearse->setChecked(keeps);
    }
}

void tst_ReloadAndKeep::unusable_data()
{
    QTest::addColumn<QByteArray>("depth");
    QTest::addColumn<bool>("loads");
    QTest::newRow("no number") << QByteArray("storage_depth=\"x\"") << true;
    QTest::newRow("less than a window") << QByteArray("storage_depth=\"31\"") << true;
    QTest::newRow("no description") << QByteArray("storage_depth=") << false;
}

// A build that went wrong takes nothing with it.
void tst_ReloadAndKeep::unusable()
{
    QFETCH(QByteArray, depth);
    QFETCH(bool, loads);
    TestDesign design;
    design.cores = 2;
    Session s(design);
    auto *windows = s.find<QComboBox>("comboBoxWindow");
    auto *amount = s.find<QComboBox>("comboBoxAmount");
    auto *position = s.find<QSpinBox>("spinBoxTrPos");
    auto *cores = s.find<QTreeWidget>("coreTree");
    const QByteArray good = contentOf(s.file());
    windows->setCurrentText("2");
    amount->setCurrentText("512");
    position->setValue(100);
    for (int time = 0; time < 2; ++time) {
        s.rebuild(replaced(good, "storage_depth=\"4096\"", depth) + QByteArray(time, '\n'));
        QCOMPARE(s.keepButton()->isEnabled(), loads);
        if (!loads) {
            s.press(Qt::Key_K, Qt::AltModifier);
            QTest::qWait(300);
            QVERIFY(s.keepButton());
            break;
        }
        s.reloadAndKeep();
        const QStringList lines = s.lines("Core 0: Capture amount");
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().endsWith("It waits for a description with more."));
        // Shown and left, a page writes into its core what its fields could take.
        for (const int core : {1, 0})
            cores->setCurrentItem(cores->topLevelItem(core));
    }
    s.rebuild(good);
    QTRY_VERIFY(s.keepButton() && s.keepButton()->isEnabled());
    s.reloadAndKeep();
    QCOMPARE(windows->currentText(), "2");
    QCOMPARE(amount->currentText(), "512");
    QCOMPARE(position->value(), 100);
    QVERIFY2(s.told().endsWith(" 0 adapted, 0 lost"), qPrintable(s.told()));
    s.rebuild(good + '\n');
    s.window->reopen(s.file());
    QCOMPARE(position->value(), design.position);
}

void tst_ReloadAndKeep::staysWhereTheUserIs()
{
    TestDesign design;
    design.cores = 3;
    design.dynamic = true;
    Session s(design);
    s.window->resize(800, 400);
    auto *cores = s.find<QTreeWidget>("coreTree");
    const auto shown = [&] { return cores->currentItem()->text(0); };
    cores->setCurrentItem(cores->topLevelItem(2));
    const QTableView *units = goToUnit(s, 1);
    s.find<QListWidget>("listExpressions")->setCurrentRow(0);
    auto *bar = s.tabs()->widget(0)->findChild<QScrollArea *>()->verticalScrollBar();
    bar->setValue(60);
    QCOMPARE(bar->value(), 60);
    const QByteArray all = contentOf(s.file());
    for (int time = 0; time < 2; ++time) {
        s.rebuild(all + QByteArray(time, '\n'));
        s.reloadAndKeep();
        QCOMPARE(shown(), "Core 2");
        QVERIFY(s.find<QTableView>("tableUnit")->hasFocus());
        QVERIFY2(!s.list(), qPrintable(s.told()));
        QCOMPARE(units->currentIndex().row(), 1);
        QCOMPARE(units->selectionModel()->selectedRows().size(), 1);
        QCOMPARE(s.find<QListWidget>("listExpressions")->currentRow(), 0);
        QTRY_COMPARE(bar->value(), 60);
    }
    s.rebuild(replaced(all, " index=\"2\"", " index=\"5\""));
    s.reloadAndKeep();
    QCOMPARE(shown(), "Core 5");
    s.rebuild(all + "\n\n");
    s.window->reopen(s.file());
    QCOMPARE(shown(), "Core 0");
}

void tst_ReloadAndKeep::clockGoesWithItsCore()
{
    TestDesign design;
    design.cores = 2;
    Session s(design);
    auto *cores = s.find<QTreeWidget>("coreTree");
    cores->topLevelItem(0)->setCheckState(0, Qt::Unchecked);
    cores->topLevelItem(1)->setCheckState(0, Qt::Checked);
    const auto period = [&s] { return s.wave(1)->findChild<QLineEdit *>("clockPeriod"); };
    s.capture();
    s.tabs()->setCurrentIndex(1);
    period()->setFocus();
    QTest::keyClicks(period(), "10 ns"); // and no Enter
    // To a number that the board has no core for, and back.
    const QByteArray content = contentOf(s.file());
    s.rebuild(replaced(content, " index=\"1\"", " index=\"4\""));
    s.reloadAndKeep();
    QCOMPARE(s.lines("Clock period"), QStringList("Kept\tCore 1: Clock period\t10 ns\t10 ns\t"));
    s.rebuild(content);
    s.reloadAndKeep();
    QCOMPARE(s.lines("Clock period"), QStringList("Kept\tCore 4: Clock period\t10 ns\t10 ns\t"));
    s.capture();
    QCOMPARE(period()->text(), "10 ns");
    s.rebuild(replaced(content, "sample_clock=\"", "sample_clock=\"fast_"));
    s.reloadAndKeep();
    QCOMPARE(s.lines("Clock period"), QStringList("Lost\tCore 1: Clock period\t10 ns\t\tThe core "
                                                  "samples with fast_clk now."));
    s.capture();
    QCOMPARE(period()->text(), "");
}

// A program that ends without a word gives back what was carried along, once it was captured with.
void tst_ReloadAndKeep::recovered()
{
    QDir(userDataFolder()).removeRecursively();
    TestDesign design;
    design.noise = 3;
    Session s(design);
    s.capture();
    s.tree(1)->model()->setData(s.tree(1)->model()->index(1, 0), "valid", Qt::EditRole);
    s.pressInTree(1, "noise_2", Qt::Key_Delete);
    s.tabs()->setCurrentIndex(0);
    s.find<QSpinBox>("spinBoxTrPos")->setValue(40);
    s.rebuild(replaced(contentOf(s.file()), "noise_1</Signal>", "fresh</Signal>"));
    s.reloadAndKeep();
    s.capture();
    QTRY_COMPARE_WITH_TIMEOUT(RecoveryStore().entries().size(), 2, kCaptureTime);
    const auto entries = RecoveryStore().entries();
    for (const Recovery &entry : entries) {
        s.open(entry.project);
        const bool isNew = entry.time == std::max(entries[0].time, entries[1].time);
        QCOMPARE(s.rows(1), isNew ? QStringList({"count[15:0]", "valid", "fresh"})
                                  : QStringList({"count[15:0]", "valid", "noise_1"}));
        QCOMPARE(s.find<QSpinBox>("spinBoxTrPos")->value(), isNew ? 40 : design.position);
    }
    // The older one is now a project with a description of its own, which is built anew as well.
    s.saveAs(s.directory.filePath("kept"));
    s.tabs()->setCurrentIndex(0);
    s.find<QSpinBox>("spinBoxTrPos")->setValue(50);
    const QString own = s.directory.filePath("kept.keo");
    putFile(own, contentOf(own) + '\n');
    QTRY_VERIFY(s.keepButton());
    s.reloadAndKeep();
    QCOMPARE(s.find<QSpinBox>("spinBoxTrPos")->value(), 50);
    s.capture();
    QCOMPARE(s.rows(1), QStringList({"count[15:0]", "valid", "noise_1"}));
}

KEO_WIDGET_TEST_MAIN(tst_ReloadAndKeep)
#include "tst_reloadandkeep.moc"
