#pragma once

#include <QList>
#include <QString>

#include <optional>
#include <vector>

namespace WaveMonitor {

/// A row that somebody lays beside the rows of a window: whether something holds at each sample, as
/// far as that is known. Never a part of the window, so nothing that is saved or exported has it.
struct AidRow
{
    QString name;
    QString toolTip; ///< plain text
    /// Bit k of word i is sample 64 i + k; words that are missing read as 0.
    std::vector<quint64> known;
    std::vector<quint64> holds; ///< within known

    bool operator==(const AidRow &other) const = default;
};

/// All such rows of a window, the first one on top.
struct AidRows
{
    QString title;
    QString remark; ///< what there is to say of all rows, or in place of rows
    QList<AidRow> rows;
    /// The row whose samples are hits: the ruler has ticks for them, and there are ways from one to
    /// the next.
    std::optional<qsizetype> hitRow;

    bool operator==(const AidRows &other) const = default;
};

enum class AidLevel { Unknown, Fails, Holds };
[[nodiscard]] AidLevel aidLevel(const AidRow &row, qsizetype sample);

/// What a row does in one column of pixels.
struct AidColumn
{
    bool isUnknown = false; ///< at one of its samples
    bool fails = false;
    bool holds = false;

    bool operator==(const AidColumn &other) const = default;
};

/// The columns 0 to \a columns - 1 of a picture in which sample s of \a samples begins at pixel
/// \a left + s * \a pitch, as near as whole pixels can be. An edge stands in one column. The cost
/// follows the columns and the samples that they show.
[[nodiscard]] std::vector<AidColumn> aidColumns(const AidRow &row, qsizetype samples, qreal left,
                                                qreal pitch, int columns);

/// The samples at which a row holds and did not, or was not known to, at the one
/// before, 64 a word.
[[nodiscard]] QList<quint64> aidBeginnings(const AidRow &row);

} // namespace WaveMonitor
