#pragma once

#include "viewerpanes.h"

#include <wave/common/clockperiods.h>
#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>

#include <QPoint>
#include <QPointer>
#include <QWidget>

#include <optional>

class QAction;
class QHelpEvent;

namespace WaveMonitor {

class FindBar;
class Finder;
class GoTo;
class MeasureLine;
class OverviewStrip;

/// What stands below the panes of a viewer: the overview, the line of measurements and the find
/// bar. Brings to each what it shows, and tells the values below the pointer in a tool tip.
class ViewerStrips final : public QWidget, public Localized
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)

public:
    /// Panes and \a goTo are borrowed and outlive the strips; \a periods may go before.
    ViewerStrips(const ViewerPanes &panes, GoTo *goTo, quint64 domain, ClockPeriods *periods,
                 QWidget *viewer);
    ~ViewerStrips() override;

    /// Whose clock period counts; -1 means none.
    void setCore(int core);
    /// Opens the find bar. Borrowed.
    [[nodiscard]] QAction *findAction() const { return m_find; }
    /// The samples are others.
    void refreshRows();

    Q_INVOKABLE void handleEvents(Notification *e);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void connectPanes();
    void refreshLater();
    void refreshMarkers();
    void refreshView();
    void refreshReadings();
    void showValue(const QHelpEvent &event);
    [[nodiscard]] std::optional<int> sampleAt(const QPoint &position) const;

    const ViewerPanes m_panes;
    OverviewStrip *m_overview; ///< child
    MeasureLine *m_measure;    ///< child
    FindBar *m_findBar;        ///< child
    QAction *m_find;           ///< child
    Finder *m_finder;          ///< child
    QPointer<ClockPeriods> m_periods;
    QWidget *m_viewer;
    int m_core = -1;
    std::optional<QPoint> m_pointer;  ///< over the waves, viewport pixels
    std::optional<qsizetype> m_edges; ///< of the selected row between the markers
    QString m_row;                    ///< its name
    bool m_isStale = false;           ///< a refresh is on its way
};

} // namespace WaveMonitor
