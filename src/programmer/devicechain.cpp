#include "devicechain.h"

#include "devicedatabase.h"
#include "tooloutput.h"

#include <QCoreApplication>

#include <algorithm>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DeviceChain)
};

void takeEntry(DeviceRow &row, const QString &name, const DeviceEntry *entry)
{
    row.device = name;
    row.idCode = entry ? plainIdCode(entry->idCode) : DeviceRow().idCode;
    row.operation = entry ? entry->defaultOperation() : nullptr;
}

} // namespace

void clearBitstream(DeviceRow &row)
{
    row.fsFile.clear();
    row.userCode.clear();
    row.checksum.clear();
}

QString statusText(ProgrammerStatus status)
{
    switch (status) {
    case ProgrammerStatus::NoDevice:
        return Text::tr(" No device detected ");
    case ProgrammerStatus::Downloading:
        return Text::tr(" Waiting download ");
    case ProgrammerStatus::Downloaded:
        return Text::tr(" Ready to acquire ");
    case ProgrammerStatus::Failed:
    case ProgrammerStatus::DeviceFound:
        break;
    }
    return Text::tr(" Please program the device first ");
}

DeviceRow newDeviceRow(const DeviceDatabase &database)
{
    DeviceRow row;
    row.series = database.firstSeriesName();
    row.device = database.firstDeviceName();
    return row;
}

DeviceRow namedDeviceRow(const DeviceDatabase &database, const QString &family,
                         const QString &device)
{
    DeviceRow row;
    row.kind = DeviceRow::kKnown;
    row.enabled = true;
    row.series = family;
    const DeviceSeries *series = database.series(family);
    const DeviceEntry *entry = series ? series->device(device) : database.device(device);
    if (entry && !series && entry->series)
        row.series = entry->series->name;
    takeEntry(row, device, entry);
    return row;
}

DeviceRow scannedDeviceRow(const DeviceDatabase &database, const ScannedDevice &scanned)
{
    DeviceRow row = newDeviceRow(database);
    row.kind = DeviceRow::kKnown;
    if (database.series(scanned.family))
        row.series = scanned.family;
    const DeviceSeries *series = database.series(row.series);
    const DeviceEntry *entry = series ? series->device(scanned.name) : nullptr;
    if (entry)
        row.device = scanned.name;
    else
        entry = database.device(row.device);
    row.operation = entry ? entry->defaultOperation() : nullptr;
    row.idCode = scanned.idCode;
    return row;
}

void becomeDevice(DeviceRow &row, const DeviceEntry &device)
{
    row.kind = DeviceRow::kKnown;
    row.device = device.name;
    if (device.series && !device.series->devices.isEmpty())
        row.series = device.series->name;
    row.operation = device.defaultOperation();
}

void chooseSeries(DeviceRow &row, const DeviceDatabase &database, int index)
{
    if (index < 0)
        return;
    const QStringList names = database.seriesNames();
    if (index == 0 || index >= names.size()) {
        const bool enabled = row.enabled;
        const ProgrammerStatus status = row.status;
        row = newDeviceRow(database);
        row.enabled = enabled;
        row.status = status;
        return;
    }
    const QString &name = names.at(index);
    if (row.series == name && row.kind == DeviceRow::kKnown)
        return;
    row.kind = DeviceRow::kKnown;
    row.series = name;
    row.irCode = DeviceRow::kDefaultIrCode;
    clearBitstream(row);
    const DeviceEntry *first = database.series(name)->devices.value(0);
    takeEntry(row, first ? first->name : QString(), first);
}

void chooseDevice(DeviceRow &row, const DeviceDatabase &database, int index)
{
    if (row.kind != DeviceRow::kKnown) {
        row.device = database.firstDeviceName();
        row.idCode = DeviceRow().idCode;
        return;
    }
    const DeviceSeries *series = database.series(row.series);
    const DeviceEntry *entry = series ? series->devices.value(index) : nullptr;
    if (!entry || entry->name == row.device)
        return;
    clearBitstream(row);
    takeEntry(row, entry->name, entry);
}

qsizetype targetPosition(const DeviceChain &chain)
{
    const auto target =
        std::find_if(chain.begin(), chain.end(), [](const DeviceRow &row) { return row.enabled; });
    return target == chain.end() ? -1 : target - chain.begin();
}

std::optional<QString> chainFault(const DeviceChain &chain)
{
    if (chain.isEmpty())
        return Text::tr("No available device.");
    int targets = 0;
    for (qsizetype position = 0; position < chain.size(); ++position) {
        const DeviceRow &row = chain.at(position);
        // Nothing but its code lets the tool and the server shift through such a device.
        if (row.kind != DeviceRow::kKnown && row.irCode < 1)
            return Text::tr("Device (%1) has wrong IRCode.").arg(position + 1);
        // A device that nobody knows can't be programmed, whatever its check box says.
        if (row.kind == DeviceRow::kKnown && row.enabled)
            ++targets;
    }
    if (targets == 0)
        return Text::tr("No target device.");
    if (targets > 1)
        return Text::tr("Only one device can be set as target device.");
    return std::nullopt;
}

QList<int> chainCodes(const DeviceChain &chain)
{
    QList<int> codes;
    for (const DeviceRow &row : chain)
        codes.append(row.enabled ? 0 : row.irCode);
    return codes;
}

} // namespace KEO
