"""A Slurm of two nodes on this machine, started by hand: munged, slurmctld, two slurmd, everything in one directory."""
import os
import pathlib
import shutil
import socket
import subprocess
import time

PROGRAMS = ("munged", "slurmctld", "slurmd", "sbatch", "squeue", "scontrol", "scancel")
NODES = ("n1", "n2")

CONFIGURATION = """
ClusterName=kolvex
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={ports[0]}
AuthType=auth/munge
AuthInfo=socket={directory}/munge.socket
SlurmUser={user}
SlurmdUser={user}
StateSaveLocation={directory}/state
SlurmdSpoolDir={directory}/spool.%n
SlurmctldPidFile={directory}/slurmctld.pid
SlurmdPidFile={directory}/slurmd.%n.pid
SlurmctldLogFile={directory}/slurmctld.log
SlurmdLogFile={directory}/slurmd.%n.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SchedulerParameters=batch_sched_delay=0,sched_min_interval=100000
SlurmdParameters=config_overrides
ReturnToService=2
SlurmdTimeout=10
KillWait=5
MpiDefault=none
AccountingStorageType=accounting_storage/none
JobAcctGatherType=jobacct_gather/none
NodeName=n1 NodeAddr=127.0.0.1 Port={ports[1]} CPUs=2 State=UNKNOWN
NodeName=n2 NodeAddr=127.0.0.1 Port={ports[2]} CPUs=2 State=UNKNOWN
PartitionName=main Nodes=n1,n2 Default=YES State=UP
"""


def missing():
    """The programs of Slurm that are not installed; and that its daemons want to be root."""
    names = [name for name in PROGRAMS if shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin") is None]
    return names + ([] if os.geteuid() == 0 else ["root"])


def free_ports(count):
    listening = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [s.getsockname()[1] for s in listening]
    for s in listening:
        s.close()
    return ports


class Cluster:
    def __init__(self, directory):
        self.directory = pathlib.Path(directory)
        self.daemons = {}
        (self.directory / "state").mkdir(parents=True)
        key = self.directory / "munge.key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o400)
        # A name of a host is an address to Slurm: that of this machine need not lead anywhere.
        (self.directory / "slurm.conf").write_text(CONFIGURATION.format(
            directory=self.directory, host=socket.gethostname().split(".")[0], user="root", ports=free_ports(3)))
        self.environment = {**os.environ, "SLURM_CONF": str(self.directory / "slurm.conf"), "PATH": os.environ["PATH"] + ":/usr/sbin"}

    def start(self):
        self.daemon("munged", "--foreground", "--force", f"--key-file={self.directory}/munge.key", f"--socket={self.directory}/munge.socket",
                    f"--pid-file={self.directory}/munge.pid", f"--log-file={self.directory}/munge.log", f"--seed-file={self.directory}/munge.seed")
        self.wait_until(lambda: (self.directory / "munge.socket").exists(), "munged does not start")
        self.daemon("slurmctld", "-D")
        for node in NODES:
            self.start_node(node)
        self.wait_until(lambda: self.states() == ["idle", "idle"], "the nodes do not come up")

    def start_node(self, node):
        self.daemon("slurmd", "-D", "-N", node, name=node)

    def daemon(self, *command, name=None):
        with open(self.directory / f"{name or command[0]}.out", "ab") as out:
            self.daemons[name or command[0]] = subprocess.Popen(command, env=self.environment, stdin=subprocess.DEVNULL, stdout=out, stderr=out)

    def states(self):
        return self.ask("sinfo", "--noheader", "--Node", "--format=%T").split()

    def ask(self, *command):
        return subprocess.run(command, env=self.environment, capture_output=True, text=True, check=False, timeout=60).stdout

    def queue(self):
        """The states of all jobs and tasks that wait or run."""
        return self.ask("squeue", "--noheader", "--array", "--format=%T").split()

    def kill_node(self, node):
        """The node's daemon goes, with the steps that it has started and all that runs in them."""
        self.daemons[node].kill()
        self.daemons[node].wait()
        for process in pathlib.Path("/proc").iterdir():
            try:
                if process.name.isdigit() and f"SLURMD_NODENAME={node}".encode() in (process / "environ").read_bytes().split(b"\0"):
                    os.kill(int(process.name), 9)
            except OSError:
                pass

    def stop(self):
        self.ask("scancel", "--user=root")
        for name in reversed(list(self.daemons)):
            self.daemons[name].terminate()
            try:
                self.daemons[name].wait(timeout=20)
            except subprocess.TimeoutExpired:
                self.daemons[name].kill()
                self.daemons[name].wait()

    def wait_until(self, condition, complaint, seconds=90):
        end = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > end:
                raise AssertionError(complaint + "\n" + self.logs())
            time.sleep(0.2)

    def logs(self):
        """The last lines of every log."""
        return "\n".join(f"{path.name}:\n" + "\n".join(path.read_text(errors="replace").splitlines()[-5:])
                         for path in sorted(self.directory.glob("*.log")))
