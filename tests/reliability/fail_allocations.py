"""Lets the allocations of the programs' own code fail, one at a time or from one on: a clean error, never a crash, never
a marker or a final name on something incomplete. The programs are built with an operator new that fails on order.

    fail_allocations.py [--all] [CASE ...]

Without --all: the first hundred allocations and a fixed share of the others."""
import argparse
import concurrent.futures
import os
import pathlib
import subprocess
import sys
import tempfile
import threading

from cases import CASES, Extraction, Outcome
from support import BIN, FAILED
from test_results import ResultsTest

# Runs per case and mode, where not all are asked for.
RUNS = 300
FIRST = 100


class BrokenExtraction(Extraction):
    """An extraction that ends with an exception of its own, so that memory is short while that is told."""
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
        if (directory / "paramsdone.txt").exists() and (directory / "params.txt").read_bytes() != self.earlier["params.txt"]:
            wrong.append("a marker stands beside the results of a broken database")
        return wrong


def run(case, directory, **environment):
    case.fill(directory)
    program = BIN / (pathlib.Path(case.command[0]).name + "_failing_new")
    return subprocess.run([program, *case.command[1:]], cwd=directory, env={**os.environ, **environment},
                          stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=60,
                          check=False)


def allocations(case, directory):
    """How many a run makes that is left alone."""
    count = directory.with_suffix(".count")
    run(case, directory, KOLVEX_COUNT_NEW=str(count))
    return int(count.read_text(encoding="ascii"))


def chosen(number, is_all):
    """The allocations to fail."""
    if is_all or number <= RUNS:
        return list(range(1, number + 1))
    stride = (number - FIRST) // (RUNS - FIRST) + 1
    return [*range(1, FIRST + 1), *range(FIRST + 1, number + 1, stride)]


def try_all(case, scratch, orders, jobs):
    local = threading.local()

    def one(order):
        if not hasattr(local, "directory"):
            local.directory = pathlib.Path(tempfile.mkdtemp(dir=scratch))
        try:
            process = run(case, local.directory, KOLVEX_FAIL_NEW=order)
        except subprocess.TimeoutExpired:
            return order, ["it hangs"]
        # Which allocations come behind the renaming is not known, so a new database is accepted.
        return order, case.check(local.directory, Outcome(process.returncode, process.stderr, is_renamed=True))

    failures = 0
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for order, wrong in pool.map(one, orders):
            for text in wrong:
                failures += 1
                print(f"{case.name}: allocation {order}: {text}")
    return failures


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--all", action="store_true", help="every allocation")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("cases", nargs="*")
    options = parser.parse_args()
    failures = 0
    with tempfile.TemporaryDirectory(prefix="kolvex-memory.") as scratch:
        for kind in (*CASES, BrokenExtraction):
            if kind.most_points or (options.cases and kind.name not in options.cases):
                continue
            case = kind(scratch)
            number = allocations(case, pathlib.Path(scratch) / "counted")
            orders = [f"{n}{further}" for n in chosen(number, options.all) for further in ("", "+")]
            wrong = try_all(case, scratch, orders, options.jobs)
            print(f"{case.name}: {number} allocations, {len(orders)} runs, {wrong} wrong")
            failures += wrong
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
