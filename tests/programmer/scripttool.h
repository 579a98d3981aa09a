#pragma once

#include <support/files.h>

/// Writes a shell script that stands in for the command-line programmer.
inline QString writeTool(const QString &path, const QByteArray &body)
{
    QFile::remove(path);
    putFile(path, "#!/bin/sh\n" + body + "\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}
