#include "viewertest.h"

#include <wave/traces/signalwaveitem.h>
#include <wave_data/busnames.h>

#include <QClipboard>
#include <QContextMenuEvent>
#include <QDomDocument>
#include <QDomElement>
#include <QDrag>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFont>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QToolTip>

using namespace WaveMonitor;

namespace {

/// Of a row as text: "a", or of a bus "B(b c)".
QStringList membersOf(const QString &row)
{
    return row.contains(u'(') ? row.section(u'(', 1).chopped(1).split(u' ') : QStringList(row);
}

bool isRowSelected(QGraphicsItem *item)
{
    return dynamic_cast<WaveItem &>(*item).isRowSelected();
}

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

    /// Opens the context menu and chooses the entry at \a path by the keyboard, the second entry
    /// being one of a submenu. What was on, and what was checked as format and colour.
    QStringList menu(const QStringList &path = {})
    {
        QStringList offer;
        QTimer::singleShot(0, view.get(), [&] {
            auto *shown = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(shown);
            QCoreApplication::processEvents(); // a menu that has just come up is active first
            QStringList enabled;
            for (const QAction *action : shown->actions()) {
                if (action->isEnabled() && !action->isSeparator())
                    enabled.append(action->text());
            }
            offer = {enabled.join(u','),
                     checkedEntry(shown, "Format") + u',' + checkedEntry(shown, "Color")};
            const bool isOff = !path.isEmpty() && !entryOf(shown, path.first())->isEnabled();
            for (const QString &entry : isOff ? QStringList() : path) {
                if (entry != path.first()) {
                    QTest::keyClick(shown, Qt::Key_Right);
                    shown = qobject_cast<QMenu *>(QApplication::activePopupWidget());
                }
                shown->setActiveAction(entryOf(shown, entry));
            }
            QTest::keyClick(shown, path.isEmpty() || isOff ? Qt::Key_Escape : Qt::Key_Return);
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
        return name.isEmpty() ? QPoint(100, view->viewport()->height() - 5)
                              : view->visualRect(row(name)).topLeft() + QPoint(40, y);
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
    QImage picture() const { return pixelsOf(view->viewport()); }

    /// Types into the name editor of the selected row.
    void typeName(const QString &typed, Qt::Key end)
    {
        menu({"Rename"});
        auto *editor = view->findChild<QLineEdit *>();
        editor->clear();
        QTest::keyClicks(editor, typed);
        QTest::keyClick(editor, end);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const
    {
        QApplication::setActiveWindow(view.get()); // a submenu that has closed may still be
        QTest::keyClick(view.get(), key, modifiers);
    }
    /// What of the rows a file would hold.
    QString saved() const
    {
        QDomDocument document;
        document.appendChild(model->writeLayout(document));
        QStringList texts;
        for (const SignalElement &signal : model->signalMap())
            texts.append(signal.text);
        return document.toString() + texts.join(u',');
    }
    QString openBuses() const
    {
        QStringList names;
        for (int row = 0; row < model->rowCount(); ++row) {
            const QModelIndex index = model->index(row, 0);
            if (view->isExpanded(index) && model->hasChildren(index))
                names.append(index.data().toString());
        }
        return names.join(u' ');
    }

    bool isEntered = false; ///< a drag is over the view
};

} // namespace

/// The tree of names and values with its model.
class tst_SignalTree final : public WidgetTest
{
    Q_OBJECT

private Q_SLOTS:
    void arrangesLikeAList();
    void refusesToArrange();
    void rename();
    void renameMendsWhatIsPasted();
    void valuesAndSelectionFollow();
    void menu();
    void formatAndColor();
    void undoesAndRedoesAnything();
    void undoKeepsWhatIsSelectedAndOpen();
    void hidesAndShowsAll();
    void movesRowsByKeys();
    void findsANameTyped();
    void drag_data();
    void drag();
    void dropsWhereTheLineIs();
    void dropsThatMoveNothing();
    void menuSurvivesItsView();
    void namesReadUnderADarkPalette();
};

// Grouping, ungrouping, reversing and moving at random.
void tst_SignalTree::arrangesLikeAList()
{
    QRandomGenerator random(5);
    QStringList rows = QString("a b c d e f g").split(u' ');
    Tree tree(rows.join(u' '));
    for (int step = 0; step < 300; ++step) {
        QStringList picked, names, rest, leaves, buses;
        for (const QString &row : rows) {
            const bool isPicked = random.bounded(3) == 0;
            (isPicked ? picked : rest).append(row);
            (isPicked ? names : buses).append(row.section(u'(', 0, 0));
            leaves += isPicked ? membersOf(row) : QStringList();
        }
        if (picked.isEmpty())
            continue;
        const int operation = random.bounded(5);
        const auto at = int(random.bounded(rows.size()));
        QStringList members = membersOf(rows[at]);
        const bool isBus = members != QStringList(rows[at]);
        const QModelIndex target = tree.model->index(at, 0);
        const QModelIndexList indexes = tree.rowsNamed(names.join(u' '));
        const QPersistentModelIndex kept = tree.row("d");
        tree.view->selectOnly({kept});
        tree.listener.take();
        if (operation == 0) {
            tree.model->groupBus(indexes);
            rest.insert(rows.indexOf(picked.first()),
                        QStringLiteral("%1(%2)").arg(groupBusName(buses, int(leaves.size())),
                                                     leaves.join(u' ')));
            rows = rest;
        } else if (operation == 1 && isBus) {
            tree.model->ungroupBus(target);
            rows = rows.mid(0, at) + members + rows.mid(at + 1);
        } else if (operation == 2 && isBus) {
            tree.model->reverse(target);
            std::reverse(members.begin(), members.end());
            rows[at] = rows[at].section(u'(', 0, 0) + u'(' + members.join(u' ') + u')';
        } else if (operation >= 3) {
            const bool isBelow = operation == 4;
            const QModelIndexList places = isBelow ? tree.model->moveBelow(target, indexes)
                                                   : tree.model->moveAbove(target, indexes);
            const QStringList before = rows.mid(0, at + (isBelow ? 1 : 0));
            QStringList moved;
            for (const QString &row : before)
                moved += picked.contains(row) ? QStringList() : QStringList(row);
            rows = moved + picked + rest.mid(moved.size());
            QCOMPARE(namesOf(places), names.join(u' '));
        }
        QCOMPARE(rowsOf(*tree.model), rows.join(u' '));
        if (operation > 1) // else rows leave and come again
            QCOMPARE(kept.data().toString() + namesOf(tree.view->selectedRows()), "dd");
        const int told = operation < 3 ? EvStructureChanged : EvRepaintItems;
        QCOMPARE(tree.listener.take().contains(told), operation == 0 || isBus || operation >= 3);
        // A vanished bus took its item along, so the scene can show what the rows say.
        for (QGraphicsItem *item : tree.scene.items())
            QVERIFY(tree.model->waveItems().contains(item));
    }
}

void tst_SignalTree::refusesToArrange()
{
    const QString rows = "a B(b c) E() F() long";
    Tree tree(rows);
    for (const char *grouped : {"a long", "B long", "a b", "E F", ""}) {
        tree.view->selectOnly(tree.rowsNamed(grouped));
        tree.model->groupBus(tree.rowsNamed(grouped));
        QVERIFY(!isRowSelected(tree.model->waveItems().first())); // the tree keeps its selection
    }
    QVERIFY(tree.model->moveAppend(tree.row("B"), {tree.row("E")}).isEmpty());
    QVERIFY(tree.model->movePrepend(tree.row("a"), {tree.row("E")}).isEmpty());
    tree.model->ungroupBus(tree.row("a"));
    QVERIFY(!tree.listener.take().contains(EvStructureChanged));
    QCOMPARE(rowsOf(*tree.model), rows);
    // The last member takes its bus along.
    tree.model->moveAbove(tree.row("a"), tree.rowsNamed("c b"));
    QCOMPARE(rowsOf(*tree.model), "c b a E() F() long");
}

void tst_SignalTree::valuesAndSelectionFollow()
{
    Tree tree("a B(b c d)");
    for (const auto &[sample, values] : {std::pair(6, "06"), std::pair(-1, "nullnull"),
                                         std::pair(kRowSamples, "nullnull"), std::pair(6, "06")}) {
        tree.model->setTriggerPosition(sample); // bits 1 and 2
        QCOMPARE(tree.value("a") + tree.value("B"), values);
    }
    tree.model->reverse(tree.row("B"));
    QCOMPARE(tree.value("B"), "3");

    const QList<QGraphicsItem *> items = tree.model->waveItems();
    tree.view->selectOnly(tree.rowsNamed("a B"));
    QVERIFY(isRowSelected(items.at(0)) && isRowSelected(items.at(1)));
    tree.model->itemPressed(items.at(2));
    QCOMPARE(namesOf(tree.view->selectedRows()), "d");
    QVERIFY(!isRowSelected(items.at(0)) && isRowSelected(items.at(2)));
}

void tst_SignalTree::menu()
{
    const QString same = "x[1] x[0] B(b c) C(d e)";
    const QString all = "Restore Original Name,Format,Color,Hide,Move Up,Move Down";
    const std::tuple<QString, QString, QString, QString> rows[] = {
        // selected, on, chosen, rows
        {"", "Format", "", same},
        {"x[0]", "Rename," + all, "", same},
        {"x[0] x[1]", "Group," + all, "Group", "x[1:0](x[1] x[0]) B(b c) C(d e)"}, // in row order
        {"B", "Ungroup,Rename,Restore Original Name,Reverse,Format,Color,Hide,Move Up,Move Down",
         "Reverse", "x[1] x[0] B(c b) C(d e)"},
        {"B x[0] C", "Ungroup,Group," + all, "Ungroup", "x[1] x[0] b c d e"},
        {"b x[0]", "Restore Original Name,Format,Color,Hide", "", same},
        {"B b", "Ungroup,Restore Original Name,Format,Color,Hide", "", same}};
    for (const auto &[selected, enabled, entry, after] : rows) {
        UsedTree tree(same);
        tree.select(selected);
        QCOMPARE(tree.menu(entry.split(u' ', Qt::SkipEmptyParts)).value(0), enabled);
        QCOMPARE(rowsOf(*tree.model), after);
        QCOMPARE(tree.listener.take().contains(EvStructureChanged), !entry.isEmpty());
    }
}

void tst_SignalTree::formatAndColor()
{
    UsedTree tree("a B(b c) C(d e)");
    tree.model->setDefaultFormat(DataFormat::Octal);
    QCOMPARE(tree.menu().value(1), "Octal,");
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
    auto *item = static_cast<SignalWaveItem *>(tree.model->waveItems().first());
    QCOMPARE(item->color(), QColor(0xCE, 0, 0));
    tree.select("B");
    QCOMPARE(tree.menu().value(1), "Signed Decimal,Dark Red");
    // Values out of a file that the menu does not offer.
    LayoutNode *bus = tree.model->node(tree.row("B"));
    bus->format->setType(DataFormat::Ascii);
    bus->color = 0x123456;
    QCOMPARE(tree.menu().value(1), ",");
    tree.model->setDefaultFormat(77);
    QCOMPARE(tree.model->defaultFormat(), int(DataFormat::Hexadecimal));
}

// A random sequence of what the user can do, with new samples in between, back and forth again.
void tst_SignalTree::undoesAndRedoesAnything()
{
    UsedTree tree("a b c d e f g");
    tree.model->addSignal({7, "h", "named", countingSamples(7)});
    tree.model->addSignal({8, "i", "called", countingSamples(8)});
    tree.view->setAutoScroll(false);
    QRandomGenerator random(11);
    QStringList states{tree.saved()};
    const auto anyRows = [&] {
        QModelIndexList rows;
        for (int row = 0; row < tree.model->rowCount(); ++row) {
            const QModelIndex index = tree.model->index(row, 0);
            if (random.bounded(3) == 0)
                rows.append(index);
            for (int member = 0; member < tree.model->rowCount(index); ++member) {
                if (random.bounded(6) == 0)
                    rows.append(tree.model->index(member, 0, index));
            }
        }
        return rows;
    };
    const QStringList entries = QString("Group|Group|Ungroup|Reverse|Reverse|Restore Original Name|"
                                        "Hide|Show All|Move Up|Move Down")
                                    .split(u'|');
    for (int step = 0; step < 200; ++step) {
        const int operation = random.bounded(15);
        const bool one = operation < 8 && random.bounded(3) == 0;
        tree.view->selectOnly(one ? anyRows().mid(0, 1) : anyRows());
        const QModelIndexList selected = tree.view->selectedRows();
        const int rows = tree.model->rowCount();
        if (operation < entries.size()) {
            tree.menu({entries[operation]});
        } else if (operation == 10) {
            tree.menu({"Color", random.bounded(2) ? "Blue" : "Red"});
        } else if (operation == 11) {
            tree.menu({"Format", random.bounded(2) ? "Octal" : "Binary"});
        } else if (operation == 12 && !selected.isEmpty()) {
            tree.view->selectOnly({selected.first()});
            tree.typeName(QStringLiteral("n%1").arg(step), Qt::Key_Return);
        } else if (operation == 13 && rows > 0) {
            tree.view->selectOnly({tree.model->index(random.bounded(rows), 0)});
            tree.beginDrag();
            const QPoint place =
                tree.view->visualRect(tree.model->index(random.bounded(rows), 0)).center();
            if (tree.hover(place) != Qt::IgnoreAction)
                tree.send<QDropEvent>(place);
        } else {
            tree.model->updateData(QList<QBitArray>(9, QBitArray(kRowSamples, step % 2 != 0)));
        }
        if (tree.saved() != states.last())
            states.append(tree.saved());
    }
    QVERIFY(states.size() > 60);
    for (qsizetype state = states.size() - 1; state > 0; --state) {
        QCOMPARE(tree.saved(), states[state]);
        tree.press(Qt::Key_Z, Qt::ControlModifier);
    }
    for (const QString &state : states) {
        QCOMPARE(tree.saved(), state);
        tree.press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        for (QGraphicsItem *item : tree.scene.items())
            QVERIFY(tree.model->waveItems().contains(item));
    }
}

void tst_SignalTree::undoKeepsWhatIsSelectedAndOpen()
{
    UsedTree tree("a b B(c d) C(e f) g");
    tree.view->collapse(tree.row("C"));
    tree.view->resize(320, 120); // scrolls
    tree.select("a B");
    tree.menu({"Group"});
    tree.view->expand(tree.row("C"));
    tree.view->verticalScrollBar()->setValue(35);
    tree.press(Qt::Key_Z, Qt::ControlModifier);
    QCoreApplication::processEvents();
    QCOMPARE(rowsOf(*tree.model), "a b B(c d) C(e f) g");
    QCOMPARE(tree.openBuses(), "B C");
    QCOMPARE(namesOf(tree.view->selectedRows()), "a B");
    QVERIFY(isRowSelected(tree.model->waveItems().first()));
    QCOMPARE(tree.view->verticalScrollBar()->value(), 35);
    tree.press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    QCOMPARE(tree.openBuses(), "C");

    const auto undoText = [&] { return tree.view->actions().first()->text(); };
    QCOMPARE(undoText(), "Undo Group");
    tree.view->selectOnly({});
    tree.menu({"Undo Group"});
    QCOMPARE(tree.openBuses(), "B C");
    tree.menu({"Redo Group"});
    tree.model->setLayout({}); // a load leaves nothing to go back to
    QCOMPARE(undoText(), "Undo");
    QVERIFY(!tree.view->actions().first()->isEnabled());
}

void tst_SignalTree::hidesAndShowsAll()
{
    UsedTree tree("a b B(c d e) E() g");
    const QString all = rowsOf(*tree.model);
    const auto hide = [&](const QString &names) {
        tree.select(names);
        tree.press(Qt::Key_Delete);
        return rowsOf(*tree.model);
    };
    tree.select("c");
    tree.menu({"Color", "Red"});
    QCOMPARE(hide("c b"), "a B(d e) E() g");
    QCOMPARE(hide("d e"), "a E() g"); // an empty bus goes with its last member
    QCOMPARE(hide("a g"), "E()");
    QCOMPARE(hide("E"), ""); // nothing is left to bring back
    QCOMPARE(tree.model->signalMap().size(), 6);
    QCOMPARE(tree.menu({"Show All"}).value(0), "Format,Undo Hide,Show All");
    QCOMPARE(rowsOf(*tree.model), "a b B(c d e) g");
    QCOMPARE(tree.model->node(tree.row("c"))->color, 0xFF0000);
    QVERIFY(!tree.menu().value(0).contains(",Show All"));
    for (int step = 0; step < 5; ++step)
        tree.press(Qt::Key_Z, Qt::ControlModifier);
    QCOMPARE(rowsOf(*tree.model), all);

    // The place may be gone, and a file does not know it: after the signal before.
    QCOMPARE(hide("d"), "a b B(c e) E() g");
    tree.select("B");
    tree.menu({"Ungroup"});
    QDomDocument document;
    const QDomElement layout = tree.model->writeLayout(document);
    tree.menu({"Show All"});
    QCOMPARE(rowsOf(*tree.model), "a b c d e E() g");
    tree.model->setLayout(layout);
    tree.menu({"Show All"});
    QCOMPARE(rowsOf(*tree.model), "a b c d e E() g");
}

void tst_SignalTree::movesRowsByKeys()
{
    UsedTree tree("a b B(c d e) g");
    const auto move = [&](const QString &names, Qt::Key key) {
        tree.select(names);
        tree.press(key, Qt::AltModifier);
        return rowsOf(*tree.model);
    };
    QCOMPARE(move("a", Qt::Key_Down), "b a B(c d e) g");
    QCOMPARE(move("a", Qt::Key_Down), "b B(c d e) a g");
    QCOMPARE(move("b a", Qt::Key_Up), "b a B(c d e) g");
    QCOMPARE(move("b a", Qt::Key_Up), "b a B(c d e) g");
    QCOMPARE(move("d", Qt::Key_Up), "b a B(d c e) g");
    QCOMPARE(move("d B", Qt::Key_Up), "b a B(d c e) g"); // not of one parent
    QCOMPARE(move("B g", Qt::Key_Up), "b B(d c e) g a");
    QCOMPARE(namesOf(tree.view->selectedRows()), "B g");
}

void tst_SignalTree::findsANameTyped()
{
    UsedTree tree("clk top_data B(Data[1] Data[0]) C(data_x) rst");
    tree.view->collapse(tree.row("C"));
    const auto type = [&](const QString &text) {
        QTest::keyClicks(tree.view.get(), text);
        return tree.view->currentIndex().data().toString();
    };
    QCOMPARE(type("data"), "top_data");
    QTest::qWait(QApplication::keyboardInputInterval() + 50);
    QCOMPARE(type("data"), "Data[1]");
    QCOMPARE(type("[0"), "Data[0]");
    QTest::qWait(QApplication::keyboardInputInterval() + 50);
    QCOMPARE(type("data_x"), "top_data"); // no row that shows has all of it
    QCOMPARE(namesOf(tree.view->selectedRows()), "top_data");
}

// Names with * stand in italics: renamed. A signal counts as renamed to its own name, too.
void tst_SignalTree::rename()
{
    UsedTree tree("top.a B(c d)");
    const auto nameAfter = [&](const QModelIndex &row, const QString &typed, Qt::Key end) {
        tree.select(row.data().toString());
        tree.typeName(typed, end);
        return row.data().toString() + (row.data(Qt::FontRole).value<QFont>().italic() ? "*" : "");
    };
    for (const QPersistentModelIndex row : tree.rowsNamed("top.a B")) {
        const QString own = row.data().toString();
        QCOMPARE(nameAfter(row, "other", Qt::Key_Escape), own);
        QCOMPARE(nameAfter(row, "", Qt::Key_Return), own);
        QCOMPARE(nameAfter(row, "x y.z-/", Qt::Key_Return), "xyz*"); // the others can't be typed
        QCOMPARE(nameAfter(row, "Q_9[7:0]", Qt::Key_Return), "Q_9[7:0]*");
        tree.model->restoreOriginalName(row);
        QVERIFY(tree.model->setData(row, own, Qt::EditRole));
        QCOMPARE(row.data(Qt::FontRole).value<QFont>().italic(), own != "B");
    }
}

void tst_SignalTree::renameMendsWhatIsPasted()
{
    UsedTree tree("top.a B(c d)");
    const auto type = [&](const QString &row, const std::function<void(QLineEdit &)> &act) {
        tree.select(row);
        tree.menu({"Rename"});
        auto *editor = tree.view->findChild<QLineEdit *>();
        QToolTip::hideText();
        act(*editor);
        QTest::keyClick(editor, Qt::Key_Return);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCoreApplication::processEvents();
        return rowsOf(*tree.model);
    };
    // The name of the description may hold more, and stays if nothing is done.
    QCOMPARE(type("top.a", [](QLineEdit &) {}), "top.a B(c d)");
    QVERIFY(!tree.view->actions().first()->isEnabled()); // nothing to undo
    QCOMPARE(type("B",
                  [](QLineEdit &editor) {
                      editor.clear();
                      QApplication::clipboard()->setText("cpu/bus 1");
                      editor.paste();
                  }),
             "top.a cpu_bus_1(c d)");
    QVERIFY(QToolTip::text().contains("cpu_bus_1"));
    QCOMPARE(type("top.a",
                  [](QLineEdit &editor) {
                      QTest::keyClicks(&editor, "/");
                      QCOMPARE(editor.text(), "top.a");
                      QVERIFY(!QToolTip::text().isEmpty());
                      editor.end(false);
                      QTest::keyClicks(&editor, "bc");
                  }),
             "top_abc cpu_bus_1(c d)");
    QVERIFY(QToolTip::text().contains("top_abc"));
    QCOMPARE(tree.view->actions().first()->text(), "Undo Rename");
}

void tst_SignalTree::drag_data()
{
    // line: of the drop, in pixels from the top; -1 if refused
    const auto row =
        addColumns<QString, QString, int, QString, int>({"moved", "target", "y", "rows", "line"});
    row("upper half", "d", "a", 14, "d a B(b c f) e", 0);
    row("lower half", "d", "a", 15, "a d B(b c f) e", 30);
    row("below an expanded bus", "a", "B", 20, "B(b c f) a d e", 60);
    row("picked upwards, kept in order", "e d", "a", 5, "d e a B(b c f)", 0);
    row("empty space", "a", "", 0, "B(b c f) d e a", 210);
    row("within a bus", "f", "b", 5, "a B(f b c) d e", 60);
    const QString same = "a B(b c f) d e";
    row("own block at the top, upper half", "a B", "B", 5, same, 60);
    row("own row at the bottom, lower half", "e", "e", 25, same, 210);
    row("a block counts as one row", "d e", "e", 5, same, 210);
    row("rows apart gather above the one", "a d", "d", 5, "B(b c f) a d e", 150);
    row("member to the top level", "b", "a", 5, same, -1);
    row("member to the empty space", "b", "", 5, same, -1);
    row("signal into a bus", "a", "b", 5, same, -1);
    row("bus into itself", "B", "c", 5, same, -1);
    row("rows of several parents", "a b", "e", 5, same, -1);
}

void tst_SignalTree::drag()
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

// Also when the list scrolls below a mouse that stands still.
void tst_SignalTree::dropsWhereTheLineIs()
{
    UsedTree tree("a b c d e f g h i j k l m n");
    tree.view->resize(320, 200);
    tree.select("a");
    tree.beginDrag();
    const auto *drag = tree.view->findChild<QDrag *>();
    QVERIFY(drag && qAlpha(drag->pixmap().toImage().pixel(60, 15)) < 200);
    QVERIFY(drag->hotSpot().x() < 0);
    const QPoint place = tree.place("c", 20);
    tree.hover(place);
    tree.view->verticalScrollBar()->setValue(75);
    const QRect cell = tree.view->visualRect(tree.row("f"));
    QCOMPARE(cell.top(), place.y() - 5);
    QVERIFY(tree.picture().pixelColor(cell.right() - 1, cell.top() - 1).lightness() < 64);
    tree.send<QDropEvent>(place);
    QCOMPARE(rowsOf(*tree.model), "b c d e a f g h i j k l m n");
}

void tst_SignalTree::dropsThatMoveNothing()
{
    UsedTree tree("a b c");
    tree.select("a");
    const QPoint end = tree.place("c", 25);
    // What another program or viewer drags over.
    QCOMPARE(tree.send<QDragEnterEvent>(end), Qt::IgnoreAction);
    // Rows can go in the middle of the drag, whose event loop lets a new capture in.
    tree.beginDrag();
    tree.hover(end);
    tree.model->setLayout({});
    tree.hover(end);
    tree.send<QDropEvent>(end);
    QCOMPARE(tree.model->rowCount(), 0);
}

void tst_SignalTree::menuSurvivesItsView()
{
    UsedTree tree("a B(b c)");
    QTimer::singleShot(0, this, [&] { tree.view.reset(); });
    tree.sendMenuEvent();
    QVERIFY(!tree.view);
    tree.model->setTriggerPosition(3); // the model works on without a view
    QCOMPARE(tree.model->waveItems().size(), 4);
}

void tst_SignalTree::namesReadUnderADarkPalette()
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

KEO_WIDGET_TEST_MAIN(tst_SignalTree)
#include "tst_signaltree.moc"
