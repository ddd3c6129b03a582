"""`kolvex locate`: its values are those of the records, its places those that numpy finds."""
import json
import math
import os
import unittest

import numpy as np

from database import Database as Model
from generate import Generator
from reference import number
from support import Database, ProgramTest, set_attributes
from test_export import add_mesh

SEEDS = int(os.environ.get("KOLVEX_SEEDS", "12"))
EVERYTHING = ["EXTRACT_FIELD EXTRACT_ALL EXTRACT_FIELD_SETS EXTRACT_FIELD_COMPONENTS TENSOR_INVARIANTS", "MINMAX_HISTORY",
              "ENGINEERING_MAX ENGINEERING_MIN"]


class LocateTest(ProgramTest):
    def locate(self, *arguments, status=0):
        run = self.run_program("job.odb", *arguments, "--json", program="locate")
        self.assertEqual(run.status, status, run.err)
        return json.loads(run.out)["records"]

    def by_name(self, *arguments, status=0):
        found = {}
        for record in self.locate(*arguments, status=status):
            found.setdefault(record["name"], []).append(record)
        return found

    def extract(self):
        """Name and value of each record, in their order."""
        self.run_program("-odb", "job.odb", "-config", "config.txt")
        return [line.split("\t") for line in self.path("params.txt").read_text().splitlines()]


def quantities(block, name, in_set):
    """The numbers of a block's rows in double, by the rules of numpy; None where it has none of the kind."""
    rows = block.data() if in_set else block.rows
    if block.type == 2 and not name:
        return rows[:, 0].astype("f8") if rows.shape[1] == 1 or in_set else None
    if block.type == 3 and name == "mag":
        return np.sqrt((rows.astype("f8") ** 2).sum(axis=1))
    if block.type == 3 and name in ("1", "2", "3") and int(name) <= rows.shape[1]:
        return rows[:, int(name) - 1].astype("f8")
    if 5 <= block.type <= 9 and name == "mises" and (in_set or block.has_elements):
        s = block.tensors()
        if not np.isfinite(s).all():
            return None
        d = s[:, :3] - s[:, :3].mean(axis=1, keepdims=True)
        return np.sqrt(1.5 * ((d ** 2).sum(axis=1) + 2 * (s[:, 3:] ** 2).sum(axis=1)))
    return None


