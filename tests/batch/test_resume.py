"""Nothing is lost and nothing is completed twice: kills, changed inputs, two runners, full disks, damaged records."""
import os
import random
import resource
import signal
import subprocess
import time
import unittest

from batch_support import BatchTest
from conditions import NOBODY, fill_up, small_disk
from support import small_database

KILLS = int(os.environ.get("KOLVEX_KILLS", "8"))


class Resume(BatchTest):
    def setUp(self):
        super().setUp()
        self.stand_in()

    def again(self, *expected, **options):
        """Runs the same command once more; `expected` are the inputs that it has to do."""
        before = len(self.ran())
        self.batch("*.odb", "-j", 1, **options)
        self.assertEqual(sorted(self.ran()[before:]), sorted(expected))
        self.assertEqual(set(self.states().values()), {"done"})

    def done(self, count=4):
        self.inputs(*["good"] * count)
        self.batch("*.odb", "-j", 1)
        self.again()

    def test_inputs_that_have_changed_are_done_again(self):
        self.done()
        self.write("0.odb", "good\nand more\n")
        os.utime(self.path("1.odb"), ns=(1, 1))
        os.rename(self.path("2.odb"), self.path("old"))
        self.path("2.odb").write_bytes(self.path("old").read_bytes())
        os.utime(self.path("2.odb"), ns=(os.stat(self.path("old")).st_atime_ns, os.stat(self.path("old")).st_mtime_ns))
        self.again("0.odb", "1.odb", "2.odb")
        self.again()

    def test_another_configuration_does_all_again(self):
        self.done()
        self.config("EXTRACT_MASS")
        self.again("0.odb", "1.odb", "2.odb", "3.odb")

    def test_new_inputs_are_added(self):
        self.done(2)
        self.inputs("good", start=2)
        self.again("2.odb")
        listed = self.path("out/.kolvex-batch/inputs").read_text().splitlines()
        self.assertEqual([line.rsplit("/", 1)[1] for line in listed], ["0.odb", "1.odb", "2.odb"])

    def test_whatever_disagrees_with_the_record_is_done_again(self):
        def cut(path, length):
            os.truncate(path, length)

        def flip(path, at):
            data = bytearray(path.read_bytes())
            data[at] ^= 1
            path.write_bytes(data)

        damages = {
            "params.txt": [lambda p: cut(p, 0), lambda p: cut(p, 5), lambda p: flip(p, 3), os.unlink,
                           lambda p: p.write_bytes(bytes(len(p.read_bytes()))), lambda p: (p.unlink(), p.mkdir())[0]],
            "paramsdone.txt": [os.unlink],
            "status": [os.unlink, lambda p: cut(p, 0), lambda p: cut(p, 40), lambda p: cut(p, os.path.getsize(p) - 1),
                       lambda p: p.write_bytes(bytes(100)), lambda p: p.write_text(p.read_text().replace("done", "dune")),
                       lambda p: p.write_text(p.read_text().replace("version\t", "version\t9")),
                       lambda p: p.write_text(p.read_text().replace("/1.odb", "/0.odb")),
                       lambda p: p.write_text("end\t\n"), lambda p: p.write_text("state\tdone\nend\t\n")]}
        self.done(3)
        for name, ways in damages.items():
            for number, damage in enumerate(ways):
                with self.subTest(name, number=number):
                    path = self.place("1") / name
                    damage(path)
                    if path.is_dir():
                        self.assertIn(b"params.txt: cannot be removed", self.batch("*.odb", status=1).stderr)
                        path.rmdir()
                    self.again("1.odb")

    def test_of_every_prefix_of_a_record_none_counts(self):
        self.done(1)
        path = self.place("0") / "status"
        whole = path.read_bytes()
        for length in random.Random(7).sample(range(len(whole)), 20):
            path.write_bytes(whole[:length])
            self.again("0.odb")

    def test_a_killed_runner_loses_only_what_ran(self):
        self.inputs("good", "slow 0.5", "slow 0.5", "good")
        process = self.start("*.odb", "-j", 2)
        self.wait_until(lambda: {"1.odb", "2.odb"} <= set(self.ran()) and self.states() == {"0.odb": "done"})
        process.kill()
        process.wait()
        self.again("1.odb", "2.odb", "3.odb")

    def test_what_outlives_a_killed_runner_is_not_run_beside(self):
        self.stand_in("#!/bin/sh\necho \"$2\" >> \"$RAN\"\n[ -e busy ] && touch \"$RAN.clash\"\ntouch busy\nsleep 1\nrm busy\n"
                      "printf 'a\\t1\\n' > params.txt\necho Done > paramsdone.txt\n")
        self.inputs("good")
        process = self.start("*.odb")
        self.wait_until(lambda: self.ran() == ["0.odb"])
        process.kill()
        process.wait()
        self.assertFalse(self.no_process_left())
        os.unlink(self.place("0") / "busy") if (self.place("0") / "busy").exists() else None
        self.again("0.odb")
        self.assertFalse(self.path("ran.clash").exists())

    def test_what_hangs_and_outlives_a_killed_runner_is_ended(self):
        self.inputs("hang", "stop")
        process = self.start("*.odb", "-j", 2)
        self.wait_until(lambda: len(self.ran()) == 2)
        process.kill()
        process.wait()
        self.assertFalse(self.no_process_left())
        self.inputs("good", "good")
        self.again("0.odb", "1.odb")

    def test_who_reads_a_log_is_not_ended(self):
        self.inputs("hang")
        process = self.start("*.odb")
        self.wait_until(lambda: self.ran() == ["0.odb"])
        reader = subprocess.Popen(["tail", "-f", self.place("0") / "log"], stdout=subprocess.DEVNULL, start_new_session=True)
        self.addCleanup(reader.wait)
        self.addCleanup(reader.kill)
        process.kill()
        process.wait()
        self.inputs("good")
        self.again("0.odb")
        self.assertIsNone(reader.poll())

    def test_two_runners_share_the_work(self):
        self.inputs(*["slow 0.05"] * 24)
        one, two = (self.start("*.odb", "-j", 2) for _ in range(2))
        for process in (one, two):
            said, complaint = process.communicate(timeout=60)
            self.assertEqual((process.returncode, complaint), (0, b""))
            self.assertIn(b"24 inputs: 24 done", said)
        self.assertEqual(sorted(self.ran()), sorted(f"{i}.odb" for i in range(24)))

    def test_a_failure_beside_is_not_tried_again(self):
        self.inputs("slow 0.3", "exit 1", "slow 0.3")
        one, two = (self.start("*.odb", "-j", 1, "-k") for _ in range(2))
        for process in (one, two):
            self.assertIn(b"3 inputs: 2 done", process.communicate(timeout=60)[0])
            self.assertEqual(process.returncode, 1)
        self.assertEqual(sorted(self.ran()), ["0.odb", "1.odb", "2.odb"])

    def test_one_takes_over_what_a_killed_one_had(self):
        self.inputs("slow 2", "good", "good")
        one = self.start("*.odb", "-j", 1)
        self.wait_until(lambda: self.ran() == ["0.odb"])
        two = self.start("*.odb", "-j", 1)
        self.wait_until(lambda: len(self.states()) == 2)
        one.kill()
        one.wait()
        self.assertIn(b"3 inputs: 3 done", two.communicate(timeout=60)[0])
        self.assertEqual(sorted(self.ran()), ["0.odb", "0.odb", "1.odb", "2.odb"])

    def test_another_configuration_beside_is_refused(self):
        self.inputs("slow 1")
        one = self.start("*.odb")
        self.wait_until(lambda: self.ran() == ["0.odb"])
        self.write("other.txt", "ODB EXTRACTIONS\n")
        self.assertIn(b"different configuration", self.batch("*.odb", config="other.txt", status=1).stderr)
        one.communicate(timeout=30)
        self.assertEqual((one.returncode, self.ran()), (0, ["0.odb"]))

    def test_a_full_disk_stops_the_batch_and_nothing_is_lost(self):
        with small_disk(self, self.path("disk"), "512k"):
            self.inputs(*["good"] * 20)
            self.batch("?.odb", out="disk/out")
            fill_up(self.path("disk/filling"))
            process = self.batch("*.odb", "-k", out="disk/out", status=1)
            self.assertRegex(process.stdout + process.stderr, rb"No space left|10 failed")
            os.unlink(self.path("disk/filling"))
            before = len(self.ran())
            self.batch("*.odb", "-k", "-j", 1, out="disk/out")
            self.assertEqual(sorted(self.ran()[before:]), [f"{i}.odb" for i in range(10, 20)])
            self.assertEqual(set(self.states("disk/out").values()), {"done"})

    def test_a_limit_on_the_size_of_files_is_a_failure(self):
        self.inputs("good")
        process = self.batch("0.odb", status=1, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (20, 20)))
        self.assertIn(b"cannot be written: File too large", process.stderr)
        self.again("0.odb")

    def test_a_directory_without_rights_is_named(self):
        self.inputs("good")
        self.path("out").mkdir(mode=0o555)
        os.chmod(self.directory, 0o755)
        rights = {"preexec_fn": lambda: os.setuid(NOBODY)} if os.geteuid() == 0 else {}
        self.assertIn(b"out/.kolvex-batch: cannot be made", self.batch("0.odb", status=1, **rights).stderr)

    def test_sync_gives_the_same(self):
        self.inputs("good", "good")
        self.batch("*.odb", "--sync")
        self.again()


class RandomKills(BatchTest):
    def test_a_batch_killed_at_random_ends_with_the_table_of_one_that_was_not(self):
        for number in range(60):
            small_database(self.path(f"{number}.odb"))
        self.write("broken.odb", "no database")
        self.batch("*.odb", "-k", out="undisturbed", status=1)
        generator = random.Random(17)
        for _ in range(KILLS):
            process = self.start("*.odb", "-k", "-j", 2)
            time.sleep(generator.uniform(0, 0.2))
            process.send_signal(signal.SIGKILL)
            process.wait()
        self.batch("*.odb", "-k", status=1)
        self.assertEqual(self.states(), self.states("undisturbed"))
        for path in self.path("undisturbed").glob("*/params.txt"):
            self.assertEqual(self.path("out").joinpath(path.parent.name, "params.txt").read_bytes(), path.read_bytes())


if __name__ == "__main__":
    unittest.main()
