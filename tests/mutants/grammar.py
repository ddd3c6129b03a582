"""Changes of text files by what stands in them: keywords, parameters, heads of blocks, titles of tables."""
import random
import re

LABELS = ["0", "1", "2", "3", "-1", "2147483647", "2147483648", "99999999999999999999", "1.5", "", "x", "Ends", "EALL"]
NAMES = ["Ends", "Bars", "Eall", "Side", "ENDS", "", "\"a, b\"", "\"", "n\x1b[2J", "x" * 300, "\xe4", "Warn", "A-B", "A B", "all"]
KEYWORDS = ["*NSET,NSET=Ends", "*ELSET,ELSET=Eall", "*NSET,NSET=New,GENERATE\n1,2147483647", "*ELSET,ELSET=New,GENERATE\n1,2000000000,1",
            "*INCLUDE,INPUT=job.inp", "*INCLUDE,INPUT=/dev/zero", "*INCLUDE,INPUT=.", "*STEP", "*END STEP", "*STATIC", "*FREQUENCY\n10",
            "*SURFACE,NAME=Side", "*SURFACE,NAME=New\nEall,S1", "*NODE,NSET=New", "*ELEMENT,TYPE=C3D20R,ELSET=New", "*USER ELEMENT,TYPE=U1,NODES=2000000000",
            "*MATERIAL,NAME=Steel", "*SOLID SECTION,ELSET=Eall,MATERIAL=Steel", "*SHELL SECTION,ELSET=Eall,MATERIAL=Steel\n-1.",
            "*CYCLIC SYMMETRY MODEL,N=4,NGRAPH=2000000000", "*NODE PRINT,NSET=Ends", "*RESTART,READ", "*HEADING", "**", "*"]
TYPES = ["C3D8", "C3D20", "C3D4", "S8R", "B32", "T3D2", "CPS4", "U1", "XYZ", ""]


def lines_of(data):
    return data.decode("latin-1").split("\n")


def bytes_of(lines):
    return "\n".join(lines).encode("latin-1")


def exchange(pattern, words):
    """A change of one text that matches, in one line."""
    def change(lines, chance):
        found = [i for i, line in enumerate(lines) if re.search(pattern, line)]
        if not found:
            return
        i = chance.choice(found)
        match = chance.choice(list(re.finditer(pattern, lines[i])))
        lines[i] = lines[i][:match.start()] + match.expand(words(chance)) + lines[i][match.end():]
    return change


def insert(lines, chance):
    lines.insert(chance.randrange(len(lines) + 1), chance.choice(KEYWORDS))


def starts_of(lines, pattern):
    return [i for i, line in enumerate(lines) if re.match(pattern, line)]


def move_part(pattern):
    """Doubles, drops or moves all from one head to the next."""
    def change(lines, chance):
        starts = starts_of(lines, pattern)
        if not starts:
            return
        k = chance.randrange(len(starts))
        end = starts[k + 1] if k + 1 < len(starts) else len(lines)
        part = lines[starts[k]:end]
        how = chance.randrange(3)
        if how > 0:
            del lines[starts[k]:end]
        if how < 2:
            at = chance.choice(starts_of(lines, pattern) or [0])
            lines[at:at] = part * chance.choice([1, 1, 20])
    return change


def plain(text):
    return text.replace("\\", "\\\\")


def column(pattern, begin, width, words):
    """Other words in fixed columns (from 0) of a line that matches."""
    def change(lines, chance):
        found = starts_of(lines, pattern)
        if not found:
            return
        i = chance.choice(found)
        word = chance.choice(words).rjust(width)[:width]
        lines[i] = lines[i].ljust(begin + width)[:begin] + word + lines[i][begin + width:]
    return change


INP = [insert, insert, move_part(r"\*[^*]"), exchange(r"(?<=[=])[^,]*", lambda chance: plain(chance.choice(NAMES))),
       exchange(r"(?<=TYPE=)[^,]*", lambda chance: chance.choice(TYPES)), exchange(r"(?<=[,\n])[^,*=]*$|^[\d.]+", lambda chance: chance.choice(LABELS)),
       exchange(r",[^,]*$", lambda chance: ""), exchange(r"$", lambda chance: ",")]
FRD = [move_part(r"    [123][CP]|  100C"), move_part(r" -4"), move_part(r" -5"), move_part(r" -3"), column(r"    [23]C", 24, 12, LABELS),
       column(r"  100C", 12, 12, ["1.0", "-1.0", "nan", "inf", "1E400", ""]), column(r"  100C", 24, 12, LABELS), column(r"  100C", 57, 1, ["0", "1", "2", "3", "4", "9", ""]),
       column(r"  100C", 58, 5, LABELS), column(r"  100C|    [23]C", 73, 2, ["0", "1", "2", "3", "9", "", "x"]),
       column(r" -4", 5, 8, ["DISP", "STRESS", "NDTEMP", "FORC", "CELS", "", "n\x1b[2J", "STRESSI", "."]), column(r" -4", 13, 5, LABELS), column(r" -5", 23, 5, LABELS),
       column(r" -5", 33, 5, LABELS), column(r" -5", 28, 5, LABELS), column(r" -1", 3, 10, LABELS), column(r" -1", 13, 5, LABELS),
       column(r" -2", 3, 10, LABELS), column(r" -1", 13, 12, ["NaN", "INF", "-INF", "1.0E+999", "5.7E-124", "****"])]
