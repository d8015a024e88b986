"""The bash completion of tarvo-backup, and that the manual has every verb and option."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import BACKUP_PROGRAM, REPOSITORY, main  # noqa: E402

SCRIPT = """
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMPREPLY=()
_tarvo_backup
printf '%s\\n' "${COMPREPLY[@]}"
"""


def program(*args: str) -> str:
    command = [BACKUP_PROGRAM, *args]
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def completed(*words: str) -> list[str]:
    script = REPOSITORY / "completions/tarvo-backup"
    command = ["bash", "-c", SCRIPT, "bash", script, BACKUP_PROGRAM, *words]
    result = subprocess.run(command, capture_output=True, text=True, check=True)
    return result.stdout.split()


class CompletionTest(unittest.TestCase):
    def test_verbs_options_and_files_are_completed(self) -> None:
        self.assertLessEqual({"check", "diff", "show"}, set(completed("")))
        self.assertEqual(["check"], completed("che"))
        self.assertEqual(["--state"], completed("diff", "--st"))
        self.assertEqual(["always", "auto"], completed("show", "--color", "a"))
        path = str(REPOSITORY / "READM")
        self.assertEqual([path + "E.md"], completed("check", path))

    def test_files_are_offered_only_where_one_is_taken(self) -> None:
        path = str(REPOSITORY / "READM")
        for words in (("save",), ("save", "--output"), ("show", "--html"), ("plan", "--json")):
            self.assertEqual([path + "E.md"], completed(*words, path), words)
        for words in (("confirm",), ("undo",), ("undo", "--json"), ("save", "--keep"),
                      ("restore", "--confirm")):  # fmt: skip
            self.assertEqual([], completed(*words, path), words)

    def test_the_manual_has_every_verb_and_option(self) -> None:
        page = (REPOSITORY / "docs/tarvo-backup.8").read_text().replace("\\-", "-")
        for verb in completed(""):
            self.assertIn(f"\n.SS {verb}\n", page)
            for option in re.findall(r"--[a-z][a-z-]*", program(verb, "--help")):
                self.assertIn(option, page, verb)


if __name__ == "__main__":
    main()
