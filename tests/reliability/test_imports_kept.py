"""Imports under hostile conditions: a complete database under the final name, or what stood there before; and nothing
left beside it."""
import fcntl
import os
import random
import re
import signal
import struct
import subprocess
import time
import unittest

from conditions import duration, fill_up, kill_at_random, limit_of_file_size, runnable_by_nobody, small_disk, \
    without_streams
from same_file import same_file
from support import BIN, ProgramTest
from test_import_program import DECK, ELEMENTS, HEADING, NODES, RESULTS, WHOLE

KILLS = int(os.environ.get("KOLVEX_KILLS", "50"))
# A lock that belongs to the open file; Python has no name for it before 3.12.
F_OFD_SETLK = 37
OLDER = b"an older database"


def results_of(increments):
    """A result file in which the same results come again and again."""
    def increment(i):
        text = RESULTS.replace("  100CL  101 1.000000000", f"  100CL  101 {i:11.5f}")
        return re.sub(r"(1PSTEP +\d+)           1", rf"\g<1>{i:12d}", text)

    many = "".join(increment(i) for i in range(1, increments + 1))
    return HEADING + NODES + ELEMENTS + many + " 9999\n"


class ImportConditions(ProgramTest):
    def setUp(self):
        super().setUp()
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        self.assertEqual(self.run_import("job").status, 0)
        self.complete = self.path("job.odb").read_bytes()
        self.write("job.odb", OLDER)

    def run_import(self, *arguments, **options):
        return self.run_program(*arguments, program="import", **options)

    def database(self):
        return self.path("job.odb").read_bytes()

    def assert_complete(self, run, out=True):
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertTrue(same_file(self.database(), self.complete))
        self.assert_no_litter()
        if out:
            self.assertRegex(run.out, rb"^job\.odb: 1 steps")

    def assert_refused(self, run, pattern):
        self.assertEqual(run.status, 1)
        self.assertRegex(run.err, pattern)

    def assert_no_litter(self, *further):
        self.assertEqual(set(os.listdir(self.directory)), {"job.frd", "job.inp", "job.odb", *further})


class Places(ImportConditions):
    def test_a_directory_that_is_not_there_is_named(self):
        self.assert_refused(self.run_import("job", "-o", "no/such/job.odb"),
                            rb"^no/such/job\.odb: cannot be created: No such file or directory\n$")

    def test_an_unwritable_directory_is_named_and_its_database_stays(self):
        os.chmod(self.directory, 0o555)
        self.addCleanup(os.chmod, self.directory, 0o755)
        os.chmod(self.path("job.odb"), 0o666)
        with runnable_by_nobody("import") as (program, options):
            process = subprocess.run([program, "job"], cwd=self.directory, capture_output=True, check=False, **options)
        self.assertEqual((process.returncode, process.stderr), (
            1, b"job.odb: cannot be created: Permission denied; -o DATABASE writes it elsewhere\n"))
        self.assertEqual(self.database(), OLDER)
        self.assert_no_litter()

    def test_a_directory_of_that_name_is_refused(self):
        self.path("taken").mkdir()
        self.assert_refused(self.run_import("job", "-o", "taken"), rb"^taken: cannot be created: it is a directory\n$")
        self.assert_no_litter("taken")

    def test_what_is_no_file_is_not_replaced(self):
        os.mkfifo(self.path("pipe"))
        self.assert_refused(self.run_import("job", "-o", "pipe"),
                            rb"^pipe: cannot be created: it is not a regular file\n$")
        self.assertTrue(self.path("pipe").is_fifo())

    def test_a_database_goes_where_a_link_points(self):
        self.path("scratch").mkdir()
        self.path("job.odb").unlink()
        self.path("job.odb").symlink_to("scratch/big.odb")
        self.write("scratch/big.odb.tmp.a1B2c3", "left behind there")
        for _ in range(2):
            self.assertEqual(self.run_import("job").status, 0)
            self.assertTrue(self.path("job.odb").is_symlink())
            self.assertTrue(same_file(self.path("scratch/big.odb").read_bytes(), self.complete))
            self.assertEqual(os.listdir(self.path("scratch")), ["big.odb"])


class FullDisks(ImportConditions):
    def test_a_limit_on_file_sizes_is_an_error_wherever_it_strikes(self):
        for size in range(0, len(self.complete), 97):
            with self.subTest(size):
                run = self.run_import("job", preexec_fn=limit_of_file_size(size))
                self.assert_refused(run, rb"^job\.odb: .*File too large")
                self.assertEqual(self.database(), OLDER)
                self.assert_no_litter()
        self.assert_complete(self.run_import("job", preexec_fn=limit_of_file_size(len(self.complete))))

    def test_a_full_disk_keeps_the_older_database(self):
        disk = self.path("disk")
        statuses = []
        with small_disk(self, disk, 4096 * 16):
            (disk / "job.odb").write_bytes(OLDER)
            for room in range(0, 4096 * 12, 4096):
                fill_up(disk / "filler")
                os.truncate(disk / "filler", max(0, (disk / "filler").stat().st_size - room))
                run = self.run_import("job", "-o", "disk/job.odb")
                statuses.append(run.status)
                if run.status == 0:
                    self.assertTrue(same_file((disk / "job.odb").read_bytes(), self.complete))
                    break
                self.assert_refused(run, rb"^disk/job\.odb: .*No space left on device")
                self.assertEqual((disk / "job.odb").read_bytes(), OLDER)
                self.assertEqual(sorted(os.listdir(disk)), ["filler", "job.odb"])
        self.assertEqual((statuses[0], statuses[-1]), (1, 0))


