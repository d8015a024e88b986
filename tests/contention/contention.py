#!/usr/bin/env python3
"""Measures what imports and exports do beside other programs that use the same databases.

    tests/contention/contention.py [--runs N]

Prints a table: per neighbour and journal mode the share of runs that end with 0, how many imports
were applied by halves and how many exports mix two states of the configuration without a word,
which must be none, and how many exports say that they may. Ends with 1 when there are any.
"""

from __future__ import annotations

import argparse
import os
import sqlite3
import sys
import tempfile
import threading
import time
from collections.abc import Callable, Iterator
from concurrent.futures import ThreadPoolExecutor
from contextlib import closing, contextmanager
from dataclasses import dataclass
from pathlib import Path
from typing import NamedTuple

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import CONFIG_DB, DOCUMENT_FILE, PROGRAM, Device, Result, edited, golden  # noqa: E402

MODEL = "QRA-310"
# The setting that a neighbour writes, which no document of these holds.
SETTING = "identificacion_instalador"


# What the neighbour changes together, in two tables: beside an import what no document holds,
# beside an export what the document shows.
WRITES_SETTING = f"UPDATE configuracionWebGlobal SET valor = ? WHERE nombre = '{SETTING}'"
BESIDE_IMPORT = (WRITES_SETTING, "UPDATE RedesModulos SET HostName = ?")
BESIDE_EXPORT = (WRITES_SETTING, "UPDATE RedesCabecera SET CellID = ?")


class Neighbour(NamedTuple):
    """A program that writes to the configuration over and over."""

    name: str
    held_seconds: float
    pause_seconds: float


NEIGHBOURS = (
    Neighbour("writes 1 ms, rests 1 ms", 0.001, 0.001),
    Neighbour("writes 1 ms, rests 50 ms", 0.001, 0.05),
    Neighbour("writes 0.3 s, rests 50 ms", 0.3, 0.05),
    Neighbour("writes 0.3 s, rests 1 s", 0.3, 1),
    Neighbour("writes 2 s, rests 1 s", 2, 1),
    Neighbour("writes 10 s, rests 1 s", 10, 1),
)


@dataclass
class Row:
    """What the runs of one kind came to."""

    runs: int = 0
    passed: int = 0
    broken: int = 0
    warned: int = 0
    longest_seconds: float = 0

    def add(self, passed: bool, whole: bool, seconds: float, *, warned: bool = False) -> None:
        self.runs += 1
        self.passed += passed
        self.broken += not whole and not warned
        self.warned += warned
        self.longest_seconds = max(self.longest_seconds, seconds)


def changed(name: str) -> bytes:
    """A backup with that name in the first section and in the last."""
    text = edited(golden(MODEL), "<location>Málaga", f"<location>{name} Málaga")
    text = edited(text, "<timezone>Europe/Madrid<", f"<timezone>Europe/{name}<")
    return edited(text, "<inputName>Soft Radio<", f"<inputName>{name}<")


@contextmanager
def a_device(mode: str) -> Iterator[Device]:
    with tempfile.TemporaryDirectory(prefix="contention-", ignore_cleanup_errors=True) as folder:
        device = Device.create(MODEL, folder)
        with closing(device.database(CONFIG_DB)) as database:
            database.execute(f"PRAGMA journal_mode = {mode}")
        yield device


def run(device: Device, document: str | None = None) -> tuple[Result, float]:
    """An import, or an export, and how many seconds it took."""
    started = time.monotonic()
    result = device.run(PROGRAM, [document] if document else [], env={"TZ": "UTC"}, timeout=600)
    return result, time.monotonic() - started


def warns(export: Result) -> bool:
    """Whether it tells that two states may be mixed, or that rows are missing."""
    return b"may mix two states" in export.stderr or any(
        line.message.startswith("[ERROR_DB]doSelect") for line in export.syslog
    )


def configuration(device: Device) -> list[str]:
    """All rows but those that the neighbour writes."""
    with closing(device.database(CONFIG_DB)) as database:
        database.execute("PRAGMA busy_timeout = 20000")
        database.execute("BEGIN")
        database.execute(f"DELETE FROM configuracionWebGlobal WHERE nombre = '{SETTING}'")
        database.execute("UPDATE RedesModulos SET HostName = ''")
        rows = list(database.iterdump())
        database.execute("ROLLBACK")
        return rows


@contextmanager
def beside(device: Device, neighbour: Neighbour, statements: tuple[str, ...]) -> Iterator[None]:
    """The neighbour is at work."""
    over = threading.Event()

    def work() -> None:
        with closing(device.database(CONFIG_DB)) as database:
            database.execute("PRAGMA busy_timeout = 20000")
            number = 0
            while not over.is_set():
                number += 1
                try:
                    database.execute("BEGIN IMMEDIATE")
                    for statement in statements:
                        database.execute(statement, (str(number),))
                    over.wait(neighbour.held_seconds)
                    database.execute("COMMIT")
                except sqlite3.OperationalError:  # the import was faster
                    if database.in_transaction:
                        database.execute("ROLLBACK")
                over.wait(neighbour.pause_seconds)

    thread = threading.Thread(target=work)
    thread.start()
    time.sleep(0.1)
    try:
        yield
    finally:
        over.set()
        thread.join()


