"""Import when scripts fail, and when the databases cannot be read or written."""

import re
import sys
import time
from collections.abc import Iterable
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    CONFIG_DB,
    DOCUMENT_FILE,
    ERROR_FILE,
    LOG_ERROR,
    NEWS_ERROR,
    NEWS_NOTICE,
    PROGRAM,
    VSEC_DB,
    Device,
    EndToEndTest,
    LogLine,
    Result,
    changed,
    document,
    errors_in,
    main,
    tables,
)

ROLLED_BACK = "Error 202, Could not set configuration"
KEY_TOOL = "VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt"
NEW_ADDRESS = "UPDATE configuracionWebGlobal SET valor = 'new' WHERE nombre = 'network_IP';"


def ends_with(device: Device, script: str, status: int) -> None:
    device.path(f"/tarvo/sim/exit/{script}").write_text(f"{status}\n")


def spoiled(device: Device, script: str, how: str) -> str:
    """Spoils a script. Returns what the shell says of it then, as a pattern."""
    path = device.path(script)
    if how == "missing":
        path.unlink()
        return f"sh: .*{script}: not found\n"
    if how == "not executable":
        path.chmod(0o644)
        return f"sh: .*{script}: Permission denied\n"
    if how == "killed":
        path.write_text("#!/bin/sh\nkill -9 $$\n")
        return "(Killed\n)?"
    ends_with(device, path.name, int(how))
    return ""


class NetworkScriptTest(EndToEndTest):
    def fails_once(self, how: str) -> None:
        # The commit stands. The second try finds nothing left to change, so the script is not
        # run again, and the import ends well; the error file stays.
        device = self.device("QRA-310")
        said = spoiled(device, "/tarvo/script/WAN_from_DB.sh", how)
        expected = changed(device, NEW_ADDRESS)
        started = time.monotonic()
        result = self.load(device, document("<network><ip>new</ip></network><regional/>"))
        self.assertTrue(1 <= time.monotonic() - started)
        self.assertEqual(0, result.status)
        self.assertRegex(result.stderr.decode(), f"^{said}Error: 203\n$")
        self.assertEqual(
            [
                LogLine(NEWS_NOTICE, "REMOTE_CONTROL::: setConfig network_IP = new"),
                LogLine(NEWS_ERROR, "r9::: Error 203, Could not apply network configuration"),
                LogLine(NEWS_NOTICE, "REMOTE_CONTROL::: setConfig network_IP = new"),
            ],
            result.syslog,
        )
        self.assertEqual(["WAN_from_DB.sh"] if how.isdigit() else [], result.actions)
        self.assertEqual("Error: 203", device.path(ERROR_FILE).read_text())
        self.assertTables(expected, tables(device))

    def test_failing_script_is_reported_and_the_second_try_ends_well(self) -> None:
        self.each(
            self.fails_once, [("1",), ("255",), ("missing",), ("not executable",), ("killed",)]
        )

    def test_later_actions_are_left_out_after_it(self) -> None:
        device = self.device("RNB-K408")
        ends_with(device, "WAN_from_DB.sh", 1)
        clock = device.path("/tarvo/conf/timezone/localtime").read_text()
        result = self.load(
            device,
            document(
                "<network><ip>new</ip></network><regional><country>ES</country></regional>"
                "<scramblings/>"
            ),
        )
        # The key tool's group is touched by every pass, so it runs after the second.
        self.assertRun(result, stderr=b"Error: 203\n", actions=["WAN_from_DB.sh", KEY_TOOL])
        self.assertEqual(clock, device.path("/tarvo/conf/timezone/localtime").read_text())


