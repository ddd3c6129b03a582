#!/usr/bin/python3
"""Holds the names of `show --records` against those of params.txt, on the random databases of tests/oracle.

Usage: compare_records.py --programs DIRECTORY [--count 100] [--seed 1] [--jobs 2]

Every database is taken as it is and with a number in place of each NaN and infinity. Of the second the names must be the
same, in the same order; of the first names may be missing in params.txt, of sets alone: a set without a number has no
records.
"""
import argparse
import multiprocessing
import pathlib
import shutil
import subprocess
import sys
import tempfile

import h5py
import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "oracle"))
from generate import KEYWORDS, Generator  # noqa: E402

ALL = [word for word in KEYWORDS if not word.startswith("ABSOLUTE")]
CONFIGURATIONS = {
    "everything": ["ODB EXTRACTIONS", *ALL],
    "no components": ["ODB EXTRACTIONS", *[word for word in ALL if "COMPONENTS" not in word]],
    "whole model": ["ODB EXTRACTIONS", "EXTRACT_FIELD_COMPONENTS", "EXTRACT_STRESS", "EXTRACT_SPATIAL", "ENGINEERING_MIN"],
    "names alone": ["ODB EXTRACTIONS", *ALL, "DO_NOT_COMPUTE_VALUES"],
    "invariants": ["ODB EXTRACTIONS", "EXTRACT_FIELD", "TENSOR_INVARIANTS"],
}


def make_finite(path):
    """A number in place of each that is none. Whether there was one."""
    changed = []

    def visit(_, item):
        if isinstance(item, h5py.Dataset) and item.dtype.kind == "f" and item.size:
            rows = item[...]
            if not np.isfinite(rows).all():
                item[...] = np.where(np.isfinite(rows), rows, 1)
                changed.append(item.name)

    with h5py.File(path, "r+") as file:
        file.visititems(visit)
    return bool(changed)


def names_of_run(programs, directory):
    subprocess.run([programs / "quarnish", "-odb", "model.odb", "-config", "config.txt"], cwd=directory, capture_output=True, timeout=120,
                   check=True)
    lines = (directory / "params.txt").read_text(encoding="utf-8").split("\n")
    return [line.rpartition("\t")[0] for line in lines if line]


def names_shown(programs, directory):
    run = subprocess.run([programs / "kolvex", "show", "model.odb", "--records", "config.txt"], cwd=directory, capture_output=True, text=True,
                         timeout=120, check=False)
    if run.returncode != 0:
        raise RuntimeError(run.stderr)
    return run.stdout.splitlines()


def first_difference(shown, written):
    for place, (a, b) in enumerate(zip(shown, written)):
        if a != b:
            return f"name {place + 1} is {a}, expected {b}"
    if len(shown) != len(written):
        longer = shown if len(shown) > len(written) else written
        return f"{len(shown)} names, expected {len(written)}; the first odd one is {longer[min(len(shown), len(written))]}"
    return None


def missing(shown, written):
    """Names that are shown and not written, or a text where the order departs."""
    left, out = iter(shown), []
    for name in written:
        for candidate in left:
            if candidate == name:
                break
            out.append(candidate)
        else:
            return f"{name} is written and not shown"
    return out + list(left)


def is_over_set(name):
    # Of the whole model nothing stands between the increment and a field of the generator.
    return "__Frame_" in name


def check_one(programs, directory, title, words, is_finite):
    (directory / "config.txt").write_text("\n".join(words), encoding="utf-8")
    written, shown = names_of_run(programs, directory), names_shown(programs, directory)
    if is_finite:
        wrong = first_difference(shown, written)
    else:
        left = missing(shown, written)
        wrong = left if isinstance(left, str) else next((f"{name} is not written" for name in left if not is_over_set(name)), None)
    return (f"{title}: {wrong}" if wrong else None), len(written)


def check(job):
    """Returns (seed, what is wrong or None, number of names)."""
    programs, seed = job
    directory = pathlib.Path(tempfile.mkdtemp(prefix=f"kolvex-records-{seed}."))
    names = 0
    try:
        generator = Generator(seed)
        generator.make(directory / "model.odb")
        configurations = {"its own": generator.configuration().splitlines(), **CONFIGURATIONS}
        for is_finite in (False, True):
            if is_finite and not make_finite(directory / "model.odb"):
                pass
            for title, words in configurations.items():
                wrong, count = check_one(programs, directory, title, words, is_finite)
                names += count
                if wrong:
                    return seed, wrong, names
        return seed, None, names
    finally:
        shutil.rmtree(directory)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--programs", required=True, type=pathlib.Path, help="where kolvex, inspect and quarnish are")
    parser.add_argument("--count", type=int, default=100)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--jobs", type=int, default=2)
    options = parser.parse_args()
    jobs = [(options.programs.resolve(), options.seed + i) for i in range(options.count)]
    failed = names = 0
    with multiprocessing.Pool(options.jobs) as pool:
        for seed, wrong, count in pool.imap_unordered(check, jobs):
            names += count
            if wrong:
                failed += 1
                print(f"seed {seed}: {wrong}", flush=True)
    print(f"{options.count - failed} passed, {failed} failed, {names} names compared")
    if failed or names < 200 * options.count:
        sys.exit(1)


if __name__ == "__main__":
    main()
