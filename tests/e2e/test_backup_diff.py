"""`tarvo-backup diff` as git's external diff over a folder of backups, as the manual has it."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import BACKUP_PROGRAM, REPOSITORY, edited, golden, main  # noqa: E402

BACKUP = "HOST.xml"


class GitTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="backup-diff-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.git("init", "-q")
        for command in self.documented():
            subprocess.run(
                command, shell=True, cwd=self.folder, env=self.environment(), check=True
            )

    def documented(self) -> list[str]:
        """The commands of the manual page."""
        page = (REPOSITORY / "docs/tarvo-backup.8").read_text().replace("\\-", "-")
        block = page.partition(".SS As git's external diff")[2].partition(".EX\n")[2]
        return block.partition(".EE")[0].replace("\\\\", "\\").strip().splitlines()

    def environment(self) -> dict[str, str]:
        return {
            **os.environ,
            "PATH": f"{Path(BACKUP_PROGRAM).parent}:{os.environ['PATH']}",
            "GIT_CONFIG_GLOBAL": "/dev/null",
            "GIT_CONFIG_NOSYSTEM": "1",
            "HOME": str(self.folder),
        }

    def git(self, *args: str) -> str:
        command = ["git", "-c", "user.name=n", "-c", "user.email=e@example.org", *args]
        result = subprocess.run(
            command, cwd=self.folder, env=self.environment(), capture_output=True, text=True
        )
        self.assertEqual((0, ""), (result.returncode, result.stderr))
        return result.stdout

    def commit(self, text: bytes) -> None:
        (self.folder / BACKUP).write_bytes(text)
        self.git("add", ".")
        self.git("commit", "-qm", "backup")

    def test_git_shows_what_changed_between_two_backups(self) -> None:
        first = golden("WVX-AQ4")
        self.commit(first)
        self.commit(edited(first, "<oscLowFreq>9750<", "<oscLowFreq>9751<"))
        self.assertEqual(
            "HOST.xml\nlnb: 1 difference\nlnb/oscLowFreq: 9750 -> 9751\n",
            self.git("diff", "HEAD~1"),
        )
        self.assertIn("lnb/oscLowFreq: 9750 -> 9751", self.git("log", "-p", "--ext-diff", "-1"))

    def test_git_shows_nothing_but_the_name_of_a_backup_whose_live_state_changed(self) -> None:
        first = golden("WVX-AQ4")
        self.commit(first)
        self.commit(first.replace(b">Good<", b">Bad<"))
        self.assertEqual("HOST.xml\n", self.git("diff", "HEAD~1"))

    def test_git_shows_a_new_backup(self) -> None:
        (self.folder / "other").write_text("")
        self.git("add", "other")
        self.git("commit", "-qm", "first")
        self.commit(golden("WVX-AQ4"))
        self.assertIn("diseqcs: added\n", self.git("diff", "HEAD~1", "--", BACKUP))


if __name__ == "__main__":
    main()
