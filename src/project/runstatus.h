#pragma once

#include <QObject>
#include <QString>
#include <QTime>

namespace KEO {

class Design;
class StatusLine;

/// Tells in the status line what a run does: which core waits for what and since when, how far the
/// reading of a window is, how the run ended, and what the manager reports of the server and of
/// windows that are missing or doubtful. Follows the design's data manager by itself.
class RunStatus final : public QObject
{
    Q_OBJECT

public:
    /// \a design and \a line are borrowed and outlive the object.
    RunStatus(Design &design, StatusLine &line, QObject *parent);

    /// No run has been made, as in a project that was just opened.
    void clear();
    /// A window of the run, or of the one that has just ended, is there for the user.
    void countWindow();

private:
    void followState(bool isBusy);
    void showReading(int core, int window, int sectionsRead, int sections);
    void takeEnd(int resultID);
    void showEnd();
    /// With what the run has to tell beside it, now and whenever that changes.
    void show(const QString &text);
    [[nodiscard]] QString withRound(const QString &text) const;

    Design &m_design;
    StatusLine &m_line;
    bool m_isRunning = false;
    QTime m_since;     ///< when the run, or the round of an Auto run, began
    int m_round = -1;  ///< the one of m_since
    int m_windows = 0; ///< captured in this run
    QString m_text;    ///< of the run that is shown; empty for none
    QString m_end;     ///< when it ended; empty while it runs, and after an error
};

} // namespace KEO
