"""`kolvex export`: what is in the files, by a reader of our own and, where it is installed, by VTK's."""
import subprocess
import time
import unittest

import numpy as np

from support import BIN, Database, ProgramTest, set_attributes, text
from vtu import Vtu, frames_of

try:
    import vtk
    from vtk.util.numpy_support import vtk_to_numpy
except ImportError:
    vtk = None

# Of each element type: places of its corners in the order of the decks, and the edges whose middles follow them (for lines
# between the ends).
TRIANGLE = [(0, 0, 0), (1, 0, 0), (0, 1, 0)]
QUAD = [(0, 0, 0), (1, 0, 0), (1, 1, 0), (0, 1, 0)]
TETRAHEDRON = [*TRIANGLE, (0, 0, 1)]
WEDGE = [*TRIANGLE, *[(x, y, 1) for x, y, _ in TRIANGLE]]
BRICK = [*QUAD, *[(x, y, 1) for x, y, _ in QUAD]]
TRIANGLE_EDGES = [(0, 1), (1, 2), (2, 0)]
QUAD_EDGES = [(0, 1), (1, 2), (2, 3), (3, 0)]
TETRAHEDRON_EDGES = [*TRIANGLE_EDGES, (0, 3), (1, 3), (2, 3)]
WEDGE_EDGES = [*TRIANGLE_EDGES, (3, 4), (4, 5), (5, 3), (0, 3), (1, 4), (2, 5)]
BRICK_EDGES = [*QUAD_EDGES, (4, 5), (5, 6), (6, 7), (7, 4), (0, 4), (1, 5), (2, 6), (3, 7)]
LINE = [(0, 0, 0), (1, 0, 0)]
# {type: (VTK's type, corners, edges of the decks)}; in VTK the edges are the same but for their order in wedges.
ELEMENTS = {
    "C3D4": (10, TETRAHEDRON, []), "C3D10": (24, TETRAHEDRON, TETRAHEDRON_EDGES), "C3D10T": (24, TETRAHEDRON, TETRAHEDRON_EDGES),
    "TET10": (24, TETRAHEDRON, TETRAHEDRON_EDGES), "C3D6": (13, WEDGE, []), "WEDGE6": (13, WEDGE, []), "F3D6": (13, WEDGE, []),
    "C3D15": (26, WEDGE, WEDGE_EDGES), "WEDGE15": (26, WEDGE, WEDGE_EDGES), "C3D8I": (12, BRICK, []), "HEX8": (12, BRICK, []),
    "C3D20R": (25, BRICK, BRICK_EDGES), "HEX20": (25, BRICK, BRICK_EDGES), "S3": (5, TRIANGLE, []), "S4R": (9, QUAD, []),
    "S6": (22, TRIANGLE, TRIANGLE_EDGES), "S8R": (23, QUAD, QUAD_EDGES), "CPS3": (5, TRIANGLE, []), "CPE4R": (9, QUAD, []),
    "CPE6": (22, TRIANGLE, TRIANGLE_EDGES), "CAX8R": (23, QUAD, QUAD_EDGES), "M3D4": (9, QUAD, []), "TRI3": (5, TRIANGLE, []),
    "QUAD8": (23, QUAD, QUAD_EDGES), "US3": (5, TRIANGLE, []), "B31R": (3, LINE, []), "B32R": (21, LINE, [(0, 1)]),
    "T2D2": (3, LINE, []), "T3D3": (21, LINE, [(0, 1)]), "LINE3": (21, LINE, [(0, 1)]), "D": (21, LINE, [(0, 1)]), "U1": (3, LINE, []),
}
# Nodes of elements without a shape.
OTHERS = {"SPRINGA": (2, 3), "SPRING1": (1, 1), "SPRING2": (2, 3), "DASHPOTA": (2, 3), "GAPUNI": (2, 3), "MASS": (1, 1), "DCOUP3D": (1, 1),
          "U10": (5, 2), "C3D99": (9, 2)}


def nodes_of(corners, edges):
    """All nodes of an element in the order of the decks."""
    corners = np.array(corners, float)
    middles = [(corners[a] + corners[b]) / 2 for a, b in edges]
    return np.array([corners[0], *middles, corners[1]] if len(corners) == 2 else [*corners, *middles])


