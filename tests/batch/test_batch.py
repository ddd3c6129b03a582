"""Batches as their users run them: which inputs there are, where their results stand, what is said and returned."""
import os
import subprocess
import unittest

from batch_support import BatchTest, events
from support import small_database
from test_import_program import DECK, WHOLE

RECORDS = b"Step_1__Frame_1__NT__max\t1.23457e+006\nStep_1__Frame_1__NT__min\t20\n"


class RealPrograms(BatchTest):
    def test_each_database_is_extracted_in_a_directory_of_its_own(self):
        for name in ("a", "b"):
            self.path(name).mkdir()
            small_database(self.path(f"{name}/job.odb"))
        process = self.batch("a/job.odb", "b/job.odb", "-j", 2)
        self.assertRegex(process.stdout, rb"^2 inputs: 2 done, 0 failed, [0-9.]+ s\n$")
        directories = sorted(p.name for p in self.path("out").iterdir() if not p.name.startswith("."))
        self.assertEqual([d.rsplit("-", 1)[0] for d in directories], ["a.job", "b.job"])
        for directory in directories:
            self.assertEqual(self.path(f"out/{directory}/params.txt").read_bytes(), RECORDS)
            self.assertEqual(self.path(f"out/{directory}/paramsdone.txt").read_bytes(), b"Done\n")
            self.assertIn(b"Processing Step: Step-1", self.path(f"out/{directory}/log").read_bytes())
            self.assertIn("state\tdone\n", self.path(f"out/{directory}/status").read_text())

    def test_results_of_a_solver_are_imported_first_and_the_database_is_dropped(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        self.assertEqual(self.run_program("job", "-o", "by_hand.odb", program="import").status, 0)
        by_hand = self.run_program("-odb", "by_hand.odb", "-config", "config.txt")
        self.batch("job.frd")
        self.assertEqual((self.place("job") / "params.txt").read_bytes(), by_hand.text("params.txt"))
        self.assertEqual(sorted(p.name for p in self.place("job").iterdir()), ["log", "params.txt", "paramsdone.txt", "status"])

    def test_the_database_is_kept_where_that_is_asked_for(self):
        self.write("job.frd", WHOLE)
        self.batch("job.frd", "--keep-databases", "--import-option=--no-mass")
        self.assertEqual(self.run_program(self.place("job") / "database.odb", program="verify").status, 0)

    def test_a_change_of_a_file_beside_the_results_counts(self):
        self.write("job.frd", WHOLE)
        self.batch("job")
        self.write("job.inp", DECK)
        self.assertIn(b"1 done, 0 failed", self.batch("job").stdout)
        self.assertIn(b"(1 of them before)", self.batch("job").stdout)

    def test_options_of_the_import_decide_about_the_records(self):
        self.write("job.frd", WHOLE)
        self.batch("job")
        self.assertNotIn(b"before", self.batch("job", "--import-option=--no-mass").stdout)

    def test_a_database_may_have_any_name(self):
        small_database(self.path("database.h5"))
        self.batch("database.h5")
        self.assertEqual((self.place("database") / "params.txt").read_bytes(), RECORDS)
        self.assertFalse(os.path.lexists(self.place("database") / "database.odb"))

    def test_what_programs_say_becomes_the_reason(self):
        self.write("broken.odb", "no database")
        self.write("unknown.txt", "no results")
        process = self.batch("broken.odb", "unknown.txt", "gone.odb", "--keep-going", status=1)
        self.assertEqual(self.states(), {"broken.odb": "extraction failed", "unknown.txt": "import failed", "gone.odb": "input missing"})
        said = process.stderr.decode()
        self.assertRegex(said, r"(?m)^/\S*/broken.odb: extraction failed: .*broken.odb.* \(/\S*/log\)$")
        self.assertRegex(said, r"(?m)^/\S*/unknown.txt: import failed: .*unknown.txt")
        self.assertRegex(process.stdout, rb"^3 inputs: 0 done, 3 failed, [0-9.]+ s\n  extraction failed: 1\n  import failed: 1\n  input missing: 1\n$")

    def test_the_copy_of_the_configuration_is_what_is_used(self):
        small_database(self.path("job.odb"))
        self.batch("job.odb")
        copies = list(self.path("out/.kolvex-batch").glob("configuration-*"))
        self.assertEqual([copy.read_bytes() for copy in copies], [self.path("config.txt").read_bytes()])


class Inputs(BatchTest):
    def setUp(self):
        super().setUp()
        self.stand_in()

    def test_patterns_match_files_and_a_name_counts_once(self):
        self.inputs(*["good"] * 12)
        self.batch("1*.odb", "10.odb", self.path("10.odb"), "./3.odb", "-j", 1)
        self.assertEqual(self.ran(), ["1.odb", "10.odb", "11.odb", "3.odb"])

    def test_a_file_whose_name_looks_like_a_pattern_is_itself(self):
        self.write("[1].odb", "good\n")
        self.inputs("good", "good")
        self.batch("[1].odb")
        self.assertEqual(self.ran(), ["[1].odb"])

    def test_lists_come_from_files_and_standard_input(self):
        self.inputs(*["good"] * 4)
        self.write("list.txt", "0.odb\r\n\n2.odb")
        self.batch("--from", "list.txt", "-j", 1)
        self.batch("-", input=b"1.odb\n0.odb\n")
        self.batch("--from", "-", input=b"[3].odb\n")
        self.assertEqual(self.ran(), ["0.odb", "2.odb", "1.odb", "3.odb"])

    def test_names_that_are_odd_to_shells_are_run(self):
        names = ["a b.odb", "'.odb", "*.odb", "-x.odb", "\\.odb", "\u00fc.odb", "tab\t.odb"]
        for name in names:
            self.write(name, "good\n")
        self.batch(*(f"./{name}" for name in names), "-j", 1)
        self.assertEqual(self.ran(), names)
        self.assertEqual(self.batch(*(f"./{name}" for name in names), "-j", 1).stdout.count(b"7 of them before"), 1)

    def test_a_name_that_is_not_utf8_is_run_once(self):
        name = os.fsencode(self.directory) + b"/\xff.odb"
        with open(name, "wb") as file:
            file.write(b"good\n")
        for _ in range(2):
            process = subprocess.run([*self.command("--json"), name], cwd=self.directory,
                                     capture_output=True, env=self.environment(), check=False)
            self.assertEqual(process.returncode, 0, process.stderr)
        self.assertEqual(self.path("ran").read_bytes().count(b"\n"), 1)
        self.assertEqual([event["event"] for event in events(process)], ["begin", "kept", "end"])

    def test_slices_share_the_inputs_among_them(self):
        self.inputs(*["good"] * 7)
        for index in range(3):
            self.batch("*.odb", "--index", index, "--size", 3, "-j", 1)
        self.assertEqual(self.ran(), [f"{i}.odb" for i in (0, 3, 6, 1, 4, 2, 5)])

    def test_wrong_usage_is_refused_before_anything_is_made(self):
        self.inputs("good")
        self.path("directory").mkdir()
        self.write("empty", "\n")
        for words, reason in ((["nothing*"], b"nothing*: no file matches"), ([], b"no input is named"),
                              (["directory"], b"directory: is a directory"), (["a\nb"], b"line break"),
                              (["--from", "empty"], b"the list of inputs is empty"),
                              (["0.odb", "--index", "2", "--size", "2"], b"--index must be below --size"),
                              (["0.odb", "--timeout", "0"], b"is not a time"), (["0.odb", "--memory", "4Q"], b"is not a size"),
                              (["0.odb", "-j", "0"], b"is not a whole number")):
            with self.subTest(words):
                self.assertIn(reason, self.batch(*words, status=2).stderr)
                self.assertFalse(self.path("out").exists())
        process = subprocess.run([self.program, "0.odb", "--out", "out"], cwd=self.directory, capture_output=True, check=False)
        self.assertEqual((process.returncode, b"--config is missing" in process.stderr), (2, True))

    def test_what_cannot_be_read_or_made_is_named(self):
        self.inputs("good")
        self.assertEqual(self.batch("0.odb", config="gone.txt", status=1).stderr, b"gone.txt: does not exist\n")
        self.assertEqual(self.batch("--from", "gone.txt", status=1).stderr, b"gone.txt: cannot be read\n")
        self.assertIn(b"0.odb/x/.kolvex-batch: cannot be made", self.batch("0.odb", out="0.odb/x", status=1).stderr)
        self.assertEqual(self.ran(), [])


class Said(BatchTest):
    def setUp(self):
        super().setUp()
        self.stand_in()

    def test_the_first_failure_stops_the_batch(self):
        self.inputs("good", "exit 3", "good")
        process = self.batch("*.odb", "-j", 1, status=1)
        self.assertEqual(self.ran(), ["0.odb", "1.odb"])
        self.assertIn(b"3 inputs: 1 done, 1 failed, 1 left", process.stdout)

    def test_keep_going_goes_on(self):
        self.inputs("exit 3", "good", "signal SEGV", "say first\nsecond")
        self.batch("*.odb", "-j", 1, "--keep-going", status=1)
        self.assertEqual(self.states(), {"0.odb": "extraction failed", "1.odb": "done", "2.odb": "crashed", "3.odb": "extraction failed"})
        self.assertIn("detail\textraction: Segmentation fault\n", (self.place("2") / "status").read_text())
        self.assertIn("detail\tfirst\n", (self.place("3") / "status").read_text())

    def test_retries_try_again_and_say_so(self):
        self.inputs("once", "exit 1")
        process = self.batch("*.odb", "-j", 1, "-k", "--retries", 2, status=1)
        self.assertEqual(self.ran(), ["0.odb"] * 2 + ["1.odb"] * 3)
        self.assertEqual(self.states(), {"0.odb": "done", "1.odb": "extraction failed"})
        self.assertIn("tries\t2\n", (self.place("0") / "status").read_text())
        self.assertEqual(process.stderr.count(b", trying again"), 3)

    def test_failed_inputs_are_tried_again_unless_they_are_skipped(self):
        self.inputs("good", "exit 1")
        self.batch("*.odb", "-k", status=1)
        self.assertIn(b"1 failed", self.batch("*.odb", "--skip-failed", status=1).stdout)
        self.assertEqual(len(self.ran()), 2)
        self.batch("*.odb", status=1)
        self.assertEqual(len(self.ran()), 3)
        self.inputs("good", start=1)
        self.batch("*.odb", "--skip-failed")
        self.assertEqual(self.states(), {"0.odb": "done", "1.odb": "done"})

    def test_events_are_objects_one_a_line(self):
        self.inputs("good", "exit 1", "once")
        self.batch("0.odb")
        process = self.batch("*.odb", "-j", 1, "-k", "--retries", 1, "--json", status=1)
        said = [(event["event"], event.get("input", "/-").rsplit("/", 1)[1], event.get("reason")) for event in events(process)]
        self.assertEqual(said, [("begin", "-", None), ("kept", "0.odb", None),
                                ("started", "1.odb", None), ("retried", "1.odb", "extraction failed"), ("failed", "1.odb", "extraction failed"),
                                ("started", "2.odb", None), ("retried", "2.odb", "extraction failed"), ("done", "2.odb", None),
                                ("end", "-", None)])
        self.assertEqual({key: events(process)[-1][key] for key in ("inputs", "done", "kept", "failed", "left", "why", "interrupted")},
                         {"inputs": 3, "done": 1, "kept": 1, "failed": 1, "left": 0, "why": {"extraction failed": 1}, "interrupted": False})
        self.assertEqual(process.stderr, b"")

    def test_a_reader_of_events_that_goes_away_ends_the_batch(self):
        self.inputs(*["good"] * 3)
        with open("/dev/full", "wb") as full:
            process = subprocess.run(self.command("*.odb", "--json"), cwd=self.directory, stdout=full, stderr=subprocess.PIPE,
                                     env=self.environment(), check=False)
        self.assertEqual(process.returncode, 1)
        self.assertIn(b"standard output cannot be written", process.stderr)

    def test_a_terminal_shows_how_far_it_is(self):
        self.inputs(*["slow 0.3"] * 4)
        process = subprocess.run(["script", "-qec", " ".join(self.command("*.odb", "-j", 1)), "/dev/null"], cwd=self.directory,
                                 capture_output=True, env=self.environment(), stdin=subprocess.DEVNULL, check=False)
        self.assertEqual(process.returncode, 0)
        self.assertRegex(process.stdout.decode(), r"\r[123] of 4, [0-9.]+ a second, \d+ s left\x1b\[K")

    def test_programs_get_nothing_of_the_batch_but_the_log(self):
        self.stand_in("#!/bin/sh\nls -l /proc/self/fd > fds\ncat > input\nsed -n 's/^Sig[BI]..:\\t*//p' /proc/self/status > signals\nprintf 'a\\t1\\n' > params.txt\necho Done > paramsdone.txt\n")
        self.inputs("good")
        self.batch("0.odb")
        place = self.place("0")
        files = [line.split(" -> ") for line in (place / "fds").read_text().splitlines() if " -> " in line]
        own = {head.split()[-1]: to for head, to in files if "/proc/" not in to and "fds" not in to}
        self.assertEqual(own, {"0": "/dev/null", "2": str(place / "log")})
        self.assertEqual((place / "input").read_bytes(), b"")
        self.assertEqual(int((place / "signals").read_text().splitlines()[0], 16), 0, "blocked")


if __name__ == "__main__":
    unittest.main()
