#pragma once

#include "windowstate.h"

#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>
#include <wave_data/signalelement.h>

#include <QBitArray>
#include <QList>
#include <QMap>
#include <QSet>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <optional>

class QDomDocument;
class QDomElement;
class QAction;
class QLabel;
class QSplitter;

namespace WaveMonitor {

class AidPane;
struct AidRows;
class ClockPeriods;
class GoTo;
class MarkerActions;
class RulerView;
class SignalTreeModel;
class SignalTreeView;
class ViewerStrips;
class WaveOverlay;
class WaveView;
class WindowContents;
class ZoomHistory;

/// The whole viewer of one capture window: signal tree, wave view and ruler side by side, with
/// equal rows. The only class of the viewer that a project uses. All data comes in through the
/// operations below, and the viewer shares the samples it is given; nothing of it fails loudly.
/// GUI thread.
class WaveMonitorWidget final : public QWidget, public Localized
{
    Q_OBJECT
    Q_PROPERTY(qreal zoomRate READ zoomRate)
    Q_PROPERTY(quint64 domain READ domain)

public:
    /// \a domain is unique among the viewers of the program. \a saved is only looked at for the
    /// width of the tree; restoreState applies it.
    WaveMonitorWidget(quint64 domain, QWidget *parent, const WindowState *saved = nullptr);
    ~WaveMonitorWidget() override;

    /// Core -1 means none.
    void setTitle(int window, int core);
    [[nodiscard]] int coreNumber() const { return m_core; }
    [[nodiscard]] int windowNumber() const { return m_window; }

    /// Adds overview, measurements and find bar below the waves. \a periods is borrowed and may go
    /// first.
    void showStrips(ClockPeriods *periods);
    /// The keyboard goes to the waves.
    void focusWaves();
    /// Takes over what is being typed here, a name or a clock period, as leaving the field would.
    void finishEditing();
    /// Opens the find bar; null without one. Borrowed.
    [[nodiscard]] QAction *findAction() const;

    /// Adds a row.
    void addSignal(const SignalElement &signal);
    void addBus(const BusElement &bus);
    /// Sample index; also the shown sample until there is a marker.
    void setTriggerPosition(int sample);
    /// New samples for the signals with ids 0, 1, ...; nothing happens unless there are as many
    /// arrays as signals. Rows, zoom and markers stay.
    void updateData(const QList<QBitArray> &samples);
    /// By id.
    [[nodiscard]] QMap<int, SignalElement> signalMap() const;

    /// Replaces everything by a saved element `Window` (see WindowContents).
    void loadWindow(const QDomElement &window);
    /// The same from contents that have been read already.
    void loadWindow(WindowContents contents);
    /// A new element `Window`, attached to nothing.
    [[nodiscard]] QDomElement saveWindow(QDomDocument &document) const;
    /// What saveWindow saves, for writers that need no tree. Borrowed; changes with the viewer.
    [[nodiscard]] const WindowContents &contents() const;

    /// Null does nothing.
    void restoreState(const WindowState *state);
    [[nodiscard]] std::unique_ptr<WindowState> saveState() const;

    // For a viewer that stands beside another one.

    /// What of the waves shows: pixels from sample 0 to the left edge, at the zoom. Left of sample
    /// 0 they are negative.
    struct Span
    {
        qreal zoomRate = 1.0;
        int left = 0;
        bool operator==(const Span &other) const = default;
    };
    [[nodiscard]] Span shownSpan() const;
    /// As far as the viewer can scroll.
    void showSpan(const Span &span);
    /// The samples that show, the last one not included; in part outside if there is room there.
    [[nodiscard]] qreal firstShownSample() const;
    [[nodiscard]] qreal lastShownSample() const;
    /// Brings a sample into the middle, and the active marker to it if there is one.
    void showSample(int sample);
    /// Empty space, in samples, before the first and after the last one, to scroll into.
    void setRoom(int before, int after);
    /// The sample whose values stand beside the names, until a marker moves.
    void showValuesAt(int sample);
    /// Width of the tree's pane; 0 until it is laid out.
    [[nodiscard]] int treeWidth() const;
    void setTreeWidth(int width);
    /// The rows of these signals, and buses of them, bear a sign that they differ. By id.
    void setMarkedSignals(const QSet<int> &ids);
    /// Painted over the waves; null takes it away. Borrowed.
    void setOverlay(const WaveOverlay *overlay);
    /// Paints the overlay anew.
    void updateOverlay();
    /// Entries for the context menu of the waves, behind the viewer's own. Borrowed
    /// until they are removed.
    void addWaveAction(QAction *action);
    void removeWaveAction(QAction *action);

    /// The same for the context menu of the names.
    void addNameAction(QAction *action);

    /// Rows and a sample that the user means.
    struct Picked
    {
        QList<int> ids;   ///< of the signals in the rows, in row order
        QStringList rows; ///< as shown: name and value at the sample
        int sample = 0;   ///< within the samples
    };
    /// While the context menu of the waves is up, what it came up over, and all selected rows if
    /// the row there is one of them; else the selected rows and the sample whose values show.
    [[nodiscard]] Picked picked() const;

    /// Lays rows of somebody's making beside those of the window, in place of earlier ones. They
    /// are no part of the contents.
    void showAidRows(const AidRows &rows);
    void hideAidRows();
    /// The ways to the previous and the next hit of such rows. Borrowed.
    [[nodiscard]] QList<QAction *> hitActions() const;

    /// Shows how many captures an autorun has made.
    void setAutorunCounter(int count);

    [[nodiscard]] qreal zoomRate() const { return m_zoomRate; }
    /// Bounded to what the viewer can show.
    void setZoom(double rate);

    Q_INVOKABLE void handleEvents(Notification *e);

    /// Swallows key presses of an object that the widget is made to filter.
    bool eventFilter(QObject *watched, QEvent *event) override;

public Q_SLOTS:
    void zoomIn();
    void zoomOut();
    /// The longest signal fills the wave view. If it is too long for that, the trigger is in the
    /// middle.
    void zoomFit();
    /// Brings the trigger to the middle. Holds over changes of size until the view is moved.
    void showTrigger();

Q_SIGNALS:
    void treeWidthChanged();
    /// It can scroll elsewhere than before.
    void scrollRangeChanged();

protected:
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    [[nodiscard]] ScrollPlace scrollPlace() const;
    void scrollToKept();
    void layOutPanes();
    void joinScrollBars();
    void followDataLength();
    void showLoaded();

    SignalTreeModel *m_model;         ///< child, the data source of the wave view
    SignalTreeView *m_treeView;       ///< child
    WaveView *m_waveView;             ///< child
    RulerView *m_rulerView;           ///< child
    QLabel *m_counterLabel;           ///< child
    GoTo *m_goTo;                     ///< child
    AidPane *m_aidPane;               ///< child
    ViewerStrips *m_strips = nullptr; ///< child, null until they are shown
    QSplitter *m_splitter;            ///< child; tree and waves
    std::unique_ptr<MarkerActions> m_markerActions;
    std::unique_ptr<ZoomHistory> m_zoomHistory;
    qreal m_zoomRate = 1.0;
    int m_core = 0;
    int m_window = 0;
    std::optional<ScrollPlace> m_keptPlace; ///< until the viewer has been seen
};

} // namespace WaveMonitor
