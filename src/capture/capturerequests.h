#pragma once

#include <link/cmdpack.h>
#include <link/jtagsession.h>

#include <QElapsedTimer>
#include <QList>
#include <QVariant>

#include <functional>
#include <memory>

namespace KEO {

/// The requests of a manager's runs, and what keeps replies apart that look alike. An id is free
/// again as soon as its request is forgotten, so a reply alone does not tell which request it is
/// for. A server answers in order, which is what two rules here stand on:
///
/// - After a stop that left requests unanswered, the replies up to that of the next "OPEN" belong
///   to what was stopped. Reads pass over them and go on waiting.
/// - An answer that would do harm under another request keeps its id taken for the rest of its
///   round and for the next one. If it comes twice, the second one meets the same task again.
///
/// GUI thread. Tasks may do anything, delete the owner of this object included.
class CaptureRequests final
{
public:
    enum class Verdict {
        Foreign, ///< not the answer to this request, which goes on waiting
        Useless, ///< the answer, and nothing can be made of it
        Harmless,
        Keep ///< harmful if it were taken for the answer to another request
    };

    struct Read
    {
        /// What a reply is; changes nothing.
        std::function<Verdict(const CmdPack &)> judge;
        /// Takes the answer.
        std::function<void(const CmdPack &)> take;
        /// Takes a further reply that is no foreign one, of an answer kept; may be empty.
        std::function<void(const CmdPack &)> takeAgain;
    };

    /// \a session is borrowed and outlives the object.
    explicit CaptureRequests(JtagSession &session);
    CaptureRequests(const CaptureRequests &) = delete;
    CaptureRequests &operator=(const CaptureRequests &) = delete;
    /// Tasks that still wait do nothing from now on.
    ~CaptureRequests();

    /// Sends "OPEN"; \a opened gets its result, -1 if the reply has none.
    void open(const QVariantList &chain, std::function<void(int result)> opened);
    /// Sends a read.
    void read(const CmdPack &pack, Read read);

    /// A run or a round of an Auto run begins: the ids kept in the round before the last are free.
    void beginRound();
    /// The run is stopped: forgets all requests, and notes at the session what is unanswered.
    void stop();
    /// Gives all reads up, as lost, and goes on with the same run.
    void giveUp();
    /// The run has got all it asked for, so nothing of it is late.
    void finish();

    /// "OPEN" has not been answered yet.
    [[nodiscard]] bool isOpening() const { return m_isOpening; }
    /// How long an answer has been waited for without a useful one to any request, in ms; 0 if
    /// nothing is asked.
    [[nodiscard]] qint64 silence() const;

private:
    struct Request
    {
        JtagDataRequest handle;
        std::shared_ptr<int> unanswered; ///< the count of its run
        bool isAnswered = false;
    };

    void awaitOpened(const CmdPack &reply);
    void endOpening(int result);
    bool passesOver();
    void takeReply(const std::shared_ptr<Request> &request, const Read &read, const CmdPack &reply,
                   bool *done);
    void noteAsked();
    void noteLate(int commands);
    void forget();

    JtagSession &m_session; // borrowed
    /// Replaced when all is forgotten; tasks of before find theirs gone.
    std::shared_ptr<int> m_era = std::make_shared<int>(0);
    std::function<void(int)> m_opened;
    bool m_isOpening = false;
    bool m_isHeard = false;    ///< since "OPEN" was sent
    bool m_passesOver = false; ///< until "OPEN" is answered
    int m_lastResult = 0;      ///< of an "OPEN", perhaps an earlier one
    bool m_hasResult = false;  ///< m_lastResult came since "OPEN" was sent
    /// Reads of this run; each request counts in that of its own.
    std::shared_ptr<int> m_unanswered = std::make_shared<int>(0);
    bool m_hasGivenUp = false;           ///< since the last answer
    QElapsedTimer m_quiet;               ///< since the last answer, or since something is asked
    QList<JtagDataRequest> m_kept;       ///< in this round
    QList<JtagDataRequest> m_keptBefore; ///< in the round before
};

} // namespace KEO
