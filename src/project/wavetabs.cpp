#include "wavetabs.h"

#include <design/capturedisplay.h>
#include <wave/wavemonitorwidget.h>
#include <wave_data/windowcontents.h>

#include <algorithm>
#include <utility>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;
using WaveMonitor::WindowContents;
using WaveMonitor::WindowState;

namespace {

/// Each viewer takes this many numbers, so that its parts stay apart from those of the next.
constexpr quint64 kDomainStep = 16;

} // namespace

WaveTabs::WaveTabs(LayoutKey layoutKey)
    : m_layoutKey(layoutKey), m_comparison(layoutKey, [this] { return monitors(); })
{
}

WaveTabs::~WaveTabs()
{
    QObject::disconnect(m_inFront);
    for (const auto &monitor : m_waveMonitors)
        delete TabComparison::pageOf(monitor);
}

bool WaveTabs::isEmpty() const
{
    return monitors().isEmpty();
}

QList<WaveMonitorWidget *> WaveTabs::monitors() const
{
    QList<WaveMonitorWidget *> living;
    for (const auto &monitor : m_waveMonitors) {
        if (monitor)
            living.append(monitor);
    }
    return living;
}

void WaveTabs::finishEditing() const
{
    for (WaveMonitorWidget *monitor : monitors())
        monitor->finishEditing();
}

WaveMonitorWidget *WaveTabs::current() const
{
    if (!m_tabs || !m_tabs->currentWidget())
        return nullptr;
    const QList<WaveMonitorWidget *> all = monitors();
    const auto front = std::ranges::find_if(all, [this](WaveMonitorWidget *monitor) {
        return TabComparison::pageOf(monitor) == m_tabs->currentWidget();
    });
    return front == all.end() ? nullptr : *front;
}

void WaveTabs::enterWindow(QWidget *window, QTabWidget *tabs, QWidget *page)
{
    m_window = window;
    m_tabs = tabs;
    m_comparison.setTabs(tabs);
    m_page = page;
    m_isInWindow = true;
    if (tabs)
        m_inFront =
            QObject::connect(tabs, &QTabWidget::currentChanged, tabs, [this] { giveKeys(); });
}

QTabWidget *WaveTabs::leaveWindow()
{
    m_isInWindow = false;
    QObject::disconnect(m_inFront);
    m_comparison.setTabs(nullptr);
    return std::exchange(m_tabs, nullptr);
}

void WaveTabs::show(const CapturedWindow &captured, int rounds)
{
    const bool isNextRound = rounds >= 1 && !isEmpty();
    WaveMonitorWidget *wave = isNextRound ? monitors().first() : add(captured);
    if (isNextRound) {
        QList<QBitArray> samples;
        for (const WaveMonitor::SignalElement &element : captured.elements)
            samples.append(element.data);
        m_comparison.keepAll();
        wave->updateData(samples);
    }
    m_comparison.follow(wave);
    if (rounds != -1)
        wave->setAutorunCounter(rounds);
    QTabWidget *tabs = m_tabs;
    if (isNextRound || !tabs)
        return;
    bringUp(*wave, *tabs); // may see this gone
}

void WaveTabs::bringUp(WaveMonitorWidget &wave, QTabWidget &tabs)
{
    const QWidget *before = tabs.currentWidget();
    QWidget *page = TabComparison::pageOf(&wave);
    tabs.addTab(page, wave.windowTitle());
    const bool wasInFront =
        m_front && m_front->core == wave.coreNumber() && m_front->window == wave.windowNumber();
    const bool comesUp = before == m_page || (wasInFront && before == m_broughtUp);
    if (wasInFront)
        m_front.reset();
    if (!comesUp)
        return;
    m_broughtUp = page;
    tabs.setCurrentWidget(page);
}

/// The waiting tip hands the keyboard to the window itself, where no key of a viewer works.
void WaveTabs::giveKeys()
{
    WaveMonitorWidget *front = current();
    if (!front)
        return;
    const QWidget *window = front->window();
    if (!window->focusWidget() || window->focusWidget() == window)
        front->focusWaves();
}

