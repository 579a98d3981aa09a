"""Finds and runs signalscope-capture."""

from __future__ import annotations

import contextlib
import json
import os
import shutil
import signal
import subprocess
import threading
import warnings
from dataclasses import dataclass
from types import FrameType
from typing import Any, Iterator, Optional, Sequence, Union

from ._errors import ProgramError, ProgramNotFoundError, SignalScopeWarning, error_of

Path = Union[str, "os.PathLike[str]"]

NAME = "signalscope-capture"
VARIABLE = "SIGNALSCOPE_CAPTURE"
_PREFIX = NAME + ": "


@dataclass(frozen=True)
class Result:
    """How a run ended that reached a result."""

    status: int
    document: dict[str, Any]


def find(program: Optional[Path]) -> str:
    """The program to run: the one that is named, else the environment's, else the path's."""
    named = os.fspath(program) if program is not None else os.environ.get(VARIABLE)
    found = shutil.which(named or NAME)
    if found:
        return found
    if named:
        raise ProgramNotFoundError(f"There is no program {named}.")
    raise ProgramNotFoundError(
        f"{NAME} is not in the path; install it, or name it in {VARIABLE}.")


def run(program: Optional[Path], options: Sequence[str], good: Sequence[int] = (0,)) -> Result:
    """Runs the program to its end. Any status but the good ones is raised as an exception."""
    command = [find(program), "--json", "--quiet", *options]
    process: "Optional[subprocess.Popen[bytes]]" = None
    try:
        with _interrupts_held():
            process = _started(command)
        output, words = process.communicate()
    except BaseException:
        if process is not None:
            _end(process)
        raise
    document = _document(output)
    if process.returncode in good and document is not None:
        for line in document.get("warnings") or ():
            warnings.warn(str(line), SignalScopeWarning, stacklevel=3)
        return Result(process.returncode, document)
    message = (document or {}).get("message") or _message(words)
    raise error_of(process.returncode,
                   message or f"{NAME} ended with status {process.returncode}.", document)


def _started(command: Sequence[str]) -> "subprocess.Popen[bytes]":
    # In a session of its own: a Ctrl-C shall reach it once, from here, for a second one keeps it
    # from disarming the cores.
    try:
        return subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE, start_new_session=True)
    except OSError as error:
        raise ProgramNotFoundError(f"{command[0]} can not be started: {error.strerror}") from error


@contextlib.contextmanager
def _interrupts_held() -> Iterator[None]:
    """A Ctrl-C within comes at the end: in the middle, nobody would have the process to end it."""
    handler = signal.getsignal(signal.SIGINT)
    if threading.current_thread() is not threading.main_thread() or not callable(handler):
        yield
        return
    held: list[tuple[int, Optional[FrameType]]] = []
    signal.signal(signal.SIGINT, lambda number, frame: held.append((number, frame)))
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, handler)
    if held:
        handler(*held[0])


def _end(process: "subprocess.Popen[bytes]") -> None:
    """Lets the program disarm the cores and close the device; a further interruption ends it hard."""
    process.terminate()
    try:
        process.communicate()
    except BaseException:
        process.kill()
        process.wait()
        raise


def _message(words: bytes) -> str:
    lines = words.decode("utf-8", "replace").splitlines()
    return "\n".join(line[len(_PREFIX):] if line.startswith(_PREFIX) else line
                     for line in lines if line and line != "Try --help.")


def _document(output: bytes) -> Optional[dict[str, Any]]:
    try:
        document = json.loads(output)
    except ValueError:
        return None
    return document if isinstance(document, dict) else None


def items(result: Result, key: str) -> list[dict[str, Any]]:
    """A list of the document. One without it is from another program, or a version of its own."""
    found = result.document.get(key)
    if not isinstance(found, list):
        raise ProgramError(f"The result of {NAME} has no '{key}'.", result.status, result.document)
    return found
