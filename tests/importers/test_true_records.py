"""Records of real runs that were wrong, ambiguous or missing once: each is held against the result file itself."""
import collections
import os
import pathlib
import shutil
import subprocess

import numpy as np

import frd_check
from expanded import expanded
from support import ProgramTest

RUNS = pathlib.Path(__file__).parent / "runs"
CONFIG = """ODB EXTRACTIONS
EXTRACT_MASS EXTRACT_HISTORY MINMAX_HISTORY EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS EXTRACT_FIELD_COMPONENTS
ENGINEERING_MAX ENGINEERING_MIN
PERCENTAGE = 5
"""
COMPONENTS = {"11": 0, "22": 1, "33": 2, "12": 3, "13": 5, "23": 4}  # columns of the result file


class TrueRecordsTest(ProgramTest):
    def solve(self, name):
        shutil.copy(RUNS / f"{name}.inp", self.path("job.inp"))
        subprocess.run([os.environ["KOLVEX_CCX"], "-i", "job"], cwd=self.directory, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=60, check=False, env={**os.environ, "OMP_NUM_THREADS": "1"})
        return frd_check.ResultFile(self.path("job.frd"))

    def records_of(self, messages=b""):
        """Imports and extracts everything; the import has to say what is expected, and no name may occur twice."""
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual((run.status, run.err), (0, messages))
        return self.extracted()

    def extracted(self):
        self.write("config.txt", CONFIG)
        run = self.run_program("quarnish", "-odb", "job", "-config", "config.txt", program="kolvex")
        self.assertEqual((run.status, run.err), (0, b""))
        lines = [line.split("\t") for line in self.path("params.txt").read_text().splitlines()]
        counts = collections.Counter(name for name, _ in lines)
        self.assertGreater(len(counts), 10)
        self.assertEqual([name for name, count in counts.items() if count > 1], [])
        return dict(lines)

    def block(self, results, name, step=1):
        return next(block for block in results.blocks if block.name == name and block.step == step)

    def assert_close(self, text, value):
        self.assertAlmostEqual(float(text), float(value), delta=1e-5 * abs(float(value)))

    def test_components_of_several_element_types_are_over_all_of_them(self):
        results = self.solve("mixed3")
        records = self.records_of()
        stress = self.block(results, "STRESS")
        rows = np.array(stress.rows)[[any(label in nodes for nodes in results.elements.values())
                                      for label in stress.labels]]
        with expanded(self.path("job.odb")) as odb:
            self.assertGreater(len(odb["assembly/instances/PART-1-1/mesh/elements"]), 1, "there are several types")
        for component, column in COMPONENTS.items():
            self.assert_close(records[f"Step_1__Frame_1__S__{component}__max"], rows[:, column].max())
            self.assert_close(records[f"Step_1__Frame_1__S__{component}__min"], rows[:, column].min())

    def test_engineering_maxima_of_temperatures_are_large(self):
        results = self.solve("thermo")
        records = self.records_of()
        for step in (1, 2):
            values = sorted(row[0] for row in self.block(results, "NDTEMP", step).rows)
            passed_over = int(len(values) * 5 / 100)
            self.assertGreater(values[-passed_over], values[0])
            for name, value in records.items():
                if name.startswith(f"Step_{step}__Frame_") and name.endswith("__NT__enggmax") and name.count("__") == 3:
                    # One of the k largest, whatever the selection leaves unsorted.
                    self.assertGreaterEqual(float(value), values[-passed_over] - 1e-5 * abs(values[-1]), name)

    def test_springs_have_no_stresses(self):
        self.solve("spring2")
        line = next(i for i, text in enumerate(self.path("job.frd").read_text().splitlines(), 1) if "STRESS" in text) - 1
        records = self.records_of(b"job.frd:%d: warning: S has values at 1 nodes that belong to no element with such "
                                  b"values; they are left out\n" % line)
        self.assertIn("Step_1__Frame_1__EALL__S__mises__max", records)
        self.assertEqual([name for name in records if "__SPR__S__" in name or "__FAR__S__" in name], [])
        self.assertIn("Step_1__Frame_1__FAR__U__mag__max", records)

    def test_vectors_in_local_axes_are_fields_of_their_own(self):
        results = self.solve("local")
        records = self.records_of(b"job.frd: warning: in Step-1 the components of S are in local axes for the elements of "
                                  b"EALL (GLOBAL=NO), and mixed with others at nodes that they share\n")
        with expanded(self.path("job.odb")) as odb:
            local = set(odb["assembly/nodeSets/RIGHT/PART-1-1"][()].tolist())
        block = self.block(results, "DISP")
        for name, labels in (("U_LOCAL", local), ("U", set(block.labels) - local)):
            rows = np.array(block.rows)[[label in labels for label in block.labels]]
            for i in range(3):
                self.assert_close(records[f"Step_1__Frame_1__{name}__{i + 1}__max"], rows[:, i].max())
        self.assertNotIn("Step_2__Frame_1__U_LOCAL__1__max", records)
        rows = np.array(self.block(results, "DISP", 2).rows)
        self.assert_close(records["Step_2__Frame_1__U__1__max"], rows[:, 0].max())

    def test_values_that_are_no_numbers_are_told(self):
        self.solve("nan")
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual(run.status, 0)
        self.assertIn(b"job.frd: warning: 81 values of U are not finite numbers, from Step-1, frame 1 on\n", run.err)

    def test_a_block_that_is_not_understood_costs_itself_only(self):
        self.solve("contactfile")
        run = self.run_program("import", "job", program="kolvex")
        self.assertEqual(run.status, 0)
        self.assertRegex(run.err, rb"(?m)^job\.frd:\d+: warning: CELS has two rows for the node \d+; the block is left out$")
        self.assertIn("Step_2__Frame_1__U__mag__max", self.extracted())
        os.remove(self.path("job.odb"))
        run = self.run_program("import", "job", "--strict", program="kolvex")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertRegex(run.err, rb"job\.frd:\d+: error: CELS has two rows")
        self.assertFalse(self.path("job.odb").exists())

    def test_frames_that_are_not_there_leave_the_database_alone(self):
        self.solve("spring2")
        self.write("job.odb", "a good one")
        run = self.run_program("import", "job", "--frames", "99", program="kolvex")
        self.assertEqual(run.status, 1)
        self.assertIn(b"job.frd: error: nothing is selected; the file holds step 1 (frames 1)", run.err)
        self.assertEqual(run.text("job.odb"), b"a good one")

    def test_a_run_that_crashed_is_imported_as_far_as_it_came(self):
        self.solve("nan")
        head = b"".join(self.path("job.frd").read_bytes().splitlines(keepends=True)[:1])
        for results in (head[:80], None):
            if results is None:
                self.path("job.frd").unlink()
            else:
                self.write("job.frd", results)
            run = self.run_program("import", "job", program="kolvex")
            self.assertEqual(run.status, 0, run.err)
            self.assertRegex(run.err, rb"warning: the result file holds no model; the mesh is taken from the deck\n")
            with expanded(self.path("job.odb")) as odb:
                mesh = odb["assembly/instances/PART-1-1/mesh"]
                self.assertEqual(mesh["elements/C3D8/connectivity"].shape, (12, 8))
                self.assertEqual(len(mesh["nodes/labels"]), 36)
                self.assertIn("U_PRINT", odb["steps/Step-1/fields"])
            self.assertIn("Step_1__Frame_1__U_PRINT__mag__max", self.extracted())
            os.remove(self.path("job.odb"))
            run = self.run_program("import", "job", "--strict", program="kolvex")
            self.assertEqual((run.status, run.out), (1, b""))
