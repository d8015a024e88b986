"""The cases of a comparison: a device, a run mode, a document and faults, made up from a seed.

Ten cases in a row share a device: a plain export, a plain import of that export, and eight with
documents, faults or damage made up for them. A case is the same whatever else is run.
"""

from __future__ import annotations

import functools
import os
import random
import shutil
import sys
from collections.abc import Iterator
from contextlib import closing, suppress
from dataclasses import dataclass, field
from pathlib import Path

from damage import Damage
from mutations import Mutation
from tracing import DATABASES, HERE, Device, Event, Outcome, leftovers, run

sys.path.insert(0, str(HERE.parent / "support"))

from device import models  # noqa: E402
from headends import headend  # noqa: E402
from round_trip import with_input_types  # noqa: E402

CASES_PER_DEVICE = 10
OTHERS_PER_MODEL = 6
DOCUMENT = "/tmp/document.xml"
CONFIG_DB = DATABASES["config_global"]

# What may differ on purpose: a class and how it is told apart.
ALLOWANCES = {
    "output-files": "how /tmp/*ConfigurationXML.xml are written: directly, or beside and renamed,"
    " and whether /tmp/temp_tot_file_web is removed before it is written too",
    "busy-timeout": "how long SQLite is told to wait for a lock by itself",
    "wide-numbers": "cases with a number beyond 32 bits in the document or the databases",
    "deep-nesting": "cases with a document of deeply nested elements",
}

FAILURES = (
    *("1\tSQL logic error", "5\tdatabase is locked", "5\tdatabase is locked", "6\ttable is locked"),
    *("7\tout of memory", "8\tattempt to write a readonly database", "10\tdisk I/O error", "10\t"),
    *("11\tdatabase disk image is malformed", "13\tdatabase or disk is full", "19\t%s %n <&>"),
    *("21\tbad parameter or other API misuse", "26\tfile is not a database", "17\t", "5\t"),
)
TRANSACTION_WORDS = ("BEGIN", "COMMIT", "ROLLBACK", "vacuum")
# Those of one kind of statement are met by few cases, and those of one table by fewer.
STATEMENT_WORDS = ("SELECT", "INSERT", "UPDATE", "DELETE", "INSERT", "UPDATE", "DELETE")
TABLE_STATEMENTS = ("FROM {}", "INTO {}", "UPDATE {}", "DELETE FROM {}")
TABLES = (
    *("configuracionWebGlobal", "RedesModulos", "RedesCabecera", "VSecure", "EntradasGlobal"),
    *("NimGlobal", "NimCOFDMGlobal", "NimQAMGlobal", "SalidasLogicasGlobal", "RFOutGlobal"),
    *("ServiciosSalidaGlobal", "PIDsSalidaGlobal", "DiSEqCGlobal", "AudioLanguageListGlobal"),
    *("ScramblingGlobal", "ScramblingKeysGlobal", "MantenimientoHomeChannelsGlobal"),
    *("Service_EPG", "Service_EPG_Satellite", "Service_EPG_audios", "Service_EPG_replacing"),
    *("CAMInfoGlobal", "ModulosCabecera", "TempNIMGlobal", "TempNIMCOFDMGlobal"),
)
PIPE_TEXTS = ("NULL", "", "X", "X|OK|", "|OK|", "X|NOK|", "OK|OK|", "X |OK |", "X" * 200 + "|OK|")


@dataclass
class Settings:
    """What is the same for all cases."""

    old: str
    new: str
    library: Path
    folder: Path  # for passing files
    seed: str
    allow: frozenset[str] = frozenset()
    keep: Path | None = None
    old_plan: str = ""  # further faults for one side, by which the tool itself is tested
    new_plan: str = ""


@dataclass
class Case:
    number: int
    label: str
    document: bytes | None = None  # an export when there is none
    arguments: list[str] = field(default_factory=list)
    plan: list[str] = field(default_factory=list)
    zone: str = "UTC"
    tags: set[str] = field(default_factory=set)


@dataclass
class Verdict:
    number: int
    label: str
    difference: str = ""  # empty: none
    allowed: bool = False
    facts: list[str] = field(default_factory=list)  # for the summary


def _random(*words: object) -> random.Random:
    return random.Random(" ".join(map(str, words)))


def make_device(model: str, seed: int | None, folder: Path) -> Device:
    """The sample of a model, or a headend made up at random."""
    device = Device.create(model, folder)
    if seed is not None:
        for name, sql in headend(model, seed).items():
            with closing(device.database(DATABASES[name])) as database:
                database.executescript(f"PRAGMA synchronous = OFF; BEGIN; {sql} COMMIT;")
    return device


