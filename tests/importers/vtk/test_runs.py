"""Runs of several files: collections in time, pieces, blocks, numbered files; and what becomes of fields, sets and times."""
import json
import unittest

import numpy as np
from by_hand import Grid, collection, legacy, pieces, sample, vtu
from extremes import expected, is_tensor
from vtk_test import VtkTest


def joined(*grids):
    """Several grids as one, without common points."""
    first = np.cumsum([0] + [len(grid.points) for grid in grids])
    return Grid(np.vstack([grid.points for grid in grids]),
                [(kind, [node + at for node in nodes]) for grid, at in zip(grids, first) for kind, nodes in grid.cells],
                {name: np.concatenate([grid.point_data[name] for grid in grids]) for name in grids[0].point_data},
                {name: np.concatenate([grid.cell_data[name] for grid in grids]) for name in grids[0].cell_data})


def moved(grid, factor):
    """The same grid with other results."""
    return Grid(grid.points + factor, grid.cells, {name: (array * factor).astype(array.dtype) for name, array in grid.point_data.items()},
                {name: (array * factor).astype(array.dtype) for name, array in grid.cell_data.items()})


BLOCKS = """<VTKFile type="vtkMultiBlockDataSet" version="1.0">
<vtkMultiBlockDataSet>
<Block index="0" name="Solids"><DataSet index="0" name="Wheel" file="parts/a.vtu"/><DataSet index="1" file="parts/b.vtu"/></Block>
<DataSet index="1" name="Top" file="parts/c.vtu"/>
<DataSet index="2" name="Nothing"/>
</vtkMultiBlockDataSet>
</VTKFile>
"""


