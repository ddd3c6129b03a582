"""Sets of shells, beams and layers that the solver writes as solids, held against where the new nodes lie."""
import os
import re
import subprocess

import numpy as np

from decks import BRICK_EDGES, CORNERS, Mesh
from expanded import expanded
from support import ProgramTest

SQUARE, TRIANGLE, LINE = CORNERS[:4], CORNERS[:3], CORNERS[:2]
SQUARE_EDGES, TRIANGLE_EDGES = BRICK_EDGES[:4], [(0, 1), (1, 2), (2, 0)]
THICKNESS = 0.1
MATERIAL = "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000., 0.3\n"
SHELL = f"*SHELL SECTION, ELSET=E{{0}}, MATERIAL=STEEL\n{THICKNESS}\n"
MEMBRANE = f"*MEMBRANE SECTION, ELSET=E{{0}}, MATERIAL=STEEL\n{THICKNESS}\n"
BEAM = f"*BEAM SECTION, ELSET=E{{0}}, MATERIAL=STEEL, SECTION=RECT\n{THICKNESS}, 0.06\n0., 0., 1.\n"
SOLID = f"*SOLID SECTION, ELSET=E{{0}}, MATERIAL=STEEL\n{THICKNESS}\n"
# The corners and edges of an element, its section, and how many faces the solid has that it becomes.
SURFACES = {
    "S3": (TRIANGLE, (), SHELL, 5), "S4": (SQUARE, (), SHELL, 6), "S4R": (SQUARE, (), SHELL, 6),
    "S6": (TRIANGLE, TRIANGLE_EDGES, SHELL, 5), "S8": (SQUARE, SQUARE_EDGES, SHELL, 6),
    "S8R": (SQUARE, SQUARE_EDGES, SHELL, 6), "M3D3": (TRIANGLE, (), MEMBRANE, 5), "M3D4": (SQUARE, (), MEMBRANE, 6),
    "M3D6": (TRIANGLE, TRIANGLE_EDGES, MEMBRANE, 5), "M3D8": (SQUARE, SQUARE_EDGES, MEMBRANE, 6),
    "CPS3": (TRIANGLE, (), SOLID, 5), "CPS4": (SQUARE, (), SOLID, 6), "CPS6": (TRIANGLE, TRIANGLE_EDGES, SOLID, 5),
    "CPS8R": (SQUARE, SQUARE_EDGES, SOLID, 6), "CPE4": (SQUARE, (), SOLID, 6), "CPE6": (TRIANGLE, TRIANGLE_EDGES, SOLID, 5),
    "CPE8": (SQUARE, SQUARE_EDGES, SOLID, 6), "CAX4": (SQUARE, (), SOLID, 6), "CAX6": (TRIANGLE, TRIANGLE_EDGES, SOLID, 5),
    "CAX8R": (SQUARE, SQUARE_EDGES, SOLID, 6),
}
LINES = {"B31": ((), BEAM), "B31R": ((), BEAM), "B32": ([(0, 1)], BEAM), "B32R": ([(0, 1)], BEAM), "T3D2": ((), SOLID),
         "T3D3": ([(0, 1)], SOLID)}


def sheared(x, y, z):
    return 2 * x + 0.5 * y + 1, 1.5 * y + 0.3 * x, z


def bent(x, y, z):
    """A piece of a tube around the y axis."""
    return 4 * np.sin(0.3 * x), y, 4 * np.cos(0.3 * x) + z


