#!/bin/sh
# Plays random events to the main window under the sanitizers, one seed after the other.
#   scripts/monkey.sh [SEEDS [EVENTS]]     20 seeds of 10,000 events unless told otherwise
# Reports of failed seeds stand in build/asan/monkey-SEED.log.
set -u
cd "$(dirname "$0")/.." || exit 1
seeds=${1:-20}
events=${2:-10000}
cmake --preset asan >/dev/null && cmake --build --preset asan --target monkey || exit 1
export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8
failed=0
for seed in $(seq 1 "$seeds"); do
    log=build/asan/monkey-$seed.log
    if timeout 1800 build/asan/tests/monkey/monkey "$seed" "$events" >"$log" 2>&1; then
        tail -n 1 "$log"
    else
        echo "seed $seed: failed with status $?, see $log"
        failed=1
    fi
done
exit $failed
