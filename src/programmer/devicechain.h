#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace KEO {

class DeviceDatabase;
struct DeviceEntry;
struct DeviceOperation;
struct ScannedDevice;

/// Where the programming of the target stands. The numbers are shared with the table's rows.
enum class ProgrammerStatus {
    Failed = 0,      ///< a download could not start, or the tool's output tells an error
    NoDevice = 1,    ///< a scan found nothing or failed
    Downloading = 2, ///< the tool is at it
    DeviceFound = 3, ///< there are devices, and the bitstream is not known to be in the target
    Downloaded = 4   ///< the bitstream is in the target
};

/// The sentence for the status label, with blanks around it.
[[nodiscard]] QString statusText(ProgrammerStatus status);

/// One device on the chain. Exactly one of them, the target, gets the bitstream and holds the
/// analyzer; the others only pass the chain through.
struct DeviceRow
{
    static constexpr int kBypassed =
        0;                           ///< kind: a chain device that the database does not describe
    static constexpr int kKnown = 1; ///< kind: chosen from the database, or found by a scan
    static constexpr int kDefaultIrCode = 8;

    bool enabled = false; ///< the target
    int kind = kBypassed;
    QString series;
    QString device;
    QString fsFile;                              ///< path of the bitstream
    QString idCode = QStringLiteral("00000000"); ///< without "0x"
    QString userCode;                            ///< from the fs file
    QString checksum;                            ///< from the fs file
    int irCode = kDefaultIrCode;                 ///< instruction register code for the chain
    ProgrammerStatus status = ProgrammerStatus::DeviceFound;
    const DeviceOperation *operation = nullptr; ///< of the database; null means bypass

    bool operator==(const DeviceRow &other) const = default;
};

/// In the order of the chain.
using DeviceChain = QList<DeviceRow>;

/// A row as it is added by hand.
[[nodiscard]] DeviceRow newDeviceRow(const DeviceDatabase &database);
/// The row that the command line describes. Names that the database does not have stay as they are:
/// the tool may know them.
[[nodiscard]] DeviceRow namedDeviceRow(const DeviceDatabase &database, const QString &family,
                                       const QString &device);

/// The row that a scan describes; names that the database does not have give way to its first ones.
[[nodiscard]] DeviceRow scannedDeviceRow(const DeviceDatabase &database,
                                         const ScannedDevice &scanned);

/// Takes the fs file and what its header said out of the row.
void clearBitstream(DeviceRow &row);
/// Makes the row that device, with its series, whatever the row's kind. The fs file stays.
void becomeDevice(DeviceRow &row, const DeviceEntry &device);
/// Takes the series at \a index of the database. The first one, and an index past the end, stand
/// for a device that the database does not describe: the row loses what it had. Choosing the series
/// that the row has changes nothing.
void chooseSeries(DeviceRow &row, const DeviceDatabase &database, int index);
/// Takes the device at \a index of the row's series.
void chooseDevice(DeviceRow &row, const DeviceDatabase &database, int index);

/// Position of the first enabled row, or -1.
[[nodiscard]] qsizetype targetPosition(const DeviceChain &chain);
/// Why the chain can't be programmed or used for a capture, or nothing.
[[nodiscard]] std::optional<QString> chainFault(const DeviceChain &chain);
/// The chain as a cable server wants it: 0 for the target, else the instruction register code.
[[nodiscard]] QList<int> chainCodes(const DeviceChain &chain);

} // namespace KEO
