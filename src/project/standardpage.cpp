#include "standardpage.h"

#include <design/standarddesign.h>
#include <trigger_ui/dynamicconfigwidget.h>
#include <widgets/formwidgets.h>
#include <widgets/scrollpage.h>

#include <QDockWidget>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QSignalBlocker>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace KEO {

namespace {

constexpr int kTreeCharacters = 16; // at least, so that a core's number is never cut off
constexpr int kTreeStretch = 1;
constexpr int kConfigStretch = 10;

/// Width in pixels at which an item shows whole, with its check box and a bar beside it.
int treeWidth(const QTreeWidget &tree)
{
    const QStyle *style = tree.style();
    return tree.fontMetrics().horizontalAdvance(QStringLiteral("Core 000")) +
           style->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &tree) +
           2 * style->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, &tree) +
           style->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, &tree);
}

QDockWidget *makeFixedDock(const char *name, const QString &title, QWidget *content)
{
    auto *dock = new QDockWidget(title);
    dock->setObjectName(QLatin1String(name));
    dock->setFeatures(QDockWidget::NoDockWidgetFeatures);
    dock->setWidget(content);
    return dock;
}

} // namespace

QWidget *StandardPage::build(QWidget *programmer)
{
    m_coreTree = new QTreeWidget;
    m_coreTree->setObjectName(QStringLiteral("coreTree"));
    m_coreTree->setHeaderHidden(true);
    // A hidden header does not fit its column to the tree, which would bring the bar up for
    // nothing.
    m_coreTree->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_coreTree->setRootIsDecorated(false);
    m_coreTree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_coreTree->setMinimumWidth(kTreeCharacters * m_coreTree->fontMetrics().averageCharWidth());
    m_coreTree->setSelectionMode(QAbstractItemView::SingleSelection);
    m_coreTree->setMinimumWidth(treeWidth(*m_coreTree));
    connect(m_coreTree, &QTreeWidget::itemClicked, this, &StandardPage::onKoChanged);
    // The keyboard reaches the tree as well: the arrow keys and the space bar.
    connect(m_coreTree, &QTreeWidget::itemChanged, this, &StandardPage::onKoChanged);
    connect(m_coreTree, &QTreeWidget::currentItemChanged, this, &StandardPage::onKoChanged);

    m_dynamicConfigWidget = new DynamicConfigWidget;
    m_dynamicConfigWidget->setObjectName(QStringLiteral("dynamicConfigWidget"));
    connect(m_dynamicConfigWidget, &DynamicConfigWidget::windowNumChanged, this,
            &StandardPage::onWindowNumChanged);
    connect(m_dynamicConfigWidget, &DynamicConfigWidget::edited, this, &ConfigPage::edited);
    m_configDock = makeFixedDock("configDock", tr(" Core 0"), m_dynamicConfigWidget);

    auto *coreArea = new QWidget;
    coreArea->setObjectName(QStringLiteral("coreArea"));
    auto *areaLayout = new QHBoxLayout(coreArea);
    areaLayout->setContentsMargins(0, 0, 0, 0);
    areaLayout->setSpacing(0);
    areaLayout->addWidget(makeFixedDock("treeDock", tr(" Ko Core"), m_coreTree), kTreeStretch);
    areaLayout->addWidget(m_configDock, kConfigStretch);

    auto *content = new QWidget;
    auto *layout = new QVBoxLayout(content);
    layout->addWidget(programmer);
    layout->addWidget(coreArea, 1); // all the room: expressions and units may be many
    layout->addStretch();
    return named(makeScrollPage(content), "configTab");
}

void StandardPage::reset()
{
    m_dynamicConfigWidget->setEnabled(true);
}

void StandardPage::setEnabled(bool isEnabled)
{
    if (m_dynamicConfigWidget)
        m_dynamicConfigWidget->setEnabled(isEnabled);
    if (m_coreTree)
        m_coreTree->setEnabled(isEnabled);
}

