#pragma once

#include <wave/common/notificationcenter.h>
#include <wave_data/signalelement.h>

#include <QMap>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>

class QAction;
class QSplitter;

namespace WaveMonitor {

class ComparisonLine;
class DifferenceMarks;
class SpanSync;
class WaveMonitorWidget;
class WindowComparison;

/// The samples of a captured window, shared, to be compared with.
struct WindowSamples
{
    QMap<int, SignalElement> elements; ///< by id
    int triggerPosition = 0;           ///< sample index
};

/// A viewer with another window of the same core below it, aligned on the triggers: both scroll and
/// zoom together, rows and samples that differ are marked, and the user goes from difference to
/// difference. The window below is for looking only: it shows the rows as the upper viewer has them
/// at first, and whatever is done to it is gone with the page.
class ComparedPage final : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(quint64 domain READ domain)

public:
    /// Takes \a upper into the page, which owns it until takeUpper().
    ComparedPage(WaveMonitorWidget *upper, QWidget *parent);
    ~ComparedPage() override;

    [[nodiscard]] WaveMonitorWidget *upper() const;
    [[nodiscard]] quint64 domain() const;
    /// Names the window below.
    [[nodiscard]] QString otherTitle() const { return m_otherTitle; }
    /// Compares \a other, which \a title names, with what the upper viewer shows now. Replaces an
    /// earlier comparison.
    void compareWith(const QString &title, const WindowSamples &other);
    /// Hands the upper viewer back, unmarked and without a parent. The page is then to be deleted.
    [[nodiscard]] WaveMonitorWidget *takeUpper();

    Q_INVOKABLE void handleEvents(Notification *e);

public Q_SLOTS:
    /// These go on from the difference gone to last, or from the edge of what shows if that has
    /// been scrolled away.
    void nextDifference();
    void previousDifference();

Q_SIGNALS:
    void closeAsked();

protected:
    /// Escape, when nothing in the page has another use for it.
    void keyPressEvent(QKeyEvent *event) override;

private:
    QAction *newAction(const QString &text, const QKeySequence &key, const char *name);
    void showBelow(const WindowSamples &other);
    void newBelow(const WindowSamples &other);
    void showMarks();
    void clearMarks();
    void giveRoom();
    void showValues();
    void goTo(std::optional<qsizetype> sample);
    [[nodiscard]] bool isCurrentShown() const;
    [[nodiscard]] QString lineText() const;

    QSplitter *m_splitter; ///< child
    QPointer<WaveMonitorWidget> m_upper;
    QPointer<WaveMonitorWidget> m_lower;
    QAction *m_previous;    ///< child
    QAction *m_next;        ///< child
    QAction *m_close;       ///< child
    ComparisonLine *m_line; ///< child
    QString m_otherTitle;
    std::unique_ptr<WindowComparison> m_comparison;
    std::unique_ptr<DifferenceMarks> m_upperMarks;
    std::unique_ptr<DifferenceMarks> m_lowerMarks;
    std::unique_ptr<SpanSync> m_sync;
    std::optional<qsizetype> m_current; ///< difference gone to last, a sample of the upper
};

} // namespace WaveMonitor
