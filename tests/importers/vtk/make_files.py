#!/usr/bin/python3
"""Writes the files under files/ with VTK's own writers and with meshio, and what they hold, as VTK's and meshio's readers see it,
into files/expected.json. Needs python3-vtk9 and python3-meshio.

Usage: make_files.py [DIRECTORY]"""
import json
import pathlib
import shutil
import sys

import meshio
import numpy as np
import vtk
from vtk.util.numpy_support import numpy_to_vtk, vtk_to_numpy

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from by_hand import Grid, collection  # noqa: E402
from extremes import expected  # noqa: E402

CELLS = [(vtk.VTK_HEXAHEDRON, range(8)), (vtk.VTK_WEDGE, range(8, 14)), (vtk.VTK_PYRAMID, (0, 1, 2, 3, 14)), (vtk.VTK_TETRA, (4, 5, 6, 15)),
         (vtk.VTK_QUADRATIC_TETRA, range(10, 20)), (vtk.VTK_VOXEL, (0, 1, 3, 2, 4, 5, 7, 6)), (vtk.VTK_QUAD, (16, 17, 18, 19)),
         (vtk.VTK_TRIANGLE, (16, 17, 19)), (vtk.VTK_LINE, (18, 19)), (vtk.VTK_LAGRANGE_QUADRILATERAL, range(4, 13)), (vtk.VTK_VERTEX, (3,))]
POINTS = 20


def array_of(values, name, components=()):
    array = numpy_to_vtk(np.ascontiguousarray(values), deep=True)
    array.SetName(name)
    for i, component in enumerate(components):
        array.SetComponentName(i, component)
    return array


def grid_of(seed, cells=tuple(CELLS), with_polyhedron=False, time=None):
    """A grid of VTK with results of every shape."""
    random = np.random.default_rng(seed)
    grid = vtk.vtkUnstructuredGrid()
    points = vtk.vtkPoints()
    points.SetData(array_of(random.standard_normal((POINTS, 3)).astype("f4"), "Points"))
    grid.SetPoints(points)
    for kind, nodes in cells:
        nodes = list(nodes)
        grid.InsertNextCell(kind, len(nodes), nodes)
    if with_polyhedron:
        faces = vtk.vtkIdList()
        for number in (4, 3, 0, 1, 2, 3, 0, 1, 3, 3, 1, 2, 3, 3, 0, 2, 3):
            faces.InsertNextId(number)
        grid.InsertNextCell(vtk.VTK_POLYHEDRON, faces)
    half = random.standard_normal((POINTS, 3, 3))
    count = grid.GetNumberOfCells()
    for array in (array_of(random.standard_normal((POINTS, 3)), "displacement"),
                  array_of(random.standard_normal((POINTS, 6)), "stress", ("XX", "YY", "ZZ", "XY", "YZ", "XZ")),
                  array_of((half + half.transpose(0, 2, 1)).reshape(POINTS, 9), "strain"),
                  array_of(random.standard_normal(POINTS).astype("f4"), "heat flow")):
        grid.GetPointData().AddArray(array)
    grid.GetCellData().AddArray(array_of(random.standard_normal((count, 6)), "sig"))
    grid.GetCellData().AddArray(array_of((np.arange(count) % 3).astype("i4"), "MaterialIds"))
    if time is not None:
        grid.GetFieldData().AddArray(array_of(np.array([time]), "TimeValue"))
    return grid


def from_vtk(grid):
    """A grid as VTK has it, by numpy."""
    cells = []
    for i in range(grid.GetNumberOfCells()):
        nodes = grid.GetCell(i).GetPointIds()
        cells.append((grid.GetCellType(i), [nodes.GetId(k) for k in range(nodes.GetNumberOfIds())]))
    data = [{of.GetArrayName(i): vtk_to_numpy(of.GetArray(i)) for i in range(of.GetNumberOfArrays())}
            for of in (grid.GetPointData(), grid.GetCellData())]
    return Grid(vtk_to_numpy(grid.GetPoints().GetData()), cells, *data)


def from_meshio(mesh):
    cells = []
    for block in mesh.cells:
        cells += [(meshio._vtk_common.meshio_to_vtk_type[block.type], nodes) for nodes in block.data.tolist()]
    return Grid(mesh.points, cells, mesh.point_data, {name: np.concatenate(parts) for name, parts in mesh.cell_data.items()})


NAMES = {"heat flow": "heat_flow"}


