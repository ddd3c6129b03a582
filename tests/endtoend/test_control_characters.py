"""Control characters in what files say: refused in names, escaped in messages and on terminals, kept where programs read."""
import os
import pty
import subprocess
import sys

import h5py
import numpy as np

from support import BIN, FAILED, ROOT, Database, ProgramTest, set_attributes, small_database, text

sys.path.insert(0, str(ROOT / "tests/importers"))
from test_import_program import DECK, WHOLE  # noqa: E402

# What would begin another record, clear a screen in two ways, and ring.
EVIL = ("X\nStep_1__Frame_1__NT__max\t0", "X\x1b[2J", "X\u009b2J", "\x07")


def names_of(odb, name):
    """Every way in which a name can get into a record, one database each."""
    def step():
        odb.step(name)

    def link(path, in_step=True):
        def make():
            if in_step:
                odb.step("Step-1")
            odb.file.create_group(path + "/" + name)
        return make

    def node_set(path):
        def make():
            odb.file[path.replace("NAME", name)] = np.array([1], "i4")
        return make

    def field():
        odb.location("nodes", "nodal", nodeLabels=[1])
        odb.field(odb.step("Step-1"), name, 2, [("nodes", np.zeros((1, 1), "f4"))])

    def output():
        odb.step("Step-1")["history/Node 1/outputs/" + name] = np.zeros((1, 2), "f4")

    def label():
        region = odb.step("Step-1").create_group("history/Node 1")
        set_attributes(region, set=name)
        region["outputs/U1"] = np.zeros((1, 2), "f4")

    def packed():
        group = odb.file.create_group("parts/P/packedNodeSets")
        odb.file.attrs["layout"] = 3
        group["names"] = text([name])
        group["first"] = np.array([0, 1], "i8")
        group["labels"] = np.array([1], "i4")

    return {"step": step, "part": link("parts"), "instance": link("assembly/instances"), "region": link("steps/Step-1/history"),
            "field": field, "output": output, "label": label, "packed set": packed, "set": node_set("assembly/nodeSets/NAME/I-1"),
            "set of a part": node_set("parts/P/elementSets/NAME"), "set of an instance": node_set("assembly/instances/I-1/nodeSets/NAME")}


class Names(ProgramTest):
    def test_no_reader_takes_them(self):
        self.config("EXTRACT_ALL EXTRACT_FIELD_SETS EXTRACT_HISTORY EXTRACT_MASS")
        with Database(self.path("probe.odb")) as odb:
            kinds = list(names_of(odb, "X"))
        for kind in kinds:
            for name in EVIL:
                with self.subTest(kind=kind, name=name):
                    with Database(self.path("job.odb")) as odb:
                        names_of(odb, name)[kind]()
                    run = self.run_program("-odb", "job", "-config", "config.txt")
                    self.assertRegex(run.err, rb"^job\.odb: /.*control character\n" + FAILED.replace(b"(", rb"\(").replace(b")", rb"\)") + b"$")
                    self.assertIsNone(run.text("params.txt"))
                    verdict = self.run_program("job.odb", program="verify")
                    self.assertEqual(verdict.status, 1)
                    self.assertIn(b"control character", verdict.err)

    def test_nor_are_they_upgraded(self):
        self.config("EXTRACT_ALL EXTRACT_FIELD")
        for name in EVIL:
            with self.subTest(name), h5py.File(self.path("old.odb"), "w") as file:
                file.attrs["layout"] = 1
                file.create_group("steps/" + name)
            run = self.run_program("-odb", "old", "-config", "config.txt")
            self.assertRegex(run.err, rb"^old\.odb: .*control character\nODB Application")
            self.assertIsNone(run.text("upgradedOdb.odb"))

    def test_an_import_makes_blanks_of_them_and_says_so(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK + "*NSET, NSET=A\x1b[2JB\n1\n*SURFACE, NAME=C\x07, TYPE=NODE\n1\n")
        run = self.run_program("job", program="import")
        self.assertEqual(run.status, 0, run.err)
        self.assertRegex(run.err, rb'job\.inp:\d+: warning: the name "A\\x1b\[2JB" has control characters, which become blanks\n')
        self.assertRegex(run.err, rb'job\.inp:\d+: warning: the name "C\\x07" has control characters, which become blanks\n')
        self.assertNotRegex(run.err + run.out, rb"[\x00-\x09\x0b-\x1f\x7f]")
        with h5py.File(self.path("job.odb")) as odb:
            names = [n.decode() for n in odb["assembly/packedNodeSets/names"][()]]
        self.assertIn("A [2JB", names)
        self.assertEqual(self.run_program("job.odb", program="verify").status, 0)


