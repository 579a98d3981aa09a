#include "lastdevice.h"

#include <base/logging.h>
#include <base/userfolder.h>
#include <base/wholefile.h>

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace KEO {

namespace {

constexpr qint64 kMaxSize = 4 * 1024;

QString devicePath()
{
    return userDataFolder() + QStringLiteral("/last-device");
}

} // namespace

NamedDevice lastDevice()
{
    const Result<QByteArray> text = readWholeFile(devicePath(), kMaxSize, LineEnds::Native);
    const QStringList lines = text ? QString::fromUtf8(*text).split(u'\n') : QStringList();
    return {lines.value(0), lines.value(1)};
}

void rememberDevice(const NamedDevice &device)
{
    const QString text = device.family + u'\n' + device.device + u'\n';
    if (text.count(u'\n') != 2 || lastDevice() == device)
        return;
    QDir().mkpath(QFileInfo(devicePath()).path());
    if (const auto error = writeWholeFile(devicePath(), text.toUtf8(), LineEnds::Native))
        qCDebug(lcShell).noquote() << "last device:" << error->message;
}

} // namespace KEO
