"""A second format, made up, in the table of the import program: whatever is common to all formats works for it as it is."""
import json
import unittest

from support import ProgramTest

# Two triangles. The components of S at node n are n, 10 n, ..., so that extremes are known.
RESULTS = """listed results
node 1 0 0 0
node 2 1 0 0
node 3 1 1 0
node 4 0 1 0
element 7 TRI3 1 2 3
element 8 TRI3 1 3 4
node-set TOP 3 4
element-set TOP 8
step 1
frame 1 0.5
field NT T
1 20
2 30
3 50
4 40
frame 2 1.0
field NT T
1 21
2 31
3 51
4 41
field S 11 22 33 12 13 23
1 1 0 0 0 0 0
2 2 0 0 0 0 0
3 3 0 0 0 0 0
4 4 0 0 0 0 0
field U 1 2 3
1 0 0 0
2 3 4 0
3 0 0 -2
4 0 0 1
step 3
frame 1 2.0
field U 1 2 3
2 6 8 0
history U2 2 0 0 1 4 2 8
end
"""


class AnotherFormatTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.write("job.listed", RESULTS)

    def run_import(self, *arguments, status=0):
        run = self.run_program(*arguments, program="import_listed")
        self.assertEqual(run.status, status, run.err)
        return run

    def records(self, *switches):
        self.run_program("-odb", "job", "-config", self.config(*switches))
        return dict(line.split("\t") for line in self.path("params.txt").read_text().splitlines())

    def test_it_is_in_the_list_and_known_by_its_first_line(self):
        self.assertIn(b"\nlisted     Listed results: .listed\n", self.run_import("--formats").out)
        self.path("job.listed").rename(self.path("results"))
        run = self.run_import("results", "-o", "job.odb")
        self.assertRegex(run.out, rb"^job\.odb: 2 steps, 3 frames, 3 fields, 1 histories, 2 sets, ")
        self.write("results", "other\n" + RESULTS)
        self.assertRegex(self.run_import("results", status=1).err,
                         rb'^results: error: not a result file of a known format \(expected calculix: .*, or listed: "listed results"\)\n$')

    def test_its_options_stand_in_the_help(self):
        self.assertRegex(self.run_import("--help").out, rb"\nListed:\n +--without-sets +import no sets\n")
        self.assertRegex(self.run_import("job", "--without-sets").out, rb", 0 sets, ")

    def test_its_records_are_those_of_any_run(self):
        run = self.run_import("job")
        self.assertIn(b"job.listed:8: note: the node set TOP becomes TOP-NODES", run.err)
        records = self.records("EXTRACT_ALL", "EXTRACT_FIELD_SETS", "EXTRACT_FIELD_COMPONENTS", "ENGINEERING_MAX", "PERCENTAGE = 0", "EXTRACT_HISTORY")
        for name, value in {"Step_1__Frame_2__U__mag__max": "5", "Step_1__Frame_2__U__3__min": "-2",
                            "Step_1__Frame_1__NT__max": "50", "Step_1__Frame_2__NT__enggmax": "51",
                            "Step_1__Frame_2__S__11__max": "4", "Step_1__Frame_2__TOP__S__mises__min": "1",
                            "Step_1__Frame_2__TOP_NODES__U__3__max": "1", "Step_3__Frame_1__U__mag__max": "10",
                            "Step_3__History__U2_2": "((0, 0), (1, 4), (2, 8))"}.items():
            self.assertEqual(records.get(name), value, name)

    def test_what_is_chosen_is_chosen_by_the_same_options(self):
        self.run_import("job", "--field", "u", "--step", "1,3", "--frames", "last")
        self.assertEqual(set(self.records("EXTRACT_ALL", "EXTRACT_FIELD_COMPONENTS")), {
            f"Step_{step}__Frame_{frame}__U__{quantity}__{extreme}" for step, frame in ((1, 2), (3, 1))
            for quantity in ("mag", "1", "2", "3") for extreme in ("max", "min")})
        self.assertRegex(self.run_import("job", "--field", "V", status=1).err, rb"job\.listed: error: .*V.*NT, S, U")
        self.assertRegex(self.run_import("job", "--frames", "9", status=1).err, rb"(?m)^job\.listed: error: nothing is selected")

    def test_sets_are_chosen_by_their_final_names(self):
        self.assertRegex(self.run_import("job", "--set", "top-nodes").out, rb", 1 sets, ")
        sets = {name.split("__")[2] for name in self.records("EXTRACT_ALL", "EXTRACT_FIELD_SETS") if "TOP" in name}
        self.assertEqual(sets, {"TOP_NODES"})
        listed = json.loads(self.run_import("job", "--list", "--json", "--set", "TOP").out)
        self.assertEqual([s["name"] for s in listed["sets"]], ["TOP"])
        self.assertRegex(self.run_import("job", "--set", "BOT", status=1).err,
                         rb"(?m)^job\.listed: error: there is no set BOT; the sets are TOP-NODES, TOP$")

    def test_the_list_is_there_for_programs(self):
        listed = json.loads(self.run_import("job", "--list", "--json").out)
        self.assertEqual((listed["nodes"], listed["elements"]), (4, 2))
        self.assertEqual([s["name"] for s in listed["sets"]], ["TOP-NODES", "TOP"])
        self.assertEqual([f["name"] for f in listed["steps"][0]["fields"]], ["NT", "S", "U"])

    def test_rows_that_cannot_be_read_leave_no_database(self):
        for line, bad in (("4 0 0 1", "4 0 0 x"), ("field U 1 2 3\n1 ", "fold U 1 2 3\n1 ")):
            self.write("job.listed", RESULTS.replace(line, bad, 1))
            self.assertRegex(self.run_import("job", status=1).err, rb"(?m)^job\.listed:\d+: error: \"(x|fold)\" is not ")
            self.assertFalse(self.path("job.odb").exists())


if __name__ == "__main__":
    unittest.main()
