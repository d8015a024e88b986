"""What our own part of a run takes grows no faster than the document.

SQLite's part does: the statements that find the rows of a service look at those of all services.
"""

from __future__ import annotations

import os
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(REPOSITORY / "tests/support"), str(REPOSITORY / "bench")]

from bench import DOCUMENT, OUTPUT_FILE, Bench, build_tools
from e2e import EndToEndTest, main
from shapes import GROWTH

# Large enough for a search of all rows for each row to show.
SIZES = (2, 4)
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
        small, large = (self.own_instructions(growing, size) for size in SIZES)
        for mode, before, after in zip(("export", "import"), small, large):
            with self.subTest(mode):
                self.assertLess(after / before, AT_MOST)

    def test_twice_the_headend_takes_at_most_twice_the_instructions(self) -> None:
        build_tools()
        for growing in ("services", "streams"):
            with self.subTest(growing):
                self.check_growth(growing)


if __name__ == "__main__":
    main()
