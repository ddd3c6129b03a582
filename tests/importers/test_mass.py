"""Masses of imported decks, held against what the solver prints for the same elements."""
import os
import re
import subprocess

import numpy as np

from decks import (BRICK_EDGES, CORNERS, TETRAHEDRON, TETRAHEDRON_EDGES, WEDGE, WEDGE_EDGES, Mesh)
from expanded import expanded
from support import ProgramTest

SQUARE, TRIANGLE = CORNERS[:4], CORNERS[:3]
SQUARE_EDGES, TRIANGLE_EDGES = BRICK_EDGES[:4], [(0, 1), (1, 2), (2, 0)]
MATERIAL = "*MATERIAL, NAME=STEEL\n*ELASTIC\n210000., 0.3\n*DENSITY\n7.8\n"
TOTALS = ("*STEP\n*STATIC\n*NODE FILE\nU\n*EL PRINT, ELSET=E, TOTALS=ONLY\nEMAS\n*END STEP\n")
SOLID = "*SOLID SECTION, ELSET=E, MATERIAL=STEEL\n"
SHELL = "*SHELL SECTION, ELSET=E, MATERIAL=STEEL"
BEAM = "*BEAM SECTION, ELSET=E, MATERIAL=STEEL, SECTION="


def sheared(x, y, z):
    """An affine map, under which elements stay exact for the solver's own integration."""
    return 2 * x + 0.5 * y + 1, 1.5 * y + 0.3 * x, 0.8 * z + 0.2 * x - 0.1 * y + 2


def sheared_in_plane(x, y, _):
    return 2 * x + 0.5 * y + 1, 1.5 * y + 0.3 * x, 0.0


def bent(x, y, z):
    """A piece of a tube."""
    angle = 0.4 * x
    return (4 - y) * np.cos(angle), (4 - y) * np.sin(angle), z + 0.2 * y * y


class MassTest(ProgramTest):
    """Each test is a few elements of one type, imported without what the solver prints of them."""

    def write_deck(self, kind, corners, edges, section, place=sheared, held="1, 3"):
        mesh = Mesh()
        for i in range(3):
            mesh.add(kind, (i, 0, 0), corners, edges)
        lines = ["*NODE, NSET=Nall"]
        lines += ["%d, %.12g, %.12g, %.12g" % (label, *place(*at)) for label, at in mesh.nodes.items()]
        elements = mesh.text().split("*ELEMENT", 1)[1].replace(f"E{kind}", "E", 1)
        self.write("job.inp", "\n".join(lines) + "\n*ELEMENT" + elements + MATERIAL + section
                   + f"*BOUNDARY\nNall, {held}\n" + TOTALS)

    def printed(self):
        """Mass, centre and the raw second moments about the centre in the order xx, yy, zz, xy, xz, yz."""
        subprocess.run([os.environ["KOLVEX_CCX"], "-i", "job"], cwd=self.directory, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=60, check=False, env={**os.environ, "OMP_NUM_THREADS": "1"})
        tables = re.split(r"\n\s*\n", self.path("job.dat").read_text())
        found = {}
        for title, values in zip(tables, tables[1:]):
            for key in ("total mass for", "center of gravity for", "about the center"):
                if key in title:
                    found[key] = np.array([float(v) for v in values.split()])
        return found["total mass for"][0], found["center of gravity for"], found["about the center"]

    def stored(self, with_tables=False):
        """Mass, centre and inertia about the centre and about the origin of the first step."""
        if not with_tables:
            self.path("job.dat").unlink()
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual(run.status, 0, run.err)
        self.assertNotIn(b"mass", run.err)
        with expanded(self.path("job.odb")) as odb:
            step = odb["steps/Step-1"].attrs
            return step["mass"], step["massCenter"], step["inertiaAboutCenter"], step["inertiaAboutOrigin"]

    def compare(self, tolerance=2e-6, with_inertia=True):
        """Holds everything against the printed tables, which have seven digits."""
        mass, centre, (xx, yy, zz, xy, xz, yz) = self.printed()
        found = self.stored()
        self.assertAlmostEqual(found[0], mass, delta=tolerance * mass)
        np.testing.assert_allclose(found[1], centre, atol=tolerance * 10)
        if not with_inertia:
            return
        inertia = np.array([yy + zz, xx + zz, xx + yy, -xy, -xz, -yz])
        size = np.abs(inertia).max()
        np.testing.assert_allclose(found[2], inertia, atol=tolerance * size)
        x, y, z = centre
        moved = inertia + mass * np.array([y * y + z * z, x * x + z * z, x * x + y * y, -x * y, -x * z, -y * z])
        np.testing.assert_allclose(found[3], moved, atol=10 * tolerance * np.abs(moved).max())


