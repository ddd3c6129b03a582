"""`kolvex import` as a user runs it: streams, statuses, and what stands under the final name."""
import os
import pty
import random
import resource
import re
import struct
import subprocess
import time

from expanded import expanded
from support import ProgramTest

HEADING = "    1C\n    1Uthree nodes                                                         \n"
NODES = ("    2C                             3                                     1\n"
         " -1         1 0.00000E+00 0.00000E+00 0.00000E+00\n"
         " -1         2 1.00000E+00 0.00000E+00 0.00000E+00\n"
         " -1         3 2.00000E+00 0.00000E+00 0.00000E+00\n -3\n")
ELEMENTS = ("    3C                             2                                     1\n"
            " -1         1   11    0    1\n -2         1         2\n"
            " -1         2   11    0    1\n -2         2         3\n -3\n")
RESULTS = ("    1PSTEP                         1           1           1          \n"
           "  100CL  101 1.000000000           3                     0    1           1\n"
           " -4  NDTEMP      1    1\n -5  T           1    1    0    0\n"
           " -1         1 2.00000E+01\n -1         2-3.00000E+01\n -1         3 1.23457E+06\n -3\n"
           "    1PSTEP                         2           1           1          \n"
           "  100CL  101 1.000000000           2                     0    1           1\n"
           " -4  STRESS      6    1\n -5  SXX         1    4    1    1\n -5  SYY         1    4    2    2\n"
           " -5  SZZ         1    4    3    3\n -5  SXY         1    4    1    2\n -5  SYZ         1    4    2    3\n"
           " -5  SZX         1    4    3    1\n"
           " -1         1 1.00000E+00 2.00000E+00 3.00000E+00 4.00000E+00 5.00000E+00 6.00000E+00\n"
           " -1         3-1.00000E+00-2.00000E+00-3.00000E+00-4.00000E+00-5.00000E+00-6.00000E+00\n -3\n")
WHOLE = HEADING + NODES + ELEMENTS + RESULTS + " 9999\n"


def binary_whole():
    """The same file in binary: the model, temperatures as floats and stresses as doubles."""
    def header(text, form):
        return text[:-2].encode() + form.encode() + b"\n"

    parts = RESULTS.splitlines(keepends=True)
    temperatures, stresses = parts[:4], parts[8:17]
    return b"".join([
        HEADING.encode(), header(NODES.splitlines(keepends=True)[0], "3"),
        *(struct.pack("<i3d", label, label - 1, 0, 0) for label in (1, 2, 3)),
        header(ELEMENTS.splitlines(keepends=True)[0], "2"),
        *(struct.pack("<6i", label, 11, 0, 1, label, label + 1) for label in (1, 2)),
        temperatures[0].encode(), header(temperatures[1], "2"), "".join(temperatures[2:]).encode(),
        *(struct.pack("<if", *row) for row in ((1, 20), (2, -30), (3, 1.23457e6))),
        stresses[0].encode(), header(stresses[1], "3"), "".join(stresses[2:]).encode(),
        *(struct.pack("<i6d", label, *(sign * i for i in range(1, 7))) for label, sign in ((1, 1), (3, -1))),
        b" 9999\n"])


BINARY = binary_whole()
PRINTED = ("\n     E I G E N V A L U E   O U T P U T\n\n MODE NO    EIGENVALUE                       FREQUENCY\n\n"
           "      1   0.4000000E+02   0.6300000E+01   0.1000000E+01   0.0000000E+00\n\n"
           "                    E I G E N V A L U E    N U M B E R     1\n\n\n"
           " displacements (vx,vy,vz) for set ENDS and time  0.1000000E+01\n\n"
           "         1  1.000000E+00  2.000000E+00  3.000000E+00\n"
           "         3 -1.000000E+00 -2.000000E+00 5.717277-124 L\n\n"
           " stresses (elem, integ.pnt.,sxx,syy,szz,sxy,sxz,syz) for set BARS and time  0.1000000E+01\n\n"
           "         1   1  1.000000E+00  2.000000E+00  3.000000E+00  4.000000E+00  5.000000E+00  6.000000E+00\n"
           "         2   1  1.000000E+00  2.000000E+00  3.000000E+00  4.000000E+00  5.000000E+00  6.000000E+00\n\n"
           " total force (fx,fy,fz) for set ENDS and time  0.1000000E+01\n\n"
           "        1.000000E+00  2.000000E+00  3.000000E+00\n\n"
           " statistics for surface set SIDE and time  0.1000000E+01\n\n"
           "   total surface force (fx,fy,fz) and moment about the origin(mx,my,mz)\n\n"
           "    1.000000E+00  2.000000E+00  3.000000E+00  4.000000E+00  5.000000E+00  6.000000E+00\n")