class TimeTest(VtkTest):
    def test_a_collection_in_time_has_a_frame_for_each_file(self):
        grid = sample(1)
        self.path("out").mkdir()
        for i in range(3):
            self.write(f"out/sol_{i}.vtu", vtu(moved(grid, i + 1), form="appended-raw"))
        self.write("job.pvd", collection((0.25 * (i + 1), f"out/sol_{i}.vtu", 'part="0"') for i in range(3)))
        records = self.records("job")
        self.assert_whole(records, {k: v for i in range(3) for k, v in expected(moved(grid, i + 1), frame=i + 1).items()})
        listed = json.loads(self.run_import("job", "--list", "--json").out)
        self.assertEqual([(frame["frame"], frame["value"]) for frame in listed["steps"][0]["frames"]], [(1, 0.25), (2, 0.5), (3, 0.75)])
        self.assertEqual((listed["nodes"], listed["elements"]), (len(grid.points), len(grid.cells)))

    def test_a_time_that_goes_backwards_begins_a_step_and_an_equal_one_does_not(self):
        grid = sample(2)
        for i in range(5):
            self.write(f"s{i}.vtu", vtu(moved(grid, i + 1)))
        self.write("job.pvd", collection(zip((0.5, 1, 1, 0.25, 0.75), (f"s{i}.vtu" for i in range(5)), [""] * 5)))
        records = self.records("job.pvd")
        for i, (step, frame) in enumerate(((1, 1), (1, 2), (1, 3), (2, 1), (2, 2))):
            self.assert_extremes(records, expected(moved(grid, i + 1), frame=frame, step=step))

    def test_parts_of_one_time_are_one_frame_with_sets(self):
        parts = [sample(3), sample(4)]
        for i, factor in ((0, 1), (1, 3)):
            for k, grid in enumerate(parts):
                self.write(f"s{i}_{k}.vtu", vtu(moved(grid, factor)))
        # Part by part, not time by time.
        self.write("job.pvd", collection((i, f"s{i}_{k}.vtu", f'part="{k}"') for k in range(2) for i in range(2)))
        records = self.records("job.pvd")
        cells = len(parts[0].cells)
        both = joined(*parts)
        sets = {"part_0": list(range(cells)), "part_1": list(range(cells, len(both.cells)))}
        for frame, factor in ((1, 1), (2, 3)):
            self.assert_extremes(records, expected(moved(both, factor), frame=frame, sets=sets))
        self.assertIn("Step_1__Frame_2__part_1_NODES__u__mag__max", records)

    def test_a_mesh_that_changes_is_there_once_for_each_kind(self):
        coarse, fine = sample(5), sample(6, points=50, cells=40)
        order = [coarse, moved(coarse, 2), fine, moved(fine, 2), moved(coarse, 3)]
        for i, grid in enumerate(order):
            self.write(f"s{i}.vtu", vtu(grid, form="appended-raw"))
        self.write("job.pvd", collection((i, f"s{i}.vtu", "") for i in range(5)))
        self.assert_whole(self.records("job.pvd"), {k: v for i, grid in enumerate(order) for k, v in expected(grid, frame=i + 1).items()})
        self.assertIn(b"2 meshes are imported", self.last.err)
        self.assertEqual(json.loads(self.run_import("job.pvd", "--list", "--json").out)["nodes"], 80)

    def test_cells_in_another_order_are_another_mesh(self):
        grid = sample(7)
        other = Grid(grid.points, grid.cells[::-1], grid.point_data, {name: array[::-1] for name, array in grid.cell_data.items()})
        self.write("s0.vtu", vtu(grid))
        self.write("s1.vtu", vtu(other))
        self.write("job.pvd", collection(((0, "s0.vtu", ""), (1, "s1.vtu", ""))))
        self.assert_whole(self.records("job.pvd"), {**expected(grid), **expected(other, frame=2)})
        self.assertIn(b"2 meshes are imported", self.last.err)

    def test_fields_that_come_and_go(self):
        first, second = sample(8), sample(8)
        del first.point_data["u"]
        del second.cell_data["eps"]
        self.write("s0.vtu", vtu(first))
        self.write("s1.vtu", vtu(second))
        self.write("job.pvd", collection(((0, "s0.vtu", ""), (1, "s1.vtu", ""))))
        self.assert_whole(self.records("job.pvd"), {**expected(first), **expected(second, frame=2)})

    def test_time_and_numbers_of_the_field_data(self):
        grid = sample(9)
        for i in range(3):
            grid.field_data = {"TIME": np.array([10.0 + i]), "energy": np.array([2.5 * i], "f4"), "CYCLE": np.array([7 * i], "i4")}
            self.write(f"s{i}.vtk", legacy(grid, i % 2 == 0))
            self.write(f"s{i}.vtu", vtu(grid, form="binary"))
        for ending in ("vtk", "vtu"):
            records = self.records(f"s0.{ending}", "--series")
            self.assertEqual(records["Step_1__History__energy"], "((10, 0), (11, 2.5), (12, 5))")
            self.assertEqual(records["Step_1__History__CYCLE"], "((10, 0), (11, 7), (12, 14))")
            single = self.records(f"s2.{ending}")
            self.assertEqual(single["Step_1__History__energy"], "((12, 5))")
            self.assertIn(b"one of a numbered series of 3; --series", self.last.err)

    def test_a_numbered_series_has_the_order_of_its_numbers(self):
        grid = sample(10)
        numbers = (2, 10, 9)
        for number in numbers:
            self.write(f"run.{number}.vtk", legacy(moved(grid, number), True))
        self.write("run.x.vtk", "other")
        self.write("other.3.vtk", legacy(grid, False))
        listed = json.loads(self.run_import("run.10.vtk", "--series", "--list", "--json").out)
        self.assertEqual([frame["value"] for frame in listed["steps"][0]["frames"]], [2, 9, 10])
        records = self.records("run.10.vtk", "--series")
        self.assert_whole(records, {k: v for i, n in enumerate(sorted(numbers)) for k, v in expected(moved(grid, n), frame=i + 1).items()})

    def test_what_is_chosen(self):
        grid = sample(11)
        for i in range(3):
            self.write(f"s{i}.vtu", vtu(moved(grid, i + 1)))
        self.write("job.pvd", collection((i, f"s{i}.vtu", "") for i in range(3)))
        records = self.records("job.pvd", "--field", "s", "--field", "flux", "--frames", "last")
        kept = {name: value for name, value in expected(moved(grid, 3), frame=3).items() if "__S__" in name or "__flux__" in name}
        self.assert_whole(records, kept)


