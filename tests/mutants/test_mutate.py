"""The damage does what it says."""
import pathlib
import random
import tempfile
import unittest

import h5py

import mutate


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
