"""Writes grids in the formats of VTK, as their description has them (VTK File Formats, www.vtk.org), in every encoding. Shares
nothing with the importer, nor with VTK."""
import base64
import itertools
import struct
import zlib

import numpy as np

NODES = {1: 1, 3: 2, 5: 3, 8: 4, 9: 4, 10: 4, 11: 8, 12: 8, 13: 6, 14: 5, 21: 3, 22: 6, 23: 8, 24: 10, 25: 20, 26: 15, 27: 13, 28: 9,
         29: 27, 30: 6, 31: 12, 32: 18, 33: 24, 34: 7, 35: 4}
XML_TYPES = {"f4": "Float32", "f8": "Float64", "i1": "Int8", "u1": "UInt8", "i2": "Int16", "u2": "UInt16", "i4": "Int32",
             "u4": "UInt32", "i8": "Int64", "u8": "UInt64"}
LEGACY_TYPES = {"f4": "float", "f8": "double", "i1": "char", "u1": "unsigned_char", "i2": "short", "u2": "unsigned_short",
                "i4": "int", "u4": "unsigned_int", "i8": "vtktypeint64", "u8": "vtktypeuint64"}


class Grid:
    """Points [n, 3], cells as pairs of a type and places of points, arrays by name."""

    def __init__(self, points, cells, point_data=None, cell_data=None, field_data=None):
        self.points = np.asarray(points)
        self.cells = [(kind, list(nodes)) for kind, nodes in cells]
        self.point_data, self.cell_data, self.field_data = point_data or {}, cell_data or {}, field_data or {}


def sample(seed=0, kinds=(12, 13, 14, 10, 9, 5, 3), points=30, cells=14):
    """A grid of cells of these types on random points, every point used; vectors, tensors and scalars at both places."""
    random = np.random.default_rng(seed)
    made = []
    for kind in itertools.islice(itertools.cycle(kinds), cells):
        made.append((kind, random.choice(points, NODES[kind], replace=NODES[kind] > points)))
    used = {int(node) for _, nodes in made for node in nodes}
    made += [(1, [node]) for node in range(points) if node not in used]
    count = len(made)

    def draw(*shape):
        return random.standard_normal(shape)

    symmetric = draw(points, 3, 3)
    symmetric += symmetric.transpose(0, 2, 1)
    return Grid(draw(points, 3), made,
                {"u": draw(points, 3), "temperature": draw(points).astype("f4"), "stress": draw(points, 6).astype("f4"),
                 "strain": symmetric.reshape(points, 9), "count": random.integers(-5, 1000, points).astype("i4")},
                {"plastic": draw(count), "flux": draw(count, 3), "eps": draw(count, 6), "part": random.integers(1, 4, count).astype("i2")})


def flat(array):
    return np.ascontiguousarray(array).reshape(-1)


class Xml:
    """One .vtu file in the making."""

    def __init__(self, form, header="UInt32", order="<", packed=False, is_together=True, block=256):
        self.form, self.header, self.order, self.packed, self.is_together, self.block = form, header, order, packed, is_together, block
        self.appended = b""

    def size(self, *numbers):
        return struct.pack(f"{self.order}{len(numbers)}{'I' if self.header == 'UInt32' else 'Q'}", *numbers)

    def pieces(self, array):
        """The sizes before an array, and the array."""
        data = flat(array).astype(array.dtype.newbyteorder(self.order)).tobytes()
        if not self.packed:
            return self.size(len(data)), data
        blocks = [data[at:at + self.block] for at in range(0, len(data), self.block)]
        packed = [zlib.compress(block) for block in blocks]
        last = len(blocks[-1]) if blocks and len(blocks[-1]) < self.block else 0
        return self.size(len(blocks), self.block if blocks else 0, last, *map(len, packed)), b"".join(packed)

    def encoded(self, array):
        sizes, data = self.pieces(array)
        if self.form.endswith("raw"):
            return sizes + data
        if self.is_together and not self.packed:
            return base64.b64encode(sizes + data)
        return base64.b64encode(sizes) + base64.b64encode(data)

    def array(self, name, array, attributes=""):
        array = np.asarray(array)
        components = 1 if array.ndim == 1 else array.shape[1]
        kind = XML_TYPES[array.dtype.str[1:]]
        head = f'<DataArray type="{kind}" Name="{name}" NumberOfComponents="{components}" {attributes} '
        if self.form == "ascii":
            text = " ".join(str(v) if array.dtype.kind in "iu" else repr(float(v)) for v in flat(array))
            return f'{head}format="ascii">\n{text}\n</DataArray>\n'
        if self.form == "binary":
            return f'{head}format="binary">\n  {self.encoded(array).decode()}\n</DataArray>\n'
        at = len(self.appended)
        self.appended += self.encoded(array)
        return f'{head}format="appended" offset="{at}"/>\n'

    def piece(self, grid):
        ends = np.cumsum([len(nodes) for _, nodes in grid.cells]).astype("i8")
        nodes = np.array([node for _, nodes in grid.cells for node in nodes], "i8")
        kinds = np.array([kind for kind, _ in grid.cells], "u1")
        text = f'<Piece NumberOfPoints="{len(grid.points)}" NumberOfCells="{len(grid.cells)}">\n<PointData>\n'
        text += "".join(self.array(name, array) for name, array in grid.point_data.items()) + "</PointData>\n<CellData>\n"
        text += "".join(self.array(name, array) for name, array in grid.cell_data.items()) + "</CellData>\n<Points>\n"
        text += self.array("Points", grid.points) + "</Points>\n<Cells>\n"
        text += self.array("connectivity", nodes) + self.array("offsets", ends) + self.array("types", kinds)
        return text + "</Cells>\n</Piece>\n"

    def file(self, *grids, version="1.0", attributes=""):
        order = "LittleEndian" if self.order == "<" else "BigEndian"
        packer = ' compressor="vtkZLibDataCompressor"' if self.packed else ""
        text = (f'<?xml version="1.0"?>\n<VTKFile type="UnstructuredGrid" version="{version}" byte_order="{order}" '
                f'header_type="{self.header}"{packer}{attributes}>\n<UnstructuredGrid>\n<FieldData>\n')
        for name, array in grids[0].field_data.items():
            text += self.array(name, array, f'NumberOfTuples="{len(array)}"')
        text += "</FieldData>\n" + "".join(self.piece(grid) for grid in grids) + "</UnstructuredGrid>\n"
        raw = text.encode()
        if self.form.startswith("appended"):
            encoding = "raw" if self.form.endswith("raw") else "base64"
            raw += f'<AppendedData encoding="{encoding}">\n   _'.encode() + self.appended + b"\n  </AppendedData>\n"
        return raw + b"</VTKFile>\n"