class PieceTest(VtkTest):
    def test_pieces_are_one_grid(self):
        parts = [sample(21), sample(22), sample(23)]
        for k, grid in enumerate(parts):
            self.write(f"p{k}.vtu", vtu(grid, form="appended-raw", packed=k == 1))
        self.write("job.pvtu", pieces("p0.vtu", "p1.vtu", "p2.vtu"))
        self.assert_whole(self.records("job"), expected(joined(*parts)))

    def test_ghosts_are_left_out(self):
        random = np.random.default_rng(24)
        parts = [sample(24), sample(25)]
        whole = []
        for k, grid in enumerate(parts):
            ghosts = np.zeros(len(grid.cells), "u1")
            ghosts[random.choice(len(grid.cells), 4, replace=False)] = 1
            ghosts[0] = 32  # hidden
            grid.cell_data["vtkGhostType"] = ghosts
            self.write(f"p{k}.vtu", vtu(grid, form="appended-raw"))
            del grid.cell_data["vtkGhostType"]
            kept = np.flatnonzero(ghosts == 0)
            whole.append(Grid(grid.points, [grid.cells[cell] for cell in kept], grid.point_data,
                              {name: array[kept] for name, array in grid.cell_data.items()}))
        self.write("job.pvtu", pieces("p0.vtu", "p1.vtu"))
        self.assert_whole(self.records("job"), expected(joined(*whole)))

    def test_collections_of_pieces(self):
        grid = sample(26)
        for i in range(2):
            self.write(f"p{i}.vtu", vtu(moved(grid, i + 1)))
            self.write(f"t{i}.pvtu", pieces(f"p{i}.vtu", f"p{i}.vtu"))
        self.write("job.pvd", collection(((0, "t0.pvtu", ""), (1, "t1.pvtu", ""))))
        whole = joined(grid, grid)
        self.assert_whole(self.records("job.pvd"), {**expected(whole), **expected(moved(whole, 2), frame=2)})


class SetTest(VtkTest):
    def test_blocks_are_sets(self):
        self.path("parts").mkdir()
        parts = [sample(31), sample(32), sample(33)]
        for name, grid in zip("abc", parts):
            self.write(f"parts/{name}.vtu", vtu(grid))
        self.write("job.vtm", BLOCKS)
        ends = np.cumsum([0] + [len(grid.cells) for grid in parts])
        places = [list(range(*ends[i:i + 2])) for i in range(3)]
        sets = {"Wheel": places[0], "block_1": places[1], "Solids": places[0] + places[1], "Top": places[2]}
        whole = joined(*parts)
        records = self.records("job.vtm")
        self.assert_extremes(records, expected(whole, sets=sets))
        # Of points there are sets too.
        for tag, grid in (("Wheel", parts[0]), ("Solids", joined(*parts[:2])), ("Top", parts[2])):
            nodal = Grid(grid.points, grid.cells, {n: a for n, a in grid.point_data.items() if not is_tensor(a)})
            self.assert_extremes(records, {k.replace("Frame_1__", f"Frame_1__{tag}_NODES__"): v for k, v in expected(nodal).items()})
        listed = json.loads(self.run_import("job.vtm", "--list", "--json").out)
        self.assertEqual({one["name"]: one["members"] for one in listed["sets"]}["Solids-NODES"], 60)

    def test_values_of_a_cell_array_are_sets_on_request(self):
        grid = sample(34)
        grid.cell_data["MaterialIds"] = np.array([(i * 7) % 4 - 1 for i in range(len(grid.cells))], "i4")
        self.write("job.vtu", vtu(grid, form="binary"))
        self.assertIn(b"there are part, MaterialIds", self.run_import("job.vtu", "--list").err)
        for array in ("MaterialIds", "part"):
            values = grid.cell_data[array]
            sets = {f"{array}_{value}".replace("-", "_"): np.flatnonzero(values == value) for value in set(values.tolist())}
            self.assert_extremes(self.records("job.vtu", "--sets-from", array.lower()), expected(grid, sets=sets))
        self.assert_error(rb"there is no cell array none to make sets of", "job.vtu", "--sets-from", "none")
        self.assert_error(rb'the array "plastic" has a number that is not an integer', "job.vtu", "--sets-from", "plastic")

    def test_sets_of_a_mesh_that_changes_have_members_of_all(self):
        coarse, fine = sample(35), sample(36, points=50, cells=40)
        for i, grid in enumerate((coarse, fine)):
            self.write(f"s{i}.vtu", vtu(grid))
        self.write("job.pvd", collection((i, f"s{i}.vtu", "") for i in range(2)))
        records = self.records("job.pvd", "--sets-from", "part")
        for i, grid in enumerate((coarse, fine)):
            part = grid.cell_data["part"]
            sets = {f"part_{value}": np.flatnonzero(part == value) for value in set(part.tolist())}
            self.assert_extremes(records, expected(grid, frame=i + 1, sets=sets))