WaveMonitorWidget *WaveTabs::add(const CapturedWindow &captured)
{
    const WindowState *layout = layoutOf(captured.core.index, captured.window);
    const quint64 domain = quint64(m_waveMonitors.size()) * kDomainStep;
    auto *monitor = new WaveMonitorWidget(domain, nullptr, layout);
    monitor->setParent(m_window); // not before: what it does with the focus is its own affair then
    m_waveMonitors.append(monitor);
    monitor->showStrips(&m_clockPeriods);
    addCapturedRows(*monitor, captured.signals, captured.elements);
    monitor->setTriggerPosition(captured.core.triggerSample);
    monitor->setTitle(captured.window, captured.core.index);
    monitor->restoreState(layout);
    if (!layout)
        monitor->showTrigger();
    m_comparison.offer(monitor);
    return monitor;
}

void WaveTabs::showSaved(WindowPlace place, const QString &title, WindowContents contents)
{
    // Here the window number counts, so tabs of different cores may share a domain.
    auto *monitor = new WaveMonitorWidget(quint64(place.window) * kDomainStep, nullptr);
    monitor->setParent(m_window);
    m_waveMonitors.append(monitor);
    monitor->showStrips(&m_clockPeriods);
    monitor->setTitle(place.window, place.core);
    monitor->loadWindow(std::move(contents));
    monitor->showTrigger();
    m_comparison.offer(monitor);
    if (m_tabs)
        m_tabs->insertTab(int(m_waveMonitors.size()), monitor, title);
}

std::vector<WindowState> WaveTabs::layouts() const
{
    std::vector<WindowState> all;
    const auto add = [&](const WindowState &state) {
        if (std::ranges::none_of(
                all, [&](const WindowState &other) { return areOfOneWindow(state, other); }))
            all.push_back(state);
    };
    for (const WaveMonitorWidget *monitor : monitors())
        add(*monitor->saveState());
    for (const auto *kept : {&m_layoutCache, &m_offeredLayouts}) {
        for (const auto &state : *kept)
            add(*state);
    }
    return all;
}

void WaveTabs::offerLayouts(const std::vector<WindowState> &layouts)
{
    m_offeredLayouts.clear();
    for (const WindowState &layout : layouts)
        m_offeredLayouts.push_back(std::make_unique<WindowState>(layout));
}

void WaveTabs::clear(Layouts layouts)
{
    if (layouts == Layouts::Forget)
        m_offeredLayouts.clear();
    // With one core and one window there is nothing to keep for a capture after the next.
    if (layouts == Layouts::Forget || m_layoutKey == LayoutKey::Window)
        m_layoutCache.clear();
    m_front.reset();
    if (const WaveMonitorWidget *front = current(); front && layouts == Layouts::Keep)
        m_front = WindowPlace{front->coreNumber(), front->windowNumber()};
    if (layouts == Layouts::Forget)
        m_comparison.forget();
    else
        m_comparison.keepAll();
    // Out of the list first: a tab that goes lets another one come up, with events of its own.
    for (const auto &monitor : std::exchange(m_waveMonitors, {})) {
        if (!monitor)
            continue;
        if (layouts == Layouts::Keep)
            keepLayout(monitor->saveState());
        QWidget *page = TabComparison::pageOf(monitor);
        if (m_tabs)
            m_tabs->removeTab(m_tabs->indexOf(page));
        delete page; // not later: the next monitors take over its domain
    }
}

const WindowState *WaveTabs::layoutOf(int core, int window) const
{
    WindowState place;
    place.core = core;
    place.window = window;
    for (const auto *kept : {&m_layoutCache, &m_offeredLayouts}) {
        const auto found = std::ranges::find_if(
            *kept, [&](const auto &state) { return areOfOneWindow(*state, place); });
        if (found != kept->end())
            return found->get();
    }
    return nullptr;
}

bool WaveTabs::areOfOneWindow(const WindowState &a, const WindowState &b) const
{
    return a.window == b.window && (m_layoutKey == LayoutKey::Window || a.core == b.core);
}

void WaveTabs::keepLayout(std::unique_ptr<WindowState> state)
{
    std::erase_if(m_offeredLayouts, [&](const auto &old) { return areOfOneWindow(*old, *state); });
    if (m_layoutKey == LayoutKey::CoreAndWindow) {
        std::erase_if(m_layoutCache, [&](const auto &old) {
            return old->core == state->core && old->window == state->window;
        });
    }
    m_layoutCache.push_back(std::move(state));
}

} // namespace KEO
