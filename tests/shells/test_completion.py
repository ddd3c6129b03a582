"""Completion as a user meets it: an interactive shell, an installed kolvex, the TAB key."""
import pathlib
import shutil
import subprocess
import unittest

import h5py
import numpy as np
from shells import Bash, Zsh
from support import ProgramTest, installed_prefix, small_database
from test_import_program import DECK, WHOLE

BASH, ZSH = shutil.which("bash"), shutil.which("zsh")


class CompletionTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.prefix = installed_prefix(self)
        self.environment = {"PATH": f"{self.prefix}/bin:/usr/bin:/bin", "HOME": str(self.directory), "LC_ALL": "C.UTF-8",
                            "ASAN_OPTIONS": "detect_leaks=0"}
        runs = self.path("runs")
        runs.mkdir()
        self.write("runs/job.frd", WHOLE)
        self.write("runs/job.inp", DECK)
        self.write("runs/two words.frd", WHOLE)
        self.write("runs/torn.frd", WHOLE[:-300])
        self.write("runs/nonsense", "no results")
        small_database(self.path("runs/model.odb"))
        with h5py.File(self.path("runs/model.odb"), "a") as odb:
            odb["assembly/elementSets/SIDE:LEFT/I-1"] = np.array([1], "i4")
        self.shell = self.start(runs)
        self.addCleanup(self.shell.close)

    def start(self, work):
        script = self.prefix / "share/bash-completion/completions/kolvex"
        return Bash(BASH, work, self.environment, script)

    def assert_silent(self):
        self.assertEqual(self.shell.said.replace("\r", "").replace("\n", ""), "")

    def test_commands(self):
        self.assertEqual(self.shell.completed("kolvex imp"), "kolvex import")
        self.assertEqual(self.shell.candidates("kolvex "),
                         ["batch", "check", "diff", "export", "import", "locate", "params", "quarnish", "report", "run", "show",
                          "verify"])
        self.assertEqual(self.shell.completed("kolvex --vers"), "kolvex --version")

    def test_options(self):
        self.assertEqual(self.shell.completed("kolvex import --no-m"), "kolvex import --no-mass")
        self.assertEqual(self.shell.candidates("kolvex import --no-"), ["--no-dat", "--no-deck", "--no-group", "--no-mass"])
        self.assertEqual(self.shell.completed("kolvex verify --qu"), "kolvex verify --quiet")
        self.assertEqual(self.shell.completed("kolvex quarnish -con"), "kolvex quarnish -config")

    def test_commands_of_a_command(self):
        self.assertEqual(self.shell.completed("kolvex batch col"), "kolvex batch collect")
        self.assertEqual(self.shell.completed("kolvex batch job.f"), "kolvex batch job.frd")
        self.assertEqual(self.shell.completed("kolvex batch collect --rec"), "kolvex batch collect --records")
        self.assertEqual(self.shell.candidates("kolvex batch collect --to "), ["csv", "json", "sqlite"])
        self.assertEqual(self.shell.completed("kolvex batch status --wa"), "kolvex batch status --watch")
        self.assertEqual(self.shell.completed("kolvex batch job.frd --conf"), "kolvex batch job.frd --config")

    def test_values(self):
        self.assertEqual(self.shell.completed("kolvex import --stress-at int"), "kolvex import --stress-at integration-points")
        self.assertEqual(self.shell.completed("kolvex import --stress-at=int"), "kolvex import --stress-at=integration-points")
        self.assertEqual(self.shell.completed("kolvex import --format cal"), "kolvex import --format calculix")

    def test_names_of_files(self):
        self.assertEqual(self.shell.completed("kolvex import job.f"), "kolvex import job.frd")
        self.assertEqual(self.shell.completed("kolvex quarnish -odb mod"), "kolvex quarnish -odb model.odb")
        self.assertEqual(self.shell.completed("kolvex verify model.odb jo"), "kolvex verify model.odb job.")
        self.assertEqual(self.shell.completed("kolvex import --deck=job.i"), "kolvex import --deck=job.inp")

    def test_fields_and_steps_of_the_results_on_the_line(self):
        self.assertEqual(self.shell.candidates("kolvex import job.frd --field "), ["NT", "S"])
        self.assertEqual(self.shell.candidates("kolvex import --strict job --field=N"), ["NT"])
        self.assertEqual(self.shell.completed("kolvex import job --field S --field N"), "kolvex import job --field S --field NT")
        self.assertEqual(self.shell.completed("kolvex import 'two words.frd' --field N"),
                         "kolvex import 'two words.frd' --field NT")
        self.assertEqual(self.shell.completed("kolvex import two\\ words --step "), "kolvex import two\\ words --step 1")
        self.assertEqual(self.shell.completed("kolvex import ~/runs/job.frd --field N"),
                         "kolvex import ~/runs/job.frd --field NT")
        self.assert_silent()

    def test_results_that_cannot_be_read_complete_nothing_and_say_nothing(self):
        for results in ("nonsense", "missing", "model.odb", "'unfinished", "$(touch made)", "`touch made`", "job --frobnicate"):
            with self.subTest(results):
                line = f"kolvex import {results} --field "
                self.assertEqual(self.shell.completed(line), line.rstrip(" "))
                self.assert_silent()
        self.assertFalse(self.path("runs/made").exists(), "a line that is still being typed was run")

    def test_results_that_are_cut_off_complete_what_is_left(self):
        self.assertEqual(self.shell.completed("kolvex import torn --field N"), "kolvex import torn --field NT")
        self.assert_silent()

    def test_sets_of_the_database_on_the_line(self):
        for name in ("model", "model.odb"):
            self.assertEqual(self.shell.completed(f"kolvex quarnish -odb {name} -elset A"),
                             f"kolvex quarnish -odb {name} -elset ALL\\ ELEMENTS")
            self.assertEqual(self.shell.completed(f"kolvex quarnish -odb {name} -elset SIDE:L"),
                             f"kolvex quarnish -odb {name} -elset SIDE:LEFT")
            for quote in "'\"":
                self.assertEqual(self.shell.completed(f"kolvex quarnish -odb {name} -elset {quote}ALL EL"),
                                 f"kolvex quarnish -odb {name} -elset {quote}ALL ELEMENTS{quote}")
        for name in ("job.frd", "missing", "nonsense"):
            self.assertEqual(self.shell.completed(f"kolvex quarnish -odb {name} -elset A"),
                             f"kolvex quarnish -odb {name} -elset A")
        self.assert_silent()

    def test_fields_sets_and_steps_of_the_database_on_the_line(self):
        self.assertEqual(self.shell.completed("kolvex show model.odb --field N"), "kolvex show model.odb --field NT")
        self.assertEqual(self.shell.completed("kolvex show model --step St"), "kolvex show model --step Step-1")
        self.assertEqual(self.shell.completed("kolvex show model --set SIDE:L"), "kolvex show model --set SIDE:LEFT")
        self.assertEqual(self.shell.completed("kolvex show nonsense --set A"), "kolvex show nonsense --set A")
        self.assertEqual(self.shell.completed("kolvex params --to da"), "kolvex params --to dakota")
        self.assert_silent()

    def test_an_unknown_command_has_nothing(self):
        self.assertEqual(self.shell.completed("kolvex frobnicate --f"), "kolvex frobnicate --f")
        self.assert_silent()

    def test_a_program_that_is_not_installed_says_nothing(self):
        (self.prefix / "libexec/kolvex/import").unlink()
        self.assertEqual(self.shell.completed("kolvex import --no-m"), "kolvex import --no-m")
        self.assert_silent()

    def test_the_launcher_is_asked_by_the_path_that_was_typed(self):
        self.assertEqual(self.shell.completed(f"{self.prefix}/bin/kolvex imp"), f"{self.prefix}/bin/kolvex import")


@unittest.skipUnless(ZSH, "there is no zsh")
class ZshCompletionTest(CompletionTest):
    def start(self, work):
        return Zsh(ZSH, work, self.environment, self.prefix / "share/zsh/site-functions")


class ScriptTest(unittest.TestCase):
    COMPLETION = pathlib.Path(__file__).resolve().parents[2] / "src/kolvex/completion"

    def check(self, *command):
        run = subprocess.run(command, capture_output=True, text=True, check=False)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (0, "", ""))

    @unittest.skipUnless(shutil.which("shellcheck"), "there is no shellcheck")
    def test_shellcheck_finds_nothing(self):
        self.check("shellcheck", "--shell=bash", self.COMPLETION / "kolvex.bash")

    @unittest.skipUnless(ZSH, "there is no zsh")
    def test_zsh_can_read_its_script(self):
        self.check(ZSH, "-n", self.COMPLETION / "_kolvex")
