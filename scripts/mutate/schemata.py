"""Many mutants in one object: the program chooses one of them by its environment while it runs.

A statement becomes "if (mutant 7) its mutant; else if (mutant 8) another; else itself", an expression the like with "?:". What
cannot be chosen at run time, a constant of the compiler's for instance, is left to be compiled alone.
"""

import collections

VARIABLE = "SENTREL_MUTANT"
CHOICE = "sentrelMutantIs"
PREAMBLE = f"""#include <cstdlib>
inline bool {CHOICE}(int number) {{
    static const int chosen = [] {{ const char* text = std::getenv("{VARIABLE}"); return text ? std::atoi(text) : 0; }}();
    return chosen == number;
}}
"""


class Schema:
    """A file's text with all of these mutants in it; `numbers` are theirs, from 1."""

    def __init__(self, text, mutants):
        self.mutants = dict(enumerate(mutants, 1))
        self.by_unit = collections.defaultdict(list)
        for number, mutant in self.mutants.items():
            self.by_unit[mutant.unit].append(number)
        self.source = text
        self.pieces = []  # (text, unit, number): what is written in order, and whose it is
        self.write(PREAMBLE, None, 0)
        self.region(0, len(text))
        self.text = "".join(piece for piece, _, _ in self.pieces)

    def write(self, text, unit, number):
        self.pieces.append((text, unit, number))

    def region(self, start, end, owner=None):
        """Writes a part of the file, with the units in it."""
        position = start
        inside = sorted(unit for unit in self.by_unit if start <= unit[0] and unit[1] <= end and unit != owner)
        for unit in inside:
            if unit[0] < position:
                continue  # part of the unit before
            self.write(self.source[position:unit[0]], owner, 0)
            self.unit(unit)
            position = unit[1]
        self.write(self.source[position:end], owner, 0)

    def alternative(self, number, unit):
        mutant = self.mutants[number]
        return self.source[unit[0]:mutant.start] + mutant.replacement + self.source[mutant.end:unit[1]]

    def unit(self, unit):
        shape = unit[2]
        opening, closing = {"statement": ("", ""), "truth": ("bool(", ")"), "effect": ("void(", ")"), "value": ("(", ")")}[shape]
        if shape != "statement":
            self.write("(", unit, 0)
        for number in self.by_unit[unit]:
            if shape == "statement":
                self.write(f"\nif ({CHOICE}({number})) {{\n", unit, 0)
                self.write(self.alternative(number, unit), unit, number)
                self.write("\n} else ", unit, 0)
            else:
                self.write(f"\n{CHOICE}({number}) ?\n", unit, 0)
                self.write(f"{opening}{self.alternative(number, unit)}{closing}", unit, number)
                self.write("\n:\n", unit, 0)
        self.write("{\n" if shape == "statement" else opening, unit, 0)
        self.region(unit[0], unit[1], unit)
        self.write("\n}" if shape == "statement" else closing + ")", unit, 0)

    def owner_of_line(self, line):
        """Whose a line of the text is: (unit, number of the mutant or 0)."""
        at = 1
        found = (None, 0)
        for piece, unit, number in self.pieces:
            last = at + piece.count("\n")
            if at <= line <= last:
                found = (unit, number)
                if number:
                    return found
                if unit is not None and line < last:
                    return found
            at = last
            if at > line:
                break
        return found
