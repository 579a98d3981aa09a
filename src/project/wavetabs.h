#pragma once

#include <config/coreconfig.h>
#include <wave/windowstate.h>
#include <wave_data/signalelement.h>

#include <QList>
#include <QPointer>

#include <memory>
#include <vector>

class QTabWidget;
class QWidget;

namespace WaveMonitor {
class WaveMonitorWidget;
class WindowContents;
} // namespace WaveMonitor

namespace KEO {

/// One capture window on its way to the viewer.
struct CapturedWindow
{
    int core = 0;               ///< CoreConfig::index; -1 for none
    int window = 0;             ///< number within the core
    int triggerPosition = 0;    ///< sample
    QList<SignalEntry> signals; ///< rows to make; buses take one element for each member
    QList<WaveMonitor::SignalElement> elements; ///< in flat order of `signals`
};

/// Which window an arrangement is for: that of one core and window number, which it keeps until a
/// newer one comes; or any with the window number, and no longer than until the next capture.
enum class LayoutKey { CoreAndWindow, Window };

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
    /// In the order of creation. Borrowed.
    [[nodiscard]] QList<WaveMonitor::WaveMonitorWidget *> monitors() const;

    /// Makes a monitor below \a parent that shows \a captured as the user last arranged that
    /// window. Borrowed.
    WaveMonitor::WaveMonitorWidget *add(const CapturedWindow &captured, QWidget *parent);
    /// Makes a monitor below \a parent that shows a saved window, with the core and the window in
    /// its title; core -1 means none. Borrowed.
    WaveMonitor::WaveMonitorWidget *add(int core, int window, WaveMonitor::WindowContents contents,
                                        QWidget *parent);
    /// New samples for the first monitor; an Auto run has only this one.
    void updateFirst(const QList<WaveMonitor::SignalElement> &elements, int rounds);
    /// Takes all monitors out of \a tabs, which may be null, and deletes them. Kept layouts replace
    /// the older ones of their windows, or all older ones, see LayoutKey.
    void clear(QTabWidget *tabs, Layouts layouts);

private:
    [[nodiscard]] const WaveMonitor::WindowState *layoutOf(int core, int window) const;
    void keepLayout(std::unique_ptr<WaveMonitor::WindowState> state);

    QList<QPointer<WaveMonitor::WaveMonitorWidget>> m_waveMonitors;
    LayoutKey m_layoutKey;
    std::vector<std::unique_ptr<WaveMonitor::WindowState>> m_layoutCache;
};

} // namespace KEO
