// A design that is built anew while its project is open, and a user who goes on as before.

#include <support/desktop.h>
#include <support/files.h>

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QPushButton>
#include <QSpinBox>
#include <QTableView>
#include <QTreeView>

using namespace KEO;

class tst_ReloadAndKeep : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void triggerAndWaves();
    void allIsKept();
    void liteDelay();
    void otherKind();
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

QByteArray replaced(QByteArray text, const char *before, const char *after)
{
    if (!text.contains(before))
        qFatal("nothing to replace");
    return text.replace(before, after);
}

} // namespace

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
    auto *units = s.find<QTableView>("tableUnit");
    windows->setCurrentText("2");
    position->setValue(30);
    QGuiApplication::clipboard()->setText("XXXXXXXX01010XXX");
    units->selectRow(0);
    s.activate();
    units->setFocus();
    QTest::keySequence(units, QKeySequence::Paste);
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
    s.reloadAndKeep();
    QCOMPARE(s.tabs()->count(), 1);
    QCOMPARE(windows->currentText(), "2");
    QCOMPARE(amount->currentText(), "32");
    QCOMPARE(position->value(), 23);
    QCOMPARE(units->model()->index(0, 6).data().toString(), "XXXXXXXX01010XXX");

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

KEO_WIDGET_TEST_MAIN(tst_ReloadAndKeep)
#include "tst_reloadandkeep.moc"
