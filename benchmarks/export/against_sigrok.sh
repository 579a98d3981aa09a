#!/bin/sh
# Exports random samples with export_capture and with sigrok-cli in turn, and prints the median times
# of each (whole processes; on a busy machine only the processor time is fair to both), their ratio,
# and what the writers need in memory. First it lets other programs read smaller exports back, and
# compares every value with the input.
#
#   against_sigrok.sh EXPORT_CAPTURE [RUNS]
#
# Needs sigrok-cli, vcd2lxt2 and lxt2vcd (gtkwave), python3 and GNU time.
set -eu

program=$1
runs=${2:-5}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

random_rows() { # ROWS CHANNELS FILE
    head -c $(($1 * $2 / 8)) /dev/urandom > "$3"
}

# sigrok-cli's reader stops at a comment between value changes, so it gets the file without them,
# and once more by way of gtkwave's reader, which takes the file as it is.
check_vcd() { # ROWS CHANNELS
    random_rows "$1" "$2" vcd.bin
    "$program" vcd vcd.bin "$2" ours.vcd
    sed '/^\$comment Sample/d' ours.vcd > plain.vcd
    sigrok-cli -I vcd:downsample=2 -i plain.vcd -O binary -o plain.bin
    vcd2lxt2 -v ours.vcd -l ours.lxt2 > gtkwave.log 2>&1
    lxt2vcd ours.lxt2 > gtkwave.vcd 2>> gtkwave.log
    sigrok-cli -I vcd:downsample=2 -i gtkwave.vcd -O binary -o gtkwave.bin
    for reader in plain gtkwave; do
        python3 - "$1" "$2" "$reader" <<'EOF'
import re, sys
rows, channels, name = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
head = open(name + ".vcd").read().split("$enddefinitions")[0]
# gtkwave sorts the signals by name.
nets = re.findall(r"\$var\s+\w+\s+1\s+\S+\s+(\S+)\s+\$end", head)
places = [nets.index(f"net{i}") for i in range(channels)]
read = open(name + ".bin", "rb").read()
read = read[read.index(b"\n") + 1:]  # sample rate
unit, width = (channels + 1 + 7) // 8, channels // 8
wanted = open("vcd.bin", "rb").read()
for i in range(rows):
    row = int.from_bytes(read[i * unit:(i + 1) * unit], "little")
    got = sum((row >> place & 1) << j for j, place in enumerate(places))
    if got != int.from_bytes(wanted[i * width:(i + 1) * width], "little"):
        sys.exit(f"VCD: sample {i} differs in {name}.bin")
print(f"VCD of {rows} x {channels}: every value equal ({name})")
EOF
    done
}

check_csv() { # ROWS CHANNELS
    random_rows "$1" "$2" csv.bin
    "$program" csv csv.bin "$2" ours.csv
    sigrok-cli -I "binary:numchannels=$2:samplerate=1000000000" -i csv.bin -O csv:header=false:label=off -o theirs.csv
    python3 - "$1" "$2" <<'EOF'
import sys
rows, channels = int(sys.argv[1]), int(sys.argv[2])
ours = open("ours.csv").read().splitlines()[3:]  # titles and the row of X
theirs = [l for l in open("theirs.csv").read().splitlines() if l[:1] in ("0", "1")]
if len(ours) != rows or len(theirs) != rows:
    sys.exit(f"CSV: {len(ours)} and {len(theirs)} rows")
for i, (a, b) in enumerate(zip(ours, theirs)):
    cells = a.split(", ")
    if int(cells[0]) != i + 1 or ",".join(cells[1:]).rstrip(",") != b.rstrip(","):
        sys.exit(f"CSV: row {i} differs")
print(f"CSV of {rows} x {channels}: every value equal to sigrok-cli's")
EOF
}

compare() { # FORMAT ROWS CHANNELS
    random_rows "$2" "$3" in.bin
    python3 - "$program" "$runs" "$@" <<'EOF'
import os, statistics, sys, time
program, runs, kind, rows, channels = sys.argv[1:]
ours = [program, kind, "in.bin", channels, "out.ours"]
theirs = ["sigrok-cli", "-I", f"binary:numchannels={channels}:samplerate=1000000000",
          "-i", "in.bin", "-O", kind, "-o", "out.theirs"]

def run(command):
    begin = time.perf_counter()
    pid = os.posix_spawnp(command[0], command, os.environ)
    _, status, usage = os.wait4(pid, 0)
    if status:
        sys.exit(f"{command[0]} failed")
    return time.perf_counter() - begin, usage.ru_utime + usage.ru_stime

pairs = [(run(ours), run(theirs)) for _ in range(int(runs))]
for what, column in (("elapsed", 0), ("processor", 1)):
    a = statistics.median(pair[0][column] for pair in pairs)
    b = statistics.median(pair[1][column] for pair in pairs)
    ratio = statistics.median(pair[1][column] / pair[0][column] for pair in pairs)
    print(f"{kind} {rows} x {channels}, {what} time, medians of {runs}: {a * 1000:.1f} ms, "
          f"sigrok-cli {b * 1000:.1f} ms, ratio of pairs {ratio:.1f}")
EOF
}

peak() { # FORMAT ROWS CHANNELS -> kB
    /usr/bin/time -f %M "$program" "$1" "same:$2" "$3" /dev/null 2>&1
}

memory() { # ROWS CHANNELS
    echo "peak memory of $1 x $2: without writing $(peak none "$1" "$2") kB," \
        "csv $(peak csv "$1" "$2") kB, vcd $(peak vcd "$1" "$2") kB," \
        "csv-plain $(peak csv-plain "$1" "$2") kB, vcd-plain $(peak vcd-plain "$1" "$2") kB"
}

check_csv 2000 256
check_vcd 20000 32
check_vcd 2000 128
compare csv 65536 256
compare vcd 1048576 32
memory 65536 256
memory 1048576 256
memory 4194304 256
