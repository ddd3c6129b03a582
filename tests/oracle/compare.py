#!/usr/bin/python3
"""Holds whole params.txt files of the program against the second implementation, on random databases.

Usage: compare.py --quarnish PROGRAM [--count 300] [--seed 1] [--jobs 2] [--keep DIRECTORY]

Lines must be equal. Values that rest on eigenvalues or a cube root, which are found in another way here, may differ by
2e-5 of the largest stress, or one in the sixth digit.
"""
import argparse
import multiprocessing
import pathlib
import shutil
import subprocess
import sys
import tempfile

from generate import Generator
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


def check(job):
    """Returns (seed, what is wrong or None, number of records)."""
    program, seed, keep = job
    directory = pathlib.Path(tempfile.mkdtemp(prefix=f"kolvex-oracle-{seed}."))
    try:
        generator = Generator(seed)
        generator.make(directory / "model.odb")
        configuration = generator.configuration()
        (directory / "config.txt").write_bytes(configuration.encode())
        # The program first: an old layout is upgraded beside the file, and the reference reads the original.
        run = subprocess.run([program, "-odb", "model.odb", "-config", "config.txt"], cwd=directory, capture_output=True,
                             text=True, timeout=120, check=False)
        extraction, error = extract(directory / "model.odb", configuration)
        wrong = difference(extraction, error, directory, run)
        if wrong and keep:
            shutil.copytree(directory, pathlib.Path(keep) / str(seed), dirs_exist_ok=True)
        return seed, wrong, len(extraction.lines)
    finally:
        shutil.rmtree(directory)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--quarnish", required=True)
    parser.add_argument("--count", type=int, default=300)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--keep")
    options = parser.parse_args()
    program = str(pathlib.Path(options.quarnish).resolve())
    jobs = [(program, options.seed + i, options.keep) for i in range(options.count)]
    failed = records = 0
    with multiprocessing.Pool(options.jobs) as pool:
        for seed, wrong, count in pool.imap_unordered(check, jobs):
            records += count
            if wrong:
                failed += 1
                print(f"seed {seed}: {wrong}", flush=True)
    print(f"{options.count - failed} passed, {failed} failed, {records} records compared")
    # Databases that hold next to nothing would prove next to nothing.
    if failed or records < 50 * options.count:
        sys.exit(1)


if __name__ == "__main__":
    main()
