#include "triggerfromwaves.h"

#include "configpage.h"
#include "proposaldialog.h"
#include "statusline.h"
#include "wavemenuaction.h"
#include "wavetabs.h"

#include <design/design.h>
#include <design/rehearsal.h>
#include <design/wantedbits.h>
#include <wave/wavemonitorwidget.h>
#include <wave_data/windowcontents.h>

#include <algorithm>

namespace KEO {

using WaveMonitor::WaveMonitorWidget;

TriggerFromWaves::TriggerFromWaves(const ProjectParts &parts, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_hasTrigger(parts.design.traits().kind != DescriptionKind::Lite),
      m_action(new WaveMenuAction(tr("Trigger on This..."), Qt::CTRL | Qt::SHIFT | Qt::Key_T,
                                  WaveMenuAction::Menus::WavesAndNames, this))
{
    m_action->setObjectName(QStringLiteral("triggerOnThisAction"));
    m_action->setToolTip(m_hasTrigger ? tr("Sets the trigger to what the rows are at this sample")
                                      : tr("A lite core has no trigger"));
    m_action->setEnabled(m_hasTrigger);
    connect(m_action, &QAction::triggered, this, &TriggerFromWaves::propose);
}

TriggerFromWaves::~TriggerFromWaves()
{
    delete m_dialog;
}

void TriggerFromWaves::enter(QWidget *window)
{
    m_window = window;
    m_action->enter(window);
}

void TriggerFromWaves::leave()
{
    delete m_dialog;
    m_action->leave();
    m_window = nullptr;
}

void TriggerFromWaves::setEnabled(bool isEnabled)
{
    m_action->setEnabled(isEnabled && m_hasTrigger);
    m_parts.status.setOfferEnabled(isEnabled); // a running core keeps what it was given
    if (!isEnabled && m_dialog)
        m_dialog->reject();
}

void TriggerFromWaves::followWindows()
{
    m_action->offer(m_parts.waves.monitors());
}

void TriggerFromWaves::propose()
{
    const WaveMonitorWidget *front = m_parts.waves.current();
    CoreConfig *core = front ? m_parts.design.triggerCore(front->coreNumber()) : nullptr;
    if (!core || m_dialog) {
        if (!front)
            m_parts.status.tell(
                tr("To trigger on something, go to its sample in the waves first."));
        return;
    }
    const WaveMonitorWidget::Picked picked = front->picked();
    if (picked.ids.isEmpty()) {
        m_parts.status.tell(tr("To trigger on something, select its rows first."));
        return;
    }
    const auto wanted = [monitor = QPointer(front), picked](Wanted what) {
        return monitor ? wantedBits(monitor->contents(), picked.ids, picked.sample, what)
                       : QList<WantedBit>();
    };
    const auto proposed = [this, core, wanted, ports = portSamplesOf(*core, front->contents()),
                           sample = picked.sample](Wanted what) {
        TriggerProposal proposal;
        m_parts.page.withSettings(
            [&] { proposal = proposeTrigger(*core, wanted(what), ports, sample); });
        return proposal;
    };
    m_dialog = new ProposalDialog({.core = front->coreNumber(),
                                   .sample = picked.sample,
                                   .rows = picked.rows,
                                   .hasEdge = wanted(Wanted::Edge) != wanted(Wanted::Value),
                                   .isSignal = picked.ids.size() == 1},
                                  proposed, m_window);
    m_dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_dialog, &ProposalDialog::accepted, this,
            [this, number = front->coreNumber()] { apply(number, m_dialog->proposal()); });
    connect(m_dialog, &ProposalDialog::finished, this, [this] { m_dialog.clear(); });
    m_dialog->open();
}

void TriggerFromWaves::apply(int core, const TriggerProposal &proposal)
{
    const auto before = m_parts.page.setTrigger(core, proposal.changes);
    if (!before)
        return;
    m_parts.status.offer(
        tr("Core %1 triggers with %2 now.").arg(QString::number(core), proposal.expression),
        tr("Revert"), [this, core, before] { revert(core, *before); });
}

void TriggerFromWaves::revert(int core, const TriggerChanges &changes)
{
    if (m_parts.design.isBusy() || !m_parts.page.setTrigger(core, changes))
        return;
    m_parts.status.tell(tr("The trigger of core %1 is as it was.").arg(core));
}

} // namespace KEO
