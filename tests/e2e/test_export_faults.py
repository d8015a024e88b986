"""Export over databases that are missing, damaged or held by another program."""

import re
import sys
import time
from collections.abc import Iterable
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    CONFIG_DB,
    ERROR_FILE,
    LOG_ERROR,
    OUTPUT_FILE,
    PROGRAM,
    STATE_DB,
    VSEC_DB,
    Device,
    EndToEndTest,
    LogLine,
    Result,
    edited,
    golden,
    main,
)

# The selects of an export of a device whose configuration cannot be read, on the model with the
# fewest sections: two that tell who the device is, then one for each list of the document.
SELECTS = (
    *("configuracionWebGlobal", "configuracionWebGlobal", "configuracionWebGlobal"),
    *("RedesCabecera", "AudioLanguageListGlobal", "RedesModulos"),
)

NO_ROWS = b"""<?xml version="1.0" encoding="utf-8"?>
<configuration>
	<identification>
		<headendName/>
		<location/>
		<installationDate/>
	</identification>
	<regional>
		<language/>
		<country/>
		<timezone/>
	</regional>
	<network>
		<internet/>
		<dhcp/>
		<ip/>
		<netmask/>
		<gateway/>
		<dns1/>
		<dns2/>
	</network>
	<dvbNetworks/>
	<preferredLanguages/>
	<modules/>
</configuration>
"""


def failed_selects(table: str, message: str | None, attempts: Iterable[int]) -> list[LogLine]:
    lines = []
    for attempt in attempts:
        texts = [f"Error leyendo datos tabla {table} . intento: {attempt}"]
        if message is not None:
            texts.append(message)
        lines += [LogLine(LOG_ERROR, f"[ERROR_DB]doSelect: {text}\n") for text in texts]
    return lines


class FaultTest(EndToEndTest):
    def assertComplaints(self, messages: Iterable[str], result: Result) -> None:
        """Standard error holds these messages, each with what the system said last."""
        lines = result.stderr.decode().splitlines()
        self.assertEqual(list(messages), [re.sub(r": [^:]+$", "", line) for line in lines])

    def assertNothingExported(self, device: Device, result: Result, syslog: list[LogLine]) -> None:
        self.assertRun(result, 3, stdout=b"", stderr=b"Error: 102\n", syslog=syslog)
        self.assertEqual("Error: 102", device.path(ERROR_FILE).read_text())

    def assertSelectsFailed(self, tables: Iterable[str], message: str, result: Result) -> None:
        """Each of these selects was tried three times, and all the same the export went on."""
        tables = list(tables)
        self.assertEqual(0, result.status)
        syslog = [line for table in tables for line in failed_selects(table, message, range(3))]
        self.assertEqual(syslog, result.syslog)
        self.assertComplaints([message] * 3 * len(tables), result)


class UnopenableDatabaseTest(FaultTest):
    def test_configuration_database_is_a_folder(self) -> None:
        device = self.device("WVX-BQ4")
        device.path(CONFIG_DB).unlink()
        device.path(CONFIG_DB).mkdir()
        device.path(OUTPUT_FILE).write_text("of an earlier export")
        result = self.export(device)
        # The two selects that tell who the device is are made without a handle. The eleven
        # runs of the export itself end at the open, and say nothing.
        identity = failed_selects("configuracionWebGlobal", None, range(3))
        self.assertNothingExported(device, result, identity * 2)
        self.assertEqual("of an earlier export", device.path(OUTPUT_FILE).read_text())

    def test_state_database_is_a_folder(self) -> None:
        device = self.device("QRA-310")
        device.path(STATE_DB).unlink()
        device.path(STATE_DB).mkdir()
        self.assertNothingExported(device, self.export(device), [])
        self.assertFalse(device.path(OUTPUT_FILE).exists())

    def test_state_database_comes_back_between_two_runs(self) -> None:
        device = self.device("WVX-AQ4")
        aside = device.path("/tmp/aside.sqlite")
        device.path(STATE_DB).rename(aside)
        device.path(STATE_DB).mkdir()
        running = device.start(PROGRAM, env={"TZ": "UTC"})
        time.sleep(1.5)
        self.assertIsNone(running.process.poll())
        device.path(STATE_DB).rmdir()
        aside.rename(device.path(STATE_DB))
        result = running.wait(60)
        self.assertRun(result, stdout=golden("WVX-AQ4") + b"\n", syslog=[])
        self.assertFalse(device.path(ERROR_FILE).exists())

    def test_cam_database_is_a_folder(self) -> None:
        # The list is built once, without the retries that a command's run makes.
        device = self.device("RNB-K408")
        device.path(VSEC_DB).unlink()
        device.path(VSEC_DB).mkdir()
        self.assertNothingExported(device, self.export(device), [])
        self.assertFalse(device.path(OUTPUT_FILE).exists())

    def test_error_file_that_cannot_be_created_changes_nothing_else(self) -> None:
        device = self.device("RNB-K408")
        device.path(VSEC_DB).unlink()
        device.path(VSEC_DB).mkdir()
        device.path(ERROR_FILE).mkdir()
        self.assertRun(self.export(device), 3, stdout=b"", stderr=b"Error: 102\n", syslog=[])

    def test_cam_database_is_of_no_interest_on_other_models(self) -> None:
        device = self.device("WVX-BQ4")
        device.path(VSEC_DB).unlink()
        device.path(VSEC_DB).mkdir()
        self.assertRun(self.export(device), stdout=golden("WVX-BQ4") + b"\n", syslog=[])


