#include "rows.h"
#include "viewertest.h"

#include <wave/signaltreeview.h>
#include <wave/signalwaveitem.h>
#include <wave/viewergeometry.h>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QDomElement>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QGraphicsItem>
#include <QHeaderView>
#include <QImage>
#include <QLineEdit>
#include <QMimeData>
#include <QScrollBar>
#include <QStyle>

#include <algorithm>
#include <memory>

using namespace WaveMonitor;

namespace {

constexpr quint64 kDomain = 16;

/// What a context menu offered.
struct Offer
{
    QStringList texts;   ///< a separator is empty
    QStringList enabled; ///< submenus among them
    QString format;      ///< checked entries
    QString color;
};

QString checkedText(const QMenu *menu)
{
    for (const QAction *action : menu->actions()) {
        if (action->isChecked())
            return action->text();
    }
    return {};
}

QAction *entryOf(const QMenu *menu, const QString &text)
{
    for (QAction *action : menu->actions()) {
        if (action->text() == text)
            return action;
    }
    return nullptr;
}

} // namespace

class tst_SignalTreeView : public ViewerTest
{
    Q_OBJECT

protected:
    void prepare() override;

private Q_SLOTS:
    void cleanup();

    void rowsStandBesideWaves();
    void namesReadUnderADarkPalette();
    void menuFollowsSelection_data();
    void menuFollowsSelection();
    void menuShowsFormatAndColor();
    void menuSurvivesItsView();
    void menuChangesRows_data();
    void menuChangesRows();
    void menuSetsFormatAndColor();
    void nameEditor_data();
    void nameEditor();
    void drag_data();
    void drag();
    void dropLineShows_data();
    void dropLineShows();
    void dropsThatMoveNothing();
    void modelMayGoFirst();

private:
    void show(const QString &rows);
    void select(const QString &names);
    QModelIndex row(const QString &name) const { return rowNamed(*m_model, name); }
    QPoint place(const QString &name, int y) const;
    Offer menu(const QStringList &path = {});
    void beginDrag();
    template <typename Event>
    Qt::DropAction send(const QPoint &position);
    Qt::DropAction hover(const QPoint &position);
    QImage picture() const { return m_view->viewport()->grab().toImage(); }

    std::unique_ptr<SignalTreeModel> m_model;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
    std::unique_ptr<SignalTreeView> m_view;
    std::unique_ptr<RowListener> m_listener;
    bool m_entered = false; ///< a drag is over the view
};

void tst_SignalTreeView::prepare()
{
    m_entered = false;
    m_model = std::make_unique<SignalTreeModel>();
    m_tester = std::make_unique<QAbstractItemModelTester>(
        m_model.get(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    m_view = std::make_unique<SignalTreeView>(nullptr, 300);
    m_listener = std::make_unique<RowListener>(kDomain);
    m_model->setDomain(kDomain);
    m_view->setDomain(kDomain);
    m_view->setModel(m_model.get());
}

void tst_SignalTreeView::cleanup()
{
    m_view.reset();
    m_tester.reset();
    m_model.reset();
}

void tst_SignalTreeView::show(const QString &rows)
{
    addRows(*m_model, rows);
    m_view->expandAll();
    m_view->resize(320, 400);
    m_view->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    m_listener->take();
}

/// Selects rows as the user does: a click, then clicks with Ctrl.
void tst_SignalTreeView::select(const QString &names)
{
    m_view->clearSelection();
    for (const QModelIndex &index : rowsNamed(*m_model, names))
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          m_view->visualRect(index).center());
    QCOMPARE(m_view->selectedRows().size(),
             names.isEmpty() ? 0 : names.count(QLatin1Char(' ')) + 1);
    m_listener->take();
}

/// The point \a y pixels below the top of a row, or in the empty space for no name.
QPoint tst_SignalTreeView::place(const QString &name, int y) const
{
    if (name.isEmpty())
        return {100, m_view->viewport()->height() - 5};
    const QRect rect = m_view->visualRect(row(name));
    return {rect.left() + 40, rect.top() + y};
}

/// Opens the context menu, notes what it offers, and chooses the entry at \a path by the keyboard,
/// the second entry being one of a submenu.
Offer tst_SignalTreeView::menu(const QStringList &path)
{
    Offer offer;
    QTimer::singleShot(0, m_view.get(), [&] {
        auto *shown = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!shown)
            return;
        QCoreApplication::processEvents(); // a menu that has just come up is active first
        for (const QAction *action : shown->actions()) {
            offer.texts.append(action->text());
            if (action->isEnabled() && !action->isSeparator())
                offer.enabled.append(action->text());
        }
        offer.format = checkedText(entryOf(shown, QStringLiteral("Format"))->menu());
        offer.color = checkedText(entryOf(shown, QStringLiteral("Color"))->menu());
        if (path.isEmpty()) {
            QTest::keyClick(shown, Qt::Key_Escape);
            return;
        }
        shown->setActiveAction(entryOf(shown, path.first()));
        if (path.size() == 2) {
            QTest::keyClick(shown, Qt::Key_Right);
            shown = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            shown->setActiveAction(entryOf(shown, path.last()));
        }
        QTest::keyClick(shown, Qt::Key_Return);
    });
    const QPoint position(50, 5);
    QContextMenuEvent event(QContextMenuEvent::Mouse, position,
                            m_view->viewport()->mapToGlobal(position));
    QApplication::sendEvent(m_view->viewport(), &event);
    QCoreApplication::processEvents();
    return offer;
}