class RegionalFailureTest(EndToEndTest):
    """What goes wrong with the clock is logged, and does not touch the outcome."""

    def fails(
        self, label: str, prepare, logged: str, actions: list[str], kept: Iterable[str]
    ) -> None:
        device = self.device("QRA-310")
        said = prepare(device) or ""
        before = {file: self.content(device, file) for file in kept}
        result = self.load(device, document("<regional><country>AD</country></regional>"))
        self.assertEqual(0, result.status)
        self.assertRegex(result.stderr.decode(), f"^{said}$")
        lines = [line.message for line in result.syslog if line.priority == NEWS_ERROR]
        self.assertRegex("\n".join(lines), f"^{logged}$")
        self.assertEqual(actions, result.actions)
        self.assertEqual(before, {file: self.content(device, file) for file in kept})
        self.assertFalse(device.path(ERROR_FILE).exists())
        self.assertEqual(
            [("AD",)],
            self.query(
                device, "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'idtimezone'"
            ),
        )

    def content(self, device: Device, file: str) -> str | None:
        path = device.path(file)
        return path.read_text() if path.is_file() else None

    def test_failing_steps(self) -> None:
        clock, offsets = "/tarvo/conf/timezone/localtime", "/tarvo/conf/tot_file"
        script, cron = "/tarvo/script/get_time_offsets.sh", "/etc/init.d/S60crond"
        command = re.escape(f'{script} 0 "Europe/Andorra"')
        asked = "get_time_offsets.sh 0 Europe/Andorra"

        def folder(file: str):
            def prepare(device: Device) -> None:
                device.path(file).unlink()
                device.path(file).mkdir()

            return prepare

        def silent(device: Device) -> None:
            device.path(script).write_text("#!/bin/sh\nexit 0\n")

        def without(key: str):
            def prepare(device: Device) -> None:
                with closing(device.database(CONFIG_DB)) as database:
                    database.execute(f"DELETE FROM configuracionWebGlobal WHERE nombre = '{key}'")

            return prepare

        self.each(
            self.fails,
            [
                (
                    "offsets script fails",
                    lambda device: spoiled(device, script, "3"),
                    f"r9::: Error \\(768\\) executing get_time_offsets.sh: {command}",
                    *([asked], [offsets]),
                ),
                (
                    "offsets script missing",
                    lambda device: spoiled(device, script, "missing"),
                    f"r9::: Error \\(32512\\) executing get_time_offsets.sh: {command}",
                    *([], [offsets]),
                ),
                (
                    "offsets script killed",
                    lambda device: spoiled(device, script, "killed"),
                    f"r9::: Error \\([1-9]\\d*\\) executing get_time_offsets.sh: {command}",
                    *([], [offsets]),
                ),
                (
                    "offsets script writes nothing",
                    silent,
                    "r9::: Could not read from /tmp/temp_tot_file_web",
                    *([], [offsets]),
                ),
                (
                    "offsets file cannot be written",
                    folder(offsets),
                    "r9::: Could not write to /tarvo/conf/tot_file",
                    *([asked], ["/tmp/temp_tot_file_web"]),
                ),
                ("clock file cannot be written", folder(clock), "", [], [offsets]),
                (
                    "cron script fails",
                    lambda device: spoiled(device, cron, "1"),
                    r"r9::: Error \(256\) restarting cron",
                    *([asked, "S60crond restart"], []),
                ),
                (
                    "cron script missing",
                    lambda device: spoiled(device, cron, "missing"),
                    r"r9::: Error \(32512\) restarting cron",
                    *([asked], []),
                ),
                ("no language", without("codtimezone"), "", [], [clock, offsets]),
                ("no time zone", without("subtimezone"), "", [], [clock, offsets]),
            ],
        )

    def test_clock_is_set_before_the_offsets_are_asked_for(self) -> None:
        device = self.device("QRA-310")
        ends_with(device, "get_time_offsets.sh", 1)
        result = self.load(device, document("<regional><timezone>Asia/Dili</timezone></regional>"))
        self.assertEqual(0, result.status)
        self.assertEqual("Asia/Dili\n", device.path("/tarvo/conf/timezone/localtime").read_text())
        self.assertEqual("EN\noffset of UTC\n", device.path("/tarvo/conf/tot_file").read_text())


class KeyToolTest(EndToEndTest):
    def fails(self, how: str) -> None:
        # Every pass over the section asks for the tool, so every try fails.
        device = self.device("RNB-K408")
        said = spoiled(device, "/tarvo/bin/VSecKey", how)
        expected = changed(device, "UPDATE ScramblingKeysGlobal SET Date = 'new', Estado = 1")
        result = self.load(
            device,
            document(
                "<scramblings><scrambling><name/><date>new</date></scrambling></scramblings>",
                cams="",
            ),
        )
        self.assertEqual(1, result.status)
        self.assertRegex(result.stderr.decode(), f"^({said}Error: 911\n){{3}}$")
        self.assertEqual(["Error 911, Error regenerating scrambling key"] * 3, errors_in(result))
        self.assertEqual([KEY_TOOL] * 3 if how.isdigit() else [], result.actions)
        self.assertEqual("Error: 911", device.path(ERROR_FILE).read_text())
        # The CAM list is not applied.
        self.assertTables(expected, tables(device))

    def test_failing_tool_leaves_the_changed_keys_in_place(self) -> None:
        self.each(self.fails, [("1",), ("missing",), ("killed",)])

    def test_failing_tool_leaves_the_new_cam_list_in_place(self) -> None:
        device = self.device("QRA-310")
        ends_with(device, "VSecKey", 2)
        expected = changed(device, "DELETE FROM VSecure")
        result = self.load(device, document("", cams=""))
        self.assertRun(result, 1, stderr=b"Error: 911\n" * 3, syslog=[], actions=[KEY_TOOL] * 3)
        self.assertEqual("Error: 911", device.path(ERROR_FILE).read_text())
        self.assertTables(expected, tables(device))


