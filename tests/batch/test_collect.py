"""Tables of a batch, read back by Python's own csv, json and sqlite3; and its status."""
import csv
import io
import json
import os
import pty
import sqlite3
import subprocess
import unittest

from batch_support import BatchTest
from conditions import limit_of_file_size

# Writes what stands in the "database".
COPY = "#!/bin/sh\necho \"$2\" >> \"$RAN\"\n[ \"$(cat \"$2\")\" = bad ] && { echo 'why, \"oh\"' >&2; exit 0; }\ncp \"$2\" params.txt\necho Done > paramsdone.txt\n"
FIRST = "S__Mass\t2.5\nS__MassCenter\t(0, 1.5, 3)\nS__T__max\t1e+006\nS__T__max\t-0\n"
SECOND = "S__T__max\tinf\nS__History__U\t((0, 0), (0.5, nan))\nS__History__E\tNone\nname with, \"q\"\t1.79769e+308\n"
NAMES = ["S__Mass", "S__MassCenter", "S__T__max", "S__T__max#2", "S__History__U", "S__History__E", 'name with, "q"']


class Tables(BatchTest):
    def setUp(self):
        super().setUp()
        self.stand_in(COPY)
        for name, text in (("a,b.odb", FIRST), ("b.odb", "bad"), ("c.odb", SECOND), ("d.odb", "")):
            self.write(name, text)
        self.batch("*.odb", "-k", status=1)
        self.paths = [str(self.path(name)) for name in ("a,b.odb", "b.odb", "c.odb", "d.odb")]

    def collect(self, *words, status=0, directory="out", **options):
        process = subprocess.run([self.program, "collect", directory, *map(str, words)], cwd=self.directory, check=False, timeout=60,
                                 **{"capture_output": True, **options})
        self.assertEqual(process.returncode, status, process.stderr)
        return process

    def rows(self, *words):
        process = self.collect(*words)
        self.assertEqual(process.stderr, b"")
        return list(csv.reader(io.StringIO(process.stdout.decode(), newline="")))

    def test_csv_has_a_row_for_each_input_and_numbers_as_they_are(self):
        head, *rows = self.rows()
        self.assertEqual(head, ["input", "status", "reason", *NAMES])
        self.assertEqual(rows, [
            [self.paths[0], "done", "", "2.5", "(0, 1.5, 3)", "1e+006", "-0", "", "", ""],
            [self.paths[1], "failed", 'extraction failed: why, "oh"', *[""] * 7],
            [self.paths[2], "done", "", "", "", "inf", "", "((0, 0), (0.5, nan))", "None", "1.79769e+308"],
            [self.paths[3], "done", "", *[""] * 7]])

    def test_long_form_has_a_row_for_each_record(self):
        head, *rows = self.rows("--long")
        self.assertEqual(head, ["input", "status", "reason", "record", "value"])
        self.assertEqual(rows, [[path, "done", "", *line.split("\t")] for path, text in ((self.paths[0], FIRST),) for line in text.splitlines()]
                         + [[self.paths[1], "failed", 'extraction failed: why, "oh"', "", ""]]
                         + [[self.paths[2], "done", "", *line.split("\t")] for line in SECOND.splitlines()]
                         + [[self.paths[3], "done", "", "", ""]])

    def test_patterns_choose_records(self):
        self.assertEqual(self.rows("--records", "S__T*", "--records", "*Mass")[0][3:], ["S__Mass", "S__T__max", "S__T__max#2"])
        self.assertEqual(self.rows("--records", "nothing")[0], ["input", "status", "reason"])
        self.assertEqual([row[3] for row in self.rows("--long", "--records", "S__M*")[1:]], ["S__Mass", "S__MassCenter", "", "", ""])

    def test_json_has_numbers_tuples_and_null(self):
        rows = json.loads(self.collect("--to", "json").stdout)
        self.assertEqual(rows[0], {"input": self.paths[0], "status": "done", "S__Mass": 2.5, "S__MassCenter": [0, 1.5, 3],
                                   "S__T__max": 1e6, "S__T__max#2": 0})
        self.assertEqual(rows[1], {"input": self.paths[1], "status": "failed", "reason": 'extraction failed: why, "oh"'})
        self.assertEqual(rows[2], {"input": self.paths[2], "status": "done", "S__T__max": "inf", "S__History__U": [[0, 0], [0.5, "nan"]],
                                   "S__History__E": None, 'name with, "q"': 1.79769e308})
        self.assertEqual(rows[3], {"input": self.paths[3], "status": "done"})
        self.assertEqual(json.loads(self.collect("--to", "json", "--long").stdout)[1],
                         {"input": self.paths[0], "status": "done", "record": "S__MassCenter", "value": [0, 1.5, 3]})

    def test_sqlite_has_types(self):
        self.collect("--to", "sqlite", "-o", "table.db")
        with sqlite3.connect(self.path("table.db")) as database:
            cursor = database.execute("select * from results")
            self.assertEqual([column[0] for column in cursor.description], ["input", "status", "reason", *NAMES])
            rows = cursor.fetchall()
        self.assertEqual(rows[0], (self.paths[0], "done", None, 2.5, "(0, 1.5, 3)", 1e6, 0.0, None, None, None))
        self.assertEqual(rows[2], (self.paths[2], "done", None, None, None, float("inf"), None, "((0, 0), (0.5, nan))", None, 1.79769e308))
        self.collect("--to", "sqlite", "-o", "table.db", "--long")
        with sqlite3.connect(self.path("table.db")) as database:
            self.assertEqual(database.execute("select name from sqlite_master").fetchall(), [("records",)])
            self.assertEqual(database.execute("select count(*), sum(value) from records where record like 'S__Mass'").fetchall(), [(1, 2.5)])
        self.assertEqual(sorted(p.name for p in self.directory.glob("table*")), ["table.db"])

    def test_sqlite_tells_names_apart_that_differ_in_case(self):
        self.write("e.odb", "u\t1\nU\t2\nU#2\t3\n")
        self.batch("e.odb", out="case")
        self.collect("--to", "sqlite", "-o", "table.db", directory="case")
        with sqlite3.connect(self.path("table.db")) as database:
            cursor = database.execute("select * from results")
            self.assertEqual([column[0] for column in cursor.description][3:], ["u", "U#2", "U#2#2"])
            self.assertEqual(cursor.fetchone()[3:], (1, 2, 3))

    def test_too_many_columns_for_sqlite_are_told_and_nothing_is_left(self):
        self.write("e.odb", "".join(f"r{i}\t{i}\n" for i in range(3000)))
        self.batch("e.odb", out="wide")
        said = self.collect("--to", "sqlite", "-o", "table.db", directory="wide", status=1).stderr
        self.assertEqual(said, b"table.db: cannot be written: the table has 3003 columns, and SQLite takes 2000; choose records, or write the long form\n")
        self.assertEqual(list(self.directory.glob("table*")), [])
        self.assertEqual(len(self.collect(directory="wide").stdout.splitlines()[0].split(b",")), 3003)

    def test_a_file_appears_when_it_is_complete(self):
        self.write("table.csv", "old")
        limited = {"preexec_fn": limit_of_file_size(100)}
        for form in ("csv", "json", "sqlite"):
            self.assertIn(b"table.csv: cannot be written", self.collect("--to", form, "-o", "table.csv", status=1, **limited).stderr)
            self.assertEqual(self.path("table.csv").read_text(), "old")
            self.assertEqual([p.name for p in self.directory.glob("table*")], ["table.csv"])
        self.collect("-o", "table.csv")
        self.assertEqual(self.path("table.csv").read_bytes(), self.collect().stdout)

    def test_a_full_standard_output_is_told(self):
        with open("/dev/full", "wb") as full:
            process = self.collect(status=1, stdout=full, stderr=subprocess.PIPE, capture_output=False)
        self.assertEqual(process.stderr, b"standard output: cannot be written: No space left on device\n")

    def test_what_is_not_whole_is_missing(self):
        (self.place("c") / "params.txt").write_text("S__T__max\t1\n")
        os.unlink(self.place("d") / "status")
        process = self.collect()
        rows = list(csv.reader(io.StringIO(process.stdout.decode(), newline="")))
        self.assertEqual([row[1] for row in rows[1:]], ["done", "failed", "missing", "missing"])
        self.assertEqual(rows[0][3:], NAMES[:4])
        self.assertEqual(process.stderr, b"out: 2 inputs are running or missing\n")

    def test_records_of_another_configuration_do_not_mix(self):
        self.config("EXTRACT_MASS")
        self.batch("c.odb")
        states = [row.split(b".odb")[1].split(b",")[1] for row in self.collect().stdout.splitlines()[1:]]
        self.assertEqual(states, [b"missing", b"missing", b"done", b"missing"])

    def test_wrong_usage_and_other_directories_are_refused(self):
        self.assertIn(b"--to sqlite needs -o FILE", self.collect("--to", "sqlite", status=2).stderr)
        self.assertIn(b"is not one of csv, sqlite, json", self.collect("--to", "xml", status=2).stderr)
        self.assertRegex(self.collect(directory="bin", status=1).stderr, rb"/bin: not the directory of a batch")
        self.assertRegex(self.collect(directory="gone", status=1).stderr, rb"/gone: not the directory of a batch")


