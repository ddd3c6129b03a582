"""`kolvex diff`: what differs, by how much, and where."""
import json

import numpy as np

from support import Database, ProgramTest

# a, b, options, whether they agree
CASES = [
    ("1", "1", [], True), ("1", "1.0", [], True), ("1", "1.00001", [], False), ("0", "-0", [], True),
    ("100", "101", ["--abs", "1"], True), ("100", "101", ["--abs", "0.99"], False),
    ("100", "101", ["--rel", "0.00990099009901"], True), ("100", "101", ["--rel", "0.0099"], False),
    ("-100", "-101", ["--rel", "0.01"], True), ("-1", "1", ["--rel", "1.9"], False), ("-1", "1", ["--rel", "2"], True),
    ("0", "1e-12", ["--rel", "0.5"], False), ("0", "1e-12", ["--abs", "1e-11", "--rel", "0.5"], True),
    ("1e-005", "1.5e-005", [], False), ("1e+300", "-1e+300", ["--abs", "1e308", "--rel", "2"], True),
    ("nan", "nan", [], True), ("nan", "1", ["--abs", "1e300", "--rel", "9"], False), ("1", "-nan", ["--abs", "1e300"], False),
    ("inf", "inf", [], True), ("inf", "-inf", ["--rel", "9"], False), ("inf", "1e308", ["--abs", "1e308", "--rel", "9"], False),
    ("inf", "nan", [], False),
    ("(0, 1.5, 3)", "(0, 1.5, 3)", [], True), ("(0, 1.5, 3)", "(0, 1.5, 3.5)", [], False), ("(0, 1.5, 3)", "(0, 1.5, 3.5)", ["--abs", "0.5"], True),
    ("(0, 1.5, 3)", "(0, 1.5)", ["--abs", "9"], False), ("((0, 1), (1, 2))", "((0, 1), (1, 2))", [], True),
    ("((0, 1), (1, 2))", "((0, 1), (1, nan))", ["--abs", "9"], False), ("((0, 1), (1, 2))", "((0, 1, 1, 2))", ["--abs", "9"], False),
    ("None", "None", [], True), ("None", "((0, 1))", ["--abs", "9"], False), ("None", "0", ["--abs", "9"], False), ("", "", [], True), ("", "1", [], False),
]