def copy_device(device: Device, folder: Path) -> Device:
    shutil.rmtree(folder, ignore_errors=True)
    return Device(shutil.copytree(device.root, folder, symlinks=True))


def importable(device: Device, text: bytes) -> bytes:
    """An import wants the types of the inputs, which the export of one model leaves out."""
    if device.model != "RNB-K408":
        return text
    sql = """SELECT coalesce(tipoEntrada, 0) FROM EntradasGlobal JOIN RedesModulos USING (MAC)
             ORDER BY idRedMod, idEntradasGlobal"""
    with closing(device.database(CONFIG_DB)) as database:
        types = [number for (number,) in database.execute(sql)]
    with suppress(ValueError):  # an input whose module is not there
        return with_input_types(text, types)
    return text


class Group:
    """The cases of one device."""

    def __init__(self, settings: Settings, number: int) -> None:
        self.settings = settings
        self.number = number
        rng = _random(settings.seed, "device", number)
        self.model = rng.choice(models())
        self.headend = None if rng.random() < 0.2 else rng.randrange(1 << 30)
        self.folder = settings.folder / f"group-{number}"
        self.device = make_device(self.model, self.headend, self.folder / "device")
        self.macs = self.all_macs()
        self.statements = {"export": 1, "import": 1}
        self.export = b""

    def all_macs(self) -> list[str]:
        with closing(self.device.database(CONFIG_DB)) as database:
            return [mac for (mac,) in database.execute("SELECT MAC FROM RedesModulos") if mac]

    def verdicts(self, numbers: set[int] | None) -> Iterator[Verdict]:
        """Of the cases with these numbers, or of all."""
        first = self.number * CASES_PER_DEVICE
        try:
            for index in range(CASES_PER_DEVICE):
                # The first two tell what the others are made from.
                if index < 2 or numbers is None or first + index in numbers:
                    verdict = self.verdict(first + index, index)
                    if numbers is None or first + index in numbers:
                        yield verdict
        finally:
            shutil.rmtree(self.folder, ignore_errors=True)

    def verdict(self, number: int, index: int) -> Verdict:
        old = copy_device(self.device, self.folder / "old")
        case = self.case(number, index, old)
        if case.document is not None:
            old.path(DOCUMENT).write_bytes(case.document)
        new = copy_device(old, self.folder / "new")
        if self.settings.keep is not None:
            copy_device(old, self.folder / "before")
        events = (
            self.events(old, case, self.settings.old, self.settings.old_plan),
            self.events(new, case, self.settings.new, self.settings.new_plan),
        )
        sides = [Outcome(*both) for both in zip(events, leftovers(old, new))]
        self.learn(index, sides[0])
        seen = [allowed(side, self.settings.allow) for side in sides]
        difference = first_difference(*seen)
        if difference and self.settings.keep is not None:
            self.keep(case, sides, difference)
        expected = bool(case.tags & self.settings.allow)
        return Verdict(number, case.label, difference, expected, facts(case, sides[0]))

    def events(self, device: Device, case: Case, program: str, more: str) -> list[Event]:
        plan = "\n".join([*case.plan, *([more] if more else [])])
        arguments = case.arguments
        return run(device, self.settings.library, program, arguments, plan, case.zone)

    def learn(self, index: int, side: Outcome) -> None:
        """What the group's further cases are made from."""
        if index == 0:
            self.export = importable(self.device, side.stdout)
            self.statements["export"] = max(1, side.statements)
        elif index == 1:
            self.statements["import"] = max(1, side.statements)

    # Making a case.

    def case(self, number: int, index: int, device: Device) -> Case:
        """A case; damages the device for it."""
        rng = _random(self.settings.seed, "case", number)
        made = self.model if self.headend is None else f"{self.model} headend {self.headend}"
        if index == 0:
            return Case(number, f"{made}, export")
        if index == 1:
            return Case(number, f"{made}, import of its export", self.export, [DOCUMENT])
        case = Case(number, f"{made}, export")
        case.zone = rng.choice(("UTC", "UTC", "Europe/Madrid", "America/New_York"))
        if rng.random() < 0.8:
            self.add_document(case, rng)
        faulty = case.document is None or rng.random() < 0.4
        if faulty and rng.random() < 0.75:
            self.add_faults(case, rng)
        elif faulty or rng.random() < 0.2:
            damage = Damage(device, rng)
            damage.some(rng.choice((1, 1, 2, 3)))
            case.tags |= damage.tags
            case.label += "; damage: " + ", ".join(damage.notes)
        if case.plan:
            case.label += "; faults: " + ", ".join(case.plan).replace("\t", " ")
        return case

    def add_document(self, case: Case, rng: random.Random) -> None:
        base = rng.choices(("its export", "another's export", "any export"), (6, 3, 1))[0]
        text = self.export
        if base == "another's export":
            text = others_export(self.settings, self.model, rng.randrange(OTHERS_PER_MODEL))
        elif base == "any export":
            text = others_export(self.settings, rng.choice(models()), 0)
        mutation = Mutation(rng)
        if rng.random() < 0.15:
            text = mutation.other_modules(text, self.macs)
        amount = rng.choices((0, 1, 2, 3, 6, 20), (15, 35, 20, 15, 10, 5))[0]
        text = mutation.changed(text, amount, bytes_too=rng.random() < 0.1)
        case.document = text
        case.arguments = rng.choices(
            ([DOCUMENT], [DOCUMENT, "more"], ["/tmp/nothing.xml"], ["/tmp"], [""]), (96, 1, 1, 1, 1)
        )[0]
        case.tags |= mutation.tags
        label = case.label.removesuffix("export")
        case.label = f"{label}import of {base}; changes: {', '.join(mutation.notes) or 'none'}"
        if case.arguments != [DOCUMENT]:
            case.label += f"; arguments: {case.arguments}"

    def add_faults(self, case: Case, rng: random.Random) -> None:
        count = self.statements["export" if case.document is None else "import"]
        kinds = (self.statement, self.text, self.opening, self.process, self.lock, self.kill)
        for _ in range(rng.choice((1, 1, 1, 2, 3))):
            kind = rng.choices(kinds, (5, 9, 2, 3, 2, 2))[0]
            case.plan.append("\t".join(map(str, kind(rng, count))))

    def times(self, rng: random.Random) -> int:
        return rng.choice((1, 1, 2, 2, 3, 3, 4, 6, 9, 10, 30, 1000))

    def statement(self, rng: random.Random, count: int) -> list[object]:
        return ["statement", rng.randint(1, count + 3), self.times(rng), rng.choice(FAILURES)]

    def text(self, rng: random.Random, count: int) -> list[object]:
        first = rng.choice((1, 1, 1, 2, 3, 5, 10))
        text = rng.choice((*TRANSACTION_WORDS, *STATEMENT_WORDS, *TABLE_STATEMENTS))
        text = text.format(rng.choice(TABLES))
        return ["text", first, self.times(rng), rng.choice(FAILURES), text]

    def opening(self, rng: random.Random, count: int) -> list[object]:
        kind = rng.choice(("open", "openDb"))
        return [kind, rng.randint(1, 6), self.times(rng), rng.choice((1, 7, 14, 14, 10))]

    def process(self, rng: random.Random, count: int) -> list[object]:
        status = rng.choice((0, 1, 256, 256, 32512, 65280, -1, 9))
        if rng.random() < 0.5:
            return ["system", rng.choice((1, 1, 2)), self.times(rng), status]
        return ["popen", rng.randint(1, 4), rng.choice((1, 2, 9)), status, rng.choice(PIPE_TEXTS)]

    def lock(self, rng: random.Random, count: int) -> list[object]:
        how = rng.choice(("EXCLUSIVE", "IMMEDIATE", "SHARED"))
        path = rng.choices((CONFIG_DB, *DATABASES.values()), (4, 1, 1, 1, 1))[0]
        return ["lock", rng.randint(1, count + 3), self.times(rng), how, path]

    def kill(self, rng: random.Random, count: int) -> list[object]:
        return ["kill", rng.randint(1, count + 3)]

    def keep(self, case: Case, sides: list[Outcome], difference: str) -> None:
        """All that is known of a case that differs: traces, and the device as it was before."""
        folder = self.settings.keep / f"case-{case.number}"
        shutil.rmtree(folder, ignore_errors=True)
        folder.mkdir(parents=True)
        (folder / "about.txt").write_text(
            f"{case.label}\narguments: {case.arguments}\nTZ={case.zone}\n\n{difference}\n",
            errors="backslashreplace",
        )
        (folder / "plan").write_text("\n".join(case.plan))
        for name, side in zip(("old", "new"), sides):
            lines = [shown(event) for event in side.events]
            (folder / f"{name}.trace").write_text("\n".join(lines) + "\n")
            shutil.copytree(self.folder / name, folder / name, symlinks=True)
        shutil.copytree(self.folder / "before", folder / "before", symlinks=True)