class Status(BatchTest):
    def setUp(self):
        super().setUp()
        self.stand_in()

    def status(self, *words, status=0):
        process = subprocess.run([self.program, "status", "out", *words], cwd=self.directory, capture_output=True, check=False, timeout=60)
        self.assertEqual((process.returncode, process.stderr), (status, b""))
        return process.stdout.decode()

    def test_counts_follow_the_batch(self):
        self.inputs("good", "exit 1", "say no", "slow 2", "good")
        process = self.start("*.odb", "-j", 1, "-k")
        self.wait_until(lambda: "3.odb" in self.ran())
        counts = "5 inputs: 1 done, 2 failed, 1 running, 1 missing\n  extraction failed: 2\n"
        self.assertEqual(self.status(status=3), counts)
        self.assertEqual(json.loads(self.status("--json", status=3)),
                         {"inputs": 5, "done": 1, "failed": 2, "running": 1, "missing": 1, "why": {"extraction failed": 2}})
        looks = self.status("--watch", "--every", "0.1", status=1)
        self.assertTrue(looks.startswith(counts.splitlines()[0] + "\n"), looks)
        self.assertTrue(looks.endswith("5 inputs: 3 done, 2 failed, 0 running, 0 missing\n  extraction failed: 2\n"), looks)
        process.communicate(timeout=30)
        self.inputs("good", "good", start=1)
        self.batch("*.odb")
        self.assertEqual(self.status(), "5 inputs: 5 done, 0 failed, 0 running, 0 missing\n")

    def test_looking_disturbs_no_runner(self):
        self.inputs(*["good"] * 60)
        process = self.start("*.odb", "-j", 2)
        self.wait_until(lambda: self.path("out/.kolvex-batch/inputs").exists())
        while process.poll() is None:
            subprocess.run([self.program, "status", "out"], cwd=self.directory, capture_output=True, check=False)
        self.assertIn(b"60 inputs: 60 done", process.communicate()[0])
        self.assertEqual(len(self.ran()), 60)

    def test_a_terminal_is_drawn_over(self):
        self.inputs("slow 1")
        process = self.start("0.odb")
        self.wait_until(lambda: self.ran() == ["0.odb"])
        master, slave = pty.openpty()
        watch = subprocess.Popen([self.program, "status", "out", "--watch", "--every", "0.2"], cwd=self.directory, stdout=slave)
        os.close(slave)
        self.assertEqual(watch.wait(timeout=30), 0)
        shown = os.read(master, 10000).decode()
        os.close(master)
        self.assertRegex(shown, r"\r1 inputs: 0 done, 0 failed, 1 running, 0 missing\x1b\[K")
        self.assertTrue(shown.endswith("1 inputs: 1 done, 0 failed, 0 running, 0 missing\r\n"), shown)
        process.communicate(timeout=30)

    def test_another_directory_is_refused(self):
        process = subprocess.run([self.program, "status", "gone"], cwd=self.directory, capture_output=True, check=False)
        self.assertEqual(process.returncode, 1)
        self.assertRegex(process.stderr, rb"/gone: not the directory of a batch")


if __name__ == "__main__":
    unittest.main()