class DiffTest(ProgramTest):
    def diff(self, *arguments, status):
        run = self.run_program(*arguments, program="diff")
        self.assertEqual(run.status, status, (arguments, run.out, run.err))
        return run

    def json(self, *arguments, status=1):
        return json.loads(self.diff(*arguments, "--json", status=status).out)

    def records(self, name, *lines):
        return self.write(name, "".join(line.replace(" = ", "\t") + "\n" for line in lines))

    def test_values_agree_or_not(self):
        for a, b, options, agree in CASES:
            for one, other in ((a, b), (b, a)):
                with self.subTest((one, other, options)):
                    self.records("a.txt", f"X = {one}")
                    self.records("b.txt", f"X = {other}")
                    found = self.json("a.txt", "b.txt", *options, status=0 if agree else 1)
                    self.assertEqual((found["same"], found["different"]), (agree, 0 if agree else 1))

    def test_the_largest_differences_come_first(self):
        self.records("a.txt", "a = 100", "b = 1", "c = 1000", "d = nan", "e = 5")
        self.records("b.txt", "a = 101", "b = 2", "c = 1001", "d = 4", "e = 5")
        found = self.json("a.txt", "b.txt")
        self.assertEqual([r["name"] for r in found["records"]], ["d", "b", "a", "c"])
        self.assertEqual([(r["a"], r["b"], r["difference"]) for r in found["records"]],
                         [("nan", "4", None), ("1", "2", 1), ("100", "101", 1), ("1000", "1001", 1)])
        self.assertEqual([r["relative"] for r in found["records"]][1:2], [0.5])
        self.assertEqual((found["compared"], found["different"]), (5, 4))
        top = self.json("a.txt", "b.txt", "--top", "1")
        self.assertEqual(([r["name"] for r in top["records"]], top["different"]), (["d"], 4))

    def test_names_on_one_side_alone(self):
        self.records("a.txt", "both = 1", "old one = 2", "twice = 1", "twice = 2")
        self.records("b.txt", "new = 3", "both = 1", "twice = 1")
        found = self.json("a.txt", "b.txt")
        self.assertEqual((found["onlyInA"], found["onlyInB"], found["records"]), (["old one", "twice"], ["new"], []))
        out = self.diff("a.txt", "b.txt", status=1).out.decode()
        self.assertEqual(out, "only in A: old one\nonly in A: twice\nonly in B: new\n"
                              "2 records compared, 0 differ, 2 only in A, 1 only in B\n")

    def test_a_name_that_occurs_twice_is_compared_in_its_order(self):
        self.records("a.txt", "X = 1", "X = 2")
        self.records("b.txt", "X = 1", "X = 3")
        self.assertEqual([(r["occurrence"], r["a"], r["b"]) for r in self.json("a.txt", "b.txt")["records"]], [(1, "2", "3")])
        self.records("b.txt", "X = 2", "X = 1")
        self.assertEqual(len(self.json("a.txt", "b.txt")["records"]), 2)

    def test_tolerances_by_name(self):
        self.records("a.txt", "S max = 100", "U max = 1", "T = 5")
        self.records("b.txt", "S max = 101", "U max = 1.5", "T = 6", "T2 = 1")
        self.write("t.txt", "# remark\n\nS max  rel=0.02\n*max abs=0.1   # too little\nT* ignore\n")
        found = self.json("a.txt", "b.txt", "--tolerances", "t.txt", "--abs", "9")
        self.assertEqual(([r["name"] for r in found["records"]], found["ignored"], found["onlyInB"]), (["U max"], 1, []))
        self.write("t.txt", "*max rel=0\tabs=1\nS max rel=0\nT* ignore\n")
        self.json("a.txt", "b.txt", "--tolerances", "t.txt", status=0)
        for line in ("S max", "S rel=-1", "S rel=x", "S abs=nan", "abs=1"):
            self.write("t.txt", "X ignore\n" + line + "\n")
            self.assertIn(b"t.txt:2: a line is a pattern", self.diff("a.txt", "b.txt", "--tolerances", "t.txt", status=2).err)

    def test_directories_and_line_ends(self):
        for name, text in (("one", b"X\t1\n"), ("two", b"X\t1\r\n")):
            self.path(name).mkdir()
            self.path(name, ).joinpath("params.txt").write_bytes(text)
        self.assertEqual(self.diff("one", "two/", status=0).out, b"1 records compared, 0 differ, 0 only in A, 0 only in B\n")

    def test_trouble(self):
        self.records("a.txt", "X = 1")
        self.write("bad.txt", "no records\n")
        self.write("broken.odb", b"\x89HDF\r\n\x1a\nx")
        for arguments, words in ((["a.txt", "none.txt"], b"none.txt: does not exist"), (["a.txt", "bad.txt"], b"bad.txt: is neither a database"),
                                 (["broken.odb", "a.txt"], b"broken.odb"), (["a.txt"], b"B"), ([], b"A"), (["a.txt", "a.txt", "--abs", "-1"], b"-1"),
                                 (["a.txt", "a.txt", "--odb", "none.odb"], b"none.odb"), (["a.txt", "a.txt", "--config", "none"], b"none: does not")):
            self.assertIn(words, self.diff(*arguments, status=2).err)

    def test_quiet(self):
        self.records("a.txt", "X = 1")
        self.records("b.txt", "X = 2")
        self.assertEqual(self.diff("a.txt", "b.txt", "-q", status=1).out, b"")
        self.assertEqual(self.diff("a.txt", "a.txt", "-q", status=0).out, b"")

    def model(self, name, rows):
        with Database(self.path(name)) as odb:
            mesh = odb.file.create_group("assembly/instances/I-1/mesh/nodes")
            mesh["labels"] = np.array([1, 2, 3], "i4")
            mesh["coordinates"] = np.array([[0, 0, 0], [1, 0, 0], [2, 0, 0]], "f8")
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            odb.file["assembly/nodeSets/TIP/I-1"] = np.array([2, 3], "i4")
            odb.field(odb.step("Step-1", mass=2.5), "NT", 2, [("nodes", np.array([rows], "f8"))])

    def test_databases_with_the_places_of_what_differs(self):
        self.model("a.odb", [20, 50, 80])
        self.model("b.odb", [20, 90, 80])
        found = self.json("a.odb", "b.odb")
        by_name = {r["name"]: r for r in found["records"]}
        self.assertEqual(list(by_name), ["Step_1__Frame_1__TIP__NT__min", "Step_1__Frame_1__NT__max", "Step_1__Frame_1__TIP__NT__max"])
        largest = by_name["Step_1__Frame_1__NT__max"]
        self.assertEqual((largest["placeA"]["node"], largest["placeA"]["coordinates"]), (3, [2, 0, 0]))
        self.assertEqual((largest["placeB"]["node"], largest["placeB"]["coordinates"]), (2, [1, 0, 0]))
        self.assertEqual(found["compared"], 5)  # the mass too
        self.diff("a.odb", "a.odb", status=0)
        config = self.config("EXTRACT_FIELD EXTRACT_ALL")
        self.assertEqual([r["name"] for r in self.json("a.odb", "b.odb", "--config", config)["records"]], ["Step_1__Frame_1__NT__max"])
        self.assertEqual(sorted(p.name for p in self.directory.iterdir()), ["a.odb", "b.odb", "config.txt"])

    def test_files_of_records_with_their_databases(self):
        self.model("a.odb", [20, 50, 80])
        self.records("a.txt", "Step_1__Frame_1__NT__max = 80", "Step_1__Mass = 2.5")
        self.records("b.txt", "Step_1__Frame_1__NT__max = 90", "Step_1__Mass = 3.5")
        out = self.diff("a.txt", "b.txt", "--odb", "a.odb", status=1).out.decode()
        self.assertIn("Step_1__Frame_1__NT__max\n    A: 80  B: 90  difference 10 (0.111 of the larger)\n"
                      "    A: 80               I-1 node 3 at (2, 0, 0)\n", out)
