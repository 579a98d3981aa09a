#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

namespace KEO {

/// What a run of the programmer tool prints, taken in pieces as it comes. Keeps at least the
/// latest kMaxLines lines, of each at most kMaxLine bytes, so a tool that never stops does not fill
/// the memory.
///
/// A line ends with a line feed. Carriage returns inside of it stand for a terminal's cursor: a
/// progress bar that is overwritten is left out, any other text before one is a line of its own.
class ToolOutput final
{
public:
    static constexpr qsizetype kMaxLines = 2000;
    static constexpr qsizetype kMaxLine = 2000; ///< bytes

    void append(QByteArrayView bytes);
    /// A partial line at the end becomes a line. Call it once, when the tool has ended.
    void finish();

    [[nodiscard]] const QStringList &lines() const { return m_lines; }
    /// Lines that went for being too many.
    [[nodiscard]] qint64 droppedLines() const { return m_dropped; }
    /// "Error" or "error" stood anywhere, also in what has been dropped.
    [[nodiscard]] bool saysError() const { return m_saysError; }

private:
    void lookForError(QByteArrayView bytes);
    void takeText(QByteArrayView bytes);
    void endLine();
    void endOverwritten();
    void keep(const QString &line);

    QByteArray m_line; // what has come of the line, up to kMaxLine bytes
    QByteArray m_tail; // the last bytes, where a word may go on
    QStringList m_lines;
    qint64 m_dropped = 0;
    bool m_hasReturn = false;   // the last byte was a carriage return
    bool m_isContinued = false; // a part of the line has been taken already
    bool m_saysError = false;
};

/// One device as a scan tells it. Texts that are missing are empty.
struct ScannedDevice
{
    QString family;
    QString name;
    QString idCode; ///< without "0x"

    bool operator==(const ScannedDevice &other) const = default;
};

struct ScanReport
{
    QList<ScannedDevice> devices; ///< in the order of the chain
    QStringList messages;         ///< everything else that was said, simplified
};

/// Reads the output of a scan. A line with "Device Info:" begins a device, and the three lines
/// behind it, in any order, hold "Family:", "Name:" and "ID:".
[[nodiscard]] ScanReport parseScan(const QStringList &lines);

/// The lines of a download without its finished progress bars. A line that tells an error stays,
/// bar or not.
[[nodiscard]] QStringList withoutProgressBars(const QStringList &lines);

} // namespace KEO
