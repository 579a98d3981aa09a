#include "rows.h"

#include <support/testmain.h>

#include <wave/buswaveitem.h>
#include <wave/signaltreeview.h>
#include <wave/signalwaveitem.h>
#include <wave/timesliderdata.h>
#include <wave/timeslideritem.h>
#include <wave/viewergeometry.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QDomDocument>
#include <QFont>
#include <QGraphicsScene>

using namespace WaveMonitor;

namespace {

constexpr quint64 kDomain = 16;

/// Stands in for the ruler: markers as a property, and events about them.
class Ruler final : public QObject
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain MEMBER domain)
    Q_PROPERTY(QList<TimeSliderData *> timeMarkers MEMBER markers)

public:
    quint64 domain = kDomain;
    QList<TimeSliderData *> markers;
};

/// A model with its view and a scene that shows its items as the wave view does.
struct Viewer
{
    explicit Viewer(const QString &rows) : view(nullptr, 300), listener(kDomain)
    {
        model.setDomain(kDomain);
        view.setDomain(kDomain);
        view.setModel(&model);
        addRows(model, rows);
        showItems();
        listener.take();
    }

    ~Viewer() { listener.take(); } // delivers what is queued, which owns memory

    void showItems()
    {
        const QList<QGraphicsItem *> shown = scene.items();
        for (QGraphicsItem *item : shown)
            scene.removeItem(item);
        const QList<QGraphicsItem *> items = model.waveItems();
        for (QGraphicsItem *item : items)
            scene.addItem(item);
    }

    QModelIndex row(const QString &name) const { return rowNamed(model, name); }
    QString value(const QString &name) const
    {
        return row(name).siblingAtColumn(SignalTreeModel::ValueColumn).data().toString();
    }

    QGraphicsScene scene; // outlives the model, whose items it shows
    SignalTreeModel model;
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};
    SignalTreeView view;
    Listener listener;
};

/// Top edges of the visible items in rows, in the order that the model gives them.
QList<int> placesOf(const QList<QGraphicsItem *> &items)
{
    QList<int> places;
    for (const QGraphicsItem *item : items) {
        if (item->isVisible())
            places.append(int(item->y() / ROW_HEIGHT));
    }
    return places;
}

} // namespace

class tst_SignalTreeModel : public QuietTest
{
    Q_OBJECT

private Q_SLOTS:
    void rename_data();
    void rename();
    void values_data();
    void values();
    void valueColumnFollowsMarkers();
    void group_data();
    void group();
    void ungroupKeepsOrder();
    void move_data();
    void move();
    void placesOfItems();
    void reversedBusReadsMirrored();
    void selectionReachesItems();
    void pressedItemSelectsItsRow();
    void windowSurvivesXml();
    void newSamplesKeepRows();
};

void tst_SignalTreeModel::rename_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("italic");
    QTest::newRow("signal") << "a"
                            << "clk" << true << "clk" << true;
    QTest::newRow("signal to its own name") << "a"
                                            << "a" << true << "a" << true;
    QTest::newRow("bus") << "B"
                         << "addr" << true << "addr" << true;
    QTest::newRow("bus to its own name") << "B"
                                         << "B" << true << "B" << false;
    QTest::newRow("empty for a signal") << "a"
                                        << "" << false << "a" << false;
    QTest::newRow("empty for a bus") << "B"
                                     << "" << false << "B" << false;
}

void tst_SignalTreeModel::rename()
{
    QFETCH(QString, row);
    QFETCH(QString, typed);
    Viewer viewer(QStringLiteral("a B(c d)"));
    const QPersistentModelIndex index = viewer.row(row);
    QTEST(viewer.model.setData(index, typed, Qt::EditRole), "accepted");
    QTEST(index.data().toString(), "name");
    QTEST(index.data(Qt::FontRole).value<QFont>().italic(), "italic");

    const QModelIndex valueCell = QModelIndex(index).siblingAtColumn(SignalTreeModel::ValueColumn);
    QVERIFY(!viewer.model.setData(valueCell, typed, Qt::EditRole));
    viewer.model.restoreOriginalName(index);
    QCOMPARE(index.data().toString(), row);
    QVERIFY(!index.data(Qt::FontRole).value<QFont>().italic());
}

