"""Every way in which VTK writes numbers, on files made by hand: the same grid has the same records in all of them."""
import itertools
import unittest

import numpy as np
from by_hand import Grid, NODES, Xml, legacy, sample, vtu
from extremes import expected
from vtk_test import VtkTest


class XmlTest(VtkTest):
    def test_every_encoding_header_and_byte_order(self):
        grid = sample(1)
        for form, header, order, packed in itertools.product(("binary", "appended-raw", "appended-base64"), ("UInt32", "UInt64"),
                                                             ("<", ">"), (False, True)):
            with self.subTest(form=form, header=header, order=order, packed=packed):
                self.write("job.vtu", vtu(grid, form=form, header=header, order=order, packed=packed))
                self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_text(self):
        grid = sample(2)
        self.write("job.vtu", vtu(grid))
        self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_sizes_that_are_encoded_by_themselves(self):
        grid = sample(3)
        for header in ("UInt32", "UInt64"):
            self.write("job.vtu", vtu(grid, form="binary", header=header, is_together=False))
            self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_blocks_that_end_with_the_array_and_one_block(self):
        grid = sample(4)
        for block in (8, 24, 1 << 20):
            self.write("job.vtu", vtu(grid, form="appended-raw", packed=True, block=block))
            self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_every_type_of_number(self):
        random = np.random.default_rng(5)
        data = {f"a_{kind}": random.integers(0, 100, 30).astype(kind) for kind in ("i1", "u1", "i2", "u2", "i4", "u4", "i8", "u8", "f4", "f8")}
        grid = Grid(random.standard_normal((30, 3)), [(1, [i]) for i in range(30)], data)
        for form, order in (("ascii", "<"), ("binary", "<"), ("appended-raw", ">")):
            self.write("job.vtu", vtu(grid, form=form, order=order))
            self.assert_whole(self.records("job.vtu"), expected(grid))
        for is_binary in (False, True):
            self.write("job.vtk", legacy(grid, is_binary))
            self.assert_whole(self.records("job.vtk"), expected(grid))

    def test_long_text_between_tags_leaves_places_and_lines_right(self):
        grid = sample(6, points=3000, cells=700)
        for form in ("ascii", "binary", "appended-base64"):
            raw = vtu(grid, form=form)
            self.write("job.vtu", raw)
            self.assert_whole(self.records("job.vtu"), expected(grid))
        head, tail = vtu(grid).decode().split('Name="eps"')
        text = head + 'Name="eps"' + tail.replace('format="ascii"', 'format="odd"', 1)
        line = head.count("\n") + 1
        self.write("job.vtu", text)
        self.assert_error(rb"^job\.vtu:%d: error: " % line, "job.vtu")

    def test_several_pieces_in_one_file(self):
        one, other = sample(7), sample(8)
        self.write("job.vtu", vtu(one, other, form="appended-raw"))
        count = len(one.points)
        both = Grid(np.vstack([one.points, other.points]),
                    one.cells + [(kind, [node + count for node in nodes]) for kind, nodes in other.cells],
                    {name: np.concatenate([one.point_data[name], other.point_data[name]]) for name in one.point_data},
                    {name: np.concatenate([one.cell_data[name], other.cell_data[name]]) for name in one.cell_data})
        self.assert_whole(self.records("job.vtu"), expected(both))

    def test_packers_that_are_not_read_are_named(self):
        for packer in ("vtkLZ4DataCompressor", "vtkLZMADataCompressor"):
            raw = vtu(sample(), form="appended-raw").replace(b' header_type="UInt32"', f' header_type="UInt32" compressor="{packer}"'.encode())
            self.write("job.vtu", raw)
            self.assert_error(rb"^job\.vtu:2: error: arrays packed by " + packer.encode(), "job.vtu")


