#!/usr/bin/env python3
"""Makes AppIcon.png, AppIcon-128.png, AppIcon-64.png and AppIcon.icns from AppIcon.svg. Needs rsvg-convert (librsvg2-bin).

An .icns file is a list of named PNG pictures: "icns", the file's length, and for each picture its type, its length
with these eight bytes, and the PNG; lengths are 32 bits, big-endian.
"""

import pathlib
import struct
import subprocess

FOLDER = pathlib.Path(__file__).resolve().parent

# Type and side in pixels; some sizes have a second type for screens with two pixels per point.
PICTURES = [
    (b"icp4", 16), (b"icp5", 32), (b"ic11", 32), (b"ic12", 64), (b"ic07", 128),
    (b"ic13", 256), (b"ic08", 256), (b"ic14", 512), (b"ic09", 512), (b"ic10", 1024),
]


def rendered(side):
    command = ["rsvg-convert", f"--width={side}", f"--height={side}", str(FOLDER / "AppIcon.svg")]
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def main():
    pictures = {side: rendered(side) for side in sorted({side for _, side in PICTURES})}
    (FOLDER / "AppIcon.png").write_bytes(pictures[512])
    (FOLDER / "AppIcon-128.png").write_bytes(pictures[128])
    (FOLDER / "AppIcon-64.png").write_bytes(pictures[64])
    body = b"".join(kind + struct.pack(">I", len(pictures[side]) + 8) + pictures[side] for kind, side in PICTURES)
    (FOLDER / "AppIcon.icns").write_bytes(b"icns" + struct.pack(">I", len(body) + 8) + body)


if __name__ == "__main__":
    main()
