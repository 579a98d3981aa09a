"""What can go wrong: one exception for each exit status of the program."""

from __future__ import annotations

from typing import Any, Mapping, Optional


class SignalScopeError(Exception):
    """Base of all. Its text is the program's own sentence."""

    def __init__(self, message: str, status: Optional[int] = None,
                 document: Optional[Mapping[str, Any]] = None) -> None:
        super().__init__(message)
        self.status = status  #: exit status; None if the program did not run to its end
        self.document = document  #: what it had to tell up to then; None if it told nothing


class SignalScopeWarning(UserWarning):
    """A run that reached its result, but says what may be wrong with it."""


class ProgramNotFoundError(SignalScopeError):
    """There is no signalscope-capture where it was looked for."""


class ProgramError(SignalScopeError):
    """The program ended in a way that it does not know, or told what can't be read."""


class UsageError(SignalScopeError):
    """Status 2: something was asked for that can't be done, such as a core that is not there."""


class NoServerError(SignalScopeError):
    """Status 3: no cable server could be started or reached, or it went away."""


class TimedOutError(SignalScopeError, TimeoutError):
    """Status 4: the trigger did not come in time."""


class RefusedError(SignalScopeError):
    """Status 5: the device could not be opened, or did not give all samples for sure."""


class FileError(SignalScopeError, OSError):
    """Status 6: a file could not be read or written, or is not what it should be."""


class Interrupted(SignalScopeError):
    """Status 129, 130 or 143: somebody else told the program to end."""


_BY_STATUS = {2: UsageError, 3: NoServerError, 4: TimedOutError, 5: RefusedError, 6: FileError,
              129: Interrupted, 130: Interrupted, 143: Interrupted}


def error_of(status: int, message: str,
             document: Optional[Mapping[str, Any]] = None) -> SignalScopeError:
    """The exception that stands for an exit status."""
    return _BY_STATUS.get(status, ProgramError)(message, status, document)
