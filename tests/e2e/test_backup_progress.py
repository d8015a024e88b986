"""What tarvo-backup tells at a terminal while something takes longer than a second."""

import os
import pty
import subprocess
import sys
import threading
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import BACKUP_PROGRAM, CONFIG_DB, EMULATOR, REPOSITORY, EndToEndTest, golden, main

DOCUMENT = "/tmp/document.xml"
WAITING = "Waiting for another program that uses the databases"
EMPTY_LINE = "\r\x1b[K"


class ProgressTest(EndToEndTest):
    def run_while_locked(
        self, *words: str, at_terminal: bool, leaving: bool = False
    ) -> tuple[int, str]:
        """The status, and what was written to standard error. The lock is held until the terminal
        tells of it. Whoever is `leaving` closes the terminal at the first line."""
        device = self.device("QRA-310")
        device.path(DOCUMENT).write_bytes(golden("QRA-310"))
        terminal, end = pty.openpty() if at_terminal else os.pipe()
        told = bytearray()
        waits = threading.Event()

        def read() -> None:
            try:
                while data := os.read(terminal, 4096):
                    told.extend(data)
                    if WAITING.encode() in told:
                        waits.set()
                        if leaving:
                            break
            except OSError:  # the other end of the terminal is closed
                pass
            os.close(terminal)

        emulator = ["--emulator", " ".join(EMULATOR)] if EMULATOR else []
        command = [REPOSITORY / "sim/run", "--root", device.root, *emulator, "--setenv", "TZ=UTC"]
        with closing(device.database(CONFIG_DB)) as writer:
            writer.execute("BEGIN EXCLUSIVE")
            running = subprocess.Popen(
                [sys.executable, *command, "--", BACKUP_PROGRAM, *words],
                stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL,
                stderr=end,
            )
            os.close(end)
            reader = threading.Thread(target=read)
            reader.start()
            waits.wait(60 if at_terminal else 3)
            writer.execute("ROLLBACK")
        status = running.wait(240)
        reader.join()
        return status, told.decode()

    def is_told(self, name: str, status: int, *words: str) -> None:
        found, told = self.run_while_locked(*words, at_terminal=True)
        self.assertEqual(status, found, told)
        self.assertRegex(told, rf"\r\x1b\[K{WAITING} \(\d+ s\)")
        self.assertTrue(told.endswith(EMPTY_LINE), told)

    def test_a_lock_that_is_waited_for_is_told_and_the_line_is_gone_afterwards(self) -> None:
        self.each(
            self.is_told,
            (
                ("save", 0, "save"),
                ("plan", 1, "plan", DOCUMENT),
                ("restore", 0, "restore", "--yes", DOCUMENT),
            ),
        )

    def test_a_terminal_that_is_closed_meanwhile_ends_nothing(self) -> None:
        status, told = self.run_while_locked("save", at_terminal=True, leaving=True)
        self.assertEqual(0, status, told)
        self.assertIn(WAITING, told)

    def test_nothing_is_told_where_nobody_looks(self) -> None:
        self.assertEqual((0, ""), self.run_while_locked("save", at_terminal=False))


if __name__ == "__main__":
    main()
