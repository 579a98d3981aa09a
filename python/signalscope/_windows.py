"""Windows of samples, as the data file of a saved project has them."""

from __future__ import annotations

import os
import xml.etree.ElementTree as ElementTree
from array import array
from dataclasses import dataclass, field
from typing import Any, Sequence, Union

from ._errors import SignalScopeError

try:
    import numpy
except ImportError:
    numpy = None  # type: ignore[assignment]

#: One value a sample, the oldest first. A numpy array where numpy is installed: of uint8 for a
#: signal, of uint64 for a bus, of objects for a bus of more than 64 signals. Else bytes for a
#: signal, and array("Q") or a list for a bus.
Samples = Any

_WORD = 64
_VALUES = bytes(int(character == ord("1")) for character in range(256))


class DataFileError(SignalScopeError):
    """A data file is not what it should be."""


@dataclass(frozen=True)
class Signal:
    """One captured bit."""

    name: str  #: what the design calls it
    label: str  #: what somebody renamed it to; empty if nobody did
    samples: Samples = field(repr=False, compare=False)  #: 0 or 1 each


@dataclass(frozen=True)
class Bus:
    """Signals that are read as one number."""

    name: str
    label: str
    members: tuple[Signal, ...] = field(repr=False)  #: the first is the highest bit
    samples: Samples = field(repr=False, compare=False)


@dataclass(frozen=True)
class Window:
    """One stretch of samples around one trigger."""

    core: int
    index: int
    trigger: int  #: the sample of the trigger, counted from 0; 0 for a lite core
    signals: tuple[Signal, ...] = field(repr=False)  #: in the order of the design
    buses: tuple[Bus, ...] = field(repr=False)  #: in the order of the rows

    def __len__(self) -> int:
        """The number of samples."""
        return max((len(signal.samples) for signal in self.signals), default=0)

    def __getitem__(self, name: str) -> Union[Signal, Bus]:
        """The signal or bus of that name, which is the design's or else the one it was given."""
        rows: tuple[Union[Signal, Bus], ...] = self.signals + self.buses
        for row in rows:
            if row.name == name:
                return row
        for row in rows:
            if row.label == name:
                return row
        raise KeyError(name)

    @property
    def names(self) -> list[str]:
        """The design's names of all signals and buses."""
        return [row.name for row in (*self.signals, *self.buses)]


def read_windows(path: Union[str, "os.PathLike[str]"]) -> list[Window]:
    """The windows in a data file, the .xml that saving a project writes beside it."""
    try:
        root = ElementTree.parse(path).getroot()
        if root.tag != "WaveData":
            raise ValueError(f"its root is {root.tag}")
        return [_window(element) for element in root.findall("Window")]
    except (ElementTree.ParseError, ValueError, KeyError) as error:
        raise DataFileError(f"{os.fspath(path)} is not a data file: {error}") from error


def _window(element: ElementTree.Element) -> Window:
    by_id = {}
    for signal in element.iterfind("Signals/Signal"):
        by_id[signal.get("id", "")] = Signal(signal.get("name", ""), signal.get("text", ""),
                                             _bits(signal.text or ""))
    buses = []
    for node in element.iterfind("Layout/Node[@type='bus']"):
        members = tuple(by_id[member.get("id", "")] for member in node.iterfind("Node"))
        buses.append(Bus(node.get("name", ""), node.get("text", ""), members,
                         _numbers([member.samples for member in members])))
    return Window(int(element.get("core", 0)), int(element.get("index", 0)),
                  int(element.findtext("TriggerPosition", "0")), tuple(by_id.values()),
                  tuple(buses))


def _bits(text: str) -> Samples:
    values = text.encode("ascii", "replace").translate(_VALUES)
    return values if numpy is None else numpy.frombuffer(bytearray(values), dtype=numpy.uint8)


def _numbers(members: Sequence[Samples]) -> Samples:
    """The values of a bus, whose highest bit comes first."""
    if numpy is not None:
        kind = numpy.uint64 if len(members) <= _WORD else object
        size = max((len(member) for member in members), default=0)
        values = numpy.zeros(size, dtype=kind)
        for member in members:
            values = (values << kind(1) if kind is not object else values * 2) + \
                member.astype(kind)
        return values
    numbers = [0] * max((len(member) for member in members), default=0)
    for member in members:
        numbers = [number << 1 | bit for number, bit in zip(numbers, member)]
    return array("Q", numbers) if len(members) <= _WORD else numbers
