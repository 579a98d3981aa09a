#include "diagnosistext.h"

#include <config/coreconfig.h>
#include <trigger/valuetext.h>

#include <QCoreApplication>
#include <QLocale>
#include <QSet>
#include <QStringList>

#include <algorithm>

namespace KEO {

namespace {

using Subject = TriggerFinding::Subject;
using Weight = TriggerFinding::Weight;

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::DiagnosisText)
};

constexpr qsizetype kNamedBits = 4;   // in a sentence
constexpr qsizetype kBinaryWidth = 4; // bits that are told one by one

QString number(qsizetype value)
{
    return QLocale().toString(value);
}

QString samplesText(qsizetype samples)
{
    return samples == 1 ? Text::tr("1 sample") : Text::tr("%1 samples").arg(number(samples));
}

QString unitName(int unit)
{
    return QStringLiteral("M%1").arg(unit);
}

QString listed(QStringList items)
{
    if (items.size() <= 1)
        return items.value(0);
    const QString last = items.takeLast();
    return Text::tr("%1 and %2").arg(items.join(QStringLiteral(", ")), last);
}

QString digitsOf(const QBitArray &bits)
{
    QString digits;
    for (qsizetype i = 0; i < bits.size(); ++i)
        digits.append(bits.testBit(i) ? u'1' : u'0');
    return digits;
}

QString numberText(const QBitArray &bits)
{
    const QString digits = digitsOf(bits);
    return digits.size() <= kBinaryWidth ? digits : QStringLiteral("0x") + digitText(digits, 4);
}

/// Puts the sentences together.
class Teller final
{
public:
    Teller(const CoreConfig &core, const TriggerProgram &program, const TriggerDiagnosis &diagnosis)
        : m_core(core), m_program(program), m_diagnosis(diagnosis)
    {
    }

    QList<DiagnosisLine> run();

private:
    void add(Subject subject, int index, Weight weight, const QString &text,
             std::optional<qsizetype> sample = {})
    {
        m_lines.append({subject, index, weight, sample, text});
    }
    void tellTrigger();
    void tellFindings();
    void tellExpression(const ExpressionProgram &expression, const ExpressionDiagnosis &diagnosis);
    void tellUnit(const UnitProgram &unit, const UnitDiagnosis &diagnosis);
    void tellNearest(const UnitProgram &unit, const NearestMiss &nearest);
    [[nodiscard]] QString wrongBits(const UnitProgram &unit, const NearestMiss &nearest) const;
    [[nodiscard]] QString slotName(int slot) const { return unitName(m_program.units[slot].unit); }
    [[nodiscard]] QString unknownText(const QString &name, qsizetype unknown) const;

    const CoreConfig &m_core;
    const TriggerProgram &m_program;
    const TriggerDiagnosis &m_diagnosis;
    // What the check says can never match or be true.
    QSet<int> m_hopeless;     ///< units
    QSet<int> m_hopelessRows; ///< of expressions
    QList<DiagnosisLine> m_lines;
};

QList<DiagnosisLine> Teller::run()
{
    tellTrigger();
    tellFindings();
    for (size_t i = 0; i < m_program.expressions.size(); ++i)
        tellExpression(m_program.expressions[i], m_diagnosis.expressions[i]);
    quint32 inForce = 0;
    for (const ExpressionProgram &expression : m_program.expressions)
        inForce |= expression.slots;
    for (int slot = 0; slot < m_program.units.size(); ++slot) {
        if ((inForce >> slot) & 1)
            tellUnit(m_program.units[slot], m_diagnosis.units[size_t(slot)]);
    }
    return m_lines;
}

QString Teller::unknownText(const QString &name, qsizetype unknown) const
{
    if (unknown == m_diagnosis.samples)
        return Text::tr("What %1 does is not known at any sample: too little of its port was "
                        "captured.")
            .arg(name);
    return Text::tr("What %1 does is not known at %2 of %3.")
        .arg(name, number(unknown), samplesText(m_diagnosis.samples));
}