def add_mesh(odb, nodes, elements, instance="I-1"):
    """nodes: labels and coordinates; elements: {type: (labels, connectivity)}."""
    mesh = odb.file.require_group(f"assembly/instances/{instance}/mesh")
    mesh["nodes/labels"] = np.array(nodes[0], "i4")
    mesh["nodes/coordinates"] = np.array(nodes[1], "f8").reshape(-1, 3)
    for name, (labels, connectivity) in elements.items():
        mesh[f"elements/{name}/labels"] = np.array(labels, "i4")
        mesh[f"elements/{name}/connectivity"] = np.array(connectivity, "i4").reshape(len(labels), -1)


class ExportTest(ProgramTest):
    def export(self, *arguments, status=0, **options):
        run = self.run_program("job.odb", "--to", "vtu", *arguments, program="export", **options)
        self.assertEqual(run.status, status, run.err)
        return run

    def frames(self, name="job.pvd"):
        return [Vtu(path) for _, path in frames_of(self.path(name))]

    def two_bricks(self, fields=lambda odb, step: None, increments=(1,), **attributes):
        """Two bricks side by side, nodes 101 to 112, elements 7 and 9."""
        with Database(self.path("job.odb")) as odb:
            places = [(x, y, z) for z in (0, 1) for y in (0, 1) for x in (0, 1, 2)]
            add_mesh(odb, (range(101, 113), places), {"C3D8": ([7, 9], [[101, 102, 105, 104, 107, 108, 111, 110],
                                                                        [102, 103, 106, 105, 108, 109, 112, 111]])})
            odb.location("nodes", "nodal", nodeLabels=range(101, 113))
            odb.file["assembly/elementSets/LEFT/I-1"] = np.array([7], "i4")
            odb.file["assembly/nodeSets/LEFT/I-1"] = np.array([101, 104, 107, 110, 999], "i4")
            odb.file["assembly/instances/I-1/elementSets/a<b&c"] = np.array([7, 9], "i4")
            odb.file["parts/P/elementSets/RIGHT"] = np.array([9], "i4")
            step = odb.step("Step-1", increments, **attributes)
            fields(odb, step)
            return places


class CellsTest(ExportTest):
    def test_every_element_type_has_its_cell(self):
        with Database(self.path("job.odb")) as odb:
            labels, places, elements, node, element = [], [], {}, 1, 1
            for k, (name, (_, corners, edges)) in enumerate(ELEMENTS.items()):
                mine = nodes_of(corners, edges) + [10 * k, 0, 0]
                elements[name] = ([element], [range(node, node + len(mine))])
                labels += range(node, node + len(mine))
                places += mine.tolist()
                node, element = node + len(mine), element + 1
            for name, (count, _) in OTHERS.items():
                elements[name] = ([element], [range(1, 1 + count)])
                element += 1
            add_mesh(odb, (labels, places), elements)
            odb.step("Step-1")
        self.export()
        [vtu] = self.frames()
        names = sorted([*ELEMENTS, *OTHERS])
        self.assertEqual(len(vtu.cells), len(names))
        for name, (kind, points), label in zip(names, vtu.cells, vtu.cellData["element"]):
            with self.subTest(name):
                self.assertEqual(label, [*ELEMENTS, *OTHERS].index(name) + 1)
                if name in OTHERS:
                    self.assertEqual(kind, OTHERS[name][1])
                    continue
                expected, corners, edges = ELEMENTS[name]
                self.assertEqual(kind, expected)
                at = vtu.points[points]
                count = len(corners)
                self.assertEqual(len(at), count + len(edges))
                for middle, (a, b) in zip(at[count:], edges):
                    np.testing.assert_array_equal(middle, (at[a] + at[b]) / 2)
                if kind in (13, 26):  # the first face of VTK's wedges looks out of the wedge
                    self.assertLess(np.cross(at[1] - at[0], at[2] - at[0]) @ (at[3] - at[0]), 0)
                elif count > 2 and at[:, 2].any():
                    self.assertGreater(np.cross(at[1] - at[0], at[3 if count == 8 else 2] - at[0]) @ (at[count - 1] - at[0]), 0)

    def test_a_node_that_is_not_there_is_an_error(self):
        with Database(self.path("job.odb")) as odb:
            add_mesh(odb, ([1, 2], [0] * 6), {"B%2F31": ([3], [[1, 5]])})
            odb.step("Step-1")
        run = self.export(status=1)
        self.assertIn(b"job.odb: /assembly/instances/I-1/mesh/elements/B%2F31: element 3 has the node 5", run.err)
        self.assertEqual([p.name for p in self.directory.iterdir()], ["job.odb"])

    def test_points_alone_are_a_series_too(self):
        with Database(self.path("job.odb")) as odb:
            add_mesh(odb, ([4, 2], [1, 2, 3, 4, 5, 6]), {})
            odb.step("Step-1")
        for packed in ([], ["--zlib"]):
            self.export(*packed)
            [vtu] = self.frames()
            self.assertEqual((vtu.points.tolist(), vtu.cells), ([[1, 2, 3], [4, 5, 6]], []))
            self.assertEqual(vtu.pointData["node"].tolist(), [4, 2])


