"""Printed tables at the increments of their values: runs of the real solver that print less often, or are cut short,
against the same runs with a print after every increment."""
import itertools
import math
import os
import random
import re
import unittest

from expanded import expanded
from test_real_solver import SolverTest

CUBE = """*NODE, NSET=NALL
1,0,0,0
2,1,0,0
3,1,1,0
4,0,1,0
5,0,0,1
6,1,0,1
7,1,1,1
8,0,1,1
*ELEMENT, TYPE=C3D8, ELSET=EALL
1,1,2,3,4,5,6,7,8
*NSET, NSET=BOT
1,2,3,4
*NSET, NSET=TOP
5,6,7,8
*MATERIAL, NAME=M
*ELASTIC
210000.,.3
*DENSITY
7.8e-9
*SOLID SECTION, ELSET=EALL, MATERIAL=M
*BOUNDARY
BOT,1,3
"""
PRINT = "*NODE PRINT, NSET=TOP\nU\n"
TITLE = re.compile(r"^ displacements .* time +(\S+)$", re.M)


def step(increment, period, load, more="", procedure="*STATIC, DIRECT"):
    return f"*STEP, NLGEOM, INC=20000\n{procedure}\n{increment},{period}\n*CLOAD\nTOP,3,{load}\n{more}*END STEP\n"


class TimesTest(SolverTest):
    def solve_steps(self, steps):
        self.solve(CUBE + "".join(steps))

    def tables(self):
        """The displacement of node 5 in every table, as printed."""
        rows = re.findall(r"^ displacements .*\n\n +5 +\S+ +\S+ +(\S+)$", self.path("job.dat").read_text(), re.M)
        return [float(row) for row in rows]

    def status(self):
        """Step, increment and time in the step of every increment, in the order of the run."""
        lines = (line.split() for line in self.path("job.sta").read_text().splitlines())
        return [(int(r[0]), int(r[1]), float(r[5])) for r in lines if len(r) == 7 and r[0].isdigit()]

    def frames(self, database="job.odb"):
        """Of every frame with a printed displacement: step, number, time, and the displacement of node 5."""
        with expanded(self.path(database)) as odb:
            found = []
            for name, group in odb["steps"].items():
                field = group["fields/U_PRINT"]
                block = field["blocks/0"]
                row = odb["locations"][block.attrs["location"].decode()]["nodeLabels"][()].tolist().index(5)
                frames = block["frames"] if "frames" in block else field["frames"] if "frames" in field else None
                frames = list(frames) if frames is not None else range(len(group["frames/value"]))
                for place, frame in enumerate(frames):
                    found.append((int(name[5:]), int(group["frames/incrementNumber"][frame]),
                                  float(group["frames/value"][frame]), float(block["data"][place][row][2])))
            return found

    def import_all(self, *arguments):
        """The warnings of the import."""
        run = self.import_job(*arguments)
        self.assertEqual(run.status, 0, run.err)
        return run.err.decode()

    def assert_frames_are_of(self, truth, off=0.0):
        """`truth`: for step, increment and time in the step the displacement. Times may be off by so much where only
        total times are known, and increments need not be numbered then as the solver does."""
        frames = self.frames()
        self.assertTrue(frames, "there is nothing to compare")
        for number_of_step, number, time, value in frames:
            near = [key for key in truth
                    if key[0] == number_of_step and abs(key[2] - time) <= max(off, 2e-5 * abs(key[2]))]
            if not off:
                self.assertEqual([key[1] for key in near], [number])
            values = [truth[key] for key in near]
            self.assertTrue(any(abs(value - other) <= 1e-6 * abs(other) for other in values), (number_of_step, time))
        return frames

    def every_increment(self, steps):
        """What the run prints after each of its increments."""
        self.solve_steps(steps)
        tables = self.tables()
        self.assertEqual(len(tables), len(self.status()))
        return dict(zip(self.status(), tables))


