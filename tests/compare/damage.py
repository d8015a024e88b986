"""Devices that are not as they should be: files, tables, columns and values that are missing,
odd or too many, and scripts that answer oddly."""

from __future__ import annotations

import random
import shutil
import sqlite3
from contextlib import closing

from tracing import DATABASES, Device

ODD_VALUES = (
    *(None, "", " ", 0, 1, -1, 2, 3, 7, 255, 65535, 65536, 99999, 2147483647, -2147483648),
    *("abc", "12abc", " 5", "5 ", "+5", "0x10", "007", 1.5, "1e3", b"\x00\xff", "a\x01b"),
    *("<&>\"'", "%s%n%d", "%", "'; --", "ñ\u20ac", "a\nb\tc", b"\xff\xfe latin \xe9"),
)
WIDE_VALUES = (2147483648, -2147483649, 4294967296, 9223372036854775807, "18446744073709551616")

IDENTITY_ANSWERS = (
    *("", "echo", "echo X", "echo OK", "echo; echo OK", "echo X; echo ok", "echo X; echo NOK"),
    *("echo ' X '; echo ' OK '", "echo X; echo OK; echo more", "echo X; echo OK; exit 3"),
    *("echo QRA-310; echo OK", "echo qra-310; echo OK", "echo RNB-K408; echo OK", "exit 1"),
    *("printf 'X\\r\\nOK\\r\\n'", "printf 'X\\nOK'", "printf '%0200d\\nOK\\n' 7", "kill -9 $$"),
    *("echo 02:1E:31:0A:00:01; echo OK", "echo '<&>%s'; echo OK", "echo X >&2; echo X; echo OK"),
)
ACTION_SCRIPTS = (
    *("/tarvo/script/WAN_from_DB.sh", "/tarvo/script/get_time_offsets.sh"),
    *("/tarvo/bin/VSecKey", "/etc/init.d/S60crond"),
)


