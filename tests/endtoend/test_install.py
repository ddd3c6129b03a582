"""What `cmake --install` leaves: one prefix whose launcher finds its programs, also after it was moved."""
import os
import pathlib
import shutil
import subprocess

from support import BIN, ProgramTest, small_database


class InstallTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.prefix = self.path("prefix")
        subprocess.run([os.environ["KOLVEX_CMAKE"], "--install", str(BIN.parent), "--prefix", str(self.prefix)],
                       check=True, stdout=subprocess.DEVNULL, timeout=120)

    def files(self, prefix):
        return sorted(str(p.relative_to(prefix)) for p in prefix.rglob("*") if p.is_file())

    def extract(self, launcher):
        small_database(self.path("model.odb"))
        configuration = self.config("EXTRACT_FIELD", "EXTRACT_ALL")
        run = self.run_program("quarnish", "-odb", "model", "-config", configuration, program=launcher)
        self.assertEqual((run.status, run.err), (0, b""))
        self.assertEqual(run.text("params.txt"), b"Step_1__Frame_1__NT__max\t1.23457e+006\nStep_1__Frame_1__NT__min\t20\n")
        self.assertEqual(run.text("paramsdone.txt"), b"Done\n")

    def test_only_the_launcher_is_on_the_path(self):
        self.assertEqual([f for f in self.files(self.prefix) if f.startswith("bin/")], ["bin/kolvex"])
        self.assertIn("libexec/kolvex/quarnish", self.files(self.prefix))
        self.assertIn("libexec/kolvex/import", self.files(self.prefix))
        self.assertIn("libexec/kolvex/verify", self.files(self.prefix))

    def test_the_launcher_finds_its_programs(self):
        self.extract(str(self.prefix / "bin/kolvex"))

    def test_a_moved_prefix_goes_on_working(self):
        shutil.move(self.prefix, self.path("elsewhere"))
        self.extract(str(self.path("elsewhere/bin/kolvex")))

    def test_a_link_to_the_launcher_serves(self):
        link = pathlib.Path(self.path("kolvex"))
        link.symlink_to(self.prefix / "bin/kolvex")
        self.extract(str(link))