class ThinnedRunsTest(TimesTest):
    """Runs of two or three steps with fine increments behind a preload, printed with FREQUENCY."""

    def random_run(self, chance):
        """Arguments of the steps, and of each how often it writes."""
        preload = chance.choice([1.0, 0.12345678, 1000.003, 1e6, 17.25])
        steps = [(preload / chance.choice([1, 2]), preload)]
        frequencies = [1]
        for _ in range(chance.choice([1, 2])):
            # Of the digits of total times some remain, or none.
            increment = preload * 10.0 ** -chance.choice([4, 5, 6, 7, 8])
            steps.append((increment, increment * chance.choice([7, 10, 13])))
            frequencies.append(chance.choice([1, 2, 3, 4, 20]))
        return steps, frequencies

    def deck(self, steps, frequencies, with_files):
        for number, ((increment, period), frequency) in enumerate(zip(steps, frequencies)):
            more = PRINT.replace("TOP", f"TOP, FREQUENCY={frequency}")
            if with_files and number > 0:
                more += f"*NODE FILE, FREQUENCY={frequency}\nU\n"
            yield step("%.15g" % increment, "%.15g" % period, 10 * (number + 1), more)

    def test_every_table_is_at_its_increment(self):
        for seed in range(int(os.environ.get("KOLVEX_RUNS", "8"))):
            chance = random.Random(seed)
            steps, frequencies = self.random_run(chance)
            with_files = chance.choice([True, False])
            with self.subTest(seed=seed, steps=steps, frequencies=frequencies, files=with_files):
                truth = self.every_increment(self.deck(steps, [1] * len(steps), False))
                self.solve_steps(self.deck(steps, frequencies, with_files))
                self.check_imports(truth)

    def check_imports(self, truth):
        count = len(self.tables())
        times = TITLE.findall(self.path("job.dat").read_text())
        # Half a unit of six digits, for the start of the step and the total time.
        digits = 10.0 ** (math.floor(math.log10(float(times[-1]))) - 5)
        self.assertEqual(self.import_all(), "")
        self.assertEqual(len(self.assert_frames_are_of(truth)), count)
        # Without the deck or the status file the digits may be too few. Then that is said.
        for arguments, without in itertools.product([(), ("--no-deck",)], [(), ("job.sta",)]):
            for file in without:
                self.path(file).rename(self.path("kept"))
            warnings = self.import_all(*arguments)
            if "too few digits" not in warnings and not (arguments and without):
                self.assertEqual(len(self.assert_frames_are_of(truth, digits if without else 0.0)), count)
            for file in without:
                self.path("kept").rename(self.path(file))

    def test_a_run_that_was_killed_keeps_its_increments(self):
        steps, frequencies = [(0.5, 1.0), (1e-7, 1e-6)], [1, 3]
        truth = self.every_increment(self.deck(steps, [1, 1], False))
        self.solve_steps(self.deck(steps, frequencies, False))
        text = self.path("job.dat").read_text()
        # The last two tables are lost with what the solver had not written to the disk.
        cut = [match.start() for match in TITLE.finditer(text)][-2]
        self.path("job.dat").write_text(text[:cut - 1])
        self.assertNotIn("not of this run", self.import_all())
        self.assertEqual([frame[:2] for frame in self.assert_frames_are_of(truth)], [(1, 1), (1, 2), (2, 3), (2, 6)])