class FieldTest(VtkTest):
    def whole(self, point_data, cell_data=None, points=None):
        grid = Grid(np.eye(6, 3) if points is None else points, [(5, [0, 1, 2]), (5, [3, 4, 5])], point_data, cell_data or {})
        self.write("job.vtu", vtu(grid))
        return grid

    def test_nine_components_that_are_not_symmetric_are_scalars(self):
        values = np.random.default_rng(41).standard_normal((6, 9))
        self.whole({"grad": values})
        records = self.records("job.vtu")
        scalars = {f"grad_{row}{column}": values[:, 3 * row + column - 4] for row in (1, 2, 3) for column in (1, 2, 3)}
        self.assert_whole(records, expected(Grid(np.eye(6, 3), [], scalars)))

    def test_nine_components_that_are_symmetric_but_for_rounding_are_a_tensor(self):
        half = np.random.default_rng(42).standard_normal((6, 3, 3))
        values = (half + half.transpose(0, 2, 1)).reshape(6, 9)
        values[:, 3] += 1e-6
        grid = self.whole({"grad": values})
        self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_symmetry_counts_over_all_frames(self):
        half = np.random.default_rng(43).standard_normal((6, 3, 3))
        good = (half + half.transpose(0, 2, 1)).reshape(6, 9)
        for i, values in enumerate((good, half.reshape(6, 9))):
            self.write(f"s{i}.vtu", vtu(Grid(np.eye(6, 3), [(5, [0, 1, 2])], {"g": values})))
        self.write("job.pvd", collection((i, f"s{i}.vtu", "") for i in range(2)))
        records = self.records("job.pvd")
        self.assertEqual({name.split("__")[2] for name in records}, {f"g_{i}{k}" for i in (1, 2, 3) for k in (1, 2, 3)})

    def test_two_components_are_a_vector_without_a_third(self):
        grid = self.whole({"v": np.random.default_rng(44).standard_normal((6, 2))})
        self.assert_whole(self.records("job.vtu"), expected(grid))

    def test_other_numbers_of_components_are_scalars(self):
        values = np.random.default_rng(45).standard_normal((6, 5))
        self.whole({"h": values}, {"wide": np.zeros((2, 65))})
        self.assert_whole(self.records("job.vtu"), expected(Grid(np.eye(6, 3), [], {f"h_{i + 1}": values[:, i] for i in range(5)})))
        self.assertIn(b'the array "wide" has 65 components', self.last.err)

    def test_names_of_components_count(self):
        values = np.random.default_rng(46).standard_normal((6, 6))
        for names in (("XX", "YY", "ZZ", "XY", "YZ", "XZ"), ("xx", "xy", "yy", "xz", "yz", "zz"), ("a", "b", "c", "d", "e", "f")):
            raw = vtu(Grid(np.eye(6, 3), [(5, [0, 1, 2]), (5, [3, 4, 5])], {"q": values})).decode()
            attributes = " ".join(f'ComponentName{i}="{name}"' for i, name in enumerate(names))
            self.write("job.vtu", raw.replace('Name="q"', f'Name="q" {attributes}'))
            if names[0] == "a":
                true = {f"q_{name}": values[:, i] for i, name in enumerate(names)}
            else:
                order = [[name.lower() for name in names].index(one) for one in ("xx", "yy", "zz", "xy", "yz", "xz")]
                true = {"q": values[:, order]}
            self.assert_whole(self.records("job.vtu"), expected(Grid(np.eye(6, 3), [(5, [0, 1, 2]), (5, [3, 4, 5])], true)))

    def test_scalars_with_endings_are_put_together(self):
        values = np.random.default_rng(47).standard_normal((6, 6))
        data = {f"stress_{name}": values[:, i] for i, name in enumerate(("xx", "yy", "zz", "xy", "yz", "xz"))}
        data.update({f"displacement {i}": values[:, i] for i in range(3)})
        self.whole(data)
        records = self.records("job.vtu")
        true = {"stress": values, **{f"displacement_{i}": values[:, i] for i in range(3)}}
        self.assert_whole(records, expected(Grid(np.eye(6, 3), [(5, [0, 1, 2]), (5, [3, 4, 5])], true)))
        self.assertEqual(len(self.records("job.vtu", "--no-group")), 2 * 9)

    def test_plane_models_have_plane_tensors(self):
        random = np.random.default_rng(48)
        values = random.standard_normal((6, 3))
        data = {f"stress_{name}": values[:, i] for i, name in enumerate(("xx", "yy", "xy"))}
        points = random.standard_normal((6, 3))
        self.whole(data, points=points)
        self.assertNotIn("Step_1__Frame_1__S__mises__max", self.records("job.vtu"))
        points[:, 2] = 0.5
        self.whole(data, points=points)
        full = np.column_stack([values[:, 0], values[:, 1], np.zeros(6), values[:, 2], np.zeros((6, 2))])
        true = expected(Grid(points, [(5, [0, 1, 2]), (5, [3, 4, 5])], {"stress": full}))
        self.assert_whole(self.records("job.vtu"), {k: v for k, v in true.items() if "__13__" not in k and "__23__" not in k})

    def test_one_name_at_two_positions_and_other_names(self):
        random = np.random.default_rng(49)
        grid = self.whole({"sigma": random.standard_normal((6, 6)), "stress": random.standard_normal((6, 6))},
                          {"stress": random.standard_normal((2, 6))})
        self.assert_whole(self.records("job.vtu"), expected(grid))
        kept = self.records("job.vtu", "--keep-names")
        self.assertIn("Step_1__Frame_1__stress_ELEM__11__max", kept)
        renamed = self.records("job.vtu", "--keep-names", "--rename", "sigma=S")
        self.assertEqual(renamed["Step_1__Frame_1__S__mises__max"], kept["Step_1__Frame_1__sigma__mises__max"])

    def test_an_array_of_another_width_in_a_later_frame_is_left_out(self):
        for i, width in enumerate((3, 6)):
            self.write(f"s{i}.vtu", vtu(Grid(np.eye(6, 3), [], {"v": np.ones((6, width)), "t": np.ones(6)})))
        self.write("job.pvd", collection((i, f"s{i}.vtu", "") for i in range(2)))
        records = self.records("job.pvd")
        self.assertIn(b'the array "v" has 6 components here and 3 before', self.last.err)
        self.assertIn("Step_1__Frame_2__t__max", records)
        self.assertNotIn("Step_1__Frame_2__v__mag__max", records)


if __name__ == "__main__":
    unittest.main()
