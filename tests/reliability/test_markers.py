"""The marker speaks for its own run: none of an earlier one is left by a run that fails, is killed or meets another."""
import os
import random
import subprocess
import threading

import h5py
import numpy as np
from conditions import duration, kill_at_random
from support import BIN, FAILED, Database, ProgramTest, small_database
from test_upgrade import old_database

DONE = b"Done\n"
RUNS = int(os.environ.get("KOLVEX_RUNS", "200"))
PAIRS = int(os.environ.get("KOLVEX_PAIRS", "40"))


class FailedRuns(ProgramTest):
    """Every way to fail, after a run that went well."""

    def setUp(self):
        super().setUp()
        small_database(self.path("model.odb"))
        self.config("EXTRACT_ALL EXTRACT_FIELD")
        self.write("params.txt", "of an earlier run\n")
        self.write("paramsdone.txt", DONE)

    def assert_no_marker(self, *arguments, status, message):
        self.write("paramsdone.txt", DONE)
        run = self.run_program(*arguments)
        self.assertEqual(run.status, status)
        self.assertIn(message, run.err)
        self.assertFalse(self.path("paramsdone.txt").exists())
        self.assertEqual(self.path("params.txt").read_bytes(), b"of an earlier run\n")

    def assert_marker_stays(self, *arguments, status):
        run = self.run_program(*arguments)
        self.assertEqual(run.status, status)
        self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)
        self.assertEqual(self.path("params.txt").read_bytes(), b"of an earlier run\n")

    def test_a_missing_file_leaves_no_marker(self):
        self.assert_no_marker("-odb", "none", "-config", "config.txt", status=1, message=b"none.odb does not exist")
        self.assert_no_marker("-odb", "model", "-config", "none", status=1, message=b"none does not exist")
        # The missing one is named before the later one takes its place.
        self.assert_no_marker("-odb", "none", "-config", "config.txt", "-odb", "model", status=1, message=b"none.odb does")

    def test_a_missing_set_leaves_no_marker(self):
        self.assert_no_marker("-odb", "model", "-config", "config.txt", "-elset", "NONE", status=0, message=b"elset NONE does")

    def test_a_percentage_without_a_value_leaves_no_marker(self):
        self.config("PERCENTAGE 5")
        self.assert_no_marker("-odb", "model", "-config", "config.txt", status=1, message=b"no value for PERCENTAGE")

    def test_a_database_that_cannot_be_opened_leaves_no_marker(self):
        self.write("text.odb", "no database")
        self.path("directory.odb").mkdir()
        whole = self.path("model.odb").read_bytes()
        self.write("short.odb", whole[:-100])
        for name in ("text", "directory", "short"):
            self.assert_no_marker("-odb", name, "-config", "config.txt", status=0, message=FAILED)

    def test_an_upgrade_that_fails_leaves_no_marker(self):
        old_database(self.path("old.odb"), increments=1)
        self.path("upgradedOdb.odb").mkdir()
        self.assert_no_marker("-odb", "old", "-config", "config.txt", status=0, message=FAILED)

    def test_who_asks_for_no_run_leaves_the_marker(self):
        for arguments, status in (((), 1), (("-help",), 0), (("-odb", "model", "-config", "config.txt", "-h"), 0),
                                  (("-h", "-odb", "model", "-config", "config.txt"), 0), (("-odb", "model"), 1),
                                  (("-odb", "none"), 1), (("-config", "config.txt"), 1),
                                  (("-odb", "none", "-config", "config.txt", "-h"), 1),
                                  (("-odb", "model", "-config", "config.txt", "-elset"), 1),
                                  (("-odb", "model", "-config"), 1), (("-odb", "-config", "config.txt"), 1)):
            with self.subTest(arguments):
                self.assert_marker_stays(*arguments, status=status)


