"""`cmake --install` for other programs: find_package(kolvex), public headers, licence, pages, examples."""
import os
import re
import shutil
import subprocess

import numpy as np

from support import ROOT, Database, ProgramTest, installed_prefix

CMAKE = os.environ["KOLVEX_CMAKE"]
STRESSES = np.array([[[100, -20, 3, 40, 5, 6], [1, 2, 3, 4, 5, 6], [-300, 10, 20, 0, 70, 0]],
                     [[10, 20, 30, 0, 0, 0], [400, 0, 0, 0, 0, 0], [0, 0, 0, 100, 0, 0]]], "f4")


def mises(s):
    """Of rows 11, 22, 33, 12, 13, 23."""
    s = s.astype("f8")
    normal = (s[..., 0] - s[..., 1]) ** 2 + (s[..., 1] - s[..., 2]) ** 2 + (s[..., 2] - s[..., 0]) ** 2
    return np.sqrt(normal / 2 + 3 * (s[..., 3:] ** 2).sum(axis=-1))


class PackageTest(ProgramTest):
    def setUp(self):
        super().setUp()
        # Moved: nothing in it may know where it was installed.
        self.prefix = shutil.move(installed_prefix(self), self.path("moved prefix"))

    def cmake(self, *arguments):
        # A program that uses a sanitized library is linked with the sanitizers too.
        flags = "-fsanitize=address,undefined" if os.environ.get("KOLVEX_SANITIZE") == "ON" else ""
        return subprocess.run([CMAKE, *map(str, arguments)], capture_output=True, text=True, timeout=300, check=False,
                              env={**os.environ, "CXXFLAGS": flags})

    def configure(self, source, build, *options):
        return self.cmake("-G", "Ninja", "-S", source, "-B", build, f"-DCMAKE_PREFIX_PATH={self.prefix}", *options)

    def test_the_example_reads_a_database_through_the_installed_library(self):
        source, build = self.prefix / "share/doc/kolvex/examples/read_database", self.path("build")
        done = self.configure(source, build, "-DCMAKE_CXX_FLAGS_INIT=-Wall -Wextra -Wpedantic -Wconversion -Werror",
                              "-DCMAKE_NO_SYSTEM_FROM_IMPORTED=ON")
        self.assertEqual(done.returncode, 0, done.stderr)
        done = self.cmake("--build", build)
        self.assertEqual(done.returncode, 0, done.stdout)
        with Database(self.path("model.odb")) as odb:
            odb.location("points", "integrationPoint", elementLabels=[1, 2, 3], integrationPoints=[1, 1, 1])
            odb.location("nodes", "nodal", nodeLabels=[1, 2])
            odb.file["assembly/elementSets/RIM/I-1"] = np.array([2, 3], "i4")
            step = odb.step("Step-1", (1, 5))
            odb.field(step, "S", 5, [("points", STRESSES)], ["S11", "S22", "S33", "S12", "S13", "S23"])
            odb.field(step, "U", 3, [("nodes", np.array([[[3, 4, 0], [1, 1, 1]], [[0, 0, 2], [0, 0, 0]]], "f8"))],
                      ["U1", "U2", "U3"])

        def run(*arguments):
            return self.run_program(*arguments, program=build / "read_database")

        whole, rim = mises(STRESSES).max(axis=1), mises(STRESSES[:, 1:]).max(axis=1)
        self.assertNotEqual(whole[0].round(), rim[1].round())
        for arguments, expected in ((("S",), whole), (("S", "RIM"), rim), (("U",), (5, 2))):
            done = run("model.odb", *arguments)
            self.assertEqual((done.status, done.err), (0, b""))
            self.assertEqual(done.out.decode(), f"Step-1  1  {expected[0]:g}\nStep-1  5  {expected[1]:g}\n")
        done = run("missing.odb", "S")
        self.assertEqual((done.status, done.out), (1, b""))
        self.assertIn(b"missing.odb", done.err)
        done = run("model.odb", "S", "NOWHERE")
        self.assertEqual((done.status, done.out), (1, b""))
        self.assertIn(b"NOWHERE", done.err)

    def test_another_minor_version_is_not_found(self):
        self.write("CMakeLists.txt", "cmake_minimum_required(VERSION 3.25)\nproject(later LANGUAGES CXX)\n"
                                     "find_package(kolvex 0.999 CONFIG REQUIRED)\n")
        done = self.configure(self.directory, self.path("build"))
        self.assertEqual(done.returncode, 1)
        self.assertIn('compatible with requested version "0.999"', " ".join(done.stderr.split()))

    def test_installed_headers_include_installed_headers_alone(self):
        include = self.prefix / "include/kolvex"
        headers = {str(path.relative_to(include)) for path in include.rglob("*") if path.is_file()}
        self.assertIn("odbaccess/odb_api.h", headers)
        for header in headers:
            included = re.findall(r'^#include "(.+)"', (include / header).read_text(), re.MULTILINE)
            self.assertEqual([name for name in included if name not in headers], [], header)

    def test_nothing_installed_names_the_tree_that_it_was_built_in(self):
        for path in (self.prefix / "lib").rglob("*.cmake"):
            self.assertNotIn(str(ROOT), path.read_text(), path)

    def test_licence_pages_and_examples_are_there_and_their_links_hold(self):
        docs = self.prefix / "share/doc/kolvex"
        self.assertEqual((docs / "LICENSE").read_bytes(), (ROOT / "LICENSE").read_bytes())
        self.assertTrue(os.access(docs / "examples/write_by_hand.py", os.X_OK))
        pages = sorted(docs.rglob("*.md"))
        self.assertIn(docs / "docs/extraction.md", pages)
        for page in pages:
            for target in re.findall(r"\]\(([^)#:]+)(?:#[^)]*)?\)", page.read_text()):
                self.assertTrue((page.parent / target).exists(), f"{page.name} links to {target}")
