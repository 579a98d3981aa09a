#pragma once

#include "viewerpanes.h"

#include <wave_data/samplesearch.h>

#include <QModelIndex>
#include <QObject>
#include <QString>

#include <optional>

namespace WaveMonitor {

class FindBar;
class GoTo;

/// Finds what the bar asks for: rows by name, and samples of the first selected row by value, order
/// or edge. The hits stand as ticks on the ruler while the bar is open.
class Finder final : public QObject
{
    Q_OBJECT

public:
    /// All are borrowed and outlive this object.
    Finder(const ViewerPanes &panes, GoTo *goTo, FindBar *bar, QObject *parent);

    /// Rows, their selection or radix, or samples have changed. Searches again if the bar is open.
    void refresh();
    /// While the bar is open, F3 works in the panes that this object filters.
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Direction { Back, Forth };
    enum class Kind { Nothing, Name, Samples };

    void search();
    void searchNames(const QString &text);
    void searchSamples(const QString &text, const SamplePattern &pattern);
    void go(Direction direction);
    void goToRow(Direction direction);
    void goToSample(Direction direction);
    void tellRow();
    void tellSample();
    void fail(const QString &text);
    void stop();
    [[nodiscard]] QModelIndex selectedRow() const;
    [[nodiscard]] QModelIndexList rowsNamed(const QString &text) const;

    const ViewerPanes m_panes;
    GoTo *m_goTo;
    FindBar *m_bar;
    Kind m_kind = Kind::Nothing;
    QList<QPersistentModelIndex> m_rows; ///< found by name, in row order
    SampleHits m_hits;
    QString m_round; ///< said when the last way led past an end
    QString m_what;  ///< of the samples, such as "Value of count"
};

} // namespace WaveMonitor
