"""Batches whose results are in packs: the same tables, nothing lost, nothing done twice."""
import csv
import os
import random
import shutil
import signal
import subprocess
import time
import unittest

from batch_support import BatchTest, hear_signals
from conditions import fill_up, small_disk
from support import small_database

KILLS = int(os.environ.get("KOLVEX_KILLS", "8"))


class PackTest(BatchTest):
    def ask(self, *words, status=0):
        process = subprocess.run([self.program, *map(str, words)], cwd=self.directory, capture_output=True, check=False, timeout=60)
        self.assertEqual(process.returncode, status, process.stderr)
        return process

    def table(self, out="out"):
        """{name of the input: the rest of its row}"""
        rows = csv.reader(self.ask("collect", out).stdout.decode().splitlines())
        return {row[0].rsplit("/", 1)[1]: row[1:] for row in list(rows)[1:]}

    def again(self, *expected, words=("--pack",), **options):
        """Runs once more; `expected` are the inputs that it has to do."""
        before = len(self.ran())
        self.batch("*.odb", "-j", 1, *words, **options)
        self.assertEqual(sorted(self.ran()[before:]), sorted(expected))

    def names(self, out="out"):
        return sorted(path.name for path in self.path(out).iterdir())


class Packs(PackTest):
    def setUp(self):
        super().setUp()
        self.stand_in()

    def test_there_is_one_file_for_all_and_the_same_table(self):
        self.inputs("good", "exit 1", "say no", "good")
        self.write("list", "\n".join([*(f"{i}.odb" for i in range(4)), "gone.odb"]))
        self.batch("--from", "list", "-k", out="plain", status=1)
        process = self.batch("--from", "list", "-k", "--pack", status=1)
        self.assertEqual(self.names(), [".kolvex-batch", "packs"])
        self.assertEqual([p.name for p in self.path("out/packs").iterdir()], ["0-of-1"])
        self.assertEqual(self.ask("collect", "out").stdout, self.ask("collect", "plain").stdout)
        self.assertEqual(self.ask("status", "out", status=1).stdout, self.ask("status", "plain", status=1).stdout)
        self.assertRegex(process.stderr.decode(), r"2\.odb: extraction failed: no \(kolvex batch show \S+/out \S+\.2-\w+ --log\)\n")

    def test_slices_have_a_pack_each_and_other_slices_know_them(self):
        self.inputs(*["good"] * 6)
        for index in range(2):
            self.batch("*.odb", "--pack", "--index", index, "--size", 2)
        self.assertEqual(sorted(p.name for p in self.path("out/packs").iterdir()), ["0-of-2", "1-of-2"])
        self.again()
        self.again(words=())
        self.inputs("good", start=6)
        self.again("6.odb", words=("--pack", "--index", 0, "--size", 3))
        self.assertEqual({row[0] for row in self.table().values()}, {"done"})

    def test_directories_and_packs_know_each_other(self):
        self.inputs("good", "good")
        self.batch("0.odb")
        self.again("1.odb")
        self.again(words=())
        self.assertEqual({name: row[0] for name, row in self.table().items()}, {"0.odb": "done", "1.odb": "done"})
        self.write("0.odb", "good\nchanged\n")
        self.write("1.odb", "good\nchanged\n")
        self.again("0.odb", "1.odb")
        self.assertEqual(self.names(), [".kolvex-batch", "packs"])
        changed = self.table()
        self.write("0.odb", "good\nonce more\n")
        self.again("0.odb", words=())
        self.again()
        self.assertNotEqual(self.table()["0.odb"], changed["0.odb"])
        self.assertEqual(self.table()["1.odb"], changed["1.odb"])

    def test_of_an_input_that_has_changed_the_last_result_counts(self):
        self.inputs("good", "exit 1", "good")
        self.batch("*.odb", "-k", "--pack", status=1)
        before = self.table()
        self.write("0.odb", "good\nand more\n")
        self.write("1.odb", "good\n")
        self.again("0.odb", "1.odb")
        self.assertEqual(self.table()["1.odb"], before["2.odb"])
        self.assertNotEqual(self.table()["0.odb"], before["0.odb"])
        self.again()
        self.config("EXTRACT_MASS")
        self.again("0.odb", "1.odb", "2.odb")

    def test_failed_ones_are_tried_again_unless_they_are_to_be_left(self):
        self.inputs("good", "exit 1")
        self.batch("*.odb", "-k", "--pack", status=1)
        self.again(words=("--pack", "--skip-failed"), status=1)
        self.again("1.odb", status=1)

    def test_one_result_is_shown(self):
        self.inputs("good", "say oh\\nno", "good")
        self.write("3.odb", "good\n")
        self.batch("0.odb", "1.odb", "-k", "--pack", status=1)
        self.batch("2.odb")
        expected = (self.place("2") / "params.txt").read_bytes()
        self.assertEqual(self.ask("show", "out", "0.odb").stdout, expected)
        self.assertEqual(self.ask("show", "out", self.path("2.odb")).stdout, expected)
        record = self.ask("show", "out", "1.odb", "--status").stdout.decode()
        self.assertRegex(record, r"^state\tfailed\nreason\textraction failed\n")
        self.assertTrue(record.endswith("\nend\t\n"))
        self.assertEqual(self.ask("show", "out", "1.odb", "--log").stdout, b"oh\\nno\n")
        self.assertRegex(self.ask("show", "out", "1.odb", status=1).stderr, rb"/1\.odb: has no params\.txt: extraction failed\n")
        self.assertRegex(self.ask("show", "out", "3.odb", status=1).stderr, rb"/out: 3\.odb is not an input of this batch\n")
        self.assertRegex(self.ask("show", "gone", "3.odb", status=1).stderr, rb"not the directory of a batch")
        self.ask("show", "out", "0.odb", "--log", "--status", status=2)
        identity = self.place("2").name
        self.assertEqual(self.ask("show", "out", identity).stdout, expected)

    def test_a_long_log_keeps_its_end(self):
        self.stand_in("#!/bin/sh\ni=0\nhead -c 3000000 /dev/zero | tr '\\0' 'x' | fold -w 99\necho; echo 'the end'; exit 1\n")
        self.inputs("good")
        self.batch("0.odb", "--pack", status=1)
        log = self.ask("show", "out", "0.odb", "--log").stdout
        self.assertTrue(log.endswith(b"\nthe end\n"))
        first, rest = log.split(b"\n", 1)
        self.assertLessEqual(len(rest), 1 << 20)
        self.assertEqual(first, b"(%d bytes left out)" % (3000000 + 3000000 // 99 + 1 + 8 - len(rest)))
        self.assertLess(os.path.getsize(self.path("out/packs/0-of-1")), 1100000)

    def test_torn_tails_are_done_again(self):
        self.inputs("good", "good")
        self.batch("0.odb", "--pack")
        first = self.path("out/packs/0-of-1").read_bytes()
        self.batch("1.odb", "--pack")
        whole = self.path("out/packs/0-of-1").read_bytes()
        table = self.table()
        self.assertTrue(whole.startswith(first))
        for length in random.Random(3).sample(range(len(first), len(whole)), 12):
            self.path("out/packs/0-of-1").write_bytes(whole[:length])
            self.assertEqual(self.table()["1.odb"][0], "missing")
            self.again("1.odb")
            self.assertEqual(self.table(), table)

    def test_a_damaged_result_is_done_again_and_no_other(self):
        self.inputs(*["good"] * 3)
        self.batch("*.odb", "-j", 1, "--pack")
        table, pack = self.table(), self.path("out/packs/0-of-1")
        whole = pack.read_bytes()
        for at in (whole.index(b"state\tdone", len(whole) // 3 + 20), whole.index(b"mises__max", len(whole) // 2)):
            pack.write_bytes(whole[:at] + b"#" + whole[at + 1:])
            self.assertEqual(self.table()["1.odb"][0], "missing")
            self.again("1.odb")
            self.assertEqual(self.table(), table)

    def test_a_second_run_waits_for_the_pack(self):
        self.inputs(*["slow 0.2"] * 6)
        one, two = (self.start("*.odb", "-j", 1, "--pack") for _ in range(2))
        said = [process.communicate(timeout=60) for process in (one, two)]
        self.assertEqual((one.returncode, two.returncode), (0, 0))
        waited = sorted(complaint for _, complaint in said)
        self.assertEqual(waited[0], b"")
        self.assertRegex(waited[1], rb"/out/packs/0-of-1: another run writes this pack; waiting for its end\n")
        self.assertEqual(sorted(self.ran()), [f"{i}.odb" for i in range(6)])

    def test_a_waiting_run_takes_over_from_one_that_is_killed(self):
        self.inputs("slow 1", "slow 1", "good")
        one = self.start("*.odb", "-j", 1, "--pack")
        self.wait_until(lambda: self.ran() == ["0.odb", "1.odb"])
        two = self.start("*.odb", "-j", 1, "--pack")
        one.kill()
        one.wait()
        self.assertIn(b"3 inputs: 3 done (1 of them before)", two.communicate(timeout=60)[0])
        self.assertEqual(sorted(self.ran()), ["0.odb", "1.odb", "1.odb", "2.odb"])
        self.assertEqual(self.names(), [".kolvex-batch", "packs"])

    def test_a_waiting_run_can_be_interrupted(self):
        self.inputs("slow 3")
        one = self.start("*.odb", "--pack")
        self.wait_until(lambda: self.ran() == ["0.odb"])
        two = subprocess.Popen(self.command("*.odb", "--pack"), cwd=self.directory, stderr=subprocess.PIPE, preexec_fn=hear_signals)
        self.assertIn(b"waiting", two.stderr.readline())
        two.send_signal(signal.SIGTERM)
        self.assertEqual(two.wait(timeout=20), 3)
        two.stderr.close()
        one.communicate(timeout=30)
        self.assertEqual(one.returncode, 0)

    def test_runs_with_and_without_packs_share_the_work(self):
        self.inputs(*["slow 0.05"] * 24)
        runs = [self.start("*.odb", "-j", 2, *words) for words in ((), ("--pack",), ("--pack", "--size", 3, "--index", 1))]
        for process in runs:
            complaint = process.communicate(timeout=60)[1]
            self.assertEqual((process.returncode, complaint), (0, b""))
        self.assertEqual(sorted(self.ran()), sorted(f"{i}.odb" for i in range(24)))
        self.assertEqual({row[0] for row in self.table().values()}, {"done"})

    def test_status_knows_what_runs(self):
        self.inputs("good", "slow 2")
        process = self.start("*.odb", "-j", 1, "--pack")
        self.wait_until(lambda: self.ran() == ["0.odb", "1.odb"])
        self.assertEqual(self.ask("status", "out", status=3).stdout, b"2 inputs: 1 done, 0 failed, 1 running, 0 missing\n")
        process.communicate(timeout=30)

    def test_an_interrupted_run_leaves_no_directories(self):
        self.inputs("good", "hang", "hang")
        process = self.start("*.odb", "-j", 2, "--pack")
        self.wait_until(lambda: len(self.ran()) == 3)
        process.send_signal(signal.SIGINT)
        process.communicate(timeout=30)
        self.assertEqual((process.returncode, self.names()), (3, [".kolvex-batch", "packs"]))
        self.inputs("good", "good", start=1)
        self.again("1.odb", "2.odb")

    def test_what_a_kill_after_packing_leaves_is_removed(self):
        self.inputs("good")
        self.batch("0.odb", "--pack")
        identity = self.path("out/packs/0-of-1").read_text().split(" ", 2)[1]
        place = self.path("out") / identity
        place.mkdir()
        for name in ("log", "params.txt", "paramsdone.txt"):
            (place / name).touch()
        self.again()
        self.assertEqual(self.names(), [".kolvex-batch", "packs"])

    def test_files_of_others_stay(self):
        self.inputs("good")
        self.batch("0.odb")
        (self.place("0") / "notes").write_text("mine")
        self.write("0.odb", "good\nchanged\n")
        self.again("0.odb")
        self.assertEqual([p.name for p in self.place("0").iterdir()], ["notes"])
        self.again()

    def test_a_full_disk_stops_the_batch_and_nothing_is_lost(self):
        with small_disk(self, self.path("disk"), "512k"):
            self.inputs(*["good"] * 20)
            self.batch("?.odb", "--pack", out="disk/out")
            fill_up(self.path("disk/filling"))
            process = self.batch("*.odb", "-k", "--pack", out="disk/out", status=1)
            self.assertRegex(process.stdout + process.stderr, rb"No space left|10 failed")
            self.assertEqual(sum(row[0] == "done" for row in self.table("disk/out").values()), 10)
            os.unlink(self.path("disk/filling"))
            self.again(*(f"{i}.odb" for i in range(10, 20)), words=("--pack", "-k"), out="disk/out")
            self.assertEqual({row[0] for row in self.table("disk/out").values()}, {"done"})

    def test_sync_gives_the_same(self):
        self.inputs("good", "good")
        self.batch("*.odb", "--pack", "--sync")
        self.again()


class RealPacks(PackTest):
    def databases(self, count):
        for number in range(count):
            small_database(self.path(f"{number}.odb"))
        self.write("broken.odb", "no database")

    def test_runs_killed_at_random_end_with_the_table_of_one_without_packs(self):
        self.databases(60)
        self.batch("*.odb", "-k", out="undisturbed", status=1)
        generator = random.Random(29)
        for _ in range(KILLS):
            process = self.start("*.odb", "-k", "-j", 2, "--pack")
            time.sleep(generator.uniform(0, 0.2))
            process.send_signal(signal.SIGKILL)
            process.wait()
        self.batch("*.odb", "-k", "--pack", status=1)
        self.assertEqual(self.ask("collect", "out").stdout.replace(b"/out/", b"/undisturbed/"), self.ask("collect", "undisturbed").stdout)
        self.assertEqual(self.names(), [".kolvex-batch", "packs"])
        path = next(self.path("undisturbed").glob("*.7-*/params.txt"))
        self.assertEqual(self.ask("show", "out", "7.odb").stdout, path.read_bytes())

    def test_databases_that_are_kept_stay(self):
        from test_import_program import DECK, WHOLE
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        self.batch("job.frd", "--pack", "--keep-databases")
        place = next(self.path("out").glob("*.job-*"))
        self.assertEqual([p.name for p in place.iterdir()], ["database.odb"])
        self.batch("job.frd", "--pack")
        self.assertEqual([p.name for p in place.iterdir()], ["database.odb"])
        shutil.copy(place / "database.odb", self.path("copy"))
        self.batch("copy", "--pack", "--keep-databases", out="other")
        self.assertEqual(self.names("other"), [".kolvex-batch", "packs"])


if __name__ == "__main__":
    unittest.main()
