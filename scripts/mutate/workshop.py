"""A copy of the sources with a build folder of its own, in which mutants are built and their tests run."""

import dataclasses
import hashlib
import json
import os
import pathlib
import re
import resource
import shlex
import shutil
import signal
import subprocess
import time

import schemata

# Built like this preset, so that the compiler cache knows nearly all of it. Mutants are compiled for speed of compiling.
PRESET = "release"
# Looking into an optional or a text that is empty ends the program, as it should a test.
QUICK = ("-O0", "-g0", "-w", "-D_GLIBCXX_ASSERTIONS")
# The compiler understands more of what a source means when it optimises.
OPTIMISED = ("-O2", "-g0", "-w")
# Heavy and in nearly every file; precompiled, they halve the time of compiling.
PRECOMPILED = """algorithm array atomic charconv chrono condition_variable functional map memory mutex optional set span string
string_view thread variant vector"""
MEMORY = 8 << 30
FILE_SIZE = 1 << 30


@dataclasses.dataclass(frozen=True)
class Limits:
    """How many seconds a test program may take: by the clock, of a processor, and without a word in its log."""
    wall: float
    processor: float
    silence: float


class Refusal(Exception):
    """Why there can be no measurement, in words."""


def run_quietly(command, folder=None):
    return subprocess.run([str(part) for part in command], cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)


def must(command, folder=None):
    done = run_quietly(command, folder)
    if done.returncode != 0:
        raise Refusal(f"{shlex.join(map(str, command))}\n{done.stdout[-4000:]}")
    return done.stdout