void StandardPage::saveSettings()
{
    if (m_dynamicConfigWidget)
        m_dynamicConfigWidget->saveToCore();
}

void StandardPage::withSettings(const std::function<void()> &use)
{
    if (m_dynamicConfigWidget)
        m_dynamicConfigWidget->withFields(use);
    else
        use();
}

bool StandardPage::bringUp(int core)
{
    if (!m_dynamicConfigWidget || !m_coreTree)
        return false;
    for (int position = 0; CoreConfig *config = coreAt(position); ++position) {
        if (config->index != core)
            continue;
        if (m_dynamicConfigWidget->core() != config)
            m_coreTree->setCurrentItem(m_coreTree->topLevelItem(position));
        return m_dynamicConfigWidget->core() == config;
    }
    return false;
}

std::optional<TriggerChanges> StandardPage::setTrigger(int core, const TriggerChanges &changes)
{
    if (!bringUp(core))
        return {};
    return m_dynamicConfigWidget->setTrigger(changes);
}

void StandardPage::showFinding(int core, const TriggerFinding &finding)
{
    if (bringUp(core))
        m_dynamicConfigWidget->lead(finding);
}

void StandardPage::showDesign()
{
    if (!m_coreTree)
        return;
    const QSignalBlocker blocker(m_coreTree);
    m_coreTree->clear();
    for (const auto &core : m_design.cores()) {
        auto *item = new QTreeWidgetItem(m_coreTree, {tr("Core %1").arg(core->index)});
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(0, core->active != 0 ? Qt::Checked : Qt::Unchecked);
    }
    m_coreTree->setCurrentItem(m_coreTree->topLevelItem(0));
    showCore(0);
}

PageState StandardPage::state() const
{
    const CoreConfig *core = m_dynamicConfigWidget ? m_dynamicConfigWidget->core() : nullptr;
    return core ? PageState{.core = core->index, .rows = m_dynamicConfigWidget->rows()}
                : PageState();
}

/// Not as a click would: what the fields could take of another core must not reach it.
void StandardPage::setState(const PageState &state)
{
    for (int position = 0; const CoreConfig *core = coreAt(position); ++position) {
        if (core->index != state.core || !m_coreTree || !m_dynamicConfigWidget)
            continue;
        const QSignalBlocker blocker(m_coreTree);
        m_coreTree->setCurrentItem(m_coreTree->topLevelItem(position));
        showCore(position);
        m_dynamicConfigWidget->setRows(state.rows);
        return;
    }
}

void StandardPage::leaveDesign()
{
    if (m_dynamicConfigWidget)
        m_dynamicConfigWidget->setCore(nullptr);
}

void StandardPage::onWindowNumChanged()
{
    m_dynamicConfigWidget->saveToCore();
    Q_EMIT changed();
}

void StandardPage::onKoChanged(QTreeWidgetItem *item)
{
    {
        const QSignalBlocker blocker(m_coreTree);
        m_coreTree->setCurrentItem(item);
    }
    const int position = m_coreTree->indexOfTopLevelItem(item);
    if (CoreConfig *core = coreAt(position)) {
        // One click comes as two or three signals. Shown again, the page would put into the core
        // what its fields could take of it.
        if (m_dynamicConfigWidget->core() != core) {
            m_dynamicConfigWidget->saveToCore();
            showCore(position);
        }
        core->active = item->checkState(0) == Qt::Checked ? 1 : 0;
    }
    Q_EMIT changed();
}

void StandardPage::showCore(int position)
{
    CoreConfig *core = coreAt(position);
    if (!m_dynamicConfigWidget)
        return;
    m_dynamicConfigWidget->setCore(core);
    if (core)
        m_configDock->setWindowTitle(tr(" Core %1").arg(core->index));
}

CoreConfig *StandardPage::coreAt(int position) const
{
    const CoreList &cores = m_design.cores();
    return position >= 0 && size_t(position) < cores.size() ? cores[size_t(position)].get()
                                                            : nullptr;
}

} // namespace KEO
