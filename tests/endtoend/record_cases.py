"""The databases behind the examples of docs/records.md, one function for each."""
import numpy as np

from support import set_attributes

SIX = ("11", "22", "33", "12", "13", "23")

# Two tetrahedra with the nodes 2, 3 and 4 in common, and SXX at the nodes 1 to 5.
RESULTS = ("    1C\n"
           "    2C                             5                                     1\n"
           " -1         1 0.00000E+00 0.00000E+00 0.00000E+00\n -1         2 1.00000E+00 0.00000E+00 0.00000E+00\n"
           " -1         3 0.00000E+00 1.00000E+00 0.00000E+00\n -1         4 0.00000E+00 0.00000E+00 1.00000E+00\n"
           " -1         5 1.00000E+00 1.00000E+00 1.00000E+00\n -3\n"
           "    3C                             2                                     1\n"
           " -1         1    3    0    1\n -2         1         2         3         4\n"
           " -1         2    3    0    1\n -2         2         3         4         5\n -3\n"
           "    1PSTEP                         1           1           1          \n"
           "  100CL  101 1.000000000           5                     0    1           1\n"
           " -4  STRESS      6    1\n -5  SXX         1    4    1    1\n -5  SYY         1    4    2    2\n"
           " -5  SZZ         1    4    3    3\n -5  SXY         1    4    1    2\n -5  SYZ         1    4    2    3\n"
           " -5  SZX         1    4    3    1\n"
           + "".join(f" -1{node:10d}{stress:12.5E}" + 5 * " 0.00000E+00" + "\n"
                     for node, stress in ((1, 10), (2, 50), (3, 20), (4, 30), (5, 40))) + " -3\n 9999\n")
DECK = ("*NODE\n1,0,0,0\n2,1,0,0\n3,0,1,0\n4,0,0,1\n5,1,1,1\n*ELEMENT, TYPE=C3D4, ELSET=FIRST\n1,1,2,3,4\n"
        "*ELEMENT, TYPE=C3D4\n2,2,3,4,5\n*STEP\n*STATIC\n*END STEP\n")


def rows(*values, kind="f4"):
    """The rows of one frame."""
    return np.array([values], kind)


def tensors(*stresses):
    """Tensors with nothing but 11."""
    return rows(*([stress, 0, 0, 0, 0, 0] for stress in stresses))


def nodes(odb, count, name="ALL"):
    """Nodes from 1, and a set of them all."""
    odb.location("nodes", "nodal", nodeLabels=range(1, count + 1))
    odb.file[f"assembly/nodeSets/{name}/I-1"] = np.arange(1, count + 1, dtype="i4")


def elements(odb, *counts, name="ALL"):
    """Elements from 1, a location for each count, and a set of them all."""
    first = 1
    for place, count in enumerate(counts):
        odb.location(f"elements {place}", "centroid", elementLabels=range(first, first + count))
        first += count
    odb.file[f"assembly/elementSets/{name}/I-1"] = np.arange(1, first, dtype="i4")


def plate(odb):
    odb.location("nodes", "nodal", nodeLabels=[1, 2, 3])
    odb.location("elements", "centroid", elementLabels=[1, 2])
    odb.file["assembly/nodeSets/HOT SPOT/I-1"] = np.array([2, 3], "i4")
    odb.file["assembly/instances/I-1/elementSets/TOP"] = np.array([2], "i4")
    step = odb.step("Step-1", increments=(12,), mass=2.5, massCenter=[0.0, 1.5, 3.0])
    history(step, "Node 7", "U2", [[0, 0], [0.5, 12.25]], node=7)
    odb.field(step, "NT", 2, [("nodes", rows(20, 50, 80))])
    odb.field(step, "S", 5, [("elements", tensors(100, 60))], labels=SIX)
    odb.field(step, "U", 3, [("nodes", rows([0, 0, 0], [0, 0, 1], [3, 4, 0]))])


def mass_names(odb):
    nodes(odb, 1)
    odb.field(odb.step("Load Case-2", mass=0.25), "NT", 2, [("nodes", rows(20))])


def twice(odb):
    odb.location("ends", "elementNodal", elementLabels=[1, 1, 2, 2], nodeLabels=[1, 2, 2, 3])
    odb.file["assembly/elementSets/TOP/I-1"] = np.array([1], "i4")
    odb.file["assembly/nodeSets/TOP/I-1"] = np.array([2], "i4")
    odb.field(odb.step("Step-1"), "S", 5, [("ends", tensors(100, 60, 40, 10))], labels=SIX)


def frames(odb):
    nodes(odb, 1)
    odb.field(odb.step("Step-1", increments=(1, 1)), "NT", 2, [("nodes", np.array([[20], [30]], "f4"))])


def numbers(odb):
    values = [1234567, 123457, 100, 0.5, 0.000123457, 1.5e-5, 4.5e-12, 1e20, -0.0, np.inf, -np.inf, np.nan]
    history(odb.step("Step-1"), "Assembly", "X", [values])


def twenty(odb, values):
    elements(odb, 20)
    odb.field(odb.step("Step-1"), "T", 2, [("elements 0", rows(*values))])


def nodes_and_elements(odb, values):
    nodes(odb, 20)
    odb.location("elements", "centroid", elementLabels=range(1, 21))
    step = odb.step("Step-1")
    odb.field(step, "NT", 2, [("nodes", rows(*values))])
    odb.field(step, "NTD", 2, [("nodes", rows(*values, kind="f8"))])
    odb.field(step, "T", 2, [("elements", rows(*values))])


def thirtythree(odb):
    nodes(odb, 33)
    odb.field(odb.step("Step-1"), "NT", 2, [("nodes", rows(*range(16, 0, -1), *range(17, 34)))])


