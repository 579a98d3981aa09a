"""Captures from on-chip logic analyzer cores in a script.

The work is done by the program signalscope-capture, which this package starts and whose results it
turns into Python's own: samples into arrays, failures into exceptions.

    import signalscope

    capture = signalscope.capture("my_design.keo", device="KR-C", timeout=60)
    window = capture.windows[0]
    print(window["data"].samples[window.trigger])

With numpy installed, samples are numpy arrays; without it they are bytes and arrays of the standard
library. There are no other dependencies.
"""

from ._errors import (FileError, Interrupted, NoServerError, ProgramError, ProgramNotFoundError,
                      RefusedError, SignalScopeError, SignalScopeWarning, TimedOutError, UsageError)
from ._tasks import (Capture, Comparison, Difference, Rehearsal, Trigger, capture, compare, diff,
                     rehearse)
from ._windows import Bus, DataFileError, Signal, Window, read_windows

__all__ = [
    "Bus", "Capture", "Comparison", "DataFileError", "Difference", "FileError", "Interrupted",
    "NoServerError", "ProgramError", "ProgramNotFoundError", "RefusedError", "Rehearsal", "Signal",
    "SignalScopeError", "SignalScopeWarning", "TimedOutError", "Trigger", "UsageError", "Window",
    "capture", "compare", "diff", "read_windows", "rehearse",
]