class PairsOfRuns(ProgramTest):
    """Two runs at once in one directory, each of an old database, which both upgrade under one name."""

    def test_no_run_reads_the_upgraded_copy_of_another(self):
        self.config("EXTRACT_ALL EXTRACT_FIELD")
        expected = {}
        for name in ("first", "second"):
            self.write_old(name)
            self.assertEqual(self.run_program("-odb", name, "-config", "config.txt").err, b"")
            expected[name] = self.path("params.txt").read_bytes()
        self.assertNotEqual(*expected.values())
        both = 0
        for _ in range(PAIRS):
            runs = {name: subprocess.Popen([BIN / "quarnish", "-odb", name, "-config", "config.txt"], cwd=self.directory,
                                           stdout=subprocess.DEVNULL, stderr=subprocess.PIPE) for name in expected}
            errors = {name: run.communicate(timeout=60)[1] for name, run in runs.items()}
            good = [name for name, run in runs.items() if (run.returncode, errors[name]) == (0, b"")]
            self.assertTrue(good, errors)
            for name in set(runs) - set(good):
                self.assertEqual((runs[name].returncode, errors[name]),
                                 (1, b"**ERROR** another run is at work in this directory\n"))
            both += len(good) == 2
            self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)
            with h5py.File(self.path("upgradedOdb.odb")) as copy:
                last = next(name for name in good if name in copy["steps"])
            self.assertEqual(self.path("params.txt").read_bytes(), expected[last])
        print(f"{PAIRS} pairs, in {both} one run waited for the other")

    def write_old(self, name):
        old_database(self.path(name + ".odb"), increments=2)
        with h5py.File(self.path(name + ".odb"), "a") as odb:
            odb["steps"].move("Pull", name)


