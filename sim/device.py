"""A simulated device: a folder with the files of one, and programs that run inside it.

    with tempfile.TemporaryDirectory() as folder:
        device = Device.create("QRA-310", folder)
        result = device.run("build/release/bin/tarvo-config")
        assert result.status == 0
"""

from __future__ import annotations

import functools
import itertools
import os
import re
import shutil
import signal
import socket
import sqlite3
import subprocess
import tempfile
import threading
import time
from collections.abc import Mapping, Sequence
from contextlib import closing, suppress
from dataclasses import dataclass
from datetime import datetime, timezone
from pathlib import Path
from typing import NamedTuple

SIM = Path(__file__).resolve().parent

# The device's database files by the name of their schema. Samples fill them all at once; a table
# that is named without its database is looked for in this order.
DATABASES = {
    "config_global": "/tarvo/DB/config_global.sqlite",
    "temp_global": "/tmp/temp_global.sqlite",
    "vsec_global": "/tarvo/DB/vsec_global.sqlite",
    "remote_control": "/tarvo/DB/remote_control.sqlite",
}

DEVICE_FOLDERS = ("/tarvo", "/tmp", "/etc/init.d")
HOST_FOLDERS = ("/usr", "/bin", "/sbin", "/lib", "/lib32", "/lib64", "/libx32")
HOST_ETC = ("/etc/ld.so.cache", "/etc/ld.so.conf", "/etc/ld.so.conf.d", "/etc/alternatives")
DEVICE_PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"


class SimError(Exception):
    """What the caller or this machine lacks, in one sentence that says what to do about it."""


class LogLine(NamedTuple):
    """One syslog message: facility and level in one number, and the text after the tag."""

    priority: int
    message: str


@dataclass(frozen=True)
class Result:
    """How a program ended: 128 + N after signal N. Output is empty when it was not captured."""

    status: int
    stdout: bytes
    stderr: bytes
    syslog: list[LogLine]
    actions: list[str]


def models() -> list[str]:
    """The models that there is a sample of."""
    return sorted(path.parent.name for path in SIM.glob("samples/*/identity.txt"))


