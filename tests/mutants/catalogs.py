"""Catalogs of databases, changed as only an enemy does: with both sums of their trailer made again, so that what a reader
checks besides the sums is all that stands between it and the change."""
import pathlib
import random
import re
import struct
import sys

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "endtoend"))

from catalogued import TRAILER, sums_of, trailer_of  # noqa: E402

SCHEMA = HERE.parents[1] / "src/odbstore/catalog.fbs"
FORMATS = {"uint8": "B", "int32": "i", "uint32": "I", "int64": "q", "float": "f", "double": "d"}
SIZES = {1: 1, 2: 1, 3: 2, 4: 2, 5: 4, 6: 4, 7: 8, 8: 8, 9: 4, 10: 8}  # of numbers, by their codes


def tables_of(schema):
    """{table: [(field, type)]} of a FlatBuffers schema that has nothing but tables."""
    text = re.sub(r"//.*", "", schema)
    return {name: re.findall(r"(\w+)\s*:\s*(\[?\w+\]?)", body) for name, body in re.findall(r"table (\w+) \{(.*?)\}", text, re.S)}


class Column:
    """A vector of numbers in the bytes of a catalog."""

    def __init__(self, data, name, kind, at):
        self.data, self.name, self.format, self.at = data, name, "<" + FORMATS[kind], at
        self.size = struct.calcsize(self.format)

    def __len__(self):
        return struct.unpack_from("<I", self.data, self.at)[0]

    def resize(self, length):
        struct.pack_into("<I", self.data, self.at, length % 2**32)

    def __getitem__(self, i):
        return struct.unpack_from(self.format, self.data, self.at + 4 + i * self.size)[0]

    def __setitem__(self, i, number):
        bits = 8 * self.size
        if self.format[1] in "fd":
            struct.pack_into(self.format, self.data, self.at + 4 + i * self.size, number)
        else:
            self.data[self.at + 4 + i * self.size:self.at + 4 + (i + 1) * self.size] = \
                (int(number) % 2**bits).to_bytes(self.size, "little")

    def extreme(self, chance):
        if self.format[1] in "fd":
            return chance.choice([0.0, -1.0, float("nan"), float("inf"), 3e38])
        top = 2 ** (8 * self.size - 1)
        return chance.choice([0, 1, -1, top - 1, -top, 2 * top - 1, 2, 7, 100, 2**31])


class CatalogBytes:
    """The columns of a catalog by table and field, and its plain numbers (what the file says of itself)."""

    def __init__(self, data):
        self.data = data
        self.columns, self.scalars = {}, {}
        self.tables = tables_of(SCHEMA.read_text())
        self._read("Catalog", struct.unpack_from("<I", data, 0)[0])

    def _read(self, table, at):
        vtable = at - struct.unpack_from("<i", self.data, at)[0]
        length = struct.unpack_from("<H", self.data, vtable)[0]
        for i, (field, kind) in enumerate(self.tables[table]):
            slot = 4 + 2 * i
            offset = struct.unpack_from("<H", self.data, vtable + slot)[0] if slot + 2 <= length else 0
            if offset == 0:
                continue
            place = at + offset
            if kind in FORMATS:
                self.scalars[field] = (place, kind)
                continue
            target = place + struct.unpack_from("<I", self.data, place)[0]
            if kind.startswith("["):
                self.columns[table, field] = Column(self.data, (table, field), kind[1:-1], target)
            else:
                self._read(kind, target)

    def extents(self, end):
        """Where the arrays stand, as far as they stand in the first `end` bytes."""
        arrays = {field: column for (table, field), column in self.columns.items() if table == "Arrays"}
        found = []
        for i in range(min(len(arrays[field]) for field in ("format", "packing", "slabs", "slab_numbers", "place"))):
            slabs, numbers, place = (arrays[field][i] for field in ("slabs", "slab_numbers", "place"))
            if slabs <= 0 or numbers <= 0:
                continue
            if arrays["packing"][i] == 0:
                found.append((place, place + slabs * numbers * SIZES.get(arrays["format"][i] % 16, 4)))
                continue
            chunks = range(max(place, 0), min(place + slabs, len(arrays["chunk_offset"]), len(arrays["chunk_bytes"])))
            found += [(arrays["chunk_offset"][k], arrays["chunk_offset"][k] + arrays["chunk_bytes"][k]) for k in chunks]
        return sorted((begin, stop) for begin, stop in found if 0 <= begin < stop <= end)


