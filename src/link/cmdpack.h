#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

/// One message to or from a cable server: text keys to values. The wire knows five value types
/// (int, unsigned int, list, string, bit array) and no others; see docs/link-protocol.md.
using CmdPack = QMap<QString, QVariant>;
