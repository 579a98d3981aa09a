#include "boardfile.h"

#include "fileread.h"
#include "jsonwalk.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QRegularExpression>

#include <algorithm>

namespace Sim {

namespace {

constexpr qint64 kMaxFileSize = 16 * 1024 * 1024;
constexpr int kMaxMs = 3'600'000;
constexpr double kMaxSamplesPerSecond = 1e9;

const QStringList kOperations{QStringLiteral("OPEN"),
                              QStringLiteral("CLOSE"),
                              QStringLiteral("WRITE_REGISTOR"),
                              QStringLiteral("WRITE_START_REG"),
                              QStringLiteral("BRUST_READ"),
                              QStringLiteral("OP_SELECT_CAPTURE_INIT"),
                              QStringLiteral("READ_START_REG"),
                              QStringLiteral("READ_RAM"),
                              QStringLiteral("OP_READ_CAPTURE_INIT"),
                              QLatin1String(Fault::kAnyOperation)};

struct FaultName
{
    const char *name;
    Fault::Kind kind;
};

constexpr FaultName kFaultNames[] = {
    {"result", Fault::Kind::Result},   {"lost", Fault::Kind::Lost},
    {"late", Fault::Kind::Late},       {"doubled", Fault::Kind::Doubled},
    {"swapped", Fault::Kind::Swapped}, {"pieces", Fault::Kind::Pieces},
    {"glued", Fault::Kind::Glued},     {"garbage", Fault::Kind::Garbage},
    {"hang", Fault::Kind::Hang},       {"die", Fault::Kind::Die},
};

bool hasReply(const QString &operation)
{
    return operation == QStringLiteral("OPEN") || operation.startsWith(QStringLiteral("READ")) ||
           operation == QStringLiteral("OP_READ_CAPTURE_INIT") ||
           operation == QLatin1String(Fault::kAnyOperation);
}

bool changesReply(Fault::Kind kind)
{
    return kind != Fault::Kind::Garbage && kind != Fault::Kind::Hang && kind != Fault::Kind::Die;
}

class BoardReader final : private JsonWalk
{
public:
    explicit BoardReader(const QString &path) : JsonWalk(QFileInfo(path).absolutePath()) {}

    BoardFile read(const QJsonObject &root)
    {
        BoardFile board;
        allow(root, QString(), {"version", "log", "samples_per_second", "scan", "cables"});
        const int version = wholeNumber(root, QString(), "version", BoardFile::kVersion, 1, 1000);
        if (version != BoardFile::kVersion)
            fail(QStringLiteral("version"),
                 QStringLiteral("only version %1 is known").arg(BoardFile::kVersion));
        board.log = path(root, QString(), "log");
        const double rate = number(root, QString(), "samples_per_second",
                                   double(board.samplesPerSecond), 1, kMaxSamplesPerSecond);
        board.samplesPerSecond = qint64(rate);

        const QJsonObject cables =
            object(root.value(QStringLiteral("cables")), QStringLiteral("cables"));
        for (auto cable = cables.begin(); cable != cables.end(); ++cable) {
            const QString place = QStringLiteral("cables.") + cable.key();
            board.cables.insert(cable.key(), readCable(object(*cable, place), place));
        }
        board.scannedCable = readScannedCable(root, board.cables);
        return board;
    }

    using JsonWalk::error;

private:
    QString readScannedCable(const QJsonObject &root, const QMap<QString, CableSetup> &cables)
    {
        const QString named = text(root, QString(), "scan");
        if (!named.isEmpty() && !cables.contains(named))
            fail(QStringLiteral("scan"), QStringLiteral("there is no cable \"%1\"").arg(named));
        if (!named.isEmpty())
            return named;
        for (const ProgrammerCable &cable : kProgrammerCables) {
            const QString socket = QLatin1String(cable.socket);
            if (!cables.value(socket).chain.isEmpty())
                return socket;
        }
        return {};
    }