class Workshop:
    def __init__(self, checkout, folder):
        self.checkout = pathlib.Path(checkout)
        self.source = pathlib.Path(folder)
        self.build = self.source / "build" / PRESET
        self.own = self.source / "mutants"  # the mutants' objects and programs
        self.scratch = self.source / "tmp"
        self.log = self.source / "log"
        self.commands = {}  # how each file is compiled
        self.links = {}  # how each program is linked
        self.possible = {}  # whether a program can be linked with the object of a file
        self.linked = set()  # the programs that have the object that was compiled last
        self.messages = ""  # the compiler's last
        self.unmutated = {}  # digests of objects
        self.limits = {}  # seconds of wall clock and of processor time, by test program
        self.slow = {}  # a filter for the tests that take long, by test program

    def prepare(self):
        """Brings the copy up to date. Raises Refusal."""
        for name in top_level_names(self.checkout):
            where = self.checkout / name
            (synchronise if where.is_dir() else copy_if_changed)(where, self.source / name)
        if not (self.build / "build.ninja").exists():
            must(["cmake", "--preset", PRESET, "-DSENTREL_BENCHMARKS=OFF"], self.source)
        must(["ninja", "-C", self.build, "build.ninja"])
        self.own.mkdir(exist_ok=True)
        for entry in json.loads((self.build / "compile_commands.json").read_text()):
            self.commands.setdefault(os.path.relpath(entry["file"], self.source), entry)
        self.precompile()

    def precompile(self):
        header = self.own / "headers.h"
        header.write_text("".join(f"#include <{name}>\n" for name in PRECOMPILED.split()))
        (self.own / "headers.h.gch").mkdir(exist_ok=True)
        for kind in ("PIC", "PIE"):
            output = self.own / "headers.h.gch" / kind
            if not output.exists():
                must([os.environ.get("CXX", "c++"), "-std=c++20", "-DNDEBUG", f"-f{kind}", *QUICK, "-x", "c++-header", header,
                      "-o", output])

    def build_programs(self, programs):
        """Builds unmutated what a room needs, and measures how long its tests take."""
        must(["ninja", "-C", self.build, "-j", os.environ.get("MUTATE_BUILD_JOBS", "1"),
              *(program.target for program in programs)])
        for program in programs:
            if program.target in self.limits:
                continue
            outcome, test, wall = self.run(self.build / "bin" / program.target, program.tests_but(), Limits(1800, 1800, 1800))
            if outcome != "passed":
                raise Refusal(f"{program.target} {outcome} unmutated ({test}); see {self.log}")
            self.limits[program.target] = Limits(20 + 10 * wall, 10 + 5 * wall, 20 + 10 * max(test_times(self.log).values()))
            self.slow[program.target] = ":".join(slow_tests(self.log))

    # Compiling and linking

    def compiled(self, path, text, options, output):
        """Compiles a text in the place of a file; the digest of the object, or nothing if it does not compile."""
        entry = self.commands[path]
        arguments = [part for part in shlex.split(entry["command"]) if not part.endswith("ccache")]
        arguments[arguments.index("-o") + 1] = str(output)
        if options[0] == QUICK[0]:
            arguments += ["-include", str(self.own / "headers.h")]
        self.linked.clear()
        place = self.source / path
        original, times = place.read_text(), place.stat()
        place.write_text(text)
        try:
            done = run_quietly([*arguments, *options], entry["directory"])
        finally:
            place.write_text(original)
            # The build's own objects are still newer.
            os.utime(place, ns=(times.st_atime_ns, times.st_mtime_ns))
        self.messages = done.stdout
        return hashlib.sha256(output.read_bytes()).hexdigest() if done.returncode == 0 else None

    def compile(self, mutant):
        """Compiles a mutant: "invalid", "identical" or "different"."""
        made = self.compiled(mutant.path, mutant.mutated, QUICK, self.own / "mutant.o")
        if made is None:
            return "invalid"
        return "identical" if made == self.digest(mutant, QUICK) else "different"

    def compile_many(self, path, text, mutants):
        """Compiles as many of the mutants of a file as possible into one object. Returns those in it by their numbers, and
        those that the compiler refuses."""
        refused, alone = [], set()
        while mutants := [mutant for mutant in mutants if mutant not in refused and mutant not in alone]:
            schema = schemata.Schema(text, mutants)
            output = self.own / "mutant.o"
            if self.compiled(path, schema.text, (*QUICK, "-fmax-errors=0"), output) is not None:
                return schema.mutants, refused
            lines = {int(line) for line in re.findall(rf"{re.escape(os.path.basename(path))}:(\d+):\d+: error", self.messages)}
            blamed = {schema.owner_of_line(line) for line in lines}
            numbers = {number for _, number in blamed if number}
            # A statement that stands by itself is as wrong alone; of the rest, only being compiled alone can tell.
            refused += [schema.mutants[number] for number in numbers if schema.mutants[number].unit[2] == "statement"]
            alone |= {schema.mutants[number] for number in numbers if schema.mutants[number].unit[2] != "statement"}
            if not numbers:
                units = {unit for unit, _ in blamed if unit is not None}
                alone |= {mutant for mutant in mutants if mutant.unit in units or not units}
        return {}, refused

    def makes_no_difference(self, mutant):
        """Whether the optimising compiler makes the same of the mutant as of the original."""
        made = self.compiled(mutant.path, mutant.mutated, OPTIMISED, self.own / "optimised.o")
        return made == self.digest(mutant, OPTIMISED)

    def object_of(self, path):
        """Where the build has the object of a file, seen from its folder."""
        arguments = shlex.split(self.commands[path]["command"])
        return arguments[arguments.index("-o") + 1]

    def digest(self, mutant, options):
        if (mutant.path, options) not in self.unmutated:
            output = self.own / "unmutated.o"
            self.unmutated[mutant.path, options] = self.compiled(mutant.path, mutant.text, options, output)
        return self.unmutated[mutant.path, options]

    def link_command(self, target):
        if target not in self.links:
            steps = must(["ninja", "-C", self.build, "-t", "commands", "-s", f"bin/{target}"]).splitlines()[-1].split(" && ")
            self.links[target] = shlex.split(next(step for step in steps if f" -o bin/{target} " in step))
        return self.links[target]

    def link(self, target, path, output):
        """Links a program with the mutant's object."""
        return self.linked_with(self.own / "mutant.o", target, path, output)

    def can_have(self, target, path):
        """Whether a program can be linked with the object of a file: what that needs may be in none of its libraries."""
        if (target, path) not in self.possible:
            original = self.build / self.object_of(path)
            self.possible[target, path] = self.linked_with(original, target, path, self.own / "possible")
        return self.possible[target, path]

    def linked_with(self, made, target, path, output):
        """Links a program with an object, which comes before the library that has the file's own."""
        command = list(self.link_command(target))
        place = command.index("-o")
        command[place + 1] = str(output)
        original = self.object_of(path)
        if original in command:
            command[command.index(original)] = str(made)
        else:
            command.insert(place, str(made))
        linker = next((name for name in ("mold", "lld") if shutil.which(f"ld.{name}")), None)
        options = ["-Wl,--strip-debug", *([f"-fuse-ld={linker}"] if linker else [])]
        return run_quietly([*command, *options], self.build).returncode == 0

    # Tests

    def test(self, program, path, tests, number=0):
        """Runs tests of a program against the object that was compiled last, and the mutant of this number in it: "passed",
        "failed", "timeout" or "invalid", and the test that noticed it."""
        executable = self.build / "bin" / program.target
        kept = None
        try:
            if program.under_test is None:
                executable = self.own / program.target
                linked = program.target in self.linked or self.link(program.target, path, executable)
            else:
                place = self.build / "bin" / program.under_test
                mutated = self.own / program.under_test
                linked = program.target in self.linked or self.link(program.under_test, path, mutated)
                kept = place.with_name(place.name + ".unmutated")
                place.rename(kept)
                if linked:
                    shutil.copy(mutated, place)
            if not linked:
                return "invalid" if self.can_have(program.under_test or program.target, path) else "passed", ""
            self.linked.add(program.target)
            outcome, test, _ = self.run(executable, tests, self.limits[program.target], "--gtest_fail_fast",
                                        "--gtest_catch_exceptions=0", number=number)
            return outcome, test
        finally:
            if kept is not None:
                kept.replace(place)

    def sandboxed(self, command):
        """The command where it can neither change this machine nor see its processes: mutants remove trees and kill."""
        # Deeper folders may be left than Python's own removal can take.
        run_quietly(["rm", "-rf", self.scratch], self.source)
        self.scratch.mkdir(parents=True, exist_ok=True)
        self.scratch.chmod(0o1777)
        capabilities = ["--cap-add", "ALL"] if os.geteuid() == 0 else []
        return ["bwrap", "--ro-bind", "/", "/", "--bind", self.scratch, "/tmp", "--dev", "/dev", "--proc", "/proc",
                "--unshare-pid", "--unshare-ipc", "--die-with-parent", "--new-session", *capabilities,
                "--setenv", "TMPDIR", "/tmp", "--chdir", "/tmp", "--", *command]

    def run(self, executable, tests, limits, *more, number=0):
        """Runs a test program: what became of it, the test that failed or ran last, and the seconds of wall
        clock that it took: the processor's are lost with the sandbox, whose first process nobody waits for."""

        def bounds():
            resource.setrlimit(resource.RLIMIT_CPU, (int(limits.processor), int(limits.processor) + 1))
            resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
            resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_SIZE, FILE_SIZE))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

        command = [str(part) for part in self.sandboxed([executable, f"--gtest_filter={tests}", *more])]
        start = time.monotonic()
        with open(self.log, "w", encoding="utf-8") as log:
            child = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log, start_new_session=True,
                                     preexec_fn=bounds, env={**os.environ, schemata.VARIABLE: str(number)})
            status = wait_for(child, limits, self.log)
        seconds = time.monotonic() - start
        if status == 0:
            return "passed", "", seconds
        if status is None or status in (128 + signal.SIGXCPU, 128 + signal.SIGKILL):
            return "timeout", noticing_test(self.log), seconds
        return "failed", noticing_test(self.log) or f"status {status}", seconds


