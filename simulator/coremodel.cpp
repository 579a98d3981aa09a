#include "coremodel.h"

#include "expression.h"

#include <algorithm>
#include <bit>

namespace Sim {

namespace {

constexpr quint16 kStart = 0x0000;
constexpr quint16 kExpressions = 0x0020;
constexpr quint16 kAmount = 0x0021;
constexpr quint16 kOffset = 0x0022;
constexpr quint16 kWindows = 0x0023;
constexpr quint16 kUnitBase = 0x0100;
constexpr quint16 kUnitEnd = 0x0200;
constexpr quint16 kTableBase = 0xab00;
constexpr int kAddressStep = 16;
constexpr int kTables = (0x10000 - kTableBase) / kAddressStep;

constexpr quint64 kArm = 1;
constexpr quint64 kForce = 3;

// Rows between the trigger and its marker: the trigger logic takes that many clocks, one more where
// it goes through a truth table.
constexpr int kStaticLead = 2;
constexpr int kDynamicLead = 3;

constexpr int kBlockCountBits = 16;
constexpr int kLeadingBits = 32;
constexpr int kTrailingBits = 1;
constexpr quint64 kLeadingPattern = 0xa5c3a5c3; // tells a shift that is one bit off at a glance

constexpr quint32 kHitsKnown = 0x80000000;

QString addressText(quint16 address)
{
    return QStringLiteral("0x%1").arg(address, 4, 16, QLatin1Char('0'));
}

} // namespace

CoreModel::CoreModel(CoreDescription description, CoreStimulus stimulus, bool extraRow,
                     Report report)
    : m_description(std::move(description)),
      m_stimulus(std::move(stimulus)),
      m_width(m_description.registerWidth()),
      m_extraRows(extraRow ? 1 : 0),
      m_report(std::move(report)),
      m_inUse(m_description.unitsInUse()),
      m_staticFires(qsizetype(1) << m_inUse.size()),
      m_memory(size_t(m_description.storageDepth))
{
    Q_ASSERT(stimulusSamples() > 0);
    for (const int unit : m_inUse) {
        const int port = m_description.units[size_t(unit)].port;
        m_units.emplace_back(int(m_description.ports[size_t(port)].size()));
    }
    for (const QString &text : m_description.expressions) {
        if (const auto table = expressionTable(text, m_inUse); table && !m_description.dynamic)
            m_staticFires |= *table;
    }
}

void CoreModel::shiftIn(const ShiftWord &word)
{
    switch (word.kind) {
    case ShiftWord::Kind::RegisterWrite:
        if (word.data.size() == m_width)
            writeRegister(word.address, word.data);
        else
            m_report(QStringLiteral("a write of %1 bits to register %2, which has %3")
                         .arg(word.data.size())
                         .arg(addressText(word.address))
                         .arg(m_width));
        return;
    case ShiftWord::Kind::ReadSelect:
        m_blockSelect.reset();
        m_readSelect.reset();
        if (!word.data.isEmpty())
            m_report(QStringLiteral("%1 bits follow the read select").arg(word.data.size()));
        else if (readRegister(word.address))
            m_readSelect = word.address;
        else
            m_report(
                QStringLiteral("there is no register %1 to read").arg(addressText(word.address)));
        return;
    case ShiftWord::Kind::Block:
        m_blockSelect.reset();
        m_readSelect.reset();
        if (word.data.size() == kBlockCountBits)
            m_blockSelect = {word.address, int(numberAt(word.data, 0, kBlockCountBits))};
        else
            m_report(QStringLiteral("a block read has %1 bits for its row count, not %2")
                         .arg(word.data.size())
                         .arg(kBlockCountBits));
        return;
    case ShiftWord::Kind::CoreSelect:
    case ShiftWord::Kind::Malformed:
        m_report(describe(word));
    }
}

QBitArray CoreModel::shiftOut(qsizetype size)
{
    if (!m_readSelect && !m_blockSelect) {
        m_report(QStringLiteral("a read, and nothing is selected for reading"));
        return {};
    }
    if (m_armed)
        storeRows(m_seen);
    QBitArray bits = m_readSelect ? readRegister(*m_readSelect).value_or(QBitArray())
                                  : readBlock(m_blockSelect->first, m_blockSelect->second);
    if (bits.size() != size) {
        m_report(
            QStringLiteral("a read of %1 bits where %2 are to come").arg(size).arg(bits.size()));
        bits.resize(size);
    }
    return bits;
}

std::optional<QBitArray> CoreModel::readRegister(quint16 address) const
{
    if (address == kStart)
        return rightAligned(!m_armed ? 0 : m_forced ? kForce : kArm, m_width);
    if (address >= kExpressions && address <= kWindows)
        return m_registers.value(address, QBitArray(m_width));
    return std::nullopt;
}

QBitArray CoreModel::readBlock(quint16 address, int rows) const
{
    const int captured = m_stimulus.captured.width();
    const int filling = m_width - captured - 1;
    BitWriter writer(kLeadingBits + qsizetype(rows) * m_width + kTrailingBits);
    writer.append(kLeadingPattern, kLeadingBits);
    for (qint64 at = qint64(address) + rows - 1; at >= address; --at) {
        const StoredRow row = at < qint64(m_memory.size()) ? m_memory[size_t(at)] : StoredRow{};
        writer.appendZeros(filling);
        writer.append(row.marker ? 1 : 0, 1);
        if (row.sample >= 0)
            writer.appendPacked(m_stimulus.captured.row(row.sample), captured);
        else
            writer.appendZeros(captured);
    }
    writer.appendZeros(kTrailingBits);
    return writer.take();
}

// Registers

void CoreModel::writeRegister(quint16 address, const QBitArray &value)
{
    if (address == kStart)
        writeStart(value);
    else if (address >= kExpressions && address <= kWindows)
        m_registers.insert(address, value);
    else if (address >= kUnitBase && address < kUnitEnd)
        writeUnitRegister(address, value);
    else if (address >= kTableBase)
        writeTable(address, value);
    else
        m_report(QStringLiteral("there is no register %1 to write").arg(addressText(address)));
}

void CoreModel::writeUnitRegister(quint16 address, const QBitArray &value)
{
    const int number = (address - kUnitBase) / kAddressStep;
    const qsizetype slot = m_inUse.indexOf(number);
    if (slot < 0) {
        m_report(QStringLiteral("register %1 belongs to match unit %2, which the design lacks")
                     .arg(addressText(address))
                     .arg(number));
        return;
    }
    MatchUnit &unit = m_units[size_t(slot)];
    const UnitDescription &built = m_description.units[size_t(number)];
    switch (address % kAddressStep) {
    case 0:
        return unit.setCompare(value);
    case 1:
        return unit.setMask(value);
    case 2:
        return unit.setEdge(value);
    case 3:
        return unit.setControl(value);
    case 4:
        if (built.hasCounter)
            return unit.setCounter(value);
        m_report(QStringLiteral("match unit %1 has no counter to load").arg(number));
        return;
    default:
        m_report(QStringLiteral("there is no register %1 to write").arg(addressText(address)));
    }
}

void CoreModel::writeTable(quint16 address, const QBitArray &value)
{
    const int action = (address - kTableBase) % kAddressStep;
    if (!m_description.dynamic || action > 1) {
        m_report(QStringLiteral("there is no register %1 to write").arg(addressText(address)));
        return;
    }
    const quint64 input = numberAt(value, std::max(0, m_width - 64), std::min(m_width, 64));
    if (input >= quint64(1) << m_inUse.size()) {
        m_report(QStringLiteral("a truth table of %1 match units has no entry %2")
                     .arg(m_inUse.size())
                     .arg(input));
        return;
    }
    QBitArray &table = m_tables[(address - kTableBase) / kAddressStep];
    table.resize(qsizetype(1) << m_inUse.size());
    table.setBit(qsizetype(input), action == 1);
}

void CoreModel::writeStart(const QBitArray &value)
{
    const quint64 command = numberAt(value, std::max(0, m_width - 64), std::min(m_width, 64));
    switch (command) {
    case 0:
        return disarm();
    case kArm:
        m_forced = false;
        return arm();
    case kForce:
        if (!m_armed)
            arm();
        m_forced = true;
        return;
    default:
        m_report(QStringLiteral("the start register knows 0, 1 and 3, not %1").arg(command));
    }
}

quint64 CoreModel::registerNumber(quint16 address) const
{
    const int bits = std::min(m_width, 32);
    return numberAt(m_registers.value(address, QBitArray(m_width)), m_width - bits, bits);
}

CoreModel::Run CoreModel::runFromRegisters() const
{
    Run run;
    const qint64 depth = m_description.storageDepth;
    const qint64 asked = qint64(registerNumber(kAmount)) + 1;
    run.amount = std::min(asked, depth);
    const int lead = m_description.dynamic ? kDynamicLead : kStaticLead;
    run.rowsAfter = lead + qint64(registerNumber(kOffset)) + m_extraRows;
    run.position = std::max<qint64>(0, run.amount - 1 - run.rowsAfter);
    run.windows = qint64(registerNumber(kWindows)) + 1;
    run.stride = depth / qint64(std::bit_ceil(quint64(run.windows)));
    run.fires = m_description.dynamic ? firesFromTables() : m_staticFires;
    run.units = m_units;
    for (const int unit : m_inUse)
        run.counts |= m_description.units[size_t(unit)].hasCounter;

    if (asked > run.stride)
        m_report(QStringLiteral("%1 windows of %2 rows don't fit into %3 rows")
                     .arg(run.windows)
                     .arg(asked)
                     .arg(depth));
    if (run.rowsAfter >= run.amount)
        m_report(
            QStringLiteral("the trigger offset %1 pushes the trigger out of a window of %2 rows")
                .arg(registerNumber(kOffset))
                .arg(run.amount));
    return run;
}

QBitArray CoreModel::firesFromTables() const
{
    QBitArray fires(qsizetype(1) << m_inUse.size());
    const int inForce = int(std::min<quint64>(registerNumber(kExpressions), kTables - 1)) + 1;
    for (auto table = m_tables.begin(); table != m_tables.end() && table.key() < inForce; ++table)
        fires |= *table;
    return fires;
}

// A run

void CoreModel::arm()
{
    disarm();
    m_run = runFromRegisters();
    m_hits.assign(size_t(stimulusSamples()), 0);
    m_armed = true;
    m_window = 0;
    startWindow();
}

void CoreModel::disarm()
{
    if (m_armed)
        storeRows(m_seen);
    m_armed = false;
    m_forced = false;
}

void CoreModel::startWindow()
{
    m_seen = 0;
    m_trigger.reset();
    for (MatchUnit &unit : m_run.units)
        unit.restartCounter();
    m_hopeless = false;
    m_lapLeft = stimulusSamples();
    m_lapCounters = counterStates();
}

void CoreModel::advance(qint64 samples)
{
    while (m_armed && samples > 0) {
        qint64 passed = 1;
        if (m_trigger) {
            passed = std::min(samples, *m_trigger + 1 + m_run.rowsAfter - m_seen);
            m_seen += passed;
            m_next = (m_next + passed) % stimulusSamples();
        } else if (m_hopeless && !m_forced) {
            passed = samples;
            m_seen += passed;
            m_next = (m_next + passed) % stimulusSamples();
        } else {
            advanceOneWaiting();
        }
        samples -= passed;
        if (m_trigger && m_seen == *m_trigger + 1 + m_run.rowsAfter)
            closeWindow();
    }
}

void CoreModel::advanceOneWaiting()
{
    const bool fires = firesAt(m_next) || m_forced;
    if (fires && m_seen >= m_run.position)
        m_trigger = m_seen;
    ++m_seen;
    m_next = m_next + 1 == stimulusSamples() ? 0 : m_next + 1;
    if (--m_lapLeft == 0)
        noteLap();
}

/// A whole lap of the stimulus has passed. When it began late enough for triggers to count and left
/// the counters as it found them, every lap to come is the same: nothing fires any more.
void CoreModel::noteLap()
{
    std::vector<quint32> counters = counterStates();
    m_hopeless = m_seen - stimulusSamples() >= m_run.position && counters == m_lapCounters;
    m_lapCounters = std::move(counters);
    m_lapLeft = stimulusSamples();
}

bool CoreModel::firesAt(qint64 sample)
{
    quint32 input = hitsAt(sample);
    if (m_run.counts) {
        for (size_t slot = 0; slot < m_run.units.size(); ++slot) {
            if (!m_description.units[size_t(m_inUse[qsizetype(slot)])].hasCounter)
                continue;
            const bool reports = m_run.units[slot].count((input >> slot) & 1);
            input = reports ? input | (1u << slot) : input & ~(1u << slot);
        }
    }
    return m_run.fires.testBit(qsizetype(input));
}

quint32 CoreModel::hitsAt(qint64 sample)
{
    quint32 &known = m_hits[size_t(sample)];
    if (!(known & kHitsKnown)) {
        const qint64 before = sampleBefore(sample);
        for (size_t slot = 0; slot < m_run.units.size(); ++slot) {
            const int number = m_inUse[qsizetype(slot)];
            const BitMatrix &port =
                m_stimulus.ports[size_t(m_description.units[size_t(number)].port)];
            if (m_run.units[slot].hits(port.row(sample), port.row(before)))
                known |= 1u << slot;
        }
        known |= kHitsKnown;
    }
    return known & ~kHitsKnown;
}

qint64 CoreModel::sampleBefore(qint64 sample) const
{
    return sample == 0 ? stimulusSamples() - 1 : sample - 1;
}

std::vector<quint32> CoreModel::counterStates() const
{
    std::vector<quint32> states;
    for (const MatchUnit &unit : m_run.units)
        states.push_back(unit.counted());
    return states;
}

void CoreModel::closeWindow()
{
    storeRows(m_seen);
    if (++m_window < m_run.windows) {
        startWindow();
        return;
    }
    m_armed = false;
    m_forced = false;
}

/// Puts into the memory what the ring of this window holds after its first \a end samples. Done
/// when somebody can look, not sample by sample: most rows of a long wait are written over.
void CoreModel::storeRows(qint64 end)
{
    const qint64 lead = m_description.dynamic ? kDynamicLead : kStaticLead;
    const qint64 samples = stimulusSamples();
    const qint64 depth = qint64(m_memory.size());
    const qint64 begin = std::max<qint64>(0, end - m_run.amount);
    for (qint64 i = begin; i < end; ++i) {
        StoredRow &row = m_memory[size_t((m_window * m_run.stride + i % m_run.amount) % depth)];
        const qint64 back = (end - i) % samples;
        row.sample = (m_next - back + samples) % samples;
        row.marker = m_trigger && i == *m_trigger + lead;
    }
}

} // namespace Sim