class LegacyTest(VtkTest):
    def test_every_form_and_version(self):
        grid = sample(11)
        for is_binary, version in itertools.product((False, True), ("2.0", "3.0", "4.2", "5.1")):
            with self.subTest(is_binary=is_binary, version=version):
                self.write("job.vtk", legacy(grid, is_binary, version=version))
                self.assert_whole(self.records("job.vtk"), expected(grid))

    def test_all_numbers_of_an_array_on_one_line(self):
        grid = sample(12, points=2000, cells=500)
        self.write("job.vtk", legacy(grid, False, is_on_one_line=True))
        self.assert_whole(self.records("job.vtk"), expected(grid))

    def test_line_ends_of_windows(self):
        grid = sample(13)
        self.write("job.vtk", legacy(grid, False).replace(b"\n", b"\r\n"))
        self.assert_whole(self.records("job.vtk"), expected(grid))

    def test_names_with_blanks_and_metadata(self):
        grid = sample(14)
        grid.point_data["heat flow"] = grid.point_data.pop("u")
        raw = legacy(grid, True).replace(b"TENSORS strain", b"METADATA\nINFORMATION 1\nNAME L2_NORM_RANGE LOCATION vtkDataArray\nDATA 2 0 1\n\nTENSORS strain")
        self.write("job.vtk", raw)
        self.assert_whole(self.records("job.vtk"), expected(grid, names={"heat flow": "heat_flow"}))

    def test_arrays_that_are_no_results_are_passed_over(self):
        grid = sample(15)
        count = len(grid.points)
        for is_binary in (False, True):
            raw = legacy(grid, is_binary)
            at = raw.index(b"CELL_DATA")
            if is_binary:
                more = b"SCALARS marks bit\nLOOKUP_TABLE default\n" + bytes((count + 7) // 8) + b"\nLOOKUP_TABLE mine 2\n" + bytes(8) + b"\n"
                more += b"FIELD FieldData 1\nnames 1 2 string\n" + b"\xc3abc" + b"\x80\x41" + b"x" * 65 + b"\n"
            else:
                more = b"SCALARS marks bit\nLOOKUP_TABLE default\n" + b"0 1 " * (count // 2) + b"\nLOOKUP_TABLE mine 2\n0 0 0 1\n1 1 1 1\n"
                more += b"FIELD FieldData 1\nnames 1 2 string\nabc d\nx\n"
            self.write("job.vtk", raw[:at] + more + raw[at:])
            self.assert_whole(self.records("job.vtk"), expected(grid))


class CellTest(VtkTest):
    def test_every_type_of_cell_with_a_number_of_points_of_its_own(self):
        for kind in NODES:
            with self.subTest(kind=kind):
                grid = sample(20 + kind, kinds=(kind,), points=40, cells=9)
                self.write("job.vtu", vtu(grid, form="appended-raw"))
                self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_cells_with_any_number_of_points(self):
        random = np.random.default_rng(21)
        kinds = [2, 4, 6, 7, 36, 41, 42, 68, 69, 70, 71, 72, 73, 74, 75]
        cells = [(kind, random.choice(60, count, replace=False)) for kind in kinds for count in (4, 8, 27)]
        grid = Grid(random.standard_normal((60, 3)), cells, {"stress": random.standard_normal((60, 6))},
                    {"e": random.standard_normal((len(cells), 6))})
        self.write("job.vtu", vtu(grid, form="binary"))
        self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_polyhedra_by_their_faces(self):
        # A tetrahedron and a pyramid, face by face, as files before version 5 have them.
        faces = [[4, 3, 0, 1, 2, 3, 0, 1, 3, 3, 1, 2, 3, 3, 0, 2, 3], [5, 4, 4, 5, 6, 7, 3, 4, 5, 8, 3, 5, 6, 8, 3, 6, 7, 8, 3, 4, 7, 8]]
        stress = np.random.default_rng(22).standard_normal((10, 6))
        raw = legacy(Grid(np.eye(10, 3), [(42, one) for one in faces], {"stress": stress}), True, version="4.2")
        self.write("job.vtk", raw)
        true = Grid(np.eye(10, 3), [(42, [0, 1, 2, 3]), (42, [4, 5, 6, 7, 8])], {"stress": stress})
        self.assert_whole(self.records("job.vtk"), expected(true))
        self.assertIn(b"at 1 nodes that belong to no element", self.last.err)

    def test_places_without_a_cell(self):
        grid = sample(23)
        grid.cells.insert(3, (0, []))
        for name, array in grid.cell_data.items():
            grid.cell_data[name] = np.insert(array, 3, 0, axis=0)
        self.write("job.vtu", vtu(grid, form="appended-raw"))
        self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_no_cells_and_no_points(self):
        grid = Grid(np.zeros((5, 3)), [], {"t": np.arange(5.0)})
        self.write("job.vtu", vtu(grid, form="appended-raw"))
        self.assert_whole(self.records("job.vtu"), expected(grid))
        self.write("none.vtu", vtu(Grid(np.zeros((0, 3)), [])))
        self.run_import("none.vtu")


class PlaceTest(VtkTest):
    def test_nodes_of_elements_have_the_order_of_the_database(self):
        import h5py
        cells = [(21, [0, 1, 2]), (13, list(range(6))), (26, list(range(15))), (11, list(range(8))), (8, [0, 1, 2, 3]), (25, list(range(20)))]
        self.write("job.vtu", Xml("ascii").file(Grid(np.zeros((20, 3)), cells)))
        self.run_import("job.vtu")
        found = {}
        with h5py.File(self.path("job.odb")) as odb:
            elements = odb["assembly/instances/PART-1-1/mesh/elements"] if "assembly/instances/PART-1-1/mesh" in odb else odb["parts/PART-1/mesh/elements"]
            elements.visititems(lambda name, item: found.update({name.split("/")[0]: item[0].tolist()}) if name.endswith("connectivity") else None)
        self.assertEqual(found, {"LINE3": [1, 3, 2], "WEDGE6": [1, 3, 2, 4, 6, 5], "QUAD4": [1, 2, 4, 3], "HEX8": [1, 2, 4, 3, 5, 6, 8, 7],
                                 "WEDGE15": [1, 3, 2, 4, 6, 5, 9, 8, 7, 12, 11, 10, 13, 15, 14], "HEX20": list(range(1, 21))})


if __name__ == "__main__":
    unittest.main()
