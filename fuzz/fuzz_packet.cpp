#include <link/packetcodec.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace

/// Any payload decodes to nothing or to a packet; a packet keeps its content through a frame.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::optional<CmdPack> pack =
        KEO::decodePayload(QByteArrayView(data, static_cast<qsizetype>(size)));
    if (!pack)
        return 0;

    const std::optional<QByteArray> frame = KEO::encodeFrame(*pack);
    require(frame.has_value());
    // What was ignored (padding, later bytes, earlier values of equal keys) makes it shorter only.
    require(frame->size() <= KEO::kLengthFieldSize + static_cast<qsizetype>(size));

    char field[KEO::kLengthFieldSize];
    std::copy_n(frame->cbegin(), KEO::kLengthFieldSize, field);
    require(KEO::decodeLength(field) == frame->size() - KEO::kLengthFieldSize);

    const std::optional<CmdPack> again =
        KEO::decodePayload(QByteArrayView(*frame).sliced(KEO::kLengthFieldSize));
    require(again == pack);
    require(KEO::encodeFrame(*again) == frame);
    return 0;
}
