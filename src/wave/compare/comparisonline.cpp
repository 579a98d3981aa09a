#include "comparisonline.h"

#include <wave_data/windowcompare.h>

#include <QAction>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace WaveMonitor {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(WaveMonitor::ComparisonLine)
};

constexpr int kNamesShown = 3;

/// "34 (trigger +18)".
QString placeText(qsizetype sample, int trigger)
{
    const qsizetype distance = sample - trigger;
    const QString sign = distance > 0 ? QStringLiteral("+") : QString();
    return Text::tr("%1 (trigger %2)")
        .arg(QString::number(sample), sign + QString::number(distance));
}

QString someOf(const QStringList &names)
{
    const QString shown = names.mid(0, kNamesShown).join(QStringLiteral(", "));
    const qsizetype more = names.size() - kNamesShown;
    return more > 0 ? Text::tr("%1 and %2 more").arg(shown, QString::number(more)) : shown;
}

} // namespace

QString comparisonText(const WindowComparison &comparison, const QString &other, int triggerInA)
{
    const QString compared = QString::number(comparison.compared().size());
    QStringList sentences;
    if (const auto first = comparison.firstDifference())
        sentences.append(Text::tr("\u2260 %1: %2 of %3 signals differ, the first at sample %4.")
                             .arg(other, QString::number(comparison.differingSignals()), compared,
                                  placeText(*first, triggerInA)));
    else
        sentences.append(
            Text::tr("%1 %2: no difference in %3 signals, %4 samples.")
                .arg(comparison.isEqual() ? QStringLiteral("=") : QStringLiteral("\u2260"), other,
                     compared, QString::number(comparison.comparedSamples().size())));
    const auto add = [&sentences](const QString &text, qsizetype count) {
        if (count > 0)
            sentences.append(text.arg(count));
    };
    add(Text::tr("Samples only above: %1."), comparison.samplesOnlyInA());
    add(Text::tr("Samples only below: %1."), comparison.samplesOnlyInB());
    add(Text::tr("Signals only above: %1."), comparison.signalsOnlyInA().size());
    add(Text::tr("Signals only below: %1."), comparison.signalsOnlyInB().size());
    return sentences.join(u' ');
}

QString differenceText(const WindowComparison &comparison, qsizetype sample, int triggerInA)
{
    QStringList names;
    for (qsizetype position = 0; position < comparison.compared().size(); ++position) {
        const auto run = comparison.differenceWithin(position, {sample - 1, sample + 1});
        if (run && run->first == sample)
            names.append(comparison.compared().at(position).name);
    }
    return Text::tr("Here, at sample %1: %2.").arg(placeText(sample, triggerInA), someOf(names));
}

ComparisonLine::ComparisonLine(QAction *previous, QAction *next, QAction *close, QWidget *parent)
    : QFrame(parent), m_label(new QLabel)
{
    setObjectName(QStringLiteral("comparisonLine"));
    setFrameShape(StyledPanel);
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 1, 2, 1);
    layout->addWidget(m_label, 1);
    const auto addButton = [layout](QAction *action, Qt::ArrowType arrow, const QString &text) {
        auto *button = new QToolButton;
        button->setDefaultAction(action);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        action->setIconText(text); // shorter than the menu's
        button->setArrowType(arrow);
        button->setToolButtonStyle(arrow == Qt::NoArrow ? Qt::ToolButtonTextOnly
                                                        : Qt::ToolButtonTextBesideIcon);
        button->setAccessibleName(action->toolTip());
        layout->addWidget(button, 0, Qt::AlignTop);
    };
    addButton(previous, Qt::LeftArrow, tr("Previous"));
    addButton(next, Qt::RightArrow, tr("Next"));
    addButton(close, Qt::NoArrow, QStringLiteral("\u2715"));
}

void ComparisonLine::setText(const QString &text)
{
    m_label->setText(text);
    m_label->setAccessibleName(text);
}

} // namespace WaveMonitor
