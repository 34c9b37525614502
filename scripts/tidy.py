#!/usr/bin/env python3
"""tidy.py --build FOLDER [--all] [--at-most N] -- FILE...: runs clang-tidy on the sources among FILE that the build in FOLDER
compiles, and, for a header, on one source that includes it. Prints one line and every finding once; the exit status is 1 when
there is a finding.

A source that passed is not checked again until it or something that it includes changes: what it looks like after preprocessing
is remembered, as a digest, below FOLDER. Objective-C is left out: this build compiles it with GCC, and check-macos.sh with clang.
"""

import argparse
import concurrent.futures
import hashlib
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

CHECKED = {".cpp"}
HEADERS = {".h"}


def compile_commands(build):
    """Source (absolute) -> (folder, arguments) of what the build compiles."""
    commands = {}
    for entry in json.loads((build / "compile_commands.json").read_text()):
        source = os.path.normpath(os.path.join(entry["directory"], entry["file"]))
        commands[source] = (entry["directory"], entry.get("arguments") or shlex.split(entry["command"]))
    return commands


def direct_includes(source):
    """The names in the source's own #include "..." lines."""
    text = pathlib.Path(source).read_text(errors="replace")
    return re.findall(r'^\s*#\s*include\s+"([^"]+)"', text, re.MULTILINE)


def representative(header, sources):
    """One source that includes the header, best the one that is named like it; nothing if none does so itself."""
    name = os.path.basename(header)
    including = [
        source
        for source in sources
        if any(header.endswith("/" + include) and os.path.basename(include) == name for include in direct_includes(source))
    ]
    stem = os.path.splitext(name)[0]
    including.sort(key=lambda source: (os.path.splitext(os.path.basename(source))[0] != stem, source))
    return including[0] if including else None


def selection(files, commands):
    """The sources to check for the given files, in order, and how many files no source stands for."""
    sources = [source for source in commands if os.path.splitext(source)[1] in CHECKED]
    chosen, without = set(), 0
    for file in files:
        path, suffix = os.path.abspath(file), os.path.splitext(file)[1]
        if suffix in CHECKED and path in commands:
            chosen.add(path)
        elif suffix in HEADERS and (source := representative(path, sources)):
            chosen.add(source)
        elif suffix in CHECKED | HEADERS:
            without += 1
    return sorted(chosen), without


def digest_of(source, folder, arguments):
    """What a verdict depends on: the checks, the command and the preprocessed source with its comments."""
    output = arguments.index("-o")
    plain = [a for a in arguments[:output] + arguments[output + 2 :] if a not in ("-c", "-MD", "-MMD")]
    if os.path.basename(plain[0]) == "ccache":
        plain = plain[1:]
    preprocessed = subprocess.run([*plain, "-E", "-C"], cwd=folder, capture_output=True, check=False)
    if preprocessed.returncode != 0:
        return None
    digest = hashlib.sha256(pathlib.Path(".clang-tidy").read_bytes())
    digest.update(subprocess.run(["clang-tidy", "--version"], capture_output=True, check=True).stdout)
    digest.update("\0".join(plain).encode())
    digest.update(preprocessed.stdout)
    return digest.hexdigest()


def check(source, build, commands):
    """The findings in one source."""
    digest = digest_of(source, *commands[source])
    passed = build / "tidy" / digest if digest else None
    if passed and passed.exists():
        return ""
    result = subprocess.run(
        ["clang-tidy", "--quiet", "-p", str(build), source], capture_output=True, text=True, check=False
    )
    if result.returncode == 0:
        if passed:
            passed.parent.mkdir(exist_ok=True)
            passed.touch()
        return ""
    return result.stdout or result.stderr


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--at-most", type=int, default=sys.maxsize)
    parser.add_argument("files", nargs="*")
    options = parser.parse_args()

    commands = compile_commands(options.build)
    here = os.getcwd() + os.sep
    files = [source for source in commands if source.startswith(here)] if options.all else options.files
    sources, without = selection(files, commands)
    chosen = sources[: options.at_most]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = list(dict.fromkeys(filter(None, pool.map(lambda s: check(s, options.build, commands), chosen))))

    what = f"{len(chosen)} of {len(sources)}" if len(chosen) < len(sources) else str(len(chosen))
    rest = f" ({without} changed files are in no C++ source of this build)" if without else ""
    kind = "sources" if options.all else "changed sources"
    print(f"clang-tidy: {what} {kind}{rest}, " + ("findings:" if findings else "no finding"))
    print("".join(findings), end="")
    return 1 if findings else 0


sys.exit(main())
