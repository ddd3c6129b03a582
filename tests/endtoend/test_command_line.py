"""The command line of the extraction: what it takes, what it refuses, byte for byte."""
import os
import resource

from support import FAILED, ProgramTest, small_database

USAGE = b""" Program to open an output database and extract output parameters
 from the database and write them to an ASCII file.
 Usage: kolvex quarnish -odb <odb_filename> 
                                 -config <config_filename> 
                                 -elset(optional) <elsetName> 
 Requirements:
 1. -odb   : Name of the output database.
 2. -config: Name of the configuration file. 
 3. -elset : Name of the assembly level element set.
             Search will be done only for element 
             belonging to this set.
             If this parameter is not provided, search 
             will be performed over the entire model.
 4. -help  : Print usage
"""


class CommandLineTest(ProgramTest):
    def setUp(self):
        super().setUp()
        small_database(self.path("model.odb"))
        self.config("EXTRACT_ALL EXTRACT_FIELD")

    def assert_outcome(self, run, status, out, err):
        self.assertEqual((run.status, run.out, run.err), (status, out, err))

    def assert_no_results(self, run):
        self.assertIsNone(run.text("params.txt"))
        self.assertIsNone(run.text("paramsdone.txt"))

    def assert_complete(self, run):
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertEqual(run.text("paramsdone.txt"), b"Done\n")
        self.assertEqual(run.text("params.txt"),
                         b"Step_1__Frame_1__NT__max\t1.23457e+006\nStep_1__Frame_1__NT__min\t20\n")

    def test_complete_run_writes_records_then_the_marker(self):
        run = self.run_program("-odb", "model.odb", "-config", "config.txt")
        self.assert_complete(run)
        self.assertEqual(run.out, b"Processing Step: Step-1\nProcessing Frame: Increment 1\n")

    def test_no_arguments_ask_for_the_database(self):
        run = self.run_program()
        self.assert_outcome(run, 1, USAGE, b"**ERROR** output database name is not provided\n")
        self.assert_no_results(run)

    def test_missing_configuration_option_is_asked_for(self):
        run = self.run_program("-odb", "model")
        self.assert_outcome(run, 1, USAGE, b"**ERROR** configuration file name is not provided\n")
        self.assert_no_results(run)

    def test_missing_database_option_is_asked_for_before_the_configuration_is_read(self):
        self.write("config.txt", "ODB EXTRACTIONS\nPERCENTAGE\n")
        run = self.run_program("-config", "config.txt")
        self.assert_outcome(run, 1, USAGE, b"**ERROR** output database name is not provided\n")

    def test_missing_database_file_is_named(self):
        run = self.run_program("-odb", "other", "-config", "config.txt")
        self.assert_outcome(run, 1, b"", b"**ERROR** output database  other.odb does not exist\n\n")
        self.assert_no_results(run)

    def test_missing_configuration_file_is_named(self):
        run = self.run_program("-odb", "model", "-config", "other.txt")
        self.assert_outcome(run, 1, b"", b"**ERROR** configuration file other.txt does not exist\n\n")

    def test_configuration_name_is_not_completed(self):
        run = self.run_program("-odb", "model", "-config", "config")
        self.assert_outcome(run, 1, b"", b"**ERROR** configuration file config does not exist\n\n")

    def test_configuration_that_cannot_be_opened_leaves_the_defaults(self):
        os.mkdir(self.path("folder"))
        run = self.run_program("-odb", "model", "-config", "folder")
        self.assert_outcome(run, 0, b"Unable to open fileProcessing Step: Step-1\n", b"")
        self.assertEqual((run.text("params.txt"), run.text("paramsdone.txt")), (b"", b"Done\n"))

    def test_configuration_from_a_pipe_or_a_device_is_not_read(self):
        os.mkfifo(self.path("pipe"))
        for configuration in ("pipe", "/dev/zero"):
            run = self.run_program("-odb", "model", "-config", configuration)
            self.assert_outcome(run, 0, b"Unable to open fileProcessing Step: Step-1\n", b"")

    def test_a_line_that_nobody_wrote_is_refused_before_anything_is_written(self):
        longest = 1 << 20
        start = b"ODB EXTRACTIONS\nEXTRACT_MASS\n"
        for size, ends in ((longest, (b"", b"\n", b"\nPERCENTAGE=1")), (longest + 1, (b"", b"\n")), (1 << 30, (b"",))):
            for end in ends:
                with open(self.path("config.txt"), "wb") as file:
                    file.write(start)
                    file.truncate(len(start) + size)
                    file.seek(len(start) + size)
                    file.write(end)
                limits = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_AS, (1 << 29, 1 << 29))}
                run = self.run_program("-odb", "model", "-config", "config.txt", **limits)
                if size == longest:
                    self.assertEqual(run.status, 0, run.err)
                    continue
                self.assert_outcome(run, 1, b"", b"**ERROR** line 3 of the configuration file config.txt is longer than 1 MiB\n")
                self.assertFalse(self.path("paramsdone.txt").exists())

    def test_model_and_model_odb_name_the_same_database(self):
        self.assert_complete(self.run_program("-odb", "model", "-config", "config.txt"))

    def test_a_name_that_contains_odb_is_opened_as_given(self):
        os.rename(self.path("model.odb"), self.path("model.odb.old"))
        self.assert_complete(self.run_program("-odb", "model.odb.old", "-config", "config.txt"))

    def test_help_prints_the_usage(self):
        run = self.run_program("-help")
        self.assert_outcome(run, 0, USAGE, b"")

    def test_help_ends_the_scan(self):
        run = self.run_program("-h", "-odb", "missing")
        self.assert_outcome(run, 0, USAGE, b"")

    def test_help_after_a_valid_database_validates_the_database_first(self):
        self.assert_outcome(self.run_program("-odb", "model", "-help"), 0, USAGE, b"")
        run = self.run_program("-odb", "x", "-help")
        self.assert_outcome(run, 1, b"", b"**ERROR** output database  x.odb does not exist\n\n")

    def test_arguments_are_validated_in_their_order(self):
        run = self.run_program("-config", "none.txt", "-odb", "none")
        self.assert_outcome(run, 1, b"", b"**ERROR** configuration file none.txt does not exist\n\n")
        run = self.run_program("-config", "config.txt", "-odb", "none")
        self.assert_outcome(run, 1, b"", b"**ERROR** output database  none.odb does not exist\n\n")

    def test_only_the_first_two_characters_of_an_option_count(self):
        self.assert_complete(self.run_program("-oops", "model", "-canary", "config.txt"))

    def test_an_option_takes_the_next_argument_whatever_it_is(self):
        run = self.run_program("-oops", "-config", "config.txt")
        self.assert_outcome(run, 1, b"", b"**ERROR** output database  -config.odb does not exist\n\n")

    def test_unknown_arguments_are_passed_over(self):
        self.assert_complete(self.run_program("x", "-verbose", "--odb", "-odb", "model", "", "-c", "config.txt", "y"))

    def test_a_later_option_replaces_an_earlier_one(self):
        self.write("empty.txt", "")
        self.assert_complete(self.run_program("-odb", "model", "-c", "empty.txt", "-c", "config.txt"))

    def test_an_option_without_its_value_is_refused(self):
        for option in ("-odb", "-config", "-elset"):
            with self.subTest(option):
                run = self.run_program("-odb", "model", "-c", "config.txt", option)
                self.assert_outcome(run, 1, USAGE, b"**ERROR** option %s needs a value\n" % option.encode())
                self.assert_no_results(run)

    def test_an_absent_element_set_ends_the_run_with_status_0_and_no_files(self):
        run = self.run_program("-odb", "model", "-config", "config.txt", "-elset", "NO SET")
        self.assert_outcome(run, 0, b"", b"An assembly level elset NO SET does not exist in the output database "
                            b":model.odb\n")
        self.assert_no_results(run)

    def test_a_node_set_is_no_element_set(self):
        run = self.run_program("-odb", "model", "-config", "config.txt", "-elset", "TIP")
        self.assertEqual((run.status, run.out), (0, b""))
        self.assertIn(b"An assembly level elset TIP does not exist", run.err)

    def test_an_element_set_that_exists_changes_nothing(self):
        self.assert_complete(self.run_program("-odb", "model", "-config", "config.txt", "-elset", "ALL ELEMENTS"))

    def test_percentage_without_a_value_ends_the_run_before_any_output(self):
        self.write("config.txt", "ODB EXTRACTIONS\nEXTRACT_FIELD\n  PERCENTAGE 5\n")
        self.write("paramsdone.txt", "Done\n")
        run = self.run_program("-odb", "model", "-config", "config.txt")
        self.assert_outcome(run, 1, b"", b"**ERROR** no value for PERCENTAGE in the line:   PERCENTAGE 5\n")
        self.assertIsNone(run.text("params.txt"))

    def test_a_database_that_cannot_be_read_is_reported_with_status_0(self):
        self.write("model.odb", "no database")
        run = self.run_program("-odb", "model", "-config", "config.txt")
        self.assert_outcome(run, 0, b"", b"model.odb: is not a database: it is not an HDF5 file\n" + FAILED)
        self.assert_no_results(run)
