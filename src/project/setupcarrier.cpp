#include "setupcarrier.h"

#include "carriedlist.h"
#include "projectboxes.h"
#include "wavetabs.h"

#include <design/capturedisplay.h>
#include <design/clockcarry.h>
#include <design/design.h>
#include <wave_data/layoutcarry.h>

#include <QCoreApplication>
#include <QDomDocument>

#include <algorithm>

namespace KEO {

using WaveMonitor::Arrangement;
using WaveMonitor::DataFormat;
using WaveMonitor::RowRecord;
using WaveMonitor::WindowContents;
using WaveMonitor::WindowState;

namespace {

Arrangement arrangementOf(const WindowState &state)
{
    WindowContents contents;
    contents.readLayout(state.layout);
    Arrangement arrangement{contents.snapshot().rows, state.hidden, {}};
    for (const int row : state.openBuses) {
        if (row >= 0 && size_t(row) < arrangement.rows.size())
            arrangement.open.insert(arrangement.rows[size_t(row)].key);
    }
    return arrangement;
}

void arrange(WindowState &state, const Arrangement &arrangement)
{
    WindowContents contents;
    // Nothing stands there that could be left over.
    (void)WaveMonitor::restoreRows(contents.layout(), arrangement.rows);
    QDomDocument document; // the layout keeps it alive
    state.layout = contents.writeLayout(document);
    document.appendChild(state.layout);
    state.hidden = arrangement.hidden;
    state.openBuses.clear();
    for (size_t row = 0; row < arrangement.rows.size(); ++row) {
        if (arrangement.open.contains(arrangement.rows[row].key))
            state.openBuses.append(int(row));
    }
}

/// Ids of signals are their flat positions.
QHash<int, int> idsOf(const QList<SignalEntry> &before, const QList<SignalEntry> &now)
{
    QHash<int, int> ids;
    const QList<int> positions = positionsByName(flatSignalNames(before), flatSignalNames(now));
    for (int old = 0; old < positions.size(); ++old) {
        if (positions[old] >= 0)
            ids.insert(old, positions[old]);
    }
    return ids;
}

/// Carries the arrangements of all windows; those of cores that are gone are only told of.
class WindowsCarry
{
public:
    WindowsCarry(const CoreSetup &before, const CoreSetup &now, const QHash<int, int> &cores)
        : m_before(before), m_now(now), m_cores(cores)
    {
    }

    void carry(const WindowState &state)
    {
        // A lite core is the only one, whatever number its window has.
        const int old = m_before.lite ? m_before.lite->index : state.core;
        const auto core = m_cores.constFind(old);
        const bool isLeft = core != m_cores.constEnd();
        const QList<SignalEntry> was = capturedSignals(m_before, old);
        const QList<SignalEntry> is = isLeft ? capturedSignals(m_now, *core) : QList<SignalEntry>();
        const QString place = SetupCarrier::tr("Core %1, window %2").arg(old).arg(state.window);
        const auto carried =
            WaveMonitor::carryArrangement(arrangementOf(state), contentsWithoutSamples(was),
                                          contentsWithoutSamples(is), idsOf(was, is), place);
        account += carried.account;
        if (state.format != DataFormat::Hexadecimal)
            tellRadix(place, DataFormat::typeKey(DataFormat::Type(state.format)), isLeft);
        if (!isLeft)
            return;
        states.push_back(state);
        states.back().core = *core;
        arrange(states.back(), carried.arrangement);
    }

    std::vector<WindowState> states;
    CarriedSettings account;

private:
    void tellRadix(const QString &place, const QString &radix, bool isLeft)
    {
        const auto outcome = isLeft ? CarryOutcome::Kept : CarryOutcome::Lost;
        account.append({outcome, place, SetupCarrier::tr("Default radix"), radix,
                        isLeft ? radix : QString(),
                        isLeft ? QString() : SetupCarrier::tr("The new design has no such core.")});
    }

    const CoreSetup &m_before;
    const CoreSetup &m_now;
    const QHash<int, int> &m_cores;
};

} // namespace

SetupCarrier::SetupCarrier(const ProjectParts &parts, QObject *parent)
    : QObject(parent), m_parts(parts)
{
}

SetupCarrier::~SetupCarrier()
{
    delete m_list;
}

void SetupCarrier::leave()
{
    delete m_list;
    m_unheld.clear();
}

std::shared_ptr<ProjectSetup> SetupCarrier::take() const
{
    auto setup = std::make_shared<ProjectSetup>();
    keepSignalNames(m_parts);
    m_parts.page.withSettings([&] { setup->cores = m_parts.design.setup(); });
    for (const auto &core : setup->cores.standard) {
        if (const auto numbers = m_unheld.constFind(core->index); numbers != m_unheld.constEnd()) {
            core->window_num = numbers->windows;
            core->capture_amount = numbers->amount;
            core->trigger_pos = numbers->position;
        }
    }
    setup->clocks = m_parts.waves.clockPeriods().all();
    setup->page = m_parts.page.state();
    setup->windows = m_parts.waves.layouts();
    return setup;
}

void SetupCarrier::give(const ProjectSetup &setup)
{
    m_parts.page.leaveDesign();
    const SettingsCarry cores = m_parts.design.carry(setup.cores);
    m_unheld = cores.unheld;
    m_parts.page.showDesign();
    PageState page = setup.page;
    page.core = cores.cores.value(page.core, -1);
    m_parts.page.setState(page);
    const CoreSetup now = m_parts.design.setup();
    WindowsCarry windows(setup.cores, now, cores.cores);
    for (const WindowState &state : setup.windows) {
        if (!state.layout.isNull())
            windows.carry(state);
    }
    m_parts.waves.offerLayouts(windows.states);
    const ClockCarry clocks = carryClocks(setup.clocks, setup.cores, now, cores.cores);
    m_parts.waves.clockPeriods().setAll(clocks.periods);
    tell(cores.account + clocks.account + windows.account);
}

void SetupCarrier::tell(const CarriedSettings &account)
{
    if (account.isEmpty()) {
        Q_EMIT told(tr("Reloaded; no setting differs from the new description"));
        return;
    }
    Q_EMIT told(tr("Reloaded; settings: %1").arg(countsOf(account)));
    if (std::ranges::all_of(account, [](const CarriedSetting &entry) {
            return entry.outcome == CarryOutcome::Kept;
        }))
        return;
    m_list = new CarriedList(account, m_parts.boxes.window());
    m_list->showBeside();
}
} // namespace KEO