@functools.lru_cache(maxsize=None)
def _others_export(program: str, library: Path, folder: Path, model: str, seed: int) -> bytes:
    place = folder / f"other-{os.getpid()}"
    device = make_device(model, seed if seed > 0 else None, place)
    export = importable(device, Outcome(run(device, library, program, [], ""), {}).stdout)
    shutil.rmtree(place)
    return export


def others_export(settings: Settings, model: str, seed: int) -> bytes:
    return _others_export(settings.old, settings.library, settings.folder, model, seed)


# --- Comparing -----------------------------------------------------------------------------------


def allowed(side: Outcome, allow: frozenset[str]) -> Outcome:
    """The outcome without what may differ."""
    if "busy-timeout" in allow:
        side = Outcome([event for event in side.events if event[0] != b"busy_timeout"], side.left)
    return without_output_files(side) if "output-files" in allow else side


def without_output_files(side: Outcome) -> Outcome:
    """The outcome without how the output files came to be, but with what is in them."""

    def passing(path: str) -> bool:
        folder, _, name = path.rpartition("/")
        return folder == "/tmp" and "ConfigurationXML.xml" in name

    def of_output(event: Event) -> bool:
        if event[0] != b"file":
            return False
        return passing(event[2].decode("utf-8", "replace")) or event[1:3] in (
            (b"sync", b"/tmp"),
            (b"remove", b"/tmp/temp_tot_file_web"),
        )

    results = ("/tmp/ConfigurationXML.xml", "/tmp/Errors_ConfigurationXML.xml")
    return Outcome(
        [event for event in side.events if not of_output(event)],
        {path: what for path, what in side.left.items() if path in results or not passing(path)},
    )


