#pragma once

#include <base/result.h>

#include <QByteArray>
#include <QString>

namespace KEO {

class FileSet;

/// Remembers what a text file that this program replaces held when it was last looked at, so that
/// what another program has written since is not lost.
class OwnedFile final
{
public:
    /// What \a path holds now is known.
    void know(const QString &path);
    /// It was replaced with \a content.
    void wrote(const QByteArray &content);
    /// What is known, to be kept from one start of the program to the next; see resume.
    [[nodiscard]] const QByteArray &state() const { return m_known; }
    void resume(const QByteArray &state) { m_known = state; }
    /// Is \a path there, with what is known of it?
    [[nodiscard]] bool isUnchanged(const QString &path) const;
    /// Before \a content takes the place of \a path: if that file was written since and holds
    /// something else, a copy is put into \a files, to stand beside it. Gives the copy's path,
    /// empty if none was needed, or why the file can't be kept.
    [[nodiscard]] Result<QString> keepNews(FileSet &files, const QString &path,
                                           const QByteArray &content) const;

private:
    QByteArray m_known; ///< the content's hash; null if there was no file
};

} // namespace KEO
