"""The runs that faults are put into, and what has to hold after each: extractions with a catalog, without one and of an
old database (through an upgraded copy), and imports, each in a directory that holds the results of an earlier run."""
import pathlib
import re
import subprocess

import h5py
import numpy as np
from bricks import bricks
from same_file import same_file
from support import BIN, FAILED, Database
from test_import_program import DECK, ELEMENTS, HEADING, NODES, RESULTS, WHOLE
from test_upgrade import old_database

# What an earlier run has left.
OLD_RESULT = b"Old__Frame_1__NT__max\t1\n"
MARKER = b"Done\n"

CONFIGURATION = "ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS EXTRACT_MASS EXTRACT_HISTORY\n"


def contents(path):
    """The bytes of a regular file, None where there is none."""
    return path.read_bytes() if path.is_file() else None


class Outcome:
    """How a run ended."""

    def __init__(self, status, err, is_renamed, is_killed=False, is_silenced=False, call=""):
        self.status = status  # negative: the signal
        self.err = err
        self.is_renamed = is_renamed  # whether the result may have had its name already when the fault came
        self.is_killed = is_killed  # by us
        self.is_silenced = is_silenced  # messages may be missing
        self.call = call  # the system call that failed, as strace shows it


class Case:
    name = ""
    # A large one runs at length only, with this many of its system calls failing, evenly spread.
    most_points = None
    # Which thread makes which call may differ from run to run.
    has_threads = False
    # Whether HDF5 has no part in it.
    is_without_hdf5 = False
    # System calls that it must have made, or the new code was not there to be tried.
    makes = ()
    inputs = {}  # name -> bytes
    earlier = {}  # likewise

    def __init__(self, scratch):
        """Makes the inputs and runs once without a fault, for the complete results."""
        self.home = pathlib.Path(scratch) / self.name
        self.home.mkdir()
        self.make_inputs(self.home)
        self.inputs = {path.name: path.read_bytes() for path in self.home.iterdir()}
        self.complete = self.run_in(pathlib.Path(scratch) / (self.name + ".complete"))

    def fill(self, directory):
        """The directory as it is before a run."""
        directory.mkdir(exist_ok=True)
        for path in directory.iterdir():
            path.unlink()
        for name, content in {**self.inputs, **self.earlier}.items():
            (directory / name).write_bytes(content)

    def run_in(self, directory):
        """A run without a fault; what it leaves by name."""
        self.fill(directory)
        subprocess.run(self.command, cwd=directory, check=True, stdout=subprocess.DEVNULL)
        return {path.name: path.read_bytes() for path in directory.iterdir()}

    def crash(self, outcome):
        if outcome.status < 0 and not outcome.is_killed:
            return [f"died of signal {-outcome.status}: {outcome.err!r}"]
        return []


class Extraction(Case):
    name = "extraction"
    command = [str(BIN / "quarnish"), "-odb", "model", "-config", "config.txt"]
    earlier = {"params.txt": OLD_RESULT, "paramsdone.txt": MARKER}

    def __init__(self, scratch):
        super().__init__(scratch)
        # A configuration that cannot be opened is announced and leaves every switch off.
        self.inputs, inputs = {**self.inputs, "config.txt": b""}, self.inputs
        self.without_configuration = self.run_in(pathlib.Path(scratch) / (self.name + ".off"))["params.txt"]
        self.inputs = inputs

    def make_inputs(self, directory):
        (directory / "config.txt").write_text(CONFIGURATION)
        with Database(directory / "model.odb") as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            odb.file["assembly/nodeSets/TIP/I-1"] = np.array([3], "i4")
            step = odb.step("Step-1", increments=(1, 2))
            odb.field(step, "NT", 2, [("nodes", np.array([[20, 30, 40], [1, 2, 1234567]], "f4"))])

    def check(self, directory, outcome):
        """What is wrong after a run, one text each."""
        wrong = self.crash(outcome)
        result, marker = contents(directory / "params.txt"), contents(directory / "paramsdone.txt")
        accepted = [self.complete["params.txt"]]
        if "openat(" in outcome.call and '"config.txt"' in outcome.call:
            accepted.append(self.without_configuration)
        is_new = marker == MARKER and result in accepted
        is_untouched = marker == MARKER and result == OLD_RESULT
        if marker is not None and not is_new and not is_untouched:
            wrong.append(f"the marker {marker!r} stands beside {len(result or b'')} bytes that are not the complete result")
        has_failed = outcome.is_killed or outcome.is_silenced or outcome.status != 0 or FAILED in outcome.err
        if not has_failed and not is_new:
            wrong.append("it ended well without a complete result and its marker")
        if FAILED in outcome.err and marker is not None:
            wrong.append("it says that it failed, beside a marker")
        # Its own end, as against one of the system's before it began.
        has_given_up = outcome.status == 1 and not outcome.is_killed and not outcome.is_silenced
        if has_given_up and marker is not None and b"paramsdone.txt of an earlier run cannot be removed" not in outcome.err:
            wrong.append("it gave up beside the marker of an earlier run")
        if outcome.status == 1 and not outcome.err and not outcome.is_silenced:
            wrong.append("it failed without a message")
        return wrong + self.leftovers(directory, outcome)

    def leftovers(self, directory, outcome):
        """Names that no run is to leave, unless it was killed; even then the next run clears them away."""
        found = {path.name for path in directory.iterdir()} - set(self.complete)
        if not found:
            return []
        if not outcome.is_killed:
            return [f"it left {', '.join(sorted(found))}"]
        subprocess.run(self.command, cwd=directory, check=False, capture_output=True)
        left = {path.name: path.read_bytes() for path in directory.iterdir()}
        return [] if self.is_complete(left) else [f"after {found} the next run leaves {sorted(left)}"]

    def is_complete(self, left):
        return set(left) == set(self.complete) and all(same_file(left[name], self.complete[name]) for name in left)


