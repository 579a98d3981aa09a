#include "signaltreeview.h"

#include "dragdropdelegate.h"
#include "rowhistory.h"
#include "signalheaderview.h"
#include "signaltreeitemdelegate.h"
#include "signaltreemodel.h"
#include "treecontextmenu.h"

#include <wave/common/viewergeometry.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QtDebug>

#include <algorithm>

namespace WaveMonitor {

namespace {

constexpr int kDragGap = 16; // pixels between the mouse and what it drags
constexpr qreal kDragOpacity = 0.5;

} // namespace

SignalTreeView::SignalTreeView(QWidget *parent, int preferredWidth)
    : QTreeView(parent),
      m_history(std::make_unique<RowHistory>(this)),
      m_contextMenu(std::make_unique<ContextMenuDelegate>(this)),
      m_preferredWidth(preferredWidth)
{
    setEditTriggers(NoEditTriggers); // names change through the menu alone
    setItemDelegate(new SignalTreeItemDelegate(this));
    setFrameShape(NoFrame);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    setStyleSheet(QStringLiteral("QTreeView::item { height: %1px; }"
                                 "QTreeView::item::selected { color : white;  "
                                 "background-color : #3299ff }")
                      .arg(int(ROW_HEIGHT)));
    // The rows have light backgrounds of their own, so the pane is light under a dark palette too.
    QPalette light;
    light.setColor(QPalette::Base, Qt::white);
    light.setColor(QPalette::Text, Qt::black);
    light.setColor(QPalette::WindowText, Qt::black); // the arrows before the buses
    setPalette(light);
    auto *header = new SignalHeaderView(this);
    header->setDomain(domain());
    setHeader(header);
    header->setSectionResizeMode(QHeaderView::Interactive);
    m_valueWidth = header->defaultSectionSize();
    connect(header, &QHeaderView::sectionResized, this,
            [this](int section, int, int width) { onSectionResized(section, width); });
    setTextElideMode(Qt::ElideMiddle);
    setVerticalScrollMode(ScrollPerPixel);
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setAccessibleName(tr("Signals"));
    setAccessibleDescription(tr("Names of the rows and their values at the marker"));
    const QList<QAction *> keys = m_contextMenu->keyActions();
    for (QAction *action : keys) {
        action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(action);
    }
    connect(this, &QTreeView::collapsed, this, &SignalTreeView::onCollapsed);
    connect(this, &QTreeView::expanded, this, &SignalTreeView::onExpanded);
}

SignalTreeView::~SignalTreeView()
{
    m_actionDelegate.reset(); // takes its style off the view
    if (SignalTreeModel *shown = signalModel())
        shown->setView(nullptr);
}

SignalTreeModel *SignalTreeView::signalModel() const
{
    return qobject_cast<SignalTreeModel *>(model());
}

void SignalTreeView::setModel(QAbstractItemModel *model)
{
    if (SignalTreeModel *old = signalModel())
        old->setView(nullptr);
    if (auto *shown = qobject_cast<SignalTreeModel *>(model))
        shown->setView(this);
    QTreeView::setModel(model);
    m_history->setModel(signalModel());
    header()->resizeSection(SignalTreeModel::NameColumn, 200);
}

// Columns

void SignalTreeView::onSectionResized(int section, int width)
{
    if (m_isFilling)
        return;
    if (section == SignalTreeModel::ValueColumn)
        m_valueWidth = width;
    fillWidth();
}

void SignalTreeView::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    fillWidth();
}

/// The Value column takes what the Name column leaves, and is never narrower than it was set.
void SignalTreeView::fillWidth()
{
    if (header()->count() <= SignalTreeModel::ValueColumn)
        return;
    const QScopedValueRollback filling(m_isFilling, true);
    const int free = viewport()->width() - header()->sectionSize(SignalTreeModel::NameColumn);
    header()->resizeSection(SignalTreeModel::ValueColumn, std::max(m_valueWidth, free));
}

void SignalTreeView::setDomain(const quint64 &domain)
{
    Localized::setDomain(domain);
    if (auto *ours = qobject_cast<SignalHeaderView *>(header()))
        ours->setDomain(domain);
}

QSize SignalTreeView::sizeHint() const
{
    return {m_preferredWidth, QAbstractScrollArea::sizeHint().height()};
}

// Selection

QModelIndexList SignalTreeView::selectedRows() const
{
    QModelIndexList rows = selectedIndexes();
    std::stable_sort(rows.begin(), rows.end(),
                     [](const QModelIndex &a, const QModelIndex &b) { return a.row() < b.row(); });
    return rows;
}

bool SignalTreeView::haveOneParent(const QModelIndexList &rows)
{
    return std::all_of(rows.cbegin(), rows.cend(), [&rows](const QModelIndex &row) {
        return row.parent() == rows.first().parent();
    });
}

void SignalTreeView::addMenuAction(QAction *action)
{
    m_menuActions.append(action);
}

