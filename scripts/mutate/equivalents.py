"""The mutants that make no difference, each with its reason: equivalent.txt.

Paragraphs, separated by empty lines:

    # the reason
    src/Room/File.cpp
    - the line as it is
    + the line as the mutant has it

They are found by what they say, so that they stay known when lines move. Several pairs may share a reason and a file.
"""

import pathlib

FILE = pathlib.Path(__file__).with_name("equivalent.txt")


class Equivalents:
    def __init__(self, text=None):
        self.reasons = {}
        for paragraph in (FILE.read_text() if text is None else text).split("\n\n"):
            self.read(paragraph.strip())

    def read(self, paragraph):
        reason, path, before = [], None, None
        for line in paragraph.splitlines():
            mark, rest = line[:2], line[2:].strip()
            if mark in ("# ", "#"):
                reason.append(rest)
            elif mark == "- ":
                before = rest
            elif mark == "+ " or line == "+":
                if not reason or path is None or before is None:
                    raise ValueError(f"equivalent.txt: a mutant without its reason, file or line: {line}")
                self.reasons[path, before, rest] = " ".join(reason)
            else:
                path = line

    def reason(self, mutant):
        return self.reasons.get((mutant.path, mutant.before, mutant.after))
