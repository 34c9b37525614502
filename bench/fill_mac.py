#!/usr/bin/env python3
"""fill_mac.py MAC COUNT: puts COUNT empty files into the product's folder of a simulated Mac, a hundred in a folder."""
import os
import sys

top, count = f"{sys.argv[1]}/Library/Application Support/NORVIK/SNT/Bases", int(sys.argv[2])
for number in range(count):
    folder = f"{top}/{number // 10000}/{number // 100}"
    if number % 100 == 0:
        os.makedirs(folder)
    os.close(os.open(f"{folder}/{number}", os.O_CREAT | os.O_WRONLY))
