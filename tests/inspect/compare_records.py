#!/usr/bin/python3
"""Holds what `show --records` and `params --odb` say of records against params.txt, on the random databases of tests/oracle.

Usage: compare_records.py --programs DIRECTORY [--count 100] [--seed 1] [--jobs 2]

Every database is taken as it is and with a number in place of each NaN and infinity. Of the second the names must be the
same, in the same order; of the first names may be missing in params.txt, of sets alone: a set without a number has no
records. The parts of each record must make its name, and `params` must give the parts of each name that stands in the file.
"""
import argparse
import json
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
    """A number in place of each that is none."""
    def visit(_, item):
        if isinstance(item, h5py.Dataset) and item.dtype.kind == "f" and item.size:
            rows = item[...]
            if not np.isfinite(rows).all():
                item[...] = np.where(np.isfinite(rows), rows, 1)

    with h5py.File(path, "r+") as file:
        file.visititems(visit)


def names_of_run(programs, directory):
    subprocess.run([programs / "quarnish", "-odb", "model.odb", "-config", "config.txt"], cwd=directory, capture_output=True, timeout=120,
                   check=True)
    lines = (directory / "params.txt").read_text(encoding="utf-8").split("\n")
    return [line.rpartition("\t")[0] for line in lines if line]


def answer(programs, directory, *arguments):
    run = subprocess.run([programs / "kolvex", *arguments], cwd=directory, capture_output=True, text=True, timeout=120, check=False)
    if run.returncode != 0:
        raise RuntimeError(f"{arguments}: {run.stderr}")
    return json.loads(run.stdout)


def cleaned(text):
    return text.replace("-", "_").replace(" ", "_")


def name_of(record):
    """The name that the parts of a record make."""
    if record["kind"] == "mass":
        return record["step"].replace("-", "_") + "__" + record["quantity"]
    step = cleaned(record["step"])
    if record["kind"] == "history":
        word = {"": "History", "max": "History_Max", "min": "History_Min"}[record.get("extreme", "")]
        return f"{step}__{word}__{cleaned(record['output'])}" + ("_" + record["label"] if "label" in record else "")
    region = cleaned((record["owner"] + "_" if "owner" in record else "") + record["set"]) if "set" in record else None
    parts = [step, f"Frame_{record['frame']}", region, cleaned(record["field"]), record.get("quantity"), record["extreme"]]
    return "__".join(part for part in parts if part is not None)


def parts_difference(record):
    name = name_of(record)
    # Over sets the engineering minimum of tensors of type 9 goes by the name of the minimum.
    if record["name"] in (name, name.removesuffix("__enggmin") + "__min" if "set" in record else name):
        return None
    return f"the parts of {record['name']} make {name}"


def first_difference(shown, written):
    for place, (a, b) in enumerate(zip(shown, written)):
        if a["name"] != b:
            return f"name {place + 1} is {a['name']}, expected {b}"
    if len(shown) != len(written):
        odd = shown[len(written)]["name"] if len(shown) > len(written) else written[len(shown)]
        return f"{len(shown)} names, expected {len(written)}; the first odd one is {odd}"
    return None


def missing_difference(shown, written):
    """What is shown and not written must be of sets."""
    left = iter(shown)
    skipped = []
    for name in written:
        for record in left:
            if record["name"] == name:
                break
            skipped.append(record)
        else:
            return f"{name} is written and not shown"
    return next((f"{record['name']} is not written" for record in skipped + list(left) if "set" not in record), None)


def taken_apart_difference(programs, directory, shown):
    """`params` with the run's configuration says what `show` says; without it less, but nothing else."""
    for options in (["--config", "config.txt"], []):
        rows = answer(programs, directory, "params", ".", "--to", "json", "--odb", "model.odb", *options)
        for record, row in zip(shown, rows, strict=True):
            del row["value"]
            if options and row != record or not row.items() <= record.items():
                return f"params{' with a configuration' if options else ''} says {row} of {record}"
    return None


def check_one(programs, directory, words, is_finite):
    (directory / "config.txt").write_text("\n".join(words), encoding="utf-8")
    written = names_of_run(programs, directory)
    shown = answer(programs, directory, "show", "model.odb", "--records", "config.txt", "--json")["records"]
    wrong = next(filter(None, map(parts_difference, shown)), None)
    wrong = wrong or (first_difference(shown, written) if is_finite else missing_difference(shown, written))
    if not wrong and is_finite and written and (directory / "paramsdone.txt").exists():
        wrong = taken_apart_difference(programs, directory, shown)
    return wrong, len(written)


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
            if is_finite:
                make_finite(directory / "model.odb")
            for title, words in configurations.items():
                wrong, count = check_one(programs, directory, words, is_finite)
                names += count
                if wrong:
                    return seed, f"{title}: {wrong}", names
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
