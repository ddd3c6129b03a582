#!/usr/bin/python3
"""Measures what a user pays from a solver's results to params.txt: import and extraction, against a copy of the results
that goes to the disk and against numpy; many sets, many histories, small runs; rows stored once against a row for each place.

Usage: results_to_records.py [--bin DIRECTORY] [--size MEGABYTES] [--runs 5] [--directory DIR]

Programs run in turn, several times; tables show medians of processor time (user and system) and ratios of one run.
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

import h5py
import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import databases  # noqa: E402
import import_speed  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
INVARIANTS = "ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS TENSOR_INVARIANTS\n"
COMPONENTS = "ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_COMPONENTS\n"


def aside(function, *arguments, **options):
    """A call in a process of its own, so that this one stays small."""
    process = multiprocessing.Process(target=function, args=arguments, kwargs=options)
    process.start()
    process.join()
    if process.exitcode != 0:
        sys.exit(f"{function.__name__} failed")


def write_results(*arguments, **options):
    aside(import_speed.write_results, *arguments, **options)


def peak_memory(command, directory):
    """The most memory that a command had in use, in MB. A small process of its own starts it: until the command runs, a
    child counts with the memory of its parent."""
    script = ("import resource, subprocess, sys\n"
              "subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL, check=True)\n"
              "print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)")
    answer = subprocess.run(["/usr/bin/python3", "-S", "-c", script] + [str(c) for c in command], cwd=directory,
                            capture_output=True, text=True, check=True)
    return int(answer.stdout) / 1024


def outputs(command):
    """The names of the files that an import ("-o NAME") or dd ("of=NAME") writes."""
    words = [str(word) for word in command]
    return [name for option, name in zip(words, words[1:]) if option == "-o"] + [w[3:] for w in words if w.startswith("of=")]


def run(command, directory):
    """Processor seconds, seconds on the clock, and megabytes of writes."""
    before = time.perf_counter()
    process = subprocess.Popen([str(c) for c in command], cwd=directory, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    errors = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    if status != 0 or b"**ERROR**" in errors or b"exited with error" in errors:
        sys.exit(f"{command}: {errors.decode()}")
    return usage.ru_utime + usage.ru_stime, time.perf_counter() - before, usage.ru_oublock * 512 / 1e6


class Bench:
    def __init__(self, options, directory):
        self.directory, self.runs, self.bin = directory, options.runs, options.bin.resolve()
        self.size = options.size * 1_000_000

    def extraction(self, database, configuration):
        (self.directory / "config.txt").write_text(configuration)
        return [self.bin / "quarnish", "-odb", database, "-config", "config.txt"]

    def medians(self, **commands):
        """{name: (processor seconds, seconds, megabytes written)} of commands that take turns. A first round does not
        count: memory that the machine has not used yet costs more."""
        taken = {name: [] for name in commands}
        for number in range(self.runs + 1):
            for name, command in commands.items():
                # Room that is given back just before is the cheapest; all who write get it alike.
                for written in outputs(command):
                    (self.directory / written).unlink(missing_ok=True)
                figures = run(command, self.directory)
                if number > 0:
                    taken[name].append(figures)
        return {name: [statistics.median(column) for column in zip(*all_of_it)] for name, all_of_it in taken.items()}


def results(bench):
    frd = bench.directory / "job.frd"
    for binary in (True, False):
        write_results(frd, bench.size, ["U", "RF", "NT", "S"], binary)
        size = frd.stat().st_size / 1e6
        subprocess.run(["cat", frd], stdout=subprocess.DEVNULL, check=True)
        kinds = {"copy": ["dd", f"if={frd}", "of=copy", "bs=1M", "conv=fsync", "status=none"],
                 "import_": [bench.bin / "import", "job.frd", "--no-deck", "-o", "job.odb"],
                 "extraction": bench.extraction("job", COMPONENTS)}
        if binary:
            kinds["numpy"] = ["/usr/bin/python3", HERE / "by_numpy.py", "job.frd"]
        found = bench.medians(**kinds)
        database = (bench.directory / "job.odb").stat().st_size / 1e6
        print(f"\n{'binary' if binary else 'ASCII'} .frd of {size:.0f} MB, database {database:.0f} MB ({database / size:.2f})")
        for name, (cpu, clock, written) in found.items():
            memory = peak_memory(kinds[name], bench.directory)
            print(f"  {name:12} {cpu:7.3f} s processor, {clock:7.3f} s, {memory:6.1f} MB memory, {written:7.1f} MB written")
        print(f"  import / copy, processor time: {found['import_'][0] / found['copy'][0]:.2f}; "
              f"import: {size / found['import_'][0]:.0f} MB/s of one core")
        if binary:
            both = found["import_"][0] + found["extraction"][0]
            print(f"  import and extraction / numpy, processor time: {both / found['numpy'][0]:.2f}")
            unindexed(bench)


def unindexed(bench):
    """The stresses of job.odb again, a row for each place."""
    (bench.directory / "job.inp").write_text("*NSET,NSET=N\n1\n*ELSET,ELSET=ALL,GENERATE\n1,216000\n")
    importing = [bench.bin / "import", "job.frd", "--no-mass"]
    run(importing + ["-o", "job.odb"], bench.directory)
    with h5py.File(bench.directory / "job.odb") as odb, \
            h5py.File(bench.directory / "plain.odb", "w", libver=("v110", "v110")) as plain:
        plain.attrs["layout"] = 3
        for name in ("assembly", "parts"):
            odb.copy(name, plain)
        steps = plain.create_group("steps", track_order=True)
        step = next(step for step in odb["steps"].values() if "S" in step["fields"])
        location = odb["locations"][step["fields/S/blocks/0"].attrs["location"].decode()]
        to = plain.create_group("locations/0")
        to.attrs.update({name: value for name, value in location.attrs.items() if name != "storedRows"})
        for name in ("nodeLabels", "elementLabels"):
            to[name] = location[name][()]
        copied = steps.create_group("Step-1")
        odb.copy(step["frames"], copied)
        field = copied.create_group("fields/S")
        field.attrs.update(step["fields/S"].attrs)
        block = field.create_group("blocks/0")
        block.attrs["location"] = np.array(b"0", h5py.string_dtype("utf-8", 1))
        stored, rows = step["fields/S/blocks/0/data"], location["rowOf"][()].astype("i8")
        data = block.create_dataset("data", (stored.shape[0], len(rows), 6), "f4")
        for frame in range(stored.shape[0]):
            data[frame] = stored[frame][rows]
    run(importing + ["--field", "S", "-o", "stored.odb"], bench.directory)
    for what, configuration in (("over the model with components", COMPONENTS),
                                ("nine invariants over one set of all", INVARIANTS)):
        found = bench.medians(indexed=bench.extraction("stored", configuration),
                              plain=bench.extraction("plain", configuration))
        cpu = {name: figures[0] for name, figures in found.items()}
        print(f"  S {what}: {cpu['indexed']:.3f} s indexed, {cpu['plain']:.3f} s with a row for each place: "
              f"{cpu['indexed'] / cpu['plain']:.2f}")
    (bench.directory / "plain.odb").unlink()


def many_sets(bench):
    aside(databases.stress, bench.directory / "sets.odb", 1, 1_000_000, sets=20_000, size=50)
    lines = ["*NSET,NSET=N\n1\n"] + [f"*ELSET,ELSET=SET{i}\n{i % 216_000 + 1},{(7 * i) % 216_000 + 1}\n" for i in range(20_000)]
    (bench.directory / "small.inp").write_text("".join(lines))
    write_results(bench.directory / "small.frd", 1, ["NT"], True)
    subprocess.run([bench.bin / "import", "small", "--no-mass", "-o", "small.odb"], cwd=bench.directory, check=True, capture_output=True)
    found = bench.medians(catalog=bench.extraction("small", "ODB EXTRACTIONS\nEXTRACT_MASS\n"),
                          scan=bench.extraction("sets", "ODB EXTRACTIONS\nEXTRACT_MASS\n"), true=["/bin/true"])
    print("\nopening a database of 20,000 sets, start to exit")
    for name, (cpu, clock, _) in found.items():
        print(f"  {name:12} {1e3 * cpu:7.1f} ms processor, {1e3 * clock:7.1f} ms")


def many_histories(bench):
    """A printed table of 1,300 nodes: 3,900 histories."""
    nodes = range(1, 1301)
    write_results(bench.directory / "printed.frd", 200_000, ["NT"], True, side=10)
    (bench.directory / "printed.inp").write_text("*NSET,NSET=TOP,GENERATE\n1,1300\n*STEP\n*STATIC\n1.,1.\n"
                                                 "*NODE PRINT,NSET=TOP\nU\n*NODE FILE\nNT\n*END STEP\n")
    rows = "".join(f"{node:10d}{0.1 * node:14.6E}{0.2 * node:14.6E}{-0.1 * node:14.6E}\n" for node in nodes)
    (bench.directory / "printed.dat").write_text("\n                        S T E P       1\n\n\n"
                                                 "                                INCREMENT     1\n\n\n"
                                                 f" displacements (vx,vy,vz) for set TOP and time  {1:.7E}\n\n" + rows)
    importing = [bench.bin / "import", "printed", "--no-mass", "--history-limit"]
    run(importing + ["2000", "-o", "printed.odb"], bench.directory)
    found = bench.medians(importing=importing + ["2000", "-o", "printed.odb"], without=importing + ["0", "-o", "none.odb"],
                          extraction=bench.extraction("printed", "ODB EXTRACTIONS\nEXTRACT_HISTORY\n"))
    print(f"\n{3 * len(nodes)} histories")
    for name, (cpu, clock, _) in found.items():
        print(f"  {name:12} {1e3 * cpu:7.1f} ms processor, {1e3 * clock:7.1f} ms")


def small(bench):
    write_results(bench.directory / "tiny.frd", 5_000, ["NT"], True, side=3)
    subprocess.run([bench.bin / "import", "tiny", "--no-deck", "-o", "tiny.odb"], cwd=bench.directory, check=True, capture_output=True)
    command, runs = bench.extraction("tiny", COMPONENTS), 200
    taken = {"quarnish": [], "/bin/true": []}
    for _ in range(runs):
        taken["quarnish"].append(run(command, bench.directory)[0])
        taken["/bin/true"].append(run(["/bin/true"], bench.directory)[0])
    ours, true = statistics.mean(taken["quarnish"]), statistics.mean(taken["/bin/true"])
    size = (bench.directory / "tiny.odb").stat().st_size
    print(f"\na database of {size} bytes: {1e3 * ours:.2f} ms of processor time, /bin/true {1e3 * true:.2f}: {ours / true:.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=pathlib.Path("build/release/bin"))
    parser.add_argument("--size", type=int, default=1000)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--directory", type=pathlib.Path)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kolvex-bench.", dir=options.directory) as directory:
        bench = Bench(options, pathlib.Path(directory))
        small(bench)
        many_sets(bench)
        many_histories(bench)
        results(bench)


if __name__ == "__main__":
    main()
