"""HDF5 is in no program that reads or judges a database: the symbols of what was linked, and the libraries it loads."""
import os
import pathlib
import re
import subprocess
import unittest

BIN = pathlib.Path(os.environ["KOLVEX_BIN"])
# The archive that programs of others are linked with.
PACKAGE = pathlib.Path(os.environ["KOLVEX_PACKAGE"])
WITHOUT = [BIN / name for name in ("quarnish", "quarnish-completion", "kolvex", "verify")]
WITH = [BIN / name for name in ("import", "odbscan")]
# As H5Fopen and H5_libinit_g are named; our own functions are C++.
HDF5 = re.compile(r"^_?H5[A-Z]{0,2}_?[a-z]\w*$")


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True, timeout=120).stdout


def symbols_of(path):
    """Names of all symbols, those of shared libraries among them."""
    lines = output_of("nm", path)
    if path.suffix != ".a":
        lines += output_of("nm", "-D", path)
    return {line.split()[-1].split("@")[0] for line in lines.splitlines() if line.strip()}


def hdf5_in(path):
    return sorted(name for name in symbols_of(path) if HDF5.match(name))


def hdf5_loaded_by(path):
    return [line for line in output_of("ldd", path).splitlines() if "hdf5" in line]


class SymbolsTest(unittest.TestCase):
    def test_programs_that_read_databases_hold_no_hdf5_and_load_none(self):
        for path in WITHOUT:
            with self.subTest(path.name):
                self.assertIn("main", symbols_of(path))
                self.assertEqual(hdf5_in(path), [])
                self.assertEqual(hdf5_loaded_by(path), [])

    def test_the_library_for_other_programs_holds_no_hdf5(self):
        self.assertTrue(any("odb_Odb" in name for name in symbols_of(PACKAGE)))
        self.assertEqual(hdf5_in(PACKAGE), [])

    def test_hdf5_is_found_where_it_is(self):
        for path in WITH:
            with self.subTest(path.name):
                self.assertTrue(hdf5_in(path))
                self.assertIn("H5Fopen", hdf5_in(path))

    def test_symbols_are_told_apart(self):
        for name in ("H5Fopen", "H5_init_g", "H5dont_atexit", "H5AC_flush", "_H5F_x"):
            self.assertIsNotNone(HDF5.match(name), name)
        for name in ("_ZN2h54FileD1Ev", "H5", "main", "kolvexScanProgram"):
            self.assertIsNone(HDF5.match(name), name)


if __name__ == "__main__":
    unittest.main()