def shown(event: Event) -> str:
    fields = (repr(field.decode("utf-8", "backslashreplace"))[1:-1] for field in event[1:])
    return " | ".join((event[0].decode(), *fields))


def first_difference(old: Outcome, new: Outcome) -> str:
    """Where two outcomes part, with what was last the same; empty when they do not."""
    lines: list[str] = []
    if old.events != new.events:
        pairs = enumerate(zip(old.events, new.events))
        shorter = min(len(old.events), len(new.events))
        at = next((number for number, (one, other) in pairs if one != other), shorter)
        lines += ["  same  " + _short(event) for event in old.events[max(0, at - 6) : at]]
        one, other = old.events[at : at + 1], new.events[at : at + 1]
        if one and other and one[0][0] == other[0][0]:
            one, other = _around(one[0], other[0])
        lines += ["  old   " + _short(event) for event in one + old.events[at + 1 : at + 4]]
        lines += ["  new   " + _short(event) for event in other + new.events[at + 1 : at + 4]]
    for name in sorted(old.left.keys() | new.left.keys()):
        one, other = old.left.get(name), new.left.get(name)
        if one != other:
            lines.append(f"  left   {name}")
            if isinstance(one, list) and isinstance(other, list):
                lines += [f"    old   {row}" for row in one if row not in other][:5]
                lines += [f"    new   {row}" for row in other if row not in one][:5]
            else:
                lines += [f"    old   {_kind(one)}", f"    new   {_kind(other)}"]
    return "\n".join(lines)


def _kind(what: object) -> str:
    return f"{len(what) - 1} rows" if isinstance(what, list) else str(what or "not there")


def _around(one: Event, other: Event) -> tuple[list[Event], list[Event]]:
    """Two events of a kind, long fields cut to where they part."""

    def cut(field: bytes, start: int) -> bytes:
        return b"..." + field[start:] if start > 0 else field

    starts = []
    for left, right in zip(one[1:], other[1:]):
        pairs = enumerate(zip(left, right))
        parting = next((i for i, (a, b) in pairs if a != b), min(len(left), len(right)))
        starts.append(max(0, parting - 60) if left != right else 0)
    starts += [0] * (max(len(one), len(other)) - 1 - len(starts))
    both = [
        (event[0], *(cut(field, start) for field, start in zip(event[1:], starts)))
        for event in (one, other)
    ]
    return [both[0]], [both[1]]


def _short(event: Event) -> str:
    text = shown(event)
    return text if len(text) <= 220 else text[:200] + f"... ({len(text)} characters)"


def facts(case: Case, side: Outcome) -> list[str]:
    """What a summary counts, to see that the cases reach what they should."""
    mode = "export" if case.document is None else "import"
    found = [f"{mode}s", f"{mode} status {side.status}"]
    if any(b"fault" in event for event in side.events):
        found.append("faults met")
    found += sorted(case.tags)
    return found