void tst_SignalTreeModel::values_data()
{
    QTest::addColumn<int>("sample");
    QTest::addColumn<QString>("signal");
    QTest::addColumn<QString>("bus"); // members with ids 1, 2 and 3, the first most significant
    QTest::newRow("first member counts most") << 3 << "1"
                                              << "4";
    QTest::newRow("last member counts least") << 8 << "0"
                                              << "1";
    QTest::newRow("last sample") << kRowSamples - 1 << "1"
                                 << "4"; // 99 = 0b1100011
    QTest::newRow("past the end") << kRowSamples << "null"
                                  << "null";
    QTest::newRow("before the first") << -1 << "null"
                                      << "null";
}

void tst_SignalTreeModel::values()
{
    QFETCH(int, sample);
    Viewer viewer(QStringLiteral("a B(c d e)"));
    viewer.model.setTriggerPosition(sample);
    QCOMPARE(viewer.model.triggerPosition(), sample);
    QTEST(viewer.value(QStringLiteral("a")), "signal");
    QTEST(viewer.value(QStringLiteral("B")), "bus");
}

void tst_SignalTreeModel::valueColumnFollowsMarkers()
{
    Viewer viewer(QStringLiteral("a"));
    viewer.model.setTriggerPosition(4);
    TimeSliderData marker;
    marker.item()->setClock(7);
    Ruler ruler;
    const auto tell = [&](NotificationType type, const QList<TimeSliderData *> &markers) {
        ruler.markers = markers;
        raiseLater(&ruler, type);
        QCoreApplication::processEvents();
        return viewer.value(QStringLiteral("a"));
    };
    QCOMPARE(viewer.value(QStringLiteral("a")), QStringLiteral("0"));
    QCOMPARE(tell(EvAfterMarkerCreate, {&marker}), QStringLiteral("1"));
    marker.item()->setClock(2);
    QCOMPARE(tell(EvAfterMarkerChange, {&marker}), QStringLiteral("0"));
    marker.item()->setClock(kRowSamples);
    QCOMPARE(tell(EvAfterMarkerChange, {&marker}), QStringLiteral("null"));
    QCOMPARE(tell(EvAfterMarkerRemove, {}), QStringLiteral("0"));

    marker.item()->setClock(7);
    ruler.domain = kDomain + 16; // another viewer's
    QCOMPARE(tell(EvAfterMarkerChange, {&marker}), QStringLiteral("0"));
    delete marker.item();
}

void tst_SignalTreeModel::group_data()
{
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("grouped");
    QTest::newRow("named by its signals") << "x d[1] d[0] y"
                                          << "d[1] d[0]"
                                          << "x d[1:0](d[1] d[0]) y";
    QTest::newRow("rows apart go to the first one's place") << "a b c d e"
                                                            << "b d e"
                                                            << "a group_0[2:0](b d e) c";
    QTest::newRow("a bus gives its members and vanishes") << "a B(b c) d"
                                                          << "a B d"
                                                          << "group_0[3:0](a b c d)";
    QTest::newRow("only names in use count") << "group_0[1:0](a b) c d"
                                             << "group_0[1:0] c"
                                             << "group_0[2:0](a b c) d";
    QTest::newRow("next free name") << "group_0[1:0](a b) c d"
                                    << "c d"
                                    << "group_0[1:0](a b) group_1[1:0](c d)";
    const QString refused = QStringLiteral("a B(b c) E() F() long");
    QTest::newRow("lengths differ") << refused << "a long" << refused;
    QTest::newRow("length differs inside a bus") << refused << "B long" << refused;
    QTest::newRow("member of a bus") << refused << "a b" << refused;
    QTest::newRow("buses without members") << refused << "E F" << refused;
    QTest::newRow("nothing") << refused << "" << refused;
}

