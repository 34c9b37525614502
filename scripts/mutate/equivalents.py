"""The mutants that make no difference, each with its reason: equivalent.txt.

Paragraphs, separated by empty lines:

    # the reason
    src/Room/File.cpp
      the lines above it, where the file has several such lines
    - the line as it is
    + the line as the mutant has it

They are found by what they say, so that they stay known when lines move. Several pairs may share a reason and a file.
"""

import collections
import pathlib

FILE = pathlib.Path(__file__).with_name("equivalent.txt")


class Equivalents:
    def __init__(self, text=None):
        # Pairs of the lines above that are asked for and the reason, by file, line as it is and as the mutant has it.
        self.reasons = collections.defaultdict(list)
        for paragraph in (FILE.read_text() if text is None else text).split("\n\n"):
            self.read(paragraph.strip())

    def read(self, paragraph):
        reason, path, above, before = [], None, [], None
        for line in paragraph.splitlines():
            mark, rest = line[:2], line[2:].strip()
            if mark in ("# ", "#"):
                reason.append(rest)
            elif mark == "  ":
                above.append(rest)
            elif mark == "- ":
                before = rest
            elif mark == "+ " or line == "+":
                if not reason or path is None or before is None:
                    raise ValueError(f"equivalent.txt: a mutant without its reason, file or line: {line}")
                self.reasons[path, before, rest].append((above, " ".join(reason)))
                above = []
            else:
                path = line

    def reason(self, mutant):
        for above, reason in self.reasons.get((mutant.path, mutant.before, mutant.after), ()):
            if lines_above(mutant.text, mutant.line, len(above)) == above:
                return reason
        return None

    def vague(self, checkout):
        """The lines that are not in their file, or several times: nobody can tell which mutant is meant."""
        for (path, before, _), meant in self.reasons.items():
            text = (checkout / path).read_text()
            for above, _ in meant:
                found = [number for number, line in enumerate(text.splitlines(), 1)
                         if line.strip() == before and lines_above(text, number, len(above)) == above]
                if len(found) != 1:
                    yield path, before, found


def lines_above(text, number, count):
    return [line.strip() for line in text.splitlines()[max(0, number - 1 - count):number - 1]]