class CataloguedExtraction(Extraction):
    """A database that ends with a catalog, with rows stored once, sets and histories."""
    name = "catalogued-extraction"
    is_without_hdf5 = True
    makes = ("flock", "pread64")

    def make_inputs(self, directory):
        (directory / "config.txt").write_text(CONFIGURATION)
        with Database(directory / "plain.odb") as odb:
            odb.location("nodes", "nodal", nodeLabels=range(1, 9))
            odb.file["assembly/nodeSets/TIP/I-1"] = np.array([3, 5], "i4")
            odb.file["parts/P/nodeSets/ENDS"] = np.array([1, 8], "i4")
            step = odb.step("Step-1", increments=(1, 2), mass=2.5)
            odb.field(step, "NT", 2, [("nodes", np.array([[20, 30, 20, 30] * 2, [1, 1234567, 1, 1234567] * 2], "f4"))])
            step["history/Node 3/outputs/U1"] = np.array([[0, 0], [1, 0.5]], "f4")
        subprocess.run([BIN / "rewrite", "plain.odb", "model.odb", "index"], cwd=directory, check=True)
        (directory / "plain.odb").unlink()
        with h5py.File(directory / "model.odb") as odb:
            if "catalog" not in odb or "rowOf" not in odb["locations/0"]:
                raise RuntimeError("the database is not what is to be tried")


class LargeExtraction(Extraction):
    """One block that is large enough to be read by two threads."""
    name = "large-extraction"
    has_threads = True

    def make_inputs(self, directory):
        (directory / "config.txt").write_text("ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD\n")
        rows = np.arange(1 << 20, dtype="f4").reshape(1, -1)
        with Database(directory / "model.odb") as odb:
            odb.location("nodes", "nodal", nodeLabels=np.arange(rows.size))
            odb.field(odb.step("Step-1"), "NT", 2, [("nodes", rows)])

    def check(self, directory, outcome):
        wrong = super().check(directory, outcome)
        is_thread = outcome.call.startswith("clone") and "CLONE_VFORK" not in outcome.call
        if is_thread and not outcome.is_killed and outcome.err:
            wrong.append(f"it cannot do without a second thread: {outcome.err!r}")
        return wrong


class Upgrade(Extraction):
    name = "upgrade"
    command = [str(BIN / "quarnish"), "-odb", "old", "-config", "config.txt"]

    def make_inputs(self, directory):
        (directory / "config.txt").write_text(CONFIGURATION)
        old_database(directory / "old.odb", increments=2)

    def check(self, directory, outcome):
        copy = contents(directory / "upgradedOdb.odb")
        wrong = super().check(directory, outcome)
        if copy is not None and not same_file(copy, self.complete["upgradedOdb.odb"]):
            wrong.append("the upgraded copy is not complete")
        return wrong


class Import(Extraction):
    name = "import"
    command = [str(BIN / "import"), "job"]
    makes = ("fallocate", "pwrite64", "fsync", "rename")

    def __init__(self, scratch):
        Case.__init__(self, scratch)

    def make_inputs(self, directory):
        (directory / "job.frd").write_text(WHOLE)
        (directory / "job.inp").write_text(DECK)
        with Database(directory / "job.odb") as odb:
            odb.step("Earlier")

    def check(self, directory, outcome):
        wrong = self.crash(outcome)
        database = contents(directory / "job.odb")
        is_older = database == self.inputs["job.odb"]
        is_new = not is_older and database is not None and same_file(database, self.complete["job.odb"])
        if not is_older and not is_new:
            wrong.append("what stands under the final name is neither the older nor the new database")
        if outcome.status == 0 and not is_new:
            wrong.append("it ended well without a new database")
        if outcome.status > 0 and is_new and not outcome.is_renamed:
            wrong.append("it failed and the older database is gone")
        if outcome.status > 0 and not outcome.is_silenced and not self.says_where(outcome.err):
            wrong.append(f"its message does not say what failed: {outcome.err!r}")
        return wrong + self.leftovers(directory, outcome)

    @staticmethod
    def says_where(err):
        return re.search(rb"job\.(odb|frd|inp|sta|dat)|standard output|out of memory|error while loading shared libraries", err) is not None


class PackedImport(Import):
    """The same with packed numbers, which HDF5 treats as chunks."""
    name = "packed-import"
    command = [str(BIN / "import"), "job", "--compress"]


class IndexedImport(Import):
    """One whose rows are stored once, with sets."""
    name = "indexed-import"

    def make_inputs(self, directory):
        super().make_inputs(directory)
        (directory / "job.frd").write_text(bricks(5))
        (directory / "job.inp").write_text("*NSET,NSET=END\n5,8,11\n*ELSET,ELSET=ALL,GENERATE\n10,50,10\n*ELSET,ELSET=FIRST\n10\n")


class LargeImport(Import):
    """So much structure that HDF5 writes some of it long before the end."""
    name = "large-import"
    most_points = 20
    STEPS = 1500

    def make_inputs(self, directory):
        super().make_inputs(directory)
        steps = "".join(RESULTS.replace("           1           1          \n", f"           1{step:12d}          \n")
                        for step in range(1, self.STEPS + 1))
        (directory / "job.frd").write_text(HEADING + NODES + ELEMENTS + steps + " 9999\n")


CASES = (Extraction, CataloguedExtraction, LargeExtraction, Upgrade, Import, PackedImport, IndexedImport, LargeImport)
