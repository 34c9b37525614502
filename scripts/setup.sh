#!/usr/bin/env bash
# setup.sh [run|develop]: installs missing packages on Debian 12. Does nothing, and needs no root, if nothing is missing.
#   run      packages for building and running the demo: the programs without their window, and the simulated Mac
#   develop  everything: also the window, the tests, the linters, the benchmarks and the check of the macOS side (default)
# setup.sh --list [run|develop]: only prints the packages, one a line.
set -euo pipefail
cd "$(dirname "$0")/.."

run=(
    # building
    g++ cmake ninja-build pkg-config libplist-dev libssl-dev libcli11-dev nlohmann-json3-dev
    # the simulated Mac
    bubblewrap uidmap libarchive-tools
)
develop=(
    # building, linters, sanitizers
    clang clang-format clang-tidy shellcheck yamllint nodejs ccache libclang-rt-14-dev
    # the window (gnustep-config asks make)
    gobjc gobjc++ make gnustep-make libgnustep-base-dev libgnustep-gui-dev gnustep-back0.29-cairo
    libx11-dev fontconfig fonts-dejavu-core fonts-inter fonts-droid-fallback
    # tests, conformance against other keyed archivers, benchmarks
    libgtest-dev libgmock-dev librapidcheck-dev libbenchmark-dev python3 libplist-utils procps groff-base zsh ansible-core
    xvfb xdotool imagemagick openbox
    chromium
    # the check of the macOS side
    libblocksruntime-dev libc++-14-dev lld-14 llvm-14
)

# Some packages of nodejs bring it along, and conflict with the one that has nothing else.
command -v npm >/dev/null || develop+=(npm)

list=no
if [ "${1:-}" = --list ]; then
    list=yes
    shift
fi
what="${1:-develop}"
case "$what" in
    run) packages=("${run[@]}") ;;
    develop) packages=("${run[@]}" "${develop[@]}") ;;
    *)
        echo "usage: setup.sh [--list] [run|develop]" >&2
        exit 2
        ;;
esac
if [ "$list" = yes ]; then
    printf '%s\n' "${packages[@]}"
    exit 0
fi

# What Debian does not package: the linters of workflows.
install_linters() {
    [ "$what" = run ] || ./scripts/workflows.sh --install
}

missing=()
for package in "${packages[@]}"; do
    dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
        missing+=("$package")
done
if [ "${#missing[@]}" -eq 0 ]; then
    install_linters
    exit 0
fi

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "setup.sh: packages are missing; run this once as root: apt-get install ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
    # Asks for the password here: behind the progress line nobody would see the question.
    sudo --validate
fi

echo "Installing what is needed to $what: ${missing[*]}" >&2
mkdir -p build
log=build/setup.log
# apt-get reports its progress on a separate descriptor, which sudo would close: the shell behind it makes that standard
# output, and sends all the rest to standard error. Its lines are "dlstatus:WHAT:PERCENT:WORDS" and "pmstatus:...".
as_progress='s/^(dl|pm)status:[^:]*:([0-9]+)[^:]*:(.*)$/[\2%] \3/p'
install() {
    # shellcheck disable=SC2016 # the shell that it is for expands it
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive sh -c 'exec 3>&1 >&2 </dev/null
        apt-get update --quiet=2 &&
            apt-get install --yes --quiet=2 --no-install-recommends -o APT::Status-Fd=3 "$@"' sh "${missing[@]}"
}
if ! { install 2>"$log" | sed --unbuffered -nE "$as_progress" | ./scripts/progress.sh; }; then
    tail -n 40 "$log" >&2
    echo "setup.sh: the packages could not be installed; everything that apt-get said is in $log" >&2
    exit 1
fi
install_linters
