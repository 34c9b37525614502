#!/usr/bin/env bash
# Installs what building and testing needs on Debian 12. Does nothing, and needs no root, when everything is there.
set -euo pipefail

packages=(
    # building
    g++ clang clang-format clang-tidy shellcheck yamllint ccache cmake ninja-build pkg-config libclang-rt-14-dev
    libplist-dev libssl-dev libcli11-dev nlohmann-json3-dev
    # the simulated Mac
    bubblewrap uidmap libarchive-tools
    # the window (gnustep-config asks make)
    gobjc gobjc++ make gnustep-make libgnustep-base-dev libgnustep-gui-dev gnustep-back0.29-cairo
    libx11-dev fontconfig fonts-dejavu-core fonts-inter fonts-droid-fallback
    # tests, conformance against other keyed archivers, benchmarks
    libgtest-dev libgmock-dev librapidcheck-dev libbenchmark-dev python3 libplist-utils procps groff-base zsh xvfb xdotool imagemagick
    chromium
    # the check of the macOS side
    libblocksruntime-dev libc++-14-dev lld-14 llvm-14
)

missing=()
for package in "${packages[@]}"; do
    dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
        missing+=("$package")
done
[ "${#missing[@]}" -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || {
        echo "setup.sh: packages are missing; run this once as root: apt-get install ${missing[*]}" >&2
        exit 1
    }
    as_root=(sudo)
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update --quiet=2 </dev/null
"${as_root[@]}" apt-get install --yes --quiet=2 --no-install-recommends "${missing[@]}" </dev/null >&2
