"""tarvo-backup restore, confirm and undo: the headend is as before or as after, never between."""

import json
import os
import random
import re
import signal
import stat
import subprocess
import sys
import time
from collections.abc import Callable
from contextlib import closing
from datetime import datetime
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    BACKUP_PROGRAM,
    CONFIG_DB,
    Device,
    EndToEndTest,
    REPOSITORY,
    STATE_DB,
    VSEC_DB,
    Result,
    document,
    golden,
    installed,
    main,
    tables,
)

DOCUMENT = "/tmp/document.xml"
STATE = "/tarvo/backup/.restore/state"
SI_FOLDER = "/tarvo/datosWeb/tablasSI"
KILLS = 24
UNDOS = 3
READER = """
import random, sqlite3, sys, time
while True:
    database = sqlite3.connect(sys.argv[1], timeout=10)
    database.execute("SELECT count(*) FROM NimGlobal").fetchall()
    time.sleep(random.random() / 100)
    database.close()
    time.sleep(random.random() / 100)
"""


def new_document(model: str) -> bytes:
    text = re.sub(rb"<gateway>[^<]*", b"<gateway>10.9.9.9", golden(model))
    text = re.sub(rb"<nid>[^<]*", b"<nid>4242", text, count=1)
    return re.sub(rb"<country>[^<]*", b"<country>PT", text)


def contents(device: Device) -> dict[str, tuple]:
    """What a restore changes, but for what scripts write."""
    folder = device.path(SI_FOLDER)
    files = {p.name: (p.read_bytes(), p.stat().st_mtime_ns) for p in folder.iterdir()}
    return {**tables(device), "SI tables": files}


