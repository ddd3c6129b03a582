"""What the solver writes for decks of ours, imported and held against a reading of its own of the same files."""
import os
import shutil
import subprocess

import h5py
import numpy as np

import frd_check
from decks import BRICK_EDGES, CORNERS, Mesh, deck, solids, step
from expanded import expanded
from support import ProgramTest

PULL = "*CLOAD\nTOP, 3, 10.\n"


class SolverTest(ProgramTest):
    """Runs the solver on a deck and imports what it wrote."""

    def solve(self, text):
        self.write("job.inp", text)
        subprocess.run([os.environ["KOLVEX_CCX"], "-i", "job"], cwd=self.directory, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=60, check=False, env={**os.environ, "OMP_NUM_THREADS": "1"})

    def import_job(self, *arguments):
        return self.run_program("import", "job", *arguments, program="kolvex")

    def imported(self, text):
        """The run of the import, which must have had nothing to complain of, and the open database."""
        self.solve(text)
        run = self.import_job()
        self.assertEqual((run.status, run.err), (0, b""))
        return self.open_database()

    def open_database(self):
        odb = expanded(self.path("job.odb"))
        self.addCleanup(odb.close)
        return odb

    def assert_numbers_equal(self, frames, fields):
        compared = frd_check.compare(self.path("job.frd"), self.path("job.odb"))
        self.assertEqual(compared[:2], (frames, fields))
        self.assertGreater(compared[2], 100)

    def status_times(self):
        """Step times by step and increment, from the status file."""
        rows = [line.split() for line in self.path("job.sta").read_text().splitlines()]
        return {(int(r[0]), int(r[1])): float(r[5]) for r in rows if len(r) == 7 and r[0].isdigit()}


class StaticTest(SolverTest):
    """Two nonlinear steps with several increments on solids of every shape."""

    def setUp(self):
        super().setUp()
        self.mesh = solids()
        self.odb = self.imported(deck(self.mesh, [
            step("*STATIC\n0.25, 1.", PULL, "pull at the top", options=", NLGEOM"),
            step("*STATIC\n0.5, 2.", "*CLOAD\nTOP, 1, 5.\n", output="*NODE FILE, NSET=TOP\nU\n*EL FILE, NSET=TOP\nS\n"),
        ]))

    def test_every_number_is_that_of_the_result_file(self):
        steps = self.odb["steps"]
        frames = sum(len(s["frames/value"]) for s in steps.values())
        self.assertGreaterEqual(frames, 6)
        self.assert_numbers_equal(frames, 6)

    def test_elements_have_the_nodes_of_the_deck_in_its_order(self):
        groups = self.odb["assembly/instances/PART-1-1/mesh/elements"]
        found = {kind: dict(zip(group["labels"][()].tolist(), group["connectivity"][()].tolist()))
                 for kind, group in groups.items()}
        self.assertEqual(found, self.mesh.elements)

    def test_nodes_are_those_of_the_deck(self):
        nodes = self.odb["assembly/instances/PART-1-1/mesh/nodes"]
        found = dict(zip(nodes["labels"][()].tolist(), map(tuple, nodes["coordinates"][()].tolist())))
        self.assertEqual(found, self.mesh.nodes)

    def test_sets_are_those_of_the_deck(self):
        found = {name: group["PART-1-1"][()].tolist() for name, group in self.odb["assembly/nodeSets"].items()}
        self.assertEqual(found, {"Nall": sorted(self.mesh.nodes),
                                 "Bottom side": sorted(self.mesh.at(lambda x, y, z: z == 0)),
                                 "TOP": sorted(self.mesh.at(lambda x, y, z: z == 1))})
        found = {name: group["PART-1-1"][()].tolist() for name, group in self.odb["assembly/elementSets"].items()}
        self.assertEqual(found, {"E" + kind: sorted(elements) for kind, elements in self.mesh.elements.items()})

    def test_frames_have_the_times_of_the_status_file(self):
        times = self.status_times()
        found = {}
        for number in (1, 2):
            frames = self.odb[f"steps/Step-{number}/frames"]
            for increment, value in zip(frames["incrementNumber"], frames["value"]):
                found[number, int(increment)] = float(value)
        self.assertEqual(found.keys(), times.keys())
        for key, time in times.items():
            self.assertAlmostEqual(found[key], time, delta=1e-6 * time)

    def test_step_text_becomes_the_description(self):
        described = [group.attrs["description"] for group in self.odb["steps"].values()]
        self.assertEqual(described, [b"pull at the top", b""])

    def test_a_field_of_one_set_has_its_rows_only(self):
        frame = len(self.odb["steps/Step-2/frames/value"]) - 1
        top = set(self.mesh.at(lambda x, y, z: z == 1))
        for field in ("U", "S"):
            nodes = {int(label) for location, _ in frd_check.stored(self.odb, "Step-2", field, frame)
                     for label in location["nodeLabels"]}
            self.assertEqual(nodes, top)

    def test_tensors_lie_at_the_nodes_of_every_element(self):
        (location, _), = frd_check.stored(self.odb, "Step-1", "S", 0)
        self.assertEqual(location.attrs["position"], b"elementNodal")
        expected = {(e, n) for kind in self.mesh.elements.values() for e, nodes in kind.items() for n in nodes}
        rows = list(zip(location["elementLabels"], location["nodeLabels"]))
        self.assertEqual(set(rows), expected)
        self.assertEqual(len(rows), len(expected))


