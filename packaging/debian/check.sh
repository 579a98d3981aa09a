#!/usr/bin/env bash
# check.sh FOLDER: unpacks the packages that cpack made in FOLDER and tries what they install: both
# programs against the simulated board, and what a desktop reads. Nothing of the build tree is used.
set -euo pipefail
packages=$(realpath "$1")

fail() {
    echo "${0##*/}: $*" >&2
    exit 1
}

root=$(mktemp -d /tmp/signalscope-package-XXXXXX)
trap 'rm -rf "$root"' EXIT
for name in signal-scope signal-scope-simulator; do
    found=("$packages/$name"_*.deb)
    [ -f "${found[0]}" ] && [ ${#found[@]} -eq 1 ] || fail "there is not one package $name in $packages"
    dpkg-deb --info "${found[0]}" >"$root/$name.info"
    dpkg -x "${found[0]}" "$root"
done
grep -q '^ Depends:.*libqt6widgets6' "$root/signal-scope.info" || fail "the package does not name its libraries"
grep -q '^ Depends:.*signal-scope' "$root/signal-scope-simulator.info" || fail "the simulator comes without the program"

share=$root/usr/share
for program in signalscope signalscope-capture; do
    [ -x "$root/usr/bin/$program" ] || fail "$program is not in the path"
    [ -f "$share/man/man1/$program.1" ] || [ -f "$share/man/man1/$program.1.gz" ] || fail "$program has no man page"
    man --warnings --local-file "$share/man/man1/$program".1* >/dev/null 2>"$root/man" || fail "man can't show $program"
    [ ! -s "$root/man" ] || fail "man on $program: $(cat "$root/man")"
done
desktop-file-validate "$share/applications/signalscope.desktop" || fail "the desktop entry is not valid"
grep -q '^MimeType=.*application/x-signalscope-project' "$share/applications/signalscope.desktop" &&
    grep -q '^Exec=.* -open %f$' "$share/applications/signalscope.desktop" ||
    fail "a file manager can't open our files"
[ -f "$share/icons/hicolor/48x48/apps/signalscope.png" ] || fail "there is no icon"
appstreamcli validate --no-net --no-color "$share/metainfo/org.signalscope.SignalScope.metainfo.xml" ||
    fail "the AppStream data is not valid"
XDG_DATA_HOME=$share update-mime-database "$share/mime"
for ending in analyzer_prj keo zeo; do
    grep -q "\*\.$ending$" "$share/mime/globs" || fail ".$ending is no known file type"
done
bash -n "$share/bash-completion/completions/signalscope-capture" || fail "the completion is no script"

# A home of their own, and a socket folder that no other server uses.
mkdir "$root/home" "$root/sockets"
mkdir --mode=700 "$root/runtime"
export HOME=$root/home TMPDIR=$root/sockets XDG_RUNTIME_DIR=$root/runtime
export LC_ALL=C.UTF-8 QT_QPA_PLATFORM=offscreen
unset XDG_DATA_HOME XDG_CONFIG_HOME
example=$share/signal-scope/examples/uart_fifo
export SIGNALSCOPE_BOARD=$example/board.json
servers=$(dirname "$(find "$root" -name chainserver)")
"$servers/chainserver" --check "$servers/board.json" >/dev/null || fail "the servers find no example"
"$root/usr/bin/signalscope-capture" --version
"$root/usr/bin/signalscope-capture" --device KR-C --format csv --out "$root/out" --quiet "$example/uart_fifo.keo"
[ "$(wc -l <"$root/out/uart_fifo_core0_window0.csv")" -gt 1000 ] || fail "the capture gave too few samples"

captured=$(PATH=$root/usr/bin:$PATH PYTHONPATH=$root/usr/lib/python3/dist-packages PYTHONDONTWRITEBYTECODE=1 \
    python3 -c 'import signalscope, sys
print(len(signalscope.capture(sys.argv[1], device="KR-C", timeout=60).windows[0]))' "$example/uart_fifo.keo")
[ "$captured" -eq 1024 ] || fail "the Python package captured $captured samples"

# The desktop program runs until it is told to end; here it shall live and have its servers.
"$root/usr/bin/signalscope" -family KR -device KR-C -keo "$example/uart_fifo.keo" 2>"$root/window" &
window=$!
for _ in $(seq 100); do
    pgrep -P "$window" chainserver >/dev/null && break
    kill -0 "$window" 2>/dev/null || fail "the desktop program ended: $(cat "$root/window")"
    sleep 0.1
done
pgrep -P "$window" chainserver >/dev/null || fail "the desktop program started no server"
sleep 2
kill -0 "$window" 2>/dev/null || fail "the desktop program ended: $(cat "$root/window")"
kill "$window"
wait "$window" || true
# What Qt says of every window that is shown without a display.
complaints=$(grep -v '^This plugin does not support ' "$root/window" || true)
[ -z "$complaints" ] || fail "the desktop program complained: $complaints"
echo "The packages are in order."
