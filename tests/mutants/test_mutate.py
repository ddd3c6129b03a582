"""The damage does what it says."""
import contextlib
import pathlib
import random
import signal
import tempfile
import unittest
from unittest import mock

import h5py

import catalogs
import grammar
import mutate
import run
import seeds
import structure


class MutateTest(unittest.TestCase):
    def test_every_mutant_differs_and_comes_again(self):
        whole = b"one 1\ntwo 2\nthree 3\n" * 20
        for kinds in (mutate.BINARY, mutate.TEXT):
            for seed in range(300):
                mutant = mutate.mutant(whole, seed, kinds)
                self.assertNotEqual(mutant, whole)
                self.assertEqual(mutant, mutate.mutant(whole, seed, kinds))

    def test_checksums_are_those_of_the_library(self):
        # From the self test of lookup3.c.
        self.assertEqual(mutate.lookup3(b""), 0xdeadbeef)
        self.assertEqual(mutate.lookup3(b"Four score and seven years ago"), 0x17770551)

    def test_object_headers_are_found_with_their_checksums(self):
        with tempfile.TemporaryDirectory() as directory:
            path = pathlib.Path(directory) / "file.h5"
            with h5py.File(path, "w", libver=("v110", "v110")) as file:
                for i in range(5):
                    file.create_group(f"group{i}").attrs["number"] = i
            data = path.read_bytes()
        headers = list(mutate.object_headers(data))
        self.assertEqual(len(headers), 6)
        for begin, end in headers:
            self.assertEqual(mutate.lookup3(data[begin:end]).to_bytes(4, "little"), data[end:end + 4])
        self.assertNotEqual(mutate.forged(data, 1), data)

    def test_catalogs_are_read_as_the_schema_says_and_sealed_again(self):
        with tempfile.TemporaryDirectory() as directory:
            files = seeds.catalogued(pathlib.Path(directory))
            self.assertGreater(len(files), 1)
            for whole in files:
                before, catalog, trailer = catalogs.split(whole)
                parsed = catalogs.CatalogBytes(bytearray(catalog))
                self.assertEqual(len(parsed.columns), sum(kind.startswith("[") for table, fields in parsed.tables.items()
                                                          for _, kind in fields))
                self.assertEqual(parsed.columns["Steps", "frame_end"][len(parsed.columns["Steps", "frame_end"]) - 1],
                                 len(parsed.columns["Frames", "value"]))
                # Its own sums come again, so that a forged file fails by what was changed and not by them.
                broken = before + catalog + trailer[:16] + bytes(8) + trailer[24:]
                self.assertEqual(catalogs.sealed(broken, parsed.extents(len(before))), whole)

    def test_forged_catalogs_differ_in_the_catalog_alone_and_come_again(self):
        with tempfile.TemporaryDirectory() as directory:
            whole = seeds.catalogued(pathlib.Path(directory))[0]
        before, catalog, _ = catalogs.split(whole)
        for seed in range(100):
            mutant = catalogs.forged(whole, seed)
            self.assertEqual(mutant, catalogs.forged(whole, seed))
            self.assertEqual((len(mutant), mutant[:len(before)]), (len(whole), before))
            self.assertNotEqual(mutant[len(before):len(before) + len(catalog)], catalog)
    def test_changes_of_words_differ_and_come_again(self):
        texts = {"inp": b"*NSET,NSET=Ends\n1,3\n*ELEMENT,TYPE=T3D2,ELSET=Bars\n1,1,2\n",
                 "frd": b"    1C\n    2C                             3\n -1         1 0.00000E+00\n -3\n  100CL  101 1.0000000000           3\n -4  DISP        4    1\n",
                 "dat": b" displacements (vx,vy,vz) for set TOP and time  0.1\n\n         3  1.0  2.0  3.0\n",
                 "vtk": seeds.vtk_files()["text.vtu"]}
        for kind, text in texts.items():
            for seed in range(200):
                self.assertNotEqual(grammar.changed(text, seed, kind), text)
                self.assertEqual(grammar.changed(text, seed, kind), grammar.changed(text, seed, kind))
            self.assertGreater(len({grammar.changed(text, seed, kind) for seed in range(200)}), 50)

    def test_changes_of_structure_open_and_come_again(self):
        with tempfile.TemporaryDirectory() as directory:
            path = pathlib.Path(directory) / "file.h5"
            with h5py.File(path, "w", libver=("v110", "v110")) as file:
                for i in range(5):
                    file.create_group(f"group{i}").attrs["number"] = i
                    file[f"group{i}/data"] = [[1.0, 2.0], [3.0, 4.0]]
            whole = path.read_bytes()
            for seed in range(60):
                changed = structure.changed(whole, seed, path)
                self.assertNotEqual(changed, whole)
                with h5py.File(path) as file:
                    self.assertGreater(len(file) + len(file.attrs), 0)

    def test_numbers_can_keep_their_columns(self):
        chance = random.Random(1)
        widths = set()
        for _ in range(200):
            data = bytearray(b" -1        12 1.00000E+00")
            mutate.change_number(data, chance)
            widths.add(len(data))
        self.assertIn(25, widths)
        self.assertGreater(len(widths), 2)


class LimitsTest(unittest.TestCase):
    """What takes long or waits is a broken promise; a busy machine is not."""

    def outcome_of(self, script):
        with tempfile.TemporaryDirectory() as directory, contextlib.chdir(directory), \
                mock.patch.multiple(run, SECONDS=1, PATIENCE=3), mock.patch.object(seeds, "BIN", pathlib.Path(directory)):
            signal.signal(signal.SIGALRM, run.late)
            program = pathlib.Path("program")
            program.write_text("#!/bin/sh\n" + script + "\n")
            program.chmod(0o755)
            with self.assertRaises(run.Broken) as broken:
                run.run("program")
            return str(broken.exception)

    def test_processor_time(self):
        self.assertIn("more than 1 s of processor time", self.outcome_of("while :; do :; done"))

    def test_waiting(self):
        self.assertIn("hangs for 3 s", self.outcome_of("exec sleep 100"))

    def test_crash(self):
        self.assertIn("crashed with 11", self.outcome_of("kill -SEGV $$"))


if __name__ == "__main__":
    unittest.main()
