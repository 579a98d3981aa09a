#pragma once

#include "viewerpanes.h"

#include <QList>
#include <QObject>

#include <optional>

class QAction;
class QKeySequence;
class QWidget;

namespace WaveMonitor {

/// The ways to the trigger, the ends, the edges of the selected rows and the markers: keys, entries
/// of the menu over the waves, and what they do. What is gone to stands in the middle of the view,
/// and the active marker moves there.
class GoTo final : public QObject
{
    Q_OBJECT

public:
    /// All are borrowed and outlive this object, a child of \a viewer. Keys without Ctrl work in
    /// the waves, since letters are typed ahead in the tree.
    GoTo(const ViewerPanes &panes, QWidget *viewer);

    /// Bounded to the samples.
    void sample(qsizetype sample);
    /// Where the way to the next or previous place begins: at the active marker, or else where the
    /// last way led to while that shows, or else in the middle.
    [[nodiscard]] int place() const;

Q_SIGNALS:
    /// Why a way led nowhere.
    void said(const QString &text);

private:
    enum class Direction { Back, Forth };

    void addEntry(const QString &text, const char *name, const QList<QKeySequence> &keys,
                  void (GoTo::*go)());
    void trigger();
    void start();
    void end();
    void previousEdge();
    void nextEdge();
    void previousMarker();
    void nextMarker();
    void edge(Direction direction);
    void marker(Direction direction);

    const ViewerPanes m_panes;
    QWidget *m_viewer;
    std::optional<int> m_last; ///< where the last way led to
};

} // namespace WaveMonitor
