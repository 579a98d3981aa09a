// Bytes as what the programmer tool prints, and as an fs file. The first byte is the size of the
// pieces in which the rest comes: the pieces must make no difference, and the bounds hold.

#include <programmer/devicechain.h>
#include <programmer/devicedatabase.h>
#include <programmer/fsheader.h>
#include <programmer/tooloutput.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

using namespace KEO;

namespace {

template <typename Reader>
Reader inPieces(QByteArrayView bytes, qsizetype size)
{
    Reader reader;
    for (qsizetype at = 0; at < bytes.size(); at += size)
        reader.append(bytes.sliced(at, std::min(size, bytes.size() - at)));
    reader.finish();
    return reader;
}

void require(bool holds)
{
    if (!holds)
        std::abort();
}

void checkOutput(QByteArrayView bytes, qsizetype pieceSize)
{
    const auto whole = inPieces<ToolOutput>(bytes, std::max<qsizetype>(1, bytes.size()));
    const auto pieces = inPieces<ToolOutput>(bytes, pieceSize);
    require(whole.lines() == pieces.lines() && whole.saysError() == pieces.saysError());
    for (const QString &line : whole.lines())
        require(line.size() <= ToolOutput::kMaxLine && !line.contains(u'\n'));
    const ScanReport scan = parseScan(whole.lines());
    require(scan.devices.size() + scan.messages.size() <= whole.lines().size());
    require(withoutProgressBars(whole.lines()).size() <= whole.lines().size());
}

void checkHeader(QByteArrayView bytes, qsizetype pieceSize)
{
    const auto whole = inPieces<FsHeaderParser>(bytes, std::max<qsizetype>(1, bytes.size()));
    const auto pieces = inPieces<FsHeaderParser>(bytes, pieceSize);
    const FsHeader &header = whole.header();
    require(header.checksum == pieces.header().checksum &&
            header.userCode == pieces.header().userCode && header.claims == pieces.header().claims);
    require(header.claims.size() <= FsHeader::kMaxClaims);
    DeviceRow row;
    row.fsFile = QStringLiteral("a.fs");
    const FsVerdict verdict = applyFsHeader(header, DeviceDatabase(), QStringLiteral("4d2"), row);
    require(row.fsFile.isEmpty() == (verdict != FsVerdict::Accepted));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    const qsizetype pieceSize = 1 + data[0];
    const QByteArrayView bytes(data + 1, qsizetype(size) - 1);
    checkOutput(bytes, pieceSize);
    checkHeader(bytes, pieceSize);
    return 0;
}
