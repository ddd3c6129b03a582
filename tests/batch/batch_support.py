"""What the tests of batches share: inputs, runs, stand-ins for the extraction, what stands in the directory."""
import json
import os
import shutil
import signal
import subprocess
import time

from support import BIN, ProgramTest

# Does as the text of the "database" says, and leaves a line in `ran` for each run.
STAND_IN = r"""#!/bin/sh
database=$2
echo "$database" >> "$RAN"
rm -f paramsdone.txt
read -r what rest < "$database" || exit 9
case "$what" in
  good) ;;
  slow) sleep "$rest" ;;
  say) printf '%s\n' "$rest" >&2; exit 0 ;;
  exit) exit "$rest" ;;
  signal) kill -"$rest" $$ ;;
  hang) sleep 1000 & sleep 1000 ;;
  stop) kill -STOP $$ ;;
  memory) python3 -c 'import time; text = "x" * 300000000; time.sleep(100)' ;;
  once) if [ ! -e "$database.tried" ]; then touch "$database.tried"; exit 1; fi ;;
esac
printf 'Step_1__Mass\t%s\nStep_1__Frame_1__S__mises__max\t2.5\n' "$(cksum < "$database" | cut -d' ' -f1)" > params.txt
echo Done > paramsdone.txt
"""


def hear_signals():
    """For `preexec_fn`: whoever runs tests in the background may have these ignored, and children inherit that."""
    for number in (signal.SIGINT, signal.SIGHUP, signal.SIGTERM):
        signal.signal(number, signal.SIG_DFL)


class BatchTest(ProgramTest):
    def setUp(self):
        super().setUp()
        self.config("EXTRACT_FIELD", "EXTRACT_ALL")
        self.program = BIN / "batch"

    def stand_in(self, script=STAND_IN):
        """From here on batches start a script instead of the extraction."""
        os.makedirs(self.path("bin"), exist_ok=True)
        shutil.copy(BIN / "batch", self.path("bin/batch"))
        self.path("bin/quarnish").write_text(script)
        self.path("bin/quarnish").chmod(0o755)
        self.program = self.path("bin/batch")

    def inputs(self, *contents, start=0):
        """Texts for the stand-in, as 0.odb, 1.odb, ..."""
        for number, content in enumerate(contents, start):
            self.write(f"{number}.odb", content + "\n")

    def command(self, *words, out="out", config="config.txt"):
        return [str(self.program), "--config", config, "--out", str(out), *map(str, words)]

    def environment(self):
        return {**os.environ, "RAN": str(self.path("ran"))}

    def batch(self, *words, status=0, **options):
        """A run to its end; its status is looked at."""
        popen = {name: options.pop(name) for name in list(options) if name in ("preexec_fn", "input")}
        process = subprocess.run(self.command(*words, **options), cwd=self.directory, capture_output=True, env=self.environment(),
                                 timeout=120, check=False, **(popen if "input" in popen else {"stdin": subprocess.DEVNULL, **popen}))
        self.assertEqual(process.returncode, status, process.stdout + process.stderr)
        return process

    def start(self, *words, **options):
        """A run that goes on; ended with the test."""
        process = subprocess.Popen(self.command(*words, **options), cwd=self.directory, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, env=self.environment(), preexec_fn=hear_signals)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def ran(self):
        """The inputs that the stand-in has been started for, in order."""
        return [line.rsplit("/", 1)[1] for line in self.path("ran").read_text().splitlines()] if self.path("ran").exists() else []

    def states(self, out="out"):
        """{name of the input: what became of it}, the reason for those that have failed."""
        found = {}
        for status in self.path(out).glob("*/status"):
            lines = dict(line.split("\t", 1) for line in status.read_text().splitlines())
            self.assertIn("end", lines)
            found[lines["input"].rsplit("/", 1)[1]] = "done" if lines["state"] == "done" else lines["reason"]
        return found

    def place(self, name, out="out"):
        """The directory of an input."""
        found = [p for p in self.path(out).iterdir() if p.name.rsplit("-", 1)[0].endswith("." + name)]
        self.assertEqual(len(found), 1, name)
        return found[0]

    def wait_until(self, condition):
        end = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), end, "it does not come about")
            time.sleep(0.01)

    def no_process_left(self):
        """Whether nobody is at work in the directory any more."""
        for process in os.listdir("/proc"):
            try:
                if process.isdigit() and os.readlink(f"/proc/{process}/cwd").startswith(str(self.path("out"))):
                    return False
            except OSError:
                pass
        return True


def events(process):
    return [json.loads(line) for line in process.stdout.splitlines()]

