#include "projectcomparison.h"

#include <QCoreApplication>

#include <algorithm>
#include <vector>

namespace KEO {

using WaveMonitor::ComparedSignal;
using WaveMonitor::WindowComparison;

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::ProjectComparison)
};

constexpr QLatin1String kIndent("  ");

/// "+3", "-3" or "0", from the trigger on.
QString signedNumber(qsizetype number)
{
    return (number > 0 ? QStringLiteral("+") : QString()) + QString::number(number);
}

QString differenceText(const ComparedSignal &signal, int trigger)
{
    const qsizetype first = signal.firstDifference.value_or(0);
    return Text::tr("%1: first at sample %2 (trigger %3), samples that differ: %4")
        .arg(signal.name, QString::number(first), signedNumber(first - trigger),
             QString::number(signal.differing));
}

} // namespace

ProjectComparison::ProjectComparison(const SavedProject &a, const SavedProject &b,
                                     const QList<int> &cores)
{
    std::vector<const SavedCapture *> waiting; // of B
    for (const SavedCapture &capture : b.captures)
        waiting.push_back(&capture);
    const auto isWanted = [&](const SavedCapture &capture) {
        return cores.isEmpty() || cores.contains(capture.core.index);
    };
    const WaveMonitor::WindowContents none;
    for (const SavedCapture &capture : a.captures) {
        if (!isWanted(capture))
            continue;
        const auto partner = std::ranges::find_if(waiting, [&](const SavedCapture *other) {
            return other->core.index == capture.core.index && other->window == capture.window;
        });
        const bool inBoth = partner != waiting.end();
        m_windows.append(
            {capture.core.index, capture.window, inBoth ? Found::InBoth : Found::OnlyInA,
             capture.contents.triggerPosition(),
             WindowComparison(capture.contents, inBoth ? (*partner)->contents : none)});
        if (inBoth)
            waiting.erase(partner);
    }
    for (const SavedCapture *capture : waiting) {
        if (isWanted(*capture))
            m_windows.append({capture->core.index, capture->window, Found::OnlyInB, 0,
                              WindowComparison(none, capture->contents)});
    }
}

bool ProjectComparison::Window::isEqual() const
{
    return found == Found::InBoth && samples.isEqual();
}

bool ProjectComparison::isEqual() const
{
    return std::ranges::all_of(m_windows, &Window::isEqual);
}

QStringList ProjectComparison::lines() const
{
    QStringList all;
    for (const Window &window : m_windows)
        all.append(linesOf(window));
    return all;
}

QStringList ProjectComparison::linesOf(const Window &window)
{
    const QString place = Text::tr("core %1 window %2")
                              .arg(QString::number(window.core), QString::number(window.window));
    if (window.found != Found::InBoth)
        return {
            (window.found == Found::OnlyInA ? Text::tr("%1: only in A") : Text::tr("%1: only in B"))
                .arg(place)};
    const WindowComparison &samples = window.samples;
    const QString compared = QString::number(samples.comparedSamples().size());
    if (window.isEqual())
        return {Text::tr("%1: equal, samples compared: %2").arg(place, compared)};
    QStringList lines{Text::tr("%1: different, signals that differ: %2 of %3, samples compared: %4")
                          .arg(place, QString::number(samples.differingSignals()),
                               QString::number(samples.compared().size()), compared)};
    for (const ComparedSignal &signal : samples.compared()) {
        if (signal.differing > 0)
            lines.append(kIndent + differenceText(signal, window.triggerInA));
    }
    for (const QString &name : samples.signalsOnlyInA())
        lines.append(kIndent + Text::tr("%1: only in A").arg(name));
    for (const QString &name : samples.signalsOnlyInB())
        lines.append(kIndent + Text::tr("%1: only in B").arg(name));
    if (samples.samplesOnlyInA() > 0)
        lines.append(kIndent + Text::tr("samples only in A: %1").arg(samples.samplesOnlyInA()));
    if (samples.samplesOnlyInB() > 0)
        lines.append(kIndent + Text::tr("samples only in B: %1").arg(samples.samplesOnlyInB()));
    return lines;
}

QJsonArray ProjectComparison::json() const
{
    QJsonArray windows;
    for (const Window &window : m_windows)
        windows.append(jsonOf(window));
    return windows;
}

QJsonObject ProjectComparison::jsonOf(const Window &window)
{
    QJsonObject object{
        {"core", window.core}, {"window", window.window}, {"equal", window.isEqual()}};
    if (window.found != Found::InBoth) {
        object.insert("only_in", window.found == Found::OnlyInA ? "a" : "b");
        return object;
    }
    const WindowComparison &samples = window.samples;
    const qsizetype trigger = window.triggerInA;
    QJsonArray differences;
    for (const ComparedSignal &signal : samples.compared()) {
        if (signal.firstDifference)
            differences.append(QJsonObject{{"name", signal.name},
                                           {"first", *signal.firstDifference},
                                           {"from_trigger", *signal.firstDifference - trigger},
                                           {"samples", signal.differing},
                                           {"places", signal.places}});
    }
    object.insert("trigger_position",
                  QJsonObject{{"a", trigger}, {"b", trigger + samples.offset()}});
    object.insert("compared", samples.comparedSamples().size());
    object.insert("only_in_a", samples.samplesOnlyInA());
    object.insert("only_in_b", samples.samplesOnlyInB());
    object.insert("signals_only_in_a", QJsonArray::fromStringList(samples.signalsOnlyInA()));
    object.insert("signals_only_in_b", QJsonArray::fromStringList(samples.signalsOnlyInB()));
    object.insert("differences", differences);
    return object;
}

} // namespace KEO