def moved(odb):
    elements(odb, 33)
    odb.field(odb.step("Step-1"), "T", 2, [("elements 0", rows(*(4 * i % 33 + 1 for i in range(33))))])


def blocks(odb):
    elements(odb, 10, 10)
    odb.field(odb.step("Step-1"), "T", 2, [("elements 0", rows(*range(1, 11))), ("elements 1", rows(*range(11, 21)))])


def last_block(odb):
    elements(odb, 2, 1)
    field = odb.field(odb.step("Step-1"), "S", 5, [("elements 0", tensors(100, 50)), ("elements 1", rows([10, 0, 0]))],
                      labels=SIX)
    set_attributes(field["blocks/1"], type=7, componentLabels=["11", "22", "12"])


def vector_blocks(odb):
    odb.location("some", "nodal", nodeLabels=[1, 2])
    odb.location("others", "nodal", nodeLabels=[3, 4])
    odb.field(odb.step("Step-1"), "U", 3, [("some", rows([9, 0, 0], [5, 0, 0])), ("others", rows([2, 0, 0], [1, 0, 0]))])


def element_vectors(odb):
    elements(odb, 2)
    odb.location("node", "nodal", nodeLabels=[1])
    step = odb.step("Step-1")
    odb.field(step, "A", 3, [("node", rows([7, 8, 9]))])
    odb.field(step, "Q", 3, [("elements 0", rows([3, 4, 0], [0, 0, 1]))])


def node_tensors(odb):
    nodes(odb, 1)
    odb.field(odb.step("Step-1"), "S", 5, [("nodes", rows([9, 0, 0, 0, 0, -7]))], labels=SIX)


def labels(odb):
    elements(odb, 1)
    odb.field(odb.step("Step-1"), "S", 5, [("elements 0", tensors(100))], labels=["S" + label for label in SIX])


def nine(odb):
    elements(odb, 4)
    odb.field(odb.step("Step-1"), "S", 9, [("elements 0", rows([100, 0, 0], [80, 0, 0], [60, 0, 0], [40, 0, 0]))],
              labels=["11", "22", "12"])


def precision(odb):
    nodes(odb, 1)
    odb.field(odb.step("Step-1"), "U", 3, [("nodes", rows([1, 2, 3], kind="f8"))])


def other_types(odb):
    nodes(odb, 2)
    odb.field(odb.step("Step-1"), "A", 4, [("nodes", rows([1, 20], [30, 4]))])


def no_value(odb):
    nodes(odb, 3)
    odb.location("none", "centroid", elementLabels=[])
    step = odb.step("Step-1")
    odb.field(step, "A", 5, [], labels=SIX)
    odb.field(step, "B", 2, [("none", rows())])
    odb.field(step, "C", 2, [("nodes", rows(np.nan, 1, 5))])
    odb.field(step, "D", 2, [("nodes", rows(np.nan, np.nan, np.nan))])
    odb.field(step, "E", 2, [("nodes", rows(np.inf, 1, -np.inf))])
    odb.field(step, "F", 3, [("nodes", rows([3, 4], [1, 0], [0, -2]))], labels=["1", "2"])


def invariants(odb):
    elements(odb, 2)
    field = odb.field(odb.step("Step-1"), "S", 5, [("elements 0", tensors(100, 80))], labels=SIX)
    field.attrs["validInvariants"] = np.array([1, 5, 6], "i4")


def warn(odb):
    odb.location("nodes", "nodal", nodeLabels=[1, 2])
    for name in ("WarnElemDistorted", "Information", "warnings"):
        odb.file[f"assembly/nodeSets/{name}/I-1"] = np.array([2], "i4")
    odb.field(odb.step("Step-1"), "NT", 2, [("nodes", rows(20, 40))])


def two_elements(odb):
    elements(odb, 2)
    del odb.file["assembly/elementSets/ALL"]
    odb.file["assembly/elementSets/ROOT/I-1"] = np.array([1], "i4")
    odb.field(odb.step("Step-1", mass=2.5), "S", 5, [("elements 0", tensors(100, 80))], labels=SIX,
              description="Stress components")


def history(step, name, output, samples, **point):
    region = step.create_group("history/" + name)
    set_attributes(region, **point)
    region["outputs/" + output] = np.array(samples, "f4").reshape(len(samples), -1)


def histories(odb):
    step = odb.step("Step-1")
    history(step, "Assembly", "ALLKE", [[0, 1], [1, 4]])
    history(step, "Element 12 Int Point 3", "S11", [[1, 50]], element=12, integrationPoint=3)
    history(step, "Element 13 Int Point 3", "S11", [[1, 70]], element=13, integrationPoint=3)
    step.create_group("history/Node 7").attrs["node"] = 7
    step["history/Node 7/outputs/U1"] = np.zeros((0, 2), "f4")
    history(step, "Tip", "RF1 - total", [[0.5, 2, -3]], node=7, set="TIP NODES-1")


DATABASES = {
    "plate": plate, "mass-names": mass_names, "twice": twice, "frames": frames, "numbers": numbers,
    "thirtythree": thirtythree, "moved": moved, "moved-both": moved, "blocks": blocks, "last-block": last_block,
    "vector-blocks": vector_blocks, "element-vectors": element_vectors, "node-tensors": node_tensors, "labels": labels,
    "nine": nine, "precision": precision, "other-types": other_types, "no-value": no_value, "invariants": invariants,
    "invariants-listed": invariants, "labels-listed": labels, "warn": warn, "elset": two_elements, "typo": two_elements,
    "substring": two_elements, "histories": histories}
