#include "downloadrequest.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace Sim {

namespace {

constexpr int kMaxNumber = 65535;
constexpr int kMaxHeaderLines = 1000;
constexpr qint64 kMaxHeaderLine = 4096;

const QString kDevice = QStringLiteral("device");
const QString kFsFile = QStringLiteral("fsFile");
const QString kOperationIndex = QStringLiteral("operation_index");
const QString kCableIndex = QStringLiteral("cable-index");
const QString kChannel = QStringLiteral("channel");
const QString kChainSize = QStringLiteral("chain_size");
const QString kChainIndex = QStringLiteral("chain_index");
const QString kChainIr = QStringLiteral("chain_ir");

/// Takes the values of options and remembers the first thing that is wrong.
class OptionReader final
{
public:
    explicit OptionReader(const QCommandLineParser &parser) : m_parser(parser) {}

    [[nodiscard]] const QString &error() const { return m_error; }

    void fail(const QString &text)
    {
        if (m_error.isEmpty())
            m_error = text;
    }

    QString text(const QString &name)
    {
        const QStringList values = m_parser.values(name);
        if (values.size() > 1)
            fail(QStringLiteral("--%1 is there %2 times").arg(name).arg(values.size()));
        else if (values.value(0).isEmpty())
            fail(QStringLiteral("--%1 is missing").arg(name));
        return values.value(0);
    }

    int number(const QString &name) { return toNumber(text(name), name); }

    QList<int> numbers(const QString &name)
    {
        QList<int> numbers;
        const QString list = text(name);
        for (const QString &entry : list.split(u','))
            numbers.append(toNumber(entry, name));
        return numbers;
    }

private:
    int toNumber(const QString &text, const QString &name)
    {
        const bool isDecimal = std::all_of(text.begin(), text.end(), [](QChar character) {
            return character >= u'0' && character <= u'9';
        });
        bool ok = false;
        const int number = text.toInt(&ok);
        if (!isDecimal || !ok || number > kMaxNumber)
            fail(QStringLiteral("--%1: \"%2\" is no number from 0 to %3")
                     .arg(name, text, QString::number(kMaxNumber)));
        return number;
    }

    const QCommandLineParser &m_parser;
    QString m_error;
};

void readChain(OptionReader &reader, DownloadRequest &request)
{
    const int size = reader.number(kChainSize);
    request.target = reader.number(kChainIndex);
    request.instructions = reader.numbers(kChainIr);
    if (size != request.instructions.size())
        reader.fail(QStringLiteral("--chain_size is %1, and --chain_ir has %2 entries")
                        .arg(size)
                        .arg(request.instructions.size()));
    if (request.target >= size)
        reader.fail(QStringLiteral("--chain_index is %1, and --chain_size is %2")
                        .arg(request.target)
                        .arg(size));
}

/// The device that an fs file is made for, as its header says; empty when it doesn't.
QString deviceOf(QFile &fsFile)
{
    for (int i = 0; i < kMaxHeaderLines; ++i) {
        const QString line = QString::fromLatin1(fsFile.readLine(kMaxHeaderLine));
        if (!line.startsWith(QStringLiteral("//")))
            break;
        const QString package = line.section(u':', 1).simplified();
        if (line.contains(QStringLiteral("Device-package:")) && package.contains(u'-'))
            return package.left(package.lastIndexOf(u'-'));
    }
    return {};
}

QString objectionToFile(const DownloadRequest &request)
{
    QFile file(request.fsFile);
    if (!QFileInfo(request.fsFile).isFile() || !file.open(QIODevice::ReadOnly))
        return QStringLiteral("the fs file %1 can't be read.").arg(request.fsFile);
    if (file.size() == 0)
        return QStringLiteral("the fs file %1 is empty.").arg(request.fsFile);
    const QString made = deviceOf(file);
    if (!made.isEmpty() && made != request.device)
        return QStringLiteral("the fs file is made for %1, not for %2.").arg(made, request.device);
    return {};
}

QString objectionToChain(const DownloadRequest &request, const QList<DeviceSetup> &chain)
{
    if (request.instructions.size() != chain.size())
        return QStringLiteral("the chain has %1 devices, not %2.")
            .arg(chain.size())
            .arg(request.instructions.size());
    for (int i = 0; i < int(chain.size()); ++i) {
        if (i != request.target && request.instructions.at(i) != chain.at(i).instruction)
            return QStringLiteral("device %1 of the chain does not take the instruction code %2.")
                .arg(i + 1)
                .arg(request.instructions.at(i));
    }
    const DeviceSetup &target = chain.at(request.target);
    if (!target.model.isEmpty() && request.device != target.model &&
        !target.alsoNamed.contains(request.device))
        return QStringLiteral("ID code 0x%1 is not that of %2.")
            .arg(idCodeText(target.idCode), request.device);
    return {};
}

} // namespace

void addDownloadOptions(QCommandLineParser &parser)
{
    const auto add = [&parser](const QString &name, const char *meaning, const char *value) {
        parser.addOption({name, QLatin1String(meaning), QLatin1String(value)});
    };
    add(kDevice, "Device to program.", "NAME");
    add(kFsFile, "Bitstream to load.", "FILE");
    add(kOperationIndex, "Number of the operation.", "N");
    add(kCableIndex, "Cable: 1 keo1, 2 keo, 0 keolk7.", "N");
    add(kChannel, "Channel of the cable; the board hangs on 0.", "N");
    add(kChainSize, "Number of devices in the chain; with the next two.", "N");
    add(kChainIndex, "Position of the device in the chain, from 0.", "N");
    add(kChainIr, "Instruction codes of all devices, such as 8,6.", "LIST");
}

Outcome<DownloadRequest> readDownloadRequest(const QCommandLineParser &parser)
{
    OptionReader reader(parser);
    DownloadRequest request;
    request.device = reader.text(kDevice);
    request.fsFile = reader.text(kFsFile);
    request.operationIndex = reader.number(kOperationIndex);
    request.cableIndex = reader.number(kCableIndex);
    const bool isKnown =
        std::any_of(std::begin(kProgrammerCables), std::end(kProgrammerCables),
                    [&request](const auto &cable) { return cable.index == request.cableIndex; });
    if (!isKnown)
        reader.fail(QStringLiteral("there is no cable %1").arg(request.cableIndex));
    if (parser.isSet(kChannel))
        request.channel = reader.number(kChannel);
    if (parser.isSet(kChainSize) || parser.isSet(kChainIndex) || parser.isSet(kChainIr))
        readChain(reader, request);
    if (!reader.error().isEmpty())
        return Failure{reader.error()};
    return request;
}

QString objection(const DownloadRequest &request, const CableSetup &setup)
{
    if (setup.chain.isEmpty() || request.channel != 0)
        return QStringLiteral("no device answers on cable %1, channel %2.")
            .arg(request.cableIndex)
            .arg(request.channel);
    const QString chain = objectionToChain(request, setup.chain);
    return chain.isEmpty() ? objectionToFile(request) : chain;
}

} // namespace Sim
