#pragma once

#include <QList>
#include <QString>

namespace KEO {

/// What a run has to tell beside its states and windows. Belongs where the state of the run is
/// shown; none of it ends the run.
struct RunReport
{
    enum class Server {
        Answers,
        Silent, ///< has left a request unanswered for some seconds; may be busy with others
        Gone    ///< the connection has ended
    };

    struct Window
    {
        int core = 0; ///< as the signals carry it
        int window = 0;

        bool operator==(const Window &other) const = default;
    };

    Server server = Server::Answers;
    /// Windows whose reading began and that were never handed out, known once the run has moved on
    /// to another core or is over.
    QList<Window> missing;
    /// Windows that may hold older samples, or other ones than the core has: the server has
    /// contradicted itself, or left open whether the capture was done.
    QList<Window> doubtful;

    /// It for the user, in whole sentences; empty if all is well.
    [[nodiscard]] QString text() const;

    bool operator==(const RunReport &other) const = default;
};

} // namespace KEO
