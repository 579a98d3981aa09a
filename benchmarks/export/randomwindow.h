#pragma once

#include <wave_data/windowcontents.h>

#include <QRandomGenerator>

#include <vector>

/// The same random bits for the same arguments: half of all samples differ from the one before.
inline QBitArray randomSamples(qsizetype samples, quint32 seed)
{
    QRandomGenerator random(seed);
    std::vector<quint32> words(size_t(samples + 31) / 32);
    random.generate(words.begin(), words.end());
    return QBitArray::fromBits(reinterpret_cast<const char *>(words.data()), samples);
}

/// Fills \a contents with single signals.
inline void addRandomSignals(WaveMonitor::WindowContents &contents, int signals, qsizetype samples)
{
    for (int i = 0; i < signals; ++i)
        contents.addSignal({.id = i,
                            .name = QStringLiteral("net%1").arg(i),
                            .text = {},
                            .data = randomSamples(samples, quint32(i) + 1)});
}