/// Presses on the last selected row and pulls, as far as a drag starts. There is no drag and drop
/// without a window system, so the events that it brings are sent by hand.
void tst_SignalTreeView::beginDrag()
{
    const QPoint press = m_view->visualRect(m_view->selectedRows().last()).center();
    QTest::mousePress(m_view->viewport(), Qt::LeftButton, Qt::NoModifier, press);
    QTest::mouseMove(m_view->viewport(), press + QPoint(0, 12));
    QTest::mouseMove(m_view->viewport(), press + QPoint(0, 24));
    QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, Qt::NoModifier, press);
    send<QDragEnterEvent>(press);
}

/// Sends what belongs to a drag. As in the toolkit, a widget that refused a drag at its border
/// hears no more of it, nor after the drop.
template <typename Event>
Qt::DropAction tst_SignalTreeView::send(const QPoint &position)
{
    QMimeData data;
    data.setData(m_model->mimeTypes().constFirst(), {}); // the rows are not in the data
    Event event(position, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    const bool enters = event.type() == QEvent::DragEnter;
    if (!enters && !m_entered)
        return Qt::IgnoreAction;
    QApplication::sendEvent(m_view->viewport(), &event);
    m_entered = enters ? event.isAccepted() : event.type() == QEvent::DragMove;
    return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

Qt::DropAction tst_SignalTreeView::hover(const QPoint &position)
{
    return send<QDragMoveEvent>(position);
}

void tst_SignalTreeView::rowsStandBesideWaves()
{
    show(QStringLiteral("a B(b c) d"));
    QCOMPARE(m_view->sizeHint().width(), 300);
    QCOMPARE(m_view->header()->height(), kHeaderHeight);
    QCOMPARE(m_view->header()->sectionSize(0), 200);
    QCOMPARE(m_view->header()->property("domain").toULongLong(), kDomain);
    const QList<QGraphicsItem *> items = m_model->waveItems();
    const QStringList names{QStringLiteral("a"), QStringLiteral("B"), QStringLiteral("b"),
                            QStringLiteral("c"), QStringLiteral("d")};
    for (qsizetype i = 0; i < names.size(); ++i) {
        QCOMPARE(m_view->visualRect(row(names[i])).top(), int(items[i]->y()));
        QCOMPARE(m_view->visualRect(row(names[i])).height(), int(ROW_HEIGHT));
    }
    m_view->collapse(row(QStringLiteral("B")));
    m_view->expand(row(QStringLiteral("B")));
    QCOMPARE(m_listener->take(), (QList<int>{EvCollapsed, EvExpanded}));
    // Scrolls by pixels, as the wave view does.
    m_view->resize(320, 100);
    m_view->verticalScrollBar()->setValue(7);
    QCOMPARE(m_view->visualRect(row(QStringLiteral("a"))).top(), -7);
    const int shown = m_view->viewport()->height();
    QCOMPARE(m_view->verticalScrollBar()->maximum(), int(5 * ROW_HEIGHT) - shown);
}

void tst_SignalTreeView::namesReadUnderADarkPalette()
{
    const QPalette before = QApplication::palette();
    QPalette dark = before;
    dark.setColor(QPalette::Base, Qt::black);
    dark.setColor(QPalette::Text, Qt::white);
    QApplication::setPalette(dark);
    cleanup();
    prepare();
    show(QStringLiteral("a B(b c) d"));
    const QImage shown = picture();
    QApplication::setPalette(before);
    for (const char *name : {"a", "b"}) {
        const QRect rect = m_view->visualRect(row(QString::fromLatin1(name)));
        int darkest = 255;
        for (int y = rect.top(); y <= rect.bottom(); ++y) {
            for (int x = rect.left(); x <= rect.right(); ++x)
                darkest = std::min(darkest, qGray(shown.pixel(x, y)));
        }
        QVERIFY2(darkest < 100, name);
    }
}

void tst_SignalTreeView::menuFollowsSelection_data()
{
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("enabled");
    QTest::newRow("none") << ""
                          << "Format";
    QTest::newRow("signal") << "a"
                            << "Rename,Restore Original Name,Format,Color";
    QTest::newRow("two signals") << "a d"
                                 << "Group,Restore Original Name,Format,Color";
    QTest::newRow("bus") << "B"
                         << "Ungroup,Rename,Restore Original Name,Reverse,Format,Color";
    QTest::newRow("bus and signal") << "B a"
                                    << "Ungroup,Group,Restore Original Name,Format,Color";
    QTest::newRow("member and signal") << "b a"
                                       << "Restore Original Name,Format,Color";
    QTest::newRow("bus and its member") << "B b"
                                        << "Ungroup,Restore Original Name,Format,Color";
}

void tst_SignalTreeView::menuFollowsSelection()
{
    QFETCH(QString, selected);
    show(QStringLiteral("a B(b c) d"));
    select(selected);
    const Offer offer = menu();
    QCOMPARE(offer.texts.join(QLatin1Char(',')),
             QStringLiteral("Ungroup,Group,Rename,Restore Original Name,Reverse,,Format,Color"));
    QTEST(offer.enabled.join(QLatin1Char(',')), "enabled");
}

void tst_SignalTreeView::menuShowsFormatAndColor()
{
    show(QStringLiteral("a B(b c)"));
    m_model->setDefaultFormat(DataFormat::Octal);
    select(QStringLiteral("B"));
    QCOMPARE(menu().format, QStringLiteral("Hexadecimal"));
    QCOMPARE(menu().color, QStringLiteral("Green"));
    select(QStringLiteral("a B"));
    QCOMPARE(menu().format, QStringLiteral("Octal"));
    // Values out of a file that the menu does not offer.
    LayoutNode *bus = m_model->node(row(QStringLiteral("B")));
    bus->format->setType(DataFormat::Ascii);
    bus->color = 0x123456;
    select(QStringLiteral("B"));
    QCOMPARE(menu().format, QString());
    QCOMPARE(menu().color, QString());
    QCOMPARE(bus->format->type(), DataFormat::Ascii); // looking changes nothing
    m_model->setDefaultFormat(77);
    QCOMPARE(m_model->defaultFormat(), int(DataFormat::Hexadecimal));
}

void tst_SignalTreeView::menuSurvivesItsView()
{
    show(QStringLiteral("a B(b c)"));
    QTimer::singleShot(0, this, [this] { m_view.reset(); });
    const QPoint position(50, 5);
    QContextMenuEvent event(QContextMenuEvent::Mouse, position, position);
    QApplication::sendEvent(m_view->viewport(), &event);
    QVERIFY(!m_view);
    m_model->setTriggerPosition(3); // the model works on without a view
    QCOMPARE(m_model->waveItems().size(), 4);
}

void tst_SignalTreeView::menuChangesRows_data()
{
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("rows");
    QTest::newRow("in row order") << "x[0] x[1]"
                                  << "Group"
                                  << "x[1:0](x[1] x[0]) B(b c) C(d e)";
    QTest::newRow("all buses") << "B x[0] C"
                               << "Ungroup"
                               << "x[1] x[0] b c d e";
    QTest::newRow("members") << "B"
                             << "Reverse"
                             << "x[1] x[0] B(c b) C(d e)";
}

void tst_SignalTreeView::menuChangesRows()
{
    QFETCH(QString, selected);
    QFETCH(QString, entry);
    show(QStringLiteral("x[1] x[0] B(b c) C(d e)"));
    select(selected);
    menu({entry});
    QTEST(rowsOf(*m_model), "rows");
    QVERIFY(m_listener->take().contains(EvStructureChanged));
}

void tst_SignalTreeView::menuSetsFormatAndColor()
{
    show(QStringLiteral("a B(b c) C(d e)"));
    select(QStringLiteral("a B C b"));
    menu({QStringLiteral("Format"), QStringLiteral("Signed Decimal")});
    QCOMPARE(m_listener->take(), (QList<int>{EvFormatChanged, EvFormatChanged})); // one a bus
    menu({QStringLiteral("Color"), QStringLiteral("Dark Red")});
    QCOMPARE(m_listener->take(), QList<int>{EvColorChanged});
    for (const char *name : {"a", "B", "C", "b", "c"}) {
        const LayoutNode *node = m_model->node(row(QString::fromLatin1(name)));
        QCOMPARE(node->color, *name == 'c' ? 0x00FF00 : 0xCE0000);
        QCOMPARE(node->format->type(), node->type == LayoutNode::Bus ? DataFormat::SignedDecimal
                                                                     : DataFormat::Hexadecimal);
    }
    QCOMPARE(static_cast<SignalWaveItem *>(m_model->waveItems().first())->color(),
             QColor(0xCE, 0, 0));
}

void tst_SignalTreeView::nameEditor_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("name");
    QTest::newRow("all kinds of characters") << "Q_9[7:0]" << int(Qt::Key_Return) << "Q_9[7:0]";
    QTest::newRow("others can't be typed") << "x y.z-/" << int(Qt::Key_Return) << "xyz";
    QTest::newRow("given up") << "other" << int(Qt::Key_Escape) << "top.a";
}

void tst_SignalTreeView::nameEditor()
{
    QFETCH(QString, typed);
    QFETCH(int, end);
    show(QStringLiteral("top.a"));
    select(QStringLiteral("top.a"));
    menu({QStringLiteral("Rename")});
    auto *editor = m_view->findChild<QLineEdit *>();
    QVERIFY(editor);
    QCOMPARE(editor->text(), QStringLiteral("top.a"));
    QTest::keyClicks(editor, typed);
    QTest::keyClick(editor, Qt::Key(end));
    QCoreApplication::processEvents();
    QTEST(m_model->index(0, 0).data().toString(), "name");
}

void tst_SignalTreeView::drag_data()
{
    QTest::addColumn<QString>("moved");
    QTest::addColumn<QString>("target");
    QTest::addColumn<int>("y");
    QTest::addColumn<QString>("rows");
    QTest::newRow("upper half") << "d"
                                << "a" << 14 << "d a B(b c f) e";
    QTest::newRow("lower half") << "d"
                                << "a" << 15 << "a d B(b c f) e";
    QTest::newRow("below an expanded bus") << "a"
                                           << "B" << 20 << "B(b c f) a d e";
    QTest::newRow("picked upwards, kept in order") << "e d"
                                                   << "a" << 5 << "d e a B(b c f)";
    QTest::newRow("empty space") << "a"
                                 << "" << 0 << "B(b c f) d e a";
    QTest::newRow("within a bus") << "f"
                                  << "b" << 5 << "a B(f b c) d e";
    QTest::newRow("own row, upper half") << "d"
                                         << "d" << 5 << "a B(b c f) d e";
    QTest::newRow("own block at the top, upper half") << "a B"
                                                      << "B" << 5 << "a B(b c f) d e";
    QTest::newRow("own row at the bottom, lower half") << "e"
                                                       << "e" << 25 << "a B(b c f) d e";
    QTest::newRow("a block counts as one row") << "d e"
                                               << "e" << 5 << "a B(b c f) d e";
    QTest::newRow("rows apart gather above the one") << "a d"
                                                     << "d" << 5 << "B(b c f) a d e";
    const QString refused = QStringLiteral("a B(b c f) d e");
    QTest::newRow("refused: member to the top level") << "b"
                                                      << "a" << 5 << refused;
    QTest::newRow("refused: member to the empty space") << "b"
                                                        << "" << 5 << refused;
    QTest::newRow("refused: signal into a bus") << "a"
                                                << "b" << 5 << refused;
    QTest::newRow("refused: bus into itself") << "B"
                                              << "c" << 5 << refused;
    QTest::newRow("refused: rows of several parents") << "a b"
                                                      << "e" << 5 << refused;
}

void tst_SignalTreeView::drag()
{
    QFETCH(QString, moved);
    QFETCH(QString, target);
    QFETCH(int, y);
    const bool refused = QByteArray(QTest::currentDataTag()).startsWith("refused");
    show(QStringLiteral("a B(b c f) d e"));
    select(moved);
    const QString inOrder = namesOf(m_view->selectedRows());
    beginDrag();
    const Qt::DropAction action = hover(place(target, y));
    QCOMPARE(action == Qt::IgnoreAction, refused);
    if (action != Qt::IgnoreAction) // the toolkit delivers no refused drop
        send<QDropEvent>(place(target, y));
    QTEST(rowsOf(*m_model), "rows");
    QCOMPARE(namesOf(m_view->selectedRows()), inOrder);
    QVERIFY(m_view->isExpanded(row(QStringLiteral("B"))));
    if (!refused)
        QVERIFY(!m_view->testAttribute(Qt::WA_SetStyle)); // the program's look again
}

void tst_SignalTreeView::dropLineShows_data()
{
    QTest::addColumn<QString>("moved");
    QTest::addColumn<QString>("target");
    QTest::addColumn<int>("y");
    QTest::addColumn<int>("line"); // from the top of the viewport
    QTest::addColumn<int>("tip");
    QTest::newRow("empty space") << "a"
                                 << "" << 0 << 179 << 184;
    QTest::newRow("over a block") << "d e"
                                  << "d" << 29 << 119 << 124;
    QTest::newRow("under a block") << "d e"
                                   << "e" << 0 << 179 << 184;
}

void tst_SignalTreeView::dropLineShows()
{
    QFETCH(QString, target);
    QFETCH(QString, moved);
    QFETCH(int, y);
    QFETCH(int, line);
    QFETCH(int, tip);
    show(QStringLiteral("a B(b c) d e"));
    select(moved);
    beginDrag();
    hover(place(target, y));
    const QImage during = picture();
    const QRect cell = m_view->visualRect(row(QStringLiteral("a")));
    for (const int x : {cell.left() + 1, cell.center().x(), cell.right() - 1})
        QVERIFY(during.pixelColor(x, line).lightness() < 64);
    QCOMPARE(during.pixelColor(cell.left() + 6, tip), QColor(Qt::black));
    QVERIFY(during.pixelColor(cell.left() + 1, tip).lightness() > 64);
}

void tst_SignalTreeView::dropsThatMoveNothing()
{
    show(QStringLiteral("a b c"));
    select(QStringLiteral("a"));
    const QPoint end = place(QStringLiteral("c"), 25);
    // What another program or viewer drags over.
    QCOMPARE(send<QDragEnterEvent>(end), Qt::IgnoreAction);
    // A drag that leaves takes its line along.
    beginDrag();
    const QImage before = picture();
    hover(end);
    QVERIFY(picture() != before);
    QDragLeaveEvent leave;
    QApplication::sendEvent(m_view->viewport(), &leave);
    QCOMPARE(picture(), before);
    QCOMPARE(rowsOf(*m_model), QStringLiteral("a b c"));
    // Rows can go in the middle of the drag, whose event loop lets a new capture in.
    beginDrag();
    hover(end);
    m_model->setLayout({});
    hover(end);
    send<QDropEvent>(end);
    QCOMPARE(m_model->rowCount(), 0);
}

void tst_SignalTreeView::modelMayGoFirst()
{
    show(QStringLiteral("a B(b c)"));
    select(QStringLiteral("a"));
    beginDrag();
    m_tester.reset();
    m_model.reset(); // as in a widget that destroys its children in order
    QVERIFY(m_view->selectedRows().isEmpty());
}

int main(int argc, char **argv)
{
    return runTest<tst_SignalTreeView, QApplication>(argc, argv);
}

#include "tst_signaltreeview.moc"
