#include "viewertest.h"

#include <wave/traces/signalwaveitem.h>

#include <QFont>

using namespace WaveMonitor;

namespace {

bool isRowSelected(QGraphicsItem *item)
{
    return dynamic_cast<WaveItem &>(*item).isRowSelected();
}

} // namespace

class tst_SignalTreeModel : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void rename();
    void group_data();
    void group();
    void move_data();
    void move();
    void reverseAndUngroup();
    void selectionAndItemsAgree();
};

void tst_SignalTreeModel::rename()
{
    Tree tree("a B(c d)");
    const QPersistentModelIndex signal = tree.row("a");
    const QPersistentModelIndex bus = tree.row("B");
    const auto nameAfter = [&](const QModelIndex &index, const QString &typed) {
        const bool accepted = tree.model->setData(index, typed, Qt::EditRole);
        const bool isItalic = index.data(Qt::FontRole).value<QFont>().italic();
        return (accepted ? "" : "refused: ") + index.data().toString() + (isItalic ? "*" : "");
    };
    QCOMPARE(nameAfter(bus, "B"), "B"); // but a signal counts as renamed to its own name
    QCOMPARE(nameAfter(signal, "a"), "a*");
    for (const QModelIndex &index : {QModelIndex(signal), QModelIndex(bus)}) {
        QCOMPARE(nameAfter(index, "addr"), "addr*");
        tree.model->restoreOriginalName(index);
        QCOMPARE(nameAfter(index, ""), "refused: " + QString(index == bus ? "B" : "a"));
    }
}

void tst_SignalTreeModel::group_data()
{
    addColumns<QString, QString, QString>({"rows", "selected", "grouped"});
    addRow("named by its signals", "x d[1] d[0] y", "d[1] d[0]", "x d[1:0](d[1] d[0]) y");
    addRow("to the first one's place", "a b c d e", "b d e", "a group_0[2:0](b d e) c");
    addRow("a bus vanishes", "a B(b c) d", "a B d", "group_0[3:0](a b c d)");
    addRow("only names in use count", "group_0[1:0](a b) c d", "group_0[1:0] c",
           "group_0[2:0](a b c) d");
    addRow("next free name", "group_0[1:0](a b) c d", "c d", "group_0[1:0](a b) group_1[1:0](c d)");
    const QString refused = "a B(b c) E() F() long";
    addRow("lengths differ", refused, "a long", refused);
    addRow("length differs inside a bus", refused, "B long", refused);
    addRow("member of a bus", refused, "a b", refused);
    addRow("buses without members", refused, "E F", refused);
    addRow("nothing", refused, "", refused);
}

void tst_SignalTreeModel::group()
{
    QFETCH(QString, rows);
    QFETCH(QString, selected);
    Tree tree(rows);
    const QModelIndexList indexes = tree.rowsNamed(selected);
    tree.view->selectOnly(indexes);
    tree.listener.take();
    tree.model->groupBus(indexes);
    QTEST(rowsOf(*tree.model), "grouped");
    const bool changed = rowsOf(*tree.model) != rows;
    QCOMPARE(tree.listener.take().contains(EvStructureChanged), changed);
    if (!changed) // the tree keeps its selection, the waves do not
        QVERIFY(!isRowSelected(tree.model->waveItems().first()));
    // A vanished bus took its item along, so the scene can show what the rows say.
    for (QGraphicsItem *item : tree.scene.items())
        QVERIFY(tree.model->waveItems().contains(item));
}

void tst_SignalTreeModel::move_data()
{
    addColumns<QString, QString, QString, QString>({"operation", "target", "moved", "rows"});
    addRow("list order counts", "above", "a", "e d", "e d a B(b c)");
    addRow("rows apart gather", "below", "B", "e a", "B(b c) e a d");
    addRow("first", "prepend", "", "d e", "d e a B(b c)");
    addRow("target among the moved, above", "above", "d", "d a", "B(b c) d a e");
    addRow("target among the moved, below", "below", "d", "a d", "B(b c) a d e");
    addRow("into a bus", "append", "B", "a e", "B(b c a e) d");
    addRow("out of a bus", "above", "a", "c", "c a B(b) d e");
    addRow("all out of a bus", "above", "d", "b c", "a b c d e");
    addRow("all out of a bus, to the end", "append", "", "b c", "a B() d e b c");
    addRow("no bus into a bus", "append", "B", "B", "a B(b c) d e");
    addRow("nothing under a signal", "prepend", "a", "d", "a B(b c) d e");
}

