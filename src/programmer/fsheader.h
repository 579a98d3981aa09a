#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

namespace KEO {

class DeviceDatabase;
struct DeviceRow;

/// What the lines of an fs file say that begin with "//". Such a line may stand anywhere in the
/// file, "//Key: value"; its value is what stands behind the first colon of the line.
struct FsHeader
{
    /// A value that the rest of the program has to agree with.
    struct Claim
    {
        enum Kind {
            DevicePackage, ///< "Device-package:", the device name up to the last "-"
            DesignId       ///< "KEOCRC:", the check value of the core description
        };
        Kind kind = DevicePackage;
        QString value;

        bool operator==(const Claim &other) const = default;
    };

    QString checksum;    ///< "CheckSum:", the last one
    QString userCode;    ///< "UserCode:"; an empty one takes the checksum so far
    QList<Claim> claims; ///< in file order, without repetitions, at most kMaxClaims
    static constexpr qsizetype kMaxClaims = 64;
};

/// Takes the header from a file's bytes as they come, in pieces of any size.
class FsHeaderParser final
{
public:
    static constexpr qsizetype kMaxLine = 4096; ///< bytes of a header line that count

    void append(QByteArrayView bytes);
    /// A line without a line end at the end counts as well. Call it once.
    void finish() { endLine(); }
    [[nodiscard]] const FsHeader &header() const { return m_header; }

private:
    void endLine();
    void takeClaim(FsHeader::Claim claim);

    QByteArray m_line;        // what has come of the line, up to kMaxLine bytes
    bool m_skipsLine = false; // no header line
    FsHeader m_header;
};

/// Reads a header piece by piece, because bitstreams have hundreds of megabytes and no header says
/// where it ends. Needs a few hundred kilobytes, whatever the file.
class FsHeaderReader final
{
public:
    /// Opens the file. A path that is no regular file, or can't be read, is at its end at once.
    explicit FsHeaderReader(const QString &path);

    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    /// Reads on for about \a msecs, and to the end if that is negative. True at the end.
    bool read(int msecs);
    [[nodiscard]] const FsHeader &header() const { return m_parser.header(); }

private:
    QFile m_file;
    QByteArray m_block; // buffer
    FsHeaderParser m_parser;
};

/// How a header and the row that got its file agree.
enum class FsVerdict {
    Accepted,
    WrongDevice, ///< made for another device than the row's
    WrongDesign  ///< made from another design than the open one
};

/// Fills \a row, whose file this is. Any other verdict than Accepted takes the file out of the row.
/// \a designId is the check value of the open core description; if it is empty, any design will do.
FsVerdict applyFsHeader(const FsHeader &header, const DeviceDatabase &database,
                        const QString &designId, DeviceRow &row);

} // namespace KEO
