"""The launcher: it hands everything through and runs only its own programs."""
import os
import shutil
import signal
import stat
import subprocess

from support import BIN, ProgramTest

STAND_IN = """#!/bin/sh
printf '%s|' "$@" > arguments
exit 7
"""
SAY_WHERE = "#!/bin/sh\necho \"$0\"\n"


class LauncherTest(ProgramTest):
    def installed(self, script=STAND_IN, folder="libexec/kolvex", mode=0o755):
        """A copy of the launcher with a stand-in for the extraction."""
        for place in ("prefix/bin", "prefix/" + folder):
            os.makedirs(self.path(place), exist_ok=True)
        shutil.copy(BIN / "kolvex", self.path("prefix/bin/kolvex"))
        program = self.path("prefix/" + folder) / "quarnish"
        program.write_text(script)
        program.chmod(mode)
        return str(self.path("prefix/bin/kolvex"))

    def test_help_lists_the_commands(self):
        run = self.run_program("--help", program="kolvex")
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertIn(b"\n  batch       extract from many databases or results\n", run.out)
        self.assertIn(b"\n  import      bring the results of a solver into an output database\n", run.out)
        self.assertIn(b"\n  quarnish    extract named scalars from an output database\n", run.out)
        self.assertIn(b"\n  verify      check an output database for damage\n", run.out)

    def test_version_names_itself(self):
        run = self.run_program("--version", program="kolvex")
        self.assertEqual(run.status, 0)
        self.assertRegex(run.out, rb"^kolvex \d+\.\d+\.\d+\n$")

    def test_full_streams_are_no_reason_to_fall_over(self):
        with open("/dev/full", "wb") as full:
            for arguments, status in ((["--help"], 1), (["--version"], 1), ([], 2), (["unknown"], 1),
                                      (["verify", "nothing.odb"], 5), (["verify", "--help"], 1), (["verify"], 2)):
                process = subprocess.run([BIN / "kolvex", *arguments], stdout=full, stderr=full, check=False)
                self.assertEqual(process.returncode, status, arguments)

    def test_no_command_is_a_usage_error(self):
        run = self.run_program(program="kolvex")
        self.assertEqual((run.status, run.out), (2, b""))
        self.assertIn(b"Usage:\n  kolvex COMMAND [ARGUMENT...]\n", run.err)

    def test_an_unknown_command_is_refused_even_when_the_system_has_one(self):
        for name in ("ls", "../bin/sh", ""):
            run = self.run_program(name, program="kolvex")
            self.assertEqual((run.status, run.out), (1, b""))
            self.assertEqual(run.err.decode(), f"kolvex: '{name}' is not a kolvex command. See 'kolvex --help'.\n")

    def test_arguments_and_status_go_through_untouched(self):
        run = self.run_program("quarnish", "-odb", "a b", "", "*", "--help", program=self.installed())
        self.assertEqual((run.status, run.err), (7, b""))
        self.assertEqual(run.text("arguments"), b"-odb|a b||*|--help|")

    def test_a_sole_question_for_help_or_version_is_answered_in_place_of_the_extraction(self):
        launcher = self.installed()
        run = self.run_program("quarnish", "--help", program=launcher)
        self.assertEqual((run.status, run.err, run.text("arguments")), (0, b"", None))
        self.assertIn(b"\n  -config FILE ", run.out)
        run = self.run_program("quarnish", "--version", program=launcher)
        self.assertEqual((run.status, run.err, run.text("arguments")), (0, b"", None))
        self.assertRegex(run.out, rb"^kolvex quarnish \d+\.\d+\.\d+\n$")

    def test_every_other_question_reaches_the_extraction(self):
        launcher = self.installed()
        for arguments in ((), ("-help",), ("-h",), ("--help", "--help"), ("--version", "-odb"), ("--hel",), ("--help ",),
                          ("--man",), ("--complete", "0"), ("",)):
            run = self.run_program("quarnish", *arguments, program=launcher)
            self.assertEqual((run.status, run.out, run.err), (7, b"", b""), arguments)
            self.assertEqual(run.text("arguments").decode(), "".join(a + "|" for a in arguments) or "|")

    def test_pages_are_printed_for_the_man_command(self):
        for arguments, title in (((), "kolvex"), (("import",), "kolvex-import"), (("quarnish",), "kolvex-quarnish")):
            run = self.run_program("--man", *arguments, program="kolvex")
            self.assertEqual((run.status, run.err), (0, b""))
            self.assertTrue(run.out.replace(b"\\-", b"-").startswith(f'.TH "{title}" 1 '.encode()), run.out[:40])
        run = self.run_program("--man", "ls", program="kolvex")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertIn(b"'ls' is not a kolvex command", run.err)

    def test_a_question_of_a_shell_that_makes_no_sense_says_nothing(self):
        for arguments in ((), ("x",), ("2", "a"), ("-1", "a"), ("1", "ls"), ("1", "../bin/sh")):
            run = self.run_program("--complete", *arguments, program="kolvex")
            self.assertEqual((run.out.replace(b"nothing\n", b""), run.err), (b"", b""), arguments)

    def test_a_signal_is_the_programs_own(self):
        run = self.run_program("quarnish", program=self.installed("#!/bin/sh\nkill -TERM $$\n"))
        self.assertEqual(run.status, -signal.SIGTERM)

    def test_a_program_beside_the_launcher_serves_too(self):
        run = self.run_program("quarnish", "x", program=self.installed(folder="bin"))
        self.assertEqual(run.status, 7)

    def test_the_launcher_is_found_through_a_link(self):
        os.symlink(self.installed(), self.path("link"))
        self.assertEqual(self.run_program("quarnish", program=str(self.path("link"))).status, 7)

    def test_a_missing_program_is_named(self):
        launcher = self.installed()
        os.remove(self.path("prefix/libexec/kolvex/quarnish"))
        run = self.run_program("quarnish", program=launcher)
        self.assertEqual(run.status, 127)
        self.assertIn(b"the program of 'quarnish' is not installed with", run.err)

    def test_a_program_that_cannot_run_is_named(self):
        run = self.run_program("quarnish", program=self.installed(mode=stat.S_IRUSR))
        self.assertEqual(run.status, 126)
        self.assertIn(b"quarnish cannot be run: Permission denied", run.err)

    def test_the_extraction_runs_through_it(self):
        run = self.run_program("quarnish", "-help", program="kolvex")
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertTrue(run.out.startswith(b" Program to open an output database"))


