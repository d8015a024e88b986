"""What our own part of a run takes grows no faster than the document, and the floor that runs are
measured against does what the program does.

SQLite's part grows faster: the statements that find the rows of a service look at those of all
services.
"""

from __future__ import annotations

import os
import shutil
import sys
import tempfile
import unittest
from contextlib import closing
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(REPOSITORY / "tests/support"), str(REPOSITORY / "bench")]

from bench import DOCUMENT, OUTPUT_FILE, Bench, build_tools
from e2e import CONFIG_DB, EndToEndTest, main, tables
from shapes import GROWTH

# Large enough for a search of all rows for each row to show; of headends that grow all alike, the
# sizes whose documents are of a few hundred kilobytes.
SIZES = {"modules": (1, 2), "services": (2, 4), "streams": (2, 4), "guide": (2, 4), "networks": (2, 4)}
AT_MOST = 2 * 1.1


@unittest.skipUnless(shutil.which("valgrind"), "valgrind counts the instructions")
@unittest.skipIf(os.environ.get("TARVO_EMULATOR"), "valgrind runs programs of this machine")
class GrowthTest(EndToEndTest):
    def own_instructions(self, growing: str, size: int) -> list[int]:
        """Of an export, and of an import of what it gives."""
        with tempfile.TemporaryDirectory() as folder:
            bench = Bench(Path(folder) / "device", GROWTH[growing](size))
            bench.prepare()
            counts = [
                bench.own_instructions(command)
                for command in (bench.program, [*bench.program, DOCUMENT])
            ]
            bench.run(bench.program)
            self.assertBytes(
                bench.device.path(DOCUMENT).read_bytes(),
                bench.device.path(OUTPUT_FILE).read_bytes(),
            )
            return counts

    def check_growth(self, growing: str) -> None:
        small, large = (self.own_instructions(growing, size) for size in SIZES[growing])
        for mode, before, after in zip(("export", "import"), small, large):
            self.assertLess(after / before, AT_MOST, mode)

    def test_twice_the_headend_takes_at_most_twice_the_instructions(self) -> None:
        self.each(self.check_growth, [(growing,) for growing in SIZES])


@unittest.skipIf(os.environ.get("TARVO_EMULATOR"), "the floor is built for this machine")
class FloorTest(EndToEndTest):
    """Whoever measures against less than the program does deceives himself."""

    def outcome(self, bench: Bench, command: list[str]) -> tuple[object, ...]:
        result = bench.device.run(command[0], command[1:])
        self.assertEqual(result.status, 0, result.stderr)
        return result.stdout, result.syslog, result.actions, tables(bench.device)

    def test_the_floor_does_what_a_run_of_the_program_does(self) -> None:
        with tempfile.TemporaryDirectory() as folder:
            bench = Bench(Path(folder) / "device", GROWTH["modules"](1))
            bench.prepare()
            for mode, change in (
                ("export", "UPDATE ServiciosSalidaGlobal SET NombreSalida = NombreSalida || 2"),
                ("import", "UPDATE PIDsSalidaGlobal SET Orden = Orden + 1"),
            ):
                with self.subTest(mode):
                    self.check_mode(bench, mode, change)

    def check_mode(self, bench: Bench, mode: str, change: str) -> None:
        """After a change that the run has to see, or to undo."""
        database = bench.device.path(CONFIG_DB)
        with closing(bench.device.database(CONFIG_DB)) as connection:
            connection.execute(change)
        before = database.read_bytes()
        program, floor = bench.commands(mode)
        database.write_bytes(before)
        expected = self.outcome(bench, program)
        exported = bench.device.path(OUTPUT_FILE).read_bytes()
        bench.device.path(OUTPUT_FILE).unlink()
        database.write_bytes(before)
        self.assertEqual(self.outcome(bench, floor), expected)
        if mode == "export":
            self.assertBytes(bench.device.path(OUTPUT_FILE).read_bytes(), exported)
        else:
            self.assertNotEqual(database.read_bytes(), before)


if __name__ == "__main__":
    build_tools()
    main()
