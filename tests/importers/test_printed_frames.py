"""Steps and frames of printed tables where the solver has more than one analysis to print: modes of cyclic models, complex
modes, contact. Expected numbers are read from the same tables in a few lines of their own."""
import math
import re
import unittest


from decks import CORNERS, Mesh
from expanded import expanded
from test_real_solver import SolverTest

MATERIAL = "*MATERIAL, NAME=M\n*ELASTIC\n210000., .3\n*DENSITY\n7.8e-9\n"


def block(mesh, counts, at=(0, 0, 0)):
    """Unit cubes side by side; their labels."""
    return [mesh.add("C3D8", (at[0] + x, at[1] + y, at[2] + z), CORNERS)
            for z in range(counts[2]) for y in range(counts[1]) for x in range(counts[0])]


def node_set(name, labels):
    return f"*NSET, NSET={name}\n" + ",\n".join(map(str, labels)) + "\n"


class FramesTest(SolverTest):
    def import_quietly(self, *arguments):
        run = self.import_job(*arguments)
        self.assertEqual((run.status, run.err), (0, b""))
        odb = expanded(self.path("job.odb"))
        self.addCleanup(odb.close)
        return odb

    def frames(self, odb, step):
        group = odb[f"steps/{step}/frames"]
        return [(int(number), text.decode()) for number, text in zip(group["incrementNumber"], group["description"])]

    def samples(self, odb, step, region, output):
        return [value for _, value in odb[f"steps/{step}/history/{region}/outputs/{output}"][()].tolist()]


class CyclicTest(FramesTest):
    """A sector of 30 degrees of a ring."""

    def deck(self, diameters):
        text = "*NODE\n"
        label = 0
        for z in range(3):
            for angle in (0, 15, 30):
                for radius in (5, 6, 7, 8):
                    label += 1
                    x, y = (radius * f(math.radians(angle)) for f in (math.cos, math.sin))
                    text += f"{label},{x:.9g},{y:.9g},{z}\n"
        text += "*ELEMENT, TYPE=C3D8, ELSET=EALL\n"
        element = 0
        for z in range(2):
            for angle in range(2):
                for radius in range(3):
                    element += 1
                    low = 1 + 12 * z + 4 * angle + radius
                    nodes = [low, low + 1, low + 5, low + 4]
                    text += ",".join(map(str, [element, *nodes, *(node + 12 for node in nodes)])) + "\n"
        for name, first in (("SA", 1), ("SB", 9)):
            text += node_set(name, [first + 12 * z + radius for z in range(3) for radius in range(4)])
        text += node_set("MID", [5, 17, 29]) + node_set("OUTER", [4, 16, 28]) + MATERIAL
        text += "*SOLID SECTION, ELSET=EALL, MATERIAL=M\n*SURFACE, NAME=F1, TYPE=NODE\nSA\n*SURFACE, NAME=F2, TYPE=NODE\nSB\n"
        text += "*TIE, CYCLIC SYMMETRY, NAME=T, POSITION TOLERANCE=.01\nF2, F1\n"
        text += "*CYCLIC SYMMETRY MODEL, N=12, TIE=T, NGRAPH=1\n0,0,0,0,0,1\n*BOUNDARY\nMID,1,3\n"
        for low, high in diameters:
            text += (f"*STEP\n*FREQUENCY\n3\n*SELECT CYCLIC SYMMETRY MODES, NMIN={low}, NMAX={high}\n"
                     "*NODE FILE\nU\n*NODE PRINT, NSET=OUTER\nU\n*END STEP\n")
        return text

    def real_parts(self):
        """The first displacement of node 28 in each mode, as printed."""
        text = self.path("job.dat").read_text()
        found = []
        for mode in re.split(r"E I G E N V A L U E +N U M B E R", text)[1:]:
            found.append(float(re.search(r"^ +28 +(\S+)", mode, re.M).group(1)))
        return found

    def stored(self, odb, step, field):
        """The same in the frames of a field."""
        group = odb[f"steps/{step}/fields/{field}"]
        block = group["blocks/0"]
        row = odb["locations"][block.attrs["location"].decode()]["nodeLabels"][()].tolist().index(28)
        frames = [int(frame) for frame in group["frames"]] if "frames" in group else range(len(block["data"]))
        numbers = odb[f"steps/{step}/frames/incrementNumber"]
        return {int(numbers[frame]): float(block["data"][k][row][0]) for k, frame in enumerate(frames)}

    def test_modes_are_paired_by_diameter_and_number(self):
        self.solve(self.deck([(1, 2)]))
        for arguments in ((), ("--no-deck",)):
            odb = self.import_quietly(*arguments)
            printed = self.stored(odb, "Step-1", "U_PRINT")
            self.assertEqual(sorted(printed), [1, 2, 3, 4, 5, 6])
            for number, value in zip(sorted(printed), self.real_parts()):
                self.assertAlmostEqual(printed[number] / value, 1, places=6)
            # The result file lacks the second one of every pair.
            results = self.stored(odb, "Step-1", "U")
            self.assertLess(len(results), len(printed))
            for number, value in results.items():
                self.assertAlmostEqual(value / printed[number], 1, places=4)
            texts = dict(self.frames(odb, "Step-1"))
            self.assertRegex(texts[3], r"^Mode 3: Frequency = \S+, Nodal Diameter = 1$")
            self.assertRegex(texts[4], r"^Mode 1: Frequency = \S+, Nodal Diameter = 2$")
            odb.close()

    def test_every_step_has_its_diameter(self):
        self.solve(self.deck([(0, 0), (1, 1), (2, 2)]))
        odb = self.import_quietly()
        self.assertEqual(list(odb["steps"]), ["Step-1", "Step-2", "Step-3"])
        for diameter in range(3):
            texts = [text for _, text in self.frames(odb, f"Step-{diameter + 1}")]
            self.assertEqual(len(texts), 3)
            for text in texts:
                self.assertTrue(text.endswith(f"Nodal Diameter = {diameter}"), text)


