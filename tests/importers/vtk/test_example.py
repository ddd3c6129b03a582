"""The example of the plate with a hole, as docs/vtk.md tells to run it: three times the load at the rim, and what theory says elsewhere."""
import re
import shlex
import subprocess
import sys
import unittest

from vtk_test import ROOT, VtkTest


class PlateTest(VtkTest):
    def test_the_commands_of_the_page_give_the_numbers_of_theory(self):
        page = (ROOT / "docs/vtk.md").read_text().split("## Example")[1]
        commands = re.findall(r"^    \$ (.*)", page, re.MULTILINE)
        self.assertEqual(len(commands), 4)
        self.path("examples").symlink_to(ROOT / "examples")
        for command in commands[:3]:
            words = shlex.split(command)
            if words[0] == "kolvex":
                run = self.run_program(*words[2:], program=words[1])
                self.assertEqual(run.status, 0, run.err)
            else:
                subprocess.run([sys.executable, "-B", *words[1:]], cwd=self.directory, check=True, timeout=60)
        text = run.text("params.txt").decode()
        records = dict(line.split("\t") for line in text.splitlines())
        for frame, load in ((1, 50), (2, 100), (3, 150)):
            head = f"Step_1__Frame_{frame}__"
            # Across the hole three times the load, along it the load as pressure.
            for name, value in {"S__11__max": 3 * load, "S__mises__max": 3 * load, "S__22__min": -load,
                                "MaterialIds_1__S__maxprincipal__max": 3 * load, "MaterialIds_1__S__minprincipal__min": -load}.items():
                self.assertAlmostEqual(float(records[head + name]), value, delta=2e-5 * abs(value))
            self.assertLess(float(records[head + "MaterialIds_2__S__11__max"]), 2 * load)
            # Far away the strain is that of the load alone, but for what the hole adds: 3/100 of its radius' share.
            self.assertAlmostEqual(float(records[head + "U__1__max"]), load * 100 / 210000, delta=0.03 * load * 100 / 210000)
        self.assertEqual(records["Step_1__History__load"], "((0.333333, 50), (0.666667, 100), (1, 150))")
        shown = re.findall(r"^    (Step\S+)\t(\S+)$", page, re.MULTILINE)
        self.assertGreater(len(shown), 2)
        for name, value in shown:
            self.assertEqual(records[name], value)


if __name__ == "__main__":
    unittest.main()
