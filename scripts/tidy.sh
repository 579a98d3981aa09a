#!/usr/bin/env bash
# tidy.sh BUILD SECONDS: clang-tidy over the sources of a build folder, those first that changed last,
# until the time is over; says how far it came. Fails if a source has a finding.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
folder=$1
seconds=$2

log=$(mktemp -d)
trap 'rm -rf "$log"' EXIT
sources=$(git log --format= --name-only -- 'src/*.cpp' 'simulator/*.cpp' | awk 'NF && !seen[$0]++' |
    while read -r source; do [ ! -f "$source" ] || echo "$source"; done)
deadline=$((SECONDS + seconds))
tidy_one() {
    [ "$(date +%s)" -lt "$end" ] || return 0
    # Precompiled headers are the compiler's own and mean nothing to another.
    clang-tidy --quiet -p "$folder" --warnings-as-errors='*' "$1" >"$log/${1//\//-}" 2>/dev/null ||
        { cat "$log/${1//\//-}" && touch "$log/failed"; }
}
end=$(($(date +%s) + seconds))
export -f tidy_one
export folder log end
xargs -P "$(nproc)" -I '{}' bash -c 'tidy_one "$1"' tidy '{}' <<<"$sources"
total=$(wc -l <<<"$sources")
reached=$(find "$log" -name 'src-*' -o -name 'simulator-*' | wc -l)
echo "clang-tidy: $reached of $total sources, in $((SECONDS - deadline + seconds)) s."
[ ! -e "$log/failed" ]
