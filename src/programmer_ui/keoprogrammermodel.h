#pragma once

#include "devicetablemodel.h"

#include <base/filesetwatch.h>
#include <programmer/fsheaderqueue.h>
#include <programmer/programmertool.h>

#include <QSet>

#include <optional>

namespace KEO {

/// What can be done with the devices on the chain: scan it, check the fs files and watch them,
/// program the target. Owns the tool's process.
///
/// Nothing blocks: a run of the tool ends with statusChanged, and the header of a large fs file is
/// read between two events. Some faults are told in a box, so anything may have happened when a
/// call returns that can show one. GUI thread.
class KeoProgrammerModel final : public DeviceTableModel
{
    Q_OBJECT

public:
    /// With the installed database and tool.
    explicit KeoProgrammerModel(QObject *parent = nullptr);

    /// Another tool: path of its program.
    void setTool(const QString &program) { m_program = program; }
    /// The check value of the open core description; empty if there is none.
    void setDesignId(const QString &id) { m_designId = id; }

    /// The first enabled row, or null. Valid until the model changes.
    [[nodiscard]] const DeviceRow *targetRow() const;
    /// False if the chain can't be used for programming or a capture; a box has then told why.
    [[nodiscard]] bool validate() const;
    /// Replaces the rows by the device that the command line named; by none if it named none.
    void setDevice(const QString &family, const QString &device, const QString &fsFile);
    void setTargetStatus(ProgrammerStatus status);

    /// Replaces the rows by what the tool finds on the chain. If it fails they come back.
    void scan();
    /// Loads the target's fs file into it. \a cable and \a channel are the tool's own numbers.
    void download(int cable, int channel);
    [[nodiscard]] bool isRunning() const { return m_tool.isRunning(); }
    /// Ends a run as the user wishes, and tells so.
    void cancelRun();
    /// Ends a run without a word.
    void stopTool();

public Q_SLOTS:
    void onScanFinish(int code, QProcess::ExitStatus status);
    void onDownloadFinish(int code, QProcess::ExitStatus status);
    void onProgramError();
    /// The file at \a path is another one now. During a run of the tool it waits for its end.
    void onFileChanged(const QString &path);

Q_SIGNALS:
    void statusChanged(KEO::ProgrammerStatus status, const QStringList &msg);
    void statusChanged(KEO::ProgrammerStatus status);
    /// A line for the log.
    void programPrint(const QString &outputs);
    /// Lines for the log, in the tool's own words. What statusChanged tells comes after them.
    void toolSaid(const QStringList &lines);

private:
    void report(ProgrammerStatus status, const QString &message);
    /// Hands the watch the files of the rows.
    void watchFiles();

    void startRun(const QStringList &arguments,
                  void (KeoProgrammerModel::*handler)(int, QProcess::ExitStatus));
    /// Takes up what waited for the end of the run.
    void afterRun();
    /// All that the tool has printed in a run that went wrong.
    [[nodiscard]] QStringList lastWords() const;
    /// A scan has failed: puts the rows back, unless they have become others meanwhile.
    void restoreRows();
    /// Lets the user choose where several devices share an ID code. False if the model is gone or
    /// the scan is out of date.
    [[nodiscard]] bool resolveIdCode(DeviceRow &row);

    /// Begins to read a header. False, with a line for the log, without a file.
    bool readFsFile(const QString &path, FsHeaderQueue::Cause cause);
    void takeHeader(const QString &path, const FsHeader &header, FsHeaderQueue::Cause cause);

    QString m_program;
    QString m_designId;
    ProgrammerTool m_tool;
    QMetaObject::Connection m_handler; // of the current run
    FileSetWatch m_watch;
    QSet<QString> m_changedInRun; // files
    QSet<QString> m_unread;       // files that could not be read when their rows got them
    DeviceChain m_rowsBefore;     // the scan
    std::optional<quint64> m_scanGeneration; // of the rows while a scan may still fail
    FsHeaderQueue m_headers;
};

} // namespace KEO
