#!/usr/bin/env bash
# Installs what is missing, builds the release, or the preset in PRESET, and runs all tests. Arguments
# go to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/packages.sh

ensure_packages "${build_packages[@]}" "${test_packages[@]}"
preset=${PRESET:-release}
build "$preset"
# Most of a test is waiting for the simulated cable, so there are more of them than processors.
ctest --preset "$preset" --parallel $((3 * $(nproc))) "$@" || die "tests failed, see the messages above"
