// Bytes as a transcript: an error names a line, and what is read plays to a program that asks the
// same, and to one that asks something else first.

#include <replay.h>
#include <transcriptfile.h>

#include <cstdint>
#include <cstdlib>
#include <utility>

namespace {

void require(bool holds)
{
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString server = QStringLiteral("keo1");
    const auto lines = Sim::readTranscript(QByteArrayView(data, qsizetype(size)), server);
    if (!lines) {
        require(lines.error().startsWith(QStringLiteral("line ")));
        return 0;
    }
    Sim::Replay same(*lines, QStringLiteral("transcript"));
    Sim::Replay other = same;
    other.take({{QStringLiteral("CMD"), QStringLiteral("another")}});
    int number = 0;
    for (const Sim::TranscriptLine &line : *lines) {
        require(std::exchange(number, line.number) < line.number);
        if (line.kind != Sim::TranscriptLine::Kind::ToServer)
            continue;
        const Sim::Replay::Answer answer = same.take(line.packet);
        require(!answer.told.contains(QStringLiteral("differs")) && !answer.isRefused);
        require(other.take(line.packet).frames.isEmpty());
    }
    return 0;
}
