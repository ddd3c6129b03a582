"""Files that are cut off, damaged or made to do harm: what is complete is imported with a warning, else an error names the place."""
import os
import resource
import struct
import subprocess
import unittest
import zlib

import numpy as np
from by_hand import Grid, Xml, collection, legacy, pieces, sample, vtu
from extremes import expected
from vtk_test import BIN, VtkTest

FORMS = {"ascii.vtu": {"form": "ascii"}, "raw.vtu": {"form": "appended-raw"}, "packed.vtu": {"form": "appended-raw", "packed": True},
         "base64.vtu": {"form": "binary"}, "appended.vtu": {"form": "appended-base64"}}


def files(grid):
    made = {name: vtu(grid, **options) for name, options in FORMS.items()}
    made.update({"ascii.vtk": legacy(grid, False), "binary.vtk": legacy(grid, True), "five.vtk": legacy(grid, True, version="5.1")})
    return made


class CutTest(VtkTest):
    def test_a_single_file_that_is_cut_off_is_an_error(self):
        for name, raw in files(sample(1)).items():
            for part in (0, 0.05, 0.3, 0.6, 0.9):
                with self.subTest(name=name, part=part):
                    self.write(name, raw[:int(part * len(raw))])
                    self.assert_error(rb"^%s(:\d+)?: error: " % name.encode(), "--format", "vtk", name)

    def test_a_series_that_ends_with_a_cut_file_is_imported_up_to_there(self):
        grid = sample(2)
        for name, raw in files(grid).items():
            with self.subTest(name=name):
                self.write(f"0.{name}", raw)
                self.write(f"1.{name}", raw[:int(0.7 * len(raw))])
                self.write("job.pvd", collection(((0.5, f"0.{name}", ""), (1, f"1.{name}", ""))))
                self.assert_whole(self.records("job.pvd"), expected(grid))
                self.assertRegex(self.last.err, rb"1\.%s(:\d+)?: warning: .*; the frame is left out" % name.encode())
                self.assertIn(b"incomplete: the results end after step 1, time 0.5\n", self.last.out)
                self.assert_error(rb"^1\.%s(:\d+)?: error: " % name.encode(), "job.pvd", "--strict")

    def test_a_missing_file_costs_its_frame(self):
        grid = sample(3)
        self.write("s.vtu", vtu(grid))
        self.write("job.pvd", collection(((0, "s.vtu", ""), (1, "gone.vtu", ""), (2, "s.vtu", ""))))
        self.assert_whole(self.records("job.pvd"), {**expected(grid), **expected(grid, frame=2)})
        self.assertIn(b"job.pvd:5: warning: the file gone.vtu does not exist; the frame is left out\n", self.last.err)
        self.assertNotIn(b"incomplete", self.last.out)
        self.write("job.pvtu", pieces("s.vtu", "gone.vtu"))
        self.assert_error(rb"^job\.pvtu:4: error: the file gone\.vtu does not exist$", "job.pvtu")


class Forged(Xml):
    """A file whose array "t" has these bytes."""

    def __init__(self, data):
        super().__init__("appended-raw", packed=True, block=800)
        self.data, self.name = data, ""

    def array(self, name, array, attributes=""):
        self.name = name
        return super().array(name, array, attributes)

    def encoded(self, array):
        return self.data if self.name == "t" else super().encoded(array)