class Maker:
    def __init__(self, directory):
        self.directory, self.expected = directory, {}

    def path(self, name):
        return str(self.directory / name)

    def note(self, name, frames, arguments=()):
        """What the records of a file have to be: frames are grids."""
        records = {}
        for number, grid in enumerate(frames):
            sets = {}
            if "--sets-from" in arguments:
                ids = grid.cell_data["MaterialIds"]
                sets = {f"MaterialIds_{value}": np.flatnonzero(ids == value).tolist() for value in set(ids.tolist())}
            records.update(expected(grid, frame=number + 1, sets=sets, names=NAMES))
        self.expected[name] = {"arguments": list(arguments), "records": records}

    def write_xml(self, name, grid, mode, packer=None, header=32, is_big=False, sets=()):
        writer = vtk.vtkXMLUnstructuredGridWriter()
        writer.SetFileName(self.path(name))
        writer.SetInputData(grid)
        {"ascii": writer.SetDataModeToAscii, "binary": writer.SetDataModeToBinary, "appended": writer.SetDataModeToAppended,
         "raw": writer.SetDataModeToAppended}[mode]()
        writer.SetEncodeAppendedData(mode == "appended")
        {None: writer.SetCompressorTypeToNone, "zlib": writer.SetCompressorTypeToZLib, "lz4": writer.SetCompressorTypeToLZ4,
         "lzma": writer.SetCompressorTypeToLZMA}[packer]()
        if header == 64:
            writer.SetHeaderTypeToUInt64()
        else:
            writer.SetHeaderTypeToUInt32()
        if is_big:
            writer.SetByteOrderToBigEndian()
        writer.SetBlockSize(96)
        assert writer.Write() == 1
        if packer not in ("lz4", "lzma"):
            reader = vtk.vtkXMLUnstructuredGridReader()
            reader.SetFileName(self.path(name))
            reader.Update()
            self.note(name, [from_vtk(reader.GetOutput())], sets)

    def write_legacy(self, name, grid, is_binary, version):
        writer = vtk.vtkUnstructuredGridWriter()
        writer.SetFileName(self.path(name))
        writer.SetInputData(grid)
        writer.SetFileVersion(version)
        if is_binary:
            writer.SetFileTypeToBinary()
        else:
            writer.SetFileTypeToASCII()
        assert writer.Write() == 1
        reader = vtk.vtkUnstructuredGridReader()
        reader.SetFileName(self.path(name))
        for read_all in (reader.ReadAllScalarsOn, reader.ReadAllVectorsOn, reader.ReadAllTensorsOn, reader.ReadAllFieldsOn):
            read_all()
        reader.Update()
        self.note(name, [from_vtk(reader.GetOutput())])

    def write_pieces(self):
        writer = vtk.vtkXMLPUnstructuredGridWriter()
        source = vtk.vtkAppendFilter()
        for seed in (11, 12):
            source.AddInputData(grid_of(seed))
        source.Update()
        writer.SetInputData(source.GetOutput())
        writer.SetFileName(self.path("pieces.pvtu"))
        writer.SetNumberOfPieces(2)
        writer.SetStartPiece(0)
        writer.SetEndPiece(1)
        writer.SetGhostLevel(1)
        assert writer.Write() == 1
        reader = vtk.vtkXMLPUnstructuredGridReader()
        reader.SetFileName(self.path("pieces.pvtu"))
        reader.Update()
        self.note("pieces.pvtu", [self.without_ghosts(from_vtk(reader.GetOutput()))])

    @staticmethod
    def without_ghosts(grid):
        marks = grid.cell_data.pop("vtkGhostType", None)
        grid.point_data.pop("vtkGhostType", None)
        if marks is None:
            return grid
        kept = np.flatnonzero((marks & 1) == 0)
        return Grid(grid.points, [grid.cells[i] for i in kept], grid.point_data, {n: a[kept] for n, a in grid.cell_data.items()})

    def write_blocks(self):
        blocks = vtk.vtkMultiBlockDataSet()
        inner = vtk.vtkMultiBlockDataSet()
        grids = [grid_of(seed) for seed in (21, 22, 23)]
        inner.SetBlock(0, grids[0])
        inner.SetBlock(1, grids[1])
        blocks.SetBlock(0, inner)
        blocks.SetBlock(1, grids[2])
        for owner, place, name in ((blocks, 0, "Body"), (blocks, 1, "Lid"), (inner, 0, "Left"), (inner, 1, "Right")):
            owner.GetMetaData(place).Set(vtk.vtkCompositeDataSet.NAME(), name)
        writer = vtk.vtkXMLMultiBlockDataWriter()
        writer.SetInputData(blocks)
        writer.SetFileName(self.path("blocks.vtm"))
        assert writer.Write() == 1
        append = vtk.vtkAppendFilter()
        for grid in grids:
            append.AddInputData(grid)
        append.Update()
        whole = from_vtk(append.GetOutput())
        count = len(CELLS)
        sets = {"Left": range(count), "Right": range(count, 2 * count), "Body": range(2 * count), "Lid": range(2 * count, 3 * count)}
        records = expected(whole, sets={name: list(cells) for name, cells in sets.items()}, names=NAMES)
        self.expected["blocks.vtm"] = {"arguments": [], "records": records}

    def write_series(self):
        grids = [grid_of(31, time=0.5 * i) for i in range(3)]
        for i, grid in enumerate(grids):
            self.write_legacy(f"series_{i:02d}.vtk", grid, True, 51)
            del self.expected[f"series_{i:02d}.vtk"]
            self.write_xml(f"time_{i}.vtu", grid, "raw", "zlib")
            del self.expected[f"time_{i}.vtu"]
        self.note("series_00.vtk", map(from_vtk, grids), ["--series"])
        (self.directory / "time.pvd").write_bytes(collection((0.5 * i, f"time_{i}.vtu", 'part="0"') for i in range(3)))
        self.note("time.pvd", map(from_vtk, grids))

    def write_meshio(self):
        random = np.random.default_rng(41)
        blocks = [("tetra", np.array([[0, 1, 2, 3], [4, 5, 6, 7]])), ("hexahedron20", np.array([np.arange(20)])), ("triangle6", np.array([[3, 4, 5, 6, 7, 8]]))]
        mesh = meshio.Mesh(random.standard_normal((POINTS, 3)), blocks,
                           {"displacement": random.standard_normal((POINTS, 3)), "T": random.standard_normal(POINTS), "stress": random.standard_normal((POINTS, 6))},
                           {"medit:ref": [np.arange(len(data)) for _, data in blocks], "energy": [random.standard_normal(len(data)) for _, data in blocks]})
        for name, options in {"meshio_text.vtu": {"binary": False}, "meshio_plain.vtu": {"compression": None}, "meshio_zlib.vtu": {"compression": "zlib"},
                              "meshio_lzma.vtu": {"compression": "lzma"}, "meshio_51.vtk": {"file_format": "vtk51"}, "meshio_42.vtk": {"file_format": "vtk42"},
                              "meshio_text.vtk": {"file_format": "vtk42", "binary": False}}.items():
            meshio.write(self.path(name), mesh, **options)
            if "lzma" not in name:
                grid = from_meshio(meshio.read(self.path(name)))
                self.note(name, [grid])


