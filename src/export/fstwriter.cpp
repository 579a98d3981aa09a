#include "fstwriter.h"

#include <base/logging.h>
#include <base/wholefile.h>

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtEndian>

#include <cerrno>

namespace KEO {

namespace {

struct Text
{
    Q_DECLARE_TR_FUNCTIONS(KEO::FstWriter)
};

const QString kConverter = QStringLiteral("vcd2fst");
constexpr int kLeastTime = 30'000; // ms
constexpr int kEndTime = 3000;     // ms that a killed converter has to go away
constexpr qint64 kBytesPerMillisecond = 1000;
constexpr qint64 kPiece = 256 * 1024;

/// Runs the converter to its end. Gives the reason when it came to a bad one.
std::optional<QString> convert(const QString &vcd, const QString &fst, qint64 vcdSize)
{
    const QString program = QStandardPaths::findExecutable(kConverter);
    if (program.isEmpty())
        return fstObstacle();
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, {vcd, fst});
    const auto time = int(kLeastTime + vcdSize / kBytesPerMillisecond);
    if (!process.waitForFinished(time) && process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished(kEndTime);
        return Text::tr("%1 did not come to its end within %2 seconds.")
            .arg(program, QString::number(time / 1000));
    }
    const QString told = QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
    if (!told.isEmpty())
        qCDebug(lcExport).noquote() << program << "says:" << told.left(1000);
    if (process.error() == QProcess::FailedToStart)
        return Text::tr("%1 can't be started: %2").arg(program, process.errorString());
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return Text::tr("%1 failed. %2").arg(program, told.section(u'\n', -1)).trimmed();
    return std::nullopt;
}

/// The converter ends well as well when it has made nothing of its input: what the head of the file
/// says must be what went in.
bool holds(QFile &fst, const PlainVcdExtent &extent)
{
    // Kind and length of the block, first and last time, a number in the writer's byte order, its
    // memory, scopes, variables; eight bytes each but for the first.
    constexpr qsizetype endTime = 17;
    constexpr qsizetype variables = 49;
    const QByteArray head = fst.peek(variables + 8);
    return head.size() == variables + 8 && head[0] == 0 &&
           qFromBigEndian<qint64>(head.constData() + endTime) == extent.endTime &&
           qFromBigEndian<qint64>(head.constData() + variables) == extent.variables;
}

bool copy(QFile &from, QIODevice &to)
{
    for (;;) {
        const QByteArray piece = from.read(kPiece);
        if (piece.isEmpty())
            return from.error() == QFileDevice::NoError;
        if (to.write(piece) != piece.size())
            return false;
    }
}

} // namespace

std::optional<QString> fstObstacle()
{
    if (!QStandardPaths::findExecutable(kConverter).isEmpty())
        return std::nullopt;
    return Text::tr("FST files are made by the program vcd2fst, which is not installed; "
                    "it comes with the package gtkwave.");
}

std::optional<QString> writeFst(QIODevice &out, const PlainVcdHead &head,
                                const ExportWindow &window)
{
    if (const auto obstacle = fstObstacle())
        return obstacle;
    const QTemporaryDir folder;
    if (!folder.isValid())
        return folder.errorString();
    QFile vcd(folder.filePath(QStringLiteral("window.vcd")));
    PlainVcdExtent extent;
    errno = 0;
    if (!vcd.open(QIODevice::WriteOnly) || !writePlainVcd(vcd, head, window, &extent) ||
        !vcd.flush())
        return Text::tr("%1: %2").arg(vcd.fileName(), writeFault(vcd.errorString()));
    const qint64 size = vcd.size();
    vcd.close();

    QFile fst(folder.filePath(QStringLiteral("window.fst")));
    if (const auto reason = convert(vcd.fileName(), fst.fileName(), size))
        return reason;
    if (!fst.open(QIODevice::ReadOnly) || !holds(fst, extent))
        return Text::tr("%1 gave no file that can be read.").arg(kConverter);
    errno = 0;
    return copy(fst, out) ? std::nullopt : std::optional(writeFault(out.errorString()));
}

} // namespace KEO
