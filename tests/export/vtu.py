"""Reads .vtu files with xml.etree and numpy, by VTK's description of the format and nothing of ours."""
import pathlib
import xml.etree.ElementTree as ElementTree
import zlib

import numpy as np

TYPES = {"Float32": "f4", "Float64": "f8", "Int32": "i4", "Int64": "i8", "UInt8": "u1"}


class Vtu:
    """points, pointData and cellData {name: array}, components {name: names}, cells [(type, points)], fieldData {name: value}."""

    def __init__(self, path):
        raw = pathlib.Path(path).read_bytes()
        head, mark, rest = raw.partition(b'<AppendedData encoding="raw">')
        begin = len(head) + len(mark) + rest.index(b"_") + 1
        end = raw.rindex(b"</AppendedData>")
        self.data = raw[begin:end]
        root = ElementTree.fromstring(head + b"</VTKFile>")
        assert root.attrib["type"] == "UnstructuredGrid" and root.attrib["header_type"] == "UInt64"
        self.order = {"LittleEndian": "<", "BigEndian": ">"}[root.attrib["byte_order"]]
        self.isPacked = root.attrib.get("compressor") == "vtkZLibDataCompressor"
        self.components = {}
        piece = root.find("UnstructuredGrid/Piece")
        self.pointData = self.section(piece.find("PointData"))
        self.cellData = self.section(piece.find("CellData"))
        self.points = self.section(piece.find("Points"))["Points"]
        cells = self.section(piece.find("Cells"))
        offsets = [0, *cells["offsets"]]
        self.cells = [(int(t), cells["connectivity"][offsets[i]:offsets[i + 1]]) for i, t in enumerate(cells["types"])]
        assert len(self.points) == int(piece.attrib["NumberOfPoints"]) and len(self.cells) == int(piece.attrib["NumberOfCells"])
        for arrays, count in ((self.pointData, len(self.points)), (self.cellData, len(self.cells))):
            assert all(len(a) == count for a in arrays.values())
        self.fieldData = {}
        for array in root.find("UnstructuredGrid/FieldData"):
            words = array.text.split()
            self.fieldData[array.attrib["Name"]] = (
                float(words[0]) if array.tag == "DataArray" else bytes(map(int, words[:-1])).decode())

    def section(self, element):
        arrays = {}
        for array in element:
            name, width = array.attrib["Name"], int(array.attrib["NumberOfComponents"])
            assert name not in arrays, name
            numbers = np.frombuffer(self.bytes(int(array.attrib["offset"])), self.order + TYPES[array.attrib["type"]])
            arrays[name] = numbers.reshape(-1, width) if width > 1 else numbers
            self.components[name] = [array.attrib.get(f"ComponentName{i}") for i in range(width)]
        return arrays

    def counts(self, at, number):
        return [int(n) for n in np.frombuffer(self.data, self.order + "u8", number, at)]

    def bytes(self, at):
        if not self.isPacked:
            [length] = self.counts(at, 1)
            return self.data[at + 8:at + 8 + length]
        blocks, size, last = self.counts(at, 3)
        lengths, begin, out = self.counts(at + 24, blocks), at + 24 + 8 * blocks, b""
        for i, length in enumerate(lengths):
            block = zlib.decompress(self.data[begin:begin + length])
            assert len(block) == (last if last and i == blocks - 1 else size)
            out += block
            begin += length
        return out


def frames_of(pvd):
    """Times and files of a .pvd."""
    pvd = pathlib.Path(pvd)
    sets = ElementTree.parse(pvd).getroot().findall("Collection/DataSet")
    return [(float(s.attrib["timestep"]), pvd.parent / s.attrib["file"]) for s in sets]
