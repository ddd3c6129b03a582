"""Everything that a file of layout 2 must not be, one thing at a time, and what is said of it."""
import struct

import h5py
import numpy as np

from support import Database, ProgramTest, set_attributes, text

STEP = "/steps/Step-1"
BLOCK = STEP + "/fields/S/blocks/0"


def lookup3(data):
    """The checksum of HDF5's structure (Jenkins, 2006), as its file format page has it."""
    def rotated(x, k):
        return (x << k | x >> (32 - k)) & 0xFFFFFFFF

    a = b = c = (0xDEADBEEF + len(data)) & 0xFFFFFFFF
    words = data + bytes(-len(data) % 12 if data else 0)
    for at in range(0, len(words), 12):
        x, y, z = struct.unpack_from("<3I", words, at)
        a, b, c = (a + x) & 0xFFFFFFFF, (b + y) & 0xFFFFFFFF, (c + z) & 0xFFFFFFFF
        if at + 12 < len(words):
            for k, (p, q, r) in zip((4, 6, 8, 16, 19, 4), ((0, 2, 1), (1, 0, 2), (2, 1, 0)) * 2):
                v = [a, b, c]
                v[p] = ((v[p] - v[q]) & 0xFFFFFFFF) ^ rotated(v[q], k)
                v[q] = (v[q] + v[r]) & 0xFFFFFFFF
                a, b, c = v
    for p, q, k in ((2, 1, 14), (0, 2, 11), (1, 0, 25), (2, 1, 16), (0, 2, 4), (1, 0, 14), (2, 1, 24)):
        v = [a, b, c]
        v[p] = ((v[p] ^ v[q]) - rotated(v[q], k)) & 0xFFFFFFFF
        a, b, c = v
    return c


