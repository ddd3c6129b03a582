"""`kolvex run`: records or a status that says why not, also after kills."""
import json
import os
import random
import shutil
import signal
import subprocess
import time

from batch_support import STAND_IN, hear_signals
from support import BIN, ROOT, ProgramTest, small_database

SEEDS = ROOT / "tests/fuzz/seeds"
KILLS = int(os.environ.get("KOLVEX_KILLS", "12"))


class RunTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.config("EXTRACT_FIELD", "EXTRACT_ALL", "EXTRACT_HISTORY")
        self.program = BIN / "run"

    def job(self, *kinds):
        """Results of the solver in text form; kinds of files that are not of the same run beside them."""
        for kind, name, ending in (("frd", "text", "frd"), ("dat", "tables", "dat"), ("deck", "deck", "inp")):
            if kind == "frd" or kind in kinds:
                shutil.copy(SEEDS / kind / name, self.path(f"job.{ending}"))

    def stand_in(self):
        """From here on a script is started instead of the extraction; it does as the text of the "database" says."""
        os.makedirs(self.path("bin"))
        shutil.copy(BIN / "run", self.path("bin/run"))
        self.write("bin/quarnish", STAND_IN)
        self.path("bin/quarnish").chmod(0o755)
        self.program = self.path("bin/run")

    def command(self, *words, out="out"):
        return [str(self.program), "--config", "config.txt", "--out", out, *map(str, words)]

    def environment(self):
        return {**os.environ, "RAN": str(self.path("ran"))}

    def run_job(self, *words, status=0, **options):
        process = subprocess.run(self.command(*words, **options), cwd=self.directory, capture_output=True, text=True, timeout=120,
                                 check=False, stdin=subprocess.DEVNULL, env=self.environment())
        self.assertEqual(process.returncode, status, process.stdout + process.stderr)
        return process

    def start(self, *words):
        process = subprocess.Popen(self.command(*words), cwd=self.directory, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True, env=self.environment(), preexec_fn=hear_signals)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def wait_for(self, condition):
        end = time.monotonic() + 30
        while not condition():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.005)

    def files(self, directory="out"):
        return sorted(p.name for p in self.path(directory).iterdir())

    def state(self):
        return dict(line.split("\t", 1) for line in self.path("out/status").read_text().splitlines())


COMPLETE = ["configuration", "log", "params.txt", "paramsdone.txt", "status"]


class OutcomesTest(RunTest):
    def test_records_are_those_of_the_programs_one_by_one(self):
        self.job()
        self.run_program("job", "-o", "by_hand.odb", program="import")
        self.run_program("-odb", "by_hand.odb", "-config", "config.txt")
        self.assertGreater(len(self.path("params.txt").read_text().splitlines()), 5)
        for name in ("job", "job.frd", self.path("job.frd")):
            self.run_job(name)
            self.assertEqual(self.path("out/params.txt").read_bytes(), self.path("params.txt").read_bytes())
            self.assertEqual(self.files(), COMPLETE)
            self.assertEqual(self.state()["state"], "done")

    def test_the_directory_is_named_after_the_job(self):
        self.job()
        os.mkdir(self.path("runs"))
        for path in list(self.directory.glob("job.*")):
            path.rename(self.path("runs") / path.name)
        command = [str(BIN / "run"), "runs/job", "--config", "config.txt"]
        subprocess.run(command, cwd=self.directory, check=True, stdout=subprocess.DEVNULL, timeout=60)
        self.assertEqual(self.files("job-records"), COMPLETE)

    def test_a_database_is_taken_as_it_is(self):
        small_database(self.path("model.odb"))
        self.path("model.odb").rename(self.path("model"))
        before = self.path("model").read_bytes()
        self.run_job("model")
        self.assertIn("NT__max\t1.23457e+006", self.path("out/params.txt").read_text())
        self.assertEqual((self.path("model").read_bytes(), self.files()), (before, COMPLETE))

    def test_the_database_is_kept_where_that_is_wanted(self):
        self.job()
        summary = json.loads(self.run_job("job", "--keep-database", "--json", out="a/b").stdout)
        self.assertEqual(summary["database"], str(self.path("a/b/database.odb")))
        self.check_written(self.path("a/b/database.odb"))

    def test_the_summary_in_json(self):
        self.job()
        summary = json.loads(self.run_job("job", "--json", "--require", "Step_1*", "--require", "X*", "--require", "y", status=4).stdout)
        self.assertEqual((summary["state"], summary["status"], summary["missing"]), ("incomplete", 4, ["X*", "y"]))
        self.assertEqual(summary["records"], len(self.path("out/params.txt").read_text().splitlines()))
        self.assertEqual((summary["input"], summary["params"]), (str(self.path("job.frd")), str(self.path("out/params.txt"))))
        self.assertEqual(self.state()["missing"], "no record X*, y")

    def test_results_that_are_cut_off_give_what_they_have_and_a_status(self):
        self.job()
        text = self.path("job.frd").read_bytes()
        self.path("job.frd").write_bytes(text[:text.rindex(b" -3")])
        run = self.run_job("job", status=4)
        self.assertIn("records are missing: ", run.stderr)
        self.assertIn("truncated", run.stderr)
        self.assertIn("truncated", self.state()["missing"])
        self.assertGreater(len(self.path("out/params.txt").read_text()), 0)
        self.assertIn("paramsdone.txt", self.files())

    def test_tables_of_another_run_are_missing_records(self):
        self.job("dat", "deck")
        self.assertIn("job.dat:2: error: the tables are not of this run", self.run_job("job", status=4).stderr)
        self.run_job("job", "--import-option=--no-dat", "--import-option=--no-deck")

    def test_no_record_at_all_is_not_complete(self):
        small_database(self.path("model.odb"))
        self.config("EXTRACT_FEILD")
        self.assertIn("there is no record", self.run_job("model.odb", status=4).stderr)

    def test_results_that_are_none_leave_no_records_of_an_earlier_run(self):
        self.job()
        self.run_job("job")
        self.write("job.frd", b"nothing of a solver")
        run = self.run_job("job.frd", status=1)
        self.assertIn("import failed", run.stderr)
        self.assertEqual((self.files(), self.state()["state"]), (["configuration", "log", "status"], "failed"))

    def test_an_extraction_that_fails_is_a_failure(self):
        self.write("broken.odb", b"\x89HDF\r\n\x1a\n and no more")
        run = self.run_job("broken.odb", "--json", status=1)
        summary = json.loads(run.stdout)
        self.assertEqual((summary["state"], summary["reason"], summary["records"]), ("failed", "extraction failed", 0))
        self.assertIn("broken.odb", summary["detail"])

    def test_what_is_not_there_makes_nothing(self):
        before = self.files(".")
        self.assertEqual(self.run_job("job", status=1).stderr, "job: does not exist\n")
        self.job()
        self.path("config.txt").unlink()
        self.assertEqual(self.run_job("job", status=1).stderr, "config.txt: does not exist\n")
        self.assertEqual(set(self.files(".")) - {"job.frd"}, set(before) - {"config.txt"})

    def test_wrong_usage(self):
        for words in (["job"], [], ["--config", "config.txt"], ["job", "--config", "config.txt", "--timeout", "x"]):
            self.assertEqual(self.run_program(*words, program="run").status, 2)

    def test_limits(self):
        self.stand_in()
        self.write("model.odb", b"hang\n")
        self.assertIn("time limit", self.run_job("model.odb", "--timeout", "0.3", status=1).stderr)
        self.write("model.odb", b"memory\n")
        self.assertIn("memory limit", self.run_job("model.odb", "--memory", "200M", status=1).stderr)

    def test_a_crash_is_named(self):
        self.stand_in()
        self.write("model.odb", b"signal SEGV\n")
        self.assertIn("crashed: extraction: Segmentation fault", self.run_job("model.odb", status=1).stderr)


