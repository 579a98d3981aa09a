#pragma once

#include <capture/triggerproposal.h>
#include <design/wantedbits.h>

#include <QDialog>
#include <QStringList>

#include <functional>

class QLabel;
class QPushButton;
class QRadioButton;

namespace KEO {

/// Shows how the core could trigger on what rows are at a sample, by their values or their edges,
/// and applies it when it is accepted. Window modal.
class ProposalDialog final : public QDialog
{
    Q_OBJECT

public:
    struct Subject
    {
        int core = 0;
        qsizetype sample = 0;
        QStringList rows;      ///< as shown
        bool hasEdge = false;  ///< some of them change there
        bool isSignal = false; ///< it is one, and no bus
    };

    /// \a propose is asked whenever the user chooses, and outlives the dialog.
    ProposalDialog(const Subject &subject, std::function<TriggerProposal(Wanted)> propose,
                   QWidget *parent);

    /// What is shown.
    [[nodiscard]] const TriggerProposal &proposal() const { return m_proposal; }

private:
    void update();

    const std::function<TriggerProposal(Wanted)> m_propose;
    TriggerProposal m_proposal;
    QRadioButton *m_edge; // these are owned by the object tree
    QLabel *m_text;
    QPushButton *m_apply;
};

} // namespace KEO
