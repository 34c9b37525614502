#!/usr/bin/env bash
# Compares the product's file work with rm -rf, cp -a and chown -R -h on the same tree: alternately, several rounds,
# medians of elapsed and of processor time and their ratios. On a disk that others use, look at the processor time. Works
# in scratch folders of its own, which it removes.
#
# usage: compare-files.sh [BIN [FOLDER]...]
#   BIN: the folder of built programs (default: build/release/bin)
#   FOLDER: where scratch folders are made (default: /dev/shm and /var/tmp)
set -euo pipefail

# Even, so that each side goes first equally often.
rounds=${ROUNDS:-8}
files=${FILES:-20000}

bin=${1:-$(dirname "$0")/../build/release/bin}
[ $# -eq 0 ] || shift
if [ ! -x "$bin/FileTool" ]; then
    echo "$0: $bin/FileTool is missing; build the preset 'release' first" >&2
    exit 1
fi
tool=$(realpath "$bin/FileTool")
[ $# -gt 0 ] || set -- /dev/shm /var/tmp

python3 - "$tool" "$rounds" "$files" "$@" <<'PYTHON'
import os, random, resource, shutil, statistics, subprocess, sys, tempfile, time

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
    """Elapsed and processor time, in milliseconds."""
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.perf_counter()
    subprocess.run(command, check=True)
    elapsed = time.perf_counter() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    processor = after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime
    return elapsed * 1000, processor * 1000


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
        # Ownership goes back and forth, so that every call changes something. Only root may give files away; as in
        # the product, the owner is root, so that nobody else can change the folders meanwhile.
        root = os.geteuid() == 0
        owners = [(0, 1001), (0, 1002)] if root else [(os.geteuid(), os.getegid())] * 2
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
                    times = timed(*command)
                    if number > 0:
                        results.setdefault(step, {}).setdefault(name, []).append(times)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    print(f"{place}: {count} files, {rounds} rounds, medians in milliseconds")
    for step, sides in results.items():
        other = next(name for name in sides if name != "ours")
        for index, kind in enumerate(("elapsed", "processor")):
            ours, theirs = (statistics.median(times[index] for times in sides[name]) for name in ("ours", other))
            print(f"  {step:10} {kind:10} ours {ours:8.1f}   {other} {theirs:8.1f}   ratio {ours / theirs:.2f}")


for place in places:
    measure(place)
PYTHON
