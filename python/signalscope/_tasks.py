"""What the program can be asked for."""

from __future__ import annotations

import os
import tempfile
from dataclasses import dataclass, field
from typing import Any, Iterable, Mapping, Optional, Union

from . import _program
from ._program import Path
from ._windows import Window, read_windows

_PROJECT = ".analyzer_prj"


@dataclass(frozen=True)
class Trigger:
    """What the trigger of one core shall be; what is left out stays as the description has it.

    The texts are those of the options --set and --expression: "==RX01", "in 0x10..0x2F",
    "==1,count=5" for a match unit, "M0&!M1" for an expression, "none" to let any sample trigger.
    """

    units: Mapping[str, str] = field(default_factory=dict)  #: setting by match unit, such as "M0"
    expressions: Union[str, Iterable[str]] = ()  #: of a dynamic core: those in force, one or more
    windows: Optional[int] = None
    amount: Optional[int] = None  #: samples in a window
    position: Optional[int] = None  #: samples before the trigger

    def _options(self) -> list[str]:
        single = isinstance(self.expressions, str)
        expressions = [self.expressions] if single else list(self.expressions)
        return (_several("set", [f"{unit}={setting}" for unit, setting in self.units.items()]) +
                _several("expression", expressions) + _given("windows", self.windows) +
                _given("amount", self.amount) + _given("position", self.position))


#: For the first core, or by the number of the core.
Triggers = Union[Trigger, Mapping[int, Trigger], None]


@dataclass(frozen=True)
class Capture:
    """What a capture brought."""

    windows: list[Window]
    cable: str
    project: Optional[str]  #: where it was saved, if that was asked for


@dataclass(frozen=True)
class Comparison:
    """How two saved captures differ. The windows are as --compare --json tells them."""

    equal: bool
    windows: list[dict[str, Any]] = field(repr=False)


@dataclass(frozen=True)
class Rehearsal:
    """Where a trigger would come in a saved capture. The windows are as --rehearse --json tells."""

    hit: bool  #: it would, at one sample at least
    windows: list[dict[str, Any]] = field(repr=False)


@dataclass(frozen=True)
class Difference:
    """What has changed from one description to another, as --diff --json tells it."""

    equal: bool
    changes: list[dict[str, Any]] = field(repr=False)


def capture(description: Path, *, device: Optional[str] = None, trigger: Triggers = None,
            cores: Iterable[int] = (), cable: Optional[str] = None,
            chain: Optional[str] = None, delay: Optional[int] = None,
            force_after: Optional[float] = None, timeout: Optional[float] = None,
            save: Optional[Path] = None, program: Optional[Path] = None) -> Capture:
    """Arms cores, waits for their triggers and reads the samples.

    description: the .keo or .zeo file of the design. device: its model, as the tool flow names it.
    trigger: what to change in it for the first core, or by core; those cores are captured. cores:
    further ones, or the one that a lone trigger is for; default is the first. cable, chain: as the
    options of the same names. delay: milliseconds, for a lite core. force_after: seconds after
    which the trigger is forced. timeout: seconds after which TimedOutError is raised; without it
    the call waits as long as the core does. save: a project to save to, ending in .analyzer_prj.

    Without the device, the first sample of a .keo design may be wrong; a SignalScopeWarning says so.
    A KeyboardInterrupt is raised once the cores are disarmed and the device is closed.
    """
    options = (_given("device", device) + _given("cable", cable) + _given("chain", chain) +
               _given("delay", delay) + _given("force-after", force_after) +
               _given("timeout", timeout) + _triggers(trigger, cores))
    with tempfile.TemporaryDirectory(prefix="signalscope-") as folder:
        project = _absolute(save if save is not None else os.path.join(folder, "capture" + _PROJECT))
        result = _program.run(program,
                              [*options, f"--save={project}", _absolute(description)])
        windows = read_windows(project[:-len(_PROJECT)] + ".xml")
    return Capture(windows, str(result.document.get("cable", "")),
                   project if save is not None else None)


def rehearse(project: Path, trigger: Triggers = None, *, cores: Iterable[int] = (),
             program: Optional[Path] = None) -> Rehearsal:
    """Tells where a trigger would come in the waves of a saved project, without a board."""
    result = _program.run(program, [*_triggers(trigger, cores), f"--rehearse={_absolute(project)}"],
                          good=(0, 1))
    return Rehearsal(result.status == 0, _program.items(result, "windows"))


def compare(a: Path, b: Path, *, cores: Iterable[int] = (),
            program: Optional[Path] = None) -> Comparison:
    """Compares the waves of two saved projects, triggers over each other."""
    result = _program.run(program, [*_triggers(None, cores), f"--compare={_absolute(a)}",
                                    _absolute(b)], good=(0, 1))
    return Comparison(result.status == 0, _program.items(result, "windows"))


def diff(old: Path, new: Path, *, cores: Iterable[int] = (),
         program: Optional[Path] = None) -> Difference:
    """Tells what has changed from one description of a design to another."""
    result = _program.run(program, [*_triggers(None, cores), f"--diff={_absolute(old)}",
                                    _absolute(new)], good=(0, 1))
    return Difference(result.status == 0, _program.items(result, "changes"))


def _given(option: str, value: Any) -> list[str]:
    return [] if value is None else [f"--{option}={value}"]


def _several(option: str, values: Iterable[Any]) -> list[str]:
    return [f"--{option}={value}" for value in values]


def _triggers(trigger: Triggers, cores: Iterable[int]) -> list[str]:
    chosen = list(cores)
    if isinstance(trigger, Trigger):
        if len(chosen) > 1:
            raise ValueError("With several cores, give their triggers by number: {0: Trigger(...)}")
        return _several("core", chosen) + trigger._options()
    options = []
    for core, settings in (trigger or {}).items():
        options += _several("core", [core]) + settings._options()
    return options + _several("core", [core for core in chosen if core not in (trigger or {})])


def _absolute(path: Path) -> str:
    """Names no option, whatever it begins with."""
    return os.path.abspath(os.fspath(path))
