#include "numberscarry.h"

#include "carryaccount.h"
#include "coreconfig.h"

#include <algorithm>

namespace KEO {

namespace {

/// What the memory of \a core holds of \a asked; \a brought if it holds nothing.
CaptureNumbers heldNumbers(const CoreConfig &core, const CaptureNumbers &asked,
                           const CaptureNumbers &brought)
{
    if (asked == brought || !memoryObstacle(core, asked))
        return asked;
    CaptureNumbers held = asked;
    QList<int> amounts = offeredAmounts(core.storage_depth, held.windows);
    while (amounts.isEmpty() && held.windows > 1)
        amounts = offeredAmounts(core.storage_depth, --held.windows);
    if (amounts.isEmpty())
        return brought;
    if (memoryObstacle(core, {held.windows, asked.amount, 0})) {
        const auto above = std::ranges::upper_bound(amounts, asked.amount);
        held.amount = above == amounts.begin() ? *above : *(above - 1);
    }
    held.position = std::clamp(asked.position, 0, std::max(0, held.amount - kMinRowsFromTrigger));
    return memoryObstacle(core, held) ? brought : held;
}

void tellNumber(CarryAccount &account, const QString &setting, int standard,
                int CaptureNumbers::*number, const CaptureNumbers &asked,
                const CaptureNumbers &brought, const CaptureNumbers &held, const QString &memory)
{
    if (asked.*number == standard && brought.*number == standard)
        return;
    const bool isKept = held.*number == asked.*number;
    const auto changed = held == brought ? CarryOutcome::Lost : CarryOutcome::Adapted;
    account.add(isKept ? CarryOutcome::Kept : changed, setting, QString::number(asked.*number),
                QString::number(held.*number), isKept ? QString() : memory);
}

} // namespace

std::optional<CaptureNumbers> carryNumbers(const CoreConfig &before, CoreConfig &now,
                                           CarryAccount &account)
{
    const CaptureNumbers brought{now.window_num, now.capture_amount, now.trigger_pos};
    CaptureNumbers asked{before.window_num, before.capture_amount, before.trigger_pos};
    // A page whose field offers nothing of the kind leaves 0 behind: nothing was chosen.
    if (asked.windows < 1)
        asked.windows = brought.windows;
    if (asked.amount < 1)
        asked.amount = brought.amount;
    const CaptureNumbers held = heldNumbers(now, asked, brought);
    now.window_num = held.windows;
    now.capture_amount = held.amount;
    now.trigger_pos = held.position;
    const CoreConfig standard;
    const bool holdsNone = offeredAmounts(now.storage_depth, 1).isEmpty();
    QString memory =
        CarryText::tr("The new core has memory for %1 samples.").arg(now.storage_depth);
    if (holdsNone)
        memory = CarryText::tr("%1 It waits for a description with more.").arg(memory);
    const QString tail = holdsNone ? memory
                                   : CarryText::tr("%1 A window keeps %2 from the trigger on.")
                                         .arg(memory)
                                         .arg(kMinRowsFromTrigger);
    tellNumber(account, CarryText::tr("Windows"), standard.window_num, &CaptureNumbers::windows,
               asked, brought, held, memory);
    tellNumber(account, CarryText::tr("Capture amount"), standard.capture_amount,
               &CaptureNumbers::amount, asked, brought, held, memory);
    tellNumber(account, CarryText::tr("Trigger position"), standard.trigger_pos,
               &CaptureNumbers::position, asked, brought, held, tail);
    return holdsNone ? std::optional(asked) : std::nullopt;
}

} // namespace KEO
