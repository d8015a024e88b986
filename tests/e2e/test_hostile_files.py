"""What others have put beside the databases and in the place of the output files."""

import os
import sys
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    CONFIG_DB,
    ERROR_FILE,
    OUTPUT_FILE,
    STATE_DB,
    Device,
    EndToEndTest,
    document,
    golden,
    main,
)

PRECIOUS = "/tarvo/conf/precious"


class PlantedDatabaseFileTest(EndToEndTest):
    def refused(self, planted: str) -> None:
        """An export that fails with 102, each of its eleven tries telling the reason."""
        device = self.device("WVX-BQ4")
        path = device.path(planted)
        path.unlink(missing_ok=True)
        device.path(PRECIOUS).write_bytes(device.path(CONFIG_DB).read_bytes())
        path.symlink_to(PRECIOUS)
        result = self.export(device)
        said = f"tarvo-config: {planted} is not a regular file; {STATE_DB} is not opened\n"
        self.assertRun(result, 3, stdout=b"", stderr=said.encode() * 11 + b"Error: 102\n")
        self.assertTrue(path.is_symlink())

    def test_link_in_the_place_of_a_state_file(self) -> None:
        self.each(self.refused, [(STATE_DB + end,) for end in ("", "-journal", "-wal", "-shm")])

    @staticmethod
    def journal_of_a_change(device: Device, path: str) -> bytes:
        """A hot journal, as a program that is killed in its transaction leaves it."""
        with closing(device.database(path)) as database:
            database.execute("PRAGMA cache_size = 1")
            database.execute("BEGIN")
            database.execute("CREATE TABLE Filler (a)")
            database.executemany("INSERT INTO Filler VALUES (?)", [("x" * 900,)] * 40)
            content = device.path(path + "-journal").read_bytes()
            database.execute("ROLLBACK")
        return content

    def test_journal_of_a_stranger_deletes_nothing(self) -> None:
        if os.geteuid() != 0:
            self.skipTest("only root can give a file away")
        device = self.device("WVX-BQ4")
        journal = device.path(STATE_DB + "-journal")
        journal.write_bytes(self.journal_of_a_change(device, STATE_DB))
        os.chown(journal, 1234, 1234)
        before = device.path(CONFIG_DB).read_bytes()
        result = self.export(device)
        self.assertEqual(3, result.status)
        said = f"tarvo-config: {STATE_DB}-journal belongs to another user"
        self.assertEqual(11, result.stderr.decode().count(said))
        self.assertEqual(before, device.path(CONFIG_DB).read_bytes())
        self.assertTrue(journal.exists())


class OutputFileTest(EndToEndTest):
    def test_link_is_replaced_and_what_it_leads_to_left(self) -> None:
        device = self.device("WVX-BQ4")
        device.path(PRECIOUS).write_text("precious")
        device.path(OUTPUT_FILE).symlink_to(PRECIOUS)
        self.assertRun(self.export(device), stdout=golden("WVX-BQ4") + b"\n")
        self.assertEqual("precious", device.path(PRECIOUS).read_text())
        self.assertFalse(device.path(OUTPUT_FILE).is_symlink())
        self.assertBytes(golden("WVX-BQ4"), device.path(OUTPUT_FILE).read_bytes())

    def test_link_in_the_place_of_the_error_file_is_replaced(self) -> None:
        device = self.device("WVX-BQ4")
        device.path(PRECIOUS).write_text("precious")
        device.path(ERROR_FILE).symlink_to(PRECIOUS)
        result = self.load(device, document("<homeChannels><x/></homeChannels>"))
        self.assertEqual(2, result.status)
        self.assertEqual("precious", device.path(PRECIOUS).read_text())
        self.assertEqual("Error: 101", device.path(ERROR_FILE).read_text())
        self.assertEqual(0o644, device.path(ERROR_FILE).stat().st_mode & 0o7777)

    def test_pipe_is_replaced(self) -> None:
        device = self.device("WVX-BQ4")
        os.mkfifo(device.path(OUTPUT_FILE))
        self.assertRun(self.export(device), stdout=golden("WVX-BQ4") + b"\n")
        self.assertBytes(golden("WVX-BQ4"), device.path(OUTPUT_FILE).read_bytes())

    def test_backup_is_as_open_as_the_database(self) -> None:
        device = self.device("WVX-BQ4")
        for database, backup in ((0o640, 0o640), (0o755, 0o644), (0o600, 0o600)):
            device.path(CONFIG_DB).chmod(database)
            self.assertEqual(0, self.export(device).status)
            self.assertEqual(backup, device.path(OUTPUT_FILE).stat().st_mode & 0o7777)

    def test_folder_cannot_be_replaced(self) -> None:
        device = self.device("WVX-BQ4")
        device.path(OUTPUT_FILE).mkdir()
        self.assertRun(
            self.export(device),
            1,
            stdout=golden("WVX-BQ4") + b"\n",
            stderr=b"Unable to create ConfigurationXML file\n",
        )
        self.assertEqual([], list(device.path("/tmp").glob("*.new-*")))


if __name__ == "__main__":
    main()
