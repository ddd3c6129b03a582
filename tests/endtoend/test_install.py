"""What `cmake --install` leaves: one prefix whose launcher finds its programs, also after it was moved."""
import os
import pathlib
import shutil
import subprocess

from support import BIN, ROOT, ProgramTest, installed_prefix, small_database

PROGRAMS = ("batch", "import", "odbscan", "quarnish", "quarnish-completion", "verify",
            *(("netcdfread",) if (BIN / "netcdfread").exists() else ()))


class InstallTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.prefix = installed_prefix(self)

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
        for program in PROGRAMS:
            self.assertIn("libexec/kolvex/" + program, self.files(self.prefix))

    def test_the_launcher_finds_its_programs(self):
        self.extract(str(self.prefix / "bin/kolvex"))

    def test_a_moved_prefix_goes_on_working(self):
        shutil.move(self.prefix, self.path("elsewhere"))
        self.extract(str(self.path("elsewhere/bin/kolvex")))

    def configure(self, build, *options):
        return subprocess.run([os.environ["KOLVEX_CMAKE"], "-S", ROOT, "-B", build, "-G", "Ninja", "-DBUILD_TESTING=OFF",
                               *options], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True, timeout=120,
                              check=False)

    def test_other_directories_are_found_too(self):
        for bindir, libexecdir in (("bin", "lib"), ("tools/bin", "lib/tools")):
            with self.subTest(libexecdir):
                build, prefix = self.path("build " + bindir.replace("/", "")), self.path(libexecdir.replace("/", "") + "prefix")
                configured = self.configure(build, f"-DCMAKE_INSTALL_LIBEXECDIR={libexecdir}", f"-DCMAKE_INSTALL_BINDIR={bindir}")
                self.assertEqual(configured.returncode, 0, configured.stderr)
                subprocess.run([os.environ["KOLVEX_CMAKE"], "--build", build, "--target", "kolvex"], check=True,
                               stdout=subprocess.DEVNULL, timeout=240)
                # The other programs are those of this build: what they are made of is the same.
                for program in PROGRAMS:
                    shutil.copy(BIN / program, build / "bin")
                subprocess.run([os.environ["KOLVEX_CMAKE"], "--install", build, "--prefix", prefix, "--component", "programs"],
                               check=True, stdout=subprocess.DEVNULL, timeout=120)
                for program in (f"{bindir}/kolvex", *(f"{libexecdir}/kolvex/{program}" for program in PROGRAMS)):
                    self.assertIn(program, self.files(prefix))
                self.extract(str(prefix / bindir / "kolvex"))

    def test_a_directory_named_like_the_launcher_is_refused(self):
        configured = self.configure(self.path("build"), "-DCMAKE_INSTALL_LIBEXECDIR=bin")
        self.assertEqual(configured.returncode, 1)
        self.assertIn("the directory of the programs would be named like the launcher", " ".join(configured.stderr.split()))

    def test_a_link_to_the_launcher_serves(self):
        link = pathlib.Path(self.path("kolvex"))
        link.symlink_to(self.prefix / "bin/kolvex")
        self.extract(str(link))
