#pragma once

#include "faultplan.h"
#include "outcome.h"
#include "programmersetup.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace Sim {

/// One device of a chain as the board file tells it; paths are absolute.
struct DeviceSetup
{
    QString series;
    QString model;
    QStringList alsoNamed; ///< further names of the model that a programmer takes, see the ID code
    quint32 idCode = 0;
    int instruction = 8;      ///< instruction register code, see "CHAIN"
    bool isProgrammed = true; ///< when the power comes on
    QString description;      ///< of the design; empty: the device holds no analyzer
    QString stimulus;
    QMap<QString, QString> nets; ///< name in the stimulus by name in the description
};

/// What hangs on the cable of one server.
struct CableSetup
{
    QList<DeviceSetup> chain;
    QList<Fault> faults;
    ProgrammerSetup programmer;
};

/// The whole board file: JSON, see docs/simulated-board.md.
struct BoardFile
{
    static constexpr int kVersion = 1;

    QString path;
    QString log; ///< absolute path; empty: none
    qint64 samplesPerSecond = 2'000'000;
    QMap<QString, CableSetup> cables; ///< by server name
    QString scannedCable; ///< whose chain a programmer's scan prints; empty: none has devices
};

/// Reads a board file. Unknown keys are errors, as they are mostly misspelt known ones; errors name
/// the file and the place, such as "cables.keo1.chain[0].idcode".
Outcome<BoardFile> readBoardFile(const QString &path);
Outcome<BoardFile> readBoard(const QByteArray &json, const QString &path);

/// Eight hexadecimal digits, in capitals.
QString idCodeText(quint32 idCode);

/// Path of the board file that the programs are to use: what the environment says, else the one
/// beside the program. Empty when there is none.
QString boardPathInForce();

} // namespace Sim
