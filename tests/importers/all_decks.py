#!/usr/bin/python3
"""Runs the solver's own test decks, imports what it writes, extracts everything, and holds the records against the file.

Usage: all_decks.py [--decks DIRECTORY] [--seconds 10] [--jobs 1] [DECK...]

KOLVEX_BIN names the directory of the programs, KOLVEX_CCX the solver. Decks that the solver does not finish in time, or
crashes on, are imported as far as it came. Of every deck the import and the extraction must not crash, no warning may come
that is not known here, every number in the database must be that of the result file, and the extremes in params.txt those
that a reading of its own finds there. Prints a line per deck that fails and a summary; the status is 1 when one has failed,
77 when there are no decks.
"""
import argparse
import collections
import concurrent.futures
import gzip
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

import numpy as np

import dat_check
import frd_check
from expanded import expanded

CONFIG = """ODB EXTRACTIONS
EXTRACT_MASS EXTRACT_HISTORY MINMAX_HISTORY EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS EXTRACT_FIELD_COMPONENTS
TENSOR_INVARIANTS ENGINEERING_MAX ENGINEERING_MIN
PERCENTAGE = 5
"""
# What the import may have to say of a deck of these, and why.
KNOWN_MESSAGES = [
    r"no (node|element) of the results is in ",  # unused nodes, and elements that write no results
    r"warning: empty sets: ",
    r"labels that no (node|element) of the deck has are left out of the sets ",
    r": note: the (node|element) set .* becomes ",  # names that records cannot tell apart
    r"restarts an earlier run and has no mesh",
    r"the file is truncated here",  # the solver stopped
    r"the file holds no results",  # it had nothing to write
    r"the set \S+ is not known",  # decks that misspell a set
    r" has no rows and is left out",  # flow networks announce what they do not compute
    r" has values at \d+ nodes that belong to no element",  # elements that a later step adds
    r"the density of \S+ depends on temperature",  # masses take the first one
    r"its times are not those of the results",  # a status file of restarts and substeps
    r" with \d+ rows, more than 1000, become fields without histories",  # large sets
    r"has frames with equal numbers; they are numbered from 1",  # a second procedure in a step
]
KNOWN_FAILURES = [
    r"the file ends before its model is complete",  # the solver stopped before its first result
    r"there is no model",  # the same
    r"the file is empty",
    r"job\.frd: error: No such file or directory",
]
EXTREMES = {"max": np.max, "min": np.min}
TENSOR_COMPONENTS = ["11", "22", "33", "12", "13", "23"]
TOLERANCE = 1e-5


def section_forces_from(deck):
    """The step in which a deck first asks for section forces, None where none does."""
    step = 0
    for line in deck.read_text(encoding="latin-1").upper().splitlines():
        line = line.replace(" ", "")
        step += line.startswith("*STEP")
        if re.match(r"\*(ELFILE|ELEMENTOUTPUT)\b.*,SECTIONFORCES", line):
            return step
    return None


def elements_without_tensors(deck):
    """Labels of springs, dashpots, gaps, masses and their like."""
    labels = set()
    is_open = False
    for line in deck.read_text(encoding="latin-1").upper().splitlines():
        if line.startswith("**"):
            continue
        if line.startswith("*"):
            is_open = re.match(r"\*ELEMENT\b.*TYPE\s*=\s*(SPRING|DASHPOT|GAP|MASS|DCOUP|D\b)", line) is not None
        elif is_open:
            labels.add(int(line.split(",")[0]))
    return labels


def steps_of(deck):
    """How many steps a deck has, None where an included file may have more."""
    text = deck.read_text(encoding="latin-1").upper()
    if re.search(r"^\*\s*INCLUDE", text, re.MULTILINE):
        return None
    return len(re.findall(r"^\*STEP", text, re.MULTILINE))


def quantities(field, columns, rows):
    """Pairs of the name of a quantity and its values for the rows of a field."""
    if len(columns) == 1:
        return [(field, rows[:, 0])]
    if len(columns) == 3:
        names = ["1", "2", "3"] if field not in ("CDIS", "CSTR") else []
        # In single precision, as the extraction does it: squares of the smallest numbers vanish.
        lengths = np.sqrt((rows[:, 0] ** 2 + rows[:, 1] ** 2 + rows[:, 2] ** 2).astype("f4"))
        return ([(f"{field}__mag", lengths)] +
                [(f"{field}__{name}", rows[:, i]) for i, name in enumerate(names)])
    return [(f"{field}__{name}", rows[:, i]) for i, name in enumerate(TENSOR_COMPONENTS)]


