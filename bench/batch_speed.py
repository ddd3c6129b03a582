"""What `kolvex batch` takes on top of the extractions that it runs, side by side with other ways to run them; and how
long `kolvex batch collect` takes for a large batch.

    batch_speed.py [--inputs N] [--runs N] [--rows N] [--records N] [--only overhead|scaling|collect]

Every way runs the same small database, N copies of it, one after the other. The floor is a program that only starts the
extraction again and again; the columns are the best of several rounds, taken in turn, in milliseconds for each input.
Then the batch runs them one after the other and two side by side, in turn: how much faster two cores are.
Then a batch of many inputs is made up, as complete as a real one, and collected.

Needs a build with the preset release and KOLVEX_BENCH, or its programs in the directory KOLVEX_BIN; xargs and GNU parallel are
measured where they are installed.
"""
import argparse
import json
import os
import pathlib
import re
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
BIN = pathlib.Path(os.environ.get("KOLVEX_BIN", ROOT / "build/release/bin"))


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
    packed = [*batch, "--pack"]
    found = {"bare loop": (lambda: numbered("bare"), [BIN / "spawn_loop", "list", directory / "extract.cfg", directory / "bare", BIN / "quarnish"]),
             "kolvex batch": (lambda: fresh("out"), batch),
             "kolvex batch, all done": (lambda: None, batch),
             "kolvex batch --pack": (lambda: fresh("out"), packed),
             "the same, all done": (lambda: None, packed),
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


def measure_scaling(directory, count, rounds):
    """Medians of rounds in turn, since what else the machine does changes from round to round."""
    if not (directory / "list").exists():
        make_inputs(directory, count)
    clocks = {1: [], 2: []}
    for _ in range(rounds):
        for jobs, found in clocks.items():
            shutil.rmtree(directory / "out", ignore_errors=True)
            found.append(spent([BIN / "batch", "--from", "list", "--config", "extract.cfg", "--out", "out", "-j", jobs], cwd=directory)[0])
    one, two = map(statistics.median, clocks.values())
    print(f"-j 1 {1e3 * one / count:.3f} ms, -j 2 {1e3 * two / count:.3f} ms each: {one / two:.2f} times as fast")


def crc32c(data):
    """CRC32C, bit by bit as RFC 3720 defines it."""
    crc = 0xFFFFFFFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = crc >> 1 ^ (0x82F63B78 if crc & 1 else 0)
    return crc ^ 0xFFFFFFFF


def make_batch(directory, rows, records):
    """What a batch of so many inputs leaves. One real run says what ids and settings are like; the inputs need not be there."""
    paths = [f"/nowhere/{row:07}/job.odb" for row in range(rows)]
    (directory / "list").write_text("".join(path + "\n" for path in paths))
    (directory / "extract.cfg").write_text("ODB EXTRACTIONS\nEXTRACT_FIELD\nEXTRACT_ALL\n")
    events = subprocess.run([BIN / "batch", "--from", "list", "--config", "extract.cfg", "--out", "big", "-k", "--json"], cwd=directory,
                            check=False, capture_output=True, text=True).stdout
    ids = {event["input"]: event["id"] for event in map(json.loads, events.splitlines()) if event["event"] == "failed"}
    settings = (directory / "big/.kolvex-batch/settings").read_text().strip()
    version = subprocess.run([BIN / "batch", "--version"], check=True, capture_output=True, text=True).stdout.split()[-1]
    texts = ["".join(f"Step_1__Frame_{record // 10 + 1}__SET_{record % 10}__S__mises__max\t{1000 / (kind + record + 1):.6g}\n"
                     for record in range(records)).encode() for kind in range(10)]
    sums = [f"{len(text)} {crc32c(text):08x}" for text in texts]
    for number, path in enumerate(paths):
        place, kind = directory / "big" / ids[path], number % 10
        (place / "params.txt").write_bytes(texts[kind])
        (place / "paramsdone.txt").write_bytes(b"Done\n")
        (place / "status").write_text(f"state\tdone\ninput\t{path}\nfile\t1 2 3 {path}\nsettings\t{settings}\nversion\t{version}\n"
                                      f"tries\t1\nseconds\t0.01\nended\t1\nparams\t{sums[kind]}\nend\t\n")


def highest_memory(command, directory):
    """MB that a program has had resident at once. What wait4() says counts this process in, which starts it."""
    child = subprocess.Popen([str(word) for word in command], cwd=directory)
    highest = 0
    while child.poll() is None:
        status = pathlib.Path(f"/proc/{child.pid}/status").read_text(encoding="utf-8")
        found = re.search(r"VmHWM:\s+(\d+) kB", status)
        highest = max(highest, int(found.group(1)) / 1e3 if found else 0)
        time.sleep(0.01)
    return highest


def measure_collect(directory, rows, records, rounds):
    make_batch(directory, rows, records)
    print(f"{'':26}{'clock':>10}{'processor':>12}{'memory':>10}{'file':>10}    s, MB for {rows} inputs with {records} records")
    for form in ("csv", "json", "sqlite", "csv --long"):
        command = [BIN / "batch", "collect", "big", "-o", "table", "--to", *form.split()]
        took = min(spent(["/usr/bin/env", *command], cwd=directory) for _ in range(rounds))
        memory = highest_memory(command, directory)
        print(f"{form:26}{took[0]:10.2f}{took[1]:12.2f}{memory:10.0f}{(directory / 'table').stat().st_size / 1e6:10.0f}")
    print("{:26}{:10.2f}{:12.2f}".format("status", *min(spent([BIN / "batch", "status", "big"], cwd=directory) for _ in range(rounds))))


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--inputs", type=int, default=1000)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--rows", type=int, default=100000)
    parser.add_argument("--records", type=int, default=50)
    parser.add_argument("--only", choices=["overhead", "scaling", "collect"])
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kolvex-bench.") as directory:
        if options.only in (None, "overhead"):
            measure_overhead(pathlib.Path(directory), options.inputs, options.runs)
        if options.only in (None, "scaling"):
            measure_scaling(pathlib.Path(directory), options.inputs, options.runs)
        if options.only in (None, "collect"):
            measure_collect(pathlib.Path(directory), options.rows, options.records, options.runs)


if __name__ == "__main__":
    main()
