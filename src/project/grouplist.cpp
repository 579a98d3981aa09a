#include "grouplist.h"

#include <widgets/formwidgets.h>
#include <widgets/plaintip.h>

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QSet>
#include <QShortcut>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr int kFirstWidth = 105;      // characters
constexpr double kHeight = 0.6;       // of the width
constexpr double kScreenShare = 0.95; // at most, in each direction
constexpr int kLeastWidth = 70;       // of the columns but the last, in pixels
constexpr int kGreatestWidth = 280;
constexpr int kLineRole = Qt::UserRole; // what a line is as text

QTreeWidgetItem *itemOf(const GroupList::Line &line)
{
    QStringList cells = line.cells;
    for (QString &cell : cells)
        cell = cell.simplified();
    auto *item = new QTreeWidgetItem(cells);
    item->setData(0, kLineRole, line.text);
    for (int column = 0; column < cells.size(); ++column)
        item->setToolTip(column, plainTip(cells[column]));
    return item;
}

/// By which the user knows it again in the list of another time.
QString keyOf(const QTreeWidgetItem *item)
{
    if (!item)
        return {};
    const QString line = item->data(0, kLineRole).toString();
    return line.isEmpty() ? item->text(0) : line;
}

} // namespace

GroupList::GroupList(const QString &name, const QString &title, const QStringList &columns,
                     QWidget *parent)
    : SideWindow(name, title, parent),
      m_tree(named(new QTreeWidget, "tree")),
      m_layout(new QVBoxLayout(this))
{
    setAttribute(Qt::WA_DeleteOnClose);
    m_tree->setHeaderLabels(columns);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setUniformRowHeights(true);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->setAlternatingRowColors(true);
    m_tree->setAccessibleName(title);
    m_tree->setFocus();

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton *copyButton =
        named(buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole), "copy");
    copyButton->setToolTip(tr("The selected lines, or all of them, as text"));
    copyButton->setAutoDefault(false);
    connect(copyButton, &QPushButton::clicked, this, &GroupList::copy);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *shortcut = new QShortcut(QKeySequence::Copy, this);
    connect(shortcut, &QShortcut::activated, this, &GroupList::copy);

    m_layout->addWidget(m_tree);
    m_layout->addWidget(buttons);
    setSizeGripEnabled(true);
    m_tree->viewport()->installEventFilter(this);
    setFirstWidth(kFirstWidth);
}

void GroupList::setHead(const QString &text)
{
    auto *label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    m_layout->insertWidget(0, label);
}

void GroupList::setGroups(const QList<Group> &groups)
{
    const QString current = keyOf(m_tree->currentItem());
    QSet<QString> selected;
    for (const QTreeWidgetItem *item : m_tree->selectedItems())
        selected.insert(keyOf(item));
    QSet<QString> closed;
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        if (!m_tree->topLevelItem(i)->isExpanded())
            closed.insert(keyOf(m_tree->topLevelItem(i)));
    }
    m_tree->clear();
    for (const Group &group : groups) {
        auto *item = new QTreeWidgetItem(m_tree, {group.title});
        item->setFirstColumnSpanned(true);
        for (const Line &line : group.lines)
            item->addChild(itemOf(line));
    }
    for (int i = 0; i < groups.size(); ++i)
        m_tree->topLevelItem(i)->setExpanded(groups[i].isExpanded &&
                                             !closed.contains(keyOf(m_tree->topLevelItem(i))));
    fitColumns();
    QTreeWidgetItem *place = m_tree->topLevelItem(0);
    for (QTreeWidgetItemIterator item(m_tree); *item; ++item) {
        (*item)->setSelected(selected.contains(keyOf(*item)));
        if (keyOf(*item) == current)
            place = *item;
    }
    if (place)
        m_tree->setCurrentItem(place, 0, QItemSelectionModel::NoUpdate);
}

void GroupList::setFirstWidth(int characters)
{
    const QSize most = screen()->availableSize() * kScreenShare;
    const int width = std::min(characters * fontMetrics().averageCharWidth(), most.width());
    resize(width, std::min(int(width * kHeight), most.height()));
}

bool GroupList::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_tree->viewport() && event->type() == QEvent::Resize)
        fitColumns();
    return SideWindow::eventFilter(watched, event);
}

/// The last column often says most: it gets half of the room if it needs that, and what is left.
void GroupList::fitColumns()
{
    const int last = m_tree->columnCount() - 1;
    QList<int> widths;
    for (int column = 0; column <= last; ++column) {
        m_tree->resizeColumnToContents(column);
        widths.append(m_tree->columnWidth(column));
    }
    const int room = m_tree->viewport()->width();
    const int roomBefore = room - std::min(widths.takeLast(), room / 2);
    int greatest = kGreatestWidth;
    const auto taken = [&] {
        int sum = 0;
        for (const int width : std::as_const(widths))
            sum += std::clamp(width, kLeastWidth, greatest);
        return sum;
    };
    while (greatest > kLeastWidth && taken() > roomBefore)
        --greatest;
    for (int column = 0; column < last; ++column)
        m_tree->setColumnWidth(column, std::clamp(widths[column], kLeastWidth, greatest));
    m_tree->setColumnWidth(last, kLeastWidth); // and stretches, with its tip for what is cut off
}

/// A selected group stands for all of its lines.
void GroupList::copy() const
{
    const bool isAll = m_tree->selectedItems().isEmpty();
    QStringList lines;
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *group = m_tree->topLevelItem(i);
        for (int j = 0; j < group->childCount(); ++j) {
            const QTreeWidgetItem *item = group->child(j);
            if (isAll || group->isSelected() || item->isSelected())
                lines.append(item->data(0, kLineRole).toString());
        }
    }
    QGuiApplication::clipboard()->setText(lines.join(u'\n'));
}

} // namespace KEO
