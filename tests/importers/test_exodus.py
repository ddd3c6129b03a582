"""Exodus II files through import and extraction, against what netCDF4 and numpy make of them."""
import json
import pathlib
import shutil
import subprocess
import unittest

import netCDF4
import numpy as np

from exodus_files import BLOCKS, CUBES, Exodus, cube
from support import BIN, ProgramTest

FORMS = ("NETCDF3_CLASSIC", "NETCDF3_64BIT_OFFSET", "NETCDF3_64BIT_DATA", "NETCDF4", "NETCDF4_CLASSIC")
TENSOR = ("xx", "yy", "zz", "xy", "yz", "zx")
COLUMNS = ("11", "22", "33", "12", "23", "13")
SWITCHES = ("EXTRACT_ALL", "EXTRACT_FIELD_SETS", "EXTRACT_FIELD_COMPONENTS", "EXTRACT_HISTORY")


def mises(t):
    xx, yy, zz, xy, yz, zx = t
    return np.sqrt(0.5 * ((xx - yy) ** 2 + (yy - zz) ** 2 + (zz - xx) ** 2) + 3 * (xy**2 + yz**2 + zx**2))


class ExodusTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.random = np.random.default_rng(15)

    def draw(self, *shape):
        return self.random.normal(scale=100.0, size=shape)

    def new(self, name="job.e", **form):
        return Exodus(self.path(name), **form)

    def plain(self, name="job.e", steps=3, packed=False, table=True, **form):
        """Vectors and scalars at nodes, a tensor and scalars of elements, sets, globals, on three cubes."""
        with self.new(name, **form) as file:
            file.mesh(CUBES, BLOCKS, packed)
            file.ids("eb", "num_el_blk", [10, 20], ["left", "right"])
            file.node_sets([[1, 5, 9, 13], [4, 8]], [3, 4], ["clamp", "tip"])
            file.side_sets([([1, 2, 2], [4, 2, 3])], [5], ["wet"])
            file.times(0.25 * np.arange(1, steps + 1))
            file.nodal(["disp_x", "disp_y", "disp_z", "temp"], self.draw(4, steps, 16), packed)
            of = {(v, b): self.draw(steps, 3 - b) for v in range(1, 8) for b in (1, 2)}
            file.elemental(["stress_" + c for c in TENSOR] + ["vonmises", "damage"], {**of, (8, 2): self.draw(steps, 1)}, table)
            file.global_values(["energy", "dt"], self.draw(steps, 2))
        return name

    def run_import(self, *arguments, status=0):
        run = self.run_program(*arguments, program="import")
        self.assertEqual(run.status, status, run.err)
        return run

    def listed(self, name, *arguments):
        return json.loads(self.run_import(name, "--list", "--json", *arguments).out)

    def names(self, name, *arguments):
        return [f["name"] for f in self.listed(name, *arguments)["steps"][0]["fields"]]

    def records(self, name, *arguments):
        self.run_import(name, "-o", "out.odb", *arguments)
        run = self.run_program("-odb", "out", "-config", self.config(*SWITCHES))
        self.assertEqual(run.status, 0, run.err)
        pairs = [line.split("\t") for line in self.path("params.txt").read_text().splitlines()]
        records = dict(pairs)
        self.assertEqual(len(records), len(pairs), "no record name comes twice")
        return records

    def check(self, records, key, values):
        """Both extremes of some values."""
        for extreme, value in (("max", np.max(values)), ("min", np.min(values))):
            found = float(records[f"{key}__{extreme}"])
            self.assertAlmostEqual(found, value, delta=2e-5 * abs(value) + 1e-12, msg=f"{key}__{extreme}")

    def check_plain(self, name, records):
        """Every extreme at every step of what plain() writes."""
        data = netCDF4.Dataset(self.path(name))
        values = {v: np.asarray(data[v][:], float) for v in data.variables if v.startswith("vals_")}
        times = np.asarray(data["time_whole"][:])
        self.assertGreater(len(times), 1)
        packed = values.get("vals_nod_var")
        for t in range(len(times)):
            nodal = packed[t] if packed is not None else np.array([values[f"vals_nod_var{v}"][t] for v in range(1, 5)])
            at = f"Step_1__Frame_{t + 1}__"
            self.check(records, at + "U__mag", np.linalg.norm(nodal[:3], axis=0))
            for axis in range(3):
                self.check(records, f"{at}U__{axis + 1}", nodal[axis])
            self.check(records, at + "temp", nodal[3])
            self.check(records, at + "clamp__temp", nodal[3, [0, 4, 8, 12]])
            self.check(records, at + "wet_NODES__temp", nodal[3, [0, 4, 8, 12, 2, 6, 10, 14, 5, 13]])
            tensor = np.array([np.concatenate([values[f"vals_elem_var{v}eb{b}"][t] for b in (1, 2)]) for v in range(1, 8)])
            self.check(records, at + "S__mises", mises(tensor[:6]))
            for column, one in zip(COLUMNS, tensor):
                self.check(records, f"{at}S__{column}", one)
                self.check(records, f"{at}left__S__{column}", one[:2])
            self.check(records, at + "vonmises", tensor[6])
            self.check(records, at + "right__vonmises", tensor[6, 2:])
            self.check(records, at + "damage", values["vals_elem_var8eb2"][t])
            self.assertNotIn(at + "left__damage__max", records)
        for i, name in enumerate(("energy", "dt")):
            pairs = np.array(eval(records[f"Step_1__History__{name}"]))
            np.testing.assert_allclose(pairs[:, 1], values["vals_glo_var"][:, i], rtol=2e-5)
            np.testing.assert_allclose(pairs[:, 0], times, rtol=2e-5)

    def test_every_form_of_file_gives_the_same_records(self):
        for form in FORMS:
            with self.subTest(form):
                self.check_plain(name := self.plain(form + ".e", form=form), self.records(name))

    def test_names_of_every_length_floats_and_long_integers(self):
        for case, options in enumerate((dict(name_length=33), dict(name_length=81), dict(name_length=256), dict(name_length=0), dict(real="f4"),
                                        dict(form="NETCDF4", integer="i8"), dict(form="NETCDF3_64BIT_DATA", integer="i8"))):
            with self.subTest(**options):
                self.check_plain(name := self.plain(f"{case}.e", **options), self.records(name))

    def test_old_files_keep_all_nodal_variables_in_one_and_have_no_truth_table(self):
        self.check_plain(name := self.plain(packed=True, table=False), self.records(name))

    def test_the_mesh_is_that_of_the_file(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.integers("node_num_map", ("num_nodes",), np.arange(16) * 10 + 100)
            file.integers("elem_num_map", ("num_elem",), [7, 9, 8])
        self.run_import("job.e")
        import h5py
        with h5py.File(self.path("job.odb")) as odb:
            mesh = odb["parts/PART-1/mesh"] if "parts/PART-1/mesh" in odb else odb["assembly/instances/PART-1-1/mesh"]
            np.testing.assert_array_equal(mesh["nodes/labels"][:], np.arange(16) * 10 + 100)
            np.testing.assert_array_equal(mesh["nodes/coordinates"][:], CUBES)
            self.assertEqual(list(mesh["elements"]), ["HEX8"])
            np.testing.assert_array_equal(mesh["elements/HEX8/labels"][:], [7, 9, 8])
            np.testing.assert_array_equal(mesh["elements/HEX8/connectivity"][:], [[(n - 1) * 10 + 100 for n in cube(i)] for i in range(3)])

    def test_numbers_that_cannot_be_labels_are_counted(self):
        for bad in ([0, 0, 0], [1, 1, 2], [-1, 2, 3]):
            with self.new() as file:
                file.mesh(CUBES, BLOCKS)
                file.integers("elem_num_map", ("num_elem",), bad)
            self.assertIn(b"elem_num_map: warning: the numbers of elements cannot be used", self.run_import("job.e").err)
        with self.new("wide.e", form="NETCDF4", integer="i8") as file:
            file.mesh(CUBES, BLOCKS)
            file.integers("node_num_map", ("num_nodes",), 2**31 + np.arange(16))
        self.assertIn(b"the numbers of nodes cannot be used, because one is 2147483648", self.run_import("wide.e").err)

    def test_sets_have_their_names_or_ids_and_none_comes_twice(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.ids("eb", "num_el_blk", [0, -7], ["", ""])
            file.node_sets([[1, 2], [3], [], [16]], [-1, 5, 6, 7], ["top", "top", "empty", "a-b"])
            file.side_sets([([1, 2, 2, 2], [6, 6, 6, 1]), ([3], [2])], [5, 0], ["top", ""])
        sets = {s["name"]: (s["of"], s["members"]) for s in self.listed("job.e")["sets"]}
        self.assertEqual(sets, {"block_0": ("elements", 2), "block_-7": ("elements", 1), "top-NODES": ("nodes", 2),
                                "top-NODES-2": ("nodes", 1), "empty": ("nodes", 0), "a-b": ("nodes", 1), "top": ("elements", 2),
                                "top-NODES-3": ("nodes", 8), "sideset_0": ("elements", 1), "sideset_0-NODES": ("nodes", 4)})

    def test_assemblies_become_sets_of_what_they_are_made_of(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.ids("eb", "num_el_blk", [10, 20])
            file.node_sets([[1, 2], [2, 3]], [7, 8])
            for number, (kind, name, ids) in enumerate(((1, "solids", [10, 20]), (2, "points", [7, 8]), (16, "both", [101, 102, 103])), 1):
                dimension = file.dimension(f"num_entity_assembly{number}", len(ids))
                file.integers(f"assembly_entity{number}", (dimension,), ids)
                variable = file.data.variables[f"assembly_entity{number}"]
                variable.setncattr("_id", np.int32(100 + number))
                variable.setncattr("_type", np.int32(kind))
                variable.setncattr("_name", name)
        sets = {s["name"]: (s["of"], s["members"]) for s in self.listed("job.e")["sets"]}
        for name, what in {"solids": ("elements", 3), "points": ("nodes", 3), "both": ("elements", 3), "both-NODES": ("nodes", 3)}.items():
            self.assertEqual(sets.get(name), what)

    def test_times_that_go_back_begin_a_step_and_equal_ones_are_frames(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.times([0, 1, 1, 0.5, 2])
            values = self.draw(1, 5, 16)
            file.nodal(["temp"], values)
            file.global_values(["energy"], np.arange(5.0)[:, None])
        steps = self.listed("job.e")["steps"]
        self.assertEqual([[(f["frame"], f["value"]) for f in s["frames"]] for s in steps], [[(1, 0), (2, 1), (3, 1)], [(1, 0.5), (2, 2)]])
        records = self.records("job.e")
        for t, at in enumerate(("Step_1__Frame_1", "Step_1__Frame_2", "Step_1__Frame_3", "Step_2__Frame_1", "Step_2__Frame_2")):
            self.check(records, at + "__temp", values[0, t])
        self.assertEqual(records["Step_2__History__energy"], "((0.5, 3), (2, 4))")

    def test_variables_of_sets_are_fields_of_their_own(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.node_sets([[1, 5], [5, 9]], None, ["low", "high"])
            file.side_sets([([1, 1, 3], [4, 5, 2])], None, ["wall"])
            file.times([1, 2])
            of_nodes = {(1, 1): self.draw(2, 2), (1, 2): self.draw(2, 2)}
            of_sides = {(1, 1): self.draw(2, 3), (2, 1): self.draw(2, 3), (3, 1): self.draw(2, 3)}
            file.of_node_sets(["rf"], of_nodes)
            file.of_side_sets(["t_x", "t_y", "t_z"], of_sides)
        records = self.records("job.e")
        for t in range(2):
            self.check(records, f"Step_1__Frame_{t + 1}__rf_low", of_nodes[1, 1][t])
            self.check(records, f"Step_1__Frame_{t + 1}__rf_high", of_nodes[1, 2][t])
            sides = np.array([of_sides[v, 1][t] for v in (1, 2, 3)])
            self.check(records, f"Step_1__Frame_{t + 1}__t_wall__mag", np.linalg.norm(sides, axis=0))
            self.check(records, f"Step_1__Frame_{t + 1}__wall__t_wall__1", sides[0])

    def test_names_decide_what_belongs_together(self):
        names = ["a_x", "a_y", "a_z", "lone_x", "b^2/c", "B*(d)+", "sdv_1", "sdv_2", "sdv_3", "very_long_name_cut_at_32_charact", "very_long_name_cut_at_32_charact", ""]
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.times([1])
            values = self.draw(len(names), 1, 16)
            file.nodal(names, values)
        grouped = ["a", "lone_x", "b^2/c", "B*(d)+", "sdv_1", "sdv_2", "sdv_3", "very_long_name_cut_at_32_charact", "very_long_name_cut_at_32_charact_2", "variable_12"]
        self.assertEqual(self.names("job.e"), grouped)
        self.assertEqual(self.names("job.e", "--group-numbers"), grouped[:4] + ["sdv"] + grouped[7:])
        self.assertEqual(self.names("job.e", "--no-group"), ["a_x", "a_y", "a_z"] + grouped[1:])
        records = self.records("job.e")
        self.check(records, "Step_1__Frame_1__a__mag", np.linalg.norm(values[:3, 0], axis=0))
        self.check(records, "Step_1__Frame_1__b^2/c", values[4, 0])
        self.check(records, "Step_1__Frame_1__very_long_name_cut_at_32_charact_2", values[10, 0])

    def test_components_on_other_blocks_stay_scalars(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.times([1])
            file.elemental(["v_x", "v_y", "v_z"], {(1, 1): self.draw(1, 2), (2, 1): self.draw(1, 2), (3, 2): self.draw(1, 1)})
        self.assertEqual(self.names("job.e"), ["v_x", "v_y", "v_z"])

    def test_stresses_have_their_name_and_all_invariants_unless_names_are_kept(self):
        name = self.plain()
        self.assertEqual(self.names(name), ["U", "temp", "S", "vonmises", "damage"])
        self.assertEqual(self.names(name, "--keep-names"), ["disp", "temp", "stress", "vonmises", "damage"])
        self.assertEqual(self.names(name, "--rename", "stress=SIG", "--rename", "temp=NT"), ["U", "NT", "SIG", "vonmises", "damage"])
        self.run_import(name)
        self.run_program("-odb", "job", "-config", self.config("TENSOR_INVARIANTS", "EXTRACT_FIELD_SETS"))
        text = self.path("params.txt").read_text()
        self.assertIn("__left__S__maxprincipal__max", text)
        self.assertIn("__left__S__tresca__min", text)

    def test_two_dimensional_models_have_plane_vectors_and_tensors(self):
        with self.new() as file:
            file.mesh([(0, 0), (1, 0), (1, 1), (0, 1)], [("QUAD", [[1, 2, 3, 4]])])
            file.side_sets([([1, 1], [1, 2])], None, ["edge"])
            file.times([1])
            flat = self.draw(2, 1, 4)
            file.nodal(["disp_x", "disp_y"], flat)
            of = {(v, 1): self.draw(1, 1) for v in range(1, 8)}
            file.elemental(["s_xx", "s_yy", "s_xy", "e_xx", "e_yy", "e_zz", "e_xy"], of)
        records = self.records("job.e")
        at = "Step_1__Frame_1__"
        self.check(records, at + "U__mag", np.linalg.norm(flat[:, 0], axis=0))
        self.check(records, at + "U__3", np.zeros(1))
        xx, yy, xy = (of[v, 1][0] for v in (1, 2, 3))
        self.check(records, at + "s__mises", mises((xx, yy, 0 * xx, xy, 0 * xx, 0 * xx)))
        self.check(records, at + "s__12", xy)
        self.check(records, at + "e__33", of[6, 1][0])
        self.assertNotIn(at + "s__13__max", records)
        self.check(records, at + "edge_NODES__U__1", flat[0, 0, :3])

    def test_nine_components_are_a_tensor_where_they_are_symmetric(self):
        names = [f"g_{a}{b}" for a in "xyz" for b in "xyz"]
        for is_symmetric in (True, False):
            with self.new() as file:
                file.mesh(CUBES, BLOCKS)
                file.times([1, 2])
                g = self.draw(3, 3, 2, 16)
                g = (g + g.swapaxes(0, 1)) / 2
                if not is_symmetric:
                    g[0, 2, 1, 3] += 1
                file.nodal(names, g.reshape(9, 2, 16))
            self.assertEqual(self.names("job.e"), ["g"] if is_symmetric else names)
            if is_symmetric:
                records = self.records("job.e")
                self.check(records, "Step_1__Frame_2__g__23", g[1, 2, 1])
                self.check(records, "Step_1__Frame_2__g__13", g[0, 2, 1])

    def test_numbered_variables_are_integration_points_on_request(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.times([1])
            names = [f"stress_{c}_{p}" for c in TENSOR for p in (1, 2, 3)] + [f"peeq_qp_{p}" for p in (0, 1)]
            # The second block has two points only.
            of = {(v, b): self.draw(1, 3 - b) for v, n in enumerate(names, 1) for b in (1, 2) if not (b == 2 and n.endswith("_3"))}
            file.elemental(names, of)
        self.assertEqual(len(self.names("job.e")), len(names))
        listed = self.listed("job.e", "--integration-points")["steps"][0]["fields"]
        self.assertEqual([(f["name"], f["kind"], f["frames"][0]["rows"]) for f in listed], [("S", "tensor", 8), ("peeq", "scalar", 6)])
        records = self.records("job.e", "--integration-points")
        of_block = lambda b, points: np.array([[of[3 * c + p, b][0] for c in range(6)] for p in points])  # [points, 6, elements]
        both = np.concatenate([of_block(1, (1, 2, 3)).swapaxes(1, 2).reshape(-1, 6), of_block(2, (1, 2)).swapaxes(1, 2).reshape(-1, 6)]).T
        self.check(records, "Step_1__Frame_1__S__mises", mises(both))
        self.check(records, "Step_1__Frame_1__S__13", both[5])
        self.check(records, "Step_1__Frame_1__block_2__S__11", of_block(2, (1, 2))[:, 0])

    def test_a_name_at_nodes_and_on_elements_is_told_apart(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.times([1])
            file.nodal(["stress_" + c for c in TENSOR], nodal := self.draw(6, 1, 16))
            file.elemental(["stress_" + c for c in TENSOR], of := {(v, b): self.draw(1, 3 - b) for v in range(1, 7) for b in (1, 2)})
        records = self.records("job.e")
        self.check(records, "Step_1__Frame_1__S__mises", mises(nodal[:, 0]))
        self.check(records, "Step_1__Frame_1__S_ELEM__11", np.concatenate([of[1, b][0] for b in (1, 2)]))

    def test_a_file_that_is_cut_off_gives_its_complete_frames(self):
        for form in FORMS[:3]:
            name = self.plain("whole.e", steps=6, form=form)
            bytes_of = self.path(name).read_bytes()
            self.path("cut.e").write_bytes(bytes_of[:-len(bytes_of) // 9])
            run = self.run_import("cut.e")
            self.assertRegex(run.err, rb"cut\.e: warning: the file is cut off: \d of its 6 time steps are complete")
            self.assertIn(b"incomplete: the results end after step 1, time ", run.out)
            frames = self.listed("cut.e")["steps"][0]["frames"]
            self.assertIn(len(frames), range(2, 6))
            whole, cut = self.records("whole.e"), self.records("cut.e")
            for key, value in cut.items():
                if "History" not in key:
                    self.assertEqual(whole[key], value)
            self.assertIn(b"cut.e: error: the file is cut off", self.run_import("cut.e", "--strict", status=1).err)
        self.path("cut.e").write_bytes(self.path(self.plain("four.e", form="NETCDF4")).read_bytes()[:-2000])
        self.assertRegex(self.run_import("cut.e", status=1).err, rb"cut\.e: error: ")

    def test_a_file_that_is_still_being_written_gives_what_is_there(self):
        for form in ("NETCDF3_64BIT_OFFSET", "NETCDF4"):
            file = self.new("open.e", form=form)
            file.mesh(CUBES, BLOCKS)
            file.times([1, 2])
            file.nodal(["temp"], values := self.draw(1, 2, 16))
            file.data.sync()
            self.check(self.records("open.e"), "Step_1__Frame_2__temp", values[0, 1])
            file.data.close()
        name = self.plain()
        data = bytearray(self.path(name).read_bytes())
        data[4:8] = b"\xff" * 4  # the number of time steps is not known yet
        self.write(name, bytes(data))
        self.assertIn(b"job.e: warning: the file was not finished: 3 time steps are complete", self.run_import(name).err)
        self.assertEqual([len(f["frames"]) for f in self.listed(name)["steps"][0]["fields"]], [3] * 5)

    def test_a_variable_that_is_damaged_costs_itself(self):
        name = self.plain(form="NETCDF4")
        with netCDF4.Dataset(self.path("packed.e"), "w") as to, netCDF4.Dataset(self.path(name)) as of:
            to.setncatts(of.__dict__)
            for d in of.dimensions.values():
                to.createDimension(d.name, None if d.isunlimited() else len(d))
            for v in of.variables.values():
                to.createVariable(v.name, v.dtype, v.dimensions, zlib=v.name == "vals_elem_var7eb1", fletcher32=v.name == "vals_elem_var7eb1").setncatts(v.__dict__)
                to[v.name][:] = v[:]
        import h5py
        with h5py.File(self.path("packed.e")) as file:
            chunk = file["vals_elem_var7eb1"].id.get_chunk_info(0)
        data = bytearray(self.path("packed.e").read_bytes())
        data[chunk.byte_offset:chunk.byte_offset + 4] = b"\xff" * 4
        self.write("packed.e", bytes(data))
        run = self.run_import("packed.e")
        self.assertRegex(run.err, rb"packed\.e: vals_elem_var7eb1: warning: .*; the field vonmises is left out")
        records = self.records("packed.e")
        self.assertNotIn("Step_1__Frame_1__vonmises__max", records)
        self.assertIn("Step_1__Frame_3__S__mises__max", records)
        self.assertRegex(self.run_import("packed.e", "--strict", status=1).err, rb"vals_elem_var7eb1: error: ")

    def test_files_of_a_series_and_parts_are_told(self):
        name = self.plain()
        for copy in ("run.e", "run.e-s002", "run.e.4.0"):
            shutil.copy(self.path(name), self.path(copy))
        self.assertIn(b"run.e: note: this file is one of a series", self.run_import("run.e").err)
        self.assertIn(b"run-s002.odb: ", self.run_import("run.e-s002").out)
        part = self.run_import("run.e.4.0")
        self.assertIn(b"warning: this is one part of a model that was split, part 0 of 4", part.err)
        self.assertIn(b"run.4.0.odb: ", part.out)
        self.assertIn(b"error: this is one part", self.run_import("run.e.4.0", "--strict", status=1).err)

    def test_files_are_known_by_what_stands_in_them(self):
        for form in ("NETCDF3_CLASSIC", "NETCDF4"):
            self.plain("results", form=form)
            self.assertIn(b"results.odb: 1 steps", self.run_import("results").out)
        self.plain("other.exo")
        self.assertIn(b"other.odb: 1 steps", self.run_import("other").out)
        with netCDF4.Dataset(self.path("weather.nc"), "w", format="NETCDF3_CLASSIC") as file:
            file.createDimension("latitude", 300)
            file.createVariable("height", "f8", ("latitude",))[:] = 1
        self.assertIn(b"weather.nc: error: a netCDF file, but not one of Exodus II", self.run_import("weather.nc", status=1).err)
        self.write("empty.e", "CDF\x01")
        self.assertRegex(self.run_import("empty.e", status=1).err, rb"^empty\.e: error: .+\n$")

    def test_a_model_without_results_is_imported_with_a_warning(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.times([0])
        run = self.run_import("job.e")
        self.assertIn(b"job.e: warning: the file holds no results", run.err)

    def test_fields_frames_and_sets_are_chosen(self):
        name = self.plain()
        self.run_import(name, "--field", "s", "--frames", "last", "--set", "wet")
        run = self.run_program("-odb", "job", "-config", self.config("EXTRACT_ALL", "EXTRACT_FIELD_SETS"))
        self.assertEqual(run.status, 0, run.err)
        keys = {line.split("__")[1:-1][0] + " " + line.split("__")[2] for line in self.path("params.txt").read_text().splitlines()}
        self.assertEqual(keys, {"Frame_3 S", "Frame_3 wet"})

    def test_files_that_claim_more_than_they_hold_are_refused_at_once(self):
        def write(name, nodes, records, variables):
            with netCDF4.Dataset(self.path(name), "w") as file:
                file.api_version = np.float32(5.1)
                for dimension, length in (("num_dim", 3), ("num_nodes", nodes), ("num_elem", 0), ("time_step", None), ("num_nod_var", variables), ("len_string", 33)):
                    file.createDimension(dimension, length)
                file.createVariable("time_whole", "f8", ("time_step",), zlib=True)[:] = np.arange(records)
                file.createVariable("name_nod_var", "S1", ("num_nod_var", "len_string"))
                for v in range(variables):
                    file.createVariable(f"vals_nod_var{v + 1}", "f8", ("time_step", "num_nodes"), zlib=True)
        for name, sizes, reason in (("wide.e", (2**31 - 2, 1, 1), b"num_nodes: error: 2147483646 is too large"),
                                    ("long.e", (10**6, 10**5, 10), b"time_step: error: there are more results than a file"),
                                    ("thin.e", (1, 10**6, 100), b"time_step: error: there are more results than a file")):
            write(name, *sizes)
            run = self.run_import(name, status=1)
            self.assertIn(name.encode() + b": " + reason, run.err)
            self.assertFalse(self.path(name).with_suffix(".odb").exists())

    def test_what_is_no_variable_of_the_format_is_left_out_with_a_warning(self):
        with self.new() as file:
            file.mesh(CUBES, BLOCKS)
            file.times([1])
            file.nodal(["u", "temp"], values := self.draw(2, 1, 16))
            file.data.renameVariable("vals_nod_var1", "aside")
            file.data.createVariable("vals_nod_var1", "f8", ("time_step", "num_nodes", "num_dim"))[:] = 1
        self.assertIn(b"job.e: vals_nod_var1: warning: does not hold a number for each time step and entity", self.run_import("job.e").err)
        self.check(self.records("job.e"), "Step_1__Frame_1__temp", values[1, 0])
        with netCDF4.Dataset(self.path("bare.e"), "w", format="NETCDF3_CLASSIC") as file:
            file.api_version = np.float32(5.1)
            file.createDimension("x", 40)
            file.createVariable("y", "f8", ("x",))[:] = 1
        self.assertIn(b"bare.e: num_nodes: error: is not there, and so there is no model", self.run_import("bare.e", status=1).err)

    def test_only_the_reading_program_loads_the_library(self):
        for program in ("import", "quarnish", "odbscan", "netcdfread"):
            loaded = subprocess.run(["ldd", str(BIN / program)], stdout=subprocess.PIPE, text=True, check=False).stdout
            self.assertEqual("libnetcdf" in loaded, program == "netcdfread", program)


if __name__ == "__main__":
    unittest.main()
