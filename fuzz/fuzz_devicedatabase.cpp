// Bytes as a device database: whatever can be asked for afterwards has an answer inside of it.

#include <programmer/devicechain.h>
#include <programmer/devicedatabase.h>

#include <QLoggingCategory>

#include <cstdint>
#include <cstdlib>

using namespace KEO;

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    QLoggingCategory::setFilterRules(QStringLiteral("signalscope.*=false"));
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const DeviceDatabase database =
        DeviceDatabase::fromJson(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    const QStringList names = database.seriesNames();
    for (int series = 0; series <= names.size(); ++series) {
        DeviceRow row = newDeviceRow(database);
        chooseSeries(row, database, series);
        const QStringList devices = database.deviceNames(row.series);
        for (int device = 0; device <= devices.size(); ++device) {
            chooseDevice(row, database, device);
            if (row.operation && !row.operation->isProgramming())
                std::abort();
        }
        for (const QString &name : devices) {
            const DeviceEntry *entry = database.device(name);
            if (!entry || !entry->series || !database.series(entry->series->name))
                std::abort();
            const bool hasCode = !plainIdCode(entry->idCode).isEmpty();
            if (hasCode && !database.devicesWithIdCode(entry->idCode).contains(entry))
                std::abort();
        }
    }
    return 0;
}
