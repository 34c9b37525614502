"""The mutants that make no difference, each with its reason: equivalent.txt.

Paragraphs, separated by empty lines:

    # the reason
    src/Room/File.cpp
      the line above it, where the file has several such lines
    - the line as it is
    + the line as the mutant has it

They are found by what they say, so that they stay known when lines move. Several pairs may share a reason and a file.
"""

import pathlib

FILE = pathlib.Path(__file__).with_name("equivalent.txt")


class Equivalents:
    def __init__(self, text=None):
        # Reasons by file, line as it is and as the mutant has it; each with the line above, or None where any will do.
        self.reasons = {}
        for paragraph in (FILE.read_text() if text is None else text).split("\n\n"):
            self.read(paragraph.strip())

    def read(self, paragraph):
        reason, path, above, before = [], None, None, None
        for line in paragraph.splitlines():
            mark, rest = line[:2], line[2:].strip()
            if mark in ("# ", "#"):
                reason.append(rest)
            elif mark == "  ":
                above = rest
            elif mark == "- ":
                before = rest
            elif mark == "+ " or line == "+":
                if not reason or path is None or before is None:
                    raise ValueError(f"equivalent.txt: a mutant without its reason, file or line: {line}")
                self.reasons[path, before, rest] = above, " ".join(reason)
                above = None
            else:
                path = line

    def reason(self, mutant):
        above, reason = self.reasons.get((mutant.path, mutant.before, mutant.after), (None, None))
        return reason if above in (None, line_above(mutant.text, mutant.line)) else None

    def vague(self, checkout):
        """The lines that are not in their file, or several times: nobody can tell which mutant is meant."""
        for (path, before, _), (above, _) in self.reasons.items():
            text = (checkout / path).read_text()
            found = [number for number, line in enumerate(text.splitlines(), 1)
                     if line.strip() == before and above in (None, line_above(text, number))]
            if len(found) != 1:
                yield path, before, found


def line_above(text, number):
    return text.splitlines()[number - 2].strip() if number > 1 else ""