class ExpansionTest(ProgramTest):
    def write_deck(self, mesh, sections, more="", place=sheared, requests="", output="", held="1, 3"):
        lines = ["*NODE, NSET=Nall"]
        lines += ["%d, %.9g, %.9g, %.9g" % (label, *place(*at)) for label, at in mesh.nodes.items()]
        lines += [f"*NSET, NSET=N{label}\n{label}" for label in mesh.nodes]
        elements = mesh.text()[mesh.text().index("*ELEMENT"):]
        self.write("job.inp", "\n".join(lines) + "\n" + elements + MATERIAL + sections + more
                   + f"*BOUNDARY\nHELD, {held}\n*STEP\n*STATIC\n{requests}*NODE FILE{output}\nU\n*EL FILE{output}\nS\n"
                   "*END STEP\n")

    def run_deck(self, warnings=b""):
        """The groups of an imported database: its assembly and its first step."""
        subprocess.run([os.environ["KOLVEX_CCX"], "-i", "job"], cwd=self.directory, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=60, check=False, env={**os.environ, "OMP_NUM_THREADS": "1"})
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual((run.status, run.err), (0, warnings))
        odb = expanded(self.path("job.odb"))
        self.addCleanup(odb.close)
        return odb["assembly"], odb

    @staticmethod
    def positions(assembly):
        nodes = assembly["instances/PART-1-1/mesh/nodes"]
        return dict(zip(nodes["labels"][()].tolist(), nodes["coordinates"][()]))

    @staticmethod
    def members(assembly, name, kind="nodeSets"):
        group = assembly[f"{kind}/{name}"]
        return group["PART-1-1"][()].tolist() if "PART-1-1" in group else []

    def rows(self, odb, field):
        """Rows by node of the field's first block; those of one node are equal."""
        block = odb[f"steps/Step-1/fields/{field}/blocks/0"]
        location = odb["locations"][block.attrs["location"].decode()]
        return dict(zip(location["nodeLabels"][()].tolist(), block["data"][()][0]))

    def printed_planes(self):
        """Centre and normal of each surface by its name, in capitals."""
        found = {}
        for part in self.path("job.dat").read_text().split("statistics for surface set")[1:]:
            numbers = re.search(r"mean normal\s*\n\s*\n(.*)\n", part).group(1).split()
            found[part.split()[0]] = np.array([float(n) for n in numbers]).reshape(2, 3)
        return found

    def check_planes(self, assembly, name, plane, points):
        """The new nodes among the members of a surface's set are those in the plane."""
        centre, normal = plane
        inside = sorted(n for n, at in points.items() if abs(np.dot(at - centre, normal)) < 1e-4)
        self.assertEqual([n for n in self.members(assembly, name) if n in points], inside, name)

    def two_elements(self, corners, edges, kind):
        mesh = Mesh()
        for x in (0, 1):
            label = mesh.add(kind, (x, 0, 0), corners, edges)
            if corners is LINE and edges:  # a line's middle node is its second one
                nodes = mesh.elements[kind][label]
                nodes[1], nodes[2] = nodes[2], nodes[1]
        return mesh, "*NSET, NSET=HELD\n" + ",\n".join(map(str, mesh.at(lambda x, y, z: x == 0))) + "\n"

    def test_nodes_of_surfaces_have_the_new_nodes_above_and_below_them(self):
        for kind, (corners, edges, section, faces) in SURFACES.items():
            with self.subTest(kind):
                mesh, held = self.two_elements(corners, edges, kind)
                self.write_deck(mesh, section.format(kind), held, output=", OUTPUT=3D", requests="*CLOAD\nN8, 1, 1.\n")
                assembly, _ = self.run_deck()
                points = self.positions(assembly)
                self.assertTrue(set(points).isdisjoint(mesh.nodes))
                for label, at in mesh.nodes.items():
                    x, y, _ = sheared(*at)
                    radius = (lambda p: np.hypot(p[0], p[2])) if kind[:3] == "CAX" else (lambda p: p[0])
                    near = [n for n, p in points.items() if abs(radius(p) - x) + abs(p[1] - y) < 1e-5]
                    self.assertGreaterEqual(len(near), 2)
                    self.assertEqual(self.members(assembly, f"N{label}"), [label, *near])
                self.assertEqual(set(self.members(assembly, "Nall")), set(points) | set(mesh.nodes))

    def test_nodes_of_lines_have_the_new_nodes_of_their_section(self):
        for kind, (edges, section) in LINES.items():
            with self.subTest(kind):
                mesh, held = self.two_elements(LINE, edges, kind)
                self.write_deck(mesh, section.format(kind), "*NSET, NSET=HELD\nNall\n" if kind[0] == "T" else held,
                                output=", OUTPUT=3D", held="1, 3" if kind[0] == "T" else "1, 6")
                assembly, _ = self.run_deck()
                points = self.positions(assembly)
                axis = np.array(sheared(1, 0, 0)) - sheared(0, 0, 0)
                for label, at in mesh.nodes.items():
                    near = [n for n, p in points.items() if abs(np.dot(p - sheared(*at), axis)) < 1e-4]
                    self.assertGreaterEqual(len(near), 4)
                    self.assertEqual(self.members(assembly, f"N{label}"), [label, *near])

    def test_faces_are_those_that_the_solver_integrates(self):
        # Of elements with one integration point the solver prints no centres of edges; rings have curved faces.
        shapes = {kind: shape for kind, shape in SURFACES.items() if kind not in ("CPS4", "CPE4") and kind[:3] != "CAX"}
        shapes |= {kind: (LINE, edges, section, 6) for kind, (edges, section) in LINES.items() if kind[0] == "B"}
        for kind, (corners, edges, section, faces) in shapes.items():
            with self.subTest(kind):
                mesh = Mesh()
                label = mesh.add(kind, (0, 0, 0), corners, edges)
                if corners is LINE and edges:
                    nodes = mesh.elements[kind][label]
                    nodes[1], nodes[2] = nodes[2], nodes[1]
                if kind[0] == "C":
                    names = [f"S{i + 1}" for i in range(faces - 2)] + ["SN", "SP"]
                else:
                    names = [f"S{i + 1}" for i in range(faces)] + (["SNEG", "SPOS"] if kind[0] != "B" else [])
                more = "*NSET, NSET=HELD\nNall\n" + "".join(f"*SURFACE, NAME=F{n}\nE{kind}, {n}\n" for n in names)
                prints = "".join(f"*SECTION PRINT, SURFACE=F{name}, NAME=P{name}\nSOF\n" for name in names)
                self.write_deck(mesh, section.format(kind), more, output=", OUTPUT=3D", requests=prints,
                                held="1, 6" if kind[0] in "SB" else "1, 3")
                assembly, _ = self.run_deck()
                planes = self.printed_planes()
                self.assertEqual(sorted(planes), sorted(f"F{name}" for name in names))
                for name, plane in planes.items():
                    self.check_planes(assembly, name + "-NODES", plane, self.positions(assembly))
                    self.assertEqual(self.members(assembly, name, "elementSets"), [label])

    @staticmethod
    def mean_over_thickness(rows):
        """From the lower to the upper side: the solver's own means are those of Simpson's rule."""
        rows = np.array(rows, dtype="f8")
        return (rows[0] + 4 * rows[1] + rows[2]) / 6 if len(rows) == 3 else rows.mean(axis=0)

    def test_displacements_and_means_over_the_thickness_are_those_of_the_plane_output(self):
        for kind in ("S3", "S4", "S6", "S8", "S8R"):
            with self.subTest(kind):
                corners, edges, section, _ = SURFACES[kind]
                mesh, held = self.two_elements(corners, edges, kind)
                found = {}
                for output in ("3D", "2D"):
                    self.write_deck(mesh, section.format(kind), held, place=bent, output=", OUTPUT=" + output,
                                    requests="*CLOAD\nN8, 1, 1.\nN8, 3, 2.\n", held="1, 6")
                    found[output] = self.run_deck()
                solid, plane = found["3D"], found["2D"]
                points = self.positions(solid[0])
                for field in ("U", "S"):
                    expected, rows = self.rows(plane[1], field), self.rows(solid[1], field)
                    self.assertEqual(set(expected), set(mesh.nodes))
                    scale = np.abs(list(rows.values())).max()
                    self.assertGreater(scale, 1e-3)
                    for label in mesh.nodes:
                        members = [n for n in self.members(solid[0], f"N{label}") if n in rows]
                        members.sort(key=lambda n: np.hypot(points[n][0], points[n][2]))
                        np.testing.assert_allclose(self.mean_over_thickness([rows[n] for n in members]), expected[label],
                                                   atol=1e-5 * scale)

    def test_elements_with_layers_are_those_of_their_layers(self):
        mesh = Mesh()
        for kind, corners, edges, x in (("S8R", SQUARE, SQUARE_EDGES, 0), ("S6", TRIANGLE, TRIANGLE_EDGES, 3),
                                        ("C3D8", CORNERS, (), 6), ("S8", SQUARE, SQUARE_EDGES, 9)):
            mesh.add(kind, (x, 0, 0), corners, edges)
            mesh.add(kind, (x + 1, 0, 0), corners, edges)
        layers = {"S8R": [0.1, 0.3], "S6": [0.1, 0.2, 0.05]}
        sections = "*ORIENTATION, NAME=O\n1, 0, 0, 0, 1, 0\n*SOLID SECTION, ELSET=EC3D8, MATERIAL=STEEL\n" + SHELL.format("S8")
        for kind, thicknesses in layers.items():
            sections += f"*SHELL SECTION, ELSET=E{kind}, COMPOSITE\n" + "".join(f"{t},, STEEL, O\n" for t in thicknesses)
        surfaces = "".join(f"*SURFACE, NAME=F{n}\nES8R, {n}\nES6, {n}\n" for n in ("S1", "S2", "S3"))
        more = "*NODE\n900, 50., 0., 0.\n*NSET, NSET=HELD\nNall\n*ELSET, ELSET=MIXED\nES6, 50\n" + surfaces
        self.write_deck(mesh, sections, more, place=lambda x, y, z: (x, y, z), held="1, 6")
        assembly, _ = self.run_deck()
        points = self.positions(assembly)
        elements = {label: nodes for group in assembly["instances/PART-1-1/mesh/elements"].values()
                    for label, nodes in zip(group["labels"][()].tolist(), group["connectivity"][()])}
        for kind, thicknesses in layers.items():
            own = sorted(mesh.elements[kind])
            stored = self.members(assembly, f"E{kind}", "elementSets")
            self.assertEqual(stored[:2], own)
            new = stored[2:]
            self.assertEqual(len(new), 2 * len(thicknesses))
            for i, label in enumerate(own):
                middle = np.mean([mesh.nodes[n] for n in mesh.elements[kind][label]], axis=0)
                height = -sum(thicknesses) / 2
                for thickness, element in zip(thicknesses, new[i * len(thicknesses):]):
                    corners = np.array([points[n] for n in elements[element]])
                    np.testing.assert_allclose(np.mean(corners, axis=0)[:2], middle[:2], atol=0.05)
                    np.testing.assert_allclose([corners[:, 2].min(), corners[:, 2].max()], [height, height + thickness],
                                               atol=1e-6)
                    height += thickness
        self.assertEqual(self.members(assembly, "MIXED", "elementSets"),
                         sorted([50, *self.members(assembly, "ES6", "elementSets")]))
        # The outer sides of the layered shells, half their thickness away from the plane of the deck.
        for name, sign in (("FS1-NODES", -1), ("FS2-NODES", 1)):
            ends = {round(points[n][2], 6) for n in self.members(assembly, name) if n in points}
            self.assertEqual(ends, {sign * 0.2, sign * 0.175})
        for label, at in mesh.nodes.items():
            near = [n for n, p in points.items() if n not in mesh.nodes and abs(p[0] - at[0]) + abs(p[1] - at[1]) < 1e-5]
            if at[2] == 0 and at[0] < 6:
                self.assertEqual(self.members(assembly, f"N{label}"), [label, *near])

    def test_sets_of_shells_have_records(self):
        mesh, held = self.two_elements(SQUARE, (), "S4")
        tip = "*NSET, NSET=TIP\n" + ",\n".join(map(str, mesh.at(lambda x, y, z: x == 2))) + "\n"
        self.write_deck(mesh, SHELL.format("S4"), held + tip, requests="*CLOAD\nTIP, 3, 1.\n", held="1, 6")
        assembly, odb = self.run_deck()
        run = self.run_program("-odb", "job.odb", "-config",
                               self.config("EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS EXTRACT_FIELD_COMPONENTS"))
        self.assertEqual(run.status, 0)
        records = dict(line.split("\t") for line in run.text("params.txt").decode().splitlines())
        u, points = self.rows(odb, "U"), self.positions(assembly)
        ends = [sheared(*at)[:2] for at in mesh.nodes.values() if at[0] == 2]
        found = [u[n][2] for n in u if min(np.abs(points[n][:2] - end).max() for end in ends) < 1e-5]
        self.assertEqual(len(found), 4)
        self.assertAlmostEqual(float(records["Step_1__Frame_1__TIP__U__3__max"]), max(found), delta=1e-5 * max(found))
        self.assertIn("Step_1__Frame_1__TIP__S__33__max", records)

    def test_copies_of_a_sector_are_sets_of_their_own(self):
        angle = np.radians(30)
        nodes = {1 + i + 2 * j + 4 * k: np.array([(2 + i) * np.cos(j * angle), (2 + i) * np.sin(j * angle), k])
                 for i in range(2) for j in range(2) for k in range(2)}
        lines = ["*NODE, NSET=Nall"] + ["%d, %.9g, %.9g, %.9g" % (label, *at) for label, at in nodes.items()]
        lines.append("*ELEMENT, TYPE=C3D8, ELSET=EC3D8\n40, 1, 2, 4, 3, 5, 6, 8, 7")
        lines += ["*ELEMENT, TYPE=MASS, ELSET=POINT", "70, 2", "*MASS, ELSET=POINT", "0.1"]
        lines += ["*NSET, NSET=LOW", "1, 2, 5, 6", "*NSET, NSET=HIGH", "3, 4, 7, 8", "*NSET, NSET=SECTOR 2", "1"]
        lines += ["*SURFACE, NAME=SLOW, TYPE=NODE", "LOW", "*SURFACE, NAME=SHIGH, TYPE=NODE", "HIGH"]
        lines += ["*TIE, CYCLIC SYMMETRY, NAME=T, POSITION TOLERANCE=0.01", "SHIGH, SLOW",
                  "*CYCLIC SYMMETRY MODEL, N=12, TIE=T, NGRAPH=4", "0., 0., 0., 0., 0., 1."]
        self.write("job.inp", "\n".join(lines) + "\n" + MATERIAL + "*SOLID SECTION, ELSET=EC3D8, MATERIAL=STEEL\n"
                   "*BOUNDARY\n1, 1, 3\n*STEP\n*STATIC\n*NODE FILE\nU\n*END STEP\n")
        assembly, _ = self.run_deck(b"job.inp:12: warning: no element of the results is in POINT\n")
        points = self.positions(assembly)
        self.assertEqual(len(points), 32)
        for k in range(4):
            name = f"CYCLIC-SECTOR-{k + 1}"
            self.assertEqual(self.members(assembly, name, "elementSets"), [40 + 70 * k])
            turned = -k * angle  # the solver goes on from the side where the sector begins
            turn = np.array([[np.cos(turned), -np.sin(turned), 0], [np.sin(turned), np.cos(turned), 0], [0, 0, 1]])
            stored = [points[n] for n in self.members(assembly, name + "-NODES")]
            np.testing.assert_allclose(stored, [turn @ nodes[n] for n in sorted(nodes)], atol=1e-4)
