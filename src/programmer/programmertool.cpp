#include "programmertool.h"

#include "devicedatabase.h"

#include <base/logging.h>
#include <base/siblingprogram.h>

#include <QDir>

#include <utility>

#ifdef Q_OS_UNIX
#include <csignal>
#include <unistd.h>
#endif

namespace KEO {

namespace {

constexpr int kEndTime = 3000; // ms

} // namespace

QString installedProgrammer()
{
    return QDir::toNativeSeparators(programPath(siblingDirectory(), QStringLiteral("burner_cli")));
}

QStringList scanArguments()
{
    return {QStringLiteral("--scan")};
}

QStringList downloadArguments(const DeviceChain &chain, int cable, int channel)
{
    const qsizetype position = targetPosition(chain);
    Q_ASSERT(position >= 0 && chain.at(position).operation);
    const DeviceRow &target = chain.at(position);
    QStringList arguments{
        QStringLiteral("--device"),          target.device,
        QStringLiteral("--fsFile"),          target.fsFile,
        QStringLiteral("--operation_index"), QString::number(target.operation->cmdIndex),
        QStringLiteral("--cable-index"),     QString::number(cable)};
    if (channel > 0)
        arguments << QStringLiteral("--channel") << QString::number(channel);
    if (chain.size() > 1) {
        QStringList codes;
        for (const DeviceRow &row : chain)
            codes.append(QString::number(row.irCode));
        arguments << QStringLiteral("--chain_size") << QString::number(chain.size())
                  << QStringLiteral("--chain_index") << QString::number(position)
                  << QStringLiteral("--chain_ir") << codes.join(u',');
    }
    return arguments;
}

ProgrammerTool::ProgrammerTool(QObject *parent) : QObject(parent)
{
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ProgrammerTool::readOutput);
    connect(&m_process, &QProcess::readyReadStandardError, this, &ProgrammerTool::readErrors);
    connect(&m_process, &QProcess::errorOccurred, this, &ProgrammerTool::fail);
    connect(&m_process, &QProcess::finished, this, &ProgrammerTool::end);
    connect(&m_process, &QProcess::started, this, [this] { m_group = m_process.processId(); });
#ifdef Q_OS_UNIX
    // A group of its own, so that the programs which the tool starts end with it.
    m_process.setChildProcessModifier([] { ::setpgid(0, 0); });
#endif
}

ProgrammerTool::~ProgrammerTool()
{
    stop();
}

void ProgrammerTool::start(const QString &program, const QStringList &arguments)
{
    Q_ASSERT(!m_isRunning);
    qCDebug(lcProgrammer) << "run" << program << arguments;
    m_output = {};
    m_errors = {};
    m_failure.clear();
    m_isRunning = true;
    m_group = 0;
    m_process.start(program, arguments, QIODevice::ReadWrite);
}

void ProgrammerTool::stop()
{
    if (!std::exchange(m_isRunning, false))
        return;
#ifdef Q_OS_UNIX
    if (m_group > 0)
        ::kill(pid_t(-m_group), SIGKILL);
#endif
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(kEndTime);
}

void ProgrammerTool::readOutput()
{
    m_output.append(m_process.readAllStandardOutput());
}

void ProgrammerTool::readErrors()
{
    m_errors.append(m_process.readAllStandardError());
}

void ProgrammerTool::readAll()
{
    readOutput();
    m_output.finish();
    readErrors();
    m_errors.finish();
    for (const QString &line : m_errors.lines())
        qCDebug(lcProgrammer).noquote() << "tool:" << line;
}

void ProgrammerTool::fail(QProcess::ProcessError error)
{
    if (!m_isRunning)
        return;
    qCDebug(lcProgrammer) << "run failed:" << error << m_process.errorString();
    m_failure =
        error == QProcess::FailedToStart
            ? tr("%1 can't be started: %2").arg(m_process.program(), m_process.errorString())
            : tr("%1: %2").arg(m_process.program(), m_process.errorString());
    readAll();
    stop();
    Q_EMIT failed();
}

void ProgrammerTool::end(int code, QProcess::ExitStatus status)
{
    if (!m_isRunning)
        return;
    readAll();
    qCDebug(lcProgrammer) << "run ended:" << code << status;
    m_isRunning = false;
    Q_EMIT finished(code, status);
}

} // namespace KEO
