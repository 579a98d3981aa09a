#pragma once

#include "packettext.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>

#include <array>
#include <functional>
#include <vector>

namespace KEO {

/// A packet, or a payload that makes none.
struct TranscriptPacket
{
    qint64 time = 0; ///< nanoseconds since the start
    int server = 0;  ///< counted from 0
    bool isSent = false;
    QByteArrayView payload;
};

/// Keeps endless polling out of a transcript. While a program asks the same two things over and
/// over, apart from ids, and gets the same answer, only the first rounds stand in full; the others
/// are counted. An answer that is new stands in full again, behind the request it belongs to.
class PollFolding final
{
public:
    using Print = std::function<void(const TranscriptPacket &, const PacketText &)>;
    using PrintCount = std::function<void(int server, qint64 requests, qint64 replies)>;

    PollFolding(Print print, PrintCount printCount);

    /// Prints \a packet, or counts it.
    void take(const TranscriptPacket &packet);
    [[nodiscard]] bool hasCounts() const;
    /// Prints what was counted so far.
    void printCounts();

private:
    struct Asked
    {
        QByteArray body; ///< without its id
        int times = 0;
    };
    struct Hidden
    {
        qint64 time = 0;
        QByteArray payload;
    };
    struct Server
    {
        std::array<Asked, 2> asked;    ///< the latest two that differ, the last one first
        QByteArray answer;             ///< the latest that was printed, without its id
        QHash<quint64, Hidden> hidden; ///< requests that were counted, by their id
        qint64 requests = 0;
        qint64 replies = 0;
    };

    void takeRequest(Server &server, const TranscriptPacket &packet, const PacketText &text);
    void takeReply(Server &server, const TranscriptPacket &packet, const PacketText &text);
    void printCount(int number, Server &server);

    Print m_print;
    PrintCount m_printCount;
    std::vector<Server> m_servers; ///< by number
};

} // namespace KEO
