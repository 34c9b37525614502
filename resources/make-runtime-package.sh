#!/bin/sh
# Makes a runtime support package whose libraries are stand-ins of some text: a flat package (xar with PackageInfo and a gzip cpio Payload), with the system's own tool
# where there is one. Runs on macOS and on Linux: nothing that only one of them knows.
# Usage: make-runtime-package.sh OUTPUT
set -eu
umask 022

output=$1
work=$(mktemp -d "${TMPDIR:-/tmp}/runtime-package.XXXXXX")
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/root/usr/local/lib/swift" "$work/package"
for library in Core Foundation Dispatch Darwin ObjectiveC; do
    # Some bytes that differ per library and are the same on every build.
    seq -f "libswift$library %.0f" 1 2000 >"$work/root/usr/local/lib/swift/libswift$library.dylib"
done
identifier=com.norvik.SwiftRuntimeForCommandLineTools
version=5.0
if command -v pkgbuild >/dev/null; then
    pkgbuild --quiet --root "$work/root" --identifier "$identifier" --version "$version" --install-location / \
        --ownership recommended "$output.new"
    mv "$output.new" "$output"
    exit 0
fi
count=$(find "$work/root" -type f | wc -l | tr -d ' ')
kilobytes=$(du -sk "$work/root" | cut -f1)
cat >"$work/package/PackageInfo" <<END
<?xml version="1.0" encoding="utf-8"?>
<pkg-info format-version="2" identifier="$identifier" version="$version" install-location="/" auth="root">
    <payload numberOfFiles="$count" installKBytes="$kilobytes"/>
</pkg-info>
END
bsdtar -c -z --format=cpio --uid 0 --gid 0 -f "$work/package/Payload" -C "$work/root" usr
bsdtar -c --format=xar -f "$output.new" -C "$work/package" PackageInfo Payload
mv "$output.new" "$output"