class RestoreTest(EndToEndTest):
    def made(self, model: str = "QRA-310") -> Device:
        device = self.device(model)
        device.path(DOCUMENT).write_bytes(new_document(model))
        return device

    def backup(self, device: Device, *args: str) -> Result:
        return device.run(BACKUP_PROGRAM, args, env={"TZ": "UTC"}, timeout=240)

    def in_shell(self, device: Device, script: str) -> Result:
        """The program is "$PROGRAM"; it lives as long as the shell does."""
        environment = {"TZ": "UTC", "PROGRAM": installed(device)}
        return device.run("sh", ["-c", script], env=environment, timeout=240)

    def test_a_restore_does_what_tarvo_config_does_and_keeps_a_backup(self) -> None:
        device, other = self.made(), self.made()
        result = self.backup(device, "restore", "--yes", DOCUMENT)
        expected = self.load(other, new_document("QRA-310"))
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(expected.actions, result.actions)
        self.assertEqual(expected.syslog, result.syslog)
        self.assertTables(tables(other), tables(device))
        [saved] = device.path("/tarvo/backup").glob("*.xml")
        self.assertBytes(golden("QRA-310"), saved.read_bytes())
        self.assertFalse(device.path(STATE).exists())

    def test_started_by_one_that_waits_for_no_children_it_does_the_same(self) -> None:
        expected = self.in_shell(self.made(), f'"$PROGRAM" restore --yes {DOCUMENT}')
        result = self.in_shell(
            self.made(), f'exec env --ignore-signal=CHLD "$PROGRAM" restore --yes {DOCUMENT}'
        )
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(expected.actions, result.actions)
        self.assertEqual(expected.syslog, result.syslog)

    def test_without_an_answer_nothing_is_done(self) -> None:
        device = self.made()
        before = contents(device)
        self.assertEqual(5, self.backup(device, "restore", DOCUMENT).status)
        self.assertEqual(before, contents(device))

    def test_a_yes_is_an_answer_and_what_is_not_taken_is_told(self) -> None:
        device = self.made()
        text = golden("QRA-310").replace(b">QM210400117<", b">4711<", 1)
        device.path(DOCUMENT).write_bytes(text)
        told = (
            "Restored.\n"
            "The headend is not as the document in:\n"
            "modules/module[mac=02:1E:31:0A:00:01]: 1 difference\n"
            "modules/module[mac=02:1E:31:0A:00:01]/serialNumber: 4711 -> QM210400117\n"
        )
        for answer, status in (("y", 0), ("Y", 0), ("yes", 0), ("n", 5), ("yeah", 5)):
            result = self.in_shell(device, f'echo {answer} | "$PROGRAM" restore {DOCUMENT}')
            self.assertEqual((status, b""), (result.status, result.stderr), answer)
            rest = result.stdout.decode().partition("\nRestore it? [y/N] ")[2]
            if status == 0:
                self.assertEqual(told, rest.partition(".xml\n")[2])
            else:
                self.assertEqual("Nothing was done.\n", rest)

    def test_a_document_from_standard_input_needs_yes(self) -> None:
        result = self.backup(self.made(), "restore", "-")
        self.assertEqual(
            (2, b"tarvo-backup: a document from standard input needs --yes\n"),
            (result.status, result.stderr),
        )

    def test_a_document_that_the_import_refuses_is_not_begun(self) -> None:
        device = self.made()
        before = contents(device)
        device.path(DOCUMENT).write_bytes(
            b"<configuration><homeChannels><x/></homeChannels></configuration>"
        )
        self.assertEqual(6, self.backup(device, "restore", "--yes", DOCUMENT).status)
        self.assertEqual(before, contents(device))

    def assertTooLate(self, result: Result, kept: bytes = rb"/tarvo/backup/\S+\.xml") -> None:
        self.assertEqual(6, result.status)
        self.assertRegex(
            result.stderr,
            rb"^tarvo-backup: too late: the restore of /tmp/document\.xml was undone"
            rb" on \d{4}-\d\d-\d\d at \d\d:\d\d UTC; what it took back is in %s\n$" % kept,
        )

    def over(self, device: Device) -> None:
        """The time to confirm is over."""
        self.edit_state(device, "^deadline .*", "deadline 0")

    def test_whoever_confirms_what_was_undone_is_told_when(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.over(device)
        start = int(time.time())
        # As a start of the headend does, or the process that waits.
        undone = self.backup(device, "undo", "--abandoned")
        self.assertEqual((0, b""), (undone.status, undone.stderr))
        self.assertFalse(device.path(STATE).exists())
        for _ in range(2):
            self.assertTooLate(self.backup(device, "confirm"))
        told = self.json(device, "confirm", "--json")
        moment = datetime.fromisoformat(told.pop("undoneAt")).timestamp()
        self.assertTrue(start <= moment <= time.time(), moment)
        [kept] = told.pop("kept")
        self.assertIn(b"10.9.9.9", device.path(kept).read_bytes())
        self.assertEqual(
            {"status": 6, "outcome": "undone", "document": DOCUMENT, "notKept": None}, told
        )
        again = self.backup(device, "undo")
        self.assertEqual(5, again.status)
        self.assertRegex(
            again.stderr,
            rb"^tarvo-backup: there is no restore to undo; the restore of /tmp/document\.xml was"
            rb" undone on [^\n]+ UTC; what it took back is in \S+\n$",
        )

    def test_an_undo_that_no_restore_came_after_is_remembered_until_one_does(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.backup(device, "undo")
        self.assertTooLate(self.backup(device, "confirm"))
        # Neither begins.
        self.assertEqual(5, self.backup(device, "restore", DOCUMENT).status)
        self.assertEqual(3, self.backup(device, "restore", "--yes", "/tmp/no.xml").status)
        self.assertTooLate(self.backup(device, "confirm"))
        self.assertEqual(0, self.backup(device, "restore", "--yes", DOCUMENT).status)
        nothing = self.backup(device, "confirm")
        self.assertEqual(
            (5, b"tarvo-backup: there is no restore to confirm\n"),
            (nothing.status, nothing.stderr),
        )

    def test_what_was_remembered_is_nothing_when_it_cannot_be_read(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.backup(device, "undo")
        word = device.path("/tarvo/backup/.restore/undone")
        self.assertEqual(0o600, stat.S_IMODE(word.stat().st_mode))
        word.write_text("\0\nmoment 1\n")
        self.assertEqual(5, self.backup(device, "confirm").status)

    def test_a_confirmed_restore_stays(self) -> None:
        device = self.made()
        result = self.in_shell(
            device,
            f'"$PROGRAM" restore --yes --confirm 1 {DOCUMENT} && "$PROGRAM" confirm && sleep 2',
        )
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertIn(b"10.9.9.9", self.export(device).stdout)
        self.assertEqual(5, self.backup(device, "confirm").status)

    def test_an_undo_puts_rows_and_files_back_and_runs_the_scripts_again(self) -> None:
        device = self.made()
        before = contents(device)
        result = self.in_shell(
            device, f'"$PROGRAM" restore --yes --confirm 1 {DOCUMENT} && "$PROGRAM" undo'
        )
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(before, contents(device))
        half = len(result.actions) // 2
        self.assertIn("WAN_from_DB.sh", result.actions[:half])
        self.assertEqual(
            [action.split()[0] for action in result.actions[:half]],
            [action.split()[0] for action in result.actions[half:]],
        )

    def test_a_neighbours_pipe_beside_the_state_database_keeps_no_undo(self) -> None:
        device = self.made()
        before = contents(device)
        result = self.in_shell(
            device,
            f'"$PROGRAM" restore --yes --confirm 1 {DOCUMENT} &&'
            ' mkfifo /tmp/temp_global.sqlite-journal && "$PROGRAM" undo',
        )
        self.assertEqual(0, result.status, result.stderr)
        device.path("/tmp/temp_global.sqlite-journal").unlink()
        self.assertEqual(before, contents(device))

    def test_when_the_time_is_over_the_restore_is_undone_without_anyone(self) -> None:
        device = self.made()
        before = contents(device)
        result = self.in_shell(
            device,
            f'"$PROGRAM" restore --yes --confirm 1 {DOCUMENT}'
            f" && sed -i 's/^deadline .*/deadline 0/' {STATE}"
            f" && for i in 1 2 3 4 5 6 7 8 9 10; do [ -e {STATE} ] && sleep 1; done",
        )
        self.assertEqual(b"", result.stderr)
        self.assertEqual(before, contents(device))

    def test_after_a_new_start_an_unconfirmed_restore_is_undone(self) -> None:
        device = self.made()
        before = contents(device)
        self.assertEqual(0, self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT).status)
        self.assertEqual(0, self.backup(device, "undo", "--abandoned").status)
        self.assertNotEqual(before, contents(device))  # there is time left
        state = device.path(STATE)
        state.write_text(re.sub("(?m)^boot .*", "boot another", state.read_text()))
        self.assertEqual(0, self.backup(device, "undo", "--abandoned").status)
        self.assertEqual(before, contents(device))

    def test_a_second_restore_waits_for_the_first_to_be_confirmed(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        second = self.backup(device, "restore", "--yes", DOCUMENT)
        self.assertEqual(7, second.status)
        self.assertIn(DOCUMENT.encode(), second.stderr)

    def killed_in(self, device: Device, phase: str, *args: str) -> None:
        """Kills the program in a phase in which it waits for a writer."""
        with closing(device.database(CONFIG_DB)) as writer:
            writer.execute("BEGIN IMMEDIATE")
            running = device.start(BACKUP_PROGRAM, args, env={"TZ": "UTC"})
            end = time.monotonic() + 60
            state = device.path(STATE)
            while time.monotonic() < end:
                if state.exists() and state.read_text().startswith(f"phase {phase}\n"):
                    break
                time.sleep(0.005)
            running.kill()
            running.wait(60)
            writer.execute("ROLLBACK")
        self.assertTrue(state.read_text().startswith(f"phase {phase}\n"))

    def test_killed_in_the_import_it_is_undone_by_the_next_call(self) -> None:
        device = self.made()
        before = contents(device)
        self.killed_in(device, "importing", "restore", "--yes", DOCUMENT)
        result = self.backup(device, "undo", "--abandoned")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(before, contents(device))

    def test_a_restore_undoes_one_that_was_killed_and_says_so(self) -> None:
        device = self.made()
        self.killed_in(device, "importing", "restore", "--yes", DOCUMENT)
        result = self.backup(device, "restore", "--yes", DOCUMENT)
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertTrue(
            result.stdout.startswith(
                b"An earlier restore that had not come to its end was undone.\n"
            ),
            result.stdout,
        )

    def test_killed_in_the_undo_it_is_undone_by_the_next_call(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.assertNotEqual(before, contents(device))
        self.killed_in(device, "undoing", "undo")
        result = self.backup(device, "confirm")
        self.assertTooLate(result)
        self.assertEqual(before, contents(device))

    def test_a_second_restore_at_the_same_time_is_told_who_holds_it(self) -> None:
        device = self.made()
        with closing(device.database(CONFIG_DB)) as writer:
            writer.execute("BEGIN IMMEDIATE")
            running = device.start(BACKUP_PROGRAM, ["restore", "--yes", DOCUMENT])
            end = time.monotonic() + 60
            while not device.path(STATE).exists() and time.monotonic() < end:
                time.sleep(0.005)
            second = self.backup(device, "restore", "--yes", DOCUMENT)
            writer.execute("ROLLBACK")
            first = running.wait(120)
        self.assertEqual((7, 0), (second.status, first.status))
        self.assertRegex(second.stderr, rb"busy: restore of /tmp/document\.xml, process \d+")

    def edit_state(self, device: Device, pattern: str, new: str) -> None:
        state = device.path(STATE)
        text = state.read_text()
        self.assertRegex(text, f"(?m){pattern}")
        state.write_text(re.sub(f"(?m){pattern}", new, text))

    def test_the_state_of_another_headend_is_not_put_back(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        after = contents(device)
        self.edit_state(device, "^serial .*", "serial 4711")
        self.edit_state(device, "^boot .*", "boot another")
        result = self.backup(device, "undo", "--abandoned")
        self.assertEqual(5, result.status)
        self.assertIn(b"the copies are of another headend, 4711; remove /tarvo/backup/.restore",
                      result.stderr)  # fmt: skip
        self.assertEqual(after, contents(device))

    def test_a_state_without_a_serial_number_is_put_back(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.edit_state(device, "^serial .*\n", "")
        self.edit_state(device, "^document .*", r"document by hand\\")
        result = self.backup(device, "undo")
        self.assertEqual(0, result.status)
        self.assertRegex(
            result.stdout,
            rb"^The restore of by hand\\ was undone\.\n"
            rb"What was there before that is in /tarvo/backup/\S+\.xml\n$",
        )
        self.assertEqual(before, contents(device))

    def test_files_of_any_names_are_put_back(self) -> None:
        def check(name: str, first: bytes, second: bytes) -> None:
            device = self.made()
            numbers = iter((first, second))
            text = re.sub(rb"(?<=<nid>)[^<]*", lambda _: next(numbers), golden("QRA-310"))
            device.path(DOCUMENT).write_bytes(text)
            before = contents(device)
            result = self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
            self.assertEqual((0, b""), (result.status, result.stderr))
            self.assertNotEqual(before["SI tables"], contents(device)["SI tables"])
            self.assertEqual(0, self.backup(device, "undo").status)
            self.assertEqual(before, contents(device))

        self.each(
            check,
            (
                ("of one network to the next", b"12346", b"77"),
                ("two lines", b"42&#10;1", b"12346"),
                ("backslashes", b"4\\n2\\", b"12346"),
            ),
        )

    def test_an_undo_makes_the_scrambling_keys_again(self) -> None:
        device = self.device("RNB-K408")
        device.path(DOCUMENT).write_bytes(
            b"<configuration><scramblings><scrambling><name>other</name><active>0</active>"
            b"<mode>Even</mode><frequency>5</frequency><oddKey>00FF</oddKey><date>today</date>"
            b"</scrambling></scramblings></configuration>"
        )
        done = self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        undone = self.backup(device, "undo")
        self.assertEqual((0, 0), (done.status, undone.status))
        keys = "VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt"
        self.assertEqual([1, 1], [result.actions.count(keys) for result in (done, undone)])

    def test_where_nothing_was_restored_nothing_is_undone(self) -> None:
        result = self.backup(self.made(), "undo")
        self.assertEqual(
            (5, b"tarvo-backup: there is no restore to undo\n"), (result.status, result.stderr)
        )

    def test_a_link_in_the_place_of_the_lock_is_not_followed(self) -> None:
        device = self.made()
        folder = device.path("/tarvo/backup/.restore")
        folder.mkdir(mode=0o700, parents=True)
        folder.parent.chmod(0o700)
        (folder / "lock").symlink_to("/tmp/lock")
        result = self.backup(device, "confirm")
        self.assertEqual(
            (4, b"tarvo-backup: /tarvo/backup/.restore/lock: Too many levels of symbolic links\n"),
            (result.status, result.stderr),
        )
        self.assertFalse(device.path("/tmp/lock").exists())

    def test_a_lost_copy_keeps_everything_from_being_half_undone(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        after = contents(device)
        device.path("/tarvo/backup/.restore/before_tarvo_DB_vsec_global.sqlite").unlink()
        result = self.backup(device, "undo")
        self.assertEqual(5, result.status)
        self.assertIn(b"is not undone yet", result.stderr)
        self.assertIn(
            b"the copy of /tarvo/DB/vsec_global.sqlite is lost; remove /tarvo/backup/.restore to keep"
            b" the headend as it is\n",
            result.stderr,
        )
        self.assertEqual(after, contents(device))

    def test_a_state_that_is_not_understood_is_said_and_kept(self) -> None:
        deadlines = ("", "soon", "1" * 19)
        texts = [f"phase unconfirmed\ndeadline {deadline}\n" for deadline in deadlines]
        for text in ("", "phase flying\n", "\0" * 100, *texts):
            with self.subTest(text):
                device = self.made()
                before = contents(device)
                device.path("/tarvo/backup/.restore").mkdir(mode=0o700, parents=True)
                device.path("/tarvo/backup").chmod(0o700)
                device.path(STATE).write_text(text)
                for words in (["undo"], ["confirm"], ["restore", "--yes", DOCUMENT]):
                    result = self.backup(device, *words)
                    self.assertEqual(3, result.status, result.stderr)
                    self.assertIn(b"is not known; remove the file", result.stderr)
                self.assertEqual(before, contents(device))
                self.assertEqual(text, device.path(STATE).read_text())

    def test_a_folder_that_others_may_write_to_is_not_trusted(self) -> None:
        for place in ("/tarvo/backup", "/tarvo/backup/.restore"):
            for planted in ("folder", "link", "file"):
                with self.subTest(place=place, planted=planted):
                    device = self.made()
                    before = contents(device)
                    path = device.path(place)
                    path.parent.mkdir(exist_ok=True, mode=0o700)
                    if planted == "folder":
                        path.mkdir()
                        path.chmod(0o777)
                    elif planted == "link":
                        path.symlink_to("/tmp")
                    else:
                        path.write_text("")
                    for words in (["restore", "--yes", DOCUMENT], ["undo"], ["confirm"]):
                        result = self.backup(device, *words)
                        self.assertEqual(4, result.status, result.stderr)
                        reason = b"is no folder"
                        if planted == "link":
                            reason = b"is a link, not the folder itself"
                        if planted == "folder":
                            reason = b"must be a folder that nobody else owns or may write to"
                        self.assertEqual(
                            b"tarvo-backup: %s: %s\n" % (place.encode(), reason), result.stderr
                        )
                    self.assertEqual(before, contents(device))

    def test_copies_of_a_restore_that_was_killed_before_it_began_are_never_put_back(self) -> None:
        device = self.made()
        device.path("/tarvo/DB/vsec_global.sqlite").unlink()
        stale = device.path("/tarvo/backup/.restore/before_tarvo_DB_vsec_global.sqlite")
        stale.parent.mkdir(mode=0o700, parents=True)
        device.path("/tarvo/backup").chmod(0o700)
        stale.write_bytes(device.path(CONFIG_DB).read_bytes())
        self.assertEqual(
            0, self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT).status
        )
        self.assertEqual(0, self.backup(device, "undo").status)
        self.assertFalse(stale.exists())
        left = device.path("/tarvo/DB/vsec_global.sqlite")
        self.assertFalse(left.exists() and left.stat().st_size > 0)

    def test_what_an_undo_takes_back_is_saved_before(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        # By the device's own pages, or another import.
        self.load(device, b"<configuration><identification><location>New</location>"
                          b"</identification></configuration>")  # fmt: skip
        wanted = self.export(device).stdout
        self.assertEqual(0, self.backup(device, "undo").status)
        kept = [path.read_bytes() for path in device.path("/tarvo/backup").glob("*.xml")]
        self.assertEqual(2, len(kept))
        self.assertIn(wanted.rstrip(b"\n"), [text.rstrip(b"\n") for text in kept])

    def test_an_undo_that_meets_a_lock_says_so_and_is_done_by_the_next(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        with closing(device.database(CONFIG_DB)) as writer:
            writer.execute("BEGIN IMMEDIATE")
            result = self.backup(device, "undo")
            writer.execute("ROLLBACK")
        self.assertEqual(4, result.status)
        self.assertRegex(
            result.stderr,
            rb"restore of /tmp/document\.xml is not undone yet; tarvo-backup undo tries again: "
            rb"/tarvo/DB/config_global\.sqlite: database is locked",
        )
        self.assertEqual(0, self.backup(device, "undo", "--abandoned").status)
        self.assertEqual(before, contents(device))

    def test_the_one_that_watches_survives_the_end_of_the_session(self) -> None:
        device = self.made()
        before = contents(device)
        result = self.in_shell(
            device,
            f'setsid sh -c \'"$PROGRAM" restore --yes --confirm 1 {DOCUMENT}; '
            "trap '' HUP; kill -HUP 0; kill -HUP -1\' & wait;"
            f" sed -i 's/^deadline .*/deadline 0/' {STATE};"
            f" for i in 1 2 3 4 5 6 7 8 9 10; do [ -e {STATE} ] && sleep 1; done",
        )
        self.assertEqual(b"", result.stderr)
        self.assertFalse(device.path(STATE).exists())
        self.assertEqual(before, contents(device))

    def work(self, device: Device, location: str) -> None:
        """Somebody changes the headend."""
        text = f"<identification><location>{location}</location></identification>"
        self.assertEqual(0, self.load(device, document(text)).status)

    def locations_in(self, device: Device, path: str) -> list[str]:
        """What stands for the location in the configuration database of this path."""
        return [
            value
            for (value,) in self.query(
                device,
                "SELECT valor FROM configuracionWebGlobal"
                " WHERE nombre = 'identificacion_localizacion'",
                path,
            )
        ]

    def test_work_since_a_restore_was_killed_is_saved_before_it_is_undone(self) -> None:
        device = self.made()
        before = contents(device)
        self.killed_in(device, "importing", "restore", "--yes", DOCUMENT)
        self.work(device, "New")
        wanted = self.export(device).stdout
        told = self.json(device, "undo", "--json", "--abandoned")
        [kept] = told["kept"]
        self.assertBytes(wanted.rstrip(b"\n"), device.path(kept).read_bytes().rstrip(b"\n"))
        self.assertEqual(before, contents(device))

    def undos_folder(self, device: Device) -> Path:
        [folder] = device.path("/tarvo/backup").glob("undone-*")
        self.assertRegex(folder.name, r"^undone-\d{4}-\d\d-\d\dT\d{4}Z$")
        self.assertEqual(0o700, stat.S_IMODE(folder.stat().st_mode))
        return folder

    def test_where_no_document_can_be_made_the_databases_are_saved_before_an_undo(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.work(device, "New")
        # As in a start of the headend, whose software makes this one later.
        state_database = device.path(STATE_DB).read_bytes()
        device.path(STATE_DB).unlink()
        self.over(device)
        result = self.backup(device, "undo", "--abandoned")
        folder = self.undos_folder(device)
        self.assertEqual(
            (
                0,
                "The restore of /tmp/document.xml was undone.\n"
                f"What was there before that is in /tarvo/backup/{folder.name}\n",
                b"",
            ),
            (result.status, result.stdout.decode(), result.stderr),
        )
        self.assertEqual(
            {"config_global.sqlite", "vsec_global.sqlite"}, {p.name for p in folder.iterdir()}
        )
        kept = f"/tarvo/backup/{folder.name}/config_global.sqlite"
        self.assertEqual(["New"], self.locations_in(device, kept))
        device.path(STATE_DB).write_bytes(state_database)
        self.assertEqual(before, contents(device))
        self.assertTooLate(
            self.backup(device, "confirm"), b"/tarvo/backup/%s" % folder.name.encode()
        )

    def test_an_undo_that_is_tried_again_saves_the_databases_once(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.work(device, "New")
        state_database = device.path(STATE_DB).read_bytes()
        device.path(STATE_DB).unlink()
        # Nothing can take its place.
        obstacle = device.path(f"{SI_FOLDER}/NIT_table_4242")
        content = obstacle.read_bytes()
        obstacle.unlink()
        obstacle.mkdir()
        (obstacle / "file").touch()
        for _ in range(3):
            result = self.backup(device, "undo")
            self.assertEqual(4, result.status)
            self.assertIn(b"is not undone yet", result.stderr)
        (obstacle / "file").unlink()
        obstacle.rmdir()
        obstacle.write_bytes(content)
        told = self.json(device, "undo", "--json")
        folder = self.undos_folder(device)
        self.assertEqual(
            (0, [f"/tarvo/backup/{folder.name}"], None),
            tuple(told[k] for k in ("status", "kept", "notKept")),
        )
        kept = f"/tarvo/backup/{folder.name}/config_global.sqlite"
        self.assertEqual(["New"], self.locations_in(device, kept))
        device.path(STATE_DB).write_bytes(state_database)
        self.assertEqual(before, contents(device))

    def test_work_between_two_tries_of_an_undo_is_saved_too(self) -> None:
        device = self.made()
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        device.path(STATE_DB).unlink()
        obstacle = device.path(f"{SI_FOLDER}/NIT_table_4242")
        obstacle.unlink()
        (obstacle / "folder").mkdir(parents=True)
        for location in ("One", "Two"):
            self.query(
                device,
                f"UPDATE configuracionWebGlobal SET valor = '{location}'"
                " WHERE nombre = 'identificacion_localizacion'",
            )
            self.assertEqual(4, self.backup(device, "undo").status)
        (obstacle / "folder").rmdir()
        obstacle.rmdir()
        kept = self.json(device, "undo", "--json")["kept"]
        self.assertEqual(
            [["One"], ["Two"]],
            [self.locations_in(device, f"{path}/config_global.sqlite") for path in kept],
        )
        self.assertTooLate(self.backup(device, "confirm"), ", ".join(kept).encode())

    def test_a_table_that_has_changed_its_shape_since_is_put_back_too(self) -> None:
        for change in (
            "ALTER TABLE DiSEqCGlobal ADD COLUMN more TEXT; DELETE FROM DiSEqCGlobal",
            "ALTER TABLE ScramblingGlobal DROP COLUMN Estado; DELETE FROM ScramblingGlobal",
            "CREATE TABLE Other (x); INSERT INTO Other VALUES (1)",
            "DROP TABLE DiSEqCGlobal",
        ):
            device = self.made()
            before = contents(device)
            self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
            for statement in change.split("; "):
                self.query(device, statement)
            undone = self.backup(device, "undo")
            self.assertEqual((0, b""), (undone.status, undone.stderr), change)
            self.assertEqual(before, contents(device))

    def test_a_signal_during_the_import_leaves_nobody_untold(self) -> None:
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            device = self.made()
            with closing(device.database(CONFIG_DB)) as writer:
                writer.execute("BEGIN IMMEDIATE")
                words = ["restore", "--yes", "--confirm", "9", DOCUMENT]
                running = device.start(BACKUP_PROGRAM, words, env={"TZ": "UTC"})
                imported = device.path("/tarvo/backup/.restore/document.xml")
                end = time.monotonic() + 60
                while not imported.exists():
                    self.assertLess(time.monotonic(), end)
                    time.sleep(0.005)
                running.kill(number)
            result = running.wait(120)
            self.assertEqual((0, b""), (result.status, result.stderr))
            self.assertIn(b"Restored.", result.stdout)
            self.assertIn(b"Undone in 9 minutes unless you run", result.stdout)

    def test_an_undo_of_what_changed_nothing_keeps_nothing(self) -> None:
        device = self.made()
        device.path(DOCUMENT).write_bytes(golden("QRA-310"))
        self.assertEqual(0, self.load(device, golden("QRA-310")).status)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.over(device)
        device.path(VSEC_DB).unlink()
        self.assertEqual(0, self.backup(device, "undo", "--abandoned").status)
        late = self.backup(device, "confirm")
        self.assertEqual(6, late.status)
        self.assertRegex(late.stderr, rb" was undone on \d{4}-\d\d-\d\d at \d\d:\d\d UTC\n$")

    def test_an_undo_after_a_database_has_gone_saves_the_other(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        device.path(VSEC_DB).unlink()
        undone = self.backup(device, "undo")
        self.assertEqual((0, b""), (undone.status, undone.stderr))
        self.assertEqual(before, contents(device))
        self.assertEqual(2, len(list(device.path("/tarvo/backup").glob("*.xml"))))

    def test_an_earlier_restore_that_was_killed_is_told_of_as_json(self) -> None:
        device = self.made()
        self.killed_in(device, "importing", "restore", "--yes", DOCUMENT)
        done = self.json(device, "restore", "--json", "--yes", DOCUMENT)
        earlier = done["undidEarlier"]
        self.assertEqual((0, DOCUMENT, None), (done["status"], earlier["document"], earlier["notKept"]))
        self.assertRegex(earlier["undoneAt"], r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        for path in earlier["kept"]:
            self.assertTrue(device.path(path).exists())

    def test_what_changes_while_somebody_is_asked_is_planned_anew(self) -> None:
        gateway = document("<network><gateway>10.7.7.7</gateway></network>")
        for answers in ("yn", "yy"):
            device = self.made()
            # No change of the gateway, at first.
            text = re.sub(rb"<nid>[^<]*", b"<nid>4242", golden("QRA-310"), count=1)
            device.path(DOCUMENT).write_bytes(text)
            out = device.path("/tmp/out")
            out.touch()
            script = f'mkfifo /tmp/in; "$PROGRAM" restore --confirm 9 {DOCUMENT} </tmp/in >/tmp/out'
            environment = {"TZ": "UTC", "PROGRAM": installed(device)}
            running = device.start("sh", ["-c", script], env=environment)
            asked: list[str] = []
            with closing(self.opened(device.path("/tmp/in"))) as to:
                for number, answer in enumerate(answers, 1):
                    end = time.monotonic() + 60
                    while out.read_text().count("Restore it?") < number:
                        self.assertLess(time.monotonic(), end)
                        time.sleep(0.01)
                    asked.append(out.read_text())
                    if number == 1:
                        device.path("/tmp/gateway.xml").write_bytes(gateway)
                        self.assertEqual(0, self.run_program(device, "/tmp/gateway.xml").status)
                        changed = contents(device)
                    to.write(answer + "\n")
                    to.flush()
            result = running.wait(120)
            self.assertNotIn("WAN_from_DB.sh", asked[0])
            anew = asked[1].removeprefix(asked[0])
            self.assertTrue(
                anew.startswith("\nThe headend has changed meanwhile. What a restore would do now:"),
                anew,
            )
            self.assertIn("gateway: 10.7.7.7 -> 192.168.10.1", anew)
            self.assertIn("WAN_from_DB.sh", anew)
            if answers == "yn":
                self.assertEqual(5, result.status)
                self.assertEqual([], list(device.path("/tarvo/backup").glob("*.xml")))
            else:
                self.assertEqual(0, result.status, result.stderr)
                undone = self.backup(device, "undo")
                self.assertEqual(0, undone.status)
                self.assertIn("WAN_from_DB.sh", undone.actions)
            self.assertEqual(changed, contents(device))

    def opened(self, pipe: Path):
        end = time.monotonic() + 60
        while not pipe.exists():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.01)
        return pipe.open("w")

    def changed_before_it_begins(self, device: Device, change: Callable[[], None]) -> Result:
        """A restore that need not ask, with a change of the headend while it prints the plan."""
        text = re.sub(rb"<(\w*[nN]ame)>", rb"<\1>New ", golden("QRA-310"))
        device.path(DOCUMENT).write_bytes(text)
        # It waits until somebody reads what it prints.
        running = device.start(
            BACKUP_PROGRAM,
            ["restore", "--yes", "--confirm", "9", DOCUMENT],
            env={"TZ": "UTC"},
            pipe_size=4096,
        )
        end = time.monotonic() + 60
        for wanted in (True, False):
            while any(device.path("/tmp").glob("tarvo-backup.*")) != wanted:
                self.assertLess(time.monotonic(), end)
                time.sleep(0.001)
        change()
        result = running.wait(120)
        self.assertIn(b"The headend has changed meanwhile.", result.stdout)
        return result

    def test_what_changes_before_a_restore_that_need_not_ask_begins_is_planned_anew(self) -> None:
        device = self.made()

        changed = {}

        def change() -> None:
            text = document("<network><gateway>10.7.7.7</gateway></network>")
            device.path("/tmp/gateway.xml").write_bytes(text)
            self.assertEqual(0, self.run_program(device, "/tmp/gateway.xml").status)
            changed.update(contents(device))

        result = self.changed_before_it_begins(device, change)
        self.assertEqual((0, b""), (result.status, result.stderr))
        undone = self.backup(device, "undo")
        self.assertIn("WAN_from_DB.sh", undone.actions)
        self.assertEqual(changed, contents(device))

    def test_a_restore_that_would_fail_by_what_changes_before_it_begins_is_refused(self) -> None:
        device = self.made()
        rows = "FROM RedesModulos"

        def change() -> None:
            self.query(device, f"DELETE {rows} WHERE rowid = (SELECT min(rowid) {rows})")

        result = self.changed_before_it_begins(device, change)
        self.assertEqual((6, b""), (result.status, result.stderr))
        self.assertIn(b"error 503: modules: Invalid amount of modules", result.stdout)
        self.assertFalse(device.path(STATE).exists())

    def test_without_the_state_database_plan_and_restore_say_that_nothing_is_begun(self) -> None:
        device = self.made()
        device.path(STATE_DB).unlink()
        for words in (["restore", DOCUMENT], ["restore", "--yes", DOCUMENT]):
            result = self.backup(device, *words)
            self.assertEqual((3, b""), (result.status, result.stdout))
            self.assertTrue(
                result.stderr.startswith(
                    b"tarvo-backup: the configuration cannot be read as a whole\n"
                ),
                result.stderr,
            )
        planned = self.backup(device, "plan", DOCUMENT)
        self.assertEqual((3, b""), (planned.status, planned.stderr))
        self.assertTrue(
            planned.stdout.startswith(
                b"tarvo-backup restore would not begin: there is no backup of this headend.\n"
                b"the configuration cannot be read as a whole\n"
            ),
            planned.stdout,
        )
        self.assertIn(b"\nThe import by tarvo-config would succeed.\n", planned.stdout)
        plan = json.loads(self.backup(device, "plan", "--json", DOCUMENT).stdout)
        self.assertTrue(plan["notBegun"].startswith("the configuration cannot be read as a whole"))

    def test_what_nobody_can_be_told_is_done_and_not_half_done(self) -> None:
        lost = "tarvo-backup: cannot write standard output\n"
        for out in (">/dev/full", ">&-", "| true"):
            with self.subTest(out):
                device = self.made()
                before = contents(device)

                def run(words: str, *, pipe: str = out) -> tuple[int, str]:
                    script = f'{{ "$PROGRAM" {words}; echo $? >/tmp/status; }} {pipe}'
                    result = self.in_shell(device, script)
                    return int(device.path("/tmp/status").read_text()), result.stderr.decode()

                if out != "| true":  # where the plan may be read until the restore begins, or not
                    self.assertEqual(
                        (4, "tarvo-backup: cannot write standard output; nothing was done\n"),
                        run(f"restore {DOCUMENT} </dev/null"),
                    )
                    self.assertEqual(before, contents(device))
                    self.assertEqual((8, lost), run(f"restore --yes --confirm 9 {DOCUMENT}"))
                else:
                    self.assertEqual(
                        (0, ""), run(f"restore --yes --confirm 9 {DOCUMENT}", pipe="| cat")
                    )
                self.assertIn(b"10.9.9.9", self.export(device).stdout)
                self.assertEqual((8, lost), run("undo"))
                self.assertEqual(before, contents(device))
                run(f"restore --yes --confirm 9 {DOCUMENT}", pipe="| cat")
                self.assertEqual((8, lost), run("confirm"))
                self.assertFalse(device.path(STATE).exists())
                if out != "| true":
                    device.path("/tmp/refused.xml").write_bytes(
                        b"<configuration><homeChannels><x/></homeChannels></configuration>"
                    )
                    refused = run("restore --json --yes /tmp/refused.xml")
                    self.assertEqual((6, lost), refused)
                    self.assertEqual((8, lost), run("save --json"))
                    self.assertEqual((4, lost), run("save --output -"))
                    self.assertEqual((4, lost), run(f"plan {DOCUMENT}"))

    def test_a_database_that_was_none_before_is_none_after_an_undo(self) -> None:
        device = self.made()
        ruin = b"This is no database. " * 100
        device.path(VSEC_DB).write_bytes(ruin)
        rows = self.query(device, "SELECT * FROM configuracionWebGlobal")
        done = self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.assertEqual((0, b""), (done.status, done.stderr))
        undone = self.backup(device, "undo")
        self.assertEqual((0, b""), (undone.status, undone.stderr))
        self.assertEqual(rows, self.query(device, "SELECT * FROM configuracionWebGlobal"))
        self.assertEqual(ruin, device.path(VSEC_DB).read_bytes())

    def test_files_that_a_killed_program_left_are_removed_by_the_next(self) -> None:
        device = self.made()
        self.backup(device, "undo")
        folder = device.path("/tarvo/backup/.restore")
        left = [folder / f"{name}.new-aB3dEf" for name in ("state", "undone", "document.xml")]
        others = [folder / name for name in ("state.new-aB3dE", "other.new-aB3dEf")]
        for path in (*left, *others):
            path.touch()
        link = folder / "state.new-linked"
        link.symlink_to("/tmp/temp_global.sqlite")
        self.backup(device, "confirm")
        self.assertEqual([], [path for path in left if path.exists()])
        self.assertTrue(all(path.exists() for path in others))
        self.assertTrue(link.is_symlink())

    def test_a_start_of_the_headend_does_not_wait_for_an_undo_for_ever(self) -> None:
        unit = (REPOSITORY / "dist/systemd/tarvo-backup-undo.service").read_text()
        self.assertRegex(unit, r"(?m)^TimeoutStartSec=4min$")
        script = (REPOSITORY / "dist/init.d/tarvo-backup-undo").read_text()
        script = script.replace("/usr/sbin/tarvo-backup", "/tarvo/bin/hanging")
        script, count = re.subn(r"timeout -s KILL 240 ", "timeout -s KILL 0.2 ", script)
        self.assertEqual(1, count)
        device = self.made()
        for name, text in (("hanging", "#!/bin/sh\nsleep 100\n"), ("undo", script)):
            device.path(f"/tarvo/bin/{name}").write_text(text)
            device.path(f"/tarvo/bin/{name}").chmod(0o755)
        device.path(STATE).parent.mkdir(parents=True)
        device.path(STATE).touch()
        start = time.monotonic()
        self.assertEqual(128 + 9, device.run("/tarvo/bin/undo", ["start"], timeout=60).status)
        self.assertLess(time.monotonic() - start, 50)

    def json(self, device: Device, *args: str) -> dict:
        result = self.backup(device, *args)
        return {"status": result.status, **json.loads(result.stdout)}

    def test_the_results_as_json(self) -> None:
        device = self.made()
        plan = json.loads(self.backup(device, "plan", "--json", DOCUMENT).stdout)
        done = self.json(device, "restore", "--json", "--yes", "--confirm", "9", DOCUMENT)
        [saved] = device.path("/tarvo/backup").glob("*.xml")
        self.assertEqual(
            {
                "status": 0,
                "outcome": "restored",
                "undidEarlier": None,
                "plan": plan,
                "backup": f"/tarvo/backup/{saved.name}",
                "importStatus": 0,
                "notTaken": plan["notTaken"],
                "confirmMinutes": 9,
            },
            done,
        )
        untold = {"undoneAt": None, "kept": [], "notKept": None}
        nothing = {"outcome": "nothing", "document": None, **untold}
        self.assertEqual(
            {"status": 0, **nothing}, self.json(device, "undo", "--json", "--abandoned")
        )
        self.assertEqual(
            {"status": 0, "outcome": "confirmed", "document": DOCUMENT, **untold},
            self.json(device, "confirm", "--json"),
        )
        for verb in ("confirm", "undo"):
            self.assertEqual({"status": 5, **nothing}, self.json(device, verb, "--json"))
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        undone = self.json(device, "undo", "--json")
        self.assertRegex(undone.pop("undoneAt"), r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ$")
        # What was restored was there before.
        self.assertEqual(
            {"status": 0, "outcome": "undone", "document": DOCUMENT, "kept": [], "notKept": None},
            undone,
        )
        device.path(DOCUMENT).write_bytes(
            b"<configuration><homeChannels><x/></homeChannels></configuration>"
        )
        refused = self.json(device, "restore", "--json", "--yes", DOCUMENT)
        self.assertEqual(
            (6, "refused", None, None, 2),
            tuple(refused[k] for k in ("status", "outcome", "backup", "importStatus"))
            + (refused["plan"]["status"],),
        )
        asked = self.backup(device, "restore", "--json", DOCUMENT)
        self.assertEqual((2, b"tarvo-backup: --json needs --yes\n"), (asked.status, asked.stderr))

    def an_import_that_fails(self, *words: str) -> Result:
        device = self.made()
        before = contents(device)
        # The plan takes scripts to succeed. The undo runs this one again.
        device.path("/tmp/once").touch()
        device.path("/tarvo/script/WAN_from_DB.sh").write_text(
            f"#!/bin/sh\nrm /tmp/once || exit 0\n: > {CONFIG_DB}\nexit 1\n"
        )
        result = self.backup(device, "restore", *words, "--yes", DOCUMENT)
        self.assertEqual(6, result.status)
        self.assertRegex(result.stderr, rb"the import ended with status \d+ and was undone")
        self.assertEqual(before, contents(device))
        return result

    def test_an_import_that_fails_is_undone(self) -> None:
        done = json.loads(self.an_import_that_fails("--json").stdout)
        self.assertEqual("undone", done["outcome"])
        told = self.an_import_that_fails().stdout.decode()
        self.assertRegex(told, r"\nWhat was there before that is in /tarvo/backup/undone-\S+\n$")

    def test_a_network_whose_id_is_too_long_for_a_file_is_restored_and_undone(self) -> None:
        device = self.made()
        text = re.sub(rb"<nid>[^<]*", b"<nid>" + b"4" * 300, golden("QRA-310"), count=1)
        device.path(DOCUMENT).write_bytes(text)
        before = contents(device)
        result = self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertNotEqual(before, contents(device))
        result = self.backup(device, "undo")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(before, contents(device))

    def test_an_import_that_stores_nothing_leaves_what_others_store_meanwhile(self) -> None:
        device = self.made()
        with closing(device.database(CONFIG_DB)) as neighbour:
            neighbour.execute("BEGIN IMMEDIATE")
            neighbour.execute("UPDATE NimGlobal SET Estado = 7")
            result = self.backup(device, "restore", "--yes", DOCUMENT)
            self.assertEqual(6, result.status, result.stderr)
            self.assertRegex(result.stderr, rb"the import ended with status \d+ and was undone")
            self.assertFalse(device.path(STATE).exists())
            neighbour.execute("COMMIT")
        self.assertEqual(
            [(7,)], self.query(device, "SELECT DISTINCT Estado FROM NimGlobal")
        )

    def test_what_others_store_while_an_undo_waits_for_them_is_saved(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        kept = set(device.path("/tarvo/backup").iterdir())
        with closing(device.database(CONFIG_DB)) as neighbour:
            neighbour.execute("BEGIN IMMEDIATE")
            neighbour.execute(
                "UPDATE configuracionWebGlobal SET valor = 'Neighbour'"
                " WHERE nombre = 'identificacion_cabecera'"
            )
            running = device.start(BACKUP_PROGRAM, ["undo"], env={"TZ": "UTC"})
            end = time.monotonic() + 60
            while not set(device.path("/tarvo/backup").glob("*.xml")) - kept:
                self.assertLess(time.monotonic(), end)
                time.sleep(0.01)
            neighbour.execute("COMMIT")
        result = running.wait(240)
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(before, contents(device))
        names = [
            re.search(rb"<headendName>(.*?)<", path.read_bytes())[1]
            for path in device.path("/tarvo/backup").glob("*.xml")
        ]
        self.assertIn(b"Neighbour", names)

    def test_without_a_configuration_a_restore_is_not_begun_and_an_undo_is_done(self) -> None:
        damages = (
            ("lost", None, "not there"),
            ("emptied", b"", "empty: nothing is in the table configuracionWebGlobal"),
        )
        for name, content, reason in damages:
            with self.subTest(name):
                device = self.made()
                before = contents(device)
                self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
                database = device.path(CONFIG_DB)
                database.unlink()
                if content is not None:
                    database.write_bytes(content)
                undone = self.backup(device, "undo")
                self.assertEqual((0, b""), (undone.status, undone.stderr))
                self.assertEqual(before, contents(device))
                database.unlink()
                if content is not None:
                    database.write_bytes(content)
                result = self.backup(device, "restore", "--yes", DOCUMENT)
                self.assertEqual((3, b""), (result.status, result.stdout))
                self.assertEqual(
                    f"tarvo-backup: {CONFIG_DB}: the configuration database is {reason}\n",
                    result.stderr.decode(),
                )

    def test_an_undo_makes_a_database_of_what_is_none_any_more(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        database = device.path(CONFIG_DB)
        database.write_bytes(b"no database" * 1000)
        database.chmod(0o640)
        journal = database.with_name(database.name + "-journal")
        journal.write_bytes(b"\xd9\xd5\x05\xf9\x20\xa1\x63\xd7" + bytes(600))
        result = self.backup(device, "undo")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(before, contents(device))
        self.assertEqual(0o640, stat.S_IMODE(database.stat().st_mode))
        self.assertFalse(journal.exists())

    def test_an_undo_makes_a_database_whole_that_was_cut_off(self) -> None:
        device = self.made()
        before = contents(device)
        self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
        database = device.path(CONFIG_DB)
        os.truncate(database, database.stat().st_size // 2)
        result = self.backup(device, "undo")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertEqual(before, contents(device))

    def test_beside_readers_of_databases_with_logs_an_undo_is_done(self) -> None:
        device = self.made()
        for path in (CONFIG_DB, VSEC_DB):
            with closing(device.database(path)) as database:
                database.execute("PRAGMA journal_mode = WAL")
        before = contents(device)
        reader = [sys.executable, "-c", READER, str(device.path(CONFIG_DB))]
        for _ in range(UNDOS):
            self.backup(device, "restore", "--yes", "--confirm", "9", DOCUMENT)
            self.assertNotEqual(before, contents(device))
            readers = [subprocess.Popen(reader) for _ in range(3)]
            try:
                result = self.backup(device, "undo")
            finally:
                for process in readers:
                    process.kill()
                    process.wait()
            self.assertEqual((0, b""), (result.status, result.stderr))
            self.assertEqual(before, contents(device))

    def test_an_import_fails_after_it_has_stored_something_behind_a_link_and_is_undone(self) -> None:
        device = self.device("RNB-K408")
        device.path("/tarvo/DB").rename(device.path("/tarvo/flash"))
        device.path("/tarvo/DB").symlink_to("flash")
        cams = re.search(rb"<vsecureCAMList>(.*)</vsecureCAMList>", golden("RNB-K408"), re.DOTALL)[1]
        setting = "<identification><location>Roof</location></identification>"
        device.path(DOCUMENT).write_bytes(document(setting, cams=cams.decode()))
        before = contents(device)
        with closing(device.database(VSEC_DB)) as neighbour:
            neighbour.execute("BEGIN IMMEDIATE")
            running = device.start(BACKUP_PROGRAM, ["restore", "--yes", DOCUMENT], env={"TZ": "UTC"})
            place = "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'identificacion_localizacion'"
            end = time.monotonic() + 60
            while self.query(device, place) != [("Roof",)]:
                self.assertLess(time.monotonic(), end)
                time.sleep(0.01)
            while device.path("/tarvo/backup/.restore/document.xml").exists():
                time.sleep(0.01)
            neighbour.execute("ROLLBACK")
        result = running.wait(240)
        self.assertEqual(6, result.status, result.stderr)
        self.assertEqual(before, contents(device))

    def test_killed_at_any_moment_it_is_before_or_after(self) -> None:
        template = self.made()
        before = contents(template)
        self.backup(template, "restore", "--yes", DOCUMENT)
        after = contents(template)

        def check(number: int) -> None:
            device = self.made()
            running = device.start(
                BACKUP_PROGRAM, ["restore", "--yes", DOCUMENT], env={"TZ": "UTC"}
            )
            time.sleep(random.Random(number).uniform(0.02, 1.0))
            running.kill()
            running.wait(60)
            self.assertEqual(0, self.backup(device, "undo", "--abandoned").status)
            found = contents(device)
            self.assertIn(found, (before, after))

        self.each(check, ((number,) for number in range(KILLS)))


if __name__ == "__main__":
    main()