void tst_SignalTreeModel::group()
{
    QFETCH(QString, rows);
    QFETCH(QString, selected);
    Viewer viewer(rows);
    viewer.view.expandAll();
    const QModelIndexList indexes = rowsNamed(viewer.model, selected);
    viewer.view.selectOnly(indexes);
    viewer.listener.take();
    viewer.model.groupBus(indexes);
    QTEST(rowsOf(viewer.model), "grouped");
    const bool changed = rowsOf(viewer.model) != rows;
    QCOMPARE(viewer.listener.take().contains(EvStructureChanged), changed);
    if (!changed) // the tree keeps its selection, the waves do not
        QVERIFY(!static_cast<SignalWaveItem *>(viewer.model.waveItems().first())->isRowSelected());
    // A vanished bus took its item along, so the scene can show what the rows say.
    const QList<QGraphicsItem *> items = viewer.model.waveItems();
    const QList<QGraphicsItem *> shown = viewer.scene.items();
    for (const QGraphicsItem *item : shown)
        QVERIFY(items.contains(item));
}

void tst_SignalTreeModel::ungroupKeepsOrder()
{
    Viewer viewer(QStringLiteral("a B(b c d) e"));
    viewer.view.expand(viewer.row(QStringLiteral("B")));
    viewer.model.reverse(viewer.row(QStringLiteral("B")));
    viewer.model.ungroupBus(viewer.row(QStringLiteral("B")));
    QCOMPARE(rowsOf(viewer.model), QStringLiteral("a d c b e"));
    QCOMPARE(placesOf(viewer.model.waveItems()), (QList<int>{0, 1, 2, 3, 4}));
    QCOMPARE(viewer.scene.items().size(), 5);
    viewer.model.ungroupBus(viewer.row(QStringLiteral("a"))); // no bus
    QCOMPARE(viewer.model.rowCount(), 5);
}

void tst_SignalTreeModel::move_data()
{
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("moved");
    QTest::addColumn<QString>("rows");
    QTest::newRow("up, above") << "above"
                               << "a"
                               << "d e"
                               << "d e a B(b c)";
    QTest::newRow("down, above") << "above"
                                 << "e"
                                 << "a"
                                 << "B(b c) d a e";
    QTest::newRow("up, below") << "below"
                               << "a"
                               << "e"
                               << "a e B(b c) d";
    QTest::newRow("list order counts") << "above"
                                       << "a"
                                       << "e d"
                                       << "e d a B(b c)";
    QTest::newRow("rows apart gather") << "below"
                                       << "B"
                                       << "e a"
                                       << "B(b c) e a d";
    QTest::newRow("first") << "prepend"
                           << ""
                           << "d e"
                           << "d e a B(b c)";
    QTest::newRow("last") << "append"
                          << ""
                          << "B a"
                          << "d e B(b c) a";
    QTest::newRow("target among the moved, above") << "above"
                                                   << "d"
                                                   << "d a"
                                                   << "B(b c) d a e";
    QTest::newRow("target among the moved, below") << "below"
                                                   << "d"
                                                   << "a d"
                                                   << "B(b c) a d e";
    QTest::newRow("first of its own bus") << "prepend"
                                          << "B"
                                          << "c"
                                          << "a B(c b) d e";
    QTest::newRow("into a bus") << "append"
                                << "B"
                                << "a e"
                                << "B(b c a e) d";
    QTest::newRow("out of a bus") << "above"
                                  << "a"
                                  << "c"
                                  << "c a B(b) d e";
    QTest::newRow("all out of a bus") << "above"
                                      << "d"
                                      << "b c"
                                      << "a b c d e";
    QTest::newRow("all out of a bus, to the end") << "append"
                                                  << ""
                                                  << "b c"
                                                  << "a B() d e b c";
    QTest::newRow("no bus into a bus") << "append"
                                       << "B"
                                       << "B"
                                       << "a B(b c) d e";
    QTest::newRow("nothing under a signal") << "prepend"
                                            << "a"
                                            << "d"
                                            << "a B(b c) d e";
}