class FieldsTest(ExportTest):
    def test_values_at_nodes_are_data_of_points(self):
        rng = np.random.default_rng(16)
        temperatures, moved = rng.random((2, 11)), rng.random((2, 12, 3)).astype("f4")

        def fields(odb, step):
            odb.location("some", "nodal", nodeLabels=range(112, 101, -1))
            odb.field(step, "NT", 2, [("some", temperatures)])
            odb.field(step, "U", 3, [("nodes", moved)], ["U1", "U2", "U3"])

        self.two_bricks(fields, (3, 5))
        self.export()
        for i, vtu in enumerate(self.frames()):
            self.assertEqual(vtu.pointData["NT"].dtype, "f8")
            self.assertTrue(np.isnan(vtu.pointData["NT"][0]))
            np.testing.assert_array_equal(vtu.pointData["NT"][1:], temperatures[i][::-1])
            self.assertEqual(vtu.pointData["U"].dtype, "f4")
            np.testing.assert_array_equal(vtu.pointData["U"], moved[i])
            self.assertEqual(vtu.components["U"], ["U1", "U2", "U3"])
            self.assertEqual(vtu.pointData["node"].tolist(), list(range(101, 113)))
            self.assertEqual(vtu.fieldData["frame"], (3, 5)[i])
            self.assertEqual((vtu.fieldData["step"], vtu.fieldData["description"]), ("Step-1", f"Increment {(3, 5)[i]}"))

    def corners(self, odb):
        """A location with a row for each node of each brick."""
        mesh = odb.file["assembly/instances/I-1/mesh/elements/C3D8"]
        nodes, elements = mesh["connectivity"][()], mesh["labels"][()]
        odb.location("corners", "elementNodal", nodeLabels=nodes.ravel(), elementLabels=np.repeat(elements, 8))
        return nodes.ravel()

    def test_equal_values_of_all_elements_at_a_node_stay_what_they_are(self):
        rows = np.random.default_rng(17).random((12, 6)).astype("f4")

        def fields(odb, step):
            nodes = self.corners(odb)
            odb.field(step, "S", 5, [("corners", rows[nodes - 101][None])], ["S11", "S22", "S33", "S12", "S13", "S23"])

        self.two_bricks(fields)
        self.export()
        [vtu] = self.frames()
        self.assertEqual(vtu.components["S"], ["S11", "S22", "S33", "S12", "S23", "S13"])
        np.testing.assert_array_equal(vtu.pointData["S"], rows[:, [0, 1, 2, 3, 5, 4]])

    def test_different_values_at_a_node_become_a_mean_that_is_called_so(self):
        rows = np.random.default_rng(18).random((2, 16)).astype("f4")
        rows[0] = 1.5  # in one frame they are equal; the name of an array is the same in all frames

        def fields(odb, step):
            self.nodes = self.corners(odb)
            odb.field(step, "P", 2, [("corners", rows)])

        self.two_bricks(fields, (1, 2))
        self.export()
        for vtu, values in zip(self.frames(), rows):
            mean = [values[self.nodes == node].astype("f8").mean().astype("f4") for node in range(101, 113)]
            np.testing.assert_array_equal(vtu.pointData["P (mean)"], mean)
            self.assertNotIn("P", vtu.pointData)

    def test_values_of_integration_points_become_a_mean_and_each_its_own_array(self):
        rows = np.random.default_rng(19).random((1, 5)).astype("f4")

        def fields(odb, step):
            odb.location("points", "integrationPoint", elementLabels=[9, 9, 9, 7, 7], integrationPoints=[1, 2, 3, 1, 2])
            odb.field(step, "PEEQ_IP", 2, [("points", rows)])

        self.two_bricks(fields)
        self.export("--each-point")
        [vtu] = self.frames()
        [r] = rows.astype("f8")
        np.testing.assert_array_equal(vtu.cellData["PEEQ_IP (mean)"], np.array([(r[3] + r[4]) / 2, (r[0] + r[1] + r[2]) / 3], "f4"))
        np.testing.assert_array_equal(vtu.cellData["PEEQ_IP point 1"], rows[0, [3, 0]])
        np.testing.assert_array_equal(vtu.cellData["PEEQ_IP point 3"], np.array([np.nan, rows[0, 2]], "f4"))

    def test_values_of_elements_are_data_of_cells(self):
        def fields(odb, step):
            odb.location("one", "wholeElement", elementLabels=[9])
            odb.location("centres", "centroid", elementLabels=[9, 7])
            odb.field(step, "EVOL", 2, [("one", np.array([[2.5]]))])
            odb.field(step, "E", 5, [("centres", np.arange(12, dtype="f4").reshape(1, 2, 6))])

        self.two_bricks(fields)
        self.export()
        [vtu] = self.frames()
        np.testing.assert_array_equal(vtu.cellData["EVOL"], [np.nan, 2.5])
        np.testing.assert_array_equal(vtu.cellData["E"], [[6, 7, 8, 9, 11, 10], [0, 1, 2, 3, 5, 4]])
        self.assertEqual(vtu.components["E"], ["11", "22", "33", "12", "23", "13"])

    def test_section_points_and_blocks_with_other_components(self):
        def fields(odb, step):
            for k, (label, point) in enumerate(((7, 1), (7, 5), (9, 1))):
                odb.location(f"l{k}", "centroid", elementLabels=[label])
                set_attributes(odb.file[f"locations/l{k}"], sectionPoint=point, sectionPointDescription="top" if point == 5 else "")
            field = odb.field(step, "S", 5, [("l0", np.array([[[1, 2, 3]]], "f4")), ("l1", np.array([[[4, 5, 6]]], "f4")),
                                             ("l2", np.array([[[7, 8, 9, 10, 11, 12]]], "f4"))], ["S11", "S22", "S33", "S12", "S13", "S23"])
            for k in (0, 1):
                set_attributes(field[f"blocks/{k}"], type=7, componentLabels=["S11", "S22", "S12"])

        self.two_bricks(fields)
        self.export()
        [vtu] = self.frames()
        none = np.nan
        np.testing.assert_array_equal(vtu.cellData["S [section point 1]"], [[1, 2, none, 3, none, none], [7, 8, 9, 10, 12, 11]])
        np.testing.assert_array_equal(vtu.cellData["S [top]"], [[4, 5, 6], [none] * 3])

    def test_rows_where_the_mesh_has_nothing_are_counted(self):
        def fields(odb, step):
            odb.location("stray", "nodal", nodeLabels=[101, 500, 501])
            odb.field(step, "NT", 2, [("stray", np.array([[1, 2, 3]], "f4"))])

        self.two_bricks(fields)
        run = self.export()
        self.assertEqual(run.err, b"job.odb: warning: NT of Step-1: 2 rows lie where the mesh has nothing; they are left out\n")
        self.assertEqual(self.frames()[0].pointData["NT"][0], 1)

    def test_two_instances_lie_one_behind_the_other(self):
        with Database(self.path("job.odb")) as odb:
            set_attributes(odb.file.create_group("assembly/instances/I-0"), part="P")
            for k, name in enumerate(("I-0", "I-1")):
                add_mesh(odb, ([1, 2], np.arange(6.) + 10 * k), {"T3D2": ([1], [[1, 2]])}, name)
            odb.location("nodes", "nodal", nodeLabels=[1, 2])
            odb.file["parts/P/elementSets/ALL"] = np.array([1], "i4")
            odb.file["assembly/elementSets/SOME/I-1"] = np.array([1], "i4")
            odb.field(odb.step("Step-1"), "NT", 2, [("nodes", np.array([[20., 30]]))])
        self.export()
        [vtu] = self.frames()
        self.assertEqual([points.tolist() for _, points in vtu.cells], [[0, 1], [2, 3]])
        np.testing.assert_array_equal(vtu.pointData["NT"], [np.nan, np.nan, 20, 30])
        self.assertEqual((vtu.pointData["instance"].tolist(), vtu.cellData["instance"].tolist()), ([0, 0, 1, 1], [0, 1]))
        self.assertEqual((vtu.cellData["set P.ALL"].tolist(), vtu.cellData["set SOME"].tolist()), ([1, 1], [0, 1]))