void tst_SignalTreeModel::move()
{
    QFETCH(QString, operation);
    QFETCH(QString, target);
    QFETCH(QString, moved);
    using Move = QModelIndexList (SignalTreeModel::*)(const QModelIndex &, const QModelIndexList &);
    const QHash<QString, Move> moves{{"above", &SignalTreeModel::moveAbove},
                                     {"below", &SignalTreeModel::moveBelow},
                                     {"prepend", &SignalTreeModel::movePrepend},
                                     {"append", &SignalTreeModel::moveAppend}};
    Tree tree("a B(b c) d e");
    const QString before = rowsOf(*tree.model);
    const QModelIndexList rows = tree.rowsNamed(moved);
    const QPersistentModelIndex kept = rows.first();
    const QModelIndexList places = (*tree.model.*moves[operation])(tree.row(target), rows);
    QTEST(rowsOf(*tree.model), "rows");
    const bool refused = places.isEmpty();
    QCOMPARE(namesOf(places), refused ? QString() : moved);
    QCOMPARE(kept.data().toString(), moved.section(u' ', 0, 0));
    QCOMPARE(tree.listener.take().contains(EvRepaintItems), !refused);
    QCOMPARE(rowsOf(*tree.model) == before, refused);
}

void tst_SignalTreeModel::reverseAndUngroup()
{
    Tree tree("a B(b c d) e");
    tree.model->setTriggerPosition(6); // bits 1 and 2
    QCOMPARE(tree.value("a") + tree.value("B"), "06");
    for (const int outside : {-1, kRowSamples}) {
        tree.model->setTriggerPosition(outside);
        QCOMPARE(tree.value("a") + tree.value("B"), "nullnull");
    }
    tree.model->setTriggerPosition(6);
    const QPersistentModelIndex member = tree.row("b");
    tree.view->selectOnly({member});
    tree.listener.take();
    tree.model->reverse(tree.row("B"));
    QCOMPARE(tree.value("B"), "3");
    QCOMPARE(member.row(), 2); // selection follows its row
    QCOMPARE(namesOf(tree.view->selectedRows()), "b");
    QVERIFY(tree.listener.take().contains(EvStructureChanged));

    tree.model->ungroupBus(tree.row("B"));
    QCOMPARE(rowsOf(*tree.model), "a d c b e");
    QCOMPARE(tree.scene.items().size(), 5);
    tree.model->ungroupBus(tree.row("a")); // no bus
    QCOMPARE(tree.model->rowCount(), 5);
}

void tst_SignalTreeModel::selectionAndItemsAgree()
{
    Tree tree("a B(b c)");
    const QList<QGraphicsItem *> items = tree.model->waveItems();
    tree.view->selectOnly(tree.rowsNamed("a B"));
    QVERIFY(isRowSelected(items.at(0)) && isRowSelected(items.at(1)));
    QCOMPARE(tree.listener.take(), QList<int>{EvRepaintItems});
    tree.model->itemPressed(items.at(3));
    QCOMPARE(namesOf(tree.view->selectedRows()), "c");
    QCOMPARE(tree.view->currentIndex().data().toString(), "c");
    QVERIFY(!isRowSelected(items.at(0)) && isRowSelected(items.at(3)));
    SignalWaveItem foreign;
    tree.model->itemPressed(&foreign);
    QCOMPARE(namesOf(tree.view->selectedRows()), "c");
}

KEO_WIDGET_TEST_MAIN(tst_SignalTreeModel)
#include "tst_signaltreemodel.moc"
