"""What must hold of tarvo-backup for every headend and every document, tried on generated ones.

- `plan` leaves the headend as it is, and foretells what `tarvo-config FILE` then does to it: the
  status, every row, what the headend is told to apply again, scripts, renamed files, and what an
  export shows otherwise afterwards.
- `diff` of a document with itself in any order finds nothing; between two exports it names exactly
  the elements that a comparison of their entries finds.

TARVO_CASES and TARVO_SEED choose how many cases, and which; `scripts/soak backup` runs thousands.
"""

from __future__ import annotations

import hashlib
import json
import multiprocessing
import os
import random
import re
import shutil
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from contextlib import closing
from pathlib import Path

TESTS = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "compare")]

from cases import importable, make_device  # noqa: E402
from e2e import BACKUP_PROGRAM, DATABASES, PROGRAM, Device, Result, main, models  # noqa: E402
from mutations import Element, Mutation, parsed  # noqa: E402
from tracing import build_library, run  # noqa: E402

CASES = int(os.environ.get("TARVO_CASES", "40"))
SEED = os.environ.get("TARVO_SEED", "1")
DOCUMENT = "/tmp/document.xml"
OTHER = "/tmp/other.xml"
SI_FOLDER = "/tarvo/datosWeb/tablasSI"
STATE_CHANGED = "1"
STATE_TO_BE_REMOVED = "2"
REFUSED_BY_DIFF = rb"no 'configuration' element|more than 256 levels"

# What identifies an entry of a list; None: nothing does.
IDENTITIES = {
    "maintenances": None,
    "homeChannels": ("id",),
    "serviceEPGs": None,
    "audiosEPGs": None,
    "replacingEPGs": None,
    "dvbNetworks": ("id",),
    "diseqcs": ("id",),
    "scramblings": ("name",),
    "preferredLanguages": (),  # the entry's own text
    "modules": ("mac",),
    "inputs": ("inputId",),
    "outputs": ("outputId",),
    "services": ("outputId", "outputSid"),
    "pidOrders": ("languageCode", "streamId", "type"),
    "vsecureCAMList": ("serialNumber",),
}

# Which of the elements that hold others belong where.
PARTS = {
    "backup": ("configuration", "vsecureCAMList"),
    "vsecureCAMList": ("cam",),
    "configuration": (
        *("identification", "regional", "maintenances", "homeChannels", "serviceEPGs", "network"),
        *("dvbNetworks", "lnb", "diseqcs", "scramblings", "preferredLanguages", "modules"),
    ),
    "maintenances": ("maintenance",),
    "homeChannels": ("homechannel",),
    "serviceEPGs": ("serviceEPG",),
    "serviceEPG": ("satelliteEPG", "audiosEPGs", "replacingEPGs"),
    "audiosEPGs": ("audiosEPG",),
    "replacingEPGs": ("replacingEPG",),
    "dvbNetworks": ("dvbNetwork",),
    "diseqcs": ("diseqc",),
    "scramblings": ("scrambling",),
    "modules": ("module",),
    "module": ("inputs", "outputs", "services"),
    "inputs": ("input",),
    "outputs": ("output",),
    "services": ("service",),
    "service": ("pidOrders",),
    "pidOrders": ("pidOrder",),
}


class Wrong(Exception):
    """What does not hold."""


def same(what: str, expected: object, found: object) -> None:
    if expected != found:
        raise Wrong(f"{what}:\n  expected {expected!r:.3000}\n  found    {found!r:.3000}")


# --- The headend ---------------------------------------------------------------------------------


def snapshot(device: Device) -> dict[str, tuple]:
    """Every file and folder with its content, mode and times."""
    found = {}
    for path in device.root.rglob("*"):
        # The simulator's own log, and the time of the folder where private copies come and go.
        if path.parent == device.root and path.name != "tarvo":
            continue
        status = path.lstat()
        content = hashlib.sha1(path.read_bytes()).digest() if path.is_file() else None
        found[str(path)] = (status.st_mode, status.st_mtime_ns, status.st_ctime_ns, content)
    return found


Rows = dict[str, dict[str, dict[str, str]]]


