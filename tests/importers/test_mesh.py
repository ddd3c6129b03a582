"""The mesh in the database is that of the deck, for every element type that the solver writes as it is."""
import os
import subprocess

import numpy as np

from decks import BRICK_EDGES, CORNERS, TETRAHEDRON, TETRAHEDRON_EDGES, WEDGE, WEDGE_EDGES, Mesh
from expanded import expanded
from support import ProgramTest

SQUARE, TRIANGLE, LINE = CORNERS[:4], CORNERS[:3], CORNERS[:2]
SQUARE_EDGES, TRIANGLE_EDGES = BRICK_EDGES[:4], [(0, 1), (1, 2), (2, 0)]
SOLID = "*SOLID SECTION, ELSET=E{0}, MATERIAL=STEEL\n"
SHELL = "*SHELL SECTION, ELSET=E{0}, MATERIAL=STEEL\n0.1\n"
MEMBRANE = "*MEMBRANE SECTION, ELSET=E{0}, MATERIAL=STEEL\n0.1\n"
BEAM = "*BEAM SECTION, ELSET=E{0}, MATERIAL=STEEL, SECTION=RECT\n0.1\n"
TRUSS = "*SOLID SECTION, ELSET=E{0}, MATERIAL=STEEL\n0.1\n"
SHAPES = {
    "C3D4": (TETRAHEDRON, (), SOLID), "C3D10": (TETRAHEDRON, TETRAHEDRON_EDGES, SOLID), "C3D6": (WEDGE, (), SOLID),
    "C3D15": (WEDGE, WEDGE_EDGES, SOLID), "C3D8": (CORNERS, (), SOLID), "C3D8R": (CORNERS, (), SOLID),
    "C3D8I": (CORNERS, (), SOLID), "C3D20": (CORNERS, BRICK_EDGES, SOLID), "C3D20R": (CORNERS, BRICK_EDGES, SOLID),
    "S3": (TRIANGLE, (), SHELL), "S4": (SQUARE, (), SHELL), "S6": (TRIANGLE, TRIANGLE_EDGES, SHELL),
    "S8": (SQUARE, SQUARE_EDGES, SHELL), "S8R": (SQUARE, SQUARE_EDGES, SHELL),
    "M3D3": (TRIANGLE, (), MEMBRANE), "M3D4": (SQUARE, (), MEMBRANE), "M3D6": (TRIANGLE, TRIANGLE_EDGES, MEMBRANE),
    "M3D8": (SQUARE, SQUARE_EDGES, MEMBRANE), "CPS3": (TRIANGLE, (), SOLID), "CPS4": (SQUARE, (), SOLID),
    "CPS6": (TRIANGLE, TRIANGLE_EDGES, SOLID), "CPS8": (SQUARE, SQUARE_EDGES, SOLID), "CPE4": (SQUARE, (), SOLID),
    "CPE6": (TRIANGLE, TRIANGLE_EDGES, SOLID), "CPE8R": (SQUARE, SQUARE_EDGES, SOLID), "CAX4": (SQUARE, (), SOLID),
    "CAX8": (SQUARE, SQUARE_EDGES, SOLID), "B31": (LINE, (), BEAM), "B32R": (LINE, [(0, 1)], BEAM),
    "T3D2": (LINE, (), TRUSS), "T3D3": (LINE, [(0, 1)], TRUSS),
}


class MeshTest(ProgramTest):
    def mesh_of(self, kind):
        """Two separate elements; a line's middle node is its second one."""
        corners, edges, section = SHAPES[kind]
        mesh = Mesh()
        for x in (1, 3):
            label = mesh.add(kind, (x, 0, 0), corners, edges)
            if corners is LINE and edges:
                nodes = mesh.elements[kind][label]
                nodes[1], nodes[2] = nodes[2], nodes[1]
        held = "1, 6" if kind[0] in "SB" else "1, 3"
        self.write("job.inp", mesh.text() + "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000., 0.3\n" + section.format(kind)
                   + f"*BOUNDARY\nNall, {held}\n*STEP\n*STATIC\n*NODE FILE, OUTPUT=2D\nU\n*EL FILE, OUTPUT=2D\nS\n"
                   "*END STEP\n")
        return mesh

    def test_nodes_and_elements_are_those_of_the_deck(self):
        for kind in SHAPES:
            with self.subTest(kind):
                mesh = self.mesh_of(kind)
                subprocess.run([os.environ["KOLVEX_CCX"], "-i", "job"], cwd=self.directory, stdin=subprocess.DEVNULL,
                               stdout=subprocess.DEVNULL, timeout=60, check=False,
                               env={**os.environ, "OMP_NUM_THREADS": "1"})
                run = self.run_program("import", "job", program="kolvex")
                self.assertEqual((run.status, run.err), (0, b""))
                with expanded(self.path("job.odb")) as odb:
                    stored = odb["assembly/instances/PART-1-1/mesh"]
                    self.assertEqual(list(stored["elements"]), [kind])
                    group = stored["elements"][kind]
                    self.assertEqual(dict(zip(group["labels"][()].tolist(), group["connectivity"][()].tolist())),
                                     mesh.elements[kind])
                    self.assertEqual(stored["nodes/labels"][()].tolist(), sorted(mesh.nodes))
                    np.testing.assert_allclose(stored["nodes/coordinates"][()],
                                               [mesh.nodes[label] for label in sorted(mesh.nodes)], atol=1e-12)
