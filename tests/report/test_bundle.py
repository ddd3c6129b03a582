"""The bundle in the tree is that of the sources, and names nobody to load from."""
import json
import pathlib
import re
import shutil
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "src/report/page"
LOCKS = [PAGE / "package-lock.json", ROOT / "tests/browsers/package-lock.json"]


class BundleTest(unittest.TestCase):
    @unittest.skipUnless(shutil.which("npm"), "there is no npm to bundle the page with")
    def test_it_is_what_its_sources_give(self):
        try:
            run = subprocess.run([ROOT / "scripts/page", "--check"], capture_output=True, text=True, check=False, timeout=120)
        except subprocess.TimeoutExpired:
            self.skipTest("npm waits for packages")
        if run.returncode == 77:
            self.skipTest(run.stderr.strip())
        self.assertEqual(run.returncode, 0, run.stderr)

    def test_locks_have_versions_and_sums_and_no_addresses(self):
        for lock in LOCKS:
            packages = {name: package for name, package in json.loads(lock.read_text())["packages"].items() if name}
            self.assertTrue(packages, lock)
            for name, package in packages.items():
                self.assertIn("integrity", package, name)
                self.assertNotIn("resolved", package, name)

    def test_the_page_has_the_licences_of_what_it_contains(self):
        page = (PAGE / "dist/page.html").read_text()
        lock = json.loads(LOCKS[0].read_text())["packages"]
        for name in ("three", "uplot"):
            licence = (PAGE / "LICENSES" / name).read_text().strip()
            self.assertIn("Permission is hereby granted", licence)
            self.assertIn(" ".join(licence.replace("--", "- -").split()), " ".join(page.split()))
            self.assertIn(f"{name} {lock['node_modules/' + name]['version']}", page)

    def test_its_policy_allows_its_own_script_and_style_alone(self):
        page = (PAGE / "dist/page.html").read_text()
        [policy] = re.findall(r'http-equiv="Content-Security-Policy" content="([^"]*)"', page)
        rules = dict(rule.strip().split(" ", 1) for rule in policy.split(";"))
        self.assertEqual(rules["default-src"], "'none'")
        self.assertRegex(rules["script-src"], r"^'sha256-[A-Za-z0-9+/=]+'$")
        self.assertRegex(rules["style-src"], r"^'sha256-[A-Za-z0-9+/=]+'$")
        self.assertNotIn("connect-src", rules)


if __name__ == "__main__":
    unittest.main()
