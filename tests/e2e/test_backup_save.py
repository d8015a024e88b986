"""tarvo-backup save: complete backups, or an error."""

import json
import os
import re
import socket
import stat
import sys
import threading
import time
from concurrent.futures import FIRST_COMPLETED, ThreadPoolExecutor, wait
from contextlib import closing
from datetime import datetime, timedelta, timezone
from fcntl import LOCK_EX, flock
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    BACKUP_PROGRAM,
    CONFIG_DB,
    PROGRAM,
    STATE_DB,
    VSEC_DB,
    Device,
    EndToEndTest,
    Result,
    golden,
    main,
    models,
)

FOLDER = "/tarvo/backup"
SAVES = int(os.environ.get("TARVO_SAVES", "10"))


class SaveTest(EndToEndTest):
    def save(self, device: Device, *args: str) -> Result:
        return device.run(BACKUP_PROGRAM, ["save", *args], env={"TZ": "UTC"}, timeout=120)

    def kept(self, device: Device) -> list[Path]:
        return sorted(device.path(FOLDER).glob("*.xml"), key=lambda path: path.stem)

    def change(self, device: Device, value: str) -> None:
        self.query(
            device,
            f"UPDATE configuracionWebGlobal SET valor = '{value}'"
            " WHERE nombre = 'identificacion_cabecera'",
        )

    def test_a_backup_is_what_tarvo_config_exports_and_its_owners_alone(self) -> None:
        def check(model: str) -> None:
            device = self.device(model)
            self.assertEqual(0, self.save(device).status)
            [path] = self.kept(device)
            self.assertRegex(path.name, r"^[\w-]+-\d{4}-\d\d-\d\dT\d{4}Z\.xml$")
            self.assertEqual(0o600, stat.S_IMODE(path.stat().st_mode))
            self.assertBytes(golden(model), path.read_bytes())

        self.each(check, ((model,) for model in models()))

    def test_an_unchanged_configuration_makes_no_new_file(self) -> None:
        device = self.device("WVX-BQ4")
        self.save(device)
        second = json.loads(self.save(device, "--json").stdout)
        [path] = self.kept(device)
        self.assertEqual(
            {
                "file": f"{FOLDER}/{path.name}",
                "unchanged": True,
                "removed": [],
                "refusals": [],
                "notTried": None,
            },
            second,
        )

    def test_an_order_that_counts_makes_a_new_file_where_diff_is_silent(self) -> None:
        device = self.device("WVX-BQ4")

        def save_with(languages: str) -> dict:
            self.query(device, "DELETE FROM AudioLanguageListGlobal")
            self.query(
                device, f"INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES {languages}"
            )
            return json.loads(self.save(device, "--json").stdout)

        first = save_with("('spa'), ('fra')")
        second = save_with("('fra'), ('spa')")
        self.assertEqual([False, False], [first["unchanged"], second["unchanged"]])
        result = device.run(BACKUP_PROGRAM, ["diff", first["file"], second["file"]])
        self.assertEqual((0, b""), (result.status, result.stdout))
        self.assertTrue(save_with("('fra'), ('spa')")["unchanged"])

    def test_the_oldest_go_when_only_some_are_kept(self) -> None:
        device = self.device("WVX-BQ4")
        for value in ("one", "two", "three"):
            self.change(device, value)
            self.assertEqual(0, self.save(device, "--keep", "2").status)
        names = [re.search(rb"<headendName>(.*?)<", p.read_bytes())[1] for p in self.kept(device)]
        self.assertEqual([b"two", b"three"], names)

    def test_a_database_with_a_journal_to_roll_back_is_saved_as_it_was_before(self) -> None:
        device = self.device("WVX-BQ4")
        path = device.path(CONFIG_DB)
        with closing(device.database(CONFIG_DB)) as database:
            database.execute("PRAGMA cache_size = 1")
            database.execute("BEGIN")
            database.execute("UPDATE configuracionWebGlobal SET valor = 'half' || valor")
            database.execute("UPDATE ServiciosSalidaGlobal SET NombreSalida = 'half' || idSSG")
            database.execute("UPDATE PIDsSalidaGlobal SET AudioCode = 'half' || idPSG")
            half, journal = path.read_bytes(), Path(f"{path}-journal").read_bytes()
            database.execute("ROLLBACK")
        self.assertNotEqual(half, path.read_bytes())
        path.write_bytes(half)
        Path(f"{path}-journal").write_bytes(journal)
        result = self.save(device)
        self.assertEqual((0, b""), (result.status, result.stderr))
        [saved] = self.kept(device)
        self.assertBytes(golden("WVX-BQ4"), saved.read_bytes())
        self.assertEqual(half, path.read_bytes())

    def place(self, device: Device, name: str, text: str) -> Path:
        path = device.path(FOLDER) / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(text)
        return path

    def stem(self, device: Device) -> str:
        self.save(device, "/tmp/probe")
        [path] = device.path("/tmp/probe").glob("*.xml")
        return path.name[: -len("2026-11-21T0315Z.xml")]

    def test_a_newest_backup_without_a_configuration_is_no_backup(self) -> None:
        device = self.device("WVX-BQ4")
        name = self.stem(device) + "2020-01-01T0000Z.xml"
        whole = golden("WVX-BQ4").decode().partition("\n")[2]
        for text in ("", "<other/>", f"<redacted>{whole}</redacted>"):
            self.place(device, name, text)
            saved = json.loads(self.save(device, "--json").stdout)
            self.assertFalse(saved["unchanged"], text[:20])
            device.path(saved["file"]).unlink()

    def test_only_the_hosts_own_backups_are_removed(self) -> None:
        device = self.device("WVX-BQ4")
        stem = self.stem(device)
        others = [
            self.place(device, stem + name, "<configuration/>")
            for name in (
                "2-2020-01-01T0000Z.xml",
                "1.xml",
                "2020.xml",
                "2020-01-01T0000Z-.xml",
                "2020-01-01T0000Z-1a.xml",
                "2020-01-01T0000Z.txt",
            )
        ]
        own = [
            self.place(device, stem + name, "<configuration/>")
            for name in ("2020-01-01T0000Z.xml", "2020-01-01T0000Z-12.xml")
        ]
        saved = json.loads(self.save(device, "--keep", "1", "--json").stdout)
        self.assertEqual([f"{FOLDER}/{path.name}" for path in own], saved["removed"])
        self.assertEqual([True] * len(others), [path.exists() for path in others])

    def test_the_backups_of_a_minute_are_in_the_order_of_their_numbers(self) -> None:
        device = self.device("WVX-BQ4")
        stem = self.stem(device) + "2020-01-01T0000Z"
        names = [f"{stem}{number}.xml" for number in ("", "-2", "-9", "-10", "-11")]
        for name in names:
            self.place(device, name, golden("WVX-BQ4").decode())
        saved = json.loads(self.save(device, "--keep", "2", "--json").stdout)
        self.assertEqual(f"{FOLDER}/{names[-1]}", saved["file"])
        self.assertEqual([f"{FOLDER}/{name}" for name in names[:-2]], saved["removed"])

    def test_a_backup_comes_after_all_others_of_its_minute(self) -> None:
        device = self.device("WVX-BQ4")
        for value in range(12):
            self.change(device, f"v{value}")
            saved = json.loads(self.save(device, "--keep", "1", "--json").stdout)
            path = device.path(saved["file"])
            self.assertEqual([path], self.kept(device))
            # The first of a minute has no number; what went before has not given its name back.
            number = re.search(r"Z(?:-(\d+))?\.xml$", path.name)[1]
            minute = path.name[: path.name.index("Z")]
            if value > 0 and minute == before[0]:
                self.assertEqual(before[1] + 1, int(number or 1))
            before = (minute, int(number or 1))

    def test_a_name_that_is_taken_by_something_else_is_passed_over(self) -> None:
        device = self.device("WVX-BQ4")
        stem = self.stem(device)
        now = datetime.now(timezone.utc)
        minutes = [now + timedelta(minutes=passed) for passed in range(5)]
        for minute in minutes:
            taken = device.path(FOLDER) / f"{stem}{minute:%Y-%m-%dT%H%MZ}.xml"
            taken.mkdir(parents=True)
        device.path(FOLDER).chmod(0o700)
        saved = json.loads(self.save(device, "--json").stdout)
        self.assertIn(
            saved["file"], [f"{FOLDER}/{stem}{minute:%Y-%m-%dT%H%MZ}-2.xml" for minute in minutes]
        )

    def test_hosts_of_any_name_have_backups_of_their_own(self) -> None:
        device = self.device("WVX-BQ4")
        hosts = ("tv.room.2", "tv.room_2", "tv.room 2", "tv.room", "tv")
        for host in hosts:
            device.path("/tarvo/sim/values/HOSTNAME").write_text(f"{host}\n")
            saved = json.loads(self.save(device, "--keep", "1", "--json").stdout)
            self.assertEqual((False, []), (saved["unchanged"], saved["removed"]), host)
            stem = host.replace(" ", "%20")
            self.assertRegex(saved["file"], rf"^{FOLDER}/{re.escape(stem)}-\d{{4}}-\d\d-\d\dT")
        self.assertEqual(len(hosts), len(self.kept(device)))

    def test_what_killed_runs_left_goes_after_a_day(self) -> None:
        device = self.device("WVX-BQ4")
        name = self.stem(device) + "2020-01-01T0000Z.xml"
        old = time.time() - 25 * 3600

        def left(name: str, moment: float = old) -> Path:
            path = self.place(device, name, "<configuration/>")
            os.utime(path, (moment, moment))
            return path

        mine = [left(f"{name}.new-aB3dE6"), left(name.replace(".xml", "-12.xml.new-000000"))]
        others = [
            left(f"{name}.new-aB3dE7", time.time() - 23 * 3600),
            left(f"{name}.new-aB3dE"),
            left(f"{name}.old-aB3dE6"),
            left("2" + name + ".new-aB3dE6"),
            left("notes.xml.new-aB3dE6"),
        ]
        link = device.path(FOLDER) / f"{name}.new-aB3dE8"
        link.symlink_to("nowhere")
        os.utime(link, (old, old), follow_symlinks=False)
        device.path(FOLDER).chmod(0o700)
        saved = json.loads(self.save(device, "--json").stdout)
        self.assertEqual([], saved["removed"])
        self.assertEqual([False] * len(mine), [path.exists() for path in mine])
        self.assertEqual([True] * len(others), [path.exists() for path in others])
        self.assertTrue(link.is_symlink())

    def test_saves_at_once_make_one_backup_of_one_configuration(self) -> None:
        count = 6
        device = self.device("WVX-BQ4")
        folder = device.path(FOLDER)
        folder.mkdir(mode=0o700)
        lock = os.open(folder, os.O_RDONLY)
        flock(lock, LOCK_EX)
        with ThreadPoolExecutor(count) as pool:
            running = [pool.submit(self.save, device, "--json") for _ in range(count)]
            # Ample time for one that does not wait, none that those which do depend on.
            wait(running, timeout=2, return_when=FIRST_COMPLETED)
            written = list(folder.iterdir())
            os.close(lock)
            results = [each.result() for each in running]
        self.assertEqual([], written)
        self.assertEqual([(0, b"")] * count, [(result.status, result.stderr) for result in results])
        saved = [json.loads(result.stdout) for result in results]
        [path] = folder.iterdir()
        self.assertEqual({f"{FOLDER}/{path.name}"}, {each["file"] for each in saved})
        self.assertEqual(count - 1, sum(each["unchanged"] for each in saved))

    def test_a_backup_that_the_headend_would_not_take_back_is_kept_with_a_warning(self) -> None:
        def check(model: str) -> None:
            device = self.device(model)
            result = self.save(device, "--json")
            saved = json.loads(result.stdout)
            planned = device.run(
                BACKUP_PROGRAM, ["plan", "--json", saved["file"]], env={"TZ": "UTC"}, timeout=120
            )
            why = [
                error for error in json.loads(planned.stdout)["errors"] if error["code"] != 202
            ]
            self.assertEqual((0, why), (result.status, saved["refusals"]))
            self.assertEqual(planned.status == 6, why != [])
            lines = ["tarvo-backup: warning: this headend would not take the backup back as it is"]
            for error in why:
                path = f"{error['element']['path']}: " if error["element"] else ""
                lines.append(f"  error {error['code']}: {path}{error['text']}")
            expected = "".join(line + "\n" for line in lines) if why else ""
            self.assertEqual(expected, result.stderr.decode())
            again = self.save(device, "--output", "-")
            self.assertEqual(
                (0, golden(model), result.stderr), (again.status, again.stdout, again.stderr)
            )
            unchanged = self.save(device, "--json")
            self.assertEqual(
                (0, b"", {**saved, "unchanged": True}),
                (unchanged.status, unchanged.stderr, json.loads(unchanged.stdout)),
            )

        self.each(check, ((model,) for model in models()))
        self.assertIn("LMV-512", models())

    def test_names_are_no_commands_to_a_terminal(self) -> None:
        device = self.device("WVX-BQ4")
        device.path("/tmp/a\x1b[2Jb").write_text("")
        for place, reason in (
            ("/tmp/a\x1b[2Jb", "is no folder"),
            ("/tmp/a\x1b[2Jb/c", "Not a directory"),
        ):
            result = self.save(device, place)
            shown = place.replace("\x1b", r"\x1b")
            self.assertEqual(f"tarvo-backup: {shown}: {reason}\n", result.stderr.decode())
        saved = self.save(device, "/tmp/c\x1b[2Jd")
        self.assertRegex(saved.stdout.decode(), r"^/tmp/c\\x1b\[2Jd/.*: saved\n$")

    def test_what_was_just_saved_stays_whatever_the_clock_says(self) -> None:
        device = self.device("WVX-BQ4")
        later = self.place(device, self.stem(device) + "2999-01-01T0000Z.xml", "<configuration/>")
        saved = json.loads(self.save(device, "--keep", "1", "--json").stdout)
        self.assertTrue(device.path(saved["file"]).exists())
        self.assertEqual([f"{FOLDER}/{later.name}"], saved["removed"])

    def test_a_clock_that_was_ahead_for_a_night_makes_no_newer_backup_an_older_one(self) -> None:
        device = self.device("WVX-BQ4")
        stem = self.stem(device)
        ahead = self.place(device, stem + "2999-01-01T0000Z.xml", "<configuration/>")
        names = [ahead.name]
        for number, value in enumerate(("one", "two", "three"), 2):
            self.change(device, value)
            saved = json.loads(self.save(device, "--keep", "3", "--json").stdout)
            self.assertFalse(saved["unchanged"])
            names.append(f"{stem}2999-01-01T0000Z-{number}.xml")
            self.assertEqual(f"{FOLDER}/{names[-1]}", saved["file"])
        self.assertEqual([f"{FOLDER}/{names[0]}"], saved["removed"])
        again = json.loads(self.save(device, "--keep", "3", "--json").stdout)
        self.assertEqual((True, []), (again["unchanged"], again["removed"]))
        self.assertEqual(names[1:], [path.name for path in self.kept(device)])

    def test_only_a_file_is_replaced(self) -> None:
        device = self.device("WVX-BQ4")
        kept = device.path("/tmp/kept.xml")
        kept.write_text("kept")
        device.path("/tmp/link.xml").symlink_to("kept.xml")
        os.mkfifo(device.path("/tmp/pipe"))
        for name in ("link.xml", "pipe"):
            result = self.save(device, "--output", f"/tmp/{name}")
            reason = f"tarvo-backup: /tmp/{name}: is no regular file; - is standard output\n"
            self.assertEqual((4, reason), (result.status, result.stderr.decode()))
        folder = self.save(device, "--output", "/tmp")
        self.assertEqual(
            (4, b"tarvo-backup: /tmp: Is a directory\n"), (folder.status, folder.stderr)
        )
        self.assertEqual("kept", kept.read_text())
        self.assertTrue(device.path("/tmp/link.xml").is_symlink())
        self.assertTrue(device.path("/tmp/pipe").is_fifo())

    def test_a_file_or_standard_output_instead_of_the_folder(self) -> None:
        device = self.device("WVX-BQ4")
        self.assertBytes(golden("WVX-BQ4"), self.save(device, "--output", "-").stdout)
        self.save(device, "--output", "/tmp/one.xml")
        self.assertBytes(golden("WVX-BQ4"), device.path("/tmp/one.xml").read_bytes())
        self.assertFalse(device.path(FOLDER).exists())

    def test_an_incomplete_configuration_is_no_backup(self) -> None:
        def check(name: str, damage: str | None, reason: str) -> None:
            device = self.device("QRA-310", damage or "")
            if damage is None:
                device.path(CONFIG_DB).unlink()
            result = self.save(device)
            self.assertEqual(3, result.status)
            self.assertIn(reason, result.stderr.decode())
            self.assertEqual([], self.kept(device))

        self.each(
            check,
            (
                ("lost", None, "the configuration database is not there"),
                (
                    "empty",
                    "DELETE FROM configuracionWebGlobal",
                    "the configuration database is empty: nothing is in the table"
                    " configuracionWebGlobal",
                ),
                (
                    "no modules",
                    "DELETE FROM RedesModulos",
                    "the configuration database is empty: nothing is in the table RedesModulos",
                ),
                (
                    "no table of modules",
                    "DROP TABLE RedesModulos",
                    "the configuration database is empty: nothing is in the table RedesModulos",
                ),
                ("a table is missing", "DROP TABLE DiSEqCGlobal", "DiSEqCGlobal"),
            ),
        )

    def test_a_database_that_is_not_there_is_named(self) -> None:
        device = self.device("QRA-310")
        device.path(STATE_DB).unlink()
        result = self.save(device)
        self.assertEqual(
            (
                3,
                "tarvo-backup: the configuration cannot be read as a whole\n"
                f"  {STATE_DB} is not there\n",
            ),
            (result.status, result.stderr.decode()),
        )
        self.assertFalse(device.path(STATE_DB).exists())

    def test_a_file_in_the_place_of_the_configuration_is_no_backup(self) -> None:
        device = self.device("QRA-310")
        whole = device.path(CONFIG_DB).read_bytes()
        torn = whole[:8192] + b"\xff" * 8192 + whole[16384:]
        headless = whole[:100] + b"\xff" * 3996 + whole[4096:]
        uncounted = whole[:36] + b"\0\0\0\5" + whole[40:]  # pages that are free
        for content, reason in (
            (b"", "empty: nothing is in the table configuracionWebGlobal"),
            (b"no database" * 1000, "damaged: file is not a database"),
            (torn, "damaged: database disk image is malformed"),
            (headless, "damaged: database disk image is malformed"),
            (uncounted, "damaged"),
        ):
            device.path(CONFIG_DB).write_bytes(content)
            result = self.save(device)
            self.assertEqual(
                (3, f"tarvo-backup: {CONFIG_DB}: the configuration database is {reason}\n"),
                (result.status, result.stderr.decode()),
            )

    def test_a_socket_in_the_place_of_a_database_is_told(self) -> None:
        device = self.device("QRA-310")
        path = device.path(CONFIG_DB)
        path.unlink()
        with socket.socket(socket.AF_UNIX) as stranger:
            stranger.bind(os.path.relpath(path))
            result = self.save(device)
        self.assertEqual(
            (3, f"tarvo-backup: {CONFIG_DB} is not a regular file\n"),
            (result.status, result.stderr.decode()),
        )

    def test_what_a_neighbour_puts_beside_the_state_database_is_not_opened(self) -> None:
        device = self.device("QRA-310")
        beside = device.path(STATE_DB + "-journal")
        for make, what in ((os.mkfifo, "pipe"), (lambda path: os.symlink("/dev/zero", path), "link")):
            with self.subTest(what):
                make(beside)
                result = self.save(device)
                self.assertEqual(3, result.status, result.stderr)
                self.assertEqual(
                    f"tarvo-backup: {STATE_DB}-journal is not a regular file\n", result.stderr.decode()
                )
                beside.unlink()

    def test_a_folder_that_is_none_or_others_may_write_to_is_refused(self) -> None:
        device = self.device("WVX-BQ4")
        device.path("/tmp/file").write_text("kept")
        device.path("/tmp/away").symlink_to("/tmp/nowhere")
        device.path("/tmp/own").mkdir(mode=0o700)
        device.path("/tmp/link").symlink_to("own")
        for name, mode in (("group", 0o770), ("all", 0o757), ("sticky", 0o1777)):
            device.path(f"/tmp/{name}").mkdir()
            device.path(f"/tmp/{name}").chmod(mode)
        shared = "must be a folder that nobody else owns or may write to"
        for place, reason in (
            ("/tmp/file", "is no folder"),
            ("/tmp/away", "is a link, not the folder itself"),
            ("/tmp/link", "is a link, not the folder itself"),
            ("/tmp/link/", "is a link, not the folder itself"),
            ("/tmp/file/below", "Not a directory"),
            ("/tmp/group", shared),
            ("/tmp/all", shared),
            ("/tmp/sticky", shared),
        ):
            result = self.save(device, place)
            self.assertEqual(
                (4, f"tarvo-backup: {place}: {reason}\n", b""),
                (result.status, result.stderr.decode(), result.stdout),
            )
        self.assertEqual("kept", device.path("/tmp/file").read_text())
        self.assertEqual([], list(device.path("/tmp").glob("*/*.xml")))

    def test_a_folder_of_the_owners_may_be_read_by_others(self) -> None:
        device = self.device("WVX-BQ4")
        device.path("/tmp/read").mkdir()
        device.path("/tmp/read").chmod(0o755)
        self.assertEqual(0, self.save(device, "/tmp/read").status)
        self.assertEqual(1, len(list(device.path("/tmp/read").glob("*.xml"))))

    def test_what_others_put_beside_the_backups_is_not_taken_for_one(self) -> None:
        device = self.device("WVX-BQ4")
        self.assertEqual(0, self.save(device).status)
        first = self.kept(device)[0].name
        stem = first.rpartition("-20")[0]
        folder = device.path(FOLDER)
        os.mkfifo(folder / f"{stem}-2999-01-01T0000Z.xml")
        (folder / f"{stem}-2998-01-01T0000Z.xml").symlink_to("/tmp/elsewhere.xml")
        (folder / f"{stem}-2997-01-01T0000Z.xml").mkdir()
        result = self.save(device, "--keep", "1")
        self.assertEqual((0, b""), (result.status, result.stderr))
        self.assertIn(f"{first}: unchanged since".encode(), result.stdout)
        self.assertEqual(4, len(list(folder.glob("*.xml"))))

    def test_beside_a_writer_a_backup_is_never_mixed(self) -> None:
        device = self.device("WVX-BQ4")
        done = threading.Event()

        def write() -> None:
            with closing(device.database(CONFIG_DB)) as database:
                database.execute("PRAGMA busy_timeout = 10000")
                number = 0
                while not done.is_set():
                    number += 1
                    database.execute("BEGIN IMMEDIATE")
                    for key in ("cabecera", "localizacion", "fecha"):
                        database.execute(
                            f"UPDATE configuracionWebGlobal SET valor = 'v{number}'"
                            f" WHERE nombre = 'identificacion_{key}'"
                        )
                        time.sleep(0.001)
                    database.execute("COMMIT")

        writer = threading.Thread(target=write)
        writer.start()
        try:
            for _ in range(SAVES):
                result = self.save(device, "--output", "-")
                self.assertEqual((0, b""), (result.status, result.stderr))
                values = re.findall(
                    rb"<(?:headendName|location|installationDate)>(.*?)<", result.stdout
                )
                self.assertEqual(3, len(values))
                self.assertEqual(1, len(set(values)), values)
        finally:
            done.set()
            writer.join()

    def test_beside_a_writer_with_logs_two_databases_are_of_one_moment(self) -> None:
        device = self.device("RNB-K408")
        done = threading.Event()

        def write() -> None:
            with closing(device.database(CONFIG_DB)) as first, closing(device.database(VSEC_DB)) as second:
                for database in (first, second):
                    database.execute("PRAGMA journal_mode = WAL")
                    database.execute("PRAGMA busy_timeout = 10000")
                number = 0
                while not done.is_set():
                    number += 1
                    first.execute(
                        f"UPDATE configuracionWebGlobal SET valor = 'v{number}'"
                        " WHERE nombre = 'identificacion_cabecera'"
                    )
                    second.execute(f"UPDATE VSecure SET Fabricante = 'v{number}'")
                    ready.set()

        ready = threading.Event()
        writer = threading.Thread(target=write)
        writer.start()
        ready.wait(60)
        try:
            for _ in range(SAVES):
                result = self.save(device, "--output", "-")
                self.assertEqual(0, result.status, result.stderr)
                [first] = re.findall(rb"<headendName>v(.*?)<", result.stdout)
                second = set(re.findall(rb"<manufacturer>v(.*?)<", result.stdout))
                self.assertEqual(1, len(second))
                self.assertIn(int(first) - int(*second), (0, 1))
        finally:
            done.set()
            writer.join()

    def test_a_text_of_blanks_is_no_reason_to_keep_no_backup(self) -> None:
        for blanks in (" ", "\n", "\t \r\n"):
            with self.subTest(blanks):
                device = self.device("QRA-310")
                with closing(device.database(CONFIG_DB)) as database:
                    for change in (
                        "UPDATE configuracionWebGlobal SET valor = ?"
                        " WHERE nombre = 'identificacion_localizacion'",
                        "UPDATE ServiciosSalidaGlobal SET NombreSalida = ?",
                    ):
                        database.execute(change, (blanks,))
                printed = device.run(PROGRAM, []).stdout.removesuffix(b"\n")
                self.assertIn(f"<location>{blanks}</location>".encode(), printed)
                result = self.save(device, "--output", "-")
                self.assertEqual((0, printed, b""), (result.status, result.stdout, result.stderr))


if __name__ == "__main__":
    main()
