"""The work of compare-files.sh: compare_files.py BIN TABLE,... FOLDER..."""

import os
import random
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

# Even, so that each side goes first equally often.
ROUNDS = int(os.environ.get("ROUNDS", 8))
FILES = int(os.environ.get("FILES", 20000))
PREFIX = os.environ.get("PREFIX", "").split()
THREADS = "4"

bin_folder, tables, places = sys.argv[1], sys.argv[2].split(","), sys.argv[3:]
tool, limit = (os.path.join(bin_folder, name) for name in ("FileTool", "LimitTool"))


def build_tree(top, count):
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


def build_folder(top, count):
    """Empty files in one folder."""
    os.mkdir(top)
    for number in range(count):
        os.close(os.open(f"{top}/Resource-{number}.dat", os.O_CREAT | os.O_WRONLY))


def build_empty_tree(top, count):
    """Empty files, a hundred in a folder."""
    os.mkdir(top)
    for number in range(count):
        if number % 100 == 0:
            folder = f"{top}/Folder {number // 10000}"
            if number % 10000 == 0:
                os.mkdir(folder)
            folder += f"/{number}"
            os.mkdir(folder)
        os.close(os.open(f"{folder}/{number}", os.O_CREAT | os.O_WRONLY))


def timed(command):
    """Elapsed and processor time in milliseconds."""
    start = time.perf_counter()
    process = subprocess.Popen(PREFIX + command)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    elapsed = time.perf_counter() - start
    if process.returncode != 0:
        sys.exit(f"{command} ended with {process.returncode}")
    return elapsed * 1000, (usage.ru_utime + usage.ru_stime) * 1000


def settle(place, cold=False):
    """Nothing of an earlier step is written back while the next one is measured."""
    if not place.startswith("/dev/shm"):
        fd = os.open(place, os.O_RDONLY)
        os.fsync(fd)
        os.close(fd)
    if cold:
        os.sync()
        with open("/proc/sys/vm/drop_caches", "w") as file:
            file.write("3")


def removal(path):
    return [("ours", [tool, "remove", path]), ("rm -rf", ["rm", "-rf", path]), ("limit", [limit, "remove", THREADS, path])]


def report(title, results):
    print(title)
    for step, sides in results.items():
        other = next(name for name in sides if name not in ("ours", "limit"))
        for index, kind in enumerate(("elapsed", "processor")):
            medians = {name: statistics.median(each[index] for each in times) for name, times in sides.items()}
            row = "   ".join(f"{name} {value:8.1f}" for name, value in medians.items())
            ratios = f"ratio {medians['ours'] / medians[other]:.2f}"
            if "limit" in medians:
                ratios += f", limit's {medians['limit'] / medians[other]:.2f}"
            print(f"  {step:22} {kind:10} {row}   {ratios}", flush=True)


def in_turn(results, step, sides, number, before):
    """Whoever goes first finds the caches as the step before left them: take turns. The first round is not counted."""
    turn = number % len(sides)
    for name, command in sides[turn:] + sides[:turn]:
        before(command)
        times = timed(command)
        if number > 0:
            results.setdefault(step, {side: [] for side, _ in sides})[name].append(times)


def compare_tree(place, scratch):
    tree = os.path.join(scratch, "tree")
    build_tree(tree, FILES)
    # Ownership is another one in each call, so that every call changes something. Only root may give files away; as in
    # the product, the owner is root, so that nobody else can change the folders meanwhile.
    root = os.geteuid() == 0
    results = {}
    for number in range(ROUNDS + 1):
        ours, theirs = os.path.join(scratch, "ours"), os.path.join(scratch, "theirs")
        in_turn(results, "copy", [("ours", [tool, "copy", tree, ours]), ("cp -a", ["cp", "-a", tree, theirs])], number,
                lambda _: settle(place))
        groups = [str(1001 + 3 * number + side) if root else str(os.getegid()) for side in range(3)]
        owner = str(os.geteuid())
        in_turn(results, "ownership", [("ours", [tool, "chown", owner, groups[0], tree]),
                                       ("chown -R -h", ["chown", "-R", "-h", f"{owner}:{groups[1]}", tree]),
                                       ("limit", [limit, "look-and-chown", THREADS, owner, groups[2], tree])], number,
                lambda _: settle(place))
        copies = [ours, theirs, os.path.join(scratch, "third")]
        subprocess.run(["cp", "-a", tree, copies[2]], check=True)
        sides = [removal(path)[side] for side, path in enumerate(copies)]
        in_turn(results, "removal", sides, number, lambda _: settle(place))
    report(f"{place}: a tree of {FILES} files, {ROUNDS} rounds, medians in milliseconds", results)


def compare_removal(place, scratch, what, build, counts, cold=False, rounds=ROUNDS):
    results, memory = {}, {}
    path = os.path.join(scratch, "top")
    for count in counts:
        step = f"removal, {count} files"
        for number in range(rounds + 1):
            def before(_):
                build(path, count)
                settle(place, cold)
            in_turn(results, step, removal(path), number, before)
        build(path, count)
        memory[count] = subprocess.run([tool, "remove", path], env=os.environ | {"PEAK_MEMORY": "1"}, check=True,
                                       stdout=subprocess.PIPE, text=True).stdout.strip()
    report(f"{place}: {what}, {rounds} rounds, medians in milliseconds", results)
    for count, text in memory.items():
        median = statistics.median(each[0] for each in results[f"removal, {count} files"]["ours"])
        print(f"  {count} files: {median * 1000 / count:.2f} microseconds a file, {text}", flush=True)


def main():
    # Whoever ends it finds no scratch folder either.
    signal.signal(signal.SIGTERM, lambda number, _: sys.exit(128 + number))
    for place in places:
        for table in tables:
            scratch = tempfile.mkdtemp(prefix="compare-files-", dir=place)
            try:
                if table == "tree":
                    compare_tree(place, scratch)
                elif table == "folder":
                    compare_removal(place, scratch, "one folder", build_folder, [FILES])
                elif table == "cold":
                    compare_removal(place, scratch, "a tree, cold caches", build_tree, [FILES], cold=True)
                elif table == "small":
                    compare_removal(place, scratch, "small trees", build_folder, [1, 10, 100, 500])
                elif table == "large":
                    compare_removal(place, scratch, "empty files", build_empty_tree, [10000, 1000000], rounds=2)
                else:
                    sys.exit(f"there is no table {table!r}")
            finally:
                shutil.rmtree(scratch, ignore_errors=True)


main()
