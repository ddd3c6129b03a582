#!/usr/bin/python3
"""Writes plate.pvd and a file of VTK for each of three loads into the current directory: an infinite plate with a hole of 10 mm
radius, pulled along x with 50, 100 and 150 MPa, in plane stress. A quarter of it, as far as 100 mm from the centre.

Stresses and displacements are Kirsch's (Muskhelishvili, Some Basic Problems of the Mathematical Theory of Elasticity, section
56a). Only the standard library is used: what any program has to do to be imported from."""
import array
import base64
import math
import struct

RADIUS, OUTSIDE, YOUNG, POISSON = 10.0, 100.0, 210000.0, 0.3
RINGS, SECTORS = 40, 36
LOADS = (50.0, 100.0, 150.0)


def stresses(load, r, angle):
    """XX YY ZZ XY YZ XZ in the axes of the plate."""
    q, c, s = (RADIUS / r) ** 2, math.cos(2 * angle), math.sin(2 * angle)
    radial = load / 2 * (1 - q + (1 - 4 * q + 3 * q * q) * c)
    hoop = load / 2 * (1 + q - (1 + 3 * q * q) * c)
    shear = -load / 2 * (1 + 2 * q - 3 * q * q) * s
    mean, half = (radial + hoop) / 2, (radial - hoop) / 2
    return mean + half * c - shear * s, mean - half * c + shear * s, 0.0, half * s + shear * c, 0.0, 0.0


def displacements(load, r, angle):
    kappa, shear_modulus = (3 - POISSON) / (1 + POISSON), YOUNG / (2 * (1 + POISSON))
    x, c, s = r / RADIUS, math.cos(2 * angle), math.sin(2 * angle)
    factor = load * RADIUS / (8 * shear_modulus)
    radial = factor * (x * (kappa - 1 + 2 * c) + 2 / x * (1 + (kappa + 1 - 1 / x ** 2) * c))
    hoop = factor * (-2 * x + 2 / x * (1 - kappa - 1 / x ** 2)) * s
    return radial * math.cos(angle) - hoop * math.sin(angle), radial * math.sin(angle) + hoop * math.cos(angle), 0.0


def data_array(kind, name, values, components=1):
    codes = {"Float64": "d", "Int32": "i", "UInt8": "B"}
    data = array.array(codes[kind], values).tobytes()
    text = base64.b64encode(struct.pack("=I", len(data)) + data).decode()
    return f'<DataArray type="{kind}" Name="{name}" NumberOfComponents="{components}" format="binary">{text}</DataArray>\n'


def flat(rows):
    return [number for row in rows for number in row]


def write(path, load, time):
    places = [(RADIUS * (OUTSIDE / RADIUS) ** (ring / RINGS), math.pi / 2 * sector / SECTORS)
              for ring in range(RINGS + 1) for sector in range(SECTORS + 1)]
    points = [(r * math.cos(angle), r * math.sin(angle), 0.0) for r, angle in places]
    cells = [(corner, corner + SECTORS + 1, corner + SECTORS + 2, corner + 1)
             for ring in range(RINGS) for corner in range(ring * (SECTORS + 1), ring * (SECTORS + 1) + SECTORS)]
    # The rim of the hole is a material of its own.
    materials = [1 if ring < 4 else 2 for ring in range(RINGS) for _ in range(SECTORS)]
    order = "LittleEndian" if struct.pack("=H", 1)[0] else "BigEndian"
    with open(path, "w", encoding="ascii") as file:
        file.write(f'<VTKFile type="UnstructuredGrid" version="1.0" byte_order="{order}" header_type="UInt32">\n<UnstructuredGrid>\n'
                   f'<FieldData>{data_array("Float64", "TimeValue", [time])}{data_array("Float64", "load", [load])}</FieldData>\n'
                   f'<Piece NumberOfPoints="{len(points)}" NumberOfCells="{len(cells)}">\n<PointData>\n' +
                   data_array("Float64", "displacement", flat(displacements(load, *place) for place in places), 3) +
                   data_array("Float64", "stress", flat(stresses(load, *place) for place in places), 6) +
                   "</PointData>\n<CellData>\n" + data_array("Int32", "MaterialIds", materials) + "</CellData>\n<Points>\n" +
                   data_array("Float64", "Points", flat(points), 3) + "</Points>\n<Cells>\n" +
                   data_array("Int32", "connectivity", flat(cells)) + data_array("Int32", "offsets", range(4, 4 * len(cells) + 1, 4)) +
                   data_array("UInt8", "types", [9] * len(cells)) + "</Cells>\n</Piece>\n</UnstructuredGrid>\n</VTKFile>\n")


def main():
    with open("plate.pvd", "w", encoding="ascii") as file:
        file.write('<VTKFile type="Collection" version="0.1">\n<Collection>\n')
        for number, load in enumerate(LOADS):
            time = (number + 1) / len(LOADS)
            write(f"plate_{number}.vtu", load, time)
            file.write(f'<DataSet timestep="{time!r}" file="plate_{number}.vtu"/>\n')
        file.write("</Collection>\n</VTKFile>\n")


if __name__ == "__main__":
    main()