void SignalTreeView::selectOnly(const QModelIndexList &indexes)
{
    QItemSelection rows;
    for (const QModelIndex &index : indexes)
        rows.select(index, index);
    selectionModel()->select(rows, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void SignalTreeView::pickOnly(const QModelIndex &index)
{
    makeCurrent(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void SignalTreeView::makeCurrent(const QModelIndex &index,
                                 QItemSelectionModel::SelectionFlags command)
{
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false); // the user is looking at that row already
    selectionModel()->setCurrentIndex(index, command);
    setAutoScroll(scrolls);
}

void SignalTreeView::keyboardSearch(const QString &typed)
{
    const bool goesOn = !m_typed.isEmpty() && m_sinceTyped.isValid() &&
                        m_sinceTyped.elapsed() < QApplication::keyboardInputInterval();
    m_typed = goesOn ? m_typed + typed : typed;
    m_sinceTyped.start();
    if (!model() || model()->rowCount() == 0)
        return;
    const QModelIndex top = model()->index(0, SignalTreeModel::NameColumn);
    const auto after = [&](const QModelIndex &row) {
        const QModelIndex next = row.isValid() ? indexBelow(row) : QModelIndex();
        return next.isValid() ? next.siblingAtColumn(SignalTreeModel::NameColumn) : top;
    };
    const QModelIndex current = currentIndex().siblingAtColumn(SignalTreeModel::NameColumn);
    const QModelIndex first = goesOn && current.isValid() ? current : after(current);
    QModelIndex row = first;
    do {
        if (row.data().toString().contains(m_typed, Qt::CaseInsensitive)) {
            setCurrentIndex(row);
            return;
        }
        row = after(row);
    } while (row != first);
}

bool SignalTreeView::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        // What may be part of a name is typed ahead and is no key of the viewer's.
        const auto &key = static_cast<QKeyEvent &>(*event);
        const bool plain = !(key.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier));
        if (plain && !key.text().isEmpty() && key.text().at(0).isPrint()) {
            event->accept();
            return true;
        }
    }
    return QTreeView::event(event);
}

void SignalTreeView::commitData(QWidget *editor)
{
    m_history->record(tr("Rename"), [&] { QTreeView::commitData(editor); });
}

void SignalTreeView::selectionChanged(const QItemSelection &selected,
                                      const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (SignalTreeModel *shown = signalModel())
        shown->itemSelectionChanged(selected.indexes(), deselected.indexes());
}

// Context menu

void SignalTreeView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool hasRows =
        signalModel() && (signalModel()->rowCount() > 0 || signalModel()->contents().hasHidden());
    if (!hasRows)
        return;
    m_contextMenu->run(event->globalPos());
}

void SignalTreeView::onGroupBus()
{
    const QModelIndexList rows = selectedRows();
    const bool topLevel = std::none_of(
        rows.cbegin(), rows.cend(), [](const QModelIndex &row) { return row.parent().isValid(); });
    QStringList numbers;
    for (const QModelIndex &row : rows)
        numbers.append(QString::number(row.row()));
    qDebug().noquote() << "action group bus is avilable: " << (topLevel ? "YES" : "NO")
                       << numbers.join(QStringLiteral(", "));
    if (topLevel)
        m_history->record(tr("Group"), [&] { signalModel()->groupBus(rows); });
}

void SignalTreeView::onUngroupBus()
{
    const QModelIndexList rows = selectedRows();
    const QList<QPersistentModelIndex> kept(rows.cbegin(), rows.cend());
    m_history->record(tr("Ungroup"), [&] {
        for (const QPersistentModelIndex &row : kept) {
            if (row.isValid() && model()->hasChildren(row))
                signalModel()->ungroupBus(row);
        }
    });
}

void SignalTreeView::onRename()
{
    const QModelIndexList rows = selectedRows();
    if (!rows.isEmpty())
        edit(rows.first());
}

void SignalTreeView::onRestoreOrgName()
{
    const QModelIndexList rows = selectedRows();
    m_history->record(tr("Restore Original Name"), [&] {
        for (const QModelIndex &row : rows)
            signalModel()->restoreOriginalName(row);
    });
    viewport()->update(); // rows of the same signal elsewhere share its name
}

void SignalTreeView::onReverse()
{
    const QModelIndexList rows = selectedRows();
    if (rows.isEmpty() || !model()->hasChildren(rows.first()))
        return;
    m_history->record(tr("Reverse"), [&] { signalModel()->reverse(rows.first()); });
    viewport()->update();
}

void SignalTreeView::onDataFormatSetted(int format)
{
    const QModelIndexList rows = selectedRows();
    m_history->record(tr("Format"), [&] {
        for (const QModelIndex &row : rows) {
            const LayoutNode *node = signalModel()->node(row);
            if (node->type != LayoutNode::Bus)
                continue;
            node->format->setType(DataFormat::Type(format));
            raiseLater(this, EvFormatChanged);
        }
    });
    viewport()->update();
}

void SignalTreeView::onWaveColorSetted(int color)
{
    const QModelIndexList rows = selectedRows();
    m_history->record(tr("Color"), [&] {
        for (const QModelIndex &row : rows)
            signalModel()->node(row)->color = color;
    });
    signalModel()->refreshItemColors();
    raiseLater(this, EvColorChanged);
}