class EndsTest(RunTest):
    def started(self, text=b"hang\n"):
        self.stand_in()
        self.write("model.odb", text)
        process = self.start("model.odb")
        self.wait_for(lambda: self.path("ran").exists() and self.path("ran").read_text().endswith("\n"))
        return process

    def test_who_is_asked_to_end_leaves_no_records(self):
        for number in (signal.SIGTERM, signal.SIGINT):
            process = self.started()
            process.send_signal(number)
            self.assertEqual(process.wait(timeout=30), 3)
            self.assertIn("interrupted", process.stderr.read())
            self.assertEqual(self.files(), ["configuration", "log"])
            shutil.rmtree(self.path("bin"))
            self.path("ran").unlink()

    def test_a_second_run_in_the_directory_is_refused_and_changes_nothing(self):
        first = self.started(b"slow 1\n")
        before = {name: self.path("out", ).joinpath(name).read_bytes() for name in self.files()}
        self.write("config.txt", "other")
        self.assertIn("another run is at work there", self.run_job("model.odb", status=1).stderr)
        self.assertEqual(before["configuration"], self.path("out/configuration").read_bytes())
        self.assertEqual(first.wait(timeout=30), 0)
        self.assertEqual(self.files(), COMPLETE)

    def test_what_a_killed_run_has_left_at_work_is_ended_by_the_next(self):
        process = self.started()
        process.kill()
        process.wait()
        self.write("model.odb", b"good\n")
        self.run_job("model.odb")
        self.assertEqual(self.files(), COMPLETE)

    def test_killed_at_random_moments(self):
        """No status without its records, no marker but beside complete records, and the next run is as good as the first."""
        self.job()
        begin = time.monotonic()
        self.run_job("job")
        duration = time.monotonic() - begin
        records = self.path("out/params.txt").read_bytes()
        chance = random.Random(16)
        for _ in range(KILLS):
            process = self.start("job")
            time.sleep(chance.uniform(0, duration))
            process.kill()
            process.wait()
            # Its programs may still be at work; with their log goes what tells.
            left = self.files()
            if "status" in left:
                self.assertEqual((self.state()["state"], self.path("out/params.txt").read_bytes()), ("done", records))
            if "paramsdone.txt" in left:
                self.assertEqual(self.path("out/params.txt").read_bytes(), records)
        self.run_job("job")
        self.assertEqual((self.files(), self.path("out/params.txt").read_bytes()), (COMPLETE, records))
