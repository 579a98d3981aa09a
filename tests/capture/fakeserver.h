#pragma once

#include <link/wireserver.h>
#include <support/bittext.h>

#include <QBitArray>

/// A cable server for one connection. It writes down every packet and answers the ones that want a
/// reply; a test may change, drop, keep or multiply the answers.
class FakeServer
{
public:
    using Replies = QList<Wire::Packet>;

    FakeServer() : m_wire(QStringLiteral("fake%1").arg(++s_count))
    {
        m_wire.onPacket = [this](const Wire::Packet &packet) {
            writeDown(packet);
            answerTo(packet);
        };
    }

    QString name() const { return m_wire.name(); }
    void send(const Wire::Packet &packet) { m_wire.reply(packet); }
    void drop() { m_wire.drop(); }

    /// Every packet so far: command or tag, then "bits" of the data and the numbers.
    QStringList log;
    int openResult = 0;
    /// Polls that read 1 before one reads 0; it starts again with the next arming word.
    int busyPolls = 0;
    /// Of a lite core: what its capture init register reads, as many bits as asked for.
    bool hasInitData = false;
    /// Bits before the rows of a memory read; a lite core has none.
    int leadingBits = 32;
    /// Turns the regular answer to a request into what is sent.
    std::function<Replies(const Wire::Packet &request, const Wire::Packet &reply)> answer;

    /// Bit \a i of the rows of a section, as this server's memory holds them.
    static bool storedBit(int window, int section, qsizetype i)
    {
        return (i + 3 * section + 7 * window) % 5 == 0;
    }

    QString lastLine() const { return log.value(log.size() - 1); }
    QStringList logged(const QString &beginning) const
    {
        QStringList found;
        for (const QString &line : log) {
            if (line.startsWith(beginning))
                found += line;
        }
        return found;
    }

private:
    void writeDown(const Wire::Packet &packet)
    {
        QString line = packet.value("OPRATE", packet["CMD"]).toString();
        if (packet.contains("DATA"))
            line += u' ' + textOf(packet["DATA"].toBitArray());
        for (const char *key : {"SIZE", "WINDOW", "SECTION", "SECTION_COUNT"}) {
            if (packet.contains(key))
                line += u' ' + packet[key].toString();
        }
        log += line;
    }

    void answerTo(const Wire::Packet &request)
    {
        const QString operation = request.value("OPRATE", request["CMD"]).toString();
        Wire::Packet regular;
        for (const char *key : {"request_id", "data_request_id", "WINDOW", "SECTION_COUNT"}) {
            if (request.contains(key))
                regular[key] = request[key];
        }
        if (operation == u"WRITE_START_REG") {
            if (request["DATA"].toBitArray().size() > 21) // a write, no read select
                m_polls = 0;
            return;
        }
        if (operation == u"OPEN") {
            regular["RES"] = openResult;
        } else if (operation == u"READ_START_REG") {
            regular["DATA"] = QBitArray(request["SIZE"].toInt(), m_polls++ < busyPolls);
        } else if (operation == u"OP_READ_CAPTURE_INIT") {
            regular["DATA"] = QBitArray(request["SIZE"].toInt(), !hasInitData);
        } else if (operation == u"READ_RAM") {
            QBitArray data(request["SIZE"].toInt(), true);
            for (qsizetype i = leadingBits; i < data.size() - 1; ++i) {
                data.setBit(i, storedBit(request["WINDOW"].toInt(), request["SECTION"].toInt(),
                                         i - leadingBits));
            }
            regular["DATA"] = data;
        } else {
            return;
        }
        const Replies replies = answer ? answer(request, regular) : Replies{regular};
        for (const Wire::Packet &packet : replies)
            send(packet);
    }

    static inline int s_count = 0;
    WireServer m_wire;
    int m_polls = 0;
};
