#include "changelist.h"

#include <widgets/formwidgets.h>
#include <widgets/plaintip.h>

#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPushButton>
#include <QShortcut>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace KEO {

namespace {

constexpr int kTitle = 0;
constexpr int kBefore = 1;
constexpr int kAfter = 2;
constexpr QSize kSize(640, 400);
constexpr int kLeastWidth = 140; // of the columns but the last, in pixels
constexpr int kGreatestWidth = 280;
constexpr int kLineRole = Qt::UserRole; // what a line is as text

QString groupOf(const DescriptionChange &change)
{
    return change.origin == DescriptionChange::Origin::Saved
               ? ChangeList::tr("%1, settings in the file").arg(placeOf(change))
               : placeOf(change);
}

QString capitalized(const QString &text)
{
    return text.left(1).toUpper() + text.mid(1);
}

QTreeWidgetItem *itemOf(const DescriptionChange &change)
{
    auto *item = new QTreeWidgetItem(
        {capitalized(titleOf(change)), change.before.simplified(), change.after.simplified()});
    item->setData(kTitle, kLineRole, groupOf(change) + QLatin1String(": ") + lineOf(change));
    for (const int column : {kTitle, kBefore, kAfter})
        item->setToolTip(column, plainTip(item->text(column)));
    return item;
}

} // namespace

ChangeList::ChangeList(QWidget *parent)
    : QDialog(parent), m_tree(named(new QTreeWidget, "changeTree"))
{
    setObjectName(QStringLiteral("changeList"));
    setWindowTitle(tr("What Changed"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_tree->setHeaderLabels({tr("Change"), tr("Before"), tr("Now")});
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setUniformRowHeights(true);
    m_tree->setAllColumnsShowFocus(true);
    m_tree->setAlternatingRowColors(true);
    m_tree->setAccessibleName(windowTitle());

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    QPushButton *copyButton =
        named(buttons->addButton(tr("&Copy"), QDialogButtonBox::ActionRole), "buttonCopyChanges");
    copyButton->setToolTip(tr("The selected lines, or all of them, as text"));
    copyButton->setAutoDefault(false);
    connect(copyButton, &QPushButton::clicked, this, &ChangeList::copy);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *shortcut = new QShortcut(QKeySequence::Copy, m_tree);
    shortcut->setContext(Qt::WidgetShortcut);
    connect(shortcut, &QShortcut::activated, this, &ChangeList::copy);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tree);
    layout->addWidget(buttons);
    setSizeGripEnabled(true);
    resize(kSize);
}

void ChangeList::setChanges(const QList<DescriptionChange> &changes)
{
    m_tree->clear();
    QHash<QString, QTreeWidgetItem *> groups;
    QList<QTreeWidgetItem *> designs;
    QList<QTreeWidgetItem *> settings; // below the designs
    for (const DescriptionChange &change : changes) {
        QTreeWidgetItem *&group = groups[groupOf(change)];
        if (!group) {
            group = new QTreeWidgetItem({groupOf(change)});
            const bool isDesign = change.origin == DescriptionChange::Origin::Design;
            (isDesign ? designs : settings).append(group);
        }
        group->addChild(itemOf(change));
    }
    m_tree->addTopLevelItems(designs + settings);
    for (QTreeWidgetItem *group : designs + settings)
        group->setFirstColumnSpanned(true);
    m_tree->expandAll();
    for (const int column : {kTitle, kBefore}) {
        m_tree->resizeColumnToContents(column);
        m_tree->setColumnWidth(
            column, std::clamp(m_tree->columnWidth(column), kLeastWidth, kGreatestWidth));
    }
    if (m_tree->topLevelItemCount() > 0)
        m_tree->setCurrentItem(m_tree->topLevelItem(0), kTitle, QItemSelectionModel::NoUpdate);
    m_tree->setFocus();
}

/// A selected group stands for all of its lines.
void ChangeList::copy() const
{
    const bool isAll = m_tree->selectedItems().isEmpty();
    QStringList lines;
    for (int i = 0; i < m_tree->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *group = m_tree->topLevelItem(i);
        for (int j = 0; j < group->childCount(); ++j) {
            const QTreeWidgetItem *item = group->child(j);
            if (isAll || group->isSelected() || item->isSelected())
                lines.append(item->data(kTitle, kLineRole).toString());
        }
    }
    QGuiApplication::clipboard()->setText(lines.join(u'\n'));
}

} // namespace KEO
