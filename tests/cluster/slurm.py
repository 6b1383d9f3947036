"""A Slurm of one node in a folder of its own, on loopback: munged, slurmctld and slurmd from Debian's packages, run as root.

It shares nothing with a Slurm that the machine may have: key, sockets, ports, state and spool are its own, and who uses it is told by SLURM_CONF.
"""

import contextlib
import os
import shutil
import signal
import socket
import subprocess
import time

DAEMONS = ("munged", "slurmctld", "slurmd")
COMMANDS = ("sbatch", "squeue", "scancel", "scontrol", "sinfo")
# cred_expire is also what a requeued job waits before it starts again.
CONFIGURATION = """\
ClusterName=test
SlurmctldHost={host}(127.0.0.1)
SlurmUser=root
SlurmdUser=root
SlurmctldPort={controller_port}
SlurmdPort={node_port}
CommunicationParameters=NoCtldInAddrAny,NoInAddrAny
AuthType=auth/munge
CredType=cred/munge
AuthInfo=socket={folder}/munge.socket,cred_expire=5
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerType=sched/backfill
SchedulerParameters=sched_interval=2,bf_interval=2,batch_sched_delay=0,defer_batch
MpiDefault=none
ReturnToService=2
KillWait=5
MinJobAge=60
MaxArraySize={max_array}
MaxJobCount=100000
SlurmdParameters=config_overrides
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
SlurmctldLogFile={folder}/slurmctld.log
SlurmdLogFile={folder}/slurmd.log
NodeName={host} NodeAddr=127.0.0.1 Sockets=1 CoresPerSocket={cpus} ThreadsPerCore=1 RealMemory=1000 State=UNKNOWN
PartitionName=work Nodes={host} Default=YES MaxTime=INFINITE State=UP
"""


class Impossible(Exception):
    """Why there can be no Slurm here."""


def _find(program):
    path = shutil.which(program, path=os.environ.get("PATH", "") + ":/usr/sbin:/sbin")
    if not path:
        raise Impossible(f"{program} is not installed; `make test-cluster` installs packages-cluster.txt")
    return path


def _free_ports(count):
    sockets = [socket.socket() for _ in range(count)]
    for one in sockets:
        one.bind(("127.0.0.1", 0))
    ports = [one.getsockname()[1] for one in sockets]
    for one in sockets:
        one.close()
    return ports


def wait_for(condition, seconds, what):
    """Polls; gives what the condition gave."""
    end = time.monotonic() + seconds
    while not (result := condition()):
        if time.monotonic() > end:
            raise TimeoutError(f"{what}: not after {seconds} s")
        time.sleep(0.1)
    return result


class Slurm:
    """Runs while its `with` block does. `environment` is that of whoever is to use it."""

    def __init__(self, folder, cpus=2, max_array=1001):
        if os.geteuid() != 0:
            raise Impossible("Slurm starts jobs for users, so its daemons must be run by root")
        self.folder, self.cpus, self.max_array = os.path.abspath(folder), cpus, max_array
        self.programs = {name: _find(name) for name in DAEMONS}
        for name in COMMANDS:
            _find(name)
        self.processes = []
        self.environment = {name: value for name, value in os.environ.items() if not name.startswith(("SLURM", "SBATCH", "SQUEUE", "SCANCEL"))}
        self.environment["SLURM_CONF"] = os.path.join(self.folder, "slurm.conf")

    def __enter__(self):
        try:
            self._start()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        # A daemon leaves its tasks alone when it ends.
        with contextlib.suppress(OSError, subprocess.SubprocessError, TimeoutError):
            self.run("scancel", "--state=PENDING", "--user=root")
            self.run("scancel", "--user=root")
            wait_for(lambda: not self.run("squeue", "-h"), 20, "the end of the jobs")
        for process in reversed(self.processes):
            process.send_signal(signal.SIGTERM)
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self.processes.clear()

    def run(self, *arguments):
        """Standard output of one of Slurm's commands."""
        return subprocess.run(arguments, env=self.environment, check=True, capture_output=True, text=True).stdout

    def _start(self):
        for name in ("", "state", "spool"):
            os.makedirs(os.path.join(self.folder, name), mode=0o700, exist_ok=True)
        with open(os.path.join(self.folder, "munge.key"), "wb", opener=lambda path, flags: os.open(path, flags, 0o400)) as key:
            key.write(os.urandom(128))
        controller_port, node_port = _free_ports(2)
        with open(self.environment["SLURM_CONF"], "w") as file:
            file.write(CONFIGURATION.format(folder=self.folder, host=socket.gethostname().split(".")[0], controller_port=controller_port, node_port=node_port,
                                            cpus=self.cpus, max_array=self.max_array))
        place = self.folder
        self._start_daemon("munged", "--foreground", "--force", f"--key-file={place}/munge.key", f"--socket={place}/munge.socket", f"--pid-file={place}/munged.pid",
                           f"--log-file={place}/munged.log", f"--seed-file={place}/munge.seed")
        wait_for(lambda: self._check_daemons() or os.path.exists(f"{place}/munge.socket"), 20, "munged")
        self._start_daemon("slurmctld", "-D", "-i", "-f", self.environment["SLURM_CONF"])
        self._start_daemon("slurmd", "-D", "-f", self.environment["SLURM_CONF"])
        try:
            wait_for(self.is_up, 60, "the node")
        except TimeoutError as error:
            with open(os.path.join(place, "slurmd.log"), errors="replace") as log:
                raise Impossible(f"{error}: {log.read()[-2000:]}") from error

    def _start_daemon(self, name, *arguments):
        # A process group of its own: a Ctrl-C is for the test, which then ends it.
        with open(os.path.join(self.folder, f"{name}.out"), "ab") as out:
            self.processes.append(subprocess.Popen([self.programs[name], *arguments], env=self.environment, stdin=subprocess.DEVNULL, stdout=out,
                                                   stderr=subprocess.STDOUT, start_new_session=True))

    def _check_daemons(self):
        for process in self.processes:
            if process.poll() is not None:
                name = os.path.basename(process.args[0])
                with open(os.path.join(self.folder, f"{name}.out"), errors="replace") as out:
                    raise Impossible(f"{name} ended with {process.returncode}: {out.read()[-2000:]}")

    def is_up(self):
        self._check_daemons()
        result = subprocess.run(["sinfo", "-h", "-o", "%T"], env=self.environment, capture_output=True, text=True)
        return result.stdout.strip() in ("idle", "mixed", "allocated")
