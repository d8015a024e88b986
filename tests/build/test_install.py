"""What `cmake --install` gives."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(REPOSITORY / "sim"))

from device import Device  # noqa: E402

CMAKE = os.environ["TARVO_CMAKE"]
BUILD = os.environ["TARVO_BUILD"]
VERSION = os.environ["TARVO_VERSION"]

FILES = {
    "bin/tarvo-config",
    "lib/tarvo-config/libtarvocommon.so",
    "sbin/tarvo-backup",
    "share/doc/tarvo-config/LICENSE",
    "share/doc/tarvo-config/README.md",
    "share/bash-completion/completions/tarvo-backup",
    "share/man/man5/tarvo-config-document.5",
    "share/man/man8/tarvo-backup.8",
    "share/man/man8/tarvo-config.8",
} | {
    f"share/doc/tarvo-config/docs/{document.name}"
    for document in (REPOSITORY / "docs").glob("*.md")
} | {
    f"share/tarvo-config/tarvo-config-{kind}.{form}"
    for kind in ("export", "import")
    for form in ("rnc", "rng")
}


class InstallTest(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="install-")
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name) / "tree"
        subprocess.run(
            [CMAKE, "--install", BUILD, "--prefix", self.root, "--strip"],
            check=True,
            stdout=subprocess.DEVNULL,
        )

    def test_holds_these_files_and_no_others(self) -> None:
        files = {str(p.relative_to(self.root)) for p in self.root.rglob("*") if p.is_file()}
        self.assertEqual(FILES, files)

    def test_program_starts_wherever_the_tree_was_moved_to(self) -> None:
        moved = self.root.rename(self.root.with_name("moved"))
        device = Device.create("QRA-310", moved.with_name("device"))
        result = device.run(moved / "bin/tarvo-config")
        golden = (REPOSITORY / "tests/e2e/golden/QRA-310.xml").read_bytes()
        self.assertEqual((0, golden + b"\n", b""), (result.status, result.stdout, result.stderr))

    def test_version_reaches_the_program_and_the_manual(self) -> None:
        program = (self.root / "bin/tarvo-config").read_bytes()
        self.assertEqual(1, program.count(f"@(#)tarvo-config {VERSION}\0".encode()))
        manual = (self.root / "share/man/man8/tarvo-config.8").read_text("utf-8")
        title = next(line for line in manual.splitlines() if line.startswith(".TH "))
        self.assertIn(f'"tarvo-config {VERSION}"', title)
        self.assertNotIn("@PROJECT_VERSION@", manual)

    def test_changelog_begins_with_this_version(self) -> None:
        first = (REPOSITORY / "debian/changelog").read_text("utf-8").splitlines()[0]
        self.assertTrue(first.startswith(f"tarvo-config ({VERSION}) "), first)


if __name__ == "__main__":
    unittest.main()
