"""Man pages as `man` shows them after an installation, and the pages in docs: both agree with `--help`."""
import os
import re
import shutil
import subprocess
import unittest

from support import ROOT, ProgramTest, installed_prefix

MAN = shutil.which("man")
PAGES = {"kolvex": "kolvex.md", "kolvex-batch": "batch.md", "kolvex-batch-collect": "batch-collect.md",
         "kolvex-batch-show": "batch-show.md", "kolvex-batch-status": "batch-status.md",
         "kolvex-check": "check.md", "kolvex-diff": "diff.md", "kolvex-export": "export.md", "kolvex-import": "import.md",
         "kolvex-locate": "locate.md", "kolvex-params": "params.md", "kolvex-quarnish": "extraction.md", "kolvex-report": "report.md",
         "kolvex-run": "run.md",
         "kolvex-show": "show.md", "kolvex-verify": "verify.md"}


def section(text, title):
    """The lines below a heading of a help text, indented as they are."""
    found = re.search(rf"^{title}:\n((?:  .*\n)+)", text, re.MULTILINE)
    return found.group(1) if found else ""


def rows(text):
    """The first column of the table in a section, however its cells wrap."""
    return re.findall(r"^  (\S.*?)(?:  +.*)?$", text, re.MULTILINE)


def options_of_help(text):
    """All of them, with what their values are called: {("-o", "--output"): "DATABASE"}."""
    options = {}
    for head in re.findall(r"^  (-\S.*?)(?:  .*)?$", text, re.MULTILINE):
        *names, last = head.split(", ")
        last, _, value = last.partition(" ")
        options[(*names, last)] = value
    return options


def options_of_page(text):
    """The same from a table of the page; `--help` and `--version` may share a row there."""
    options = {}
    table = text.split("\n## Options\n", 1)[1].split("\n## ", 1)[0]
    for head in re.findall(r"^\| (`-.*?) \| ", table, re.MULTILINE):
        *names, last = head.replace("`", "").split(", ")
        last, _, value = last.partition(" ")
        options[(*names, last)] = value
    return options


class PagesTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.prefix = installed_prefix(self)

    def output(self, *command, **environment):
        run = subprocess.run(command, capture_output=True, text=True, check=False, timeout=60,
                             env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "120", "MAN_KEEP_FORMATTING": "", **environment})
        self.assertEqual((run.returncode, run.stderr), (0, ""), command)
        return run.stdout

    def help(self, page):
        return self.output(self.prefix / "bin/kolvex", *page.split("-")[1:], "--help")

    def test_there_is_a_page_for_each_command(self):
        pages = ["kolvex"]
        for page in pages:
            pages += [f"{page}-{command}" for command in rows(section(self.help(page), "Commands"))]
        self.assertEqual(sorted(PAGES), sorted(pages))
        self.assertEqual(sorted(p.name for p in (self.prefix / "share/man/man1").iterdir()), sorted(f"{p}.1" for p in PAGES))

    @unittest.skipUnless(MAN, "there is no man command")
    def test_man_finds_and_shows_them(self):
        for page in PAGES:
            with self.subTest(page):
                shown = self.output(MAN, page, MANPATH=str(self.prefix / "share/man"))
                text = " ".join(shown.split())
                help_text = self.help(page)
                self.assertTrue(text.startswith(page.upper() + "(1)") or text.startswith(page + "(1)"), text[:60])
                name, summary = help_text.splitlines()[0].split(" - ", 1)
                self.assertIn(f"NAME {name.replace(' ', '-')} - {summary} SYNOPSIS", text)
                for names, value in options_of_help(help_text).items():
                    self.assertIn(f" {', '.join(names)} {value}".rstrip(), text)
                for status in rows(section(help_text, "Exit status")):
                    self.assertRegex(shown, rf"(?m)^ +{status} +\w")
                for example in section(help_text, "Examples").splitlines():
                    self.assertIn(example.strip(), shown)

    @unittest.skipUnless(MAN, "there is no man command")
    def test_the_typesetter_has_nothing_to_remark(self):
        for page in PAGES:
            path = self.prefix / f"share/man/man1/{page}.1"
            self.output(MAN, "--warnings", "-E", "UTF-8", "-l", path)

    def test_all_text_of_the_help_is_in_the_page(self):
        for page in PAGES:
            with self.subTest(page):
                source = (self.prefix / f"share/man/man1/{page}.1").read_text()
                for escape, character in (("\\-", "-"), ("\\(ga", "`"), ("\\(aq", "'"), ("\\(ha", "^"), ("\\(ti", "~"),
                                          ("\\&", ""), ("\\e", "\\")):
                    source = source.replace(escape, character)
                words = set(source.split())
                described = re.sub(r"^\S.*:$", "", self.help(page), flags=re.MULTILINE)
                missing = [word for word in described.split() if word not in words and word not in source]
                self.assertEqual(missing, [])

    def test_docs_have_the_same_options(self):
        for page, name in PAGES.items():
            with self.subTest(page):
                text = (ROOT / "docs" / name).read_text()
                self.assertEqual(options_of_page(text), options_of_help(self.help(page)))

    def test_docs_have_the_same_name_and_statuses(self):
        for page, name in PAGES.items():
            with self.subTest(page):
                text, help_text = (ROOT / "docs" / name).read_text(), self.help(page)
                command, summary = help_text.splitlines()[0].split(" - ", 1)
                self.assertIn(f"`{command}` - {summary}\n", text)
                statuses = text.split("## Exit status\n", 1)[1].split("\n## ", 1)[0]
                self.assertEqual(re.findall(r"^\| (\d+) \|", statuses, re.MULTILINE), rows(section(help_text, "Exit status")))
