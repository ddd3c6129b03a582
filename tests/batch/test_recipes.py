"""The files of docs/recipes.md, run as they stand there."""
import importlib.util
import os
import re
import shutil
import subprocess
import unittest

from batch_support import BIN, BatchTest
from support import ROOT
from test_import_program import DECK, WHOLE

HAS_PANDAS = importlib.util.find_spec("pandas") is not None


class RecipesTest(BatchTest):
    def setUp(self):
        super().setUp()
        text = (ROOT / "docs/recipes.md").read_text(encoding="utf-8")
        self.recipes = dict(re.findall(r"^```\w+ (\S+)\n(.*?)^```$", text, re.DOTALL | re.MULTILINE))
        for name, recipe in self.recipes.items():
            self.write(name, recipe)
        shutil.copy(ROOT / "examples/lug/extract.cfg", self.path("extract.cfg"))
        for number in range(3):
            self.path(f"runs/{number}").mkdir(parents=True)
            self.write(f"runs/{number}/job.frd", WHOLE)
            self.write(f"runs/{number}/job.inp", DECK)
        self.expected = self.by_hand()

    def by_hand(self):
        self.run_program("runs/0/job.frd", "-o", "hand.odb", program="import")
        run = self.run_program("-odb", "hand.odb", "-config", "extract.cfg")
        return next(line.split("\t")[1] for line in run.text("params.txt").decode().splitlines()
                    if line.startswith("Step_1__Frame_1__S__mises__max\t"))

    def run_recipe(self, *command, cwd=""):
        process = subprocess.run(command, cwd=self.path(cwd), capture_output=True, text=True, check=False, timeout=120,
                                 env={**os.environ, "PATH": f"{BIN}:{os.environ['PATH']}"})
        self.assertEqual(process.returncode, 0, process.stdout + process.stderr)
        return process.stdout

    def assert_table(self):
        lines = self.path("results.csv").read_text().splitlines()
        self.assertEqual([line.split(",")[1] for line in lines], ["status", "done", "done", "done"])

    @unittest.skipUnless(shutil.which("make"), "there is no make")
    def test_make(self):
        self.run_recipe("make")
        self.assert_table()
        self.assertIn("up to date", self.run_recipe("make"))
        os.utime(self.path("runs/1/job.frd"))
        self.assertIn("(2 of them before)", self.run_recipe("make"))

    def test_python(self):
        self.assertEqual(self.run_recipe("/usr/bin/python3", "worst.py").splitlines()[-1], f"0 {self.expected}")

    @unittest.skipUnless(HAS_PANDAS, "there is no pandas")
    def test_pandas(self):
        self.assertEqual(float(self.run_recipe("/usr/bin/python3", "frame.py").splitlines()[-1]), float(self.expected))

    @unittest.skipUnless(shutil.which("snakemake"), "there is no snakemake")
    def test_snakemake(self):
        self.run_recipe("snakemake", "--cores", "2")
        self.assert_table()

    def test_a_driver_writes_results_or_fails(self):
        self.assertEqual(self.run_recipe("sh", "../../driver.sh", "parameters", "results.out", cwd="runs/2"), "")
        self.assertEqual(self.path("runs/2/results.out").read_text(), f"{self.expected} stress\n")
        self.write("runs/2/job.frd", WHOLE[:200])
        process = subprocess.run(["sh", "../../driver.sh", "parameters", "results.out"], cwd=self.path("runs/2"), capture_output=True,
                                 check=False, env={**os.environ, "PATH": f"{BIN}:{os.environ['PATH']}"})
        self.assertNotEqual(process.returncode, 0)


if __name__ == "__main__":
    unittest.main()
