#pragma once

namespace KEO {

/// Exit status of the capture program; scripts rely on the numbers.
enum class ExitStatus {
    Captured = 0,      ///< or exported, or compared and equal, or rehearsed with a hit
    Different = 1,     ///< compared: projects or descriptions
    NoHit = 1,         ///< rehearsed
    Usage = 2,         ///< the command line asks for something that cannot be done
    NoServer = 3,      ///< no cable server could be started or reached, or it went away
    TimedOut = 4,      ///< --timeout ran out
    Refused = 5,       ///< the server could not open the device
    FileError = 6,     ///< a file could not be read or written
    HungUp = 129,      ///< SIGHUP
    Interrupted = 130, ///< SIGINT
    Terminated = 143   ///< SIGTERM
};

} // namespace KEO
