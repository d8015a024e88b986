"""Runs a program in a simulated device and tells all that it did, in order (see trace.c)."""

from __future__ import annotations

import hashlib
import os
import sqlite3
import subprocess
import sys
from collections.abc import Iterator
from contextlib import closing
from dataclasses import dataclass
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parents[1] / "sim"))

from device import DATABASES, DEVICE_FOLDERS, Device  # noqa: E402

TRACE_FOLDER = "/tarvo/sim/trace"
LIBRARY = "/tarvo/sim/trace.so"
TIMEOUT = 120

Event = tuple[bytes, ...]


@dataclass
class Outcome:
    """What a run did (its events in order) and what it left (files and tables by their names)."""

    events: list[Event]
    left: dict[str, object]

    def count(self, *kinds: bytes) -> int:
        return sum(event[0] in kinds for event in self.events)

    @property
    def statements(self) -> int:
        return self.count(b"exec", b"get_table")

    @property
    def stdout(self) -> bytes:
        return b"".join(event[1] for event in self.events if event[0] == b"stdout")

    @property
    def status(self) -> int:
        return int(self.events[-1][1])


def build_library(folder: Path) -> Path:
    library = folder / "trace.so"
    subprocess.run(
        ["cc", "-std=gnu17", "-O2", "-Wall", "-Wextra", "-Werror", "-fPIC", "-shared"]
        + ["-o", library, HERE / "trace.c"],
        check=True,
    )
    return library


def run(
    device: Device, library: Path, program: str, args: list[str], plan: str, zone: str = "UTC"
) -> list[Event]:
    """Runs the program and returns the events. The last one is the exit status."""
    os.link(library, device.path(LIBRARY))
    folder = device.path(TRACE_FOLDER)
    folder.mkdir()
    environment = {
        "LD_PRELOAD": LIBRARY,
        "TRACE_FOLDER": TRACE_FOLDER,
        "TRACE_PLAN": plan,
        "TZ": zone,
    }
    try:
        result = device.run(program, args, env=environment, cwd="/tmp", timeout=TIMEOUT)
        status, stray = str(result.status).encode(), result.stdout + result.stderr
    except subprocess.TimeoutExpired:
        status, stray = b"-1", b"timeout"
    device.path(LIBRARY).unlink()
    events = list(_events(folder))
    if stray:
        events.append((b"stray", stray))
    return [*events, (b"status", status)]


def _events(folder: Path) -> Iterator[Event]:
    output = {name: _read(folder / name) for name in ("stdout", "stderr")}
    told = {"stdout": 0, "stderr": 0}

    def grown(name: str, end: int) -> Iterator[Event]:
        if end != told[name]:
            yield name.encode(), output[name][told[name] : end]
            told[name] = end

    for line in _read(folder / "trace").split(b"\n")[:-1]:
        kind, *fields = line.split(b"\t")
        if kind in (b"out", b"err"):
            yield from grown("std" + kind.decode(), int(fields[0]))
        else:
            yield kind, *(_unescaped(field) for field in fields)
    for name, content in output.items():
        yield from grown(name, len(content))


def _read(path: Path) -> bytes:
    return path.read_bytes() if path.exists() else b""


def _unescaped(field: bytes) -> bytes:
    if b"\\" not in field:
        return field
    return (
        field.replace(b"\\\\", b"\\\0")
        .replace(b"\\t", b"\t")
        .replace(b"\\n", b"\n")
        .replace(b"\\\0", b"\\")
    )


def leftovers(one: Device, other: Device) -> tuple[dict[str, object], dict[str, object]]:
    """What two devices hold, tables row by row. Databases of the same bytes are the same."""
    left = files(one), files(other)
    for path in DATABASES.values():
        names = [name for name in (path, path + "-journal") if any(name in side for side in left)]
        alone = names == [path]
        if not alone or left[0].get(path) != left[1].get(path):
            for side, device in zip(left, (one, other)):
                for name in names:
                    side.pop(name, None)
                if device.path(path).is_file():
                    side.update(_tables(device, path))
    return left


def files(device: Device) -> dict[str, object]:
    """A digest of each file's content, or what else stands there."""
    found: dict[str, object] = {}
    trace = str(device.path(TRACE_FOLDER))
    for top in DEVICE_FOLDERS:
        for folder, folders, names in os.walk(device.path(top)):
            if folder == trace:
                continue
            place = "/" + os.path.relpath(folder, device.root)
            found[place] = "folder"
            for name in names:
                path = os.path.join(folder, name)
                found[f"{place}/{name}"] = (
                    "link to " + os.readlink(path)
                    if os.path.islink(path)
                    else hashlib.sha1(_read(Path(path))).hexdigest()
                )
    del found[TRACE_FOLDER.rpartition("/")[0]]
    return found


def _tables(device: Device, path: str) -> dict[str, object]:
    """The rows of all tables; opening the file also undoes a change that was left half done."""
    found: dict[str, object] = {}
    try:
        with closing(device.database(path)) as database:
            database.text_factory = bytes
            master = "SELECT name, sql FROM sqlite_master ORDER BY rowid"
            for name, sql in database.execute(master).fetchall():
                rows = database.execute(f'SELECT * FROM "{name.decode()}"').fetchall()
                found[f"{path} {name.decode()}"] = [sql, *rows]
    except sqlite3.Error as error:
        found[path] = f"unreadable: {error}"
    return found