class InstalledLauncherTest(ProgramTest):
    def setUp(self):
        super().setUp()
        os.makedirs(self.path("prefix/bin"))
        shutil.copy(BIN / "kolvex", self.path("prefix/bin/kolvex"))
        self.launcher = str(self.path("prefix/bin/kolvex"))

    def put(self, place):
        os.makedirs(self.path(place).parent, exist_ok=True)
        self.write(place, SAY_WHERE)
        self.path(place).chmod(0o755)

    def test_a_stranger_of_the_same_name_beside_it_is_never_started(self):
        self.put("prefix/bin/import")
        self.put("prefix/libexec/kolvex/quarnish")
        run = self.run_program("import", program=self.launcher)
        self.assertEqual((run.status, run.out), (127, b""))
        self.assertIn(b"the program of 'import' is not installed with", run.err)

    def test_its_own_program_is_started_by_its_full_path(self):
        self.put("prefix/bin/import")
        self.put("prefix/libexec/kolvex/import")
        run = self.run_program("import", program=self.launcher)
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertEqual(run.out.decode().strip(), os.path.realpath(self.path("prefix/libexec/kolvex/import")))

    def test_a_directory_is_no_program(self):
        os.makedirs(self.path("prefix/libexec/kolvex/import"))
        self.assertEqual(self.run_program("import", program=self.launcher).status, 127)

    def test_the_search_path_does_not_matter(self):
        self.put("elsewhere/quarnish")
        run = self.run_program("quarnish", program=self.launcher, env={"PATH": str(self.path("elsewhere"))})
        self.assertEqual(run.status, 127)
