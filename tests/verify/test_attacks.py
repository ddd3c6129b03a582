"""Files made to do harm, as they once got through: past all checks but the one that has to hold."""
import os
import re
import resource
import struct
import zlib

import h5py
import numpy as np

import checksummed
import test_import_program as run
from catalogued import crc32c, extents_of, sealed, trailer_of
from support import FAILED, Database, ProgramTest, set_attributes

CONFIG = ("ODB EXTRACTIONS\nEXTRACT_MASS EXTRACT_HISTORY MINMAX_HISTORY EXTRACT_ALL EXTRACT_FIELD EXTRACT_FIELD_SETS "
          "EXTRACT_FIELD_COMPONENTS TENSOR_INVARIANTS ENGINEERING_MAX ENGINEERING_MIN\nPERCENTAGE = 5\n")
MEBI = 1 << 20


class AttackTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.write("config.txt", CONFIG)

    def limited(self, program, name, *arguments):
        """A run that may take no more memory than is in proportion to the file. It ends by itself."""
        most = 64 * MEBI + 16 * self.path(name).stat().st_size
        done = self.run_program(*arguments, program=program, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_DATA, (most, most)))
        self.assertGreaterEqual(done.status, 0)
        return done

    def extracted(self, name):
        """The messages of an extraction and whether it left a marker."""
        for result in ("params.txt", "paramsdone.txt", "upgradedOdb.odb"):
            self.path(result).unlink(missing_ok=True)
        done = self.limited("quarnish", name, "-odb", name, "-config", "config.txt")
        return done.err, self.path("paramsdone.txt").exists()

    def assert_refused(self, name, reason):
        """By the extraction and by verify, with the file and the same reason."""
        messages, is_done = self.extracted(name)
        self.assertRegex(messages, rb"^" + name.encode() + rb": .*" + reason + rb".*\n" + re.escape(FAILED) + rb"$")
        self.assertFalse(is_done)
        self.assertFalse(self.path("upgradedOdb.odb").exists())
        verdict = self.limited("verify", name, name)
        self.assertEqual(verdict.status, 1, verdict.err)
        self.assertRegex(verdict.err, reason)


