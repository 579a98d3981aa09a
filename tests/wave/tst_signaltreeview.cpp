#include "viewertest.h"

#include <wave/traces/signalwaveitem.h>

#include <QContextMenuEvent>
#include <QDomElement>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>

using namespace WaveMonitor;

namespace {

/// What a context menu offered.
struct Offer
{
    QString enabled; ///< submenus among them
    QString format;  ///< checked entries
    QString color;
};

QAction *entryOf(const QMenu *menu, const QString &text)
{
    const QList<QAction *> all = menu->actions();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const QAction *entry) { return entry->text() == text; });
    return found == all.end() ? nullptr : *found;
}

QString checkedEntry(const QMenu *menu, const QString &submenu)
{
    for (const QAction *entry : entryOf(menu, submenu)->menu()->actions()) {
        if (entry->isChecked())
            return entry->text();
    }
    return {};
}

/// A tree and what the user does to it.
struct UsedTree final : Tree
{
    using Tree::Tree;

    /// Selects rows by clicks with Ctrl.
    void select(const QString &names)
    {
        view->clearSelection();
        for (const QModelIndex &index : rowsNamed(names))
            QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::ControlModifier,
                              view->visualRect(index).center());
        listener.take();
    }

    /// Opens the context menu, notes what it offers, and chooses the entry at \a path by the
    /// keyboard, the second entry being one of a submenu.
    Offer menu(const QStringList &path = {})
    {
        Offer offer;
        QTimer::singleShot(0, view.get(), [&] {
            auto *shown = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(shown);
            QCoreApplication::processEvents(); // a menu that has just come up is active first
            QStringList enabled;
            for (const QAction *action : shown->actions()) {
                if (action->isEnabled() && !action->isSeparator())
                    enabled.append(action->text());
            }
            offer = {enabled.join(u','), checkedEntry(shown, "Format"),
                     checkedEntry(shown, "Color")};
            for (const QString &entry : path) {
                if (entry != path.first()) {
                    QTest::keyClick(shown, Qt::Key_Right);
                    shown = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                }
                shown->setActiveAction(entryOf(shown, entry));
            }
            QTest::keyClick(shown, path.isEmpty() ? Qt::Key_Escape : Qt::Key_Return);
        });
        sendMenuEvent();
        QCoreApplication::processEvents();
        return offer;
    }
    void sendMenuEvent()
    {
        const QPoint position(50, 5);
        QContextMenuEvent event(QContextMenuEvent::Mouse, position,
                                view->viewport()->mapToGlobal(position));
        QApplication::sendEvent(view->viewport(), &event);
    }

    /// The point \a y pixels below the top of a row, or in the empty space for no name.
    QPoint place(const QString &name, int y) const
    {
        const QRect rect = view->visualRect(row(name));
        return name.isEmpty() ? QPoint(100, view->viewport()->height() - 5)
                              : rect.topLeft() + QPoint(40, y);
    }
    /// Presses on the last selected row and pulls, as far as a drag starts. There is no drag and
    /// drop without a window system, so the events that it brings are sent by hand.
    void beginDrag()
    {
        const QPoint press = view->visualRect(view->selectedRows().last()).center();
        QTest::mousePress(view->viewport(), Qt::LeftButton, {}, press);
        QTest::mouseMove(view->viewport(), press + QPoint(0, 12));
        QTest::mouseMove(view->viewport(), press + QPoint(0, 24));
        QTest::mouseRelease(view->viewport(), Qt::LeftButton, {}, press);
        send<QDragEnterEvent>(press);
    }
    /// Sends what belongs to a drag. As in the toolkit, a widget that refused a drag at its border
    /// hears no more of it, nor after the drop.
    template <typename Event>
    Qt::DropAction send(const QPoint &position)
    {
        QMimeData data;
        data.setData(model->mimeTypes().constFirst(), {}); // the rows are not in the data
        Event event(position, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, {});
        const bool enters = event.type() == QEvent::DragEnter;
        if (!enters && !isEntered)
            return Qt::IgnoreAction;
        QApplication::sendEvent(view->viewport(), &event);
        isEntered = enters ? event.isAccepted() : event.type() == QEvent::DragMove;
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    Qt::DropAction hover(const QPoint &position) { return send<QDragMoveEvent>(position); }
    QImage picture() const { return view->viewport()->grab().toImage(); }

    bool isEntered = false; ///< a drag is over the view
};

} // namespace

class tst_SignalTreeView : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void namesReadUnderADarkPalette();
    void menu_data();
    void menu();
    void formatAndColor();
    void menuSurvivesItsView();
    void nameEditor();
    void drag_data();
    void drag();
    void dropsThatMoveNothing();
    void modelMayGoFirst();
};

