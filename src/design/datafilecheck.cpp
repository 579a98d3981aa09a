#include "datafilecheck.h"

#include <algorithm>

namespace KEO {

namespace {

constexpr int kNone = -1;

/// Do the trigger, as the file has it, and the names of the captured bits fit?
bool fitsCapture(const LoadedWindow &window, const QString &triggerPosition,
                 const QStringList &signalNames)
{
    return window.triggerText == triggerPosition && window.signalNames == signalNames;
}

bool fitsCore(const LoadedWindow &window, const CoreList &cores)
{
    const int number = window.core.toInt();
    const auto core = std::ranges::find_if(
        cores, [number](const auto &candidate) { return candidate->index == number; });
    if (core == cores.end())
        return false;
    const int index = window.index.toInt();
    // A window that says "none" is harmless: it is not shown.
    return index >= kNone && index < (*core)->window_num &&
           fitsCapture(window, QString::number((*core)->trigger_pos), (*core)->flatSignalNames());
}

} // namespace

bool fitsCores(const LoadedWindows &windows, const CoreList &cores)
{
    return std::ranges::all_of(windows,
                               [&](const LoadedWindow &window) { return fitsCore(window, cores); });
}

bool fitsLiteCore(const LoadedWindows &windows, const LiteCoreConfig &core)
{
    const QStringList names = core.flatSignalNames();
    return std::ranges::all_of(windows, [&names](const LoadedWindow &window) {
        return fitsCapture(window, QStringLiteral("0"), names);
    });
}

std::optional<WindowPlace> placeOf(const LoadedWindow &window)
{
    const std::optional<int> index = windowNumberOf(window);
    const int core = window.core.isNull() ? kNone : window.core.toInt();
    if (!index || core == kNone)
        return std::nullopt;
    return WindowPlace{core, *index};
}

std::optional<int> windowNumberOf(const LoadedWindow &window)
{
    bool isNumber = false;
    const int index = window.index.toInt(&isNumber);
    if (!window.isTopLevel || !isNumber || index == kNone)
        return std::nullopt;
    return index;
}

} // namespace KEO
