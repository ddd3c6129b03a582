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
        """Two steps, the second with rows that are damaged."""
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            for name in ("Good", "Bad"):
                block = odb.field(odb.step(name), "NT", 2, [("nodes", np.ones((1, 3), "f4"))])["blocks/0"]
                del block["data"]
                block.create_dataset("data", data=np.ones((1, 3), "f4"), chunks=(1, 3), fletcher32=True)
                offset = block["data"].id.get_chunk_info(0).byte_offset
        with open(self.path("model.odb"), "r+b") as raw:
            raw.seek(offset)
            raw.write(b"\xff")

    def test_an_exception_during_the_walk_leaves_a_partial_file_without_marker_and_status_0(self):
        self.broken_database()
        self.write("paramsdone.txt", "Done\n")
        run = self.extract()
        self.assertEqual(run.status, 0)
        self.assertEqual(run.err, b"model.odb: /steps/Bad/fields/NT/blocks/0/data: slab 0 cannot be read (the packed "
                         b"numbers do not match their checksum)\n" + FAILED)
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

    def test_a_type_outside_the_tables_is_a_scalar_over_the_model_and_nothing_over_sets(self):
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            odb.location("elements", "centroid", elementLabels=[7, 8])
            odb.file["assembly/nodeSets/TIP/I-1"] = np.array([3, 1], "i4")
            odb.file["assembly/elementSets/ROOT/I-1"] = np.array([7], "i4")
            step = odb.step("Step-1")
            on_nodes = np.array([[[1, 20], [30, 4], [5, 6]]], "f4")
            odb.field(step, "A", 4, [("nodes", on_nodes)], labels=["X", "Y"])
            odb.field(step, "B", -7, [("elements", np.array([[2.5, -1]]))])
            # A block of another type than its field's, the last one, decides.
            mixed = odb.field(step, "C", 3, [("nodes", np.ones((1, 3, 3), "f4")), ("elements", np.array([[7, 9]], "f4"))])
            mixed["blocks/1"].attrs["type"] = 10
            odb.field(step, "NT", 2, [("nodes", np.array([[20, 30, 40]], "f4"))])
        self.config("EXTRACT_ALL EXTRACT_FIELD_SETS ENGINEERING_MAX", "PERCENTAGE = 70")
        run = self.extract()
        self.assertEqual((run.status, run.err), (0, b""))
        # Of a node's numbers all count for the extremes and the last for the engineering ones; 70 % of three values are
        # two, and over nodes in single precision the second smallest is read: 20, 4, 6. Of 2.5 and -1 it is the largest.
        # The vectors of ones before the 7 and the 9 have a length of 1.73205.
        expected = ["A__max\t30", "A__min\t1", "A__enggmax\t6", "B__max\t2.5", "B__min\t-1", "B__enggmax\t2.5",
                    "C__max\t9", "C__min\t1.73205", "C__enggmax\t9",
                    "NT__max\t40", "NT__min\t20", "NT__enggmax\t30"]
        whole_model = ["Step_1__Frame_1__" + record for record in expected]
        over_sets = ["Step_1__Frame_1__TIP__C__mag__max\t1.73205", "Step_1__Frame_1__TIP__C__mag__min\t1.73205",
                     "Step_1__Frame_1__TIP__C__mag__enggmax\t1.73205", "Step_1__Frame_1__TIP__NT__max\t40",
                     "Step_1__Frame_1__TIP__NT__min\t20", "Step_1__Frame_1__TIP__NT__enggmax\t40"]
        self.assertEqual(run.text("params.txt").decode().splitlines(),
                         whole_model[:9] + over_sets[:3] + whole_model[9:] + over_sets[3:])

    def test_a_type_outside_the_tables_is_listed_as_a_scalar_everywhere(self):
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            odb.file["assembly/nodeSets/TIP/I-1"] = np.array([3], "i4")
            odb.field(odb.step("Step-1"), "A", 4, [("nodes", np.zeros((1, 3, 2), "f4"))])
        self.config("EXTRACT_ALL EXTRACT_FIELD_SETS DO_NOT_COMPUTE_VALUES")
        run = self.extract()
        self.assertEqual(run.text("params.txt"), b"Step_1__Frame_1__A__max\t0\nStep_1__Frame_1__A__min\t0\n"
                         b"Step_1__Frame_1__TIP__A__max\t0\nStep_1__Frame_1__TIP__A__min\t0\n")

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
