"""How the program is started: with little stack, without streams, with signals ignored."""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    DOCUMENT_FILE,
    OUTPUT_FILE,
    EndToEndTest,
    document,
    golden,
    main,
    models,
)

NESTED = "tarvo-config: /tmp/document.xml:1:769: more than 256 levels of elements\n"


class SmallStackTest(EndToEndTest):
    SMALL = "ulimit -s 128; exec"

    def exported_and_imported(self, model: str) -> None:
        device = self.device(model)
        result = self.run_after(self.SMALL, device)
        self.assertRun(result, stdout=golden(model) + b"\n")
        device.path(DOCUMENT_FILE).write_bytes(golden(model))
        limited = self.run_after(self.SMALL, device, DOCUMENT_FILE)
        again = self.load(self.device(model), golden(model))
        self.assertEqual((again.status, again.stderr), (limited.status, limited.stderr))

    def test_every_model_needs_little_stack(self) -> None:
        self.each(self.exported_and_imported, [(model,) for model in models()])

    def nested(self, levels: int, status: int, stderr: str) -> None:
        device = self.device("WVX-BQ4")
        device.path(DOCUMENT_FILE).write_bytes(b"<a>" * levels + b"</a>" * levels)
        result = self.run_after(self.SMALL, device, DOCUMENT_FILE)
        self.assertRun(result, status, stderr=stderr.encode())

    def test_nesting_needs_little_stack(self) -> None:
        missing = "No 'configuration' element found\n" * 3
        self.each(self.nested, [(256, 1, missing), (257, 134, NESTED), (100_000, 134, NESTED)])


class IgnoredSignalTest(EndToEndTest):
    def test_scripts_are_waited_for_where_the_ends_of_children_are_ignored(self) -> None:
        device = self.device("RNB-K408")
        device.path(DOCUMENT_FILE).write_bytes(
            document(
                "<network><ip>1.2.3.4</ip></network>"
                "<regional><timezone>Europe/Paris</timezone></regional><scramblings/>"
            )
        )
        result = self.run_after("exec env --ignore-signal=CHLD", device, DOCUMENT_FILE)
        self.assertEqual((0, b""), (result.status, result.stderr))
        actions = [action.split()[0] for action in result.actions]
        self.assertEqual(["WAN_from_DB.sh", "get_time_offsets.sh", "S60crond", "VSecKey"], actions)


class ClosedStreamTest(EndToEndTest):
    def test_output_file_is_whole_without_any_stream(self) -> None:
        device = self.device("RNB-K408")
        self.assertRun(self.run_after("exec <&- >&- 2>&-; exec", device), 1)
        self.assertBytes(golden("RNB-K408"), device.path(OUTPUT_FILE).read_bytes())

    def test_import_is_complete_without_any_stream(self) -> None:
        device = self.device("RNB-K408")
        device.path(DOCUMENT_FILE).write_bytes(document("<network><ip>1.2.3.4</ip></network>"))
        result = self.run_after("exec <&- >&- 2>&-; exec", device, DOCUMENT_FILE)
        self.assertRun(result, actions=["WAN_from_DB.sh"])


if __name__ == "__main__":
    main()
