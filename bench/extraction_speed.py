#!/usr/bin/python3
"""Measures `kolvex quarnish` against peers on the same files, in turn, and prints tables in Markdown.

Usage: extraction_speed.py [--bin DIRECTORY] [--scale 1.0] [--runs 9] [--directory DIR]

`--scale` makes the large databases smaller. Times are medians, and half of the width of their middle half: on the
clock for whole models, else processor times of each command with its children, user and system. Files are in the page cache but for the row that says otherwise.
"""
import argparse
import functools
import os
import pathlib
import resource
import shutil
import statistics
import subprocess
import tempfile
import time

import h5py

import databases

HERE = pathlib.Path(__file__).resolve().parent
FIELDS = ("EXTRACT_FIELD", "EXTRACT_ALL")
COMPONENTS = FIELDS + ("EXTRACT_FIELD_COMPONENTS",)
SETS = FIELDS + ("EXTRACT_FIELD_SETS",)
INVARIANTS = FIELDS + ("TENSOR_INVARIANTS",)
ENGINEERING = COMPONENTS + ("ENGINEERING_MAX", "ENGINEERING_MIN", "PERCENTAGE = 1")

NUMPY = """
import sys, h5py, numpy as np
with h5py.File(sys.argv[1]) as odb:
    for block in odb['steps/Step-1/fields/S/blocks'].values():
        for frame in range(block['data'].shape[0]):
            s = block['data'][frame]
            s.max(axis=0), s.min(axis=0)
            d = s.astype('f8')
            q = 0.5 * ((d[:, 0] - d[:, 1])**2 + (d[:, 1] - d[:, 2])**2 + (d[:, 2] - d[:, 0])**2)
            m = np.sqrt(q + 3 * (d[:, 3]**2 + d[:, 4]**2 + d[:, 5]**2)).astype('f4')
            m.max(), m.min()
"""


