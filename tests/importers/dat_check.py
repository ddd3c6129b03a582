"""Reads printed tables (.dat) in a few lines of its own and compares a database, and records, with them."""
import collections
import re

import numpy as np

TITLE = re.compile(r"^ (\S.*?) *(?:\(([^)]*)\))?[^()]* *for ?(?:set ?(\S+)|(all contact elements)) +and time +(\S+)$")
# Of a title the field, how many labels begin a row, and how many numbers follow.
TABLES = {"displacements": ("U_PRINT", 1, 3), "velocities": ("V_PRINT", 1, 3), "forces": ("RF_PRINT", 1, 3),
          "temperatures": ("NT_PRINT", 1, 1), "heat generation": ("RFL_PRINT", 1, 1),
          "static pressures": ("PS_PRINT", 1, 1), "stresses": ("S_IP", 2, 6), "strains": ("E_IP", 2, 6),
          "mechanical strains": ("ME_IP", 2, 6), "viscous stresses": ("SV_IP", 2, 6),
          "equivalent plastic strain": ("PEEQ_IP", 2, 1), "internal energy density": ("ENER_IP", 2, 1),
          "heat flux": ("HFL_IP", 2, 3), "internal energy": ("ELSE", 1, 1), "volume": ("EVOL", 1, 1)}
CONTACT = {"relative contact displacement": ("CDIS", 3), "contact stress": ("CSTR", 3),
           "contact print energy": ("CELS", 1)}


def number(word):
    """A number whose exponent may have lost its letter."""
    return float(re.sub(r"(?<=\d)([+-]\d{3})$", r"E\1", word))


class Table:
    """Rows of a table at the mesh that have the same axes: labels and numbers of each."""

    def __init__(self, field, title, set_name, time, width):
        self.field, self.title, self.set, self.time, self.width = field, title, set_name, time, width
        self.labels, self.rows = [], []

    def is_local(self):
        return self.field.endswith("_LOCAL")


def read_tables(path):
    """The tables of the fields above, in file order; the last one only where its line ends."""
    tables, table, local = [], None, None
    for line in path.read_text(encoding="latin-1").splitlines():
        words = line.split()
        if not words:
            continue
        if words[0].isdigit() and table is not None:
            # What follows the numbers names local axes.
            target = local if len(words) > sum(table.width) else table
            target.labels.append(tuple(map(int, words[:table.width[0]])))
            target.rows.append([number(word) for word in words[table.width[0]:sum(table.width)]])
        elif not words[0].isdigit():
            table = None
            match = TITLE.match(line.rstrip())
            if not match and "for all contact elements" not in line:
                continue
            table = started(line, match)
            if table:
                local = Table(table.field + "_LOCAL", table.title, table.set, table.time, table.width)
                tables += [table, local]
    return tables


def started(line, match):
    """The table that a title begins, None for one that is not compared."""
    title = line.split("(")[0].split(" for ")[0].strip()
    time = float(line.split()[-1])
    if title in CONTACT:
        field, width = CONTACT[title]
        is_of_faces = "element+face" in line
        return Table(field + ("_IP" if is_of_faces else "_PRINT"), title, "", time, (2 if is_of_faces else 1, width))
    if title not in TABLES or not match or not match.group(3):
        return None
    field, labels, width = TABLES[title]
    return Table(field, title, match.group(3), time, (labels, width))


def stored_frames(odb, field):
    """Of every frame that has a field, or its imaginary part, in order: step, index, rows of both with their labels."""
    for step_name, step in odb["steps"].items():
        parts = [name for name in (field, field + "_IM") if name in step["fields"]]
        for frame in range(len(step["frames/value"])):
            found = [list(rows_of(odb, step["fields"][name], frame, step)) for name in parts]
            if any(found):
                yield step_name, frame, found


def rows_of(odb, group, frame, step):
    of_field = list(group["frames"]) if "frames" in group else list(range(len(step["frames/value"])))
    for k in range(len(group["blocks"])):
        block = group["blocks"][str(k)]
        of_block = list(block["frames"]) if "frames" in block else of_field
        if frame not in of_block:
            continue
        location = odb["locations"][block.attrs["location"].decode()]
        names = [n for n in ("nodeLabels", "elementLabels", "integrationPoints") if n in location]
        data = with_nan_as_number(block["data"][of_block.index(frame)])
        yield from zip(zip(*(location[n][()].tolist() for n in names)), data.reshape(len(data), -1).tolist())


