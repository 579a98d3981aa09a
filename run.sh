#!/usr/bin/env bash
# Installs what is missing, builds the release and opens the example design on the simulated board:
# in the desktop program where there is a display, else with a capture from the command line.
# Arguments, if any, go to signalscope-capture in place of the example's.
set -euo pipefail
caller=$PWD
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/packages.sh

bin=build/release/stage/SignalScope/bin
example=examples/uart_fifo
simulated=(chainserver chainserver_lpt chainserver_lk7 burner_cli)
export SIGNALSCOPE_BOARD="${SIGNALSCOPE_BOARD:-$PWD/$example/board.json}"

# A display that a window can be shown on: a Wayland compositor or an X server that has its socket
# on this machine, or an X server elsewhere.
has_wayland() {
    [ -n "${WAYLAND_DISPLAY:-}" ] || return 1
    [ -S "$WAYLAND_DISPLAY" ] || [ -S "${XDG_RUNTIME_DIR:-}/$WAYLAND_DISPLAY" ]
}
has_x() {
    local display=${DISPLAY:-}
    case $display in
    '') return 1 ;;
    :*)
        local number=${display#:}
        [ -S "/tmp/.X11-unix/X${number%%.*}" ]
        ;;
    esac
}

ensure_packages "${build_packages[@]}"

# A socket folder of our own: a server that already runs on this machine is left alone.
TMPDIR=$(mktemp -d /tmp/signalscope-XXXXXX)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

if [ $# -eq 0 ] && { has_wayland || has_x; }; then
    has_x || ensure_packages "${wayland_packages[@]}"
    build release signalscope "${simulated[@]}"
    echo "Opening $example on the simulated board: press F1 to capture."
    "$bin/signalscope" -family KR -device KR-C -keo "$PWD/$example/uart_fifo.keo" ||
        die "the program ended with status $?"
    exit
fi

build release signalscope-capture "${simulated[@]}"
if [ $# -gt 0 ]; then
    program=$PWD/$bin/signalscope-capture
    cd "$caller" # the paths are seen from there
    "$program" "$@"
    exit
fi
echo "Capturing both cores of $example on the simulated board ..."
files=$("$bin/signalscope-capture" --device KR-C --core 0 --core 1 --format vcd --format csv \
    --format prn --period 20ns --out capture --picture capture/uart_fifo.png \
    "$example/uart_fifo.keo") ||
    die "the capture failed with status $?, see the message above"
echo "Written:"
printf '%s\n' "$files" | sed 's/^/  /'
