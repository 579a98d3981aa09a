#include "programmersetup.h"

#include "jsonwalk.h"

#include <algorithm>
#include <iterator>

namespace Sim {

namespace {

constexpr int kMaxMs = 3'600'000;
constexpr int kMaxStatus = 255;

struct KindName
{
    const char *name;
    ProgrammerFault::Kind kind;
};

constexpr KindName kKindNames[] = {
    {"exit", ProgrammerFault::Kind::Exit},     {"error", ProgrammerFault::Kind::Error},
    {"killed", ProgrammerFault::Kind::Killed}, {"absent", ProgrammerFault::Kind::Absent},
    {"cut", ProgrammerFault::Kind::Cut},       {"hang", ProgrammerFault::Kind::Hang},
    {"flood", ProgrammerFault::Kind::Flood},
};

ProgrammerAction readAction(JsonWalk &walk, const QJsonObject &object, const QString &place)
{
    const QString name = walk.text(object, place, "at");
    if (name != QStringLiteral("scan") && name != QStringLiteral("download"))
        walk.fail(JsonWalk::at(place, "at"), QStringLiteral("must be scan or download"));
    return name == QStringLiteral("scan") ? ProgrammerAction::Scan : ProgrammerAction::Download;
}

void readDetails(JsonWalk &walk, const QJsonObject &object, const QString &place,
                 ProgrammerFault &fault)
{
    switch (fault.kind) {
    case ProgrammerFault::Kind::Exit:
        walk.allow(object, place, {"at", "nth", "do", "status"});
        fault.value = walk.wholeNumber(object, place, "status", 1, 1, kMaxStatus);
        return;
    case ProgrammerFault::Kind::Error:
        walk.allow(object, place, {"at", "nth", "do", "text"});
        fault.text = walk.text(object, place, "text");
        if (fault.text.isEmpty())
            fault.text = QStringLiteral("Error: the device does not answer.");
        return;
    case ProgrammerFault::Kind::Absent:
        walk.allow(object, place, {"at", "nth", "do", "status"});
        fault.value = walk.wholeNumber(object, place, "status", 127, 1, kMaxStatus);
        return;
    case ProgrammerFault::Kind::Cut:
        walk.allow(object, place, {"at", "nth", "do", "bytes", "status"});
        fault.bytes = walk.wholeNumber(object, place, "bytes", 40, 0, 1 << 20);
        fault.value = walk.wholeNumber(object, place, "status", 0, 0, kMaxStatus);
        return;
    case ProgrammerFault::Kind::Flood:
        walk.allow(object, place, {"at", "nth", "do", "bytes"});
        fault.bytes = walk.wholeNumber(object, place, "bytes", 1 << 26, 1, 1 << 30);
        return;
    case ProgrammerFault::Kind::Killed:
    case ProgrammerFault::Kind::Hang:
        walk.allow(object, place, {"at", "nth", "do"});
    }
}

ProgrammerFault readFault(JsonWalk &walk, const QJsonObject &object, const QString &place)
{
    ProgrammerFault fault;
    fault.name = walk.text(object, place, "do");
    fault.action = readAction(walk, object, place);
    fault.nth = walk.nth(object, place);
    const auto *known =
        std::find_if(std::begin(kKindNames), std::end(kKindNames), [&fault](const KindName &entry) {
            return fault.name == QLatin1String(entry.name);
        });
    if (known == std::end(kKindNames)) {
        QStringList names;
        for (const KindName &entry : kKindNames)
            names.append(QLatin1String(entry.name));
        walk.fail(JsonWalk::at(place, "do"),
                  QStringLiteral("must be one of %1").arg(names.join(QStringLiteral(", "))));
        return fault;
    }
    fault.kind = known->kind;
    readDetails(walk, object, place, fault);
    return fault;
}

} // namespace

ProgrammerSetup readProgrammerSetup(JsonWalk &walk, const QJsonObject &object, const QString &place)
{
    ProgrammerSetup setup;
    walk.allow(object, place, {"scan_ms", "download_ms", "faults"});
    setup.scanMs = walk.wholeNumber(object, place, "scan_ms", setup.scanMs, 0, kMaxMs);
    setup.downloadMs = walk.wholeNumber(object, place, "download_ms", setup.downloadMs, 0, kMaxMs);
    const QJsonArray faults = walk.array(object, place, "faults");
    for (qsizetype i = 0; i < faults.size(); ++i) {
        const QString fault = QStringLiteral("%1.faults[%2]").arg(place).arg(i);
        setup.faults.append(readFault(walk, walk.object(faults.at(i), fault), fault));
    }
    return setup;
}

} // namespace Sim
