#!/usr/bin/env bash
# Compares the product's file work with rm -rf, cp -a and chown -R -h on the same tree: alternately, several rounds, median
# times and their ratios. Works in scratch folders of its own, which it removes.
#
# usage: compare-files.sh FILETOOL [FOLDER]...     FOLDER: where scratch folders are made (default: /dev/shm and /var/tmp)
set -euo pipefail

rounds=${ROUNDS:-7}
files=${FILES:-20000}

if [ $# -lt 1 ] || [ ! -x "$1" ]; then
    echo "usage: $0 FILETOOL [FOLDER]..." >&2
    exit 2
fi
tool=$(realpath "$1")
shift
[ $# -gt 0 ] || set -- /dev/shm /var/tmp

python3 - "$tool" "$rounds" "$files" "$@" <<'PYTHON'
import os, random, shutil, statistics, subprocess, sys, tempfile, time

tool, rounds, count, places = sys.argv[1], int(sys.argv[2]), int(sys.argv[3]), sys.argv[4:]


def build(top):
    """A tree like an installed product: bundles some levels deep, most files small, a few of megabytes, some links."""
    rng = random.Random(20)
    folders = [top]
    os.mkdir(top)
    for number in range(count // 12):
        parent = rng.choice(folders[-200:])
        if parent.count("/") - top.count("/") > 12:
            parent = top
        folders.append(os.path.join(parent, f"Folder {number}"))
        os.mkdir(folders[-1])
    block = rng.randbytes(1 << 20)
    for number in range(count):
        path = os.path.join(rng.choice(folders), f"Resource-{number}.dat")
        if number % 40 == 0:
            os.symlink("Versions/Current", path)
            continue
        size = int(rng.lognormvariate(7.5, 1.6))
        with open(path, "wb") as file:
            while size > 0:
                file.write(block[:size])
                size -= len(block)


def timed(*command):
    start = time.perf_counter()
    subprocess.run(command, check=True)
    return time.perf_counter() - start


def settle(place):
    """Nothing of an earlier step is written back while the next one is measured."""
    if not place.startswith("/dev/shm"):
        os.sync()


def measure(place):
    scratch = tempfile.mkdtemp(prefix="compare-files-", dir=place)
    results = {}
    try:
        tree = os.path.join(scratch, "tree")
        build(tree)
        # Ownership goes back and forth, so that every call changes something. Only root may give files away.
        root = os.geteuid() == 0
        owners = [(1001, 1001), (1002, 1002)] if root else [(os.geteuid(), os.getegid())] * 2
        for number in range(rounds + 1):
            ours, theirs = os.path.join(scratch, "ours"), os.path.join(scratch, "theirs")
            steps = {
                "copy": [("ours", [tool, "copy", tree, ours]), ("cp -a", ["cp", "-a", tree, theirs])],
                "ownership": [
                    ("ours", [tool, "chown", *map(str, owners[number % 2]), tree]),
                    ("chown -R -h", ["chown", "-R", "-h", "%d:%d" % owners[(number + 1) % 2], tree]),
                ],
                "removal": [("ours", [tool, "remove", ours]), ("rm -rf", ["rm", "-rf", theirs])],
            }
            for step, sides in steps.items():
                # Whoever goes first finds the caches as the step before left them: take turns.
                for name, command in sides if number % 2 else reversed(sides):
                    settle(place)
                    seconds = timed(*command)
                    if number > 0:
                        results.setdefault(step, {}).setdefault(name, []).append(seconds)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    print(f"{place}: {count} files, {rounds} rounds, median milliseconds (fastest)")
    for step, sides in results.items():
        medians = {name: statistics.median(values) * 1000 for name, values in sides.items()}
        other = next(name for name in sides if name != "ours")
        text = ", ".join(f"{name} {medians[name]:.1f} ({min(sides[name]) * 1000:.1f})" for name in ("ours", other))
        print(f"  {step:10} {text}, ratio {medians['ours'] / medians[other]:.2f}")


for place in places:
    measure(place)
PYTHON
