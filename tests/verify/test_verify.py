"""`kolvex verify` as a user runs it: bytes are damaged in every kind of place, and it says where."""
import os
import random
import re
import subprocess

import h5py
import numpy as np

from checksummed import add_checksums, crc32c, place_of_sums
from conditions import runnable_by_nobody
from support import ROOT, Database, ProgramTest, set_attributes
from test_upgrade import old_database

ROWS = 3000


def database(path, **storage):
    """Everything that a database can hold, most of it longer than a block of checksums."""
    with Database(path) as odb:
        many = np.arange(1, ROWS + 1)
        odb.location("nodes", "nodal", nodeLabels=many)
        odb.location("points", "integrationPoint", elementLabels=many, integrationPoints=np.ones(ROWS))
        odb.file["parts/P/nodeSets/HALF"] = many[:1500].astype("i4")
        odb.file["assembly/instances/I-1/elementSets/all of it"] = many.astype("i4")
        odb.file["assembly/nodeSets/a%2Fb/I-1"] = many.astype("i4")
        odb.file["assembly/sector/symmetryAxis"] = np.array([[0, 0, 0], [0, 0, 1]], "f4")
        mesh = odb.file.create_group("assembly/instances/I-1/mesh")
        mesh["nodes/labels"] = many.astype("i4")
        mesh["nodes/coordinates"] = np.zeros((ROWS, 3))
        mesh["elements/T3D2/labels"] = many.astype("i4")
        mesh["elements/T3D2/connectivity"] = np.ones((ROWS, 2), "i4")
        step = odb.step("Step-1", increments=range(6))
        numbers = np.arange(6 * ROWS, dtype="f4").reshape(6, ROWS)
        odb.field(step, "NT", 2, [("nodes", numbers)])
        sparse = odb.field(step, "S", 5, [("points", np.zeros((3, ROWS, 6)))])
        sparse["blocks/0/frames"] = np.array([4, 0, 2], "i4")
        if storage:
            packed = odb.field(step, "P", 2, [])
            block = packed.create_group("blocks/0")
            set_attributes(block, location="nodes")
            block.create_dataset("data", data=np.random.default_rng(1).random((6, ROWS)), chunks=(1, ROWS), **storage)
        history = step.create_group("history/Node 7")
        history["outputs/U1"] = np.zeros((2000, 2), "f4")


