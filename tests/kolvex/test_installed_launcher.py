"""The launcher as it is installed: which of the programs around it it starts."""
import os
import shutil

from support import BIN, ProgramTest

SAY_WHERE = "#!/bin/sh\necho \"$0\"\n"


class InstalledLauncherTest(ProgramTest):
    def setUp(self):
        super().setUp()
        os.makedirs(self.path("prefix/bin"))
        shutil.copy(BIN / "kolvex", self.path("prefix/bin/kolvex"))
        self.launcher = str(self.path("prefix/bin/kolvex"))

    def put(self, place):
        os.makedirs(self.path(place).parent, exist_ok=True)
        self.write(place, SAY_WHERE)
        self.path(place).chmod(0o755)

    def test_a_stranger_of_the_same_name_beside_it_is_never_started(self):
        self.put("prefix/bin/import")
        self.put("prefix/libexec/kolvex/quarnish")
        run = self.run_program("import", program=self.launcher)
        self.assertEqual((run.status, run.out), (127, b""))
        self.assertIn(b"the program of 'import' is not installed with", run.err)

    def test_its_own_program_is_started_by_its_full_path(self):
        self.put("prefix/bin/import")
        self.put("prefix/libexec/kolvex/import")
        run = self.run_program("import", program=self.launcher)
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertEqual(run.out.decode().strip(), os.path.realpath(self.path("prefix/libexec/kolvex/import")))

    def test_a_directory_is_no_program(self):
        os.makedirs(self.path("prefix/libexec/kolvex/import"))
        self.assertEqual(self.run_program("import", program=self.launcher).status, 127)

    def test_the_search_path_does_not_matter(self):
        self.put("elsewhere/quarnish")
        run = self.run_program("quarnish", program=self.launcher, env={"PATH": str(self.path("elsewhere"))})
        self.assertEqual(run.status, 127)
