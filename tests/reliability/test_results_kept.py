"""Results under hostile conditions: a marker stands beside a complete params.txt, or there is none."""
import contextlib
import fcntl
import os
import pathlib
import random
import resource
import signal
import subprocess
import threading
import unittest

import numpy as np
from conditions import duration, fill_up, kill_at_random, limit_of_file_size, runnable_by_nobody, small_disk, without_streams
from support import BIN, Database, ProgramTest, small_database
from test_upgrade import old_database

INCOMPLETE = b"**ERROR** params.txt could not be written completely\n"
COMPLETE = b"Step_1__Frame_1__NT__max\t1.23457e+006\nStep_1__Frame_1__NT__min\t20\n"
DONE = b"Done\n"
KILLS = int(os.environ.get("KOLVEX_KILLS", "20"))


class ResultConditions(ProgramTest):
    arguments = ("-odb", "model", "-config", "config.txt")

    def setUp(self):
        super().setUp()
        small_database(self.path("model.odb"))
        self.config("EXTRACT_ALL EXTRACT_FIELD")

    def extract(self, **options):
        return self.run_program(*self.arguments, **options)

    def assert_complete(self, run):
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertEqual(run.text("params.txt"), COMPLETE)
        self.assertEqual(run.text("paramsdone.txt"), DONE)

    def assert_given_up(self, run, message=INCOMPLETE):
        self.assertEqual((run.status, run.err), (1, message))
        self.assertFalse(self.path("paramsdone.txt").is_file())


class Places(ResultConditions):
    """Where the results are to go."""

    def extract_as_nobody(self):
        """Status and errors of a run that owns nothing in the directory."""
        with runnable_by_nobody("quarnish") as (program, options):
            process = subprocess.run([program, *self.arguments], cwd=self.directory, stdout=subprocess.DEVNULL,
                                     stderr=subprocess.PIPE, timeout=60, check=False, **options)
        return process.returncode, process.stderr

    def set_rights(self, rights):
        os.chmod(self.directory, rights)
        self.addCleanup(os.chmod, self.directory, 0o755)

    def test_an_unwritable_directory_gets_no_results(self):
        self.set_rights(0o555)
        self.assertEqual(self.extract_as_nobody(), (1, INCOMPLETE))
        self.assertEqual(sorted(os.listdir(self.directory)), ["config.txt", "model.odb"])

    def test_a_marker_that_cannot_be_removed_keeps_the_results_that_it_speaks_for(self):
        self.write("params.txt", "old\n")
        self.write("paramsdone.txt", DONE)
        os.chmod(self.path("params.txt"), 0o666)
        self.set_rights(0o555)
        message = b"**ERROR** paramsdone.txt of an earlier run cannot be removed: Permission denied\n"
        self.assertEqual(self.extract_as_nobody(), (1, message))
        self.assertEqual(self.path("params.txt").read_bytes(), b"old\n")
        self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)

    def test_a_directory_that_cannot_be_read_gets_results_without_a_lock(self):
        self.set_rights(0o333)
        self.assertEqual(self.extract_as_nobody(), (0, b""))
        self.assertEqual(self.path("params.txt").read_bytes(), COMPLETE)
        self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)

    def test_a_read_only_result_file_leaves_no_marker(self):
        self.write("params.txt", "old\n")
        self.write("paramsdone.txt", DONE)
        os.chmod(self.path("params.txt"), 0o444)
        self.set_rights(0o777)
        self.assertEqual(self.extract_as_nobody(), (1, INCOMPLETE))
        self.assertEqual(self.path("params.txt").read_bytes(), b"old\n")
        self.assertFalse(self.path("paramsdone.txt").exists())

    def test_results_go_where_a_link_points(self):
        os.symlink("elsewhere.txt", self.path("params.txt"))
        self.assert_complete(self.extract())
        self.assertTrue(self.path("params.txt").is_symlink())
        self.assertEqual(self.path("elsewhere.txt").read_bytes(), COMPLETE)

    def test_a_link_into_nowhere_is_an_error(self):
        os.symlink("no/such/directory/params.txt", self.path("params.txt"))
        self.assert_given_up(self.extract())

    def test_a_pipe_that_nobody_reads_is_an_error_instead_of_a_wait(self):
        os.mkfifo(self.path("params.txt"))
        self.assert_given_up(self.extract())

    def test_a_pipe_that_somebody_reads_gets_the_results(self):
        os.mkfifo(self.path("params.txt"))
        reader = os.open(self.path("params.txt"), os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        run = self.extract()
        self.assertEqual((run.status, run.err, os.read(reader, 4096)), (0, b"", COMPLETE))
        self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)

    def test_a_marker_that_is_a_directory_is_an_error(self):
        self.path("paramsdone.txt").mkdir()
        run = self.extract()
        self.assertEqual(run.status, 1)
        self.assertRegex(run.err, rb"^\*\*ERROR\*\* paramsdone\.txt of an earlier run cannot be removed: ")
        self.assertEqual(sorted(os.listdir(self.directory)), ["config.txt", "model.odb", "paramsdone.txt"])

    def test_a_marker_that_is_a_link_is_replaced_and_its_target_left_alone(self):
        for target in ("precious.txt", "no/such/file"):
            with self.subTest(target):
                self.write("precious.txt", "precious")
                self.path("paramsdone.txt").unlink(missing_ok=True)
                os.symlink(target, self.path("paramsdone.txt"))
                self.assert_complete(self.extract())
                self.assertFalse(self.path("paramsdone.txt").is_symlink())
                self.assertEqual(self.path("precious.txt").read_bytes(), b"precious")

    def test_a_marker_that_is_a_pipe_or_read_only_is_replaced(self):
        os.mkfifo(self.path("paramsdone.txt"))
        self.assert_complete(self.extract())
        os.chmod(self.path("paramsdone.txt"), 0o444)
        self.assert_complete(self.extract())

    def test_whatever_bears_the_name_under_which_the_marker_is_made_is_no_obstacle(self):
        os.symlink("precious.txt", self.path("paramsdone.txt.tmp"))
        self.write("precious.txt", "precious")
        self.assert_complete(self.extract())
        self.assertEqual(self.path("precious.txt").read_bytes(), b"precious")
        self.path("paramsdone.txt.tmp").mkdir()
        self.assert_complete(self.extract())
        self.assertEqual(sorted(os.listdir(self.directory)),
                         ["config.txt", "model.odb", "params.txt", "paramsdone.txt", "paramsdone.txt.tmp", "precious.txt"])

    def test_what_another_user_has_put_there_is_no_obstacle_either(self):
        for name, content in (("paramsdone.txt.tmp", b"of another user"), ("config.txt", self.path("config.txt").read_bytes())):
            self.write(name, content)
            os.chmod(self.path(name), 0o644)
        self.set_rights(0o1777)
        with runnable_by_nobody("quarnish") as (_, options):
            if not options:
                self.skipTest("only root has another user")
        self.assertEqual(self.extract_as_nobody(), (0, b""))
        self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)
        self.assertEqual(self.path("paramsdone.txt").stat().st_mode & 0o777, 0o644)
        self.assertEqual(self.path("paramsdone.txt.tmp").read_bytes(), b"of another user")
        self.assertEqual(sorted(os.listdir(self.directory)),
                         ["config.txt", "model.odb", "params.txt", "paramsdone.txt", "paramsdone.txt.tmp"])