class ErrorFileTest(EndToEndTest):
    BAD = document("<scramblings><x/></scramblings>")

    def test_file_that_cannot_be_created_changes_nothing_else(self) -> None:
        device = self.device("QRA-310")
        device.path(ERROR_FILE).mkdir()
        result = self.load(device, self.BAD)
        self.assertRun(
            result, 2, stdout=b"Processing: scramblings\n" * 3, stderr=b"Error: 101\n" * 3
        )

    def test_longer_earlier_file_is_replaced(self) -> None:
        device = self.device("QRA-310")
        device.path(ERROR_FILE).write_text("Error: 101101101101")
        self.assertRun(self.load(device, self.BAD), 2, stderr=b"Error: 101\n" * 3)
        self.assertEqual("Error: 101", device.path(ERROR_FILE).read_text())

    def test_earlier_file_stays_when_nothing_goes_wrong(self) -> None:
        device = self.device("QRA-310")
        device.path(ERROR_FILE).write_text("Error: 102")
        self.assertRun(self.load(device, document("")))
        self.assertEqual("Error: 102", device.path(ERROR_FILE).read_text())


class LenientTest(EndToEndTest):
    def stores(self, label: str, satellite: str, message: str) -> None:
        device = self.device("LMV-502")
        expected = changed(
            device,
            """
            DELETE FROM Service_EPG; DELETE FROM Service_EPG_Satellite;
            DELETE FROM Service_EPG_audios; DELETE FROM Service_EPG_replacing;
            INSERT INTO Service_EPG (SID, fk_idService_EPG_Satellite) VALUES (5, 0);
            INSERT INTO Service_EPG_audios (fk_idService_EPG, Language_code) VALUES (1, 'por')
            """,
        )
        result = self.load(
            device,
            document(
                f"<serviceEPGs><serviceEPG><satelliteEPG>{satellite}</satelliteEPG><sid>5</sid>"
                "<audiosEPGs><audiosEPG><languageCode>por</languageCode></audiosEPG></audiosEPGs>"
                "</serviceEPG></serviceEPGs>"
            ),
        )
        self.assertRun(result, 4, stderr=b"Error: 103\n" * 3)
        self.assertEqual([f"Error 103, {message}"] * 3, errors_in(result))
        self.assertEqual("Error: 103", device.path(ERROR_FILE).read_text())
        self.assertTables(expected, tables(device))

    def test_satellite_out_of_range_is_reported_and_the_service_kept_without_it(self) -> None:
        range_of = "{} value must be a value between [1-65535]".format
        self.each(
            self.stores,
            [
                ("onid 0", "<frequency>1</frequency><onid>0</onid>", range_of("ONID")),
                ("onid 65536", "<onid>65536</onid><tsid>0</tsid>", range_of("ONID")),
                ("tsid 0", "<onid>65535</onid><tsid>0</tsid>", range_of("TSID")),
                ("tsid abc", "<tsid>abc</tsid><frequency>1</frequency>", range_of("TSID")),
            ],
        )


