"""`kolvex report`: its pages hold what the database holds, as h5py and numpy see it."""
import unittest

import numpy as np

from page import Page
from support import Database, ProgramTest, set_attributes

# A row of cubes along x, each with the nodes of the square at its ends; node 10 i + k is corner k at x = i.
SQUARE = [(0, 0), (1, 0), (1, 1), (0, 1)]
NASTY = "</script><img src=x onerror=alert(1)><!--"


def cubes(count):
    labels = [10 * i + k for i in range(1, count + 2) for k in range(1, 5)]
    places = [(i, *SQUARE[k]) for i in range(count + 1) for k in range(4)]
    connectivity = [[10 * (i + end) + k for end in (0, 1) for k in range(1, 5)] for i in range(1, count + 1)]
    return labels, places, connectivity


def add_cubes(odb, count, instance="I-1", shift=0):
    labels, places, connectivity = cubes(count)
    mesh = odb.file.require_group(f"assembly/instances/{instance}/mesh")
    mesh["nodes/labels"] = np.array(labels, "i4")
    mesh["nodes/coordinates"] = np.array(places, "f8") + [0, 0, shift]
    mesh["elements/C3D8/labels"] = np.arange(1, count + 1, dtype="i4")
    mesh["elements/C3D8/connectivity"] = np.array(connectivity, "i4")
    return labels


class ReportTest(ProgramTest):
    def report(self, *arguments, status=0, page="job.html", **options):
        run = self.run_program("job.odb", *arguments, program="report", **options)
        self.assertEqual(run.status, status, run.err)
        if status:
            self.assertIsNone(run.text(page))
            self.assertEqual([p.name for p in self.directory.iterdir() if ".tmp" in p.name], [])
            return run
        self.said = run
        return Page(self.path(page))

    def random(self, *shape):
        return np.random.default_rng(7).normal(size=shape) * 100

    def three_cubes(self, **more):
        """Three cubes, two steps; U and NT at nodes, S at integration points and at nodes of elements, histories."""
        rows = {"U": self.random(2, 16, 3).astype("f4"), "NT": self.random(2, 16), "IP": self.random(2, 6, 6).astype("f4"),
                "S": self.random(2, 24, 6).astype("f4")}
        with Database(self.path("job.odb")) as odb:
            set_attributes(odb.file, title="three cubes", producer="a hand")
            labels = add_cubes(odb, 3)
            connectivity = cubes(3)[2]
            odb.location("nodes", "nodal", nodeLabels=labels)
            odb.location("points", "integrationPoint", elementLabels=[1, 1, 2, 2, 3, 3], integrationPoints=[1, 2] * 3)
            odb.location("corners", "elementNodal", elementLabels=np.repeat([1, 2, 3], 8), nodeLabels=np.ravel(connectivity))
            odb.file["assembly/elementSets/LEFT/I-1"] = np.array([1], "i4")
            odb.file["assembly/nodeSets/END/I-1"] = np.array([44, 41, 43, 42, 999], "i4")
            step = odb.step("Step-1", (3, 8), description="pull", mass=2.5, massCenter=np.array([0.0, 1.5, 3]))
            odb.field(step, "U", 3, [("nodes", rows["U"])], ["U1", "U2", "U3"], description="Spatial displacement")
            odb.field(step, "NT", 2, [("nodes", rows["NT"])])
            odb.field(step, "S", 5, [("corners", rows["S"])], ["S11", "S22", "S33", "S12", "S13", "S23"],
                      description="Stress components", validInvariants=np.array([3, 4, 5, 6], "i4"))
            odb.field(step, "IP", 5, [("points", rows["IP"])], description="Stress at points")
            region = step.create_group("history/Node 44")
            set_attributes(region, node=44)
            region["outputs/RF1"] = np.array([[0, 1], [0.5, 1e-7], [1, -3]], "f4")
            region["outputs/RF2"] = np.array([[0, 2], [0.5, 3], [1, 4]], "f4")
            for action in more.values():
                action(odb, step)
        return rows

    def mises(self, rows):
        s = rows.astype("f8")
        d = np.stack([s[..., 0] - s[..., 1], s[..., 1] - s[..., 2], s[..., 2] - s[..., 0]])
        return np.sqrt(0.5 * (d * d).sum(0) + 3 * (s[..., 3:] ** 2).sum(-1))


