"""tarvo-backup killed, or failed by the disk or by SQLite, at any step of any verb, or of the process
that undoes a restore that nobody confirms: the headend is as before or as after, a backup is whole
or not there, and nobody else can read a private copy.

TARVO_STEPS says how many steps of each run are tried; `scripts/soak backup` tries hundreds.
"""

import fcntl
import os
import random
import shutil
import stat
import sys
import tempfile
import unittest
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

TESTS = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(TESTS / "support"))

from e2e import BACKUP_PROGRAM, Device, Result, golden, installed, main, preloaded, tables  # noqa: E402

STEPS = int(os.environ.get("TARVO_STEPS", "12"))
SEED = os.environ.get("TARVO_SEED", "1")
MODEL = "QRA-310"
DOCUMENT = "/tmp/document.xml"
FOLDER = "/tarvo/backup"
SI_FOLDER = "/tarvo/datosWeb/tablasSI"
LIBRARY = "/tarvo/sim/steps.so"
COUNT = "/tarvo/sim/steps"
KILLED = 128 + 9
STATE = f"{FOLDER}/.restore/state"
# A restore whose time to be confirmed is over at once. The process that waits for that has the pipe
# open until it ends.
WATCHED = f"""
{{
    LD_PRELOAD={LIBRARY} "$PROGRAM" restore --yes --confirm 9 {DOCUMENT} 9>&1 >/tmp/restore.out 2>&1
    sed -i 's/^deadline .*/deadline 0/' {STATE}
}} | cat
"""


def changed(text: bytes) -> bytes:
    for old, new in (
        (b"<gateway>192.168.10.1<", b"<gateway>10.9.9.9<"),
        (b"<nid>12345<", b"<nid>4242<"),
        (b"<country>ES<", b"<country>PT<"),
    ):
        text = text.replace(old, new, 1)
    return text


def contents(device: Device) -> dict[str, object]:
    """What a restore changes, but for what scripts write."""
    return {
        **tables(device),
        "SI tables": {p.name: p.read_bytes() for p in device.path(SI_FOLDER).iterdir()},
    }


@dataclass
class Verb:
    words: tuple[str, ...]
    before: tuple[str, ...] = ()  # run without a fault, to come to where the verb begins


VERBS = {
    "save": Verb(("save", "--keep", "1")),
    "plan": Verb(("plan", DOCUMENT)),
    "restore": Verb(("restore", "--yes", DOCUMENT)),
    "restore --confirm": Verb(("restore", "--yes", "--confirm", "9", DOCUMENT)),
    "undo": Verb(("undo",), ("restore", "--yes", "--confirm", "9", DOCUMENT)),
    "confirm": Verb(("confirm",), ("restore", "--yes", "--confirm", "9", DOCUMENT)),
}


