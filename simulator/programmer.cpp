#include "programmer.h"

#include "chainstate.h"
#include "jsonwalk.h"
#include "ownership.h"

#include <QDir>
#include <QElapsedTimer>
#include <QLockFile>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace Sim {

namespace {

constexpr int kBarWidth = 20;
constexpr int kFloodPiece = 1 << 16;
constexpr int kLostStatus = 1; ///< of a run that hung until its input closed

QString socketOf(int cableIndex)
{
    const auto *cable =
        std::find_if(std::begin(kProgrammerCables), std::end(kProgrammerCables),
                     [cableIndex](const auto &entry) { return entry.index == cableIndex; });
    return QLatin1String(cable->socket); // the request was checked
}

QByteArray orUnknown(const QString &name)
{
    return name.isEmpty() ? QByteArray("Unknown") : name.toUtf8();
}

/// Redrawn in place by the carriage return in front of the next one.
QByteArray progressBar(int done)
{
    return '[' + QByteArray(done, '#') + QByteArray(kBarWidth - done, ' ') + ']';
}

[[noreturn]] void dieAsIfKilled()
{
#ifdef Q_OS_WIN
    std::_Exit(int(0xC0000005)); // the status of an access violation
#else
    std::raise(SIGKILL);
    std::abort();
#endif
}

/// One at a time on a cable; a lock left behind by a run that was killed counts for nothing.
bool lockCable(QLockFile &lock)
{
    return isOursToUse(lock.fileName()) && lock.tryLock(0);
}

QString lockPath(const QString &socket)
{
    return QDir(QDir::tempPath()).filePath(socket + QStringLiteral(".burner"));
}

} // namespace

Programmer::Programmer(const BoardFile &board, Write write, Logbook *log)
    : m_board(board), m_write(std::move(write)), m_log(log)
{
}

int Programmer::scan()
{
    const QString socket = m_board.scannedCable;
    const CableSetup setup = m_board.cables.value(socket);
    QLockFile lock(lockPath(socket));
    if (!socket.isEmpty() && !lockCable(lock))
        return refuse(QStringLiteral("the cable is in use."));
    const auto fault = beginRun(ProgrammerAction::Scan, setup, {socket, m_board.path});
    return play(scanSteps(setup), fault).value_or(0);
}

int Programmer::download(const DownloadRequest &request)
{
    const QString socket = socketOf(request.cableIndex);
    const CableSetup setup = m_board.cables.value(socket);
    const ChainStateFile file(socket, m_board.path);
    QLockFile lock(lockPath(socket));
    if (!lockCable(lock))
        return refuse(QStringLiteral("the cable is in use."));
    const auto fault = beginRun(ProgrammerAction::Download, setup, file);
    if (fault && fault->kind == ProgrammerFault::Kind::Absent)
        return fault->value;
    if (const QString why = objection(request, setup); !why.isEmpty())
        return refuse(why);

    // From here on the device has lost what it held, and has the new design at the very end.
    if (!setDevice(request.target, false, file))
        return refuse(QStringLiteral("%1 can't be written.").arg(file.path()));
    const auto status =
        play(downloadSteps(setup.chain.at(request.target), setup.programmer), fault);
    if (status) {
        m_log->note(QStringLiteral("not programmed"));
        return *status;
    }
    if (!setDevice(request.target, true, file))
        return refuse(QStringLiteral("%1 can't be written.").arg(file.path()));
    m_write("Finished.\r\n");
    m_log->note(QStringLiteral("programmed"));
    return 0;
}

QList<Programmer::Step> Programmer::scanSteps(const CableSetup &setup)
{
    QList<Step> steps{{"Scanning the chain ...\r\n"}};
    for (const DeviceSetup &device : setup.chain)
        steps.append({"Device Info:\r\n  Family: " + orUnknown(device.series) +
                          "\r\n  Name: " + orUnknown(device.model) + "\r\n  ID: 0x" +
                          idCodeText(device.idCode).toLatin1() + "\r\n",
                      setup.programmer.scanMs});
    steps.append({"Devices found: " + QByteArray::number(setup.chain.size()) + "\r\n",
                  setup.programmer.scanMs});
    return steps;
}

