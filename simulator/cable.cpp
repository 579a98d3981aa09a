#include "cable.h"

#include "shiftword.h"
#include "stimulus.h"

#include <QBitArray>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace Sim {

namespace {

constexpr int kMaxReadBits = 1 << 26;

const QString kCommand = QStringLiteral("CMD");
const QString kOperation = QStringLiteral("OPRATE");
const QString kData = QStringLiteral("DATA");
const QString kSize = QStringLiteral("SIZE");
const QString kChain = QStringLiteral("CHAIN");
const QString kResult = QStringLiteral("RES");

/// The devices whose cores write their memory one row late when the design's description is a
/// `.keo` file: a standard core one row more after the marker, a lite core of the implementation 0
/// from the second row on.
bool isLongListModel(const QString &model)
{
    static const QRegularExpression kModel(QStringLiteral("^KR-[A-R]$"));
    return kModel.match(model).hasMatch();
}

void copyKeys(const Packet &from, Packet &to, std::initializer_list<const char *> keys)
{
    for (const char *key : keys) {
        const auto entry = from.constFind(QLatin1String(key));
        if (entry != from.cend())
            to.insert(entry.key(), entry.value());
    }
}

QList<int> chainOf(const CableSetup &setup)
{
    QList<int> chain;
    for (const DeviceSetup &device : setup.chain)
        chain.append(device.description.isEmpty() ? device.instruction : 0);
    return chain;
}

QString textOf(const QVariant &value)
{
    if (value.typeId() == QMetaType::QVariantList) {
        QStringList texts;
        for (const QVariant &entry : value.toList())
            texts.append(textOf(entry));
        return u'[' + texts.join(QStringLiteral(", ")) + u']';
    }
    if (value.typeId() == QMetaType::QBitArray)
        return QStringLiteral("%1 bits").arg(value.toBitArray().size());
    return value.toString();
}

Outcome<std::unique_ptr<DeviceModel>> buildDevice(const DeviceSetup &setup,
                                                  const Core::Report &report, QStringList *notes)
{
    auto design = readDescriptionFile(setup.description);
    if (!design)
        return Failure{design.error()};
    QFile dump(setup.stimulus);
    if (!QFileInfo(setup.stimulus).isFile() || !dump.open(QIODevice::ReadOnly))
        return Failure{QStringLiteral("%1: can't be opened").arg(setup.stimulus)};
    const bool isLate = design->isKeo && isLongListModel(setup.model);
    auto device = std::make_unique<DeviceModel>(report);
    const auto named = [&report](int index) -> Core::Report {
        return [report, index](const QString &text) {
            report(QStringLiteral("core %1: %2").arg(index).arg(text));
        };
    };
    const auto badStimulus = [&setup](const QString &error) {
        return Failure{QStringLiteral("%1: %2").arg(setup.stimulus, error)};
    };
    if (const auto &lite = design->lite) {
        auto stimulus = readLiteStimulus(dump, *lite, setup.nets, notes);
        if (!stimulus)
            return badStimulus(stimulus.error());
        const auto first = isLate && lite->implementation == 0
                               ? LiteCoreModel::FirstSample::SecondRow
                               : LiteCoreModel::FirstSample::FirstRow;
        device->setLiteCore(std::make_unique<LiteCoreModel>(*lite, std::move(*stimulus), first,
                                                            named(lite->index)));
        return device;
    }
    auto stimuli = readStimulus(dump, design->cores, setup.nets, notes);
    if (!stimuli)
        return badStimulus(stimuli.error());
    for (qsizetype i = 0; i < design->cores.size(); ++i) {
        const CoreDescription &core = design->cores.at(i);
        device->addCore(
            std::make_unique<CoreModel>(core, std::move((*stimuli)[i]), isLate, named(core.index)));
    }
    return device;
}

} // namespace

QString operationOf(const Packet &packet)
{
    const QString operation = packet.value(kOperation).toString();
    return operation.isEmpty() ? packet.value(kCommand).toString() : operation;
}

QString describe(const Packet &packet)
{
    QStringList parts;
    const QVariant data = packet.value(kData);
    const QString command = packet.value(kCommand).toString();
    if (!command.isEmpty())
        parts.append(command);
    if (command == QStringLiteral("WRITE") && data.typeId() == QMetaType::QBitArray)
        parts.append(describe(parseShiftWord(data.toBitArray())));
    for (auto entry = packet.cbegin(); entry != packet.cend(); ++entry) {
        const bool isTold = entry.key() == kCommand || (entry.key() == kData && parts.size() > 1);
        if (!isTold)
            parts.append(entry.key() + u'=' + textOf(entry.value()));
    }
    return parts.isEmpty() ? QStringLiteral("(empty)") : parts.join(u' ');
}