    CableSetup readCable(const QJsonObject &object, const QString &place)
    {
        CableSetup cable;
        allow(object, place, {"chain", "faults", "programmer"});
        const QJsonArray chain = array(object, place, "chain");
        for (qsizetype i = 0; i < chain.size(); ++i) {
            const QString device = QStringLiteral("%1.chain[%2]").arg(place).arg(i);
            cable.chain.append(readDevice(this->object(chain.at(i), device), device));
        }
        const auto analyzers =
            std::count_if(cable.chain.begin(), cable.chain.end(),
                          [](const DeviceSetup &device) { return !device.description.isEmpty(); });
        if (analyzers > 1)
            fail(place + QStringLiteral(".chain"),
                 QStringLiteral("only one device may hold an analyzer"));
        const QJsonArray faults = array(object, place, "faults");
        for (qsizetype i = 0; i < faults.size(); ++i) {
            const QString fault = QStringLiteral("%1.faults[%2]").arg(place).arg(i);
            cable.faults.append(readFault(this->object(faults.at(i), fault), fault));
        }
        const QString programmer = at(place, "programmer");
        cable.programmer = readProgrammerSetup(
            *this, this->object(object.value(QStringLiteral("programmer")), programmer),
            programmer);
        return cable;
    }

    DeviceSetup readDevice(const QJsonObject &object, const QString &place)
    {
        DeviceSetup device;
        allow(object, place,
              {"series", "model", "also_named", "idcode", "instruction", "programmed",
               "description", "stimulus", "nets"});
        device.model = text(object, place, "model");
        device.alsoNamed = texts(object, place, "also_named");
        device.series = text(object, place, "series");
        if (device.series.isEmpty())
            device.series = device.model.section(u'-', 0, 0);
        device.idCode = readIdCode(text(object, place, "idcode"), at(place, "idcode"));
        device.instruction =
            wholeNumber(object, place, "instruction", device.instruction, 1, 65535);
        device.isProgrammed = flag(object, place, "programmed", true);
        device.description = path(object, place, "description");
        device.stimulus = path(object, place, "stimulus");
        if (device.description.isEmpty() != device.stimulus.isEmpty())
            fail(place, QStringLiteral("a description needs a stimulus, and the reverse"));
        const QString netsPlace = at(place, "nets");
        const QJsonObject nets = this->object(object.value(QStringLiteral("nets")), netsPlace);
        for (auto net = nets.begin(); net != nets.end(); ++net) {
            if (!net->isString())
                fail(netsPlace + u'.' + net.key(), QStringLiteral("must be a text"));
            device.nets.insert(net.key(), net->toString());
        }
        return device;
    }

    quint32 readIdCode(const QString &text, const QString &place)
    {
        static const QRegularExpression kHex(QStringLiteral("^(0x)?[0-9A-Fa-f]{1,8}$"));
        if (!text.isEmpty() && !kHex.match(text).hasMatch())
            fail(place, QStringLiteral("must be a text of up to 8 hexadecimal digits"));
        return text.toUInt(nullptr, 16);
    }

    Fault readFault(const QJsonObject &object, const QString &place)
    {
        Fault fault;
        fault.name = text(object, place, "do");
        fault.operation = text(object, place, "at");
        if (!kOperations.contains(fault.operation))
            fail(at(place, "at"),
                 QStringLiteral("must be one of %1").arg(kOperations.join(QStringLiteral(", "))));
        fault.nth = nth(object, place);

        const auto *known = std::find_if(
            std::begin(kFaultNames), std::end(kFaultNames),
            [&fault](const FaultName &entry) { return fault.name == QLatin1String(entry.name); });
        if (known == std::end(kFaultNames)) {
            QStringList names;
            for (const FaultName &entry : kFaultNames)
                names.append(QLatin1String(entry.name));
            fail(at(place, "do"),
                 QStringLiteral("must be one of %1").arg(names.join(QStringLiteral(", "))));
            return fault;
        }
        fault.kind = known->kind;
        if (changesReply(fault.kind) && !hasReply(fault.operation))
            fail(place, QStringLiteral("%1 has no reply").arg(fault.operation));
        readDetails(object, place, fault);
        return fault;
    }

