#include "tabcomparison.h"

#include <wave/wavemonitorwidget.h>
#include <wave_data/windowcontents.h>

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QSignalBlocker>
#include <QTabWidget>

#include <algorithm>
#include <utility>

namespace KEO {

using WaveMonitor::ComparedPage;
using WaveMonitor::WaveMonitorWidget;
using WaveMonitor::WindowSamples;

namespace {

ComparedPage *comparedPage(WaveMonitorWidget *monitor)
{
    for (QWidget *widget = monitor; widget; widget = widget->parentWidget()) {
        if (auto *page = qobject_cast<ComparedPage *>(widget))
            return page->upper() == monitor ? page : nullptr;
    }
    return nullptr;
}

WindowSamples samplesOf(const WaveMonitorWidget &monitor)
{
    return {monitor.signalMap(), monitor.contents().triggerPosition()};
}

/// The keyboard stays where it was in \a window while parents change. A menu that goes may have
/// left no window active.
class FocusKept final
{
public:
    explicit FocusKept(const QWidget *window) : m_focus(window->focusWidget()) {}
    FocusKept(const FocusKept &) = delete;
    FocusKept &operator=(const FocusKept &) = delete;
    ~FocusKept()
    {
        if (m_focus)
            m_focus->setFocus();
    }

private:
    QPointer<QWidget> m_focus;
};

} // namespace

TabComparison::TabComparison(LayoutKey layoutKey, std::function<QList<Monitor *>()> monitors)
    : m_layoutKey(layoutKey), m_monitors(std::move(monitors))
{
}

QWidget *TabComparison::pageOf(Monitor *monitor)
{
    if (ComparedPage *page = comparedPage(monitor))
        return page;
    return monitor;
}

void TabComparison::offer(Monitor *monitor)
{
    auto *menu = new QMenu(tr("Compare with"), monitor);
    menu->menuAction()->setObjectName(QStringLiteral("compareWith"));
    connect(menu, &QMenu::aboutToShow, monitor,
            [this, menu, monitor] { fillMenu(*menu, monitor); });
    monitor->addWaveAction(menu->menuAction());
    auto *key = new QAction(tr("Compare with..."), monitor);
    key->setObjectName(QStringLiteral("compareWithKey"));
    key->setShortcut(Qt::CTRL | Qt::Key_D);
    key->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    monitor->addAction(key);
    connect(key, &QAction::triggered, monitor, [this, monitor] {
        auto *shown = new QMenu(monitor);
        shown->setAttribute(Qt::WA_DeleteOnClose);
        fillMenu(*shown, monitor);
        shown->popup(monitor->mapToGlobal(monitor->rect().center()));
    });
}

void TabComparison::fillMenu(QMenu &menu, Monitor *monitor)
{
    menu.clear();
    const ComparedPage *page = comparedPage(monitor);
    if (lastOf(*monitor))
        addChoice(menu, tr("Last Capture"), page && isFollowing(*monitor),
                  [this, monitor] { compareWithLast(monitor); });
    for (Monitor *other : m_monitors()) {
        if (other == monitor || other->coreNumber() != monitor->coreNumber())
            continue;
        const QPointer<Monitor> still = other;
        addChoice(menu, other->windowTitle(), page && page->otherTitle() == other->windowTitle(),
                  [this, monitor, still] { compareWithOther(monitor, still); });
    }
    if (menu.isEmpty()) {
        menu.addAction(tr("No other window of this core"))->setEnabled(false);
    } else if (page) {
        menu.addSeparator();
        addChoice(menu, tr("Nothing"), false, [this, monitor] { close(monitor); });
    }
}

/// The choice is made once the menu is gone, since it moves the viewer that shows the menu.
void TabComparison::addChoice(QMenu &menu, const QString &text, bool isChosen,
                              const std::function<void()> &choose)
{
    QAction *action = menu.addAction(text);
    action->setCheckable(true);
    action->setChecked(isChosen);
    connect(action, &QAction::triggered, menu.parentWidget(), choose, Qt::QueuedConnection);
}

void TabComparison::compareWithLast(Monitor *monitor)
{
    const LastCapture *last = lastOf(*monitor);
    if (!last)
        return;
    unfollow(*monitor);
    m_following.push_back({monitor->coreNumber(), monitor->windowNumber()});
    open(monitor, tr("Last capture"), last->samples);
}

void TabComparison::compareWithOther(Monitor *monitor, Monitor *other)
{
    if (!other)
        return;
    unfollow(*monitor);
    open(monitor, other->windowTitle(), samplesOf(*other));
}

void TabComparison::open(Monitor *monitor, const QString &title, const WindowSamples &other)
{
    const FocusKept focus(monitor->window());
    if (!comparedPage(monitor)) {
        exchange(monitor, [this, monitor, parent = monitor->parentWidget()] {
            auto *page = new ComparedPage(monitor, parent);
            connect(page, &ComparedPage::closeAsked, this, [this, monitor] { close(monitor); });
            return page;
        });
    }
    comparedPage(monitor)->compareWith(title, other);
}

void TabComparison::close(Monitor *monitor)
{
    unfollow(*monitor);
    ComparedPage *page = comparedPage(monitor);
    if (!page)
        return;
    const FocusKept focus(monitor->window());
    exchange(page, [page, parent = page->parentWidget()] {
        WaveMonitorWidget *upper = page->takeUpper();
        upper->setParent(parent);
        page->deleteLater();
        return upper;
    });
}

/// Puts what \a replace makes of \a shown into its place in the tabs, if it has one.
void TabComparison::exchange(QWidget *shown, const std::function<QWidget *()> &replace)
{
    const int place = m_tabs ? m_tabs->indexOf(shown) : -1;
    if (place == -1) {
        replace();
        return;
    }
    const QSignalBlocker blocker(m_tabs); // the same tab is in front all the time
    const bool isInFront = m_tabs->currentIndex() == place;
    const QString title = m_tabs->tabText(place);
    m_tabs->removeTab(place);
    m_tabs->insertTab(place, replace(), title);
    if (isInFront)
        m_tabs->setCurrentIndex(place);
}

void TabComparison::keepAll()
{
    const QList<Monitor *> monitors = m_monitors();
    if (monitors.isEmpty())
        return; // a run without a capture
    m_last.clear();
    for (const Monitor *monitor : monitors)
        m_last.push_back({{monitor->coreNumber(), monitor->windowNumber()}, samplesOf(*monitor)});
}

void TabComparison::follow(Monitor *monitor)
{
    if (isFollowing(*monitor) && lastOf(*monitor))
        compareWithLast(monitor);
}

void TabComparison::forget()
{
    m_last.clear();
    m_following.clear();
}

bool TabComparison::isSame(Place place, const Monitor &monitor) const
{
    return place.window == monitor.windowNumber() &&
           (m_layoutKey == LayoutKey::Window || place.core == monitor.coreNumber());
}

const TabComparison::LastCapture *TabComparison::lastOf(const Monitor &monitor) const
{
    const auto found = std::ranges::find_if(
        m_last, [&](const LastCapture &last) { return isSame(last.place, monitor); });
    return found == m_last.end() ? nullptr : &*found;
}

bool TabComparison::isFollowing(const Monitor &monitor) const
{
    return std::ranges::any_of(m_following, [&](Place place) { return isSame(place, monitor); });
}

void TabComparison::unfollow(const Monitor &monitor)
{
    std::erase_if(m_following, [&](Place place) { return isSame(place, monitor); });
}

} // namespace KEO
