"""docs/records.md says how params.txt is read: every example there is extracted, and its code is run."""
import re
import types

import h5py

import record_cases
from support import ROOT, Database, ProgramTest

PAGE = (ROOT / "docs/records.md").read_text(encoding="utf-8")


def blocks(kind):
    """The fenced blocks of a kind, by the name of their example."""
    found = re.findall(rf"^```{kind} ([a-z-]+)\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL)
    assert len(dict(found)) == len(found), f"an example has two blocks of {kind}"
    return dict(found)


def pattern_of(text):
    """A line "..." stands for any lines."""
    return "".join(r"(?:.*\n)*" if line == "..." else re.escape(line) + r"\n" for line in text.splitlines())


def page_code():
    """What the page's code defines."""
    module = types.ModuleType("page")
    exec(re.search(r"^```python\n(.*?)^```$", PAGE, re.MULTILINE | re.DOTALL).group(1), module.__dict__)
    return module


def twenty():
    return [float(number) for number in blocks("values")["twenty"].split()]


class RecordsPageTest(ProgramTest):
    def make(self, example):
        if example == "imported":
            self.write("m.frd", record_cases.RESULTS)
            self.write("m.inp", record_cases.DECK)
            self.assertEqual(self.run_program("m", program="import").status, 0)
            return
        with Database(self.path("m.odb")) as odb:
            if example == "nodes":
                record_cases.nodes_and_elements(odb, twenty())
            elif example == "twenty":
                record_cases.twenty(odb, twenty())
            else:
                record_cases.DATABASES[example](odb)

    def extract(self, configuration, *arguments):
        self.write("config.txt", configuration)
        return self.run_program("-odb", "m", "-config", "config.txt", *arguments)

    def test_every_example_gives_the_records_that_the_page_shows(self):
        configurations, records, errors = blocks("config"), blocks("records"), blocks("errors")
        self.assertEqual(set(configurations), {*records, *errors})
        self.assertEqual(set(configurations), {*record_cases.DATABASES, "imported", "nodes"})
        for example, configuration in configurations.items():
            with self.subTest(example):
                self.make(example)
                run = self.extract(configuration, *(("-elset", "ROOT") if example == "elset" else ()))
                self.assertEqual((run.status, run.err.decode()), (0, errors.get(example, "")))
                self.assertEqual(run.text("paramsdone.txt"), None if example in errors else b"Done\n")
                if example in records:
                    found = run.text("params.txt").decode()
                    self.assertTrue(re.fullmatch(pattern_of(records[example]), found), found)

    def test_the_table_of_engineering_extremes_is_that_of_the_twenty_numbers(self):
        rows = re.findall(r"^\| (-?\d+) \| (-?[\d.]+) \| (\d+) \| (\d+) \| (\d+) \| (\d+) \|$", PAGE, re.MULTILINE)
        self.assertEqual(len(rows), 9)
        values = sorted(twenty())
        self.make("twenty")
        for percentage, quotient, k, position, least, largest in rows:
            with self.subTest(percentage):
                self.assertEqual(float(quotient), 20 * float(percentage) / 100)
                self.assertEqual(int(k), min(max(int(float(quotient)), 0), 20))
                self.assertEqual(int(position), max(int(k) - 1, 0))
                self.assertEqual((int(least), int(largest)), (values[int(position)], values[19 - int(position)]))
                run = self.extract("ODB EXTRACTIONS\nEXTRACT_ALL EXTRACT_FIELD ENGINEERING_MAX ENGINEERING_MIN\n"
                                   f"PERCENTAGE = {percentage}\n")
                self.assertEqual(run.text("params.txt").decode().splitlines()[2:],
                                 [f"Step_1__Frame_1__T__enggmax\t{largest}", f"Step_1__Frame_1__T__enggmin\t{least}"])

    def test_names_that_the_code_builds_are_those_of_a_run(self):
        page = page_code()
        self.make("plate")
        run = self.extract(blocks("config")["plate"])
        names = {line.split("\t")[0] for line in run.text("params.txt").decode().splitlines() if "__Frame_" in line}
        with h5py.File(self.path("m.odb")) as odb:
            regions = page.regions_of(odb)
            steps, fields = list(odb["steps"]), list(odb["steps/Step-1/fields"])
        self.assertEqual(sorted(regions), ["HOT SPOT", "I-1_TOP"])
        self.assertIn(page.record_name("Step-1", 12, "HOT SPOT", "U", "mag", "max"), names)
        self.assertIn(page.record_name("Step-1", 12, "", "NT", "", "min"), names)
        for name in names:
            meanings = page.readings(name, steps, regions, fields)
            self.assertEqual(len(meanings), 1, meanings)
            self.assertEqual(page.record_name(*meanings[0]), name)
        self.assertEqual(page.readings("Step_1__Frame_12__I_1_TOP__S__mises__max", steps, regions, fields),
                         [("Step-1", 12, "I-1_TOP", "S", "mises", "max")])

    def test_without_lists_a_name_has_the_meanings_that_the_page_tells(self):
        page = page_code()
        name = "Step_1__Frame_1__TOP__S__mises__max"
        self.assertIn(f"    {name}\n", PAGE)
        self.assertEqual(sorted(page.readings(name, ["Step-1"], ["TOP", "TOP__S"], ["S", "TOP__S", "mises"])),
                         [("Step-1", 1, "", "TOP__S", "mises", "max"), ("Step-1", 1, "TOP", "S", "mises", "max"),
                          ("Step-1", 1, "TOP__S", "mises", "", "max")])
        for region in ("I-1_TOP", "I_1_TOP", "I_1-TOP"):
            self.assertEqual(page.record_name("Step-1", 1, region, "S", "mises", "max"), "Step_1__Frame_1__I_1_TOP__S__mises__max")

    def test_sets_that_the_page_leaves_out_are_those_that_a_run_leaves_out(self):
        page = page_code()
        self.make("warn")
        with h5py.File(self.path("m.odb")) as odb:
            self.assertEqual(page.regions_of(odb), ["warnings"])

    def test_every_link_of_the_page_leads_somewhere(self):
        titles = {re.sub(r"[^a-z0-9 -]", "", title.lower()).replace(" ", "-") for title in re.findall(r"^#+ (.*)$", PAGE, re.MULTILINE)}
        for target in re.findall(r"\]\(([^)]+)\)", PAGE):
            file, _, title = target.partition("#")
            self.assertTrue((ROOT / "docs" / file).exists() if file else title in titles, target)
