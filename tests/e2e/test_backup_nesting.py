"""Every verb of tarvo-backup with documents of 256 levels on a small stack, and of more levels."""

import shlex
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import BACKUP_PROGRAM, EMULATOR, EndToEndTest, golden, main, tables

STACK_KB = 256
# An export holds some hundred kB of its nodes there, however deep a document is.
STACK_OF_PLAN_KB = 512
MAX_LEVELS = 256
DOCUMENT = "/tmp/document.xml"
# (what stands around the nested elements, their name): unknown ones, and lists in themselves.
NESTS = (
    ("<configuration>{}</configuration>", "d"),
    ("<configuration><modules><module>{}</module></modules></configuration>", "services"),
    ("<configuration>{}</configuration>", "configuration"),
    ("<backup>{}</backup>", "backup"),
)


def nested(around: str, name: str, levels: int) -> bytes:
    """A document of so many levels, with a text in the innermost element."""
    inside = levels - around.format("").count("</")
    return around.format(f"<{name}>" * inside + "x" + f"</{name}>" * inside).encode()


@unittest.skipIf(EMULATOR, "the emulator's own stack is not limited")
class NestingTest(EndToEndTest):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="nesting-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        (self.folder / "flat.xml").write_bytes(b"<configuration/>")

    def verbs(self, file: str) -> list[tuple[str, ...]]:
        other = str(self.folder / "flat.xml")
        return [
            ("diff", file, other),
            ("diff", "--json", other, file),
            ("diff", file, file),
            ("check", file),
            ("show", file),
            ("show", "--html", "-", file),
            ("show", "--redact", file),
        ]

    def run_with_small_stack(self, *words: str) -> subprocess.CompletedProcess[bytes]:
        command = f"ulimit -s {STACK_KB} && exec {shlex.join([BACKUP_PROGRAM, *words])}"
        return subprocess.run(["sh", "-c", command], capture_output=True, check=False)

    def test_as_many_levels_as_the_import_takes_need_little_stack(self) -> None:
        file = self.folder / "deep.xml"
        for around, name in NESTS:
            file.write_bytes(nested(around, name, MAX_LEVELS))
            for words in self.verbs(str(file)):
                with self.subTest(name=name, words=words):
                    result = self.run_with_small_stack(*words)
                    self.assertIn(result.returncode, (0, 1, 2), result.stderr[-300:])
                    self.assertNotIn(b"levels of elements", result.stderr)

    def test_more_levels_are_refused_with_their_place(self) -> None:
        file = self.folder / "deeper.xml"
        for around, name in NESTS:
            text = nested(around, name, MAX_LEVELS + 1)
            file.write_bytes(text)
            for words in self.verbs(str(file)):
                with self.subTest(name=name, words=words):
                    result = self.run_with_small_stack(*words)
                    self.assertEqual(2, result.returncode)
                    self.assertRegex(
                        result.stdout + result.stderr,
                        rb"deeper\.xml:1:\d+: .*more than 256 levels of elements",
                    )

    def test_a_plan_of_a_deep_document_needs_little_stack(self) -> None:
        device = self.device("QRA-310")
        before = tables(device)
        for around, name in NESTS:
            for levels in (MAX_LEVELS, MAX_LEVELS + 1, 100000):
                with self.subTest(name=name, levels=levels):
                    device.path(DOCUMENT).write_bytes(nested(around, name, levels))
                    program = Path(BACKUP_PROGRAM).resolve()
                    copy = device.path("/tarvo/bin/program")
                    if not copy.exists():
                        (copy / "bin").mkdir(parents=True)
                        (copy / "lib").mkdir()
                        for part in ("bin/tarvo-backup", "lib/libtarvocommon.so"):
                            (copy / part).write_bytes((program.parents[1] / part).read_bytes())
                            (copy / part).chmod(0o755)
                    script = (
                        f"ulimit -s {STACK_OF_PLAN_KB};"
                        f" exec /tarvo/bin/program/bin/tarvo-backup plan --json {DOCUMENT}"
                    )
                    result = device.run("sh", ["-c", script], timeout=240)
                    if levels > MAX_LEVELS:
                        self.assertEqual(2, result.status, result.stderr[-300:])
                        self.assertIn(b"more than 256 levels", result.stderr)
                    else:
                        self.assertIn(result.status, (0, 1, 6), result.stderr[-300:])
        self.assertTables(before, tables(device))

    def test_the_golden_documents_need_little_stack(self) -> None:
        file = self.folder / "golden.xml"
        file.write_bytes(golden("QRA-310"))
        for words in self.verbs(str(file)):
            with self.subTest(words=words):
                self.assertIn(self.run_with_small_stack(*words).returncode, (0, 1))


if __name__ == "__main__":
    main()
