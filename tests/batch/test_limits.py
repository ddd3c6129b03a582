"""Limits of time and memory, and interruptions: whole process groups end, everything else is done."""
import os
import pty
import signal
import subprocess
import time
import unittest

from batch_support import BatchTest, hear_signals


def is_running(process):
    """Whether there is such a process that has not ended; nobody may have waited for it yet."""
    try:
        with open(f"/proc/{process}/stat", encoding="utf-8") as stat:
            return stat.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


class Limits(BatchTest):
    def setUp(self):
        super().setUp()
        self.stand_in()

    def test_what_hangs_is_ended_with_all_it_has_started(self):
        self.inputs("good", "hang", "stop", "good")
        self.batch("*.odb", "-k", "-j", 4, "--timeout", "0.5", status=1)
        self.assertEqual(self.states(), {"0.odb": "done", "1.odb": "time limit", "2.odb": "time limit", "3.odb": "done"})
        self.assertIn("detail\ttook longer than 0.5 s\n", (self.place("1") / "status").read_text())
        self.wait_until(self.no_process_left)

    def test_every_try_has_its_time(self):
        self.inputs("hang")
        self.batch("0.odb", "--timeout", "0.3s", "--retries", 1, status=1)
        self.assertEqual(self.ran(), ["0.odb"] * 2)

    def test_a_pipe_that_nobody_writes_is_ended(self):
        os.mkfifo(self.path("pipe.odb"))
        self.inputs("good")
        self.batch("*.odb", "-k", "--timeout", "0.5", status=1)
        self.assertEqual(self.states(), {"0.odb": "done", "pipe.odb": "time limit"})

    def test_memory_of_all_programs_of_an_input_counts(self):
        self.inputs("good", "memory")
        self.batch("*.odb", "-k", "--memory", "100M", status=1)
        self.assertEqual(self.states(), {"0.odb": "done", "1.odb": "memory limit"})
        self.assertIn("detail\ttook more than 100 MB\n", (self.place("1") / "status").read_text())
        self.wait_until(self.no_process_left)

    def test_what_a_program_leaves_behind_ends_with_it(self):
        self.stand_in("#!/bin/sh\nsleep 1000 &\necho $! > left\nprintf 'a\\t1\\n' > params.txt\necho Done > paramsdone.txt\n")
        self.inputs("good")
        self.batch("0.odb")
        self.assertEqual(self.states(), {"0.odb": "done"})
        left = int((self.place("0") / "left").read_text())
        self.wait_until(self.no_process_left)
        self.assertFalse(is_running(left))

    def test_what_an_ended_import_has_begun_is_removed(self):
        importing = self.path("bin/import")
        importing.write_text("#!/bin/sh\ntouch database.odb database.odb.tmp.abc123\nsleep 1000\n")
        importing.chmod(0o755)
        self.write("job.txt", "results")
        self.batch("job.txt", "--timeout", "0.5", status=1)
        self.assertEqual(sorted(p.name for p in self.place("job").iterdir()), ["log", "status"])

    def test_as_many_run_at_once_as_are_asked_for(self):
        self.inputs(*["slow 0.2"] * 6)
        process = self.start("*.odb", "-j", 3)
        most = 0
        while process.poll() is None:
            most = max(most, len([p for p in os.listdir("/proc") if self.is_ours(p)]))
            time.sleep(0.005)
        self.assertEqual(most, 3)

    def is_ours(self, process):
        try:
            with open(f"/proc/{process}/cmdline", "rb") as file:
                is_script = f"{self.path('bin')}/quarnish".encode() in file.read().split(b"\0")
            # The shell forks for what it starts, and looks like itself until then.
            return is_script and os.getpgid(int(process)) == int(process)
        except OSError:
            return False


class Interruptions(BatchTest):
    def setUp(self):
        super().setUp()
        self.stand_in()

    def test_an_interruption_ends_what_runs_and_gives_it_back(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number):
                self.inputs("good", "hang", "good")
                process = self.start("*.odb", "-j", 1, out=f"out{number}")
                self.wait_until(lambda: "1.odb" in self.ran())
                process.send_signal(number)
                said, complaint = process.communicate(timeout=30)
                self.assertEqual((process.returncode, complaint), (3, b""))
                self.assertIn(b"3 inputs: 1 done, 0 failed, 2 left", said)
                self.assertIn(b"interrupted", said)
                self.assertEqual(self.states(f"out{number}"), {"0.odb": "done"})
                self.inputs("good", start=1)
                self.assertIn(b"3 done (1 of them before)", self.batch("*.odb", out=f"out{number}").stdout)
                self.path("ran").unlink()

    def test_a_program_asked_to_end_before_the_runner_gives_back_its_input(self):
        self.inputs("hang", "good")
        process = self.start("*.odb", "-j", 1)
        self.wait_until(lambda: self.ran() == ["0.odb"])
        with open(f"/proc/{process.pid}/task/{process.pid}/children") as file:
            child = int(file.read().split()[0])
        os.kill(child, signal.SIGTERM)
        time.sleep(0.05)
        process.send_signal(signal.SIGTERM)
        self.assertIn(b"2 inputs: 0 done, 0 failed, 2 left", process.communicate(timeout=30)[0])
        self.assertEqual((process.returncode, self.states()), (3, {}))

    def test_a_program_that_alone_is_asked_to_end_has_crashed(self):
        self.inputs("signal TERM", "good")
        self.batch("*.odb", "-k", status=1)
        self.assertEqual(self.states(), {"0.odb": "crashed", "1.odb": "done"})

    def test_with_grace_what_runs_may_finish(self):
        self.inputs("slow 1", "good")
        process = self.start("*.odb", "-j", 1, "--grace", "1m")
        self.wait_until(lambda: self.ran() == ["0.odb"])
        process.send_signal(signal.SIGTERM)
        self.assertIn(b"2 inputs: 1 done, 0 failed, 1 left", process.communicate(timeout=30)[0])
        self.assertEqual((process.returncode, self.states()), (3, {"0.odb": "done"}))

    def test_grace_ends_with_a_second_interruption(self):
        self.inputs("hang", "good")
        process = self.start("*.odb", "-j", 1, "--grace", "1h")
        self.wait_until(lambda: self.ran() == ["0.odb"])
        process.send_signal(signal.SIGTERM)
        time.sleep(0.2)
        self.assertIsNone(process.poll())
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=30)
        self.assertEqual((process.returncode, self.states()), (3, {}))
        self.wait_until(self.no_process_left)

    def test_control_c_of_a_terminal_gives_back_what_runs(self):
        self.inputs("hang")
        master, slave = pty.openpty()
        process = subprocess.Popen(["setsid", "-cw", *self.command("0.odb")], cwd=self.directory, stdin=slave, stdout=slave, stderr=slave,
                                   env=self.environment(), preexec_fn=hear_signals)
        os.close(slave)
        self.wait_until(lambda: self.ran() == ["0.odb"])
        os.write(master, b"\x03")
        self.assertEqual(process.wait(timeout=30), 3)
        os.close(master)
        self.wait_until(self.no_process_left)

    def test_a_signal_that_is_ignored_stays_so(self):
        self.inputs("slow 1")
        process = subprocess.Popen(["nohup", *self.command("0.odb")], cwd=self.directory, stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=self.environment())
        self.wait_until(lambda: self.ran() == ["0.odb"])
        process.send_signal(signal.SIGHUP)
        process.communicate(timeout=30)
        self.assertEqual((process.returncode, self.states()), (0, {"0.odb": "done"}))


if __name__ == "__main__":
    unittest.main()
