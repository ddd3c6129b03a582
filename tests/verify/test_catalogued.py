"""Databases as `kolvex import` writes them: the catalog and its sums, damage, and changes by other programs."""
import random

import h5py
import numpy as np

import test_import_program as run
from bricks import bricks
from catalogued import crc32c, extents_of, sealed, sums_of, trailer_of
from support import ProgramTest

CONFIG = ("ODB EXTRACTIONS\nEXTRACT_MASS EXTRACT_HISTORY MINMAX_HISTORY EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS "
          "EXTRACT_FIELD_COMPONENTS TENSOR_INVARIANTS ENGINEERING_MAX ENGINEERING_MIN\nPERCENTAGE = 5\n")


class CataloguedTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.write("bricks.frd", bricks(40))
        self.write("bricks.inp", "*NSET,NSET=END\n5,8,11\n*ELSET,ELSET=ALL,GENERATE\n10,400,10\n*ELSET,ELSET=FIRST\n10\n")
        self.write("job.frd", run.WHOLE)
        self.write("job.dat", run.PRINTED)
        self.write("job.inp", run.DECK.replace("*STEP\n", run.MODES, 1).replace("warm\n", ""))
        self.write("config.txt", CONFIG)

    def imported(self, job, *options):
        done = self.run_program(job, *options, program="import")
        self.assertEqual(done.status, 0, done.err)
        return self.path(job + ".odb")

    def verify(self, name):
        return self.run_program("verify", name, program="kolvex")

    def records(self, name):
        self.path("params.txt").unlink(missing_ok=True)
        done = self.run_program("-odb", name, "-config", "config.txt")
        self.assertEqual((done.status, done.err), (0, b""))
        return done.text("params.txt")

    def flip(self, path, offset, bit=0x20):
        with open(path, "r+b") as file:
            file.seek(offset)
            byte = file.read(1)[0]
            file.seek(offset)
            file.write(bytes([byte ^ bit]))

    def test_the_catalog_ends_the_file_with_the_sums_of_the_format_page(self):
        for job in ("bricks", "job"):
            for options in ((), ("--compress",), ("--checksum",), ("--compress", "--checksum")):
                with self.subTest(job=job, options=options):
                    path = self.imported(job, *options)
                    content = path.read_bytes()
                    length, *sums = trailer_of(content)
                    with h5py.File(path) as odb:
                        self.assertEqual(odb["catalog"].id.get_offset() + length, len(content))
                        self.assertEqual(odb["catalog"].shape, (length,))
                    self.assertEqual(tuple(sums), sums_of(content, extents_of(path)))
                    done = self.verify(path.name)
                    self.assertEqual((done.status, done.out, done.err), (0, f"{path.name}: sound\n".encode(), b""))

    def test_tensors_at_nodes_are_stored_once(self):
        with h5py.File(self.imported("bricks")) as odb:
            block = odb["steps/Step-1/fields/S/blocks/0"]
            location = odb["locations"][block.attrs["location"].decode()]
            self.assertEqual(location["rowOf"].shape, (320,))
            self.assertEqual(block["data"].shape[1:], (164, 6))
            self.assertEqual(location.attrs["storedRows"], 164)
            rows = block["data"][0][location["rowOf"][()]]
            np.testing.assert_array_equal(rows[:, 0], location["nodeLabels"][()])

    def test_no_flipped_bit_is_overlooked(self):
        random.seed(11)
        for job, options in (("bricks", ()), ("job", ("--compress", "--checksum"))):
            path = self.imported(job, *options)
            whole = path.read_bytes()
            for _ in range(60):
                offset = random.randrange(len(whole))
                self.flip(path, offset, 1 << random.randrange(8))
                done = self.verify(path.name)
                self.assertEqual(done.status, 1, (job, offset, done.err))
                self.assertTrue(done.err.startswith(f"{path.name}: ".encode()), done.err)
                path.write_bytes(whole)

    def test_damaged_arrays_are_named(self):
        bricks, job = self.imported("bricks"), self.imported("job")
        with h5py.File(bricks) as odb:
            indexed = odb["locations"][odb["steps/Step-1/fields/S/blocks/0"].attrs["location"].decode()].name[1:]
        for path, dataset, byte, name in (
                (bricks, "steps/Step-1/fields/S/blocks/0/data", 164 * 24 + 100, 'step "Step-1", field "S", block 0, frame 1\n'),
                (bricks, "steps/Step-1/fields/S/blocks/0/data", 5, 'step "Step-1", field "S", block 0, frame 0\n'),
                (bricks, indexed + "/rowOf", 9, indexed.replace("locations/", 'location "') + '", rowOf\n'),
                (bricks, "assembly/packedElementSets/labels", 1, 'element set "ALL" in instance "PART-1-1"; element set "FIRST" in'),
                (bricks, "assembly/packedNodeSets/labels", 1, 'node set "END" in instance "PART-1-1"\n'),
                (bricks, "assembly/instances/PART-1-1/mesh/nodes/coordinates", 30, 'coordinates of the mesh\'s nodes\n'),
                (job, "steps/Step-1/packedHistory/samples", 3, 'history region "')):
            with self.subTest(dataset):
                with h5py.File(path) as odb:
                    offset = odb[dataset].id.get_offset() + byte
                self.flip(path, offset)
                done = self.verify(path.name)
                self.assertEqual(done.status, 1)
                self.assertIn(name, done.err.decode())
                self.assertRegex(done.err.decode(), rf"{path.name}: bytes \d+\.\.\d+ are damaged: ")
                self.flip(path, offset)

    def test_changes_of_structure_by_other_programs_are_read_as_they_are(self):
        path = self.imported("bricks")
        records = self.records(path.name)
        with h5py.File(path, "r+") as odb:
            odb.attrs["note"] = np.int32(1)
        self.assertEqual(self.records(path.name), records)
        self.assertRegex(self.verify(path.name).err, b"changed after its catalog was made|made for another state of the file")
        with h5py.File(path, "r+") as odb:
            odb.move("steps/Step-1", "steps/Step-9")
        self.assertEqual(self.records(path.name), records.replace(b"Step_1__", b"Step_9__"))
        with h5py.File(path, "r+") as odb:
            del odb["catalog"]
            odb["steps/Step-9/frames/incrementNumber"][0] = 7
        self.assertEqual(self.records(path.name), records.replace(b"Step_1__", b"Step_9__").replace(b"Frame_1__", b"Frame_7__"))
        self.assertEqual(self.verify(path.name).status, 3)

    def test_objects_that_other_programs_add_remove_and_pack_are_read_as_they_are(self):
        path = self.imported("bricks")
        records = self.records(path.name).decode().splitlines()
        # The same rows packed, a field less, a field more with a set of its own; the catalog stays and knows none of it.
        with h5py.File(path, "r+", libver=("v110", "v110")) as odb:
            block = odb["steps/Step-1/fields/S/blocks/0"]
            rows = block["data"][()]
            del block["data"]
            block.create_dataset("data", data=rows, chunks=(1, *rows.shape[1:]), compression="gzip")
            odb["locations/added/nodeLabels"] = np.array([5, 6, 7, 8], "i4")
            odb["locations/added"].attrs.update(instance=np.bytes_("PART-1-1"), position=np.bytes_("nodal"))
            field = odb.create_group("steps/Step-1/fields/ADDED")
            field.attrs.update(type=np.int32(2), description=np.bytes_("Temperature"))
            field["frames"] = np.array([1], "i4")
            field.create_group("blocks/0").attrs["location"] = np.bytes_("added")
            field["blocks/0/data"] = np.array([[[1.5], [2.5], [40.5], [-3.5]]], "f4")
            odb["assembly/nodeSets/MORE/PART-1-1"] = np.array([5, 6], "i4")
        found = self.records(path.name).decode().splitlines()
        added = dict(line.split("\t") for line in found if "__ADDED__" in line)
        self.assertEqual((added["Step_1__Frame_2__ADDED__max"], added["Step_1__Frame_2__ADDED__min"]), ("40.5", "-3.5"))
        self.assertEqual(added["Step_1__Frame_2__MORE__ADDED__max"], "2.5")
        self.assertFalse([name for name in added if "Frame_1__" in name])
        self.assertEqual([line for line in found if "__ADDED__" not in line and "__MORE__" not in line], records)
        self.assertEqual(self.verify(path.name).status, 1)
        with h5py.File(path, "r+") as odb:
            del odb["catalog"]
        self.assertEqual(self.verify(path.name).status, 3)
        with h5py.File(path, "r+") as odb:
            del odb["steps/Step-1/fields/S"]
        self.assertEqual({line.split("__")[-2] for line in self.records(path.name).decode().splitlines()}, {"ADDED"})

    def test_numbers_that_were_changed_in_place_are_damage_until_the_catalog_is_deleted(self):
        path = self.imported("bricks")
        with h5py.File(path, "r+") as odb:
            odb["steps/Step-1/fields/S/blocks/0/data"][1, 3, 0] = 1e6
        self.assertEqual(self.verify(path.name).status, 1)
        with h5py.File(path, "r+") as odb:
            del odb["catalog"]
        done = self.verify(path.name)
        self.assertEqual((done.status, done.out), (3, b""))
        self.assertIn(b"__S__11__max\t1e+006\n", self.records(path.name))

    def test_an_index_out_of_its_range_is_told_though_its_sums_agree(self):
        path = self.imported("bricks")
        with h5py.File(path) as odb:
            block = odb["steps/Step-1/fields/S/blocks/0"]
            offset = odb["locations"][block.attrs["location"].decode()]["rowOf"].id.get_offset()
        self.flip(path, offset + 4 * 100 + 3, 0x40)
        done = self.verify(path.name)
        self.assertIn(b"/rowOf: row 100 is stored row", done.err)
        run_of_extraction = self.run_program("-odb", path.name, "-config", "config.txt")
        self.assertIn(b"/rowOf: row 100 is stored row", run_of_extraction.err)
        self.assertIsNone(run_of_extraction.text("paramsdone.txt"))

    def test_a_catalog_that_does_not_say_what_the_structure_says_is_told(self):
        path = self.imported("bricks")
        content = path.read_bytes()
        begin = len(content) - trailer_of(content)[0]
        at = content.index(b"FIRST", begin)
        path.write_bytes(sealed(content[:at] + b"FUNNY" + content[at + 5:], extents_of(path)))
        done = self.verify(path.name)
        self.assertEqual(done.status, 1)
        self.assertRegex(done.err, rb"/catalog: does not agree with the file's structure about \S+")

    def test_the_sums_of_this_test_are_the_published_ones(self):
        self.assertEqual(crc32c(b"123456789"), 0xE3069283)
        self.assertEqual(crc32c(bytes(32)), 0x8A9136AA)
