"""What the end-to-end tests share: devices that last for a test, the real program in them, and
what a run left behind.

    class NetworkTest(EndToEndTest):
        def test_changed_address_runs_the_network_script(self) -> None:
            device = self.device("QRA-310")
            result = self.load(device, document("<network><ip>10.0.0.1</ip></network>"))
            self.assertRun(result, actions=["WAN_from_DB.sh"])

    if __name__ == "__main__":
        main()
"""

from __future__ import annotations

import functools
import os
import re
import shlex
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import threading
import unittest
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from concurrent.futures import ThreadPoolExecutor
from contextlib import closing
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "sim"))

from device import DATABASES, Device, LogLine, Result, Running, models  # noqa: E402

__all__ = [
    "CONFIG_DB",
    "DATABASES",
    "Device",
    "EndToEndTest",
    "ERROR_FILE",
    "LOG_ERROR",
    "LogLine",
    "NEWS_ERROR",
    "NEWS_NOTICE",
    "OUTPUT_FILE",
    "BACKUP_PROGRAM",
    "PROGRAM",
    "Result",
    "Running",
    "STATE_DB",
    "VSEC_DB",
    "changed",
    "document",
    "edited",
    "errors_in",
    "golden",
    "main",
    "models",
    "tables",
]

PROGRAM = os.environ.get("TARVO_CONFIG", str(REPOSITORY / "build/release/bin/tarvo-config"))
BACKUP_PROGRAM = os.environ.get("TARVO_BACKUP", PROGRAM.replace("tarvo-config", "tarvo-backup"))
# What runs the program when it was built for another machine.
EMULATOR = shlex.split(os.environ.get("TARVO_EMULATOR", ""))

CONFIG_DB = DATABASES["config_global"]
STATE_DB = DATABASES["temp_global"]
VSEC_DB = DATABASES["vsec_global"]

OUTPUT_FILE = "/tmp/ConfigurationXML.xml"
ERROR_FILE = "/tmp/Errors_ConfigurationXML.xml"
DOCUMENT_FILE = "/tmp/document.xml"

# Priorities of the program's syslog lines; one without a facility is sent as a user's.
LOG_ERROR = 8 | 3
NEWS_ERROR = 59
NEWS_NOTICE = 61

# Programs that run at a time within one test file. They mostly sleep.
AT_ONCE = 32
_running = threading.BoundedSemaphore(AT_ONCE)
_making = threading.Lock()


def installed(device: Device) -> str:
    """A copy of tarvo-backup in the device, for its shell. Its path there."""
    folder = Path("/tarvo/bin/program")
    program = Path(BACKUP_PROGRAM).resolve()
    copy = device.path(str(folder))
    if not copy.exists():
        for name in ("bin/tarvo-backup", "lib/libtarvocommon.so"):
            (copy / name).parent.mkdir(parents=True)
            shutil.copy(program.parents[1] / name, copy / name)
    return f"{folder}/bin/tarvo-backup"


_libraries = tempfile.TemporaryDirectory(prefix="e2e-libraries-", ignore_cleanup_errors=True)


@functools.cache
def _compiled(name: str) -> Path:
    library = Path(_libraries.name) / f"{name}.so"
    source = REPOSITORY / f"tests/faults/{name}.c"
    options = ["-std=gnu17", "-O1", "-Wall", "-Wextra", "-Werror", "-fPIC", "-shared"]
    subprocess.run(["cc", *options, "-o", library, source], check=True)
    return library


def preloaded(device: Device, name: str) -> str:
    """A library of tests/faults in the device, for LD_PRELOAD. Its path there."""
    path = f"/tarvo/sim/{name}.so"
    with _making:
        shutil.copy(_compiled(name), device.path(path))
    return path


def leave_half_written(device: Device) -> bytes:
    """Leaves the configuration database as a program does that is killed in the midst of a transaction.

    Returns the file that comes of it when the journal is rolled back.
    """
    path = device.path(CONFIG_DB)
    with closing(device.database(CONFIG_DB)) as database:
        database.execute("PRAGMA cache_size = 1")
        database.execute("BEGIN")
        database.execute("UPDATE configuracionWebGlobal SET valor = 'half' || valor")
        database.execute("UPDATE ServiciosSalidaGlobal SET NombreSalida = 'half' || idSSG")
        database.execute("UPDATE PIDsSalidaGlobal SET AudioCode = 'half' || idPSG")
        half, journal = path.read_bytes(), Path(f"{path}-journal").read_bytes()
        database.execute("ROLLBACK")
    whole = path.read_bytes()
    assert half != whole
    path.write_bytes(half)
    Path(f"{path}-journal").write_bytes(journal)
    return whole


def golden(model: str) -> bytes:
    """The whole document that the sample device of a model exports, as the output file holds it."""
    return (REPOSITORY / f"tests/e2e/golden/{model}.xml").read_bytes()