class ProfileTest(ProgramTest):
    def setUp(self):
        super().setUp()
        with Database(self.path("job.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
            odb.location("points", "integrationPoint", elementLabels=[1, 2], integrationPoints=[1, 1])
            odb.file["parts/P/nodeSets/N"] = np.array([1], "i4")
            odb.file["assembly/nodeSets/N/I-1"] = np.array([1], "i4")
            odb.file["assembly/sector/symmetryAxis"] = np.zeros((2, 3), "f4")
            mesh = odb.file.create_group("assembly/instances/I-1/mesh")
            mesh["nodes/labels"] = np.array([1, 2, 3], "i4")
            mesh["nodes/coordinates"] = np.zeros((3, 3))
            mesh["elements/T3D2/labels"] = np.array([1, 2], "i4")
            mesh["elements/T3D2/connectivity"] = np.array([[1, 2], [2, 3]], "i4")
            step = odb.step("Step-1", increments=(0, 1))
            odb.field(step, "S", 5, [("points", np.zeros((2, 2, 6), "f4"))], labels=["11", "22", "33", "12", "13", "23"])
            odb.field(step, "NT", 2, [("nodes", np.zeros((2, 3)))])
            step.create_group("history/Node 1")["outputs/U1"] = np.zeros((4, 2), "f4")

    def change(self, change):
        with h5py.File(self.path("job.odb"), "r+", libver=("v110", "v110")) as file:
            change(file)

    def assert_sound(self, change):
        self.change(change)
        run = self.run_program("job.odb", program="verify")
        self.assertEqual((run.status, run.err), (3, b"job.odb: has no checksums: damaged numbers cannot be detected\n"))

    def assert_refused(self, change, *findings):
        self.change(change)
        self.assert_told(*findings)

    def assert_told(self, *findings):
        run = self.run_program("job.odb", program="verify")
        self.assertEqual((run.status, run.out), (1, b"job.odb: damaged\n"))
        told = run.err.decode().splitlines()
        for finding in findings:
            self.assertTrue(any(line.startswith("job.odb: " + finding) for line in told), (finding, told))

    @staticmethod
    def replace(path, data=None, **options):
        """The data set of that path with other numbers, or made in another way."""
        def change(file):
            values = file[path][...] if data is None else data
            del file[path]
            file.create_dataset(path, data=values, **options)
        return change

    @staticmethod
    def attribute(path, name, value, **options):
        def change(file):
            file[path].attrs.create(name, value, **options)
        return change

    def refused(self, cases):
        """Each of the cases on a file of its own."""
        for change, finding in cases:
            with self.subTest(finding):
                self.setUp()
                self.assert_refused(change, finding)

    def test_the_file_that_the_others_are_made_of_is_sound(self):
        self.assert_sound(lambda file: None)

    def test_types_that_are_neither_numbers_nor_text(self):
        def sequences(file):
            made = file.create_dataset("extra", (2,), h5py.vlen_dtype("i4"))
            made[0] = [1, 2]

        for change in (sequences, lambda file: file.create_dataset("extra", data=np.zeros(2, [("a", "i4"), ("b", "f4")])),
                       lambda file: file.create_dataset("extra", data=np.zeros(2, bool)),
                       lambda file: file.create_dataset("extra", data=np.zeros(2, "V5")),
                       lambda file: file.create_dataset("extra", data=[file.ref], dtype=h5py.ref_dtype)):
            with self.subTest(change):
                self.setUp()
                self.assert_refused(change, "/extra: is neither numbers nor text")

    def test_text_of_variable_length(self):
        self.refused([
            (self.replace(STEP + "/frames/description", ["a", "b"], dtype=h5py.string_dtype()),
             STEP + "/frames/description: text of variable length is not allowed in this layout"),
            (self.attribute(STEP, "note", "some text"),
             STEP + ': the attribute "note": text of variable length is not allowed in this layout')])

    def test_storage_that_is_not_allowed(self):
        def compact(file):
            creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            creation.set_layout(h5py.h5d.COMPACT)
            h5py.h5d.create(file.id, b"extra", h5py.h5t.STD_I32LE, h5py.h5s.create_simple((2,)), creation)

        def external(file):
            file.create_dataset("extra", (2,), "i4", external=[("elsewhere", 0, 8)])

        def virtual(file):
            sources = h5py.VirtualLayout((2,), "i4")
            sources[:] = h5py.VirtualSource("elsewhere", "data", (2,))
            file.create_virtual_dataset("extra", sources)

        self.refused([(compact, "/extra: storage must be contiguous, or chunked by frame"),
                      (external, "/extra: external storage is not allowed in this layout"),
                      (virtual, "/extra: storage must be contiguous, or chunked by frame")])

    def test_chunks_that_are_not_a_frame_each(self):
        for chunks in ((2, 2, 6), (1, 1, 6), (1, 2, 3), (2, 1, 6)):
            with self.subTest(chunks):
                self.setUp()
                self.assert_refused(self.replace(BLOCK + "/data", chunks=chunks),
                                    BLOCK + "/data: a chunk must hold exactly one frame")
        self.setUp()
        self.assert_sound(self.replace(BLOCK + "/data", chunks=(1, 2, 6)))

    def test_filters_that_are_not_allowed(self):
        def twice(file):
            creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            creation.set_chunk((1, 2))
            creation.set_deflate(1)
            creation.set_deflate(1)
            h5py.h5d.create(file.id, b"extra", h5py.h5t.STD_I32LE, h5py.h5s.create_simple((1, 2)), creation)

        others = BLOCK + "/data: filters other than gzip and Fletcher-32 are not allowed in this layout"
        self.refused([(self.replace(BLOCK + "/data", chunks=(1, 2, 6), shuffle=True), others),
                      (self.replace(BLOCK + "/data", chunks=(1, 2, 6), compression="lzf"), others),
                      (self.replace(BLOCK + "/data", chunks=(1, 2, 6), scaleoffset=2), others),
                      (twice, "/extra: the data set is packed twice")])

    def test_links_that_are_not_hard(self):
        self.refused([(lambda file: file.__setitem__("extra", h5py.SoftLink("/steps")), "/extra: links that are not hard"),
                      (lambda file: file.__setitem__("extra", h5py.ExternalLink("other.odb", "/")),
                       "/extra: links that are not hard are not allowed in this layout")])

    def test_hard_links_may_lead_in_circles(self):
        def circle(file):
            file["extra/again"] = file["steps"]
            file["steps/Step-1/up"] = file["steps"]
        self.assert_sound(circle)

    def test_groups_too_deep(self):
        self.assert_refused(lambda file: file.create_group("/".join("g" * 40)), "/g/g/g/g/g/g")

    def test_objects_of_another_kind(self):
        def with_type(file):
            file["extra"] = np.dtype("f8")

        def group_for_dataset(file):
            del file[BLOCK + "/data"]
            file.create_group(BLOCK + "/data")

        def dataset_for_group(file):
            del file["locations"]
            file["locations"] = np.array([1])

        self.refused([(with_type, '/: the member "extra" is neither a group nor a data set'),
                      (group_for_dataset, BLOCK + "/data: must be a data set"),
                      (dataset_for_group, "/locations: must be a group")])

    def test_counts_that_the_file_cannot_hold(self):
        def unwritten(shape, **options):
            return lambda file: file.create_dataset("extra", shape, "f4", **options)

        def holes(**options):
            def change(file):
                made = file.create_dataset("extra", (40000, 50), "f4", chunks=(1, 50), **options)
                made[0] = 1
            return change

        partial = "/extra: the data set is not stored in full"
        self.refused([(unwritten((10**12,)), "/extra: the data set is larger than the file can hold"),
                      (unwritten((10**12, 10**6, 10**6), chunks=(1, 1000, 1000)), "/extra: the data set is too large"),
                      (unwritten((1000,)), partial),
                      (holes(), partial), (holes(fletcher32=True), partial), (holes(compression="gzip"), partial),
                      (lambda file: file.create_dataset("extra", dtype="f4", data=h5py.Empty("f4")),
                       "/extra: the data set has no shape")])

    def test_a_chunk_that_is_missing(self):
        def change(file):
            made = file.create_dataset("extra", (2, 500), "f4", chunks=(1, 500), compression="gzip")
            made[0] = np.random.default_rng(1).random(500)
        self.assert_refused(change, "/extra: slab 1 is not stored")

    def test_zeros_may_be_packed_as_tightly_as_gzip_can(self):
        self.assert_sound(lambda file: file.create_dataset("extra", data=np.zeros((2, 500000)), chunks=(1, 500000),
                                                           compression="gzip", compression_opts=9))

    def patch_header(self, path, old, new):
        """Replaces bytes in the header of an object, and gives it the checksum that belongs to them."""
        with h5py.File(self.path("job.odb")) as file:
            header = h5py.h5o.get_info(file[path].id).addr
        content = bytearray(self.path("job.odb").read_bytes())
        self.assertEqual(content[header:header + 5], b"OHDR\x02")
        flags = content[header + 5]
        at = header + 6 + (16 if flags & 0x20 else 0) + (4 if flags & 0x10 else 0)
        width = 1 << (flags & 3)
        end = at + width + int.from_bytes(content[at:at + width], "little")
        place = content.index(old, at, end)
        self.assertEqual(lookup3(bytes(content[header:end])), struct.unpack_from("<I", content, end)[0])
        content[place:place + len(old)] = new
        struct.pack_into("<I", content, end, lookup3(bytes(content[header:end])))
        self.path("job.odb").write_bytes(content)

    def patch_layout(self, dataset, make):
        """Gives a contiguous data set another address and size."""
        with h5py.File(self.path("job.odb")) as file:
            item = file[dataset].id
            place = item.get_offset(), item.get_storage_size()
        self.patch_header(dataset, struct.pack("<QQ", *place), struct.pack("<QQ", *make(*place)))

    def test_a_chunk_larger_than_the_file(self):
        self.change(lambda file: file.create_dataset("extra", data=np.arange(500.0).reshape(1, 500), chunks=(1, 500),
                                                     compression="gzip"))
        with h5py.File(self.path("job.odb")) as file:
            chunk = file["extra"].id.get_chunk_info(0)
        # The size as it is packed, the filters that were left out (none), the address.
        self.patch_header("extra", struct.pack("<QIQ", chunk.size, 0, chunk.byte_offset),
                          struct.pack("<QIQ", 10**6, 0, chunk.byte_offset))
        self.assert_told("/extra: the data set reaches beyond the end of the file")

    def test_numbers_outside_of_the_file(self):
        data = BLOCK + "/data"
        for make in (lambda at, size: (10**6, size), lambda at, size: (self.path("job.odb").stat().st_size - size + 1, size),
                     lambda at, size: (2**63 + 5, size)):
            with self.subTest(make):
                self.setUp()
                self.patch_layout(data, make)
                self.assert_told(data + ": the data set reaches beyond the end of the file")

    def test_fewer_bytes_than_numbers(self):
        self.patch_layout(BLOCK + "/data", lambda at, size: (at, size - 4))
        self.assert_told(BLOCK + "/data: ")

    def test_superblocks_of_other_files(self):
        def write(name, creation=None, **options):
            if creation is None:
                with h5py.File(self.path(name), "w", **options) as file:
                    file.attrs["layout"] = 2
                return
            access = h5py.h5p.create(h5py.h5p.FILE_ACCESS)
            access.set_libver_bounds(h5py.h5f.LIBVER_V110, h5py.h5f.LIBVER_V110)
            with h5py.File(h5py.h5f.create(str(self.path(name)).encode(), fcpl=creation, fapl=access)) as file:
                file.attrs["layout"] = 2

        small = h5py.h5p.create(h5py.h5p.FILE_CREATE)
        small.set_sizes(4, 4)
        start = "a file of layout 2 must start with a superblock of 8-byte addresses"
        for options, finding in (({"libver": ("earliest", "v108")}, "a file of layout 2 must have HDF5 superblock 3, this one has 0"),
                                 ({"libver": ("v110", "v110"), "userblock_size": 512}, start), ({"creation": small}, start)):
            with self.subTest(finding):
                write("job.odb", **options)
                self.assert_told(finding)

    def test_attributes_of_the_wrong_kind(self):
        self.refused([
            (self.attribute(STEP + "/fields/S", "type", 5.0), STEP + '/fields/S: the attribute "type" must hold integers'),
            (self.attribute(STEP + "/fields/S", "type", np.array([5, 5])), STEP + '/fields/S: the attribute "type" must hold one value'),
            (self.attribute(STEP + "/fields/S", "type", np.array([], "i4")), STEP + '/fields/S: the attribute "type" must hold one value'),
            (self.attribute(STEP + "/fields/S", "type", 2**40), STEP + '/fields/S: the attribute "type" is too large'),
            (self.attribute(STEP + "/fields/S", "description", 1), STEP + '/fields/S: the attribute "description" must hold text'),
            (self.attribute(STEP, "mass", text("heavy")), STEP + ': the attribute "mass" must hold numbers'),
            (self.attribute(STEP, "note", np.zeros(1, [("a", "i4")])), STEP + ': the attribute "note" is neither numbers nor text')])

    def test_attributes_of_other_widths_are_read(self):
        def change(file):
            field = file[STEP + "/fields/S"]
            field.attrs["engineeringShear"] = True
            field.attrs["validInvariants"] = np.array([4, 1], ">i8")
            file[STEP].attrs["mass"] = np.array(3, "i2")
            file[STEP].attrs["massCenter"] = np.array([], "f8")
            file[STEP].attrs["description"] = h5py.Empty(h5py.string_dtype("utf-8", 4))
        self.assert_refused(change, STEP + ': the attribute "description" must hold one value')
        self.assert_sound(lambda file: file[STEP].attrs.pop("description"))

    def test_an_enumeration_that_is_no_truth_value(self):
        colours = h5py.enum_dtype({"RED": 0, "BLUE": 1}, basetype="i4")
        self.assert_refused(self.attribute(STEP + "/fields/S", "type", 1, dtype=colours),
                            STEP + '/fields/S: the attribute "type" must hold integers')

    def test_text_padded_with_blanks_is_read_without_them(self):
        def change(file):
            padded = h5py.h5t.C_S1.copy()
            padded.set_size(20)
            padded.set_strpad(h5py.h5t.STR_SPACEPAD)
            location = file["locations/nodes"]
            del location.attrs["position"]
            attribute = h5py.h5a.create(location.id, b"position", padded, h5py.h5s.create(h5py.h5s.SCALAR))
            attribute.write(np.array(b"nodal".ljust(20), "S20"), mtype=padded)
        self.assert_sound(change)

    def test_what_nobody_reads_may_have_any_shape(self):
        def change(file):
            file["remarks/one number"] = 5.0
            file["remarks/no numbers"] = np.zeros((0, 3), "f4")
        self.assert_sound(change)

    def test_numbers_of_the_other_precision(self):
        axis, values = "assembly/sector/symmetryAxis", STEP + "/frames/value"
        self.change(self.replace(axis, np.zeros((2, 3), "f8")))
        self.assert_sound(self.replace(values, np.zeros(2, "f4")))

    def test_a_model_without_an_assembly(self):
        def change(file):
            del file["assembly"]
        self.assert_sound(change)

    def test_fields_that_do_not_fit(self):
        def in_block(name, value):
            return lambda file: file.__setitem__(BLOCK + "/" + name, value)

        data = BLOCK + "/data"
        self.refused([
            (self.replace(data, np.zeros((2, 2, 6), "i4")), data + ": must hold floats or doubles"),
            (self.replace(data, np.zeros((2, 2, 6), "f2")), data + ": must hold floats or doubles"),
            (self.replace(data, np.zeros(24, "f4")), data + ": must have the shape [frames, rows, components]"),
            (self.replace(data, np.zeros((2, 2, 6, 1), "f4")), data + ": must have the shape"),
            (self.replace(data, np.zeros((3, 2, 6), "f4")), data + ": holds 3 frames, the block has 2"),
            (self.replace(data, np.zeros((2, 3, 6), "f4")), data + ": holds 3 rows, its location has 2"),
            (self.replace(data, np.zeros((2, 2, 4), "f4")), data + ": holds 4 components, there are 6 component labels"),
            (in_block("frames", np.array([0, 2], "i4")), BLOCK + "/frames: frame 2 is out of range 0..1"),
            (in_block("frames", np.array([-1], "i4")), BLOCK + "/frames: frame -1 is out of range 0..1"),
            (in_block("frames", np.array([1, 1], "i4")), BLOCK + "/frames: frame 1 occurs twice"),
            (in_block("frames", np.array([0.0, 1.0])), BLOCK + "/frames: must hold integers"),
            (lambda file: file[STEP + "/fields/S"].attrs.pop("type"), STEP + '/fields/S: has no attribute "type"'),
            (self.attribute(BLOCK, "location", text("none")), BLOCK + ': there is no location "none"'),
            (lambda file: file.pop("locations"), STEP + '/fields/NT/blocks/0: there is no location "nodes"'),
            (lambda file: file[STEP + "/fields/S/blocks"].move("0", "1"), STEP + "/fields/S/blocks/0: is missing"),
            (lambda file: file.__setitem__(STEP + "/fields/S/frames", np.array([5], "i4")),
             STEP + "/fields/S/frames: frame 5 is out of range 0..1"),
            (lambda file: file.__setitem__(STEP + "/fields/S/frames", np.array([-5], "i4")),
             STEP + "/fields/S/frames: frame -5 is out of range 0..1"),
            (lambda file: file.__setitem__(STEP + "/fields/S/frames", np.array([0, 0], "i4")),
             STEP + "/fields/S/frames: frame 0 occurs twice")])

    def test_a_block_outside_of_its_fields_frames(self):
        def change(file):
            file[STEP + "/fields/S/frames"] = np.array([1], "i4")
            file[BLOCK + "/frames"] = np.array([0], "i4")
        self.assert_refused(change, BLOCK + "/frames: the field does not exist in frame 0")

    def test_components_that_do_not_fit_the_type(self):
        def width(count):
            def change(file):
                del file[STEP + "/fields/S"].attrs["componentLabels"]
                self.replace(BLOCK + "/data", np.zeros((2, 2, count), "f4"))(file)
            return change
        self.refused([(width(7), BLOCK + "/data: 7 components do not fit type 5"),
                      (width(0), BLOCK + "/data: 0 components do not fit type 5")])

    def test_a_frame_of_too_many_numbers(self):
        def change(file):
            creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            creation.set_alloc_time(h5py.h5d.ALLOC_TIME_EARLY)
            creation.set_fill_time(h5py.h5d.FILL_TIME_NEVER)
            del file[STEP + "/fields/S"].attrs["componentLabels"]
            file[STEP + "/fields/S"].attrs["type"] = 2
            del file[BLOCK + "/data"]
            shape = h5py.h5s.create_simple((2, 2, 2**30))
            h5py.h5d.create(file[BLOCK].id, b"data", h5py.h5t.IEEE_F32LE, shape, creation)
        self.assert_refused(change, BLOCK + "/data: a frame is too large")

    def test_a_location_of_too_many_rows(self):
        def change(file):
            creation = h5py.h5p.create(h5py.h5p.DATASET_CREATE)
            creation.set_alloc_time(h5py.h5d.ALLOC_TIME_EARLY)
            creation.set_fill_time(h5py.h5d.FILL_TIME_NEVER)
            del file["locations/nodes/nodeLabels"]
            h5py.h5d.create(file["locations/nodes"].id, b"nodeLabels", h5py.h5t.STD_I8LE, h5py.h5s.create_simple((2**31,)), creation)
        self.assert_refused(change, "/locations/nodes: has too many rows")

    def test_locations_that_do_not_fit(self):
        labels = "/locations/points/elementLabels"
        self.refused([
            (self.replace(labels, np.array([1, 2, 3], "i4")), "/locations/points: the label data sets differ in length"),
            (self.replace(labels, np.array([[1, 2]], "i4")), labels + ": labels must have one dimension"),
            (self.replace(labels, np.array([1.0, 2.0])), labels + ": must hold integers"),
            (lambda file: file["locations/points"].pop("integrationPoints"), "/locations/points/integrationPoints: is missing"),
            (self.attribute("/locations/points", "position", text("somewhere")), '/locations/points: the position "somewhere" is not known'),
            (lambda file: file["locations/points"].attrs.pop("position"), '/locations/points: the position "" is not known')])

    def test_frames_that_do_not_fit(self):
        frames = STEP + "/frames"
        unequal = frames + ": incrementNumber, value and description must have one entry per frame each"
        self.refused([(self.replace(frames + "/value", np.zeros(3)), unequal),
                      (self.replace(frames + "/description", np.array([b"a"], "S1")), unequal),
                      (self.replace(frames + "/incrementNumber", np.zeros((2, 1), "i4")), unequal),
                      (self.replace(frames + "/incrementNumber", np.zeros(2)), frames + "/incrementNumber: must hold integers"),
                      (self.replace(frames + "/incrementNumber", np.array([0, 2**40])), frames + "/incrementNumber: the integer 1099511627776 at place 1 is too large"),
                      (self.replace(frames + "/value", np.zeros(2, "i4")), frames + "/value: must hold floating-point numbers"),
                      (self.replace(frames + "/description", np.zeros(2)), frames + "/description: must hold text")])

    def test_the_rest_of_a_step(self):
        output = STEP + "/history/Node 1/outputs/U1"
        self.refused([(self.replace(output, np.zeros(4, "f4")), output + ": a history must have the shape"),
                      (self.replace(output, np.zeros((2, 2), "i4")), output + ": must hold floating-point numbers"),
                      (self.attribute(STEP, "massCenter", [1.0]), STEP + ': the attribute "massCenter" must hold 3 numbers'),
                      (self.attribute(STEP, "inertiaAboutOrigin", [1.0] * 3), STEP + ': the attribute "inertiaAboutOrigin" must hold 6 numbers')])

    def test_models_that_do_not_fit(self):
        mesh = "/assembly/instances/I-1/mesh"
        bad_nodes = mesh + "/nodes/coordinates: must be three floating-point numbers for each node label"
        bad_elements = mesh + "/elements/T3D2/connectivity: must be the node labels of each element"
        self.refused([
            (self.replace("/parts/P/nodeSets/N", np.array([[1]], "i4")), "/parts/P/nodeSets/N: labels must have one dimension"),
            (self.replace("/assembly/nodeSets/N/I-1", np.array([1.5])), "/assembly/nodeSets/N/I-1: must hold integers"),
            (self.replace("/assembly/sector/symmetryAxis", np.zeros((3, 2))), "/assembly/sector/symmetryAxis: the axis must be two points"),
            (self.replace(mesh + "/nodes/labels", np.array([1.0, 2.0, 3.0])), mesh + "/nodes/labels: labels must be integers in one dimension"),
            (self.replace(mesh + "/nodes/labels", np.array([[1, 2, 3]])), mesh + "/nodes/labels: labels must be integers in one dimension"),
            (self.replace(mesh + "/nodes/coordinates", np.zeros((3, 2))), bad_nodes),
            (self.replace(mesh + "/nodes/coordinates", np.zeros((3, 3), "i4")), bad_nodes),
            (self.replace(mesh + "/elements/T3D2/connectivity", np.zeros((3, 2), "i4")), bad_elements),
            (self.replace(mesh + "/elements/T3D2/connectivity", np.zeros(2, "i4")), bad_elements),
            (self.replace(mesh + "/elements/T3D2/connectivity", np.zeros((2, 2))), bad_elements)])

    def flip(self, offset):
        content = bytearray(self.path("job.odb").read_bytes())
        content[offset] ^= 4
        self.path("job.odb").write_bytes(content)

    def test_a_damaged_superblock(self):
        self.flip(40)
        self.assert_told("cannot be opened as a database (")

    def test_a_damaged_root(self):
        with h5py.File(self.path("job.odb")) as file:
            address = h5py.h5o.get_info(file.id).addr
        self.flip(address + 8)
        self.assert_told("/: cannot be opened (")

    def test_damaged_lists_of_members_and_attributes(self):
        """HDF5 1.10 crashes when it is asked to sort such a list."""
        def members(file):
            for i in range(300):
                file[f"assembly/nodeSets/set {i}/I-1"] = np.array([1], "i4")

        def attributes(file):
            for i in range(300):
                file[STEP].attrs[f"note {i}"] = i

        for change, place in ((members, "/assembly/nodeSets"), (attributes, STEP)):
            for signature in (b"FRHP", b"FHDB", b"BTHD", b"BTLF"):
                with self.subTest(place=place, signature=signature):
                    self.setUp()
                    self.change(change)
                    self.flip(self.path("job.odb").read_bytes().rindex(signature) + 7)
                    self.assert_told(place)

    def test_damaged_packed_labels_texts_and_lists(self):
        for path in (STEP + "/frames/description", STEP + "/frames/incrementNumber", STEP + "/frames/value",
                     "/assembly/nodeSets/N/I-1", STEP + "/history/Node 1/outputs/U1"):
            with self.subTest(path):
                self.setUp()
                with h5py.File(self.path("job.odb")) as file:
                    shape = file[path].shape
                self.change(self.replace(path, chunks=(1, *shape[1:]), fletcher32=True))
                with h5py.File(self.path("job.odb")) as file:
                    chunk = file[path].id.get_chunk_info(0)
                self.flip(chunk.byte_offset)
                self.assert_told(path + ": ")

    def test_a_damaged_index_of_chunks(self):
        self.change(lambda file: file.create_dataset("extra", data=np.random.default_rng(1).random((50, 20)), chunks=(1, 20),
                                                     compression="gzip"))
        self.flip(self.path("job.odb").read_bytes().rindex(b"FADB") + 20)
        self.assert_told("/extra: ")

    def test_numbers_of_other_widths_and_orders_are_taken(self):
        for labels in ("i1", ">i4", "u2", "<i8", ">u8"):
            for rows in (">f4", ">f8", "<f8"):
                with self.subTest(labels=labels, rows=rows):
                    self.setUp()
                    self.change(self.replace("/locations/points/elementLabels", np.array([1, 2], labels)))
                    self.change(self.replace("/assembly/nodeSets/N/I-1", np.array([1, 2], labels)))
                    self.assert_sound(self.replace(BLOCK + "/data", np.zeros((2, 2, 6), rows)))

    def test_a_file_may_have_next_to_nothing(self):
        with h5py.File(self.path("job.odb"), "w", libver=("v110", "v110")) as file:
            file.attrs["layout"] = 2
        self.assert_sound(lambda file: None)
        self.assert_sound(lambda file: file.create_group("steps/Step-1/fields/S").attrs.__setitem__("type", 2))
        self.assert_sound(lambda file: set_attributes(file.create_group("assembly/instances/I"), part="P"))