def equivalent_stress(s):
    s = s.astype("f8")
    normal = (s[:, 0] - s[:, 1]) ** 2 + (s[:, 1] - s[:, 2]) ** 2 + (s[:, 2] - s[:, 0]) ** 2
    return np.sqrt(normal / 2 + 3 * (s[:, 3:] ** 2).sum(axis=1))


class OtherAnalysesTest(SolverTest):
    """Modes, dynamics, buckling, heat."""

    def column(self):
        mesh = Mesh()
        for z in range(6):
            mesh.add("C3D8I", (0, 0, z), CORNERS)
        return mesh

    def test_modes_and_what_builds_on_them(self):
        odb = self.imported(deck(self.column(), [
            step("*STATIC", PULL),
            step("*FREQUENCY, STORAGE=YES\n3", output="*NODE FILE\nU\n*EL FILE\nS\n"),
            step("*STEADY STATE DYNAMICS\n1000., 90000., 2", "*MODAL DAMPING\n1, 3, 0.02\n" + PULL,
                 output="*NODE FILE\nU\n*EL FILE\nS, E\n"),
            step("*MODAL DYNAMIC\n1.e-6, 5.e-6", PULL, output="*NODE FILE\nU, V\n"),
        ]))
        frames = {name: group["frames"] for name, group in odb["steps"].items()}
        self.assertEqual(list(frames), ["Step-1", "Step-2", "Step-3", "Step-4"])
        self.assertEqual(list(frames["Step-2"]["incrementNumber"]), [1, 2, 3])
        self.assertEqual(list(frames["Step-3"]["incrementNumber"]), list(range(1, len(frames["Step-3"]["value"]) + 1)))
        self.assertEqual(frames["Step-3"]["value"][0], 1000)
        self.assertEqual(frames["Step-3"]["value"][-1], 90000)
        for i, (value, text) in enumerate(zip(frames["Step-2"]["value"], frames["Step-2"]["description"]), 1):
            self.assertEqual(text.decode(), f"Mode {i}: Frequency = {value:.5g}")
        self.assertEqual(list(frames["Step-4"]["value"]), [1e-6, 2e-6, 3e-6, 4e-6, 5e-6])
        self.assertEqual(sorted(odb["steps/Step-3/fields"]),
                         ["E", "E_IM", "E_MISES_PEAK", "S", "S_ERROR", "S_ERROR_IM", "S_IM", "S_MISES_PEAK", "U", "U_IM",
                          "U_PEAK"])
        for frame in range(len(frames["Step-3"]["value"])):
            self.assert_peaks(odb, frame, "U", "U_PEAK", lambda u: np.linalg.norm(u, axis=1))
            self.assert_peaks(odb, frame, "S", "S_MISES_PEAK", equivalent_stress)
        self.assert_numbers_equal(sum(len(f["value"]) for f in frames.values()), 11)

    def assert_peaks(self, odb, frame, field, peak, quantity):
        """The peaks of a field are the largest values over the phases of a cycle, a tenth of a degree apart."""
        (location, real), = frd_check.stored(odb, "Step-3", field, frame)
        (_, imaginary), = frd_check.stored(odb, "Step-3", field + "_IM", frame)
        (of_peak, found), = frd_check.stored(odb, "Step-3", peak, frame)
        self.assertEqual(of_peak.name, location.name, "the peaks lie where the field lies")
        phases = np.radians(np.arange(0, 360, 0.1))
        largest = np.zeros(len(real))
        for phase in phases:
            largest = np.maximum(largest, quantity(real * np.cos(phase) - imaginary * np.sin(phase)))
        self.assertGreater(largest.max(), 0)
        np.testing.assert_allclose(found[:, 0], largest, rtol=5e-6)

    def test_frequencies_are_those_of_the_printed_table(self):
        odb = self.imported(deck(self.column(), [step("*FREQUENCY\n4", output="*NODE FILE\nU\n")]))
        table = [line.split() for line in self.path("job.dat").read_text().splitlines()]
        expected = [float(r[3]) for r in table if len(r) == 5 and r[0].isdigit()]
        self.assertEqual(len(expected), 4)
        for found, printed in zip(odb["steps/Step-1/frames/value"], expected):
            self.assertAlmostEqual(found, printed, delta=1e-6 * printed)

    def test_buckling_factors_are_those_of_the_printed_table(self):
        odb = self.imported(deck(self.column(), [step("*BUCKLE\n3", "*CLOAD\nTOP, 3, -1.\n")]))
        table = [line.split() for line in self.path("job.dat").read_text().splitlines()]
        expected = [float(r[1]) for r in table if len(r) == 2 and r[0].isdigit()]
        self.assertEqual(len(expected), 3)
        frames = odb["steps/Step-1/frames"]
        self.assertEqual(list(frames["incrementNumber"]), [0, 1, 2, 3])
        self.assertEqual(frames["value"][0], 0)
        for found, printed in zip(frames["value"][1:], expected):
            self.assertAlmostEqual(found, printed, delta=1e-6 * printed)
        self.assert_numbers_equal(4, 6)

    def test_temperatures_and_heat_flux(self):
        steps = step("*HEAT TRANSFER, STEADY STATE", "*BOUNDARY\nTOP, 11, 11, 400.\nBottom side, 11, 11, 300.\n",
                     output="*NODE FILE\nNT, RFL\n*EL FILE\nHFL\n")
        text = deck(self.column(), [steps])
        text = text.replace("*EXPANSION", "*CONDUCTIVITY\n50.\n*SPECIFIC HEAT\n5.e8\n*EXPANSION")
        odb = self.imported(text.replace("*BOUNDARY\nBottom side, 1, 3\n", ""))
        self.assertEqual(sorted(odb["steps/Step-1/fields"]), ["HFL", "NT", "RFL"])
        self.assert_numbers_equal(1, 3)