class StepsTest(TimesTest):
    def numbers(self):
        return [frame[:3] for frame in self.frames()]

    def test_time_points_are_frames(self):
        points = "*TIME POINTS, NAME=T\n.3,.1\n.55\n"
        self.solve(CUBE + points + step(".25", "1.", 10, "*NODE PRINT, NSET=TOP, TIME POINTS=T\nU\n", "*STATIC") +
                   step(".2", "1.", 20, "", "*STATIC"))
        self.assertEqual(self.import_all(), "")
        times = [(s, i, t) for s, i, t in self.status() if t in (.1, .3, .55, 1)]
        self.assertEqual(self.numbers(), times)
        self.assertEqual(len(times), 8)

    def test_two_requests_of_a_set_are_one_frame(self):
        local = "*TRANSFORM, NSET=TOP, TYPE=R\n.8,.6,0.,-.6,.8,0.\n"
        prints = PRINT + "*NODE PRINT, NSET=TOP, GLOBAL=YES\nU\n*NODE PRINT, NSET=NALL\nU\n"
        self.solve(CUBE + local + step(".5", "1.", 10, prints) + step(".5", "1.", 20))
        self.assertEqual(self.import_all(), "")
        with expanded(self.path("job.odb")) as odb:
            self.assertEqual(list(odb["steps"]), ["Step-1", "Step-2"])
            for group in odb["steps"].values():
                self.assertEqual(group["frames/value"][()].tolist(), [0.5, 1.0])
                self.assertEqual(sorted(group["fields"]), ["U_PRINT", "U_PRINT_LOCAL"])
                outputs = group["history"]["Node 5 of TOP"]["outputs"]
                self.assertEqual(sorted(outputs), ["U1", "U1_LOCAL", "U2", "U2_LOCAL", "U3", "U3_LOCAL"])
                # The axes are turned about the third one.
                x, y = outputs["U1"][-1][1], outputs["U2"][-1][1]
                self.assertAlmostEqual(outputs["U1_LOCAL"][-1][1] / (.8 * x + .6 * y), 1, places=5)
                self.assertEqual(outputs["U3_LOCAL"][-1][1], outputs["U3"][-1][1])

    def test_a_restart_counts_its_steps_on(self):
        restart = "*RESTART, WRITE\n"
        self.solve(CUBE + step(".5", "1.", 10, PRINT + restart) + step(".5", "1.", 20))
        self.path("job.rout").rename(self.path("job.rin"))
        self.solve("*RESTART, READ, STEP=2\n" + step(".25", ".5", 30))
        run = self.import_job()
        self.assertEqual(run.status, 0, run.err)
        self.assertEqual(self.numbers(), [(3, 1, .25), (3, 2, .5)])

    def test_tables_of_another_run_are_left_out(self):
        steps = [step("1000.003", "1000.003", 10, PRINT), step(".01", ".05", 20, "*NODE FILE\nU\n")]
        self.solve_steps([step(".5", "1.", 10, PRINT), step(".5", "1.", 20)])
        other = self.path("job.dat").read_bytes()
        self.solve_steps(steps)
        self.path("job.dat").write_bytes(other)
        self.assertIn("job.dat:2: warning: the tables are not of this run, and are left out: ", self.import_all())
        with expanded(self.path("job.odb")) as odb:
            self.assertEqual([(name, sorted(group["fields"])) for name, group in odb["steps"].items()],
                             [("Step-1", []), ("Step-2", ["U"])])
        run = self.import_job("--strict")
        self.assertEqual((run.status, run.out), (1, b""))
        self.path("job.sta").unlink()
        self.assertIn("not of this run", self.import_all())

    def test_a_file_that_ends_behind_a_row_is_cut_off(self):
        self.solve_steps([step(".5", "1.", 10, PRINT + "*EL PRINT, ELSET=EALL\nS\n")])
        lines = self.path("job.dat").read_text().splitlines(keepends=True)
        for left in range(1, 11):
            # Rows of the last table, of stresses, one by one; then those of the displacements before it.
            self.path("job.dat").write_text("".join(lines[:-left]))
            run = self.import_job()
            self.assertEqual(run.status, 0)
            if left > 8:  # only the title and the blank lines around it are left, or less
                continue
            self.assertRegex(run.err.decode(), r"^job\.dat:\d+: warning: the file is truncated here")
            with expanded(self.path("job.odb")) as odb:
                self.assertEqual([len(g["frames/value"]) for g in odb["steps"].values()], [2])
        # In the first tables of all, which have none before them: the deck knows the nodes, and the points of an element.
        first = next(i for i, line in enumerate(lines) if i > 2 and line.startswith(" displacements"))
        titles = [i for i in range(first) if "for set" in lines[i]]
        for left in range(3, first):
            self.path("job.dat").write_text("".join(lines[:left]))
            whole = {titles[1] - 1, titles[1], first - 1, first}
            self.assertEqual("truncated here" in self.import_all(), left not in whole, left)


if __name__ == "__main__":
    unittest.main()