class Streams(ImportConditions):
    def test_closed_streams_get_nothing_into_the_database(self):
        self.write("job.sta", "this status file makes a warning\n")
        for streams in ((1,), (0, 1), (0, 1, 2), (2,), (0,)):
            with self.subTest(streams):
                self.write("job.odb", OLDER)
                run = self.run_import("job", preexec_fn=without_streams(*streams))
                self.assertEqual(run.status, 0)
                self.assertTrue(same_file(self.database(), self.complete))

    def test_a_full_standard_output_is_told_of_and_the_database_complete(self):
        with open("/dev/full", "wb") as full:
            run = self.run_import("job", stdout=full)
        self.assert_refused(run, rb"^standard output: .*No space left on device\n$")
        self.assertTrue(same_file(self.database(), self.complete))

    def test_a_list_that_cannot_be_printed_is_an_error(self):
        with open("/dev/full", "wb") as full:
            run = self.run_import("job", "--list", stdout=full)
        self.assert_refused(run, rb"^standard output: .*No space left on device\n$")
        self.assertEqual(self.database(), OLDER)

    def test_warnings_that_nobody_reads_stop_nothing(self):
        self.path("job.inp").unlink()
        with open("/dev/full", "wb") as full:
            process = subprocess.run([BIN / "import", "job"], cwd=self.directory, stderr=full, check=False,
                                     stdout=subprocess.DEVNULL)
        self.assertEqual(process.returncode, 0)
        reading, writing = os.pipe()
        os.close(reading)
        with os.fdopen(writing, "wb") as pipe:
            process = subprocess.run([BIN / "import", "job"], cwd=self.directory, stderr=pipe, check=False,
                                     stdout=subprocess.DEVNULL)
        self.assertEqual(process.returncode, 0)


class StaleFiles(ImportConditions):
    def test_what_a_killed_import_left_is_cleared_away(self):
        self.write("job.odb.tmp.a1B2c3", self.complete[:100])
        self.assert_complete(self.run_import("job"))

    def test_what_somebody_holds_stays(self):
        self.write("job.odb.tmp.a1B2c3", "at work")
        with open(self.path("job.odb.tmp.a1B2c3"), "rb") as held:
            fcntl.fcntl(held, F_OFD_SETLK, open_file_lock(fcntl.F_RDLCK))
            self.assertEqual(self.run_import("job").status, 0)
            self.assert_no_litter("job.odb.tmp.a1B2c3")
        self.assert_complete(self.run_import("job"))


def open_file_lock(kind):
    """`struct flock` over the whole file, as F_OFD_SETLK takes it."""
    return struct.pack("hhqqi4x", kind, os.SEEK_SET, 0, 0, 0)


class SlowImports(ImportConditions):
    """Imports that take long enough to meet something on their way."""

    def setUp(self):
        super().setUp()
        self.write("job.frd", results_of(1500))
        self.command = [BIN / "import", "job"]
        self.path("job.odb").unlink()
        self.seconds = duration(self.command, self.directory)
        self.complete = self.database()

    def test_kills_leave_the_older_database_or_the_new_one(self):
        generator = random.Random(1)
        interrupted = 0
        litter = 0
        for i in range(KILLS):
            self.write("job.odb", OLDER)
            number = (signal.SIGKILL, signal.SIGTERM)[i % 2]
            status = kill_at_random(self.command, self.directory, 1.2 * self.seconds, number, generator)
            interrupted += status == -number
            left = set(os.listdir(self.directory)) - {"job.frd", "job.inp", "job.odb"}
            litter += len(left)
            self.assertLessEqual(len(left), 1, "what was left before is cleared away")
            if self.database() != OLDER:
                self.assertTrue(same_file(self.database(), self.complete))
            else:
                self.assertEqual(status, -number)
        self.assertGreater(interrupted, KILLS // 10, "the kills come too late to show anything")
        self.assertEqual(subprocess.run(self.command, cwd=self.directory, check=False, stdout=subprocess.DEVNULL).returncode, 0)
        self.assert_no_litter()
        print(f"{interrupted} of {KILLS} kills interrupted an import, {litter} left a temporary file")

    def test_imports_into_one_name_at_once_leave_one_complete_database(self):
        runs = []
        for _ in range(4):
            runs.append(subprocess.Popen(self.command, cwd=self.directory, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.PIPE))
            time.sleep(self.seconds / 5)
        for run in runs:
            self.assertEqual((run.communicate(timeout=60)[1], run.returncode), (b"", 0))
        self.assertTrue(same_file(self.database(), self.complete))
        self.assert_no_litter()


if __name__ == "__main__":
    unittest.main()
