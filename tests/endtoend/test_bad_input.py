"""Files that are no database, or a damaged one: the message names the file and the object, nothing crashes."""
import os

import h5py
import numpy as np

from support import FAILED, Database, ProgramTest, set_attributes, small_database, text


class BadFileTest(ProgramTest):
    """What cannot be opened at all: no result file is made."""

    def assert_refused(self, message):
        self.config("EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS EXTRACT_HISTORY EXTRACT_MASS")
        run = self.run_program("-odb", "model.odb", "-config", "config.txt")
        self.assertEqual((run.status, run.out), (0, b""))
        self.assertTrue(run.err.endswith(b"\n" + FAILED), run.err)
        self.assertIn(message, run.err.decode())
        self.assertTrue(run.err.startswith(b"model.odb: "), run.err)
        self.assertIsNone(run.text("params.txt"))
        self.assertIsNone(run.text("paramsdone.txt"))

    def test_a_directory(self):
        os.mkdir(self.path("model.odb"))
        self.assert_refused("is a directory, not a database")

    def test_an_empty_file(self):
        self.write("model.odb", "")
        self.assert_refused("the file is empty")

    def test_a_text_file(self):
        self.write("model.odb", "*HEADING\n" * 1000)
        self.assert_refused("is not a database: it is not an HDF5 file")

    def test_another_hdf5_file(self):
        with h5py.File(self.path("model.odb"), "w") as file:
            file["x"] = [1, 2, 3]
        self.assert_refused('is an HDF5 file but not a database: it has no attribute "layout"')

    def test_a_file_of_a_newer_layout(self):
        with h5py.File(self.path("model.odb"), "w", libver=("v110", "v110")) as file:
            file.attrs["layout"] = 4
        self.assert_refused("has layout 4, written by a newer program; this one reads layouts up to 3")

    def test_a_layout_that_does_not_exist(self):
        with h5py.File(self.path("model.odb"), "w") as file:
            file.attrs["layout"] = 0
        self.assert_refused("has layout 0, which does not exist")

    def test_a_layout_that_is_no_number(self):
        with h5py.File(self.path("model.odb"), "w", libver=("v110", "v110")) as file:
            file.attrs["layout"] = text("2")
        self.assert_refused('the attribute "layout" must hold integers')

    def test_an_old_superblock_with_the_new_layout(self):
        with h5py.File(self.path("model.odb"), "w") as file:
            file.attrs["layout"] = 2
        self.assert_refused("must have HDF5 superblock 3, this one has 0")

    def test_a_file_that_goes_on_behind_its_end(self):
        small_database(self.path("model.odb"))
        size = self.path("model.odb").stat().st_size
        with open(self.path("model.odb"), "ab") as file:
            file.write(b"x" * 5000)
        self.assert_refused(f"model.odb: has 5000 bytes after its end at {size}")

    def test_a_file_that_is_still_being_written(self):
        small_database(self.path("model.odb"))
        with open(self.path("model.odb"), "r+b") as file:
            file.seek(11)
            file.write(b"\1")
        self.assert_refused("model.odb: is still being written, or its writer ended without closing it")

    def test_a_truncated_file(self):
        small_database(self.path("model.odb"))
        size = self.path("model.odb").stat().st_size
        for part in (0.999, 0.9, 0.5, 0.1):
            with self.subTest(part):
                small_database(self.path("model.odb"))
                os.truncate(self.path("model.odb"), int(size * part))
                self.assert_refused(f"model.odb: is truncated: {int(size * part)} of its {size} bytes are there")

    def test_a_pipe_does_not_block(self):
        os.mkfifo(self.path("model.odb"))
        self.assert_refused("is not a regular file")