def expected_extremes(results, odb):
    """Of every record of the whole model its values in the order of the frames."""
    expected = collections.defaultdict(list)
    with_tensors = {node for nodes in results.elements_with_tensors().values() for node in nodes}
    places = collections.Counter()
    for (step, _), blocks in frd_check.frames_of(results.blocks).items():
        frame = places[step]
        increment = odb[f"steps/Step-{step}/frames/incrementNumber"][frame]
        places[step] += 1
        for block in blocks:
            for field, columns in block.mapped():
                rows = np.array(block.rows, dtype="f8")[:, columns].astype("f4")
                if len(columns) == 6:
                    rows = rows[[label in with_tensors for label in block.labels]]
                for name, values in quantities(field, columns, rows) if len(rows) else []:
                    for extreme, of in EXTREMES.items():
                        name_of_record = f"Step_{step}__Frame_{increment}__{name}__{extreme}".replace("-", "_")
                        expected[name_of_record.replace(" ", "_")].append(of(values))
    return expected


def steps_of(deck):
    """How many steps a deck has that goes on with no earlier run, None for one that does."""
    text = deck.read_text(encoding="latin-1").upper().replace(" ", "")
    return None if re.search(r"^\*RESTART,READ", text, re.M) else len(re.findall(r"^\*STEP\b", text, re.M))


def check_steps_and_names(deck, database, records):
    """The steps are those of the deck, and no two histories have a record of the same name."""
    with expanded(database) as odb:
        numbers = [int(name.removeprefix("Step-")) for name in odb["steps"]]
    count = steps_of(deck)
    if count is not None and not set(numbers) <= set(range(1, count + 1)):
        raise AssertionError(f"there are the steps {numbers}, the deck has {count}")
    for name, values in records.items():
        if "__History_" in name and len(values) > 1:
            raise AssertionError(f"{len(values)} histories are called {name}")


def read_records(path):
    records = collections.defaultdict(list)
    for line in path.read_text().splitlines():
        name, _, value = line.partition("\t")
        records[name].append(value)
    return records


def compare_extremes(results, odb, records):
    """How many records are equal; raises AssertionError at the first that is not."""
    compared = 0
    for name, values in expected_extremes(results, odb).items():
        found = records.get(name, [])
        if len(found) != len(values):
            raise AssertionError(f"{name}: {len(values)} records are expected, {len(found)} are there")
        for value, text in zip(values, found):
            if np.isnan(value):
                continue
            if not (float(text) == value or abs(float(text) - value) <= TOLERANCE * abs(value)):
                raise AssertionError(f"{name}: {text}, but the result file has {value:g}")
            compared += 1
    return compared