class Device:
    """A device folder. Whoever made the folder removes it.

    Programs built for another machine run under its emulator: the words in front of the program's
    path, such as ["qemu-arm-static", "-L", "build/sysroot/armhf"]. Programs of the device itself,
    its scripts among them, are the host's.
    """

    def __init__(self, root: str | os.PathLike[str], *, emulator: Sequence[str] = ()) -> None:
        self.root = Path(root).absolute()
        self._emulator = list(emulator)
        if not self.path("/tarvo/sim").is_dir():
            raise SimError(f"{root} does not hold a simulated device; name a new or empty folder")

    @classmethod
    def create(
        cls, model: str, root: str | os.PathLike[str], *, emulator: Sequence[str] = ()
    ) -> Device:
        """Makes the sample device of a model in a folder that is empty or not there yet."""
        if model not in models():
            raise SimError(f"there is no model {model!r}; choose one of: {', '.join(models())}")
        folder = Path(root)
        if folder.exists() and (not folder.is_dir() or any(folder.iterdir())):
            raise SimError(f"{folder} is not empty; a new device needs an empty folder")
        folder.mkdir(parents=True, exist_ok=True)
        for part in (SIM / "skeleton").iterdir():  # the folder itself keeps its own mode
            shutil.copytree(part, folder / part.name)
        for name in ("tarvo/DB", "tarvo/datosWeb/tablasSI", "tarvo/sim/exit", "tarvo/sim/values"):
            (folder / name).mkdir(parents=True)
        (folder / "tmp").mkdir()
        (folder / "tarvo/sim/actions.log").touch()

        device = cls(folder, emulator=emulator)
        for database, content in _sample_databases(model).items():
            device.path(DATABASES[database]).write_bytes(content)
        for line in (SIM / "samples" / model / "identity.txt").read_text("utf-8").splitlines():
            name, value = line.split(maxsplit=1)
            device.path(f"/tarvo/sim/values/{name}").write_text(value + "\n", "utf-8")
        for table in _si_tables(SIM / "samples" / model / "si_tables.txt"):
            path = device.path(f"/tarvo/datosWeb/tablasSI/{table.name}")
            path.write_bytes(table.content)
            os.utime(path, (table.changed, table.changed))
        return device

    @property
    def model(self) -> str:
        return self.path("/tarvo/sim/values/MODELO").read_text("utf-8").strip()

    def path(self, device_path: str) -> Path:
        """Where on the host a file of the device is, such as "/tarvo/conf/tot_file"."""
        return self.root / device_path.lstrip("/")

    def database(self, device_path: str) -> sqlite3.Connection:
        """Opens an existing database file; every statement commits itself unless told otherwise."""
        uri = self.path(device_path).as_uri() + "?mode=rw"
        return sqlite3.connect(uri, uri=True, isolation_level=None)

    def dump(self, device_path: str) -> dict[str, list[tuple]]:
        """All rows of all tables of a database file."""
        with closing(self.database(device_path)) as database:
            tables = database.execute("SELECT name FROM sqlite_master WHERE type = 'table'")
            return {
                name: database.execute(f'SELECT * FROM "{name}"').fetchall()
                for (name,) in tables.fetchall()
            }

    def run(
        self,
        program: str | os.PathLike[str],
        args: Sequence[str] = (),
        *,
        env: Mapping[str, str] | None = None,
        cwd: str | os.PathLike[str] | None = None,
        timeout: float | None = None,
    ) -> Result:
        """Runs a program to its end; see start(). On subprocess.TimeoutExpired it is dead."""
        return self.start(program, args, env=env, cwd=cwd).wait(timeout)

    def start(
        self,
        program: str | os.PathLike[str],
        args: Sequence[str] = (),
        *,
        env: Mapping[str, str] | None = None,
        cwd: str | os.PathLike[str] | None = None,
        capture: bool = True,
        pipe_size: int = -1,
    ) -> Running:
        """Starts a program inside the device.

        The program is a path on the host, a path below the device's own folders /tarvo and
        /etc/init.d, or a bare name that the device's PATH has. The current folder, or cwd, is its
        working folder, read-only. Unless captured, the caller's standard streams are the program's.
        Captured streams hold pipe_size bytes that nobody has read, by default what the host gives.
        The program does not outlive the thread that started it.
        """
        bwrap = _bubblewrap()
        own = [word for f in DEVICE_FOLDERS for word in ("--bind", str(self.path(f)), f)]
        place, words = _bring_in(os.fspath(program))
        if place and self._emulator:
            mounts, emulator = _emulator_inside(self._emulator)
            place += mounts
            words = emulator + words
        log = _Syslog(self.root)
        command = [
            bwrap,
            *_namespaces(),
            *("--hostname", self.path("/tarvo/sim/values/HOSTNAME").read_text("utf-8").strip()),
            *_host_folders(),
            *own,
            *("--bind", str(log.path), "/dev/log"),
            *("--ro-bind", str(self.root / "syslog"), "/var/log/syslog"),
            *place,
            *("--ro-bind", os.fspath(cwd or os.getcwd()), "/run/cwd", "--chdir", "/run/cwd"),
            "--clearenv",
            *_environment(env or {}),
            *_counts(),
            *("--", *words, *args),
        ]
        streams = {}
        if capture:
            streams = {
                "stdin": subprocess.DEVNULL,
                "stdout": subprocess.PIPE,
                "stderr": subprocess.PIPE,
                "pipesize": pipe_size,
            }
        actions = self.path("/tarvo/sim/actions.log")
        earlier = actions.stat().st_size if actions.exists() else 0
        try:
            process = subprocess.Popen(command, **streams)
        except BaseException:
            log.stop()
            raise
        return Running(process, log, actions, earlier)


class Running:
    """A program that runs inside a device. Call wait() or stop() in the end."""

    def __init__(
        self, process: subprocess.Popen[bytes], log: _Syslog, actions: Path, earlier: int
    ) -> None:
        # Of bubblewrap: its child is the first process of the device, and that one's the program.
        self.process = process
        self._log = log
        self._actions = actions
        self._earlier = earlier

    def kill(self, signal_number: int = signal.SIGKILL) -> None:
        """Sends the program a signal, waiting for it to be there first."""
        while self.process.poll() is None:
            for first in children(self.process.pid):
                for program in children(first):
                    with suppress(ProcessLookupError):  # it has just ended by itself
                        os.kill(program, signal_number)
                    return
            time.sleep(0.001)

    def wait(self, timeout: float | None = None) -> Result:
        """Waits for the program's end. On subprocess.TimeoutExpired it is dead."""
        try:
            stdout, stderr = self.process.communicate(timeout=timeout)
        except BaseException:
            self.stop()
            raise
        syslog = self._log.stop()
        with self._actions.open("rb") as actions:
            actions.seek(self._earlier)
            lines = actions.read().decode("utf-8", "surrogateescape").splitlines()
        return Result(self.process.returncode, stdout or b"", stderr or b"", syslog, lines)

    def stop(self) -> None:
        """Ends the program and everything that it has started inside the device."""
        self.process.kill()
        self.process.communicate()
        self._log.stop()


