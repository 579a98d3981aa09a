#pragma once

#include <QMap>
#include <QString>

namespace Sim {

/// What a programmer made of one device since the power came on.
struct DeviceState
{
    bool isProgrammed = false;
    int loads = 0; ///< bitstreams that took; counts up, so that a new one shows

    bool operator==(const DeviceState &) const = default;
};

/// What happened to the chain of one cable since the power came on.
struct ChainState
{
    int scans = 0;                  ///< runs of the programmer that scanned, failed ones included
    int downloads = 0;              ///< runs that downloaded, likewise
    QMap<int, DeviceState> devices; ///< by position in the chain, those that were touched

    bool operator==(const ChainState &) const = default;
};

/// Keeps a ChainState where the server of a cable and the programmer both find it: in a file beside
/// the server's socket, `<socket>-<hash of the board file's path>.chain`. So it is shared by those
/// who would meet on the socket and speak of the same board, and by nobody else.
class ChainStateFile final
{
public:
    /// \a socket is the server's name, \a board the path of the board file.
    ChainStateFile(const QString &socket, const QString &board);

    [[nodiscard]] const QString &path() const { return m_path; }
    [[nodiscard]] ChainState read() const;
    /// Whole or not at all; false when it can't be written.
    [[nodiscard]] bool write(const ChainState &state) const;
    /// The power is switched on: everything is as the board file says. False when the file stays.
    bool clear() const;

private:
    QString m_path;
    QString m_board; ///< canonical; in the file for people
};

} // namespace Sim
