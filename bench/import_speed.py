#!/usr/bin/python3
"""Measures `kolvex import` on a large result file, ASCII and binary, against `wc -l` and `cat` on the same file.

Usage: import_speed.py [--bin DIRECTORY] [--size MEGABYTES] [--runs 5] [--fields U,RF,NT,S] [--directory DIR]

The result files hold a block of bricks with so many frames that they have the size asked for. The programs run in turn,
several times, with the file in the page cache; the table shows medians. "copy" writes the file anew beside the database and
brings it to the disk, which the import does with the database too.
"""
import argparse
import multiprocessing
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import numpy as np

HEADING = "    1C\n    1Ua block of bricks\n    1UPGM               CalculiX\n    1UVERSION           Version 2.20\n"
BLOCKS = {
    "U": ("DISP", [("D1", 2), ("D2", 2), ("D3", 2)]),
    "RF": ("FORC", [("F1", 2), ("F2", 2), ("F3", 2)]),
    "NT": ("NDTEMP", [("T", 1)]),
    "S": ("STRESS", [(name, 4) for name in ("SXX", "SYY", "SZZ", "SXY", "SYZ", "SZX")]),
    "E": ("TOSTRAIN", [(name, 4) for name in ("EXX", "EYY", "EZZ", "EXY", "EYZ", "EZX")]),
}


def bricks(count):
    """Coordinates of a grid of count^3 bricks, and the eight nodes of each."""
    side = np.arange(count + 1)
    z, y, x = np.meshgrid(side, side, side, indexing="ij")
    coordinates = np.stack([x.ravel(), y.ravel(), z.ravel()], axis=1).astype("f8")
    labels = (np.arange(coordinates.shape[0], dtype="i4") + 1).reshape(count + 1, count + 1, count + 1)
    lower = [labels[:-1, :-1, :-1], labels[:-1, :-1, 1:], labels[:-1, 1:, 1:], labels[:-1, 1:, :-1]]
    upper = [labels[1:, :-1, :-1], labels[1:, :-1, 1:], labels[1:, 1:, 1:], labels[1:, 1:, :-1]]
    return coordinates, np.stack([corner.ravel() for corner in lower + upper], axis=1)


def number(value):
    return "%12.5E" % value


def write_model(file, coordinates, connectivity, binary):
    nodes, elements = len(coordinates), len(connectivity)
    file.write(f"    2C{'':18}{nodes:12}{'':37}{3 if binary else 1}\n".encode())
    if binary:
        rows = np.zeros(nodes, dtype=[("label", "<i4"), ("at", "<f8", 3)])
        rows["label"], rows["at"] = np.arange(1, nodes + 1), coordinates
        file.write(rows.tobytes())
    else:
        for i, at in enumerate(coordinates.tolist(), 1):
            file.write((" -1%10d" % i + "".join(map(number, at)) + "\n").encode())
        file.write(b" -3\n")
    file.write(f"    3C{'':18}{elements:12}{'':37}{2 if binary else 1}\n".encode())
    if binary:
        rows = np.ones((elements, 12), dtype="<i4")
        rows[:, 0], rows[:, 2], rows[:, 4:] = np.arange(1, elements + 1), 0, connectivity
        file.write(rows.tobytes())
    else:
        for i, row in enumerate(connectivity.tolist(), 1):
            file.write((" -1%10d    1    0    1\n -2" % i + "".join("%10d" % n for n in row) + "\n").encode())
        file.write(b" -3\n")


def result_rows(nodes, width, binary):
    """The rows of a result block as they stand in the file; the same for every frame."""
    values = np.random.default_rng(width).standard_normal((nodes, width)) * 1e3
    if binary:
        rows = np.zeros(nodes, dtype=[("label", "<i4"), ("values", "<f4", (width,))])
        rows["label"], rows["values"] = np.arange(1, nodes + 1), values
        return rows.tobytes()
    return "".join(" -1%10d" % i + "".join(map(number, row)) + "\n"
                   for i, row in enumerate(values.tolist(), 1)).encode() + b" -3\n"


