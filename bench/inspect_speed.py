#!/usr/bin/python3
"""Measures what looking into a database costs: `kolvex show` of a large one that has a catalog, against /bin/true; the names of
records and `kolvex check` with 20,000 sets; names taken apart.

Usage: inspect_speed.py [--bin DIRECTORY] [--size MEGABYTES] [--runs 21] [--directory DIR]

Programs run in turn; tables show medians of seconds on the clock, start to exit, and ratios of one run.
"""
import argparse
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from results_to_records import write_results  # noqa: E402

EVERYTHING = ("ODB EXTRACTIONS\nEXTRACT_FIELD EXTRACT_ALL EXTRACT_FIELD_SETS EXTRACT_FIELD_COMPONENTS\nTENSOR_INVARIANTS ENGINEERING_MAX "
              "ENGINEERING_MIN PERCENTAGE = 1\n")


def seconds(command, directory):
    before = time.perf_counter()
    done = subprocess.run([str(c) for c in command], cwd=directory, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False)
    # 3: there are remarks.
    if done.returncode not in (0, 3):
        sys.exit(f"{command}: {done.stderr.decode()}")
    return time.perf_counter() - before


def medians(runs, directory, **commands):
    taken = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            taken[name].append(seconds(command, directory))
    return {name: statistics.median(times) for name, times in taken.items()}


def import_results(program, directory, name, size, fields, deck):
    write_results(directory / f"{name}.frd", size, fields, True)
    (directory / f"{name}.inp").write_text(deck)
    subprocess.run([program, "import", name, "--no-mass"], cwd=directory, check=True, capture_output=True)
    (directory / f"{name}.frd").unlink()


def large(program, directory, megabytes, runs):
    import_results(program, directory, "large", megabytes * 1_000_000, ["S", "U"], "*ELSET,ELSET=TOP\n1,2,3\n")
    database = directory / "large.odb"
    found = medians(runs, directory, true=["/bin/true"], show=[program, "show", "large"], json=[program, "show", "large", "--json"])
    print(f"a database of {database.stat().st_size / 1e9:.1f} GB with a catalog")
    for name, taken in found.items():
        print(f"  {name:8} {1e3 * taken:8.2f} ms {taken / found['true']:8.1f} x /bin/true")
    database.unlink()


def many_sets(program, directory, runs):
    sets = "".join(f"*ELSET,ELSET=SET{i}\n{i % 216_000 + 1},{(7 * i) % 216_000 + 1}\n" for i in range(20_000))
    import_results(program, directory, "sets", 60_000_000, ["S"], "*NSET,NSET=N\n1\n" + sets)
    (directory / "e.cfg").write_text(EVERYTHING)
    command = [program, "show", "sets", "--records", "e.cfg"]
    names = subprocess.run(command, cwd=directory, check=True, capture_output=True, text=True).stdout.split()
    some = names[::max(1, len(names) // 12_000)]
    (directory / "params.txt").write_text("".join(f"{name}\t1\n" for name in some))
    (directory / "paramsdone.txt").write_text("Done\n")
    found = medians(max(3, runs // 7), directory, show=[program, "show", "sets"], records=command, check=[program, "check", "e.cfg", "sets"],
                    params=[program, "params", ".", "--odb", "sets"])
    print(f"20,000 sets, {len(names)} records; params: {len(some)} of them")
    for name, taken in found.items():
        print(f"  {name:8} {1e3 * taken:8.1f} ms")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=pathlib.Path("build/release/bin"))
    parser.add_argument("--size", type=int, default=3000)
    parser.add_argument("--runs", type=int, default=21)
    parser.add_argument("--directory", type=pathlib.Path)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kolvex-bench.", dir=options.directory) as directory:
        program = options.bin.resolve() / "kolvex"
        large(program, pathlib.Path(directory), options.size, options.runs)
        many_sets(program, pathlib.Path(directory), options.runs)


if __name__ == "__main__":
    main()
