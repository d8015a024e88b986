"""tarvo-backup where one certain call of the system fails, or another program comes between."""

import json
import os
import re
import sys
from collections.abc import Callable
from fcntl import LOCK_EX, flock
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    BACKUP_PROGRAM,
    CONFIG_DB,
    STATE_DB,
    Device,
    EndToEndTest,
    Result,
    golden,
    installed,
    leave_half_written,
    main,
    preloaded,
    tables,
)

MODEL = "QRA-310"
DOCUMENT = "/tmp/document.xml"
FOLDER = "/tarvo/backup"
STATE = f"{FOLDER}/.restore/state"
SI_FOLDER = "/tarvo/datosWeb/tablasSI"
FULL = "No space left on device"


def contents(device: Device) -> dict[str, object]:
    """What a restore changes, but for what scripts write."""
    files = {p.name: p.read_bytes() for p in device.path(SI_FOLDER).iterdir()}
    return {**tables(device), "SI tables": files}


class FailingCallsTest(EndToEndTest):
    def made(self) -> Device:
        device = self.device(MODEL)
        text = re.sub(rb"<gateway>[^<]*", b"<gateway>10.9.9.9", golden(MODEL))
        text = re.sub(rb"<nid>[^<]*", b"<nid>4242", text, count=1)
        device.path(DOCUMENT).write_bytes(text)
        return device

    def backup(self, device: Device, *words: str, env: dict[str, str] | None = None) -> Result:
        return device.run(BACKUP_PROGRAM, words, env={"TZ": "UTC", **(env or {})}, timeout=240)

    def failing(
        self, device: Device, name: str, path: str, *words: str, fault: str = "fail"
    ) -> Result:
        """The first call of a function whose name and path are like these fails."""
        env = {"LD_PRELOAD": preloaded(device, "steps"), "STEP_AT": "1", "STEP_FAULT": fault}
        paths = {"STEP_PATH": path} if path else {}
        return self.backup(device, *words, env={**env, "STEP_NAME": name, **paths})

    def beside(self, device: Device, what: str, path: str, *words: str) -> Result:
        env = {"LD_PRELOAD": preloaded(device, "others"), what: path}
        return self.backup(device, *words, env=env)

    def restored(self, device: Device) -> None:
        result = self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.assertEqual((0, b""), (result.status, result.stderr))

    def assertFails(self, result: Result, status: int, message: str) -> None:
        self.assertEqual(
            (status, f"tarvo-backup: {message}\n"), (result.status, result.stderr.decode())
        )

    def private(self, device: Device) -> list[Path]:
        return list(device.path("/tmp").glob("tarvo-backup.*"))

    # Private copies.

    def test_without_a_private_folder_nothing_is_done(self) -> None:
        device = self.made()
        result = self.failing(device, "mkdtemp", "", "save")
        self.assertFails(result, 4, f"/tmp: cannot make a folder: {FULL}")

    def test_without_a_private_copy_nothing_is_done(self) -> None:
        device = self.made()
        result = self.failing(device, "open", "/tmp/tarvo-backup.", "save")
        self.assertNoRoom(result, "config_global.sqlite: unable to open database file")
        self.assertEqual([], self.private(device))

    def assertNoRoom(self, result: Result, message: str) -> None:
        """Status 4, and a message that names the place of the private copies."""
        self.assertEqual((4, b""), (result.status, result.stdout))
        self.assertRegex(
            result.stderr.decode(), rf"^tarvo-backup: /tmp/tarvo-backup\.\w+(/|: ){message}\n$"
        )

    def test_a_full_disk_is_told_of_the_private_copy_and_not_of_the_database(self) -> None:
        full = "config_global.sqlite: database or disk is full"
        for words in (["save"], ["plan", DOCUMENT], ["restore", "--yes", DOCUMENT]):
            device = self.made()
            before = contents(device)
            result = self.failing(device, "pwrite64", "", *words, fault="full")
            self.assertNoRoom(result, full)
            self.assertEqual([], self.private(device))
            self.assertEqual(before, contents(device))

    def test_a_backup_that_cannot_be_tried_for_lack_of_room_is_kept(self) -> None:
        device = self.made()
        steps = {"STEP_NAME": "pwrite64", "STEP_COUNT": "/tarvo/sim/steps"}
        env = {"LD_PRELOAD": preloaded(device, "steps"), **steps}
        self.assertEqual(0, self.backup(device, "save", "--output", "/tmp/1.xml", env=env).status)
        last = {"STEP_AT": device.path("/tarvo/sim/steps").read_text().strip()}
        fault = {**last, "STEP_FAULT": "fail"}
        words = ("save", "--json", "--output", "/tmp/2.xml")
        result = self.backup(device, *words, env={**env, **fault})
        self.assertEqual(0, result.status)
        saved = json.loads(result.stdout)
        self.assertEqual([], saved["refusals"])
        self.assertRegex(
            saved["notTried"], r"^/tmp/tarvo-backup\.\w+: database or disk is full$"
        )
        self.assertRegex(
            result.stderr.decode(),
            r"^tarvo-backup: warning: whether this headend would take the backup back cannot be"
            r" tried: /tmp/tarvo-backup\.\w+: database or disk is full\n$",
        )
        self.assertEqual(golden(MODEL), device.path("/tmp/2.xml").read_bytes())

    def test_a_file_that_may_not_grow_is_told_of_the_private_copy(self) -> None:
        device = self.made()
        environment = {"TZ": "UTC", "PROGRAM": installed(device)}
        result = device.run("sh", ["-c", 'ulimit -f 4; exec "$PROGRAM" save'], env=environment)
        self.assertNoRoom(result, "config_global.sqlite: disk I/O error")

    def is_ended(self, device: Device, at: Callable[[int], list[int]]) -> None:
        """The disk of the copies is full at some of the writes of a plan; `at` gets their number."""
        steps = {"STEP_NAME": "pwrite64", "STEP_COUNT": "/tarvo/sim/steps"}
        env = {"LD_PRELOAD": preloaded(device, "steps"), **steps}
        self.assertEqual(1, self.backup(device, "plan", DOCUMENT, env=env).status)
        for step in at(int(device.path("/tarvo/sim/steps").read_text())):
            fault = {"STEP_AT": str(step), "STEP_FAULT": "full"}
            result = self.backup(device, "plan", DOCUMENT, env={**env, **fault})
            self.assertNoRoom(result, "database or disk is full")

    def test_a_disk_that_is_full_in_the_midst_of_a_plan_ends_it(self) -> None:
        self.is_ended(self.made(), lambda number: [number // 2, number * 3 // 4, number])

    def test_a_disk_that_is_full_when_a_planned_cam_list_is_stored_ends_the_plan(self) -> None:
        device = self.device("RNB-K408")
        [cams] = re.findall(rb"<vsecureCAMList>.*</vsecureCAMList>", golden("RNB-K408"), re.DOTALL)
        device.path(DOCUMENT).write_bytes(b"<backup><configuration/>" + cams + b"</backup>")
        self.is_ended(device, lambda number: [number])

    def test_folders_of_others_and_in_use_are_not_taken_for_left_ones(self) -> None:
        device = self.made()
        for name in ("others", "used", "left"):
            device.path(f"/tmp/tarvo-backup.{name}").mkdir()
        device.path("/tmp/tarvo-backup.file").touch()
        used = os.open(device.path("/tmp/tarvo-backup.used"), os.O_RDONLY)
        flock(used, LOCK_EX)
        result = self.beside(device, "OTHERS_OWN", "/tarvo-backup.others", "save")
        os.close(used)
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(
            ["tarvo-backup.file", "tarvo-backup.others", "tarvo-backup.used"],
            sorted(path.name for path in self.private(device)),
        )

    def test_a_new_folder_that_another_run_takes_for_a_left_one_is_made_again(self) -> None:
        device = self.made()
        result = self.beside(device, "OTHERS_REMOVE", "/tmp/tarvo-backup.", "save")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual([], self.private(device))

    def test_a_journal_that_somebody_rolls_back_meanwhile_tears_no_copy(self) -> None:
        device = self.device(MODEL)
        whole = leave_half_written(device)
        device.path(f"{CONFIG_DB}.whole").write_bytes(whole)
        result = self.beside(device, "OTHERS_RECOVER", CONFIG_DB, "save", "--output", "-")
        self.assertEqual((0, golden(MODEL), b""), (result.status, result.stdout, result.stderr))
        self.assertFalse(device.path(f"{CONFIG_DB}.whole").exists())

    # Backups.

    def test_a_folder_of_another_user_is_refused(self) -> None:
        device = self.made()
        result = self.beside(device, "OTHERS_OWN", "/tmp/mine", "save", "/tmp/mine")
        self.assertFails(
            result, 4, "/tmp/mine: must be a folder that nobody else owns or may write to"
        )

    def test_a_backup_that_cannot_be_read_is_not_taken_for_the_same(self) -> None:
        device = self.made()
        self.assertEqual(0, self.backup(device, "save").status)
        [first] = device.path(FOLDER).glob("*.xml")
        result = self.beside(device, "DISK_UNREADABLE", first.name, "save")
        self.assertEqual(0, result.status, result.stderr)
        self.assertEqual(2, len(list(device.path(FOLDER).glob("*.xml"))))

    def test_a_backup_that_somebody_writes_meanwhile_is_not_replaced(self) -> None:
        for env in ({}, {"DISK_NO_LINKS": "1"}):
            with self.subTest(env):
                device = self.made()
                library = {"LD_PRELOAD": preloaded(device, "others"), "OTHERS_WRITE": FOLDER}
                result = self.backup(device, "save", "--json", env={**library, **env})
                self.assertEqual((0, b""), (result.status, result.stderr))
                saved = json.loads(result.stdout)["file"]
                self.assertRegex(saved, r"Z-2\.xml$")
                self.assertEqual(golden(MODEL), device.path(saved).read_bytes())
                other = saved.replace("Z-2.xml", "Z.xml")
                self.assertEqual("<configuration/>", device.path(other).read_text())
                self.assertEqual(2, len(list(device.path(FOLDER).iterdir())))

    def test_a_folder_without_a_lock_is_written_to_all_the_same(self) -> None:
        device = self.made()
        result = self.beside(device, "DISK_NO_LOCKS", FOLDER, "save")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(1, len(list(device.path(FOLDER).iterdir())))

    def test_a_backup_without_a_name_is_gone(self) -> None:
        device = self.made()
        env = {
            "LD_PRELOAD": f"{preloaded(device, 'others')}:{preloaded(device, 'steps')}",
            "DISK_NO_LINKS": "1",
            "STEP_AT": "1",
            "STEP_FAULT": "fail",
            "STEP_NAME": "rename",
            "STEP_PATH": FOLDER,
        }
        result = self.backup(device, "save", env=env)
        self.assertEqual(4, result.status)
        self.assertRegex(
            result.stderr.decode(), rf"^tarvo-backup: {FOLDER}/.*T\d{{4}}Z\.xml: {FULL}\n$"
        )
        self.assertEqual([], list(device.path(FOLDER).iterdir()))

    def test_a_left_over_of_another_user_stays(self) -> None:
        device = self.made()
        device.path(FOLDER).mkdir(mode=0o700)
        self.assertEqual(0, self.backup(device, "save").status)
        [first] = device.path(FOLDER).glob("*.xml")
        for name in ("aaaaaa", "bbbbbb"):
            path = first.with_name(f"{first.name}.new-{name}")
            path.write_text("")
            os.utime(path, (0, 0))
        result = self.beside(device, "OTHERS_OWN", ".new-aaaaaa", "save")
        self.assertEqual((0, b""), (result.status, result.stderr))
        names = sorted(path.name for path in device.path(FOLDER).iterdir())
        self.assertEqual([first.name, f"{first.name}.new-aaaaaa"], names)

    def test_a_backup_that_cannot_be_removed_is_not_told_to_be(self) -> None:
        device = self.made()
        device.path(FOLDER).mkdir(mode=0o700)
        self.assertEqual(0, self.backup(device, "save").status)
        [first] = device.path(FOLDER).glob("*.xml")
        old = first.with_name(re.sub(r"\d{4}-\d\d-\d\dT", "2020-01-01T", first.name))
        old.write_text("<configuration/>")
        result = self.failing(device, "remove", old.name, "save", "--keep", "1")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertNotIn(b"removed", result.stdout)
        self.assertTrue(old.exists())

    def test_a_file_keeps_what_it_held_when_it_cannot_be_written(self) -> None:
        device = self.made()
        file = device.path("/tmp/one.xml")
        file.write_text("earlier")
        result = self.failing(device, "mkostemp", "/tmp/one.xml", "save", "--output", "/tmp/one.xml")
        self.assertFails(result, 4, f"/tmp/one.xml: {FULL}")
        self.assertEqual("earlier", file.read_text())
        self.assertEqual(0, self.backup(device, "save", "--output", "/tmp/one.xml").status)
        self.assertEqual(golden(MODEL), file.read_bytes())

    def test_a_disk_that_loses_what_was_written_is_found_out(self) -> None:
        device = self.made()
        result = self.failing(device, "write", "", "save", "--output", "/tmp/one.xml", fault="lose")
        self.assertFails(result, 4, "/tmp/one.xml: does not hold what was written")

    # Restores.

    def assertNotBegun(self, name: str, path: str, status: int, message: str) -> None:
        device = self.made()
        before = contents(device)
        result = self.failing(device, name, path, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.assertFails(result, status, message)
        self.assertEqual(before, contents(device))
        self.assertFalse(device.path(STATE).exists())
        undone = self.backup(device, "undo", "--abandoned")
        self.assertEqual((0, b""), (undone.status, undone.stderr))
        self.assertEqual(before, contents(device))
        self.assertEqual([], list(device.path(f"{FOLDER}/.restore").glob("before*")))

    def test_a_restore_without_what_undoes_it_is_not_begun(self) -> None:
        restore = f"{FOLDER}/.restore"
        copy = f"{restore}/before_tarvo_datosWeb_tablasSI_NIT_table_12345"
        database = f"{restore}/before_tarvo_DB_config_global.sqlite"
        self.each(
            self.assertNotBegun,
            (
                ("chmod", restore, 4, f"{restore}: {FULL}"),
                ("sendfile", "", 4, f"{copy}: {FULL}"),
                ("open", database, 4, f"{database}: {FULL}"),
                ("mkostemp", STATE, 4, f"{STATE}: {FULL}"),
                ("fork", "", 5, "cannot start the process that would undo the restore"),
                (
                    "mkostemp",
                    f"{restore}/document.xml",
                    4,
                    f"{restore}/document.xml: cannot be written",
                ),
            ),
        )

    def test_a_lock_without_a_name_is_one(self) -> None:
        device = self.made()
        result = self.failing(device, "pwrite", "", "restore", "--yes", DOCUMENT)
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(b"", device.path(f"{FOLDER}/.restore/lock").read_bytes())

    def test_a_restore_whose_state_stays_is_not_confirmed(self) -> None:
        device = self.made()
        self.restored(device)
        result = self.failing(device, "unlink", STATE, "confirm")
        self.assertFails(result, 4, f"{STATE}: {FULL}")
        self.assertEqual(0, self.backup(device, "confirm").status)

    def test_a_state_that_cannot_be_read_is_not_taken_for_none(self) -> None:
        device = self.made()
        self.restored(device)
        for words in (["undo"], ["confirm"], ["undo", "--abandoned"], ["restore", "--yes", DOCUMENT]):
            result = self.beside(device, "DISK_UNREADABLE", STATE, *words)
            self.assertFails(result, 3, f"{STATE}: Input/output error")
            self.assertTrue(device.path(STATE).exists())
        self.assertEqual(0, self.backup(device, "undo").status)

    def test_an_undo_that_leaves_a_file_is_not_done(self) -> None:
        device = self.made()
        before = contents(device)
        self.restored(device)
        file = f"{SI_FOLDER}/NIT_table_4242"
        result = self.failing(device, "remove", file, "undo")
        self.assertFails(
            result,
            4,
            f"the restore of {DOCUMENT} is not undone yet; tarvo-backup undo tries again:"
            f" {file}: {FULL}",
        )
        self.assertEqual(0, self.backup(device, "undo").status)
        self.assertEqual(before, contents(device))

    def test_an_undo_whose_work_cannot_be_saved_says_so_and_is_done(self) -> None:
        device = self.made()
        before = contents(device)
        self.restored(device)
        # No document, and no room for the databases.
        state_database = device.path(STATE_DB).read_bytes()
        device.path(STATE_DB).unlink()
        result = self.failing(device, "mkdir", f"{FOLDER}/.restore/kept", "undo")
        device.path(STATE_DB).write_bytes(state_database)
        self.assertEqual(0, result.status)
        self.assertEqual(b"The restore of /tmp/document.xml was undone.\n", result.stdout)
        reason = (
            r"could not be saved: the configuration cannot be read as a whole\\n[^\n]*"
            rf"; {FOLDER}/\.restore/kept: {FULL}\n$"
        )
        self.assertRegex(
            result.stderr.decode(), r"^tarvo-backup: what the undo took back " + reason
        )
        self.assertEqual(before, contents(device))
        late = self.backup(device, "confirm")
        self.assertEqual(6, late.status)
        self.assertRegex(late.stderr.decode(), r"UTC; what it took back " + reason)
        told = json.loads(self.backup(device, "confirm", "--json").stdout)
        self.assertEqual([], told["kept"])
        self.assertRegex(told["notKept"], r"^the configuration cannot be read as a whole")

    def test_databases_that_cannot_take_the_place_of_a_backup_are_not_said_to_be_saved(self) -> None:
        device = self.made()
        self.restored(device)
        device.path(STATE_DB).unlink()
        result = self.failing(device, "rename", f"{FOLDER}/undone-", "undo")
        self.assertEqual(0, result.status)
        self.assertRegex(result.stderr.decode(), rf"could not be saved: [^\n]*{FULL}[^\n]*\n$")

    def test_what_an_undo_has_saved_before_it_failed_is_not_saved_again(self) -> None:
        device = self.made()
        self.restored(device)
        device.path(STATE_DB).unlink()
        for _ in range(2):
            result = self.failing(device, "open", f"{CONFIG_DB}-journal", "undo")
            self.assertEqual(4, result.status, result.stderr)
        [kept] = device.path(FOLDER).glob("undone-*")
        with device.database(CONFIG_DB) as database:
            database.execute("DELETE FROM AudioLanguageListGlobal")
        result = self.failing(device, "mkdir", f"{FOLDER}/.restore/kept", "undo")
        self.assertEqual(0, result.status)
        late = self.backup(device, "confirm")
        self.assertRegex(
            late.stderr.decode(),
            rf"what it took back is in {FOLDER}/{kept.name}; what it took back could not be saved: ",
        )

    def test_a_restore_that_cannot_be_looked_at_afterwards_is_done(self) -> None:
        device = self.made()
        count = device.path("/tarvo/sim/steps")
        steps = {"STEP_NAME": "mkdtemp", "STEP_COUNT": "/tarvo/sim/steps"}
        env = {"LD_PRELOAD": preloaded(device, "steps"), **steps}
        self.assertEqual(0, self.backup(device, "restore", "--yes", DOCUMENT, env=env).status)
        last = {"STEP_AT": count.read_text().strip(), "STEP_FAULT": "fail"}
        device = self.made()
        env["LD_PRELOAD"] = preloaded(device, "steps")
        words = ("restore", "--json", "--yes", DOCUMENT)
        result = self.backup(device, *words, env={**env, **last})
        self.assertFails(
            result,
            8,
            "restored, but the headend cannot be compared with the document:"
            f" /tmp: cannot make a folder: {FULL}",
        )
        told = json.loads(result.stdout)
        self.assertEqual(("restored", 0, None), (told["outcome"], told["importStatus"], told["notTaken"]))
        self.assertEqual([], list(device.path(f"{FOLDER}/.restore").glob("before*")))

    def test_an_undo_that_cannot_be_remembered_is_done(self) -> None:
        device = self.made()
        before = contents(device)
        for name in ("before", "now"):
            self.restored(device)
            result = self.failing(device, "mkostemp", f"{FOLDER}/.restore/undone", "undo")
            self.assertEqual((0, b""), (result.status, result.stderr))
            self.assertEqual(before, contents(device), name)
            self.assertFails(self.backup(device, "confirm"), 5, "there is no restore to confirm")

    def test_a_state_that_somebody_removes_in_an_undo_is_no_failure(self) -> None:
        device = self.made()
        before = contents(device)
        self.restored(device)
        device.path("/tarvo/script/WAN_from_DB.sh").write_text(f"#!/bin/sh\nrm {STATE}\n")
        result = self.backup(device, "undo")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(before, contents(device))

    # The process that waits for the confirmation.

    def watched(self, device: Device, change: str, **steps: str) -> None:
        """A restore whose state is changed then, until that process has ended."""
        environment = {"TZ": "UTC", "PROGRAM": installed(device), **steps}
        script = f"""
        {{
            LD_PRELOAD={preloaded(device, "steps")} \\
                "$PROGRAM" restore --yes --confirm 9 {DOCUMENT} 9>&1 >/dev/null
            sed -i '{change}' {STATE}
        }} | cat
        """
        result = device.run("sh", ["-c", script], env={**environment, "STEP_FORKED": "1"})
        self.assertEqual(b"", result.stderr)
        with device.path(f"{FOLDER}/.restore/lock").open() as lock:
            flock(lock, LOCK_EX)

    def test_where_it_is_does_not_matter(self) -> None:
        device = self.made()
        before = contents(device)
        count = device.path("/tarvo/sim/steps")
        self.watched(
            device,
            "s/^deadline .*/deadline 0/",
            STEP_AT="1",
            STEP_FAULT="fail",
            STEP_NAME="chdir",
            STEP_COUNT="/tarvo/sim/steps",
        )
        self.assertEqual("1\n", count.read_text())
        self.assertEqual(before, contents(device))

    def test_it_leaves_another_restore_alone(self) -> None:
        device = self.made()
        before = contents(device)
        self.watched(device, "s/^id .*/id another/; s/^deadline .*/deadline 0/")
        self.assertTrue(device.path(STATE).exists())
        self.assertNotEqual(before, contents(device))


if __name__ == "__main__":
    main()
