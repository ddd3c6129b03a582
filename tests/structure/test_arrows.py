"""Includes and links agree, and arrows run one way: in this tree, and not in trees that are made wrong on purpose."""
import pathlib
import shutil
import tempfile
import unittest

import arrows

ROOT = pathlib.Path(__file__).resolve().parents[2]
TREE = {
    "CMakeLists.txt": "cmake_minimum_required(VERSION 3.25)\nproject(tree LANGUAGES CXX)\ninclude_directories(src)\n"
                      "option(BUILD_TESTING \"\" OFF)\nadd_subdirectory(src)\n",
    "src/CMakeLists.txt": "add_library(low STATIC low/low.cpp)\nadd_library(middle STATIC middle/middle.cpp)\n"
                          "add_library(high STATIC high/high.cpp)\nadd_executable(program program/main.cpp)\n"
                          "target_link_libraries(middle PUBLIC low)\ntarget_link_libraries(high PRIVATE middle)\n"
                          "target_link_libraries(program PRIVATE high)\n",
    "src/low/low.h": "", "src/low/low.cpp": '#include "low/low.h"\n',
    "src/middle/middle.h": '#include "middle/words.h"\n', "src/middle/words.h": '#include "low/low.h"\n',
    "src/middle/middle.cpp": '#include "middle/middle.h"\n',
    "src/high/high.h": "", "src/high/high.cpp": '#include "high/high.h"\n\n#include <map>\n\n#include "middle/middle.h"\n',
    "src/program/main.cpp": '#include "high/high.h"\n',
}


class ArrowsTest(unittest.TestCase):
    def directory(self):
        directory = pathlib.Path(tempfile.mkdtemp(prefix="kolvex-test."))
        self.addCleanup(shutil.rmtree, directory)
        return directory

    def problems(self, root):
        return arrows.disagreements(root, arrows.targets_of(root, self.directory() / "build"))

    def tree(self, **changes):
        """The small tree, with texts replaced: {name of the file without its ending: (old, new)}."""
        root = self.directory()
        for name, text in TREE.items():
            for part, (old, new) in changes.items():
                if name == {"links": "src/CMakeLists.txt"}.get(part, f"src/{part.replace('__', '.').replace('_', '/')}"):
                    self.assertIn(old, text)
                    text = text.replace(old, new)
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            (root / name).write_text(text)
        return root

    def test_this_tree_links_what_it_includes_and_nothing_else(self):
        self.assertEqual(self.problems(ROOT), [])

    def test_programs_that_read_databases_reach_no_hdf5(self):
        targets = arrows.targets_of(ROOT, self.directory() / "build")
        for program in ("quarnish", "quarnish_completion", "kolvex", "verify"):
            reached = arrows.linked_from(targets, program)
            self.assertIn("kolvex_build", reached, program)
            self.assertEqual(reached & {"hdf5_border", "kolvex_hdf5", "odbwriter", "scanning"}, set(), program)
        self.assertIn("kolvex_hdf5", arrows.linked_from(targets, "odbscan"))

    def test_folders_of_this_tree_include_one_way(self):
        folders = arrows.folder_arrows(ROOT)
        self.assertIn("odbaccess", folders["driver"])
        self.assertIsNone(arrows.circle(folders))

    def test_a_good_tree_has_no_problem(self):
        self.assertEqual(self.problems(self.tree()), [])

    def test_what_is_included_and_not_linked_is_found(self):
        root = self.tree(program_main__cpp=('"high/high.h"', '"high/high.h"\n#include "low/low.h"'))
        self.assertEqual(self.problems(root), ["src/program/main.cpp includes low/low.h, but program does not link low"])

    def test_what_is_linked_and_not_included_is_found(self):
        root = self.tree(links=("(program PRIVATE high)", "(program PRIVATE high middle)"))
        self.assertEqual(self.problems(root), ["program links middle, which none of its files includes"])

    def test_a_private_link_of_what_others_see_is_found(self):
        root = self.tree(links=("middle PUBLIC low", "middle PRIVATE low"))
        self.assertEqual(self.problems(root),
                         ["src/middle/words.h includes low/low.h, which others see, but middle links low privately"])

    def test_a_public_link_of_what_nobody_sees_is_found(self):
        root = self.tree(links=("high PRIVATE middle", "high PUBLIC middle"))
        self.assertEqual(self.problems(root),
                         ["high links middle publicly, but no header that others see includes it"])

    def test_a_header_of_nobody_is_found(self):
        root = self.tree(low_low__cpp=('"low/low.h"', '"low/gone.h"'))
        with self.assertRaisesRegex(AssertionError, "src/low/low.cpp includes low/gone.h, which is not there"):
            self.problems(root)

    def test_a_circle_is_found(self):
        root = self.tree(low_low__cpp=('"low/low.h"', '"low/low.h"\n#include "high/high.h"'))
        self.assertEqual(arrows.circle(arrows.folder_arrows(root)), ["high", "middle", "low", "high"])
