#pragma once

#include <QString>

#include <optional>

namespace KEO {

/// A design that can be captured from without hardware.
struct ExampleDesign
{
    QString description; ///< absolute path; not the user's to change
    QString family;      ///< of the device that it is in
    QString device;
};

/// The design on the board that the servers of \a directory play when nobody names another: that of
/// the `board.json` beside them, behind the first cable of the server table. Nothing where servers
/// of real cables stand, which have no such file, and where the environment gives the servers
/// another board or a transcript.
[[nodiscard]] std::optional<ExampleDesign> exampleDesign(const QString &directory);

} // namespace KEO
