"""Signals and failing streams: what is stored has its actions run."""

import signal
import subprocess
import sys
import time
from contextlib import closing
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))

from e2e import (
    CONFIG_DB,
    DOCUMENT_FILE,
    OUTPUT_FILE,
    PROGRAM,
    REPOSITORY,
    Device,
    EndToEndTest,
    Running,
    document,
    errors_in,
    golden,
    main,
)

CHANGES = document(
    "<network><ip>1.2.3.4</ip></network>"
    "<regional><timezone>Europe/Paris</timezone></regional><scramblings/>"
)
LATER_ACTIONS = ["get_time_offsets.sh", "S60crond restart", "VSecKey"]


class SignalTest(EndToEndTest):
    def in_the_network_script(self) -> tuple[Device, Running]:
        """An import whose network script has begun, and goes on until go_on()."""
        device = self.device("RNB-K408")
        device.path("/tarvo/script/WAN_from_DB.sh").write_text(
            "#!/bin/sh\n: >/tmp/started\nwhile [ -e /tmp/started ]; do sleep 0.05; done\n"
        )
        device.path(DOCUMENT_FILE).write_bytes(CHANGES)
        running = device.start(PROGRAM, [DOCUMENT_FILE], env={"TZ": "UTC"})
        deadline = time.monotonic() + 60
        while not device.path("/tmp/started").exists():
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.01)
        return device, running

    def goes_on_after(self, number: signal.Signals, status: int) -> None:
        device, running = self.in_the_network_script()
        running.kill(number)
        time.sleep(0.2)
        device.path("/tmp/started").unlink()
        result = running.wait(60)
        self.assertEqual(status, result.status)
        self.assertEqual(LATER_ACTIONS, [self.known(line) for line in result.actions])
        self.assertEqual(
            [("1.2.3.4",)],
            self.query(
                device, "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'network_IP'"
            ),
        )

    @staticmethod
    def known(action: str) -> str:
        return next(known for known in LATER_ACTIONS if action.startswith(known))

    def test_all_actions_run_whatever_signal_comes(self) -> None:
        # system() ignores SIGINT while its script runs.
        self.each(
            self.goes_on_after,
            [
                (signal.SIGHUP, 0),
                (signal.SIGPIPE, 0),
                (signal.SIGINT, 0),
                (signal.SIGTERM, 128 + signal.SIGTERM),
            ],
        )

    def test_interrupt_that_ends_a_script_ends_the_program_after_its_actions(self) -> None:
        # As at a terminal, where both get it. A second try would find nothing to change, and say 0.
        device = self.device("RNB-K408")
        device.path("/tarvo/bin/VSecKey").write_text("#!/bin/sh\nkill -INT $PPID $$\n")
        result = self.load(device, CHANGES)
        self.assertEqual((128 + signal.SIGINT, b""), (result.status, result.stderr))
        actions = [action.split()[0] for action in result.actions]
        self.assertEqual(["WAN_from_DB.sh", "get_time_offsets.sh", "S60crond"], actions)
        self.assertEqual(["Error 911, Error regenerating scrambling key"], errors_in(result))

    def test_termination_before_the_commit_is_immediate(self) -> None:
        device = self.device("RNB-K408")
        device.path(DOCUMENT_FILE).write_bytes(CHANGES)
        with closing(device.database(CONFIG_DB)) as other:
            other.execute("BEGIN IMMEDIATE")
            running = device.start(PROGRAM, [DOCUMENT_FILE], env={"TZ": "UTC"})
            running.process.stderr.readline()
            running.kill(signal.SIGTERM)
            result = running.wait(60)
        self.assertEqual((128 + signal.SIGTERM, []), (result.status, result.actions))


class StandardOutputTest(EndToEndTest):
    def run_in_shell(self, device: Device, redirection: str, *args: str) -> tuple[int, str]:
        command = f"{REPOSITORY}/sim/run --root {device.root} -- {PROGRAM} {' '.join(args)}"
        result = subprocess.run(
            ["sh", "-c", f"{command} {redirection}"], capture_output=True, text=True, timeout=120
        )
        return result.returncode, result.stderr

    def exported_without(self, redirection: str) -> None:
        device = self.device("WVX-BQ4")
        status, stderr = self.run_in_shell(device, redirection)
        self.assertEqual((1, "Unable to write to standard output\n"), (status, stderr))
        self.assertBytes(golden("WVX-BQ4"), device.path(OUTPUT_FILE).read_bytes())

    def test_export_without_standard_output_fails_after_its_file(self) -> None:
        self.each(self.exported_without, [(">/dev/full",)])

    def test_import_without_standard_output_is_complete(self) -> None:
        device = self.device("RNB-K408")
        device.path(DOCUMENT_FILE).write_bytes(CHANGES)
        self.assertEqual((0, ""), self.run_in_shell(device, ">/dev/full", DOCUMENT_FILE))
        actions = device.path("/tarvo/sim/actions.log").read_text().splitlines()
        self.assertEqual(LATER_ACTIONS, [self.known(line) for line in actions[1:]])

    known = staticmethod(SignalTest.known)


if __name__ == "__main__":
    main()