class BinaryTest(SolverTest):
    """The same run with its results as text, in floats and in doubles."""

    def stored_numbers(self, text):
        """Every array of the database by its name."""
        odb = self.imported(text)
        arrays = {}
        odb.visititems(lambda name, item: arrays.update({name: item[()]} if isinstance(item, h5py.Dataset) else {}))
        return arrays

    def assert_binary_is_text(self, make_deck):
        text = self.stored_numbers(make_deck("*NODE FILE", "*EL FILE"))
        for precision in ("", ", DOUBLE"):
            binary = self.stored_numbers(make_deck("*NODE OUTPUT" + precision, "*ELEMENT OUTPUT" + precision))
            self.assertEqual(binary.keys(), text.keys())
            for name, array in text.items():
                if name.endswith("/data"):
                    # Six digits of text: half a unit of the last one, and half of a float's.
                    np.testing.assert_allclose(binary[name], array, rtol=5.1e-6, atol=1e-37, err_msg=name)
                else:
                    np.testing.assert_array_equal(binary[name], array, err_msg=name)

    def test_solids_of_every_shape(self):
        self.assert_binary_is_text(lambda nodes, elements: deck(solids(), [
            step("*STATIC\n0.5, 1.", PULL, options=", NLGEOM", output=f"{nodes}\nU, RF\n{elements}\nS, E, ENER\n"),
            step("*STATIC", PULL, output=f"{nodes}, NSET=TOP\nU\n{elements}, NSET=TOP\nS\n")]))

    def test_complex_results(self):
        mesh = Mesh()
        for z in range(3):
            mesh.add("C3D8I", (0, 0, z), CORNERS)
        self.assert_binary_is_text(lambda nodes, elements: deck(mesh, [
            step("*FREQUENCY, STORAGE=YES\n3", output=f"{nodes}\nU\n"),
            step("*STEADY STATE DYNAMICS\n1000., 90000., 2", "*MODAL DAMPING\n1, 3, 0.02\n" + PULL,
                 output=f"{nodes}\nU, PU\n{elements}\nS, PHS\n")]))


