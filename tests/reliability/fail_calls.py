"""Lets calls that the programs make fail, one at a time or from one on: a clean error, never a crash, never a marker or a
final name on something incomplete. Of allocations, those of the programs' own code; of HDF5, all calls but those that
close something; of the system, those that read, write and deal with processes, interrupted (EINTR) and broken (EIO).
The programs are built with calls that fail on order.

    fail_calls.py [--all] allocations|hdf5|system [CASE ...]

Without --all: the first hundred calls and a fixed share of the others."""
import argparse
import concurrent.futures
import errno
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import threading

from cases import CASES, Case, Extraction, Import, Outcome, PackedImport
from support import BIN, FAILED
from test_results import ResultsTest

# Runs per case and mode, where not all are asked for.
RUNS = 300
FIRST = 100

WHAT = ("allocations", "hdf5", "system")
SOURCES = pathlib.Path(__file__).resolve().parents[2]


class BrokenExtraction(Extraction):
    """An extraction that ends with an exception of its own, so that calls fail while that is told."""
    name = "broken-extraction"

    def __init__(self, scratch):
        self.home = pathlib.Path(scratch) / self.name
        self.home.mkdir()
        ResultsTest.broken_database(self)
        (self.home / "config.txt").write_text("ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD\n")
        self.inputs = {path.name: path.read_bytes() for path in self.home.iterdir()}
        self.complete = {}

    def path(self, name):
        return self.home / name

    def check(self, directory, outcome):
        wrong = self.crash(outcome)
        if outcome.status == 0 and FAILED not in outcome.err:
            wrong.append("it ended well with a broken database")
        if (directory / "paramsdone.txt").exists() and b"cannot be removed" not in outcome.err:
            wrong.append("a marker stands after an extraction of a broken database")
        return wrong


def imported(kind, scratch):
    """The bytes of a database that an import writes."""
    with tempfile.TemporaryDirectory(dir=scratch) as directory:
        return kind(directory).complete["job.odb"]


class PackedExtraction(Extraction):
    """An extraction of packed numbers, with sets."""
    name = "packed-extraction"
    is_without_hdf5 = True
    command = [str(BIN / "quarnish"), "-odb", "job", "-config", "config.txt"]

    def make_inputs(self, directory):
        (directory / "config.txt").write_text("ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS EXTRACT_HISTORY\n")
        (directory / "job.odb").write_bytes(imported(PackedImport, directory.parent))


class Verification(Case):
    """A sound database: it may be refused, but only with a reason."""
    name = "verification"
    command = [str(BIN / "verify"), "job.odb"]

    def make_inputs(self, directory):
        (directory / "job.odb").write_bytes(imported(Import, directory.parent))

    def check(self, directory, outcome):
        wrong = self.crash(outcome)
        if outcome.status not in (0, 1):
            wrong.append(f"its status is {outcome.status}")
        if outcome.status == 1 and b"job.odb" not in outcome.err and b"out of memory" not in outcome.err:
            wrong.append(f"its message does not say what failed: {outcome.err!r}")
        return wrong


class PackedVerification(Verification):
    name = "packed-verification"

    def make_inputs(self, directory):
        (directory / "job.odb").write_bytes(imported(PackedImport, directory.parent))


class DamagedVerification(Verification):
    """A damaged one, which must not be called sound."""
    name = "damaged-verification"

    def run_in(self, directory):
        return {}

    def make_inputs(self, directory):
        database = bytearray(imported(Import, directory.parent))
        database[len(database) // 2] ^= 1
        (directory / "job.odb").write_bytes(bytes(database))

    def check(self, directory, outcome):
        return super().check(directory, outcome) + (["it is called sound"] if outcome.status == 0 else [])


def unlisted():
    """Calls of HDF5 in the sources that can not be made to fail, though they should."""
    closing = re.compile(r"H5[A-Z]close|H5Dvlen_reclaim|H5E|H5dont_atexit|H5open")
    listed = set(re.findall(r"FAILING\((\w+),", (SOURCES / "tests/reliability/hdf5_calls.inc").read_text()))
    called = {name for path in (SOURCES / "src/hdf5").glob("*.*")
              for name in re.findall(r"\b(H5[A-Z][a-z]\w+)\(", path.read_text())}
    return sorted(name for name in called - listed if not closing.match(name))


def run(what, case, directory, **environment):
    """A run of the programs whose calls fail, and how many calls it has made, those of the programs that it starts too."""
    case.fill(directory)
    count = directory.with_suffix(".count")
    count.write_bytes(bytes(8))
    program = BIN / f"failing_{what}" / pathlib.Path(case.command[0]).name
    process = subprocess.run([program, *case.command[1:]], cwd=directory,
                             env={**os.environ, **environment, "KOLVEX_COUNT": str(count)}, stdin=subprocess.DEVNULL,
                             stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=60, check=False)
    return process, int.from_bytes(count.read_bytes(), "little")


def chosen(number, is_all):
    """The calls to fail."""
    if is_all or number <= RUNS:
        return list(range(1, number + 1))
    stride = (number - FIRST) // (RUNS - FIRST) + 1
    return [*range(1, FIRST + 1), *range(FIRST + 1, number + 1, stride)]


def try_all(what, case, scratch, orders, jobs, number):
    local = threading.local()

    def one(order):
        if not hasattr(local, "directory"):
            local.directory = pathlib.Path(tempfile.mkdtemp(dir=scratch))
        try:
            process, _ = run(what, case, local.directory, KOLVEX_FAIL=order, KOLVEX_ERRNO=str(number))
        except subprocess.TimeoutExpired:
            return order, ["it hangs"]
        # Which calls come behind the renaming is not known, so a new database is accepted.
        return order, case.check(local.directory, Outcome(process.returncode, process.stderr, is_renamed=True))

    failures = 0
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for order, wrong in pool.map(one, orders):
            for text in wrong:
                failures += 1
                print(f"{case.name}: call {order} ({errno.errorcode[number]}): {text}")
    return failures


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--all", action="store_true", help="every call")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("what", choices=WHAT)
    parser.add_argument("cases", nargs="*")
    options = parser.parse_args()
    kinds = [*CASES, BrokenExtraction]
    failures = 0
    if options.what != "allocations":
        kinds += [PackedExtraction, Verification, PackedVerification, DamagedVerification]
    if options.what == "hdf5":
        for name in unlisted():
            failures += 1
            print(f"{name} is called, but cannot be made to fail")
    with tempfile.TemporaryDirectory(prefix="kolvex-calls.") as scratch:
        for kind in kinds:
            if kind.most_points or (options.cases and kind.name not in options.cases):
                continue
            case = kind(scratch)
            _, number = run(options.what, case, pathlib.Path(scratch) / "counted")
            if (number == 0) != (options.what == "hdf5" and case.is_without_hdf5):
                failures += 1
                print(f"{case.name}: {number} calls were met")
            orders = [f"{n}{further}" for n in chosen(number, options.all) for further in ("", "+")]
            reasons = [errno.EIO, errno.EINTR] if options.what == "system" else [errno.ENOMEM]
            for reason in reasons:
                # Who is interrupted for ever tries for ever.
                tried = orders if reason != errno.EINTR else [order for order in orders if "+" not in order]
                wrong = try_all(options.what, case, scratch, tried, options.jobs, reason)
                print(f"{case.name}: {number} calls, {errno.errorcode[reason]}, {len(tried)} runs, {wrong} wrong")
                failures += wrong
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