class Stacks(ResultConditions):
    """Callers that leave little room for the stack."""
    LITTLE = b"**ERROR** the stack may have less than 256 KiB (ulimit -s), which is too little to work\n"

    def test_a_limit_that_may_be_raised_is_raised(self):
        for size in (16 << 10, 64 << 10, 200 << 10):
            with self.subTest(size):
                self.assert_complete(self.extract(preexec_fn=lambda size=size: resource.setrlimit(resource.RLIMIT_STACK, (size, 8 << 20))))

    def test_too_low_a_limit_is_told_and_leaves_no_marker(self):
        os.chmod(self.directory, 0o777)
        for size in (16 << 10, 64 << 10, 200 << 10):
            with self.subTest(size), runnable_by_nobody("quarnish") as (program, options):
                if not options and os.geteuid() == 0:
                    self.skipTest("root may raise every limit")
                self.write("paramsdone.txt", DONE)
                run = subprocess.run([program, *self.arguments], cwd=self.directory, capture_output=True, timeout=60, check=False,
                                     preexec_fn=lambda size=size: resource.setrlimit(resource.RLIMIT_STACK, (size, size)), **options)
                self.assertEqual((run.returncode, run.stderr), (1, self.LITTLE))
                self.assertFalse(self.path("paramsdone.txt").exists())