def rows_of(device: Device) -> Rows:
    """{table: {row id: {column: text}}} of what an import changes."""
    tables: Rows = {}
    for name in ("config_global", "vsec_global"):
        with closing(device.database(DATABASES[name])) as database:
            database.text_factory = lambda text: text.decode("utf-8", "replace")
            names = database.execute(
                "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%'"
            )
            for (table,) in names.fetchall():
                columns = [c[1] for c in database.execute(f'PRAGMA table_info("{table}")')]
                texts = ", ".join(f'CAST("{column}" AS TEXT)' for column in columns)
                tables[table] = {
                    str(row[0]): dict(zip(columns, row[1:]))
                    for row in database.execute(f'SELECT rowid, {texts} FROM "{table}"')
                }
    return tables


def applied(rows: Rows, changes: list[dict]) -> Rows:
    """The rows after changes that were foretold."""
    for change in changes:
        table = rows[change["table"]]
        cells = {cell["column"]: cell for cell in change["cells"]}
        if change["change"] == "added":
            same("an added row is new", False, change["row"] in table)
            table[change["row"]] = {}
        row = table[change["row"]]
        if change["change"] != "added":
            same("old cells", {c: row[c] for c in cells}, {c: x["old"] for c, x in cells.items()})
        row.update({column: cell["new"] for column, cell in cells.items()})
        if change["change"] == "removed":
            del table[change["row"]]
    return rows


def si_tables(device: Device) -> dict[str, bytes]:
    return {path.name: path.read_bytes() for path in device.path(SI_FOLDER).iterdir()}


def renamed(files: dict[str, bytes], renames: list[dict]) -> dict[str, bytes]:
    for rename in renames:
        old, new = (Path(rename[which]).name for which in ("from", "to"))
        files[new] = files.pop(old)
    return files


def marks_between(before: Rows, after: Rows) -> list[tuple]:
    """(table, row, column) of what the headend's software is told, by the names of its columns."""
    found = []
    for table, rows in after.items():
        if table.startswith("Service_EPG"):
            continue
        for key, row in rows.items():
            for column, value in row.items():
                old = before[table].get(key, {}).get(column)
                wanted = {
                    "estado": STATE_CHANGED,
                    "estadoservicio": STATE_CHANGED,
                    "estadopid": STATE_CHANGED,
                    "estadoborrado": STATE_TO_BE_REMOVED,
                }.get(column.lower())
                if wanted is not None and value == wanted and value != old:
                    found.append((table, key, column))
    return sorted(found)


# --- Documents -----------------------------------------------------------------------------------


def shuffled(element: Element, choices: random.Random) -> None:
    """Changes the order of what has none: the entries of lists, and members of other names.

    A module's RF output mode counts for the outputs behind it, and stays in front of them."""
    if element.name in IDENTITIES:
        choices.shuffle(element.children)
    else:
        by_name: dict[str, list[Element]] = {}
        for child in element.children:
            name = child.name.lower()
            name = "outputs" if name == "modosalidarf" else name
            by_name.setdefault(name, []).append(child)
        order = [name for name, of_name in by_name.items() for _ in of_name]
        choices.shuffle(order)
        element.children = [by_name[name].pop(0) for name in order]
    for child in element.children:
        # Below an element that is not where it belongs, nothing is known to be a list.
        if child.name in PARTS.get(element.name, ()):
            shuffled(child, choices)


def written(root: Element) -> bytes:
    out = ['<?xml version="1.0" encoding="utf-8"?>\n']
    root.write(out, "\n")
    return "".join(out).encode("utf-8", "surrogateescape")


def identity(list_name: str, entry: xml.etree.ElementTree.Element) -> str | None:
    names = IDENTITIES[list_name]
    if names is None:
        return None
    if not names:
        return entry.text or ""
    parts = [(name, entry.find(name)) for name in names]
    return ",".join(f"{name}={found.text or ''}" for name, found in parts if found is not None)


def comparable(one: list, other: list, name: str) -> bool:
    """Whether each entry of two lists has an identity of its own."""
    for entries in (one, other):
        keys = [identity(name, entry) for entry in entries]
        if None in keys or "" in keys or len(set(keys)) != len(keys):
            return False
    return True


def maybe_same(one: str, other: str) -> bool:
    """Whether an import may take two texts for the same number."""
    def number(text: str) -> int | None:
        match = re.fullmatch(r"\s*([+-]?\d+)?.*", text, re.DOTALL)
        starts = re.match(r"\s*([+-]?\d|$)", text)
        return int(match[1] or 0) if starts else None

    return number(one) is not None and number(one) == number(other)


