#include "pollfolding.h"

#include <algorithm>
#include <utility>

namespace KEO {

namespace {

constexpr int kShownTimes = 16;

// A packet's body is what is left without the entry of its id: the same in all polls of a kind.

QByteArrayView bodyBeforeId(const PacketText &text)
{
    const QByteArrayView payload = text.payload();
    return text.id() ? QByteArrayView(payload.begin(), text.id()->entry.begin()) : payload;
}

QByteArrayView bodyBehindId(const PacketText &text)
{
    return text.id() ? QByteArrayView(text.id()->entry.end(), text.payload().end())
                     : QByteArrayView();
}

bool hasBody(const PacketText &text, QByteArrayView body)
{
    const QByteArrayView front = bodyBeforeId(text);
    const QByteArrayView back = bodyBehindId(text);
    return body.size() == front.size() + back.size() && body.startsWith(front) &&
           body.endsWith(back);
}

void storeBody(QByteArray &body, const PacketText &text)
{
    body.resize(0); // and keeps its memory
    body.append(bodyBeforeId(text)).append(bodyBehindId(text));
}

quint64 keyOf(const PacketId &id)
{
    return (quint64(id.isData) << 32) | id.number;
}

} // namespace

PollFolding::PollFolding(Print print, PrintCount printCount)
    : m_print(std::move(print)), m_printCount(std::move(printCount))
{
}

void PollFolding::take(const TranscriptPacket &packet)
{
    if (size_t(packet.server) >= m_servers.size())
        m_servers.resize(size_t(packet.server) + 1);
    Server &server = m_servers[size_t(packet.server)];
    const PacketText text(packet.payload);
    if (packet.isSent)
        takeRequest(server, packet, text);
    else
        takeReply(server, packet, text);
}

bool PollFolding::hasCounts() const
{
    return std::ranges::any_of(
        m_servers, [](const Server &server) { return server.requests + server.replies > 0; });
}

void PollFolding::printCounts()
{
    for (size_t i = 0; i < m_servers.size(); ++i)
        printCount(int(i), m_servers[i]);
}

void PollFolding::takeRequest(Server &server, const TranscriptPacket &packet,
                              const PacketText &text)
{
    std::array<Asked, 2> &asked = server.asked;
    if (!hasBody(text, asked[0].body))
        std::swap(asked[0], asked[1]);
    if (!hasBody(text, asked[0].body)) {
        printCount(packet.server, server);
        storeBody(asked[0].body, text);
        asked[0].times = asked[1].times = 0; // a new pair
    }
    const auto &id = text.id();
    if (id)
        server.hidden.remove(keyOf(*id));
    if (++asked[0].times <= kShownTimes) {
        m_print(packet, text);
        return;
    }
    ++server.requests;
    if (id)
        server.hidden.insert(keyOf(*id), {packet.time, packet.payload.toByteArray()});
}

void PollFolding::takeReply(Server &server, const TranscriptPacket &packet, const PacketText &text)
{
    const auto &id = text.id();
    if (id && server.hidden.contains(keyOf(*id))) {
        const Hidden request = server.hidden.take(keyOf(*id));
        if (hasBody(text, server.answer)) {
            ++server.replies;
            return;
        }
        if (server.requests > 0) // else a count that was printed holds it
            --server.requests;
        printCount(packet.server, server);
        m_print({request.time, packet.server, true, request.payload}, PacketText(request.payload));
    }
    storeBody(server.answer, text);
    m_print(packet, text);
}

void PollFolding::printCount(int number, Server &server)
{
    if (server.requests == 0 && server.replies == 0)
        return;
    m_printCount(number, std::exchange(server.requests, 0), std::exchange(server.replies, 0));
}

} // namespace KEO
