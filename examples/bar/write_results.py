#!/usr/bin/python3
"""Writes bar.e, results of a bar that is pulled at its right end, as an Exodus II file with netCDF4 and numpy.

A bar of 4 x 1 x 1 along x with E = 200000 and Poisson's ratio 0.3 is held at its left end and pulled with a stress of 100,
200 and 300: displacements at the nodes, stresses in the elements, and the energy.
"""
import sys

import netCDF4
import numpy as np

MODULUS, RATIO, LENGTH, STRESSES = 200000.0, 0.3, 4, (100.0, 200.0, 300.0)


def texts(file, variable, dimension, names):
    """A table of characters, as names are stored."""
    file.createDimension(dimension, len(names))
    table = np.zeros((len(names), 33), "S1")
    for row, name in zip(table, names):
        row[:len(name)] = [c.encode() for c in name]
    file.createVariable(variable, "S1", (dimension, "len_name"))[:] = table


def write(path):
    nodes = np.array([(x, y, z) for z in (0, 1) for y in (0, 1) for x in range(LENGTH + 1)], float)
    row, layer = LENGTH + 1, 2 * (LENGTH + 1)
    lower = [(i + 1, i + 2, i + 2 + row, i + 1 + row) for i in range(LENGTH)]
    with netCDF4.Dataset(path, "w", format="NETCDF3_64BIT_OFFSET") as file:
        file.setncatts({"api_version": np.float32(5.1), "version": np.float32(5.1), "floating_point_word_size": np.int32(8), "title": "a bar that is pulled"})
        for name, length in (("len_name", 33), ("time_step", None), ("num_dim", 3), ("num_nodes", len(nodes)), ("num_elem", LENGTH),
                             ("num_el_in_blk1", LENGTH), ("num_nod_per_el1", 8), ("num_side_ss1", 1)):
            file.createDimension(name, length)
        for axis, along in zip("xyz", nodes.T):
            file.createVariable("coord" + axis, "f8", ("num_nodes",))[:] = along
        texts(file, "eb_names", "num_el_blk", ["steel"])
        texts(file, "ss_names", "num_side_sets", ["pulled"])
        for name, dimension in (("eb_prop1", "num_el_blk"), ("ss_prop1", "num_side_sets")):
            file.createVariable(name, "i4", (dimension,))[:] = 1
        connect = file.createVariable("connect1", "i4", ("num_el_in_blk1", "num_nod_per_el1"))
        connect.elem_type = "HEX8"
        connect[:] = [[*four, *(n + layer for n in four)] for four in lower]
        file.createVariable("elem_ss1", "i4", ("num_side_ss1",))[:] = LENGTH
        file.createVariable("side_ss1", "i4", ("num_side_ss1",))[:] = 2
        file.createVariable("time_whole", "f8", ("time_step",))[:] = [1, 2, 3]
        texts(file, "name_nod_var", "num_nod_var", ["disp_x", "disp_y", "disp_z"])
        texts(file, "name_elem_var", "num_elem_var", ["stress_" + c for c in ("xx", "yy", "zz", "xy", "yz", "zx")])
        texts(file, "name_glo_var", "num_glo_var", ["strain_energy"])
        strains = np.array(STRESSES)[:, None] / MODULUS
        for i, along in enumerate(nodes.T, 1):
            factor = 1 if i == 1 else -RATIO
            file.createVariable(f"vals_nod_var{i}", "f8", ("time_step", "num_nodes"))[:] = factor * strains * along
        for i in range(1, 7):
            values = np.tile(np.array(STRESSES)[:, None], LENGTH) if i == 1 else np.zeros((3, LENGTH))
            file.createVariable(f"vals_elem_var{i}eb1", "f8", ("time_step", "num_el_in_blk1"))[:] = values
        file.createVariable("vals_glo_var", "f8", ("time_step", "num_glo_var"))[:] = np.array(STRESSES)[:, None] ** 2 / (2 * MODULUS) * LENGTH


if __name__ == "__main__":
    write(sys.argv[1] if len(sys.argv) > 1 else "bar.e")