def compared(one, other, path: str, found: dict[str, bool]) -> None:
    """The paths at which two exported elements differ, and whether they surely do; "?" ends what
    this comparison cannot tell."""
    if one.tag in IDENTITIES:
        if not comparable(list(one), list(other), one.tag):
            found[path + "?"] = False
            return
        keys = [{f"{path}/{e.tag}[{identity(one.tag, e)}]": e for e in side} for side in (one, other)]
    else:
        keys = [{}, {}]
        for side, entries in zip(keys, (one, other)):
            for child in entries:
                place = f"{path}/{child.tag}" if path else child.tag
                if place in side:  # several rows of a table: by order, which is not looked at here
                    found[path + "?"] = False
                    return
                side[place] = child
    for place in {**keys[0], **keys[1]}:
        left, right = (side.get(place) for side in keys)
        if left is None or right is None:
            found[place] = True
        elif len(left) or len(right):
            compared(left, right, place, found)
        elif (left.text or "") != (right.text or ""):
            found[place] = not maybe_same(left.text or "", right.text or "")


def check_paths(before: bytes, after: bytes, differences: list[dict]) -> None:
    if b"\r" in before + after:  # of which Python's parser makes line ends
        return
    try:
        trees = [xml.etree.ElementTree.fromstring(text) for text in (before, after)]
    except xml.etree.ElementTree.ParseError:  # a control character in a text
        return
    trees = [tree.find("configuration") if tree.tag == "backup" else tree for tree in trees]
    expected: dict[str, bool] = {}
    compared(*trees, "", expected)
    unknown = tuple(path[:-1] for path in expected if path.endswith("?"))

    def is_known(path: str) -> bool:
        return not path.startswith(unknown) and not path.startswith("vsecureCAMList")

    found = {each["path"] for each in differences if is_known(each["path"])}
    surely = {path for path, sure in expected.items() if sure and is_known(path)}
    possible = {path for path in expected if is_known(path)}
    same("differences that are named", [], sorted(surely - found))
    same("differences that are none", [], sorted(found - possible))


# --- A case --------------------------------------------------------------------------------------