class ContentTest(ReportTest):
    def test_the_page_has_the_skin_with_labels_and_coordinates(self):
        self.three_cubes()
        page = self.report()
        labels, places, connectivity = cubes(3)
        self.assertEqual(page.vertices(), {label: list(map(float, place)) for label, place in zip(labels, places)})
        outer = [face for face in page.faces() if not face[2]]
        self.assertEqual(len(outer), 14)
        self.assertEqual({owner for owner, _, _ in outer}, {1, 2, 3})
        self.assertIn((1, frozenset([11, 12, 13, 14]), False), outer)
        self.assertNotIn(frozenset([21, 22, 23, 24]), [corners for _, corners, _ in outer])
        self.assertEqual((page.description["model"]["nodes"], page.description["model"]["cells"]), (16, 3))

    def test_sets_can_be_seen_alone(self):
        self.three_cubes()
        page = self.report()
        self.assertEqual(page.members("LEFT"), [1])
        self.assertEqual(page.members("END"), [41, 42, 43, 44])
        inner = [face for face in page.faces() if face[2]]
        self.assertEqual(sorted(inner), sorted([(1, frozenset([21, 22, 23, 24]), True), (2, frozenset([21, 22, 23, 24]), True)]))

    def test_fields_at_nodes_are_there_to_a_step(self):
        rows = self.three_cubes()
        page = self.report()
        labels = cubes(3)[0]
        for frame in (0, 1):
            for component in range(3):
                numbers, step = page.column(0, frame, "U", str(component + 1))
                for i, label in enumerate(labels):
                    self.assertAlmostEqual(numbers[label], float(rows["U"][frame, i, component]), delta=0.51 * step + 1e-9)
            numbers, step = page.column(0, frame, "NT", "")
            for i, label in enumerate(labels):
                self.assertAlmostEqual(numbers[label], rows["NT"][frame, i], delta=0.51 * step + 1e-4)

    def test_a_node_has_the_mean_of_its_elements_and_an_element_that_of_its_points(self):
        rows = self.three_cubes()
        page = self.report()
        nodes = np.ravel(cubes(3)[2])
        means = {int(n): rows["S"][1, nodes == n].astype("f8").mean(axis=0) for n in nodes}
        for c, name in enumerate(("11", "22", "33", "12", "13", "23")):
            numbers, step = page.column(0, 1, "S", name)
            for label, mean in means.items():
                self.assertAlmostEqual(numbers[label], mean[c], delta=0.51 * step + 1e-4)
        numbers, step = page.column(0, 1, "S", "mises")
        for label, mean in means.items():
            self.assertAlmostEqual(numbers[label], float(self.mises(mean[None])[0]), delta=0.51 * step + 1e-3)
        numbers, step = page.column(0, 0, "IP", "22")
        for element in (1, 2, 3):
            pair = rows["IP"][0, 2 * element - 2:2 * element, 1].astype("f8")
            self.assertAlmostEqual(numbers[element], pair.mean(), delta=0.51 * step + 1e-4)

    def test_extremes_are_those_of_the_stored_rows_and_say_where(self):
        rows = self.three_cubes()
        page = self.report()
        nodes, owners = np.ravel(cubes(3)[2]), np.repeat([1, 2, 3], 8)
        mises = self.mises(rows["S"][1])
        at = page.entry(0, 1, "S")["extremes"]["mises"]["max"]
        i = int(mises.argmax())
        self.assertEqual((at["node"], at["cell"]), (nodes[i], owners[i]))
        self.assertAlmostEqual(at["value"], mises[i], delta=1e-6 * mises[i])
        self.assertEqual(int(page.array(page.description["model"]["nodeLabels"])[at["vertex"]]), nodes[i])
        self.assertEqual(at["at"], page.vertices()[int(nodes[i])])
        lowest = page.entry(0, 1, "NT")["extremes"][""]["min"]
        self.assertEqual(lowest["value"], rows["NT"][1].min())  # a double, exactly
        self.assertEqual(lowest["node"], cubes(3)[0][int(rows["NT"][1].argmin())])
        at = page.entry(0, 0, "IP")["extremes"]["13"]["max"]
        i = int(rows["IP"][0, :, 4].argmax())
        self.assertEqual((at["cell"], at["point"], at["value"]), (i // 2 + 1, i % 2 + 1, float(rows["IP"][0, i, 4])))
        self.assertEqual(at["at"], [i // 2 + 0.5, 0.5, 0.5])

    def test_principal_stresses_are_extremes_too(self):
        rows = self.three_cubes()
        page = self.report()
        full = rows["S"][0].astype("f8")
        matrices = np.array([[[a, d, e], [d, b, f], [e, f, c]] for a, b, c, d, e, f in full])
        least = np.linalg.eigvalsh(matrices)[:, 0]
        at = page.entry(0, 0, "S")["extremes"]["minprincipal"]["min"]
        self.assertAlmostEqual(at["value"], least.min(), delta=1e-4)
        self.assertNotIn("maxprincipal", page.entry(0, 0, "S")["extremes"])  # the field does not name it as valid

    def test_mass_steps_frames_and_histories_are_there(self):
        self.three_cubes()
        page = self.report()
        description = page.description
        [step] = description["steps"]
        self.assertEqual((step["name"], step["description"], step["mass"], step["massCenter"]), ("Step-1", "pull", 2.5, [0, 1.5, 3]))
        self.assertEqual([f["number"] for f in step["frames"]], [3, 8])
        self.assertEqual((description["title"], description["producer"], description["file"]), ("three cubes", "a hand", "job.odb"))
        histories = description["histories"]
        self.assertEqual([(h["region"], h["output"], h["samples"]) for h in histories["list"]], [("Node 44", "RF1", 3), ("Node 44", "RF2", 3)])
        values, x = page.array(histories["values"]), page.array(histories["abscissae"])
        np.testing.assert_array_equal(values, np.array([1, 1e-7, -3, 2, 3, 4], "f4"))
        np.testing.assert_array_equal(x, np.array([0, 0.5, 1], "f4"))  # once for both

    def test_rows_that_are_not_numbers_are_none(self):
        def add(odb, step):
            odb.location("some", "nodal", nodeLabels=[11, 12])
            odb.field(step, "X", 2, [("some", np.array([[np.nan, 4], [np.inf, -5]]))])

        self.three_cubes(add=add)
        page = self.report()
        numbers, _ = page.column(0, 0, "X", "")
        self.assertEqual([label for label, n in numbers.items() if not np.isnan(n)], [12])
        self.assertEqual(page.entry(0, 0, "X")["extremes"][""]["max"]["value"], 4)
        self.assertEqual(page.entry(0, 1, "X")["extremes"][""]["max"]["value"], "inf")

    def test_several_instances_are_told_apart(self):
        def add(odb, _):
            set_attributes(odb.file.create_group("assembly/instances/J"), part="P")
            add_cubes(odb, 1, "J", shift=5)

        self.three_cubes(add=add)
        page = self.report()
        model = page.description["model"]
        self.assertEqual(model["instances"], ["I-1", "J"])
        owners = page.array(model["nodeInstances"])
        heights = page.array(model["coordinates"]).reshape(-1, 3)[:, 2]
        np.testing.assert_array_equal(owners, (heights >= 5).astype("i4"))
        self.assertEqual(page.members("J"), [1])
        self.assertEqual(page.entry(0, 0, "NT")["extremes"][""]["max"]["instance"], "I-1")


class RecordsTest(ReportTest):
    def extract(self):
        self.config("EXTRACT_MASS", "EXTRACT_HISTORY", "EXTRACT_FIELD", "EXTRACT_ALL", "EXTRACT_FIELD_SETS", "EXTRACT_FIELD_COMPONENTS")
        run = self.run_program("-odb", "job", "-config", "config.txt")
        self.assertEqual(run.status, 0, run.err)
        return run.text("params.txt").decode().splitlines()

    def test_all_records_are_there_and_mean_what_their_names_say(self):
        self.three_cubes()
        lines = self.extract()
        page = self.report("--params", "params.txt")
        records = page.records()
        self.assertEqual([name for name, _ in records], [line.split("\t")[0] for line in lines])
        part = page.description["records"]
        columns = {name: page.array(reference) for name, reference in part["columns"].items()}
        place = [name for name, _ in records].index("Step_1__Frame_8__END__U__2__min")
        told = [part["texts"][columns[c][place]] for c in ("field", "quantity", "set", "extreme")]
        self.assertEqual(told, ["U", "2", "__END", "min"])
        self.assertEqual((columns["step"][place], columns["frame"][place]), (0, 1))
        self.assertTrue((columns["step"] >= 0).all())

    def place_of(self, page, name):
        """What the page tells of the place of a record: {column: label}."""
        place = [n for n, _ in page.records()].index(name)
        model, columns = page.description["model"], page.description["records"]["columns"]
        told = {c: int(page.array(columns[c])[place]) for c in ("vertex", "element", "node", "cell", "point")}
        labels = {"vertex": page.array(model["nodeLabels"]), "element": page.array(model["elementLabels"])}
        return {c: int(labels[c][n]) if c in labels and n >= 0 else n for c, n in told.items()}

    def test_records_are_where_numpy_finds_them(self):
        rows = self.three_cubes()
        self.extract()
        page = self.report("--params", "params.txt")
        labels, _, connectivity = cubes(3)
        end = [i for i, label in enumerate(labels) if label in (41, 42, 43, 44)]
        node = labels[end[int(rows["U"][1][end, 1].argmin())]]
        self.assertEqual(self.place_of(page, "Step_1__Frame_8__END__U__2__min"), {"vertex": node, "element": -1, "node": node, "cell": -1, "point": -1})
        corner = int(self.mises(rows["S"][0, :8]).argmax())  # LEFT is the first element
        node = connectivity[0][corner]
        self.assertEqual(self.place_of(page, "Step_1__Frame_3__LEFT__S__mises__max"), {"vertex": node, "element": 1, "node": node, "cell": 1, "point": -1})
        i = int(self.mises(rows["IP"][1]).argmin())
        self.assertEqual(self.place_of(page, "Step_1__Frame_8__IP__mises__min"), {"vertex": -1, "element": i // 2 + 1, "node": -1, "cell": i // 2 + 1, "point": i % 2 + 1})
        self.assertEqual(self.place_of(page, "Step_1__Mass")["node"], -1)

    def test_engineering_extremes_have_places_where_the_configuration_is_known(self):
        rows = self.three_cubes()
        self.config("EXTRACT_FIELD", "EXTRACT_ALL", "EXTRACT_FIELD_SETS", "ENGINEERING_MIN", "PERCENTAGE = 13")
        self.assertEqual(self.run_program("-odb", "job", "-config", "config.txt").status, 0)
        name = "Step_1__Frame_8__U__mag__enggmin"
        self.assertEqual(self.place_of(self.report("--params", "params.txt"), name)["node"], -1)
        node = cubes(3)[0][int(np.linalg.norm(rows["U"][1].astype("f8"), axis=1).argsort()[1])]  # 13 % of 16 are 2
        self.assertEqual(self.place_of(self.report("--params", "params.txt", "--config", "config.txt"), name)["node"], node)
        self.assertIn(b"gone.txt: cannot be read", self.report("--params", "params.txt", "--config", "gone.txt", "-o", "other.html", status=1, page="other.html").err)

    def test_records_of_another_database_are_kept_and_counted(self):
        self.three_cubes()
        self.write("params.txt", "Other__Mass\t3\nStep_1__Mass\t2.5\r\n")
        page = self.report("--params", "params.txt")
        self.assertEqual(page.records(), [["Other__Mass", "3"], ["Step_1__Mass", "2.5"]])
        self.assertEqual(page.description["notes"], ["1 of 2 records are not of this database"])
        self.assertEqual(page.array(page.description["records"]["columns"]["step"]).tolist(), [-1, 0])

    def test_a_line_without_a_tab_is_an_error_that_names_it(self):
        self.three_cubes()
        self.write("params.txt", "Step_1__Mass\t2.5\nno record\n")
        run = self.report("--params", "params.txt", status=1)
        self.assertIn(b"params.txt: line 2: no tab", run.err)

    def test_a_file_that_is_not_there_is_an_error(self):
        self.three_cubes()
        self.assertIn(b"params.txt: cannot be read", self.report("--params", "params.txt", status=1).err)
        self.assertIn(b"import.log: cannot be read", self.report("--messages", "import.log", status=1).err)

    def test_messages_of_the_import_are_shown(self):
        self.three_cubes()
        self.write("import.log", "job.frd:7: warning: cut off\n\njob.inp: warning: <b>\n")
        page = self.report("--messages", "import.log")
        self.assertEqual(page.description["messages"], ["job.frd:7: warning: cut off", "job.inp: warning: <b>"])


class NamesTest(ReportTest):
    def test_names_of_strangers_are_never_markup(self):
        def add(odb, step):
            # A link cannot hold "/", which the format escapes.
            odb.file["assembly/elementSets/" + NASTY.replace("/", "%2F") + "/I-1"] = np.array([1], "i4")
            odb.field(step, NASTY.replace("/", "%2F"), 2, [("nodes", np.zeros((2, 16)))], description=NASTY)
            set_attributes(odb.file, title=NASTY, producer=NASTY)
            step.create_group("history/" + NASTY.replace("/", "%2F")).create_dataset("outputs/O", data=np.zeros((1, 2), "f4"))

        self.three_cubes(add=add)
        self.write("params.txt", f"{NASTY}\t{NASTY}\n")
        plain = self.report()
        page = self.report("--params", "params.txt", "--messages", "params.txt")
        self.assertNotIn(NASTY.encode(), page.bytes)
        self.assertNotIn(b"<img", page.bytes)
        self.assertEqual(page.markup.elements, plain.markup.elements)
        self.assertEqual(len(page.markup.scripts), 3)
        self.assertIn(NASTY, [s["name"] for s in page.description["sets"]])
        self.assertEqual(page.records(), [[NASTY, NASTY]])

    def test_the_name_of_the_file_is_text(self):
        self.three_cubes()
        name = "a<b>&amp; .odb"
        self.path("job.odb").rename(self.path(name))
        run = self.run_program(name, "-o", "page.html", program="report")
        self.assertEqual(run.status, 0, run.err)
        self.assertEqual(Page(self.path("page.html")).markup.title, name)

    def test_names_that_are_no_utf8_do_no_harm(self):
        self.three_cubes()
        self.write("params.txt", b"\xff\xfe\t1\n")
        self.assertEqual(self.report("--params", "params.txt").array(Page(self.path("job.html")).description["records"]["lines"]), b"\xff\xfe\t1\n")


class RoomTest(ReportTest):
    def many_frames(self):
        """A long row of cubes with random numbers, which do not pack."""
        count, frames = 3000, 40
        with Database(self.path("job.odb")) as odb:
            labels = add_cubes(odb, count)
            odb.location("nodes", "nodal", nodeLabels=labels)
            step = odb.step("Step-1", range(1, frames + 1))
            for name, kind, rows in (("U", 3, self.random(frames, len(labels), 3)), ("A", 2, self.random(frames, len(labels)))):
                odb.field(step, name, kind, [("nodes", rows.astype("f4"))])

    def test_what_has_no_room_is_left_out_by_importance_and_said(self):
        self.many_frames()
        page = self.report("--size", "2")
        self.assertLess(len(page.bytes), 2_000_000)
        self.assertGreater(len(page.bytes), 1_700_000)
        shown = [f["frame"] for f in page.description["frames"]]
        self.assertIn(39, shown)
        self.assertIn(0, shown)
        self.assertLess(len(shown), 40)
        names = [f["name"] for f in page.description["fields"]]
        of = {f["frame"]: [names[e["field"]] for e in f["fields"]] for f in page.description["frames"]}
        self.assertEqual(sorted(of[39]), ["A", "U"])  # the last frame has all fields
        self.assertEqual(of[0], ["U"])
        [note] = page.description["notes"]
        self.assertRegex(note, r"^\d+ of 80 fields in frames are left out for want of room$")
        self.assertIn(note.encode(), self.said.err)

    def test_with_room_for_all_nothing_is_left_out(self):
        self.many_frames()
        page = self.report("--size", "60")
        self.assertEqual(page.description["notes"], [])
        self.assertEqual(sum(len(f["fields"]) for f in page.description["frames"]), 80)

    def test_a_model_that_is_too_large_leaves_the_rest(self):
        with Database(self.path("job.odb")) as odb:
            add_cubes(odb, 60000)
            nodes = odb.file["assembly/instances/I-1/mesh/nodes/coordinates"]
            nodes[...] = nodes[()] + self.random(*nodes.shape) * 1e-4
            step = odb.step("Step-1", mass=3.0)
            step.create_group("history/R").create_dataset("outputs/O", data=np.ones((2, 2), "f4"))
        page = self.report("--size", "1")
        self.assertLess(len(page.bytes), 1_000_000)
        self.assertNotIn("model", page.description)
        self.assertEqual(len(page.description["histories"]["list"]), 1)
        [note] = page.description["notes"]
        self.assertRegex(note, r"^the surface of the model takes \d+\.\d MB, for which the page has no room$")


class ProgramRunTest(ReportTest):
    def test_a_database_without_a_mesh_has_a_page_without_a_picture(self):
        with Database(self.path("job.odb")) as odb:
            odb.location("nodes", "nodal", nodeLabels=[1, 2])
            odb.field(odb.step("Step-1"), "NT", 2, [("nodes", [[1.0, 2.0]])])
        page = self.report()
        self.assertNotIn("model", page.description)
        self.assertEqual(page.description["notes"], ["the database has no mesh, so there is no picture of the model"])

    def test_a_database_without_anything_has_a_page(self):
        with Database(self.path("job.odb")):
            pass
        self.assertEqual(self.report().description["steps"], [])

    def test_pages_have_no_address_to_load_from(self):
        self.three_cubes()
        page = self.report()
        self.assertIn(b"default-src 'none'", page.bytes)
        self.assertEqual([attrs for attrs, _ in page.markup.scripts if "src" in attrs], [])
        self.assertNotIn("iframe", page.markup.elements)

    def test_the_same_database_gives_the_same_page(self):
        self.three_cubes()
        self.assertEqual(self.report().bytes, self.report().bytes)

    def test_wrong_usage(self):
        for arguments in ([], ["job.odb", "--size", "0"], ["job.odb", "--size", "15x"], ["job.odb", "more"], ["--colour"]):
            run = self.run_program(*arguments, program="report")
            self.assertEqual(run.status, 2, arguments)

    def test_files_that_are_no_databases_are_named(self):
        self.write("job.odb", "no database")
        self.assertIn(b"job.odb: ", self.report(status=1).err)
        self.path("job.odb").unlink()
        self.assertIn(b"job.odb: ", self.report(status=1).err)

    def test_where_the_page_cannot_be_written_it_says_so(self):
        self.three_cubes()
        self.assertIn(b"nowhere/page.html", self.report("-o", "nowhere/page.html", status=1).err)

    def test_a_full_disk_leaves_an_older_page(self):
        self.three_cubes()
        self.path("job.html").write_text("older")
        def little_room():
            import resource
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))
        run = self.run_program("job.odb", program="report", preexec_fn=little_room)
        self.assertEqual(run.status, 1)
        self.assertEqual(self.path("job.html").read_text(), "older")


if __name__ == "__main__":
    unittest.main()
