#pragma once

#include "boardfile.h"
#include "outcome.h"

#include <QList>
#include <QString>

class QCommandLineParser;

namespace Sim {

/// What a call of the programmer asks for when it is no scan.
struct DownloadRequest
{
    QString device;
    QString fsFile;
    int operationIndex = 0; ///< every operation programs; the number is only logged
    int cableIndex = 0;     ///< see kProgrammerCables
    int channel = 0;
    int target = 0;             ///< position in the chain, from 0
    QList<int> instructions{8}; ///< of each device of the chain
};

/// Declares the options of a download.
void addDownloadOptions(QCommandLineParser &parser);
/// Fails when an option is missing, there twice, or no such value; values that contradict one
/// another count as well.
Outcome<DownloadRequest> readDownloadRequest(const QCommandLineParser &parser);

/// What the board has against it, such as another device or an fs file that can't be read; empty
/// when it can go on.
QString objection(const DownloadRequest &request, const CableSetup &setup);

} // namespace Sim