class SolidMassTest(MassTest):
    SHAPES = {"C3D8": (CORNERS, ()), "C3D8I": (CORNERS, ()), "C3D20": (CORNERS, BRICK_EDGES),
              "C3D20R": (CORNERS, BRICK_EDGES), "C3D10": (TETRAHEDRON, TETRAHEDRON_EDGES),
              "C3D15": (WEDGE, WEDGE_EDGES)}

    def test_affine_solids(self):
        for kind, (corners, edges) in self.SHAPES.items():
            with self.subTest(kind):
                self.write_deck(kind, corners, edges, SOLID)
                self.compare()

    def test_solids_of_one_point_agree_in_mass_and_centre(self):
        for kind, corners in {"C3D4": TETRAHEDRON, "C3D6": WEDGE, "C3D8R": CORNERS}.items():
            with self.subTest(kind):
                self.write_deck(kind, corners, (), SOLID)
                self.compare(with_inertia=False)

    def test_curved_solids_of_full_integration(self):
        self.write_deck("C3D20", CORNERS, BRICK_EDGES, SOLID, place=bent)
        self.compare(tolerance=1e-4)


class SurfaceMassTest(MassTest):
    def test_shells_with_an_offset(self):
        for kind, (corners, edges) in {"S4": (SQUARE, ()), "S8": (SQUARE, SQUARE_EDGES), "S8R": (SQUARE, SQUARE_EDGES),
                                       "S6": (TRIANGLE, TRIANGLE_EDGES)}.items():
            with self.subTest(kind):
                self.write_deck(kind, corners, edges, SHELL + ", OFFSET=0.3\n0.25\n", held="1, 6")
                self.compare()

    def test_triangles_of_one_point_agree_in_mass_and_centre(self):
        self.write_deck("S3", TRIANGLE, (), SHELL + ", OFFSET=0.3\n0.25\n", held="1, 6")
        self.compare(with_inertia=False)

    def test_layers(self):
        lead = "*MATERIAL, NAME=LEAD\n*ELASTIC\n16000., 0.4\n*DENSITY\n11.3\n"
        layers = "*SHELL SECTION, ELSET=E, COMPOSITE, OFFSET=-0.5\n0.1,,STEEL\n0.3,,LEAD\n"
        self.write_deck("S8R", SQUARE, SQUARE_EDGES, lead + layers, held="1, 6")
        self.compare()

    def test_thickness_by_nodes(self):
        thickness = "*NODAL THICKNESS\n" + "".join(f"{3 * i + 5}, {0.1 + 0.02 * (i % 5)}\n" for i in range(18))
        self.write_deck("S8", SQUARE, SQUARE_EDGES, thickness + SHELL + ", OFFSET=0.3, NODAL THICKNESS\n1.\n",
                        held="1, 6")
        # The solver's points are too few for the cube of a thickness that goes up and down.
        self.compare(tolerance=1e-3)

    def test_membranes(self):
        for kind, edges in (("M3D4", ()), ("M3D8", SQUARE_EDGES)):
            with self.subTest(kind):
                self.write_deck(kind, SQUARE, edges, "*MEMBRANE SECTION, ELSET=E, MATERIAL=STEEL\n0.25\n")
                self.compare()

    def test_plane_elements(self):
        for kind, corners, edges in (("CPS4", SQUARE, ()), ("CPS8R", SQUARE, SQUARE_EDGES), ("CPE8", SQUARE, SQUARE_EDGES),
                                     ("CPE6", TRIANGLE, TRIANGLE_EDGES), ("CPS6", TRIANGLE, TRIANGLE_EDGES)):
            with self.subTest(kind):
                self.write_deck(kind, corners, edges, SOLID + "0.25\n", place=sheared_in_plane)
                self.compare()

    def test_axisymmetric_elements_have_180_times_the_mass_of_two_degrees(self):
        for kind, edges in (("CAX4", ()), ("CAX8", SQUARE_EDGES), ("CAX8R", SQUARE_EDGES)):
            with self.subTest(kind):
                self.write_deck(kind, SQUARE, edges, SOLID, place=sheared_in_plane, held="1, 2")
                sector, centre, _ = self.printed()
                mass, found, _, _ = self.stored()
                # The solver's wedge has flat sides, which makes its mass smaller by the sine of its angle.
                self.assertAlmostEqual(mass, 180 * sector, delta=6e-4 * mass)
                np.testing.assert_allclose(found, [0, centre[1], 0], atol=1e-5)


