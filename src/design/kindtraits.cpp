#include "kindtraits.h"

#include <QCoreApplication>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::Design)
};

constexpr KindTraits kStandard{
    .kind = DescriptionKind::Standard,
    .exportMode = ExportMode::Standard,
    .layoutKey = LayoutKey::CoreAndWindow,
    .hasDelay = false,
    .namesCores = true,
    .needsWaves = false, // the trigger settings are worth it
    .swapsPaths = false,
    .savedTitle = QT_TRANSLATE_NOOP("KEO::Design", "core %1 Window %2"),
    .stopped = QT_TRANSLATE_NOOP("KEO::Design", "Capture Stopped!"),
    .forced = nullptr, // the waves that come of it tell enough
    .noData = QT_TRANSLATE_NOOP("KEO::Design", "No data in core %1 window %2"),
    .unknownError = QT_TRANSLATE_NOOP("KEO::Design", "Unknown device error ID%1."),
    .invalidSession =
        QT_TRANSLATE_NOOP("KEO::Design", "Invalid KEO file specified in project file."),
};

// A lite core waits for nothing but the user, and it is Force Trigger that ends this waiting. So
// the box comes there and not after Stop. The paths change places on purpose. In neither are the
// two kinds to be made alike.
constexpr KindTraits kLite{
    .kind = DescriptionKind::Lite,
    .exportMode = ExportMode::Lite,
    .layoutKey = LayoutKey::Window,
    .hasDelay = true,
    .namesCores = false, // there is one
    .needsWaves = true,
    .swapsPaths = true,
    .savedTitle = QT_TRANSLATE_NOOP("KEO::Design", "Window %2"),
    .stopped = nullptr,
    .forced = QT_TRANSLATE_NOOP("KEO::Design", "Capture stopped!"),
    .noData = QT_TRANSLATE_NOOP("KEO::Design", "No data."),
    .unknownError = QT_TRANSLATE_NOOP("KEO::Design", "Unknown device error."),
    .invalidSession = QT_TRANSLATE_NOOP("KEO::Design", "Invalid KEO file specified in project."),
};

} // namespace

WindowToSave KindTraits::numbersOf(int core, int window, qsizetype position) const
{
    return namesCores ? WindowToSave{core, window} : WindowToSave{std::nullopt, int(position)};
}

const KindTraits &kindTraits(DescriptionKind kind)
{
    return kind == DescriptionKind::Lite ? kLite : kStandard;
}

QString kindText(const char *text, std::initializer_list<int> numbers)
{
    QString filled = text ? Text::tr(text) : QString();
    int place = 0;
    for (const int number : numbers)
        filled.replace(u'%' + QString::number(++place), QString::number(number));
    return filled;
}

QString deviceErrorText(const KindTraits &kind, int resultID)
{
    switch (resultID) {
    case 0:
        return {};
    case -20:
        return Text::tr("Device does not load fs file yet.");
    case 1:
        return Text::tr("Open device failed.");
    default:
        return kindText(kind.unknownError, {resultID});
    }
}

QString noServerText()
{
    return Text::tr("Can not connect with JTAG Server!");
}

QString otherDesignText()
{
    return Text::tr("Data file miss match the project");
}

} // namespace KEO