void SignalTreeView::onHide()
{
    QSet<LayoutNode::Key> keys;
    const QModelIndexList rows = selectedRows();
    for (const QModelIndex &row : rows)
        keys.insert(signalModel()->node(row)->key);
    if (!keys.isEmpty())
        m_history->recordLayout(tr("Hide"),
                                withRowsHidden(signalModel()->contents().snapshot(), keys));
}

void SignalTreeView::onShowAll()
{
    if (signalModel() && signalModel()->contents().hasHidden())
        m_history->recordLayout(tr("Show All"), signalModel()->contents().withAllShown());
}

void SignalTreeView::onMoveUp()
{
    moveSelected(Direction::Up);
}

void SignalTreeView::onMoveDown()
{
    moveSelected(Direction::Down);
}

/// Moves the selected rows past their neighbour; rows that stand apart come together there.
void SignalTreeView::moveSelected(Direction direction)
{
    const QModelIndexList rows = selectedRows();
    if (rows.isEmpty() || !haveOneParent(rows))
        return;
    const bool up = direction == Direction::Up;
    const QModelIndex &outer = up ? rows.first() : rows.last();
    const QModelIndex neighbour = outer.siblingAtRow(outer.row() + (up ? -1 : 1));
    const QModelIndex &target = neighbour.isValid() ? neighbour : outer;
    m_history->record(tr("Move"), [&] {
        selectOnly(up ? signalModel()->moveAbove(target, rows)
                      : signalModel()->moveBelow(target, rows));
    });
    const QModelIndexList moved = selectedRows();
    if (!moved.isEmpty())
        scrollTo(up ? moved.first() : moved.last());
}

void SignalTreeView::onCollapsed(QModelIndex)
{
    raiseLater(this, EvCollapsed);
}

void SignalTreeView::onExpanded(QModelIndex)
{
    raiseLater(this, EvExpanded);
}

// Drag and drop

void SignalTreeView::startDrag(Qt::DropActions actions)
{
    m_actionDelegate.reset();
    const QModelIndexList rows = selectedRows();
    if (rows.isEmpty())
        return;
    if (!haveOneParent(rows)) {
        qDebug() << "moving indexes have different parent is unsupported!";
        return;
    }
    m_actionDelegate = std::make_unique<DragDropDelegate>(this, signalModel());
    auto *drag = new QDrag(this);
    drag->setMimeData(model()->mimeData(rows));
    const QPixmap picture = dragPicture(rows);
    drag->setPixmap(picture);
    // Beside the mouse, so that the left end of the drop line shows.
    drag->setHotSpot({-kDragGap, int(picture.deviceIndependentSize().height()) / 2});
    drag->exec(actions, Qt::MoveAction);
}

/// The rows that show, seen through, for the drop line lies below.
QPixmap SignalTreeView::dragPicture(const QModelIndexList &rows) const
{
    QRect place;
    for (const QModelIndex &row : rows)
        place |= visualRect(row) & viewport()->rect();
    if (place.isEmpty())
        return {};
    const qreal ratio = devicePixelRatioF();
    QPixmap picture(place.size() * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(kDragOpacity);
    for (const QModelIndex &row : rows) {
        const QRect cell = visualRect(row) & place;
        if (!cell.isEmpty())
            painter.drawPixmap(cell.topLeft() - place.topLeft(), viewport()->grab(cell));
    }
    return picture;
}

/// Nothing but this view's own rows can be dropped here. A drag that ended elsewhere leaves its
/// delegate behind, so a row dragged over from another viewer must not be taken for it.
bool SignalTreeView::isOwnDrag(const QDropEvent &event) const
{
    return m_actionDelegate && (!event.source() || event.source() == this);
}

void SignalTreeView::dragEnterEvent(QDragEnterEvent *event)
{
    event->ignore();
    if (!isOwnDrag(*event))
        return;
    m_actionDelegate->dragEnter(event);
    QTreeView::dragEnterEvent(event);
}

void SignalTreeView::dragMoveEvent(QDragMoveEvent *event)
{
    event->ignore();
    if (!isOwnDrag(*event))
        return;
    m_actionDelegate->dragMove(event);
    const bool refused = event->dropAction() == Qt::IgnoreAction;
    QTreeView::dragMoveEvent(event); // scrolls at the edges, and has an opinion of its own
    if (refused) {
        event->setDropAction(Qt::IgnoreAction);
        event->ignore();
    } else {
        event->setDropAction(event->possibleActions() & Qt::MoveAction ? Qt::MoveAction
                                                                       : event->proposedAction());
        event->accept();
    }
}

void SignalTreeView::dragLeaveEvent(QDragLeaveEvent *event)
{
    if (m_actionDelegate)
        m_actionDelegate->dragLeave(event);
    QTreeView::dragLeaveEvent(event);
}

void SignalTreeView::dropEvent(QDropEvent *event)
{
    stopAutoScroll();
    setState(NoState);
    event->ignore();
    if (!isOwnDrag(*event))
        return;
    m_history->record(tr("Move"), [&] { m_actionDelegate->drop(event); });
    m_actionDelegate.reset();
    event->accept();
}

} // namespace WaveMonitor
