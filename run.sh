#!/usr/bin/env bash
# Installs what is missing, builds the release and captures from the example design on the
# simulated board. Arguments, if any, go to signalscope-capture in place of the example's.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/packages.sh

ensure_packages "${build_packages[@]}"
build release signalscope-capture chainserver chainserver_lpt chainserver_lk7

program=build/release/stage/SignalScope/bin/signalscope-capture
example=examples/uart_fifo
export SIGNALSCOPE_BOARD="${SIGNALSCOPE_BOARD:-$PWD/$example/board.json}"

# A socket folder of our own: a server that already runs on this machine is left alone.
TMPDIR=$(mktemp -d /tmp/signalscope-XXXXXX)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

if [ $# -gt 0 ]; then
    "$program" "$@"
    exit
fi
echo "Capturing both cores of $example on the simulated board ..."
files=$("$program" --device KR-C --core 0 --core 1 --format vcd --format csv --format prn \
    --period 20ns --out capture --picture capture/uart_fifo.png "$example/uart_fifo.keo") ||
    die "the capture failed with status $?, see the message above"
echo "Written:"
printf '%s\n' "$files" | sed 's/^/  /'
