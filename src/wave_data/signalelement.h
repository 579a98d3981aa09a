#pragma once

#include <QBitArray>
#include <QList>
#include <QString>

namespace WaveMonitor {

/// The captured samples of one probe bit and its names. There is no state for unknown.
struct SignalElement
{
    int id = -1;    ///< unique in a window
    QString name;   ///< original name from the core description
    QString text;   ///< name given by the user; empty means none
    QBitArray data; ///< bit i is sample i, sample 0 first

    bool operator==(const SignalElement &other) const = default;
};

/// Hands over a bus with its signals, see WindowContents::addBus.
struct BusElement
{
    QString name;                   ///< empty keeps the default
    QString text;                   ///< name given by the user; empty means none
    QList<SignalElement *> signals; ///< borrowed; the first is the most significant bit
};

} // namespace WaveMonitor
