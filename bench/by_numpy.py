#!/usr/bin/python3
"""What a user would write instead: extremes of a binary CalculiX file of one mesh by numpy, without a database.

Usage: by_numpy.py job.frd. Prints a line for each quantity and frame; all in all twenty lines that read and reduce.
"""
import re
import sys

import numpy as np

data = np.memmap(sys.argv[1], np.uint8, "r")
text, at, frame = bytes(data[:1 << 20]), 0, 0
head = re.compile(rb"  100CL.{27}(\d+) .*\n -4  (\w+) +(\d+) .*\n((?: -5 .*\n)+)")
rows = int(re.search(rb"    2C +(\d+)", text)[1])
at = text.index(b"\n", text.index(b"    2C")) + 1 + rows * 28
elements = int(re.search(rb"    3C +(\d+)", bytes(data[at:at + 100]))[1])
at += bytes(data[at:at + 100]).index(b"\n") + 1 + elements * 48
while match := head.search(bytes(data[at:at + 2000])):
    width = match[4].count(b"\n")
    at += match.end()
    block = np.frombuffer(data[at:at + rows * (4 + 4 * width)], [("label", "<i4"), ("v", "<f4", (width,))])["v"].astype("f8")
    at += rows * (4 + 4 * width)
    if width == 6:
        a, b, c, d, e, f = block.T
        block = np.column_stack([block, np.sqrt(((a - b) ** 2 + (b - c) ** 2 + (c - a) ** 2) / 2 + 3 * (d * d + e * e + f * f))])
    elif width == 3:
        block = np.column_stack([block, np.sqrt((block * block).sum(axis=1))])
    print(match[2].decode(), *block.max(axis=0), *block.min(axis=0))
