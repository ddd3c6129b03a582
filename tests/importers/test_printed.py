"""What the solver prints for decks of ours, imported and held against a reading of its own of the same tables."""
import re
import unittest

import numpy

import dat_check
from decks import BRICK_EDGES, CORNERS, Mesh, deck, solids, step
from expanded import expanded
from test_real_solver import PULL, SolverTest

PRINTS = "*NODE PRINT, NSET=TOP\nU, RF\n*EL PRINT, ELSET=EC3D8\nS, E, ENER, ELSE, EVOL\n"
CONFIG = "ODB EXTRACTIONS\nEXTRACT_MASS EXTRACT_HISTORY MINMAX_HISTORY EXTRACT_ALL EXTRACT_FIELD\nEXTRACT_FIELD_COMPONENTS\n"


def bricks():
    """Two bricks on top of each other."""
    mesh = Mesh()
    for z in range(2):
        mesh.add("C3D8", (0, 0, z), CORNERS)
    return mesh


class PrintedTest(SolverTest):
    def import_printed(self, mesh, steps, extra="", arguments=()):
        self.solve(deck(mesh, steps, extra))
        run = self.import_job(*arguments)
        self.assertEqual((run.status, run.err), (0, b""))
        return self.open_database()

    def extracted(self):
        """The records of the database, by name."""
        self.write("extract.cfg", CONFIG)
        run = self.run_program("quarnish", "-odb", "job.odb", "-config", "extract.cfg", program="kolvex")
        self.assertEqual((run.status, run.err), (0, b""))
        records = {}
        for line in self.path("params.txt").read_text().splitlines():
            name, _, value = line.partition("\t")
            records.setdefault(name, []).append(value)
        return records

    def assert_tables_are_there(self, odb, at_least):
        self.assertGreaterEqual(dat_check.compare(self.path("job.dat"), odb, self.extracted()), at_least)

    def printed_rows(self, title):
        """The rows of every table whose title begins so."""
        text = self.path("job.dat").read_text()
        tables = re.findall(r"^ *" + title + r".*\n(?:\s*\n)*((?: +[-\d].*\n)+)", text, re.M)
        return [[[float(word) for word in row.split()] for row in table.splitlines()] for table in tables]

    def samples(self, odb, region, output, step="Step-1"):
        return odb[f"steps/{step}/history/{region}/outputs/{output}"][()].tolist()


class TimeTest(PrintedTest):
    def test_every_printed_number_is_there_in_its_step(self):
        odb = self.import_printed(solids(), [
            step("*STATIC\n0.25, 1.", PULL, options=", NLGEOM", output=PRINTS),
            step("*STATIC\n0.5, 2.", "*CLOAD\nTOP, 1, 5.\n", output=PRINTS + "*NODE FILE\nU\n"),
        ])
        self.assert_tables_are_there(odb, 200)
        times = {}
        for number in (1, 2):
            frames = odb[f"steps/Step-{number}/frames"]
            times.update({(number, i): v for i, v in zip(frames["incrementNumber"][()], frames["value"][()])})
        self.assertGreater(len(times), 5)
        self.assertEqual(times, self.status_times())
        self.assertEqual(sorted(odb["steps/Step-1/fields"]), ["ELSE", "ENER_IP", "EVOL", "E_IP", "RF_PRINT", "S_IP", "U_PRINT"])

    def test_reactions_and_energies_of_a_set_are_summed(self):
        prints = "*NODE PRINT, NSET=Bottom side, TOTALS=ONLY\nRF\n*EL PRINT, ELSET=EC3D8, TOTALS=YES\nELSE, EVOL\n"
        odb = self.import_printed(bricks(), [step("*STATIC", PULL, output=prints + "*NODE FILE\nU\n")])
        (_, force), = self.samples(odb, "Set Bottom side", "RF3")
        self.assertAlmostEqual(force, -4 * 10, places=4)  # the load on the four nodes of the top
        self.assertEqual(self.samples(odb, "Set EC3D8", "EVOL"), [[1.0, 2.0]])
        (_, energy), = self.samples(odb, "Set EC3D8", "ELSE")
        parts = [self.samples(odb, f"Element {label} of EC3D8", "ELSE")[0][1] for label in (10, 20)]
        self.assertAlmostEqual(energy, sum(parts), places=6)
        self.assertEqual(self.extracted()["Step_1__History_Max__RF3_Bottom side"], ["-40"])

    def test_forces_on_a_surface(self):
        surface = "*SURFACE, NAME=Sur\n10, S1\n"
        prints = "*SECTION PRINT, SURFACE=Sur, NAME=SP1\nSOF, SOM, SOAREA\n*NODE FILE\nU\n*EL FILE\nS\n"
        odb = self.import_printed(bricks(), [step("*STATIC", PULL, output=prints)], surface)
        (_, area), = self.samples(odb, "Surface Sur", "SOAREA")
        self.assertEqual(area, 1)
        (row,), = self.printed_rows("total surface force")
        for name, value in zip(("SOF1", "SOF2", "SOF3", "SOM1", "SOM2", "SOM3"), row):
            (_, found), = self.samples(odb, "Surface Sur", name)
            self.assertEqual(found, numpy.float32(value))