def document(sections: str, *, cams: str | None = None) -> bytes:
    """A document with these sections; with a CAM list under the common root when there is one."""
    text = f"<configuration>{sections}</configuration>"
    if cams is not None:
        text = f"<backup>{text}<vsecureCAMList>{cams}</vsecureCAMList></backup>"
    return f'<?xml version="1.0" encoding="utf-8"?>\n{text}'.encode()


def edited(text: bytes, old: str, new: str, *, count: int = 1) -> bytes:
    """The text with `old`, which must be there exactly `count` times, replaced."""
    found = text.count(old.encode())
    if found != count:
        raise ValueError(f"{old!r} stands {found} times in the text, not {count}")
    return text.replace(old.encode(), new.encode())


def tables(device: Device) -> dict[str, dict[str, list[tuple]]]:
    """All rows of all tables of all the device's databases. A half-done change is undone by it."""
    rows = {}
    for name, path in DATABASES.items():
        with closing(device.database(path)) as database:
            rows[name] = _rows(database, "main")
    return rows


def changed(device: Device, sql: str) -> dict[str, dict[str, list[tuple]]]:
    """What tables() would give if these statements had changed the databases."""
    with closing(sqlite3.connect(":memory:", isolation_level=None)) as databases:
        for name, path in DATABASES.items():
            databases.execute(f"ATTACH ':memory:' AS {name}")
            databases.deserialize(device.path(path).read_bytes(), name=name)
        databases.executescript(sql)
        return {name: _rows(databases, name) for name in DATABASES}


def _rows(database: sqlite3.Connection, name: str) -> dict[str, list[tuple]]:
    # Any bytes can be a text.
    database.text_factory = lambda text: text.decode("utf-8", "surrogateescape")
    found = database.execute(f"SELECT name FROM {name}.sqlite_master WHERE type = 'table'")
    return {
        table: database.execute(f'SELECT * FROM {name}."{table}"').fetchall()
        for (table,) in found.fetchall()
    }


def errors_in(result: Result) -> list[str]:
    """The logged errors of an import, without the prefix that they all have."""
    lines = [line.message for line in result.syslog if line.priority == NEWS_ERROR]
    return [line.removeprefix("r9::: ") for line in lines]


def _logged(line: str) -> LogLine:
    """The syslog line of a change, or of an error when the text begins with "Error"."""
    if line.startswith("Error"):
        return LogLine(NEWS_ERROR, "r9::: " + line)
    return LogLine(NEWS_NOTICE, "REMOTE_CONTROL::: " + line)


