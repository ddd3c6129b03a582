"""What the tests of the import of VTK share: importing, extracting, comparing."""
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[2] / "endtoend"))
from support import BIN, ROOT, ProgramTest  # noqa: E402,F401

HERE = pathlib.Path(__file__).resolve().parent
SWITCHES = ("EXTRACT_ALL", "EXTRACT_FIELD", "EXTRACT_FIELD_SETS", "EXTRACT_FIELD_COMPONENTS", "EXTRACT_HISTORY")


class VtkTest(ProgramTest):
    def run_import(self, *arguments, status=0):
        for old in self.directory.rglob("*.odb"):
            old.unlink()
        run = self.run_program(*arguments, program="import")
        self.assertEqual(run.status, status, run.err)
        if status != 0:
            self.assertFalse(list(self.directory.rglob("*.odb*")), run.err)
        return run

    def records(self, *arguments):
        """{record: text} of what is imported with these arguments."""
        self.last = self.run_import(*arguments, "-o", "out.odb")
        run = self.run_program("-odb", "out", "-config", self.config(*SWITCHES))
        self.assertEqual((run.status, run.text("paramsdone.txt")), (0, b"Done\n"), run.err)
        lines = run.text("params.txt").decode().splitlines()
        records = dict(line.split("\t") for line in lines)
        self.assertEqual(len(records), len(lines), "a record name twice")
        return records

    def assert_extremes(self, records, expected):
        """The whole-model records of fields are these, and those of sets among them."""
        self.assertTrue(expected, "there is nothing to compare")
        missing = expected.keys() - records.keys()
        self.assertFalse(missing, sorted(missing)[:5])
        for name, value in expected.items():
            self.assertTrue(abs(float(records[name]) - value) <= 2e-5 * abs(value) + 1e-12, (name, records[name], value))

    def assert_whole(self, records, expected):
        """The same where there are no sets: no other records of fields."""
        self.assert_extremes(records, expected)
        self.assertEqual({name for name in records if "__Frame_" in name}, set(expected))

    def assert_error(self, pattern, *arguments):
        error = self.run_import(*arguments, "-o", "out.odb", status=1).err.splitlines()[-1]
        self.assertRegex(error, pattern)