class DatabaseTest(EndToEndTest):
    def assertComplaints(self, operation: str, text: str, message: str, result: Result) -> None:
        """An operation failed three times in each of the three tries."""
        attempts = [text.format(attempt) for attempt in range(3)] * 3
        lines = [line for attempt in attempts for line in (attempt, message)]
        self.assertEqual(
            [f"[ERROR_DB]{operation}: {line}\n" for line in lines],
            [line.message for line in result.syslog if line.priority == LOG_ERROR],
        )

    def refused(
        self, label: str, setup: str, sections: str, failure: tuple[str, str, str], *errors: str
    ) -> None:
        device = self.device("QRA-310", setup)
        before = tables(device)
        result = self.load(device, document("<network><ip>new</ip></network>" + sections))
        self.assertEqual(3, result.status)
        self.assertEqual([*errors, ROLLED_BACK] * 3, errors_in(result))
        self.assertComplaints(*failure, result)
        self.assertEqual([], result.actions)
        self.assertEqual("Error: 102", device.path(ERROR_FILE).read_text())
        self.assertTables(before, tables(device))

    def test_writes_that_fail_undo_the_import(self) -> None:
        emptied = "Error eliminando la tabla {}".format
        written = "Error ({}) inserting register in table {} . Attempt: {{}}".format
        twice = "<{0}><{1}><id>{2}</id></{1}><{1}><id>{2}</id></{1}></{0}>".format
        unique = "UNIQUE constraint failed: {}".format
        self.each(
            self.refused,
            [
                (
                    "table that is missing",
                    "DROP TABLE DiSEqCGlobal",
                    "<diseqcs/>",
                    ("deleteAll", emptied("DiSEqCGlobal"), "no such table: DiSEqCGlobal"),
                    "Error 102, Could not delete diseqcs",
                ),
                (
                    "position twice",
                    "",
                    twice("diseqcs", "diseqc", 9),
                    (
                        "insert",
                        written(19, "DiSEqCGlobal"),
                        unique("DiSEqCGlobal.idDiSEqCGlobal"),
                    ),
                    "Error 102, Could not insert diseqc",
                ),
                (
                    "home channel twice",
                    "",
                    twice("homeChannels", "homechannel", 1),
                    (
                        "insert",
                        written(19, "MantenimientoHomeChannelsGlobal"),
                        unique("MantenimientoHomeChannelsGlobal.idMantenimiento"),
                    ),
                    "Error 102, Could not insert homeChannel",
                ),
                (
                    "network twice",
                    "",
                    twice("dvbNetworks", "dvbNetwork", 1),
                    ("insert", written(19, "RedesCabecera"), unique("RedesCabecera.idRed")),
                    "Error 102, Could not insert dvbNetwork",
                ),
                (
                    "identifier that is no number",
                    "",
                    "<diseqcs><diseqc><id>first</id></diseqc></diseqcs>",
                    ("insert", written(20, "DiSEqCGlobal"), "datatype mismatch"),
                    "Error 102, Could not insert diseqc",
                ),
            ],
        )

    def test_database_is_a_folder(self) -> None:
        device = self.device("QRA-310")
        device.path(CONFIG_DB).unlink()
        device.path(CONFIG_DB).mkdir()
        result = self.load(device, document("<network><ip>new</ip></network>"))
        self.assertRun(result, 3, stdout=b"", stderr=b"Error: 102\n" * 3)
        self.assertEqual(["Error 102, Could not open DB"] * 3, errors_in(result))
        self.assertEqual("Error: 102", device.path(ERROR_FILE).read_text())

    def test_database_is_none(self) -> None:
        device = self.device("QRA-310")
        content = b"This is no database. " * 500
        device.path(CONFIG_DB).write_bytes(content)
        result = self.load(device, document("<preferredLanguages/>"))
        self.assertEqual(3, result.status)
        self.assertEqual(
            ["Error 102, Could not delete preferredLanguages", ROLLED_BACK] * 3, errors_in(result)
        )
        self.assertEqual(content, device.path(CONFIG_DB).read_bytes())

    def test_cam_database_is_a_folder(self) -> None:
        device = self.device("RNB-K408")
        device.path(VSEC_DB).unlink()
        device.path(VSEC_DB).mkdir()
        result = self.load(device, document("<lnb><oscLowFreq>1</oscLowFreq></lnb>", cams=""))
        self.assertRun(result, 3, stderr=b"Error: 102\n" * 3)
        self.assertEqual([], errors_in(result))
        self.assertEqual(
            [("1",)],
            self.query(device, "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'LNB_fb'"),
        )

    def test_cam_list_that_another_program_writes_stays(self) -> None:
        device = self.device("RNB-K408")
        before = tables(device)
        with closing(device.database(VSEC_DB)) as other:
            other.execute("BEGIN IMMEDIATE")
            result = self.load(device, document("", cams=""))
        self.assertEqual(3, result.status)
        self.assertEqual([], errors_in(result))
        self.assertComplaints(
            "deleteAll", "Error eliminando la tabla VSecure", "database is locked", result
        )
        self.assertTables(before, tables(device))