DECK = "*HEADING\nbars\n*NSET,NSET=Ends\n1,3\n*ELSET,ELSET=Bars,GENERATE\n1,2\n*STEP\nwarm\n*END STEP\n"
MODES = "*STEP\n*FREQUENCY\n1\n*END STEP\n"


class ImportProgramTest(ProgramTest):
    def run_import(self, *arguments, **options):
        return self.run_program("import", *arguments, program="kolvex", **options)

    def test_the_name_of_the_job_is_enough(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        run = self.run_import("job")
        self.assertEqual((run.status, run.err), (0, b""))
        size = self.path("job.odb").stat().st_size
        self.assertRegex(run.out.decode(),
                         rf"^job\.odb: 1 steps, 1 frames, 2 fields, 0 histories, 2 sets, {size} bytes, \d+\.\d\d s\n$")
        self.assertEqual(sorted(p.name for p in self.directory.iterdir()), ["job.frd", "job.inp", "job.odb"])
        with expanded(self.path("job.odb")) as odb:
            self.assertEqual(odb.attrs["title"], b"bars")
            self.assertEqual(odb["steps/Step-1/fields/NT/blocks/0/data"][()].tolist(), [[20, -30, 1234570]])
            self.assertEqual(odb["assembly/nodeSets/Ends/PART-1-1"][()].tolist(), [1, 3])

    def test_the_database_goes_where_it_is_wanted(self):
        os.mkdir(self.path("runs"))
        os.mkdir(self.path("out"))
        self.write("runs/job.frd", WHOLE)
        self.write("other.inp", DECK)
        run = self.run_import("runs/job.frd", "-o", "out/result.odb", "--deck", "other.inp")
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertTrue(run.out.startswith(b"out/result.odb: 1 steps, 1 frames, 2 fields, 0 histories, 2 sets, "))
        self.assertEqual(os.listdir(self.path("out")), ["result.odb"])

    def test_without_a_deck_there_are_no_sets(self):
        self.write("job.frd", WHOLE)
        run = self.run_import("job")
        self.assertEqual(run.status, 0)
        self.assertEqual(run.err, b"job.frd: warning: there is no deck job.inp, so no sets are imported\n")
        self.write("job.inp", "*NSET,NSET=A\n1,?,2x\n")
        self.assertEqual(self.run_import("job").status, 1)
        run = self.run_import("job", "--no-deck")
        self.assertEqual((run.status, run.err), (0, b""))

    def test_a_deck_that_is_asked_for_must_exist(self):
        self.write("job.frd", WHOLE)
        run = self.run_import("job", "--deck", "none.inp")
        self.assertEqual((run.status, run.out, run.err), (1, b"", b"none.inp: error: the deck does not exist\n"))

    def test_storage_can_be_packed_and_checked(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        self.assertEqual(self.run_import("job", "--compress", "--checksum").status, 0)
        with expanded(self.path("job.odb")) as odb:
            data = odb["steps/Step-1/fields/S/blocks/0/data"]
            self.assertEqual((data.compression, data.fletcher32), ("gzip", True))
            self.assertEqual(data[0, 0].tolist(), [1, 2, 3, 4, 6, 5])

    def test_wrong_usage_has_its_own_status(self):
        for arguments in ((), ("a", "b"), ("--no-such-option", "a"), ("a", "-o")):
            run = self.run_import(*arguments)
            self.assertEqual((run.status, run.out), (2, b""))
            self.assertNotEqual(run.err, b"")

    def test_help_and_version_go_to_standard_output(self):
        run = self.run_import("--help")
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertIn(b"--deck", run.out)
        run = self.run_import("--version")
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertRegex(run.out, rb"^kolvex import \d+\.\d+\.\d+\n$")

    def assert_refused(self, message, *arguments):
        run = self.run_import(*(arguments or ("job",)))
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertEqual(run.err.decode().splitlines()[-1], message)
        self.assertFalse(self.path("job.odb").exists())

    def assert_unknown(self):
        """What other formats begin with follows, or that they are not in this build."""
        run = self.run_import("job")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertRegex(run.err.decode(), r'(?m)^job\.frd: error: not a result file of a known format \(expected calculix: "    1C" on line 1.*\n\Z')
        self.assertFalse(self.path("job.odb").exists())

    def test_what_is_no_result_file_is_refused(self):
        self.assert_refused("job: error: the file does not exist, nor does job.frd")
        self.write("job.frd", "")
        self.assert_refused("job.frd: error: the file is empty")
        self.write("job.frd", "hello\n")
        self.assert_unknown()
        self.write("job.frd", b"\x89HDF\r\n\x1a\n" + bytes(1000))
        self.assert_unknown()
        self.write("job.frd", "    1C\n" + "x" * 3000000)
        self.assert_refused("job.frd:2: error: the line is too long")
        os.remove(self.path("job.frd"))
        os.mkdir(self.path("job.frd"))
        self.assert_refused("job.frd: error: is not a regular file")

    def test_a_database_is_not_imported(self):
        self.write("x.odb", b"\x89HDF\r\n\x1a\n" + bytes(1000))
        self.assert_refused("x.odb: error: this is a database already; it needs no import", "x.odb")
        self.assert_refused("y.odb: error: the file does not exist", "y.odb")

    def test_damage_is_named_with_its_line(self):
        self.write("job.frd", WHOLE.replace("-3.00000E+01", "-3.0?000E+01"))
        self.assert_refused('job.frd:19: error: "-3.0?000E+01" is not a number', "job", "--strict")
        run = self.run_import("job")
        self.assertEqual(run.status, 0)
        self.assertIn(b'job.frd:19: warning: "-3.0?000E+01" is not a number; the block is left out\n', run.err)
        os.remove(self.path("job.odb"))
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK.replace("1,2\n", "1,2,x\n"))
        self.assert_refused('job.inp:6: error: "x" is not a label')

    def test_links_in_a_circle_are_named(self):
        self.write("job.frd", WHOLE)
        self.path("job.sta").symlink_to("job.sta")
        self.assertEqual(self.run_import("job").status, 0)  # nothing is known of increments then
        self.path("job.frd").unlink()
        self.path("job.frd").symlink_to("job.frd")
        self.write("job.inp", DECK)
        self.write("job.dat", PRINTED)
        run = self.run_import("job")
        self.assertEqual((run.status, run.err), (1, b"job.frd: error: Too many levels of symbolic links\n"))

    def test_a_field_without_a_name_is_named_by_its_line(self):
        self.write("job.frd", WHOLE.replace(" -4  STRESS ", " -4         ").replace(" -4  NDTEMP ", " -4         "))
        run = self.run_import("job")
        self.assertRegex(run.err, rb"job\.frd:\d+: warning: the field has no name; the block is left out\n")
        self.assertEqual(run.status, 0)
        self.assertEqual(self.run_import("job", "--strict").status, 1)

    def test_too_little_memory_is_told_with_the_name(self):
        self.write("job.frd", WHOLE)
        endings = set()
        for limit in range(1 << 20, 6 << 20, 1 << 18):
            run = self.run_import("job", preexec_fn=lambda limit=limit: resource.setrlimit(resource.RLIMIT_DATA, (limit, limit)))
            endings.add(run.err.splitlines()[-1] if run.err else b"")
        self.assertIn(b"job: error: out of memory", endings)

    def test_a_failure_leaves_the_old_database_alone(self):
        self.write("job.frd", WHOLE.replace(" 9999", "what?"))
        self.write("job.odb", "old")
        run = self.run_import("job")
        self.assertEqual(run.status, 1)
        self.assertEqual(run.text("job.odb"), b"old")
        self.assertEqual(sorted(p.name for p in self.directory.iterdir()), ["job.frd", "job.odb"])

    def test_a_database_replaces_an_old_one(self):
        self.write("job.frd", WHOLE)
        self.write("job.odb", "old")
        self.assertEqual(self.run_import("job").status, 0)
        self.assertNotEqual(self.path("job.odb").read_bytes(), b"old")

    def test_the_database_never_replaces_what_it_is_made_of(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        for name in ("job.frd", "job.inp", "./job.frd"):
            self.assert_refused(name + ": error: the database would replace its own source", "job", "-o", name)
        self.assertEqual(self.path("job.frd").read_text(), WHOLE)

    def test_an_output_that_cannot_be_written_is_named(self):
        self.write("job.frd", WHOLE)
        run = self.run_import("job", "-o", "no/such/directory/job.odb")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertTrue(run.err.splitlines()[-1].startswith(b"no/such/directory/job.odb: "), run.err)

    def test_a_cut_at_any_place_is_told(self):
        self.check_cuts(WHOLE.encode(), len(HEADING + NODES + ELEMENTS) - 1)

    def test_a_cut_of_a_binary_file_is_told(self):
        self.check_cuts(BINARY, BINARY.index(b"    1PSTEP"))

    def check_cuts(self, whole, model):
        """A file that ends before its byte `model` cannot be imported, any other as far as it goes."""
        for cut in range(0, len(whole) - 1, 7):
            self.write("job.frd", whole[:cut])
            listed = self.run_import("job", "--no-deck", "--list")
            run = self.run_import("job", "--no-deck")
            if cut < model:
                self.assertEqual((run.status, run.out), (1, b""), cut)
                self.assertRegex(run.err, rb"^job\.frd(:\d+)?: error: ")
                self.assertFalse(self.path("job.odb").exists())
                continue
            self.assertEqual(run.status, 0, (cut, run.err))
            self.assertRegex(run.err, rb"^job\.frd:\d+: warning: the file is truncated here; .*\n$")
            self.assertRegex(run.out.splitlines()[-1], rb"^incomplete: the results end after ")
            self.assertTrue(listed.out.splitlines()[0].endswith(b", cut off"), (cut, listed.out))
            os.remove(self.path("job.odb"))

    def test_a_binary_file_gives_the_database_of_the_text(self):
        databases = []
        for whole in (WHOLE, BINARY):
            self.write("job.frd", whole)
            run = self.run_import("job", "--no-deck")
            self.assertEqual((run.status, run.err), (0, b""))
            databases.append(run.text("job.odb"))
            time.sleep(1.1)  # what came in later is the same, too
        self.assertEqual(*databases)

    def test_a_list_writes_nothing(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        run = self.run_import("job", "--list", "--field", "nt")
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertEqual(run.out.decode().splitlines(), [
            "job.frd: 3 nodes, 2 elements, ASCII results", "",
            "set   of        members", "Ends  nodes     2", "Bars  elements  2", "",
            "step    frame  value  description", "Step-1  1      1      Increment 1: Step Time = 1.0000", "",
            "step    field  source  kind    components  rows  frames",
            "Step-1  NT     NDTEMP  scalar              3     1"])
        self.assertEqual(sorted(p.name for p in self.directory.iterdir()), ["job.frd", "job.inp"])

    def test_a_selection_of_nothing_lists_what_there_is(self):
        self.write("job.frd", WHOLE)
        for arguments in (("--field", "U"), ("--step", "2"), ("--list", "--frames", "5")):
            run = self.run_import("job", "--no-deck", *arguments)
            self.assertEqual((run.status, run.out), (1, b""))
            self.assertTrue(run.err.endswith(b"; the file holds step 1 (frames 1) with the fields NT, S\n"), run.err)
            self.assertFalse(self.path("job.odb").exists())
        self.assertEqual(self.run_import("job", "--frames", "some").status, 2)

    def test_progress_is_shown_on_a_terminal_only(self):
        self.write("job.frd", WHOLE)
        self.assertEqual(self.run_import("job", "--no-deck").err, b"")
        try:
            ours, theirs = pty.openpty()
        except OSError as error:
            self.skipTest(f"there are no terminals here: {error}")
        program = os.path.join(os.environ["KOLVEX_BIN"], "kolvex")
        status = subprocess.run([program, "import", "job"], cwd=self.directory, stdout=subprocess.DEVNULL,
                                stderr=theirs, timeout=60, check=False).returncode
        os.close(theirs)
        shown = os.read(ours, 4096)
        os.close(ours)
        self.assertEqual(status, 0)
        warning, progress = shown.split(b"\r\n")
        self.assertIn(b"there is no deck", warning)
        self.assertEqual(progress, b"\rjob.frd: writing the database\x1b[K\r\x1b[K")

    def test_results_are_known_whatever_their_name(self):
        self.write("results", WHOLE)
        self.write("results.inp", DECK)
        self.assertRegex(self.run_import("results").out, rb"^results\.odb: 1 steps, 1 frames, 2 fields, 0 histories, 2 sets, ")
        self.path("results").rename(self.path("run.7"))
        self.assertRegex(self.run_import("run.7", "--no-deck").out, rb"^run\.odb: ")

    def test_a_run_that_left_nothing_is_told_so_alone(self):
        self.write("job.inp", DECK)
        self.write("job.dat", b"")
        run = self.run_import("job")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertEqual(run.err, b"job.frd: error: the run left no results: this file does not exist, and job.dat holds no tables\n")
        self.write("job.frd", b"")
        self.assertRegex(self.run_import("job").err, rb"^job\.frd: error: the run left no results: this file is empty, and .*\n$")

    def test_flipped_bytes_never_crash_it(self):
        self.check_flips(WHOLE.encode(), b"\n\r\0 -*,.=0159EXx\xff")

    def test_flipped_bytes_of_a_binary_file_never_crash_it(self):
        self.check_flips(BINARY, b"\n\0\1 123\x7f\x80\xff")

    def test_flipped_bytes_of_printed_tables_never_crash_it(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK)
        chance = random.Random(20240301)
        statuses = set()
        for _ in range(300):
            text = bytearray(PRINTED, "ascii")
            for _ in range(chance.randint(1, 4)):
                text[chance.randrange(len(text))] = chance.choice(b"\n\r\0 -*,.=0159EXx\xff")
            self.write("job.dat", bytes(text))
            run = self.run_import("job", *chance.choice([(), ("--list",), ("--strict",)]))
            statuses.add(run.status)
            self.assertIn(run.status, (0, 1), (bytes(text), run.err))
            if run.status == 1:
                self.assertRegex(run.err.splitlines()[-1], rb"^job\.dat:\d+: error: ", bytes(text))
            self.assertEqual(self.path("job.odb").exists(), run.status == 0 and run.out.startswith(b"job.odb"))
            if self.path("job.odb").exists():
                os.remove(self.path("job.odb"))
        self.assertEqual(statuses, {0, 1})

    def test_printed_tables_may_end_anywhere(self):
        self.write("job.frd", WHOLE)
        self.write("job.inp", DECK + MODES)
        whole = 0
        for cut in range(0, len(PRINTED), 11):
            self.write("job.dat", PRINTED[:cut])
            run = self.run_import("job")
            self.assertEqual(run.status, 0, run.err)
            # At the end of a line the sets of the deck tell whether rows are missing. Blanks are nothing that is.
            if not run.err and (PRINTED[:cut].rstrip(" ").endswith("\n") or cut == 0):
                whole += 1
                continue
            self.assertRegex(run.err, rb"^job\.dat:\d+: warning: the file is truncated here; ")
            self.assertRegex(run.out.splitlines()[-1], rb"^incomplete: the results end after step 1, time 1")
            self.assertEqual(self.run_import("job", "--strict").status, 1)
        self.assertGreater(whole, 3)

    def test_a_long_line_of_a_table_ends_the_reading(self):
        self.write("job.frd", WHOLE)
        self.write("job.dat", PRINTED + "1 " * 1_500_000)
        run = self.run_import("job", "--no-deck")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertRegex(run.err, rb"^job\.dat:\d+: error: the line is too long")

    def check_flips(self, whole, alphabet):
        chance = random.Random(20240229)
        statuses = set()
        for _ in range(300):
            frd, inp = bytearray(whole), bytearray(DECK, "ascii")
            for _ in range(chance.randint(1, 4)):
                text = frd if chance.random() < 0.8 else inp
                text[chance.randrange(len(text))] = chance.choice(alphabet)
            self.write("job.frd", bytes(frd))
            self.write("job.inp", bytes(inp))
            run = self.run_import("job", *chance.choice([(), ("--frames", "last"), ("--list",)]))
            statuses.add(run.status)
            self.assertIn(run.status, (0, 1), (bytes(frd), bytes(inp), run.err))
            if self.path("job.odb").exists():
                self.assertEqual(run.status, 0)
                os.remove(self.path("job.odb"))
            if run.status == 1:
                self.assertTrue(re.match(rb"job\.(frd|inp)(:\d+)?: error: ", run.err.splitlines()[-1]), run.err)
        self.assertEqual(statuses, {0, 1})

    def test_a_long_line_ends_the_reading(self):
        for whole in (WHOLE.encode(), BINARY):
            at = whole.index(b" -4")
            self.write("job.frd", whole[:at] + b" " * 3_000_000 + whole[at:])
            run = self.run_import("job", "--no-deck")
            self.assertEqual((run.status, run.out), (1, b""))
            self.assertRegex(run.err, rb"(?m)^job\.frd:\d+: error: the line is too long")