void Teller::tellTrigger()
{
    const QString samples = samplesText(m_diagnosis.samples);
    if (m_diagnosis.samples == 0)
        add(Subject::Core, 0, Weight::Note, Text::tr("There is no sample to look at."));
    else if (m_program.tables == TriggerProgram::Tables::Kept)
        add(Subject::Core, 0, Weight::Note,
            Text::tr(
                "The core goes by expressions that it was given before, which are not known."));
    else if (m_diagnosis.hits > 0)
        add(Subject::Core, 0, Weight::Note,
            Text::tr("As it is set now, it triggers at %1 of %2, first at %3.")
                .arg(number(m_diagnosis.hits), samples, number(*m_diagnosis.firstHit)),
            m_diagnosis.firstHit);
    else if (m_diagnosis.unknown == 0)
        add(Subject::Core, 0, Weight::Note,
            Text::tr("As it is set now, it triggers at none of %1.").arg(samples));
    else
        add(Subject::Core, 0, Weight::Note,
            Text::tr("As it is set now, it triggers at none of the samples that are known: at %1 "
                     "of %2 too little was captured to tell.")
                .arg(number(m_diagnosis.unknown), samples));
}

void Teller::tellFindings()
{
    for (const TriggerFinding &finding : checkTrigger(m_core)) {
        if (finding.weight != Weight::Obstacle || finding.subject == Subject::Amount)
            continue;
        if (finding.subject == Subject::Unit)
            m_hopeless.insert(finding.index);
        if (finding.subject == Subject::Expression)
            m_hopelessRows.insert(finding.index);
        add(finding.subject, finding.index, finding.weight, finding.text);
    }
}

void Teller::tellExpression(const ExpressionProgram &expression,
                            const ExpressionDiagnosis &diagnosis)
{
    if (!expression.isEvaluable)
        return; // the check has said so
    const int row = expression.row;
    const QString name = QStringLiteral("exp%1").arg(row);
    if (diagnosis.hits > 0)
        add(Subject::Expression, row, Weight::Note,
            Text::tr("%1 is true at %2, first at %3.")
                .arg(name, samplesText(diagnosis.hits), number(*diagnosis.firstHit)),
            diagnosis.firstHit);
    for (const DeadTerm &term : diagnosis.dead) {
        const QString text =
            term.reports
                ? Text::tr("%1 fails by %2 alone, which reports all the time: without that it "
                           "would be true at %3, first at %4.")
                : Text::tr("%1 fails by %2 alone, which never reports: otherwise it would be true "
                           "at %3, first at %4.");
        add(Subject::Expression, row, Weight::Obstacle,
            text.arg(name, slotName(term.slot), samplesText(term.hits), number(term.firstHit)),
            term.firstHit);
    }
    if (diagnosis.nearest && diagnosis.dead.isEmpty() && !m_hopelessRows.contains(row)) {
        QStringList missing;
        QStringList excess;
        for (const auto &[slot, reports] : diagnosis.nearest->differing)
            (reports ? excess : missing).append(slotName(slot));
        const QString sample = number(diagnosis.nearest->sample);
        QString text;
        if (excess.isEmpty())
            text = Text::tr("%1 came nearest at sample %2, where %3 had to report besides.")
                       .arg(name, sample, listed(missing));
        else if (missing.isEmpty())
            text = Text::tr("%1 came nearest at sample %2, where %3 ought not to have reported.")
                       .arg(name, sample, listed(excess));
        else
            text = Text::tr("%1 came nearest at sample %2, where %3 had to report besides, and %4 "
                            "ought not to have reported.")
                       .arg(name, sample, listed(missing), listed(excess));
        add(Subject::Expression, row, Weight::Note, text, diagnosis.nearest->sample);
    }
    if (diagnosis.hits == 0 && diagnosis.unknown > 0)
        add(Subject::Expression, row, Weight::Note,
            Text::tr("Whether %1 is true is not known at %2 of %3.")
                .arg(name, number(diagnosis.unknown), samplesText(m_diagnosis.samples)));
}

