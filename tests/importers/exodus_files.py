"""Writes Exodus II files with netCDF4, in every form in which they come, without the Exodus library."""
import netCDF4
import numpy as np


class Exodus:
    """A file being written. Names of dimensions and variables are those of the format; arrays are numpy's."""

    def __init__(self, path, form="NETCDF3_64BIT_OFFSET", name_length=33, real="f8", integer="i4", title="made for a test"):
        self.data = netCDF4.Dataset(path, "w", format=form)
        self.real, self.integer, self.path = real, integer, path
        self.data.api_version = np.float32(5.1)
        self.data.version = np.float32(5.1)
        self.data.floating_point_word_size = np.int32(8 if real == "f8" else 4)
        self.data.title = title
        self.data.createDimension("len_string", 33)
        self.data.createDimension("len_line", 81)
        self.name_dimension = "len_name" if name_length else "len_string"
        if name_length:
            self.data.createDimension("len_name", name_length)
        self.data.createDimension("four", 4)
        self.data.createDimension("time_step", None)
        self.data.createVariable("time_whole", real, ("time_step",))
        self.values = []

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.data.close()

    def dimension(self, name, length):
        if name not in self.data.dimensions:
            self.data.createDimension(name, length)
        return name

    def texts(self, variable, dimension, names, length=None):
        length = length or self.name_dimension
        width = len(self.data.dimensions[length])
        rows = np.zeros((len(names), width), "S1")
        for row, name in zip(rows, names):
            for i, letter in enumerate(name.encode()[:width]):
                row[i] = bytes([letter])
        self.data.createVariable(variable, "S1", (self.dimension(dimension, len(names)), length))[:] = rows

    def integers(self, variable, dimensions, numbers):
        self.data.createVariable(variable, self.integer, dimensions)[:] = numbers

    def mesh(self, nodes, blocks, packed=False):
        """`nodes` [n, 2 or 3]; `blocks` a list of (type, connectivity from 1)."""
        nodes = np.asarray(nodes, float)
        self.dimension("num_dim", nodes.shape[1])
        self.dimension("num_nodes", len(nodes))
        self.dimension("num_elem", sum(len(c) for _, c in blocks))
        self.dimension("num_el_blk", len(blocks))
        if packed:
            self.data.createVariable("coord", self.real, ("num_dim", "num_nodes"))[:] = nodes.T
        else:
            for axis, along in zip("xyz", nodes.T):
                self.data.createVariable("coord" + axis, self.real, ("num_nodes",))[:] = along
        for number, (kind, connectivity) in enumerate(blocks, 1):
            connectivity = np.asarray(connectivity)
            shape = (self.dimension(f"num_el_in_blk{number}", connectivity.shape[0]), self.dimension(f"num_nod_per_el{number}", connectivity.shape[1]))
            variable = self.data.createVariable(f"connect{number}", self.integer, shape)
            variable.elem_type = kind
            variable[:] = connectivity

    def ids(self, what, dimension, ids, names=None):
        """Of "eb", "ns", "ss", "els"."""
        self.integers(f"{what}_prop1", (self.dimension(dimension, len(ids)),), ids)
        if names is not None:
            self.texts(f"{what}_names", dimension, names)

    def node_sets(self, sets, ids=None, names=None):
        self.ids("ns", "num_node_sets", ids or range(1, len(sets) + 1), names)
        for number, members in enumerate(sets, 1):
            if len(members):
                self.integers(f"node_ns{number}", (self.dimension(f"num_nod_ns{number}", len(members)),), members)

    def side_sets(self, sets, ids=None, names=None):
        """A list of (elements, sides)."""
        self.ids("ss", "num_side_sets", ids or range(1, len(sets) + 1), names)
        for number, (elements, sides) in enumerate(sets, 1):
            dimension = (self.dimension(f"num_side_ss{number}", len(elements)),)
            self.integers(f"elem_ss{number}", dimension, elements)
            self.integers(f"side_ss{number}", dimension, sides)

    def times(self, times):
        self.data.variables["time_whole"][:] = times

    def global_values(self, names, values):
        """`values` [times, names]."""
        self.texts("name_glo_var", "num_glo_var", names)
        self.data.createVariable("vals_glo_var", self.real, ("time_step", "num_glo_var"))[:] = values

    def nodal(self, names, values, packed=False):
        """`values` [names, times, nodes]."""
        self.texts("name_nod_var", "num_nod_var", names)
        if packed:
            self.data.createVariable("vals_nod_var", self.real, ("time_step", "num_nod_var", "num_nodes"))[:] = np.swapaxes(values, 0, 1)
            return
        for number, one in enumerate(values, 1):
            self.data.createVariable(f"vals_nod_var{number}", self.real, ("time_step", "num_nodes"))[:] = one

    def of_holders(self, what, mark, lengths, holders, names, values, table=True):
        """`values` {(variable, holder): [times, entities]} with places from 1."""
        self.texts(f"name_{what}_var", f"num_{what}_var", names)
        if table:
            truth = [[int((v, h) in values) for v in range(1, len(names) + 1)] for h in range(1, len(self.data.dimensions[holders]) + 1)]
            self.data.createVariable(f"{what}_var_tab", self.integer, (holders, f"num_{what}_var"))[:] = truth
        for (variable, holder), one in sorted(values.items()):
            self.data.createVariable(f"vals_{what}_var{variable}{mark}{holder}", self.real, ("time_step", f"{lengths}{holder}"))[:] = one

    def elemental(self, names, values, table=True):
        self.of_holders("elem", "eb", "num_el_in_blk", "num_el_blk", names, values, table)

    def of_node_sets(self, names, values):
        self.of_holders("nset", "ns", "num_nod_ns", "num_node_sets", names, values)

    def of_side_sets(self, names, values):
        self.of_holders("sset", "ss", "num_side_ss", "num_side_sets", names, values)


# Three unit cubes in a row: two blocks, two elements and one. Nodes i + 4 j + 8 k from 1.
CUBES = np.array([(x, y, z) for z in (0, 1) for y in (0, 1) for x in range(4)], float)


def cube(i):
    first = i + 1
    lower = [first, first + 1, first + 5, first + 4]
    return lower + [node + 8 for node in lower]


BLOCKS = [("HEX8", [cube(0), cube(1)]), ("HEX", [cube(2)])]
