#pragma once

#include <QList>
#include <QString>

/// A made-up design whose value of every net at every sample is known by formula, and the files of
/// it: a core description, a stimulus and a board file. Writes its own text, so that nothing of the
/// program or the simulator vouches for itself.
///
/// Captured are a bus `count[15:0]` (the sample number modulo the stimulus length) and `noise`
/// single bits. The trigger port holds the bus; unit M0 matches a low byte of 0x37, unit M1 values
/// in the range 0x100 to 0xEFF. A static core fires on M0, a dynamic one on M0&M1.
struct TestDesign
{
    bool dynamic = false;
    QString extension = QStringLiteral("keo");
    QString device = QStringLiteral("KR-A"); ///< model on the board
    int noise = 8;                           ///< single-bit signals
    int storageDepth = 4096;                 ///< samples
    int windows = 1;
    int amount = 256;  ///< samples in a window
    int position = 16; ///< samples before the trigger
    int coreIndex = 0;
    int cores = 1; ///< the same core so many times, with indexes counting up
    bool programmed = true;
    bool fires = true;   ///< false: M0 matches a value that the design never takes
    bool logs = false;   ///< the server keeps a packets.log beside the files
    QString faults = {}; ///< JSON array text for the first cable, may be empty

    static constexpr int kLength = 4096; ///< samples of the stimulus, then it starts again

    /// Writes design.<extension>, design.vcd and board.json into \a directory.
    void write(const QString &directory) const;

    [[nodiscard]] int signalCount() const { return 16 + noise; }
    /// Name of a captured signal in flat order.
    [[nodiscard]] QString name(int signal) const;
    /// Level of a captured signal at a sample of the endless stimulus.
    [[nodiscard]] bool level(int signal, qint64 sample) const;
    /// Does the core fire on that sample?
    [[nodiscard]] bool isTrigger(qint64 sample) const;
    /// The first sample from \a from on that fires.
    [[nodiscard]] qint64 firstTrigger(qint64 from) const;
};
