"""Simulated headends behind a real sshd on loopback, and ansible-playbook runs against them.

    with Headends() as headends:
        headends.add("hotel", "QRA-310")
        run = headends.play("backup")
        assert run.status == 0, run.output
"""

from __future__ import annotations

import contextlib
import fcntl
import getpass
import ipaddress
import json
import os
import pty
import select
import shlex
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import termios
import time
from dataclasses import dataclass
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "sim"))

from device import Device, children, is_running  # noqa: E402

CONFIG = Path(os.environ.get("TARVO_CONFIG", REPOSITORY / "build/release/bin/tarvo-config"))
BACKUP = Path(os.environ.get("TARVO_BACKUP", CONFIG.with_name("tarvo-backup")))
SSHD = "/usr/sbin/sshd"
FIRST_ADDRESS = ipaddress.IPv4Address("127.0.1.1")
# That one sshd listens on.
MOST_ADDRESSES = 16
FLEET = REPOSITORY / "fleet"
QUESTION = b"? yes or no"


@dataclass(frozen=True)
class Run:
    status: int
    output: str


def _end(sim_run: int) -> None:
    """Returns when nothing of its device runs any more: what is being killed may work for a moment."""
    first = [process for bubblewrap in children(sim_run) for process in children(bubblewrap)]
    for process in (sim_run, *first):
        with contextlib.suppress(ProcessLookupError):
            os.kill(process, signal.SIGKILL)
    while any(is_running(process) for process in first):
        time.sleep(0.005)