void Teller::tellUnit(const UnitProgram &unit, const UnitDiagnosis &diagnosis)
{
    const QString name = unitName(unit.unit);
    const bool isCounting = unit.count.value_or(1) > 1;
    if (diagnosis.hits == 1)
        add(Subject::Unit, unit.unit, Weight::Note,
            Text::tr("%1 reports at one sample, %2.").arg(name, number(*diagnosis.firstHit)),
            diagnosis.firstHit);
    else if (diagnosis.hits > 0)
        add(Subject::Unit, unit.unit, Weight::Note,
            Text::tr("%1 reports at %2, first at %3, at most %4 in a row.")
                .arg(name, samplesText(diagnosis.hits), number(*diagnosis.firstHit),
                     number(diagnosis.longestRun)),
            diagnosis.firstHit);
    else if (diagnosis.matches > 0 && isCounting)
        add(Subject::Unit, unit.unit, Weight::Note,
            (unit.counting == Counting::Continuous
                 ? Text::tr("%1 never reports: it waits for %2 matches in a row, and there were at "
                            "most %3.")
                 : Text::tr("%1 never reports: it waits for %2 matches, and there were %3."))
                .arg(name, number(*unit.count), number(diagnosis.counted)));
    else if (diagnosis.nearest && !m_hopeless.contains(unit.unit))
        tellNearest(unit, *diagnosis.nearest);
    if (diagnosis.hits == 0 && diagnosis.unknown > 0)
        add(Subject::Unit, unit.unit, Weight::Note, unknownText(name, diagnosis.unknown));
}

/// The bits of the port by their names, with what was asked of each.
QString Teller::wrongBits(const UnitProgram &unit, const NearestMiss &nearest) const
{
    const TriggerPort *port = m_core.triggerByIndex(unit.port);
    QStringList items;
    for (const int bit : nearest.wrongBits.first(std::min(nearest.wrongBits.size(), kNamedBits))) {
        const SignalEntry signal = signalAtPosition(port->signals, bit);
        const QString name = signal.text.isEmpty() ? signal.name : signal.text;
        const bool compare = unit.words.compareWord.testBit(bit);
        const bool mask = unit.words.maskWord.testBit(bit);
        if (!unit.words.edgeWord.testBit(bit))
            items.append((compare ? Text::tr("%1 was 0") : Text::tr("%1 was 1")).arg(name));
        else if (mask)
            items.append(
                (compare ? Text::tr("%1 changed") : Text::tr("%1 did not change")).arg(name));
        else
            items.append(
                (compare ? Text::tr("%1 did not fall") : Text::tr("%1 did not rise")).arg(name));
    }
    const qsizetype others = nearest.wrongBits.size() - kNamedBits;
    if (others > 0)
        items.append(others == 1 ? Text::tr("one more bit was wrong")
                                 : Text::tr("%1 more bits were wrong").arg(others));
    return listed(items);
}

void Teller::tellNearest(const UnitProgram &unit, const NearestMiss &nearest)
{
    const QString name = unitName(unit.unit);
    const QString sample = number(nearest.sample);
    QString text;
    if (unit.function == MatchFunction::NotEqual)
        text = Text::tr("%1 never matched: its value was there all the time.").arg(name);
    else if (nearest.to == NearestMiss::To::Pattern)
        text = Text::tr("%1 never matched. Nearest was sample %2: %3.")
                   .arg(name, sample, wrongBits(unit, nearest));
    else if (nearest.distance.count(true) == 0)
        text = Text::tr("%1 never matched. Nearest was sample %2 with %3, the bound itself.")
                   .arg(name, sample, numberText(nearest.value));
    else
        text = Text::tr("%1 never matched. Nearest was sample %2 with %3, which is %4 from %5.")
                   .arg(name, sample, numberText(nearest.value),
                        decimalText(digitsOf(nearest.distance)), numberText(nearest.bound));
    add(Subject::Unit, unit.unit, Weight::Note, text, nearest.sample);
}

} // namespace

QList<DiagnosisLine> diagnosisLines(const CoreConfig &core, const TriggerProgram &program,
                                    const TriggerDiagnosis &diagnosis)
{
    return Teller(core, program, diagnosis).run();
}

} // namespace KEO