class BadContentTest(ProgramTest):
    """Damage inside: records up to it stay, the marker is missing."""

    def assert_refused(self, change, message, sets=True):
        with Database(self.path("model.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            odb.file["assembly/nodeSets/TIP/I-1"] = np.array([3], "i4")
            step = odb.step("Step-1", increments=(1, 2))
            odb.field(step, "NT", 2, [("nodes", np.ones((2, 3), "f4"))])
            history = step.create_group("history/Node 3")
            set_attributes(history, node=3)
            history["outputs/U1"] = np.zeros((2, 2), "f4")
            change(odb.file)
        self.config("EXTRACT_ALL EXTRACT_FIELD EXTRACT_HISTORY", "EXTRACT_FIELD_SETS" if sets else "")
        run = self.run_program("-odb", "model.odb", "-config", "config.txt")
        self.assertEqual(run.err.decode(), f"model.odb: {message}\n{FAILED.decode()}")
        self.assertEqual(run.status, 0)
        self.assertIsNone(run.text("paramsdone.txt"))

    BLOCK = "/steps/Step-1/fields/NT/blocks/0"

    def replace(self, name, value):
        def change(file):
            del file[name]
            file[name] = value
        return change

    def test_a_block_without_data(self):
        self.assert_refused(lambda f: f.__delitem__(self.BLOCK + "/data"), f"{self.BLOCK}/data: is missing")

    def test_a_block_with_too_few_frames(self):
        self.assert_refused(self.replace(self.BLOCK + "/data", np.ones((1, 3), "f4")),
                            f"{self.BLOCK}/data: holds 1 frames, the block has 2")

    def test_a_block_with_too_many_rows(self):
        self.assert_refused(self.replace(self.BLOCK + "/data", np.ones((2, 4), "f4")),
                            f"{self.BLOCK}/data: holds 4 rows, its location has 3")

    def test_a_block_with_one_dimension(self):
        self.assert_refused(self.replace(self.BLOCK + "/data", np.ones(6, "f4")),
                            f"{self.BLOCK}/data: must have the shape [frames, rows, components]")

    def test_a_block_of_integers(self):
        self.assert_refused(self.replace(self.BLOCK + "/data", np.ones((2, 3), "i4")),
                            f"{self.BLOCK}/data: must hold floats or doubles")

    def test_a_block_that_is_a_group(self):
        def change(file):
            del file[self.BLOCK + "/data"]
            file.create_group(self.BLOCK + "/data")
        self.assert_refused(change, f"{self.BLOCK}/data: must be a data set")

    def test_more_component_labels_than_columns(self):
        self.assert_refused(lambda f: set_attributes(f[self.BLOCK], componentLabels=["1", "2"]),
                            f"{self.BLOCK}/data: holds 1 components, there are 2 component labels")

    def test_a_tensor_without_labels_that_is_too_wide(self):
        def change(file):
            file[self.BLOCK].attrs["type"] = 9
            self.replace(self.BLOCK + "/data", np.ones((2, 3, 4), "f4"))(file)
        self.assert_refused(change, f"{self.BLOCK}/data: 4 components do not fit type 9")

    def test_a_frame_out_of_range(self):
        self.assert_refused(lambda f: f.__setitem__(self.BLOCK + "/frames", np.array([0, 2], "i4")),
                            f"{self.BLOCK}/frames: frame 2 is out of range 0..1")

    def test_a_frame_named_twice(self):
        self.assert_refused(lambda f: f.__setitem__(self.BLOCK + "/frames", np.array([1, 1], "i4")),
                            f"{self.BLOCK}/frames: frame 1 occurs twice")

    def test_a_frame_that_the_field_does_not_have(self):
        def change(file):
            file["/steps/Step-1/fields/NT/frames"] = np.array([0], "i4")
            file[self.BLOCK + "/frames"] = np.array([0, 1], "i4")
        self.assert_refused(change, f"{self.BLOCK}/frames: the field does not exist in frame 1")

    def test_an_id_without_a_location(self):
        self.assert_refused(lambda f: set_attributes(f[self.BLOCK], location="7"),
                            f'{self.BLOCK}: there is no location "7"')

    def test_a_location_without_its_labels(self):
        self.assert_refused(lambda f: f.__delitem__("/locations/nodes/nodeLabels"),
                            "/locations/nodes/nodeLabels: is missing")

    def test_a_position_that_does_not_exist(self):
        self.assert_refused(lambda f: set_attributes(f["/locations/nodes"], position="corner"),
                            '/locations/nodes: the position "corner" is not known')

    def test_a_label_beyond_int32(self):
        self.assert_refused(self.replace("/locations/nodes/nodeLabels", np.array([1, 2, 2**31], "i8")),
                            "/locations/nodes/nodeLabels: the integer at index 2 is too large")

    def test_labels_of_different_length(self):
        def change(file):
            set_attributes(file["/locations/nodes"], position="elementNodal")
            file["/locations/nodes/elementLabels"] = np.array([1, 2], "i4")
        self.assert_refused(change, "/locations/nodes: the label data sets differ in length")

    def test_a_field_without_a_type(self):
        self.assert_refused(lambda f: f["/steps/Step-1/fields/NT"].attrs.__delitem__("type"),
                            '/steps/Step-1/fields/NT: has no attribute "type"')

    def test_frames_of_different_length(self):
        self.assert_refused(self.replace("/steps/Step-1/frames/value", np.zeros(3)),
                            "/steps/Step-1/frames: incrementNumber, value and description must have one entry per "
                            "frame each")

    def test_a_history_of_the_wrong_shape(self):
        self.assert_refused(self.replace("/steps/Step-1/history/Node 3/outputs/U1", np.zeros(4, "f4")),
                            "/steps/Step-1/history/Node 3/outputs/U1: a history must have the shape "
                            "[samples, numbers of a sample]")

    def test_a_mass_centre_of_the_wrong_length(self):
        self.assert_refused(lambda f: f["/steps/Step-1"].attrs.__setitem__("massCenter", [1.0, 2.0]),
                            '/steps/Step-1: the attribute "massCenter" must hold 3 numbers')

    def test_text_of_variable_length(self):
        self.assert_refused(lambda f: f["/steps/Step-1/fields/NT"].attrs.__setitem__("description", "text"),
                            '/steps/Step-1/fields/NT: the attribute "description": text of variable length is not '
                            "allowed in this layout")

    def test_a_soft_link(self):
        def change(file):
            file["spare"] = file[self.BLOCK + "/data"][...]
            del file[self.BLOCK + "/data"]
            file[self.BLOCK + "/data"] = h5py.SoftLink("/spare")
        self.assert_refused(change, f"{self.BLOCK}/data: links that are not hard are not allowed in this layout")

    def test_chunks_of_more_than_a_frame(self):
        def change(file):
            del file[self.BLOCK + "/data"]
            file.create_dataset(self.BLOCK + "/data", data=np.ones((2, 3), "f4"), chunks=(2, 3))
        self.assert_refused(change, f"{self.BLOCK}/data: a chunk must hold exactly one frame")

    def test_another_filter(self):
        def change(file):
            del file[self.BLOCK + "/data"]
            file.create_dataset(self.BLOCK + "/data", data=np.ones((2, 3), "f4"), chunks=(1, 3), shuffle=True)
        self.assert_refused(change, f"{self.BLOCK}/data: filters other than gzip and Fletcher-32 are not allowed in "
                            "this layout")

    def test_compact_storage(self):
        def change(file):
            del file[self.BLOCK + "/data"]
            plist = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            plist.set_layout(h5py.h5d.COMPACT)
            h5py.h5d.create(file.id, (self.BLOCK + "/data").encode(), h5py.h5t.IEEE_F32LE,
                            h5py.h5s.create_simple((2, 3)), plist)
        self.assert_refused(change, f"{self.BLOCK}/data: storage must be contiguous, or chunked by frame")

    def test_a_damaged_chunk_under_a_checksum(self):
        def change(file):
            del file[self.BLOCK + "/data"]
            file.create_dataset(self.BLOCK + "/data", data=np.arange(6, dtype="f4").reshape(2, 3), chunks=(1, 3),
                                fletcher32=True)
            self.offset = file[self.BLOCK + "/data"].id.get_chunk_info(1).byte_offset

        def damage(file):
            change(file)
            file.flush()
            with open(self.path("model.odb"), "r+b") as raw:
                raw.seek(self.offset)
                raw.write(b"\xff")
        self.assert_refused(damage, f"{self.BLOCK}/data: slab 1 cannot be read (the packed numbers do not match "
                            "their checksum)", sets=False)
