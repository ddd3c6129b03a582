"""`kolvex verify` on databases that were made to do harm: what the HDF5 library does to itself stays in a child."""
import collections
import os
import pathlib
import subprocess
import sys
import threading
import unittest

import numpy as np

from support import BIN, FAILED, ROOT, Database, ProgramTest, small_database

sys.path.insert(0, str(ROOT / "tests/mutants"))
import mutate  # noqa: E402


class ConfinedTest(ProgramTest):
    def verify(self):
        return self.run_program("job.odb", program="verify")

    def test_crashes_are_findings(self):
        small_database(self.path("whole.odb"))
        whole = self.path("whole.odb").read_bytes()
        endings = collections.Counter()
        for seed in range(200):
            self.write("job.odb", mutate.forged(whole, seed))
            run = self.verify()
            self.assertIn(run.status, (1, 3), seed)
            self.assertTrue(run.err.startswith(b"job.odb: "), run.err)
            crashed = b"job.odb: reading it crashed (" in run.err
            self.assertEqual(run.out, b"job.odb: damaged\n" if run.status == 1 else b"", seed)
            endings["crashed" if crashed else run.status] += 1
        # On the library of Debian 12 some of these files crash it: without that the test would not show anything.
        self.assertGreater(endings["crashed"], 0, endings)
        self.assertGreater(endings[3], 0, endings)

    @unittest.skipUnless(os.environ.get("KOLVEX_CONFINES") and os.path.exists("/proc/sys/kernel/seccomp/actions_avail"),
                         "this build or kernel does not confine")
    def test_the_child_that_reads_is_confined_before_it_answers(self):
        with Database(self.path("job.odb")) as odb:
            odb.step("Step-1", increments=range(1, 20001))  # more to answer than a pipe takes
        for task in ("catalog", "inspect"):
            with self.subTest(task):
                reading, writing = os.pipe()
                script = 'exec 3>&"$1" 4<job.odb; shift; exec "$@"'
                command = [BIN / "odbscan", str(os.getpid()), str(1 << 30), "60", task]
                child = subprocess.Popen(["sh", "-c", script, "sh", str(writing), *command], cwd=self.directory, pass_fds=(writing,))
                os.close(writing)
                os.read(reading, 1)  # it has an answer
                status = pathlib.Path(f"/proc/{child.pid}/status").read_text(encoding="ascii")
                self.assertIn("NoNewPrivs:\t1\nSeccomp:\t2\n", status)
                threading.Thread(target=self.drain, args=(reading,)).start()
                self.assertEqual(child.wait(timeout=60), 0)

    @staticmethod
    def drain(pipe):
        while os.read(pipe, 1 << 16):
            pass
        os.close(pipe)

    def test_memory_out_of_proportion_is_a_finding(self):
        with Database(self.path("job.odb")) as odb:
            odb.location("node", "nodal", nodeLabels=[1])
            field = odb.field(odb.step("Step-1"), "U", 3, [("node", np.zeros((1, 1, 3), "f4"))])
            del field["blocks/0/data"]
            width = 64 << 20
            field["blocks/0"].create_dataset("data", shape=(1, 1, width), dtype="f4", chunks=(1, 1, width),
                                             compression="gzip")[0, 0, 0] = 1
        run = self.verify()
        self.assertEqual((run.status, run.out), (1, b"job.odb: damaged\n"))
        finding = b"/steps/Step-1/fields/U/blocks/0/data: unpacks into 256 MiB at a time, more than a file of its size can need\n"
        self.assertEqual(run.err, b"job.odb: " + finding)
        self.config("EXTRACT_ALL EXTRACT_FIELD")
        run = self.run_program("-odb", "job", "-config", "config.txt")
        self.assertEqual(run.err, b"job.odb: " + finding + FAILED)

    def test_of_very_many_findings_the_first_are_told(self):
        with Database(self.path("job.odb")) as odb:
            for i in range(3000):
                odb.file[f"assembly/nodeSets/{i:04}/I-1"] = np.zeros(1)
        run = self.verify()
        lines = run.err.decode().splitlines()
        self.assertEqual(run.status, 1)
        self.assertEqual(lines[0], "job.odb: /assembly/nodeSets/0000/I-1: must hold integers")
        self.assertEqual(lines[-1], f"job.odb: further findings, not shown: {3000 - (len(lines) - 1)}")
        self.assertGreater(len(lines), 1000)
