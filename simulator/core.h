#pragma once

#include "shiftword.h"

#include <QBitArray>
#include <QString>

#include <functional>

namespace Sim {

/// An analyzer core behind the cable, at the level of its registers. It knows shift words and
/// samples; it has no clock, so whoever owns it calls advance(). Samples pass only while the core
/// is armed: a capture goes on in the stimulus where the last one ended.
class Core
{
public:
    /// Takes sentences about words that no core understands.
    using Report = std::function<void(const QString &)>;

    virtual ~Core() = default;

    /// Register write, read select or block read. A core select is the device's affair.
    virtual void shiftIn(const ShiftWord &word) = 0;
    /// Shifts \a size bits out of what was selected for reading; nothing when nothing was.
    virtual QBitArray shiftOut(qsizetype size) = 0;
    [[nodiscard]] virtual bool isArmed() const = 0;
    /// Lets as many samples pass; none when the core is not armed.
    virtual void advance(qint64 samples) = 0;
};

} // namespace Sim
