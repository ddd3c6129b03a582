"""What `kolvex batch` takes on top of the extractions that it runs, side by side with other ways to run them; and how
long `kolvex batch collect` takes for a large batch.

    batch_speed.py [--inputs N] [--runs N] [--rows N] [--records N]

Every way runs the same small database, N copies of it, one after the other. The floor is a program that only starts the
extraction again and again; the columns are the best of several rounds, taken in turn, in milliseconds for each input.
Needs a build with the preset release and KOLVEX_BENCH; xargs and GNU parallel are measured where they are installed.
"""
import argparse
import os
import pathlib
import resource
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
BIN = ROOT / "build/release/bin"


def spent(command, **options):
    """Seconds on the clock, and of the processor, of a command and all that it starts."""
    before, begin = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
    subprocess.run([str(word) for word in command], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options)
    clock, after = time.perf_counter() - begin, resource.getrusage(resource.RUSAGE_CHILDREN)
    return clock, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def make_inputs(directory, count):
    sys.path[:0] = [str(ROOT / "tests/endtoend"), str(ROOT / "tests/importers")]
    os.environ["KOLVEX_BIN"] = str(BIN)
    from test_import_program import WHOLE

    (directory / "job.frd").write_text(WHOLE)
    subprocess.run([BIN / "import", "job.frd", "-o", "first.odb"], cwd=directory, check=True, capture_output=True)
    data = (directory / "first.odb").read_bytes()
    for number in range(count):
        (directory / f"{number}.odb").write_bytes(data)
    (directory / "list").write_text("".join(f"{directory}/{number}.odb\n" for number in range(count)))
    (directory / "extract.cfg").write_text("ODB EXTRACTIONS\nEXTRACT_FIELD\nEXTRACT_ALL\n")


def ways(directory, count):
    """{name: (what makes it ready, the command)}."""
    script = f'mkdir -p loop/$1 && cd loop/$1 && {BIN}/quarnish -odb {directory}/$1.odb -config {directory}/extract.cfg > log 2>&1'

    def fresh(name):
        shutil.rmtree(directory / name, ignore_errors=True)
        (directory / name).mkdir()

    def numbered(name):
        fresh(name)
        for number in range(count):
            (directory / name / str(number)).mkdir()

    batch = [BIN / "batch", "--from", "list", "--config", "extract.cfg", "--out", "out", "-j", "1"]
    found = {"bare loop": (lambda: numbered("bare"), [BIN / "spawn_loop", "list", directory / "extract.cfg", directory / "bare", BIN / "quarnish"]),
             "kolvex batch": (lambda: fresh("out"), batch),
             "kolvex batch, all done": (lambda: None, batch),
             "shell loop": (lambda: fresh("loop"), ["sh", "-c", f"i=0; while [ $i -lt {count} ]; do ({script.replace('$1', '$i')}); i=$((i+1)); done"]),
             "xargs": (lambda: fresh("loop"), ["sh", "-c", f"seq 0 {count - 1} | xargs -n 1 -P 1 sh -c '{script}' sh"])}
    if shutil.which("parallel"):
        found["GNU parallel"] = (lambda: fresh("loop"), ["sh", "-c", f"seq 0 {count - 1} | parallel -j 1 '{script.replace('$1', '{}')}'"])
    return found


def measure_overhead(directory, count, rounds):
    make_inputs(directory, count)
    best = {}
    for _ in range(rounds):
        for name, (prepare, command) in ways(directory, count).items():
            prepare()
            took = spent(command, cwd=directory)
            best[name] = tuple(map(min, best.get(name, took), took))
    floor = best["bare loop"]
    print(f"{'':26}{'clock':>10}{'above floor':>14}{'processor':>12}{'above floor':>14}    ms for each of {count} inputs, -j 1")
    for name, (clock, processor) in best.items():
        row = (clock, clock - floor[0], processor, processor - floor[1])
        print("{:26}{:10.3f}{:14.3f}{:12.3f}{:14.3f}".format(name, *(1e3 * seconds / count for seconds in row)))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--inputs", type=int, default=1000)
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kolvex-bench.") as directory:
        measure_overhead(pathlib.Path(directory), options.inputs, options.runs)


if __name__ == "__main__":
    main()
