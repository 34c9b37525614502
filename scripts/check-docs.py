#!/usr/bin/env python3
"""check-docs.py: every file that a document links to or names must be there, and so must every heading that a link jumps to."""

import pathlib
import re
import subprocess
import sys

CHECKOUT = pathlib.Path(__file__).resolve().parent.parent
# Text in `code` that begins like this is a file or folder of the checkout.
NAMED = re.compile(r"`((?:src|tests|tools|simulator|scripts|docs|bench|fuzz|deploy|resources|cmake)/[^`\s*<>{}|$]+)`")
LINKED = re.compile(r"(?<!!)\[[^\]]*\]\(([^)\s]+)\)|!\[[^\]]*\]\(([^)\s]+)\)")


def anchors(document):
    """The anchors of a document's headings."""
    found = set()
    for heading in re.findall(r"^#+ +(.+)$", document.read_text(), re.MULTILINE):
        found.add(re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-"))
    return found


def documents():
    listed = subprocess.run(["git", "-C", CHECKOUT, "ls-files", "--cached", "--others", "--exclude-standard", "*.md"], check=True,
                            text=True, stdout=subprocess.PIPE).stdout
    return [CHECKOUT / name for name in listed.splitlines()]


def faults(document):
    text = document.read_text()
    for name in NAMED.findall(text):
        if not (CHECKOUT / name).exists():
            yield f"names {name}, which does not exist"
    for match in LINKED.finditer(text):
        target = match.group(1) or match.group(2)
        if re.match(r"[a-z]+:", target):
            continue
        path, _, anchor = target.partition("#")
        file = (document.parent / path).resolve() if path else document
        if not file.exists():
            yield f"links to {target}, which does not exist"
        elif anchor and anchor not in anchors(file):
            yield f"links to {target}, which has no such heading"


def main():
    found = [f"{document.relative_to(CHECKOUT)} {fault}" for document in documents() for fault in faults(document)]
    print("\n".join(found) if found else f"check-docs: {len(documents())} documents, no finding")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
