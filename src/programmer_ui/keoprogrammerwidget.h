#pragma once

#include <programmer/devicechain.h>

#include <QStringList>
#include <QWidget>

#include <memory>

class QCheckBox;
class QTableView;
class QToolButton;

namespace KEO {

class DeviceDatabase;
class KeoProgrammerModel;
class ProgrammerLog;

/// The programmer page of a project: the devices on the chain, the buttons that scan and program
/// it, and a log of what came of it. The page is off until its check box is checked; whoever owns
/// it looks at isEnabledByUser() and status() before a capture.
///
/// During a capture nothing changes on the page: a status that comes meanwhile waits for
/// applyPending(). GUI thread.
class KeoProgrammerWidget final : public QWidget
{
    Q_OBJECT

public:
    explicit KeoProgrammerWidget(QWidget *parent = nullptr);
    ~KeoProgrammerWidget() override;

    /// A child; lives as long as the page.
    [[nodiscard]] KeoProgrammerModel *model() const { return m_model; }

    /// The device that the command line named; texts may be empty.
    void setDevice(const QString &family, const QString &device, const QString &fsFile);
    /// The device that the user named later. The table gets it as from the command line and keeps
    /// the target's bitstream; unless isTableKept().
    void nameDevice(const QString &family, const QString &device);
    /// The user has filled the table, and would lose that if it were set anew: it is in use, or has
    /// several rows.
    [[nodiscard]] bool isTableKept() const;
    /// What the page knows of devices; never null.
    [[nodiscard]] std::shared_ptr<const DeviceDatabase> database() const;
    /// The check value of the open core description, which fs files have to agree with.
    void setDesignId(const QString &id);
    /// The check box is checked.
    [[nodiscard]] bool isEnabledByUser() const;
    void setEnabledByUser(bool enabled);
    /// False if the chain is not fit for use, which a box has then told. Takes what is typed in the
    /// table first.
    [[nodiscard]] bool validate();
    [[nodiscard]] const DeviceChain &rows() const;
    [[nodiscard]] bool hasTarget() const;
    /// Device name of the target; empty if there is none.
    [[nodiscard]] QString targetName() const;
    [[nodiscard]] ProgrammerStatus status() const { return m_status; }
    /// The tool is at it and holds the cable, whether the check box is checked or not.
    [[nodiscard]] bool isRunning() const { return m_isRunning; }
    /// May a run of the tool be ended? Asks in a box over \a parent if it writes to a device, so
    /// anything may have happened on return.
    [[nodiscard]] bool mayEndRun(QWidget *parent) const;
    /// As at first: DeviceFound and off. Ends a run of the tool and forgets what was pending; the
    /// rows and the log stay.
    void reset();
    /// Takes up the status that came during a capture, if one did.
    void applyPending();

public Q_SLOTS:
    void on_searchDevice_clicked();
    void on_downLoad_clicked();
    void on_cancelRun_clicked();
    void onEnableChange(int status);
    void on_addDevice_clicked();
    void on_rmDevice_clicked();
    void on_moveUp_clicked();
    void on_moveDown_clicked();
    void onStatusChanged(KEO::ProgrammerStatus status, const QStringList &msgs);
    void onStatusChanged(KEO::ProgrammerStatus status);
    /// Opens the dialog for the operation of the row, if the index is in that column.
    void onTableViewDoubleClkiced(const QModelIndex &index);
    void updateIsBusy(bool isBusy);
    void updateCable(int cable);
    void updateChannel(int channel);
    /// A line for the log.
    void createProgrammerOutput(const QString &msg);

Q_SIGNALS:
    void programStatusChanged(bool succ, const QString &text);
    /// The check box.
    void enableChange(bool status);
    /// The table has changed, and with it perhaps the target.
    void rowsChanged();
    /// A run of the tool begins or is over: the time for a waiting tip.
    void toolRunning(bool isRunning);

protected:
    void changeEvent(QEvent *event) override;

private:
    [[nodiscard]] QWidget *buildTools();
    [[nodiscard]] QWidget *buildTable();
    [[nodiscard]] QWidget *buildLog();
    /// Sets the least heights of table and log.
    void fitToFont();
    QToolButton *addTool(QWidget *tools, const char *name, const char *icon, const QString &tip,
                         void (KeoProgrammerWidget::*slot)());
    void setRunning(bool isRunning);
    /// Takes what is typed in the table, as leaving the field does.
    void commitEditors();
    /// Moves a row by the model's slot and keeps it selected.
    void moveSelected(void (KeoProgrammerModel::*moveRow)(const QModelIndex &), int by);
    /// In the table's selection; invalid without one.
    [[nodiscard]] QModelIndex selectedIndex() const;
    void selectRow(int row);

    // Children, all of them.
    KeoProgrammerModel *m_model;
    QCheckBox *m_checkBox = nullptr;
    QWidget *m_body = nullptr; // tools, table and log
    QTableView *m_tableView = nullptr;
    ProgrammerLog *m_log = nullptr;
    QList<QToolButton *> m_tools;    // off while the tool runs
    QToolButton *m_cancel = nullptr; // on while the tool runs

    ProgrammerStatus m_status = ProgrammerStatus::DeviceFound;
    ProgrammerStatus m_pendingStatus = ProgrammerStatus::DeviceFound;
    QStringList m_pendingMessages;
    bool m_hasPending = false;
    bool m_isBusy = false;
    bool m_isRunning = false; // as told by toolRunning
    int m_cable = 0;
    int m_channel = 0;
};

} // namespace KEO