def wait_for(child, limits, log):
    """The exit status of a test program; nothing if it, or a test of it by what it writes to its log, took too long."""
    started = heard = time.monotonic()
    size = 0
    while True:
        try:
            return child.wait(timeout=0.5)
        except subprocess.TimeoutExpired:
            now = time.monotonic()
            if log.stat().st_size != size:
                size, heard = log.stat().st_size, now
            if now - started > limits.wall or now - heard > limits.silence:
                os.killpg(child.pid, signal.SIGKILL)
                child.wait()
                return None


def noticing_test(log):
    """The first failed test that the log names, else the one that was running."""
    running = ""
    for line in log.read_text(encoding="utf-8", errors="replace").splitlines():
        if line.startswith("[  FAILED  ] "):
            return line[13:].split(",")[0].split(" (")[0]
        if line.startswith("[ RUN      ] "):
            running = line[13:]
    return running


def test_times(log):
    """How many seconds each test took by the log."""
    times = re.findall(r"^\[       OK \] ([^\s,]+).* \((\d+) ms\)$", log.read_text(encoding="utf-8", errors="replace"), re.MULTILINE)
    return {test: int(milliseconds) / 1000 for test, milliseconds in times}


def slow_tests(log):
    return [test for test, seconds in test_times(log).items() if seconds > 1]


def top_level_names(checkout):
    """The files and folders of a checkout that Git knows or would take; none that a build has made."""
    listed = must(["git", "-C", checkout, "ls-files", "-z", "--cached", "--others", "--exclude-standard"])
    names = {path.split("/")[0] for path in listed.split("\0") if path}
    return sorted(name for name in names if (checkout / name).exists())


def copy_if_changed(source, target):
    content = source.read_bytes()
    if not target.exists() or target.read_bytes() != content:
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(content)
        shutil.copymode(source, target)


def synchronise(source, target):
    """Makes a folder equal to another one; files that are equal keep their times."""
    wanted = set()
    for path in sorted(source.rglob("*")):
        name = path.relative_to(source)
        wanted.add(name)
        (target / name).parent.mkdir(parents=True, exist_ok=True)
        if path.is_symlink():
            if not (target / name).is_symlink():
                (target / name).symlink_to(os.readlink(path))
        elif path.is_dir():
            (target / name).mkdir(exist_ok=True)
        else:
            copy_if_changed(path, target / name)
    for path in sorted(target.rglob("*"), reverse=True):
        if path.relative_to(target) in wanted:
            continue
        if path.is_dir() and not path.is_symlink():
            path.rmdir()
        else:
            path.unlink()