class OracleTest(LocateTest):
    """Databases at random."""

    def subset(self, model, field, chosen):
        if chosen is None:
            return field
        owner = f"__{chosen['owner']}_" if chosen["owner"] else "__"
        wanted = ("ELEMENT_SET" if chosen["kind"] == "element" else "NODE_SET", owner + chosen["name"])
        # An instance and a part of one name: the instance comes first.
        tags = [labels for kind, tag, labels in model.regions if (kind, tag) == wanted]
        return field.subset(tags[0], wanted[0]) if len(tags) == 1 else None

    def check_place(self, model, record):
        step = next(s for s in model.steps if s.name == record["step"])
        frames = [f for f in step.frames if f.increment == record["frame"]]
        if len(frames) != 1 or record["value"] is None:
            return 0
        field = self.subset(model, next(f for f in frames[0].fields if f.name == record["field"]), record.get("set"))
        if field is None or len({b.type for b in field.blocks}) != 1:
            return 0
        values = [quantities(b, record["quantity"], "set" in record) for b in field.blocks]
        if any(v is None for v in values) or (len(values) > 1 and record["quantity"] in ("1", "2", "3") and "set" not in record):
            return 0
        places = {}  # the value by place; rows of a node with one value are one place
        for block, numbers in zip(field.blocks, values):
            for i, value in enumerate(numbers.tolist()):
                label = (block.nodes[i],) if block.nodes else (block.elements[i], block.points[i] if block.points else 0)
                if not math.isnan(value):
                    places.setdefault((block.instance, bool(block.nodes), *label, value), block.elements[i] if block.elements else -1)
        sign = -1 if record["extreme"] == "max" else 1
        order = sorted(places, key=lambda p: sign * p[-1])
        # Lengths over the whole model are computed in single precision.
        limit = 1e-6 if record["quantity"] in ("mag", "mises") else 0

        def is_close(a, b):
            return math.isclose(a, b, rel_tol=limit, abs_tol=1e-15 if limit else 0)

        if record["extreme"] in ("max", "min"):
            self.assertTrue(is_close(order[0][-1], float(record["value"])), (record, order[:3]))
            first = [record, *record["next"]]
            self.assertEqual(len(first), min(11, len(order)), record["name"])
            for mine, theirs in zip(first, order):
                self.assertTrue(is_close(float(mine["value"]), theirs[-1]), record["name"])
                label = (mine["node"],) if "node" in mine else (mine["element"], mine.get("integrationPoint", 0))
                near = [p for p in places if p[:-1] == (mine["instance"], "node" in mine, *label)
                        and is_close(p[-1], float(mine["value"]))]
                self.assertTrue(near, (record["name"], mine))
            if limit == 0:
                self.assertEqual(record["equal"], sum(p[-1] == order[0][-1] for p in order), record["name"])
        return 1

    def test_values_are_those_of_the_extraction_and_places_those_of_numpy(self):
        checked = compared = 0
        for seed in range(SEEDS):
            for path in list(self.directory.iterdir()):
                path.unlink()
            Generator(seed).make(self.path("job.odb"))
            self.config(*EVERYTHING, f"PERCENTAGE = {(0, 7, 30, 100)[seed % 4]}")
            records = self.extract()
            run = self.run_program("job.odb", "--params", "params.txt", "--config", "config.txt", "--json", program="locate")
            self.assertIn(run.status, (0, 3), run.err)
            found = {}
            for record in json.loads(run.out)["records"]:
                found.setdefault(record["name"], []).append(record)
            model = Model(self.path("job.odb"))
            recorded = {}
            for name, value in records:
                recorded.setdefault(name, []).append(value)
            for name, values in recorded.items():
                # Records that the numbers alone leave out, as of sets with nothing but NaN, make the lists differ.
                mine = [r for r in found.get(name, [])]
                if len(mine) != len(values):
                    continue
                for record, value in zip(mine, values):
                    if record["value"] is None:
                        continue
                    self.assertEqual(number(float(record["value"])), value, (seed, name))
                    compared += 1
                    checked += "field" in record and self.check_place(model, record)
        self.assertGreater(compared, 80 * SEEDS)
        self.assertGreater(checked, 10 * SEEDS)


