#include "datafilecheck.h"

#include <algorithm>

namespace KEO {

namespace {

constexpr int kNone = -1;

/// The names as they were before UTF-8 in a description was read as such; files of that time have
/// them so.
QStringList bytewise(const QStringList &names)
{
    QStringList characters;
    for (const QString &name : names)
        characters.append(QString::fromLatin1(name.toUtf8()));
    return characters;
}

/// Do the trigger, as the file has it, and the names of the captured bits fit?
bool fitsCapture(const LoadedWindow &window, int triggerSample, const QStringList &signalNames,
                 TriggerPosition position)
{
    return (position == TriggerPosition::Any ||
            window.triggerText == QString::number(triggerSample)) &&
           (window.signalNames == signalNames || window.signalNames == bytewise(signalNames));
}

bool fitsCore(const LoadedWindow &window, const CoreList &cores, TriggerPosition position)
{
    const int number = window.core.toInt();
    const auto core = std::ranges::find_if(
        cores, [number](const auto &candidate) { return candidate->index == number; });
    if (core == cores.end())
        return false;
    const int index = window.index.toInt();
    // A window that says "none" is harmless: it is not shown.
    return index >= kNone && index < (*core)->window_num &&
           fitsCapture(window, (*core)->trigger_pos, (*core)->flatSignalNames(), position);
}

} // namespace

bool fitsCores(const LoadedWindows &windows, const CoreList &cores, TriggerPosition position)
{
    return std::ranges::all_of(
        windows, [&](const LoadedWindow &window) { return fitsCore(window, cores, position); });
}

bool fitsLiteCore(const LoadedWindows &windows, const LiteCoreConfig &core,
                  TriggerPosition position)
{
    const QStringList names = core.flatSignalNames();
    return std::ranges::all_of(windows, [&](const LoadedWindow &window) {
        return fitsCapture(window, 0, names, position);
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