class FullDisks(ResultConditions):
    def test_a_limit_on_file_sizes_is_an_error_wherever_it_strikes(self):
        for size in range(len(COMPLETE)):
            with self.subTest(size):
                self.write("paramsdone.txt", DONE)
                run = self.extract(preexec_fn=limit_of_file_size(size))
                self.assert_given_up(run)
                self.assertEqual(run.text("params.txt"), COMPLETE[:size])
        self.assert_complete(self.extract(preexec_fn=limit_of_file_size(len(COMPLETE))))

    def test_a_full_disk_leaves_no_marker(self):
        results = self.path("disk")
        with small_disk(self, results, 4096 * 8):
            for name in ("model.odb", "config.txt"):
                (results / name).symlink_to(self.path(name))
            fill_up(results / "filler")
            run = self.run_program(*self.arguments, cwd=results)
            self.assertEqual((run.status, run.err), (1, INCOMPLETE))
            self.assertFalse((results / "paramsdone.txt").exists())
            (results / "filler").unlink()
            run = self.run_program(*self.arguments, cwd=results)
            self.assertEqual((run.status, run.err, (results / "params.txt").read_bytes()), (0, b"", COMPLETE))


class Streams(ResultConditions):
    """Standard output is for people; what becomes of it does not touch the results."""

    def test_closed_streams_get_nothing_into_the_results(self):
        for streams in ((1,), (0, 1), (0, 1, 2), (2,), (0,)):
            with self.subTest(streams):
                self.path("paramsdone.txt").unlink(missing_ok=True)
                self.assert_complete(self.extract(preexec_fn=without_streams(*streams)))

    def test_a_full_standard_output_stops_nothing(self):
        with open("/dev/full", "wb") as full:
            self.assert_complete(self.extract(stdout=full))

    def test_a_standard_output_that_nobody_reads_stops_nothing(self):
        reading, writing = os.pipe()
        os.close(reading)
        with os.fdopen(writing, "wb") as pipe:
            self.assert_complete(self.extract(stdout=pipe))

    def test_a_shell_pipe_whose_reader_leaves_stops_nothing(self):
        subprocess.run(["sh", "-c", '"$0" "$@" | true', str(BIN / "quarnish"), *self.arguments], cwd=self.directory,
                       check=True)
        self.assertEqual(self.path("params.txt").read_bytes(), COMPLETE)
        self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)