class PlacesTest(LocateTest):
    """A database made by hand: two bricks side by side, nodes 101 to 112, elements 7 and 9."""

    def setUp(self):
        super().setUp()
        with Database(self.path("job.odb")) as odb:
            self.places = {101 + i: [x, y, z] for i, (z, y, x) in enumerate((z, y, x) for z in (0, 1) for y in (0, 1) for x in (0, 1, 2))}
            add_mesh(odb, (list(self.places), list(self.places.values())), {
                "C3D8": ([7, 9], [[101, 102, 105, 104, 107, 108, 111, 110], [102, 103, 106, 105, 108, 109, 112, 111]])})
            odb.location("nodes", "nodal", nodeLabels=range(101, 113))
            odb.location("points", "integrationPoint", elementLabels=[7, 7, 9, 9], integrationPoints=[1, 2, 1, 2])
            odb.location("corners", "elementNodal", nodeLabels=[102, 105, 102, 105], elementLabels=[7, 7, 9, 9])
            odb.file["assembly/nodeSets/TOP/I-1"] = np.array([107, 108, 109], "i4")
            odb.file["assembly/elementSets/TOP/I-1"] = np.array([9], "i4")
            step = odb.step("Step-1", (1, 4), description="")
            self.rows = np.array([[5, 1, 9, 9, 2, 3, 4, 7, 8, 6, 10, 0.5], [5, 1, 3, 2, 2, 3, 4, 30, 8, 6, 10, 0.5]])
            odb.field(step, "NT", 2, [("nodes", self.rows)])
            odb.field(step, "PEEQ", 2, [("points", np.array([[1, 3, 3, 2]], "f4"))])["frames"] = np.array([1], "i4")
            stress = np.zeros((2, 4, 6), "f4")
            stress[:, :, 0] = [8, 6, 8, 9]
            odb.field(step, "S", 5, [("corners", stress)], ["11", "22", "33", "12", "13", "23"], validInvariants=[1, 4])
            history = step.create_group("history/Node 103")
            set_attributes(history, node=103)
            history["outputs/U1"] = np.array([[0, 0], [0.5, 12.25], [0.75, 12.25], [1, -3]], "f4")

    def test_a_node_with_its_coordinates_step_and_frame(self):
        [found] = self.locate("Step_1__Frame_4__NT__max")
        self.assertEqual((found["value"], found["label"], found["node"], found["coordinates"]), (30, 108, 108, self.places[108]))
        self.assertEqual((found["instance"], found["step"], found["frame"], found["frameValue"]), ("I-1", "Step-1", 4, 1))
        self.assertEqual([(p["value"], p["node"]) for p in found["next"]],
                         [(10, 111), (8, 109), (6, 110), (5, 101), (4, 107), (3, 103), (3, 106), (2, 104), (2, 105), (1, 102)])
        self.assertEqual((found["equal"], found["rows"]), (1, 12))

    def test_equal_values_are_counted_and_the_first_row_is_the_place(self):
        [found] = self.locate("Step_1__Frame_1__NT__max", "--next", "2")
        self.assertEqual((found["value"], found["node"], len(found["next"])), (10, 111, 2))
        [found] = self.locate("Step_1__Frame_4__S__mises__max")
        self.assertEqual((found["value"], found["node"], found["element"], found["equal"]), (9, 105, 9, 1))
        self.assertEqual([(p["value"], p["node"], p["element"]) for p in found["next"]], [(8, 102, 7), (6, 105, 7)])
        self.assertEqual(self.locate("Step_1__Frame_4__S__11__max")[0]["next"][0]["value"], 8)

    def test_an_integration_point_lies_at_the_mean_of_its_element(self):
        [found] = self.locate("Step_1__Frame_4__PEEQ__max")
        self.assertEqual((found["element"], found["integrationPoint"], found["coordinates"], found["equal"]), (7, 2, [0.5, 0.5, 0.5], 2))
        self.assertEqual([(p["element"], p["integrationPoint"], p["coordinates"]) for p in found["next"]],
                         [(9, 1, [1.5, 0.5, 0.5]), (9, 2, [1.5, 0.5, 0.5]), (7, 1, [0.5, 0.5, 0.5])])

    def test_a_name_that_occurs_twice_gives_both_with_their_sets(self):
        found = self.locate("Step_1__Frame_4__TOP__S__mises__max")
        self.assertEqual([(r["set"]["kind"], r["value"]) for r in found], [("element", 9)])
        with Database(self.path("two.odb")) as odb:
            odb.location("corners", "elementNodal", nodeLabels=[1, 2, 2, 3], elementLabels=[1, 1, 2, 2])
            odb.file["assembly/nodeSets/TOP/I-1"] = np.array([2], "i4")
            odb.file["assembly/elementSets/TOP/I-1"] = np.array([1], "i4")
            stress = np.zeros((1, 4, 6), "f4")
            stress[0, :, 0] = [100, 60, 40, 10]
            odb.field(odb.step("Step-1"), "S", 5, [("corners", stress)], ["11", "22", "33", "12", "13", "23"])
        run = self.run_program("two.odb", "Step_1__Frame_1__TOP__S__mises__max", "--json", program="locate")
        found = json.loads(run.out)["records"]
        self.assertEqual([(r["set"]["kind"], r["value"], r["node"], r["element"], r["coordinates"]) for r in found],
                         [("element", 100, 1, 1, None), ("node", 60, 2, 1, None)])

    def test_over_time_looks_at_all_frames_of_the_field(self):
        [found] = self.locate("Step_1__Frame_1__TOP__NT__max", "--over-time")
        self.assertEqual([(f["frame"], f["value"], f["node"]) for f in found["overTime"]], [(1, 8, 109), (4, 30, 108)])
        [found] = self.locate("Step_1__Frame_4__PEEQ__max", "--over-time")
        self.assertEqual([f["frame"] for f in found["overTime"]], [4])

    def test_engineering_extremes_with_the_rows_that_they_pass_over(self):
        config = self.config("EXTRACT_FIELD EXTRACT_ALL EXTRACT_FIELD_SETS ENGINEERING_MAX ENGINEERING_MIN", "PERCENTAGE = 25")
        [found] = self.locate("Step_1__Frame_4__NT__enggmax", "--config", config)
        # Of twelve numbers the third largest: 30, 10, 8.
        self.assertEqual((found["value"], found["node"]), (8, 109))
        self.assertEqual((found["engineering"]["aim"], found["engineering"]["before"], found["engineering"]["order"]), (3, 2, "descending"))
        self.assertEqual([(p["value"], p["node"]) for p in found["engineering"]["passedOver"]], [(30, 108), (10, 111)])
        self.assertEqual(found["next"][0]["value"], 6)
        [found] = self.locate("Step_1__Frame_4__NT__enggmin", "--config", config)
        self.assertEqual((found["value"], [p["value"] for p in found["engineering"]["passedOver"]]), (2, [0.5, 1]))
        # Without a configuration nothing is passed over.
        [found] = self.locate("Step_1__Frame_4__NT__enggmax")
        self.assertEqual((found["value"], found["engineering"]["passedOver"]), (30, []))

    def test_histories_have_their_sample_and_time(self):
        [found] = self.locate("Step_1__History_Max__U1_103")
        self.assertEqual((found["value"], found["abscissa"], found["sample"], found["equal"]), (12.25, 0.5, 1, 2))
        self.assertEqual((found["node"], found["coordinates"], found["region"]), (103, self.places[103], "Node 103"))
        [found] = self.locate("Step_1__History_Min__U1_103")
        self.assertEqual((found["value"], found["abscissa"]), (-3, 1))

    def test_patterns_and_files_of_records(self):
        self.config(*EVERYTHING)
        names = [name for name, _ in self.extract()]
        found = self.by_name("Step_1__Frame_4__*NT__m??")
        self.assertEqual(list(found), [f"Step_1__Frame_4__{s}NT__{e}" for s in ("", "TOP__") for e in ("max", "min")])
        found = self.by_name("--params", "params.txt", "*__max", "--config", "config.txt")
        self.assertEqual(list(found), [name for name in names if name.endswith("__max")])
        self.assertEqual(found["Step_1__Frame_4__NT__max"][0]["recorded"], ["30"])
        found = self.by_name("--params", "params.txt", "--config", "config.txt")
        self.assertEqual(list(found), names)

    def test_what_cannot_be_located_has_a_status_and_the_others_are(self):
        run = self.run_program("job.odb", "Nothing__max", "Step_1__Frame_4__NT__max", "Step_1__History__U1_103", "X*", program="locate")
        self.assertEqual(run.status, 3)
        self.assertEqual(run.err.decode().splitlines(), ["Nothing__max: is not a record of this database", "Step_1__History__U1_103: is not an extreme",
                                                         "X*: is not a record of this database"])
        self.assertIn(b"Step_1__Frame_4__NT__max\n  Step-1, frame 4 (value 1), max value of NT over the whole model\n"
                      b"  30               I-1 node 108 at (1, 0, 1)\n", run.out)

    def test_a_field_without_numbers_has_no_value(self):
        with Database(self.path("job.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1])
            odb.field(odb.step("Step-1"), "NT", 2, [("nodes", np.array([[np.nan]]))])
        run = self.run_program("job.odb", "Step_1__Frame_1__NT__max", "--json", program="locate")
        self.assertEqual((run.status, json.loads(run.out)["records"][0]["value"]), (3, None))

    def test_wrong_files_and_usage(self):
        self.write("bad.txt", "no tab\n")
        for arguments, status in ((["job.odb"], 2), ([], 2), (["none.odb", "x"], 1), (["job.odb", "--params", "none.txt"], 1),
                                  (["job.odb", "--params", "bad.txt"], 1), (["job.odb", "x", "--next", "-1"], 2)):
            self.assertEqual(self.run_program(*arguments, program="locate").status, status, arguments)