class LockTest(EndToEndTest):
    """Other programs of the device use the same file."""

    ADDRESS = document("<network><ip>new</ip></network>")
    LOCKED = [
        LogLine(LOG_ERROR, f"[ERROR_DB]update: {text}\n")
        for attempt in range(3)
        for text in (
            "Error actualizando datos registro en tabla configuracionWebGlobal"
            f" . intento: {attempt}",
            "database is locked",
        )
    ]
    TOLD = LogLine(NEWS_NOTICE, "REMOTE_CONTROL::: setConfig network_IP = new")

    def test_writer_that_does_not_end(self) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN IMMEDIATE")
            result = self.load(device, self.ADDRESS)
        self.assertEqual(3, result.status)
        self.assertEqual([], result.actions)
        self.assertProgress(
            ["Processing: network", "setConfig: network_IP = new", "0x", "0x"] * 3, result
        )
        errors = ["r9::: Error 102, Could not set network/ip", "r9::: " + ROLLED_BACK]
        one_try = [self.TOLD, *self.LOCKED, *(LogLine(NEWS_ERROR, text) for text in errors)]
        self.assertEqual(one_try * 3, result.syslog)
        said = r"(database is locked: [^:\n]+\n){3}Error: 102\n"
        self.assertRegex(result.stderr.decode(), f"^({said}){{3}}$")
        self.assertEqual("Error: 102", device.path(ERROR_FILE).read_text())
        self.assertTables(before, tables(device))

    def meeting_a_writer(self, device: Device, end: str) -> Result:
        """Imports while another program has begun to write. That ends after the first failure."""
        device.path(DOCUMENT_FILE).write_bytes(self.ADDRESS)
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("PRAGMA busy_timeout = 60000")
            other.execute("BEGIN IMMEDIATE")
            other.execute("UPDATE RedesModulos SET LabelName = 'theirs'")
            running = device.start(PROGRAM, [DOCUMENT_FILE], env={"TZ": "UTC"})
            try:
                first = running.process.stderr.readline()
                self.assertRegex(first, rb"^database is locked: [^:]+\n$")
                other.execute(end)
            finally:
                result = running.wait(60)
        return result

    def test_writer_that_gives_up_is_waited_out(self) -> None:
        device = self.device("QRA-310")
        expected = changed(device, NEW_ADDRESS)
        result = self.meeting_a_writer(device, "ROLLBACK")
        self.assertRun(result, syslog=[self.TOLD, *self.LOCKED[:2]], actions=["WAN_from_DB.sh"])
        self.assertTables(expected, tables(device))

    def test_writer_that_commits_is_given_way_to_by_the_next_try(self) -> None:
        # What the import has read keeps the other from its commit until the import is undone.
        device = self.device("QRA-310")
        expected = changed(device, NEW_ADDRESS + "UPDATE RedesModulos SET LabelName = 'theirs'")
        result = self.meeting_a_writer(device, "COMMIT")
        self.assertEqual(0, result.status)
        self.assertRegex(
            result.stderr.decode(), r"^(database is locked: [^:\n]+\n){2}Error: 102\n$"
        )
        errors = ["r9::: Error 102, Could not set network/ip", "r9::: " + ROLLED_BACK]
        self.assertEqual(
            [self.TOLD, *self.LOCKED, *(LogLine(NEWS_ERROR, text) for text in errors), self.TOLD],
            result.syslog,
        )
        self.assertEqual(["WAN_from_DB.sh"], result.actions)
        self.assertTables(expected, tables(device))

    def test_reader_that_does_not_end(self) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN")
            other.execute("SELECT count(*) FROM RedesModulos").fetchall()
            started = time.monotonic()
            result = self.load(device, self.ADDRESS)
        self.assertGreater(time.monotonic() - started, 12)  # three commits a try, a second apart
        self.assertRun(result, 3, stderr=b"Error: 102\n" * 3)
        error = LogLine(NEWS_ERROR, "r9::: Error 102, Could not commit transaction")
        self.assertEqual([self.TOLD, error] * 3, result.syslog)
        self.assertTables(before, tables(device))

    def test_reader_that_ends_in_time(self) -> None:
        device = self.device("QRA-310")
        expected = changed(device, NEW_ADDRESS)
        device.path(DOCUMENT_FILE).write_bytes(self.ADDRESS)
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN")
            other.execute("SELECT count(*) FROM RedesModulos").fetchall()
            running = device.start(PROGRAM, [DOCUMENT_FILE], env={"TZ": "UTC"})
            time.sleep(1.5)
            self.assertIsNone(running.process.poll())
        result = running.wait(60)
        self.assertRun(result, actions=["WAN_from_DB.sh"])
        self.assertTables(expected, tables(device))


if __name__ == "__main__":
    main()
