#pragma once

#include "viewerpanes.h"

#include <wave/common/localized.h>
#include <wave/common/notificationcenter.h>
#include <wave_data/aidrow.h>
#include <wave_data/samplesearch.h>

#include <QList>
#include <QObject>

#include <optional>

class QAction;

namespace WaveMonitor {

class AidBar;
class AidNames;
class AidTracks;
class GoTo;

/// Rows that somebody lays beside those of the window, above them: brings names, traces and the bar
/// into the panes of a viewer as long as there are such rows, keeps them in line with tree and
/// waves, and has the ways from hit to hit.
class AidPane final : public QObject, public Localized
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)

public:
    /// All are borrowed and outlive this object; tree and waves are each the last in a column of
    /// widgets.
    AidPane(const ViewerPanes &panes, GoTo *goTo, quint64 domain, QWidget *viewer);
    ~AidPane() override;

    void show(const AidRows &rows);
    void hide();
    /// Previous and next hit. Borrowed.
    [[nodiscard]] QList<QAction *> actions() const { return {m_previous, m_next}; }

    Q_INVOKABLE void handleEvents(Notification *e);
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Direction { Back, Forth };

    QAction *newAction(const QString &text, const QKeySequence &key, const char *name);
    void build();
    void go(Direction direction);
    [[nodiscard]] const AidRow *hitRow() const;
    void fitHeight();
    void dragHeight(int pixels);
    void followView();
    void takeMarkers(const QObject &ruler);
    void followMarkers();
    void tell();
    [[nodiscard]] QString hitText() const;

    const ViewerPanes m_panes;
    GoTo *m_goTo;
    QAction *m_previous; ///< child
    QAction *m_next;     ///< child
    // Children of the panes' columns, null until there are rows for the first time.
    AidNames *m_names = nullptr;
    AidTracks *m_tracks = nullptr;
    AidBar *m_bar = nullptr;
    AidRows m_rows;
    QList<int> m_markers; ///< samples, as the waves show them
    bool m_isShown = false;
    SampleHits m_held;       ///< samples that are hits
    SampleHits m_beginnings; ///< of hits: what holds for long is one
    qsizetype m_hits = 0;
    std::optional<int> m_current; ///< where the last way from hit to hit led
    QString m_round;              ///< said when that led past an end
    int m_wanted = 0;             ///< pixels for the traces as the user dragged them; 0: as fits
};

} // namespace WaveMonitor
