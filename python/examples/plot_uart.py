#!/usr/bin/env python3
"""Captures a line of text that the example design receives, and plots it.

    python3 plot_uart.py [--device KR-C] [--picture FILE.png] DESCRIPTION

With matplotlib the waves go into a window or a picture, without it they are drawn as text. The
board is the simulated one if SIGNALSCOPE_BOARD names examples/uart_fifo/board.json.
"""

from __future__ import annotations

import argparse
import sys

import signalscope

try:
    import matplotlib
except ImportError:
    matplotlib = None  # type: ignore[assignment]

ROWS = ("dut/rx", "dut/rx_valid", "dut/u_rx/state", "dut/u_rx/bit_index", "dut/rx_data")
COLUMNS = 96  # of the text plot


def received(window: signalscope.Window) -> str:
    """The bytes that the receiver reported, each where rx_valid rises."""
    valid = window["dut/rx_valid"].samples
    data = window["dut/rx_data"].samples
    return "".join(chr(data[i]) for i in range(1, len(window)) if valid[i] and not valid[i - 1])


def plot_text(window: signalscope.Window) -> None:
    """Draws the samples before the trigger, which received the first byte, and some behind it."""
    first = max(0, window.trigger - COLUMNS * 3 // 4)
    shown = range(first, min(len(window), first + COLUMNS))
    print(" " * 20 + " " * (window.trigger - first) + "T")
    for name in ROWS:
        row = window[name]
        values = [int(row.samples[i]) for i in shown]
        if isinstance(row, signalscope.Signal):
            line = "".join("▁▔"[value] for value in values)
        else:
            line = bus_text(values)
        print(f"{name:20}{line}")


def bus_text(values: list[int]) -> str:
    """A "|" where the value changes, and behind it the value where there is room."""
    starts = [i for i in range(len(values)) if i == 0 or values[i] != values[i - 1]]
    parts = []
    for start, end in zip(starts, [*starts[1:], len(values)]):
        parts.append(("|" + format(values[start], "x")).ljust(end - start, " ")[:end - start])
    return "".join(parts)


def plot_graphics(window: signalscope.Window, picture: str | None) -> None:
    if picture:
        matplotlib.use("Agg")
    from matplotlib import pyplot

    figure, axes = pyplot.subplots(len(ROWS), sharex=True, figsize=(12, 6))
    times = [i - window.trigger for i in range(len(window))]
    for axis, name in zip(axes, ROWS):
        axis.step(times, [int(value) for value in window[name].samples], where="post")
        axis.axvline(0, color="tab:red", linewidth=0.8)
        axis.set_ylabel(name, rotation=0, horizontalalignment="right")
        axis.set_yticks([])
    axes[-1].set_xlabel("samples from the trigger")
    figure.tight_layout()
    if picture:
        figure.savefig(picture)
    else:
        pyplot.show()


def main() -> int:
    parser = argparse.ArgumentParser(description="Captures and plots what the example receives.")
    parser.add_argument("description", help="examples/uart_fifo/uart_fifo.keo")
    parser.add_argument("--device", default="KR-C")
    parser.add_argument("--picture", help="a file for the plot instead of a window")
    arguments = parser.parse_args()
    try:
        capture = signalscope.capture(arguments.description, device=arguments.device, timeout=60)
    except signalscope.SignalScopeError as error:
        print(error, file=sys.stderr)
        return error.status or 1
    window = capture.windows[0]
    print(f"Received after the trigger: {received(window)!r}")
    if matplotlib:
        plot_graphics(window, arguments.picture)
    else:
        plot_text(window)
    return 0


if __name__ == "__main__":
    sys.exit(main())