void tst_SignalTreeModel::move()
{
    QFETCH(QString, operation);
    QFETCH(QString, target);
    QFETCH(QString, moved);
    using Move = QModelIndexList (SignalTreeModel::*)(const QModelIndex &, const QModelIndexList &);
    const QHash<QString, Move> moves{{QStringLiteral("above"), &SignalTreeModel::moveAbove},
                                     {QStringLiteral("below"), &SignalTreeModel::moveBelow},
                                     {QStringLiteral("prepend"), &SignalTreeModel::movePrepend},
                                     {QStringLiteral("append"), &SignalTreeModel::moveAppend}};
    Viewer viewer(QStringLiteral("a B(b c) d e"));
    const QString before = rowsOf(viewer.model);
    const QModelIndexList rows = rowsNamed(viewer.model, moved);
    const QPersistentModelIndex kept = rows.first();
    const QModelIndexList places = (viewer.model.*moves[operation])(viewer.row(target), rows);
    QTEST(rowsOf(viewer.model), "rows");
    const bool refused = places.isEmpty();
    QCOMPARE(namesOf(places), refused ? QString() : moved);
    QCOMPARE(kept.data().toString(), moved.section(QLatin1Char(' '), 0, 0));
    QCOMPARE(viewer.listener.take().contains(EvRepaintItems), !refused);
    QVERIFY(!refused || rowsOf(viewer.model) == before);
}

void tst_SignalTreeModel::placesOfItems()
{
    Viewer viewer(QStringLiteral("a B(b c) d"));
    QCOMPARE(viewer.model.waveItems().size(), 5); // collapsed members too
    QCOMPARE(placesOf(viewer.model.waveItems()), (QList<int>{0, 1, 2}));
    viewer.view.expand(viewer.row(QStringLiteral("B")));
    QCOMPARE(placesOf(viewer.model.waveItems()), (QList<int>{0, 1, 2, 3, 4}));
    // A bus stays expanded while it moves, in the tree and so beside it.
    viewer.model.moveBelow(viewer.row(QStringLiteral("d")), {viewer.row(QStringLiteral("B"))});
    QVERIFY(viewer.view.isExpanded(viewer.row(QStringLiteral("B"))));
    QCOMPARE(placesOf(viewer.model.waveItems()), (QList<int>{0, 1, 2, 3, 4}));
    viewer.view.collapse(viewer.row(QStringLiteral("B")));
    viewer.model.relayoutItems();
    QCOMPARE(placesOf(viewer.model.waveItems()), (QList<int>{0, 1, 2}));

    const auto *bus = static_cast<BusWaveItem *>(viewer.model.waveItems().at(2));
    QCOMPARE(bus->members(), (QList<QBitArray>{countingSamples(1), countingSamples(2)}));
}

void tst_SignalTreeModel::reversedBusReadsMirrored()
{
    Viewer viewer(QStringLiteral("B(a b c)"));
    viewer.view.expandAll();
    viewer.model.setTriggerPosition(3);
    QCOMPARE(viewer.value(QStringLiteral("B")), QStringLiteral("6"));
    const QPersistentModelIndex member = viewer.row(QStringLiteral("a"));
    viewer.view.selectOnly({member});
    viewer.listener.take();
    viewer.model.reverse(viewer.row(QStringLiteral("B")));
    QCOMPARE(viewer.value(QStringLiteral("B")), QStringLiteral("3"));
    QCOMPARE(member.row(), 2); // selection follows its row
    QCOMPARE(namesOf(viewer.view.selectedRows()), QStringLiteral("a"));
    QVERIFY(viewer.listener.take().contains(EvStructureChanged));
}

void tst_SignalTreeModel::selectionReachesItems()
{
    Viewer viewer(QStringLiteral("a B(b c)"));
    const QList<QGraphicsItem *> items = viewer.model.waveItems();
    const auto *a = static_cast<SignalWaveItem *>(items.at(0));
    const auto *bus = static_cast<BusWaveItem *>(items.at(1));
    viewer.view.selectOnly(rowsNamed(viewer.model, QStringLiteral("a B")));
    QVERIFY(a->isRowSelected() && bus->isRowSelected());
    QCOMPARE(viewer.listener.take(), QList<int>{EvRepaintItems});
    viewer.view.selectOnly(rowsNamed(viewer.model, QStringLiteral("B")));
    QVERIFY(!a->isRowSelected() && bus->isRowSelected());
}