class Messages(ProgramTest):
    def test_names_of_included_files_are_escaped(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", "*INCLUDE, INPUT=no\x1b[2Jfile.inc\n" + DECK)
        run = self.run_program("job", program="import")
        self.assertEqual(run.status, 0)
        self.assertIn(b"job.inp:1: warning: the included file no", run.err)
        self.assertNotIn(b"\x1b", run.err)

    def test_names_of_files_are_escaped(self):
        name = "evil\x1b[2J\n\u009b"
        self.write(name + ".odb", "no database")
        shown = b"evil\\x1b[2J\\x0a\\xc2\\x9b.odb"
        self.config("EXTRACT_ALL")
        run = self.run_program("-odb", name, "-config", "config.txt")
        self.assertEqual(run.err, shown + b": is not a database: it is not an HDF5 file\n" + FAILED)
        self.assertTrue(self.run_program(name + ".odb", program="verify").err.startswith(shown + b": "))
        run = self.run_program("-odb", name + "2", "-config", "config.txt")
        self.assertEqual(run.err, b"**ERROR** output database  evil\\x1b[2J\\x0a\\xc2\\x9b2.odb does not exist\n\n")
        self.assertIn(shown, self.run_program(name + ".odb", program="import").err)
        self.assertEqual(self.run_program("no\x1bcommand", program="kolvex").err,
                         b"kolvex: 'no\\x1bcommand' is not a kolvex command. See 'kolvex --help'.\n")
        self.assertNotIn(b"\x1b", self.run_program("--no\x1boption", program="import").err)

    def test_lines_of_configurations_are_escaped(self):
        small_database(self.path("job.odb"))
        self.config("PERCENTAGE\x1b[2J 5")
        run = self.run_program("-odb", "job", "-config", "config.txt")
        self.assertEqual((run.status, run.err), (1, b"**ERROR** no value for PERCENTAGE in the line: PERCENTAGE\\x1b[2J 5\n"))

    def test_findings_are_escaped(self):
        with Database(self.path("job.odb")) as odb:
            odb.file["parts/P/nodeSets/X\x1b[2J"] = np.zeros(1)
        run = self.run_program("job.odb", program="verify")
        self.assertEqual(run.status, 1)
        self.assertIn(b"X\\x1b[2J", run.err)
        self.assertNotIn(b"\x1b", run.err)


class Progress(ProgramTest):
    """Lines of progress are read by programs: their bytes stay, but on a terminal."""
    DESCRIPTION = "Increment\x1b[2J 1\u009b"

    def setUp(self):
        super().setUp()
        small_database(self.path("job.odb"))
        with h5py.File(self.path("job.odb"), "r+") as odb:
            step = odb["steps/Step-1"]
            del step["frames/description"]
            step["frames/description"] = text([self.DESCRIPTION])
            region = step.create_group("history/Node 1")
            set_attributes(region, description="Node\x07 1")
            region["outputs/U1"] = np.zeros((1, 2), "f4")
        self.config("EXTRACT_ALL EXTRACT_FIELD EXTRACT_HISTORY")
        self.arguments = ("-odb", "job", "-config", "config.txt")

    def test_they_stay_as_they_are_for_programs(self):
        run = self.run_program(*self.arguments)
        self.assertEqual(run.out, ("Processing Step: Step-1\nProcessing History Region: Node\x07 1\n"
                                   f"Processing Frame: {self.DESCRIPTION}\n").encode())

    def test_they_are_escaped_on_a_terminal(self):
        leader, follower = pty.openpty()
        process = subprocess.run([BIN / "quarnish", *self.arguments], cwd=self.directory, stdout=follower, check=True, timeout=60)
        os.close(follower)
        shown = os.read(leader, 4096)
        os.close(leader)
        self.assertEqual(process.returncode, 0)
        self.assertEqual(shown.replace(b"\r\n", b"\n"),
                         b"Processing Step: Step-1\nProcessing History Region: Node\\x07 1\n"
                         b"Processing Frame: Increment\\x1b[2J 1\\xc2\\x9b\n")
