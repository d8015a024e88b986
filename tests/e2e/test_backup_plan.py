"""tarvo-backup plan: what it tells, and that it leaves the device alone. That it foretells what
tarvo-config does is in test_backup_properties.py."""

import json
import re
import shutil
import stat
import sys
import time
from contextlib import closing
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
    document,
    edited,
    golden,
    leave_half_written,
    main,
    models,
)

DOCUMENT = "/tmp/document.xml"
SI_FOLDER = "/tarvo/datosWeb/tablasSI"


def snapshot(device: Device) -> dict[str, tuple]:
    """Every file and folder of the device with its content, mode and times."""
    found = {}
    for path in sorted(device.root.rglob("*")):
        # The simulator's own log, and the time of the folder where private copies come and go.
        if path.parent == device.root:
            continue
        status = path.lstat()
        content = path.read_bytes() if path.is_file() else None
        found[str(path)] = (status.st_mode, status.st_mtime_ns, status.st_ctime_ns, content)
    return found


class PlanTest(EndToEndTest):
    def backup(self, device: Device, *args: str) -> Result:
        return device.run(BACKUP_PROGRAM, args, env={"TZ": "UTC"}, timeout=120)

    def plan(self, device: Device, text: bytes) -> dict:
        device.path(DOCUMENT).write_bytes(text)
        result = self.backup(device, "plan", "--json", DOCUMENT)
        self.assertEqual(b"", result.stderr)
        return json.loads(result.stdout)

    def test_the_device_is_the_same_before_and_after_byte_for_byte(self) -> None:
        def check(model: str) -> None:
            device = self.device(model)
            text = edited(golden(model), "<headendName>", "<headendName>New ")
            text = re.sub(rb"<gateway>[^<]*", b"<gateway>10.9.9.9", text)
            text = re.sub(rb"<country>[^<]*", b"<country>PT", text)
            text = re.sub(rb"<nid>[^<]*", b"<nid>4242", text, count=1)
            device.path(DOCUMENT).write_bytes(text)
            before = snapshot(device)
            result = self.backup(device, "plan", DOCUMENT)
            self.assertEqual((b"", [], []), (result.stderr, result.syslog, result.actions))
            self.assertIn(result.status, (1, 6))
            self.assertEqual(before, snapshot(device))

        self.each(check, ((model,) for model in models()))

    def test_an_unchanged_document_is_told_by_its_marks_alone(self) -> None:
        device = self.device("WVX-BQ4")
        plan = self.plan(device, self.export(device).stdout)
        self.assertEqual((0, 1, [], []), tuple(plan[k] for k in ("status", "tries", "errors", "changes")))
        self.assertNotEqual([], plan["marks"])

    def test_a_second_restore_of_the_same_document_would_do_nothing(self) -> None:
        device = self.device("QRA-310")
        text = document("<identification><location>Roof</location></identification>")
        self.assertEqual(0, self.load(device, text).status)
        result = self.backup(device, "plan", DOCUMENT)
        self.assertEqual((0, b"The restore would succeed. Nothing would change.\n"),
                         (result.status, result.stdout))

    def test_an_error_is_told_with_path_line_and_column(self) -> None:
        device = self.device("QRA-310")
        cases = (
            (
                "<configuration>\n <homeChannels>\n  <channel/>\n </homeChannels>\n</configuration>",
                101, "homeChannels/channel[1]", 3, 4,
            ),
            (
                "<configuration>\n\t<dvbNetworks>\n<dvbNetwork><id>1</id>\n"
                "<tipoNITPatron>7</tipoNITPatron></dvbNetwork></dvbNetworks></configuration>",
                103, "dvbNetworks/dvbNetwork[id=1]/tipoNITPatron", 4, 2,
            ),
        )
        for text, code, path, line, column in cases:
            with self.subTest(path):
                plan = self.plan(device, text.encode())
                first = plan["errors"][0]
                self.assertEqual(
                    (code, {"path": path, "line": line, "column": column}),
                    (first["code"], first["element"]),
                )
                self.assertEqual((3, {"code": 202, "element": None}),
                                 (plan["tries"],
                                  {k: plan["errors"][-1][k] for k in ("code", "element")}))

    def test_a_database_that_is_not_there_is_one_without_tables_as_in_the_import(self) -> None:
        device = self.device("QRA-310")
        device.path(CONFIG_DB).unlink()
        device.path(DOCUMENT).write_bytes(golden("QRA-310"))
        plan = json.loads(self.backup(device, "plan", "--json", DOCUMENT).stdout)
        self.assertFalse(device.path(CONFIG_DB).exists())
        self.assertEqual(
            (
                "Could not access database: Could not set value",
                "identification/headendName",
                3,
                None,
            ),
            (
                plan["errors"][0]["text"],
                plan["errors"][0]["element"]["path"],
                plan["status"],
                plan["changes"],
            ),
        )
        result = device.run(PROGRAM, [DOCUMENT])
        self.assertEqual((3, 3), (result.status, result.stderr.count(b"Error: 102\n")))

    def test_a_module_of_another_address_replaces_one_of_its_kind(self) -> None:
        device = self.device("QRA-310")
        [mac] = self.query(device, "SELECT MAC FROM RedesModulos ORDER BY MAC LIMIT 1")[0]
        text = golden("QRA-310").replace(mac.encode(), b"02:FF:FF:FF:FF:FF")
        plan = self.plan(device, text)
        bound = [m for m in plan["modules"] if m["by"] != "address"]
        self.assertEqual(0, plan["status"])
        self.assertEqual([("02:FF:FF:FF:FF:FF", mac, "kind")],
                         [(m["mac"], m["headendMac"], m["by"]) for m in bound])
        self.assertEqual([], plan["leftOverModules"])

    def test_an_error_of_all_modules_is_told_of_their_list(self) -> None:
        device = self.device("QRA-310")
        whole = golden("QRA-310")
        module = whole[whole.index(b"<module>") : whole.index(b"</module>") + len(b"</module>")]
        kind = re.sub(rb"<family>\d+", b"<family>99", module).replace(b"<mac>", b"<mac>x", 1)
        for code, text in ((503, whole.replace(module, b"", 1)), (501, whole.replace(module, kind, 1))):
            with self.subTest(code):
                plan = self.plan(device, text)
                found = {error["code"]: error["element"] for error in plan["errors"]}
                self.assertEqual("modules", found[code]["path"])
                self.assertEqual([], plan["notTaken"])

    def test_what_the_log_tells_besides_errors_is_told_once(self) -> None:
        device = self.device("QRA-310")
        with closing(device.database(CONFIG_DB)) as database:
            database.execute("DROP TABLE AudioLanguageListGlobal")
        plan = self.plan(
            device, document("<colour/><colour/><preferredLanguages><language/></preferredLanguages>")
        )
        self.assertEqual(
            [
                "Unknown configuration setting: colour",
                "[ERROR_DB]deleteAll: Error eliminando la tabla AudioLanguageListGlobal",
                "[ERROR_DB]deleteAll: no such table: AudioLanguageListGlobal",
            ],
            plan["complaints"],
        )

    def test_an_error_that_is_of_no_element_has_none(self) -> None:
        device = self.device("QRA-310")
        plan = self.plan(device, b"<unfinished/>")
        self.assertEqual([], [error for error in plan["errors"] if error["element"]])

    def test_what_cannot_be_exported_is_told_with_the_reason(self) -> None:
        device = self.device("QRA-310")
        text = document("<identification><location>Roof</location></identification>")
        with closing(device.database(CONFIG_DB)) as database:
            # Rows that can be read until the location is another one.
            database.executescript(
                "ALTER TABLE AudioLanguageListGlobal RENAME TO Languages;"
                "CREATE VIEW AudioLanguageListGlobal AS SELECT idALLG,"
                " CASE WHEN EXISTS (SELECT * FROM configuracionWebGlobal WHERE valor = 'Roof')"
                " THEN abs(-9223372036854775807 - 1) ELSE AudioCode END AS AudioCode FROM Languages;"
            )
        after = self.plan(device, text)
        self.assertEqual((0, None, []), tuple(after[k] for k in ("status", "changes", "notTaken")))
        self.assertNotEqual([], after["rows"])
        shown = self.backup(device, "plan", DOCUMENT)
        self.assertIn(b"What would change cannot be told\nthe configuration cannot be read as a whole"
                      b"\n  [ERROR_DB]", shown.stdout)
        with closing(device.database(CONFIG_DB)) as database:
            database.execute("DROP VIEW AudioLanguageListGlobal")
        before = self.plan(device, text)
        self.assertEqual((0, None), (before["status"], before["changes"]))

    def test_scripts_behind_a_file_that_cannot_be_written_do_not_run(self) -> None:
        def no_folder(device: Device, path: str) -> None:
            shutil.rmtree(device.path(path))

        def folder(device: Device, path: str) -> None:
            device.path(path).unlink(missing_ok=True)
            device.path(path).mkdir()

        def link(target: str):
            def make(device: Device, path: str) -> None:
                device.path(path).unlink(missing_ok=True)
                device.path(path).symlink_to(target)

            return make

        cases = (
            (no_folder, "/tarvo/conf", 0),
            (no_folder, "/tarvo/conf/timezone", 0),
            (folder, "/tarvo/conf/timezone/localtime", 0),
            (link("/nowhere/file"), "/tarvo/conf/timezone/localtime", 0),
            (link("localtime"), "/tarvo/conf/timezone/localtime", 0),
            (link("../zone"), "/tarvo/conf/timezone/localtime", 2),
            (link("/nowhere"), "/tmp/temp_tot_file_web", 2),
            (folder, "/tarvo/conf/tot_file", 1),
            (folder, "/tmp/temp_tot_file_web", 1),
        )
        for harm, path, count in cases:
            with self.subTest(path, harm=harm):
                device = self.device("QRA-310")
                harm(device, path)
                text = document("<regional><country>PT</country></regional>")
                scripts = self.plan(device, text)["scripts"]
                self.assertEqual(count, len(scripts), scripts)
                ran = [line.split()[0] for line in self.load(device, text).actions]
                self.assertEqual([Path(line.split()[0]).name for line in scripts], ran)

    def test_a_name_that_no_file_can_have_renames_none(self) -> None:
        device = self.device("QRA-310")
        [(nid,)] = self.query(device, "SELECT NID FROM RedesCabecera ORDER BY idRed LIMIT 1")
        [(key,)] = self.query(device, "SELECT idRed FROM RedesCabecera ORDER BY idRed LIMIT 1")
        device.path(f"{SI_FOLDER}/NIT_table_{nid}").write_text("nit")
        for kind in ("NIT", "SDT"):
            device.path(f"{SI_FOLDER}/{kind}_table_88888").mkdir()
        for digits, does_rename in (("7" * 300, False), ("88888", False), ("7777", True)):
            text = document(
                f"<dvbNetworks><dvbNetwork><id>{key}</id><nid>{digits}</nid></dvbNetwork>"
                "</dvbNetworks>"
            )
            self.assertEqual(does_rename, self.plan(device, text)["renames"] != [], digits)
            self.load(device, text)
            self.assertEqual(does_rename, device.path(f"{SI_FOLDER}/NIT_table_7777").exists())
            self.query(device, f"UPDATE RedesCabecera SET NID = '{nid}' WHERE idRed = '{key}'")

    def test_a_database_that_is_none_has_no_rows_that_change(self) -> None:
        device = self.device("RNB-K408")
        text = golden("RNB-K408")
        path = device.path(VSEC_DB)
        for content in (None, b"This is no database. " * 100):
            with self.subTest(content):
                path.unlink(missing_ok=True)
                if content is not None:
                    path.write_bytes(content)
                plan = self.plan(device, text)
                self.assertNotIn("VSecure", {row["table"] for row in plan["rows"]})

    def test_a_database_that_is_damaged_ends_the_plan(self) -> None:
        device = self.device("RNB-K408")
        path = device.path(VSEC_DB)
        content = path.read_bytes()
        path.write_bytes(content[:4096] + b"\xff" * (len(content) - 4096))
        device.path(DOCUMENT).write_bytes(golden("RNB-K408"))
        result = self.backup(device, "plan", DOCUMENT)
        self.assertEqual((3, b""), (result.status, result.stdout))
        self.assertEqual(
            f"tarvo-backup: {VSEC_DB}: database disk image is malformed\n", result.stderr.decode()
        )

    def folders(self, device: Device) -> list[Path]:
        return list(device.path("/tmp").glob("tarvo-backup.*"))

    def waiting(self, device: Device):
        """A plan that has its folder and waits for a writer, and the writer."""
        device.path(DOCUMENT).write_bytes(golden(device.model))
        writer = device.database(CONFIG_DB)
        writer.execute("BEGIN EXCLUSIVE")
        running = device.start(BACKUP_PROGRAM, ["plan", DOCUMENT])
        end = time.monotonic() + 30
        while not self.folders(device) and time.monotonic() < end:
            time.sleep(0.01)
        return running, writer

    def test_a_signal_leaves_no_private_copy(self) -> None:
        device = self.device("QRA-310")
        for number in (1, 2, 15):
            running, writer = self.waiting(device)
            with closing(writer):
                self.assertEqual([0o700], [stat.S_IMODE(f.stat().st_mode) for f in self.folders(device)])
                running.kill(number)
                self.assertEqual(128 + number, running.wait(60).status)
            self.assertEqual([], self.folders(device))

    def test_what_a_killed_plan_left_is_closed_to_others_and_removed_by_the_next(self) -> None:
        device = self.device("QRA-310")
        running, writer = self.waiting(device)
        with closing(writer):
            running.kill()
            running.wait(60)
        [left] = self.folders(device)
        self.assertEqual(0o700, stat.S_IMODE(left.stat().st_mode))
        self.assertEqual(1, self.backup(device, "plan", DOCUMENT).status)
        self.assertEqual([], self.folders(device))

    def test_databases_with_logs_are_left_alone(self) -> None:
        device = self.device("RNB-K408")
        for path in (CONFIG_DB, STATE_DB, VSEC_DB):
            with closing(device.database(path)) as database:
                database.execute("PRAGMA journal_mode = WAL")
        text = document("<identification><location>Roof</location></identification>")
        device.path(DOCUMENT).write_bytes(text)
        before = snapshot(device)
        planned = json.loads(self.backup(device, "plan", "--json", DOCUMENT).stdout)
        self.assertEqual(["Roof"], [change["new"] for change in planned["changes"]])
        self.assertEqual(before, snapshot(device))

    def test_a_database_with_a_journal_to_roll_back_is_copied_with_it(self) -> None:
        device = self.device("QRA-310")
        leave_half_written(device)
        half = device.path(CONFIG_DB).read_bytes()
        text = document("<identification><location>Roof</location></identification>")
        device.path(DOCUMENT).write_bytes(text)
        before = snapshot(device)
        [change] = self.plan(device, text)["changes"]
        self.assertEqual("Málaga, Paseo del Mar 12 <sótano>", change["old"])
        self.assertEqual(half, device.path(CONFIG_DB).read_bytes())


if __name__ == "__main__":
    main()
