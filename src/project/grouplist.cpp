#include "grouplist.h"

#include <widgets/formwidgets.h>
#include <widgets/plaintip.h>

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace KEO {

namespace {

constexpr QSize kSize(640, 400);
constexpr int kLeastWidth = 140; // of the columns but the last, in pixels
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

} // namespace

GroupList::GroupList(const QString &name, const QString &title, const QStringList &columns,
                     QWidget *parent)
    : QDialog(parent), m_tree(named(new QTreeWidget, "tree")), m_layout(new QVBoxLayout(this))
{
    setObjectName(name);
    setWindowTitle(title);
    setAttribute(Qt::WA_DeleteOnClose);
    m_tree->setHeaderLabels(columns);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setUniformRowHeights(true);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->setAlternatingRowColors(true);
    m_tree->setAccessibleName(title);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton *copyButton =
        named(buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole), "copy");
    copyButton->setToolTip(tr("The selected lines, or all of them, as text"));
    copyButton->setAutoDefault(false);
    connect(copyButton, &QPushButton::clicked, this, &GroupList::copy);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *shortcut = new QShortcut(QKeySequence::Copy, m_tree);
    shortcut->setContext(Qt::WidgetShortcut);
    connect(shortcut, &QShortcut::activated, this, &GroupList::copy);

    m_layout->addWidget(m_tree);
    m_layout->addWidget(buttons);
    setSizeGripEnabled(true);
    resize(kSize);
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
    m_tree->clear();
    for (const Group &group : groups) {
        auto *item = new QTreeWidgetItem(m_tree, {group.title});
        item->setFirstColumnSpanned(true);
        for (const Line &line : group.lines)
            item->addChild(itemOf(line));
    }
    m_tree->expandAll(); // for the columns to fit what stands in all of them
    fitColumns();
    for (int i = 0; i < groups.size(); ++i)
        m_tree->topLevelItem(i)->setExpanded(groups[i].isExpanded);
    if (m_tree->topLevelItemCount() > 0)
        m_tree->setCurrentItem(m_tree->topLevelItem(0), 0, QItemSelectionModel::NoUpdate);
    m_tree->setFocus();
}

void GroupList::fitColumns()
{
    for (int column = 0; column < m_tree->columnCount() - 1; ++column) {
        m_tree->resizeColumnToContents(column);
        m_tree->setColumnWidth(
            column, std::clamp(m_tree->columnWidth(column), kLeastWidth, kGreatestWidth));
    }
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
