"""Servers of this user on the loopback interface, with all their files in a temporary folder: ssh, Slurm and systemd."""
import contextlib
import getpass
import os
import shlex
import shutil
import signal
import socket
import subprocess
import time
from pathlib import Path


def free_port():
    with socket.socket() as unused:
        unused.bind(("127.0.0.1", 0))
        return unused.getsockname()[1]


def wait_until(holds, what, seconds=60):
    end = time.monotonic() + seconds
    while not holds():
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.1)


def answers(port):
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


class Server:
    """A process that is ended with its children when the test ends."""

    def __init__(self, test, *command, environment=None, log):
        with open(log, "wb") as output:
            self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL, stdout=output,
                                            stderr=subprocess.STDOUT, start_new_session=True)
        test.addCleanup(self.end)

    def end(self):
        self.process.terminate()
        try:
            self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        with contextlib.suppress(ProcessLookupError):  # what it started, which is in its group
            os.killpg(self.process.pid, signal.SIGKILL)


class SSHServers:
    """Hosts with homes of their own, which give commands this PATH and these other variables."""

    def __init__(self, test, folder, count, path, variables):
        self.folder = folder
        self.exports = "".join(f"export {name}={shlex.quote(value)}\n" for name, value in {**variables, "PATH": path}.items())
        for key in ("host", "user"):
            subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / key], check=True)
        Path("/run/sshd").mkdir(exist_ok=True) if os.getuid() == 0 else None
        self.ports = [free_port() for _ in range(count)]
        self.homes = []
        for number, port in enumerate(self.ports):
            home = folder / f"host{number}"
            home.mkdir()
            self.homes.append(home)
            self.start(test, number, port, home)
        self.command = folder / "ssh"
        self.command.write_text(
            f"#!/bin/sh\nexec ssh -F none -i {shlex.quote(str(folder / 'user'))} -o IdentitiesOnly=yes "
            "-o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null -o LogLevel=ERROR \"$@\"\n")
        self.command.chmod(0o755)
        for port in self.ports:
            wait_until(lambda p=port: answers(p), "an ssh server does not answer")

    def start(self, test, number, port, home):
        login = self.folder / f"login{number}"
        login.write_text(f"#!/bin/sh\ncd {shlex.quote(str(home))}\nexport HOME=$PWD\n{self.exports}"
                         'exec sh -c "$SSH_ORIGINAL_COMMAND"\n')
        login.chmod(0o755)
        settings = self.folder / f"sshd{number}"
        settings.write_text(f"""Port {port}
ListenAddress 127.0.0.1
HostKey {self.folder}/host
AuthorizedKeysFile {self.folder}/user.pub
PidFile {self.folder}/sshd{number}.pid
ForceCommand {login}
StrictModes no
UsePAM no
PasswordAuthentication no
PermitRootLogin yes
MaxStartups 200
MaxSessions 200
""")
        Server(test, "/usr/sbin/sshd", "-D", "-e", "-f", settings, log=self.folder / f"sshd{number}.log")

    def hosts(self):
        """The lines of a file for `parallel --sshloginfile`."""
        return "".join(f"2/{self.command} -p {port} {getpass.getuser()}@127.0.0.1\n" for port in self.ports)


class Slurm:
    """A cluster of one node."""

    def __init__(self, test, folder, environment):
        folder.chmod(0o755)
        host = socket.gethostname().split(".")[0]
        key = folder / "munge.key"
        key.write_bytes(os.urandom(128))
        key.chmod(0o600)
        for name in ("munge", "state", "spool"):
            (folder / name).mkdir(mode=0o755)
        self.environment = {**environment, "SLURM_CONF": str(folder / "slurm.conf")}
        (folder / "slurm.conf").write_text(f"""ClusterName=loopback
SlurmctldHost={host}(127.0.0.1)
SlurmctldPort={free_port()}
SlurmdPort={free_port()}
AuthType=auth/munge
AuthInfo=socket={folder}/munge/socket
CredType=cred/munge
SlurmUser={getpass.getuser()}
SlurmdUser={getpass.getuser()}
StateSaveLocation={folder}/state
SlurmdSpoolDir={folder}/spool
SlurmctldPidFile={folder}/slurmctld.pid
SlurmdPidFile={folder}/slurmd.pid
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
SelectType=select/cons_tres
SelectTypeParameters=CR_CPU
SchedulerType=sched/builtin
SchedulerParameters=sched_interval=1,batch_sched_delay=0
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
MpiDefault=none
SwitchType=switch/none
ReturnToService=2
NodeName={host} NodeAddr=127.0.0.1 CPUs={os.cpu_count()} State=UNKNOWN
PartitionName=all Nodes=ALL Default=YES MaxTime=INFINITE State=UP OverSubscribe=FORCE:4
""")
        Server(test, shutil.which("munged", path="/usr/sbin"), "--foreground", "--force", f"--key-file={key}", f"--socket={folder}/munge/socket",
               f"--pid-file={folder}/munge/pid", f"--log-file={folder}/munge/log", f"--seed-file={folder}/munge/seed", log=folder / "munged.log")
        wait_until((folder / "munge/socket").exists, "munged does not answer")
        for daemon in ("slurmctld", "slurmd"):
            Server(test, shutil.which(daemon, path="/usr/sbin"), "-D", environment=self.environment, log=folder / f"{daemon}.log")
        wait_until(lambda: "idle" in self.run("sinfo", "-h", "-o", "%T", check=False), "the node does not come up")

    def run(self, *command, check=True, **options):
        return subprocess.run(command, env=self.environment, check=check, capture_output=True, text=True, **options).stdout

    def tasks(self, job):
        """The tasks of an array that have not ended, by their numbers: their states."""
        lines = self.run("squeue", "-h", "-r", "-j", job, "-o", "%K %T", check=False).splitlines()
        return dict(line.split() for line in lines)


class ServiceManager:
    """systemd for the services of this user, root, as after logging in on a system that runs systemd. What it starts ends with
    it. `environment` is that of its clients."""

    START = """
        mount -t tmpfs tmpfs /run && mkdir -p /run/systemd/system
        exec /lib/systemd/systemd --user --log-target=console --unit=default.target"""

    def __init__(self, test, folder, environment):
        runtime = folder / "runtime"
        runtime.mkdir(mode=0o700)
        self.environment = {**environment, "XDG_RUNTIME_DIR": str(runtime), "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus"}
        Server(test, "unshare", "--mount", "sh", "-euc", self.START, environment=self.environment,
               log=folder / "systemd.log")
        wait_until(lambda: self.state_of("default.target") == "active", f"systemd does not come up, see {folder}/systemd.log")

    def state_of(self, unit):
        return subprocess.run(["systemctl", "--user", "is-active", unit], env=self.environment, capture_output=True, text=True,
                              check=False).stdout.strip()