class VerifyTest(ProgramTest):
    def setUp(self):
        super().setUp()
        database(self.path("job.odb"))
        add_checksums(self.path("job.odb"))

    def verify(self, *arguments, **options):
        return self.run_program("verify", *arguments, program="kolvex", **options)

    def damage(self, offset, name="job.odb", value=0x20):
        with open(self.path(name), "r+b") as file:
            file.seek(offset)
            byte = file.read(1)[0]
            file.seek(offset)
            file.write(bytes([byte ^ value]))

    def offset_of(self, dataset, name="job.odb"):
        with h5py.File(self.path(name)) as odb:
            return odb[dataset].id.get_offset()

    def findings(self, *arguments):
        """What it says on standard error of a file that is damaged."""
        run = self.verify(*(arguments or ("job.odb",)))
        self.assertEqual(run.status, 1, run.err)
        self.assertEqual(run.out, b"job.odb: damaged\n")
        return run.err.decode()

    def test_a_file_with_checksums_made_after_the_format_page_is_sound(self):
        run = self.verify("job.odb")
        self.assertEqual((run.status, run.out, run.err), (0, b"job.odb: sound\n", b""))

    def test_damaged_numbers_and_labels_are_named_by_what_they_are(self):
        for dataset, byte, name in (
                ("steps/Step-1/fields/NT/blocks/0/data", 3 * 4 * ROWS + 6000, 'step "Step-1", field "NT", block 0, frame 3\n'),
                ("steps/Step-1/fields/S/blocks/0/data", 48 * ROWS + 48000, 'step "Step-1", field "S", block 0, frame 0\n'),
                ("steps/Step-1/fields/S/blocks/0/data", 60000, 'step "Step-1", field "S", block 0, frame 4\n'),
                ("steps/Step-1/history/Node 7/outputs/U1", 8000, 'step "Step-1", history region "Node 7", output "U1"\n'),
                ("locations/nodes/nodeLabels", 6000, 'location "nodes", nodeLabels\n'),
                ("locations/points/integrationPoints", 6000, 'location "points", integrationPoints\n'),
                ("parts/P/nodeSets/HALF", 3000, 'part "P", node set "HALF"'),
                ("assembly/instances/I-1/elementSets/all of it", 6000, 'instance "I-1", element set "all of it"\n'),
                ("assembly/nodeSets/a%2Fb/I-1", 6000, 'node set "a/b" in instance "I-1"\n'),
                ("assembly/sector/symmetryAxis", 5, "symmetry axis"),
                ("assembly/instances/I-1/mesh/nodes/coordinates", 36000, 'instance "I-1", coordinates of the mesh\'s nodes\n'),
                ("assembly/instances/I-1/mesh/elements/T3D2/connectivity", 12000,
                 'instance "I-1", connectivity of the mesh\'s elements "T3D2"\n'),
                ("steps/Step-1/frames/value", 9, 'step "Step-1", value of its frames'),
                ("steps/Step-1/fields/S/blocks/0/frames", 1, 'step "Step-1", field "S", block 0, its list of frames')):
            with self.subTest(dataset=dataset):
                offset = self.offset_of(dataset) + byte
                self.damage(offset)
                first = offset // 4096 * 4096
                text = self.findings()
                self.assertRegex(text, rf"^job.odb: bytes {first}\.\.\d+ are damaged: ")
                self.assertIn(name, text)
                self.damage(offset)

    def test_frames_that_are_damaged_too_are_told_beside_the_numbers(self):
        block = "steps/Step-1/fields/S/blocks/0"
        self.damage(self.offset_of(block + "/frames") + 1)
        self.damage(self.offset_of(block + "/data") + 8 * 6 * ROWS)
        findings = self.findings()
        self.assertIn("/steps/Step-1/fields/S/blocks/0/frames: frame 8196 is out of range 0..5\n", findings)
        self.assertIn('are damaged: step "Step-1", field "S", block 0', findings)

    def test_damage_over_frames_and_gaps_is_told_run_by_run(self):
        start = self.offset_of("steps/Step-1/fields/NT/blocks/0/data")
        for byte in (4 * ROWS + 100, 4 * ROWS + 5000, 4 * ROWS + 9000, 8 * ROWS + 2000, 20 * ROWS + 6000):
            self.damage(start + byte)
        lines = self.findings().splitlines()
        self.assertEqual(len(lines), 2)
        self.assertRegex(lines[0], r'field "NT", block 0, frames (0\.\.2|1, 2)$')
        self.assertRegex(lines[1], r'field "NT", block 0, frame 5$')

    def test_damaged_structure_is_named_with_the_objects_that_cannot_be_opened(self):
        with h5py.File(self.path("job.odb")) as odb:
            address = h5py.h5o.get_info(odb["steps/Step-1/fields/NT"].id).addr
        self.damage(address + 20)
        text = self.findings()
        self.assertIn("the structure of the file", text)
        self.assertIn("job.odb: /steps/Step-1/fields/NT: cannot be opened", text)

    def test_no_flipped_byte_is_overlooked(self):
        whole = self.path("job.odb").read_bytes()
        random.seed(7)
        for _ in range(150):
            offset = random.randrange(len(whole))
            self.damage(offset, value=1 << random.randrange(8))
            run = self.verify("job.odb")
            self.assertEqual(run.status, 1, (offset, run.err))
            self.assertTrue(run.err.startswith(b"job.odb: "), run.err)
            self.path("job.odb").write_bytes(whole)

    def test_damaged_checksums_are_told_from_damaged_blocks(self):
        self.damage(place_of_sums(self.path("job.odb"))[0] + 5)
        self.assertEqual(self.findings(), "job.odb: /checksums: is damaged, so nothing can be compared with it\n")

    def test_a_file_that_is_cut_off_says_so(self):
        whole = self.path("job.odb").read_bytes()
        self.path("job.odb").write_bytes(whole[:-5000])
        self.assertEqual(self.findings(), f"job.odb: is truncated: {len(whole) - 5000} of its {len(whole)} bytes are there\n")

    def test_packed_frames_are_named_by_their_number(self):
        database(self.path("job.odb"), compression="gzip")
        add_checksums(self.path("job.odb"))
        self.assertEqual(self.verify("job.odb").status, 0)
        with h5py.File(self.path("job.odb")) as odb:
            chunk = odb["steps/Step-1/fields/P/blocks/0/data"].id.get_chunk_info(4)
        self.damage(chunk.byte_offset + chunk.size // 2)
        self.assertIn('field "P", block 0, frame 4', self.findings())

    def test_a_file_without_checksums_has_a_status_of_its_own(self):
        database(self.path("plain.odb"))
        run = self.verify("plain.odb")
        self.assertEqual((run.status, run.out), (3, b""))
        self.assertEqual(run.err, b"plain.odb: has no checksums: damaged numbers cannot be detected\n")

    def test_without_checksums_those_of_hdf5_are_checked(self):
        database(self.path("job.odb"), fletcher32=True)
        self.assertEqual(self.verify("job.odb").status, 3)
        with h5py.File(self.path("job.odb")) as odb:
            chunk = odb["steps/Step-1/fields/P/blocks/0/data"].id.get_chunk_info(2)
        self.damage(chunk.byte_offset + 100)
        self.assertIn("/steps/Step-1/fields/P/blocks/0/data: slab 2 cannot be read", self.findings())

    def test_shapes_and_references_are_checked_too(self):
        for path, make, reason in (
                ("mesh", lambda odb: odb["assembly/instances/I-1/mesh/nodes"].pop("coordinates"), "coordinates: is missing"),
                ("location", lambda odb: odb["locations"].pop("points"), 'there is no location "points"'),
                ("rows", lambda odb: odb["locations/nodes"].__delitem__("nodeLabels"), "nodeLabels: is missing"),
                ("unknown", lambda odb: odb.create_group("extra").attrs.__setitem__("note", "of variable length"),
                 'the attribute "note": text of variable length is not allowed'),
                ("link", lambda odb: odb.__setitem__("extra", h5py.SoftLink("/steps")), "links that are not hard")):
            with self.subTest(path):
                name = path + ".odb"
                database(self.path(name))
                with h5py.File(self.path(name), "r+", libver=("v110", "v110")) as odb:
                    make(odb)
                run = self.verify(name)
                self.assertEqual((run.status, run.out), (1, f"{name}: damaged\n".encode()))
                self.assertIn(reason, run.err.decode())

    def test_what_is_no_database_is_told(self):
        self.write("text", "no database")
        self.write("empty", "")
        for name, reason in (("text", "is not a database: it is not an HDF5 file"), ("empty", "the file is empty")):
            with self.subTest(name):
                run = self.verify(name)
                self.assertEqual((run.status, run.out), (1, f"{name}: damaged\n".encode()))
                self.assertEqual(run.err.decode(), f"{name}: {reason}\n")

    def test_what_is_not_there_is_not_called_damaged(self):
        os.mkfifo(self.path("pipe"))
        self.path("directory").mkdir()
        self.path("link").symlink_to("nowhere")
        for name, reason in (("none", "No such file or directory"), ("pipe", "is not a regular file"),
                             ("directory", "is a directory, not a database"), ("link", "No such file or directory"),
                             ("job.odb/none", "Not a directory"), ("", "No such file or directory")):
            with self.subTest(name):
                run = self.verify(name)
                self.assertEqual((run.status, run.out, run.err.decode()), (5, b"", f"{name}: {reason}\n" if name else f"{reason}\n"))

    def test_what_may_not_be_read_is_not_called_damaged(self):
        os.chmod(self.path("job.odb"), 0o000)
        os.chmod(self.directory, 0o755)
        with runnable_by_nobody("verify") as (program, options):
            run = subprocess.run([program, "job.odb"], cwd=self.directory, capture_output=True, check=False, **options)
        self.assertEqual((run.returncode, run.stdout, run.stderr), (5, b"", b"job.odb: Permission denied\n"))

    def test_a_database_of_layout_1_has_a_status_of_its_own(self):
        old_database(self.path("old.odb"), increments=2)
        for arguments in (("old.odb",), ("--quiet", "old.odb")):
            run = self.verify(*arguments)
            self.assertEqual((run.status, run.out), (4, b""))
            self.assertEqual(run.err, b"old.odb: has layout 1, which has no checksums: it can be read, but not verified\n")
        self.assertEqual(sorted(os.listdir(self.directory)), ["job.odb", "old.odb"])

    def test_a_database_of_layout_1_that_cannot_be_read_is_damaged(self):
        for path, reason in (("steps/Hold/frames/1/fields/U/blocks/0/nodeLabels", "is missing"),
                             ("steps/Pull/history/Node 3/outputs/U1", "must have the shape"),
                             ("assembly/instances/I-1/mesh/nodes/coordinates", "is missing")):
            with self.subTest(path):
                old_database(self.path("old.odb"), increments=2)
                with h5py.File(self.path("old.odb"), "a") as old:
                    del old[path]
                    if "shape" in reason:
                        old[path] = [1.0, 2.0]
                run = self.verify("old.odb")
                self.assertEqual((run.status, run.out), (1, b"old.odb: damaged\n"))
                self.assertIn(f"old.odb: /{path}: ", run.err.decode())
                self.assertIn(reason, run.err.decode())
                self.path("old.odb").unlink()
        old_database(self.path("old.odb"), increments=2)
        whole = self.path("old.odb").read_bytes()
        self.write("old.odb", whole[:len(whole) // 2])
        self.assertEqual(self.verify("old.odb").status, 1)

    def test_of_several_files_the_worst_gives_the_status(self):
        database(self.path("plain.odb"))
        old_database(self.path("old.odb"), increments=1)
        self.write("text", "no database")
        for files, status in ((("job.odb", "job.odb"), 0), (("job.odb", "plain.odb"), 3), (("plain.odb", "job.odb"), 3),
                              (("plain.odb", "old.odb", "job.odb"), 4), (("old.odb", "plain.odb"), 4),
                              (("none", "old.odb", "job.odb"), 5), (("plain.odb", "none"), 5),
                              (("plain.odb", "text", "job.odb"), 1), (("text", "none"), 1), (("none", "old.odb", "text"), 1)):
            run = self.verify(*files)
            self.assertEqual(run.status, status)
            self.assertEqual(run.out.count(b": sound\n"), files.count("job.odb"))

    def test_quiet_says_only_what_is_wrong(self):
        run = self.verify("--quiet", "job.odb")
        self.assertEqual((run.status, run.out, run.err), (0, b"", b""))
        self.damage(self.offset_of("locations/nodes/nodeLabels"))
        run = self.verify("-q", "job.odb")
        self.assertEqual((run.status, run.out), (1, b""))
        self.assertIn(b"are damaged", run.err)

    def test_wrong_usage_and_help(self):
        self.assertEqual(self.verify().status, 2)
        self.assertEqual(self.verify("--nonsense", "job.odb").status, 2)
        run = self.verify("--version")
        self.assertEqual(run.status, 0)
        self.assertRegex(run.out, rb"^kolvex verify \d+\.\d+\.\d+\n$")
        options = self.verify("--help").out.decode()
        page = (ROOT / "docs/verify.md").read_text()
        for option in ("--quiet", "--help", "--version"):
            self.assertIn(option, options)
            self.assertIn(option, page)
        statuses = dict(re.findall(r"^  (\d)  (.+)$", options, re.MULTILINE))
        self.assertEqual(sorted(statuses), list("012345"))
        self.assertEqual(re.findall(r"^\| (\d) \| .+ \|$", page, re.MULTILINE), list("012345"))

    def test_a_full_standard_output_is_an_error(self):
        with open("/dev/full", "w") as full:
            self.assertEqual(self.verify("job.odb", stdout=full).status, 1)


    def test_the_sums_of_this_test_are_the_published_ones(self):
        self.assertEqual(crc32c(b"123456789"), 0xE3069283)
        self.assertEqual(crc32c(bytes(32)), 0x8A9136AA)