def write_results(path, size, fields, binary, side=60):
    """A result file of about `size` bytes."""
    coordinates, connectivity = bricks(side)
    nodes = len(coordinates)
    rows = {len(BLOCKS[field][1]): None for field in fields}
    rows = {width: result_rows(nodes, width, binary) for width in rows}
    with open(path, "wb") as file:
        file.write(HEADING.encode())
        write_model(file, coordinates, connectivity, binary)
        frame = 0
        while file.tell() < size:
            frame += 1
            for field in fields:
                name, components = BLOCKS[field]
                file.write(f"    1PSTEP{'':14}{frame:12}{frame:12}{1:12}          \n".encode())
                file.write(f"  100CL{100 + frame:5}{number(frame)}{nodes:12}{'':20}{0:2}{frame:5}{'':11}"
                           f"{2 if binary else 1}\n".encode())
                file.write(f" -4  {name:8}{len(components):5}    1\n".encode())
                for component, kind in components:
                    file.write(f" -5  {component:8}    1{kind:5}    1    0\n".encode())
                file.write(rows[len(components)])
        file.write(b" 9999\n")


def timed(command):
    """Seconds of a run, and its greatest memory in megabytes."""
    before = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    errors = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.perf_counter() - before
    if status != 0:
        sys.exit(f"{' '.join(map(str, command))}: {errors.decode()}")
    return seconds, usage.ru_maxrss / 1024


def measure(program, results, directory, runs):
    """The median seconds of every program, the memory of the import and the bytes of the database."""
    database, copy = directory / "speed.odb", directory / "copy"
    seconds = {"wc -l": [], "cat": [], "copy": [], "import": [], "import, one field": [], "list": []}
    memory = 0
    kolvex = [program, results, "--no-deck"]
    for _ in range(runs):
        seconds["wc -l"].append(timed(["wc", "-l", results])[0])
        seconds["cat"].append(timed(["cat", results])[0])
        seconds["copy"].append(timed(["dd", f"if={results}", f"of={copy}", "bs=1M", "conv=fsync", "status=none"])[0])
        copy.unlink()
        taken, used = timed([*kolvex, "-o", database])
        seconds["import"].append(taken)
        memory = max(memory, used)
        size = database.stat().st_size
        database.unlink()
        seconds["import, one field"].append(timed([*kolvex, "-o", database, "--field", "U"])[0])
        database.unlink()
        seconds["list"].append(timed([*kolvex, "--list"])[0])
    return {name: statistics.median(all_of_it) for name, all_of_it in seconds.items()}, memory, size


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=pathlib.Path("build/release/bin"),
                        help="where the program import is")
    parser.add_argument("--size", type=int, default=1000, help="megabytes of a result file")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--fields", default="U,RF,NT,S", help="of " + ", ".join(BLOCKS))
    parser.add_argument("--directory", help="where the files go, for the time of the run")
    options = parser.parse_args()
    print("| file | MB | database MB | program | s | MB/s | ratio to `wc -l` | ratio to `cat` | ratio to copy | memory MB |")
    print("|---|---|---|---|---|---|---|---|---|---|")
    with tempfile.TemporaryDirectory(dir=options.directory) as name:
        directory = pathlib.Path(name)
        for kind in ("ASCII", "binary"):
            results = directory / "speed.frd"
            # In a process of its own: what this one holds would count as the memory of the programs that it starts.
            writer = multiprocessing.Process(
                target=write_results, args=(results, options.size * 1e6, options.fields.split(","), kind == "binary"))
            writer.start()
            writer.join()
            megabytes = results.stat().st_size / 1e6
            seconds, memory, size = measure(options.bin / "import", results, directory, options.runs)
            for program, taken in seconds.items():
                ratios = " | ".join("%.2f" % (taken / seconds[other]) for other in ("wc -l", "cat", "copy"))
                extra = ("%.0f" % (size / 1e6), "%.0f" % memory) if program == "import" else ("", "")
                print(f"| {kind} | {megabytes:.0f} | {extra[0]} | {program} | {taken:.2f} | {megabytes / taken:.0f} | "
                      f"{ratios} | {extra[1]} |", flush=True)


if __name__ == "__main__":
    main()
