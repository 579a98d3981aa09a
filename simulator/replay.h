#pragma once

#include "packet.h"
#include "transcriptfile.h"

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <array>

namespace Sim {

/// Plays the server's side of a transcript to a program that asks the same, under the ids that it
/// asks with. The program may ask the two things that it asked last any number of times, as it does
/// while it waits for the trigger: it gets the answers of the transcript in their order, then the
/// last one again.
///
/// What it asks otherwise is a difference, and the samples of the transcript say nothing of it.
/// Words that want no answer are compared further; the first request behind a difference is
/// refused. A request that has no answer in the transcript, where its writing broke off say, gets
/// none.
class Replay final
{
public:
    /// \a name is that of the file, for sentences.
    Replay(const QList<TranscriptLine> &lines, QString name);

    struct Answer
    {
        QByteArray frames;      ///< to send; may be empty
        QString told;           ///< a sentence on a difference or a silence, or empty
        bool isRefused = false; ///< the program is to be cut off
    };

    /// The next packet that the program sends.
    Answer take(const Packet &packet);
    [[nodiscard]] bool isEmpty() const { return m_requests.isEmpty(); }

private:
    struct Reply
    {
        Packet packet;    ///< without its id
        QByteArray frame; ///< malformed, to send in its place; may be empty
        QString idKey;    ///< empty without an id
    };
    struct Request
    {
        int line = 0;
        Packet body; ///< without its id
        bool wantsAnswer = false;
        QList<Reply> replies;
    };
    struct Owners;
    using Id = QPair<QString, quint32>; ///< key and number; an empty key without an id

    /// Takes the id out of a packet.
    static Id takeId(Packet &packet);
    /// The request that \a body is, with the place moved behind it; null if there is none.
    const Request *find(const Packet &body);
    [[nodiscard]] const Request *among(const std::array<int, 2> &latest, const Packet &body) const;
    void note(int request);
    [[nodiscard]] QString differenceOf(const Packet &body) const;

    QString m_name;
    QList<Request> m_requests;
    int m_next = 0;                         ///< request of the transcript that is expected
    std::array<int, 2> m_latest = {-1, -1}; ///< the last of each of the two latest that differ
    int m_asked = 0;                        ///< packets of the program
    bool m_differs = false;
    bool m_isBehind = false; ///< a difference was told behind the transcript's end
    int m_silent = 0;        ///< line of the latest request that was told to have no answer
};

} // namespace Sim
