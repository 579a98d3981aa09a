#pragma once

#include <QString>
#include <QStringList>

namespace KEO {

/// The files that were opened or saved last, from one start of the program to the next: a text file
/// with a path a line in the user's data folder, which all windows share. What can't be read or
/// written is not remembered, and hinders nothing.
class RecentFiles final
{
public:
    static constexpr int kCount = 8;

    RecentFiles();

    /// Absolute paths, the last one first, whether or not they are still there.
    [[nodiscard]] QStringList paths() const;
    /// \a path comes first from now on.
    void add(const QString &path) const;

private:
    QString m_file;
};

} // namespace KEO