class ChoiceTest(ExportTest):
    @staticmethod
    def displaced(odb, step):
        odb.location("few", "nodal", nodeLabels=range(102, 113))
        odb.field(step, "U", 3, [("few", np.arange(66, dtype="f4").reshape(2, 11, 3) / 8)])
        odb.field(step, "NT", 2, [("nodes", np.arange(24, dtype="f8").reshape(2, 12))])

    def test_sets_mark_their_members(self):
        self.two_bricks()
        self.export()
        [vtu] = self.frames()
        self.assertEqual({k: v.tolist() for k, v in vtu.cellData.items() if k != "element"},
                         {"set LEFT": [1, 0], "set I-1.a<b&c": [1, 1], "set P.RIGHT": [0, 1]})
        self.assertEqual(vtu.pointData["set LEFT"].tolist(), [1, 0, 0] * 4)
        self.export("--set", "a<*", "--set", "RIGHT")
        self.assertEqual([n for n in self.frames()[0].cellData if n != "element"], ["set I-1.a<b&c", "set P.RIGHT"])
        self.export("--no-sets")
        self.assertEqual((list(self.frames()[0].cellData), list(self.frames()[0].pointData)), (["element"], ["node"]))

    def test_points_move_with_the_displacements(self):
        places = np.array(self.two_bricks(self.displaced, (1, 2)), float)
        self.export("--scale", "2.5", "--field", "nt")
        for i, vtu in enumerate(self.frames()):
            moved = np.vstack([[0, 0, 0], np.arange(66).reshape(2, 11, 3)[i] / 8])
            np.testing.assert_array_equal(vtu.points, places + 2.5 * moved)
            self.assertNotIn("U", vtu.pointData)
        self.export("--deformed", "-o", "other.pvd")
        np.testing.assert_array_equal(self.frames("other.pvd")[1].points[2], places[2] + [36 / 8, 37 / 8, 38 / 8])
        self.export()
        np.testing.assert_array_equal(self.frames()[1].points, places)
        self.assertIn(b"has no vectors V to deform by", self.export("--deformed", "--displacement", "V", status=1).err)

    def test_frames_and_fields_are_chosen(self):
        self.two_bricks(self.displaced, (4, 9))
        self.export()
        self.assertEqual(len(list(self.path("job.vtu").iterdir())), 2)
        self.export("--frames", "9", "--field", "U")
        [vtu] = self.frames()
        self.assertEqual((vtu.fieldData["frame"], [n for n in vtu.pointData if not n.startswith("set ")]), (9, ["node", "U"]))
        self.assertEqual(len(list(self.path("job.vtu").iterdir())), 1)  # frames of the older series are gone
        for word, numbers in (("first", [4]), ("last", [9]), ("all", [4, 9]), ("1-5", [4]), ("4-9", [4, 9])):
            self.export("--frames", word)
            self.assertEqual([vtu.fieldData["frame"] for vtu in self.frames()], numbers)

    def test_steps_are_named_by_name_or_number(self):
        with Database(self.path("job.odb")) as odb:
            add_mesh(odb, ([1], [0, 0, 0]), {})
            for name in ("Load-1", "2", "Case 3"):
                odb.step(name)
        for word, step in (("Load-1", "Load-1"), ("Load_1", "Load-1"), ("1", "Load-1"), ("2", "2"), ("3", "Case 3"), ("Case_3", "Case 3")):
            self.export("--step", word)
            self.assertEqual([vtu.fieldData["step"] for vtu in self.frames()], [step])
        self.assertIn(b"job.odb: there is no step 4; steps: Load-1, 2, Case 3", self.export("--step", "4", status=1).err)

    def steps_with(self, *steps):
        """Steps by the descriptions and values of their frames."""
        with Database(self.path("job.odb")) as odb:
            add_mesh(odb, ([1], [0, 0, 0]), {})
            for i, (words, values) in enumerate(steps):
                frames = odb.step(f"Step-{i + 1}", range(1, len(values) + 1))["frames"]
                del frames["description"]
                frames["description"] = text([words] * len(values))
                frames["value"][...] = values

    def times(self, *arguments):
        self.export(*arguments)
        times = [time for time, _ in frames_of(self.path("job.pvd"))]
        self.assertEqual([vtu.fieldData["TimeValue"] for vtu in self.frames()], times)
        return times

    def test_times_go_on_from_step_to_step(self):
        self.steps_with(("Increment 1: Step Time = 1", [0.5, 2]), ("Increment 1: Step Time = 1", [0.25, 1]))
        self.assertEqual(self.times(), [0.5, 2, 2.25, 3])
        self.assertEqual(self.times("--step", "2"), [2.25, 3])

    def test_modes_have_their_frequencies_and_mixed_frames_numbers(self):
        self.steps_with(("Mode", [139.5, 412]), ("Mode", [80, 90]))
        self.assertEqual(self.times("--step", "1"), [139.5, 412])
        self.assertEqual(self.times(), [0, 1, 2, 3])

    def test_what_is_not_there_is_an_error_and_changes_nothing(self):
        self.two_bricks(self.displaced, (1, 2))
        self.export()
        before = {p: p.read_bytes() for p in self.directory.rglob("*") if p.is_file()}
        for arguments, words in ((["--field", "X*"], b"no field X*; fields: NT, U"), (["--set", "X"], b"there is no set X"),
                                 (["--frames", "7"], b"there are no such frames")):
            self.assertIn(words, self.export(*arguments, status=1).err)
        self.assertEqual(before, {p: p.read_bytes() for p in self.directory.rglob("*") if p.is_file()})

    def test_wrong_usage_has_its_own_status(self):
        for arguments in (["job.odb"], ["job.odb", "--to", "stl"], ["--to", "vtu"], ["job.odb", "--to", "vtu", "--frames", "x"],
                          ["job.odb", "--to", "vtu", "--scale", "nan"], ["job.odb", "--to", "vtu", "--set", "A", "--no-sets"]):
            self.assertEqual(self.run_program(*arguments, program="export").status, 2, arguments)

    def test_a_database_without_a_mesh_is_an_error(self):
        with Database(self.path("job.odb")) as odb:
            odb.step("Step-1")
        self.assertIn(b"job.odb: has no mesh", self.export(status=1).err)
        self.write("job.odb", b"nothing")
        self.assertIn(b"job.odb: ", self.export(status=1).err)

    def test_a_series_that_cannot_be_written_has_no_list(self):
        self.two_bricks(self.displaced, (1, 2))
        self.write("job.vtu", b"in the way")
        self.assertIn(b"job.vtu", self.export(status=1).err)
        self.assertEqual(sorted(p.name for p in self.directory.iterdir()), ["job.odb", "job.vtu"])

    def test_what_a_killed_export_leaves_has_no_list_and_goes_with_the_next(self):
        self.two_bricks(lambda odb, step: None, range(1, 2001))
        self.export("--frames", "1")
        process = subprocess.Popen([BIN / "export", "job.odb", "--to", "vtu"], cwd=self.directory, stdout=subprocess.DEVNULL)
        while not self.path("job.vtu/job_0009.vtu").exists():
            self.assertIsNone(process.poll())
            time.sleep(0.001)
        process.kill()
        process.wait()
        self.assertFalse(self.path("job.pvd").exists())
        self.write("job.vtu/job_1234.vtu.tmp.a1B2c3", b"left by another one")
        self.export("--frames", "1-2")
        self.assertEqual([p.name for p in sorted(self.path("job.vtu").iterdir())], ["job_0000.vtu", "job_0001.vtu"])
        self.assertEqual(sorted(p.name for p in self.directory.iterdir()), ["job.odb", "job.pvd", "job.vtu"])

    def test_a_summary_that_nobody_gets_is_an_error(self):
        self.two_bricks()
        with open("/dev/full", "wb") as full:
            self.export(status=1, stdout=full)

    def test_packed_files_hold_the_same(self):
        self.two_bricks(self.displaced, (1, 2))
        self.export()
        self.export("--zlib", "-o", "packed.pvd")
        for raw, packed in zip(self.frames(), self.frames("packed.pvd")):
            self.assertTrue(packed.isPacked and not raw.isPacked)
            np.testing.assert_array_equal(raw.points, packed.points)
            for name, array in (raw.pointData | raw.cellData).items():
                np.testing.assert_array_equal(array, (packed.pointData | packed.cellData)[name])