class _Syslog:
    """/dev/log of one run. Messages are also appended to the file "syslog" of the device folder."""

    _numbers = itertools.count()
    # "<59>Nov 21 01:07:00 tarvo-config[12]: text"; a sender may leave out the time and the tag.
    _MESSAGE = re.compile(
        rb"(?:<(\d+)>)?(?:[A-Z][a-z]{2} [ \d]\d \d\d:\d\d:\d\d )?(?:[^\s:\[]+(?:\[\d+\])?: )?(.*)",
        re.DOTALL,
    )

    def __init__(self, folder: Path) -> None:
        self.path = folder / f"log-{os.getpid()}-{next(self._numbers)}"
        self._lines: list[LogLine] = []
        self._ending = False
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.path.unlink(missing_ok=True)  # left by a runner that was killed
        # A socket's address has 108 bytes at most, however long the folder's path is.
        handle = os.open(folder, os.O_PATH | os.O_DIRECTORY)
        try:
            self._socket.bind(f"/proc/self/fd/{handle}/{self.path.name}")
        finally:
            os.close(handle)
        self._copy = (folder / "syslog").open("ab", buffering=0)
        self._thread = threading.Thread(target=self._collect, daemon=True)
        self._thread.start()

    def _collect(self) -> None:
        # After stop() has shut the socket down, recv() still hands out all that was sent before,
        # and only then nothing.
        while True:
            datagram = self._socket.recv(1 << 17)
            if datagram:
                self._add(datagram)
            elif self._ending:
                return

    def _add(self, datagram: bytes) -> None:
        priority, text = self._MESSAGE.fullmatch(datagram.rstrip(b"\0")).groups()
        line = LogLine(int(priority or b"13"), text.decode("utf-8", "surrogateescape"))
        self._lines.append(line)
        escaped = text.replace(b"\\", b"\\\\").replace(b"\n", b"\\n")
        self._copy.write(b"<%d> %b\n" % (line.priority, escaped))

    def stop(self) -> list[LogLine]:
        """Takes what is still on its way, and closes. A second call changes nothing."""
        if not self._ending:
            self._ending = True
            self._socket.shutdown(socket.SHUT_RD)
            self._thread.join()
            self._socket.close()
            self._copy.close()
            self.path.unlink(missing_ok=True)
        return self._lines


class _SiTable(NamedTuple):
    name: str
    changed: float
    content: bytes


def _si_tables(description: Path) -> list[_SiTable]:
    """Reads files that are described as text: "name date time", then indented lines of bytes."""
    tables: list[_SiTable] = []
    for line in description.read_text("utf-8").splitlines():
        if line.startswith(" "):
            tables[-1] = tables[-1]._replace(content=tables[-1].content + bytes.fromhex(line))
        elif line and not line.startswith("#"):
            name, changed = line.split(maxsplit=1)
            time_utc = datetime.fromisoformat(changed).replace(tzinfo=timezone.utc)
            tables.append(_SiTable(name, time_utc.timestamp(), b""))
    return tables


@functools.lru_cache(maxsize=None)
def _sample_databases(model: str) -> dict[str, bytes]:
    """The contents of a sample's database files, built once for all devices of this process."""
    with closing(sqlite3.connect(":memory:")) as database:
        for name in DATABASES:
            with closing(sqlite3.connect(":memory:")) as empty:
                empty.executescript((SIM / f"schema/{name}.sql").read_text("utf-8"))
                database.execute(f"ATTACH ':memory:' AS {name}")
                database.deserialize(empty.serialize(), name=name)
        scripts = [*SIM.glob("samples/common/*.sql"), *SIM.glob(f"samples/{model}/*.sql")]
        for script in sorted(scripts, key=lambda path: path.name):
            try:
                database.executescript(script.read_text("utf-8"))
            except sqlite3.Error as error:
                raise SimError(f"{script}: {error}") from error
        return {name: database.serialize(name=name) for name in DATABASES}