def expect(condition, what):
    if not condition:
        raise AssertionError(f"{what}: the database and the printed file differ")


def with_nan_as_number(numbers):
    """One that nothing else has: NaN is not even equal to itself."""
    return np.where(np.isnan(numbers), np.float32(3e38), numbers)


def as_floats(rows):
    if not rows:
        return []
    numbers = np.array(rows, dtype="f8").astype("f4").reshape(len(rows), -1)
    return with_nan_as_number(numbers).tolist()


class Comparison:
    """Holds every printed field against its tables, taken in the order of the frames."""

    def __init__(self, tables, odb, records):
        self.odb, self.records, self.compared = odb, records, 0
        self.by_field = collections.defaultdict(list)
        for table in tables:
            if table.rows:
                self.by_field[table.field].append(table)

    def run(self):
        for field, tables in self.by_field.items():
            pending = collections.deque(tables)
            for step, frame, parts in stored_frames(self.odb, field):
                for part, name in zip(parts, (field, field + "_IM")):
                    self.frame(step, frame, name, part, pending)
            expect(not pending, f"{field}, {len(pending)} tables more")
        return self.compared

    def frame(self, step, frame, field, stored, pending):
        """Takes the tables of a frame: a row that two of them share is stored once."""
        place = f"{step} frame {frame} {field}"
        # Points of faces have no number in the file, so that each is a row of its own.
        are_faces = field.startswith(("CDIS_IP", "CSTR_IP", "CELS_IP"))
        known, labels, rows, times, sets = {}, [], [], set(), set()
        while len(rows) < len(stored) or self.is_repeated(pending, known, times, sets):
            expect(pending, place)
            table = pending.popleft()
            times.add(table.time)
            sets.add(table.set)
            for label, row in zip(table.labels, as_floats(table.rows)):
                if tuple(label) in known and not are_faces:
                    continue
                known[tuple(label)] = row
                labels.append(label[:1] if are_faces else label)
                rows.append(row)
        expect(len(times) == 1, place + " times")
        self.time(step, frame, times.pop())
        if are_faces:
            stored = [(label[:1], row) for label, row in stored]
        expect(sorted(zip(labels, rows)) == sorted((tuple(label), row) for label, row in stored), place)
        self.extremes(step, frame, field, np.array(rows, dtype="f4"))

    @staticmethod
    def is_repeated(pending, known, times, sets):
        """Whether the next table is one of another set that shows again what the frame has already."""
        if not pending or pending[0].time not in times or pending[0].set in sets:
            return False
        return all(known.get(tuple(label)) == row for label, row in zip(pending[0].labels, as_floats(pending[0].rows)))

    def time(self, step, frame, printed):
        """A frame in time has the same distance from the printed time as all others of its step; a frequency is it."""
        frames = self.odb["steps"][step]["frames"]
        description, value = frames["description"][frame].decode(), frames["value"][frame]
        if "Step Time" in description:
            starts = self.__dict__.setdefault("starts", {})
            start = starts.setdefault(step, printed - value)
            expect(abs(start - (printed - value)) <= 2e-5 * max(abs(printed), abs(start)), f"{step} {description}")
        elif description.startswith("Increment"):
            expect(abs(value - printed) <= 1e-6 * printed, f"{step} {description}")

    def extremes(self, step, frame, field, rows):
        increment = self.odb["steps"][step]["frames/incrementNumber"][frame]
        head = f"Step_{step[5:]}__Frame_{increment}__{field}"
        if rows.shape[1] == 6:
            s = rows.astype("f8")
            d = [s[:, 0] - s[:, 1], s[:, 1] - s[:, 2], s[:, 2] - s[:, 0]]
            shear = s[:, 3] ** 2 + s[:, 4] ** 2 + s[:, 5] ** 2
            quantities = [("__mises", np.sqrt(0.5 * (d[0] ** 2 + d[1] ** 2 + d[2] ** 2) + 3 * shear))]
            if f"{head}__mises__max" not in self.records:  # strains have none
                return
        elif rows.shape[1] == 3:
            quantities = [(f"__{i + 1}", rows[:, i]) for i in range(3)]
        else:
            quantities = [("", rows[:, 0])]
        for name, values in quantities:
            for extreme, of in (("max", np.max), ("min", np.min)):
                texts = self.records.get(f"{head}{name}__{extreme}", [])
                value = of(values)
                if (rows == np.float32(3e38)).any():
                    continue
                close = [abs(float(text) - value) <= 1e-5 * abs(value) + 1e-37 for text in texts]
                expect(any(close), f"{head}{name}__{extreme} {texts} {value}")
                self.compared += 1


