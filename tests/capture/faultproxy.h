#pragma once

#include <link/wireserver.h>

#include <QBitArray>
#include <QLocalSocket>
#include <QObject>
#include <QRandomGenerator>
#include <QThread>
#include <QTimer>

#include <map>
#include <set>
#include <tuple>

/// What the board told between two "OPEN"s, as its server sent it.
struct BoardRun
{
    /// One reading of a core's memory.
    struct Reading
    {
        int core = -1; ///< as selected; -1 for a lite core
        bool isDone =
            false; ///< the core had said in this run, since it was armed last, that it is full
        std::map<int, std::map<int, QBitArray>> windows; ///< "DATA" by window and section
    };
    QList<Reading> readings;
};

/// Stands between a program and a real cable server: hands requests on, keeps what the server
/// replies, and plays faults on the replies, as a seed says.
class FaultProxy final
{
public:
    explicit FaultProxy(const QString &upstream) : m_wire(QStringLiteral("proxy-") + upstream)
    {
        m_wire.onPacket = [this](const Wire::Packet &request) { takeRequest(request); };
        QObject::connect(&m_upstream, &QLocalSocket::readyRead, &m_context, [this] {
            m_input += m_upstream.readAll();
            while (const auto reply = Wire::take(m_input))
                takeReply(*reply);
        });
        for (int attempt = 0; attempt < 500 && !isConnected(); ++attempt) {
            QThread::msleep(10); // it is starting
            m_upstream.connectToServer(upstream);
        }
    }

    QString name() const { return m_wire.name(); }
    bool isConnected() const { return m_upstream.state() == QLocalSocket::ConnectedState; }

    /// Plays faults on one reply of \a rarity.
    void play(quint32 seed, int rarity)
    {
        m_random.seed(seed);
        m_rarity = rarity;
        played.clear();
    }
    /// No new faults; what is held back still comes.
    void playFair() { m_rarity = 0; }
    /// All replies have been handed on.
    bool isDrained() const { return m_asked.isEmpty() && m_late == 0 && m_queue.isEmpty(); }

    QList<BoardRun> runs; ///< one for each "OPEN"
    QStringList played;   ///< the faults, for whoever looks for a mistake

private:
    struct Asked
    {
        QString operation;
        int core = -1;
        int arming = 0; ///< how many times that core had been armed
        int run = -1;
        int reading = -1;
        int window = 0;
        int section = 0;
    };

    static QString operationOf(const Wire::Packet &packet)
    {
        return packet.value("OPRATE", packet["CMD"]).toString();
    }

    void takeRequest(const Wire::Packet &request)
    {
        const QString operation = operationOf(request);
        const QBitArray word = request["DATA"].toBitArray();
        if (operation == u"OPEN") {
            runs.append(BoardRun());
            m_core = -1;
        } else if (operation == u"WRITE_REGISTOR" && word.size() == 5) {
            m_core = 8 * word[1] + 4 * word[2] + 2 * word[3] + word[4];
        } else if (operation == u"WRITE_START_REG" && word.size() > 21 && word[word.size() - 1]) {
            ++m_armings[m_core];
        } else if (operation == u"BRUST_READ" && request["SECTION"] == 0 &&
                   request["WINDOW"] == 0 && !runs.isEmpty()) {
            runs.last().readings.append(BoardRun::Reading{m_core, false, {}});
        }
        if (request.contains("request_id") || request.contains("data_request_id")) {
            const int run = int(runs.size()) - 1;
            const int reading = run < 0 ? -1 : int(runs[run].readings.size()) - 1;
            m_asked.append({operation, m_core, m_armings[m_core], run, reading,
                            request["WINDOW"].toInt(), request["SECTION"].toInt()});
        }
        m_upstream.write(Wire::frame(request));
        m_upstream.flush();
    }

