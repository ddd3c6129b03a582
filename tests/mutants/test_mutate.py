"""The damage does what it says."""
import pathlib
import random
import tempfile
import unittest

import h5py

import grammar
import mutate
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

    def test_changes_of_words_differ_and_come_again(self):
        texts = {"inp": b"*NSET,NSET=Ends\n1,3\n*ELEMENT,TYPE=T3D2,ELSET=Bars\n1,1,2\n",
                 "frd": b"    1C\n    2C                             3\n -1         1 0.00000E+00\n -3\n  100CL  101 1.0000000000           3\n -4  DISP        4    1\n",
                 "dat": b" displacements (vx,vy,vz) for set TOP and time  0.1\n\n         3  1.0  2.0  3.0\n"}
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


if __name__ == "__main__":
    unittest.main()
