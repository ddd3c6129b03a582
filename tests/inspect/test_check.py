"""kolvex check: what it says of configurations, line by line."""
import json

import numpy as np

from support import Database, ProgramTest
from test_show import SIX, rich_database

REMARKS, NOTHING = 3, 4


class CheckTest(ProgramTest):
    def check(self, text, *arguments):
        """Status, and {line: reasons}."""
        self.write("e.cfg", text)
        run = self.run_program("check", "e.cfg", *arguments, "--json", program="kolvex")
        report = json.loads(run.out)
        remarks = {}
        for remark in report["remarks"]:
            remarks.setdefault(remark["line"], []).append(remark["reason"])
        return run.status, remarks, report

    def reasons(self, *lines):
        """What is said of the lines, without what is said of keywords without effect."""
        return self.check("ODB EXTRACTIONS\n" + "\n".join(lines))[1]

    def test_a_sound_configuration_has_no_remarks(self):
        for text in ("ODB EXTRACTIONS\nEXTRACT_MASS\nEXTRACT_HISTORY MINMAX_HISTORY\nEXTRACT_FIELD EXTRACT_ALL EXTRACT_FIELD_SETS\n",
                     "remarks, EXTRACT_MASS among them\n*** ODB EXTRACTIONS EXTRACT_MASS\r\n",
                     "ODB EXTRACTIONS\nwe need the mass: EXTRACT_MASS, and NOTHING else of it\n",
                     "ODB EXTRACTIONS\nEXTRACT_FIELD EXTRACT_STRESS ENGINEERING_MAX PERCENTAGE = 2.5 percent"):
            status, remarks, report = self.check(text)
            self.assertEqual((status, remarks, report["takesNothing"]), (0, {}, False), text)

    def test_misspelt_words_and_the_nearest(self):
        for word, nearest in (("EXTRACT_STRES", "EXTRACT_STRESS"), ("EXTRCAT_MASS", "EXTRACT_MASS"), ("EXTRACT_SPACIAL", "EXTRACT_SPATIAL"),
                              ("MINMAX_HISTROY", "MINMAX_HISTORY"), ("extract_mass", "EXTRACT_MASS"), ("Extract_All", "EXTRACT_ALL"),
                              ("EXTRACT MASS", "EXTRACT_MASS"), ("EXTRACT-FIELD-SETS", "EXTRACT_FIELD_SETS"),
                              ("TENSOR_INVARIANT", "TENSOR_INVARIANTS"), ("PERCENTGE = 3", "PERCENTAGE"), ("STRESS", "EXTRACT_STRESS"),
                              ("DONT_COMPUTE_VALUES", "DO_NOT_COMPUTE_VALUES"), ("EXTRACT_VOLUMES", "EXTRACT_ALL")):
            reasons = " ".join(self.reasons("EXTRACT_MASS", word).get(3, []))
            self.assertIn("is not a keyword", reasons, word)
            if word != "EXTRACT_VOLUMES":
                self.assertRegex(reasons, rf"\b{nearest}\b", word)

    def test_prose_is_left_alone(self):
        self.assertEqual(self.reasons("EXTRACT_MASS", "this takes all of the stress and the mass", "of ALL parts, NOTE it", "percent of 5", "12 34"), {})

    def test_words_that_count_for_what_they_contain(self):
        remarks = self.reasons("EXTRACT_MASSES", "NO_EXTRACT_HISTORY", "EXTRACT_FIELD_COMPONENT", "# EXTRACT_MASS", "EXTRACT_FIELD SETS EXTRACT_ALL")
        self.assertEqual(remarks[2], ['"EXTRACT_MASSES" counts as EXTRACT_MASS, which it contains'])
        self.assertEqual(remarks[3], ['"NO_EXTRACT_HISTORY" counts as EXTRACT_HISTORY, which it contains'])
        self.assertIn("the nearest keyword is EXTRACT_FIELD_COMPONENTS", remarks[4][0])
        self.assertIn("looks like a comment", remarks[5][0])
        self.assertIn("EXTRACT_FIELD in it counts", remarks[6][0])

    def test_what_stands_before_the_mark(self):
        self.assertEqual(self.check("EXTRACT_MASS\nODB EXTRACTIONS\nEXTRACT_HISTORY\n")[:2],
                         (REMARKS, {1: ["EXTRACT_MASS does not count: it stands before the line with ODB EXTRACTIONS"]}))
        for text in ("odb extractions\nEXTRACT_MASS\n", "*** ODB EXTRACTION\nEXTRACT_MASS\n", "ODB  EXTRACTIONS\nEXTRACT_MASS"):
            status, remarks, _ = self.check(text)
            self.assertEqual(status, NOTHING)
            self.assertIn("line 1 comes nearest", remarks[None][0])
        self.assertEqual(self.check("")[0], NOTHING)

    def test_percentages(self):
        with_keywords = "EXTRACT_FIELD EXTRACT_ALL ENGINEERING_MAX"
        for text, words in (("PERCENTAGE = abc", "is not a number"), ("PERCENTAGE = 120", "not from 0 to 100"), ("PERCENTAGE=-3", "not from 0 to 100"),
                            ("X=3 PERCENTAGE=5", "stands before it"), ("PERCENTAGE = inf", "is not a number")):
            self.assertIn(words, " ".join(self.reasons(with_keywords, text)[3]), text)
        for text in ("PERCENTAGE = 5", "PERCENTAGE=.5", "PERCENTAGE= +1e1 %", "PERCENTAGE = 100"):
            self.assertEqual(self.reasons(with_keywords, text), {}, text)
        self.assertIn("same as the plain maximum", self.reasons(with_keywords)[2][0])
        self.assertIn("no effect without ENGINEERING_MAX", self.reasons("EXTRACT_MASS", "PERCENTAGE = 5")[3][0])
        status, remarks, _ = self.check("ODB EXTRACTIONS\nEXTRACT_MASS\nPERCENTAGE 5\nEXTRACT_MAS\n")
        self.assertEqual(status, NOTHING)
        self.assertIn("a run ends here", remarks[3][0])
        run = self.run_program("-odb", "e.cfg", "-config", "e.cfg")
        self.assertEqual((run.status, run.text("params.txt")), (1, None))

    def test_keywords_without_effect(self):
        for lines, line, words in ((["EXTRACT_MASS", "ABSOLUTE_MAX"], 3, "never has an effect"),
                                   (["EXTRACT_MASS", "EXTRACT_ALL"], 3, "without EXTRACT_FIELD"),
                                   (["EXTRACT_MASS", "TENSOR_INVARIANTS"], 3, "without EXTRACT_FIELD"),
                                   (["EXTRACT_MASS", "EXTRACT_FIELD"], 3, "takes no field"),
                                   (["EXTRACT_FIELD EXTRACT_ALL", "EXTRACT_STRESS"], 3, "no effect beside EXTRACT_ALL"),
                                   (["EXTRACT_FIELD TENSOR_INVARIANTS", "EXTRACT_ELEMENT"], 3, "no effect beside TENSOR_INVARIANTS"),
                                   (["EXTRACT_MASS", "DO_NOT_COMPUTE_VALUES"], 3, "makes every value 0")):
            self.assertIn(words, " ".join(self.reasons(*lines)[line]), lines)
        self.assertEqual(self.check("ODB EXTRACTIONS\nEXTRACT_FIELD_SETS\n")[0], NOTHING)

    def test_what_a_run_would_write(self):
        rich_database(self.path("m.odb"))
        text = "ODB EXTRACTIONS\nEXTRACT_MASS MINMAX_HISTORY EXTRACT_FIELD_SETS\nEXTRACT_STRESS\n"
        status, remarks, report = self.check(text, "m")
        self.run_program("-odb", "m", "-config", "e.cfg")
        names = [line.split("\t")[0] for line in self.path("params.txt").read_text().splitlines()]
        of_sets = [name for name in names if "__TOP__" in name or "__TIP__" in name]
        histories = [name for name in names if "__History_" in name]
        mass = [name for name in names if "__Mass" in name]
        self.assertEqual((status, remarks), (0, {}))
        self.assertEqual(report["counts"], {"records": len(names), "mass": len(mass), "histories": len(histories), "sets": len(of_sets),
                                            "wholeModel": len(names) - len(of_sets) - len(histories) - len(mass)})
        fields = {(field["step"], field["name"]): field for field in report["fields"]}
        self.assertEqual(fields["Load Case-1", "S"]["keywords"], ["EXTRACT_STRESS"])
        self.assertEqual(fields["Load Case-1", "U"]["wouldTake"], ["EXTRACT_ALL", "EXTRACT_SPATIAL"])
        self.assertFalse(fields["Load Case-2", "NT 11"]["taken"])

    def test_what_a_database_has_nothing_of(self):
        with Database(self.path("m.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1])
            odb.field(odb.step("Step-1"), "NT", 2, [("nodes", np.zeros((1, 1), "f4"))])
        status, remarks, _ = self.check("ODB EXTRACTIONS\nEXTRACT_MASS\nMINMAX_HISTORY\nEXTRACT_ALL\nEXTRACT_FIELD_COMPONENTS\n"
                                        "EXTRACT_FIELD_SETS\nTENSOR_INVARIANTS\n", "m")
        self.assertEqual(status, REMARKS)
        for line, words in ((2, "no step has a mass"), (3, "no histories"), (5, "no field that is taken has components"), (6, "there are no sets"),
                            (7, "no invariants")):
            self.assertIn(words, " ".join(remarks[line]))
        status, remarks, report = self.check("ODB EXTRACTIONS\nEXTRACT_FIELD\nEXTRACT_STRESS\n", "m")
        self.assertEqual((status, report["takesNothing"], report["counts"]["records"]), (NOTHING, True, 0))
        self.assertIn('no field has "Stress"', remarks[3][0])

    def test_names_that_occur_twice(self):
        with Database(self.path("m.odb")) as odb:
            odb.location("ends", "elementNodal", elementLabels=[1, 1, 2, 2], nodeLabels=[1, 2, 2, 3])
            odb.file["assembly/elementSets/TOP/I-1"] = np.array([1], "i4")
            odb.file["assembly/nodeSets/TOP/I-1"] = np.array([2], "i4")
            odb.file["assembly/nodeSets/ELSEWHERE/I-1"] = np.array([9], "i4")
            odb.field(odb.step("Step-1"), "S", 5, [("ends", np.zeros((1, 4, 6), "f4"))], labels=SIX)
            odb.field(odb.step("Step-2", (7, 7)), "S", 5, [("ends", np.zeros((2, 4, 6), "f4"))], labels=SIX)
        status, _, report = self.check("ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD_SETS\n", "m")
        self.run_program("-odb", "m", "-config", "e.cfg")
        names = [line.split("\t")[0] for line in self.path("params.txt").read_text().splitlines()]
        twice = {name: names.count(name) for name in names if names.count(name) > 1}
        self.assertEqual(status, REMARKS)
        self.assertEqual(report["repeatedNames"], len(twice))
        self.assertEqual({name["name"]: len(name["records"]) for name in report["repeated"]}, twice)
        first = report["repeated"][0]
        self.assertEqual(first["name"], "Step_1__Frame_1__TOP__S__mises__max")
        self.assertEqual([record["setKind"] for record in first["records"]], ["elements", "nodes"])
        shown = self.run_program("check", "e.cfg", "m", program="kolvex").out.decode()
        self.assertIn("    step Step-1, frame 1, field S over element set TOP of the assembly\n", shown)

    def test_a_run_that_would_end_with_an_error(self):
        with Database(self.path("m.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1])
            odb.file["assembly/nodeSets/ALL/I-1"] = np.array([1], "i4")
            odb.field(odb.step("Step-1"), "U", 3, [("nodes", np.zeros((1, 1, 3)))], ("1", "2", "3"))
        status, remarks, _ = self.check("ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD_COMPONENTS EXTRACT_FIELD_SETS\n", "m")
        self.assertEqual(status, REMARKS)
        self.assertIn("the run ends with an error after 8 records: field U over the set ALL", remarks[None][0])

    def test_what_cannot_be_read(self):
        self.write("e.cfg", "ODB EXTRACTIONS\nEXTRACT_MASS\n")
        for arguments in (["none.cfg"], ["e.cfg", "none"], [self.directory]):
            run = self.run_program("check", *arguments, program="kolvex")
            self.assertEqual((run.status, run.out), (1, b""), arguments)
        self.assertEqual(self.run_program("check", program="kolvex").status, 2)

    def test_a_line_that_terminals_would_obey(self):
        self.write("e.cfg", b"ODB EXTRACTIONS\nEXTRACT_MASS PERCENTAGE = \x1b[2J\n\xff\xfe EXTRACT_MAS\n")
        run = self.run_program("check", "e.cfg", program="kolvex")
        self.assertEqual(run.status, REMARKS)
        self.assertIn(b"\\x1b[2J", run.out)
        self.assertNotIn(b"\x1b", run.out)