class SeveralRuns(ResultConditions):
    """Others at work in the same directory."""

    OTHER_RUN = b"**ERROR** another run is at work in this directory\n"

    @contextlib.contextmanager
    def locked(self, path, kind=fcntl.LOCK_EX):
        file = os.open(path, os.O_RDONLY)
        try:
            fcntl.flock(file, kind)
            yield
        finally:
            os.close(file)

    def test_a_second_run_is_refused_and_changes_nothing(self):
        self.write("params.txt", "of the first run\n")
        self.write("paramsdone.txt", DONE)
        before = sorted(os.listdir(self.directory))
        with self.locked(self.directory):
            for arguments in (self.arguments, ("-odb", "none", "-config", "none")):
                run = self.run_program(*arguments)
                self.assertEqual((run.status, run.out, run.err), (1, b"", self.OTHER_RUN))
            self.assertEqual(sorted(os.listdir(self.directory)), before)
            self.assertEqual((self.path("params.txt").read_bytes(), self.path("paramsdone.txt").read_bytes()),
                             (b"of the first run\n", DONE))
        self.assert_complete(self.extract())

    def test_a_second_run_is_refused_before_it_upgrades(self):
        old_database(self.path("old.odb"), increments=1)
        with self.locked(self.directory):
            self.assertEqual(self.run_program("-odb", "old", "-config", "config.txt").err, self.OTHER_RUN)
            self.assertEqual(sorted(os.listdir(self.directory)), ["config.txt", "model.odb", "old.odb"])

    def test_who_asks_for_help_needs_no_lock(self):
        with self.locked(self.directory):
            self.assertEqual(self.run_program("-help").status, 0)
            self.assertEqual(self.run_program("-odb", "model").err, b"**ERROR** configuration file name is not provided\n")

    def test_locks_of_readers_on_the_results_stop_nothing(self):
        self.assert_complete(self.extract())
        for name in ("params.txt", "paramsdone.txt"):
            for kind in (fcntl.LOCK_SH, fcntl.LOCK_EX):
                with self.subTest(name=name, kind=kind), self.locked(self.path(name), kind):
                    self.assert_complete(self.extract())

    def test_a_run_holds_the_lock_until_its_end(self):
        run, writing = self.stopped_run()
        with self.assertRaises(BlockingIOError), self.locked(self.directory, fcntl.LOCK_EX | fcntl.LOCK_NB):
            pass
        os.close(writing)
        self.assertEqual(run.wait(timeout=60), 0)
        with self.locked(self.directory, fcntl.LOCK_EX | fcntl.LOCK_NB):
            pass

    def test_results_that_were_taken_away_meanwhile_get_no_marker(self):
        run, reading = self.stopped_run()
        self.path("params.txt").unlink()
        os.close(reading)
        self.assertEqual(run.communicate(timeout=60)[1], INCOMPLETE)
        self.assertEqual(run.returncode, 1)
        self.assertFalse(self.path("paramsdone.txt").exists())

    def test_a_marker_that_was_taken_away_before_it_had_its_name_is_an_error(self):
        for replace in (None, b"of another run"):
            with self.subTest(replace):
                run, reading = self.stopped_run()
                self.path("paramsdone.txt.tmp").unlink()
                if replace:
                    self.write("paramsdone.txt.tmp", replace)
                os.close(reading)
                self.assertEqual(run.communicate(timeout=60)[1],
                                 b"**ERROR** paramsdone.txt could not be written: No such file or directory\n")
                self.assertEqual((run.returncode, self.path("params.txt").read_bytes()), (1, COMPLETE))
                self.assertFalse(self.path("paramsdone.txt").exists())
                self.path("params.txt").unlink()

    @unittest.skipUnless(os.environ.get("KOLVEX_CONFINES") and os.path.exists("/proc/sys/kernel/seccomp/actions_avail"),
                         "this build or kernel does not confine")
    def test_a_run_that_writes_is_confined(self):
        run, reading = self.stopped_run()
        status = pathlib.Path(f"/proc/{run.pid}/status").read_text(encoding="ascii")
        os.close(reading)
        self.assertEqual((run.wait(timeout=60), run.stderr.read()), (0, b""))
        self.assertIn("NoNewPrivs:\t1\nSeccomp:\t2\n", status)

    def stopped_run(self):
        """A run that has begun its results and waits for room in the pipe at its standard output, and the pipe's other
        end; closing it sets the run going."""
        reading, writing = os.pipe()
        os.set_blocking(writing, False)
        try:
            while os.write(writing, b"x" * 4096):
                pass
        except BlockingIOError:
            os.set_blocking(writing, True)
        run = subprocess.Popen([BIN / "quarnish", *self.arguments], cwd=self.directory, stdout=writing,
                               stderr=subprocess.PIPE)
        os.close(writing)
        self.addCleanup(run.stderr.close)
        begun = threading.Event()
        for _ in range(1000):
            if self.path("params.txt").exists() and self.waits_for_a_pipe(run.pid):
                return run, reading
            begun.wait(0.01)
        self.fail("the run does not begin its results")

    @staticmethod
    def waits_for_a_pipe(process):
        # The number of the system call in which it is: 1 is write on x86-64, 64 on the ARM.
        call = pathlib.Path(f"/proc/{process}/syscall").read_text(encoding="ascii").split()
        return call[0] in ("1", "64")


class Kills(ResultConditions):
    """SIGTERM and SIGKILL at random moments of a run that takes a while."""

    def setUp(self):
        super().setUp()
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=list(range(1, 11)))
            for step in ("One", "Two"):
                rows = np.arange(4000, dtype="f4").reshape(400, 10)
                odb.field(odb.step(step, increments=range(1, 401)), "NT", 2, [("nodes", rows)])
        self.command = [BIN / "quarnish", *self.arguments]

    def test_what_is_left_is_complete_or_bears_no_marker(self):
        seconds = duration(self.command, self.directory)
        complete = self.path("params.txt").read_bytes()
        self.assertEqual(len(complete.splitlines()), 1600)
        generator = random.Random(1)
        interrupted = 0
        for i in range(KILLS):
            number = (signal.SIGKILL, signal.SIGTERM)[i % 2]
            status = kill_at_random(self.command, self.directory, 1.2 * seconds, number, generator)
            interrupted += status == -number
            if self.path("paramsdone.txt").exists():
                self.assertEqual(self.path("paramsdone.txt").read_bytes(), DONE)
                self.assertEqual(self.path("params.txt").read_bytes(), complete)
            else:
                self.assertEqual(status, -number)
        self.assertGreater(interrupted, KILLS // 10, "the kills come too late to show anything")
        print(f"{interrupted} of {KILLS} kills interrupted a run")


if __name__ == "__main__":
    unittest.main()
