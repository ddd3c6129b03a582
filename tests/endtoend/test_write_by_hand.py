"""The program that writes a database by hand, and what the extraction makes of it."""
import subprocess
import sys

from support import ROOT, ProgramTest


class WriteByHandTest(ProgramTest):
    def test_the_extraction_reads_what_the_example_writes(self):
        subprocess.run([sys.executable, str(ROOT / "examples/write_by_hand.py"), str(self.path("bar.odb"))], check=True)
        self.config("EXTRACT_MASS", "EXTRACT_HISTORY", "MINMAX_HISTORY", "EXTRACT_FIELD_SETS", "EXTRACT_ALL")
        run = self.run_program("-odb", "bar.odb", "-config", "config.txt")
        self.assertEqual((run.status, run.err), (0, b""))
        lines = run.text("params.txt").decode().splitlines()
        self.assertEqual(lines[:5], ["Pull_1__Mass\t0.25", "Pull_1__MassCenter\t(1, 0, 0)",
                                     "Pull_1__History__U1_3\t((0, 0), (1, 0.6))", "Pull_1__History_Max__U1_3\t0.6",
                                     "Pull_1__History_Min__U1_3\t0"])
        records = dict(line.split("\t") for line in lines)
        self.assertEqual(len(records), len(lines))
        self.assertEqual(records["Pull_1__Frame_1__S__mises__max"], "100")
        self.assertEqual(records["Pull_1__Frame_1__S__mises__min"], "80")
        self.assertEqual(records["Pull_1__Frame_1__ROOT__S__mises__min"], "100")
        self.assertEqual(records["Pull_1__Frame_1__U__mag__max"], "1")
        self.assertEqual(records["Pull_1__Frame_1__TIP__U__mag__min"], "1")
        self.assertEqual(records["Pull_1__Frame_0__U__mag__max"], "0")
        self.assertEqual(records["Pull_1__Frame_1__NT__max"], "50")
        self.assertEqual(records["Pull_1__Frame_1__ROOT__NT__min"], "30")
        self.assertEqual(records["Pull_1__Frame_1__TIP__NT__max"], "25")

    def test_the_other_example_finds_the_rows_of_a_node(self):
        subprocess.run([sys.executable, str(ROOT / "examples/write_by_hand.py"), str(self.path("bar.odb"))], check=True)
        for node, rows in (("2", "0\t20\n1\t30\n"), ("3", "0\t20\n1\t25\n")):
            run = subprocess.run([sys.executable, str(ROOT / "examples/stress_of_a_node.py"), "bar.odb", node, "NT"], cwd=self.directory,
                                 capture_output=True, text=True, check=True)
            self.assertEqual(run.stdout, "Pull-1\n" + rows)

    def test_the_format_page_has_the_schema_of_the_catalog(self):
        schema = (ROOT / "src/odbstore/catalog.fbs").read_text().strip()
        self.assertIn(f"```\n{schema}\n```\n", (ROOT / "docs/database-format.md").read_text())

    def test_without_a_name_it_says_how_it_is_used(self):
        for arguments in ((), ("--help",), ("a.odb", "b.odb")):
            run = subprocess.run([sys.executable, str(ROOT / "examples/write_by_hand.py"), *arguments], cwd=self.directory,
                                 capture_output=True, text=True, check=False)
            self.assertEqual((run.returncode, run.stdout), (1, ""))
            self.assertRegex(run.stderr, r"\AWrites a small output database[^\n]*\n\nUsage: write_by_hand.py bar.odb [^\n]*\n\Z")
            self.assertEqual(list(self.directory.iterdir()), [])

    def test_it_stays_short(self):
        source = (ROOT / "examples/write_by_hand.py").read_text()
        self.assertLess(len(source.splitlines()), 76)
