"""What tarvo-backup prints at a terminal."""

import os
import pty
import subprocess
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import BACKUP_PROGRAM, EMULATOR, REPOSITORY, EndToEndTest, main

DOCUMENT = REPOSITORY / "tests/e2e/golden/QRA-310.xml"
ESCAPE = b"\x1b["


class TerminalTest(EndToEndTest):
    def shown(self, *words: str, **environment: str) -> bytes:
        terminal, end = pty.openpty()
        command = [*EMULATOR, BACKUP_PROGRAM, "show", *words, DOCUMENT]
        without = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
        told = bytearray()
        with subprocess.Popen(command, stdout=end, env={**without, **environment}) as running:
            os.close(end)
            try:
                while data := os.read(terminal, 65536):
                    told.extend(data)
            except OSError:  # the other end of the terminal is closed
                pass
        os.close(terminal)
        self.assertEqual(0, running.returncode)
        return bytes(told)

    def test_colors_are_used_unless_they_are_not_wanted(self) -> None:
        self.assertIn(ESCAPE, self.shown())
        self.assertIn(ESCAPE, self.shown(NO_COLOR=""))
        self.assertNotIn(ESCAPE, self.shown(NO_COLOR="1"))
        self.assertIn(ESCAPE, self.shown("--color", "always", NO_COLOR="1"))
        self.assertNotIn(ESCAPE, self.shown("--color", "never"))


if __name__ == "__main__":
    main()