void tst_SignalTreeView::namesReadUnderADarkPalette()
{
    const QPalette before = QApplication::palette();
    QPalette dark = before;
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    QApplication::setPalette(dark);
    UsedTree tree("a B(b c) d");
    const QImage shown = tree.picture();
    QApplication::setPalette(before);
    for (const QModelIndex &index : tree.rowsNamed("a b")) {
        const QRect rect = tree.view->visualRect(index);
        int darkest = 255;
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            for (int x = rect.left(); x <= rect.right(); ++x)
                darkest = std::min(darkest, qGray(shown.pixel(x, y)));
        }
        QVERIFY(darkest < 100);
    }
}

void tst_SignalTreeView::menu_data()
{
    addColumns<QString, QString, QString, QString>({"selected", "enabled", "entry", "rows"});
    const QString same = "x[1] x[0] B(b c) C(d e)";
    addRow("none", "", "Format", "", same);
    addRow("signal", "x[0]", "Rename,Restore Original Name,Format,Color", "", same);
    addRow("signals, in row order", "x[0] x[1]", "Group,Restore Original Name,Format,Color",
           "Group", "x[1:0](x[1] x[0]) B(b c) C(d e)");
    addRow("bus", "B", "Ungroup,Rename,Restore Original Name,Reverse,Format,Color", "Reverse",
           "x[1] x[0] B(c b) C(d e)");
    addRow("buses and signal", "B x[0] C", "Ungroup,Group,Restore Original Name,Format,Color",
           "Ungroup", "x[1] x[0] b c d e");
    addRow("member and signal", "b x[0]", "Restore Original Name,Format,Color", "", same);
    addRow("bus and its member", "B b", "Ungroup,Restore Original Name,Format,Color", "", same);
}

void tst_SignalTreeView::menu()
{
    QFETCH(QString, selected);
    QFETCH(QString, entry);
    UsedTree tree("x[1] x[0] B(b c) C(d e)");
    tree.select(selected);
    QTEST(tree.menu(entry.split(u' ', Qt::SkipEmptyParts)).enabled, "enabled");
    QTEST(rowsOf(*tree.model), "rows");
    QCOMPARE(tree.listener.take().contains(EvStructureChanged), !entry.isEmpty());
}

void tst_SignalTreeView::formatAndColor()
{
    UsedTree tree("a B(b c) C(d e)");
    tree.model->setDefaultFormat(DataFormat::Octal);
    QCOMPARE(tree.menu().format, "Octal");
    tree.select("a B C b");
    tree.menu({"Format", "Signed Decimal"});
    QCOMPARE(tree.listener.take(), (QList<int>{EvFormatChanged, EvFormatChanged})); // one a bus
    tree.menu({"Color", "Dark Red"});
    QCOMPARE(tree.listener.take(), QList<int>{EvColorChanged});
    for (const QString name : {"a", "B", "C", "b", "c"}) {
        const LayoutNode *node = tree.model->node(tree.row(name));
        QCOMPARE(node->color, name == "c" ? 0x00FF00 : 0xCE0000);
        QCOMPARE(node->format->type(), node->type == LayoutNode::Bus ? DataFormat::SignedDecimal
                                                                     : DataFormat::Hexadecimal);
    }
    const auto *item = static_cast<SignalWaveItem *>(tree.model->waveItems().first());
    QCOMPARE(item->color(), QColor(0xCE, 0, 0));

    tree.select("B");
    QCOMPARE(tree.menu().format + tree.menu().color, "Signed DecimalDark Red");
    // Values out of a file that the menu does not offer.
    LayoutNode *bus = tree.model->node(tree.row("B"));
    bus->format->setType(DataFormat::Ascii);
    bus->color = 0x123456;
    QCOMPARE(tree.menu().format + tree.menu().color, "");
    QCOMPARE(bus->format->type(), DataFormat::Ascii); // looking changes nothing
    tree.model->setDefaultFormat(77);
    QCOMPARE(tree.model->defaultFormat(), int(DataFormat::Hexadecimal));
}

void tst_SignalTreeView::nameEditor()
{
    const auto nameAfter = [](const char *typed, Qt::Key end) {
        UsedTree tree("top.a");
        tree.select("top.a");
        tree.menu({"Rename"});
        auto *editor = tree.view->findChild<QLineEdit *>();
        QTest::keyClicks(editor, typed);
        QTest::keyClick(editor, end);
        QCoreApplication::processEvents();
        return rowsOf(*tree.model);
    };
    QCOMPARE(nameAfter("other", Qt::Key_Escape), "top.a");
    QCOMPARE(nameAfter("x y.z-/", Qt::Key_Return), "xyz"); // the others can't be typed
    QCOMPARE(nameAfter("Q_9[7:0]", Qt::Key_Return), "Q_9[7:0]");
}

