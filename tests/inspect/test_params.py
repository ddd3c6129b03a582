"""kolvex params: tables read back by the programs that they are for."""
import csv
import io
import json
import math
import os
import sqlite3
import unittest

import numpy as np

from support import Database, ProgramTest
from test_show import rich_database

try:
    import pandas
except ImportError:
    pandas = None

NOT_MARKED, NOT_THERE = 3, 4
RECORDS = ("Step_1__Mass\t2.5\nLoad Case_1__Mass\t-1.5e-005\nStep_1__MassCenter\t(0, 1.5, -3)\n"
           "Step_1__History__U2_TIP NODES\t((0, 0), (0.5, nan))\nStep_1__History__U3\tNone\n"
           "Step_1__Frame_1__A__max\tinf\nStep_1__Frame_1__A__min\t-inf\nStep_1__Frame_1__B__max\tnan\n"
           "Step_1__Frame_1__a,\"b__max\t1.79769e+308\nStep_1__Frame_1__B__max\t7\n")


class ParamsTest(ProgramTest):
    def params(self, *arguments, status=0):
        run = self.run_program("params", *arguments, program="kolvex")
        self.assertEqual(run.status, status, run.err)
        return run.out.decode()

    def put(self, text=RECORDS, marker="Done\n"):
        self.write("params.txt", text)
        if marker is not None:
            self.write("paramsdone.txt", marker)

    def rows(self, *arguments):
        return json.loads(self.params(*arguments, "--to", "json"))

    def test_csv(self):
        self.put()
        rows = list(csv.DictReader(io.StringIO(self.params("params.txt"))))
        self.assertEqual([(row["name"], row["value"]) for row in rows], [tuple(line.split("\t")) for line in RECORDS.splitlines()])

    def test_json(self):
        self.put()
        rows = self.rows(".")
        self.assertEqual([row["name"] for row in rows], [line.split("\t")[0] for line in RECORDS.splitlines()])
        self.assertEqual([row["value"] for row in rows],
                         [2.5, -1.5e-5, [0, 1.5, -3], [[0, 0], [0.5, "nan"]], None, "inf", "-inf", "nan", 1.79769e308, 7])

    def test_sqlite(self):
        self.put()
        self.params("params.txt", "--to", "sqlite", "-o", "r.db")
        with sqlite3.connect(self.path("r.db")) as table:
            rows = table.execute("select name, value, typeof(value) from records order by rowid").fetchall()
        self.assertEqual([row[0] for row in rows], [line.split("\t")[0] for line in RECORDS.splitlines()])
        self.assertEqual([row[1] for row in rows], [2.5, -1.5e-5, "(0, 1.5, -3)", "((0, 0), (0.5, nan))", None, math.inf, -math.inf, "nan",
                                                    1.79769e308, 7.0])
        self.assertEqual([row[2] for row in rows], ["real", "real", "text", "text", "null", "real", "real", "text", "real", "real"])

    def test_dakota(self):
        self.put()
        self.params("params.txt", "--to", "dakota", "-o", "results.out")
        lines = [line.split() for line in self.path("results.out").read_text().splitlines()]
        self.assertEqual([name for _, name in lines], ["Step_1__Mass", "Load_Case_1__Mass", "Step_1__Frame_1__A__max", "Step_1__Frame_1__A__min",
                                                       "Step_1__Frame_1__B__max", "Step_1__Frame_1__a,\"b__max", "Step_1__Frame_1__B__max"])
        numbers = [float(value) for value, _ in lines]
        self.assertTrue(math.isnan(numbers.pop(4)))
        self.assertEqual(numbers, [2.5, -1.5e-5, math.inf, -math.inf, 1.79769e308, 7])
        run = self.run_program("params", ".", "--to", "dakota", program="kolvex")
        self.assertIn(b"3 records that are not single numbers are left out", run.err)

    @unittest.skipUnless(pandas, "there is no pandas")
    def test_pandas(self):
        self.put()
        frame = pandas.read_csv(io.StringIO(self.params(".", "*__Frame_*")))
        self.assertEqual(list(frame["value"][:2]), [math.inf, -math.inf])
        self.assertTrue(math.isnan(frame["value"][2]))
        frame = pandas.read_json(io.StringIO(self.params(".", "*__Mass", "--to", "json")))
        # Its reader of JSON rounds.
        np.testing.assert_allclose(frame["value"], [2.5, -1.5e-5], rtol=1e-15)

    def test_line_ends_of_the_other_kind(self):
        self.put("A\t1\r\nB\t2\r\n", "Done\r\n")
        self.assertEqual(self.params("."), "name,value\nA,1\nB,2\n")

    def test_patterns(self):
        self.put()
        self.assertEqual([row["name"] for row in self.rows(".", "*__A__m?[xn]", "Step_1__Mass")],
                         ["Step_1__Mass", "Step_1__Frame_1__A__max", "Step_1__Frame_1__A__min"])
        self.assertEqual(self.rows(".", "nothing"), [])

    def test_a_marker_that_is_missing_or_foreign(self):
        self.put(marker=None)
        for marker in (None, "", "Done, perhaps\n", "older"):
            if marker is not None:
                self.write("paramsdone.txt", "Done\n" if marker == "older" else marker)
            if marker == "older":
                os.utime(self.path("paramsdone.txt"), (1e9, 1e9))
            for form in ("csv", "json", "sqlite"):
                self.assertEqual(self.params(".", "--to", form, "-o", "out", status=NOT_MARKED), "")
                self.assertFalse(self.path("out").exists())
            self.params(".", "--to", "dakota", "-o", "results.out", status=NOT_MARKED)
            self.assertEqual(self.path("results.out").read_text(), "fail\n")
            self.assertEqual(len(self.rows(".", "--unmarked")), 10)
            self.write("paramsdone.txt", "Done\n")
            self.assertEqual(len(self.rows(".")), 10)
            self.path("paramsdone.txt").unlink()

    def test_a_run_that_fails_leaves_no_table(self):
        rich_database(self.path("m.odb"))
        self.run_program("-odb", "m", "-config", self.config("EXTRACT_MASS"))
        self.assertEqual(len(self.rows(".")), 4)
        self.run_program("-odb", "missing", "-config", "config.txt")
        self.params(".", status=NOT_MARKED)

    def test_records_that_are_required(self):
        self.put()
        self.assertEqual(len(self.rows(".", "--require", "Step_1__Mass", "--require", "*__B__max")), 10)
        run = self.run_program("params", ".", "--require", "Step_1__Mass", "--require", "Step_2__Mass", "--require", "*__C__*", "-o", "out",
                               program="kolvex")
        self.assertEqual((run.status, run.out), (NOT_THERE, b""))
        self.assertIn(b"Step_2__Mass, *__C__*", run.err)
        self.assertFalse(self.path("out").exists())
        self.assertEqual(self.params(".", "--to", "dakota", "--require", "none", status=NOT_THERE), "fail\n")

    def test_names_taken_apart(self):
        rich_database(self.path("m.odb"))
        self.run_program("-odb", "m", "-config", self.config("EXTRACT_MASS", "MINMAX_HISTORY", "EXTRACT_ALL", "EXTRACT_FIELD_SETS"))
        rows = {row.pop("name"): row for row in self.rows(".", "--odb", "m")}
        self.assertEqual(rows["Load Case_1__MassCenter"],
                         {"value": [0, 1.5, 3], "kind": "mass", "step": "Load Case-1", "quantity": "MassCenter"})
        self.assertEqual(rows["Load_Case_2__History_Max__U2_3"], {"value": 0, "kind": "history", "step": "Load Case-2", "extreme": "max",
                                                                 "region": "Node 3", "output": "U2", "label": "3"})
        self.assertEqual(rows["Load_Case_1__Frame_5__NT_11__min"], {"value": 0, "kind": "field", "step": "Load Case-1", "frame": 5, "frameValue": 1,
                                                                   "field": "NT 11", "extreme": "min"})
        self.assertEqual(rows["Load_Case_1__Frame_5__I_1_TIP__U__mag__max"],
                         {"value": 0, "kind": "field", "step": "Load Case-1", "frame": 5, "frameValue": 1, "setKind": "nodes", "ownerKind": "instance",
                          "owner": "I-1", "set": "TIP", "field": "U", "quantity": "mag", "extreme": "max"})
        self.params(".", "--odb", "m", "--to", "sqlite", "-o", "r.db")
        with sqlite3.connect(self.path("r.db")) as table:
            found = table.execute("select typeof(frame), typeof(frameValue), \"set\", owner from records "
                                  "where name = 'Load_Case_1__Frame_5__I_1_TIP__U__mag__max'").fetchall()
        self.assertEqual(found, [("integer", "real", "TIP", "I-1")])

    def twice(self):
        """A set TOP of elements and one of nodes: without sets in the run, or with both, a name is told apart."""
        with Database(self.path("m.odb")) as odb:
            odb.location("ends", "elementNodal", elementLabels=[1, 1, 2, 2], nodeLabels=[1, 2, 2, 3])
            odb.file["assembly/elementSets/TOP/I-1"] = np.array([1], "i4")
            odb.file["assembly/nodeSets/TOP/I-1"] = np.array([2], "i4")
            odb.field(odb.step("Step-1"), "T", 2, [("ends", np.array([[1, 2, 3, 4]], "f4"))])

    def test_a_name_that_occurs_twice_is_two_records(self):
        self.twice()
        self.run_program("-odb", "m", "-config", self.config("EXTRACT_ALL", "EXTRACT_FIELD_SETS"))
        rows = self.rows(".", "*TOP__T__max", "--odb", "m")
        self.assertEqual([(row["value"], row["setKind"]) for row in rows], [(2, "elements"), (3, "nodes")])

    def test_a_name_that_can_be_several_records_gets_what_they_have_in_common(self):
        self.twice()
        self.put("Step_1__Frame_1__TOP__T__max\t2\n")
        run = self.run_program("params", ".", "--odb", "m", "--to", "json", program="kolvex")
        row = json.loads(run.out)[0]
        self.assertNotIn("setKind", row)
        self.assertEqual((row["set"], row["field"], row["extreme"]), ("TOP", "T", "max"))
        self.assertIn(b"1 names can be several records; --config may tell which", run.err)

    def test_the_configuration_tells_names_apart(self):
        with Database(self.path("m.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1])
            odb.file["assembly/nodeSets/A/I-1"] = np.array([1], "i4")
            step = odb.step("Step-1")
            for name in ("A__T", "T"):
                odb.field(step, name, 2, [("nodes", np.array([[5]], "f4"))], description="Stress" if name == "T" else "")
        config = self.config("EXTRACT_STRESS", "EXTRACT_FIELD_SETS")
        self.run_program("-odb", "m", "-config", config)
        self.assertNotIn("field", self.rows(".", "*A__T__max", "--odb", "m")[0])
        row = self.rows(".", "*A__T__max", "--odb", "m", "--config", config)[0]
        self.assertEqual((row["set"], row["field"]), ("A", "T"))

    def test_names_of_another_database(self):
        rich_database(self.path("m.odb"))
        self.put("Other__Mass\t1\n")
        run = self.run_program("params", ".", "--odb", "m", "-o", "out", program="kolvex")
        self.assertEqual(run.status, 1)
        self.assertIn(b"no name in it is one of m", run.err)
        self.assertFalse(self.path("out").exists())
        self.put("Other__Mass\t1\nLoad Case_1__Mass\t2.5\n")
        run = self.run_program("params", ".", "--odb", "m", program="kolvex")
        self.assertEqual(run.status, 0)
        self.assertIn(b"1 names are none of m", run.err)
        self.assertIn(b"Other__Mass,1,,,", run.out)

    def test_names_of_a_run_that_computed_no_values(self):
        with Database(self.path("m.odb")) as odb:
            odb.location("e", "centroid", elementLabels=[1])
            odb.field(odb.step("Step-1"), "S", 5, [("e", np.zeros((1, 1, 6), "f4"))], ("S11", "S22", "S33", "S12", "S13", "S23"))
        self.run_program("-odb", "m", "-config", self.config("EXTRACT_ALL", "EXTRACT_FIELD_COMPONENTS", "DO_NOT_COMPUTE_VALUES"))
        self.assertEqual(self.rows(".", "*__S__11__max", "--odb", "m")[0]["quantity"], "11")

    def test_what_cannot_be_read_or_written(self):
        self.put()
        for arguments in (["missing.txt"], [".", "--odb", "missing"], [".", "-o", "no/such/place"]):
            self.params(*arguments, status=1)
        for arguments in ([], [".", "--to", "sqlite"], [".", "--to", "xml"], [".", "--config", "c"], [".", "--to", "dakota", "--odb", "m"]):
            self.params(*arguments, status=2)
        with open("/dev/full", "wb") as full:
            run = self.run_program("params", ".", program="kolvex", stdout=full)
        self.assertEqual(run.status, 1)
        self.assertIn(b"standard output", run.err)