class SectionForcesTest(SolverTest):
    """A cantilever of length 10 along z, loaded at its free end: section forces follow by hand."""

    BEAM = ("*NODE\n1,0,0,0\n2,0,0,5\n3,0,0,10\n*ELEMENT,TYPE=B32R,ELSET=E\n1,1,2,3\n*BOUNDARY\n3,1,6\n"
            "*MATERIAL,NAME=M\n*ELASTIC\n1.E7,.3\n*BEAM SECTION,ELSET=E,MATERIAL=M,SECTION=RECT\n.25,.25\n1.,0.,0.\n")

    def forces(self, loads):
        output = "*NODE FILE,OUTPUT=2D\nU\n*EL FILE,SECTION FORCES\nS\n"
        odb = self.imported(self.BEAM + step("*STATIC", "*CLOAD\n" + loads, output=output))
        fields = odb["steps/Step-1/fields"]
        self.assertNotIn("S", fields)
        return [fields[name]["blocks/0/data"][0] for name in ("SF", "SM")]

    def test_shear_bends_about_the_other_axis(self):
        force, moment = self.forces("1,1,2.\n")
        np.testing.assert_allclose(force, [[-2, 0, 0]] * 3, atol=1e-3)
        np.testing.assert_allclose(moment, [[0, 0, 0], [0, 10, 0], [0, 20, 0]], atol=1e-2)
        force, moment = self.forces("1,2,2.\n")
        np.testing.assert_allclose(force, [[0, -2, 0]] * 3, atol=1e-3)
        np.testing.assert_allclose(moment, [[0, 0, 0], [-10, 0, 0], [-20, 0, 0]], atol=1e-2)

    def test_push_and_torque_are_the_third_components(self):
        force, moment = self.forces("1,3,2.\n1,6,4.\n")
        np.testing.assert_allclose(force, [[0, 0, -2]] * 3, atol=1e-3)
        np.testing.assert_allclose(moment, [[0, 0, -4]] * 3, atol=1e-3)


class OddFilesTest(SolverTest):
    """Expanded shells, files that are cut off, what the extraction finds."""

    def test_shells_are_solids_with_new_nodes(self):
        mesh = Mesh()
        mesh.add("S8R", (0, 0, 0), CORNERS[:4], BRICK_EDGES[:4])
        sets = ""
        for name, x in (("HELD", 0), ("FREE", 1)):
            nodes = mesh.at(lambda at, y, z, x=x: at == x)
            sets += f"*NSET, NSET={name}\n" + ",".join(map(str, nodes)) + "\n"
        text = deck(mesh, [step("*STATIC", "*CLOAD\nFREE, 3, 1.\n")], sets)
        text = text.replace("*SOLID SECTION, ELSET=ES8R, MATERIAL=STEEL",
                            "*SHELL SECTION, ELSET=ES8R, MATERIAL=STEEL\n0.1")
        self.solve(text.replace("Bottom side, 1, 3", "HELD, 1, 6"))
        run = self.import_job()
        self.assertEqual((run.status, run.err), (0, b""))
        odb = self.open_database()
        self.assertEqual(list(odb["assembly/instances/PART-1-1/mesh/elements"]), ["HEX20"])
        self.assertEqual(odb["assembly/elementSets/ES8R/PART-1-1"][()].tolist(), [10])
        stored = odb["assembly/instances/PART-1-1/mesh/nodes"]
        free = [n for n, at in zip(stored["labels"][()].tolist(), stored["coordinates"][()]) if at[0] == 1]
        self.assertEqual(odb["assembly/nodeSets/FREE/PART-1-1"][()].tolist(), sorted([*mesh.at(lambda x, y, z: x == 1), *free]))
        self.assertEqual(len(free), 8)
        self.assert_numbers_equal(1, 6)

    def test_a_run_that_was_killed_gives_what_is_complete(self):
        self.solve(deck(solids(), [step("*STATIC\n0.25, 1.", PULL, options=", NLGEOM")]))
        whole = self.path("job.frd").read_bytes()
        cut = whole.rindex(b"  100C") + 2000
        self.write("job.frd", whole[:cut])
        run = self.import_job("--strict")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertIsNone(run.text("job.odb"))
        run = self.import_job()
        self.assertEqual(run.status, 0)
        line = whole[:cut].count(b"\n") + 1
        self.assertIn(f"job.frd:{line}: warning: the file is truncated here", run.err.decode())
        self.assertRegex(run.out.decode().splitlines()[-1], r"^incomplete: the results end after step 1, time \S+$")
        self.assert_numbers_equal(len(self.status_times()), 6)

    def test_the_extraction_finds_what_was_imported(self):
        self.solve(deck(solids(), [step("*STATIC", PULL)]))
        self.assertEqual(self.import_job("-o", "out.odb").status, 0)
        shutil.move(self.path("out.odb"), self.path("model.odb"))
        self.config("EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS EXTRACT_FIELD_COMPONENTS")
        run = self.run_program("quarnish", "-odb", "model.odb", "-config", "config.txt", program="kolvex")
        self.assertEqual((run.status, run.err), (0, b""))
        names = {line.split(b"\t")[0] for line in run.text("params.txt").splitlines()}
        for name in (b"Step_1__Frame_1__S__mises__max", b"Step_1__Frame_1__U__mag__max",
                     b"Step_1__Frame_1__TOP__U__3__max", b"Step_1__Frame_1__EC3D15__S__33__max",
                     b"Step_1__Frame_1__Bottom_side__RF__mag__max"):
            self.assertIn(name, names)
