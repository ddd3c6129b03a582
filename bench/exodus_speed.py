#!/usr/bin/python3
"""Measures `kolvex import` on large Exodus II files, each form of netCDF, against `dd conv=fsync` on the same file.

Usage: exodus_speed.py [--bin DIRECTORY] [--size MEGABYTES] [--runs 5] [--directory DIR]

The files hold a block of bricks in two element blocks, displacements and temperatures at the nodes, stresses and two scalars
of the elements, in so many time steps that they have the size asked for. Import and dd run in turn, with the file in the page
cache; the table shows medians.
"""
import argparse
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import numpy as np

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/importers"))
from exodus_files import Exodus  # noqa: E402
from import_speed import bricks  # noqa: E402

TENSOR = ("xx", "yy", "zz", "xy", "yz", "zx")
FORMS = (("classic", "NETCDF3_64BIT_OFFSET", "f8"), ("classic, floats", "NETCDF3_64BIT_OFFSET", "f4"), ("netCDF-4", "NETCDF4", "f8"))


def write(path, form, real, megabytes, count=60):
    nodes, connectivity = bricks(count)
    half = len(connectivity) // 2
    step = (4 * len(nodes) + 8 * len(connectivity)) * int(real[1])
    steps = max(1, int(megabytes * 1e6 / step))
    random = np.random.default_rng(1)
    with Exodus(path, form, real=real) as file:
        file.mesh(nodes, [("HEX8", connectivity[:half]), ("HEX8", connectivity[half:])])
        file.times(np.arange(steps))
        file.nodal(["disp_x", "disp_y", "disp_z", "temp"], random.normal(size=(4, 1, len(nodes))).repeat(steps, 1))
        file.elemental(["stress_" + c for c in TENSOR] + ["vonmises", "peeq"],
                       {(v, b): random.normal(size=(1, half if b == 1 else len(connectivity) - half)).repeat(steps, 0) for v in range(1, 9) for b in (1, 2)})


def seconds(command, directory):
    """How long a command takes."""
    begin = time.perf_counter()
    subprocess.run([str(c) for c in command], cwd=directory, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - begin


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=ROOT / "build/release/bin")
    parser.add_argument("--size", type=float, default=200)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--directory")
    options = parser.parse_args()
    options.bin = options.bin.resolve()
    print(f"{'form':<18}{'file, MB':>9}{'import, s':>11}{'dd, s':>8}{'import/dd':>11}{'database, MB':>14}")
    for name, form, real in FORMS:
        with tempfile.TemporaryDirectory(dir=options.directory) as directory:
            path = pathlib.Path(directory) / "job.e"
            write(path, form, real, options.size)
            path.read_bytes()
            times = {"import": [], "dd": []}
            for _ in range(options.runs):
                times["import"].append(seconds([options.bin / "import", "job.e", "-o", "job.odb"], directory))
                times["dd"].append(seconds(["dd", "if=job.e", "of=copy", "bs=1M", "conv=fsync"], directory))
            imported, copied = (statistics.median(times[what]) for what in ("import", "dd"))
            print(f"{name:<18}{path.stat().st_size / 1e6:>9.0f}{imported:>11.2f}{copied:>8.2f}{imported / copied:>11.2f}"
                  f"{os.path.getsize(directory + '/job.odb') / 1e6:>14.0f}", flush=True)


if __name__ == "__main__":
    main()
