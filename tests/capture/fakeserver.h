#pragma once

#include <QBitArray>
#include <QDataStream>
#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>
#include <QVariant>

#include <functional>

/// A cable server for one connection. It writes down every packet and answers the ones that want a
/// reply; a test may change, drop, keep or multiply the answers. It has its own way with frames:
/// the stream operators of the toolkit, which both sides' formats come from.
class FakeServer : public QObject
{
    Q_OBJECT

public:
    using Replies = QList<QVariantMap>;

    FakeServer()
    {
        static int number = 0;
        m_server.listen(QStringLiteral("fake%1").arg(++number));
        connect(&m_server, &QLocalServer::newConnection, this, [this] {
            m_socket = m_server.nextPendingConnection();
            connect(m_socket, &QLocalSocket::readyRead, this, &FakeServer::readFrames);
            readFrames();
        });
    }

    QString name() const { return m_server.serverName(); }

    /// Every packet so far: command or tag, then "bits" of the data and the numbers.
    QStringList log;
    int openResult = 0;
    /// Polls that read 1 before one reads 0; it starts again with the next arming word.
    int busyPolls = 0;
    /// Turns the regular answer to a request into what is sent.
    std::function<Replies(const QVariantMap &request, const QVariantMap &reply)> answer;

    /// Bit \a i of the rows of a section, as this server's memory holds them.
    static bool storedBit(int window, int section, qsizetype i)
    {
        return (i + 3 * section + 7 * window) % 5 == 0;
    }

    void send(const QVariantMap &packet)
    {
        QByteArray payload;
        QDataStream stream(&payload, QIODevice::WriteOnly);
        stream.setVersion(QDataStream::Qt_4_6);
        stream << packet;
        QByteArray frame;
        QDataStream(&frame, QIODevice::WriteOnly) << qint32(payload.size());
        m_socket->write(frame + payload);
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
    void readFrames()
    {
        m_input += m_socket->readAll();
        while (m_input.size() >= 4) {
            qint32 length = 0;
            QDataStream(m_input.left(4)) >> length;
            if (m_input.size() < 4 + length)
                return;
            QDataStream stream(m_input.mid(4, length));
            stream.setVersion(QDataStream::Qt_4_6);
            QVariantMap packet;
            stream >> packet;
            m_input.remove(0, 4 + length);
            take(packet);
        }
    }

    void take(const QVariantMap &packet)
    {
        QString line = packet.value("OPRATE", packet["CMD"]).toString();
        if (packet.contains("DATA")) {
            line += u' ';
            const QBitArray bits = packet["DATA"].toBitArray();
            for (qsizetype i = 0; i < bits.size(); ++i)
                line += bits.testBit(i) ? u'1' : u'0';
        }
        for (const char *key : {"SIZE", "WINDOW", "SECTION", "SECTION_COUNT"}) {
            if (packet.contains(key))
                line += u' ' + packet[key].toString();
        }
        log += line;
        reply(packet);
    }

    void reply(const QVariantMap &request)
    {
        const QString operation = request.value("OPRATE", request["CMD"]).toString();
        QVariantMap regular;
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
        } else if (operation == u"READ_RAM") {
            QBitArray data(request["SIZE"].toInt(), true);
            for (qsizetype i = 32; i < data.size() - 1; ++i) {
                data.setBit(
                    i, storedBit(request["WINDOW"].toInt(), request["SECTION"].toInt(), i - 32));
            }
            regular["DATA"] = data;
        } else {
            return;
        }
        const Replies replies = answer ? answer(request, regular) : Replies{regular};
        for (const QVariantMap &packet : replies)
            send(packet);
    }

    QLocalServer m_server;
    QLocalSocket *m_socket = nullptr; // child of the server
    QByteArray m_input;
    int m_polls = 0;
};
