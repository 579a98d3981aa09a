#!/usr/bin/env bash
# tidy.sh BUILD SECONDS [SOURCE...]: clang-tidy over the sources of a build folder, those first that
# changed last, or over the ones named, until the time is over; says how far it came. Fails if a
# source has a finding. The folder has to be built, since sources include generated headers.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. scripts/packages.sh
build=$1
end=$(($(date +%s) + $2))
shift 2

log=$(mktemp -d)
trap 'rm -rf "$log"' EXIT
# Precompiled headers are the compiler's own, and clang takes those of gcc for broken ones.
[ -f "$build/compile_commands.json" ] || die "$build is no build folder"
sed -E 's/ -Winvalid-pch( -Xclang)? -include( -Xclang)? [^ ]+cmake_pch\.hxx//' \
    "$build/compile_commands.json" >"$log/compile_commands.json"

if [ $# -gt 0 ]; then
    sources=$(printf '%s\n' "$@")
else
    sources=$(git log --format= --name-only -- 'src/*.cpp' 'simulator/*.cpp' | awk 'NF && !seen[$0]++' |
        while read -r source; do # what the build does not compile has no flags to go by
            [ -f "$source" ] && grep -qF "/$source\"" "$log/compile_commands.json" && echo "$source"
        done || true)
fi
tidy_one() {
    [ "$(date +%s)" -lt "$end" ] || return 0
    local said=$log/${1//\//-}.said
    # On standard error it counts the warnings of system headers.
    clang-tidy --quiet -p "$log" --warnings-as-errors='*' "$1" >"$said" 2>/dev/null ||
        { echo "$1:" && cat "$said" && touch "$log/failed"; }
}
export -f tidy_one
export log end
xargs -P "$(nproc)" -I '{}' bash -c 'tidy_one "$1"' tidy '{}' <<<"$sources"
echo "clang-tidy: $(find "$log" -name '*.said' | wc -l) of $(wc -l <<<"$sources") sources, in $SECONDS s."
[ ! -e "$log/failed" ]
