#!/usr/bin/python3
"""Holds whole params.txt files of the program against the second implementation, on random databases.

Usage: compare.py --programs DIRECTORY [--count 300] [--seed 1] [--jobs 2] [--keep DIRECTORY]

Each database is also written in every layout, by h5py and by our own writer (rewrite.cpp), with rows stored once and
one by one, with a catalog and without: the records must stay the same to the byte.

Lines must be equal. Values that rest on eigenvalues or a cube root, which are found in another way here, may differ by
2e-5 of the largest stress, or one in the sixth digit.
"""
import argparse
import multiprocessing
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

import h5py

from generate import Generator
from layouts import FIRST, INDEXED, NEW, PLAIN, Rewriting
from reference import extract

FAILED = "ODB Application exited with error(s)\n"


def is_close(found, expected, largest):
    a, b = found.split("\t"), expected.split("\t")
    if a[0] != b[0] or len(a) != 2:
        return False
    try:
        x, y = float(a[1]), float(b[1])
    except ValueError:
        return False
    return abs(x - y) <= max(2e-5 * largest, 1.1e-5 * max(abs(x), abs(y)))


def difference(extraction, error, directory, run):
    """What is wrong, None when nothing is."""
    if run.returncode != 0:
        return f"status {run.returncode}: {run.stderr}"
    expected_error = "" if error is None else error + "\n" + FAILED
    if run.stderr != expected_error:
        return f"standard error holds {run.stderr!r}, expected {expected_error!r}"
    if (directory / "paramsdone.txt").exists() != (error is None):
        return "the marker is there although the extraction failed" if error else "the marker is missing"
    found = (directory / "params.txt").read_text(encoding="utf-8").split("\n")
    if found.pop() != "":
        return "the last line has no end"
    for place, (a, b) in enumerate(zip(found, extraction.lines)):
        if a != b and not (place in extraction.rough and is_close(a, b, extraction.largest)):
            return f"line {place + 1} is\n    {a}\nexpected\n    {b}"
    if len(found) != len(extraction.lines):
        longer = found if len(found) > len(extraction.lines) else extraction.lines
        return f"{len(found)} lines, expected {len(extraction.lines)}; the first odd one:\n    " \
               f"{longer[min(len(found), len(extraction.lines))]}"
    return None


class Forms:
    """The same database in every form that there is, by what they are called."""

    def __init__(self, programs, directory):
        self.programs, self.directory = programs, directory
        self.indexed = 0

    def __iter__(self):
        rewriting = Rewriting(self.directory / "model.odb")
        for kind in (FIRST, PLAIN, NEW, INDEXED):
            if kind != PLAIN or not rewriting.changes():
                rewriting.write(self.directory / f"{kind}.odb", kind)
                yield kind
        yield self.written("catalogued", NEW)
        yield self.written("catalogued and indexed", NEW, "index")
        yield self.written("catalogued, indexed and packed", INDEXED, "index", "compress", "checksum")
        name = "catalogued and indexed"
        with h5py.File(self.directory / f"{name}.odb", "r+") as odb:
            self.indexed += sum("rowOf" in location for location in odb.get("locations", {}).values())
            del odb["catalog"]
        yield name

    def written(self, name, source, *wishes):
        """By our own writer; `verify` finds that its catalog says what a reading of HDF5's structure does."""
        for command in ([self.programs / "rewrite", f"{source}.odb", f"{name}.odb", *wishes], [self.programs / "verify", f"{name}.odb"]):
            subprocess.run(command, cwd=self.directory, check=True, timeout=120, stdout=subprocess.DEVNULL)
        return name


def check_forms(forms, directory, whole):
    """What is wrong in another form of the database, None when nothing is."""
    expected = (whole.returncode, whole.stderr, (directory / "params.txt").read_bytes(), (directory / "paramsdone.txt").exists())
    for name in forms:
        run = subprocess.run([forms.programs / "quarnish", "-odb", f"{name}.odb", "-config", "config.txt"], cwd=directory, capture_output=True,
                             text=True, timeout=120, check=False)
        found = (run.returncode, run.stderr, (directory / "params.txt").read_bytes(), (directory / "paramsdone.txt").exists())
        if found != expected:
            return f"as {name}: {found[:2]}, {len(found[2])} bytes instead of {len(expected[2])}, marker: {found[3]}"
    return None


def check(job):
    """Returns (seed, what is wrong or None, number of records, number of indexed locations)."""
    programs, seed, keep = job
    memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    directory = pathlib.Path(tempfile.mkdtemp(prefix=f"kolvex-oracle-{seed}.", dir=memory))
    try:
        generator = Generator(seed)
        generator.make(directory / "model.odb")
        configuration = generator.configuration()
        (directory / "config.txt").write_bytes(configuration.encode())
        # The program first: an old layout is upgraded beside the file, and the reference reads the original.
        run = subprocess.run([programs / "quarnish", "-odb", "model.odb", "-config", "config.txt"], cwd=directory, capture_output=True,
                             text=True, timeout=120, check=False)
        extraction, error = extract(directory / "model.odb", configuration)
        forms = Forms(programs, directory)
        wrong = difference(extraction, error, directory, run) or check_forms(forms, directory, run)
        if wrong and keep:
            shutil.copytree(directory, pathlib.Path(keep) / str(seed), dirs_exist_ok=True)
        return seed, wrong, len(extraction.lines), forms.indexed
    finally:
        shutil.rmtree(directory)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True, type=pathlib.Path, help="where quarnish, verify and rewrite are")
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--keep")
    options = parser.parse_args()
    jobs = [(options.programs.resolve(), options.seed + i, options.keep) for i in range(options.count)]
    failed = records = indexed = 0
    with multiprocessing.Pool(options.jobs) as pool:
        for seed, wrong, count, locations in pool.imap_unordered(check, jobs):
            records += count
            indexed += locations
            if wrong:
                failed += 1
                print(f"seed {seed}: {wrong}", flush=True)
    print(f"{options.count - failed} passed, {failed} failed, {records} records compared in all layouts, {indexed} indexed locations")
    # Databases that hold next to nothing would prove next to nothing.
    if failed or records < 50 * options.count or indexed < options.count:
        sys.exit(1)


if __name__ == "__main__":
    main()
