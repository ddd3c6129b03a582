"""A result file whose rows many places share."""
from decks import CORNERS, Mesh

STRESS = ("    1PSTEP{0:26d}{0:12d}           1          \n  100CL  101 {0}.00000000{1:12d}                     0    1           1\n"
          " -4  STRESS      6    1\n -5  SXX         1    4    1    1\n -5  SYY         1    4    2    2\n"
          " -5  SZZ         1    4    3    3\n -5  SXY         1    4    1    2\n -5  SYZ         1    4    2    3\n"
          " -5  SZX         1    4    3    1\n")


def bricks(count, frames=2):
    """Bricks in a row, so that most of their nodes are shared, with stresses in some frames."""
    mesh = Mesh()
    for x in range(count):
        mesh.add("C3D8", (x, 0, 0), CORNERS)
    lines = ["    1C\n", f"    2C{len(mesh.nodes):30d}{1:38d}\n"]
    lines += [f" -1{label:10d}" + "".join(f"{c:12.5E}" for c in place) + "\n" for label, place in sorted(mesh.nodes.items())]
    elements = mesh.elements["C3D8"]
    lines += [" -3\n", f"    3C{len(elements):30d}{1:38d}\n"]
    for label, nodes in sorted(elements.items()):
        lines += [f" -1{label:10d}    1    0    1\n", " -2" + "".join(f"{node:10d}" for node in nodes) + "\n"]
    lines.append(" -3\n")
    for frame in range(1, frames + 1):
        lines.append(STRESS.format(frame, len(mesh.nodes)))
        lines += [f" -1{label:10d}" + "".join(f"{frame * label + i:12.5E}" for i in range(6)) + "\n" for label in sorted(mesh.nodes)]
        lines.append(" -3\n")
    return "".join(lines) + " 9999\n"