Cable::Cable(const CableSetup &setup, Core::Report report)
    : m_setup(setup), m_report(std::move(report))
{
}

Outcome<std::unique_ptr<Cable>> Cable::build(const CableSetup &setup, const Core::Report &report,
                                             QStringList *notes)
{
    std::unique_ptr<Cable> cable(new Cable(setup, report));
    for (const DeviceSetup &device : setup.chain) {
        if (device.description.isEmpty())
            continue;
        auto built = buildDevice(device, report, notes);
        if (!built)
            return Failure{built.error()};
        if (device.isProgrammed)
            cable->m_device = std::move(*built);
    }
    return cable;
}

void Cable::follow(const ChainState &state)
{
    const qsizetype analyzer = chainOf(m_setup).indexOf(0);
    const auto device = state.devices.constFind(int(analyzer));
    if (analyzer < 0 || device == state.devices.cend())
        return;
    if (!device->isProgrammed) {
        m_device.reset();
    } else if (device->loads != m_loads) {
        QStringList notes; // told when the power came on
        auto built = buildDevice(m_setup.chain.at(analyzer), m_report, &notes);
        if (!built)
            m_report(built.error());
        m_device = built ? std::move(*built) : nullptr;
    }
    m_loads = device->loads;
}

std::optional<Packet> Cable::handle(int client, const Packet &packet,
                                    std::optional<int> forcedResult)
{
    const QString command = packet.value(kCommand).toString();
    if (command == QStringLiteral("OPEN")) {
        m_notOpenReported = false;
        const int result = forcedResult ? *forcedResult : openResult(client, packet);
        if (result == Opened)
            m_holder = client;
        else if (m_holder == client)
            m_holder.reset();
        Packet reply{{kResult, result}};
        copyKeys(packet, reply, {"request_id", "data_request_id"});
        return reply;
    }
    if (command == QStringLiteral("READ"))
        return read(client, packet);
    if (command == QStringLiteral("CLOSE"))
        clientLeft(client);
    else if (command == QStringLiteral("WRITE"))
        write(client, packet);
    else
        m_report(QStringLiteral("a packet with the unknown command \"%1\"").arg(command.left(40)));
    return std::nullopt;
}

void Cable::clientLeft(int client)
{
    if (m_holder == client)
        m_holder.reset();
}

void Cable::advance(qint64 samples)
{
    if (m_device)
        m_device->advance(samples);
}

int Cable::openResult(int client, const Packet &packet) const
{
    if (m_holder && m_holder != client) {
        m_report(QStringLiteral("OPEN while another client holds the device"));
        return OpenFailed;
    }
    QList<int> asked;
    for (const QVariant &entry : packet.value(kChain).toList())
        asked.append(entry.toInt());
    if (asked.isEmpty() || asked != chainOf(m_setup)) {
        m_report(QStringLiteral("OPEN for another chain than the board's"));
        return OpenFailed;
    }
    return m_device ? Opened : NotProgrammed;
}

void Cable::write(int client, const Packet &packet)
{
    const QVariant data = packet.value(kData);
    if (m_holder != client)
        reportNotOpen(QStringLiteral("a write"));
    else if (data.typeId() != QMetaType::QBitArray)
        m_report(QStringLiteral("a write without bits"));
    else if (m_device)
        m_device->shiftIn(data.toBitArray());
}

Packet Cable::read(int client, const Packet &packet)
{
    QBitArray bits;
    const int size = packet.value(kSize).toInt();
    if (m_holder != client)
        reportNotOpen(QStringLiteral("a read"));
    else if (size < 1 || size > kMaxReadBits)
        m_report(QStringLiteral("a read of %1 bits").arg(size));
    else if (m_device)
        bits = m_device->shiftOut(size);
    Packet reply{{kData, bits}};
    copyKeys(packet, reply, {"request_id", "data_request_id", "WINDOW", "SECTION_COUNT"});
    return reply;
}

// A program that does not wait for the reply to "OPEN" sends a whole register image to a device
// that refused: one line tells it all.
void Cable::reportNotOpen(const QString &packet)
{
    if (!m_notOpenReported)
        m_report(packet +
                 QStringLiteral(", and the device isn't open; more of these go unreported"));
    m_notOpenReported = true;
}

} // namespace Sim
