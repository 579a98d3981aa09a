#include "filesetwatch.h"

#include <QFileInfo>

namespace KEO {

FileSetWatch::FileSetWatch(QObject *parent) : QObject(parent)
{
}

FileSetWatch::~FileSetWatch() = default;

void FileSetWatch::setFiles(const QStringList &paths)
{
    std::erase_if(m_watches, [&](const auto &entry) { return !paths.contains(entry.first); });
    for (const QString &path : paths) {
        if (m_watches.contains(path) || !QFileInfo(path).isFile())
            continue;
        FileWatch &watch = m_watches[path];
        watch.watch(path);
        connect(&watch, &FileWatch::fileChanged, this, &FileSetWatch::fileChanged);
    }
}

} // namespace KEO
