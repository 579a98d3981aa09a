#!/usr/bin/env bash
# Installs what is missing, builds the release and runs all tests. Arguments go to ctest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
. scripts/packages.sh

ensure_packages "${build_packages[@]}"
build release
ctest --preset release --parallel "$(nproc)" "$@" || die "tests failed, see the messages above"
