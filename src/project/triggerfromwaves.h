#pragma once

#include "projectparts.h"

#include <capture/triggerproposal.h>

#include <QObject>
#include <QPointer>

class QWidget;

namespace KEO {

class ProposalDialog;
class WaveMenuAction;

/// Trigger on This: proposes a trigger on what the user points at in the waves and sets it on the
/// page, from where it can be taken back at once. Off during a run, as the page is.
class TriggerFromWaves final : public QObject
{
    Q_OBJECT

public:
    TriggerFromWaves(const ProjectParts &parts, QObject *parent);
    ~TriggerFromWaves() override;

    /// \a window may be null, and is borrowed.
    void enter(QWidget *window);
    void leave();
    void setEnabled(bool isEnabled);

public Q_SLOTS:
    /// There are other windows.
    void followWindows();

private:
    void propose();
    void apply(int core, const TriggerProposal &proposal);
    void revert(int core, const TriggerChanges &changes);

    const ProjectParts m_parts;
    const bool m_hasTrigger;
    WaveMenuAction *m_action; // child
    QPointer<QWidget> m_window;
    QPointer<ProposalDialog> m_dialog; // child of the window
};

} // namespace KEO
