#pragma once

#include <base/filesetwatch.h>
#include <programmer/devicechain.h>
#include <programmer/programmertool.h>

#include <QAbstractTableModel>
#include <QSet>
#include <QTimer>

#include <memory>
#include <vector>

namespace KEO {

class FsHeaderReader;

/// The devices on the chain as a table, a row each, and what can be done with them: scan the chain,
/// check the fs files and watch them, program the target. Owns the rows and the tool's process.
///
/// Nothing blocks: a run of the tool ends with statusChanged, and the header of a large fs file is
/// read between two events. Some faults are told in a box, so anything may have happened when a
/// call returns that can show one. GUI thread.
class KeoProgrammerModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        Enable,
        Series,
        Device,
        Operation,
        FsFile,
        Checksum,
        UserCode,
        IdCode,
        IrCode,
        ColumnCount
    };
    static constexpr qsizetype kFullChain = 16; ///< rows that still take one more: 17 at most

    /// With the installed database and tool.
    explicit KeoProgrammerModel(QObject *parent = nullptr);
    ~KeoProgrammerModel() override;

    /// Another database. Drops all rows, which point into the one before.
    void setDatabase(std::shared_ptr<const DeviceDatabase> database);
    [[nodiscard]] const DeviceDatabase &database() const { return *m_database; }
    /// Another tool: path of its program.
    void setTool(const QString &program) { m_program = program; }
    /// The check value of the open core description; empty if there is none.
    void setDesignId(const QString &id) { m_designId = id; }

    [[nodiscard]] const DeviceChain &rows() const { return m_rows; }
    /// The first enabled row, or null. Valid until the model changes.
    [[nodiscard]] const DeviceRow *targetRow() const;
    /// False if the chain can't be used for programming or a capture; a box has then told why.
    [[nodiscard]] bool validate() const;
    /// Replaces the rows by the device that the command line named; by none if it named none.
    void setDevice(const QString &family, const QString &device, const QString &fsFile);
    void setTargetStatus(ProgrammerStatus status);
    /// \a operation is of the database, or null for bypass.
    void setOperation(int row, const DeviceOperation *operation);

    /// Replaces the rows by what the tool finds on the chain.
    void scan();
    /// Loads the target's fs file into it. \a cable and \a channel are the tool's own numbers.
    void download(int cable, int channel);
    [[nodiscard]] bool isRunning() const { return m_tool.isRunning(); }
    /// Ends a run without a word.
    void stopTool();

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    /// Takes a check state in column Enable, an index of the combo box in Series and Device, a
    /// number in IrCode and a text elsewhere.
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex &index) const override;

public Q_SLOTS:
    void onScanFinish(int code, QProcess::ExitStatus status);
    void onDownloadFinish(int code, QProcess::ExitStatus status);
    void onProgramError();
    void onAddNewDevice();
    void onRemoveDevice(const QModelIndex &index);
    void onMoveUp(const QModelIndex &index);
    void onMoveDown(const QModelIndex &index);
    /// The file at \a path is another one now. During a run of the tool it waits for its end.
    void onFileChanged(const QString &path);

Q_SIGNALS:
    void statusChanged(KEO::ProgrammerStatus status, const QStringList &msg);
    void statusChanged(KEO::ProgrammerStatus status);
    /// A line for the log.
    void programPrint(const QString &outputs);

private:
    enum class Cause { Chosen, Updated };
    /// An fs file whose header is being read.
    struct Reading;

    [[nodiscard]] QString displayText(const DeviceRow &row, Column column) const;
    bool setTarget(int position, bool enabled);
    void report(ProgrammerStatus status, const QString &message);
    void replaceRows(DeviceChain rows);
    void moveRow(int from, int to);
    void rowChanged(int row);
    /// Hands the watch the files of the rows.
    void watchFiles();

    void startRun(const QStringList &arguments,
                  void (KeoProgrammerModel::*handler)(int, QProcess::ExitStatus));
    /// Takes up what waited for the end of the run.
    void afterRun();
    /// Lets the user choose where several devices share an ID code. False if the model is gone or
    /// the scan is out of date.
    [[nodiscard]] bool resolveIdCode(DeviceRow &row);

    /// Begins to read a header, and takes it at once if that is quick. False without a file.
    bool readFsFile(const QString &path, Cause cause);
    void readOn();
    void finishReadings();
    void takeHeader(const Reading &reading);

    std::shared_ptr<const DeviceDatabase> m_database; // never null
    QString m_program;
    QString m_designId;
    DeviceChain m_rows;
    ProgrammerTool m_tool;
    QMetaObject::Connection m_handler; // of the current run
    quint64 m_generation = 0;          // counts the times that all rows were replaced
    FileSetWatch m_watch;
    QSet<QString> m_changedInRun; // files
    std::vector<std::unique_ptr<Reading>> m_readings;
    QTimer m_readTimer; // runs while there are readings
};

} // namespace KEO