class DeckRun:
    """One deck on its way through the programs."""

    def __init__(self, deck, directory, seconds):
        self.deck = deck
        self.directory = directory
        self.seconds = seconds

    def program(self, *arguments):
        process = subprocess.run([os.path.join(os.environ["KOLVEX_BIN"], arguments[0]), *arguments[1:]],
                                 cwd=self.directory, stdin=subprocess.DEVNULL, capture_output=True, timeout=300,
                                 check=False)
        return process.returncode, process.stderr.decode(errors="replace").splitlines()

    def solve(self):
        # Decks include each other.
        for file in self.deck.parent.iterdir():
            (self.directory / file.name).symlink_to(file)
        (self.directory / "job.inp").symlink_to(self.deck)
        try:
            subprocess.run([os.environ["KOLVEX_CCX"], "-i", "job"], cwd=self.directory, stdin=subprocess.DEVNULL,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=self.seconds, check=False,
                           env={**os.environ, "OMP_NUM_THREADS": "1"})
        except subprocess.TimeoutExpired:
            pass

    def run(self):
        """What came of it: "imported" with the number of records that are equal, or why there is nothing to import."""
        self.solve()
        records = self.import_and_extract("job.odb", "--no-dat")
        if records is None:
            return "nothing to import", 0
        known = section_forces_from(self.deck), elements_without_tensors(self.deck)
        frd_check.compare(self.directory / "job.frd", self.directory / "job.odb", *known)
        with expanded(self.directory / "job.odb") as odb:
            results = frd_check.ResultFile(self.directory / "job.frd", *known)
            self.check_steps(odb)
            compared = compare_extremes(results, odb, records)
        return "imported", compared + self.check_printed()

    def check_steps(self, odb):
        """A run that came to its end has the steps of its deck."""
        steps = steps_of(self.deck)
        is_whole = (self.directory / "job.frd").read_bytes().rstrip().endswith(b" 9999")
        if is_whole and steps is not None and len(odb["steps"]) != steps:
            raise AssertionError(f"the deck has {steps} steps, the database {len(odb['steps'])}")

    def import_and_extract(self, database, *options):
        """What both programs say has to be known; the records."""
        status, messages = self.program("import", "job", "-o", database, *options)
        unknown = [m for m in messages if not any(re.search(known, m) for known in KNOWN_MESSAGES + KNOWN_FAILURES)]
        if unknown or status not in (0, 1):
            raise AssertionError(f"import ended with {status}: " + " / ".join(unknown or messages))
        if status == 1:
            return None
        (self.directory / "config.txt").write_text(CONFIG)
        status, messages = self.program("quarnish", "-odb", database, "-config", "config.txt")
        if status != 0 or messages or not (self.directory / "paramsdone.txt").exists():
            raise AssertionError(f"the extraction ended with {status}: " + " / ".join(messages))
        records = read_records(self.directory / "params.txt")
        twice = [name for name, values in records.items() if len(values) > 1]
        if twice:
            raise AssertionError(f"{len(twice)} names of records occur twice: {twice[0]}")
        return records

    def check_printed(self):
        """The same with the printed tables: what they add is theirs, and the rest is what it was."""
        printed = self.directory / "job.dat"
        if not printed.exists() or printed.stat().st_size == 0:
            return 0
        records = self.import_and_extract("printed.odb")
        with expanded(self.directory / "printed.odb") as odb, expanded(self.directory / "job.odb") as plain:
            for name, step in plain["steps"].items():
                for field, group in step["fields"].items():
                    for block, data in group["blocks"].items():
                        same = odb["steps"][name]["fields"][field]["blocks"][block]["data"]
                        if not np.array_equal(same[()], data["data"][()], equal_nan=True):
                            raise AssertionError(f"{name} {field} is another one beside printed tables")
            check_steps_and_names(self.deck, self.directory / "printed.odb", records)
            return dat_check.compare(printed, odb, records)


def run_deck(deck, seconds):
    """The outcome of a deck, the number of records that were compared, and what failed."""
    with tempfile.TemporaryDirectory(prefix="kolvex-deck.") as name:
        try:
            return (*DeckRun(deck, pathlib.Path(name), seconds).run(), "")
        except (AssertionError, subprocess.TimeoutExpired, ValueError, KeyError, StopIteration) as error:
            return "failed", 0, f"{type(error).__name__}: {error}"


def unpack(source, target):
    """Copies the decks of a directory, many of which are packed, and what they include."""
    for file in source.iterdir() if source.is_dir() else ():
        if file.suffix == ".gz" and not file.name.endswith(".ref.gz"):
            (target / file.stem).write_bytes(gzip.decompress(file.read_bytes()))
        elif file.suffix == ".inp":
            shutil.copy(file, target)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--decks", type=pathlib.Path, default="/usr/share/doc/calculix-ccx-test/examples/test",
                        help="where the decks are")
    parser.add_argument("--seconds", type=float, default=10, help="that the solver has for a deck")
    parser.add_argument("--jobs", type=int, default=1, help="decks that run at the same time")
    parser.add_argument("names", nargs="*", metavar="DECK", help="decks to run, without .inp; all by default")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="kolvex-decks.") as name:
        directory = pathlib.Path(name)
        unpack(options.decks, directory)
        decks = [directory / f"{deck}.inp" for deck in options.names] or sorted(directory.glob("*.inp"))
        if not all(deck.exists() for deck in decks) or not decks:
            print(f"the decks are not in {options.decks}")
            return 77
        return run_decks(decks, options)


def run_decks(decks, options):
    """The status of the whole run."""
    outcomes = collections.Counter()
    records = 0
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for deck, (outcome, compared, error) in zip(decks, pool.map(lambda d: run_deck(d, options.seconds), decks)):
            outcomes[outcome] += 1
            records += compared
            if error:
                print(f"{deck.name}: {error}", flush=True)
    print(", ".join(f"{count} {outcome}" for outcome, count in outcomes.items()) + f"; {records} records are equal")
    return 1 if outcomes["failed"] or records == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
