#include "ownfile.h"

#include <QFile>
#include <QFileInfo>
#include <QXmlStreamReader>

namespace KEO {

namespace {

constexpr qint64 kMaxProlog = 64 * 1024; // bytes before the root element

} // namespace

bool isDataFile(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    QXmlStreamReader xml(file.read(kMaxProlog));
    return xml.readNextStartElement() && xml.name() == QLatin1String("WaveData");
}

bool isFreeForFile(const QString &path)
{
    const QFileInfo present(path);
    return !present.exists() || (present.isFile() && present.size() == 0);
}

} // namespace KEO
