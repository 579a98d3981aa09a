#include "proposaldialog.h"

#include <widgets/formwidgets.h>

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr qsizetype kNamedRows = 6;
constexpr QSize kSize(520, 300);
constexpr int kTextMargin = 6; // pixels, to the frame

/// A paragraph with its lines under it; nothing without lines.
QString paragraph(const QString &heading, const QStringList &lines)
{
    if (lines.isEmpty())
        return {};
    QString html = QStringLiteral("<p><b>%1</b>").arg(heading.toHtmlEscaped());
    for (const QString &line : lines)
        html += QStringLiteral("<br>") + line.toHtmlEscaped();
    return html + QStringLiteral("</p>");
}

QLabel *wrapped(QLabel *label)
{
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

ProposalDialog::ProposalDialog(const Subject &subject,
                               std::function<TriggerProposal(Wanted)> propose, QWidget *parent)
    : QDialog(parent),
      m_propose(std::move(propose)),
      m_edge(named(new QRadioButton(tr("The &edge into this sample")), "rbtnEdge")),
      m_text(wrapped(named(new QLabel, "proposalText"))),
      m_apply(new QPushButton(tr("&Apply to Core %1").arg(subject.core)))
{
    setObjectName(QStringLiteral("proposalDialog"));
    setWindowTitle(tr("Trigger on This"));
    QStringList rows = subject.rows.first(std::min(subject.rows.size(), kNamedRows));
    if (subject.rows.size() > kNamedRows)
        rows.append(tr("%1 more").arg(subject.rows.size() - kNamedRows));
    auto *about = wrapped(named(new QLabel, "proposalAbout"));
    about->setTextFormat(Qt::PlainText); // names are the design's
    about->setText(tr("At sample %1: %2")
                       .arg(QLocale().toString(subject.sample), rows.join(QStringLiteral(", "))));
    auto *value = named(new QRadioButton(tr("The &value at this sample")), "rbtnValue");
    const auto canHaveEdge = [this] {
        const TriggerProposal edge = m_propose(Wanted::Edge);
        return edge.isPossible() && edge.leftOut.isEmpty();
    };
    (subject.hasEdge && subject.isSignal && canHaveEdge() ? m_edge : value)->setChecked(true);
    m_edge->setEnabled(subject.hasEdge);
    m_edge->setToolTip(subject.hasEdge ? QString() : tr("Nothing of this changes there"));
    m_text->setTextFormat(Qt::RichText);

    auto *scroll = named(new QScrollArea, "proposalScroll");
    scroll->setWidgetResizable(true);
    scroll->setWidget(m_text);
    m_text->setMargin(kTextMargin);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    m_apply->setObjectName(QStringLiteral("btnApply"));
    m_apply->setDefault(true);
    buttons->addButton(m_apply, QDialogButtonBox::AcceptRole);
    auto *choice = new QHBoxLayout;
    choice->addWidget(value);
    choice->addWidget(m_edge);
    choice->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(about);
    layout->addLayout(choice);
    layout->addWidget(scroll, 1);
    layout->addWidget(buttons);
    resize(kSize);

    connect(m_edge, &QRadioButton::toggled, this, &ProposalDialog::update);
    connect(buttons, &QDialogButtonBox::accepted, this, &ProposalDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &ProposalDialog::reject);
    update();
    m_apply->setFocus();
}

void ProposalDialog::update()
{
    m_proposal = m_propose(m_edge->isChecked() ? Wanted::Edge : Wanted::Value);
    QString html;
    if (m_proposal.isPossible())
        html +=
            paragraph(tr("%1 triggers there with").arg(m_proposal.expression), m_proposal.steps);
    else
        html += paragraph(tr("The core can't trigger on this"), {m_proposal.refusal});
    html += paragraph(tr("Left out"), m_proposal.leftOut);
    html += paragraph(tr("Mind that"), m_proposal.remarks);
    m_text->setText(html);
    m_apply->setEnabled(m_proposal.isPossible());
}

} // namespace KEO
