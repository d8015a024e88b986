"""What `tarvo-backup check` says of a document against what the import makes of it, over documents
that are changed at random.

What it calls an error, the import refuses on the very headend that the document comes from. What
the import refuses for another reason than the headend, it finds.
"""

import os
import random
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

TESTS = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(TESTS / "support"), str(TESTS / "compare")]

from cases import copy_device, importable, make_device  # noqa: E402
from e2e import BACKUP_PROGRAM, PROGRAM, main, models  # noqa: E402
from mutations import Mutation  # noqa: E402
from tracing import Device, build_library, run  # noqa: E402

DOCUMENT = "/tmp/document.xml"
DEVICES = int(os.environ.get("TARVO_CHECK_DEVICES", "7"))
DOCUMENTS_PER_DEVICE = 20
SEED = os.environ.get("TARVO_CHECK_SEED", "check")

# What the headend decides: whether it has the part, whether a tuner receives the frequency, whether
# a service has its LCN already (which is refused without a line in the log).
OF_THE_HEADEND = (
    b"Error 102, No module inputs found",
    b"Error 102, No module outputs found",
    b"Error 102, No modules found",
    b"Error 102, Could not locate module",
    b"Error 401, Input could not be found",
    b"Error 101, Output could not be found",
    b"Error 401, Resulting intermediate frequency is out of range.",
    b"Error 401, Invalid value for module/input/rfLoop",
    b"Error 501",
    b"Error 502",
    b"Error 503",
    b"Error 202",
)

# It may find a row of the headend, and gives none a new id.
ROW_ID_PATTERN = r": warning: .*/id: '[-%_0-9]+' is no number$"


class CheckTest(unittest.TestCase):
    maxDiff = None

    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory(prefix="check-", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.library = build_library(self.folder)

    def findings(self, document: bytes) -> list[str]:
        result = subprocess.run(
            [BACKUP_PROGRAM, "check", "-"], input=document, capture_output=True, check=False
        )
        lines = result.stdout.decode("utf-8", "replace").splitlines()
        self.assertEqual(b"", result.stderr)
        errors = [line for line in lines if ": error: " in line]
        self.assertEqual(2 if errors else 0, result.returncode)
        return lines

    def refusal(self, device: Device, document: bytes) -> list[bytes] | None:
        """The errors of an import; None when it succeeds."""
        device.path(DOCUMENT).write_bytes(document)
        events = run(device, self.library, PROGRAM, [DOCUMENT], "")
        if events[-1][1] == b"0":
            return None
        lines = [field for event in events if event[0] == b"syslog" for field in event[1:]]
        return [line.removeprefix(b"r9::: ") for line in lines if b"Error " in line]

    def compare(self, label: str, device: Device, document: bytes) -> bool:
        """Whether the document has an error."""
        findings = self.findings(document)
        errors = [line for line in findings if ": error: " in line]
        refusal = self.refusal(copy_device(device, self.folder / "copy"), document)
        if errors:
            self.assertIsNotNone(refusal, f"{label}\n{errors}")
        elif refusal is not None:
            decided = OF_THE_HEADEND
            if any(re.search(ROW_ID_PATTERN, line) for line in findings):
                decided += (b"[ERROR_DB]insert", b"Error 102, Could not insert")
            others = [line for line in refusal if not line.startswith(decided)]
            self.assertEqual([], others, label)
        return bool(errors)

    def test_errors_are_what_the_import_refuses(self) -> None:
        refused = 0
        for number in range(DEVICES):
            rng = random.Random(f"{SEED} {number}")
            model = models()[number % len(models())]
            headend = None if rng.random() < 0.3 else rng.randrange(1 << 30)
            device = make_device(model, headend, self.folder / f"device-{number}")
            export = run(
                copy_device(device, self.folder / "copy"), self.library, PROGRAM, [], ""
            )
            text = b"".join(event[1] for event in export if event[0] == b"stdout")
            base = importable(device, text)
            for index in range(DOCUMENTS_PER_DEVICE):
                mutation = Mutation(rng)
                amount = rng.choice((0, 1, 1, 1, 2, 3))
                document = mutation.changed(base, amount, bytes_too=rng.random() < 0.15)
                if "deep-nesting" in mutation.tags:
                    continue
                label = f"{model} {headend} {number}/{index}: {', '.join(mutation.notes)}"
                with self.subTest(label):
                    refused += self.compare(label, device, document)
        self.assertGreater(refused, 5)


if __name__ == "__main__":
    main()