def main():
    directory = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent / "files").resolve()
    shutil.rmtree(directory, ignore_errors=True)
    directory.mkdir(parents=True)
    maker = Maker(directory)
    maker.write_xml("text.vtu", grid_of(1), "ascii")
    maker.write_xml("base64.vtu", grid_of(2), "binary")
    maker.write_xml("base64_zlib_64.vtu", grid_of(3), "binary", "zlib", 64)
    maker.write_xml("appended.vtu", grid_of(4), "appended", None, 64)
    maker.write_xml("appended_zlib.vtu", grid_of(5), "appended", "zlib")
    maker.write_xml("raw.vtu", grid_of(6), "raw", sets=["--sets-from", "MaterialIds"])
    maker.write_xml("raw_big_64.vtu", grid_of(7), "raw", None, 64, True)
    maker.write_xml("raw_zlib_64.vtu", grid_of(8), "raw", "zlib", 64)
    maker.write_xml("polyhedron.vtu", grid_of(9, with_polyhedron=True), "raw")
    maker.write_xml("lz4.vtu", grid_of(1), "raw", "lz4")
    maker.write_xml("lzma.vtu", grid_of(1), "raw", "lzma")
    for name, is_binary, version in (("text_42.vtk", False, 42), ("text_51.vtk", False, 51), ("binary_42.vtk", True, 42), ("binary_51.vtk", True, 51)):
        maker.write_legacy(name, grid_of(10), is_binary, version)
    for name, is_binary in (("polyhedron_text.vtk", False), ("polyhedron_binary.vtk", True)):
        maker.write_legacy(name, grid_of(9, with_polyhedron=True), is_binary, 42)
    maker.write_pieces()
    maker.write_blocks()
    maker.write_series()
    maker.write_meshio()
    (directory / "expected.json").write_text(json.dumps(maker.expected, indent=0) + "\n")


if __name__ == "__main__":
    main()
