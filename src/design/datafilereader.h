#pragma once

#include <base/boundedxml.h>
#include <base/result.h>
#include <wave_data/windowcontents.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace KEO {

/// A window as a data file has it, see dataFileText. Nothing of it has been held against a design.
struct LoadedWindow
{
    QString core;            ///< attribute as it stands; null if absent
    QString index;           ///< attribute as it stands; null if absent
    bool isTopLevel = true;  ///< false: deeper than a child of the root, counts as evidence only
    QString triggerText;     ///< of the first `TriggerPosition`; null if there is none
    QStringList signalNames; ///< `name` of every node in `Signals`; null for one that has none
    WaveMonitor::WindowContents contents;
};

using LoadedWindows = std::vector<LoadedWindow>;

/// A data file larger than this is refused before it is read, in bytes.
inline constexpr qint64 kMaxDataFileSize = 1024 * 1024 * 1024;

/// What a data file may cost besides its windows, signals and rows, for which the reader raises the
/// limit on nodes as they come.
inline constexpr XmlLimits kDataFileLimits{
    .maxSize = kMaxDataFileSize, .maxDepth = 256, .maxAttributes = 256, .maxNodes = 1'000'000};

/// Windows, signals and rows together. Each takes some hundred bytes.
inline constexpr int kMaxDataRecords = 1'000'000;

/// Windows of a file, and signals of a window: a description has no more in all.
inline constexpr int kMaxDataWindows = 65'536;
inline constexpr int kMaxWindowSignals = 65'536;

/// Characters of all names and texts together; a description has 16 M in all.
inline constexpr qsizetype kMaxDataText = 64 * 1024 * 1024;

/// Reads a data file in one pass without a tree; a sample takes a bit, the text of one signal at a
/// time more. The file is taken whole or not at all.
///
/// Errors: kind File when it can't be read. Otherwise Format or Limit, and the message is the one
/// for the user, with line and column.
Result<LoadedWindows> loadDataFile(const QString &path);

/// The same on bytes.
Result<LoadedWindows> readDataFile(const QByteArray &bytes);

} // namespace KEO
