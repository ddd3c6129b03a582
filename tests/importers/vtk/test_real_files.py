"""Files that VTK's own writers and meshio have written (make_files.py): records are what VTK and meshio read in them.

KOLVEX_VTK_FILES names another directory of such files, made anew."""
import json
import os
import pathlib
import shutil
import unittest

from vtk_test import HERE, VtkTest

FILES = pathlib.Path(os.environ.get("KOLVEX_VTK_FILES", HERE / "files"))


class RealFilesTest(VtkTest):
    def setUp(self):
        super().setUp()
        shutil.copytree(FILES, self.directory, dirs_exist_ok=True)
        self.expected = json.loads(self.path("expected.json").read_text())

    def test_every_file_has_the_extremes_that_others_read(self):
        self.assertGreater(len(self.expected), 20)
        for name, one in self.expected.items():
            with self.subTest(name=name):
                records = self.records(name, *one["arguments"])
                self.assert_extremes(records, one["records"])
                # Sets have more records: those of node sets.
                if name not in ("blocks.vtm",) and "--sets-from" not in one["arguments"]:
                    self.assertEqual({record for record in records if "__Frame_" in record}, set(one["records"]))

    def test_packers_that_are_not_read_are_named(self):
        self.assert_error(rb"^lz4\.vtu:1: error: arrays packed by vtkLZ4DataCompressor are not read", "lz4.vtu")
        self.assert_error(rb"^lzma\.vtu:1: error: arrays packed by vtkLZMADataCompressor are not read", "lzma.vtu")
        self.assert_error(rb"^meshio_lzma\.vtu:\d: error: arrays packed by vtkLZMADataCompressor are not read", "meshio_lzma.vtu")

    def test_times_are_those_of_the_files(self):
        for name, arguments in (("series_02.vtk", ["--series"]), ("time.pvd", [])):
            listed = json.loads(self.run_import(name, *arguments, "--list", "--json").out)
            self.assertEqual([(frame["frame"], frame["value"]) for frame in listed["steps"][0]["frames"]], [(1, 0), (2, 0.5), (3, 1)])
        self.assertEqual(json.loads(self.run_import("series_02.vtk", "--list", "--json").out)["steps"][0]["frames"][0]["value"], 1)

    def test_the_list_says_what_the_files_say(self):
        listed = json.loads(self.run_import("raw.vtu", "--list", "--json").out)
        self.assertEqual((listed["nodes"], listed["elements"], listed["form"]), (20, 11, "appended raw"))
        fields = {field["name"]: (field["kind"], field["source"]) for field in listed["steps"][0]["fields"]}
        self.assertEqual(fields, {"U": ("vector", "displacement"), "S": ("tensor", "stress"), "E": ("tensor", "strain"),
                                  "heat flow": ("scalar", "heat flow"), "sig": ("tensor", "sig"), "MaterialIds": ("scalar", "MaterialIds")})


if __name__ == "__main__":
    unittest.main()
