"""Checks that a comparison finds what differs, and nothing where nothing does."""

from __future__ import annotations

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent))

from cases import (  # noqa: E402
    CASES_PER_DEVICE,
    Group,
    Outcome,
    Settings,
    Verdict,
    first_difference,
)
from tracing import HERE, Device, build_library, run  # noqa: E402

PROGRAM = os.environ.get("TARVO_CONFIG", str(HERE.parents[1] / "build/release/bin/tarvo-config"))
ADDRESS = b"<configuration><network><ip>10.0.0.1</ip></network></configuration>"


class ComparisonTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory(prefix="compare-")
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.library = build_library(cls.folder)

    def verdicts(self, numbers: set[int], **options: str) -> list[Verdict]:
        settings = Settings(PROGRAM, PROGRAM, self.library, self.folder, seed="selftest", **options)
        return list(Group(settings, 0).verdicts(numbers))

    def device(self, name: str) -> Device:
        device = Device.create("QRA-310", self.folder / name)
        device.path("/tmp/document.xml").write_bytes(ADDRESS)
        return device

    def trace(self, *plan: str) -> list[tuple[bytes, ...]]:
        lines = "\n".join("\t".join(fault.split(" ", 5)) for fault in plan)
        name = f"device-{len(list(self.folder.iterdir()))}"
        return run(self.device(name), self.library, PROGRAM, ["/tmp/document.xml"], lines)

    def test_what_is_no_program_is_told_in_a_sentence(self) -> None:
        nothing = self.folder / "nothing"
        for programs in ((self.folder, PROGRAM), (PROGRAM, nothing)):
            wrong = next(program for program in programs if program != PROGRAM)
            command = [sys.executable, HERE / "run", *programs]
            result = subprocess.run(command, capture_output=True, text=True, check=False)
            self.assertEqual(f"tests/compare/run: {wrong} is not a program\n", result.stderr)
            self.assertEqual((2, ""), (result.returncode, result.stdout))

    def test_a_program_does_not_differ_from_itself(self) -> None:
        found = self.verdicts(set(range(CASES_PER_DEVICE)))
        self.assertEqual(
            [(number, "") for number in range(CASES_PER_DEVICE)],
            [(verdict.number, verdict.difference) for verdict in found],
        )

    def test_the_same_seed_makes_the_same_cases(self) -> None:
        labels = [verdict.label for verdict in self.verdicts({3, 7, 9})]
        self.assertEqual(labels, [verdict.label for verdict in self.verdicts({3, 7, 9})])

    def test_a_statement_that_fails_on_one_side_is_a_difference(self) -> None:
        for verdict in self.verdicts({0, 1}, new_plan="statement\t3\t1\t5\tdatabase is locked"):
            self.assertIn("database is locked", verdict.difference)

    def test_a_script_that_ends_otherwise_on_one_side_is_a_difference(self) -> None:
        (verdict,) = self.verdicts({0}, new_plan="popen\t3\t1\t0\tQRA-31|OK|")
        self.assertNotEqual("", verdict.difference)

    def test_each_kind_of_event_is_traced_in_order(self) -> None:
        events = self.trace("text 1 1 5 locked COMMIT", "system 1 1 256")
        kinds = [event[0] for event in events]
        for kind in (b"openDb", b"open", b"exec", b"get_table", b"close", b"popen", b"pclose"):
            self.assertIn(kind, kinds)
        commits = [number for number, event in enumerate(events) if b"COMMIT" in event]
        # The commit and its repetition, and that of the import that is tried again for the script.
        self.assertEqual(3, len(commits))
        self.assertIn((b"sleep", b"1", b"s"), events[commits[0] : commits[1]])
        script = events.index((b"system", b"/tarvo/script/WAN_from_DB.sh"))
        self.assertGreater(script, commits[1])
        self.assertEqual((b"system ends", b"256", b"fault"), events[script + 1])
        error_file = b"/tmp/Errors_ConfigurationXML.xml"
        self.assertIn((b"file", b"write", error_file + b".new-XXXXXX"), events[script:])
        self.assertIn((b"file", b"rename", error_file + b".new-XXXXXX", error_file), events[script:])
        for kind in (b"syslog", b"stdout", b"stderr"):
            self.assertIn(kind, kinds)

    def test_a_failing_statement_is_not_executed(self) -> None:
        device = self.device("failing")
        before = device.dump("/tarvo/DB/config_global.sqlite")
        plan = "text\t1\t1000\t10\tdisk I/O error\tUPDATE"
        run(device, self.library, PROGRAM, ["/tmp/document.xml"], plan)
        self.assertEqual(before, device.dump("/tarvo/DB/config_global.sqlite"))

    def test_a_lock_is_met(self) -> None:
        events = self.trace("lock 1 1000 EXCLUSIVE /tarvo/DB/config_global.sqlite")
        self.assertTrue(any(b"database is locked" in event for event in events))

    def test_a_kill_ends_the_program_before_the_statement(self) -> None:
        events = self.trace("kill 2")
        self.assertEqual((b"status", b"137"), events[-1])
        self.assertEqual((b"fault", b"kill"), events[-2][:2])

    def test_order_across_kinds_and_leftovers_count(self) -> None:
        one, other = (b"sleep", b"1", b"s"), (b"syslog", b"59", b"text")
        both = Outcome([one, other], {"/tmp/x": "1"})
        self.assertEqual("", first_difference(both, Outcome([one, other], {"/tmp/x": "1"})))
        self.assertNotEqual("", first_difference(both, Outcome([other, one], {"/tmp/x": "1"})))
        self.assertNotEqual("", first_difference(both, Outcome([one], {"/tmp/x": "1"})))
        self.assertNotEqual("", first_difference(both, Outcome([one, other], {})))


if __name__ == "__main__":
    unittest.main()
