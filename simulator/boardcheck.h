#pragma once

#include <QString>

class QTextStream;

namespace Sim {

/// Loads everything that a board file names and describes it for a person. False when a server
/// would refuse the file, or nets of a description are missing from its stimulus.
bool checkBoard(const QString &path, QTextStream &out);

} // namespace Sim