class UnreadableDatabaseTest(FaultTest):
    def test_configuration_database_does_not_exist(self) -> None:
        # Opening it makes it, without tables.
        device = self.device("WVX-BQ4")
        device.path(CONFIG_DB).unlink()
        result = self.export(device)
        for number, table in enumerate(SELECTS):
            lines = result.syslog[6 * number : 6 * number + 6]
            self.assertEqual(failed_selects(table, f"no such table: {table}", range(3)), lines)
        self.assertEqual(6 * len(SELECTS), len(result.syslog))
        self.assertComplaints(
            [f"no such table: {table}" for table in SELECTS for _ in range(3)], result
        )
        self.assertEqual(0, result.status)
        self.assertBytes(NO_ROWS + b"\n", result.stdout)
        self.assertBytes(NO_ROWS, device.path(OUTPUT_FILE).read_bytes())

    def test_configuration_database_is_not_a_database(self) -> None:
        device = self.device("WVX-BQ4")
        device.path(CONFIG_DB).write_bytes(b"This is no database. " * 500)
        result = self.export(device)
        self.assertSelectsFailed(SELECTS, "file is not a database", result)
        self.assertBytes(NO_ROWS + b"\n", result.stdout)

    def test_missing_table_leaves_its_section_empty(self) -> None:
        device = self.device("WVX-AQ4", "DROP TABLE DiSEqCGlobal")
        result = self.export(device)
        self.assertSelectsFailed(["DiSEqCGlobal"], "no such table: DiSEqCGlobal", result)
        start, rest = golden("WVX-AQ4").split(b"\t<diseqcs>")
        expected = start + b"\t<diseqcs/>" + rest.split(b"</diseqcs>")[1]
        self.assertBytes(expected + b"\n", result.stdout)

    def test_missing_state_table_leaves_its_elements_out(self) -> None:
        device = self.device(
            "LMV-502",
            "DELETE FROM RedesModulos WHERE idRedMod <> 1",
            state="DROP TABLE ModulosCabecera",
        )
        result = self.export(device)
        self.assertSelectsFailed(["ModulosCabecera"], "no such table: ModulosCabecera", result)
        start, rest = golden("LMV-502").split(b"\t\t</module>\n", 1)
        expected = start + b"\t\t</module>\n\t</modules>\n</configuration>\n"
        for version in ("4.8.2", "4.8.0"):
            expected = edited(expected, f"\t\t\t<swVersion>{version}</swVersion>\n", "")
        self.assertBytes(expected + b"\n", result.stdout)

    def test_missing_cam_table_gives_an_empty_list(self) -> None:
        device = self.device("RNB-K408", vsec="DROP TABLE VSecure")
        result = self.export(device)
        self.assertSelectsFailed(["VSecure"], "no such table: VSecure", result)
        start = golden("RNB-K408").split(b"\t<vsecureCAMList>")[0]
        self.assertBytes(start + b"\t<vsecureCAMList/>\n</backup>\n\n", result.stdout)


class LockedDatabaseTest(FaultTest):
    def test_lock_held_for_the_whole_time_empties_every_section(self) -> None:
        device = self.device("WVX-BQ4")
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN EXCLUSIVE")
            result = self.export(device)
        self.assertSelectsFailed(SELECTS, "database is locked", result)
        self.assertBytes(NO_ROWS + b"\n", result.stdout)

    def test_lock_released_in_time_is_waited_out(self) -> None:
        device = self.device("QRA-310")
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN EXCLUSIVE")
            running = device.start(PROGRAM, env={"TZ": "UTC"})
            first = running.process.stderr.readline()  # then it sleeps for a second
            other.execute("ROLLBACK")
        result = running.wait(60)
        self.assertRegex(first, rb"^database is locked: [^:]+\n$")
        self.assertRun(
            result,
            stdout=golden("QRA-310") + b"\n",
            syslog=failed_selects("configuracionWebGlobal", "database is locked", range(1)),
        )

    def test_another_writer_that_has_not_finished_is_no_obstacle(self) -> None:
        device = self.device("QRA-310")
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN IMMEDIATE")
            other.execute("UPDATE RedesModulos SET LabelName = 'not committed'")
            result = self.export(device)
        self.assertRun(result, stdout=golden("QRA-310") + b"\n", syslog=[])


if __name__ == "__main__":
    main()
