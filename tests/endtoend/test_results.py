"""The result files: complete under a marker, or no marker."""
import os

import numpy as np

from support import FAILED, Database, ProgramTest, small_database


class ResultsTest(ProgramTest):
    def setUp(self):
        super().setUp()
        small_database(self.path("model.odb"))
        self.config("EXTRACT_ALL EXTRACT_FIELD")

    def extract(self, **options):
        return self.run_program("-odb", "model", "-config", "config.txt", **options)

    def broken_database(self):
        """Two steps, the second with a block that holds a row too few."""
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            for name, rows in (("Good", 3), ("Bad", 2)):
                odb.field(odb.step(name), "NT", 2, [("nodes", np.ones((1, rows), "f4"))])

    def test_an_exception_during_the_walk_leaves_a_partial_file_without_marker_and_status_0(self):
        self.broken_database()
        self.write("paramsdone.txt", "Done\n")
        run = self.extract()
        self.assertEqual(run.status, 0)
        self.assertEqual(run.err, b"model.odb: /steps/Bad/fields/NT/blocks/0/data: holds 2 rows, its location has 3\n" +
                         FAILED)
        self.assertEqual(run.text("params.txt"), b"Good__Frame_1__NT__max\t1\nGood__Frame_1__NT__min\t1\n")
        self.assertIsNone(run.text("paramsdone.txt"))

    def test_frames_of_a_field_that_are_listed_out_of_order_keep_their_slabs(self):
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1])
            field = odb.field(odb.step("Step-1", increments=(1, 2, 3)), "NT", 2, [("nodes", np.array([[30], [10]], "f4"))])
            field["frames"] = np.array([2, 0], "i4")
        self.assertEqual(self.extract().text("params.txt"),
                         b"Step_1__Frame_1__NT__max\t10\nStep_1__Frame_1__NT__min\t10\n"
                         b"Step_1__Frame_3__NT__max\t30\nStep_1__Frame_3__NT__min\t30\n")

    def test_a_frame_that_a_field_lists_twice_is_an_error(self):
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1])
            field = odb.field(odb.step("Step-1"), "NT", 2, [("nodes", np.array([[30], [10]], "f4"))])
            field["frames"] = np.array([0, 0], "i4")
        self.assertEqual(self.extract().err, b"model.odb: /steps/Step-1/fields/NT/frames: frame 0 occurs twice\n" + FAILED)

    def test_old_results_are_replaced(self):
        self.write("params.txt", "x" * 10000)
        self.write("paramsdone.txt", "old")
        run = self.extract()
        self.assertEqual(run.text("params.txt"),
                         b"Step_1__Frame_1__NT__max\t1.23457e+006\nStep_1__Frame_1__NT__min\t20\n")
        self.assertEqual(run.text("paramsdone.txt"), b"Done\n")

    def test_a_full_disk_leaves_no_marker(self):
        os.symlink("/dev/full", self.path("params.txt"))
        self.write("paramsdone.txt", "Done\n")
        run = self.extract()
        self.assertEqual((run.status, run.err), (1, b"**ERROR** params.txt could not be written completely\n"))
        self.assertIsNone(run.text("paramsdone.txt"))

    def test_a_result_file_that_cannot_be_made_leaves_no_marker(self):
        os.mkdir(self.path("params.txt"))
        run = self.extract()
        self.assertEqual((run.status, run.err), (1, b"**ERROR** params.txt could not be written completely\n"))
        self.assertIsNone(run.text("paramsdone.txt"))

    def test_the_locale_of_the_user_changes_nothing(self):
        self.config("EXTRACT_ALL EXTRACT_FIELD ENGINEERING_MAX PERCENTAGE=12.5")
        plain = self.extract(env={"LC_ALL": "C"}).text("params.txt")
        german = self.extract(env={"LC_ALL": "de_DE.UTF-8"}).text("params.txt")
        self.assertEqual(plain, german)
