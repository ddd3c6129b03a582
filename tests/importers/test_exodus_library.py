"""Files that the Exodus library itself has written, and what it says of their sides (exodus/make_files.c)."""
import pathlib
import shutil
import subprocess
import unittest

import h5py
import netCDF4
import numpy as np

from test_exodus import COLUMNS, SWITCHES, mises
from support import ProgramTest

FILES = pathlib.Path(__file__).resolve().parent / "exodus"


class LibraryTest(ProgramTest):
    def run_import(self, *arguments):
        run = self.run_program(*arguments, program="import")
        self.assertEqual(run.status, 0, run.err)
        return run

    def records(self, database):
        self.run_program("-odb", database, "-config", self.config(*SWITCHES))
        return dict(line.split("\t") for line in self.path("params.txt").read_text().splitlines())

    def check_sides(self, folder, name):
        """Each side's node set holds the nodes that the library lists."""
        sides = {line.split()[0]: [int(n) for n in line.split()[1:]] for line in (folder / f"{name}.txt").read_text().splitlines()}
        shutil.copy(folder / f"{name}.e", self.path(f"{name}.e"))
        with netCDF4.Dataset(self.path(f"{name}.e"), "a") as file:
            nodes = len(file.dimensions["num_nodes"])
            file.createDimension("num_nod_var", nodes)
            table = np.zeros((nodes, len(file.dimensions["len_string"])), "S1")
            for i in range(nodes):
                table[i, :4] = [c.encode() for c in f"n{i + 1:03}"]
            file.createVariable("name_nod_var", "S1", ("num_nod_var", "len_string"))[:] = table
            file.variables["time_whole"][:] = [1.0]
            for i in range(nodes):  # 1 at one node, 0 elsewhere: its maximum over a set says whether the node is in it
                file.createVariable(f"vals_nod_var{i + 1}", "f8", ("time_step", "num_nodes"))[:] = np.eye(nodes)[i:i + 1]
        self.run_import(f"{name}.e")
        records = self.records(name)
        self.assertGreater(len(sides), 3)
        for side, expected in sides.items():
            found = [n for n in range(1, nodes + 1) if float(records[f"Step_1__Frame_1__{side}_NODES__n{n:03}__max"]) == 1]
            self.assertEqual(found, sorted(expected), side)

    def check_results(self, path):
        shutil.copy(path, self.path("job.e"))
        listed = self.run_import("job.e", "--list").out
        self.assertIn(b"a block with a name that is longer than thirty-two characters", listed)
        self.assertIn(b"fixed-NODES ", listed)
        self.run_import("job.e")
        records = self.records("job")
        value = lambda v, entity, step, place: 1000 * v + 100 * entity + 10 * step + place
        for step in (1, 2, 3):
            at = f"Step_1__Frame_{step}__"
            nodal = np.array([[value(v, 1, step, n) for n in range(1, 13)] for v in range(1, 5)], float)
            stress = np.array([[value(v, e, step, 1) for e in (1, 2)] for v in range(1, 7)], float)
            expected = {at + "U__mag": np.linalg.norm(nodal[:3], axis=0), at + "temperature": nodal[3],
                        at + "fixed_NODES__temperature": nodal[3, :4], at + "S__mises": mises(stress),
                        at + "damage": np.array([value(7, 1, step, 1)]),
                        at + "reaction_fixed": np.array([value(1, 1, step, n) for n in range(1, 5)]),
                        at + "pressure_fixed": np.array([value(1, 1, step, n) for n in range(1, 4)]),
                        at + "block_200__S__11": stress[0, 1:], **{f"{at}S__{c}": row for c, row in zip(COLUMNS, stress)}}
            for key, values in expected.items():
                self.assertAlmostEqual(float(records[key + "__max"]), values.max(), delta=2e-5 * abs(values.max()), msg=key)
                self.assertAlmostEqual(float(records[key + "__min"]), values.min(), delta=2e-5 * abs(values.min()), msg=key)
        self.assertEqual(records["Step_1__History__kinetic_energy"], "((0.5, 1010), (1, 1020), (1.5, 1030))")
        with h5py.File(self.path("job.odb")) as odb:
            group = odb["assembly/instances/PART-1-1"] if "mesh" in odb["assembly/instances/PART-1-1"] else odb["parts/PART-1"]
            np.testing.assert_array_equal(group["mesh/nodes/labels"][:], 100 - 3 * np.arange(12))
            np.testing.assert_array_equal(group["mesh/elements/HEX8/labels"][:], [31, 17])

    def test_sides_have_the_nodes_that_the_library_lists(self):
        for name in ("sides", "plane"):
            self.check_sides(FILES, name)

    def test_results_are_those_that_were_written(self):
        self.check_results(FILES / "results.e")

    def test_files_made_anew_give_the_same(self):
        program = self.path("make_files")
        compiler = shutil.which("cc")
        made = compiler and subprocess.run([compiler, FILES / "make_files.c", "-lexoIIv2c", "-o", program], stderr=subprocess.DEVNULL, check=False)
        if not made or made.returncode != 0:
            self.skipTest("the Exodus library is not installed")
        subprocess.run([program], cwd=self.directory, check=True)
        for name in ("results.e", "results4.e"):
            self.check_results(self.path(name))
        for name in ("sides", "plane"):
            self.assertEqual(self.path(name + ".txt").read_text(), (FILES / (name + ".txt")).read_text())


if __name__ == "__main__":
    unittest.main()
