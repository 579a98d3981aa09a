#pragma once

#include <design/kindtraits.h>
#include <wave/compare/comparedpage.h>

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>
#include <vector>

class QMenu;
class QTabWidget;
class QWidget;

namespace WaveMonitor {
class WaveMonitorWidget;
} // namespace WaveMonitor

namespace KEO {

/// Shows another window of the same core below the one of a tab: one that is open in another tab,
/// or the last capture, which is the one before. Of those it keeps one, whose samples are shared;
/// a tab that shows it below does so again after the next capture. Nothing of this is part of the
/// capture: the monitor of a tab is what is saved and exported.
class TabComparison final : public QObject
{
    Q_OBJECT

public:
    using Monitor = WaveMonitor::WaveMonitorWidget;

    /// \a monitors gives those that are open. \a layoutKey tells which windows are the same one.
    TabComparison(LayoutKey layoutKey, std::function<QList<Monitor *>()> monitors);

    /// The window's tabs, or null.
    void setTabs(QTabWidget *tabs) { m_tabs = tabs; }
    /// What stands in the tabs for \a monitor: itself, or the page that has it.
    [[nodiscard]] static QWidget *pageOf(Monitor *monitor);

    /// Puts the choice into the context menu of a new monitor.
    void offer(Monitor *monitor);
    /// The monitors' captures become the last ones, in place of older ones, before new samples
    /// come.
    void keepAll();
    /// New samples are there; shows the last ones below if that was chosen before.
    void follow(Monitor *monitor);
    /// The captures to come have nothing to do with those that were.
    void forget();

private:
    struct Place
    {
        int core = 0;
        int window = 0;
    };
    struct LastCapture
    {
        Place place;
        WaveMonitor::WindowSamples samples;
    };

    void fillMenu(QMenu &menu, Monitor *monitor);
    void addChoice(QMenu &menu, const QString &text, bool isChosen,
                   const std::function<void()> &choose);
    void compareWithLast(Monitor *monitor);
    void compareWithOther(Monitor *monitor, Monitor *other);
    void open(Monitor *monitor, const QString &title, const WaveMonitor::WindowSamples &other);
    void close(Monitor *monitor);
    void exchange(QWidget *shown, const std::function<QWidget *()> &replace);
    [[nodiscard]] const LastCapture *lastOf(const Monitor &monitor) const;
    [[nodiscard]] bool isSame(Place place, const Monitor &monitor) const;
    [[nodiscard]] bool isFollowing(const Monitor &monitor) const;
    void unfollow(const Monitor &monitor);

    const LayoutKey m_layoutKey;
    const std::function<QList<Monitor *>()> m_monitors;
    QPointer<QTabWidget> m_tabs;
    std::vector<LastCapture> m_last;
    std::vector<Place> m_following; ///< windows with the last capture below
};

} // namespace KEO
