"""That the manual says what the program does, where both say it."""

import re
import unittest
from pathlib import Path

REPOSITORY = Path(__file__).resolve().parents[2]
ENUMERATOR = re.compile(r"^    (\w+) = (\d+),", re.MULTILINE)
ROW = re.compile(r"^(\d+)\t(\w+)\tT\{$", re.MULTILINE)
CODE_STATUS = re.compile(r"\{ErrorCode::(\w+), ExitStatus::(\w+)\}")


def text(path: str) -> str:
    return (REPOSITORY / path).read_text("utf-8")


class ManualTest(unittest.TestCase):
    def test_exit_statuses_and_their_codes_are_those_of_the_program(self) -> None:
        codes = dict(ENUMERATOR.findall(text("src/command/error_codes.h")))
        statuses = dict(ENUMERATOR.findall(text("src/app/exit_status.h")))
        pairs = CODE_STATUS.findall(text("src/app/exit_status.cpp"))
        expected = {statuses.pop("success"): "none", statuses.pop("failure"): "other"}
        expected |= {statuses.pop(status): codes[code] for code, status in pairs}
        self.assertEqual({}, statuses, "without a code")
        rows = ROW.findall(text("docs/tarvo-config.8"))
        self.assertEqual(list(expected.items()), rows)


if __name__ == "__main__":
    unittest.main()