class DamageTest(VtkTest):
    def test_an_array_that_cannot_be_read_is_left_out(self):
        grid = sample(11)
        without = sample(11)
        del without.cell_data["flux"]
        ascii_file = vtu(grid).decode().split('Name="flux"')
        at = ascii_file[1].index("\n") + 1
        damaged = {"ascii.vtu": (ascii_file[0] + 'Name="flux"' + ascii_file[1][:at] + "x" + ascii_file[1][at:]).encode()}
        for form, packed in (("binary", False), ("binary", True)):
            raw = vtu(grid, form=form, packed=packed)
            at = raw.index(b"\n", raw.index(b'Name="flux"')) + 60
            damaged[f"base64{packed}.vtu"] = raw[:at] + b"#" + raw[at + 1:]
        for name, raw in damaged.items():
            with self.subTest(name=name):
                self.write(name, raw)
                self.assert_whole(self.records(name), expected(without))
                self.assertRegex(self.last.err, rb"(?m)^%s(:\d+)?: warning: .*; it is left out" % name.encode())
                self.assert_error(rb"^%s(:\d+)?: error: " % name.encode(), name, "--strict")

    def test_packed_blocks_hold_what_they_say(self):
        points = 100
        values = np.arange(points, dtype="f8")
        plain = values.tobytes()

        def packed(*sizes, blocks, claimed=None):
            data = [zlib.compress(block) for block in blocks]
            return struct.pack(f"<{3 + len(data)}I", len(data), *sizes, *(claimed or map(len, data))) + b"".join(data)

        good = packed(800, 0, blocks=[plain])
        cases = {"less": packed(800, 0, blocks=[plain[:-8]]), "more": packed(800, 0, blocks=[plain + bytes(8)]),
                 "bomb": packed(800, 0, blocks=[bytes(100_000_000)]), "count": struct.pack("<4I", 1 << 31, 800, 0, 5),
                 "sizes": packed(800, 0, blocks=[plain], claimed=[1 << 31]), "short": packed(800, 0, blocks=[plain], claimed=[20]),
                 "zero": packed(0, 0, blocks=[plain]), "large": packed(4096, 4000, blocks=[plain]), "last": packed(800, 400, blocks=[plain])}
        self.assertEqual(zlib.decompress(good[16:]), plain)
        for name, data in {"good": good, **cases}.items():
            with self.subTest(name=name):
                self.write("job.vtu", Forged(data).file(Grid(np.zeros((points, 3)), [], {"t": values, "other": values})))
                if name in ("count", "sizes"):  # seem to be cut off
                    self.assert_error(rb'^job\.vtu:\d+: error: the file ends inside the array "t"', "job.vtu")
                    continue
                records = self.records("job.vtu")
                self.assertEqual(records["Step_1__Frame_1__other__max"], "99")
                self.assertEqual("Step_1__Frame_1__t__max" in records, name == "good")
                self.assertEqual(b" warning: " in self.last.err, name != "good", self.last.err)

    def test_what_sizes_promise_and_files_do_not_hold_takes_no_memory(self):
        many = 1 << 30
        cases = {
            "raw.vtu": vtu(sample(), form="appended-raw").replace(b'NumberOfPoints="30"', b'NumberOfPoints="%d"' % many),
            "ascii.vtu": vtu(sample()).replace(b'NumberOfPoints="30"', b'NumberOfPoints="%d"' % many),
            "packed.vtu": vtu(sample(), form="binary", packed=True).replace(b'NumberOfPoints="30"', b'NumberOfPoints="%d"' % many),
            "cells.vtu": vtu(sample(), form="appended-raw").replace(b"NumberOfCells=\"", b"NumberOfCells=\"1000000"),
            "wide.vtu": vtu(sample()).replace(b'NumberOfComponents="6"', b'NumberOfComponents="1000000"'),
            "points.vtk": legacy(sample(), False).replace(b"POINTS 30", b"POINTS 2000000000"),
            "cells.vtk": legacy(sample(), True).replace(b"CELLS 1", b"CELLS 2000000001"),
            "field.vtk": legacy(sample(), True).replace(b"stress 6 30", b"stress 1000000 30"),
            "rows.vtk": legacy(sample(), False).replace(b"stress 6 30", b"stress 6 99999999999"),
        }
        for name, raw in cases.items():
            with self.subTest(name=name):
                self.write(name, raw)
                limited = ["/usr/bin/prlimit", f"--data={(64 << 20) + 16 * len(raw)}", str(BIN / "import"), name, "-o", "out.odb"]
                run = subprocess.run(limited if BIN.parent.name != "asan" else limited[2:], cwd=self.directory, capture_output=True,
                                     timeout=60, check=False, preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CORE, (0, 0)))
                self.assertIn(run.returncode, (0, 1))
                self.assertRegex(run.stderr, rb"(?m)^%s(:\d+)?: (warning|error): " % name.encode())
                self.assertNotIn(b"out of memory", run.stderr)

    def test_of_several_steps_of_time_in_one_file_the_first_is_imported(self):
        grid = sample(14)
        raw = vtu(grid)
        for name in (b"u", b"flux"):
            begin = raw.index(b'<DataArray type="Float64" Name="' + name)
            end = raw.index(b"</DataArray>", begin) + len(b"</DataArray>\n")
            one = raw[begin:end]
            raw = raw[:begin] + b"".join(one.replace(b"Name=", b'TimeStep="%d" Name=' % i).replace(b".", b".0" * i or b".") for i in range(3)) + raw[end:]
        self.write("job.vtu", raw)
        self.assert_whole(self.records("job.vtu"), expected(grid))
        self.assertEqual(self.last.err.count(b"of the steps of time in this file the first is imported alone"), 1)

    def test_cells_that_make_no_sense(self):
        grid = sample(13)
        text = vtu(grid).decode()

        def changed(name, change):
            head, tail = text.split(f'Name="{name}"')
            begin = tail.index("\n") + 1
            end = tail.index("\n", begin)
            return head + f'Name="{name}"' + tail[:begin] + change(tail[begin:end]) + tail[end:]

        for name, change, reason in (
                ("connectivity", lambda t: "30 " + t.split(" ", 1)[1], "the cell 1 has the point 30 of 30"),
                ("connectivity", lambda t: "-1 " + t.split(" ", 1)[1], "the cell 1 has the point -1 of 30"),
                ("connectivity", lambda t: t.rsplit(" ", 1)[0], "holds fewer than the"),
                ("offsets", lambda t: t.rsplit(" ", 1)[0] + " 3", "the ends of cells are not in order"),
                ("offsets", lambda t: t.rsplit(" ", 1)[0] + " 99999999999999", "holds fewer than the"),
                ("types", lambda t: "99 " + t.split(" ", 1)[1], "the cell 1 is of the type 99, which is not known"),
                ("types", lambda t: "25 " + t.split(" ", 1)[1], "the cell 1 has 8 points, and a HEX20 has 20"),
                ("types", lambda t: "1.5 " + t.split(" ", 1)[1], "which is not an integer")):
            with self.subTest(name=name, reason=reason):
                self.write("job.vtu", changed(name, change))
                self.assert_error(rb"^job\.vtu:\d+: error: .*" + reason.encode(), "job.vtu")


