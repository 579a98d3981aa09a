#include "wavetabs.h"

#include <design/capturedisplay.h>
#include <wave/wavemonitorwidget.h>
#include <wave_data/windowcontents.h>

#include <QTabWidget>

#include <algorithm>
#include <utility>

namespace KEO {

using WaveMonitor::SignalElement;
using WaveMonitor::WaveMonitorWidget;
using WaveMonitor::WindowContents;
using WaveMonitor::WindowState;

namespace {

/// Each viewer takes this many numbers, so that its parts stay apart from those of the next.
constexpr quint64 kDomainStep = 16;

} // namespace

WaveTabs::WaveTabs(LayoutKey layoutKey) : m_layoutKey(layoutKey)
{
}

WaveTabs::~WaveTabs()
{
    for (const auto &monitor : m_waveMonitors)
        delete monitor;
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

WaveMonitorWidget *WaveTabs::add(const CapturedWindow &captured, QWidget *parent)
{
    const WindowState *layout = layoutOf(captured.core, captured.window);
    const quint64 domain = quint64(m_waveMonitors.size()) * kDomainStep;
    auto *monitor = new WaveMonitorWidget(domain, parent, layout);
    m_waveMonitors.append(monitor);
    addCapturedRows(*monitor, captured.signals, captured.elements);
    monitor->setTriggerPosition(captured.triggerPosition);
    monitor->setTitle(captured.window, captured.core);
    monitor->restoreState(layout);
    return monitor;
}

WaveMonitorWidget *WaveTabs::add(int core, int window, WindowContents contents, QWidget *parent)
{
    // Here the window number counts, so tabs of different cores may share a domain.
    auto *monitor = new WaveMonitorWidget(quint64(window) * kDomainStep, parent);
    m_waveMonitors.append(monitor);
    monitor->setTitle(window, core);
    monitor->loadWindow(std::move(contents));
    return monitor;
}

void WaveTabs::updateFirst(const QList<SignalElement> &elements, int rounds)
{
    QList<QBitArray> samples;
    samples.reserve(elements.size());
    for (const SignalElement &element : elements)
        samples.append(element.data);
    WaveMonitorWidget *first = monitors().first();
    first->updateData(samples);
    first->setAutorunCounter(rounds);
}

void WaveTabs::clear(QTabWidget *tabs, Layouts layouts)
{
    // With one core and one window there is nothing to keep for a capture after the next.
    if (layouts == Layouts::Forget || m_layoutKey == LayoutKey::Window)
        m_layoutCache.clear();
    // Out of the list first: a tab that goes lets another one come up, with events of its own.
    for (const auto &monitor : std::exchange(m_waveMonitors, {})) {
        if (!monitor)
            continue;
        if (layouts == Layouts::Keep)
            keepLayout(monitor->saveState());
        if (tabs)
            tabs->removeTab(tabs->indexOf(monitor));
        delete monitor; // not later: the next monitors take over its domain
    }
}

const WindowState *WaveTabs::layoutOf(int core, int window) const
{
    const auto found = std::ranges::find_if(m_layoutCache, [=, this](const auto &state) {
        return state->window == window && (m_layoutKey == LayoutKey::Window || state->core == core);
    });
    return found == m_layoutCache.end() ? nullptr : found->get();
}

void WaveTabs::keepLayout(std::unique_ptr<WindowState> state)
{
    if (m_layoutKey == LayoutKey::CoreAndWindow) {
        std::erase_if(m_layoutCache, [&](const auto &old) {
            return old->core == state->core && old->window == state->window;
        });
    }
    m_layoutCache.push_back(std::move(state));
}

} // namespace KEO