def _namespaces() -> list[str]:
    return [
        *("--unshare-user", "--unshare-uts", "--unshare-ipc", "--unshare-pid"),
        *("--uid", "0", "--gid", "0", "--cap-drop", "ALL", "--die-with-parent"),
        # Root reads and writes files whatever their mode; also when the caller is not root.
        *("--cap-add", "CAP_DAC_OVERRIDE", "--cap-add", "CAP_FOWNER"),
        *("--proc", "/proc", "--dev", "/dev"),
    ]


def _host_folders() -> list[str]:
    """Programs and libraries come from the host, also where /bin is a link to /usr/bin."""
    mounts: list[str] = []
    for folder in HOST_FOLDERS:
        if os.path.islink(folder):
            mounts += ("--symlink", os.readlink(folder), folder)
        else:
            mounts += ("--ro-bind-try", folder, folder)
    for entry in HOST_ETC:
        mounts += ("--ro-bind-try", entry, entry)
    return mounts


def _environment(extra: Mapping[str, str]) -> list[str]:
    variables = {
        "PATH": DEVICE_PATH,
        "LANG": "C.UTF-8",
        "TZ": os.environ.get("TZ", "UTC"),
        **extra,
    }
    return [word for name, value in variables.items() for word in ("--setenv", name, value)]


def _counts() -> list[str]:
    """What a program that is built for coverage counts, it writes into a folder of the host."""
    pattern = os.environ.get("LLVM_PROFILE_FILE")
    if not pattern:
        return []
    folder = os.path.dirname(os.path.abspath(pattern))
    return ["--bind", folder, folder, "--setenv", "LLVM_PROFILE_FILE", os.path.abspath(pattern)]


def _bring_in(program: str) -> tuple[list[str], list[str]]:
    """The mounts that bring a program into the device, if it has to be, and its path there."""
    if "/" not in program:
        if shutil.which(program, path=DEVICE_PATH) is None:
            raise SimError(f"the device has no program {program!r}; name a file, as in ./{program}")
        return [], [program]
    if program.startswith(("/tarvo/", "/etc/init.d/")):
        return [], [program]
    if os.path.abspath(program).startswith(tuple(folder + "/" for folder in HOST_FOLDERS)):
        return [], [os.path.abspath(program)]
    path = Path(program).resolve()
    if not path.is_file() or not os.access(path, os.X_OK):
        raise SimError(f"{program} is not a program; build it first, or check the path")
    # Libraries that stand beside the program's folder, as in bin/../lib, come along.
    base = path.parent.parent
    return ["--ro-bind", str(base), "/run/program"], [f"/run/program/{path.relative_to(base)}"]


def _emulator_inside(emulator: list[str]) -> tuple[list[str], list[str]]:
    """The mounts that an emulator needs, and its words inside the device: folders come along."""
    if shutil.which(emulator[0], path=DEVICE_PATH) is None:
        raise SimError(f"the emulator {emulator[0]!r} is missing; install it")
    mounts: list[str] = []
    words: list[str] = []
    for word in emulator:
        place = f"/run/emulator/{len(words)}"
        if os.path.isdir(word):
            mounts += ("--ro-bind", os.path.abspath(word), place)
            word = place
        words.append(word)
    return mounts, words


def _bubblewrap() -> str:
    """The path of a bubblewrap that works here."""
    path = shutil.which("bwrap")
    if path is None:
        raise SimError("bubblewrap is missing; install it with: apt-get install bubblewrap")
    if complaint := _complaint(path):
        raise SimError(
            f"bubblewrap may not make namespaces here ({complaint}); allow them with:"
            " sysctl -w kernel.unprivileged_userns_clone=1,"
            " or start the container that this runs in with --privileged"
        )
    return path


@functools.lru_cache(maxsize=None)
def _complaint(bwrap: str) -> str:
    command = [bwrap, *_namespaces(), *_host_folders(), "--", "/bin/true"]
    result = subprocess.run(command, capture_output=True, check=False)
    message = result.stderr.decode("utf-8", "replace").strip().removeprefix("bwrap: ")
    return message or "no reason given" if result.returncode else ""


def children(parent: int) -> list[int]:
    """The processes that it started and that have not ended."""
    return [int(each.name) for each in Path("/proc").glob("[0-9]*") if _parent(each) == parent]


def is_running(process: int) -> bool:
    return _parent(Path(f"/proc/{process}")) is not None


def _parent(process: Path) -> int | None:
    """Of a process that has not ended."""
    try:
        # The name of the program stands in brackets and may hold anything.
        state, parent, *_ = (process / "stat").read_bytes().rpartition(b")")[2].split()
    except OSError:
        return None
    return None if state in (b"Z", b"X") else int(parent)
