#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QByteArray;

namespace KEO {

struct DeviceSeries;

/// What the programmer tool can do with a device, such as loading the bitstream into its SRAM.
struct DeviceOperation
{
    QString name;
    QString description;
    int cmdIndex = 0; ///< the tool's number for it
    QStringList options;

    /// Only these load a bitstream, so only these can be chosen for a row of the chain.
    [[nodiscard]] bool isProgramming() const;
};

/// A way into a device, with the operations that it allows.
struct AccessMode
{
    QString name;
    std::vector<DeviceOperation> operations;

    [[nodiscard]] QList<const DeviceOperation *> programmingOperations() const;
};

struct DeviceEntry
{
    QString name;
    QString idCode; ///< as the file has it, see plainIdCode
    QList<const AccessMode *> modes;
    const DeviceSeries *series = nullptr; ///< the first that lists it; null if none does

    /// The first programming operation of the first mode; null means that the device is bypassed.
    [[nodiscard]] const DeviceOperation *defaultOperation() const;
};

struct DeviceSeries
{
    QString name;
    QList<const DeviceEntry *> devices;

    [[nodiscard]] QStringList deviceNames() const;
    /// Null if the series does not list it.
    [[nodiscard]] const DeviceEntry *device(const QString &deviceName) const;
};

/// The devices and operations that the programmer tool knows. Immutable; the pointers in it and out
/// of it live as long as the database. The order of the file is the order of the combo boxes. Of
/// entries with the same name the first one is found.
///
/// The file is a JSON object. Its keys, one spelled oddly, belong to the tool:
/// - "ALL_MODES": [{"MODE", "OPERATIONS": [{"OPERATION", "DESCRIPATION", "CMD_INDEX", "OPTIONS"}]}]
/// - "DEVICE_CONFIG": [{"DEVICE", "IDCODE", "ACCESS_MODES": names of modes}]
/// - "ALL_SERIES": [{"SERIES", "DEVICES": names of devices}]
///
/// A missing key means an empty text, 0 or an empty list. What else does not fit (a list that is
/// none, an entry that is no object, a name that leads nowhere) is left out with a line in the
/// debug log.
class DeviceDatabase final
{
public:
    static constexpr qint64 kMaxFileSize = 16 << 20; ///< bytes

    DeviceDatabase() = default;
    DeviceDatabase(const DeviceDatabase &) = delete;
    DeviceDatabase &operator=(const DeviceDatabase &) = delete;
    DeviceDatabase(DeviceDatabase &&) = default;
    DeviceDatabase &operator=(DeviceDatabase &&) = default;

    /// An empty database if \a json is no JSON object.
    [[nodiscard]] static DeviceDatabase fromJson(const QByteArray &json);
    /// An empty database if the file is missing, no regular file or larger than kMaxFileSize.
    [[nodiscard]] static DeviceDatabase fromFile(const QString &path);
    /// The one beside the program's executable file, "burner.json", read when first asked for.
    [[nodiscard]] static std::shared_ptr<const DeviceDatabase> installed();

    [[nodiscard]] QStringList seriesNames() const;
    [[nodiscard]] const DeviceSeries *series(const QString &name) const; ///< null if unknown
    [[nodiscard]] const DeviceEntry *device(const QString &name) const;  ///< null if unknown
    /// Names of the devices of a series; empty if it is unknown.
    [[nodiscard]] QStringList deviceNames(const QString &seriesName) const;
    /// In file order, whatever the letter case and whether "0x" stands before the code.
    [[nodiscard]] QList<const DeviceEntry *> devicesWithIdCode(const QString &idCode) const;
    [[nodiscard]] const DeviceOperation *operation(const DeviceEntry &device, const QString &mode,
                                                   const QString &name) const; ///< null if unknown

    // What a new row of the chain begins with; empty texts without series or devices.
    [[nodiscard]] QString firstSeriesName() const;
    [[nodiscard]] QString firstDeviceName() const;

private:
    // Filled in this order and never again, because each points into the one before.
    std::vector<AccessMode> m_modes;
    std::vector<DeviceEntry> m_devices;
    std::vector<DeviceSeries> m_series;
    QHash<QString, const DeviceEntry *> m_deviceByName;
    QHash<QString, const DeviceSeries *> m_seriesByName;
};

/// An ID code as the table shows it: without "0x" and blanks around it.
[[nodiscard]] QString plainIdCode(const QString &text);

} // namespace KEO