class MassTest(PrintedTest):
    def test_a_printed_mass_is_that_of_the_step(self):
        prints = "*EL PRINT, ELSET=EC3D8, TOTALS=ONLY\nEMAS\n*NODE FILE\nU\n"
        odb = self.import_printed(bricks(), [step("*STATIC", PULL, output=prints),
                                             step("*STATIC", PULL, output="*EL PRINT\n*NODE FILE\nU\n")])
        printed, computed = odb["steps/Step-1"].attrs, odb["steps/Step-2"].attrs
        # Two cubes of unit size, z from 0 to 2: by hand, and as the importer computes it from the mesh.
        density = 7.8e-9
        self.assertAlmostEqual(printed["mass"] / (2 * density), 1, places=6)
        numpy.testing.assert_allclose(printed["massCenter"], [0.5, 0.5, 1], rtol=1e-6)
        about_center = numpy.array([5 / 6, 5 / 6, 1 / 3, 0, 0, 0]) * density
        numpy.testing.assert_allclose(printed["inertiaAboutCenter"], about_center, rtol=1e-6, atol=1e-6 * density)
        about_origin = numpy.array([10 / 3, 10 / 3, 4 / 3, -0.5, -1, -1]) * density
        numpy.testing.assert_allclose(printed["inertiaAboutOrigin"], about_origin, rtol=1e-6)
        for name in ("mass", "massCenter", "inertiaAboutOrigin"):
            numpy.testing.assert_allclose(computed[name], printed[name], rtol=1e-6, err_msg=name)


