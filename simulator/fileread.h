#pragma once

#include "outcome.h"

#include <QByteArray>

namespace Sim {

/// The content of a regular file of at most \a limit bytes.
Outcome<QByteArray> readWholeFile(const QString &path, qint64 limit);

} // namespace Sim
