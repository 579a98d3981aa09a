#pragma once

#include "configpage.h"

#include <QPointer>

class QDockWidget;
class QTreeWidget;
class QTreeWidgetItem;

namespace KEO {

struct CoreConfig;
class DynamicConfigWidget;
class StandardDesign;

/// The tree of standard cores, whose check marks say which of them run, and the capture and trigger
/// settings of the one that is current. Off during a run.
class StandardPage final : public ConfigPage
{
    Q_OBJECT

public:
    /// \a design is borrowed and outlives the page.
    explicit StandardPage(StandardDesign &design) : m_design(design) {}

    [[nodiscard]] QWidget *build(QWidget *programmer) override;
    [[nodiscard]] QString title() const override { return tr("Configuration"); }
    void reset() override;
    void setEnabled(bool isEnabled) override;
    void saveSettings() override;
    void withSettings(const std::function<void()> &use) override;
    std::optional<TriggerChanges> setTrigger(int core, const TriggerChanges &changes) override;
    void showFinding(int core, const TriggerFinding &finding) override;
    void showDesign() override;
    [[nodiscard]] PageState state() const override;
    void setState(const PageState &state) override;
    void leaveDesign() override;

public Q_SLOTS:
    void onWindowNumChanged();
    /// Shows the core of \a item and takes it into or out of the run.
    void onKoChanged(QTreeWidgetItem *item);

private:
    void buildTree();
    /// Shows the core at that position of the tree; a clear page if there is none.
    void showCore(int position);
    /// Makes the core with that number the current one; false if there is none.
    bool bringUp(int core);
    [[nodiscard]] CoreConfig *coreAt(int position) const; ///< null if there is none

    StandardDesign &m_design;
    // Parts of the tab, null until it is built and when its window took it along.
    QPointer<DynamicConfigWidget> m_dynamicConfigWidget;
    QPointer<QDockWidget> m_configDock;
    QPointer<QTreeWidget> m_coreTree;
};

} // namespace KEO
