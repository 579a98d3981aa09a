#pragma once

#include <base/result.h>

#include <QList>
#include <QtGlobal>

#include <optional>

namespace KEO {

struct CoreConfig;
struct LiteCoreConfig;
struct MatchUnit;

// What a core can be asked to capture. A description, or a user, may ask for more; the core would
// take the low bits of it and give other samples than were meant.

/// Cores that a select word tells apart.
inline constexpr int kMaxChipCores = 16;
/// Rows that 16-bit addresses reach.
inline constexpr int kMaxRows = 65'536;
/// Rows of a block; what is more is read in whole blocks.
inline constexpr int kBlockRows = 128;
/// Samples that a window has from the trigger on, at least.
inline constexpr int kMinRowsFromTrigger = 9;
/// Bits of a match counter.
inline constexpr int kMaxCounterBits = 16;
/// Windows that a user is offered.
inline constexpr int kMaxOfferedWindows = 8;

/// The samples a window that a user is offered for \a windows windows in a memory of \a depth
/// samples: powers of two in ascending order, none if not even the least fits.
[[nodiscard]] QList<int> offeredAmounts(int depth, int windows);

/// What is asked of a core, in samples a window, the position counted from the window's first.
struct CaptureNumbers
{
    int windows = 0;
    int amount = 0;
    int position = 0;

    bool operator==(const CaptureNumbers &other) const = default;
};

/// Why \a core can't be captured as it stands, as an error of kind Format; nothing if it can. Looks
/// at the core's numbers alone: windows, amount, depth, trigger position, and the counters of the
/// match units in use.
[[nodiscard]] std::optional<Error> captureObstacle(const CoreConfig &core);
/// The same with other numbers than the record has, such as those that a page is about to save.
[[nodiscard]] std::optional<Error> captureObstacle(const CoreConfig &core,
                                                   const CaptureNumbers &asked);
[[nodiscard]] std::optional<Error> captureObstacle(const LiteCoreConfig &core);
/// Why the memory of \a core can't hold \a asked, whatever its match units are set to.
[[nodiscard]] std::optional<Error> memoryObstacle(const CoreConfig &core,
                                                  const CaptureNumbers &asked);
/// Why a core can't be captured with the counter of \a unit, which belongs to a core; nothing if it
/// can.
[[nodiscard]] std::optional<Error> counterObstacle(const MatchUnit &unit);
/// The most matches that a counter of \a width bits counts. 0 is what a description without a
/// width gives; then only the register bounds the count.
[[nodiscard]] int greatestCount(int width);

} // namespace KEO
