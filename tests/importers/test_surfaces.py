"""Surfaces and sets of decks that the solver has run: the nodes of each face lie where the solver integrates it."""
import os
import re
import subprocess

import numpy as np

from decks import BRICK_EDGES, CORNERS, TETRAHEDRON, TETRAHEDRON_EDGES, WEDGE, WEDGE_EDGES, Mesh
from expanded import expanded
from support import ProgramTest

SHAPES = {"C3D8": (CORNERS, (), 6), "C3D20": (CORNERS, BRICK_EDGES, 6), "C3D6": (WEDGE, (), 5),
          "C3D15": (WEDGE, WEDGE_EDGES, 5), "C3D4": (TETRAHEDRON, (), 4), "C3D10": (TETRAHEDRON, TETRAHEDRON_EDGES, 4)}
MATERIAL = "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000., 0.3\n"


class SurfaceTest(ProgramTest):
    def import_deck(self, mesh, more, requests, notes=b""):
        sections = "".join(f"*SOLID SECTION, ELSET=E{kind}, MATERIAL=STEEL\n" for kind in mesh.elements)
        self.write("job.inp", mesh.text() + more + MATERIAL + sections + "*BOUNDARY\nNall, 1, 3\n*STEP\n*STATIC\n"
                   "*NODE FILE\nU\n" + requests + "*END STEP\n")
        subprocess.run([os.environ["KOLVEX_CCX"], "-i", "job"], cwd=self.directory, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=60, check=False, env={**os.environ, "OMP_NUM_THREADS": "1"})
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual((run.status, run.err), (0, notes))
        odb = expanded(self.path("job.odb"))
        self.addCleanup(odb.close)
        return odb["assembly"]

    def printed_planes(self):
        """Centre and normal of each surface by its name, in capitals."""
        found = {}
        for part in self.path("job.dat").read_text().split("statistics for surface set")[1:]:
            numbers = re.search(r"mean normal\s*\n\s*\n(.*)\n", part).group(1).split()
            found[part.split()[0]] = np.array([float(n) for n in numbers]).reshape(2, 3)
        return found

    def test_nodes_of_faces_are_those_in_the_plane_that_the_solver_integrates(self):
        for kind, (corners, edges, faces) in SHAPES.items():
            with self.subTest(kind):
                mesh = Mesh()
                element = mesh.add(kind, (0, 0, 0), corners, edges)
                names = [f"FACE{i + 1}" for i in range(faces)]
                surfaces = "".join(f"*SURFACE, NAME={name}\nE{kind}, S{name[-1]}\n" for name in names)
                prints = "".join(f"*SECTION PRINT, SURFACE={name}, NAME=P{name}\nSOF\n" for name in names)
                assembly = self.import_deck(mesh, surfaces, prints)
                planes = self.printed_planes()
                self.assertEqual(sorted(planes), names)
                for name, (centre, normal) in planes.items():
                    inside = [label for label, at in mesh.nodes.items() if abs(np.dot(at - centre, normal)) < 1e-5]
                    self.assertEqual(assembly[f"nodeSets/{name}-NODES/PART-1-1"][()].tolist(), inside)
                    self.assertEqual(assembly[f"elementSets/{name}/PART-1-1"][()].tolist(), [element])

    def test_sets_in_every_form_that_the_solver_takes(self):
        mesh = Mesh()
        labels = [mesh.add("C3D8", (x, 0, 0), CORNERS) for x in range(4)]
        self.write("sets.inc", "*ELSET, ELSET=SOME\n10, 30,\n*NSET, NSET=SOME, GENERATE\n5, 23, 6\n")
        more = ("*INCLUDE, INPUT=sets.inc\n*elset, elset=\"All of it\"\nsome, 20\n*ELSET, ELSET=ALL OF IT\n40\n"
                "*elset, elset=AllOfIt\n30\n*SURFACE, NAME=SOME\nALLOFIT, S1\n*SURFACE, NAME=Points, TYPE=NODE\nsome\n8,\n")
        assembly = self.import_deck(mesh, more, "*SECTION PRINT, SURFACE=SOME, NAME=P\nSOF\n",
                                    b"sets.inc:3: note: the node set SOME becomes SOME-NODES, because records cannot tell "
                                    b"it from another set\n")
        # With quotes it is another name for the solver: the centre and the normal are those of the last two elements.
        np.testing.assert_allclose(self.printed_planes()["SOME"], [[3, 0.5, 0], [0, 0, -1]], atol=1e-6)
        elements = {name: set_["PART-1-1"][()].tolist() for name, set_ in assembly["elementSets"].items()}
        self.assertEqual(elements, {"EC3D8": labels, "SOME": [10, 30], "All of it": [10, 20, 30], "ALL OF IT": [30, 40],
                                    "AllOfIt": [30, 40], "SOME-SURFACE": [30, 40]})
        nodes = {name: set_["PART-1-1"][()].tolist() for name, set_ in assembly["nodeSets"].items()}
        low = sorted(mesh.at(lambda x, y, z: z == 0 and x >= 2))
        self.assertEqual(nodes, {"Nall": sorted(mesh.nodes), "SOME-NODES": [5, 11, 17, 23], "SOME-SURFACE-NODES": low,
                                 "Points-NODES": [5, 8, 11, 17, 23]})