def processor_time():
    """Of all commands so far with their children, user and system."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


class Timing:
    def __init__(self, times):
        self.median = statistics.median(times)
        quarters = statistics.quantiles(times, n=4) if len(times) > 1 else [times[0]] * 3
        self.spread = (quarters[2] - quarters[0]) / 2

    def __str__(self):
        return f"{self.median * 1e3:.1f} ms ± {self.spread * 1e3:.1f}"

    def ratio(self, other):
        return f"{self.median / other.median:.2f}"


class Bench:
    def __init__(self, options):
        self.runs = options.runs
        self.programs = pathlib.Path(options.bin).resolve()
        self.directory = pathlib.Path(options.directory or tempfile.mkdtemp(prefix="kolvex-bench.")).resolve()
        self.directory.mkdir(parents=True, exist_ok=True)

    def path(self, name):
        return self.directory / name

    def ours(self, database, keywords):
        config = self.path("_".join(word.split()[0] for word in keywords) + ".txt")
        config.write_text("ODB EXTRACTIONS\n" + "".join(word + "\n" for word in keywords))
        return [self.programs / "quarnish", "-odb", self.path(database), "-config", config]

    def run(self, command):
        subprocess.run([str(c) for c in command], cwd=self.directory, stdout=subprocess.DEVNULL, check=True)

    def in_turn(self, *commands, runs=None, before=lambda: None, clock=processor_time):
        """Times of commands that take turns; a first round does not count."""
        times = [[] for _ in commands]
        for number in range((runs or self.runs) + 1):
            for taken, command in zip(times, commands):
                before()
                begin = clock()
                self.run(command)
                if number > 0:
                    taken.append(clock() - begin)
        return [Timing(taken) for taken in times]

    def peak_memory(self, command):
        """The most memory that a command had in use, in MiB. A process of its own starts it: until the command runs, a
        child counts with the memory of its parent."""
        script = ("import resource, subprocess, sys\n"
                  "subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, check=True)\n"
                  "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
        run = subprocess.run(["/usr/bin/python3", "-S", "-c", script] + [str(c) for c in command], cwd=self.directory,
                             capture_output=True, text=True, check=True)
        return int(run.stdout) / 1024


def row(*cells):
    print("| " + " | ".join(str(c) for c in cells) + " |", flush=True)


def table(*head):
    print()
    row(*head)
    row(*["---"] * len(head))


def large_models(bench, frames, rows):
    # On the clock: two threads read, and what they wait for is memory.
    on_clock = functools.partial(bench.in_turn, clock=time.perf_counter)
    table("whole model", "ours", "`cat`", "ours / `cat`", "goal")
    databases.stress(bench.path("S.odb"), frames, rows)
    stress = bench.ours("S.odb", COMPONENTS)
    cat_stress = ["cat", bench.path("S.odb")]
    ours, cat = on_clock(stress, cat_stress)
    row(f"S with components, {frames} x {rows} rows", ours, cat, ours.ratio(cat), 1.3)
    databases.displacement(bench.path("U.odb"), frames, 2 * rows)
    ours, cat = on_clock(bench.ours("U.odb", COMPONENTS), ["cat", bench.path("U.odb")])
    row(f"U with components, {frames} x {2 * rows} nodes", ours, cat, ours.ratio(cat), 1.3)
    bench.path("U.odb").unlink()
    databases.scalars(bench.path("T.odb"), frames, rows, 3, "f8")
    ours, cat = on_clock(bench.ours("T.odb", COMPONENTS), ["cat", bench.path("T.odb")])
    row(f"scalars in double, 3 blocks, {frames} x {rows} rows each", ours, cat, ours.ratio(cat), 1.5)
    bench.path("T.odb").unlink()

    def drop():
        descriptor = os.open(bench.path("S.odb"), os.O_RDONLY)
        os.fsync(descriptor)
        os.posix_fadvise(descriptor, 0, 0, os.POSIX_FADV_DONTNEED)
        os.close(descriptor)

    ours, cat = on_clock(stress, cat_stress, runs=3, before=drop)
    row("S, not in the page cache", ours, cat, ours.ratio(cat), 1.2)

    table("whole model", "ours", "numpy with h5py", "numpy / ours", "goal")
    ours, numpy = on_clock(stress, ["/usr/bin/python3", "-c", NUMPY, bench.path("S.odb")], runs=1)
    row(f"S with components, {frames} x {rows} rows", ours, numpy, f"{numpy.median / ours.median:.0f}", 30)
    bench.path("S.odb").unlink()


def packed(bench, frames, rows):
    table("packed", "ours", "`gzip -dc` of the same numbers", "ours / gzip", "goal")
    databases.stress(bench.path("packed.odb"), frames, rows, packed=True)
    with h5py.File(bench.path("packed.odb")) as odb:
        bench.path("raw").write_bytes(odb["steps/Step-1/fields/S/blocks/0/data"][...].tobytes())
    bench.run(["gzip", "-4", "-f", bench.path("raw")])
    ours, gzip = bench.in_turn(bench.ours("packed.odb", COMPONENTS), ["gzip", "-dc", bench.path("raw.gz")], runs=3)
    row(f"S, gzip and Fletcher-32, {frames} x {rows} rows", ours, gzip, ours.ratio(gzip), 1.0)
    bench.path("packed.odb").unlink()
    bench.path("raw.gz").unlink()


def sets(bench, rows, frames):
    table("sets", "all", "one frame, with opening the sets", "each further row in a set", "to one set",
          "nine invariants of a row")
    base = None
    for count, size, what in ((1, rows, "1"), (1000, rows // 1000, "1,000"), (20000, rows // 20000, "20,000"),
                              (1000, rows // 100, "1,000 that overlap ten times")):
        databases.stress(bench.path("long.odb"), frames, rows, count, size)
        databases.stress(bench.path("short.odb"), 1, rows, count, size)
        all_rows = count * size
        whole, regions, invariants, first_whole, first = bench.in_turn(
            bench.ours("long.odb", FIELDS), bench.ours("long.odb", SETS), bench.ours("long.odb", INVARIANTS),
            bench.ours("short.odb", FIELDS), bench.ours("short.odb", SETS), runs=3)
        further = regions.median - first.median - (whole.median - first_whole.median)
        each = further / ((frames - 1) * all_rows)
        base = base or each
        row(f"{what}: {count} x {size} rows, {frames} frames", regions, first, f"{each * 1e9:.1f} ns",
            f"{each / base:.1f}", f"{(invariants.median - regions.median) / (frames * rows) * 1e9:.1f} ns")
    bench.path("long.odb").unlink()
    bench.path("short.odb").unlink()


# The same numbers as ENGINEERING selects from: seven quantities, each from both ends.
PARTITION = """
import sys, h5py, numpy as np
with h5py.File(sys.argv[1]) as odb:
    for s in odb["steps/Step-1/fields/S/blocks/0/data"]:
        d = s[:, [0, 1, 2]] - s[:, [1, 2, 0]]
        mises = np.sqrt(0.5 * (d * d).sum(axis=1) + 3 * (s[:, 3:] * s[:, 3:]).sum(axis=1))
        for column in (mises, *np.ascontiguousarray(s.T)):
            place = len(column) // 100
            if sys.argv[2] == "select":
                np.partition(column, place)
                np.partition(column, len(column) - 1 - place)