class Case:
    def __init__(self, number: int, folder: Path, library: Path) -> None:
        self.random = random.Random(f"{SEED} {number}")
        self.library = library
        self.folder = folder / f"case-{number}"
        model = self.random.choice(models())
        seed = None if self.random.random() < 0.15 else self.random.randrange(1 << 30)
        self.device = make_device(model, seed, self.folder)
        for row in rows_of(self.device)["RedesCabecera"].values():
            for kind in self.random.choice((("NIT",), ("NIT", "SDT"), ("SDT",), ())):
                name = f"{kind}_table_{row['NID'] or ''}"
                self.device.path(f"{SI_FOLDER}/{name}").write_text(f"{number} {name}")
        self.label = f"case {number} of seed {SEED}: {model} headend {seed}"

    def backup(self, *args: str) -> Result:
        return self.device.run(BACKUP_PROGRAM, args, env={"TZ": "UTC"}, timeout=240)

    def json(self, *args: str) -> object:
        result = self.backup(*args)
        same(f"what {args[0]} complains of", b"", result.stderr)
        return json.loads(result.stdout)

    def export(self) -> bytes:
        result = self.device.run(PROGRAM, [], env={"TZ": "UTC"}, timeout=240)
        return result.stdout if result.status == 0 else b""

    def document(self) -> bytes:
        text = importable(self.device, self.export())
        if self.random.random() < 0.25:
            other = make_device(self.device.model, self.random.randrange(1 << 30), self.folder / "o")
            result = other.run(PROGRAM, [], env={"TZ": "UTC"}, timeout=240)
            text = importable(other, result.stdout)
            shutil.rmtree(self.folder / "o")
        mutation = Mutation(self.random)
        if self.random.random() < 0.15:
            text = mutation.other_modules(text, list(rows_of(self.device)["RedesModulos"]))
        amount = self.random.choices((0, 1, 2, 4, 10), (20, 35, 20, 15, 10))[0]
        text = mutation.changed(text, amount, bytes_too=self.random.random() < 0.05)
        self.label += "; " + ", ".join(mutation.notes)
        return text

    def check(self) -> None:
        text = self.document()
        self.device.path(DOCUMENT).write_bytes(text)
        plan = self.check_plan_leaves_the_device_alone()
        self.check_any_order(text)
        before, rows, files = self.export(), rows_of(self.device), si_tables(self.device)
        self.device.path("/tmp/ConfigurationXML.xml").unlink(missing_ok=True)
        events = run(self.device, self.library, PROGRAM, [DOCUMENT], "")
        if plan is None:
            if events[-1][1] == b"0":
                raise Wrong("tarvo-config takes what is not well-formed")
            return
        self.check_foretold(plan, rows, files, events)
        after = self.export()
        if before and after:
            self.check_changes(plan, before, after)

    def check_plan_leaves_the_device_alone(self) -> dict | None:
        before = snapshot(self.device)
        result = self.backup("plan", "--json", DOCUMENT)
        same("files", before, snapshot(self.device))
        same("log and scripts", ([], []), (result.syslog, result.actions))
        if result.status == 2:
            same("result", b"", result.stdout)
            return None
        same("what plan complains of", b"", result.stderr)
        plan = json.loads(result.stdout)
        nothing = not any(
            plan[k] for k in ("status", "errors", "changes", "rows", "scripts", "renames")
        )
        expected = 6 if plan["status"] else 0 if nothing and plan["changes"] is not None else 1
        same("status of plan", expected, result.status)
        return plan

    def check_any_order(self, text: bytes) -> None:
        try:
            root = parsed(text)
        except RecursionError:  # nested deeper than any program here reads
            return
        if root is None or not any(e.name == "configuration" for e in root.all()):
            return
        self.device.path(OTHER).write_bytes(written(root))
        shuffled(root, self.random)
        self.device.path(DOCUMENT + ".shuffled").write_bytes(written(root))
        result = self.backup("diff", "--state", OTHER, DOCUMENT + ".shuffled")
        if result.status == 2 and re.search(REFUSED_BY_DIFF, result.stderr):
            return
        same("a document against itself in another order", (0, b"", b""),
             (result.status, result.stdout, result.stderr))  # fmt: skip

    def check_foretold(self, plan: dict, rows: Rows, files: dict, events: list) -> None:
        status = events[-1][1]
        same("status", str(plan["status"]).encode(), status)
        scripts = [event[1].decode() for event in events if event[0] == b"system"]
        same("scripts", scripts, plan["scripts"])
        same("SI tables", si_tables(self.device), renamed(files, plan["renames"]))
        found = rows_of(self.device)
        marks = [(mark["table"], mark["row"], mark["cell"]["column"]) for mark in plan["marks"]]
        same("marks", marks_between(rows, found), sorted(marks))
        expected = applied(rows, plan["rows"])
        for table in found:
            same(f"rows of {table}", found[table], expected[table])

    def check_changes(self, plan: dict, before: bytes, after: bytes) -> None:
        self.device.path("/tmp/before.xml").write_bytes(before)
        self.device.path("/tmp/after.xml").write_bytes(after)
        if plan["changes"] is not None:
            found = self.json("diff", "--json", "/tmp/before.xml", "/tmp/after.xml")
            same("changes", found, plan["changes"])
        whole = self.json("diff", "--json", "--state", "/tmp/before.xml", "/tmp/after.xml")
        check_paths(before, after, whole)


def judged(work: tuple[int, Path, Path]) -> str | None:
    case = None
    try:
        case = Case(*work)
        case.check()
    except Exception as error:  # noqa: BLE001: a case that cannot be judged is a failure too
        label = f"case {work[0]} of seed {SEED}" if case is None else case.label
        return f"{label}\n{type(error).__name__}: {error}"
    finally:
        shutil.rmtree(work[1] / f"case-{work[0]}", ignore_errors=True)
    return None


class PropertiesTest(unittest.TestCase):
    maxDiff = None

    def test_what_plan_and_diff_say_holds(self) -> None:
        only = os.environ.get("TARVO_CASE")
        numbers = range(CASES) if only is None else [int(only)]
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        with tempfile.TemporaryDirectory(dir=memory, ignore_cleanup_errors=True) as name:
            folder = Path(name)
            library = build_library(folder)
            with multiprocessing.Pool(os.cpu_count()) as pool:
                work = [(number, folder, library) for number in numbers]
                wrong = [each for each in pool.imap_unordered(judged, work) if each is not None]
        self.assertEqual([], wrong[:20], "\n\n".join(wrong[:20]))


if __name__ == "__main__":
    main()