def split(whole):
    """The bytes before the catalog, the catalog, the trailer."""
    begin = len(whole) - trailer_of(whole)[0]
    return whole[:begin], whole[begin:-TRAILER], whole[-TRAILER:]


def sealed(content, extents):
    """The same bytes with sums that agree, whatever the extents."""
    apart, at = [], 0
    for first, end in extents:
        if first >= at:
            apart.append((first, end))
            at = end
    return content[:-16] + struct.pack("<II", *sums_of(content, apart)) + content[-8:]


# Changes of one column.

def change_number(column, chance, _):
    column[chance.randrange(len(column))] = column.extreme(chance)


def move_number(column, chance, _):
    i = chance.randrange(len(column))
    number = column[i]
    if number == number and abs(number) < 2**62:
        column[i] = number + chance.choice([-1, 1, -1, 1, 2, -8, 4096])


def copy_neighbour(column, chance, _):
    column[chance.randrange(len(column))] = column[chance.randrange(len(column))]


def copy_foreign(column, chance, columns):
    other = chance.choice([c for c in columns if len(c)])
    number = chance.choice([len(other), other[chance.randrange(len(other))]])
    if number == number and abs(number) < 2**100:
        column[chance.randrange(len(column))] = number


def swap(column, chance, _):
    i, k = chance.randrange(len(column)), chance.randrange(len(column))
    column[i], column[k] = column[k], column[i]


def cut(column, chance, _):
    column.resize(chance.choice([0, 1, len(column) - 1, len(column) // 2, len(column) + 1, 2**32 - 1, 2**31]))


def fill(column, chance, _):
    number = column.extreme(chance)
    for i in range(len(column)):
        column[i] = number


def shift(column, chance, _):
    """All numbers one place further."""
    numbers = [column[i] for i in range(len(column))]
    for i, number in enumerate(numbers[-1:] + numbers[:-1]):
        column[i] = number


CHANGES = [change_number] * 4 + [move_number] * 4 + [copy_neighbour] * 3 + [copy_foreign] * 3 + [swap] * 3 + [cut] * 2 + [fill, shift]


def change_column(catalog, chance):
    columns = list(catalog.columns.values())
    column = chance.choice([c for c in columns if len(c)])
    chance.choice(CHANGES)(column, chance, columns)


def change_scalar(catalog, chance):
    place, kind = catalog.scalars[chance.choice(sorted(catalog.scalars))]
    number = chance.choice([0, 1, -1, 2, 4, 2**31 - 1, -2**31])
    struct.pack_into("<" + FORMATS[kind].lower(), catalog.data, place, number)


def change_bytes(catalog, chance):
    for _ in range(chance.choice([1, 1, 2, 8])):
        catalog.data[chance.randrange(len(catalog.data))] = chance.choice([0, 1, 127, 128, 255, chance.randrange(256)])


def change_offset(catalog, chance):
    """A word of the part that says where tables and columns are."""
    at = 4 * chance.randrange(len(catalog.data) // 4)
    struct.pack_into("<I", catalog.data, at, chance.choice([0, 1, 4, 2**31, 2**32 - 4, len(catalog.data), chance.randrange(len(catalog.data))]))


def forged(whole, seed):
    """A database with a changed catalog and sums that agree; never the same bytes."""
    chance = random.Random(seed)
    before, catalog, trailer = split(whole)
    while True:
        data = bytearray(catalog)
        for _ in range(chance.choice([1, 1, 1, 2, 3])):
            try:
                parsed = CatalogBytes(data)
                chance.choice([change_column] * 12 + [change_scalar, change_bytes, change_offset])(parsed, chance)
            except (struct.error, LookupError, ValueError):
                break  # an earlier change has left nothing that could be found
        if data == catalog:
            continue
        try:
            extents = CatalogBytes(data).extents(len(before))
        except (struct.error, LookupError):
            extents = []
        return sealed(before + bytes(data) + trailer, extents)