"""


def selections(bench, rows, frames):
    table("engineering extremes", "ours, beside plain extremes", "`np.partition`, beside reading", "ours / numpy", "goal")
    databases.stress(bench.path("S.odb"), frames, rows)
    numpy = ["/usr/bin/python3", "-c", PARTITION, bench.path("S.odb")]
    all_ours, plain, all_numpy, reading = bench.in_turn(
        bench.ours("S.odb", ENGINEERING), bench.ours("S.odb", COMPONENTS), [*numpy, "select"], [*numpy, "read"], runs=3)
    ours, partition = all_ours.median - plain.median, all_numpy.median - reading.median
    row(f"seven quantities in both orders, {frames} x {rows} rows", f"{ours * 1e3:.0f} ms", f"{partition * 1e3:.0f} ms",
        f"{ours / partition:.2f}", 0.2)
    bench.path("S.odb").unlink()


def small_things(bench, frames):
    table("small", "ours", "peer", "ours / peer", "goal")
    databases.many_frames(bench.path("frames.odb"), frames, 100, 5)
    command = bench.ours("frames.odb", FIELDS)
    bench.run(command)
    shutil.copy(bench.path("params.txt"), bench.path("lines.txt"))
    writer = [bench.programs / "line_writer", bench.path("lines.txt"), bench.path("out.txt")]
    ours, peer = bench.in_turn(command, writer)
    row(f"{frames} frames x 5 fields x 100 rows; a program that writes the same lines", ours, peer, ours.ratio(peer), 1.5)
    bench.run(["/usr/bin/python3", HERE.parent / "examples" / "write_by_hand.py", bench.path("tiny.odb")])
    ours, peer = bench.in_turn(bench.ours("tiny.odb", FIELDS), ["/bin/true"], runs=200)
    size = bench.path("tiny.odb").stat().st_size
    row(f"a database of {size} bytes, start to exit; `/bin/true`", ours, peer, ours.ratio(peer), 4)


def memory(bench, frames, rows):
    table("peak memory", "one frame", f"{frames} frames", "goal")
    for what, keywords, goal in (("S with components", COMPONENTS, "32 MiB"),
                                 ("S with engineering extremes", ENGINEERING, "32 MiB and what the selections take")):
        peaks = []
        for count in (1, frames):
            databases.stress(bench.path("memory.odb"), count, rows)
            peaks.append(bench.peak_memory(bench.ours("memory.odb", keywords)))
        row(f"{what}, {rows} rows", *(f"{peak:.1f} MiB" for peak in peaks), goal)
    bench.path("memory.odb").unlink()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", default="build/release/bin")
    parser.add_argument("--directory")
    parser.add_argument("--scale", type=float, default=1.0)
    parser.add_argument("--runs", type=int, default=9)
    options = parser.parse_args()
    bench = Bench(options)
    rows = max(20000, int(1_000_000 * options.scale) // 20000 * 20000)
    try:
        large_models(bench, 64, rows)
        packed(bench, 4, rows)
        selections(bench, rows, 8)
        sets(bench, rows, 8)
        small_things(bench, max(100, int(10_000 * options.scale)))
        memory(bench, 20, rows)
    finally:
        if not options.directory:
            shutil.rmtree(bench.directory)


if __name__ == "__main__":
    main()
