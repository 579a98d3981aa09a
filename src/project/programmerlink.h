#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

#include <memory>

class QLabel;
class QWidget;
class QWidgetAction;

namespace KEO {

class DeviceDatabase;
class KeoProgrammerWidget;

/// All that a project has to do with the programmer: the page on the project's tab, its status in
/// the tool bar, and what both mean for a capture. The page has its own life in the tab; while
/// there is none, the programmer counts as not in use and takes nothing.
class ProgrammerLink final : public QObject
{
    Q_OBJECT

public:
    explicit ProgrammerLink(QObject *parent);
    ~ProgrammerLink() override;

    /// A new page, for the project's tab, which owns it.
    [[nodiscard]] QWidget *makePage();
    /// The status for the tool bar.
    [[nodiscard]] QWidgetAction *statusAction() const { return m_statusAction; }

    /// As at first. Ends a run of the tool.
    void reset();
    void setStatus(bool isReady, const QString &text);
    void showStatus(bool isShown);
    void setEnabled(bool isEnabled);
    /// The user has to check the page's box anew.
    void switchOff();
    /// The device that the command line named; texts may be empty.
    void setDevice(const QString &family, const QString &device, const QString &fsFile);
    /// The device that the user named later. See KeoProgrammerWidget::nameDevice.
    void nameDevice(const QString &family, const QString &device);
    [[nodiscard]] bool isTableKept() const;
    /// Null without a page.
    [[nodiscard]] std::shared_ptr<const DeviceDatabase> database() const;
    /// The check value of the open description.
    void setDesignId(const QString &id);
    /// A capture is over: takes up the status that came meanwhile.
    void applyPending();

    /// In use, and the bitstream is not known to be in the device.
    [[nodiscard]] bool needsProgramming() const;
    /// The tool is at it and holds the cable, in use or not.
    [[nodiscard]] bool isRunning() const;
    /// May a run of the tool be ended? Asks in a box over \a parent if it writes to a device, so
    /// anything may have happened on return, the end of this object included.
    [[nodiscard]] bool mayEndRun(QWidget *parent) const;
    /// Is the chain fit for a capture, and does the user want one? Asks in boxes over \a parent,
    /// so anything may have happened on return, the end of this object included.
    [[nodiscard]] bool mayCapture(QWidget *parent) const;
    /// One number for each device on the cable; 0 stands for the one with the cores.
    [[nodiscard]] QVariantList deviceChain() const;
    /// Model of the device with the cores; empty without one.
    [[nodiscard]] QString targetName() const;

Q_SIGNALS:
    // To the page, as the project has them.
    void busyChanged(bool isBusy);
    void cableChanged(int cable);
    void channelChanged(int channel);
    // As the page has them.
    void programStatusChanged(bool succ, const QString &text);
    void enableChange(bool status);
    /// The page's table has changed, and with it perhaps the target.
    void rowsChanged();
    /// A run of the tool begins or is over.
    void toolRunning(bool isRunning);

private:
    [[nodiscard]] bool isInUse() const;

    QPointer<KeoProgrammerWidget> m_page;
    QWidgetAction *m_statusAction;  // child
    QPointer<QLabel> m_statusLabel; // in the widget of m_statusAction
};

} // namespace KEO