@unittest.skipUnless(vtk, "python3-vtk9 is not installed")
class ReadByVtkTest(ExportTest):
    def check(self, path):
        """VTK reads what our reader reads."""
        mine = Vtu(path)
        reader = vtk.vtkXMLUnstructuredGridReader()
        reader.SetFileName(str(path))
        reader.Update()
        grid = reader.GetOutput()
        self.assertEqual(reader.GetErrorCode(), 0)
        np.testing.assert_array_equal(vtk_to_numpy(grid.GetPoints().GetData()), mine.points)
        for data, arrays in ((grid.GetPointData(), mine.pointData), (grid.GetCellData(), mine.cellData)):
            self.assertEqual([data.GetArrayName(i) for i in range(data.GetNumberOfArrays())], list(arrays))
            for i, (name, array) in enumerate(arrays.items()):
                read = data.GetArray(i)
                np.testing.assert_array_equal(vtk_to_numpy(read), array)
                if array.ndim == 2:
                    self.assertEqual([read.GetComponentName(k) for k in range(array.shape[1])], mine.components[name])
        for i, (kind, points) in enumerate(mine.cells):
            cell = grid.GetCell(i)
            self.assertEqual((cell.GetCellType(), [cell.GetPointId(k) for k in range(cell.GetNumberOfPoints())]), (kind, list(points)))
        self.assertEqual(grid.GetFieldData().GetAbstractArray("step").GetValue(0), mine.fieldData["step"])
        return grid

    def test_all_arrays_and_cells(self):
        self.two_bricks(ChoiceTest.displaced, (1, 2))
        for packed in ([], ["--zlib"]):
            self.export(*packed)
            for _, path in frames_of(self.path("job.pvd")):
                self.check(path)

    def test_solids_have_their_volume_and_faces_that_look_out(self):
        CellsTest.test_every_element_type_has_its_cell(self)
        [(_, path)] = frames_of(self.path("job.pvd"))
        grid = self.check(path)
        size = vtk.vtkCellSizeFilter()
        size.SetInputData(grid)
        size.Update()
        volumes = vtk_to_numpy(size.GetOutput().GetCellData().GetArray("Volume"))
        expected = {10: 1 / 6, 24: 1 / 6, 13: 1 / 2, 26: 1 / 2, 12: 1, 25: 1}
        for i in range(grid.GetNumberOfCells()):
            cell = grid.GetCell(i)
            self.assertAlmostEqual(volumes[i], expected.get(cell.GetCellType(), 0), 12)
            centre = np.mean([cell.GetPoints().GetPoint(k) for k in range(cell.GetNumberOfPoints())], axis=0)
            for f in range(cell.GetNumberOfFaces()):
                a, b, c = (np.array(cell.GetFace(f).GetPoints().GetPoint(k)) for k in range(3))
                self.assertGreater(np.cross(b - a, c - a) @ (a - centre), 0)