class RunsInARow(ProgramTest):
    def test_the_next_run_may_begin_as_soon_as_the_marker_is_seen(self):
        small_database(self.path("model.odb"))
        self.config("EXTRACT_ALL EXTRACT_FIELD")
        marker, runs = self.path("paramsdone.txt"), []
        for _ in range(RUNS // 2):
            runs.append(subprocess.Popen([BIN / "quarnish", "-odb", "model", "-config", "config.txt"], cwd=self.directory,
                                         stdout=subprocess.DEVNULL, stderr=subprocess.PIPE))
            while not marker.exists() and runs[-1].poll() is None:
                pass
            # As whoever has read the records would do it.
            marker.unlink(missing_ok=True)
        self.assertEqual([(run.communicate(timeout=60)[1], run.returncode) for run in runs], [(b"", 0)] * len(runs))


class Poller(threading.Thread):
    """Looks for the marker all the time, as a calling process does, and at the records beside it."""

    def __init__(self, directory, is_complete):
        super().__init__(daemon=True)
        self.directory, self.is_complete = directory, is_complete
        self.is_over = threading.Event()
        self.seen = 0
        self.wrong = []

    def marker(self):
        try:
            status = os.stat(self.directory / "paramsdone.txt")
        except FileNotFoundError:
            return None
        return status.st_ino, status.st_ctime_ns

    def run(self):
        while not self.is_over.is_set():
            before = self.marker()
            if before is None:
                continue
            records = (self.directory / "params.txt").read_bytes()
            # One and the same marker stood there while they were read.
            if self.marker() == before:
                self.seen += 1
                if not self.is_complete(records):
                    self.wrong.append(records[:200])

    def stop(self):
        self.is_over.set()
        self.join()


class PolledRuns(ProgramTest):
    """One run after the other in one directory, most of which fail or are killed, and somebody who polls for the marker."""

    FRAMES = 150
    NODES = 20
    KINDS = ("complete", "killed", "killed", "killed upgrade", "no database", "no configuration", "no set", "no percentage",
             "broken", "short")

    def setUp(self):
        super().setUp()
        self.config("EXTRACT_ALL EXTRACT_FIELD")
        self.write("bad.txt", "ODB EXTRACTIONS\nPERCENTAGE 5\n")
        old_database(self.path("old.odb"), increments=20)
        self.assertEqual(self.extract("old", "config.txt").err, b"")
        self.old_records = self.path("params.txt").read_bytes()

    def command(self, database, configuration, *more):
        return [BIN / "quarnish", "-odb", database, "-config", configuration, *more]

    def extract(self, database, configuration, *more):
        return self.run_program("-odb", database, "-config", configuration, *more)

    def write_database(self, number, is_broken=False):
        """Node n of frame i has the temperature number + n + i / 2."""
        with Database(self.path(f"{number}.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=range(self.NODES))
            frames, nodes = np.arange(self.FRAMES)[:, None], np.arange(self.NODES)[None, :]
            rows = (number + nodes + frames / 2).astype("f4")
            odb.field(odb.step(f"Run {number}", increments=range(self.FRAMES)), "NT", 2, [("nodes", rows)])
            if is_broken:
                odb.field(odb.step("Z"), "NT", 2, [("nodes", np.zeros((1, 1), "f4"))])

    def expected(self, number):
        return "".join(f"Run_{number}__Frame_{i}__NT__max\t{number + self.NODES - 1 + i / 2:g}\n"
                       f"Run_{number}__Frame_{i}__NT__min\t{number + i / 2:g}\n" for i in range(self.FRAMES)).encode()

    def is_complete(self, records):
        """Whether these are all the records of one run."""
        if records == self.old_records:
            return True
        name = records.split(b"__", 1)[0]
        return name.startswith(b"Run_") and records == self.expected(int(name[4:]))

    def failing_run(self, kind, number):
        """Runs of which none may leave a marker; how they end, and what they say."""
        if kind == "no database":
            return self.extract("none", "config.txt"), 1, b"none.odb does not exist"
        if kind == "no configuration":
            return self.extract(number, "none"), 1, b"none does not exist"
        if kind == "no set":
            return self.extract(number, "config.txt", "-elset", "NONE"), 0, b"elset NONE does not exist"
        if kind == "no percentage":
            return self.extract(number, "bad.txt"), 1, b"no value for PERCENTAGE"
        if kind == "short":
            whole = self.path(f"{number}.odb").read_bytes()
            self.write(f"{number}.odb", whole[:len(whole) // 2])
        return self.extract(number, "config.txt"), 0, FAILED

    def assert_run(self, kind, number, generator):
        """One run; whether a kill has interrupted it."""
        standing = self.path("params.txt").read_bytes() if self.path("paramsdone.txt").exists() else None
        if kind.startswith("killed"):
            database = "old" if kind == "killed upgrade" else str(number)
            status = kill_at_random(self.command(database, "config.txt"), self.directory, 1.2 * self.seconds[database == "old"],
                                    9, generator)
            own = self.old_records if database == "old" else self.expected(number)
            self.assertIn(status, (0, -9), "refused or failed, though nobody else is at work")
            if self.path("paramsdone.txt").exists():
                self.assertIn(self.path("params.txt").read_bytes(), (own, standing) if status else (own,))
            return status == -9
        if kind == "complete":
            run = self.extract(number, "config.txt")
            self.assertEqual((run.status, run.err), (0, b""))
            self.assertEqual((run.text("paramsdone.txt"), run.text("params.txt")), (DONE, self.expected(number)))
            return False
        run, status, message = self.failing_run(kind, number)
        self.assertEqual(run.status, status)
        self.assertIn(message, run.err)
        self.assertIsNone(run.text("paramsdone.txt"))
        return False

    def test_a_marker_is_never_another_runs(self):
        self.write_database(0)
        self.seconds = [duration(self.command(name, "config.txt"), self.directory) for name in ("0", "old")]
        generator = random.Random(2)
        poller = Poller(self.directory, self.is_complete)
        poller.start()
        interrupted = complete = 0
        try:
            for number in range(1, RUNS + 1):
                kind = generator.choice(self.KINDS)
                self.write_database(number, kind == "broken")
                interrupted += self.assert_run(kind, number, generator)
                complete += kind == "complete"
                self.path(f"{number}.odb").unlink()
        finally:
            poller.stop()
        self.assertEqual(poller.wrong, [])
        self.assertGreater(poller.seen, complete)
        self.assertGreater(interrupted, RUNS // 40, "the kills come too late to show anything")
        print(f"{RUNS} runs, {complete} complete, {interrupted} killed at work; the marker was seen {poller.seen} times")
