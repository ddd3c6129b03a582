#!/usr/bin/python3
"""Runs the solver on the example's deck, imports, extracts, and holds everything against the solver's own tables.

The deck must be what its generator makes; the database must hold every number of the .frd file; the records must agree
with the .frd and .dat files (check_example.py).
"""
import argparse
import os
import pathlib
import shutil
import subprocess
import sys

import numpy as np

import check_example

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "endtoend"))
from expanded import expanded  # noqa: E402

LUG = HERE.parents[1] / "examples" / "lug"
# Block names of the file, the field that each becomes, and the column of each component.
FIELDS = {"DISP": ("U", ["D1", "D2", "D3"]), "FORC": ("RF", ["F1", "F2", "F3"]), "PE": ("PEEQ", ["PE"]),
          "STRESS": ("S", ["SXX", "SYY", "SZZ", "SXY", "SZX", "SYZ"]),
          "TOSTRAIN": ("E", ["EXX", "EYY", "EZZ", "EXY", "EZX", "EYZ"]), "ERROR": ("S_ERROR", ["STR(%)"])}


# Sets of more than 1,000 integration points have no histories.
EXPECTED_ERRORS = "lug.dat:11: warning: stresses of RIM with 3840 rows, more than 1000, become fields without histories\n"


def run(*command, cwd, **options):
    process = subprocess.run([str(c) for c in command], cwd=cwd, capture_output=True, text=True, check=False, **options)
    if process.returncode != 0 or process.stderr not in ("", EXPECTED_ERRORS):
        sys.exit(f"{' '.join(map(str, command))}: status {process.returncode}\n{process.stdout}{process.stderr}")
    return process.stdout


def check_deck():
    made = run(sys.executable, LUG / "make_lug.py", cwd=HERE)
    if made != (LUG / "lug.inp").read_text():
        sys.exit("lug.inp is not what make_lug.py makes")


def rows_of(odb, step, field, frame):
    """{node: row} of a field in a frame, and the number of rows; rows of one node must be equal."""
    found, count = {}, 0
    group = step["fields"][field]
    for block in group["blocks"].values():
        frames = list(block["frames"]) if "frames" in block else list(group["frames"]) if "frames" in group else None
        slab = frame if frames is None else frames.index(frame)
        location = odb["locations"][block.attrs["location"].decode()]
        for node, row in zip(location["nodeLabels"][...], np.atleast_2d(block["data"][slab].T).T):
            if not np.array_equal(found.setdefault(int(node), row), row):
                sys.exit(f"{field} differs at node {node}")
            count += 1
    return found, count


def check_database(path, frd):
    """Every number of the result file is in the database, at its node, in its frame; tensors at every element's nodes."""
    numbers = 0
    with expanded(path) as odb:
        mesh = odb["assembly/instances/PART-1-1/mesh"]
        corners = sum(group["connectivity"].size for group in mesh["elements"].values())
        for step_number, increment, name, rows in check_example.read_frd(frd):
            field, columns = FIELDS[name]
            step = odb[f"steps/Step-{step_number}"]
            frame = list(step["frames/incrementNumber"][...]).index(increment)
            found, count = rows_of(odb, step, field, frame)
            tensor = len(columns) == 6
            if count != (corners if tensor else len(rows)) or found.keys() != rows.keys():
                sys.exit(f"{field} of step {step_number}, frame {frame} has {count} rows")
            for node, row in rows.items():
                expected = np.array([row[c] for c in columns], dtype="f4")
                if not np.array_equal(found[node], expected):
                    sys.exit(f"{field} at node {node}: {found[node]}, expected {expected}")
                numbers += expected.size
        descriptions = [d.decode() for d in odb["steps/Step-2/frames/description"][...]]
        if descriptions != ["Increment 1: Step Time = 0.5000", "Increment 2: Step Time = 1.0000"]:
            sys.exit(f"frames are described as {descriptions}")
        if odb["steps/Step-1"].attrs["description"] != b"The pin pulls":
            sys.exit("the title of the step is missing")
        if set(odb["assembly/elementSets"]) != {"LUG", "RIM", "HEAD", "SHANK", "WATCHED-PARTS"}:
            sys.exit(f"element sets are {list(odb['assembly/elementSets'])}")
    print(f"{numbers} numbers of the result file are in the database")


def main():
    parser = argparse.ArgumentParser()
    for option in ("--ccx", "--bin", "--work"):
        parser.add_argument(option, required=True, type=pathlib.Path)
    options = parser.parse_args()
    options.bin, options.work = options.bin.resolve(), options.work.resolve()
    check_deck()
    shutil.rmtree(options.work, ignore_errors=True)
    options.work.mkdir(parents=True)
    for name in ("lug.inp", "extract.cfg"):
        shutil.copy(LUG / name, options.work)
    environment = dict(os.environ, OMP_NUM_THREADS="2")
    with open(options.work / "solver.log", "wb") as log:
        subprocess.run([options.ccx, "-i", "lug"], cwd=options.work, env=environment, stdout=log, stderr=log, check=True)
    print(run(options.bin / "kolvex", "import", "lug", cwd=options.work), end="")
    run(options.bin / "kolvex", "quarnish", "-odb", "lug", "-config", "extract.cfg", cwd=options.work)
    if (options.work / "paramsdone.txt").read_bytes() != b"Done\n":
        sys.exit("the marker is missing")
    check_database(options.work / "lug.odb", options.work / "lug.frd")
    sys.argv[1:] = [f"--{kind}={options.work / name}" for kind, name in
                    (("deck", "lug.inp"), ("frd", "lug.frd"), ("dat", "lug.dat"), ("params", "params.txt"))]
    check_example.main()


if __name__ == "__main__":
    main()
