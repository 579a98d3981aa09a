#pragma once

#include <QList>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QString>

#include <functional>

class QAction;
class QComboBox;
class QToolBar;
class QWidget;
class QWidgetAction;

namespace KEO {

/// The actions of a project, all children of it.
struct RunActions
{
    QAction *saveAction = nullptr;
    QAction *startAction = nullptr;
    QAction *autoAction = nullptr;
    QAction *stopAction = nullptr;
    QAction *forceTriggerAction = nullptr;
    QAction *zoomInAction = nullptr;
    QAction *zoomOutAction = nullptr;
    QAction *zoomFitAction = nullptr;
    QAction *exportAction = nullptr;
};

/// The part of the main window's tool bar that belongs to the open project: the choice of the cable
/// and the actions. It neither connects nor enables them; the project does.
class RunToolBar final : public QObject
{
    Q_OBJECT

public:
    explicit RunToolBar(QObject *parent);
    ~RunToolBar() override;

    [[nodiscard]] const RunActions &actions() const { return m_actions; }

    /// Names and combined numbers, as the session lists them. The one chosen last on \a toolBar is
    /// chosen, whichever project chose it, or else the first.
    void setCables(const QList<QPair<QString, int>> &cables, const QToolBar &toolBar);
    /// Name of the chosen cable; empty without cables.
    [[nodiscard]] QString cableName() const;

    /// Marks the cables for whose names \a isConnected says that their servers are gone.
    void markCables(const std::function<bool(const QString &)> &isConnected);
    void setCablesEnabled(bool isEnabled);

    /// `cable * 2 + channel` of the cable at \a index of the list; 0 if there is none.
    [[nodiscard]] int cableNumber(int index) const;

    /// An action that stands before Start. Borrowed.
    void setStatusAction(QAction *action) { m_statusAction = action; }

    void attach(QToolBar &toolBar);
    /// Remembers the chosen cable on the tool bar.
    void detach(QToolBar &toolBar);

Q_SIGNALS:
    /// The user, or setCables, has chosen a cable.
    void cableIndexChanged(int index);

private:
    void addSeparator(QToolBar &toolBar);

    RunActions m_actions;
    QPointer<QComboBox> m_cableCombo; // in m_cableWidget
    QPointer<QWidget> m_cableWidget;  // of m_cableAction; a tool bar may take it along
    QWidgetAction *m_cableAction;     // child
    QPointer<QAction> m_statusAction;
    QList<QPointer<QAction>> m_separators;
};

} // namespace KEO