class ModesTest(PrintedTest):
    def test_modes_between_steps_in_time(self):
        odb = self.import_printed(bricks(), [
            step("*STATIC", PULL, output=PRINTS), step("*FREQUENCY\n2", output=PRINTS),
            step("*STATIC", PULL, output=PRINTS + "*NODE FILE\nU\n")])
        self.assert_tables_are_there(odb, 100)
        self.assertEqual([len(odb[f"steps/Step-{n}/frames/value"]) for n in (1, 2, 3)], [1, 2, 1])
        table, = self.printed_rows(r"MODE NO    EIGENVALUE.*\n.*\n")
        frequencies = [numpy.float32(row[3]) for row in table]
        self.assertEqual([value for _, value in self.samples(odb, "Whole Model", "EIGFREQ", "Step-2")], frequencies)
        self.assertEqual(odb["steps/Step-2/frames/value"][()].astype("f4").tolist(), frequencies)
        masses, = self.printed_rows(r"T O T A L   E F F E C T I V E   M A S S\s*\nMODE NO")
        (_, mass), = self.samples(odb, "Whole Model", "TEM1", "Step-2")
        self.assertEqual(mass, numpy.float32(masses[0][0]))

    def test_a_steady_state_and_complex_modes(self):
        prints = "*NODE PRINT, NSET=TOP\nU\n*EL PRINT, ELSET=EC3D8\nS\n"
        odb = self.import_printed(bricks(), [
            step("*FREQUENCY, STORAGE=YES\n2", output=prints + "*NODE FILE\nU\n"),
            step("*STEADY STATE DYNAMICS\n1000., 90000., 2", "*MODAL DAMPING\n1, 2, 0.02\n" + PULL, output=prints)])
        self.assert_tables_are_there(odb, 50)
        tables = self.printed_rows("displacements")[2:]
        node = int(tables[0][0][0])
        for output, parts in (("U1", tables[0::2]), ("U1_IM", tables[1::2])):
            expected = [[f, numpy.float32(table[0][1])] for f, table in zip(odb["steps/Step-2/frames/value"], parts)]
            found = self.samples(odb, f"Node {node} of TOP", output, "Step-2")
            numpy.testing.assert_allclose(found, expected, rtol=1e-6)

    def test_buckling(self):
        odb = self.import_printed(bricks(), [
            step("*STATIC", PULL, output=PRINTS + "*NODE FILE\nU\n"),
            step("*BUCKLE\n2", "*CLOAD\nTOP, 3, -10.\n", output=PRINTS + "*NODE FILE\nU\n")])
        self.assert_tables_are_there(odb, 50)
        self.assertEqual(odb["steps/Step-2/frames/incrementNumber"][()].tolist(), [0, 1, 2])
        table, = self.printed_rows(r"MODE NO       BUCKLING\s*\n *FACTOR")
        numpy.testing.assert_allclose(odb["steps/Step-2/frames/value"][1:], [row[1] for row in table], rtol=1e-6)
        for field in ("U", "S_IP"):
            self.assertIn(field, odb["steps/Step-2/fields"])


class OptionsTest(PrintedTest):
    STEPS = [step("*STATIC", PULL, output=PRINTS + "*NODE FILE\nU\n*EL FILE\nS, E\n")]

    def fields(self, odb):
        return sorted(odb["steps/Step-1/fields"])

    def test_tables_can_be_left_out(self):
        odb = self.import_printed(bricks(), self.STEPS, arguments=("--no-dat",))
        self.assertEqual(self.fields(odb), ["E", "S", "S_ERROR", "U"])

    def test_tables_may_have_another_name(self):
        self.solve(deck(bricks(), self.STEPS))
        self.path("job.dat").rename(self.path("other"))
        self.assertEqual(self.import_job().status, 0)
        self.assertNotIn("S_IP", self.fields(self.open_database()))
        self.assertEqual(self.import_job("--dat", "other", "-o", "other.odb").status, 0)
        with expanded(self.path("other.odb")) as odb:
            self.assertIn("S_IP", self.fields(odb))
        run = self.import_job("--dat", "nowhere")
        self.assertEqual((run.status, run.err), (1, b"nowhere: error: the file does not exist\n"))

    def test_integration_points_can_have_the_plain_names(self):
        odb = self.import_printed(bricks(), self.STEPS, arguments=("--stress-at", "integration-points"))
        self.assertEqual(self.fields(odb), ["E", "ELSE", "ENER", "EVOL", "E_NODAL", "RF_PRINT", "S", "S_ERROR", "S_NODAL",
                                            "U", "U_PRINT"])
        run = self.import_job("--stress-at", "somewhere")
        self.assertEqual(run.status, 2)

    def test_the_limit_of_histories_is_chosen(self):
        self.solve(deck(bricks(), self.STEPS))
        run = self.import_job("--history-limit", "15")
        self.assertEqual(run.status, 0)
        self.assertRegex(run.err.decode(), r"^job\.dat:\d+: warning: stresses of EC3D8 with 16 rows, more than 15, ")
        odb = self.open_database()
        self.assertFalse([name for name in odb["steps/Step-1/history"] if "Int Point" in name])
        self.assertIn("S_IP", self.fields(odb))

    def test_the_list_shows_what_is_printed(self):
        self.solve(deck(bricks(), self.STEPS))
        run = self.import_job("--list")
        self.assertRegex(run.out.decode(), r"Step-1  S_IP +stresses +tensor  11 22 33 12 13 23  16 +1\n")
        self.assertRegex(run.out.decode(), r"Step-1  displacements +TOP +4 +1\n")


if __name__ == "__main__":
    unittest.main()
