#pragma once

#include "signaldata.h"

#include <QBitArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QDomElement;

namespace WaveMonitor {
class WindowContents;
}

namespace KEO {

/// One captured signal.
struct ExportRecord
{
    QString name; ///< the user's name, else the original one
    QString id;   ///< as in the file
    QBitArray data;
};

/// A bus and the names of its members, most significant first.
struct BusGroup
{
    QString name;
    QStringList members;
};

/// One row of the viewer, in plain form.
struct ExportRow
{
    enum class Kind { Signal, Bus };
    Kind kind = Kind::Signal;
    QString id;   ///< of a signal row
    QString name; ///< of a bus row
    QString text; ///< name given to the row by the user; empty means none
    WaveMonitor::DataFormat::Type format = WaveMonitor::DataFormat::Hexadecimal; ///< of a bus row
    std::vector<ExportRow> members;                                              ///< of a bus row
};

/// What the writers see of a window: exactly what the user sees. Made from a window's contents or
/// from its saved form, the element `Window` (see WaveMonitor::WindowContents); both conversions
/// are implicit, so that every reader and writer here takes either, and both give the same files.
/// Samples are shared with the contents; from an element they are decoded once.
struct ExportWindow
{
    ExportWindow() = default;
    // NOLINTNEXTLINE(google-explicit-constructor): the two doors of the writers
    ExportWindow(const QDomElement &window);
    // NOLINTNEXTLINE(google-explicit-constructor)
    ExportWindow(const WaveMonitor::WindowContents &window);

    QString format;              ///< text of the child `Format`, which no window so far has
    QList<ExportRecord> records; ///< in the order of the signals
    std::vector<ExportRow> rows; ///< top-level rows
};

using ExportColumns = std::vector<std::unique_ptr<SignalData>>;

/// The signals of a window, whatever rows show them.
[[nodiscard]] QList<ExportRecord> readSignalRecords(const ExportWindow &window);

/// One column a row, in row order. A bus comes before its members, which come with it only if
/// \a includeMembers. A row without a signal gives an empty column.
[[nodiscard]] ExportColumns readExportColumns(const ExportWindow &window, bool includeMembers);

/// The signals in their own order, with the names that the rows give them.
[[nodiscard]] QList<ExportRecord> readNamedRecords(const ExportWindow &window);

/// The top-level buses under their original names, with the signals' (not the rows') names.
[[nodiscard]] QList<BusGroup> readBusGroups(const ExportWindow &window);

/// Titles of the top-level buses in row order, as readExportColumns gives them.
[[nodiscard]] QStringList readBusNames(const ExportWindow &window);

} // namespace KEO