class ComplexModesTest(FramesTest):
    def test_every_mode_is_a_frame_and_the_next_step_has_its_times(self):
        mesh = Mesh()
        block(mesh, (1, 1, 3))
        sets = node_set("BOT", mesh.at(lambda x, y, z: z == 0)) + node_set("TOP", mesh.at(lambda x, y, z: z == 3))
        prints = "*NODE PRINT, NSET=TOP\nU\n"
        self.solve(mesh.text() + sets + MATERIAL + "*SOLID SECTION, ELSET=EC3D8, MATERIAL=M\n*BOUNDARY\nBOT,1,3\n"
                   "*STEP\n*STATIC\n1., 2.\n*CLOAD\nTOP,1,1.\n" + prints + "*END STEP\n"
                   "*STEP\n*FREQUENCY, STORAGE=YES\n6\n*NODE FILE\nU\n*END STEP\n"
                   "*STEP\n*COMPLEX FREQUENCY, CORIOLIS\n4\n*DLOAD\nEC3D8,CENTRIF,1e8,0.,0.,0.,0.,0.,1.\n*END STEP\n"
                   "*STEP, INC=100\n*MODAL DYNAMIC\n1e-6,4e-6\n*MODAL DAMPING\n1,6,.02\n*CLOAD\nTOP,1,10.\n*END STEP\n")
        odb = self.import_quietly()
        table = re.findall(r"^ +(\d) +\S+ +(\S+) +\S+$", self.path("job.dat").read_text(), re.M)
        frequencies = [float(value) for _, value in table[:4]]
        group = odb["steps/Step-3/frames"]
        self.assertEqual(group["incrementNumber"][()].tolist(), [1, 2, 3, 4])
        for value, printed, text in zip(group["value"], frequencies, group["description"]):
            self.assertAlmostEqual(value / printed, 1, places=6)
            self.assertRegex(text.decode(), r"^Mode \d: Frequency = ")
        self.assertIn("U_PRINT_IM", odb["steps/Step-3/fields"])
        for value, time in zip(odb["steps/Step-4/frames/value"], (1e-6, 2e-6, 3e-6, 4e-6)):
            self.assertAlmostEqual(value / time, 1, places=6)