void tst_SignalTreeView::menuSurvivesItsView()
{
    UsedTree tree("a B(b c)");
    QTimer::singleShot(0, this, [&] { tree.view.reset(); });
    tree.sendMenuEvent();
    QVERIFY(!tree.view);
    tree.model->setTriggerPosition(3); // the model works on without a view
    QCOMPARE(tree.model->waveItems().size(), 4);
}

void tst_SignalTreeView::drag_data()
{
    addColumns<QString, QString, int, QString, int>({"moved", "target", "y", "rows", "line"});
    addRow("upper half", "d", "a", 14, "d a B(b c f) e", 0);
    addRow("lower half", "d", "a", 15, "a d B(b c f) e", 30);
    addRow("below an expanded bus", "a", "B", 20, "B(b c f) a d e", 60);
    addRow("picked upwards, kept in order", "e d", "a", 5, "d e a B(b c f)", 0);
    addRow("empty space", "a", "", 0, "B(b c f) d e a", 210);
    addRow("within a bus", "f", "b", 5, "a B(f b c) d e", 60);
    const QString same = "a B(b c f) d e";
    addRow("own row, upper half", "d", "d", 5, same, 150);
    addRow("own block at the top, upper half", "a B", "B", 5, same, 60);
    addRow("own row at the bottom, lower half", "e", "e", 25, same, 210);
    addRow("a block counts as one row", "d e", "e", 5, same, 210);
    addRow("rows apart gather above the one", "a d", "d", 5, "B(b c f) a d e", 150);
    addRow("refused: member to the top level", "b", "a", 5, same, -1);
    addRow("refused: member to the empty space", "b", "", 5, same, -1);
    addRow("refused: signal into a bus", "a", "b", 5, same, -1);
    addRow("refused: bus into itself", "B", "c", 5, same, -1);
    addRow("refused: rows of several parents", "a b", "e", 5, same, -1);
}

void tst_SignalTreeView::drag()
{
    QFETCH(QString, moved);
    QFETCH(QString, target);
    QFETCH(int, y);
    QFETCH(int, line);
    const bool refused = line < 0;
    UsedTree tree("a B(b c f) d e");
    tree.select(moved);
    const QString inOrder = namesOf(tree.view->selectedRows());
    tree.beginDrag();
    const QPoint place = tree.place(target, y);
    QCOMPARE(tree.hover(place) == Qt::IgnoreAction, refused);
    const QImage during = tree.picture();
    const QRect cell = tree.view->visualRect(tree.row(target.isEmpty() ? "a" : target));
    if (!refused) { // the toolkit delivers no refused drop
        for (const int x : {cell.left() + 1, cell.center().x(), cell.right() - 1})
            QVERIFY(during.pixelColor(x, line).lightness() < 64);
        const int tip = line + 4; // of the arrow below the line
        QCOMPARE(during.pixelColor(cell.left() + 6, tip), QColor(Qt::black));
        QVERIFY(during.pixelColor(cell.left() + 1, tip).lightness() > 64);
        tree.send<QDropEvent>(place);
    }
    QTEST(rowsOf(*tree.model), "rows");
    QCOMPARE(namesOf(tree.view->selectedRows()), inOrder);
    QVERIFY(tree.view->isExpanded(tree.row("B")));
    QVERIFY(refused || !tree.view->testAttribute(Qt::WA_SetStyle)); // the program's look again
}

void tst_SignalTreeView::dropsThatMoveNothing()
{
    UsedTree tree("a b c");
    tree.select("a");
    const QPoint end = tree.place("c", 25);
    // What another program or viewer drags over.
    QCOMPARE(tree.send<QDragEnterEvent>(end), Qt::IgnoreAction);
    // A drag that leaves takes its line along.
    tree.beginDrag();
    const QImage before = tree.picture();
    tree.hover(end);
    QVERIFY(tree.picture() != before);
    QDragLeaveEvent leave;
    QApplication::sendEvent(tree.view->viewport(), &leave);
    QCOMPARE(tree.picture(), before);
    QCOMPARE(rowsOf(*tree.model), "a b c");
    // Rows can go in the middle of the drag, whose event loop lets a new capture in.
    tree.beginDrag();
    tree.hover(end);
    tree.model->setLayout({});
    tree.hover(end);
    tree.send<QDropEvent>(end);
    QCOMPARE(tree.model->rowCount(), 0);
}

void tst_SignalTreeView::modelMayGoFirst()
{
    UsedTree tree("a B(b c)");
    tree.select("a");
    tree.beginDrag();
    tree.tester.reset();
    tree.model.reset(); // as in a widget that destroys its children in order
    QVERIFY(tree.view->selectedRows().isEmpty());
    tree.view.reset();
}

KEO_WIDGET_TEST_MAIN(tst_SignalTreeView)
#include "tst_signaltreeview.moc"
