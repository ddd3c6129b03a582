"""What the tests of hostile conditions share: users without rights, file size limits, small disks, random moments."""
import contextlib
import errno
import os
import resource
import shutil
import subprocess
import tempfile
import time

from support import BIN

NOBODY = 65534


def limit_of_file_size(size):
    """For `preexec_fn`: no file may grow beyond `size` bytes."""
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


def without_streams(*numbers):
    """For `preexec_fn`: the standard streams of these numbers are closed."""
    return lambda: [os.close(number) for number in numbers]


@contextlib.contextmanager
def runnable_by_nobody(program):
    """A copy of a program where every user can start it, beside what it starts itself, and the options with which
    `subprocess` takes all rights from it. Root may write where nobody may; others need not be anybody else."""
    with tempfile.TemporaryDirectory() as programs:
        os.chmod(programs, 0o755)
        shutil.copy(BIN / "odbscan", programs)
        yield shutil.copy(BIN / program, programs), {"user": NOBODY} if os.geteuid() == 0 else {}


@contextlib.contextmanager
def small_disk(test, path, size):
    """A file system of `size` bytes at `path`; skips the test where it may not be mounted."""
    path.mkdir()
    mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}", "kolvex-test", str(path)],
                             stderr=subprocess.PIPE, check=False)
    if mounted.returncode != 0:
        test.skipTest(f"no file system can be mounted here: {mounted.stderr.decode().strip()}")
    try:
        yield
    finally:
        subprocess.run(["umount", str(path)], check=True)


def fill_up(path):
    """Lets a file grow until the disk is full."""
    file = os.open(path, os.O_WRONLY | os.O_CREAT)
    try:
        while os.write(file, b"x" * 512):
            pass
    except OSError as error:
        assert error.errno == errno.ENOSPC
    finally:
        os.close(file)


def kill_at_random(command, directory, longest, number, generator):
    """Starts the command and ends it with the signal `number` after up to `longest` seconds; its status."""
    process = subprocess.Popen(command, cwd=directory, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL)
    time.sleep(generator.uniform(0, longest))
    process.send_signal(number)
    return process.wait(timeout=60)


def duration(command, directory):
    """How long an undisturbed run takes at best, in seconds."""
    seconds = []
    for _ in range(5):
        begin = time.monotonic()
        subprocess.run(command, cwd=directory, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        seconds.append(time.monotonic() - begin)
    return min(seconds)
