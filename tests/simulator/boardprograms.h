#pragma once

#include "bittext.h"

#include <QBitArray>
#include <QDataStream>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QMap>
#include <QProcess>
#include <QTest>
#include <QVariant>

// The programs of the simulated board as tests meet them: processes, sockets, bytes.

using Message = QMap<QString, QVariant>;

inline constexpr int kPatienceMs = 20000;
inline const QString kExample = QStringLiteral(KEO_SOURCE_DIR "/examples/uart_fifo/");

inline QByteArray frameOf(const Message &message)
{
    QByteArray payload;
    QDataStream stream(&payload, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_6);
    stream << message;
    QByteArray length;
    QDataStream(&length, QIODevice::WriteOnly) << qint32(payload.size());
    return length + payload;
}

/// Starts one of the programs on a board file.
inline void startOnBoard(QProcess &process, const QString &program, const QString &board,
                         const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("SIGNALSCOPE_BOARD"), board);
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(KEO_BURNER_DIR "/") + program, arguments);
}

/// One of the three server programs, as a parent starts it.
class ServerProcess
{
public:
    explicit ServerProcess(const QString &program, const QString &board,
                           const QStringList &arguments = {QStringLiteral("-local")})
    {
        startOnBoard(process, program, board, arguments);
        process.waitForStarted(kPatienceMs); // brings state() up to date as well
    }

    ~ServerProcess()
    {
        process.closeWriteChannel();
        if (!process.waitForFinished(kPatienceMs))
            process.kill();
    }

    /// Standard error so far, once it holds \a text.
    bool complains(const QString &text)
    {
        QElapsedTimer clock;
        clock.start();
        while (!complaints.contains(text) && clock.elapsed() < kPatienceMs) {
            process.waitForReadyRead(20);
            complaints += QString::fromLocal8Bit(process.readAllStandardError());
        }
        return complaints.contains(text);
    }

    QProcess process;
    QString complaints;
};

/// A client with a reader of its own for what comes back.
class Client
{
public:
    explicit Client(const QString &name)
    {
        QElapsedTimer clock;
        clock.start();
        do {
            socket.connectToServer(name);
            if (socket.waitForConnected(100))
                break;
            QTest::qWait(10);
        } while (clock.elapsed() < kPatienceMs);
    }

    void send(const Message &message)
    {
        socket.write(frameOf(message));
        socket.flush();
    }

    /// The next message; one key "none" when nothing complete comes within \a ms.
    Message receive(int ms = kPatienceMs)
    {
        QElapsedTimer clock;
        clock.start();
        while (true) {
            buffer += socket.readAll();
            const qint64 length =
                buffer.size() < 4 ? -1 : QByteArray(buffer.left(4)).toHex().toLongLong(nullptr, 16);
            if (length >= 0 && buffer.size() >= 4 + length) {
                QDataStream stream(buffer.mid(4, length));
                stream.setVersion(QDataStream::Qt_4_6);
                Message message;
                stream >> message;
                buffer.remove(0, 4 + length);
                return message;
            }
            incomplete += !buffer.isEmpty();
            const qint64 left = ms - clock.elapsed();
            if (left <= 0 || !socket.waitForReadyRead(int(left)))
                if (socket.bytesAvailable() == 0)
                    return {{QStringLiteral("none"), true}};
        }
    }

    int open(const QList<int> &chain = {0}, uint id = 0)
    {
        QVariantList list;
        for (const int code : chain)
            list.append(code);
        send({{"CMD", "OPEN"}, {"CHAIN", list}, {"request_id", id}});
        const Message reply = receive();
        return reply.value("request_id").toUInt() == id ? reply.value("RES", 4711).toInt() : 4712;
    }

    void write(const QString &word, const char *operation = "WRITE_REGISTOR")
    {
        send({{"CMD", "WRITE"}, {"OPRATE", QLatin1String(operation)}, {"DATA", bitsOf(word)}});
    }

    void writeRegister(int address, quint64 value, int width)
    {
        write(QStringLiteral("01001") + binary(quint64(address), 16) + binary(value, width));
    }

    void askStart(int width, uint id)
    {
        write(QStringLiteral("01101") + binary(0, 16), "WRITE_START_REG");
        send({{"CMD", "READ"},
              {"OPRATE", "READ_START_REG"},
              {"SIZE", width},
              {"data_request_id", id}});
    }

    bool waitUntilIdle(int width)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < kPatienceMs) {
            askStart(width, 1);
            const QBitArray bits = receive().value("DATA").toBitArray();
            if (bits.size() == width && bits.count(true) == 0)
                return true;
        }
        return false;
    }

    /// Rows of the first window by address, as text with the marker first.
    QStringList readWindow(int amount, int width)
    {
        QStringList rows;
        constexpr int kSection = 128;
        const int sections = amount / kSection;
        for (int section = 0; section < sections; ++section) {
            write(QStringLiteral("00111") + binary(quint64(section * kSection), 16) +
                      binary(kSection, 16),
                  "BRUST_READ");
            send({{"CMD", "READ"},
                  {"OPRATE", "READ_RAM"},
                  {"SIZE", width * kSection + 33},
                  {"SECTION", section},
                  {"SECTION_COUNT", sections},
                  {"WINDOW", 0},
                  {"data_request_id", uint(section)}});
            const Message reply = receive();
            const QBitArray bits = reply.value("DATA").toBitArray();
            if (bits.size() != width * kSection + 33 || reply.value("WINDOW") != QVariant(0) ||
                reply.value("SECTION_COUNT") != QVariant(sections) ||
                reply.value("data_request_id") != QVariant(uint(section)))
                return {};
            for (int row = kSection - 1; row >= 0; --row) {
                QString text;
                for (int bit = 0; bit < width; ++bit)
                    text.append(bits.testBit(32 + row * width + bit) ? u'1' : u'0');
                rows.append(text);
            }
        }
        return rows;
    }

    QLocalSocket socket;
    QByteArray buffer;
    int incomplete = 0; ///< looks at the buffer that found part of a frame
};
