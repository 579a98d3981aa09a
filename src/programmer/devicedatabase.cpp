#include "devicedatabase.h"

#include <base/logging.h>
#include <base/wholefile.h>

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>

namespace KEO {

namespace {

constexpr qsizetype kLoggedText = 80; // characters of a foreign text in the debug log

QString textOf(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toVariant().toString();
}

int numberOf(const QJsonObject &object, const char *key)
{
    const QJsonValue value = object.value(QLatin1String(key));
    if (!value.isDouble())
        return value.toVariant().toInt();
    const double number = std::round(value.toDouble());
    const bool fits =
        number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
    return fits ? int(number) : 0;
}

QJsonArray listOf(const QJsonObject &object, const char *key)
{
    const QJsonValue value = object.value(QLatin1String(key));
    if (!value.isUndefined() && !value.isArray())
        qCDebug(lcProgrammer) << "device database:" << key << "is no list";
    return value.toArray();
}

QList<QJsonObject> objectsOf(const QJsonObject &object, const char *key)
{
    QList<QJsonObject> objects;
    for (const QJsonValue entry : listOf(object, key)) {
        if (entry.isObject())
            objects.append(entry.toObject());
        else
            qCDebug(lcProgrammer) << "device database: an entry of" << key << "is no object";
    }
    return objects;
}

QStringList textsOf(const QJsonObject &object, const char *key)
{
    QStringList texts;
    for (const QJsonValue entry : listOf(object, key))
        texts.append(entry.toVariant().toString());
    return texts;
}

/// By name; of two with the same name the first.
template <typename Entry>
QHash<QString, const Entry *> indexed(const std::vector<Entry> &entries)
{
    QHash<QString, const Entry *> index;
    index.reserve(qsizetype(entries.size()));
    for (const Entry &entry : entries) {
        if (!index.contains(entry.name))
            index.insert(entry.name, &entry);
    }
    return index;
}

template <typename Entry>
QList<const Entry *> resolved(const QStringList &names, const QHash<QString, const Entry *> &index)
{
    QList<const Entry *> entries;
    for (const QString &name : names) {
        if (const Entry *entry = index.value(name))
            entries.append(entry);
        else
            qCDebug(lcProgrammer) << "device database: no entry for" << name.left(kLoggedText);
    }
    return entries;
}

AccessMode readMode(const QJsonObject &object)
{
    AccessMode mode;
    mode.name = textOf(object, "MODE");
    for (const QJsonObject &operation : objectsOf(object, "OPERATIONS")) {
        mode.operations.push_back(
            {textOf(operation, "OPERATION"), textOf(operation, "DESCRIPATION"),
             numberOf(operation, "CMD_INDEX"), textsOf(operation, "OPTIONS")});
    }
    return mode;
}

} // namespace

bool DeviceOperation::isProgramming() const
{
    return options.contains(QLatin1String("Programming"));
}

QList<const DeviceOperation *> AccessMode::programmingOperations() const
{
    QList<const DeviceOperation *> found;
    for (const DeviceOperation &operation : operations) {
        if (operation.isProgramming())
            found.append(&operation);
    }
    return found;
}

const DeviceOperation *DeviceEntry::defaultOperation() const
{
    return modes.isEmpty() ? nullptr : modes.first()->programmingOperations().value(0);
}

QStringList DeviceSeries::deviceNames() const
{
    QStringList names;
    for (const DeviceEntry *entry : devices)
        names.append(entry->name);
    return names;
}

const DeviceEntry *DeviceSeries::device(const QString &deviceName) const
{
    const auto found = std::find_if(devices.begin(), devices.end(), [&](const DeviceEntry *entry) {
        return entry->name == deviceName;
    });
    return found == devices.end() ? nullptr : *found;
}

DeviceDatabase DeviceDatabase::fromJson(const QByteArray &json)
{
    DeviceDatabase database;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isObject()) {
        qCDebug(lcProgrammer).noquote() << "device database: no JSON object:" << error.errorString()
                                        << "at byte" << error.offset;
        return database;
    }
    const QJsonObject root = document.object();
    for (const QJsonObject &entry : objectsOf(root, "ALL_MODES"))
        database.m_modes.push_back(readMode(entry));
    const auto modeByName = indexed(database.m_modes);
    for (const QJsonObject &entry : objectsOf(root, "DEVICE_CONFIG")) {
        database.m_devices.push_back({textOf(entry, "DEVICE"), textOf(entry, "IDCODE"),
                                      resolved(textsOf(entry, "ACCESS_MODES"), modeByName),
                                      nullptr});
    }
    database.m_deviceByName = indexed(database.m_devices);
    for (const QJsonObject &entry : objectsOf(root, "ALL_SERIES")) {
        database.m_series.push_back({textOf(entry, "SERIES"),
                                     resolved(textsOf(entry, "DEVICES"), database.m_deviceByName)});
    }
    database.m_seriesByName = indexed(database.m_series);

