"""kolvex show: what it prints against what h5py and the databases' makers know."""
import json
import sys

import h5py
import numpy as np

from support import ROOT, Database, ProgramTest, set_attributes, small_database, text

sys.path.insert(0, str(ROOT / "tests/oracle"))
import database as oracle  # noqa: E402
from generate import Generator  # noqa: E402

SIX = ("11", "22", "33", "12", "13", "23")


def rich_database(path):
    """Two steps; tensors in two blocks, vectors, scalars in double precision; sets of every owner, two of one name; histories."""
    with Database(path) as odb:
        odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
        odb.location("bricks", "integrationPoint", elementLabels=[1, 1], integrationPoints=[1, 2])
        odb.location("shells", "integrationPoint", elementLabels=[2], integrationPoints=[1])
        set_attributes(odb.file["locations/bricks"], elementType="C3D8")
        set_attributes(odb.file["locations/shells"], elementType="S4", sectionPoint=np.int32(3))
        odb.file["assembly/elementSets/TOP/I-1"] = np.array([1, 2], "i4")
        odb.file["assembly/nodeSets/TOP/I-1"] = np.array([1, 2, 3], "i4")
        odb.file["assembly/instances/I-1/nodeSets/TIP"] = np.array([3], "i4")
        odb.file["parts/P/elementSets/WarnElem"] = np.array([1], "i4")
        mesh = odb.file.create_group("assembly/instances/I-1/mesh")
        mesh["nodes/labels"] = np.array([1, 2, 3], "i4")
        mesh["nodes/coordinates"] = np.zeros((3, 3))
        mesh["elements/S3/labels"] = np.array([2], "i4")
        mesh["elements/S3/connectivity"] = np.array([[1, 2, 3]], "i4")
        set_attributes(odb.file["/"], title="a plate", producer="hand")
        for name, increments in (("Load Case-1", (1, 5)), ("Load Case-2", (1,))):
            count = len(increments)
            step = odb.step(name, increments, mass=2.5, massCenter=[0.0, 1.5, 3.0], description="it is pulled")
            odb.field(step, "S", 5, [("bricks", np.zeros((count, 2, 6), "f4")), ("shells", np.zeros((count, 1, 6), "f4"))], SIX,
                      description="Stress components", validInvariants=np.array([4, 5], "i4"))
            odb.field(step, "U", 3, [("nodes", np.zeros((count, 3, 3), "f4"))], ("1", "2", "3"), description="Spatial displacement")
            odb.field(step, "NT 11", 2, [("nodes", np.zeros((count, 3)))])
            region = step.create_group("history/Node 3")
            set_attributes(region, node=np.int32(3), description="Node 3 of TIP")
            region["outputs/U1"] = np.zeros((4, 2), "f4")
            region["outputs/U2"] = np.zeros((4, 2), "f4")