class BeamMassTest(MassTest):
    LINE, MIDDLE = [(0, 0, 0), (1, 0, 0)], [(0, 1)]

    def write_beam(self, kind, section):
        """Three beams in a row; a middle node is the second one of its beam."""
        points = range(7) if kind in ("B32", "B32R", "T3D3") else (0, 2, 4, 6)
        nodes = "".join("%d, %.12g, %.12g, %.12g\n" % (i + 1, *sheared(i / 2, 0.1, 0.2)) for i in points)
        step = 2 if kind in ("B32", "B32R", "T3D3") else 1
        labels = [i + 1 for i in points]
        elements = "".join(f"{e + 1}, " + ", ".join(map(str, labels[e * step:(e + 1) * step + 1])) + "\n"
                           for e in range(3))
        held = "1, 3" if kind.startswith("T") else "1, 6"
        self.write("job.inp", f"*NODE, NSET=Nall\n{nodes}*ELEMENT, TYPE={kind}, ELSET=E\n{elements}" + MATERIAL
                   + section + f"*BOUNDARY\nNall, {held}\n" + TOTALS)

    def test_rectangles(self):
        for kind in ("B31", "B32", "B32R"):
            for section in ("RECT\n0.3, 0.1\n0., 1., 0.\n", "RECT\n0.3\n", "RECT\n0.3, 0.1\n",
                            "RECT, OFFSET1=0.5, OFFSET2=-0.25\n0.3, 0.1\n0., 0.2, 1.\n"):
                with self.subTest(kind + " " + section):
                    self.write_beam(kind, BEAM + section)
                    self.compare()

    def test_tapering_rectangles(self):
        thickness = "*NODAL THICKNESS\n" + "".join(f"{i}, {0.1 + 0.02 * i}, {0.3 - 0.01 * i}\n" for i in range(1, 8))
        self.write_beam("B32", thickness + BEAM + "RECT, NODAL THICKNESS, OFFSET1=0.5\n1.\n0., 1., 0.\n")
        self.compare()

    def test_pipes(self):
        self.write_beam("B32R", BEAM + "PIPE\n0.3, 0.1\n0., 1., 0.\n")
        self.compare(with_inertia=False)

    def test_boxes(self):
        self.write_beam("B32R", BEAM + "BOX\n0.5, 0.3, 0.01, 0.02, 0.03, 0.04\n0., 1., 0.\n")
        mass, centre, _ = self.printed()
        found = self.stored()
        self.assertAlmostEqual(found[0], mass, delta=1e-6 * mass)
        # The solver has its own points in the walls.
        np.testing.assert_allclose(found[1], centre, atol=4e-4)

    def test_circles_differ_by_the_ellipse_of_the_solver(self):
        self.write_beam("B32R", BEAM + "CIRC\n0.3, 0.2\n0., 1., 0.\n")
        mass, centre, _ = self.printed()
        found = self.stored()
        # Eight nodes on the ellipse enclose four parabolas: area 3.10457 of pi.
        self.assertAlmostEqual(found[0] * (2 + 4 / 3 * np.sqrt(2) * (2 - np.sqrt(2))) / np.pi, mass, delta=1e-5 * mass)
        np.testing.assert_allclose(found[1], centre, atol=1e-5)

    def test_trusses(self):
        for kind in ("T3D2", "T3D3"):
            with self.subTest(kind):
                self.write_beam(kind, SOLID + "0.2\n")
                self.compare()