class PackedChunks(AttackTest):
    """Chunks by hand, with every sum made again."""

    ROWS = np.arange(1.0, 101.0, dtype="f4").reshape(1, 100)

    def database(self, payload, mask=0, filters=("gzip",)):
        with Database(self.path("job.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=list(range(1, 101)))
            block = odb.field(odb.step("Step-1"), "NT", 2, [("nodes", self.ROWS)])["blocks/0"]
            del block["data"]
            creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            creation.set_chunk((1, 100))
            for one in filters:
                creation.set_deflate(1) if one == "gzip" else creation.set_fletcher32()
            space = h5py.h5s.create_simple((1, 100))
            data = h5py.h5d.create(block.id, b"data", h5py.h5t.IEEE_F32LE, space, creation)
            data.write_direct_chunk((0, 0), payload, mask)
        checksummed.add_checksums(self.path("job.odb"))

    @staticmethod
    def fletcher32(data):
        """HDF5's, of bytes in pairs, highest first (its file format page, IV.A.2.l)."""
        one = two = 0
        for at in range(0, len(data), 2):
            one = (one + int.from_bytes(data[at:at + 2], "big")) % 65535
            two = (two + one) % 65535
        return struct.pack("<I", two << 16 | one)

    def test_the_numbers_of_a_good_one_are_right(self):
        self.database(zlib.compress(self.ROWS.tobytes()))
        self.assertEqual(self.run_program("job.odb", program="verify").status, 0)
        self.assertEqual(self.extracted("job.odb"), (b"", True))
        self.assertIn(b"__NT__max\t100\n", self.path("params.txt").read_bytes())

    def test_what_does_not_unpack_into_one_frame_is_refused(self):
        frame = self.ROWS.tobytes()
        whole = zlib.compress(frame)
        for name, payload in {"one byte": b"x", "two bytes": whole[:2], "three bytes": whole[:3], "half": whole[:-20],
                              "a shorter frame": zlib.compress(frame[:-4]), "no frame": zlib.compress(b""),
                              "a longer frame": zlib.compress(frame + b"more"), "two frames": zlib.compress(2 * frame),
                              "bytes behind it": whole + b"more", "not packed": frame, "another sum": whole[:-1] + b"\0",
                              "a bomb": zlib.compress(bytes(1 << 20), 9)}.items():
            with self.subTest(name):
                self.database(payload)
                self.assert_refused("job.odb", rb"/steps/Step-1/fields/NT/blocks/0/data: ")

    def test_filters_that_were_left_out_are_refused(self):
        self.database(self.ROWS.tobytes(), mask=1)
        self.assert_refused("job.odb", rb"data: slab 0 was stored without the filters")

    def test_fletcher_sums_twice_are_refused(self):
        frame = self.ROWS.tobytes()
        once = frame + self.fletcher32(frame)
        self.database(once, filters=("fletcher32",))
        self.assertEqual(self.run_program("job.odb", program="verify").status, 0)
        self.database(once + self.fletcher32(once), filters=("fletcher32", "fletcher32"))
        self.assert_refused("job.odb", rb"data: the data set has its checksums twice")

    def test_sums_of_fletcher_in_chunks_too_short_for_one_are_refused(self):
        for size in range(1, 4):
            with self.subTest(size):
                self.database(b"abc"[:size], filters=("fletcher32",))
                self.assert_refused("job.odb", rb"/steps/Step-1/fields/NT/blocks/0/data: ")

    def test_under_a_catalog_whose_sums_agree_too(self):
        self.write("job.frd", run.WHOLE)
        self.assertEqual(self.run_program("job", "--compress", program="import").status, 0)
        with h5py.File(self.path("job.odb")) as odb:
            data = odb["steps/Step-1/fields/S/blocks/0/data"]
            chunk = data.id.get_chunk_info(0)
            frame = data[0].tobytes()
        content = self.path("job.odb").read_bytes()
        extents = extents_of(self.path("job.odb"))
        begin, end = chunk.byte_offset, chunk.byte_offset + chunk.size
        old = struct.pack("<I", crc32c(content[begin:end]))
        catalog = len(content) - trailer_of(content)[0]
        self.assertEqual(content.count(old, catalog), 1)
        shorter = zlib.compress(frame[:-4], 9)
        self.assertLessEqual(len(shorter), chunk.size)
        for name, stored in {"shorter and bytes behind it": shorter + bytes(chunk.size - len(shorter)),
                             "no stream": bytes(range(chunk.size)) if chunk.size < 256 else os.urandom(chunk.size)}.items():
            with self.subTest(name):
                changed = content[:begin] + stored + content[end:]
                changed = changed[:catalog] + changed[catalog:].replace(old, struct.pack("<I", crc32c(stored)))
                self.path("job.odb").write_bytes(sealed(changed, extents))
                self.assert_refused("job.odb", rb"/steps/Step-1/fields/S/blocks/0/data")


class OtherFiles(AttackTest):
    """A database leads nowhere but into itself."""

    SECRET = np.full((1, 3), 4711.0, "f4")

    def setUp(self):
        super().setUp()
        with Database(self.path("other.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            odb.field(odb.step("Step-1"), "NT", 2, [("nodes", self.SECRET)])
        self.write("secret", self.SECRET.tobytes())
        os.mkfifo(self.path("pipe.odb"))

    def links(self):
        """Ways to numbers of other files, by what they replace."""
        def external(file, path):
            file[path] = h5py.ExternalLink("other.odb", "/steps/Step-1/fields/NT/blocks/0/data")

        def pipe(file, path):
            file[path] = h5py.ExternalLink("pipe.odb", "/data")

        def device(file, path):
            file[path] = h5py.ExternalLink("/dev/zero", "/data")

        def soft(file, path):
            file[path] = h5py.SoftLink("/elsewhere")

        def storage(file, path):
            file.create_dataset(path, self.shape, "f4", external=[(str(self.path("secret")), 0, 12)])

        def virtual(file, path):
            layout = h5py.VirtualLayout(self.shape, "f4")
            layout[:] = h5py.VirtualSource(str(self.path("other.odb")), "/steps/Step-1/fields/NT/blocks/0/data", self.shape)
            file.create_virtual_dataset(path, layout)

        return {"external": external, "pipe": pipe, "device": device, "soft": soft, "storage": storage, "virtual": virtual}

    def check(self, make, path, *others):
        for kind, replace in self.links().items():
            if kind in others:
                continue
            with self.subTest(kind):
                make()
                with h5py.File(self.path("job.odb"), "r+") as file:
                    file["elsewhere"] = file[path]
                    del file[path]
                    replace(file, path)
                self.assert_refused("job.odb", rb"/steps")
                self.assertNotIn(b"4711", self.path("params.txt").read_bytes() if self.path("params.txt").exists() else b"")

    def test_in_layout_1(self):
        self.shape = (3,)

        def make():
            with h5py.File(self.path("job.odb"), "w") as file:
                file.attrs["layout"] = 1
                file.create_group("assembly/instances/I-1").attrs["part"] = "P"
                block = file.create_group("steps/Step-1/frames/0/fields/NT/blocks/0")
                file["steps/Step-1/frames/0/fields/NT"].attrs["type"] = 2
                block.attrs.update(instance="I-1", position="nodal")
                block["nodeLabels"] = [1, 2, 3]
                block["data"] = np.zeros(3, "f4")

        make()
        self.assertEqual(self.extracted("job.odb"), (b"", True))
        # A soft link leads nowhere else, and h5py makes them.
        self.check(make, "steps/Step-1/frames/0/fields/NT/blocks/0/data", "soft")
        self.check(make, "steps/Step-1", "soft")

    def test_in_layout_2(self):
        self.shape = (1, 3)

        def make():
            with Database(self.path("job.odb")) as odb:
                odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
                odb.field(odb.step("Step-1"), "NT", 2, [("nodes", np.zeros((1, 3), "f4"))])

        make()
        self.assertEqual(self.extracted("job.odb"), (b"", True))
        self.check(make, "steps/Step-1/fields/NT/blocks/0/data")


class Bombs(AttackTest):
    """Few bytes that stand for very many."""

    def test_hard_links_to_one_object(self):
        def old(path):
            with h5py.File(path, "w") as file:
                file.attrs["layout"] = 1
                step = file.create_group("steps/Step-0")
                step["history/Node 1/outputs/U1"] = np.zeros((50000, 2), "f4")
                return file

        def today(path):
            with Database(path) as odb:
                odb.location("nodes", "nodal", nodeLabels=np.arange(20000))
                odb.field(odb.step("Step-0"), "NT", 2, [("nodes", np.zeros((1, 20000), "f4"))])
                odb.file["assembly/nodeSets/0/I-1"] = np.arange(20000, dtype="i4")

        for make, group, name in ((old, "steps", "Step-0"), (old, "steps/Step-0/history", "Node 1"),
                                  (old, "steps/Step-0/history/Node 1/outputs", "U1"), (today, "steps", "Step-0"),
                                  (today, "steps/Step-0/fields", "NT"), (today, "assembly/nodeSets", "0"),
                                  (today, "locations", "nodes")):
            with self.subTest(layout=make.__name__, group=group):
                make(self.path("job.odb"))
                with h5py.File(self.path("job.odb"), "r+") as file:
                    for i in range(1000):
                        file[f"{group}/again {i}"] = file[f"{group}/{name}"]
                self.assert_refused("job.odb", rb"is the same object as /")

    def test_links_that_lead_back(self):
        with h5py.File(self.path("job.odb"), "w") as file:
            file.attrs["layout"] = 1
            for i in range(200):
                file.create_group(f"steps/{i}/frames")
                for k in range(20):
                    file[f"steps/{i}/frames/{k}"] = file["steps/0"]
        self.assert_refused("job.odb", rb"is the same object as /")

    def test_one_very_wide_row(self):
        for labels in (0, 1):
            with self.subTest(labels), Database(self.path("job.odb")) as odb:
                odb.location("node", "nodal", nodeLabels=[1])
                field = odb.field(odb.step("Step-1"), "U", 2, [("node", np.zeros((1, 1, 200000), "f4"))])
                if labels:
                    set_attributes(field, componentLabels=["1"])
            self.extracted("job.odb")
            self.assertIn(self.limited("verify", "job.odb", "job.odb").status, (1, 3))

    def test_packed_numbers_of_an_old_file(self):
        with h5py.File(self.path("job.odb"), "w") as file:
            file.attrs["layout"] = 1
            group = file.create_group("steps/Step-1/history/Node 1/outputs")
            chunk = zlib.compress(bytes(8 * MEBI))
            samples = group.create_dataset("U1", (20 * MEBI, 2), "f4", chunks=(MEBI, 2), compression="gzip")
            for i in range(20):
                samples.id.write_direct_chunk((i * MEBI, 0), chunk)
        self.assertLess(self.path("job.odb").stat().st_size, MEBI)
        self.assert_refused("job.odb", rb"reading it took more than \d+ MiB of memory|out of proportion|more than a file of its size")

    def test_one_frame_of_many_for_each_of_many_blocks(self):
        frames, blocks = 60000, 800
        with Database(self.path("job.odb")) as odb:
            odb.location("node", "nodal", nodeLabels=[1])
            step = odb.step("Step-1", increments=[1])
            for name, values in (("incrementNumber", np.arange(frames, dtype="i4")), ("value", np.zeros(frames))):
                del step["frames/" + name]
                step["frames/" + name] = values
            del step["frames/description"]
            step["frames"].create_dataset("description", data=np.full(frames, b"x", h5py.string_dtype("utf-8", 1)))
            field = odb.field(step, "NT", 2, [])
            for k in range(blocks):
                block = field.create_group(f"blocks/{k}")
                set_attributes(block, location="node")
                block["frames"] = np.array([k], "i4")
                block["data"] = np.full((1, 1), k, "f4")
        messages, is_done = self.extracted("job.odb")
        self.assertEqual((messages, is_done), (b"", True))
        self.assertIn(b"Frame_799__NT__max\t799\n", self.path("params.txt").read_bytes())

    def test_records_are_in_proportion_to_the_file(self):
        """Every set in every frame of every field is a record: as many as there are, not as many as links make of them."""
        with Database(self.path("job.odb")) as odb:
            odb.location("node", "nodal", nodeLabels=[1])
            for i in range(100):
                odb.file[f"assembly/nodeSets/{i}/I-1"] = odb.file["locations/node/nodeLabels"]
            odb.field(odb.step("Step-1"), "NT", 2, [("node", np.zeros((1, 1), "f4"))])
        self.assert_refused("job.odb", rb"is the same object as /")
