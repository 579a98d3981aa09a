#pragma once

#include "faultplan.h"
#include "outcome.h"

#include <QList>
#include <QMap>
#include <QString>

namespace Sim {

/// One device of a chain as the board file tells it; paths are absolute.
struct DeviceSetup
{
    QString model;
    quint32 idCode = 0;
    int instruction = 8; ///< instruction register code, see "CHAIN"
    bool isProgrammed = true;
    QString description; ///< of the design; empty: the device holds no analyzer
    QString stimulus;
    QMap<QString, QString> nets; ///< name in the stimulus by name in the description
};

/// What hangs on the cable of one server.
struct CableSetup
{
    QList<DeviceSetup> chain;
    QList<Fault> faults;
};

/// The whole board file: JSON, see docs/simulated-board.md.
struct BoardFile
{
    static constexpr int kVersion = 1;

    QString path;
    QString log; ///< absolute path; empty: none
    qint64 samplesPerSecond = 2'000'000;
    QMap<QString, CableSetup> cables; ///< by server name
};

/// Reads a board file. Unknown keys are errors, as they are mostly misspelt known ones; errors name
/// the file and the place, such as "cables.keo1.chain[0].idcode".
Outcome<BoardFile> readBoardFile(const QString &path);
Outcome<BoardFile> readBoard(const QByteArray &json, const QString &path);

} // namespace Sim
