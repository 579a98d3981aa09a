#include "carriedlist.h"

#include <widgets/plaintip.h>

#include <QAction>
#include <QClipboard>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>
#include <QTreeWidgetItemIterator>
#include <QVBoxLayout>

#include <algorithm>

namespace KEO {

namespace {

enum Column { Setting, Before, After, Reason, ColumnCount };

constexpr QSize kSize(780, 420);                  // device-independent pixels; fits a small screen
constexpr int kWidestCharacters[] = {34, 18, 18}; // of the columns before the reason

qsizetype count(const CarriedSettings &account, CarryOutcome outcome)
{
    return std::ranges::count(account, outcome, &CarriedSetting::outcome);
}

} // namespace

QString countsOf(const CarriedSettings &account)
{
    return CarriedList::tr("%1 kept, %2 adapted, %3 lost")
        .arg(count(account, CarryOutcome::Kept))
        .arg(count(account, CarryOutcome::Adapted))
        .arg(count(account, CarryOutcome::Lost));
}

CarriedList::CarriedList(const CarriedSettings &account, QWidget *parent)
    : QDialog(parent), m_tree(new QTreeWidget)
{
    setObjectName(QStringLiteral("carriedList"));
    setWindowTitle(tr("Settings in the new design"));
    m_tree->setObjectName(QStringLiteral("carriedTree"));
    m_tree->setAccessibleName(tr("What became of each setting"));
    m_tree->setHeaderLabels({tr("Setting"), tr("Was"), tr("Is"), tr("Reason")});
    m_tree->setUniformRowHeights(true);
    m_tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_tree->setAllColumnsShowFocus(true);
    addGroup(CarryOutcome::Lost, tr("Lost"), account);
    addGroup(CarryOutcome::Adapted, tr("Adapted"), account);
    addGroup(CarryOutcome::Kept, tr("Kept"), account);
    m_tree->setCurrentItem(m_tree->topLevelItem(0));

    auto *copy = new QAction(tr("&Copy"), m_tree);
    copy->setShortcut(QKeySequence::Copy);
    copy->setShortcutContext(Qt::WidgetShortcut);
    connect(copy, &QAction::triggered, this, &CarriedList::copyRows);
    m_tree->addAction(copy);
    m_tree->setContextMenuPolicy(Qt::ActionsContextMenu);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("The design was reloaded. Of your settings: %1. What was lost "
                                    "is as the new description has it.")
                                     .arg(countsOf(account))));
    layout->addWidget(m_tree);
    layout->addWidget(buttons);
    resize(kSize);
    fitColumns();
}

void CarriedList::addGroup(CarryOutcome outcome, const QString &title,
                           const CarriedSettings &account)
{
    const qsizetype entries = count(account, outcome);
    if (entries == 0)
        return;
    auto *group = new QTreeWidgetItem(m_tree, {tr("%1 (%2)").arg(title).arg(entries)});
    group->setFirstColumnSpanned(true);
    for (const CarriedSetting &entry : account) {
        if (entry.outcome != outcome)
            continue;
        auto *item = new QTreeWidgetItem(group, {tr("%1: %2").arg(entry.place, entry.setting),
                                                 entry.before, entry.after, entry.reason});
        for (int column = 0; column < ColumnCount; ++column)
            item->setToolTip(column, plainTip(item->text(column)));
    }
    group->setExpanded(outcome != CarryOutcome::Kept);
}

/// As wide as their texts, but the reason has to show.
void CarriedList::fitColumns()
{
    const int character = fontMetrics().averageCharWidth();
    for (const int column : {Setting, Before, After}) {
        m_tree->resizeColumnToContents(column);
        m_tree->setColumnWidth(
            column, std::min(m_tree->columnWidth(column), kWidestCharacters[column] * character));
    }
}

void CarriedList::copyRows() const
{
    QStringList lines;
    for (QTreeWidgetItemIterator item(m_tree, QTreeWidgetItemIterator::Selected); *item; ++item) {
        QStringList texts;
        for (int column = 0; column < ColumnCount; ++column)
            texts.append((*item)->text(column));
        lines.append(texts.join(u'\t').trimmed());
    }
    QGuiApplication::clipboard()->setText(lines.join(u'\n'));
}

} // namespace KEO
