#!/usr/bin/env python3
"""Checks that every language has the same texts as English: check-tables.py LOCALIZATIONS

Each string table has to be a property list of texts, with the keys of the English one, no text empty and each
with as many %@ as the English text.
"""

import pathlib
import plistlib
import sys

LANGUAGES = {"en", "de", "fr", "es", "it", "ja", "zh-Hans", "ru", "pl"}
TABLES = {"WebInstaller", "macstrings", "Interface"}


def check(table, language, english, texts):
    place = f"{language}.lproj/{table}.strings"
    if set(texts) != set(english):
        yield f"{place}: other keys than in English: {sorted(set(texts) ^ set(english))}"
    for key in set(texts) & set(english):
        text = texts[key]
        if not isinstance(text, str) or not text.strip():
            yield f"{place}: {key} has no text"
        elif text.count("%@") != english[key].count("%@") or text.count("%") != english[key].count("%"):
            yield f"{place}: {key} does not have the placeholders of the English text"


def main():
    folder = pathlib.Path(sys.argv[1])
    faults = []
    if {path.stem for path in folder.glob("*.lproj")} != LANGUAGES:
        faults.append(f"the languages are not {sorted(LANGUAGES)}")
    for language in sorted(LANGUAGES):
        tables = {path.stem for path in (folder / f"{language}.lproj").glob("*.strings")}
        if tables != TABLES:
            faults.append(f"{language}.lproj: the tables are not {sorted(TABLES)}")
        for table in sorted(tables & TABLES):
            read = [plistlib.loads((folder / f"{name}.lproj" / f"{table}.strings").read_bytes())
                    for name in ("en", language)]
            faults.extend(check(table, language, *read))
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