def without_setting(document: bytes) -> bytes:
    """The document without the neighbour's setting, so that only the neighbour writes it."""
    before, rest = document.split(b"<installer>")
    return before + rest.split(b"</installer>")[1]


def outcomes(mode: str, *orders: tuple[str, ...]) -> list[list[str]]:
    """The configurations after imports of these documents, one after the other."""
    found = []
    for order in orders:
        with a_device(mode) as device:
            for name in order:
                device.path(DOCUMENT_FILE).write_bytes(without_setting(changed(name)))
                if run(device, DOCUMENT_FILE)[0].status != 0:
                    raise RuntimeError(f"an undisturbed import of {name} fails")
            found.append(configuration(device))
    return found


def import_beside(neighbour: Neighbour, mode: str, row: Row, states: list[list[str]]) -> None:
    with a_device(mode) as device:
        device.path(DOCUMENT_FILE).write_bytes(without_setting(changed("Paris")))
        with beside(device, neighbour, BESIDE_IMPORT):
            result, seconds = run(device, DOCUMENT_FILE)
        before, after = states
        found = configuration(device)
        passed = result.status == 0
        row.add(passed, found == after or (not passed and found == before), seconds)


def text_between(document: bytes, element: str) -> bytes:
    """Empty where there is no such element, or none with a text."""
    return document.partition(f"<{element}>".encode())[2].partition(b"<")[0]


def export_beside(neighbour: Neighbour, mode: str, row: Row) -> None:
    with a_device(mode) as device:
        with closing(device.database(CONFIG_DB)) as database:
            for statement in BESIDE_EXPORT:
                database.execute(statement, ("0",))
        with beside(device, neighbour, BESIDE_EXPORT):
            result, seconds = run(device)
        installer, cell = (text_between(result.stdout, name) for name in ("installer", "cellID"))
        passed = result.status == 0
        row.add(passed, installer == cell, seconds, warned=passed and warns(result))


def two_imports(mode: str, row: Row, states: list[list[str]]) -> None:
    with a_device(mode) as device:
        names = ("Paris", "Rome")
        for name in names:
            device.path(f"/tmp/{name}.xml").write_bytes(without_setting(changed(name)))
        with ThreadPoolExecutor(2) as pool:
            runs = list(pool.map(lambda name: run(device, f"/tmp/{name}.xml"), names))
        whole = configuration(device) in states
        for result, seconds in runs:
            row.add(result.status == 0, whole, seconds)


def export_beside_imports(mode: str, row: Row) -> None:
    with a_device(mode) as device:
        names = ("Paris", "Rome")
        for name in names:
            device.path(f"/tmp/{name}.xml").write_bytes(changed(name))
        over = threading.Event()

        def imports() -> None:
            while not over.is_set():
                for name in names:
                    run(device, f"/tmp/{name}.xml")

        run(device, "/tmp/Rome.xml")
        thread = threading.Thread(target=imports)
        thread.start()
        try:
            for _ in range(5):
                result, seconds = run(device)
                found = {
                    name
                    for name in names
                    if f"<location>{name} M".encode() in result.stdout
                    or f"<inputName>{name}<".encode() in result.stdout
                }
                passed = result.status == 0
                row.add(
                    passed,
                    not passed or len(found) == 1,
                    seconds,
                    warned=passed and warns(result),
                )
        finally:
            over.set()
            thread.join()


def measured(check: Callable[..., None], runs: int, *arguments: object) -> Row:
    row = Row()
    with ThreadPoolExecutor(2 * (os.cpu_count() or 1)) as pool:
        for done in [pool.submit(check, *arguments, row) for _ in range(runs)]:
            done.result()
    return row


def table(runs: int) -> Iterator[tuple[str, str, Row]]:
    for mode in ("DELETE", "WAL"):
        before, after = outcomes(mode, (), ("Paris",))
        for neighbour in NEIGHBOURS:
            row = measured(
                lambda n, m, row: import_beside(n, m, row, [before, after]), runs, neighbour, mode
            )
            yield f"import, neighbour {neighbour.name}", mode, row
        for neighbour in NEIGHBOURS[:4]:
            yield (
                f"export, neighbour {neighbour.name}",
                mode,
                measured(export_beside, runs, neighbour, mode),
            )
        orders = ((), ("Paris",), ("Rome",), ("Paris", "Rome"), ("Rome", "Paris"))
        states = outcomes(mode, *orders)
        yield (
            "two imports at once",
            mode,
            measured(lambda m, row: two_imports(m, row, states), runs, mode),
        )
        yield (
            "export beside imports",
            mode,
            measured(export_beside_imports, max(runs // 5, 1), mode),
        )


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--runs", type=int, default=20, help="of each kind")
    runs = parser.parse_args().runs
    broken = 0
    print("| Run | Journal | Runs | End with 0 | Half applied or mixed | Warn | Longest |")
    print("|---|---|---|---|---|---|---|")
    for name, mode, row in table(runs):
        share = f"{100 * row.passed // row.runs} %"
        print(
            f"| {name} | {mode} | {row.runs} | {share} | {row.broken} | {row.warned} "
            f"| {row.longest_seconds:.1f} s |",
            flush=True,
        )
        broken += row.broken
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
