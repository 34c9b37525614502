#!/usr/bin/env python3
"""Measures the window in every language and state: nothing may be clipped, overlap or stick out.

    layout.py PROBE LIBRARY SPY RESOURCES OUTPUT

RESOURCES is the project's folder of that name, SPY the library that reads the controls. Writes a picture of each state to the
folder OUTPUT, and all of them on one sheet, languages.png. Needs Xvfb and ImageMagick.
"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

from screenshots import Display, PRODUCT, command_for, tables

# A reader gives up after that; nothing is measured by it.
PATIENCE = 1200


def states(texts):
    """What is told to the probe in each state, and what a control shows by which the state is known."""
    finished = texts["368"].replace("%@", PRODUCT)
    return [
        ("1-ready", [], lambda seen: len(of_kind(seen, "button")) == 2),
        ("2-waiting", ["run"], lambda seen: any(control["moves"] for control in of_kind(seen, "progress"))),
        ("3-running", ["progress 41.3", "description Deleting support files and directories..."],
         lambda seen: has_text(seen, "Deleting support files and directories...")),
        ("4-finished", ["progress 100", f"label {finished}", f"finish {texts['d234c1075']}", "no-description"],
         lambda seen: has_text(seen, finished) and has_text(seen, texts["d234c1075"])
         and len(of_kind(seen, "checkMark")) == 1),
    ]


def of_kind(window, kind):
    return [control for control in window["controls"] if control["kind"] == kind and not control["hidden"]]


def has_text(window, text):
    return any(control.get("text") == text and not control["hidden"] for control in window["controls"])


def name_of(control):
    return f"the {control['kind']} \"{control.get('text', '')}\""


def overlap(one, other):
    (x, y, width, height), (left, top, across, down) = one["frame"], other["frame"]
    return x < left + across and left < x + width and y < top + down and top < y + height


def faults_of(window):
    shown = [control for control in window["controls"] if not control["hidden"]]
    left, top, width, height = window["content"]
    for index, control in enumerate(shown):
        x, y, across, down = control["frame"]
        # A button's frame may reach beyond what is seen of it by a few points.
        if x < left - 6 or y < top - 6 or x + across > left + width + 6 or y + down > top + height + 6:
            yield f"{name_of(control)} sticks out of the window"
        needed = control.get("needs", [0, 0])
        if needed[0] > across or needed[1] > down:
            yield f"{name_of(control)} needs {needed[0]:.0f} x {needed[1]:.0f} and has {across:.0f} x {down:.0f}"
        for other in shown[index + 1:]:
            if overlap(control, other):
                yield f"{name_of(control)} overlaps {name_of(other)}"


def wait_for(probe, report, condition):
    """The window as the spy last saw it, when it shows what it should; nothing if the probe ends before."""
    until = time.monotonic() + PATIENCE
    while time.monotonic() < until and probe.poll() is None:
        try:
            windows = json.loads(report.read_text())["windows"]
        except (OSError, ValueError):
            windows = []
        for window in windows:
            if any(control["kind"] == "progress" for control in window["controls"]) and condition(window):
                return window
        time.sleep(0.05)
    return None


def measure(display, command, spy, texts, output, language):
    with tempfile.TemporaryDirectory() as scratch:
        report = pathlib.Path(scratch) / "interface.json"
        environment = dict(display.environment, LD_PRELOAD=spy, INTERFACE_SPY=str(report))
        with subprocess.Popen(command, env=environment, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL,
                              text=True, encoding="utf-8") as probe:
            for state, told, condition in states(texts):
                probe.stdin.write("".join(line + "\n" for line in told))
                probe.stdin.flush()
                window = wait_for(probe, report, condition)
                if window is None:
                    ended = "" if probe.poll() is None else f"; the probe ended with status {probe.returncode}"
                    yield f"{language}, {state}: the window does not get there{ended}"
                    break
                for fault in faults_of(window):
                    yield f"{language}, {state}: {fault}"
                display.picture(output / f"{language}-{state}.png")
            probe.kill()


def main():
    if len(sys.argv) != 6:
        raise SystemExit(__doc__)
    probe, library, spy, resources, output = sys.argv[1:]
    resources, output = pathlib.Path(resources), pathlib.Path(output)
    output.mkdir(parents=True, exist_ok=True)
    for old in output.glob("*.png"):
        old.unlink()
    languages = sorted(folder.stem for folder in (resources / "Localizations").glob("*.lproj"))
    faults = [] if len(languages) == 9 else [f"there are {len(languages)} languages, not 9"]
    with Display() as display:
        for language in languages:
            texts = tables(resources / "Localizations" / f"{language}.lproj")
            faults.extend(measure(display, command_for(probe, library, resources, texts), spy, texts, output, language))
    pictures = [str(picture) for picture in sorted(output.glob("*.png"))]
    # The window alone, without the menu bar and the black around it.
    subprocess.run(["mogrify", "-crop", "720x454+0+26", "+repage", "-trim", "+repage", *pictures], check=True)
    subprocess.run(["montage", *pictures, "-tile", "4x", "-geometry", "400x+8+8", "-background", "#d8dade",
                    str(output / "languages.png")], check=True)
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
