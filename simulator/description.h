#pragma once

#include "outcome.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>

class QByteArray;

namespace Sim {

inline constexpr int kPorts = 16;
inline constexpr int kUnits = 16;

/// What the design holds of a match unit; its values and function are set through registers.
struct UnitDescription
{
    bool enabled = false;
    bool hasCounter = false;
    int counterWidth = 0; ///< bits
    int port = -1;        ///< -1: none
};

/// One standard core as it was built into the design.
struct CoreDescription
{
    int index = 0;                         ///< 0 to 15
    QString sampleClock;                   ///< net
    bool fallingEdge = false;              ///< samples on the falling edge of the clock
    bool dynamic = false;                  ///< fires on truth tables; else on `expressions`
    int storageDepth = 0;                  ///< rows of the capture memory
    QStringList captured;                  ///< nets, one a bit, in the order of a row
    std::array<QStringList, kPorts> ports; ///< nets, one a bit, most significant first
    std::array<UnitDescription, kUnits> units;
    QStringList expressions; ///< in tokens M0 to M15 ! & ^ | ( )

    /// Units that are enabled and compare a port with signals, ascending. The k-th of them is bit k
    /// of a truth table's input number.
    [[nodiscard]] QList<int> unitsInUse() const;
    /// Width in bits of every register: 16, or what the widest counter, port, or captured row with
    /// its marker bit needs.
    [[nodiscard]] int registerWidth() const;
};

/// A lite core as it was built into the design.
struct LiteCoreDescription
{
    int index = 0;
    QString sampleClock;           ///< net
    bool fallingEdge = false;      ///< samples on the falling edge of the clock
    int implementation = 0;        ///< 0 writes its memory one row late on some devices
    int captureAmount = 0;         ///< rows of the capture memory
    bool capturesInitData = false; ///< takes its first samples as soon as the device is configured
    QStringList captured;          ///< nets, one a bit, in the order of a row
};

/// What a `.keo` or `.zeo` file says of a design.
struct DesignDescription
{
    bool isKeo = false; ///< by the file's name; such cores write one row late on some devices
    QString id;         ///< check value of the design, may be empty
    QList<CoreDescription> cores;
    std::optional<LiteCoreDescription> lite; ///< then there are no other cores
};

/// Reads a core description: XML, root `KEO_CONFIG`, one `KoCore` element a core; with the
/// `Mode` "Lite", exactly one `KoCore_Lite`, and the encoding is the document's own. Numbers that
/// are absent or malformed count as 0, as they do for everyone who reads these files; a description
/// that no core could be built from is an error.
Outcome<DesignDescription> readDescription(const QByteArray &content, const QString &fileName);
Outcome<DesignDescription> readDescriptionFile(const QString &path);

} // namespace Sim
