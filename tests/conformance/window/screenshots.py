#!/usr/bin/env python3
"""Takes pictures of the window in every state and language, for people to look at.

    screenshots.py PROBE LIBRARY RESOURCES OUTPUT [LANGUAGE ...]

RESOURCES is the project's folder of that name. One PNG per language and state is written to the folder OUTPUT.
Needs Xvfb and ImageMagick's import.
"""

import os
import pathlib
import plistlib
import subprocess
import sys
import time

PRODUCT = "Sentrel"
SCREEN = "720x480x24"


def tables(folder):
    texts = {}
    for name in ("WebInstaller", "macstrings", "Interface"):
        texts.update(plistlib.loads((folder / f"{name}.strings").read_bytes()))
    return texts


def states(texts):
    """What is told to the probe in each state, one state after the other in one process."""
    finished = texts["368"].replace("%@", PRODUCT)
    missing = texts["204"].replace("%@", PRODUCT)
    label = texts["label"].replace("%@", PRODUCT)
    return [
        ("1-ready", [f"label {label}"]),
        ("2-running", ["run", "progress 41.3", "description Deleting Virus Definitions Update Service..."]),
        ("3-long-description", ["progress 77", "description Deleting a component with a name that is much longer than "
                                               "what a line of this window has room for..."]),
        ("4-finished", ["progress 100", f"finish {texts['d234c1075']}", f"label {finished}"]),
        ("5-alert", [f"alert {texts['d129c1']}|{missing}|"]),
    ]


class Display:
    def __enter__(self):
        reading, writing = os.pipe()
        # Without -noreset it drops whoever connects while it starts anew because the last client has left.
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", SCREEN, "-nolisten", "tcp", "-noreset"],
            pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as number:
            self.environment = dict(os.environ, DISPLAY=":" + number.readline().strip())
        return self

    def __exit__(self, *_):
        self.server.terminate()
        self.server.wait()

    def picture(self, path):
        subprocess.run(["import", "-window", "root", str(path)], env=self.environment, check=True)


def command_for(probe, library, resources, texts):
    """What starts the probe with the interface's texts in one language."""
    keys = ("headline", "label", "uninstall", "cancel", "duration", "about", "hide", "quit")
    settings = {key: texts[key] for key in keys}
    settings["title"] = texts["367"].replace("%@", PRODUCT)
    settings["resources"] = str(resources / "Icon")
    settings["version"] = "6.4 (640)"
    settings["label"] = settings["label"].replace("%@", PRODUCT)
    return [probe, library] + [f"{key}={value}" for key, value in settings.items()]


def photograph(display, probe, library, resources, output, language):
    texts = tables(resources / "Localizations" / f"{language}.lproj")
    command = command_for(probe, library, resources, texts)
    with subprocess.Popen(command, env=display.environment, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                          text=True, encoding="utf-8") as process:
        while process.stdout.readline().strip() != "launched":
            if process.poll() is not None:
                raise SystemExit(f"the probe ended with status {process.returncode}")
        for state, commands in states(texts):
            process.stdin.write("".join(line + "\n" for line in commands))
            process.stdin.flush()
            time.sleep(0.6)
            display.picture(output / f"{language}-{state}.png")
        process.kill()


def main():
    if len(sys.argv) < 5:
        raise SystemExit(__doc__)
    probe, library, resources, output = sys.argv[1:5]
    resources, output = pathlib.Path(resources), pathlib.Path(output)
    output.mkdir(parents=True, exist_ok=True)
    available = sorted(folder.stem for folder in (resources / "Localizations").glob("*.lproj"))
    with Display() as display:
        for language in sys.argv[5:] or available:
            photograph(display, probe, library, resources, output, language)


if __name__ == "__main__":
    main()