def vtu(*grids, form="ascii", **options):
    return Xml(form, **options).file(*grids)


def collection(times_and_files):
    """A .pvd: triples of a time, a file and further attributes."""
    return ('<?xml version="1.0"?>\n<VTKFile type="Collection" version="0.1">\n<Collection>\n' + "".join(
        f'<DataSet timestep="{time}" group="" {more} file="{name}"/>\n' for time, name, more in times_and_files) +
            "</Collection>\n</VTKFile>\n").encode()


def pieces(*files):
    """A .pvtu."""
    return ('<VTKFile type="PUnstructuredGrid" version="0.1" byte_order="LittleEndian">\n<PUnstructuredGrid GhostLevel="0">\n' +
            "".join(f'<Piece Source="{name}"/>\n' for name in files) + "</PUnstructuredGrid>\n</VTKFile>\n").encode()


class Legacy:
    """One .vtk file in the making."""

    def __init__(self, is_binary, version="3.0", is_on_one_line=False):
        self.is_binary, self.version, self.is_on_one_line = is_binary, version, is_on_one_line

    def numbers(self, array):
        array = np.asarray(array)
        if self.is_binary:
            return flat(array).astype(array.dtype.newbyteorder(">")).tobytes() + b"\n"
        rows = array.reshape(1 if self.is_on_one_line else len(array), -1) if array.size else array.reshape(0, 1)
        return "".join(" ".join(str(v) if array.dtype.kind in "iu" else repr(float(v)) for v in row) + " \n" for row in rows).encode()

    def attribute(self, name, array):
        kind = LEGACY_TYPES[array.dtype.str[1:]]
        components = 1 if array.ndim == 1 else array.shape[1]
        name = name.replace(" ", "%20")
        if components == 1:
            head = f"SCALARS {name} {kind}\nLOOKUP_TABLE default\n"
        elif components == 3:
            head = f"VECTORS {name} {kind}\n"
        elif components == 9:
            head = f"TENSORS {name} {kind}\n"
        else:
            head = f"FIELD FieldData 1\n{name} {components} {len(array)} {kind}\n"
        return head.encode() + self.numbers(array)

    def cells(self, grid):
        count = len(grid.cells)
        nodes = [list(map(int, nodes)) for _, nodes in grid.cells]
        kinds = np.array([kind for kind, _ in grid.cells], "i4")
        if float(self.version) >= 5:
            begins = np.cumsum([0] + [len(one) for one in nodes]).astype("i8")
            head = f"CELLS {count + 1} {begins[-1]}\nOFFSETS vtktypeint64\n".encode() + self.numbers(begins)
            head += b"CONNECTIVITY vtktypeint64\n" + self.numbers(np.array(sum(nodes, []), "i8"))
        else:
            listed = sum(([len(one)] + one for one in nodes), [])
            head = f"CELLS {count} {len(listed)}\n".encode() + self.numbers(np.array(listed, "i4"))
        return head + f"CELL_TYPES {count}\n".encode() + self.numbers(kinds)

    def file(self, grid, title="made by hand"):
        kind = LEGACY_TYPES[grid.points.dtype.str[1:]]
        raw = f"# vtk DataFile Version {self.version}\n{title}\n{'BINARY' if self.is_binary else 'ASCII'}\nDATASET UNSTRUCTURED_GRID\n".encode()
        if grid.field_data:
            raw += f"FIELD FieldData {len(grid.field_data)}\n".encode()
            for name, array in grid.field_data.items():
                raw += f"{name} 1 {len(array)} {LEGACY_TYPES[array.dtype.str[1:]]}\n".encode() + self.numbers(array)
        raw += f"POINTS {len(grid.points)} {kind}\n".encode() + self.numbers(grid.points) + self.cells(grid)
        for word, rows, data in (("POINT_DATA", len(grid.points), grid.point_data), ("CELL_DATA", len(grid.cells), grid.cell_data)):
            if data:
                raw += f"{word} {rows}\n".encode() + b"".join(self.attribute(name, array) for name, array in data.items())
        return raw


def legacy(grid, is_binary, **options):
    return Legacy(is_binary, **options).file(grid)