class ShowTest(ProgramTest):
    def show(self, *arguments, status=0):
        run = self.run_program("show", *arguments, program="kolvex")
        self.assertEqual(run.status, status, run.err)
        return (run.out if status == 0 else run.err).decode()

    def json(self, *arguments):
        return json.loads(self.show(*arguments, "--json"))

    def test_all_of_a_database_is_in_the_tables(self):
        rich_database(self.path("m.odb"))
        lines = [line.split() for line in self.show("m").splitlines()]
        size = self.path("m.odb").stat().st_size
        self.assertEqual(lines[0], ["m.odb:", "layout", "2,", str(size), "bytes,", "no", "catalog"])
        self.assertIn("written by hand".split(), lines)
        self.assertIn("I-1 P 3 1 S3".split(), lines)
        self.assertIn("1 Load Case-1 2 0 to 1 2.5 (0, 1.5, 3) it is pulled".split(), lines)
        self.assertIn("2 Load Case-2 1 0 2.5 (0, 1.5, 3) it is pulled".split(), lines)
        self.assertIn("Load Case-1 5 1 Increment 5".split(), lines)
        self.assertIn("S 1-2 1-2 tensor integrationPoint single 3 11 22 33 12 13 23 EXTRACT_STRESS Stress components".split(), lines)
        self.assertIn("U 1-2 1-2 vector nodal single 3 1 2 3 EXTRACT_SPATIAL Spatial displacement".split(), lines)
        self.assertIn("NT 11 1-2 1-2 scalar nodal double 3 EXTRACT_ALL".split(), lines)
        self.assertIn("TOP assembly elements 2".split(), lines)
        self.assertIn("TOP assembly nodes 3".split(), lines)
        self.assertIn("TIP instance I-1 nodes 1".split(), lines)
        self.assertIn("WarnElem part P elements 1 left out of the records".split(), lines)
        self.assertIn("Load Case-2 Node 3 U1 U2 4 Node 3 of TIP".split(), lines)

    def test_a_part_of_it(self):
        rich_database(self.path("m.odb"))
        lines = [line.split() for line in self.show("m", "--step", "2", "--field", "S").splitlines()]
        self.assertIn("Load Case-2 S I-1 integrationPoint S4 3 tensor single 1 1 6 1".split(), lines)
        self.assertIn("invariants of S: mises tresca".split(), lines)
        self.assertNotIn("TOP", self.show("m", "--field", "[SU]"))
        shown = self.show("m", "--set", "T*")
        self.assertIn("\nnodes TOP in I-1:\n  1-3\n", shown)
        self.assertNotIn("Spatial", shown)
        self.assertIn(b'there is no field "SS"', self.run_program("show", "m", "--field", "SS", program="kolvex").err)
        for wrong in (["--field", "SS"], ["--set", "top"], ["--step", "3"], ["--step", "Load Case"]):
            self.show("m", *wrong, status=1)

    def test_random_databases_against_h5py(self):
        for seed in range(12):
            with self.subTest(seed):
                Generator(seed).make(self.path("m.odb"))
                self.compare(self.json("m"), oracle.Database(self.path("m.odb")))
                self.path("m.odb").unlink()

    def compare(self, shown, expected):
        self.assertEqual(shown["layout"], expected.layout)
        self.assertEqual([step["name"] for step in shown["steps"]], [step.name for step in expected.steps])
        for found, step in zip(shown["steps"], expected.steps):
            self.assertEqual(found.get("mass", -1.0), step.mass)
            self.assertEqual([frame["frame"] for frame in found["frames"]], [frame.increment for frame in step.frames])
        fields = {}
        for step in expected.steps:
            for frame in step.frames:
                for field in frame.fields:
                    rows = sum(len(block.rows) for block in field.blocks)
                    fields.setdefault((step.name, field.name), []).append((frame.increment, rows, {b.position for b in field.blocks}))
        found = {(field["step"], field["name"]): field for field in shown["fields"] if field["frames"]}
        self.assertEqual(set(found), set(fields))
        for key, frames in fields.items():
            self.assertEqual(found[key]["frames"], [increment for increment, _, _ in frames])
            self.assertEqual(found[key]["rows"], max(rows for _, rows, _ in frames))
            self.assertEqual(found[key]["fewestRows"], min(rows for _, rows, _ in frames))
            self.assertLessEqual(set.union(*(positions for _, _, positions in frames)), {b["position"] for b in found[key]["blocks"]})
        tags = [("ELEMENT_SET" if s["of"] == "elements" else "NODE_SET", "__" + (s["owner"] + "_" if s["owner"] else "") + s["name"])
                for s in shown["sets"]]
        self.assertEqual(tags, [(kind, tag) for kind, tag, _ in expected.regions])
        self.assertEqual([s["leftOut"] for s in shown["sets"]], ["Warn" in tag or "Info" in tag for _, tag, _ in expected.regions])
        outputs = [(step.name, region.name, name, len(samples), samples.shape[1])
                   for step in expected.steps for region in step.regions for name, samples in region.outputs]
        self.assertEqual([(h["step"], h["region"], h["name"], h["samples"], h["width"]) for h in shown["histories"]], outputs)

    def test_labels_of_sets_against_h5py(self):
        for seed in range(4):
            Generator(seed).make(self.path("m.odb"))
            expected = oracle.Database(self.path("m.odb")).regions
            for found, (_, _, labels) in zip(self.json("m", "--set", "*")["sets"], expected, strict=True):
                groups = {group["instance"]: set(group["labels"]) for group in found.get("labels", [])}
                self.assertEqual({k: v for k, v in groups.items() if v}, {k: v for k, v in labels.items() if v})
            self.path("m.odb").unlink()

    def test_long_lists_are_cut(self):
        with Database(self.path("m.odb")) as odb:
            odb.step("Step-1", range(1, 100))
        short, whole = self.show("m"), self.show("m", "--all")
        self.assertIn("... and 59 more frames; --all shows them\n", short)
        self.assertNotIn("Increment 41\n", short)
        self.assertIn("Increment 99\n", whole)
        self.assertEqual(len(self.json("m")["steps"][0]["frames"]), 99)

    def test_the_configuration_that_it_writes_takes_what_is_there(self):
        rich_database(self.path("m.odb"))
        self.write("e.cfg", self.show("m", "--config"))
        run = self.run_program("-odb", "m", "-config", "e.cfg")
        self.assertEqual(run.err, b"")
        names = [line.split(b"\t")[0] for line in run.text("params.txt").splitlines()]
        self.assertIn(b"Load_Case_1__Frame_5__S__mises__max", names)
        self.assertIn(b"Load Case_1__Mass", names)
        self.assertIn(b"Load_Case_2__History_Max__U1_3", names)
        self.assertIn(f"gives {len(names)} records", self.path("e.cfg").read_text())
        check = self.run_program("check", "e.cfg", "m", program="kolvex")
        self.assertEqual((check.status, check.err), (0, b""), check.out)

    def test_a_configuration_for_nothing_has_no_keywords(self):
        with Database(self.path("m.odb")):
            pass
        self.assertTrue(self.show("m", "--config").endswith("\nODB EXTRACTIONS\n"))

    def test_names_of_chosen_records(self):
        rich_database(self.path("m.odb"))
        config = self.config("EXTRACT_ALL", "EXTRACT_FIELD_SETS")
        names = self.show("m", "--records", config, "--step", "1", "--field", "S", "--set", "TOP").split()
        self.assertEqual(names, [f"Load_Case_1__Frame_{i}__TOP__S__mises__{e}" for i in (1, 5) for e in ("max", "min")])

    def test_the_list_ends_where_the_run_ends(self):
        with Database(self.path("m.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1])
            odb.file["assembly/nodeSets/ALL/I-1"] = np.array([1], "i4")
            odb.field(odb.step("Step-1"), "U", 3, [("nodes", np.zeros((1, 1, 3)))], ("1", "2", "3"))
        config = self.config("EXTRACT_ALL", "EXTRACT_FIELD_COMPONENTS", "EXTRACT_FIELD_SETS")
        run = self.run_program("-odb", "m", "-config", config)
        self.assertIn(b"double precision", run.err)
        written = [line.split(b"\t")[0].decode() for line in run.text("params.txt").splitlines()]
        self.assertEqual(self.show("m", "--records", config).split(), written)

    def test_what_cannot_be_read(self):
        self.write("nonsense.odb", "no database")
        small_database(self.path("m.odb"))
        self.assertIn("nonsense.odb", self.show("nonsense", status=1))
        self.assertIn("missing", self.show("missing", status=1))
        self.assertIn("none.cfg", self.show("m", "--records", "none.cfg", status=1))
        self.write("bad.cfg", "ODB EXTRACTIONS\nPERCENTAGE 5\n")
        self.assertIn("bad.cfg:2", self.show("m", "--records", "bad.cfg", status=1))
        self.show("m", "--config", "--json", status=2)
        self.show("m", "--config", "--step", "1", status=2)
        self.show(status=2)

    def test_texts_that_terminals_obey_are_shown_escaped(self):
        small_database(self.path("m.odb"))
        with h5py.File(self.path("m.odb"), "r+") as odb:
            odb["steps/Step-1"].attrs["description"] = text("\x1b[2J")
            odb["steps/Step-1/fields/NT"].attrs["description"] = text("a\nb")
        shown = self.show("m")
        self.assertIn("\\x1b[2J", shown)
        self.assertIn("a\\x0ab", shown)
        self.assertNotIn("\x1b", shown)
        self.assertEqual(self.json("m")["fields"][0]["description"], "a\nb")