class HarmTest(VtkTest):
    def test_entities_and_deep_nesting_are_refused(self):
        bomb = '<?xml version="1.0"?>\n<!DOCTYPE VTKFile [<!ENTITY a "aaaaaaaaaa">' + "".join(
            f'<!ENTITY {chr(98 + i)} "{10 * f"&{chr(97 + i)};"}">' for i in range(9)) + ']>\n<VTKFile type="&j;"/>'
        self.write("job.vtu", bomb)
        self.assert_error(rb"^job\.vtu:2: error: the file declares a document type", "job.vtu")
        self.write("job.vtu", '<VTKFile type="UnstructuredGrid">' + "<a>" * 100_000)
        self.assert_error(rb"^job\.vtu:1: error: tags are nested too deeply", "job.vtu")
        self.write("job.vtu", '<VTKFile type="UnstructuredGrid"><a b="' + "x" * 3_000_000)
        self.assert_error(rb"^job\.vtu:1: error: a tag has no end", "job.vtu")

    def test_files_that_name_each_other(self):
        self.write("a.pvtu", pieces("b.pvtu"))
        self.write("b.pvtu", pieces("a.pvtu", "a.pvtu", "a.pvtu"))
        self.assert_error(rb"^[ab]\.pvtu:3: error: (files name each other too deeply|[ab]\.pvtu is named more than 100 times)", "a.pvtu")
        self.write("s.vtu", vtu(sample()))
        self.write("job.pvtu", pieces(*["s.vtu"] * 101))
        self.assert_error(rb"^job\.pvtu:103: error: s\.vtu is named more than 100 times", "job.pvtu")

    def test_named_files_are_files_of_vtk_and_nothing_of_others_shows(self):
        self.write("secret", "top secret\n")
        os.mkfifo(self.path("pipe.vtu"))
        for name, reason in (("secret", "not a file of VTK"), ("pipe.vtu", "is not a regular file"), ("/dev/zero", "is not a regular file"),
                             (".", "is not a regular file")):
            self.write("job.pvd", collection([(0, name, "")]))
            run = self.run_import("job.pvd", "-o", "out.odb", status=1)
            self.assertIn(reason.encode(), run.err)
            self.assertNotIn(b"top", run.err)
        self.assert_error(rb"pipe\.vtu: error: is not a regular file", "pipe.vtu")

    def test_times_are_numbers(self):
        self.write("s.vtu", vtu(sample()))
        for time in ("nan", "inf", "x", ""):
            self.write("job.pvd", collection([(0, "s.vtu", ""), (time, "s.vtu", ""), (1, "s.vtu", 'part="1"')]))
            self.assert_error(rb'^job\.pvd:5: error: "' + time.encode() + rb'" is not a time$', "job.pvd")

    def test_other_kinds_of_files_are_named(self):
        self.write("a.vti", '<VTKFile type="ImageData" version="0.1"></VTKFile>')
        self.assert_error(rb"^a\.vti:1: error: files of the type ImageData are not imported", "a.vti")
        self.write("a.vtk", "# vtk DataFile Version 3.0\nt\nASCII\nDATASET STRUCTURED_POINTS\n")
        self.assert_error(rb"^a\.vtk:4: error: the data set is STRUCTURED_POINTS; only UNSTRUCTURED_GRID", "a.vtk")
        grid = sample(41)
        self.write("s.vtu", vtu(grid))
        self.write("some.pvtu", pieces("a.vti", "s.vtu", "a.vtk"))
        self.assert_whole(self.records("some.pvtu"), expected(grid))
        self.assertIn(b"a.vti:1: warning: files of the type ImageData are not imported", self.last.err)
        self.assertIn(b"a.vtk:4: warning: the data set is STRUCTURED_POINTS", self.last.err)
        self.assert_error(rb"^a\.vti:1: error: files of the type ImageData", "some.pvtu", "--strict")
        self.write("none.pvtu", pieces("a.vti", "a.vtk"))
        self.assert_error(rb"^a\.vtk:4: error: the data set is STRUCTURED_POINTS", "none.pvtu")
        self.write("a.xml", "<?xml version='1.0'?><other/>")
        self.assert_error(rb"^a\.xml: error: not a result file of a known format", "a.xml")

    def test_control_characters_in_names_become_blanks(self):
        self.write("job.vtk", legacy(Grid(np.eye(3), [], {"a%1Bb": np.ones(3)}), False))
        self.assertEqual(self.records("job.vtk")["Step_1__Frame_1__a_b__max"], "1")
        self.assertIn(rb"a\x1bb", self.last.err)

    def test_numbers_of_the_field_data_without_a_good_name(self):
        grid = Grid(np.eye(3), [], {"t": np.ones(3)}, {}, {"": np.array([2.5]), "&#133;e": np.array([3.5])})
        self.write("job.vtu", vtu(grid))
        records = self.records("job.vtu")
        self.assertEqual((records["Step_1__History__unnamed"], records["Step_1__History___e"]), ("((0, 2.5))", "((0, 3.5))"))
        self.assertIn(b"has control characters, which become blanks", self.last.err)

    def test_the_database_does_not_replace_what_it_is_made_of(self):
        self.write("s.vtu", vtu(sample()))
        self.write("job.pvd", collection([(0, "s.vtu", "")]))
        for name in ("s.vtu", "job.pvd"):
            before = self.path(name).read_bytes()
            run = self.run_program("job.pvd", "-o", name, program="import")
            self.assertEqual((run.status, self.path(name).read_bytes()), (1, before))
            self.assertIn(b"would replace", run.err)


if __name__ == "__main__":
    unittest.main()
