# Sourced by run.sh, test.sh and .ci/run: what the project needs from Debian, and how to get it.

die() {
    echo "${0##*/}: $*" >&2
    exit 1
}

# ensure_packages NAME...: installs what is missing, as root or through sudo, and says so.
ensure_packages() {
    command -v dpkg-query >/dev/null ||
        die "this system has no dpkg; install the equivalents of: $*"
    local missing=()
    local name
    for name in "$@"; do
        if [ "$(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null)" != installed ]; then
            missing+=("$name")
        fi
    done
    [ ${#missing[@]} -eq 0 ] && return 0

    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null ||
            die "needs root or sudo to install: ${missing[*]}"
        as_root=(sudo)
    fi
    echo "Installing from Debian: ${missing[*]}"
    local log
    log=$(mktemp)
    if ! { "${as_root[@]}" apt-get update &&
        "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
            apt-get install -y --no-install-recommends "${missing[@]}"; } >"$log" 2>&1; then
        tail -n 15 "$log" >&2
        die "could not install ${missing[*]} (log: $log)"
    fi
    rm -f "$log"
}

build_packages=(g++ cmake ninja-build qt6-base-dev)
test_packages=(socat  # stands for the way to another machine
    sigrok-cli gtkwave          # read exports back
    python3                     # does so too, and runs the Python package
    fonts-dejavu-core) # in the pictures of the documents
wayland_packages=(qt6-wayland) # where no X server stands beside the compositor
ci_packages=(python3-numpy clang libclang-rt-14-dev clang-format clang-tidy libbenchmark-dev
    appstream desktop-file-utils shared-mime-info groff man-db dpkg-dev file procps)

# build PRESET [TARGET...]: configures and builds a preset; a build without changes takes a second.
build() {
    local preset=$1
    shift
    local targets=()
    [ $# -gt 0 ] && targets=(--target "$@")
    local log=build/$preset-configure.log
    mkdir -p build
    if ! cmake --preset "$preset" >"$log" 2>&1; then
        tail -n 15 "$log" >&2
        die "configuring the $preset build failed (log: $log)"
    fi
    cmake --build --preset "$preset" "${targets[@]}" ||
        die "the $preset build failed, see the messages above"
}
