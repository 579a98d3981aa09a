#include "boardcheck.h"

#include "boardfile.h"
#include "cable.h"
#include "jsonwalk.h"

#include <QTextStream>

namespace Sim {

namespace {

void describeCore(const CoreModel &model, QTextStream &out)
{
    const CoreDescription &core = model.description();
    out << "    core " << core.index << ": " << (core.dynamic ? "dynamic" : "static") << ", "
        << core.captured.size() << " captured bits, " << core.storageDepth << " rows, "
        << core.unitsInUse().size() << " match units, " << core.expressions.size()
        << " expressions, registers of " << model.registerWidth() << " bits\n"
        << "      clock " << core.sampleClock << ", " << (core.fallingEdge ? "falling" : "rising")
        << " edge: " << model.stimulusSamples() << " samples\n";
}

void describeLiteCore(const LiteCoreModel &model, QTextStream &out)
{
    const LiteCoreDescription &core = model.description();
    out << "    lite core " << core.index << ": " << core.captured.size() << " captured bits, "
        << core.captureAmount << " rows, implementation " << core.implementation
        << (core.capturesInitData ? ", captures its first samples" : "") << "\n      clock "
        << core.sampleClock << ", " << (core.fallingEdge ? "falling" : "rising")
        << " edge: " << model.stimulusSamples() << " samples\n";
}

void describeDevice(const DeviceSetup &device, QTextStream &out)
{
    out << "  device " << (device.model.isEmpty() ? QStringLiteral("(no model)") : device.model)
        << ", ID code 0x" << idCodeText(device.idCode) << ", instruction code "
        << device.instruction << (device.isProgrammed ? "" : ", not programmed") << '\n';
}

QString timesText(int nth)
{
    return nth == JsonWalk::kEvery ? QStringLiteral("every time")
                                   : QStringLiteral("number %1").arg(nth);
}

void describeFault(const Fault &fault, QTextStream &out)
{
    out << "  fault: " << fault.name << " at " << fault.operation << ", " << timesText(fault.nth)
        << '\n';
}

bool checkCable(const QString &server, const CableSetup &setup, QTextStream &out)
{
    out << "cable of server \"" << server << "\"\n";
    for (const DeviceSetup &device : setup.chain)
        describeDevice(device, out);
    if (setup.chain.isEmpty())
        out << "  no device: every OPEN fails\n";
    for (const Fault &fault : setup.faults)
        describeFault(fault, out);

    for (const ProgrammerFault &fault : setup.programmer.faults)
        out << "  programmer fault: " << fault.name << " at "
            << (fault.action == ProgrammerAction::Scan ? "scan" : "download") << ", "
            << timesText(fault.nth) << '\n';

    QStringList notes;
    const auto cable = Cable::build(
        setup, [](const QString &) {}, &notes);
    if (!cable) {
        out << "  error: " << cable.error() << '\n';
        return false;
    }
    if (const DeviceModel *device = (*cable)->device()) {
        for (const auto &core : device->cores())
            describeCore(*core, out);
        if (const LiteCoreModel *lite = device->liteCore())
            describeLiteCore(*lite, out);
    }
    for (const QString &note : std::as_const(notes))
        out << "  reads as 0: " << note << '\n';
    return notes.isEmpty();
}

} // namespace

bool checkBoard(const QString &path, QTextStream &out)
{
    const auto board = readBoardFile(path);
    if (!board) {
        out << "error: " << board.error() << '\n';
        return false;
    }
    out << "board " << board->path << ", " << board->samplesPerSecond << " samples per second\n";
    bool isFine = true;
    for (auto cable = board->cables.begin(); cable != board->cables.end(); ++cable)
        isFine &= checkCable(cable.key(), *cable, out);
    return isFine;
}

} // namespace Sim