class ContactTest(FramesTest):
    """A block pressed and then moved on another one."""

    KEYS = {"": "CF", "_CFN": "CFN", "_CFS": "CFS"}

    def deck(self, prints):
        mesh = Mesh()
        lower = block(mesh, (2, 2, 1))
        # Its corners are over the middles of the lower elements: no node is shared.
        upper = block(mesh, (1, 1, 1), (0.5, 0.5, 1))
        text = mesh.text() + node_set("BOT", mesh.at(lambda x, y, z: z == 0)) + node_set("TOP", mesh.at(lambda x, y, z: z == 2))
        for name, labels in (("ELOW", lower), ("EUP", upper)):
            text += f"*ELSET, ELSET={name}\n" + ",".join(map(str, labels)) + "\n"
        text += MATERIAL + "*SOLID SECTION, ELSET=EC3D8, MATERIAL=M\n"
        text += ("*SURFACE, NAME=MAS\nELOW, S2\n*SURFACE, NAME=SLA\nEUP, S1\n*SURFACE INTERACTION, NAME=SI\n"
                 "*SURFACE BEHAVIOR, PRESSURE-OVERCLOSURE=LINEAR\n1e6\n*FRICTION\n.3, 1e5\n"
                 "*CONTACT PAIR, INTERACTION=SI, TYPE=SURFACE TO SURFACE\nSLA, MAS\n*BOUNDARY\nBOT,1,3\nTOP,1,2\n")
        for direction, way in ((3, -.001), (1, .0005)):
            text += f"*STEP, NLGEOM\n*STATIC, DIRECT\n.5, 1.\n*BOUNDARY\nTOP,{direction},{direction},{way}\n{prints}*END STEP\n"
        return text

    def rows(self, title):
        """The numbers of the rows below each title."""
        text = self.path("job.dat").read_text()
        rows = re.findall(r"^ +" + title + r".*\n\n +(.*)$", text, re.M)
        return [[float(word) for word in row.split()] for row in rows]

    def test_forces_between_surfaces_are_told_apart(self):
        self.solve(self.deck("*CONTACT PRINT, SLAVE=SLA, MASTER=MAS\nCF, CFN, CFS\n*NODE PRINT, NSET=TOP, TOTALS=ONLY\nRF\n"
                             "*NODE FILE\nU\n"))
        odb = self.import_quietly()
        self.assertEqual([len(step["frames/value"]) for step in odb["steps"].values()], [2, 2])
        forces, areas = self.rows("total surface force"), self.rows("area,  normal force")
        self.assertEqual([len(forces), len(areas)], [12, 12])
        self.assertEqual({len(row) for row in areas}, {3})
        for part, ending in enumerate(("", "_CFN", "_CFS")):
            for outputs, tables in ((("SOF1", "SOF2", "SOF3", "SOM1"), forces), (("SOAREA", "SONF", "SOSF"), areas)):
                for column, output in enumerate(outputs):
                    found = [value for step in ("Step-1", "Step-2")
                             for value in self.samples(odb, step, "Surface SLA, MAS", output + ending)]
                    for value, row in zip(found, tables[part::3]):
                        self.assertAlmostEqual(value, row[column], delta=2e-7 * abs(row[column]))
        shear = self.samples(odb, "Step-2", "Surface SLA, MAS", "SOF1_CFS")[-1]
        self.assertGreater(abs(shear), 1)
        whole = self.samples(odb, "Step-2", "Surface SLA, MAS", "SOF1")[-1]
        normal = self.samples(odb, "Step-2", "Surface SLA, MAS", "SOF1_CFN")[-1]
        self.assertAlmostEqual(whole, normal + shear, delta=1e-4 * abs(whole))

    def test_prints_of_contact_make_no_steps(self):
        self.solve(self.deck("*CONTACT PRINT, TOTALS=YES\nCDIS, CSTR, CELS, CNUM\n*NODE FILE\nU\n"))
        for keep in (("job.sta",), ()):
            if not keep:
                self.path("job.sta").unlink()
            odb = self.import_quietly()
            self.assertEqual([step["frames/value"][()].tolist() for step in odb["steps"].values()], [[0.5, 1.0]] * 2)
            odb.close()


class NumberedSetTest(FramesTest):
    def test_a_set_that_is_called_like_a_node(self):
        mesh = Mesh()
        block(mesh, (1, 1, 1))
        labels = mesh.at(lambda x, y, z: z == 0)
        number = mesh.at(lambda x, y, z: z == 1)[0]
        sets = node_set(str(number), labels[:2]) + node_set('"a,b"', labels[:2]) + node_set("BOT", mesh.at(lambda x, y, z: z == 0))
        sets += node_set("TOP", mesh.at(lambda x, y, z: z == 1))
        prints = f"*NODE PRINT, NSET={number}, TOTALS=YES\nRF\n*NODE PRINT, NSET=Nall\nRF\n*NODE PRINT, NSET=\"a,b\", TOTALS=ONLY\nRF\n"
        self.solve(mesh.text() + sets + MATERIAL + "*SOLID SECTION, ELSET=EC3D8, MATERIAL=M\n*BOUNDARY\nBOT,1,3\n"
                   "*STEP\n*STATIC\n*CLOAD\nTOP,3,10.\n" + prints + "*END STEP\n")
        self.import_quietly()
        self.write("extract.cfg", "ODB EXTRACTIONS\nEXTRACT_HISTORY MINMAX_HISTORY\n")
        run = self.run_program("quarnish", "-odb", "job.odb", "-config", "extract.cfg", program="kolvex")
        self.assertEqual((run.status, run.err), (0, b""))
        records = [line.split("\t") for line in self.path("params.txt").read_text().splitlines()]
        names = [name for name, _ in records]
        self.assertEqual(len(names), len(set(names)))
        values = dict(records)
        text = self.path("job.dat").read_text()
        (total, other) = re.findall(r"^ total force .*\n\n +\S+ +\S+ +(\S+)$", text, re.M)
        self.assertEqual(total, other)
        self.assertEqual(float(values[f"Step_1__History_Max__RF3_{number}-SET"]), float(total))
        self.assertEqual(float(values["Step_1__History_Max__RF3_a,b"]), float(total))
        self.assertAlmostEqual(float(values[f"Step_1__History_Max__RF3_{number}"]), 10, places=4)


if __name__ == "__main__":
    unittest.main()
