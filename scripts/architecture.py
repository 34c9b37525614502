#!/usr/bin/env python3
"""architecture.py [--check]: draws the rooms of src/ and what each includes of the others, as docs/images/architecture.svg.

A room may include every room that it reaches along the arrows.

With --check nothing is written; the exit status is 1 when the picture is not what the code would draw today."""

import pathlib
import re
import sys

CHECKOUT = pathlib.Path(__file__).resolve().parent.parent
PICTURE = CHECKOUT / "docs" / "images" / "architecture.svg"
# Rooms from the top down, each with left edge, width and what it is for; a room may include those below it and, in its own row,
# those to its left.
ROWS = (
    (("Helpers", 20, 200, "what root runs"), ("Uninstaller", 240, 760, "silent run and window")),
    (("InstallCommon", 20, 420, "commands, lists, clients, environment checks"),),
    (("SwiftUtils", 20, 420, "runs launchctl"),),
    (("NorvikCommon", 20, 420, "records, paths, processes, users, XPC client"),
     ("Platform/Linux", 470, 165, "the simulated Mac"), ("Platform/Darwin", 645, 165, "macOS")),
    (("Platform", 20, 420, "the ports: one header for each service of the Mac"),
     ("Platform/Posix", 470, 310, "what POSIX says alike for both"),
     ("Platform/Foundation", 800, 200, "strings and exceptions")),
    (("Base", 20, 420, "no operating system: URLs, text, archives"),),
)
SUFFIXES = {".cpp", ".h", ".mm", ".m"}
WIDTH, HEIGHT, GAP, MARGIN = 1020, 54, 38, 20


def room_of(path):
    """The room of a path below src/; the adapters of Platform are rooms of their own."""
    for row in ROWS:
        for room, *_ in row:
            if room != "Platform" and path.startswith(room + "/"):
                return room
    return "Platform" if path.startswith("Platform/") else None


def included():
    """The pairs of rooms of which the first includes a header of the second."""
    pairs = set()
    for source in (CHECKOUT / "src").rglob("*"):
        room = room_of(str(source.relative_to(CHECKOUT / "src")))
        if source.suffix not in SUFFIXES or room is None:
            continue
        for header in re.findall(r'^\s*#\s*(?:include|import) "([^"]+)"', source.read_text(), re.MULTILINE):
            other = room_of(header)
            if other is not None and other != room:
                pairs.add((room, other))
    return pairs


def boxes():
    """Left edge, top and width of each room's box."""
    return {room: (left, MARGIN + number * (HEIGHT + GAP), width)
            for number, row in enumerate(ROWS) for room, left, width, _ in row}


def direct(pairs):
    """The arrows that no road over other rooms says already."""
    def reaches(room, other, without):
        return any(start == room and (start, end) != without and (end == other or reaches(end, other, without))
                   for start, end in pairs)
    return [pair for pair in sorted(pairs) if not reaches(*pair, pair)]


def arrow(places, room, other):
    left, top, width = places[room]
    other_left, other_top, other_width = places[other]
    start = end = min(max(left + width / 2, other_left + 24), other_left + other_width - 24)
    start = min(max(start, left + 24), left + width - 24)
    begin, finish = (top + HEIGHT, other_top - 2) if top < other_top else (top, other_top + HEIGHT + 2)
    if top == other_top:
        begin = finish = top + HEIGHT / 2
        start, end = (left + width, other_left - 2) if left < other_left else (left, other_left + other_width + 2)
    return (f'<path d="M{start:.0f} {begin:.0f} L{end:.0f} {finish:.0f}" class="arrow" marker-end="url(#head)">'
            f"<title>{room} includes {other}</title></path>")


def draw():
    places = boxes()
    height = 2 * MARGIN + len(ROWS) * (HEIGHT + GAP) - GAP
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" role="img" '
             'aria-label="The rooms of the program and what each includes of the others">',
             '<style>.room{fill:#eef3fb;stroke:#3b5b92}.name{font:600 16px sans-serif;fill:#14274e}'
             '.what{font:12px sans-serif;fill:#3c4658}.arrow{stroke:#7a8aa8;stroke-width:1.5}</style>',
             '<defs><marker id="head" viewBox="0 0 8 8" refX="6" refY="4" markerWidth="7" markerHeight="7" orient="auto" '
             'markerUnits="userSpaceOnUse"><path d="M0 0 8 4 0 8z" fill="#7a8aa8"/></marker></defs>',
             f'<rect width="{WIDTH}" height="{height}" fill="#fff"/>']
    lines += [arrow(places, room, other) for room, other in direct(included())]
    for row in ROWS:
        for room, *_, what in row:
            left, top, width = places[room]
            middle = left + width / 2
            lines += [f'<rect class="room" x="{left:.0f}" y="{top}" width="{width:.0f}" height="{HEIGHT}" rx="8"/>',
                      f'<text class="name" x="{middle:.0f}" y="{top + 23}" text-anchor="middle">{room}</text>',
                      f'<text class="what" x="{middle:.0f}" y="{top + 42}" text-anchor="middle">{what}</text>']
    return "\n".join(lines) + "\n</svg>\n"


def upward():
    """What a room includes of the rooms above it, or right of it."""
    order = [room for row in ROWS for room, *_ in reversed(row)]
    return [f"{room} includes {other}" for room, other in sorted(included()) if order.index(room) > order.index(other)]


def main():
    if found := upward():
        sys.exit("architecture.py: an arrow points up: " + ", ".join(found))
    if "--check" not in sys.argv[1:]:
        PICTURE.parent.mkdir(exist_ok=True)
        PICTURE.write_text(draw())
    elif not PICTURE.exists() or PICTURE.read_text() != draw():
        sys.exit(f"architecture.py: {PICTURE.relative_to(CHECKOUT)} is not what the code draws; run scripts/architecture.py")


if __name__ == "__main__":
    main()