    void readDetails(const QJsonObject &object, const QString &place, Fault &fault)
    {
        switch (fault.kind) {
        case Fault::Kind::Result:
            allow(object, place, {"at", "nth", "do", "value"});
            if (fault.operation != QStringLiteral("OPEN"))
                fail(place, QStringLiteral("only OPEN has a result"));
            fault.value = wholeNumber(object, place, "value", 1, -1000000, 1000000);
            return;
        case Fault::Kind::Late:
            allow(object, place, {"at", "nth", "do", "ms"});
            fault.ms = wholeNumber(object, place, "ms", 1000, 0, kMaxMs);
            return;
        case Fault::Kind::Pieces:
            allow(object, place, {"at", "nth", "do", "bytes", "ms"});
            fault.value = wholeNumber(object, place, "bytes", 1, 1, 1 << 20);
            fault.ms = wholeNumber(object, place, "ms", 1, 0, kMaxMs);
            return;
        case Fault::Kind::Garbage:
            allow(object, place, {"at", "nth", "do", "hex", "kind"});
            fault.bytes = readGarbage(object, place);
            return;
        case Fault::Kind::Die:
            allow(object, place, {"at", "nth", "do", "status"});
            fault.value = wholeNumber(object, place, "status", 70, 0, 255);
            return;
        default:
            allow(object, place, {"at", "nth", "do"});
        }
    }

    QByteArray readGarbage(const QJsonObject &object, const QString &place)
    {
        static const QRegularExpression kHex(QStringLiteral("^([0-9A-Fa-f]{2})*$"));
        const QString hex = text(object, place, "hex").remove(u' ');
        const QString kind = text(object, place, "kind");
        if (hex.isEmpty() == kind.isEmpty())
            fail(place, QStringLiteral("garbage needs either \"hex\" or \"kind\""));
        if (!kHex.match(hex).hasMatch())
            fail(at(place, "hex"), QStringLiteral("must be pairs of hexadecimal digits"));
        if (!kind.isEmpty() && garbageNamed(kind).isEmpty())
            fail(
                at(place, "kind"),
                QStringLiteral("must be one of %1").arg(garbageNames().join(QStringLiteral(", "))));
        return hex.isEmpty() ? garbageNamed(kind) : QByteArray::fromHex(hex.toLatin1());
    }
};

/// Line and column of a byte, from 1.
QString placeOf(const QByteArray &json, qsizetype offset)
{
    const QByteArray before = json.left(offset);
    return QStringLiteral("%1:%2")
        .arg(before.count('\n') + 1)
        .arg(before.size() - before.lastIndexOf('\n'));
}

} // namespace

Outcome<BoardFile> readBoard(const QByteArray &json, const QString &path)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return Failure{QStringLiteral("%1:%2: %3")
                           .arg(path, placeOf(json, parseError.offset), parseError.errorString())};
    if (!document.isObject())
        return Failure{QStringLiteral("%1: must hold an object").arg(path)};
    BoardReader reader(path);
    BoardFile board = reader.read(document.object());
    if (!reader.error().isEmpty())
        return Failure{QStringLiteral("%1: %2").arg(path, reader.error())};
    board.path = path;
    return board;
}

Outcome<BoardFile> readBoardFile(const QString &path)
{
    const auto json = readWholeFile(path, kMaxFileSize);
    if (!json)
        return Failure{json.error()};
    return readBoard(*json, path);
}

QString idCodeText(quint32 idCode)
{
    return QStringLiteral("%1").arg(idCode, 8, 16, QLatin1Char('0')).toUpper();
}

QString boardPathInForce()
{
    const QString named = qEnvironmentVariable("SIGNALSCOPE_BOARD");
    if (!named.isEmpty())
        return named;
    const QString beside =
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("board.json"));
    return QFileInfo::exists(beside) ? beside : QString();
}

} // namespace Sim
