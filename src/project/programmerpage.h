#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QVariant>

class QLabel;
class QWidget;
class QWidgetAction;

namespace KEO {

class KeoProgrammerWidget;

/// The programmer in a project of either kind: the page on the project's tab, its status in the
/// tool bar, and what both mean for a capture. The page has its own life in the tab; while there is
/// none, the programmer counts as not in use.
class ProgrammerPage final : public QObject
{
    Q_OBJECT

public:
    explicit ProgrammerPage(QObject *parent);
    ~ProgrammerPage() override;

    /// A new page, for the project's tab, which owns it.
    [[nodiscard]] KeoProgrammerWidget *makeWidget();
    /// The page, or null.
    [[nodiscard]] KeoProgrammerWidget *widget() const;
    /// The status for the tool bar.
    [[nodiscard]] QWidgetAction *statusAction() const { return m_statusAction; }

    /// As at first. Ends a run of the tool.
    void reset();
    void setStatus(bool isReady, const QString &text);
    void showStatus(bool isShown);

    [[nodiscard]] bool isInUse() const;
    /// In use, and the bitstream is not known to be in the device.
    [[nodiscard]] bool needsProgramming() const;
    /// Is the chain fit for a capture, and does the user want one? Asks in boxes over \a parent,
    /// so anything may have happened on return, the end of this object included.
    [[nodiscard]] bool mayCapture(QWidget *parent) const;
    /// One number for each device on the cable; 0 stands for the one with the cores.
    [[nodiscard]] QVariantList deviceChain() const;

private:
    QPointer<KeoProgrammerWidget> m_widget; // in the project's tab
    QWidgetAction *m_statusAction;          // child
    QPointer<QLabel> m_statusLabel;         // in the widget of m_statusAction
};

} // namespace KEO