class Headends:
    """A folder with the devices, the keys, the inventory and the repository; ended by close()."""

    def __init__(self) -> None:
        self._folder = tempfile.TemporaryDirectory(prefix="fleet-", ignore_cleanup_errors=True)
        self.folder = Path(self._folder.name)
        self.repository = self.folder / "headends"
        self.devices: dict[str, Device] = {}
        self.variables: dict[str, dict[str, object]] = {}
        self._addresses: dict[str, str] = {}
        self._sshds: list[subprocess.Popen[bytes]] = []
        self.port = free_port()
        for name, password in (("host_key", ""), ("key", ""), ("other_key", ""), ("locked_key", "open")):
            self._key(name, password)
        keys = [(self.folder / f"{name}.pub").read_text() for name in ("key", "locked_key")]
        (self.folder / "authorized_keys").write_text("".join(keys))

    def __enter__(self) -> Headends:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        self.stop()
        for host in self.devices:
            self.power_cut(host)
        self._folder.cleanup()

    def add(self, host: str, model: str, *, with_backup: bool = True, **variables: object) -> Device:
        """A headend of that name in the inventory; `variables` are the inventory's."""
        address = str(FIRST_ADDRESS + len(self.devices))
        self._addresses[host] = address
        folder = self.folder / address
        folder.mkdir()
        self.devices[host] = self._made(model, folder, with_backup)
        self.environment(host)
        self.variables[host] = variables
        return self.devices[host]

    def replace(self, host: str, model: str) -> Device:
        """Another device of the model in the place of the host's."""
        folder = self.folder / self._addresses[host]
        shutil.rmtree(folder / "device")
        self.devices[host] = self._made(model, folder, True)
        return self.devices[host]

    def environment(self, host: str, **variables: str) -> None:
        """Further environment variables of what runs on the headend."""
        path = "/tarvo/bin:/usr/sbin:/usr/bin:/sbin:/bin"
        self._beside(host, "environment.json").write_text(
            json.dumps({"PATH": path, "TZ": "UTC", **variables})
        )

    def drop_at(self, host: str, path: str) -> None:
        """The connection drops as soon as this file is on the headend; once."""
        self._beside(host, "drop").write_text(path)

    def stall(self, host: str) -> None:
        """From now on the headend takes a connection and says nothing."""
        self._beside(host, "stall").touch()

    def has_dropped(self, host: str) -> bool:
        return not self._beside(host, "drop").exists()

    def power_cut(self, host: str) -> None:
        """Whatever runs on the headend is gone."""
        device = str(self.devices[host].root)
        for entry in Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                words = (entry / "cmdline").read_bytes().decode("utf-8", "replace").split("\0")
                if len(words) > 3 and words[1].endswith("sim/run") and words[3] == device:
                    _end(int(entry.name))

    def start(self) -> None:
        """sshd, on an address per headend."""
        if os.geteuid() == 0:
            Path("/run/sshd").mkdir(mode=0o755, exist_ok=True)
        login = [sys.executable, "-B", REPOSITORY / "tests/fleet/login.py", self.folder]
        lines = [
            f"Port {self.port}",
            f"HostKey {self.folder}/host_key",
            f"AuthorizedKeysFile {self.folder}/authorized_keys",
            f"ForceCommand {shlex.join(map(str, login))}",
            *("PidFile none", "UsePAM no", "StrictModes no", "PasswordAuthentication no"),
            *("KbdInteractiveAuthentication no", "PermitRootLogin yes", "MaxStartups 500"),
        ]
        config = self.folder / "sshd_config"
        config.write_text("\n".join(lines) + "\n")
        addresses = list(self._addresses.values())
        with (self.folder / "sshd.log").open("wb") as log:
            for first in range(0, len(addresses), MOST_ADDRESSES):
                part = addresses[first : first + MOST_ADDRESSES]
                self._sshds.append(
                    subprocess.Popen(
                        [SSHD, "-De", "-f", config, *(f"-oListenAddress={a}" for a in part)],
                        stdin=subprocess.DEVNULL,
                        stderr=log,
                        start_new_session=True,
                    )
                )
        for address in self._addresses.values():
            self.wait_for(address, self.port)
        host_key = (self.folder / "host_key.pub").read_text()
        (self.folder / "known_hosts").write_text(
            "".join(f"[{a}]:{self.port} {host_key}" for a in self._addresses.values())
        )

    def stop(self) -> None:
        """Ends sshd and its connections."""
        for sshd in self._sshds:
            sshd.terminate()
            sshd.wait()
            with contextlib.suppress(ProcessLookupError):
                os.killpg(sshd.pid, signal.SIGTERM)
        self._sshds.clear()

    def inventory(self) -> Path:
        hosts = {
            host: {
                "ansible_host": self._addresses.get(host),
                **variables,
            }
            for host, variables in self.variables.items()
        }
        common = {
            "ansible_port": self.port,
            "ansible_user": getpass.getuser(),
            "ansible_ssh_private_key_file": str(self.folder / "key"),
            "ansible_ssh_common_args": f"-F none -o UserKnownHostsFile={self.folder}/known_hosts",
            "headend_repository": str(self.repository),
            "headend_tool": str(BACKUP),
            "headend_tries": 1,
            "headend_connect_timeout": 5,
        }
        path = self.folder / "inventory.json"
        path.write_text(json.dumps({"all": {"vars": common, "hosts": hosts}}))
        return path

    def play(
        self,
        name: str,
        *words: str,
        extra: dict[str, object] | None = None,
        under: tuple[str | Path, ...] = (),
        inventory: Path | None = None,
        playbook: str | None = None,
        typed: str | None = None,
        **environment: str,
    ) -> Run:
        """ansible-playbook fleet/playbooks/NAME.yml; `extra` are its -e variables. With `typed` somebody
        sits at a terminal and answers this to every question.
        """
        playbook = playbook or FLEET / f"playbooks/{name}.yml"
        command = [*under, "ansible-playbook", "-i", inventory or self.inventory(), playbook, *words]
        if extra:
            command += ["-e", json.dumps(extra)]
        environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.folder),
            "LANG": "C.UTF-8",
            "ANSIBLE_CONFIG": str(FLEET / "ansible.cfg"),
            "ANSIBLE_FORKS": "8",
            "ANSIBLE_NOCOLOR": "1",
            **environment,
        }
        if typed is not None:
            return _at_a_terminal(command, environment, typed)
        result = subprocess.run(
            command,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            env=environment,
            check=False,
        )
        return Run(result.returncode, result.stdout.decode("utf-8", "replace"))

    def git(self, *words: str) -> str:
        command = ["git", "-c", f"safe.directory={self.repository}", "-C", self.repository, *words]
        return subprocess.run(command, capture_output=True, check=True, text=True).stdout

    def _beside(self, host: str, name: str) -> Path:
        return self.folder / self._addresses[host] / name

    def _made(self, model: str, folder: Path, with_backup: bool) -> Device:
        device = Device.create(model, folder / "device")
        (folder / "device/tarvo/lib").mkdir()
        shutil.copy(CONFIG.parents[1] / "lib/libtarvocommon.so", folder / "device/tarvo/lib")
        for program in (CONFIG, BACKUP) if with_backup else (CONFIG,):
            shutil.copy(program, folder / "device/tarvo/bin")
        return device

    def _key(self, name: str, password: str) -> None:
        command = ["ssh-keygen", "-q", "-t", "ed25519", "-N", password, "-C", name, "-f", self.folder / name]
        subprocess.run(command, check=True)

    def wait_for(self, address: str, port: int) -> None:
        """Until an sshd listens there."""
        while True:
            try:
                socket.create_connection((address, port), 1).close()
                return
            except OSError:
                if any(sshd.poll() is not None for sshd in self._sshds):
                    raise RuntimeError((self.folder / "sshd.log").read_text()) from None
                time.sleep(0.02)


def _at_a_terminal(command: list[str | Path], environment: dict[str, str], typed: str) -> Run:
    ours, theirs = pty.openpty()
    process = subprocess.Popen(
        command,
        stdin=theirs,
        stdout=theirs,
        stderr=theirs,
        env=environment,
        start_new_session=True,
        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0),
    )
    os.close(theirs)
    output = b""
    # The terminal of a program that has ended cannot be read.
    with contextlib.suppress(OSError):
        while True:
            ready, _, _ = select.select([ours], [], [], 1)
            if ready:
                output += os.read(ours, 1 << 16)
            elif QUESTION in output:
                # Ansible asks, and then throws away what has been typed so far; so as often as it is quiet.
                os.write(ours, typed.encode() + b"\r")
    os.close(ours)
    return Run(process.wait(), output.decode("utf-8", "replace"))


def free_port() -> int:
    with socket.socket() as probe:
        probe.bind(("", 0))
        return probe.getsockname()[1]