    void takeReply(const Wire::Packet &reply)
    {
        const Asked asked = m_asked.takeFirst(); // it answers in order
        const QBitArray data = reply["DATA"].toBitArray();
        const bool isRegister =
            asked.operation == u"READ_START_REG" || asked.operation == u"OP_READ_CAPTURE_INIT";
        if (isRegister && data.size() > 0 && data.count(true) == 0)
            m_done.insert({asked.run, asked.core, asked.arming});
        if (asked.operation == u"READ_RAM" && asked.run >= 0 && asked.reading >= 0) {
            BoardRun::Reading &reading = runs[asked.run].readings[asked.reading];
            const bool isDone = m_done.contains({asked.run, asked.core, asked.arming});
            reading.isDone = isDone && (reading.isDone || reading.windows.empty());
            reading.windows[asked.window][asked.section] = data;
        }
        if (m_rarity > 0 && m_random.bounded(m_rarity) == 0)
            playOn(asked.operation, reply);
        else
            handOn(Wire::frame(reply));
        if (m_held && !m_heldNow)
            handOn(*std::exchange(m_held, std::nullopt));
        m_heldNow = false;
    }

    void playOn(const QString &operation, Wire::Packet reply)
    {
        const int kind = std::min(m_random.bounded(10), 7);
        const int delay = m_random.bounded(1, 100);
        static const char *const kNames[] = {"swapped", "doubled",  "doubled late", "lost",
                                             "late",    "mistyped", "short",        "all stall"};
        played.append(QStringLiteral("%1 %2 (%3 ms)")
                          .arg(operation, QLatin1String(kNames[kind]), QString::number(delay)));
        const QByteArray frame = Wire::frame(reply);
        switch (kind) {
        case 0:
            if (m_held)
                handOn(*m_held);
            m_held = frame;
            m_heldNow = true;
            later(delay, [this, frame] { // none may follow
                if (m_held == frame)
                    handOn(*std::exchange(m_held, std::nullopt));
            });
            return;
        case 1:
            handOn(frame + frame);
            return;
        case 2:
            handOn(frame);
            later(delay, [this, frame] { handOn(frame); });
            return;
        case 3:
            return;
        case 4:
            later(delay, [this, frame] { handOn(frame); });
            return;
        case 5:
            mistype(reply);
            handOn(Wire::frame(reply));
            return;
        case 6:
            shorten(reply);
            handOn(Wire::frame(reply));
            return;
        default:
            ++m_stalls;
            later(2 * delay, [this] {
                if (--m_stalls == 0)
                    handOn({});
            });
            handOn(frame);
        }
    }

    void shorten(Wire::Packet &reply)
    {
        QBitArray data = reply["DATA"].toBitArray();
        const int size = int(data.size());
        data.truncate(m_random.bounded(3) == 0 ? 0 : m_random.bounded(qMax(size, 1)));
        reply["DATA"] = data;
    }

    void mistype(Wire::Packet &reply)
    {
        const QStringList keys = reply.keys();
        const QString key = keys[m_random.bounded(int(keys.size()))];
        const QVariant values[] = {QString("0"), 0,           1u,
                                   QBitArray(3), QString(""), QVariantList{QBitArray(64)},
                                   QVariant()};
        const QVariant value = values[m_random.bounded(int(std::size(values)))];
        played.last() += u' ' + key + u' ' + QLatin1String(value.typeName());
        if (value.isValid())
            reply[key] = value;
        else
            reply.remove(key);
    }

    void handOn(const QByteArray &bytes)
    {
        m_queue += bytes;
        if (m_stalls > 0 || m_queue.isEmpty())
            return;
        m_wire.write(std::exchange(m_queue, {}));
    }

    template <typename Function>
    void later(int ms, Function function)
    {
        ++m_late;
        QTimer::singleShot(ms, &m_context, [this, function] {
            --m_late;
            function();
        });
    }

    QLocalSocket m_upstream;
    WireServer m_wire;
    QByteArray m_input;
    QByteArray m_queue; ///< behind a stall
    std::optional<QByteArray> m_held;
    bool m_heldNow = false;
    int m_stalls = 0;
    int m_late = 0;
    QList<Asked> m_asked;                       ///< the oldest first
    int m_core = -1;                            ///< as selected
    std::map<int, int> m_armings;               ///< by core
    std::set<std::tuple<int, int, int>> m_done; ///< runs, cores and armings that are over
    QRandomGenerator m_random;
    int m_rarity = 0;
    QObject m_context; ///< the first to go
};
