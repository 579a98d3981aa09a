#include "deviceselector.h"

#include <programmer/devicedatabase.h>

#include <QHeaderView>
#include <QLabel>
#include <QShortcut>
#include <QTableWidget>
#include <QVBoxLayout>

namespace KEO {

DeviceSelector::DeviceSelector(const QList<const DeviceEntry *> &candidates,
                               const QString &proposal, QWidget *parent)
    : QDialog(parent), m_candidates(candidates), m_table(new QTableWidget)
{
    setObjectName(QStringLiteral("deviceSelector"));
    setWindowTitle(tr("Device Chooser"));
    m_table->setObjectName(QStringLiteral("deviceTable"));
    m_table->setColumnCount(3);
    m_table->setHorizontalHeaderLabels({tr("Device"), tr("Series"), tr("ID Code")});
    m_table->setRowCount(int(candidates.size()));
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->horizontalHeader()->setHighlightSections(false);
    int selected = 0;
    for (int row = 0; row < candidates.size(); ++row) {
        const DeviceEntry &entry = *candidates.at(row);
        const QString series = entry.series ? entry.series->name : QString();
        m_table->setItem(row, 0, new QTableWidgetItem(entry.name));
        m_table->setItem(row, 1, new QTableWidgetItem(series));
        m_table->setItem(row, 2, new QTableWidgetItem(plainIdCode(entry.idCode)));
        if (entry.name == proposal)
            selected = row;
    }
    m_table->setCurrentCell(selected, 0);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(
        new QLabel(tr("* Multiple devices found. Please double click to select one")));
    layout->addWidget(m_table);
    connect(m_table, &QTableWidget::doubleClicked, this, &DeviceSelector::onDoubeClicked);
    for (const int key : {Qt::Key_Return, Qt::Key_Enter}) {
        auto *shortcut = new QShortcut(key, m_table, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this,
                [this] { onDoubeClicked(m_table->currentIndex()); });
    }
}

QSize DeviceSelector::sizeHint() const
{
    return {500, 200};
}

void DeviceSelector::onDoubeClicked(const QModelIndex &index)
{
    m_device = m_candidates.value(index.row());
    accept();
}

} // namespace KEO
