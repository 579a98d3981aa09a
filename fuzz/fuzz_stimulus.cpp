// Bytes of a value change dump, sampled for nets that the seeds hold.
#include <stimulus.h>

#include <QBuffer>

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QBuffer dump;
    dump.setData(reinterpret_cast<const char *>(data), int(size));
    dump.open(QIODevice::ReadOnly);

    Sim::SamplingLimits limits;
    limits.samples = 5000;
    const QStringList nets{QStringLiteral("q"), QStringLiteral("data[3]"),
                           QStringLiteral("bus[-1]"), QStringLiteral("top/sub/q"),
                           QStringLiteral("mem[5][1]")};
    const auto sampled = Sim::sampleNets(
        dump,
        {{QStringLiteral("clk"), false, {nets, {}}}, {QStringLiteral("top.clk"), true, {{}, nets}}},
        limits);
    if (!sampled) {
        if (sampled.error().isEmpty())
            std::abort();
        return 0;
    }
    for (const Sim::SampledNets &result : *sampled) {
        const qint64 rows = result.tables.first().rows();
        if (rows < 1 || rows > limits.samples || result.tables.last().rows() != rows)
            std::abort();
    }
    return 0;
}
