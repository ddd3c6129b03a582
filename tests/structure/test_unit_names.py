"""Sources of a folder can be compiled together: no two of them keep different things under one name."""
import pathlib
import tempfile
import unittest

import unit_names

ROOT = pathlib.Path(__file__).resolve().parents[2]
# Compiled by themselves with options of their own.
ALONE = [path.relative_to(ROOT).as_posix() for path in (ROOT / "src/kernels").glob("*.cpp")]
ALONE += ["src/odbstore/crc32c_folding256.cpp", "src/odbstore/crc32c_folding512.cpp"]

SOURCE = """namespace a {{

namespace {{

{}

}}  // namespace

void exported() {{}}

}}  // namespace a
"""


class UnitNamesTest(unittest.TestCase):
    def collisions(self, first, second):
        with tempfile.TemporaryDirectory(prefix="kolvex-test.") as directory:
            root = pathlib.Path(directory)
            (root / "src/folder").mkdir(parents=True)
            (root / "src/folder/first.cpp").write_text(SOURCE.format(first))
            (root / "src/folder/second.cpp").write_text(SOURCE.format(second))
            return unit_names.collisions(root)

    def test_sources_of_this_tree_can_be_compiled_together(self):
        self.assertEqual(unit_names.collisions(ROOT, ALONE), [])

    def test_equal_constants_and_types_collide(self):
        self.assertEqual(self.collisions("constexpr int kMost = 4;", "constexpr long kMost = 5;"),
                         ["src/folder: kMost in first.cpp, second.cpp"])
        self.assertEqual(len(self.collisions("class Reader {\n  int kMost = 1;\n};", "struct Reader {};")), 1)

    def test_functions_collide_when_their_parameters_are_equal(self):
        self.assertEqual(len(self.collisions("int at(int i) { return i; }", "int at(int place) { return place; }")), 1)
        self.assertEqual(len(self.collisions("int at(int i,\n       int j) {\n}", "int at(int i, int k) {\n}")), 1)
        self.assertEqual(self.collisions("int at(int i) { return i; }", "int at(long i) { return 0; }"), [])

    def test_what_is_exported_or_inside_of_functions_does_not_count(self):
        self.assertEqual(self.collisions("int a() {\n  int same = 1;\n}", "int b() {\n  int same = 2;\n}"), [])


if __name__ == "__main__":
    unittest.main()
