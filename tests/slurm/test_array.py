"""Batches on a real Slurm: arrays that end well, nodes and runners that are killed, and submitting once more."""
import csv
import json
import os
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest
from collections import Counter

import cluster
from batch_support import BatchTest

INPUTS = int(os.environ.get("KOLVEX_SLURM_INPUTS", "120"))
TASKS = 8
# As long as this nobody has to be killed in a hurry.
PACE = "slow 0.1"


class ArrayTest(BatchTest):
    @classmethod
    def setUpClass(cls):
        missing = cluster.missing()
        if missing:
            raise unittest.SkipTest("not here: " + ", ".join(missing))
        # Sockets have short names.
        cls.place = tempfile.mkdtemp(prefix="kolvex-slurm.", dir="/tmp")
        cls.slurm = cluster.Cluster(cls.place + "/slurm")
        cls.addClassCleanup(shutil.rmtree, cls.place)
        cls.addClassCleanup(cls.slurm.stop)
        cls.slurm.start()

    def setUp(self):
        super().setUp()
        self.stand_in()
        self.addCleanup(self.empty_queue)

    def empty_queue(self):
        self.slurm.ask("scancel", "--user=root")
        self.slurm.wait_until(lambda: not self.slurm.queue(), "jobs stay in the queue")

    def environment(self):
        return {**self.slurm.environment, "RAN": str(self.path("ran"))}

    def submit(self, *words, status=0, **options):
        return self.batch("*.odb", "--slurm", *words, status=status, **options)

    def wait_for_jobs(self):
        self.slurm.wait_until(lambda: not self.slurm.queue(), "the jobs do not end", 300)

    def table(self, path):
        with open(path, encoding="utf-8", newline="") as file:
            return sorted(csv.reader(file))

    def local_table(self):
        """That of one run here, of the same inputs."""
        here = BatchTest.environment(self) | {"RAN": "/dev/null"}
        command = self.command("*.odb", "-k", out="local")
        subprocess.run(command, cwd=self.directory, env=here, check=False, capture_output=True)
        subprocess.run([self.program, "collect", "local", "-o", "local.csv"], cwd=self.directory, check=True)
        return self.table(self.path("local.csv"))

    def runners(self):
        """The processes of the runners of tasks."""
        found = []
        for process in filter(str.isdigit, os.listdir("/proc")):
            try:
                with open(f"/proc/{process}/cmdline", "rb") as file:
                    if str(self.program).encode() in (words := file.read().split(b"\0")) and b"--index" in words:
                        found.append(int(process))
            except OSError:
                pass
        return found

    def test_an_array_gives_the_table_of_a_local_run(self):
        self.inputs(*["good"] * 20, "exit 1")
        said = self.submit("--tasks", 4, "--wait", status=1).stdout.decode()
        self.assertRegex(said, r"^job array \d+ with 4 tasks, collecting job \d+\n21 inputs: 20 done, 1 failed, 0 running, 0 missing\n")
        self.assertEqual(self.table(self.path("out/table.csv")), self.local_table())
        self.assertEqual(Counter(self.ran()), {f"{i}.odb": 1 for i in range(21)})

    def test_packs_give_the_same_table(self):
        self.inputs(*["good"] * 20, "exit 1")
        self.submit("--pack", "--tasks", 4, "--wait", status=1)
        self.assertEqual(self.table(self.path("out/table.csv")), self.local_table())
        self.assertEqual(sorted(path.name for path in self.path("out/packs").iterdir()), [f"{i}-of-4" for i in range(4)])
        self.assertEqual(sorted(path.name for path in self.path("out").iterdir()), [".kolvex-batch", "packs", "table.csv"])
        self.inputs("good", start=20)
        self.submit("--pack", "--tasks", 3, "--wait")
        self.assertEqual(Counter(self.ran()), {f"{i}.odb": 1 for i in range(20)} | {"20.odb": 2})

    def test_the_same_line_again_does_what_is_missing(self):
        self.inputs(*["good"] * 4, "exit 1")
        self.submit("--wait", status=1)
        self.inputs("good", start=4)
        self.inputs("good", start=5)
        self.submit("--wait")
        self.assertEqual(Counter(self.ran()), {"0.odb": 1, "1.odb": 1, "2.odb": 1, "3.odb": 1, "4.odb": 2, "5.odb": 1})
        self.assertEqual(len(self.table(self.path("out/table.csv"))), 7)

    def test_while_an_array_is_in_the_queue_nothing_is_submitted(self):
        self.inputs("slow 5")
        first = json.loads(self.submit("--json").stdout)
        self.assertEqual((first["event"], first["tasks"]), ("submitted", 1))
        before = self.slurm.queue()
        refused = self.submit(status=1)
        self.assertEqual(refused.stderr.decode(), f"job array {first['array']} of {self.path('out')} is still in the queue; nothing is submitted\n")
        self.assertEqual(len(self.slurm.queue()), len(before))
        self.slurm.ask("scancel", first["array"], first["collector"])
        self.wait_for_jobs()
        self.submit("--wait")

    def test_options_behind_two_dashes_go_to_sbatch(self):
        self.inputs("slow 3")
        job = json.loads(self.submit("--json", "--timeout", "90", "--import-option=--no-mass", "--", "--comment=it's mine", "--nice=7").stdout)
        shown = self.slurm.ask("scontrol", "show", "job", job["array"])
        self.assertIn("Comment=it's mine", shown)
        self.assertIn("Nice=7", shown)
        script = self.path("out/.kolvex-batch/slurm-task.sh").read_text()
        self.assertIn("'--timeout=90.000' '--import-option=--no-mass'", script)
        self.wait_for_jobs()
        self.assertEqual(self.states(), {"0.odb": "done"})

    def test_what_slurm_refuses_is_told_and_leaves_no_array(self):
        self.inputs("good")
        process = self.batch("*.odb", "--slurm", "--", "--partition=nowhere", status=1)
        self.assertRegex(process.stderr.decode(), r"sbatch failed \(status 1\): .*partition")
        self.assertEqual(self.slurm.queue(), [])
        self.submit("--wait")

    def test_names_that_are_odd_to_shells_and_to_slurm(self):
        self.path("a 'b' %j").mkdir()
        self.write("a 'b' %j/it's %.odb", "good\n")
        self.batch("*/*.odb", "--slurm", "--wait", out="out 'x' %A")
        self.assertEqual(self.states("out 'x' %A"), {"it's %.odb": "done"})

    def test_a_cancelled_array_gives_back_what_runs(self):
        self.inputs(*["good"] * 3, "hang")
        job = json.loads(self.submit("--json", "--tasks", 1).stdout)
        self.wait_until(lambda: "3.odb" in self.ran())
        self.slurm.ask("scancel", job["array"])
        self.wait_for_jobs()
        self.assertEqual(self.states(), {f"{i}.odb": "done" for i in range(3)})
        self.wait_until(self.no_process_left)
        self.inputs("good", start=3)
        self.submit("--wait")
        self.assertEqual(Counter(self.ran()), {"0.odb": 1, "1.odb": 1, "2.odb": 1, "3.odb": 2})

    def test_a_killed_node_and_a_killed_runner_lose_only_what_ran(self):
        self.inputs(*[PACE] * INPUTS)
        job = json.loads(self.submit("--json", "--tasks", TASKS).stdout)
        self.slurm.wait_until(lambda: len(self.ran()) > INPUTS // 4, "nothing runs")
        runner = self.runners()[0]
        os.kill(runner, signal.SIGKILL)
        self.slurm.kill_node("n2")
        time.sleep(0.5)
        self.slurm.ask("scancel", job["array"], job["collector"])
        self.slurm.start_node("n2")
        self.wait_for_jobs()
        self.assertLess(len(self.states()), INPUTS)
        finished = {name for name, state in self.states().items() if state == "done"}
        before = Counter(self.ran())
        said = self.submit("--tasks", TASKS, "--wait").stdout.decode()
        self.assertTrue(re.search(rf"{INPUTS} inputs: {INPUTS} done, 0 failed, 0 running, 0 missing\n", said), said)
        again = Counter(self.ran()) - before
        self.assertEqual(set(again), {f"{i}.odb" for i in range(INPUTS)} - finished)
        self.assertEqual(set(again.values()), {1})
        self.assertEqual(self.table(self.path("out/table.csv")), self.local_table())


if __name__ == "__main__":
    unittest.main()
