#include "stimulus.h"

#include "vcdreader.h"

#include <algorithm>
#include <optional>

namespace Sim {

namespace {

/// Keeps the values of the nets in the plans and takes a row at each edge.
class Sampler final : public VcdListener
{
public:
    Sampler(const QList<SamplingPlan> &plans, const SamplingLimits &limits) : m_limits(limits)
    {
        for (const SamplingPlan &plan : plans)
            m_tasks.emplace_back().plan = plan;
    }

    QString netsKnown(const VcdNets &nets, int codes) override
    {
        m_values.resize(size_t(codes));
        for (Task &task : m_tasks) {
            const auto clock = nets.find(task.plan.clock);
            if (!clock)
                return QStringLiteral("the clock can't be found: %1").arg(clock.error());
            task.clock = *clock;
            watch(task.clock);
            resolve(task, nets);
        }
        return {};
    }

    bool wants(int code) const override { return m_values[size_t(code)].isWatched; }

    void change(int code, QByteArrayView bits) override
    {
        Value &value = m_values[size_t(code)];
        if (!value.isPending) {
            value.isPending = true;
            m_pending.push_back(code);
        }
        value.pending.resize(0); // only the last value of one time counts
        value.pending.append(bits);
    }

    bool timePassed() override
    {
        for (Task &task : m_tasks) {
            const bool before = level(task.clock);
            const bool wasKnown = m_values[size_t(task.clock.code)].isKnown;
            const bool after = pendingLevel(task.clock).value_or(before);
            const bool isEdge = task.plan.fallingEdge ? before && !after : !before && after;
            if (wasKnown && isEdge && task.rows < task.maxRows)
                takeRow(task);
        }
        for (const int code : m_pending)
            settle(m_values[size_t(code)]);
        m_pending.clear();
        return std::any_of(m_tasks.begin(), m_tasks.end(),
                           [](const Task &task) { return task.rows < task.maxRows; });
    }

    Outcome<QList<SampledNets>> take()
    {
        QList<SampledNets> all;
        for (Task &task : m_tasks) {
            if (task.rows == 0)
                return Failure{QStringLiteral("the clock %1 has no %2 edge in the dump")
                                   .arg(task.plan.clock, task.plan.fallingEdge
                                                             ? QStringLiteral("falling")
                                                             : QStringLiteral("rising"))};
            all.append(std::move(task.result));
        }
        return all;
    }

private:
    struct Task
    {
        SamplingPlan plan;
        VcdNets::Bit clock;
        QList<QList<std::optional<VcdNets::Bit>>> sources; ///< by table and column
        qint64 rows = 0;
        qint64 maxRows = 0;
        SampledNets result;
    };

    struct Value
    {
        QByteArray bits;    ///< characters, most significant first
        QByteArray pending; ///< what they become with the present time
        bool isPending = false;
        bool isWatched = false;
        bool isKnown = false;
    };

    static bool levelIn(const QByteArray &bits, int bit)
    {
        // Shorter values are extended with 0, or with X or Z, which are 0 as well.
        const qsizetype at = bits.size() - 1 - bit;
        return at >= 0 && (bits.at(at) == '1' || bits.at(at) == 'h' || bits.at(at) == 'H');
    }

    bool level(const VcdNets::Bit &source) const
    {
        return levelIn(m_values[size_t(source.code)].bits, source.bit);
    }

    std::optional<bool> pendingLevel(const VcdNets::Bit &source) const
    {
        const Value &value = m_values[size_t(source.code)];
        return value.isPending ? std::optional(levelIn(value.pending, source.bit)) : std::nullopt;
    }

    static void settle(Value &value)
    {
        value.bits.swap(value.pending);
        value.isPending = false;
        value.isKnown = true;
    }

    void watch(const VcdNets::Bit &source) { m_values[size_t(source.code)].isWatched = true; }

    void resolve(Task &task, const VcdNets &nets)
    {
        qint64 rowBits = 1;
        for (const QStringList &list : std::as_const(task.plan.nets)) {
            QList<std::optional<VcdNets::Bit>> columns;
            for (const QString &net : list) {
                const auto source = nets.find(net);
                if (source) {
                    watch(*source);
                    columns.append(*source);
                    continue;
                }
                columns.append(std::nullopt);
                if (!task.result.missing.contains(source.error()))
                    task.result.missing.append(source.error());
            }
            rowBits += 64 * ((columns.size() + 63) / 64);
            task.result.tables.append(BitMatrix(int(columns.size())));
            task.sources.append(columns);
        }
        task.maxRows = std::max<qint64>(1, std::min(m_limits.samples, m_limits.bits / rowBits));
    }

    void takeRow(Task &task)
    {
        for (qsizetype table = 0; table < task.sources.size(); ++table) {
            BitMatrix &rows = task.result.tables[table];
            rows.appendRow();
            const auto &columns = task.sources.at(table);
            for (int column = 0; column < columns.size(); ++column) {
                if (columns.at(column) && level(*columns.at(column)))
                    rows.setInLastRow(column);
            }
        }
        ++task.rows;
    }

    SamplingLimits m_limits;
    std::vector<Task> m_tasks;
    std::vector<Value> m_values; ///< by code
    std::vector<int> m_pending;  ///< codes that change with the present time
};

QStringList renamedNets(QStringList nets, const QMap<QString, QString> &renamed)
{
    for (QString &net : nets)
        net = renamed.value(net, net);
    return nets;
}

void appendOnce(QStringList *sentences, const QStringList &more)
{
    for (const QString &sentence : more) {
        if (sentences && !sentences->contains(sentence))
            sentences->append(sentence);
    }
}

} // namespace

Outcome<QList<SampledNets>> sampleNets(QIODevice &dump, const QList<SamplingPlan> &plans,
                                       const SamplingLimits &limits)
{
    Sampler sampler(plans, limits);
    const QString error = readVcd(dump, sampler);
    if (!error.isEmpty())
        return Failure{error};
    return sampler.take();
}

Outcome<QList<CoreStimulus>> readStimulus(QIODevice &dump, const QList<CoreDescription> &cores,
                                          const QMap<QString, QString> &renamed,
                                          QStringList *missing)
{
    QList<SamplingPlan> plans;
    for (const CoreDescription &core : cores) {
        SamplingPlan plan{renamed.value(core.sampleClock, core.sampleClock), core.fallingEdge, {}};
        plan.nets.append(renamedNets(core.captured, renamed));
        for (const QStringList &port : core.ports)
            plan.nets.append(renamedNets(port, renamed));
        plans.append(plan);
    }
    auto sampled = sampleNets(dump, plans);
    if (!sampled)
        return Failure{sampled.error()};

    QList<CoreStimulus> stimuli;
    for (SampledNets &nets : *sampled) {
        CoreStimulus stimulus;
        stimulus.captured = nets.tables.takeFirst();
        for (BitMatrix &port : stimulus.ports)
            port = nets.tables.takeFirst();
        stimuli.append(std::move(stimulus));
        appendOnce(missing, nets.missing);
    }
    return stimuli;
}

Outcome<BitMatrix> readLiteStimulus(QIODevice &dump, const LiteCoreDescription &core,
                                    const QMap<QString, QString> &renamed, QStringList *missing)
{
    const SamplingPlan plan{renamed.value(core.sampleClock, core.sampleClock),
                            core.fallingEdge,
                            {renamedNets(core.captured, renamed)}};
    auto sampled = sampleNets(dump, {plan});
    if (!sampled)
        return Failure{sampled.error()};
    appendOnce(missing, sampled->first().missing);
    return sampled->first().tables.takeFirst();
}

} // namespace Sim
