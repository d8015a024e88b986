"""A disk without space: nothing is stored by halves, and what was there stays."""

import subprocess
import sys
import time
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    DATABASES,
    DOCUMENT_FILE,
    OUTPUT_FILE,
    PROGRAM,
    Device,
    EndToEndTest,
    document,
    edited,
    golden,
    main,
    tables,
)

MODEL = "QRA-310"
DISK_KB = 4096
FILLER = "filler"


def changed_document() -> bytes:
    """Changes in the first section and in the last, and one for every action of this model. The
    tables between them are deleted and filled anew, which takes more space than the change."""
    text = edited(golden(MODEL), "<location>Málaga", "<location>Sevilla")
    text = edited(text, "<timezone>Europe/Madrid<", "<timezone>Europe/Paris<")
    text = edited(text, "<ip>192.168.10.21<", "<ip>192.168.10.22<")
    return edited(text, "<inputName>Soft Radio<", "<inputName>Loud Radio<")


ACTIONS = ["WAN_from_DB.sh", "get_time_offsets.sh", "S60crond"]


class FullDiskTest(EndToEndTest):
    def disk(self, device: Device, folder: str, free_kb: int) -> Path:
        """Puts a folder of the device on a disk of its own with so much space. Returns the file
        that takes the rest."""
        place = device.path(folder)
        files = {path: path.read_bytes() for path in place.iterdir()}
        mount = ["mount", "-t", "tmpfs", "-o", f"size={DISK_KB}k", "tarvo-full-disk", str(place)]
        mounted = subprocess.run(mount, capture_output=True, text=True)
        if mounted.returncode != 0:
            self.skipTest(f"no disk can be mounted here: {mounted.stderr.strip()}")
        self.addCleanup(subprocess.run, ["umount", "--lazy", str(place)], check=True)
        for path, content in files.items():
            path.write_bytes(content)
        filler = place / FILLER
        with filler.open("wb", buffering=0) as file:
            block = bytes(1024)
            try:
                while True:
                    file.write(block)
            except OSError:
                file.truncate(file.tell() - free_kb * 1024)
        return filler

    def a_device(self, journal_mode: str) -> Device:
        device = self.device(MODEL)
        for path in DATABASES.values():
            with closing(device.database(path)) as database:
                database.execute(f"PRAGMA journal_mode = {journal_mode}")
        return device

    def assertWhole(self, device: Device) -> None:
        for path in DATABASES.values():
            self.assertEqual([("ok",)], self.query(device, "PRAGMA integrity_check", path), path)

    def imported(self, device: Device) -> dict:
        result = self.load(device, changed_document())
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(ACTIONS, [action.split()[0] for action in result.actions])
        return tables(device)

    def nothing_is_stored(self, free_kb: int, journal_mode: str) -> None:
        device = self.a_device(journal_mode)
        before = tables(device)
        filler = self.disk(device, "/tarvo/DB", free_kb)
        result = self.load(device, changed_document())
        self.assertEqual((3, []), (result.status, result.actions))
        filler.unlink()
        self.assertWhole(device)
        self.assertTables(before, tables(device))
        self.assertTables(self.imported(self.device(MODEL)), self.imported(device))

    def test_databases_without_space_stay_as_they_were(self) -> None:
        self.each(
            self.nothing_is_stored,
            [(kb, mode) for mode in ("DELETE", "WAL") for kb in (0, 8, 40)],
        )

    def all_is_stored(self, free_kb: int, journal_mode: str) -> None:
        device = self.a_device(journal_mode)
        filler = self.disk(device, "/tarvo/DB", free_kb)
        device.path(DOCUMENT_FILE).write_bytes(changed_document())
        running = device.start(PROGRAM, [DOCUMENT_FILE], env={"TZ": "UTC"})
        running.process.stderr.readline()  # a statement has failed, and is tried again
        time.sleep(0.5)
        filler.unlink()
        result = running.wait(240)
        self.assertEqual(0, result.status)
        self.assertEqual(ACTIONS, [action.split()[0] for action in result.actions])
        self.assertWhole(device)
        self.assertTables(self.imported(self.device(MODEL)), tables(device))

    def test_space_that_comes_back_during_an_import_stores_all_of_it_once(self) -> None:
        self.each(
            self.all_is_stored, [(kb, mode) for mode in ("DELETE", "WAL") for kb in (0, 8, 40)]
        )

    def test_backup_without_space_leaves_the_one_before(self) -> None:
        device = self.device(MODEL)
        device.path(OUTPUT_FILE).write_text("of an earlier export")
        self.disk(device, "/tmp", 20)
        self.assertRun(
            self.export(device),
            1,
            stdout=golden(MODEL) + b"\n",
            stderr=b"Unable to create ConfigurationXML file\n",
        )
        self.assertEqual("of an earlier export", device.path(OUTPUT_FILE).read_text())
        names = {path.name for path in device.path("/tmp").iterdir()}
        self.assertEqual({FILLER, Path(OUTPUT_FILE).name, "temp_global.sqlite"}, names)


class LimitedFileTest(EndToEndTest):
    """Files that may grow to 2 kB."""

    LIMITED = "ulimit -f 4; exec"

    def test_import_that_may_not_write_changes_nothing(self) -> None:
        device = self.device(MODEL)
        before = tables(device)
        device.path(DOCUMENT_FILE).write_bytes(document("<network><ip>1.2.3.4</ip></network>"))
        result = self.run_after(self.LIMITED, device, DOCUMENT_FILE)
        said = b"disk I/O error: File too large\n" * 3 + b"Error: 102\n"
        self.assertRun(result, 3, stderr=said * 3)
        self.assertTables(before, tables(device))

    def test_backup_that_would_be_too_large_leaves_the_one_before(self) -> None:
        device = self.device(MODEL)
        device.path(OUTPUT_FILE).write_text("of an earlier export")
        self.assertRun(
            self.run_after(self.LIMITED, device),
            1,
            stdout=golden(MODEL) + b"\n",
            stderr=b"Unable to create ConfigurationXML file\n",
        )
        self.assertEqual("of an earlier export", device.path(OUTPUT_FILE).read_text())


if __name__ == "__main__":
    main()
