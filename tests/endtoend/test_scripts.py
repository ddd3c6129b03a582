"""What the scripts share, with the system's own apt-get and directories of the test's own for it."""
import fcntl
import os
import shutil
import subprocess
import unittest

from support import ROOT, ProgramTest

CONFIGURATION = """Dir::State "{0}";
Dir::State::Lists "{0}/lists";
Dir::State::status "{0}/dpkg/status";
Dir::Cache "{0}/cache";
Dir::Etc::SourceList "/dev/null";
Dir::Etc::SourceParts "/dev/null";
"""


@unittest.skipIf(shutil.which("apt-get") is None, "there is no apt-get")
class AptTest(ProgramTest):
    def setUp(self):
        super().setUp()
        for name in ("lists/partial", "dpkg", "cache/archives/partial"):
            self.path(name).mkdir(parents=True)
        self.write("dpkg/status", "")
        self.write("apt.conf", CONFIGURATION.format(self.directory))

    def start(self, *arguments, patience=60):
        script = f'. "{ROOT}/scripts/lib.sh"; stage=testing; apt_patience={patience}; apt_get "$@"; echo done'
        return subprocess.Popen(["bash", "-Eeuc", script, "bash", *arguments], cwd=self.directory, text=True, bufsize=1,
                                env={**os.environ, "APT_CONFIG": str(self.path("apt.conf"))}, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def lock(self, name):
        """Takes a lock as apt does; closing the file gives it back."""
        file = open(self.path(name), "a+")
        self.addCleanup(file.close)
        fcntl.lockf(file, fcntl.LOCK_EX)
        return file

    def test_without_another_apt_nothing_is_said(self):
        for arguments in (("update", "-qq"), ("install", "-y", "-qq")):
            self.assertEqual(self.start(*arguments).communicate(timeout=60), ("done\n", ""))

    def test_another_apt_is_waited_for_and_that_is_said(self):
        for name, arguments in (("lists/lock", ("update", "-qq")), ("dpkg/lock-frontend", ("install", "-y", "-qq")),
                                ("dpkg/lock", ("install", "-y", "-qq")), ("cache/archives/lock", ("install", "-y", "-qq"))):
            with self.subTest(name):
                held = self.lock(name)
                script = self.start(*arguments)
                self.assertEqual(script.stdout.readline(), "    another apt is at work: waiting for it, 60 s at most\n")
                held.close()
                self.assertEqual(script.communicate(timeout=60), ("done\n", ""))
                self.assertEqual(script.returncode, 0)

    def test_one_that_never_ends_is_waited_for_no_longer(self):
        self.lock("lists/lock")
        script = self.start("update", "-qq", patience=1)
        out, err = script.communicate(timeout=60)
        self.assertEqual(script.returncode, 1)
        self.assertIn("stopped while testing: another apt has been at work for 1 s: E: Could not get lock", err)
        self.assertNotIn("done", out)

    def test_another_failure_is_told_at_once(self):
        script = self.start("install", "-y", "-qq", "no-such-package-anywhere")
        out, err = script.communicate(timeout=60)
        self.assertEqual((script.returncode, out), (1, ""))
        self.assertIn("stopped while testing: apt-get install failed: E: Unable to locate package no-such", err)