TITLES = ["displacements (vx,vy,vz)", "stresses (elem, integ.pnt.,sxx,syy,szz,sxy,sxz,syz)", "temperatures", "total force (fx,fy,fz)", "volume (element, volume)",
          "total volume", "strains (elem, integ.pnt.,exx,eyy,ezz,exy,exz,eyz)", "contact stress (slave element+face,press,tang1,tang2)", "heat flux (elem, integ.pnt.,qx,qy,qz)"]
DAT = [move_part(r" [a-z]"), move_part(r"\s+[EMB] "), exchange(r"[a-z]+(?: \w+)* \([^)]*\)", lambda chance: chance.choice(TITLES)),
       exchange(r"(?<=time )\s*[-+.\dE]+", lambda chance: chance.choice(["  0.1", " -1.0", " nan", " 1E400", "", " 0.5000000E+00"])),
       exchange(r"(?<=set )\S+", lambda chance: plain(chance.choice(NAMES))), exchange(r"^ +\d+", lambda chance: " " + chance.choice(LABELS)),
       exchange(r" +[-+.\dE]+$", lambda chance: chance.choice(["", " 1.0 2.0", " x", " 1E999"]))]
COUNTS = ["0", "1", "2", "11", "13", "-1", "2147483647", "2147483648", "18446744073709551615", "1152921504606846976", "99999999999999999999", "x", ""]
WORDS = {"type": ["Float32", "Float64", "Int8", "UInt64", "String", "UnstructuredGrid", "PUnstructuredGrid", "Collection", "vtkMultiBlockDataSet", "ImageData", ""],
         "format": ["ascii", "binary", "appended", ""], "encoding": ["raw", "base64", "x"], "byte_order": ["LittleEndian", "BigEndian", "x"],
         "header_type": ["UInt32", "UInt64", "x"], "compressor": ["vtkZLibDataCompressor", "vtkLZ4DataCompressor", ""],
         "Name": ["u", "stress", "connectivity", "offsets", "types", "TimeValue", "vtkGhostType", "n&#133;", "x" * 300, ""],
         "NumberOfComponents": COUNTS + ["3", "6", "9", "65"], "NumberOfPoints": COUNTS, "NumberOfCells": COUNTS, "NumberOfTuples": COUNTS, "offset": COUNTS}
TAGS = ["<DataArray type=\"Float32\" Name=\"u\" format=\"ascii\">1 2</DataArray>", "</Piece>", "<Piece NumberOfPoints=\"1\" NumberOfCells=\"1\">", "<Points>",
        "<AppendedData encoding=\"raw\">_", "<DataSet timestep=\"0\" file=\"job.vtu\"/>", "<Piece Source=\"job.vtu\"/>", "<!DOCTYPE a>", "<!-- > -->", "&lt;", "<![CDATA[<]]>"]
SECTIONS = ["POINTS 2 float", "CELLS 1 2", "CELL_TYPES 1", "POINT_DATA 12", "CELL_DATA 6", "FIELD FieldData 2", "SCALARS a float", "LOOKUP_TABLE default",
            "VECTORS v double", "TENSORS t double", "METADATA", "DATASET UNSTRUCTURED_GRID", "SCALARS a bit 1", "s 1 2 string", "BINARY", "ASCII"]


def attribute(lines, chance):
    """Another value of an attribute."""
    name = chance.choice(sorted(WORDS))
    exchange(rf'(?<=\b{name}=")[^"]*', lambda chance: plain(chance.choice(WORDS[name])))(lines, chance)


def insert_of(words):
    return lambda lines, chance: lines.insert(chance.randrange(len(lines) + 1), chance.choice(words))


VTK = [attribute, attribute, attribute, attribute, insert_of(TAGS), insert_of(SECTIONS), move_part(r"<[A-Z]"), move_part(r"</[A-Z]"), move_part(r"[A-Z_]{5}"),
       exchange(r"(?<=[A-Z] )\d+", lambda chance: chance.choice(COUNTS)), exchange(r"\b\d+\b", lambda chance: chance.choice(COUNTS)),
       exchange(r"\b(float|double|int|vtktypeint64)\b", lambda chance: chance.choice(["float", "char", "unsigned_long", "vtkIdType", "string", "bit", "x"]))]
CHANGES = {"inp": INP, "frd": FRD, "dat": DAT, "vtk": VTK}


def changed(whole, seed, kind):
    """A changed copy of a text; never the same."""
    chance = random.Random(seed)
    while True:
        lines = lines_of(whole)
        for _ in range(chance.choice([1, 1, 2, 3, 6])):
            chance.choice(CHANGES[kind])(lines, chance)
        data = bytes_of(lines)
        if data != whole:
            return data