class EndToEndTest(unittest.TestCase):
    """Tests of one file run side by side, so there are no fixtures of a class or a module."""

    maxDiff = 4000

    def device(self, model: str, sql: str = "", *, state: str = "", vsec: str = "") -> Device:
        """A new sample device, its databases changed by these statements."""
        folder = tempfile.TemporaryDirectory(prefix="e2e-", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        with _making:  # the first device of a model is costly; the others wait for it
            device = Device.create(model, folder.name, emulator=EMULATOR)
        for path, statements in ((CONFIG_DB, sql), (STATE_DB, state), (VSEC_DB, vsec)):
            if statements:
                with closing(device.database(path)) as database:
                    database.executescript(f"BEGIN; {statements}; COMMIT;")
        return device

    def run_program(
        self, device: Device, *args: str, env: Mapping[str, str] | None = None
    ) -> Result:
        with _running:
            return device.run(PROGRAM, args, env={"TZ": "UTC", **(env or {})}, timeout=240)

    def export(self, device: Device, **options: Mapping[str, str]) -> Result:
        return self.run_program(device, **options)

    def load(self, device: Device, text: bytes, *more: str, **options: Mapping[str, str]) -> Result:
        """Imports a document."""
        device.path(DOCUMENT_FILE).write_bytes(text)
        return self.run_program(device, DOCUMENT_FILE, *more, **options)

    def run_after(self, setup: str, device: Device, *args: str) -> Result:
        """A run that begins as this shell command leaves it: with its limits, streams, signals."""
        if EMULATOR:
            self.skipTest("the emulator would begin like that too")
        program = Path(PROGRAM).resolve()
        command = f'{setup} "bin/{program.name}" "$@"'
        with _running:
            return device.run(
                "sh",
                ["-c", command, "sh", *args],
                cwd=program.parents[1],
                env={"TZ": "UTC"},
                timeout=240,
            )

    def each(self, check: Callable[..., None], cases: Iterable[Sequence]) -> None:
        """Runs check(*case) for all cases side by side. A case goes by its first item."""
        cases = list(cases)
        with ThreadPoolExecutor(len(cases)) as pool:
            for case, outcome in [(case, pool.submit(check, *case)) for case in cases]:
                with self.subTest(case[0]):
                    outcome.result()

    def query(self, device: Device, sql: str, path: str = CONFIG_DB) -> list[tuple]:
        with closing(device.database(path)) as database:
            return database.execute(sql).fetchall()

    def assertRun(
        self,
        result: Result,
        status: int = 0,
        *,
        stdout: bytes | None = None,
        stderr: bytes = b"",
        syslog: Iterable[tuple[int, str]] | None = None,
        actions: Iterable[str] = (),
    ) -> None:
        """Compares all that a run left outside the files; None where it is of no interest."""
        self.assertEqual((status, stderr), (result.status, result.stderr))
        if stdout is not None:
            self.assertBytes(stdout, result.stdout)
        if syslog is not None:
            self.assertEqual([LogLine(*line) for line in syslog], result.syslog)
        self.assertEqual(list(actions), result.actions)

    def assertBytes(self, expected: bytes, found: bytes) -> None:
        """Equality, with the difference shown by lines."""
        if expected != found:
            # Line by line, so that a difference is found at once also in long texts.
            pairs = zip(expected.split(b"\n"), found.split(b"\n"))
            for number, (one, other) in enumerate(pairs, 1):
                self.assertEqual(one, other, f"line {number}")
            self.assertEqual(len(expected), len(found))
        self.assertEqual(expected, found)

    def assertProgress(self, lines: Sequence[str], result: Result) -> None:
        """Compares standard output by lines. "0x" stands for a line with any address."""
        found = re.sub(r"(?m)^.*\b0x[0-9a-fA-F]+\b.*$", "0x", result.stdout.decode())
        self.assertEqual("".join(line + "\n" for line in lines), found)

    def assertTables(
        self, expected: dict[str, dict[str, list[tuple]]], found: dict[str, dict[str, list[tuple]]]
    ) -> None:
        """Compares what tables() gives, naming the first table that differs."""
        for database, rows in expected.items():
            self.assertEqual(sorted(rows), sorted(found[database]), database)
            for table in rows:
                self.assertEqual(rows[table], found[database][table], f"{database}.{table}")

    def assertLoads(
        self,
        device: Device,
        text: bytes,
        sql: str = "",
        *,
        prints: Sequence[str] | None = None,
        logs: Iterable[str] | None = None,
        actions: Iterable[str] = (),
    ) -> None:
        """An import that ends with 0 and does to the databases what these statements would do.

        Its syslog lines, when given, are notices, and come without the prefix that they all have.
        """
        expected = changed(device, sql)
        result = self.load(device, text)
        self.assertRun(result, actions=actions)
        if logs is not None:
            self.assertEqual([_logged(line) for line in logs], result.syslog)
        else:
            self.assertEqual([], errors_in(result))
        if prints is not None:
            self.assertProgress(list(prints), result)
        self.assertTables(expected, tables(device))
        self.assertFalse(device.path(ERROR_FILE).exists())

    def assertRefused(
        self,
        device: Device,
        text: bytes,
        *,
        status: int,
        code: int,
        errors: Sequence[str] | None = None,
        prints: Sequence[str] | None = None,
        logs: Sequence[str] | None = None,
    ) -> None:
        """An import that is tried three times, reports the code each time, and changes nothing.

        Given are a try's syslog lines, or its errors alone. They come without the prefixes that
        they all have; an error begins with "Error".
        """
        before = tables(device)
        result = self.load(device, text)
        self.assertRun(result, status, stderr=f"Error: {code}\n".encode() * 3)
        if errors is not None:
            self.assertEqual(list(errors) * 3, errors_in(result))
        if logs is not None:
            self.assertEqual([_logged(line) for line in logs] * 3, result.syslog)
        self.assertEqual(f"Error: {code}", device.path(ERROR_FILE).read_text())
        if prints is not None:
            self.assertProgress(list(prints) * 3, result)
        self.assertTables(before, tables(device))


def _alone(test: unittest.TestCase) -> unittest.TestResult:
    result = unittest.TestResult()
    test.run(result)
    return result


class _SideBySide(unittest.TestSuite):
    """Runs its tests in threads: the programs that they start spend their time sleeping."""

    def run(self, result: unittest.TestResult, debug: bool = False) -> unittest.TestResult:
        with ThreadPoolExecutor(AT_ONCE) as pool:
            for part in pool.map(_alone, self._flat()):
                result.testsRun += part.testsRun
                result.failures += part.failures
                result.errors += part.errors
                result.skipped += part.skipped
        return result

    def _flat(self) -> Iterator[unittest.TestCase]:
        for item in self:
            if isinstance(item, _SideBySide):
                yield from item._flat()
            else:
                yield item


def main() -> None:
    """Runs the tests of the file that calls it."""
    loader = unittest.TestLoader()
    loader.suiteClass = _SideBySide
    unittest.main(testLoader=loader)
