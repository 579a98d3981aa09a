#pragma once

#include "devicechain.h"
#include "tooloutput.h"

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace KEO {

/// The command-line programmer that is installed beside this program, with native separators.
[[nodiscard]] QString installedProgrammer();

[[nodiscard]] QStringList scanArguments();
/// For the target of \a chain, which must be there and have an operation. \a cable and \a channel
/// are the tool's own numbers.
[[nodiscard]] QStringList downloadArguments(const DeviceChain &chain, int cable, int channel);

/// Runs the programmer, one run at a time, without blocking and without a time limit. What it
/// prints, on standard output and on standard error, is kept within the bounds of ToolOutput.
class ProgrammerTool final : public QObject
{
    Q_OBJECT

public:
    explicit ProgrammerTool(QObject *parent = nullptr);
    /// Ends a run, see stop().
    ~ProgrammerTool() override;

    /// From now until finished() or failed(). Must not be running.
    void start(const QString &program, const QStringList &arguments);
    /// Ends the run with the programs that the tool has started, and without a signal. Waits for up
    /// to 3000 ms, usually a few.
    void stop();
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// Of the current run, or of the last one.
    [[nodiscard]] const ToolOutput &output() const { return m_output; }
    /// Likewise, what it says on standard error.
    [[nodiscard]] const ToolOutput &errors() const { return m_errors; }
    /// After failed(): the program and what became of it, a sentence for people.
    [[nodiscard]] QString failure() const { return m_failure; }

Q_SIGNALS:
    /// The tool has ended by itself.
    void finished(int code, QProcess::ExitStatus status);
    /// The tool could not be started, crashed, was killed, or can't be talked to: finished() does
    /// not follow, and nothing of it runs any more.
    void failed();

private:
    void readOutput();
    void readErrors();
    void readAll();
    void fail(QProcess::ProcessError error);
    void end(int code, QProcess::ExitStatus status);

    QProcess m_process;
    ToolOutput m_output;
    ToolOutput m_errors;
    QString m_failure;
    qint64 m_group = 0; // process id of the tool and number of its process group
    bool m_isRunning = false;
};

} // namespace KEO