class FaultsTest(unittest.TestCase):
    maxDiff = 2000

    def setUp(self) -> None:
        memory = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        folder = tempfile.TemporaryDirectory(
            prefix="faults-", dir=memory, ignore_cleanup_errors=True
        )
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        device = self.made("template")
        self.before = contents(device)
        self.assertEqual(0, self.run_verb(device, VERBS["restore"].words).status)
        self.after = contents(device)
        self.assertNotEqual(self.before, self.after)
        export = device.run(BACKUP_PROGRAM, ["save", "--output", "-"], env={"TZ": "UTC"})
        self.documents = (golden(MODEL), export.stdout)

    def made(self, name: str) -> Device:
        device = Device.create(MODEL, self.folder / name)
        device.path(DOCUMENT).write_bytes(changed(golden(MODEL)))
        preloaded(device, "steps")
        return device

    def run_verb(self, device: Device, words: tuple[str, ...], **steps: object) -> Result:
        environment = {"TZ": "UTC"}
        if steps:
            environment |= {"LD_PRELOAD": LIBRARY, **self.variables(steps)}
        return device.run(BACKUP_PROGRAM, words, env=environment, timeout=240)

    def variables(self, steps: dict[str, object]) -> dict[str, str]:
        values = {f"STEP_{name.upper()}": str(value) for name, value in steps.items()}
        return {"STEP_COUNT": COUNT, **values}

    def run_watched(self, device: Device, **steps: object) -> None:
        """A restore, until the process that watches over it has ended."""
        environment = {"TZ": "UTC", "PROGRAM": installed(device), **self.variables(steps)}
        device.run("sh", ["-c", WATCHED], env={**environment, "STEP_FORKED": "1"}, timeout=240)
        # What is killed closes one file after the other.
        with device.path(f"{FOLDER}/.restore/lock").open() as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)

    def prepared(self, name: str, verb: Verb) -> Device:
        device = self.made(name)
        if verb.before:
            self.assertEqual(0, self.run_verb(device, verb.before).status)
        return device

    def assertPrivate(self, device: Device) -> None:
        private = [*device.path("/tmp").glob("tarvo-backup.*"), *device.path(FOLDER).glob("*")]
        for path in [*private, device.path(FOLDER)]:
            if path.exists():
                self.assertEqual(0, stat.S_IMODE(path.stat().st_mode) & 0o077, path)

    def assertBackupsAreWhole(self, device: Device) -> None:
        for path in device.path(FOLDER).glob("*.xml"):
            self.assertIn(path.read_bytes(), self.documents, path)

    def check(self, name: str, fault: str, step: int) -> None:
        verb = VERBS[name]
        device = self.prepared(f"{name}-{fault}-{step}", verb)
        result = self.run_verb(device, verb.words, at=step, fault=fault)
        if fault == "kill":
            self.assertEqual(KILLED, result.status)
        else:
            self.assertNotIn(result.status, (KILLED, 128 + 6, 128 + 11), result.stderr)
            self.assertEqual([], list(device.path("/tmp").glob("tarvo-backup.*")))
        self.assertPrivate(device)
        self.assertBackupsAreWhole(device)
        # As a start of the headend does.
        start = self.run_verb(device, ("undo", "--abandoned"))
        self.assertEqual((0, b""), (start.status, start.stderr))
        found = contents(device)
        if name in ("save", "plan"):
            self.assertEqual(self.before, found)
        elif name == "confirm":
            self.assertEqual(self.after, found)
        else:
            self.assertIn(found, (self.before, self.after))
        if fault != "kill" and result.status == 0:
            self.assertEqual(found, self.before if name in ("save", "plan", "undo") else self.after)
        self.assertNextRunsWork(device)

    def assertNextRunsWork(self, device: Device) -> None:
        """They clear up, too."""
        self.assertIn(self.run_verb(device, ("plan", DOCUMENT)).status, (0, 1))
        self.assertEqual([], list(device.path("/tmp").glob("tarvo-backup.*")))
        self.assertEqual(0, self.run_verb(device, ("save",)).status)
        self.assertBackupsAreWhole(device)
        shutil.rmtree(device.root)

    def check_watcher(self, name: str, fault: str, step: int) -> None:
        device = self.made(f"{name}-{fault}-{step}")
        self.run_watched(device, at=step, fault=fault)
        self.assertIn(b"\nRestored.\n", device.path("/tmp/restore.out").read_bytes())
        self.assertPrivate(device)
        self.assertBackupsAreWhole(device)
        if fault == "fail":
            # It has tried again.
            self.assertFalse(device.path(STATE).exists())
        next_one = self.run_verb(device, ("confirm",))
        if fault == "kill" or next_one.status != 5:
            self.assertEqual(6, next_one.status, next_one.stderr)
            self.assertIn(b"too late: the restore of", next_one.stderr)
        else:
            self.assertEqual(b"tarvo-backup: there is no restore to confirm\n", next_one.stderr)
        self.assertFalse(device.path(STATE).exists())
        self.assertEqual(self.before, contents(device))
        self.assertNextRunsWork(device)

    def test_watcher(self) -> None:
        device = self.made("watcher-count")
        self.run_watched(device, at=0)
        self.assertEqual(self.before, contents(device))
        self.each_of("watcher", int(device.path(COUNT).read_text()), self.check_watcher)

    def each_step(self, name: str) -> None:
        verb = VERBS[name]
        device = self.prepared(f"{name}-count", verb)
        self.run_verb(device, verb.words, at=0)
        self.each_of(name, int(device.path(COUNT).read_text()), self.check)

    def each_of(self, name: str, count: int, check: Callable[[str, str, int], None]) -> None:
        choices = random.Random(f"{SEED} {name}")
        cases: list[tuple[str, int]] = []
        for fault in ("kill", "fail", "full"):
            steps = range(1, count + 1)
            cases += [(fault, s) for s in choices.sample(steps, min(STEPS, count))]
        with ThreadPoolExecutor(os.cpu_count()) as pool:
            done = [(case, pool.submit(check, name, *case)) for case in cases]
            for (fault, step), outcome in done:
                with self.subTest(f"{name}: {fault} at {step} of {count}"):
                    outcome.result()


def _test_of(name: str) -> Callable[[FaultsTest], None]:
    return lambda self: self.each_step(name)


for _name in VERBS:
    setattr(FaultsTest, "test_" + _name.replace(" --", "_to_"), _test_of(_name))


if __name__ == "__main__":
    main()