class Damage:
    """One piece of damage after the other; `notes` says which, `tags` what may differ for them."""

    def __init__(self, device: Device, rng: random.Random) -> None:
        self.device = device
        self.random = rng
        self.notes: list[str] = []
        self.tags: set[str] = set()

    def some(self, amount: int) -> None:
        weighted = (
            *((self.odd_values, 6), (self.rows, 4), (self.column, 4), (self.table, 2)),
            *((self.database, 2), (self.identity, 2), (self.action, 4), (self.si_files, 3)),
            *((self.output_files, 2), (self.time_files, 2), (self.spilling, 1)),
        )
        kinds, weights = zip(*weighted)
        for kind in self.random.choices(kinds, weights, k=amount):
            try:
                self.notes.append(kind() or kind.__name__)
            except (OSError, sqlite3.Error, IndexError) as error:  # damaged already, or empty
                self.notes.append(f"{kind.__name__}: {error}")

    # Databases.

    def a_database(self) -> str:
        paths = list(DATABASES.values())
        return self.random.choices(paths, (8, 2, 2, 1))[0]

    def execute(self, path: str, sql: str, *values: object) -> list[tuple]:
        with closing(self.device.database(path)) as database:
            database.execute("PRAGMA synchronous = OFF")
            database.text_factory = bytes
            return database.execute(sql, values).fetchall()

    def a_table(self) -> tuple[str, str, list[str]]:
        """A database, a table of it and the table's columns but for the key."""
        path = self.a_database()
        sql = "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"
        tables = [name.decode() for (name,) in self.execute(path, sql)]
        filled = [
            name for name in tables if self.execute(path, f"SELECT 1 FROM {name} LIMIT 1")
        ]
        table = self.random.choice(filled or tables)
        columns = self.execute(path, f"SELECT name FROM pragma_table_info('{table}') WHERE pk = 0")
        return path, table, [name.decode() for (name,) in columns]

    def odd_values(self) -> str:
        path, table, columns = self.a_table()
        wide = self.random.random() < 0.1
        if wide:
            self.tags.add("wide-numbers")
        for _ in range(self.random.choice((1, 1, 3, 10))):
            column = self.random.choice(columns)
            value = self.random.choice(WIDE_VALUES if wide else ODD_VALUES)
            row = f"SELECT rowid FROM {table} LIMIT 1 OFFSET {self.random.randrange(6)}"
            self.execute(path, f"UPDATE {table} SET {column} = ? WHERE rowid = ({row})", value)
        return f"odd values in {table}"

    def rows(self) -> str:
        path, table, columns = self.a_table()
        row = f"rowid = (SELECT rowid FROM {table} LIMIT 1 OFFSET {self.random.randrange(4)})"
        names = ", ".join(columns)
        sql = self.random.choice(
            (
                f"DELETE FROM {table}",
                f"DELETE FROM {table} WHERE {row}",
                f"DELETE FROM {table} WHERE rowid % 2",
                f"INSERT INTO {table} ({names}) SELECT {names} FROM {table} WHERE {row}",
                f"INSERT INTO {table} ({names}) SELECT {names} FROM {table}",
                f"UPDATE {table} SET " + ", ".join(f"{column} = NULL" for column in columns),
                f"UPDATE {table} SET {self.random.choice(columns)} = NULL",
                f"UPDATE {table} SET rowid = rowid + 70000 WHERE {row}",
            )
        )
        self.execute(path, sql)
        return sql[:70]

    def column(self) -> str:
        path, table, columns = self.a_table()
        column = self.random.choice(columns)
        change = self.random.choice(("INSERT", "UPDATE", "DELETE"))
        sql = self.random.choice(
            (
                f"ALTER TABLE {table} DROP COLUMN {column}",
                f"ALTER TABLE {table} RENAME COLUMN {column} TO {column}_old",
                f"ALTER TABLE {table} ADD COLUMN further DEFAULT 'x'",
                f"CREATE UNIQUE INDEX lone ON {table} ({column})",
                f"CREATE TRIGGER stop BEFORE {change} ON {table}"
                " BEGIN SELECT RAISE(ABORT, 'stopped by a trigger'); END",
            )
        )
        self.execute(path, sql)
        return sql[:70]

    def table(self) -> str:
        path, table, _ = self.a_table()
        self.execute(path, f"DROP TABLE {table}")
        return f"no {table}"

    def database(self) -> str:
        path = self.a_database()
        file = self.device.path(path)
        how = self.random.choice(("missing", "empty", "garbage", "cut", "folder"))
        content = file.read_bytes()
        file.unlink()
        if how == "folder":
            file.mkdir()
        elif how != "missing":
            half = content[: len(content) // 2]
            file.write_bytes({"empty": b"", "garbage": b"no database " * 500, "cut": half}[how])
        return f"{path} is {how}"

    def spilling(self) -> str:
        # A cache of a few pages spills into the file long before the commit.
        self.execute(DATABASES["config_global"], "PRAGMA default_cache_size = 2")
        return "small cache"

    # Scripts.

    def script(self, path: str, text: str | None) -> None:
        file = self.device.path(path)
        file.unlink()
        if text is not None:
            file.write_text("#!/bin/sh\n" + text + "\n")
            file.chmod(0o755)

    def identity(self) -> str:
        name = self.random.choice(("SERIAL", "MAC", "MODELO"))
        if self.random.random() < 0.3:
            self.script(f"/tarvo/script/{name}", None)
            return f"no {name}"
        text = self.random.choice(IDENTITY_ANSWERS)
        self.script(f"/tarvo/script/{name}", text)
        return f"{name} is {text!r}"

    def action(self) -> str:
        path = self.random.choice(ACTION_SCRIPTS)
        text = self.random.choice((None, "exit 1", "exit 255", "kill -9 $$", "echo x; echo y >&2"))
        self.script(path, text)
        return f"{path} is {text!r}"

    # Files.

    def si_files(self) -> str:
        folder = self.device.path("/tarvo/datosWeb/tablasSI")
        files = sorted(folder.iterdir())
        if not files or self.random.random() < 0.2:
            shutil.rmtree(folder)
            return "no SI files"
        file = self.random.choice(files)
        content = file.read_bytes()
        size = self.random.choice((None, 0, 1, 2, 4, 5, 6, 7, 8, 12, len(content) // 2))
        if size is None:
            file.unlink()
        else:
            file.write_bytes(content[:size])
        return f"{file.name} has {size} bytes"

    def output_files(self) -> str:
        name = self.random.choice(("ConfigurationXML.xml", "Errors_ConfigurationXML.xml"))
        path = self.device.path("/tmp/" + name)
        if self.random.random() < 0.5:
            path.mkdir()
            return f"{name} is a folder"
        path.write_text("left by an earlier run\n" * 1000)
        return f"an earlier {name}"

    def time_files(self) -> str:
        name = self.random.choice(("timezone/localtime", "tot_file", "timezone"))
        path = self.device.path("/tarvo/conf/" + name)
        if path.is_dir():
            shutil.rmtree(path)
        else:
            path.unlink()
            if self.random.random() < 0.5:
                path.mkdir()
        return f"no file {name}"