class PrintedMassTest(MassTest):
    """Sums that the solver prints are the mass of a step where they are that of the model."""

    def test_sums_over_two_degrees_of_a_ring_are_not(self):
        self.write_deck("CAX8", SQUARE, SQUARE_EDGES, SOLID, place=lambda x, y, _: (1 + 2 * x, y, 0), held="1, 2")
        printed = self.printed()[0]
        mass, centre, _, _ = self.stored(with_tables=True)
        ring = np.pi * (7 ** 2 - 1) * 1 * 7.8
        self.assertAlmostEqual(mass, ring, delta=1e-6 * ring)
        self.assertAlmostEqual(printed, ring / 180, delta=1e-3 * printed)
        np.testing.assert_allclose(centre, [0, 0.5, 0], atol=1e-9)

    def test_sums_without_point_masses_are_not(self):
        points = ("*ELEMENT, TYPE=MASS, ELSET=EM\n100, 5\n*MASS, ELSET=EM\n3.\n*ELSET, ELSET=ALL\nE, EM\n")
        self.write_deck("C3D8", CORNERS, (), points + SOLID, place=lambda x, y, z: (x, y, z))
        text = self.path("job.inp").read_text().replace("ELSET=E, TOTALS", "ELSET=ALL, TOTALS")
        self.write("job.inp", text)
        self.assertAlmostEqual(self.printed()[0], 3 * 7.8, places=4)
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual((run.status, run.err.count(b"\n")), (0, 1), run.err)
        with expanded(self.path("job.odb")) as odb:
            self.assertAlmostEqual(odb["steps/Step-1"].attrs["mass"], 3 * 7.8 + 3, places=9)

    def test_inertia_of_elements_of_one_point_is_computed(self):
        self.write_deck("C3D8R", CORNERS, (), SOLID, place=lambda x, y, z: (x, y, z))
        _, _, moments = self.printed()
        mass = 3 * 7.8
        self.assertAlmostEqual(moments[1] / mass, 0, places=6)  # three points in a row
        _, _, inertia, _ = self.stored(with_tables=True)
        np.testing.assert_allclose(inertia[:3], [mass / 6, mass * (9 + 1) / 12, mass * (9 + 1) / 12], rtol=1e-9)

    def test_sums_at_other_temperatures_replace_what_was_computed(self):
        self.write_deck("C3D8", CORNERS, (), SOLID, place=lambda x, y, z: (x, y, z))
        text = self.path("job.inp").read_text().replace("*DENSITY\n7.8\n", "*DENSITY\n8., 0.\n4., 100.\n*EXPANSION\n0.\n")
        text = text.replace("*STEP\n", "*INITIAL CONDITIONS, TYPE=TEMPERATURE\nNall, 50.\n*STEP\n", 1)
        self.write("job.inp", text)
        self.assertAlmostEqual(self.printed()[0], 3 * 6, places=4)
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual(run.status, 0, run.err)
        with expanded(self.path("job.odb")) as odb:
            step = odb["steps/Step-1"].attrs
            self.assertAlmostEqual(step["mass"], 3 * 6, places=4)
            np.testing.assert_allclose(step["inertiaAboutCenter"][:3], [18 / 6, 15, 15], rtol=1e-5)
