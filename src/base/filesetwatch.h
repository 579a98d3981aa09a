#pragma once

#include "filewatch.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <map>

namespace KEO {

/// A FileWatch for each of several files.
class FileSetWatch final : public QObject
{
    Q_OBJECT

public:
    explicit FileSetWatch(QObject *parent = nullptr);
    ~FileSetWatch() override;

    /// Watches these files and no others. Empty paths and files that do not exist are left out;
    /// a file that was watched already stays, also while it is missing.
    void setFiles(const QStringList &paths);

Q_SIGNALS:
    /// As FileWatch::fileChanged.
    void fileChanged(const QString &path);

private:
    std::map<QString, FileWatch> m_watches; // by path
};

} // namespace KEO
