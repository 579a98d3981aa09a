#include "keoprogrammermodel.h"

#include "deviceselector.h"

#include <programmer/devicedatabase.h>
#include <programmer/fsheader.h>
#include <widgets/messagebox.h>

#include <QApplication>
#include <QPointer>

#include <utility>

namespace KEO {

KeoProgrammerModel::KeoProgrammerModel(QObject *parent)
    : DeviceTableModel(parent), m_program(installedProgrammer())
{
    connect(this, &DeviceTableModel::filesChanged, this, &KeoProgrammerModel::watchFiles);
    connect(this, &DeviceTableModel::fileChosen, this,
            [this](const QString &path) { readFsFile(path, FsHeaderQueue::Cause::Chosen); });
    connect(this, &DeviceTableModel::targetChosen, this,
            [this](ProgrammerStatus status) { Q_EMIT statusChanged(status, QStringList()); });
    connect(&m_tool, &ProgrammerTool::failed, this, &KeoProgrammerModel::onProgramError);
    connect(&m_watch, &FileSetWatch::fileChanged, this, &KeoProgrammerModel::onFileChanged);
    connect(&m_headers, &FsHeaderQueue::headerRead, this, &KeoProgrammerModel::takeHeader);
}

const DeviceRow *KeoProgrammerModel::targetRow() const
{
    const qsizetype position = targetPosition(m_rows);
    return position < 0 ? nullptr : &m_rows.at(position);
}

bool KeoProgrammerModel::validate() const
{
    const std::optional<QString> fault = chainFault(m_rows);
    if (fault)
        showBox(QMessageBox::Critical, QApplication::activeWindow(), tr("Error"), *fault);
    return !fault;
}

void KeoProgrammerModel::setDevice(const QString &family, const QString &device,
                                   const QString &fsFile)
{
    if (family.isEmpty() && device.isEmpty()) {
        replaceRows({});
        return;
    }
    DeviceRow row = namedDeviceRow(database(), family, device);
    row.fsFile = fsFile;
    replaceRows({row});
    if (!fsFile.isEmpty())
        readFsFile(fsFile, FsHeaderQueue::Cause::Chosen);
}

void KeoProgrammerModel::setTargetStatus(ProgrammerStatus status)
{
    const qsizetype position = targetPosition(m_rows);
    if (position >= 0)
        m_rows[position].status = status;
}

// Runs of the tool.

void KeoProgrammerModel::scan()
{
    if (isRunning())
        return;
    m_rowsBefore = m_rows;
    replaceRows({});
    m_scanGeneration = m_generation;
    startRun(scanArguments(), &KeoProgrammerModel::onScanFinish);
}

void KeoProgrammerModel::download(int cable, int channel)
{
    if (isRunning())
        return;
    m_headers.finish(); // a file that doesn't fit must not get into the device
    const DeviceRow *target = targetRow();
    if (target && m_unread.contains(target->fsFile)) { // it may have been made meanwhile
        readFsFile(target->fsFile, FsHeaderQueue::Cause::Chosen);
        m_headers.finish();
        target = targetRow();
    }
    if (!target) {
        report(ProgrammerStatus::Failed, tr("Error: Program Failed, No target device! "));
        return;
    }
    if (target->fsFile.isEmpty()) {
        report(ProgrammerStatus::Failed, tr("Error: Program Failed, No fs file!"));
        return;
    }
    if (!target->operation) {
        report(ProgrammerStatus::Failed, tr("Error: Program Failed, No operation!"));
        return;
    }
    const QStringList arguments = downloadArguments(m_rows, cable, channel);
    const QPointer<KeoProgrammerModel> self(this);
    Q_EMIT statusChanged(ProgrammerStatus::Downloading, QStringList());
    if (self)
        startRun(arguments, &KeoProgrammerModel::onDownloadFinish);
}

void KeoProgrammerModel::startRun(const QStringList &arguments,
                                  void (KeoProgrammerModel::*handler)(int, QProcess::ExitStatus))
{
    disconnect(m_handler);
    m_handler = connect(&m_tool, &ProgrammerTool::finished, this, handler);
    m_tool.start(m_program, arguments);
}

void KeoProgrammerModel::stopTool()
{
    disconnect(m_handler);
    m_tool.stop();
    restoreRows();
}

void KeoProgrammerModel::cancelRun()
{
    if (!isRunning())
        return;
    const bool isScan = m_scanGeneration.has_value();
    stopTool();
    Q_EMIT toolSaid(lastWords());
    for (DeviceRow &row : m_rows)
        row.status = ProgrammerStatus::DeviceFound;
    const QPointer<KeoProgrammerModel> self(this);
    report(ProgrammerStatus::DeviceFound,
           isScan ? tr("Warn: Scan cancelled.")
                  : tr("Warn: Download cancelled, what it was programming is incomplete."));
    if (self)
        afterRun();
}

QStringList KeoProgrammerModel::lastWords() const
{
    return withoutProgressBars(m_tool.output().lines()) + m_tool.errors().lines();
}

void KeoProgrammerModel::restoreRows()
{
    const std::optional<quint64> generation = std::exchange(m_scanGeneration, std::nullopt);
    const DeviceChain rows = std::exchange(m_rowsBefore, {});
    if (generation == m_generation)
        replaceRows(rows);
}

void KeoProgrammerModel::onScanFinish(int code, QProcess::ExitStatus status)
{
    disconnect(m_handler);
    const QPointer<KeoProgrammerModel> self(this);
    if (code != 0 || status != QProcess::NormalExit) {
        Q_EMIT toolSaid(lastWords());
        restoreRows();
        report(ProgrammerStatus::NoDevice, tr("Error: Scan Device Failed, No device found!"));
    } else {
        m_scanGeneration.reset();
        m_rowsBefore.clear();
        Q_EMIT toolSaid(m_tool.errors().lines());
        const ScanReport scanned = parseScan(m_tool.output().lines());
        DeviceChain chain;
        for (const ScannedDevice &device : scanned.devices) {
            chain.append(scannedDeviceRow(database(), device));
            if (!resolveIdCode(chain.last()))
                return;
        }
        replaceRows(chain);
        Q_EMIT statusChanged(m_rows.isEmpty() ? ProgrammerStatus::NoDevice
                                              : ProgrammerStatus::DeviceFound,
                             scanned.messages);
    }
    if (self)
        afterRun();
}

bool KeoProgrammerModel::resolveIdCode(DeviceRow &row)
{
    const QList<const DeviceEntry *> candidates = database().devicesWithIdCode(row.idCode);
    if (candidates.size() < 2)
        return true;
    const auto database = m_database; // the candidates live in it
    const QPointer<KeoProgrammerModel> self(this);
    const quint64 generation = m_generation;
    const QPointer<DeviceSelector> selector =
        new DeviceSelector(candidates, row.device, QApplication::activeWindow());
    selector->exec();
    const DeviceEntry *chosen = selector ? selector->device() : nullptr;
    delete selector;
    if (!self || m_generation != generation)
        return false;
    if (chosen)
        becomeDevice(row, *chosen);
    return true;
}

void KeoProgrammerModel::onDownloadFinish(int code, QProcess::ExitStatus status)
{
    disconnect(m_handler);
    for (DeviceRow &row : m_rows)
        row.status = ProgrammerStatus::DeviceFound;
    if (!targetRow())
        return;
    const QPointer<KeoProgrammerModel> self(this);
    if (code != 0 || status != QProcess::NormalExit) {
        Q_EMIT toolSaid(lastWords());
        report(ProgrammerStatus::DeviceFound, tr("Error: Fs file download failed!"));
    } else {
        const ToolOutput &output = m_tool.output();
        Q_EMIT toolSaid(m_tool.errors().lines());
        Q_EMIT statusChanged(output.saysError() ? ProgrammerStatus::Failed
                                                : ProgrammerStatus::Downloaded,
                             withoutProgressBars(output.lines()));
    }
    if (self)
        afterRun();
}

void KeoProgrammerModel::onProgramError()
{
    disconnect(m_handler);
    const QPointer<KeoProgrammerModel> self(this);
    Q_EMIT toolSaid(lastWords() + QStringList(tr("Error: %1").arg(m_tool.failure())));
    restoreRows();
    report(ProgrammerStatus::Failed, tr("Error: Call Programmer failed!"));
    if (self)
        afterRun();
}

void KeoProgrammerModel::afterRun()
{
    const QSet<QString> files = std::exchange(m_changedInRun, {});
    const QPointer<KeoProgrammerModel> self(this);
    for (const QString &file : files) {
        if (self)
            onFileChanged(file);
    }
}

void KeoProgrammerModel::report(ProgrammerStatus status, const QString &message)
{
    Q_EMIT statusChanged(status, QStringList(message));
}

// Fs files.

void KeoProgrammerModel::onFileChanged(const QString &path)
{
    if (isRunning()) {
        m_changedInRun.insert(path);
        return;
    }
    const DeviceRow *target = targetRow();
    const QPointer<KeoProgrammerModel> self(this);
    if (target && target->fsFile == path && !readFsFile(path, FsHeaderQueue::Cause::Updated) &&
        self)
        Q_EMIT statusChanged(ProgrammerStatus::DeviceFound);
    if (self)
        watchFiles();
}

void KeoProgrammerModel::watchFiles()
{
    QStringList files;
    for (const DeviceRow &row : m_rows + m_rowsBefore)
        files.append(row.fsFile);
    m_watch.setFiles(files);
}

bool KeoProgrammerModel::readFsFile(const QString &path, FsHeaderQueue::Cause cause)
{
    m_unread.remove(path);
    if (m_headers.read(path, cause))
        return true;
    m_unread.insert(path);
    for (int row = 0; row < m_rows.size(); ++row) {
        if (m_rows.at(row).fsFile != path)
            continue;
        m_rows[row].checksum.clear();
        m_rows[row].userCode.clear();
        rowChanged(row);
    }
    Q_EMIT programPrint(tr("Warn: %1 Invalid.").arg(path));
    return false;
}

void KeoProgrammerModel::takeHeader(const QString &path, const FsHeader &header,
                                    FsHeaderQueue::Cause cause)
{
    QStringList warnings;
    QString checksum;
    bool isInUse = false;
    for (int row = 0; row < m_rows.size(); ++row) {
        if (m_rows.at(row).fsFile != path)
            continue;
        isInUse = true;
        const FsVerdict verdict = applyFsHeader(header, database(), m_designId, m_rows[row]);
        if (verdict == FsVerdict::WrongDevice)
            warnings.append(tr("Warn: %1 and current series or device do not match.").arg(path));
        else if (verdict == FsVerdict::WrongDesign)
            warnings.append(tr("Warn: %1 and keo file do not match.").arg(path));
        if (m_rows.at(row).enabled)
            checksum = m_rows.at(row).checksum;
        rowChanged(row);
    }
    warnings.removeDuplicates();
    watchFiles();
    const QPointer<KeoProgrammerModel> self(this);
    for (const QString &warning : std::as_const(warnings)) {
        if (self)
            Q_EMIT programPrint(warning);
    }
    if (self && isInUse && cause == FsHeaderQueue::Cause::Updated)
        report(ProgrammerStatus::DeviceFound, tr("Warn: File updated,checksum:%1.").arg(checksum));
}

} // namespace KEO