    QHash<const DeviceEntry *, const DeviceSeries *> seriesOf;
    for (const DeviceSeries &entry : database.m_series) {
        for (const DeviceEntry *device : entry.devices) {
            if (!seriesOf.contains(device))
                seriesOf.insert(device, &entry);
        }
    }
    for (DeviceEntry &device : database.m_devices)
        device.series = seriesOf.value(&device);
    if (seriesOf.isEmpty())
        qCDebug(lcProgrammer) << "device database: no series with a device";
    return database;
}

DeviceDatabase DeviceDatabase::fromFile(const QString &path)
{
    const Result<QByteArray> json = readWholeFile(path, kMaxFileSize, LineEnds::AsTheyAre);
    if (json)
        return fromJson(*json);
    qCDebug(lcProgrammer).noquote() << "device database:" << json.error().message;
    return {};
}

std::shared_ptr<const DeviceDatabase> DeviceDatabase::installed()
{
    static const auto database = std::make_shared<const DeviceDatabase>(
        fromFile(QCoreApplication::applicationDirPath() + QStringLiteral("/burner.json")));
    return database;
}

QStringList DeviceDatabase::seriesNames() const
{
    QStringList names;
    for (const DeviceSeries &entry : m_series)
        names.append(entry.name);
    return names;
}

const DeviceSeries *DeviceDatabase::series(const QString &name) const
{
    return m_seriesByName.value(name);
}

const DeviceEntry *DeviceDatabase::device(const QString &name) const
{
    return m_deviceByName.value(name);
}

QStringList DeviceDatabase::deviceNames(const QString &seriesName) const
{
    const DeviceSeries *entry = series(seriesName);
    return entry ? entry->deviceNames() : QStringList();
}

QList<const DeviceEntry *> DeviceDatabase::devicesWithIdCode(const QString &idCode) const
{
    QList<const DeviceEntry *> found;
    const QString wanted = plainIdCode(idCode);
    if (wanted.isEmpty())
        return found;
    for (const DeviceEntry &entry : m_devices) {
        if (plainIdCode(entry.idCode).compare(wanted, Qt::CaseInsensitive) == 0)
            found.append(&entry);
    }
    return found;
}

const DeviceOperation *DeviceDatabase::operation(const DeviceEntry &device, const QString &mode,
                                                 const QString &name) const
{
    for (const AccessMode *candidate : device.modes) {
        if (candidate->name != mode)
            continue;
        for (const DeviceOperation &entry : candidate->operations) {
            if (entry.name == name)
                return &entry;
        }
    }
    return nullptr;
}

QString DeviceDatabase::firstSeriesName() const
{
    return m_series.empty() ? QString() : m_series.front().name;
}

QString DeviceDatabase::firstDeviceName() const
{
    return m_devices.empty() ? QString() : m_devices.front().name;
}

QString plainIdCode(const QString &text)
{
    const QString code = text.simplified();
    return code.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? code.mid(2) : code;
}

} // namespace KEO
