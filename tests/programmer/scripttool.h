#pragma once

#include <QFile>
#include <QString>

/// Writes a shell script that stands in for the command-line programmer.
inline QString writeTool(const QString &path, const QByteArray &body)
{
    QFile::remove(path);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write("#!/bin/sh\n" + body + "\n") < 0)
        qFatal("cannot write %s", qPrintable(path));
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}
