#pragma once

#include "tabcomparison.h"

#include <design/datafilecheck.h>
#include <design/kindtraits.h>
#include <wave/common/clockperiods.h>
#include <wave/windowstate.h>

#include <QList>
#include <QPointer>
#include <QTabWidget>

#include <memory>
#include <optional>
#include <vector>

namespace WaveMonitor {
class WaveMonitorWidget;
} // namespace WaveMonitor

namespace KEO {

struct CapturedWindow;

/// The wave monitors of a project, one for each core and window, and the arrangement that the user
/// gave them, which outlives them from one capture to the next. Owns the monitors; a window that is
/// destroyed under them may take them along.
class WaveTabs final
{
public:
    enum class Layouts { Keep, Forget };

    explicit WaveTabs(LayoutKey layoutKey);
    ~WaveTabs();

    [[nodiscard]] bool isEmpty() const;
    /// What the user has told of the sample clocks, until another description is opened. Borrowed.
    [[nodiscard]] WaveMonitor::ClockPeriods &clockPeriods() { return m_clockPeriods; }
    /// In the order of creation. Borrowed.
    [[nodiscard]] QList<WaveMonitor::WaveMonitorWidget *> monitors() const;

    /// Takes over what is being typed in a viewer: before it goes or is saved.
    void finishEditing() const;
    /// The wave tab in front, or null.
    [[nodiscard]] WaveMonitor::WaveMonitorWidget *current() const;

    /// The project is put into \a window, with its page in front of the waves in \a tabs. Each may
    /// be null, and all are borrowed.
    void enterWindow(QWidget *window, QTabWidget *tabs, QWidget *page);
    /// Gives back the tabs, which may be null.
    QTabWidget *leaveWindow();
    [[nodiscard]] bool isInWindow() const { return m_isInWindow; }

    /// Shows \a captured as the user last arranged that window: in a new tab, which comes to the
    /// front if the page is there, and lets go of it for the window that was in front before the
    /// last clear, unless the user has chosen another by then; or, after \a rounds of an Auto run,
    /// as new samples of the first one, which an Auto run has alone. -1 stands for no Auto run.
    void show(const CapturedWindow &captured, int rounds);
    /// Shows a saved window in a new tab behind the others; core -1 means none.
    void showSaved(WindowPlace place, const QString &title, WaveMonitor::WindowContents contents);
    /// The arrangement of each window that shows or that one is kept for.
    [[nodiscard]] std::vector<WaveMonitor::WindowState> layouts() const;
    /// Arrangements for windows that come, each until there is a newer one of its window.
    void offerLayouts(const std::vector<WaveMonitor::WindowState> &layouts);
    /// Takes all tabs away. Kept layouts replace the older ones of their windows, or all older
    /// ones, see LayoutKey.
    void clear(Layouts layouts);

private:
    /// A new monitor with the captured window. Borrowed.
    WaveMonitor::WaveMonitorWidget *add(const CapturedWindow &captured);
    [[nodiscard]] const WaveMonitor::WindowState *layoutOf(int core, int window) const;
    /// The new tab of \a wave comes to the front if that is its place.
    void bringUp(WaveMonitor::WaveMonitorWidget &wave, QTabWidget &tabs);
    /// The tab in front gets the keyboard if nothing else uses it.
    void giveKeys();
    void keepLayout(std::unique_ptr<WaveMonitor::WindowState> state);
    [[nodiscard]] bool areOfOneWindow(const WaveMonitor::WindowState &a,
                                      const WaveMonitor::WindowState &b) const;

    WaveMonitor::ClockPeriods m_clockPeriods;
    QList<QPointer<WaveMonitor::WaveMonitorWidget>> m_waveMonitors;
    QPointer<QWidget> m_window;
    QPointer<QTabWidget> m_tabs;
    QPointer<QWidget> m_page;
    bool m_isInWindow = false;
    QMetaObject::Connection m_inFront;  ///< of the tabs, while in the window
    std::optional<WindowPlace> m_front; ///< what was in front, until it is again
    QPointer<QWidget> m_broughtUp;      ///< what stands in for it
    LayoutKey m_layoutKey;
    TabComparison m_comparison;
    std::vector<std::unique_ptr<WaveMonitor::WindowState>> m_layoutCache;
    std::vector<std::unique_ptr<WaveMonitor::WindowState>> m_offeredLayouts;
};

} // namespace KEO
