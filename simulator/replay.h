#pragma once

#include "packet.h"
#include "transcriptfile.h"

#include <QByteArray>
#include <QList>
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
/// refused.
class Replay final
{
public:
    /// \a name is that of the file, for sentences.
    Replay(const QList<TranscriptLine> &lines, QString name);

    struct Answer
    {
        QByteArray frames;      ///< to send; may be empty
        QString difference;     ///< a sentence, or empty
        bool isRefused = false; ///< the program is to be cut off
    };

    /// The next packet that the program sends.
    Answer take(const Packet &packet);
    [[nodiscard]] bool isEmpty() const { return m_requests.isEmpty(); }

private:
    struct Reply
    {
        Packet packet;      ///< without its id
        QByteArray payload; ///< of a malformed frame, which stands in its place
        QString idKey;      ///< empty without an id
    };
    struct Request
    {
        int line = 0;
        Packet body; ///< without its id
        QString idKey;
        quint32 id = 0;
        QList<Reply> replies;
    };

    void addReply(const TranscriptLine &line);
    /// The request that \a body is, with the place moved behind it; null if there is none.
    const Request *find(const Packet &body);
    [[nodiscard]] const Request *among(const std::array<int, 2> &latest, const Packet &body) const;
    void note(int request);
    [[nodiscard]] QString differenceOf(const Packet &packet) const;

    QString m_name;
    QList<Request> m_requests;
    int m_next = 0;                         ///< request of the transcript that is expected
    std::array<int, 2> m_latest = {-1, -1}; ///< the last of each of the two latest that differ
    int m_asked = 0;                        ///< packets of the program
    bool m_differs = false;
    int m_answered = -1; ///< while reading: request that the latest reply belongs to
};

} // namespace Sim
