#pragma once

#include "datafilereader.h"

#include <config/coreconfig.h>
#include <config/litecoreconfig.h>

#include <optional>

namespace KEO {

/// Must the trigger of a window stand where the description has it now?
enum class TriggerPosition { AsDescribed, Any };

/// Were all of \a windows captured with standard cores as \a cores describes them? A window without
/// `core` or `index` counts as one with 0.
[[nodiscard]] bool fitsCores(const LoadedWindows &windows, const CoreList &cores,
                             TriggerPosition position);

/// Were all of \a windows captured with the lite core \a core? Its trigger is the first sample.
[[nodiscard]] bool fitsLiteCore(const LoadedWindows &windows, const LiteCoreConfig &core,
                                TriggerPosition position);

/// Where a window of a data file belongs.
struct WindowPlace
{
    int core = 0;   ///< CoreConfig::index
    int window = 0; ///< number within the core

    bool operator==(const WindowPlace &other) const = default;
};

/// The place of a standard core's window; none for a window that is not to be shown: it lacks
/// `core` or `index`, has -1 there, or its `index` is no number.
[[nodiscard]] std::optional<WindowPlace> placeOf(const LoadedWindow &window);

/// Its window number alone, as far as it is to be shown by that; what it says of a core is nothing
/// to a design with a single one.
[[nodiscard]] std::optional<int> windowNumberOf(const LoadedWindow &window);

} // namespace KEO
