// Bytes as a board file of the simulated board: an error has words, and what is read is in range.

#include <boardfile.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json(reinterpret_cast<const char *>(data), qsizetype(size));
    const auto board = Sim::readBoard(json, QStringLiteral("/folder/board.json"));
    if (!board) {
        if (board.error().isEmpty())
            std::abort();
        return 0;
    }
    if (board->samplesPerSecond < 1)
        std::abort();
    for (const Sim::CableSetup &cable : board->cables) {
        for (const Sim::DeviceSetup &device : cable.chain) {
            if (Sim::idCodeText(device.idCode).size() != 8)
                std::abort();
        }
    }
    return 0;
}