QList<Programmer::Step> Programmer::downloadSteps(const DeviceSetup &device,
                                                  const ProgrammerSetup &programmer)
{
    QList<Step> steps{{"Device " + orUnknown(device.model) + ", ID code 0x" +
                       idCodeText(device.idCode).toLatin1() + "\r\n"}};
    for (const char *phase : {"Erasing", "Programming", "Verifying"}) {
        steps.append({phase + QByteArray(" ...\r\n")});
        for (int done = 1; done <= kBarWidth; ++done)
            steps.append({progressBar(done) + (done < kBarWidth ? "\r" : "\r\n")});
    }
    const qint64 last = steps.size() - 1;
    for (qint64 i = 0; i <= last; ++i)
        steps[i].at = programmer.downloadMs * i / last;
    return steps;
}

std::optional<ProgrammerFault>
Programmer::beginRun(ProgrammerAction action, const CableSetup &setup, const ChainStateFile &file)
{
    ChainState state = file.read();
    const int nth = action == ProgrammerAction::Scan ? ++state.scans : ++state.downloads;
    if (!setup.chain.isEmpty() && !file.write(state))
        m_log->complain(QStringLiteral("%1 can't be written").arg(file.path()));
    for (const ProgrammerFault &fault : setup.programmer.faults) {
        if (fault.action == action && (fault.nth == JsonWalk::kEvery || fault.nth == nth)) {
            m_log->note(QStringLiteral("fault: %1").arg(fault.name));
            return fault;
        }
    }
    return {};
}

bool Programmer::setDevice(int position, bool isProgrammed, const ChainStateFile &file)
{
    ChainState state = file.read();
    DeviceState &device = state.devices[position];
    device.isProgrammed = isProgrammed;
    device.loads += isProgrammed;
    return file.write(state);
}

std::optional<int> Programmer::play(const QList<Step> &steps,
                                    const std::optional<ProgrammerFault> &fault)
{
    if (fault && fault->kind == ProgrammerFault::Kind::Absent)
        return fault->value;
    const bool isCut = fault && fault->kind == ProgrammerFault::Kind::Cut;
    qsizetype left = isCut ? fault->bytes : 0;
    QElapsedTimer clock;
    clock.start();
    for (qsizetype i = 0; i < steps.size(); ++i) {
        QThread::msleep(ulong(std::max<qint64>(0, steps.at(i).at - clock.elapsed())));
        if (isCut && steps.at(i).text.size() >= left) {
            m_write(steps.at(i).text.left(left));
            return fault->value;
        }
        m_write(steps.at(i).text);
        left -= steps.at(i).text.size();
        if (fault && !isCut && i == (steps.size() - 1) / 2) {
            if (const auto status = strike(*fault))
                return status;
        }
    }
    return isCut ? std::optional<int>(fault->value) : std::nullopt;
}

std::optional<int> Programmer::strike(const ProgrammerFault &fault)
{
    switch (fault.kind) {
    case ProgrammerFault::Kind::Error:
        m_write("\r\n" + fault.text.toUtf8() + "\r\n");
        return 0;
    case ProgrammerFault::Kind::Killed:
        dieAsIfKilled();
    case ProgrammerFault::Kind::Hang:
        while (std::getchar() != EOF) {
        }
        return kLostStatus;
    case ProgrammerFault::Kind::Flood:
        for (int left = fault.bytes; left > 0; left -= kFloodPiece)
            m_write(QByteArray(std::min(left, kFloodPiece), '.'));
        return {};
    case ProgrammerFault::Kind::Exit:
    case ProgrammerFault::Kind::Absent:
    case ProgrammerFault::Kind::Cut:
        break;
    }
    return fault.value;
}

int Programmer::refuse(const QString &why)
{
    m_write("Error: " + why.toUtf8() + "\r\n");
    m_log->note(QStringLiteral("refused: ") + why);
    return 0;
}

} // namespace Sim
