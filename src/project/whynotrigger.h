#pragma once

#include "projectparts.h"

#include <QBitArray>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <vector>

class QPushButton;
class QTabWidget;
class QWidget;

namespace WaveMonitor {
class WaveMonitorWidget;
} // namespace WaveMonitor

namespace KEO {

class WaveMenuAction;
class WhyPanel;
struct TriggerFinding;

/// Why No Trigger: tells in a panel what the trigger of the page lacked in a window that shows, or,
/// of a core that has not captured anything yet, in those of the run before, whose samples it
/// keeps. When a run waits for long it offers itself below the waiting tip. Follows every edit of
/// the page.
class WhyNoTrigger final : public QObject
{
    Q_OBJECT

public:
    WhyNoTrigger(const ProjectParts &parts, QObject *parent);
    ~WhyNoTrigger() override;

    /// \a page stands in \a tabs of \a window. All may be null, and are borrowed.
    void enter(QWidget *page, QWidget *window, QTabWidget *tabs);
    void leave();
    /// The captures are of another design.
    void forget();
    bool eventFilter(QObject *watched, QEvent *event) override;

public Q_SLOTS:
    /// There are other windows, or other samples in one.
    void followWindows();
    /// Those that show are about to go.
    void keepWindows();

private:
    using Monitor = WaveMonitor::WaveMonitorWidget;

    struct Capture
    {
        int core = 0;
        QString title;
        QStringList names; ///< original ones, of the samples
        QList<QBitArray> samples;
        QPointer<Monitor> monitor; ///< as long as it shows
    };

    [[nodiscard]] std::vector<Capture> shownCaptures() const;
    void show();
    void gather();
    void showTitles();
    void choose(int capture);
    void refresh();
    void showSample(qsizetype sample);
    void showSetting(const TriggerFinding &finding);
    void followRun(bool isBusy);
    void showOffer();
    void hideOffer();
    void placeOffer();

    const ProjectParts m_parts;
    WaveMenuAction *m_action; // child
    QTimer *m_patience;       // child
    QPointer<QPushButton> m_offer;
    QPointer<WhyPanel> m_panel; // child of the window
    QPointer<QWidget> m_page;
    QPointer<QWidget> m_window;
    QPointer<QTabWidget> m_tabs;
    std::vector<Capture> m_captures; ///< of each core the last ones, in the order of the cores
    int m_current = 0;
};

} // namespace KEO
