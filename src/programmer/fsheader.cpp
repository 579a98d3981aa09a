#include "fsheader.h"

#include "devicechain.h"
#include "devicedatabase.h"
#include "keyedline.h"

#include <base/logging.h>

#include <QElapsedTimer>
#include <QFileInfo>

#include <cstring>

namespace KEO {

namespace {

constexpr qsizetype kBlockSize = 256 * 1024; // bytes; read in about a tenth of a millisecond

bool isMadeFor(const QString &package, const DeviceDatabase &database, DeviceRow &row)
{
    const qsizetype dash = package.lastIndexOf(u'-');
    if (dash < 0)
        return true;
    const QString name = package.left(dash);
    const DeviceSeries *series = database.series(row.series);
    const DeviceEntry *entry = series ? series->device(name) : nullptr;
    if (!entry || row.device != name)
        return false;
    row.idCode = plainIdCode(entry->idCode);
    return true;
}

} // namespace

FsHeaderReader::FsHeaderReader(const QString &path) : m_file(path)
{
    if (!QFileInfo(path).isFile()) {
        qCDebug(lcProgrammer) << "no regular file:" << path;
        return;
    }
    if (m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        m_block.resize(kBlockSize);
    else
        qCDebug(lcProgrammer) << "can't be read:" << path << m_file.errorString();
}

bool FsHeaderReader::read(int msecs)
{
    QElapsedTimer clock;
    clock.start();
    while (m_file.isOpen()) {
        const qint64 size = m_file.read(m_block.data(), m_block.size());
        if (size <= 0) {
            m_parser.finish();
            m_file.close();
            break;
        }
        m_parser.append(QByteArrayView(m_block).first(size));
        if (msecs >= 0 && clock.hasExpired(msecs))
            return false;
    }
    return true;
}

void FsHeaderParser::append(QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const void *feed = std::memchr(bytes.data(), '\n', size_t(bytes.size()));
        const qsizetype end = feed ? static_cast<const char *>(feed) - bytes.data() : bytes.size();
        if (!m_skipsLine) {
            m_line.append(bytes.first(qMin(end, kMaxLine - m_line.size())));
            const bool isHeader = QByteArrayView("//").startsWith(
                QByteArrayView(m_line).first(qMin<qsizetype>(m_line.size(), 2)));
            m_skipsLine = !isHeader;
        }
        if (!feed)
            return;
        endLine();
        bytes = bytes.sliced(end + 1);
    }
}

void FsHeaderParser::endLine()
{
    const bool isHeader = !m_skipsLine && m_line.startsWith("//");
    const QString line = isHeader ? QString::fromUtf8(m_line) : QString();
    m_line.resize(0); // keeps its memory
    m_skipsLine = false;
    if (line.contains(QLatin1String("CheckSum:"))) {
        m_header.checksum = valueOf(line);
    } else if (line.contains(QLatin1String("UserCode:"))) {
        const QString code = valueOf(line);
        m_header.userCode = code.isEmpty() ? m_header.checksum : code;
    } else if (line.contains(QLatin1String("Device-package:"))) {
        takeClaim({FsHeader::Claim::DevicePackage, valueOf(line)});
    } else if (line.contains(QLatin1String("KEOCRC:"))) {
        takeClaim({FsHeader::Claim::DesignId, valueOf(line)});
    }
}

void FsHeaderParser::takeClaim(FsHeader::Claim claim)
{
    if (m_header.claims.size() < FsHeader::kMaxClaims && !m_header.claims.contains(claim))
        m_header.claims.append(std::move(claim));
}

FsVerdict applyFsHeader(const FsHeader &header, const DeviceDatabase &database,
                        const QString &designId, DeviceRow &row)
{
    row.checksum = header.checksum;
    row.userCode = header.userCode;
    for (const FsHeader::Claim &claim : header.claims) {
        if (claim.kind == FsHeader::Claim::DevicePackage) {
            if (isMadeFor(claim.value, database, row))
                continue;
            clearBitstream(row);
            return FsVerdict::WrongDevice;
        }
        if (!claim.value.isEmpty() && !designId.isEmpty() && claim.value != designId) {
            clearBitstream(row);
            return FsVerdict::WrongDesign;
        }
    }
    return FsVerdict::Accepted;
}

} // namespace KEO