def compare_histories(tables, odb, records, limit=1000):
    """Each history of a printed set is the sequence of its rows, and has its extremes in the records."""
    expected = collections.defaultdict(list)
    printed_by = {}
    sizes = collections.Counter()
    for table in tables:
        sizes[table.title, table.set, table.is_local()] = max(sizes[table.title, table.set, table.is_local()], len(table.rows))
    for table in tables:
        size = sum(sizes[table.title, table.set, is_local] for is_local in (False, True))
        if size > limit or table.field.startswith(("CDIS_IP", "CSTR_IP", "CELS_IP")):
            continue
        # A set may name a node twice.
        rows = dict(zip(table.labels, as_floats(table.rows)))
        for label, row in rows.items():
            for column, value in enumerate(row):
                key = table.field.split("_")[0] + "_LOCAL" * table.is_local(), label, column
                # What two sets print at a time is there once.
                time, set_name = printed_by.get(key, (None, None))
                if time == table.time and set_name != table.set:
                    continue
                printed_by[key] = table.time, table.set
                expected[key].append(value)
    found = collections.defaultdict(list)
    compared = 0
    for step_name, step in odb["steps"].items():
        for region_name, region in step["history"].items() if "history" in step else ():
            match = re.match(r"(?:Node (\d+)|Element (\d+)(?: Int Point (\d+))?)(?: of (.*))?$", region_name)
            for name, output in region["outputs"].items():
                values = output[()][:, -1]
                compared += compare_extremes_of(records, step_name, name, region, values)
                if not match:
                    continue
                label = tuple(int(text) for text in match.groups()[:3] if text)
                quantity, column = column_of(name.replace("_IM", "").replace("_LOCAL", ""), len(label), label)
                values = with_nan_as_number(values)
                found[quantity + "_LOCAL" * ("_LOCAL" in name), label, column].append(values.tolist())
    for key, values in expected.items():
        expect(sorted(sum(found.get(key, []), [])) == sorted(values), f"history {key}")
    return compared


def column_of(name, labels, label):
    name = name[:-len(f"_{label[0]}")] if labels == 2 else name
    match = re.match(r"(U|V|RF|HFL|CDIS|CSTR)([123])$", name)
    if match:
        return match.group(1), int(match.group(2)) - 1
    match = re.match(r"(SV|S|E|ME)(11|22|33|12|13|23)$", name)
    if match:
        return match.group(1), ["11", "22", "33", "12", "13", "23"].index(match.group(2))
    return name, 0


def compare_extremes_of(records, step, name, region, values):
    attributes = region.attrs
    label = ""
    for key, test in (("node", 0), ("element", 0)):
        if attributes.get(key, -1) >= test:
            label = str(attributes[key])
    if attributes.get("integrationPoint", 0) != 0:
        label = str(attributes["integrationPoint"])
    set_name = attributes.get("set", b"")
    set_name = set_name.decode() if isinstance(set_name, bytes) else str(set_name)
    label = set_name or label
    key = name.replace("-", "_").replace(" ", "_") + (f"_{label}" if label else "")
    if np.isnan(values).any():
        return 0
    for extreme, value in (("Max", values.max()), ("Min", values.min())):
        texts = records.get(f"{step.replace('-', '_')}__History_{extreme}__{key}", [])
        if not any(abs(float(text) - value) <= 1e-5 * abs(value) + 1e-37 for text in texts):
            raise AssertionError(f"{step} History_{extreme} {key}: {texts[:3]} are there, not {value}")
    return 2


def compare(dat, odb, records):
    """The count of records that were compared."""
    tables = read_tables(dat)
    return Comparison(tables, odb, records).run() + compare_histories(tables, odb, records)