void tst_SignalTreeModel::pressedItemSelectsItsRow()
{
    Viewer viewer(QStringLiteral("a B(b c)"));
    viewer.view.expandAll();
    viewer.view.selectAll();
    viewer.model.itemPressed(viewer.model.waveItems().at(3));
    QCOMPARE(namesOf(viewer.view.selectedRows()), QStringLiteral("c"));
    QCOMPARE(viewer.view.currentIndex().data().toString(), QStringLiteral("c"));
    viewer.model.itemPressed(nullptr);
    QVERIFY(viewer.view.selectedRows().isEmpty());
    SignalWaveItem foreign;
    viewer.model.itemPressed(&foreign);
    QVERIFY(viewer.view.selectedRows().isEmpty());
}

void tst_SignalTreeModel::windowSurvivesXml()
{
    Viewer saved(QStringLiteral("a B(b c) d"));
    saved.model.setTriggerPosition(42);
    saved.model.node(saved.row(QStringLiteral("B")))->color = 0xFF0000;
    saved.model.setData(saved.row(QStringLiteral("d")), QStringLiteral("ready"), Qt::EditRole);
    QDomDocument document;
    const QDomElement window = saved.model.writeWindow(document);

    Viewer loaded(QStringLiteral("x Y(y z)"));
    loaded.view.expandAll();
    loaded.view.selectAll();
    QVERIFY(loaded.model.readWindow(window));
    QCOMPARE(rowsOf(loaded.model), QStringLiteral("a B(b c) ready"));
    QCOMPARE(loaded.model.triggerPosition(), 42);
    QCOMPARE(loaded.model.signalMap(), saved.model.signalMap());
    QVERIFY(loaded.scene.items().isEmpty()); // rows that are gone show nothing
    QVERIFY(loaded.listener.take().contains(EvStructureChanged));
    const auto *bus = static_cast<BusWaveItem *>(loaded.model.waveItems().at(1));
    QCOMPARE(bus->color(), QColor(Qt::red));
    QCOMPARE(placesOf(loaded.model.waveItems()), (QList<int>{0, 1, 2}));

    loaded.model.ungroupBus(loaded.row(QStringLiteral("B")));
    loaded.listener.take();
    loaded.model.setLayout(saved.model.writeLayout(document));
    QCOMPARE(rowsOf(loaded.model), QStringLiteral("a B(b c) ready"));
    QCOMPARE(loaded.listener.take(), (QList<int>{EvStructureChanged, EvRepaintItems}));

    QVERIFY(loaded.model.readWindow(document.createElement(QStringLiteral("Door"))));
    QCOMPARE(rowsOf(loaded.model), QStringLiteral("a B(b c) ready"));
}

void tst_SignalTreeModel::newSamplesKeepRows()
{
    Viewer viewer(QStringLiteral("a B(b c)"));
    viewer.view.expandAll();
    viewer.model.setTriggerPosition(1);
    viewer.model.updateData({countingSamples(1), countingSamples(0)}); // one short
    QCOMPARE(viewer.value(QStringLiteral("a")), QStringLiteral("1"));

    const QList<QBitArray> data{countingSamples(3), countingSamples(0), countingSamples(1)};
    viewer.model.updateData(data);
    QCOMPARE(viewer.value(QStringLiteral("a")), QStringLiteral("0"));
    QCOMPARE(viewer.value(QStringLiteral("B")), QStringLiteral("2"));
    QCOMPARE(rowsOf(viewer.model), QStringLiteral("a B(b c)"));
    const QList<QGraphicsItem *> items = viewer.model.waveItems();
    QCOMPARE(static_cast<SignalWaveItem *>(items.at(0))->data(), data.at(0));
    QCOMPARE(static_cast<BusWaveItem *>(items.at(1))->members(), data.mid(1));
    QCOMPARE(placesOf(items), (QList<int>{0, 1, 2, 3}));
}

int main(int argc, char **argv)
{
    return runTest<tst_SignalTreeModel, QApplication>(argc, argv);
}

#include "tst_signaltreemodel.moc"
